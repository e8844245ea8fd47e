// Real and hand-driven clocks, events and periodic timers.
#include "platform/clock.h"

#include <algorithm>

namespace uc {

void Clock::SleepFor(Millis duration) {
    std::mutex m;
    std::condition_variable cv;
    std::unique_lock<std::mutex> lock(m);
    const TimePoint deadline = Now() + duration;
    while (Now() < deadline) WaitUntil(cv, lock, deadline);
}

Clock& Clock::System() {
    static SystemClock clock;
    return clock;
}

Clock::TimePoint SystemClock::Now() const { return std::chrono::steady_clock::now(); }

void SystemClock::WaitUntil(std::condition_variable& cv, std::unique_lock<std::mutex>& lock, TimePoint deadline) {
    cv.wait_until(lock, deadline);
}

ManualClock::ManualClock() : m_now(std::chrono::steady_clock::time_point{} + std::chrono::hours(1)) {}

Clock::TimePoint ManualClock::Now() const {
    std::lock_guard<std::mutex> g(m_mutex);
    return m_now;
}

void ManualClock::WaitUntil(std::condition_variable& cv, std::unique_lock<std::mutex>& lock, TimePoint deadline) {
    {
        std::lock_guard<std::mutex> g(m_mutex);
        if (m_now >= deadline) return;
        m_waiters.push_back({&cv, lock.mutex()});
        m_waitersChanged.notify_all();
    }
    // Advance takes the caller's mutex before notifying, so no wake-up is lost between the check and the wait.
    cv.wait(lock);
    // Leave only when no Advance is still notifying: it may hold a pointer to this cv and mutex.
    lock.unlock();
    {
        std::unique_lock<std::mutex> g(m_mutex);
        auto it = std::find_if(m_waiters.begin(), m_waiters.end(), [&](const Waiter& w) { return w.cv == &cv; });
        if (it != m_waiters.end()) m_waiters.erase(it);
        m_waitersChanged.notify_all();
        m_waitersChanged.wait(g, [&] { return m_notifying == 0; });
    }
    lock.lock();
}

void ManualClock::Advance(Millis step) {
    std::vector<Waiter> toWake;
    {
        std::lock_guard<std::mutex> g(m_mutex);
        m_now += step;
        toWake = m_waiters;
        ++m_notifying;
    }
    for (const Waiter& w : toWake) {
        std::lock_guard<std::mutex> g(*w.mutex);
        w.cv->notify_all();
    }
    std::lock_guard<std::mutex> g(m_mutex);
    --m_notifying;
    m_waitersChanged.notify_all();
}

std::size_t ManualClock::Waiters() const {
    std::lock_guard<std::mutex> g(m_mutex);
    return m_waiters.size();
}

bool ManualClock::WaitForWaiters(std::size_t count, std::chrono::milliseconds limit) const {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_waitersChanged.wait_for(lock, limit, [&] { return m_waiters.size() >= count; });
}

Event::Event(bool manualReset, bool initiallySet, Clock& clock)
    : m_clock(clock), m_manualReset(manualReset), m_set(initiallySet) {}

void Event::Set() {
    std::lock_guard<std::mutex> g(m_mutex);
    m_set = true;
    if (m_manualReset)
        m_cv.notify_all();
    else
        m_cv.notify_one();
}

void Event::Reset() {
    std::lock_guard<std::mutex> g(m_mutex);
    m_set = false;
}

bool Event::IsSet() const {
    std::lock_guard<std::mutex> g(m_mutex);
    return m_set;
}

bool Event::Wait(Millis timeout) {
    std::unique_lock<std::mutex> lock(m_mutex);
    const Clock::TimePoint deadline = m_clock.Now() + timeout;
    while (!m_set) {
        if (m_clock.Now() >= deadline) return false;
        m_clock.WaitUntil(m_cv, lock, deadline);
    }
    if (!m_manualReset) m_set = false;
    return true;
}

void Event::Wait() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_cv.wait(lock, [&] { return m_set; });
    if (!m_manualReset) m_set = false;
}

PeriodicTimer::PeriodicTimer(Clock& clock, Millis period, std::function<void()> tick)
    : m_clock(clock), m_period(period), m_tick(std::move(tick)) {}

PeriodicTimer::~PeriodicTimer() { Stop(); }

void PeriodicTimer::Start() {
    Stop();
    {
        std::lock_guard<std::mutex> g(m_mutex);
        m_stop = false;
    }
    m_thread = std::thread([this] { Run(); });
}

void PeriodicTimer::Stop() {
    {
        std::lock_guard<std::mutex> g(m_mutex);
        m_stop = true;
        m_cv.notify_all();
    }
    if (m_thread.joinable()) m_thread.join();
}

bool PeriodicTimer::Running() const { return m_thread.joinable(); }

void PeriodicTimer::Run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    Clock::TimePoint next = m_clock.Now() + m_period;
    while (!m_stop) {
        if (m_clock.Now() < next) {
            m_clock.WaitUntil(m_cv, lock, next);
            continue;
        }
        // Ticks that were missed while the callback ran are not replayed; the schedule moves on.
        next += m_period;
        const Clock::TimePoint now = m_clock.Now();
        if (next <= now) next = now + m_period;
        lock.unlock();
        m_tick();
        lock.lock();
    }
}

}  // namespace uc
