// Finding the port number of a USB serial bridge by vendor id, product id and serial number, and the FTDI port.
#pragma once

#include <string>

#include "platform/export.h"

namespace uc::serial {

// Port number of the USB serial device with these ids and serial number, or -1.
// Windows: the "PortName" under HKLM "SYSTEM\CurrentControlSet\Enum\USB\", composite-device key first
// ("Vid_%04X&Pid_%04X&Mi_00\<serial>_00\Device Parameters"), plain key second.
// Elsewhere: the tty under <sysfs>/class/tty whose USB device has these ids and serial (interface 0
// preferred), as "<dev>/<tty name>", numbered through PortNumberForDevice.
// Serial numbers are compared with spaces replaced by "_", as Windows names device instances.
UC_API int FindUsbSerialPort(unsigned short vendorId, unsigned short productId, const std::string& serialNumber);
// Port number of the first serial device of `vendorId` (any product, any serial), or -1.
// Windows: instances under HKLM "SYSTEM\CurrentControlSet\Enum\FTDIBUS" named "VID_xxxx+...".
UC_API int FindUsbSerialPortOfVendor(unsigned short vendorId);

// Where FindUsbSerialPort looks, for messages: the sysfs folder, or the registry key of USB devices.
UC_API std::wstring UsbSerialLookupPlace();

// Windows: the key that stands for HKEY_LOCAL_MACHINE in these lookups, as "HKEY_CURRENT_USER\\Software\\x"
// (tests point it at a fake tree); empty restores HKEY_LOCAL_MACHINE.
UC_API void SetDeviceRegistryRoot(const std::wstring& keyPath);
// POSIX: the sysfs root (default "/sys") and the device folder (default "/dev"); tests use fake trees.
UC_API void SetSysfsRoot(const std::wstring& path);
UC_API void SetDeviceRoot(const std::wstring& path);
UC_API std::wstring GetSysfsRoot();
UC_API std::wstring GetDeviceRoot();

// Pure helpers of the Windows lookup, portable so they are tested everywhere.
// "COM12" -> 12: the first three characters become '0' and the leading number is taken (0 if none).
UC_API int PortNumberFromPortName(const std::wstring& portName);
UC_API std::wstring CompositeDeviceKey(unsigned short vendorId, unsigned short productId, const std::string& serial);
UC_API std::wstring PlainDeviceKey(unsigned short vendorId, unsigned short productId, const std::string& serial);
UC_API std::string RegistrySerial(std::string serial);  // spaces -> "_"

}  // namespace uc::serial
