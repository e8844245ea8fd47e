// I2C buses as the i2c-dev back-end sees them: numbered buses with plain write and read transfers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/export.h"

namespace uc::display {

// One open bus. Addresses are 7-bit (0x37 for DDC/CI, 0x50 for the EDID).
class UC_API I2cBus {
public:
    virtual ~I2cBus() = default;
    virtual bool Write(std::uint8_t address7, const std::uint8_t* data, std::size_t size) = 0;
    virtual bool Read(std::uint8_t address7, std::uint8_t* data, std::size_t size) = 0;
};

// The buses of a machine (the kernel's /dev/i2c-N) or of a simulation.
class UC_API I2cBusProvider {
public:
    virtual ~I2cBusProvider() = default;
    // Bus numbers in ascending order.
    virtual std::vector<int> ListBuses() = 0;
    // Null when the bus cannot be opened (no permission, gone).
    virtual std::unique_ptr<I2cBus> Open(int bus) = 0;
    // Where the buses are, for messages ("/dev", "simulation from FILE").
    virtual std::wstring Describe() const = 0;
};

}  // namespace uc::display
