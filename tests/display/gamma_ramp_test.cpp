// The gamma-ramp emulation: ramp arithmetic, presets, persisted settings, refused ramps; the page's slider scale.
#include <gtest/gtest.h>

#include <memory>

#include "display/gamma_contrast_scale.h"
#include "display/gamma_ramp.h"
#include "display_test_support.h"
#include "platform/text.h"

namespace {
using namespace uc::display;
using uc::test::Bytes;

GammaRamp Ramp(std::uint8_t b, std::uint8_t c, std::uint8_t red, std::uint8_t green, std::uint8_t blue) {
    const std::uint8_t values[6] = {b, c, 1, red, green, blue};
    const std::uint8_t maxima[6] = {200, 200, 6, 100, 100, 100};
    GammaRamp ramp;
    ComputeGammaRamp(values, maxima, ramp);
    return ramp;
}

TEST(GammaRampMath, EntriesFollowSlopeAndOffsetClampedAtBothEnds) {
    GammaRamp r = Ramp(115, 180, 100, 100, 100);  // the defaults: slope 1.2, offset 7.5
    EXPECT_EQ(r.red[0], 1920);
    EXPECT_EQ(r.red[1], 2227);       // (1.2 + 7.5) * 256 = 2227.2
    EXPECT_EQ(r.green[100], 32640);  // (120 + 7.5) * 256
    EXPECT_EQ(r.blue[255], 65535);   // clipped at the top
    r = Ramp(0, 0, 100, 100, 0);  // slope 0.75; offset -50, blue -75 raised to the floor -63.25
    EXPECT_EQ(r.red[66], 0);      // (49.5 - 50) * 256 < 0
    EXPECT_EQ(r.red[67], 64);
    EXPECT_EQ(r.red[255], 36160);
    EXPECT_EQ(r.blue[255], 32768);
    EXPECT_EQ(r.blue[85], 128);  // (63.75 - 63.25) * 256
}

TEST(GammaRampMath, PresetGainsAreTruncatedProductsAndCodesMapToSettings) {
    const std::uint8_t maxima[3] = {100, 100, 100};
    const std::uint8_t expected[8][3] = {{100, 96, 90}, {100, 100, 100}, {92, 95, 100}, {80, 88, 100},
                                         {73, 83, 100}, {66, 77, 100},   {100, 100, 100}, {100, 100, 100}};
    for (std::uint8_t preset = 0; preset < 8; ++preset) {
        std::uint8_t gains[3];
        GainsForPreset(preset, maxima, gains);
        EXPECT_EQ(Bytes(gains, gains + 3), Bytes(expected[preset], expected[preset] + 3)) << int(preset);
    }
    for (int setting = 0; setting < GammaSettingCount; ++setting)
        EXPECT_EQ(GammaSettingForCode(static_cast<std::uint8_t>(0x10 + 2 * setting)), setting);
    for (std::uint8_t code : {0x0E, 0x11, 0x1C, 0xE2}) EXPECT_EQ(GammaSettingForCode(code), -1) << int(code);
}

// A screen whose ramp lives in memory; it can refuse reads or writes.
struct Screen final : GammaRampOutput {
    bool Read(GammaRamp& r) override { return !refuseRead && (r = ramp, true); }
    bool Write(const GammaRamp& r) override { return !refuseWrite && (++writes, ramp = r, true); }
    GammaRamp ramp{};
    bool refuseRead = false, refuseWrite = false;
    int writes = 0;
};

// The output given to the driver forwards to the test's screen, which outlives it.
struct ScreenLink final : GammaRampOutput {
    explicit ScreenLink(Screen& s) : screen(s) {}
    bool Read(GammaRamp& r) override { return screen.Read(r); }
    bool Write(const GammaRamp& r) override { return screen.Write(r); }
    Screen& screen;
};

class GammaDriverTest : public testing::Test {
protected:
    std::unique_ptr<GammaRampDriver> Make() { return std::make_unique<GammaRampDriver>(std::make_unique<ScreenLink>(screen)); }
    void Store(const wchar_t* key, int value) { vex_utils::WriteProfileInt(L"Settings\\Display", key, value); }
    int Stored(const wchar_t* key) { return vex_utils::GetProfileIntW(L"Settings\\Display", key, -1); }

    uc::test::DisplayProfileSandbox profile;
    Screen screen;
};

TEST_F(GammaDriverTest, DefaultsApplyAtOnceAndTheScreensRampReturnsAtTheEnd) {
    screen.ramp.red[0] = 1234;
    const GammaRamp before = screen.ramp;
    {
        auto driver = Make();
        EXPECT_TRUE(driver->HasSavedRamp());
        EXPECT_EQ(screen.ramp, Ramp(115, 180, 100, 100, 100));
        EXPECT_EQ(uc::test::Vcp(*driver, 7, 0x14), "1/6") << "any device index";
        EXPECT_EQ(driver->Enumerate(), 1u);
    }
    EXPECT_EQ(screen.ramp, before);
}

TEST_F(GammaDriverTest, PresetsAndGainsFollowEachOther) {
    auto driver = Make();
    ASSERT_TRUE(driver->SetVCP(0, 0x14, 4));
    EXPECT_EQ(driver->Value(GammaRedGain), 73);
    EXPECT_EQ(driver->Value(GammaGreenGain), 83);
    ASSERT_TRUE(driver->SetVCP(0, 0x16, 250));  // above the maximum: stored as 100; the preset becomes 6
    EXPECT_EQ(driver->Value(GammaRedGain), 100);
    EXPECT_EQ(driver->Value(GammaColorTemp), 6);
    EXPECT_EQ(driver->Value(GammaGreenGain), 83) << "the other gains are kept";
    ASSERT_TRUE(driver->SetVCP(0, 0x14, 9));
    EXPECT_EQ(driver->Value(GammaGreenGain), 100) << "presets 6 and above reset the gains";
    EXPECT_EQ(driver->Value(GammaColorTemp), 6);
    ASSERT_TRUE(driver->SetVCP(0, 0x10, 255));
    EXPECT_EQ(screen.ramp, Ramp(200, 180, 100, 100, 100));
    // Codes the emulation does not know change nothing, not even the screen.
    const int writes = screen.writes;
    EXPECT_FALSE(driver->SetVCP(0, 0xE1, 0xE0));
    EXPECT_EQ(uc::test::Vcp(*driver, 0, 0xE2), "refused");
    EXPECT_EQ(screen.writes, writes);
}

TEST_F(GammaDriverTest, ARefusedRampLeavesThePreviousRampButKeepsTheValue) {
    auto driver = Make();
    const GammaRamp shown = screen.ramp;
    screen.refuseWrite = true;
    EXPECT_FALSE(driver->SetVCP(0, 0x12, 20));
    EXPECT_EQ(screen.ramp, shown);
    EXPECT_EQ(driver->Value(GammaContrast), 20);
    screen.refuseWrite = false;
    ASSERT_TRUE(driver->SetVCP(0, 0x10, 115));
    EXPECT_EQ(screen.ramp, Ramp(115, 20, 100, 100, 100)) << "the next accepted change shows it";
    // A screen whose ramp could not be read at the start does not get a made-up one back at the end.
    driver.reset();
    screen.refuseRead = true;
    driver = Make();
    EXPECT_FALSE(driver->HasSavedRamp());
    driver.reset();
    EXPECT_EQ(screen.ramp, Ramp(115, 180, 100, 100, 100)) << "the last applied ramp stays";
}

TEST_F(GammaDriverTest, StoredValuesAreClampedAndSettingsReachTheProfileOnlyWhenSaved) {
    Store(L"Contrast", 250);
    Store(L"Brightness", -5);
    Store(L"ColorTemp", 3);
    Store(L"GreenGain", 70);
    auto driver = Make();
    EXPECT_EQ(screen.ramp, Ramp(0, 200, 80, 70, 100)) << "clamped; gains not stored follow the stored preset";
    ASSERT_TRUE(driver->SetVCP(0, 0x18, 42));
    EXPECT_EQ(Stored(L"GreenGain"), 70);
    ASSERT_TRUE(driver->SaveCurrentSettings(3));
    const std::pair<const wchar_t*, int> saved[] = {{L"Brightness", 0}, {L"Contrast", 200}, {L"ColorTemp", 6},
                                                    {L"RedGain", 80},   {L"GreenGain", 42}, {L"BlueGain", 100}};
    for (const auto& [key, value] : saved) EXPECT_EQ(Stored(key), value) << uc::ToUtf8(key);
    driver.reset();
    EXPECT_EQ(Make()->Value(GammaGreenGain), 42) << "the next start reads them back";
}

TEST(FactorSlider, FactorsAndPositionsMirrorAroundOne) {
    const std::pair<const wchar_t*, int> texts[] = {{L"1", 0}, {L"2", -100}, {L"0.5", 100}, {L"6.4", FactorSliderMin},
                                                    {L"0.15625", FactorSliderMax}, {L"50", FactorSliderMin},
                                                    {L"-3", FactorSliderMax}, {L"bright", 0}};
    for (const auto& [text, position] : texts) EXPECT_EQ(PositionFromText(text), position) << uc::ToUtf8(text);
    EXPECT_EQ(ScaleFactor(1.125), -13) << "12.5 rounds away from zero";
    EXPECT_EQ(ScaleFactor(0.8), 25);
    EXPECT_EQ(FormatFactor(UnscaleFactor(540)), L"0.156250");
    for (int p = FactorSliderMin; p <= FactorSliderMax; ++p) ASSERT_EQ(ScaleFactor(UnscaleFactor(p)), p) << p;
    float m[5][5];
    ContrastMatrix(2.0f, m);
    const float expected[5][5] = {{2, 0, 0, 0, 0}, {0, 2, 0, 0, 0}, {0, 0, 2, 0, 0}, {0, 0, 0, 1, 0}, {-0.5f, -0.5f, -0.5f, 0, 1}};
    for (int i = 0; i < 25; ++i) EXPECT_EQ(m[i / 5][i % 5], expected[i / 5][i % 5]) << "stretched around mid-grey " << i;
}

}  // namespace
