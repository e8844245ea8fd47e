// Shared helpers of the display tests: a clock that records pauses, a profile sandbox, simulated monitors on buses.
#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "display/i2c_bus_driver.h"
#include "display/simulator/simulated_i2c_bus.h"
#include "platform/clock.h"
#include "platform/profile.h"
#include "support/temp_dir.h"

namespace uc::test {

namespace dsim = uc::display::sim;
using Bytes = std::vector<std::uint8_t>;
using Lines = std::vector<std::string>;
using Pauses = std::vector<long long>;

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
    Pauses Taken() const {
        std::lock_guard<std::mutex> lock(m_mutex);
        return m_pauses;
    }
    void Clear() {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_pauses.clear();
    }

private:
    mutable std::mutex m_mutex;
    TimePoint m_now{};
    Pauses m_pauses;
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

// Monitors from a simulation text; the test keeps them to look at their transfers.
std::vector<std::shared_ptr<dsim::SimulatedMonitor>> MakeMonitors(const std::string& text);
std::unique_ptr<I2cBusDriver> MakeBusDriver(const std::vector<std::shared_ptr<dsim::SimulatedMonitor>>& monitors,
                                            uc::Clock& clock);
// The transfers of a monitor as bus bytes (address first), failed ones marked by a trailing "FAIL".
Lines Log(const dsim::SimulatedMonitor& monitor);
// A Get VCP through any driver as "current/maximum", or "refused" (the outputs then checked untouched).
std::string Vcp(I2CDriver& driver, unsigned device, std::uint8_t code);
// Set, save and get on device 0 of an enumerated driver: the exact bytes `transfers` reports afterwards (the
// caller has emptied it), the pauses, the last packet; device 1 does not exist.
void ExpectExactExchanges(DdcBusDriver& driver, PauseRecorder& clock, const std::function<Lines()>& transfers);

}  // namespace uc::test
