// Hand-driven time: events with time-outs, periodic timers and racing signals, with no real sleeping.
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

#include "platform/clock.h"

namespace {
using namespace std::chrono_literals;

TEST(ManualClock, EventWaitTimesOutOnlyWhenTimeIsAdvanced) {
    uc::ManualClock clock;
    uc::Event ev(false, false, clock);
    auto result = std::async(std::launch::async, [&] { return ev.Wait(2000ms); });
    ASSERT_TRUE(clock.WaitForWaiters(1));
    clock.Advance(1999ms);
    ASSERT_TRUE(clock.WaitForWaiters(1));
    EXPECT_EQ(result.wait_for(0ms), std::future_status::timeout) << "woke before its time-out";
    clock.Advance(1ms);
    EXPECT_FALSE(result.get());
}

TEST(ManualClock, SignalBeforeDeadlineWinsAndAutoResetIsConsumed) {
    uc::ManualClock clock;
    uc::Event ev(false, false, clock);
    auto result = std::async(std::launch::async, [&] { return ev.Wait(100ms); });
    ASSERT_TRUE(clock.WaitForWaiters(1));
    ev.Set();
    EXPECT_TRUE(result.get());
    EXPECT_FALSE(ev.IsSet());
    EXPECT_FALSE(ev.Wait(0ms));

    uc::Event manual(true, true, clock);
    EXPECT_TRUE(manual.Wait(0ms));
    EXPECT_TRUE(manual.Wait(0ms)) << "manual-reset stays set";
    manual.Reset();
    EXPECT_FALSE(manual.Wait(0ms));
}

TEST(ManualClock, ManyWaitersRacingAdvanceAndSetLoseNothing) {
    uc::ManualClock clock;
    for (int round = 0; round < 50; ++round) {
        uc::Event ev(true, false, clock);
        std::atomic<int> woken{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < 4; ++i)
            threads.emplace_back([&] {
                ev.Wait(10ms);
                ++woken;
            });
        clock.WaitForWaiters(static_cast<std::size_t>(1 + round % 4));
        if (round % 2) {
            ev.Set();
        }
        // Advance until every waiter has left; a lost wake-up would hang here.
        while (woken < 4) clock.Advance(5ms);
        for (auto& t : threads) t.join();
    }
    EXPECT_EQ(clock.Waiters(), 0u);
}

TEST(PeriodicTimer, TicksOncePerPeriodAndStopsPromptly) {
    uc::ManualClock clock;
    std::atomic<int> ticks{0};
    uc::Event ticked(false, false);
    uc::PeriodicTimer timer(clock, 5000ms, [&] {
        ++ticks;
        ticked.Set();
    });
    timer.Start();
    ASSERT_TRUE(clock.WaitForWaiters(1));
    clock.Advance(4999ms);
    ASSERT_TRUE(clock.WaitForWaiters(1));
    EXPECT_EQ(ticks, 0);
    for (int i = 1; i <= 3; ++i) {
        clock.Advance(i == 1 ? 1ms : 5000ms);
        ticked.Wait();
        ASSERT_TRUE(clock.WaitForWaiters(1));
        EXPECT_EQ(ticks, i);
    }
    // A long stall does not replay the missed ticks.
    clock.Advance(60000ms);
    ticked.Wait();
    ASSERT_TRUE(clock.WaitForWaiters(1));
    EXPECT_EQ(ticks, 4);
    timer.Stop();
    EXPECT_FALSE(timer.Running());
    EXPECT_EQ(clock.Waiters(), 0u);
}

TEST(SystemClock, ZeroTimeoutDoesNotBlock) {
    uc::Event ev;
    EXPECT_FALSE(ev.Wait(0ms));
    ev.Set();
    EXPECT_TRUE(ev.Wait(0ms));
}

}  // namespace
