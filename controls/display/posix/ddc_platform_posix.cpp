// The drivers display control uses off Windows: i2c-dev first, and a fall-back that has no screen ramp to set.
#include "display/ddc_control.h"
#include "display/gamma_ramp.h"
#include "display/i2c_bus_driver.h"
#include "display/posix/i2c_dev.h"

DDCDriverFactory DDCDriverFactory::PlatformDefault() {
    DDCDriverFactory f;
    f.nvidia = [] { return std::make_unique<I2cBusDriver>(uc::display::DefaultI2cProvider()); };
    f.gamma = [] { return std::make_unique<GammaRampDriver>(uc::display::NoGammaRampOutput()); };
    return f;
}
