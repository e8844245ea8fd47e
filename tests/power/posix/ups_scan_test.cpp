// The UPS port search over native port numbers: saved port, touch-screen and FTDI ports, and nothing found.
#include <gtest/gtest.h>

#include <filesystem>

#include "platform/logger.h"
#include "platform/profile.h"
#include "platform/serial/port_map.h"
#include "platform/serial/usb_serial_lookup.h"
#include "power/power_monitor.h"
#include "power/simulator/ups_simulator.h"
#include "power/ups_monitor.h"
#include "platform/text.h"
#include "power_test_support.h"
#include "support/temp_dir.h"

namespace {
using namespace uc::test;
namespace sim = uc::power::sim;

std::vector<int> TriedPorts() {
    std::vector<int> ports;
    for (const auto& e : zelLogger::Instance().Entries()) {
        const std::wstring prefix = L"Attemping to connect to port ";
        if (e.text.rfind(prefix, 0) == 0) ports.push_back(std::stoi(e.text.substr(prefix.size())));
    }
    return ports;
}

class ScanTest : public testing::Test {
protected:
    void SetUp() override {
        uc::serial::ClearPortMap();
        IsolateSerialPorts();
        CUPSMonitor::SetDefaultSettleTime(0ms);
        zelLogger::Instance().ClearEntries();
    }
    void TearDown() override {
        CUPSMonitor::SetDefaultSettleTime(25ms);
        uc::serial::ClearPortMap();
    }
    ProfileSandbox profile;
    DeviceTreeSandbox devices;
};

TEST_F(ScanTest, ScansUpwardFromZeroAndSavesTheFoundPort) {
    sim::UpsSimulator ups;
    sim::SimulatorHost host(ups);
    const int port = StartSimulator(host, 0, 2400);  // port 10
    CUPSMonitor monitor;
    ASSERT_TRUE(monitor.Create());
    std::vector<int> expected;
    for (int p = 0; p <= port; ++p) expected.push_back(p);
    EXPECT_EQ(TriedPorts(), expected);
    EXPECT_EQ(zelLogger::Instance().Count(L"Could not open connection on port 0"), 1u);
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings\\Status", L"UPSPort", 255), port);
    EXPECT_EQ(monitor.GetPort(), port);
}

TEST_F(ScanTest, SavedPortEqualToTheTouchScreenPortIsSkippedEverywhere) {
    sim::UpsSimulator ups;
    sim::SimulatorHost host(ups);
    const int port = StartSimulator(host, 0, 2400);
    vex_utils::WriteProfileInt(L"Settings\\Status", L"UPSPort", port);
    vex_utils::WriteProfileInt(L"System\\HW Options", L"TouchScreenSerialPort", port);
    CUPSMonitor monitor;
    EXPECT_FALSE(monitor.Create());
    const auto tried = TriedPorts();
    EXPECT_EQ(std::count(tried.begin(), tried.end(), port), 0);
    EXPECT_EQ(tried.size(), 20u);
    EXPECT_EQ(zelLogger::Instance().Count(L"UPS connection failed."), 1u);
    EXPECT_EQ(ups.CommandsReceived('P'), 0) << "the touch screen is never disturbed";
}

TEST_F(ScanTest, SavedPortIsTriedFirstAndTheFtdiPortIsSkipped) {
    namespace fs = std::filesystem;
    uc::test::TempDir tree;
    // An FTDI device whose tty is mapped to port 3.
    tree.write(L"sys/devices/usb1/1-9/idVendor", "0403\n");
    tree.write(L"sys/devices/usb1/1-9/idProduct", "6001\n");
    fs::create_directories(uc::ToFsPath(tree.file(L"sys/devices/usb1/1-9/1-9:1.0/ttyUSB7")));
    fs::create_directories(uc::ToFsPath(tree.file(L"sys/class/tty/ttyUSB7")));
    fs::create_symlink("../../../devices/usb1/1-9/1-9:1.0/ttyUSB7", uc::ToFsPath(tree.file(L"sys/class/tty/ttyUSB7/device")));
    const std::wstring dev = tree.write(L"dev/ttyUSB7", "");
    uc::serial::SetSysfsRoot(tree.file(L"sys"));
    uc::serial::SetDeviceRoot(tree.file(L"dev"));
    uc::serial::MapPort(3, dev);
    vex_utils::WriteProfileInt(L"Settings\\Status", L"UPSPort", 7);
    CUPSMonitor monitor;
    EXPECT_FALSE(monitor.Create());
    const auto tried = TriedPorts();
    ASSERT_FALSE(tried.empty());
    EXPECT_EQ(tried.front(), 7);
    EXPECT_EQ(std::count(tried.begin(), tried.end(), 7), 1);
    EXPECT_EQ(std::count(tried.begin(), tried.end(), 3), 0) << "the FTDI port is left alone";
}

TEST_F(ScanTest, NothingAnywhereGivesNullAndLeavesTheFailedUpsRegistered) {
    EXPECT_EQ(IPowerMonitor::Create(), nullptr);
    EXPECT_TRUE(CUPSMonitor::HasRegisteredInstance()) << "the failed candidate is deliberately kept";
    EXPECT_FALSE(CUPSMonitor::ShutdownUPS()) << "its link is closed";
}

}  // namespace
