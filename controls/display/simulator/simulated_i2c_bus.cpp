// Simulated I2C buses: 7-bit addresses turned into the 8-bit transfers a simulated monitor understands.
#include "display/simulator/simulated_i2c_bus.h"

namespace uc::display::sim {

namespace {
class SimulatedBus final : public I2cBus {
public:
    explicit SimulatedBus(std::shared_ptr<SimulatedMonitor> monitor) : m_monitor(std::move(monitor)) {}
    bool Write(std::uint8_t address7, const std::uint8_t* data, std::size_t size) override {
        return m_monitor->Write(static_cast<std::uint8_t>(address7 << 1), data, size);
    }
    bool Read(std::uint8_t address7, std::uint8_t* data, std::size_t size) override {
        return m_monitor->Read(static_cast<std::uint8_t>(address7 << 1 | 1), data, size);
    }

private:
    std::shared_ptr<SimulatedMonitor> m_monitor;
};
}  // namespace

SimulatedI2cProvider::SimulatedI2cProvider(const SimulationConfig& config, std::wstring description)
    : m_description(std::move(description)) {
    for (const MonitorConfig& m : config.monitors) m_monitors.push_back(std::make_shared<SimulatedMonitor>(m));
}

SimulatedI2cProvider::SimulatedI2cProvider(std::vector<std::shared_ptr<SimulatedMonitor>> monitors,
                                           std::wstring description)
    : m_monitors(std::move(monitors)), m_description(std::move(description)) {}

std::vector<int> SimulatedI2cProvider::ListBuses() {
    std::vector<int> buses;
    for (std::size_t i = 0; i < m_monitors.size(); ++i) buses.push_back(static_cast<int>(i));
    return buses;
}

std::unique_ptr<I2cBus> SimulatedI2cProvider::Open(int bus) {
    if (bus < 0 || static_cast<std::size_t>(bus) >= m_monitors.size()) return nullptr;
    return std::make_unique<SimulatedBus>(m_monitors[static_cast<std::size_t>(bus)]);
}

}  // namespace uc::display::sim
