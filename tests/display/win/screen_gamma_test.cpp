// The gamma-ramp fall-back on the real screen through GDI, as far as the system lets a program change it.
#include <gtest/gtest.h>

#include <windows.h>

#include "display/win/win_i2c_driver.h"
#include "display_test_support.h"

namespace {
using namespace uc::display;

bool ReadScreen(GammaRamp& ramp) {
    HDC dc = ::GetDC(nullptr);
    const bool ok = dc && ::GetDeviceGammaRamp(dc, &ramp) != FALSE;
    if (dc) ::ReleaseDC(nullptr, dc);
    return ok;
}

TEST(ScreenGamma, TheRampIsSetWhereTheSystemAllowsItAndLeftAloneWhereNot) {
    uc::test::DisplayProfileSandbox profile;
    const bool takesRamps = uc::test::ScreenTakesGammaRamps();
    RecordProperty("screen_takes_gamma_ramps", takesRamps ? "yes" : "no");
    GammaRamp before{}, now{}, expected{};
    const bool readable = ReadScreen(before);
    const std::uint8_t values[6] = {150, 180, 1, 100, 100, 100}, maxima[6] = {200, 200, 6, 100, 100, 100};
    ComputeGammaRamp(values, maxima, expected);
    {
        WinI2CDriver driver;
        EXPECT_EQ(driver.HasSavedRamp(), readable);
        EXPECT_EQ(driver.SetVCP(0, 0x10, 150), takesRamps);
        EXPECT_EQ(driver.Value(GammaBrightness), 150) << "kept whether or not the screen took it";
        // A refused ramp leaves the previous one.
        if (ReadScreen(now)) {
            EXPECT_TRUE(now == (takesRamps ? expected : before));
        }
    }
    // Leaving puts back the ramp that was there.
    if (readable) {
        EXPECT_TRUE(ReadScreen(now) && now == before);
    }
}

}  // namespace
