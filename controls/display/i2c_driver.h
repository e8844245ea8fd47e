// I2CDriver: a source of monitors whose picture settings are read and written by VCP code.
#pragma once

#include <cstdint>
#include <string>

#include "platform/export.h"

// Each driver finds the monitors it can reach and addresses them by a zero-based index of its own.
// Values are 8-bit throughout. Drivers are not thread-safe: use one from one thread at a time.
class UC_API I2CDriver {
public:
    // Rebuilds the driver's device list; returns its size. Earlier indices are void afterwards.
    virtual unsigned Enumerate() = 0;
    virtual bool SetVCP(unsigned device, std::uint8_t code, std::uint8_t value) = 0;
    // True when the reply was read and valid; `maximum` and `current` are set only then.
    virtual bool GetVCP(unsigned device, std::uint8_t code, std::uint8_t& maximum, std::uint8_t& current) = 0;
    virtual bool GetName(unsigned device, std::string& name) = 0;
    virtual bool SaveCurrentSettings(unsigned device) = 0;
    virtual ~I2CDriver() = default;
};
