// The Linux i2c-dev buses (/dev/i2c-N) for the I2C bus driver, and the choice between them and a simulation.
#pragma once

#include <memory>
#include <string>

#include "display/i2c_bus.h"

namespace uc::display {
// The machine's /dev/i2c-N buses; names under `sysfsDir` tell the SMBus controllers apart, which are left out.
std::unique_ptr<I2cBusProvider> DevI2cProvider(const std::string& devDir = "/dev",
                                               const std::string& sysfsDir = "/sys/bus/i2c/devices");
// $UC_DISPLAY_SIM names a simulation file: its monitors then stand in for the machine's buses.
std::unique_ptr<I2cBusProvider> DefaultI2cProvider();
}  // namespace uc::display
