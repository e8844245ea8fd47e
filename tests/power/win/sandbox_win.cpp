// Profile and device-tree sandboxes of the Windows power tests: private registry keys under HKEY_CURRENT_USER.
#include <windows.h>

#include <string>

#include "platform/profile.h"
#include "platform/serial/usb_serial_lookup.h"
#include "power_test_support.h"

namespace uc::test {

namespace {
std::wstring FreshKey(const wchar_t* what) {
    static int counter = 0;
    return L"Software\\utils_controls-test\\" + std::wstring(what) + L"-" + std::to_wstring(::GetCurrentProcessId()) +
           L"-" + std::to_wstring(counter++);
}
}  // namespace

ProfileSandbox::ProfileSandbox() : m_location(FreshKey(L"profile")), m_previous(GetProfileLocation()) {
    SetProfileLocation(m_location);
    WriteSystemProfileString(L"System", L"_IsUpdating", L"0");
}

ProfileSandbox::~ProfileSandbox() {
    WriteSystemProfileString(L"System", L"_IsUpdating", L"0");
    SetProfileLocation(m_previous);
    ::RegDeleteTreeW(HKEY_CURRENT_USER, m_location.c_str());
}

DeviceTreeSandbox::DeviceTreeSandbox() : m_root(FreshKey(L"devices")) {
    HKEY key = nullptr;
    ::RegCreateKeyExW(HKEY_CURRENT_USER, (m_root + L"\\SYSTEM\\CurrentControlSet\\Enum\\USB").c_str(), 0, nullptr, 0,
                      KEY_ALL_ACCESS, nullptr, &key, nullptr);
    if (key) ::RegCloseKey(key);
    uc::serial::SetDeviceRegistryRoot(L"HKEY_CURRENT_USER\\" + m_root);
}

DeviceTreeSandbox::~DeviceTreeSandbox() {
    uc::serial::SetDeviceRegistryRoot(L"");
    ::RegDeleteTreeW(HKEY_CURRENT_USER, m_root.c_str());
}

void DeviceTreeSandbox::AddBatteryBridge(int port, const std::wstring&) {
    HKEY key = nullptr;
    const std::wstring path =
        m_root + L"\\SYSTEM\\CurrentControlSet\\Enum\\USB\\" + uc::serial::PlainDeviceKey(0x10C4, 0xEA60, "0001");
    if (::RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr) !=
        ERROR_SUCCESS)
        return;
    const std::wstring name = L"COM" + std::to_wstring(port);
    ::RegSetValueExW(key, L"PortName", 0, REG_SZ, reinterpret_cast<const BYTE*>(name.c_str()),
                     static_cast<DWORD>((name.size() + 1) * sizeof(wchar_t)));
    ::RegCloseKey(key);
}

}  // namespace uc::test
