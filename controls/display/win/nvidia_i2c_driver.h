// NvidiaI2CDriver: DDC/CI through NVAPI's I2C functions, reached by identifier through nvapi_QueryInterface.
#pragma once

#include <string>
#include <vector>

#include "display/ddc_bus_driver.h"
#include "display/vendor_records.h"
#include "platform/dynamic_library.h"

class UC_API NvidiaI2CDriver : public DdcBusDriver {
public:
    // Loads the library this target's NVIDIA loader uses ("nvapi64.dll" or "nvapi.dll") and initialises NVAPI.
    NvidiaI2CDriver();
    // The same with another library (a simulated one at a path, in tests).
    explicit NvidiaI2CDriver(const std::wstring& library);
    ~NvidiaI2CDriver() override;
    NvidiaI2CDriver(const NvidiaI2CDriver&) = delete;
    NvidiaI2CDriver& operator=(const NvidiaI2CDriver&) = delete;

    unsigned Enumerate() override;
    // The monitor name from the EDID NVAPI reports for the display.
    bool GetName(unsigned device, std::string& name) override;
    // NvAPI_GetInterfaceVersionString answers.
    bool IsInitialized() const override;
    const wchar_t* Carriage() const override { return L"NVAPI"; }
    unsigned DeviceCount() const override { return static_cast<unsigned>(m_devices.size()); }

protected:
    bool WriteMessage(unsigned device, const uc::display::ddc::Message& message) override;
    bool ReadReply(unsigned device, std::uint8_t* buffer, std::size_t size) override;

private:
    // The first GPU driving the display and the display's output id; false when NVAPI cannot say.
    bool Target(unsigned device, uc::display::nvapi::PhysicalGpuHandle& gpu, std::uint32_t& outputId) const;

    uc::DynamicLibrary m_library;
    uc::display::nvapi::InitializeFn m_initialize = nullptr;
    uc::display::nvapi::UnloadFn m_unload = nullptr;
    uc::display::nvapi::GetInterfaceVersionStringFn m_versionString = nullptr;
    uc::display::nvapi::EnumNvidiaDisplayHandleFn m_enumDisplay = nullptr;
    uc::display::nvapi::GetPhysicalGPUsFromDisplayFn m_gpusFromDisplay = nullptr;
    uc::display::nvapi::GetAssociatedDisplayOutputIdFn m_outputId = nullptr;
    uc::display::nvapi::GpuGetEdidFn m_getEdid = nullptr;
    uc::display::nvapi::I2cTransferFn m_i2cWrite = nullptr;
    uc::display::nvapi::I2cTransferFn m_i2cRead = nullptr;
    std::vector<uc::display::nvapi::DisplayHandle> m_devices;
};
