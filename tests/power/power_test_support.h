// Shared pieces of the power tests: a connection with its protected parts opened up, and a device fixture.
#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/clock.h"
#include "platform/serial/test_line.h"
#include "power/battery_connection.h"
#include "power/power_monitor.h"
#include "power/simulator/simulator_host.h"

namespace uc::test {

using namespace std::chrono_literals;

class OpenBatteryConnection : public BatteryConnection {
public:
    using BatteryConnection::BatteryConnection;
    using BatteryConnection::FindAndRemoveAck;
    using BatteryConnection::FindCommand;
    using BatteryConnection::SendCommand;
    using BatteryConnection::Tokenize;
    using BatteryConnection::WaitForAcknowledge;
};

// The manual clock of a device test, watched. Once threads have waited on it for 20 s of real time while it
// stood still, the test has failed or is stuck (a passing test never idles that long, even on a loaded machine
// under ThreadSanitizer), so the clock is moved on until nobody waits and the test is failed: a test left early
// by a failed assertion, or a call that never gets its reply, then ends instead of hanging on a wait nobody
// would end.
class TestClock {
public:
    TestClock() : m_watch([this] { Watch(); }) {}
    ~TestClock() {
        {
            std::lock_guard<std::mutex> g(m_mutex);
            m_stop = true;
        }
        m_wake.notify_all();
        m_watch.join();
        if (m_fired) ADD_FAILURE() << "a call waited on the test clock for good; the clock was moved on to end it";
    }
    operator uc::ManualClock&() { return m_clock; }
    uc::Clock::TimePoint Now() const { return m_clock.Now(); }
    void Advance(uc::Millis step) { m_clock.Advance(step); }
    std::size_t Waiters() const { return m_clock.Waiters(); }
    bool WaitForWaiters(std::size_t count, std::chrono::milliseconds limit = 10s) const {
        return m_clock.WaitForWaiters(count, limit);
    }

private:
    void Watch() {
        auto seen = m_clock.Now();
        auto since = std::chrono::steady_clock::now();
        std::unique_lock<std::mutex> lock(m_mutex);
        while (!m_wake.wait_for(lock, 10ms, [this] { return m_stop; })) {
            if (m_clock.Waiters() == 0 || m_clock.Now() != seen) {
                seen = m_clock.Now();
                since = std::chrono::steady_clock::now();
            } else if (m_fired || std::chrono::steady_clock::now() - since > 20s) {
                m_fired = true;
                m_clock.Advance(1s);
            }
        }
    }
    uc::ManualClock m_clock;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    bool m_stop = false;
    std::atomic<bool> m_fired{false};
    std::thread m_watch;
};

// A future that must become ready without anyone advancing the clock: bounded in real time.
template <class T>
bool ReadySoon(std::future<T>& f, std::chrono::milliseconds limit = 10s) {
    return f.wait_for(limit) == std::future_status::ready;
}
template <class T>
bool StillWaiting(std::future<T>& f) {
    return f.wait_for(0ms) == std::future_status::timeout;
}

// Polls a condition in real time, for state another thread reaches (never a fixed sleep).
template <class F>
bool Eventually(F&& condition, std::chrono::milliseconds limit = 10s) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        std::this_thread::yield();
    }
    return true;
}

// One GetCurrentStatus call, its four outputs kept.
struct Reading {
    bool ok = false;
    IPowerMonitor::EPowerSource source = IPowerMonitor::PowerUnknown;
    int percent = -99;
    std::wstring text;
    IPowerMonitor::WarningLevel level = IPowerMonitor::WarningNone;
};
inline Reading ReadStatus(IPowerMonitor& monitor) {
    Reading r;
    const wchar_t* text = nullptr;
    r.ok = monitor.GetCurrentStatus(r.source, r.percent, text, r.level);
    if (text) r.text = text;
    return r;
}

// Skips a test body when this build cannot make device lines.
#define UC_REQUIRE_LINES()                                      \
    do {                                                        \
        std::string why_;                                       \
        if (!uc::test::LinesAvailable(&why_)) GTEST_SKIP() << why_; \
    } while (0)

}  // namespace uc::test

namespace uc::test {

// Points the application and system profiles at throw-away stores for the test's lifetime
// (native: INI files in a temporary folder; Windows: a private key under HKEY_CURRENT_USER, and
// "System"/"_IsUpdating" in win.ini is cleared again at the end).
class ProfileSandbox {
public:
    ProfileSandbox();
    ~ProfileSandbox();
    ProfileSandbox(const ProfileSandbox&) = delete;
    ProfileSandbox& operator=(const ProfileSandbox&) = delete;

private:
    std::wstring m_location;
    std::wstring m_previous;
};

// The device lookups of this test see no devices at all (empty fake sysfs / registry tree), or, after
// AddBatteryBridge, the battery module's bridge on line `port`.
class DeviceTreeSandbox {
public:
    DeviceTreeSandbox();
    ~DeviceTreeSandbox();
    DeviceTreeSandbox(const DeviceTreeSandbox&) = delete;
    DeviceTreeSandbox& operator=(const DeviceTreeSandbox&) = delete;
    // Makes the battery bridge (0x10C4/0xEA60/"0001") appear, reached through `devicePath` natively or
    // as port `port` in the registry on Windows.
    void AddBatteryBridge(int port, const std::wstring& devicePath);

private:
    std::wstring m_root;
};

}  // namespace uc::test
