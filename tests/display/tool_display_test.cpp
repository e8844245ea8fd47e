// The "display" command of uctool against simulated monitors: list, get, set, save, the fall-back, bad usage.
#include <gtest/gtest.h>

#include <cstdlib>

#include "display/ddc_control.h"
#include "display_test_support.h"
#include "platform/text.h"
#include "support/tool_run.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace {

using Result = uc::test::ToolRun;
using uc::test::RunTool;

class DisplayCommandTest : public testing::Test {
protected:
    // Every run gets the simulation file; the drivers are made anew each time the command starts.
    Result Run(uctool::Args args) {
        args.insert(args.begin(), L"display");
        args.insert(args.end(), {L"--sim", file});
        return RunTool(args);
    }
    // The output of a run that ends with `code`.
    std::wstring Out(const uctool::Args& args, int code = 0) {
        const Result r = Run(args);
        EXPECT_EQ(r.code, code) << r.err;
        return r.out;
    }
    void SetUp() override { DDCControl::SetClock(&clock); }
    void TearDown() override {
        DDCControl::SetClock(nullptr);
        DDCControl::SetStrictMode({});
#ifdef _WIN32
        ::SetEnvironmentVariableW(L"UC_DISPLAY_SIM", nullptr);
#else
        ::unsetenv("UC_DISPLAY_SIM");
#endif
    }

    uc::test::PauseRecorder clock;
    uc::test::TempDir dir;
    uc::test::DisplayProfileSandbox profile;
    std::wstring file;
};

#ifdef _WIN32
const std::wstring kFirst = L"NVAPI", kSecond = L"ADL", kDrivers = L"drivers: NVAPI initialised, ADL initialised\n";
#else
const std::wstring kFirst = L"i2c-dev", kSecond = L"i2c-dev", kDrivers = L"drivers: i2c-dev initialised\n";
#endif

TEST_F(DisplayCommandTest, ListsReadsSetsAndSavesTheSimulatedMonitors) {
    file = dir.write(L"display-sim.ini", "[monitor]\nname = Left\nvcp.10 = 20/80\n[monitor]\ncard = amd\nname = Right\n");
    EXPECT_EQ(Out({L"list"}), L"0  " + kFirst + L"  #0  \"Left\"\n1  " + kSecond + L"  #" +
                         (kFirst == kSecond ? L"1" : L"0") + L"  \"Right\"\n" + kDrivers);
    EXPECT_EQ(Out({L"get", L"brightness"}), L"brightness: 20 (maximum 80)\n");
    Result r = Run({L"get", L"all", L"--device", L"1"});
    EXPECT_EQ(r.code, 0) << r.err;
    EXPECT_NE(r.out.find(L"contrast: 70 (maximum 100)\n"), std::wstring::npos) << r.out;
    EXPECT_NE(r.out.find(L"autoecoview: 0 (maximum 1)\n"), std::wstring::npos) << "switched off while locating";
    EXPECT_EQ(Out({L"set", L"contrast", L"33", L"--save", L"--strict", L"--retries", L"2"}),
              L"contrast set to 33\nsettings saved on monitor 0\n");
    EXPECT_EQ(Out({L"get", L"autoecoview", L"--keep-ecoview"}), L"autoecoview: 1 (maximum 1)\n")
        << "a fresh simulation, left as delivered";
}

TEST_F(DisplayCommandTest, SaysWhenNoMonitorAnswersAndFallsBackOnlyWhenAsked) {
    file = dir.write(L"display-sim.ini", "[monitor]\nfaults = fail\n");
    Result r = Run({L"list"});
    EXPECT_EQ(r.code, 1);
    EXPECT_NE(r.err.find(L"no monitor answers DDC/CI"), std::wstring::npos) << r.err;
    EXPECT_NE(r.err.find(L"--gamma"), std::wstring::npos);
    EXPECT_EQ(Out({L"get", L"contrast", L"--gamma"}), L"contrast: 180 (maximum 200)\n");
    r = Run({L"set", L"brightness", L"90", L"--gamma", L"--save"});
    // Natively, and under Wine on Xvfb, there is no screen ramp to set: the command says so.
    if (uc::test::ScreenTakesGammaRamps()) {
        EXPECT_EQ(r.code, 0) << r.err;
        EXPECT_EQ(r.out, L"brightness set to 90\nsettings saved on monitor 0\n");
    } else {
        EXPECT_EQ(r.code, 1);
        EXPECT_EQ(r.err, L"brightness: the monitor did not take the value\n");
    }
}

TEST_F(DisplayCommandTest, BadUsageAndMissingMonitors) {
    file = dir.write(L"display-sim.ini", "[monitor]\nfault-codes = 12\nfaults = result-code\n");
    const uctool::Args bad[] = {{L"display"}, {L"display", L"get", L"sharpness"}, {L"display", L"set", L"brightness"},
                                {L"display", L"set", L"brightness", L"256"}, {L"display", L"list", L"--retries", L"x"},
                                {L"display", L"list", L"extra"}};
    for (const auto& args : bad) EXPECT_EQ(RunTool(args).code, 2) << uc::ToUtf8(args.back());
    Result r = Run({L"get", L"brightness", L"--device", L"4"});
    EXPECT_EQ(r.code, 1);
    EXPECT_EQ(r.err, L"uctool display: no monitor 4 (1 found)\n");
    EXPECT_EQ(Out({L"get", L"contrast"}, 1), L"contrast: no valid answer\n");
}

}  // namespace
