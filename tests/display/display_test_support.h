// Shared helpers of the display tests: a clock that records pauses instead of waiting, a profile sandbox, bytes.
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/profile.h"
#include "support/temp_dir.h"

namespace uc::test {

using Bytes = std::vector<std::uint8_t>;

// Every SleepFor returns at once, having moved this clock's time to its deadline; the pauses are kept in order.
class PauseRecorder final : public uc::Clock {
public:
    TimePoint Now() const override {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_now;
    }
    void WaitUntil(std::condition_variable&, std::unique_lock<std::mutex>&, TimePoint deadline) override {
        std::lock_guard<std::mutex> lock(m_mutex);
        if (deadline > m_now) {
            m_pauses.push_back(std::chrono::duration_cast<Millis>(deadline - m_now).count());
            m_now = deadline;
        }
    }
    std::vector<long long> Pauses() const {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_pauses;
    }
    long long Total() const {
        long long sum = 0;
        for (long long p : Pauses()) sum += p;
        return sum;
    }
    void Clear() {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_pauses.clear();
    }

private:
    mutable std::mutex m_mutex;
    TimePoint m_now{};
    std::vector<long long> m_pauses;
};

// Whether this machine's screen lets a program read and set its gamma ramp (never off Windows; not under Wine
// on an X server without the XFree86-VidModeExtension, such as Xvfb).
bool ScreenTakesGammaRamps();

// The application profile points at a fresh place (an INI file natively, an HKCU key on Windows) for one test.
class DisplayProfileSandbox {
public:
    DisplayProfileSandbox();
    ~DisplayProfileSandbox();
    DisplayProfileSandbox(const DisplayProfileSandbox&) = delete;
    DisplayProfileSandbox& operator=(const DisplayProfileSandbox&) = delete;

private:
    TempDir m_dir;
    std::wstring m_previous;
    std::wstring m_location;
};

}  // namespace uc::test
