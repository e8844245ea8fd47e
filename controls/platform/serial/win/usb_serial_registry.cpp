// USB serial lookup in the registry's device enumeration (Enum\USB for the battery bridge, Enum\FTDIBUS for FTDI).
#include <windows.h>

#include <cwctype>
#include <mutex>
#include <string>

#include "platform/serial/usb_serial_lookup.h"
#include "platform/text.h"
#include "platform/win/handles.h"

namespace uc::serial {
namespace {

std::mutex g_mutex;
std::wstring g_root;  // empty: HKEY_LOCAL_MACHINE

// Opens the key standing for HKLM\SYSTEM\CurrentControlSet\ (or the configured fake root's equivalent).
UniqueHKey OpenControlSet() {
    std::wstring root;
    {
        std::lock_guard<std::mutex> g(g_mutex);
        root = g_root;
    }
    HKEY hive = HKEY_LOCAL_MACHINE;
    std::wstring sub;
    if (!root.empty()) {
        const std::size_t slash = root.find(L'\\');
        const std::wstring name = root.substr(0, slash);
        sub = slash == std::wstring::npos ? L"" : root.substr(slash + 1) + L"\\";
        if (name == L"HKEY_CURRENT_USER" || name == L"HKCU")
            hive = HKEY_CURRENT_USER;
        else if (name != L"HKEY_LOCAL_MACHINE" && name != L"HKLM")
            return {};
    }
    UniqueHKey key;
    if (::RegOpenKeyExW(hive, (sub + L"SYSTEM\\CurrentControlSet\\").c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS)
        return {};
    return key;
}

int ReadPortName(HKEY parent, const std::wstring& path) {
    UniqueHKey key;
    if (::RegOpenKeyExW(parent, path.c_str(), 0, KEY_READ, key.put()) != ERROR_SUCCESS) return -1;
    wchar_t name[101] = {};
    DWORD size = 202, type = 0;
    if (::RegQueryValueExW(key.get(), L"PortName", nullptr, &type, reinterpret_cast<BYTE*>(name), &size) !=
            ERROR_SUCCESS ||
        type != REG_SZ)
        return -1;
    name[100] = 0;
    return PortNumberFromPortName(name);
}

std::wstring Upper(std::wstring s) {
    for (wchar_t& c : s) c = static_cast<wchar_t>(std::towupper(c));
    return s;
}
}  // namespace

int FindUsbSerialPort(unsigned short vendorId, unsigned short productId, const std::string& serialNumber) {
    UniqueHKey controlSet = OpenControlSet();
    if (!controlSet) return -1;
    UniqueHKey usb;
    if (::RegOpenKeyExW(controlSet.get(), L"Enum\\USB\\", 0, KEY_READ, usb.put()) != ERROR_SUCCESS) return -1;
    const std::string serial = RegistrySerial(serialNumber);
    int port = ReadPortName(usb.get(), CompositeDeviceKey(vendorId, productId, serial));
    if (port < 0) port = ReadPortName(usb.get(), PlainDeviceKey(vendorId, productId, serial));
    return port;
}

int FindUsbSerialPortOfVendor(unsigned short vendorId) {
    UniqueHKey controlSet = OpenControlSet();
    if (!controlSet) return -1;
    UniqueHKey bus;
    if (::RegOpenKeyExW(controlSet.get(), L"Enum\\FTDIBUS\\", 0, KEY_READ, bus.put()) != ERROR_SUCCESS) return -1;
    const std::wstring prefix = Format(L"VID_%04X", vendorId);
    wchar_t name[256];
    for (DWORD i = 0;; ++i) {
        DWORD len = 256;
        if (::RegEnumKeyExW(bus.get(), i, name, &len, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
        if (Upper(name).rfind(prefix, 0) != 0) continue;
        UniqueHKey device;
        if (::RegOpenKeyExW(bus.get(), name, 0, KEY_READ, device.put()) != ERROR_SUCCESS) continue;
        wchar_t instance[256];
        for (DWORD j = 0;; ++j) {
            DWORD ilen = 256;
            if (::RegEnumKeyExW(device.get(), j, instance, &ilen, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS)
                break;
            const int port = ReadPortName(device.get(), std::wstring(instance) + L"\\Device Parameters");
            if (port >= 0) return port;
        }
    }
    return -1;
}

void SetDeviceRegistryRoot(const std::wstring& keyPath) {
    std::lock_guard<std::mutex> g(g_mutex);
    g_root = keyPath;
}

std::wstring UsbSerialLookupPlace() {
    std::lock_guard<std::mutex> g(g_mutex);
    return (g_root.empty() ? std::wstring(L"HKEY_LOCAL_MACHINE") : g_root) + L"\\SYSTEM\\CurrentControlSet\\Enum\\USB";
}

void SetSysfsRoot(const std::wstring&) {}
void SetDeviceRoot(const std::wstring&) {}
std::wstring GetSysfsRoot() { return {}; }
std::wstring GetDeviceRoot() { return {}; }

}  // namespace uc::serial
