// The "power" command of uctool against the simulators: detect, status and usage errors.
#include <gtest/gtest.h>

#include "power/battery_protocol.h"
#include "power/simulator/battery_simulator.h"
#include "power/simulator/ups_simulator.h"
#include "power/ups_monitor.h"
#include "power_test_support.h"
#include "support/tool_run.h"

namespace {
using namespace uc::test;
namespace sim = uc::power::sim;

using Result = ToolRun;

class PowerCommandTest : public testing::Test {
protected:
    void SetUp() override {
        UC_REQUIRE_LINES();
        CUPSMonitor::SetDefaultSettleTime(0ms);
    }
    void TearDown() override { CUPSMonitor::SetDefaultSettleTime(25ms); }
    ProfileSandbox profile;
    DeviceTreeSandbox devices;
};

TEST_F(PowerCommandTest, DetectsAndReadsTheBatteryModuleThroughTheLookup) {
    sim::BatteryModuleSimulator module;
    module.SetPercent(42);
    module.SetState(9);
    sim::SimulatorHost host(module);
    const int port = StartSimulator(host, 0, 38400);
    ASSERT_GE(port, 0);
    devices.AddBatteryBridge(port, host.DevicePath());
    Result r = RunTool({L"power", L"detect"});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_EQ(r.out, L"battery module on port " + std::to_wstring(port) + L"\n");
    r = RunTool({L"power", L"status", L"--raw"});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_NE(r.out.find(L"percent: 42\n"), std::wstring::npos) << r.out;
    EXPECT_NE(r.out.find(L"state:   Battery state 9: Fault-Charge\n"), std::wstring::npos);
    EXPECT_NE(r.out.find(L"fault yes"), std::wstring::npos);
    EXPECT_NE(r.out.find(L"balloon: balloon.battery.fault.header: "), std::wstring::npos) << "the fault balloon is shown";
    EXPECT_NE(r.out.find(L"ConditionsBuf(31:24)"), std::wstring::npos);
}

TEST_F(PowerCommandTest, ReadsTheUpsOnAGivenPort) {
    sim::UpsSimulator ups;
    ups.SetSource("0");
    ups.SetLevel(18);
    sim::SimulatorHost host(ups);
    const int port = StartSimulator(host, 1, 2400);
    ASSERT_GE(port, 0);
    Result r = RunTool({L"power", L"status", L"--only", L"ups", L"--port", std::to_wstring(port)});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_NE(r.out.find(L"source:  UPS on port " + std::to_wstring(port)), std::wstring::npos) << r.out;
    EXPECT_NE(r.out.find(L"power:   battery (depleting)"), std::wstring::npos);
    EXPECT_NE(r.out.find(L"warning: 2 (very low)"), std::wstring::npos);
    r = RunTool({L"power", L"watch", L"--only", L"ups", L"--port", std::to_wstring(port), L"--count", L"2", L"--interval", L"0"});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_NE(r.out.find(L"-- reading 2"), std::wstring::npos);
}

TEST_F(PowerCommandTest, NothingFoundAndBadUsage) {
    Result r = RunTool({L"power", L"detect", L"--only", L"battery"});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.out, L"no power source found\n");
    EXPECT_EQ(RunTool({L"power"}).code, 2);
    EXPECT_EQ(RunTool({L"power", L"explode"}).code, 2);
    EXPECT_EQ(RunTool({L"power", L"detect", L"--port", L"x"}).code, 2);
    EXPECT_EQ(RunTool({L"power", L"detect", L"--only", L"moon"}).code, 2);
    EXPECT_EQ(RunTool({L"power", L"simulate", L"toaster"}).code, 2);
    EXPECT_EQ(RunTool({L"power", L"simulate", L"ups", L"--garbage", L"zz"}).code, 2);
}

}  // namespace
