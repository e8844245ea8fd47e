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
    GammaRamp before{};
    const bool readable = ReadScreen(before);
    {
        WinI2CDriver driver;
        EXPECT_EQ(driver.HasSavedRamp(), readable);
        const bool applied = driver.SetVCP(0, 0x10, 150);
        EXPECT_EQ(applied, takesRamps);
        EXPECT_EQ(driver.Value(GammaBrightness), 150) << "kept whether or not the screen took it";
        GammaRamp now{};
        if (ReadScreen(now)) {
            const std::uint8_t values[6] = {150, 180, 1, 100, 100, 100};
            const std::uint8_t maxima[6] = {200, 200, 6, 100, 100, 100};
            GammaRamp expected;
            ComputeGammaRamp(values, maxima, expected);
            EXPECT_EQ(now == expected, applied);
            if (!applied) {
                EXPECT_TRUE(now == before) << "a refused ramp leaves the previous one";
            }
        }
    }
    GammaRamp after{};
    if (readable) {
        ASSERT_TRUE(ReadScreen(after));
        EXPECT_TRUE(after == before) << "leaving puts back the ramp that was there";
    }
}

}  // namespace
