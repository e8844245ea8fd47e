// The drivers display control uses on Windows: NVAPI first, ADL second, the screen's gamma ramp as fall-back.
#include "display/ddc_control.h"
#include "display/win/ati_i2c_driver.h"
#include "display/win/nvidia_i2c_driver.h"
#include "display/win/win_i2c_driver.h"

DDCDriverFactory DDCDriverFactory::PlatformDefault() {
    DDCDriverFactory f;
    f.nvidia = [] { return std::make_unique<NvidiaI2CDriver>(); };
    f.ati = [] { return std::make_unique<ATII2CDriver>(); };
    f.gamma = [] { return std::make_unique<WinI2CDriver>(); };
    return f;
}
