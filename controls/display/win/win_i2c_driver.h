// WinI2CDriver: the gamma-ramp fall-back on the whole screen through GDI's device gamma ramp.
#pragma once

#include "display/gamma_ramp.h"

namespace uc::display {
// The screen's gamma ramp through GetDeviceGammaRamp/SetDeviceGammaRamp on the screen's device context.
UC_API std::unique_ptr<GammaRampOutput> ScreenGammaRampOutput();
}  // namespace uc::display

class UC_API WinI2CDriver : public GammaRampDriver {
public:
    WinI2CDriver() : GammaRampDriver(uc::display::ScreenGammaRampOutput()) {}
};
