// BatteryConnection: reply matching and recovery, in memory and against the simulated module over a real port.
#include <gtest/gtest.h>

#include <set>
#include <thread>

#include "platform/logger.h"
#include "power/battery_protocol.h"
#include "power/simulator/battery_simulator.h"
#include "power_test_support.h"

namespace {
using namespace uc::test;
namespace bp = uc::power::battery;
namespace sim = uc::power::sim;
using Bytes = std::vector<unsigned char>;

void Feed(OpenBatteryConnection& c, const Bytes& b) {
    CCircularBuffer buffer(4096);
    buffer.Write(b.data(), static_cast<unsigned>(b.size()));
    c.Tokenize(buffer);
}

// Waits on another thread for a 0x2E reply; gives its first data byte, or -1 when it timed out.
std::future<int> WaitAsync(OpenBatteryConnection& c) {
    return std::async(std::launch::async, [&c] {
        unsigned char length = 0, data[255] = {};
        return c.WaitForAcknowledge(0x2E, length, data, 2000) ? static_cast<int>(data[0]) : -1;
    });
}

// --- The reply list and waiters, driven by hand (no port) ---

TEST(BatteryReplies, WrongEndByteStopsTheBatchUntilMoreDataArrives) {
    TestClock clock;
    OpenBatteryConnection c(clock);
    zelLogger::Instance().ClearEntries();
    CCircularBuffer buffer(256);
    Bytes batch = {0xB9, 0x1C, 0x01, 0x00, 0x00, 0xB9, 0x1C, 0x01, 0x00, 0xAA};
    buffer.Write(batch.data(), static_cast<unsigned>(batch.size()));
    c.Tokenize(buffer);
    EXPECT_EQ(c.PendingReplies(), 0u) << "the good frame behind the damaged one waits";
    EXPECT_EQ(buffer.GetValidCount(), 9u);
    EXPECT_EQ(zelLogger::Instance().Count(L"FindCommand - Command missing end of frame (command 28: bytes expected 1)"),
              1u);
    const unsigned char more = 0x00;
    buffer.Write(&more, 1);
    c.Tokenize(buffer);
    EXPECT_EQ(c.PendingReplies(), 1u);
    unsigned char length = 9, data[255] = {1};
    EXPECT_TRUE(c.WaitForAcknowledge(bp::PingReply, length, data, 0));
    EXPECT_EQ(length, 1);
    EXPECT_EQ(data[0], 0);
}

TEST(BatteryReplies, OldestMatchingReplyIsTakenAndOthersStay) {
    TestClock clock;
    OpenBatteryConnection c(clock);
    Feed(c, bp::EncodeReply(0x2E, {1}));
    Feed(c, bp::EncodeReply(0x1C, {0}));
    Feed(c, bp::EncodeReply(0x2E, {2}));
    Feed(c, bp::EncodeReply(0x40));
    unsigned char length = 0, data[255];
    ASSERT_TRUE(c.WaitForAcknowledge(0x2E, length, data, 0));
    EXPECT_EQ(data[0], 1);
    ASSERT_TRUE(c.WaitForAcknowledge(0x40, length, data, 0));
    EXPECT_EQ(length, 0) << "a zero-length reply is a whole frame";
    ASSERT_TRUE(c.WaitForAcknowledge(0x2E, length, data, 0));
    EXPECT_EQ(data[0], 2);
    EXPECT_EQ(c.PendingReplies(), 1u);
    EXPECT_FALSE(c.WaitForAcknowledge(0x2E, length, data, 0));
}

TEST(BatteryReplies, WaitTimesOutOnTheClockAndLeavesNoWaiter) {
    TestClock clock;
    OpenBatteryConnection c(clock);
    auto r = std::async(std::launch::async, [&] {
        unsigned char length = 0, data[255];
        return c.WaitForAcknowledge(bp::PingReply, length, data, 1000);
    });
    ASSERT_TRUE(clock.WaitForWaiters(1));
    clock.Advance(999ms);
    ASSERT_TRUE(clock.WaitForWaiters(1));
    EXPECT_TRUE(StillWaiting(r));
    clock.Advance(1ms);
    EXPECT_FALSE(r.get());
    EXPECT_EQ(c.Waiters(), 0u);
}

TEST(BatteryReplies, FirstToWaitGetsTheFirstReplyOneWakePerFrame) {
    TestClock clock;
    OpenBatteryConnection c(clock);
    auto first = WaitAsync(c);
    ASSERT_TRUE(Eventually([&] { return c.Waiters() == 1; }));
    auto second = WaitAsync(c);
    ASSERT_TRUE(Eventually([&] { return c.Waiters() == 2; }));
    Feed(c, bp::EncodeReply(0x2E, {7}));
    ASSERT_TRUE(ReadySoon(first));
    EXPECT_EQ(first.get(), 7);
    EXPECT_TRUE(StillWaiting(second)) << "one frame wakes one waiter";
    Feed(c, bp::EncodeReply(0x2E, {8}));
    ASSERT_TRUE(ReadySoon(second));
    EXPECT_EQ(second.get(), 8);
}

TEST(BatteryReplies, TwoFramesInOneBatchWakeTwoWaiters) {
    TestClock clock;
    OpenBatteryConnection c(clock);
    auto a = WaitAsync(c);
    auto b = WaitAsync(c);
    ASSERT_TRUE(Eventually([&] { return c.Waiters() == 2; }));
    Bytes both = bp::EncodeReply(0x2E, {1});
    Bytes second = bp::EncodeReply(0x2E, {2});
    both.insert(both.end(), second.begin(), second.end());
    Feed(c, both);
    // Neither may be left waiting for its time-out: the clock is never advanced here.
    ASSERT_TRUE(ReadySoon(a));
    ASSERT_TRUE(ReadySoon(b));
    EXPECT_EQ((std::set<int>{a.get(), b.get()}), (std::set<int>{1, 2}));
}

TEST(BatteryReplies, SendCommandRefusesMissingData) {
    OpenBatteryConnection c;
    zelLogger::Instance().ClearEntries();
    EXPECT_FALSE(c.SendCommand(0x10, 2, nullptr));
    EXPECT_EQ(zelLogger::Instance().Count(L"SendCommand - Null pointer given for data (command 16: bytes expected 2)"),
              1u);
    EXPECT_FALSE(c.SendCommand(0x10, 0, nullptr)) << "closed port";
    EXPECT_FALSE(c.PingBattery());
}

// --- Against the simulated module over a real port ---

class BatteryLinkTest : public testing::Test {
protected:
    void SetUp() override {
        UC_REQUIRE_LINES();
        port = StartSimulator(host, 0, 38400);
        ASSERT_GE(port, 0);
        ASSERT_TRUE(link.Open(port, 38400));
    }
    TestClock clock;
    sim::BatteryModuleSimulator module;
    uc::power::sim::SimulatorHost host{module, clock};
    OpenBatteryConnection link{clock};
    int port = -1;

    void Silence() {
        sim::Faults f;
        f.silent = true;
        module.SetFaults(f);
    }
    std::future<bool> StatusAsync(BatteryStatus& out) {
        return std::async(std::launch::async, [&] { return link.GetBatteryStatus(out); });
    }
};

TEST_F(BatteryLinkTest, PingAndStatusRoundTrip) {
    EXPECT_TRUE(link.PingBattery());
    module.SetVoltage(24.0);
    module.SetPercent(55);
    BatteryStatus status;
    ASSERT_TRUE(link.GetBatteryStatus(status));
    EXPECT_EQ(status.GetPercent(), 55);
    EXPECT_NEAR(status.GetVoltage(), 24.0, 0.02);
    EXPECT_EQ(module.CommandsReceived(bp::PingCommand), 1);
    EXPECT_EQ(module.CommandsReceived(bp::StatusCommand), 1);
}

TEST_F(BatteryLinkTest, GarbageBeforeEveryReplyIsSkipped) {
    sim::Faults f;
    f.garbage = {0x00, 0xFF, 0x12, 0xAA, 0x2E};
    module.SetFaults(f);
    EXPECT_TRUE(link.PingBattery());
    BatteryStatus status;
    EXPECT_TRUE(link.GetBatteryStatus(status));
}

TEST_F(BatteryLinkTest, SplitReplyIsDeliveredWhenItsLastPartArrives) {
    sim::Faults f;
    f.splitAt = 3;  // B9 2E 27, then the rest
    f.splitDelay = 50ms;
    module.SetFaults(f);
    BatteryStatus status;
    auto r = StatusAsync(status);
    ASSERT_TRUE(link.WaitForReceivedCount(3, 10s));
    EXPECT_TRUE(StillWaiting(r));
    EXPECT_EQ(link.PendingReplies(), 0u);
    ASSERT_TRUE(clock.WaitForWaiters(2));  // the caller and the module's held-back part
    clock.Advance(50ms);
    ASSERT_TRUE(ReadySoon(r));
    EXPECT_TRUE(r.get());
}

TEST_F(BatteryLinkTest, WrongEndByteFailsThatReplyOnlyAndIsLogged) {
    zelLogger::Instance().ClearEntries();
    sim::Faults f;
    f.wrongEnd = true;
    module.SetFaults(f);
    auto r = std::async(std::launch::async, [&] { return link.PingBattery(); });
    ASSERT_TRUE(link.WaitForReceivedCount(5, 10s));
    ASSERT_TRUE(clock.WaitForWaiters(1));
    clock.Advance(1000ms);
    EXPECT_FALSE(r.get());
    EXPECT_GE(zelLogger::Instance().Count(L"FindCommand - Command missing end of frame (command 28: bytes expected 1)"),
              1u);
    module.SetFaults({});
    EXPECT_TRUE(link.PingBattery()) << "the link recovers with the next good frame";
}

TEST_F(BatteryLinkTest, RepliesOfTheWrongSizeOrDataFailAndLeaveTheRecordAlone) {
    for (const Bytes& wrong : {Bytes{1}, Bytes{0, 0}}) {
        module.SetPingReply(wrong);
        EXPECT_FALSE(link.PingBattery()) << wrong.size();
    }
    module.SetPingReply({0});
    EXPECT_TRUE(link.PingBattery());
    unsigned char raw[BatteryStatus::Size];
    std::fill(raw, raw + BatteryStatus::Size, 0x5A);
    BatteryStatus status;
    status.Initialize(raw);
    for (std::size_t length : {38u, 40u, 0u}) {
        module.SetStatusLength(length);
        EXPECT_FALSE(link.GetBatteryStatus(status)) << length;
        EXPECT_EQ(status.GetRawData()[1], 0x5A);
    }
}

TEST_F(BatteryLinkTest, LateReplyAnswersTheNextPing) {
    sim::Faults f;
    f.replyDelay = 1500ms;
    module.SetFaults(f);
    auto r = std::async(std::launch::async, [&] { return link.PingBattery(); });
    ASSERT_TRUE(module.WaitForCommands(bp::PingCommand, 1, 10s));
    ASSERT_TRUE(clock.WaitForWaiters(2));
    clock.Advance(1000ms);
    EXPECT_FALSE(r.get()) << "timed out";
    clock.Advance(500ms);
    ASSERT_TRUE(link.WaitForReceivedCount(5, 10s));
    EXPECT_EQ(link.PendingReplies(), 1u) << "kept for a later wait";
    f.silent = true;
    module.SetFaults(f);
    EXPECT_TRUE(link.PingBattery()) << "the late reply answers the next ping at once";
    EXPECT_EQ(link.PendingReplies(), 0u);
}

TEST_F(BatteryLinkTest, ModuleAnsweringTwiceLeavesTheDuplicateForTheNextCall) {
    module.SetNumberReplies(true);
    sim::Faults f;
    f.repeat = 2;
    module.SetFaults(f);
    BatteryStatus a, b;
    ASSERT_TRUE(link.GetBatteryStatus(a));
    EXPECT_EQ(a.GetRawData()[0], 1);
    ASSERT_TRUE(link.WaitForReceivedCount(2 * 43, 10s));
    EXPECT_EQ(link.PendingReplies(), 1u);
    ASSERT_TRUE(link.GetBatteryStatus(b));
    EXPECT_EQ(b.GetRawData()[0], 1) << "the duplicate is oldest, so it is delivered first; nothing is lost";
    ASSERT_TRUE(link.WaitForReceivedCount(4 * 43, 10s));
    EXPECT_EQ(link.PendingReplies(), 2u);
}

TEST_F(BatteryLinkTest, TwoThreadsAskingAtOnceEachGetOneRecord) {
    module.SetNumberReplies(true);
    for (int round = 0; round < 20; ++round) {
        BatteryStatus a, b;
        auto ra = StatusAsync(a);
        auto rb = StatusAsync(b);
        ASSERT_TRUE(ReadySoon(ra));
        ASSERT_TRUE(ReadySoon(rb));
        ASSERT_TRUE(ra.get());
        ASSERT_TRUE(rb.get());
        EXPECT_NE(a.GetRawData()[0], b.GetRawData()[0]) << "one record each, none given twice";
    }
    EXPECT_EQ(link.PendingReplies(), 0u);
}

TEST_F(BatteryLinkTest, SilentModuleOrClosedPortEndsTheWaitAtItsTimeOut) {
    Silence();
    BatteryStatus status;
    auto r = StatusAsync(status);
    ASSERT_TRUE(clock.WaitForWaiters(1));
    clock.Advance(1999ms);
    ASSERT_TRUE(clock.WaitForWaiters(1));
    EXPECT_TRUE(link.Close());
    EXPECT_TRUE(StillWaiting(r)) << "closing does not cut a wait short";
    clock.Advance(1ms);
    EXPECT_FALSE(r.get());
    EXPECT_EQ(link.Waiters(), 0u);
    EXPECT_FALSE(link.GetBatteryStatus(status)) << "closed: fails at once";
}

TEST_F(BatteryLinkTest, DeviceUnpluggedWhileACallerWaits) {
    Silence();
    BatteryStatus status;
    auto r = StatusAsync(status);
    ASSERT_TRUE(clock.WaitForWaiters(1));
    host.Unplug();
#ifndef _WIN32
    EXPECT_TRUE(Eventually([&] { return !link.IsReceiving(); })) << "the receiving thread notices the hang-up";
#endif
    clock.Advance(2000ms);
    EXPECT_FALSE(r.get());
    // Further queries fail without hanging: at once where the write fails, else at their time-out.
    auto again = StatusAsync(status);
    while (!ReadySoon(again, 1ms)) clock.Advance(500ms);
    EXPECT_FALSE(again.get());
    EXPECT_TRUE(link.IsOpen()) << "nothing reopens or closes the link by itself";
}

}  // namespace
