// CUPSMonitor and CUPSConnection against the simulated UPS over a real port: readings, faults, handshake, shutdown.
#include <gtest/gtest.h>

#include <thread>

#include "platform/logger.h"
#include "platform/profile.h"
#include "power/simulator/ups_simulator.h"
#include "power/ups_monitor.h"
#include "power_test_support.h"

namespace {
using namespace uc::test;
namespace sim = uc::power::sim;

class OpenUpsMonitor : public CUPSMonitor {
public:
    using CUPSMonitor::CUPSMonitor;
    using CUPSMonitor::GetBatteryLevel;
    using CUPSMonitor::GetPowerSource;
    using CUPSMonitor::m_connection;
    using CUPSMonitor::TestUPSPort;
};

class UpsTest : public testing::Test {
protected:
    void SetUp() override {
        UC_REQUIRE_LINES();
        CUPSMonitor::SetDefaultSettleTime(0ms);
        port = StartSimulator(host, 0, 2400);
        ASSERT_GE(port, 0);
        monitor = std::make_unique<OpenUpsMonitor>(clock);
        zelLogger::Instance().ClearEntries();
        ASSERT_TRUE(monitor->ConnectOnPort(port));
    }
    void TearDown() override {
        monitor.reset();
        CUPSMonitor::SetDefaultSettleTime(25ms);
    }
    // Runs a reading; the UPS answers at once unless told otherwise, so nothing needs the clock.
    Reading Read() { return ReadStatus(*monitor); }

    ProfileSandbox profile;
    TestClock clock;
    sim::UpsSimulator ups;
    sim::SimulatorHost host{ups, clock};
    std::unique_ptr<OpenUpsMonitor> monitor;
    int port = -1;
};

TEST_F(UpsTest, HandshakeOnAPortIsLoggedAndSaved) {
    const std::wstring p = std::to_wstring(port);
    EXPECT_EQ(zelLogger::Instance().Count(L"Attemping to connect to port " + p + L"..."), 1u);
    EXPECT_EQ(zelLogger::Instance().Count(L"Opened connection on port " + p), 1u);
    EXPECT_EQ(zelLogger::Instance().Count(L"Attempting handshake on port " + p + L"..."), 1u);
    EXPECT_EQ(zelLogger::Instance().Count(L"Handshake successful on port " + p), 1u);
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings\\Status", L"UPSPort", 255), port);
    EXPECT_TRUE(monitor->IsValid());
    EXPECT_FALSE(monitor->IsBatteryModule());
    EXPECT_EQ(ups.CommandsReceived('P'), 1);
    EXPECT_EQ(ups.CommandsReceived('B'), 3);
}

TEST_F(UpsTest, ChargingAndDepletingReadings) {
    ups.SetLevel(85);
    Reading r = Read();
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.source, IPowerMonitor::PowerLine);
    EXPECT_EQ(r.text, L"UPS charging");
    EXPECT_EQ(r.percent, 85);
    EXPECT_EQ(r.level, IPowerMonitor::WarningNone);
    ups.SetSource("0");
    ups.SetLevel(30);
    r = Read();
    ASSERT_TRUE(r.ok);
    EXPECT_EQ(r.source, IPowerMonitor::PowerBattery);
    EXPECT_EQ(r.text, L"UPS depleting");
    EXPECT_EQ(r.level, IPowerMonitor::WarningLow);
}

TEST_F(UpsTest, UnknownSourceStopsBeforeAskingForTheLevel) {
    ups.SetSource("?");
    const int before = ups.CommandsReceived('B');
    Reading r = Read();
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.source, IPowerMonitor::PowerUnknown);
    EXPECT_EQ(r.text, L"UPS unknown");
    EXPECT_EQ(ups.CommandsReceived('B'), before);
    EXPECT_EQ(monitor->GetBatteryLevel(IPowerMonitor::PowerUnknown), -1);
}

TEST_F(UpsTest, LevelsOutOfRangeOrEmptyAreIgnored) {
    ups.QueueReply('B', "101");
    ups.QueueReply('B', "-5");
    ups.QueueReply('B', "");
    Reading r = Read();
    EXPECT_FALSE(r.ok);
    EXPECT_EQ(r.percent, -1);
    EXPECT_EQ(r.level, IPowerMonitor::WarningCritical);
}

TEST_F(UpsTest, ThreeReadsAreAveragedAndATimeOutIsSkipped) {
    ups.QueueReply('B', "33");
    ups.QueueReply('B', "33");
    ups.QueueReply('B', "34");
    EXPECT_EQ(Read().percent, 33);
    ups.QueueReply('B', "50");
    ups.QueueReply('B', "60");
    ups.QueueReply('B', std::nullopt);
    const int before = ups.CommandsReceived('B');
    auto r = std::async(std::launch::async, [&] { return Read(); });
    ASSERT_TRUE(ups.WaitForCommands('B', before + 3, 10s));
    ASSERT_TRUE(clock.WaitForWaiters(1));
    clock.Advance(2000ms);
    Reading got = r.get();
    EXPECT_TRUE(got.ok);
    EXPECT_EQ(got.percent, 55);
}

TEST_F(UpsTest, ThresholdsDefaultOrComeFromTheProfile) {
    const std::pair<int, IPowerMonitor::WarningLevel> cases[] = {{35, IPowerMonitor::WarningNone},
                                                                 {34, IPowerMonitor::WarningLow},
                                                                 {19, IPowerMonitor::WarningVeryLow},
                                                                 {9, IPowerMonitor::WarningCritical}};
    ups.SetSource("0");
    for (auto [percent, level] : cases) {
        ups.SetLevel(percent);
        EXPECT_EQ(Read().level, level) << percent;
    }
    const std::pair<const wchar_t*, int> saved[] = {{L"UPSThresholdOne", 60}, {L"UPSThresholdTwo", 50}, {L"UPSThresholdThree", 40}};
    for (auto [key, value] : saved)
        vex_utils::WriteProfileInt(L"Settings\\Status", key, value);
    OpenUpsMonitor other(clock);
    EXPECT_EQ((std::vector<int>{other.GetThresholdOne(), other.GetThresholdTwo(), other.GetThresholdThree()}),
              (std::vector<int>{60, 50, 40}));
}

TEST_F(UpsTest, TooLongReplyIsDiscardedAndTheNextOneIsRead) {
    ups.QueueReply('B', "1234");
    ups.QueueReply('B', "40");
    ups.QueueReply('B', "40");
    Reading r = Read();
    EXPECT_TRUE(r.ok);
    EXPECT_EQ(r.percent, 40);
    EXPECT_EQ(monitor->m_connection.BufferedBytes(), 0u);
}

TEST_F(UpsTest, ReplyWithoutCarriageReturnTimesOut) {
    sim::Faults f;
    f.wrongEnd = true;  // no carriage return
    ups.SetFaults(f);
    auto r = std::async(std::launch::async, [&] { return monitor->GetPowerSource(); });
    ASSERT_TRUE(ups.WaitForCommands('P', 2, 10s));
    // The "1" without its carriage return wakes the caller, who then waits again: advance until it gives up.
    int advances = 0;
    while (!ReadySoon(r, 5ms)) {
        clock.Advance(500ms);
        ++advances;
    }
    EXPECT_EQ(r.get(), IPowerMonitor::PowerUnknown);
    EXPECT_LE(advances, 12) << "gives up after at most two reply time-outs";
}

TEST_F(UpsTest, SplitRepliesAreJoined) {
    sim::Faults f;
    f.splitAt = 1;
    f.splitDelay = 10ms;
    ups.SetFaults(f);
    ups.SetLevel(77);
    auto r = std::async(std::launch::async, [&] { return monitor->GetBatteryLevel(IPowerMonitor::PowerLine); });
    // Release each held-back second part; the reader's own 2000 ms time-out is never reached this way.
    while (!ReadySoon(r, 1ms))
        if (host.PendingOutputs() > 0 && clock.Waiters() >= 2) clock.Advance(10ms);
    EXPECT_EQ(r.get(), 77);
    // The writer may still be finishing the last part it wrote when the reply completes.
    EXPECT_TRUE(Eventually([&] { return host.PendingOutputs() == 0u; }));
}

TEST_F(UpsTest, UnaskedBytesAreTakenAsTheStartOfTheNextReply) {
    // Counts run from the port's opening, so they include the handshake's replies.
    const auto before = monitor->m_connection.GetReceivedCount();
    host.Inject({'7', 0x0D});
    ASSERT_TRUE(monitor->m_connection.WaitForReceivedCount(before + 2, 10s));
    EXPECT_EQ(monitor->GetPowerSource(), IPowerMonitor::PowerUnknown) << "\"7\" answered the question";
    // The real answer to that question is now the unasked one; nothing hangs or crashes meanwhile.
    ASSERT_TRUE(Eventually([&] { return monitor->m_connection.BufferedBytes() == 2; }));
    EXPECT_EQ(monitor->GetPowerSource(), IPowerMonitor::PowerLine);
}

TEST_F(UpsTest, ChattyUpsNeverHangsAQuery) {
    const auto before = monitor->m_connection.GetReceivedCount();
    for (int i = 0; i < 10; ++i) host.Inject({'x', 'y', 'z', 'w'});
    ASSERT_TRUE(monitor->m_connection.WaitForReceivedCount(before + 40, 10s));
    // The first reading drops the chatter as a too-long reply at once, without waiting for a time-out.
    auto r = std::async(std::launch::async, [&] { return Read(); });
    ASSERT_TRUE(ReadySoon(r)) << "a chatty line must not hold a reading until the clock runs out";
    const Reading first = r.get();
    EXPECT_FALSE(first.ok);
    EXPECT_EQ(first.source, IPowerMonitor::PowerUnknown);
    // The answer it never read then answers the next question (there is no flush); that reading works.
    const Reading next = Read();
    EXPECT_TRUE(next.ok);
    EXPECT_EQ(next.source, IPowerMonitor::PowerLine);
}

TEST_F(UpsTest, ShutdownOrdersNeedOK) {
    EXPECT_TRUE(monitor->SendUPSShutdown());
    EXPECT_TRUE(monitor->SendUPSInverterShutdown());
    EXPECT_EQ(ups.CommandsReceived('D'), 1);
    EXPECT_EQ(ups.CommandsReceived('X'), 1);
    ups.SetShutdownReply("NO");
    EXPECT_FALSE(monitor->SendUPSShutdown());
    ups.SetShutdownReply("O");
    EXPECT_FALSE(monitor->SendUPSShutdown());
}

TEST_F(UpsTest, StaticShutdownForwardsUnlessUpdating) {
    EXPECT_TRUE(CUPSMonitor::ShutdownUPS());
    EXPECT_TRUE(CUPSMonitor::ShutdownUPSInverter());
    EXPECT_EQ(ups.CommandsReceived('D'), 1);
    uc::WriteSystemProfileString(L"System", L"_IsUpdating", L"1");
    EXPECT_FALSE(CUPSMonitor::ShutdownUPS());
    EXPECT_FALSE(CUPSMonitor::ShutdownUPSInverter());
    EXPECT_EQ(ups.CommandsReceived('D'), 1) << "nothing sent while updating";
    EXPECT_EQ(ups.CommandsReceived('X'), 1);
    uc::WriteSystemProfileString(L"System", L"_IsUpdating", L"0");
    monitor.reset();
    EXPECT_FALSE(CUPSMonitor::HasRegisteredInstance());
    EXPECT_FALSE(CUPSMonitor::ShutdownUPS()) << "no instance";
}

TEST_F(UpsTest, LastConstructedMonitorIsTheRegisteredOneEvenWithItsPortClosed) {
    {
        OpenUpsMonitor newer(clock);
        EXPECT_FALSE(CUPSMonitor::ShutdownUPS()) << "the newest monitor has no open port";
    }
    EXPECT_FALSE(CUPSMonitor::HasRegisteredInstance()) << "the older one is not re-registered";
    EXPECT_EQ(ups.CommandsReceived('D'), 0);
}

TEST_F(UpsTest, ConcurrentCallersAreSerialisedByTheCommandLock) {
    ups.SetLevel(64);
    std::vector<std::future<Reading>> readers;
    for (int i = 0; i < 3; ++i) readers.push_back(std::async(std::launch::async, [&] { return Read(); }));
    auto stop = std::async(std::launch::async, [&] { return CUPSMonitor::ShutdownUPS(); });
    for (auto& r : readers) {
        ASSERT_TRUE(ReadySoon(r));
        Reading got = r.get();
        EXPECT_TRUE(got.ok);
        EXPECT_EQ(got.percent, 64);
    }
    ASSERT_TRUE(ReadySoon(stop));
    EXPECT_TRUE(stop.get());
}

TEST_F(UpsTest, TerminateClosesAndLogs) {
    zelLogger::Instance().ClearEntries();
    EXPECT_TRUE(monitor->Create()) << "the saved port is tried first and answers";
    EXPECT_EQ(zelLogger::Instance().Count(L"Shutting down the Status Services (UPS Monitor)..."), 1u);
    EXPECT_EQ(zelLogger::Instance().Count(L"UPS connection succeeded."), 1u);
    const auto entries = zelLogger::Instance().Entries();
    ASSERT_GE(entries.size(), 2u);
    EXPECT_EQ(entries[1].text, L"Attemping to connect to port " + std::to_wstring(port) + L"...");
}

TEST(UpsHandshake, SilentPortIsClosedAgainWithItsLogLines) {
    UC_REQUIRE_LINES();
    ProfileSandbox profile;
    TestClock clock;
    sim::UpsSimulator ups;
    sim::Faults f;
    f.silent = true;
    ups.SetFaults(f);
    sim::SimulatorHost host(ups, clock);
    const int port = StartSimulator(host, 0, 2400);
    ASSERT_GE(port, 0);
    OpenUpsMonitor monitor(clock);
    monitor.SetSettleTime(25ms);
    zelLogger::Instance().ClearEntries();
    auto r = std::async(std::launch::async, [&] { return monitor.TestUPSPort(port); });
    ASSERT_TRUE(clock.WaitForWaiters(1));
    EXPECT_EQ(ups.CommandsReceived('P'), 0) << "the UPS is given 25 ms to settle first";
    clock.Advance(25ms);
    ASSERT_TRUE(ups.WaitForCommands('P', 1, 10s));
    ASSERT_TRUE(clock.WaitForWaiters(1));
    clock.Advance(2000ms);
    EXPECT_FALSE(r.get());
    const std::wstring p = std::to_wstring(port);
    EXPECT_EQ(zelLogger::Instance().Count(L"Handshake unsuccessful on port " + p), 1u);
    EXPECT_EQ(zelLogger::Instance().Count(L"Closed connection on port " + p), 1u);
    EXPECT_FALSE(monitor.IsValid());
    EXPECT_EQ(vex_utils::GetProfileIntW(L"Settings\\Status", L"UPSPort", 255), 255);
}

}  // namespace

namespace {
using namespace uc::test;

TEST(UpsLink, BytesFromAPortTriedBeforeAreNotTakenAsTheNextPortsReply) {
    UC_REQUIRE_LINES();
    ProfileSandbox profile;
    TestClock clock;
    uc::power::sim::UpsSimulator noisy, real;
    noisy.SetFaults({});
    uc::power::sim::SimulatorHost noisyHost(noisy, clock), realHost(real, clock);
    const int noisyPort = StartSimulator(noisyHost, 0, 2400);
    const int realPort = StartSimulator(realHost, 1, 2400);
    ASSERT_GE(noisyPort, 0);
    ASSERT_GE(realPort, 0);
    CUPSConnection link(clock);
    ASSERT_TRUE(link.Open(noisyPort, 2400));
    noisyHost.Inject({'0', 0x0D});
    ASSERT_TRUE(link.WaitForReceivedCount(2, 10s));
    ASSERT_TRUE(Eventually([&] { return link.BufferedBytes() == 2; }));
    link.Close();
    ASSERT_TRUE(link.Open(realPort, 2400));
    EXPECT_EQ(link.BufferedBytes(), 0u);
    unsigned char reply[2] = {};
    ASSERT_TRUE(link.SendCommand('P', reply, 1));
    EXPECT_EQ(reply[0], '1') << "the answer of this port's UPS, not the left-over '0'";
}

}  // namespace
