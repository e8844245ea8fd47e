// The gamma-ramp emulation of a monitor's settings: ramp arithmetic, colour presets and the fall-back driver.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "display/i2c_driver.h"
#include "platform/export.h"

namespace uc::display {

// Three channels of 256 unsigned 16-bit entries, red, green, blue: the layout SetDeviceGammaRamp takes.
struct GammaRamp {
    std::uint16_t red[256];
    std::uint16_t green[256];
    std::uint16_t blue[256];
    bool operator==(const GammaRamp& other) const;
};

// Indices of the six emulated settings.
enum GammaSetting { GammaBrightness, GammaContrast, GammaColorTemp, GammaRedGain, GammaGreenGain, GammaBlueGain,
                    GammaSettingCount };
constexpr std::uint8_t GammaUserPreset = 6;  // colour preset standing for gains set one by one

// The setting a VCP code stands for, or -1 for a code the emulation does not know.
UC_API int GammaSettingForCode(std::uint8_t code);
// The three gains of colour preset `preset` for the given gain maxima: factor × maximum, truncated.
UC_API void GainsForPreset(std::uint8_t preset, const std::uint8_t maxima[3], std::uint8_t gains[3]);
// The ramp for the six settings and their maxima (none of the maxima may be 0).
UC_API void ComputeGammaRamp(const std::uint8_t values[GammaSettingCount], const std::uint8_t maxima[GammaSettingCount],
                             GammaRamp& ramp);

// Where ramps go: the screen (Windows GDI) or a stand-in. Either call may be refused.
class UC_API GammaRampOutput {
public:
    virtual ~GammaRampOutput() = default;
    virtual bool Read(GammaRamp& ramp) = 0;
    virtual bool Write(const GammaRamp& ramp) = 0;
};

// For platforms without a screen ramp: reads and writes are refused, so settings are kept but never shown.
UC_API std::unique_ptr<GammaRampOutput> NoGammaRampOutput();

}  // namespace uc::display

// The fall-back driver: one pseudo-device for all displays that keeps six settings in the profile section
// "Settings\Display" and shows them through a gamma ramp. The device index is ignored.
class UC_API GammaRampDriver : public I2CDriver {
public:
    explicit GammaRampDriver(std::unique_ptr<uc::display::GammaRampOutput> output);
    ~GammaRampDriver() override;
    GammaRampDriver(const GammaRampDriver&) = delete;
    GammaRampDriver& operator=(const GammaRampDriver&) = delete;

    unsigned Enumerate() override { return 1; }
    bool SetVCP(unsigned device, std::uint8_t code, std::uint8_t value) override;
    bool GetVCP(unsigned device, std::uint8_t code, std::uint8_t& maximum, std::uint8_t& current) override;
    bool GetName(unsigned device, std::string& name) override;
    bool SaveCurrentSettings(unsigned device) override;

    std::uint8_t Value(int setting) const { return m_values[setting]; }
    std::uint8_t Maximum(int setting) const { return m_maxima[setting]; }
    // Whether the screen's ramp could be read at construction (and will be put back at destruction).
    bool HasSavedRamp() const { return m_hasSavedRamp; }

private:
    bool Apply();

    std::unique_ptr<uc::display::GammaRampOutput> m_output;
    uc::display::GammaRamp m_savedRamp{};
    bool m_hasSavedRamp = false;
    std::uint8_t m_values[uc::display::GammaSettingCount] = {};
    std::uint8_t m_maxima[uc::display::GammaSettingCount] = {};
};
