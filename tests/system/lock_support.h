// Shared pieces of the lock tests: mutex names unique to one run, and the priority-order scenario.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/clock.h"
#include "system/custom_mutex.h"

namespace uc::test {

// Concurrent test programs never share a lock by accident.
inline std::wstring UniqueLockName(const std::wstring& tag) {
    static std::atomic<int> counter{0};
    static const long long run = std::chrono::steady_clock::now().time_since_epoch().count() % 1000000007;
    return L"uc-lock-test-" + std::to_wstring(run) + L"-" + std::to_wstring(counter++) + L"-" + tag;
}

// `m` is held elsewhere (another thread or process) until `releaseHolder` runs. A priority locker starts
// waiting; an ordinary locker of the same object comes later and must poll (on a hand-driven clock) instead
// of waiting, so that when the holder lets go the priority locker gets the mutex first.
inline void ExpectPriorityLockerFirst(CCustomMutex& m, const std::function<void()>& releaseHolder) {
    uc::ManualClock clock;
    std::mutex orderMutex;
    std::vector<char> order;
    auto record = [&](char who) {
        std::lock_guard<std::mutex> l(orderMutex);
        order.push_back(who);
    };
    uc::Event priorityHas, releasePriority;
    bool priorityValid = false, ordinaryValid = false;
    std::thread priority([&] {
        CPriorityLock p(m);
        priorityValid = p.IsValid();
        record('P');
        priorityHas.Set();
        releasePriority.Wait();
    });
    while (m.PriorityWaiters() == 0) std::this_thread::yield();
    std::thread ordinary([&] {
        CMutexLock o(m, clock);
        ordinaryValid = o.IsValid();
        record('O');
    });
    EXPECT_TRUE(clock.WaitForWaiters(1)) << "the ordinary locker polls instead of waiting";
    releaseHolder();
    EXPECT_TRUE(priorityHas.Wait(uc::Millis(30000)));
    // Its next look finds no priority locker waiting; it then waits for the one holding the mutex.
    clock.Advance(uc::Millis(10));
    releasePriority.Set();
    priority.join();
    ordinary.join();
    EXPECT_EQ(order, (std::vector<char>{'P', 'O'}));
    EXPECT_TRUE(priorityValid);
    EXPECT_TRUE(ordinaryValid);
}

}  // namespace uc::test
