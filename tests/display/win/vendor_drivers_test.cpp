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
using Lines = std::vector<std::string>;
namespace nv = uc::display::nvapi;
namespace adl = uc::display::adl;

// Drives one simulated library through its test exports; the module is the one the drivers load.
class SimControl {
public:
    explicit SimControl(const std::wstring& name) : m_library(name) {
        m_library.Resolve("UcDisplaySim_Configure", m_configure);
        m_library.Resolve("UcDisplaySim_Log", m_log);
        m_library.Resolve("UcDisplaySim_ClearLog", m_clear);
        m_library.Resolve("UcDisplaySim_Value", m_value);
        m_library.Resolve("UcDisplaySim_Saves", m_saves);
    }
    bool Ready() const { return m_configure && m_log && m_clear && m_value && m_saves; }
    void Configure(const std::string& text) {
        char error[256] = {};
        ASSERT_EQ(m_configure(text.c_str(), error, sizeof error), 1) << error;
    }
    // Transfers of monitor `monitor`, as "W 6E ..." lines.
    Lines Log(int monitor = 0) {
        std::string text(static_cast<std::size_t>(m_log(nullptr, 0)), '\0');
        m_log(text.data(), static_cast<int>(text.size()));
        Lines lines;
        std::istringstream in(text.c_str());
        const std::string prefix = std::to_string(monitor) + " ";
        for (std::string line; std::getline(in, line);)
            if (line.rfind(prefix, 0) == 0) lines.push_back(line.substr(prefix.size()));
        return lines;
    }
    void Clear() { m_clear(); }
    int Value(int monitor, int code) { return m_value(monitor, code); }
    int Saves(int monitor) { return m_saves(monitor); }

private:
    uc::DynamicLibrary m_library;
    int (*m_configure)(const char*, char*, int) = nullptr;
    int (*m_log)(char*, int) = nullptr;
    void (*m_clear)() = nullptr;
    int (*m_value)(int, int) = nullptr;
    int (*m_saves)(int) = nullptr;
};

std::wstring TestFolder() { return uc::ExecutableFolder(); }

class VendorTest : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(nvidia.Ready()) << "the simulated NVAPI library is not beside the test";
        ASSERT_TRUE(amd.Ready()) << "the simulated ADL library is not beside the test";
        nvidia.Configure("");
        amd.Configure("");
    }
    template <class Driver>
    void Use(Driver& driver) {
        driver.SetClock(clock);
    }
    SimControl nvidia{nv::LibraryName};
    SimControl amd{adl::LibraryName};
    PauseRecorder clock;
};

const Lines kProbe = {"W 6E 51 82 01 10 AC", "R 6F 6E 88 02 00 10 00 00 64 00 32"};

TEST_F(VendorTest, NvapiPutsTheExactDdcBytesOnTheBus) {
    nvidia.Configure("[monitor]\nname = Left\n[monitor]\nconnected = 0\n");
    NvidiaI2CDriver driver;
    Use(driver);
    EXPECT_TRUE(driver.IsInitialized());
    ASSERT_EQ(driver.Enumerate(), 1u) << "a display that is not active is not enumerated";
    EXPECT_EQ(nvidia.Log(0), kProbe);
    EXPECT_TRUE(nvidia.Log(1).empty());
    nvidia.Clear();
    ASSERT_TRUE(driver.SetVCP(0, 0x10, 50));
    ASSERT_TRUE(driver.SaveCurrentSettings(0));
    EXPECT_EQ(nvidia.Log(0), (Lines{"W 6E 51 84 03 10 00 32 9A", "W 6E 51 81 0C B2"}));
    EXPECT_EQ(nvidia.Value(0, 0x10), 50);
    EXPECT_EQ(nvidia.Saves(0), 1);
    std::uint8_t maximum = 0, current = 0;
    ASSERT_TRUE(driver.GetVCP(0, 0x12, maximum, current));
    EXPECT_EQ(current, 70);
    EXPECT_EQ(clock.Pauses(), (std::vector<long long>{40, 30, 50, 200, 40, 30}));
    std::string name;
    ASSERT_TRUE(driver.GetName(0, name));
    EXPECT_EQ(name, "Left\n       ") << "twelve of the EDID name block's thirteen bytes";
    EXPECT_FALSE(driver.GetName(1, name));
    EXPECT_FALSE(driver.SetVCP(1, 0x10, 1));
}

TEST_F(VendorTest, NvapiTransfersThatFailGiveFalse) {
    nvidia.Configure("[monitor]\nstop-after = 3\n");
    NvidiaI2CDriver driver;
    Use(driver);
    ASSERT_EQ(driver.Enumerate(), 1u);
    EXPECT_TRUE(driver.SetVCP(0, 0x10, 1));
    EXPECT_FALSE(driver.SetVCP(0, 0x10, 2)) << "a monitor that stopped answering";
    std::uint8_t maximum = 0, current = 0;
    EXPECT_FALSE(driver.GetVCP(0, 0x10, maximum, current));
    EXPECT_EQ(nvidia.Value(0, 0x10), 1);
}

TEST_F(VendorTest, NvapiWithoutSomeFunctionsDegrades) {
    struct Case {
        const char* missing;
        bool initialised;
        unsigned devices;
        bool named;
    };
    const Case cases[] = {
        {"I2CRead", true, 0, false},
        {"I2CWrite", true, 0, false},
        {"GetInterfaceVersionString", false, 1, true},
        {"GPU_GetEDID", true, 1, false},
        {"EnumNvidiaDisplayHandle", true, 0, false},
        {"GetPhysicalGPUsFromDisplay", true, 0, false},
        {"GetAssociatedDisplayOutputId", true, 0, false},
        {"Initialize", false, 0, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.missing);
        nvidia.Configure(std::string("[monitor]\n[nvapi]\nmissing = ") + c.missing + "\n");
        NvidiaI2CDriver driver;
        Use(driver);
        EXPECT_EQ(driver.IsInitialized(), c.initialised);
        EXPECT_EQ(driver.Enumerate(), c.devices);
        std::string name = "kept";
        EXPECT_EQ(driver.GetName(0, name), c.named);
        if (!c.named) {
            EXPECT_EQ(name, "kept");
        }
    }
}

TEST_F(VendorTest, AbsentLibrariesLeaveDriversThatFindNothing) {
    NvidiaI2CDriver nvidiaDriver(L"uc-absent-nvapi.dll");
    ATII2CDriver atiDriver(L"uc-absent-adl.dll", L"uc-absent-adl2.dll");
    // A library without "nvapi_QueryInterface" counts as absent too.
    NvidiaI2CDriver notNvapi(TestFolder() + L"\\partial\\atiadlxy.dll");
    for (DdcBusDriver* d : std::initializer_list<DdcBusDriver*>{&nvidiaDriver, &atiDriver, &notNvapi}) {
        EXPECT_FALSE(d->IsInitialized());
        EXPECT_EQ(d->Enumerate(), 0u);
        std::uint8_t maximum = 0, current = 0;
        std::string name;
        EXPECT_FALSE(d->GetVCP(0, 0x10, maximum, current));
        EXPECT_FALSE(d->SetVCP(0, 0x10, 1));
        EXPECT_FALSE(d->GetName(0, name));
    }
    EXPECT_EQ(atiDriver.LibraryName(), L"");
}

TEST_F(VendorTest, AdlPutsTheExactDdcBytesOnTheBusAndNamesDisplays) {
    amd.Configure("[monitor]\ncard = amd\nname = Right\n");
    ATII2CDriver driver;
    Use(driver);
    EXPECT_TRUE(driver.IsInitialized());
    EXPECT_EQ(driver.LibraryName(), L"atiadlxx.dll");
    ASSERT_EQ(driver.Enumerate(), 1u);
    EXPECT_EQ(amd.Log(0), kProbe);
    amd.Clear();
    ASSERT_TRUE(driver.SetVCP(0, 0x10, 50));
    ASSERT_TRUE(driver.SaveCurrentSettings(0));
    std::uint8_t maximum = 0, current = 0;
    ASSERT_TRUE(driver.GetVCP(0, 0x10, maximum, current));
    EXPECT_EQ(amd.Log(0), (Lines{"W 6E 51 84 03 10 00 32 9A", "W 6E 51 81 0C B2", "W 6E 51 82 01 10 AC",
                                 "R 6F 6E 88 02 00 10 00 00 64 00 32"}));
    std::uint8_t packet[10];
    driver.GetLastPacket(packet);
    EXPECT_EQ(Bytes(packet, packet + 10), (Bytes{0x6E, 0x88, 0x02, 0x00, 0x10, 0x00, 0x00, 0x64, 0x00, 0x32}));
    std::string name;
    ASSERT_TRUE(driver.GetName(0, name));
    EXPECT_EQ(name, "Right");
    EXPECT_FALSE(driver.GetName(1, name));
}

TEST_F(VendorTest, AdlHandlesEachPhysicalAdapterOnceAndProbesOnlyMappedDisplays) {
    amd.Configure(
        "[adapter]\nindex = 0\nbus = 3\n[adapter]\nindex = 1\nbus = 3\n[adapter]\nindex = 2\nbus = 5\n"
        "[monitor]\ncard = amd\nadapter = 1\n"
        "[monitor]\ncard = amd\nadapter = 2\nmapped = 0\n"
        "[monitor]\ncard = amd\nadapter = 2\nconnected = 0\n"
        "[monitor]\ncard = amd\nadapter = 2\n");
    ATII2CDriver driver;
    Use(driver);
    ASSERT_EQ(driver.Enumerate(), 2u);
    EXPECT_EQ(amd.Log(0), kProbe) << "two records of one adapter: its display probed once";
    EXPECT_TRUE(amd.Log(1).empty()) << "connected but not mapped: never probed";
    EXPECT_TRUE(amd.Log(2).empty());
    EXPECT_EQ(amd.Log(3), kProbe);
}

TEST_F(VendorTest, AdlNamesByArrayPositionAndFallsBackToTheSecondLibrary) {
    // The only display of its adapter has logical index 2: it answers, but position 2 of the list is empty.
    amd.Configure("[monitor]\ncard = amd\ndisplay = 2\nname = Gap\n");
    ATII2CDriver driver;
    Use(driver);
    ASSERT_EQ(driver.Enumerate(), 1u);
    std::string name = "kept";
    EXPECT_FALSE(driver.GetName(0, name));
    EXPECT_EQ(name, "kept");

    // "atiadlxy.dll" when "atiadlxx.dll" is missing; this one lacks the adapter and display functions.
    const std::wstring partial = TestFolder() + L"\\partial\\atiadlxy.dll";
    ATII2CDriver old(L"uc-absent-adl.dll", partial);
    EXPECT_TRUE(old.IsInitialized());
    EXPECT_EQ(old.LibraryName(), partial);
    EXPECT_EQ(old.Enumerate(), 0u);
}

class WindowsRegistryTest : public VendorTest {
protected:
    void SetUp() override {
        VendorTest::SetUp();
        DDCControl::SetClock(&clock);
    }
    void TearDown() override {
        DDCControl::Destroy();
        DDCControl::SetClock(nullptr);
        utilsExam::SetDevMode(false);
    }
    DisplayProfileSandbox profile;
};

TEST_F(WindowsRegistryTest, NvidiaMonitorsBeforeAmdOnesWithEcoViewSwitchedOff) {
    nvidia.Configure("[monitor]\nname = N\n");
    amd.Configure("[monitor]\ncard = amd\nname = A\n");
    DDCControl::SetStrictMode({});
    DDCControl::LocateDevices(true);
    ASSERT_EQ(DDCControl::GetNumDevices(), 2u);
    std::string name;
    ASSERT_TRUE(DDCControl::GetDevice(0)->GetName(name));
    EXPECT_EQ(uc::display::TidyMonitorName(name), "N");
    ASSERT_TRUE(DDCControl::GetDevice(1)->GetName(name));
    EXPECT_EQ(name, "A");
    EXPECT_EQ(nvidia.Value(0, 0xE2), 0);
    EXPECT_EQ(amd.Value(0, 0xE2), 0);
    bool ati = false, nvidiaReady = false;
    DDCControl::IsInitialized(ati, nvidiaReady);
    EXPECT_TRUE(ati && nvidiaReady);
}

TEST_F(WindowsRegistryTest, WithoutMonitorsTheScreensGammaRampStandsIn) {
    zelLogger::Instance().ClearEntries();
    DDCControl::LocateDevices(true);
    DDCControl::LocateDevices(true);
    ASSERT_EQ(DDCControl::GetNumDevices(), 1u);
    EXPECT_TRUE(DDCControl::GetDevice(0)->IsGammaRamp());
    EXPECT_NE(dynamic_cast<WinI2CDriver*>(DDCControl::GetGammaDriver()), nullptr);
    EXPECT_EQ(zelLogger::Instance().Count(L"Could not locate DDC/CI devices, using gamma ramps"), 2u);
    std::uint8_t maximum = 0, current = 0;
    ASSERT_TRUE(DDCControl::GetDevice(0)->GetValue(Contrast, maximum, current));
    EXPECT_EQ(current, 180);
}

}  // namespace
