// Fuzzes what display control reads from outside: monitor replies and EDIDs through the bus driver, host messages
// into the simulated monitor, and the simulation file.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>

#include "display/ddc_protocol.h"
#include "display/edid.h"
#include "display/i2c_bus_driver.h"
#include "display/simulator/display_sim_config.h"
#include "display/simulator/monitor_engine.h"
#include "platform/clock.h"

namespace ddc = uc::display::ddc;
namespace sim = uc::display::sim;

namespace {
// A bus whose every read returns the fuzzer's bytes (cycled), and whose writes succeed.
class ReplayBus final : public uc::display::I2cBus {
public:
    ReplayBus(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
    bool Write(std::uint8_t, const std::uint8_t*, std::size_t) override { return true; }
    bool Read(std::uint8_t, std::uint8_t* out, std::size_t n) override {
        for (std::size_t i = 0; i < n; ++i) out[i] = m_size ? m_data[(m_pos++) % m_size] : 0;
        return m_size > 0;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_pos = 0;
};

class ReplayBuses final : public uc::display::I2cBusProvider {
public:
    ReplayBuses(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}
    std::vector<int> ListBuses() override { return {0}; }
    std::unique_ptr<uc::display::I2cBus> Open(int) override { return std::make_unique<ReplayBus>(m_data, m_size); }
    std::wstring Describe() const override { return L"fuzz"; }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
};

// Pauses cost nothing here.
class NoWait final : public uc::Clock {
public:
    TimePoint Now() const override { return m_now; }
    void WaitUntil(std::condition_variable&, std::unique_lock<std::mutex>&, TimePoint deadline) override { m_now = deadline; }

private:
    TimePoint m_now{};
};
}  // namespace

// Byte 0 picks the target; the rest is its input.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const std::uint8_t mode = data[0] % 4;
    ++data;
    --size;
    switch (mode) {
    case 0: {  // replies and EDIDs through the whole driver, strict and not
        NoWait clock;
        I2cBusDriver driver(std::make_unique<ReplayBuses>(data, size));
        driver.SetClock(clock);
        driver.SetStrictMode({size % 2 == 0, static_cast<unsigned>(size % 3)});
        if (driver.Enumerate() == 1) {
            std::uint8_t maximum = 0, current = 0;
            std::string name;
            driver.GetVCP(0, 0x12, maximum, current);
            driver.GetName(0, name);
        }
        break;
    }
    case 1: {  // host messages into a simulated monitor, then its reply
        sim::SimulatedMonitor monitor{sim::MonitorConfig{}};
        monitor.Write(ddc::WriteAddress, data, size);
        std::uint8_t reply[16];
        monitor.Read(ddc::ReadAddress, reply, sizeof reply);
        break;
    }
    case 2: {
        std::string name;
        uc::display::MonitorNameFromEdid(data, size, name);
        if (size >= ddc::ReplySizeWithChecksum) {
            std::uint8_t maximum = 0, current = 0;
            ddc::CheckGetVcpReply(data, data[0], maximum, current);
            ddc::ReplyChecksumValid(data);
        }
        break;
    }
    default: {
        sim::SimulationConfig config;
        std::string error;
        sim::ParseSimulationConfig(std::string(reinterpret_cast<const char*>(data), size), config, error);
        break;
    }
    }
    return 0;
}
