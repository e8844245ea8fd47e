// The gamma-ramp fall-back on the real screen through GDI, as far as the system lets a program change it.
#include <gtest/gtest.h>

#include <windows.h>

#include "display/win/win_i2c_driver.h"
#include "display_test_support.h"

namespace {
using uc::display::GammaRamp;

bool ReadScreen(GammaRamp& ramp) {
    HDC dc = ::GetDC(nullptr);
    const bool ok = ::GetDeviceGammaRamp(dc, &ramp) != FALSE;
    ::ReleaseDC(nullptr, dc);
    return ok;
}

TEST(ScreenGamma, WhatTheSystemAllows) {
    uc::test::DisplayProfileSandbox profile;
    GammaRamp before{};
    const bool readable = ReadScreen(before);
    std::printf("GetDeviceGammaRamp: %s\n", readable ? "ok" : "refused");
    {
        WinI2CDriver driver;
        GammaRamp now{};
        ReadScreen(now);
        std::printf("after construction: %s\n", now == before ? "unchanged" : "changed");
        const bool set = driver.SetVCP(0, 0x10, 150);
        std::printf("SetVCP brightness 150: %s\n", set ? "applied" : "refused");
        ReadScreen(now);
        std::printf("red[0]=%u red[128]=%u red[255]=%u (before: %u %u %u)\n", now.red[0], now.red[128], now.red[255],
                    before.red[0], before.red[128], before.red[255]);
    }
    GammaRamp after{};
    ReadScreen(after);
    std::printf("after destruction: %s\n", after == before ? "restored" : "different");
}

}  // namespace
