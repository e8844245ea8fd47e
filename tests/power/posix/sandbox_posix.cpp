// Profile and device-tree sandboxes of the native power tests: temporary INI files and a fake sysfs tree.
#include <filesystem>
#include <fstream>

#include "platform/profile.h"
#include "platform/serial/port_map.h"
#include "platform/serial/usb_serial_lookup.h"
#include "platform/text.h"
#include "power_test_support.h"

namespace uc::test {
namespace fs = std::filesystem;

namespace {
std::wstring FreshDir(const char* what) {
    static int counter = 0;
    fs::path p = fs::temp_directory_path() /
                 ("uc-power-" + std::string(what) + "-" + std::to_string(::getpid()) + "-" + std::to_string(counter++));
    fs::remove_all(p);
    fs::create_directories(p);
    return FromFsPath(p);
}
void Write(const fs::path& file, const std::string& text) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << text << "\n";
}
}  // namespace

ProfileSandbox::ProfileSandbox() : m_location(FreshDir("profile")), m_previous(GetProfileLocation()) {
    SetProfileLocation(m_location + L"/profile.ini");
    SetSystemProfileLocation(m_location + L"/win.ini");
}

ProfileSandbox::~ProfileSandbox() {
    SetProfileLocation(m_previous);
    SetSystemProfileLocation(L"");
    std::error_code ec;
    fs::remove_all(ToFsPath(m_location), ec);
}

DeviceTreeSandbox::DeviceTreeSandbox() : m_root(FreshDir("devices")) {
    fs::create_directories(ToFsPath(m_root) / "sys" / "class" / "tty");
    fs::create_directories(ToFsPath(m_root) / "dev");
    uc::serial::SetSysfsRoot(m_root + L"/sys");
    uc::serial::SetDeviceRoot(m_root + L"/dev");
    // No port number reaches a real serial device: only the lines a test maps itself exist.
    uc::serial::ClearPortMap();
    uc::serial::SetPortFallbackPattern(L"");
    uc::serial::SetPortDirectory(m_root + L"/dev");
}

DeviceTreeSandbox::~DeviceTreeSandbox() {
    uc::serial::SetSysfsRoot(L"");
    uc::serial::SetDeviceRoot(L"");
    std::error_code ec;
    fs::remove_all(ToFsPath(m_root), ec);
}

void DeviceTreeSandbox::AddBatteryBridge(int, const std::wstring& devicePath) {
    const fs::path root = ToFsPath(m_root);
    const fs::path usb = root / "sys" / "devices" / "usb1" / "1-1";
    Write(usb / "idVendor", "10c4");
    Write(usb / "idProduct", "ea60");
    Write(usb / "serial", "0001");
    Write(usb / "1-1:1.0" / "bInterfaceNumber", "00");
    fs::create_directories(usb / "1-1:1.0" / "ttyUSB0");
    fs::create_directories(root / "sys" / "class" / "tty" / "ttyUSB0");
    fs::create_symlink("../../../devices/usb1/1-1/1-1:1.0/ttyUSB0", root / "sys" / "class" / "tty" / "ttyUSB0" / "device");
    fs::create_symlink(ToFsPath(devicePath), root / "dev" / "ttyUSB0");
}

}  // namespace uc::test
