// BatteryMonitor against the simulated module: outputs, warning levels, history, callback, fault balloons and log.
#include <gtest/gtest.h>

#include "platform/balloon.h"
#include "platform/localisation.h"
#include "platform/logger.h"
#include "power/battery_monitor.h"
#include "power/battery_protocol.h"
#include "power/simulator/battery_simulator.h"
#include "power_test_support.h"

namespace {
using namespace uc::test;
namespace sim = uc::power::sim;
namespace bp = uc::power::battery;

int g_callbacks = 0;
int g_lastCallbackPercent = -1;
void Callback(const BatteryStatus& s) {
    ++g_callbacks;
    g_lastCallbackPercent = s.GetPercent();
}

class BatteryMonitorTest : public testing::Test {
protected:
    void SetUp() override {
        UC_REQUIRE_LINES();
        port = StartSimulator(host, 0, 38400);
        ASSERT_GE(port, 0);
        ASSERT_TRUE(monitor.DetectBatteryOnPort(port));
        BalloonMessageService::ClearHistory();
        zelLogger::Instance().ClearEntries();
        g_callbacks = 0;
    }
    void TearDown() override {
        BatteryMonitor::SetCallback(nullptr);
        BatteryMonitor::SetExtensiveLogging(false);
    }
    Reading Read() { return ReadStatus(monitor); }
    TestClock clock;
    sim::BatteryModuleSimulator module;
    sim::SimulatorHost host{module, clock};
    BatteryMonitor monitor{clock};
    int port = -1;
};

TEST_F(BatteryMonitorTest, ReadingBecomesTheFourValues) {
    EXPECT_TRUE(monitor.IsBatteryModule());
    EXPECT_TRUE(monitor.IsValid());
    module.SetPercent(80);
    module.SetOnAC(true);
    module.SetVoltage(25.0);
    Reading r = Read();
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.source, IPowerMonitor::PowerLine);
    EXPECT_EQ(r.percent, 80);
    EXPECT_EQ(r.text, L"Battery state 2: Normal Charge");
    EXPECT_EQ(r.level, IPowerMonitor::WarningNone);
    module.SetOnAC(false);
    module.SetState(4);
    r = Read();
    EXPECT_EQ(r.source, IPowerMonitor::PowerBattery);
    EXPECT_EQ(r.text, L"Battery state 4: Discharge");
}

TEST_F(BatteryMonitorTest, WarningLevelFollowsTheVoltageAlone) {
    module.SetOnAC(true);
    module.SetPercent(100);
    module.SetVoltage(20.4);
    EXPECT_EQ(Read().level, IPowerMonitor::WarningVeryLow) << "even on mains at 100 %";
    // Each threshold is the lower bound of the calmer level.
    const std::pair<double, IPowerMonitor::WarningLevel> cases[] = {
        {0.0, IPowerMonitor::WarningCritical},  {20.199, IPowerMonitor::WarningCritical},
        {20.2, IPowerMonitor::WarningVeryLow},  {20.599, IPowerMonitor::WarningVeryLow},
        {20.6, IPowerMonitor::WarningLow},      {20.999, IPowerMonitor::WarningLow},
        {21.0, IPowerMonitor::WarningNone}};
    for (auto [volts, level] : cases) EXPECT_EQ(BatteryMonitor::LevelForVoltage(volts), level) << volts;
}

TEST_F(BatteryMonitorTest, EveryFaultyReadingShowsABalloonButHistoryIsLoggedOncePerNewFault) {
    uc::SetLocalisedString("balloon.battery.fault.header", L"Battery fault");
    for (int i = 1; i <= 6; ++i)
        uc::SetLocalisedString("balloon.battery.fault.msg" + std::to_string(i), L"line" + std::to_wstring(i));
    module.SetState(9);
    for (int i = 0; i < 6; ++i) ASSERT_TRUE(Read().ok);
    EXPECT_EQ(BalloonMessageService::Count(), 6u);
    EXPECT_EQ(zelLogger::Instance().Count(L"Battery fault detected! Previous 5 battery states:"), 1u);
    const auto shown = BalloonMessageService::History().back();
    EXPECT_EQ(shown.title, L"Battery fault");
    EXPECT_EQ(shown.text, L"line1\nline2\nline3\nline4\nline5\nline6");
    EXPECT_EQ(shown.displayMs, 5000u);
    EXPECT_TRUE(shown.flag);
    EXPECT_EQ(shown.kind, 2);
    module.SetState(10);
    ASSERT_TRUE(Read().ok);
    EXPECT_EQ(zelLogger::Instance().Count(L"Battery fault detected!"), 2u) << "a change of fault kind is new";
    module.SetState(2);
    ASSERT_TRUE(Read().ok);
    EXPECT_EQ(BalloonMessageService::Count(), 7u) << "no balloon without a fault";
    uc::ClearLocalisedStrings();
}

TEST_F(BatteryMonitorTest, FaultHistoryListsFourEarlierReadingsThenTheCurrentOne) {
    for (int p = 10; p <= 40; p += 10) {
        module.SetPercent(p);
        ASSERT_TRUE(Read().ok);
    }
    zelLogger::Instance().ClearEntries();
    module.SetState(13);
    module.SetPercent(50);
    ASSERT_TRUE(Read().ok);
    std::vector<std::wstring> headings;
    std::vector<std::wstring> percents;
    for (const auto& e : zelLogger::Instance().Entries()) {
        EXPECT_EQ(e.type, zelLogger::StateReport);
        if (e.text.rfind(L"Battery", 0) == 0 || e.text == L"Current battery state:") headings.push_back(e.text);
        if (e.text.rfind(L"FuelGauge.ChargeLeft_RelativeActive", 0) == 0) percents.push_back(e.text.substr(e.text.size() - 4));
    }
    const std::vector<std::wstring> expected = {L"Battery fault detected! Previous 5 battery states:",
                                                L"Battery state 4 queries ago", L"Battery state 3 queries ago",
                                                L"Battery state 2 queries ago", L"Battery state 1 query ago",
                                                L"Current battery state:"};
    EXPECT_EQ(headings, expected);
    EXPECT_EQ(percents, (std::vector<std::wstring>{L"0x0A", L"0x14", L"0x1E", L"0x28", L"0x32"}));
}

TEST_F(BatteryMonitorTest, FailedReadKeepsTheSlotAndSkipsCallbackAndBalloon) {
    BatteryMonitor::SetCallback(&Callback);
    module.SetState(9);
    ASSERT_TRUE(Read().ok);
    EXPECT_EQ(monitor.GetCurrentSlot(), 1);
    EXPECT_EQ(g_callbacks, 1);
    sim::Faults f;
    f.silent = true;
    module.SetFaults(f);
    auto r = std::async(std::launch::async, [&] { return Read(); });
    ASSERT_TRUE(clock.WaitForWaiters(1));
    clock.Advance(2000ms);
    EXPECT_FALSE(r.get().ok);
    EXPECT_EQ(monitor.GetCurrentSlot(), 1) << "not advanced";
    EXPECT_EQ(g_callbacks, 1);
    EXPECT_EQ(BalloonMessageService::Count(), 1u);
    module.SetFaults({});
    module.SetPercent(33);
    ASSERT_TRUE(Read().ok);
    EXPECT_EQ(monitor.GetCurrentSlot(), 2);
    EXPECT_EQ(g_lastCallbackPercent, 33);
    EXPECT_EQ(monitor.GetLastStatus().GetPercent(), 33);
    for (int i = 0; i < 5; ++i) ASSERT_TRUE(Read().ok);
    EXPECT_EQ(monitor.GetCurrentSlot(), 2) << "five slots, reused in turn";
}

TEST_F(BatteryMonitorTest, ExtensiveLoggingWritesTheRecordEveryTime) {
    BatteryMonitor::SetExtensiveLogging(true);
    EXPECT_TRUE(BatteryMonitor::GetExtensiveLogging());
    ASSERT_TRUE(Read().ok);
    EXPECT_EQ(zelLogger::Instance().Count(L"Current battery state:"), 1u);
    EXPECT_EQ(zelLogger::Instance().Count(L"StatusCode"), 1u);
    EXPECT_EQ(zelLogger::Instance().Entries().size(), 40u);
}

TEST_F(BatteryMonitorTest, MonitorWithoutALinkFailsWithoutAsking) {
    BatteryMonitor undetected(clock);
    EXPECT_FALSE(undetected.IsValid());
    EXPECT_FALSE(ReadStatus(undetected).ok);
    EXPECT_EQ(module.CommandsReceived(bp::StatusCommand), 0);
}

TEST(BatteryDetect, SilentModuleIsNotDetectedAndThePortIsClosedAgain) {
    UC_REQUIRE_LINES();
    TestClock clock;
    sim::BatteryModuleSimulator module;
    sim::Faults f;
    f.silent = true;
    module.SetFaults(f);
    sim::SimulatorHost host(module, clock);
    const int port = StartSimulator(host, 0, 38400);
    ASSERT_GE(port, 0);
    BatteryMonitor monitor(clock);
    auto r = std::async(std::launch::async, [&] { return monitor.DetectBatteryOnPort(port); });
    ASSERT_TRUE(module.WaitForCommands(bp::PingCommand, 1, 10s));
    ASSERT_TRUE(clock.WaitForWaiters(1));
    clock.Advance(1000ms);
    EXPECT_FALSE(r.get());
    EXPECT_FALSE(monitor.IsValid());
    EXPECT_EQ(module.CommandsReceived(bp::PingCommand), 1) << "no retry";
}

}  // namespace
