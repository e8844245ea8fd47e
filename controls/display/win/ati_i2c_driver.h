// ATII2CDriver: DDC/CI through the block-access function of the AMD Display Library, loaded at run time.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "display/ddc_bus_driver.h"
#include "display/vendor_records.h"
#include "platform/dynamic_library.h"

class UC_API ATII2CDriver : public DdcBusDriver {
public:
    // Loads "atiadlxx.dll", else "atiadlxy.dll", and starts ADL for connected adapters.
    ATII2CDriver();
    // The same with other libraries (simulated ones at a path, in tests).
    ATII2CDriver(const std::wstring& library, const std::wstring& fallbackLibrary);
    ~ATII2CDriver() override;
    ATII2CDriver(const ATII2CDriver&) = delete;
    ATII2CDriver& operator=(const ATII2CDriver&) = delete;

    // Each physical adapter (bus, device, function) once; its connected and mapped displays probed.
    unsigned Enumerate() override;
    // The display name ADL reports at the array position equal to the device's logical index.
    bool GetName(unsigned device, std::string& name) override;
    // The library was loaded and ADL_Main_Control_Create resolved.
    bool IsInitialized() const override { return m_create != nullptr; }
    const wchar_t* Carriage() const override { return L"ADL"; }
    unsigned DeviceCount() const override { return static_cast<unsigned>(m_devices.size()); }
    // Which library was loaded (empty when none).
    std::wstring LibraryName() const { return m_library.IsLoaded() ? m_library.Name() : std::wstring(); }

protected:
    bool WriteMessage(unsigned device, const uc::display::ddc::Message& message) override;
    bool ReadReply(unsigned device, std::uint8_t* buffer, std::size_t size) override;

private:
    uc::DynamicLibrary m_library;
    uc::display::adl::MainControlCreateFn m_create = nullptr;
    uc::display::adl::MainControlDestroyFn m_destroy = nullptr;
    uc::display::adl::NumberOfAdaptersGetFn m_adapterCount = nullptr;
    uc::display::adl::AdapterInfoGetFn m_adapterInfo = nullptr;
    uc::display::adl::DdcBlockAccessGetFn m_blockAccess = nullptr;
    uc::display::adl::DisplayInfoGetFn m_displayInfo = nullptr;
    std::vector<std::pair<int, int>> m_devices;  // (adapter index, display logical index)
};
