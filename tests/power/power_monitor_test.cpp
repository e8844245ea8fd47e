// IPowerMonitor::Create: the battery module is preferred, the UPS is the fall-back, found on real ports.
#include <gtest/gtest.h>

#include <memory>

#include "platform/profile.h"
#include "platform/serial/port_map.h"
#include "power/battery_protocol.h"
#include "power/power_monitor.h"
#include "power/simulator/battery_simulator.h"
#include "power/simulator/ups_simulator.h"
#include "power/ups_monitor.h"
#include "power_test_support.h"

namespace {
using namespace uc::test;
namespace sim = uc::power::sim;

class CreateTest : public testing::Test {
protected:
    void SetUp() override {
        UC_REQUIRE_LINES();
        CUPSMonitor::SetDefaultSettleTime(0ms);
        upsPort = StartSimulator(upsHost, 1, 2400);
        ASSERT_GE(upsPort, 0);
        vex_utils::WriteProfileInt(L"Settings\\Status", L"UPSPort", upsPort);
    }
    void TearDown() override { CUPSMonitor::SetDefaultSettleTime(25ms); }
    ProfileSandbox profile;
    DeviceTreeSandbox devices;
    sim::UpsSimulator ups;
    sim::SimulatorHost upsHost{ups};
    int upsPort = -1;
};

TEST_F(CreateTest, BatteryModuleIsPreferredAndTheUpsIsNeverTouched) {
    sim::BatteryModuleSimulator module;
    sim::SimulatorHost host(module);
    const int port = StartSimulator(host, 0, 38400);
    ASSERT_GE(port, 0);
    devices.AddBatteryBridge(port, host.DevicePath());
    std::unique_ptr<IPowerMonitor> monitor(IPowerMonitor::Create());
    ASSERT_NE(monitor, nullptr);
    EXPECT_TRUE(monitor->IsBatteryModule());
    EXPECT_EQ(module.CommandsReceived(uc::power::battery::PingCommand), 1);
    EXPECT_EQ(upsHost.BytesReceived(), 0u);
    EXPECT_TRUE(ReadStatus(*monitor).ok);
}

TEST_F(CreateTest, UpsIsFoundWhenNoModuleAnswers) {
    ups.SetLevel(90);
    std::unique_ptr<IPowerMonitor> monitor(IPowerMonitor::Create());
    ASSERT_NE(monitor, nullptr);
    EXPECT_FALSE(monitor->IsBatteryModule());
    const Reading r = ReadStatus(*monitor);
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.percent, 90);
    EXPECT_TRUE(CUPSMonitor::ShutdownUPS()) << "the returned monitor is the registered instance";
}

TEST_F(CreateTest, ModuleThatDoesNotAnswerTheLookupsPortFallsBackToTheUps) {
    // The bridge is listed but nothing answers behind it (the line's far end is silent).
    sim::BatteryModuleSimulator module;
    sim::Faults f;
    f.silent = true;
    module.SetFaults(f);
    sim::SimulatorHost host(module);
    const int port = StartSimulator(host, 0, 38400);
    ASSERT_GE(port, 0);
    devices.AddBatteryBridge(port, host.DevicePath());
    TestClock clock;
    auto created = std::async(std::launch::async, [&] { return IPowerMonitor::Create(clock); });
    ASSERT_TRUE(clock.WaitForWaiters(1));  // the ping's time-out
    // The ping must have reached the silent module before its time-out runs out.
    ASSERT_TRUE(module.WaitForCommands(uc::power::battery::PingCommand, 1, 10s));
    clock.Advance(1000ms);
    std::unique_ptr<IPowerMonitor> monitor(created.get());
    ASSERT_NE(monitor, nullptr);
    EXPECT_FALSE(monitor->IsBatteryModule());
    EXPECT_EQ(module.CommandsReceived(uc::power::battery::PingCommand), 1);
}

}  // namespace
