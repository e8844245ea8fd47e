// Injectable time: a clock interface with a real and a hand-driven implementation, events and periodic timers on it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/export.h"

namespace uc {

using Millis = std::chrono::milliseconds;

// Every wait with a time-out in the library goes through a Clock, so tests can drive time by hand.
class UC_API Clock {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    virtual ~Clock() = default;
    virtual TimePoint Now() const = 0;
    // Blocks on `cv` (whose mutex `lock` holds) until notified or until the clock reaches `deadline`.
    // May return early (spurious wake-up); callers re-check their condition and the time.
    virtual void WaitUntil(std::condition_variable& cv, std::unique_lock<std::mutex>& lock, TimePoint deadline) = 0;

    void SleepFor(Millis duration);

    // The process-wide real clock.
    static Clock& System();
};

class UC_API SystemClock final : public Clock {
public:
    TimePoint Now() const override;
    void WaitUntil(std::condition_variable& cv, std::unique_lock<std::mutex>& lock, TimePoint deadline) override;
};

// A clock that only moves when Advance is called. Waiters registered on it are woken on every advance.
class UC_API ManualClock final : public Clock {
public:
    ManualClock();
    TimePoint Now() const override;
    void WaitUntil(std::condition_variable& cv, std::unique_lock<std::mutex>& lock, TimePoint deadline) override;

    void Advance(Millis step);
    // Number of threads currently blocked in WaitUntil on this clock.
    std::size_t Waiters() const;
    // Blocks (in real time, at most `limit`) until at least `count` threads wait on this clock.
    // Lets a test advance time only once the code under test is really waiting.
    bool WaitForWaiters(std::size_t count, std::chrono::milliseconds limit = std::chrono::seconds(10)) const;

private:
    struct Waiter {
        std::condition_variable* cv;
        std::mutex* mutex;
    };
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_waitersChanged;
    TimePoint m_now;
    std::vector<Waiter> m_waiters;
    int m_notifying = 0;
};

// A Win32-style event: manual or automatic reset, waits with a time-out measured on a Clock.
class UC_API Event {
public:
    explicit Event(bool manualReset = false, bool initiallySet = false, Clock& clock = Clock::System());
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    void Set();
    void Reset();
    bool IsSet() const;
    // True when the event was signalled within `timeout`; an auto-reset event is consumed by the wait.
    bool Wait(Millis timeout);
    void Wait();

private:
    Clock& m_clock;
    bool m_manualReset;
    bool m_set;
    mutable std::mutex m_mutex;
    std::condition_variable m_cv;
};

// Calls `tick` every `period` on its own thread until stopped. The first tick comes one period after Start.
class UC_API PeriodicTimer {
public:
    PeriodicTimer(Clock& clock, Millis period, std::function<void()> tick);
    PeriodicTimer(const PeriodicTimer&) = delete;
    PeriodicTimer& operator=(const PeriodicTimer&) = delete;
    ~PeriodicTimer();

    void Start();
    // Stops and joins the thread; safe to call from any thread but the timer's own.
    void Stop();
    bool Running() const;

private:
    void Run();

    Clock& m_clock;
    Millis m_period;
    std::function<void()> m_tick;
    mutable std::mutex m_mutex;
    std::condition_variable m_cv;
    bool m_stop = false;
    std::thread m_thread;
};

}  // namespace uc
