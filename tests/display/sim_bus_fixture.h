// A fixture of simulated monitors on I2C buses, driven by the I2C bus driver with recorded pauses.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "display/i2c_bus_driver.h"
#include "display/simulator/simulated_i2c_bus.h"
#include "display_test_support.h"

namespace uc::test {

namespace dsim = uc::display::sim;

// Monitors from a simulation text; the test keeps them to look at their transfers.
inline std::vector<std::shared_ptr<dsim::SimulatedMonitor>> MakeMonitors(const std::string& text) {
    dsim::SimulationConfig config;
    std::string error;
    EXPECT_TRUE(dsim::ParseSimulationConfig(text, config, error)) << error;
    std::vector<std::shared_ptr<dsim::SimulatedMonitor>> monitors;
    for (const dsim::MonitorConfig& m : config.monitors) monitors.push_back(std::make_shared<dsim::SimulatedMonitor>(m));
    return monitors;
}

inline std::unique_ptr<I2cBusDriver> MakeBusDriver(const std::vector<std::shared_ptr<dsim::SimulatedMonitor>>& monitors,
                                                   uc::Clock& clock) {
    auto driver = std::make_unique<I2cBusDriver>(std::make_unique<dsim::SimulatedI2cProvider>(monitors));
    driver->SetClock(clock);
    return driver;
}

// The transfers of a monitor as bus bytes (address first), failed ones marked by a trailing "FAIL" entry.
inline std::vector<std::string> Log(const dsim::SimulatedMonitor& monitor) {
    std::vector<std::string> lines;
    for (const dsim::Transfer& t : monitor.Transfers()) lines.push_back(dsim::FormatTransfer(t));
    return lines;
}

}  // namespace uc::test
