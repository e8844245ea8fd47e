// The native USB serial lookup against fake sysfs trees: ids, serial numbers with spaces, interfaces, FTDI.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/serial/ftdi_port.h"
#include "platform/serial/port_map.h"
#include "platform/serial/usb_serial_lookup.h"
#include "platform/text.h"
#include "power/battery_monitor.h"
#include "support/temp_dir.h"

namespace {
namespace fs = std::filesystem;

// Lays out <root>/devices/usbN/<dev>/{idVendor,idProduct,serial}, the interface folder with
// bInterfaceNumber, the tty below it and <root>/class/tty/<tty>/device pointing there.
void AddDevice(const uc::test::TempDir& dir, const std::string& dev, const char* vid, const char* pid,
               const char* serial, const char* iface, const std::string& tty) {
    const std::string base = "sys/devices/usb1/" + dev;
    dir.write(uc::FromUtf8(base + "/idVendor"), std::string(vid) + "\n");
    dir.write(uc::FromUtf8(base + "/idProduct"), std::string(pid) + "\n");
    if (serial) dir.write(uc::FromUtf8(base + "/serial"), std::string(serial) + "\n");
    const std::string ifdir = base + "/" + dev + ":1." + iface;
    dir.write(uc::FromUtf8(ifdir + "/bInterfaceNumber"), std::string(iface) + "\n");
    fs::create_directories(uc::ToFsPath(dir.file(uc::FromUtf8(ifdir + "/" + tty))));
    fs::create_directories(uc::ToFsPath(dir.file(uc::FromUtf8("sys/class/tty/" + tty))));
    fs::create_symlink("../../../devices/usb1/" + dev + "/" + dev + ":1." + iface + "/" + tty,
                       uc::ToFsPath(dir.file(uc::FromUtf8("sys/class/tty/" + tty + "/device"))));
    dir.write(uc::FromUtf8("dev/" + tty), "");
}

class SysfsLookupTest : public testing::Test {
protected:
    void SetUp() override {
        uc::serial::ClearPortMap();
        uc::serial::SetPortDirectory(dir.file(L"serial"));
        uc::serial::SetSysfsRoot(dir.file(L"sys"));
        uc::serial::SetDeviceRoot(dir.file(L"dev"));
        fs::create_directories(uc::ToFsPath(dir.file(L"sys/class/tty/ttyS0")));  // no device: ignored
    }
    void TearDown() override {
        uc::serial::SetSysfsRoot(L"");
        uc::serial::SetDeviceRoot(L"");
        uc::serial::ClearPortMap();
    }
    uc::test::TempDir dir;
};

TEST_F(SysfsLookupTest, FindsTheBridgeByIdsAndSerial) {
    AddDevice(dir, "1-1", "0403", "6001", "FT1", "00", "ttyUSB0");
    AddDevice(dir, "1-2", "10c4", "ea60", "0001", "00", "ttyUSB1");
    const int port = uc::serial::FindUsbSerialPort(0x10C4, 0xEA60, "0001");
    ASSERT_GE(port, 0);
    EXPECT_EQ(uc::serial::PortDevicePath(port), dir.file(L"dev/ttyUSB1"));
    EXPECT_EQ(uc::serial::FindUsbSerialPort(0x10C4, 0xEA60, "0002"), -1);
    EXPECT_EQ(uc::serial::FindUsbSerialPort(0x10C4, 0xEA61, "0001"), -1);
    const int ftdi = FTDIPort::GetCOMPortNum();
    ASSERT_GE(ftdi, 0);
    EXPECT_EQ(uc::serial::PortDevicePath(ftdi), dir.file(L"dev/ttyUSB0"));
}

TEST_F(SysfsLookupTest, SerialWithSpacesMatchesUnderscores) {
    AddDevice(dir, "1-3", "10c4", "ea60", "00 01", "00", "ttyUSB4");
    char serial[] = "00 01";
    const int port = BatteryMonitor::GetPortNumber(0x10C4, 0xEA60, serial);
    EXPECT_STREQ(serial, "00_01") << "rewritten in place";
    ASSERT_GE(port, 0);
    EXPECT_EQ(uc::serial::PortDevicePath(port), dir.file(L"dev/ttyUSB4"));
}

TEST_F(SysfsLookupTest, InterfaceZeroIsPreferredOnACompositeDevice) {
    AddDevice(dir, "1-4", "10c4", "ea60", "0001", "01", "ttyUSB2");
    AddDevice(dir, "1-4", "10c4", "ea60", "0001", "00", "ttyUSB3");
    const int port = uc::serial::FindUsbSerialPort(0x10C4, 0xEA60, "0001");
    EXPECT_EQ(uc::serial::PortDevicePath(port), dir.file(L"dev/ttyUSB3"));
}

TEST_F(SysfsLookupTest, NoTreeOrNoFtdiMeansMinusOne) {
    EXPECT_EQ(FTDIPort::GetCOMPortNum(), -1);
    uc::serial::SetSysfsRoot(dir.file(L"missing"));
    EXPECT_EQ(uc::serial::FindUsbSerialPort(0x10C4, 0xEA60, "0001"), -1);
}

}  // namespace
