// Shared pieces of the power tests: a connection with its protected parts opened up, and a device fixture.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <string>
#include <type_traits>
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

// A future that must become ready without anyone advancing the clock: bounded in real time.
template <class T>
bool ReadySoon(std::future<T>& f, std::chrono::milliseconds limit = 10s) {
    return f.wait_for(limit) == std::future_status::ready;
}
template <class T>
bool StillWaiting(std::future<T>& f) {
    return f.wait_for(0ms) == std::future_status::timeout;
}

// A call running on another thread while the test drives `clock`. A test that leaves early (a failed
// assertion) would otherwise hang in the future's destructor on a wait nobody ends: the destructor moves
// the clock on past every deadline until the call returns, so the test fails instead.
template <class T>
class Background : public std::future<T> {
public:
    Background(uc::ManualClock& clock, std::future<T> f) : std::future<T>(std::move(f)), m_clock(&clock) {}
    Background(Background&&) noexcept = default;
    Background& operator=(Background&&) noexcept = default;
    ~Background() {
        const auto end = std::chrono::steady_clock::now() + 10s;
        while (this->valid() && this->wait_for(1ms) != std::future_status::ready) {
            if (std::chrono::steady_clock::now() > end) {
                std::fputs("a background call outlived every time-out; aborting\n", stderr);
                std::abort();
            }
            m_clock->Advance(1s);
        }
    }

private:
    uc::ManualClock* m_clock;
};
template <class F>
auto InBackground(uc::ManualClock& clock, F&& call) {
    using T = std::invoke_result_t<std::decay_t<F>&>;
    return Background<T>(clock, std::async(std::launch::async, std::forward<F>(call)));
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
