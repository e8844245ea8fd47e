// Simulated monitors as I2C buses: one bus per monitor, for the i2c-dev back-end's tests and service work.
#pragma once

#include <memory>
#include <vector>

#include "display/i2c_bus.h"
#include "display/simulator/monitor_engine.h"

namespace uc::display::sim {

// Bus n carries monitor n of the configuration (every card). The monitors are shared, so a test can keep
// them and look at their transfers while the driver owns the provider.
class SimulatedI2cProvider final : public I2cBusProvider {
public:
    explicit SimulatedI2cProvider(const SimulationConfig& config, std::wstring description = L"simulation");
    explicit SimulatedI2cProvider(std::vector<std::shared_ptr<SimulatedMonitor>> monitors,
                                  std::wstring description = L"simulation");

    std::vector<int> ListBuses() override;
    std::unique_ptr<I2cBus> Open(int bus) override;
    std::wstring Describe() const override { return m_description; }

    const std::vector<std::shared_ptr<SimulatedMonitor>>& Monitors() const { return m_monitors; }

private:
    std::vector<std::shared_ptr<SimulatedMonitor>> m_monitors;
    std::wstring m_description;
};

}  // namespace uc::display::sim
