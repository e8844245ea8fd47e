// NVAPI and ADL drivers against the simulated vendor libraries, loaded by their real names from the test's folder.
#include <gtest/gtest.h>

#include <windows.h>

#include <sstream>

#include "display/ddc_control.h"
#include "display/edid.h"
#include "display/win/ati_i2c_driver.h"
#include "display/win/nvidia_i2c_driver.h"
#include "display/win/win_i2c_driver.h"
#include "display_test_support.h"
#include "platform/dynamic_library.h"
#include "platform/logger.h"
#include "platform/paths.h"

namespace {
using namespace uc::test;

// Drives one simulated library through its test exports; the module is the one the drivers load.
class SimControl {
public:
    explicit SimControl(const std::wstring& name) : m_library(name) {}
    bool Ready() const { return m_library.ResolveAddress("UcDisplaySim_Configure") != nullptr; }
    void Configure(const std::string& text) {
        char error[256] = {};
        ASSERT_EQ(Call<int>("UcDisplaySim_Configure", text.c_str(), error, int{sizeof error}), 1) << error;
    }
    // Transfers of monitor `monitor`, as "W 6E ..." lines.
    Lines Log(int monitor = 0) {
        std::string text(static_cast<std::size_t>(Call<int>("UcDisplaySim_Log", static_cast<char*>(nullptr), 0)), '\0');
        Call<int>("UcDisplaySim_Log", text.data(), static_cast<int>(text.size()));
        Lines lines;
        std::istringstream in(text.c_str());
        const std::string prefix = std::to_string(monitor) + " ";
        for (std::string line; std::getline(in, line);)
            if (line.rfind(prefix, 0) == 0) lines.push_back(line.substr(prefix.size()));
        return lines;
    }
    void Clear() { Call<void>("UcDisplaySim_ClearLog"); }
    int Value(int monitor, int code) { return Call<int>("UcDisplaySim_Value", monitor, code); }
    int Saves(int monitor) { return Call<int>("UcDisplaySim_Saves", monitor); }

private:
    template <class R, class... Args>
    R Call(const char* name, Args... args) {
        return m_library.Resolve<R (*)(Args...)>(name)(args...);
    }
    uc::DynamicLibrary m_library;
};

const std::wstring kPartialAdl = uc::ExecutableFolder() + L"\\partial\\atiadlxy.dll";
const Lines kProbe = {"W 6E 51 82 01 10 AC", "R 6F 6E 88 02 00 10 00 00 64 00 32"};

class VendorTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(nvidia.Ready() && amd.Ready()) << "the simulated libraries are not beside the test";
        nvidia.Configure("");
        amd.Configure("");
    }
    // The probe of one enumerated monitor, then set, save and get: their bytes and pauses.
    void ExpectExactExchanges(DdcBusDriver& driver, SimControl& sim) {
        driver.SetClock(clock);
        ASSERT_EQ(driver.Enumerate(), 1u);
        EXPECT_EQ(sim.Log(0), kProbe);
        sim.Clear();
        uc::test::ExpectExactExchanges(driver, clock, [&] { return sim.Log(0); });
        EXPECT_EQ(sim.Value(0, 0x10), 50);
        EXPECT_EQ(sim.Saves(0), 1);
    }
    SimControl nvidia{uc::display::nvapi::LibraryName};
    SimControl amd{uc::display::adl::LibraryName};
    PauseRecorder clock;
};

TEST_F(VendorTest, NvapiPutsTheExactDdcBytesOnTheBusAndNamesActiveDisplays) {
    nvidia.Configure("[monitor]\nname = Left\n[monitor]\nconnected = 0\n");
    NvidiaI2CDriver driver;
    EXPECT_TRUE(driver.IsInitialized());
    ExpectExactExchanges(driver, nvidia);
    EXPECT_TRUE(nvidia.Log(1).empty()) << "a display that is not active is not enumerated";
    std::string name;
    ASSERT_TRUE(driver.GetName(0, name));
    EXPECT_EQ(name, "Left\n       ") << "twelve of the EDID name block's thirteen bytes";
    // A monitor that stops answering: false, and the value stays.
    nvidia.Configure("[monitor]\nstop-after = 3\n");
    NvidiaI2CDriver stopping;
    stopping.SetClock(clock);
    ASSERT_EQ(stopping.Enumerate(), 1u);
    EXPECT_TRUE(stopping.SetVCP(0, 0x10, 1));
    EXPECT_FALSE(stopping.SetVCP(0, 0x10, 2));
    EXPECT_EQ(Vcp(stopping, 0, 0x10), "refused");
    EXPECT_EQ(nvidia.Value(0, 0x10), 1);
}

TEST_F(VendorTest, NvapiWithoutSomeFunctionsDegrades) {
    const struct {
        const char* missing;
        bool initialised;
        unsigned devices;
        bool named;
    } cases[] = {
        {"I2CRead", true, 0, false},          {"I2CWrite", true, 0, false},
        {"GetInterfaceVersionString", false, 1, true}, {"GPU_GetEDID", true, 1, false},
        {"EnumNvidiaDisplayHandle", true, 0, false},   {"GetPhysicalGPUsFromDisplay", true, 0, false},
        {"GetAssociatedDisplayOutputId", true, 0, false}, {"Initialize", false, 0, false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.missing);
        nvidia.Configure(std::string("[monitor]\n[nvapi]\nmissing = ") + c.missing + "\n");
        NvidiaI2CDriver driver;
        driver.SetClock(clock);
        EXPECT_EQ(driver.IsInitialized(), c.initialised);
        EXPECT_EQ(driver.Enumerate(), c.devices);
        std::string name = "kept";
        EXPECT_EQ(driver.GetName(0, name), c.named);
        EXPECT_EQ(name == "kept", !c.named);
    }
}

TEST_F(VendorTest, AbsentLibrariesLeaveDriversThatFindNothing) {
    NvidiaI2CDriver nvidiaDriver(L"uc-absent-nvapi.dll");
    ATII2CDriver atiDriver(L"uc-absent-adl.dll", L"uc-absent-adl2.dll");
    NvidiaI2CDriver notNvapi(kPartialAdl);  // a library without "nvapi_QueryInterface" counts as absent too
    for (DdcBusDriver* d : std::initializer_list<DdcBusDriver*>{&nvidiaDriver, &atiDriver, &notNvapi}) {
        EXPECT_FALSE(d->IsInitialized());
        EXPECT_EQ(d->Enumerate(), 0u);
        std::string name;
        EXPECT_EQ(Vcp(*d, 0, 0x10), "refused");
        EXPECT_FALSE(d->SetVCP(0, 0x10, 1));
        EXPECT_FALSE(d->GetName(0, name));
    }
    EXPECT_EQ(atiDriver.LibraryName(), L"");
    // "atiadlxy.dll" when "atiadlxx.dll" is missing; this one lacks the adapter and display functions.
    ATII2CDriver old(L"uc-absent-adl.dll", kPartialAdl);
    EXPECT_TRUE(old.IsInitialized());
    EXPECT_EQ(old.LibraryName(), kPartialAdl);
    EXPECT_EQ(old.Enumerate(), 0u);
}

TEST_F(VendorTest, AdlPutsTheExactDdcBytesOnTheBusAndNamesByArrayPosition) {
    amd.Configure("[monitor]\ncard = amd\nname = Right\n");
    ATII2CDriver driver;
    EXPECT_TRUE(driver.IsInitialized());
    EXPECT_EQ(driver.LibraryName(), L"atiadlxx.dll");
    ExpectExactExchanges(driver, amd);
    std::string name;
    ASSERT_TRUE(driver.GetName(0, name));
    EXPECT_EQ(name, "Right");
    // The only display of its adapter has logical index 2: it answers, but position 2 of the list is empty.
    amd.Configure("[monitor]\ncard = amd\ndisplay = 2\nname = Gap\n");
    ATII2CDriver gap;
    gap.SetClock(clock);
    ASSERT_EQ(gap.Enumerate(), 1u);
    name = "kept";
    EXPECT_FALSE(gap.GetName(0, name));
    EXPECT_EQ(name, "kept");
}

TEST_F(VendorTest, AdlHandlesEachPhysicalAdapterOnceAndProbesOnlyMappedDisplays) {
    amd.Configure(
        "[adapter]\nindex = 0\nbus = 3\n[adapter]\nindex = 1\nbus = 3\n[adapter]\nindex = 2\nbus = 5\n"
        "[monitor]\ncard = amd\nadapter = 1\n"
        "[monitor]\ncard = amd\nadapter = 2\nmapped = 0\n"
        "[monitor]\ncard = amd\nadapter = 2\nconnected = 0\n"
        "[monitor]\ncard = amd\nadapter = 2\n");
    ATII2CDriver driver;
    driver.SetClock(clock);
    ASSERT_EQ(driver.Enumerate(), 2u);
    EXPECT_EQ(amd.Log(0), kProbe) << "two records of one adapter: its display probed once";
    EXPECT_TRUE(amd.Log(1).empty()) << "connected but not mapped: never probed";
    EXPECT_TRUE(amd.Log(2).empty());
    EXPECT_EQ(amd.Log(3), kProbe);
}

// The registry with the platform's own drivers: NVAPI, then ADL, then the screen's gamma ramp.
class WindowsRegistryTest : public VendorTest {
protected:
    void SetUp() override {
        VendorTest::SetUp();
        DDCControl::SetClock(&clock);
        zelLogger::Instance().ClearEntries();
    }
    void TearDown() override {
        DDCControl::Destroy();
        DDCControl::SetClock(nullptr);
    }
    DisplayProfileSandbox profile;
};

TEST_F(WindowsRegistryTest, NvidiaMonitorsBeforeAmdOnesWithEcoViewSwitchedOff) {
    nvidia.Configure("[monitor]\nname = N\n");
    amd.Configure("[monitor]\ncard = amd\nname = A\n");
    DDCControl::LocateDevices(true);
    ASSERT_EQ(DDCControl::GetNumDevices(), 2u);
    std::string name;
    ASSERT_TRUE(DDCControl::GetDevice(0)->GetName(name));
    EXPECT_EQ(uc::display::TidyMonitorName(name), "N");
    ASSERT_TRUE(DDCControl::GetDevice(1)->GetName(name));
    EXPECT_EQ(name, "A");
    EXPECT_EQ(nvidia.Value(0, 0xE2), 0);
    EXPECT_EQ(amd.Value(0, 0xE2), 0);
}

TEST_F(WindowsRegistryTest, WithoutMonitorsTheScreensGammaRampStandsIn) {
    DDCControl::LocateDevices(true);
    DDCControl::LocateDevices(true);
    ASSERT_EQ(DDCControl::GetNumDevices(), 1u);
    EXPECT_TRUE(DDCControl::GetDevice(0)->IsGammaRamp());
    EXPECT_NE(dynamic_cast<WinI2CDriver*>(DDCControl::GetGammaDriver()), nullptr);
    EXPECT_EQ(zelLogger::Instance().Count(L"Could not locate DDC/CI devices, using gamma ramps"), 2u);
    EXPECT_EQ(Vcp(*DDCControl::GetGammaDriver(), 0, 0x12), "180/200");
}

}  // namespace
