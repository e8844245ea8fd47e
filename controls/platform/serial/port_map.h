// Which device a serial port number opens: COMn on Windows; a configurable mapping to device paths elsewhere.
#pragma once

#include <string>

#include "platform/export.h"

namespace uc::serial {

// The device path that port `port` opens. Windows: "\\.\COMn". Elsewhere, the first that applies:
//   1. an explicit mapping made with MapPort;
//   2. the entry "comN" (a symlink or device node) in the port directory, like Wine's dosdevices;
//   3. the fall-back pattern with N - 1 in place of "%d" ("/dev/ttyS%d": COM1 is ttyS0), if enabled;
// otherwise an empty string (the port does not exist).
UC_API std::wstring PortDevicePath(int port);

// Explicit mapping of one port number (empty path removes it). Not used on Windows.
UC_API void MapPort(int port, const std::wstring& devicePath);
UC_API void ClearPortMap();
// Folder of "comN" entries. Default: $UC_SERIAL_DIR, else ~/.config/utils_controls/serial.
UC_API void SetPortDirectory(const std::wstring& folder);
UC_API std::wstring GetPortDirectory();
// Pattern for ports found nowhere else; empty disables it. Default "/dev/ttyS%d".
UC_API void SetPortFallbackPattern(const std::wstring& pattern);

// The port number whose device is `devicePath` (compared after resolving symlinks). A device no
// mapping reaches is given the first free number from FirstDynamicPort up, by an explicit mapping.
// Returns -1 for an empty path. Not used on Windows.
UC_API int PortNumberForDevice(const std::wstring& devicePath);
constexpr int FirstDynamicPort = 32;

}  // namespace uc::serial
