// Gamma-ramp emulation: preset gains, the ramp formula, and the fall-back driver that persists its settings.
#include "display/gamma_ramp.h"

#include <algorithm>
#include <cstring>

#include "platform/numeric.h"
#include "platform/profile.h"

namespace uc::display {

static_assert(sizeof(GammaRamp) == 3 * 256 * sizeof(std::uint16_t), "GammaRamp must match the WORD[3][256] layout");

bool GammaRamp::operator==(const GammaRamp& other) const { return std::memcmp(this, &other, sizeof *this) == 0; }

int GammaSettingForCode(std::uint8_t code) {
    switch (code) {
    case 0x10: return GammaBrightness;
    case 0x12: return GammaContrast;
    case 0x14: return GammaColorTemp;
    case 0x16: return GammaRedGain;
    case 0x18: return GammaGreenGain;
    case 0x1A: return GammaBlueGain;
    default: return -1;
    }
}

void GainsForPreset(std::uint8_t preset, const std::uint8_t maxima[3], std::uint8_t gains[3]) {
    // Red, green, blue factors per colour temperature preset; 6 and above stand for neutral gains.
    static const double factors[6][3] = {
        {1.0, 0.96, 0.9021},   {1.0, 1.0, 1.0},       {0.9201, 0.9514, 1.0},
        {0.8097, 0.8805, 1.0}, {0.7385, 0.8327, 1.0}, {0.6602, 0.778, 1.0},
    };
    for (int k = 0; k < 3; ++k) {
        const double factor = preset < 6 ? factors[preset][k] : 1.0;
        gains[k] = static_cast<std::uint8_t>(factor * maxima[k]);
    }
}

void ComputeGammaRamp(const std::uint8_t values[GammaSettingCount], const std::uint8_t maxima[GammaSettingCount],
                      GammaRamp& ramp) {
    std::uint16_t* channels[3] = {ramp.red, ramp.green, ramp.blue};
    const double brightness = values[GammaBrightness], brightnessMax = maxima[GammaBrightness];
    const double contrast = values[GammaContrast], contrastMax = maxima[GammaContrast];
    const double slope = contrast * 0.5 / contrastMax + 0.75;
    // The ramp's top entry never falls below half scale.
    const double floor = 128.0 - slope * 255.0;
    for (int k = 0; k < 3; ++k) {
        const double gain = values[GammaRedGain + k], gainMax = maxima[GammaRedGain + k];
        double offset = brightness * 100.0 / brightnessMax - 50.0 - (gainMax - gain) * 25.0 / gainMax;
        if (floor > offset) offset = floor;
        for (int i = 0; i < 256; ++i) {
            const int entry = vex_utils::round((i * slope + offset) * 256.0);
            channels[k][i] = static_cast<std::uint16_t>(std::clamp(entry, 0, 65535));
        }
    }
}

namespace {
class RefusingOutput final : public GammaRampOutput {
public:
    bool Read(GammaRamp&) override { return false; }
    bool Write(const GammaRamp&) override { return false; }
};
}  // namespace

std::unique_ptr<GammaRampOutput> NoGammaRampOutput() { return std::make_unique<RefusingOutput>(); }

}  // namespace uc::display

namespace {
using namespace uc::display;
const wchar_t* const kSection = L"Settings\\Display";
const wchar_t* const kKeys[GammaSettingCount] = {L"Brightness", L"Contrast", L"ColorTemp",
                                                 L"RedGain",    L"GreenGain", L"BlueGain"};
}  // namespace

GammaRampDriver::GammaRampDriver(std::unique_ptr<GammaRampOutput> output) : m_output(std::move(output)) {
    if (!m_output) m_output = NoGammaRampOutput();
    m_hasSavedRamp = m_output->Read(m_savedRamp);
    const std::uint8_t maxima[GammaSettingCount] = {200, 200, 6, 100, 100, 100};
    std::memcpy(m_maxima, maxima, sizeof m_maxima);
    // Stored values are read as the profile has them and clamped below; negative ones count as 0.
    auto read = [](int setting, int fallback) {
        return std::max(0, vex_utils::GetProfileIntW(kSection, kKeys[setting], fallback));
    };
    int values[GammaSettingCount];
    values[GammaBrightness] = read(GammaBrightness, 115);
    values[GammaContrast] = read(GammaContrast, 180);
    values[GammaColorTemp] = read(GammaColorTemp, 1);
    std::uint8_t gains[3];
    GainsForPreset(static_cast<std::uint8_t>(std::min(values[GammaColorTemp], 255)), m_maxima + GammaRedGain, gains);
    for (int k = 0; k < 3; ++k) values[GammaRedGain + k] = read(GammaRedGain + k, gains[k]);
    for (int i = 0; i < GammaSettingCount; ++i)
        m_values[i] = static_cast<std::uint8_t>(std::min(values[i], static_cast<int>(m_maxima[i])));
    Apply();
}

GammaRampDriver::~GammaRampDriver() {
    // Leaving puts back the picture that was there before.
    if (m_hasSavedRamp) m_output->Write(m_savedRamp);
}

bool GammaRampDriver::Apply() {
    GammaRamp ramp;
    ComputeGammaRamp(m_values, m_maxima, ramp);
    return m_output->Write(ramp);
}

bool GammaRampDriver::SetVCP(unsigned, std::uint8_t code, std::uint8_t value) {
    const int setting = GammaSettingForCode(code);
    if (setting < 0) return false;
    m_values[setting] = std::min(value, m_maxima[setting]);
    if (setting == GammaColorTemp) {
        GainsForPreset(m_values[GammaColorTemp], m_maxima + GammaRedGain, m_values + GammaRedGain);
    } else if (setting >= GammaRedGain) {
        m_values[GammaColorTemp] = GammaUserPreset;
    }
    // A refused ramp keeps the stored value: the next accepted change shows it.
    return Apply();
}

bool GammaRampDriver::GetVCP(unsigned, std::uint8_t code, std::uint8_t& maximum, std::uint8_t& current) {
    const int setting = GammaSettingForCode(code);
    if (setting < 0) return false;
    maximum = m_maxima[setting];
    current = m_values[setting];
    return true;
}

bool GammaRampDriver::GetName(unsigned, std::string& name) {
    name = "All Displays";
    return true;
}

bool GammaRampDriver::SaveCurrentSettings(unsigned) {
    for (int i = 0; i < GammaSettingCount; ++i) vex_utils::WriteProfileInt(kSection, kKeys[i], m_values[i]);
    return true;
}
