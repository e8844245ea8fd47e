// I2cBusDriver: DDC/CI over plain I2C buses (Linux i2c-dev or simulated), slave 0x37, monitors found by probing.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "display/ddc_bus_driver.h"
#include "display/i2c_bus.h"
#include "platform/export.h"

// The driver of the Linux back-end (over /dev/i2c-N) and of simulated monitors on every platform.
class UC_API I2cBusDriver : public DdcBusDriver {
public:
    explicit I2cBusDriver(std::unique_ptr<uc::display::I2cBusProvider> provider);

    // Probes brightness on every bus and keeps the buses that answer, in bus order.
    unsigned Enumerate() override;
    // The EDID's monitor name, read from address 0x50 of the device's bus.
    bool GetName(unsigned device, std::string& name) override;
    bool IsInitialized() const override { return m_hasBuses; }
    const wchar_t* Carriage() const override { return L"i2c-dev"; }
    unsigned DeviceCount() const override { return static_cast<unsigned>(m_devices.size()); }
    // The bus number of a device, or -1.
    int BusOf(unsigned device) const { return device < m_devices.size() ? m_devices[device].bus : -1; }
    const uc::display::I2cBusProvider& Provider() const { return *m_provider; }

protected:
    bool WriteMessage(unsigned device, const uc::display::ddc::Message& message) override;
    bool ReadReply(unsigned device, std::uint8_t* buffer, std::size_t size) override;

private:
    struct Device {
        int bus;
        std::unique_ptr<uc::display::I2cBus> handle;
    };
    std::unique_ptr<uc::display::I2cBusProvider> m_provider;
    std::vector<Device> m_devices;
    bool m_hasBuses = false;
};
