// Port numbers on Windows are COM port numbers; the POSIX mapping functions do nothing here.
#include "platform/serial/port_map.h"

namespace uc::serial {

std::wstring PortDevicePath(int port) {
    if (port < 0) return {};
    return L"\\\\.\\COM" + std::to_wstring(port);
}

void MapPort(int, const std::wstring&) {}
void ClearPortMap() {}
void SetPortDirectory(const std::wstring&) {}
std::wstring GetPortDirectory() { return {}; }
void SetPortFallbackPattern(const std::wstring&) {}
int PortNumberForDevice(const std::wstring&) { return -1; }

}  // namespace uc::serial
