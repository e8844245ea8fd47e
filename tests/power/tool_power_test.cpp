// The "power" command of uctool against the simulators: detect, status, usage errors and failures explained.
#include <gtest/gtest.h>

#include "platform/logger.h"
#include "platform/serial/port_map.h"
#include "power/battery_protocol.h"
#include "power/simulator/battery_simulator.h"
#include "power/simulator/ups_simulator.h"
#include "power/ups_monitor.h"
#include "power_test_support.h"
#include "support/temp_dir.h"
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

TEST_F(PowerCommandTest, EveryCommandRefusesWhatItDoesNotKnowWithItsUsage) {
    const uctool::Args bad[] = {
        {L"power"}, {L"power", L"explode"}, {L"power", L"detect", L"--bogus"}, {L"power", L"status", L"--sysf", L"/x"},
        {L"power", L"status", L"stray"}, {L"power", L"watch", L"--count"}, {L"power", L"detect", L"--port", L"x"},
        {L"power", L"detect", L"--only", L"moon"}, {L"power", L"simulate", L"toaster"}, {L"power", L"detect", L"--log"},
        {L"power", L"simulate", L"ups", L"--for", L"0", L"--garbage", L"zz"},  // (a simulator ignoring its bad option
        {L"power", L"simulate", L"ups", L"--for", L"0", L"--bogus"}};         // stops at once, so the test fails)
    for (const auto& args : bad) {
        const Result r = RunTool(args);
        EXPECT_EQ(r.code, 2) << args.back();
        EXPECT_NE(r.err.find(L"usage: uctool power"), std::wstring::npos) << args.back();
        EXPECT_TRUE(r.out.empty()) << "nothing is probed on a bad command line: " << r.out;
    }
    EXPECT_NE(RunTool({L"power", L"detect", L"--sysf", L"/x"}).err.find(L"unknown option '--sysf'"), std::wstring::npos);
    EXPECT_NE(RunTool({L"power", L"status", L"--port"}).err.find(L"--port needs a value"), std::wstring::npos);
}

TEST_F(PowerCommandTest, AFailedSearchSaysWhatWasTriedAndWhatHappened) {
    // A UPS that answers nonsense, a port with nothing behind it, a port naming a missing device, no USB bridge.
    sim::UpsSimulator ups;
    ups.SetSource("?");
    sim::SimulatorHost host(ups);
    const int port = StartSimulator(host, 0, 2400);
    ASSERT_GE(port, 0);
    uctool::SetErrorIsTerminal(true);
    // (The UPS only: a battery ping would wait out its time-out in real time.)
    Result r = RunTool({L"power", L"detect", L"--only", L"ups", L"--port", std::to_wstring(port)});
    uctool::SetErrorIsTerminal(false);
    EXPECT_EQ(r.code, 1);
    const std::wstring on = L" on port " + std::to_wstring(port) + L" (" + uc::serial::PortDevicePath(port) + L"): ";
    EXPECT_EQ(r.out.rfind(L"no power source found\n", 0), 0u) << r.out;
    EXPECT_NE(r.out.find(L"UPS" + on + L"opened; the reply to \"P\" was 0x3F"), std::wstring::npos) << r.out;
    EXPECT_NE(r.err.find(L"\rtrying UPS" + on.substr(0, on.size() - 2) + L"..."), std::wstring::npos)
        << "progress on a terminal: " << r.err;
    EXPECT_EQ(r.err.back(), L'\r') << "the progress line is cleared";

    // A port no device answers on: its path and why it did not open.
    r = RunTool({L"power", L"detect", L"--only", L"ups", L"--port", L"0"});
    EXPECT_TRUE(r.err.empty()) << "no progress when standard error is not a terminal";
#ifdef _WIN32
    EXPECT_NE(r.out.find(L"UPS on port 0 (\\\\.\\COM0): cannot open: Win32 error 2"), std::wstring::npos) << r.out;
#else
    EXPECT_NE(r.out.find(L"UPS on port 0 (no device): cannot open: no device behind port 0"), std::wstring::npos) << r.out;
    uc::serial::MapPort(port + 1, L"/nonexistent/ttyUSB9");
    r = RunTool({L"power", L"detect", L"--only", L"ups", L"--port", std::to_wstring(port + 1)});
    EXPECT_NE(r.out.find(L"(/nonexistent/ttyUSB9): cannot open: No such file"), std::wstring::npos) << r.out;
#endif
    r = RunTool({L"power", L"status", L"--only", L"battery"});
    EXPECT_NE(r.out.find(L"battery module: no USB serial bridge 10C4:EA60 with serial \"0001\" (looked in "),
              std::wstring::npos) << r.out;
}

TEST_F(PowerCommandTest, VerboseAndLogFileCarryTheLibrarysLog) {
    sim::UpsSimulator ups;
    sim::SimulatorHost host(ups);
    const int port = StartSimulator(host, 0, 2400);
    ASSERT_GE(port, 0);
    uc::test::TempDir dir;
    const std::wstring log = dir.file(L"power.log");
    const Result r = RunTool({L"power", L"detect", L"--only", L"ups", L"--port", std::to_wstring(port), L"-v", L"--log", log});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_NE(r.err.find(L"Handshake successful on port " + std::to_wstring(port)), std::wstring::npos) << r.err;
    EXPECT_NE(dir.read(L"power.log").find("Handshake successful on port"), std::string::npos);
    EXPECT_EQ(zelLogger::Instance().GetLogFile(), L"") << "the log file is put back afterwards";
    EXPECT_EQ(RunTool({L"power", L"detect", L"--log", dir.file(L"no/such/dir/x.log")}).code, 2);
}

}  // namespace
