// The I2C bus driver: DDC/CI messages to slave 0x37 without the address byte, EDID names from slave 0x50.
#include "display/i2c_bus_driver.h"

#include "display/edid.h"

namespace ddc = uc::display::ddc;

I2cBusDriver::I2cBusDriver(std::unique_ptr<uc::display::I2cBusProvider> provider) : m_provider(std::move(provider)) {
    m_hasBuses = m_provider && !m_provider->ListBuses().empty();
}

unsigned I2cBusDriver::Enumerate() {
    m_devices.clear();
    if (!m_provider) return 0;
    for (int bus : m_provider->ListBuses()) {
        std::unique_ptr<uc::display::I2cBus> handle = m_provider->Open(bus);
        if (!handle) continue;
        m_devices.push_back({bus, std::move(handle)});
        if (!Probe(DeviceCount() - 1)) m_devices.pop_back();
    }
    return DeviceCount();
}

bool I2cBusDriver::GetName(unsigned device, std::string& name) {
    if (device >= m_devices.size()) return false;
    uc::display::I2cBus& bus = *m_devices[device].handle;
    const std::uint8_t offset = 0;
    std::uint8_t edid[uc::display::EdidBlockSize] = {};
    if (!bus.Write(ddc::EdidSlaveAddress, &offset, 1) || !bus.Read(ddc::EdidSlaveAddress, edid, sizeof edid))
        return false;
    return uc::display::MonitorNameFromEdid(edid, sizeof edid, name);
}

bool I2cBusDriver::WriteMessage(unsigned device, const ddc::Message& message) {
    // The kernel sends the address byte (0x37 << 1 = 0x6E) itself.
    return m_devices[device].handle->Write(ddc::SlaveAddress, message.bytes + 1, message.size - 1u);
}

bool I2cBusDriver::ReadReply(unsigned device, std::uint8_t* buffer, std::size_t size) {
    return m_devices[device].handle->Read(ddc::SlaveAddress, buffer, size);
}
