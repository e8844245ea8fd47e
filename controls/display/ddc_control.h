// DDCControl: one adjustable monitor, and the process-wide registry that finds monitors through the drivers.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "display/ddc_bus_driver.h"
#include "display/i2c_driver.h"
#include "platform/export.h"

// The adjustable display values and their VCP codes (AutoEcoView sits behind the maker's page switch 0xE1).
enum DDCValueType {
    Brightness = 0,   // 0x10
    Contrast = 1,     // 0x12
    ColorTemp = 2,    // 0x14, colour preset
    RedGain = 3,      // 0x16
    GreenGain = 4,    // 0x18
    BlueGain = 5,     // 0x1A
    AutoEcoView = 6,  // 0xE2 behind 0xE1 = 0xE0
};

// How the registry obtains its drivers. On Windows the first bus driver is NVAPI, the second ADL and the
// fall-back the screen's gamma ramp; on Linux the first is i2c-dev and there is no second. A null function
// (or a function returning null) leaves that driver out.
struct UC_API DDCDriverFactory {
    std::function<std::unique_ptr<DdcBusDriver>()> nvidia;
    std::function<std::unique_ptr<DdcBusDriver>()> ati;
    std::function<std::unique_ptr<I2CDriver>()> gamma;

    static DDCDriverFactory PlatformDefault();
};

class UC_API DDCControl {
public:
    DDCControl(const DDCControl& other) = default;
    virtual ~DDCControl();

    bool GetValue(DDCValueType type, std::uint8_t& maximum, std::uint8_t& current);
    bool SetValue(DDCValueType type, std::uint8_t value);
    bool GetName(std::string& name);
    bool SaveValues();

    I2CDriver* GetDriver() const { return m_driver; }
    unsigned GetDeviceIndex() const { return m_index; }
    // True for the gamma-ramp pseudo-device.
    bool IsGammaRamp() const;

    // Maps Brightness … BlueGain to their codes; anything else to 0 (no code).
    static std::uint8_t AddressFromType(int type);

    // (Re)builds the device list: the first bus driver's monitors, then the second's; switches Auto EcoView off
    // unless in developer mode; falls back to the gamma-ramp device when asked and nothing answered.
    static void LocateDevices(bool useGammaFallback);
    // Deletes every device and the three drivers (first, second, fall-back).
    static void Destroy();
    static unsigned GetNumDevices();
    static DDCControl* GetDevice(unsigned index);
    // Each buffer (10 bytes) receives that driver's last Get VCP reply, and is left alone when the driver
    // does not exist.
    static void GetLastPacket(unsigned char* ati, unsigned char* nvidia);
    static void IsInitialized(bool& ati, bool& nvidia);

    // Beyond the console's defaults: checksum verification and retries for every bus driver, present or later.
    static void SetStrictMode(const uc::display::StrictMode& mode);
    // The clock the bus drivers pause on (the system clock unless set; null restores it). It must outlive them.
    static void SetClock(uc::Clock* clock);
    // Where drivers come from; applies to drivers created after the call (call Destroy first to replace them).
    static void SetDriverFactory(DDCDriverFactory factory);
    static DdcBusDriver* GetNvidiaDriver() { return m_nvidiaDriver; }
    static DdcBusDriver* GetAtiDriver() { return m_atiDriver; }
    static I2CDriver* GetGammaDriver() { return m_winDriver; }

private:
    DDCControl(I2CDriver* driver, unsigned index) : m_driver(driver), m_index(index), m_generation(s_generation) {}
    // The driver still exists: a copy kept past Destroy answers false instead of reaching a deleted driver.
    bool Alive() const { return m_driver && m_generation == s_generation; }
    bool EcoView(bool set, std::uint8_t& maximum, std::uint8_t& current);
    static void ClearDevices();
    static void AddDevices(DdcBusDriver*& driver, const std::function<std::unique_ptr<DdcBusDriver>()>& make);

    I2CDriver* m_driver;
    unsigned m_index;
    unsigned m_generation;

    static unsigned s_generation;  // counts Destroy calls

    static std::vector<DDCControl*> m_devices;
    static DdcBusDriver* m_nvidiaDriver;
    static DdcBusDriver* m_atiDriver;
    static I2CDriver* m_winDriver;
};
