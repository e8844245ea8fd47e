// The monitor registry over simulated monitors: driver order, Auto EcoView, fall-back, packets, Destroy.
#include <gtest/gtest.h>

#include "display/ddc_control.h"
#include "display/edid.h"
#include "display/gamma_ramp.h"
#include "platform/logger.h"
#include "platform/paths.h"
#include "sim_bus_fixture.h"

namespace {
using namespace uc::test;
using Monitors = std::vector<std::shared_ptr<dsim::SimulatedMonitor>>;
using Lines = std::vector<std::string>;

class DDCControlTest : public testing::Test {
protected:
    void SetUp() override {
        utilsExam::SetDevMode(false);
        zelLogger::Instance().ClearEntries();
        DDCDriverFactory f;
        f.nvidia = [this] { return Bus(nvidia); };
        f.ati = [this] { return Bus(amd); };
        f.gamma = [this] {
            ++gammaDriversMade;
            return std::make_unique<GammaRampDriver>(uc::display::NoGammaRampOutput());
        };
        DDCControl::SetDriverFactory(f);
    }
    void TearDown() override {
        DDCControl::Destroy();
        DDCControl::SetStrictMode({});
        DDCControl::SetDriverFactory(DDCDriverFactory::PlatformDefault());
        utilsExam::SetDevMode(false);
    }
    std::unique_ptr<DdcBusDriver> Bus(const Monitors& monitors) {
        auto driver = MakeBusDriver(monitors, clock);
        return driver;
    }
    static void Forget(const Monitors& monitors) {
        for (auto& m : monitors) m->ClearTransfers();
    }
    static std::size_t Count(const wchar_t* text) { return zelLogger::Instance().Count(text); }

    PauseRecorder clock;
    Monitors nvidia, amd;
    int gammaDriversMade = 0;
};

TEST_F(DDCControlTest, NvidiaMonitorsComeFirstAndBothDriversAreAsked) {
    nvidia = MakeMonitors("[monitor]\nname = N0\n[monitor]\nfaults = fail\n[monitor]\nname = N2\n");
    amd = MakeMonitors("[monitor]\nname = A0\n");
    DDCControl::LocateDevices(true);
    ASSERT_EQ(DDCControl::GetNumDevices(), 3u);
    const char* names[] = {"N0", "N2", "A0"};
    for (unsigned i = 0; i < 3; ++i) {
        std::string name;
        ASSERT_TRUE(DDCControl::GetDevice(i)->GetName(name));
        EXPECT_EQ(uc::display::TidyMonitorName(name), names[i]);
        EXPECT_FALSE(DDCControl::GetDevice(i)->IsGammaRamp());
    }
    EXPECT_EQ(DDCControl::GetDevice(0)->GetDriver(), DDCControl::GetNvidiaDriver());
    EXPECT_EQ(DDCControl::GetDevice(1)->GetDeviceIndex(), 1u);
    EXPECT_EQ(DDCControl::GetDevice(2)->GetDriver(), DDCControl::GetAtiDriver());
    EXPECT_EQ(DDCControl::GetDevice(3), nullptr);
    EXPECT_EQ(gammaDriversMade, 0) << "no fall-back while monitors answer";
    bool ati = false, nv = false;
    DDCControl::IsInitialized(ati, nv);
    EXPECT_TRUE(ati && nv);
}

TEST_F(DDCControlTest, AutoEcoViewIsSwitchedOffThroughTheMakersPage) {
    nvidia = MakeMonitors("[monitor]\n");
    DDCControl::LocateDevices(false);
    ASSERT_EQ(DDCControl::GetNumDevices(), 1u);
    EXPECT_EQ(nvidia[0]->Value(0xE2), 0);
    EXPECT_EQ(nvidia[0]->Value(0xE1), 0) << "the page is closed again";
    const Lines log = Log(*nvidia[0]);
    ASSERT_EQ(log.size(), 2u + 3 + 4);
    EXPECT_EQ(Lines(log.begin() + 2, log.end()),
              (Lines{"W 6E 51 84 03 E1 00 E0 B9", "W 6E 51 84 03 E2 00 00 5A", "W 6E 51 84 03 E1 00 00 59",
                     "W 6E 51 84 03 E1 00 E0 B9", "W 6E 51 82 01 E2 5E", "R 6F 6E 88 02 00 E2 00 00 01 00 00",
                     "W 6E 51 84 03 E1 00 00 59"}));
    EXPECT_EQ(zelLogger::Instance().Entries().size(), 0u);
}

TEST_F(DDCControlTest, EcoViewFailuresAreLoggedAndTheMonitorIsKept) {
    nvidia = MakeMonitors("[monitor]\nfaults = ecoview-stuck\n[monitor]\nno-vcp = E1, E2\n[monitor]\nstop-after = 4\n");
    DDCControl::LocateDevices(false);
    EXPECT_EQ(DDCControl::GetNumDevices(), 3u);
    EXPECT_EQ(Count(L"Auto EcoView not disabled"), 1u);
    // Without the page the value cannot be read back; the page switch stays where step 2 failed.
    EXPECT_EQ(Count(L"Could not read back Auto EcoView status"), 2u);
    EXPECT_EQ(Count(L"Could not set Auto EcoView status to off"), 1u);
    const Lines second = Log(*nvidia[1]);
    EXPECT_EQ(second.back(), "R 6F 6E 88 02 01 E2 00 00 00 00 00") << "no page close after the failed read";
    for (const auto& e : zelLogger::Instance().Entries()) EXPECT_EQ(e.type, 1);
}

TEST_F(DDCControlTest, DeveloperModeSendsNothingButTheProbes) {
    utilsExam::SetDevMode(true);
    nvidia = MakeMonitors("[monitor]\n[monitor]\n");
    amd = MakeMonitors("[monitor]\nconnected = 0\n");
    DDCControl::LocateDevices(true);
    for (const Monitors* set : {&nvidia, &amd})
        for (auto& m : *set) EXPECT_EQ(Log(*m), (Lines{"W 6E 51 82 01 10 AC", "R 6F 6E 88 02 00 10 00 00 64 00 32"}));
    EXPECT_EQ(nvidia[0]->Value(0xE2), 1);
}

TEST_F(DDCControlTest, GammaFallBackOnlyWhenAskedAndOnlyOnce) {
    nvidia = MakeMonitors("[monitor]\nfaults = fail\n");
    DDCControl::LocateDevices(false);
    EXPECT_EQ(DDCControl::GetNumDevices(), 0u);
    EXPECT_EQ(DDCControl::GetDevice(0), nullptr);
    EXPECT_EQ(Count(L"using gamma ramps"), 0u);

    DDCControl::LocateDevices(true);
    DDCControl::LocateDevices(true);
    ASSERT_EQ(DDCControl::GetNumDevices(), 1u);
    EXPECT_EQ(gammaDriversMade, 1);
    EXPECT_EQ(Count(L"Could not locate DDC/CI devices, using gamma ramps"), 2u);
    DDCControl* device = DDCControl::GetDevice(0);
    EXPECT_TRUE(device->IsGammaRamp());
    EXPECT_EQ(device->GetDriver(), DDCControl::GetGammaDriver());
    const auto entries = zelLogger::Instance().Entries();
    ASSERT_FALSE(entries.empty());
    EXPECT_EQ(entries.back().type, 2);
    std::string name;
    ASSERT_TRUE(device->GetName(name));
    EXPECT_EQ(name, "All Displays");
    std::uint8_t maximum = 0, current = 0;
    ASSERT_TRUE(device->GetValue(Brightness, maximum, current));
    EXPECT_EQ(maximum, 200);
    // The emulation knows no page switch: Auto EcoView fails at its first step.
    EXPECT_FALSE(device->GetValue(AutoEcoView, maximum, current));
    EXPECT_FALSE(device->SetValue(AutoEcoView, 0));
}

TEST_F(DDCControlTest, TypesMapToTheirCodesAndUnknownTypesSendNothing) {
    utilsExam::SetDevMode(true);
    nvidia = MakeMonitors("[monitor]\n");
    DDCControl::LocateDevices(false);
    DDCControl* device = DDCControl::GetDevice(0);
    ASSERT_NE(device, nullptr);
    const std::uint8_t codes[] = {0x10, 0x12, 0x14, 0x16, 0x18, 0x1A};
    for (int type = 0; type < 6; ++type) {
        EXPECT_EQ(DDCControl::AddressFromType(type), codes[type]);
        Forget(nvidia);
        ASSERT_TRUE(device->SetValue(static_cast<DDCValueType>(type), 7));
        EXPECT_EQ(nvidia[0]->Value(codes[type]), 7);
    }
    EXPECT_EQ(DDCControl::AddressFromType(6), 0);
    EXPECT_EQ(DDCControl::AddressFromType(-1), 0);
    Forget(nvidia);
    std::uint8_t maximum = 0, current = 0;
    EXPECT_FALSE(device->SetValue(static_cast<DDCValueType>(7), 1));
    EXPECT_FALSE(device->GetValue(static_cast<DDCValueType>(7), maximum, current));
    EXPECT_TRUE(Log(*nvidia[0]).empty());
    ASSERT_TRUE(device->SaveValues());
    EXPECT_EQ(nvidia[0]->Saves(), 1);
}

TEST_F(DDCControlTest, LastPacketsAreCopiedOnlyFromDriversThatExist) {
    unsigned char ati[10], nv[10];
    std::fill(ati, ati + 10, 0xEE);
    std::fill(nv, nv + 10, 0xEE);
    DDCControl::GetLastPacket(ati, nv);
    EXPECT_EQ(Bytes(ati, ati + 10), Bytes(10, 0xEE)) << "before LocateDevices";
    EXPECT_EQ(Bytes(nv, nv + 10), Bytes(10, 0xEE));
    bool a = true, n = true;
    DDCControl::IsInitialized(a, n);
    EXPECT_FALSE(a || n);

    utilsExam::SetDevMode(true);
    nvidia = MakeMonitors("[monitor]\nvcp.10 = 9/90\n");
    DDCControl::SetDriverFactory({[this] { return Bus(nvidia); }, nullptr, nullptr});
    DDCControl::LocateDevices(true);
    DDCControl::GetLastPacket(ati, nv);
    EXPECT_EQ(Bytes(nv, nv + 10), (Bytes{0x6E, 0x88, 0x02, 0x00, 0x10, 0x00, 0x00, 90, 0x00, 9}));
    EXPECT_EQ(Bytes(ati, ati + 10), Bytes(10, 0xEE)) << "no second driver on this machine";
    DDCControl::GetLastPacket(nullptr, nullptr);
}

TEST_F(DDCControlTest, DestroyEndsEverythingAndACopyKeptPastItAnswersFalse) {
    nvidia = MakeMonitors("[monitor]\n");
    DDCControl::LocateDevices(true);
    ASSERT_EQ(DDCControl::GetNumDevices(), 1u);
    const DDCControl copy(*DDCControl::GetDevice(0));
    DDCControl::Destroy();
    EXPECT_EQ(DDCControl::GetNumDevices(), 0u);
    EXPECT_EQ(DDCControl::GetDevice(0), nullptr);
    EXPECT_EQ(DDCControl::GetNvidiaDriver(), nullptr);
    DDCControl stale(copy);
    std::uint8_t maximum = 0, current = 0;
    std::string name;
    EXPECT_FALSE(stale.GetValue(Brightness, maximum, current));
    EXPECT_FALSE(stale.SetValue(Brightness, 1));
    EXPECT_FALSE(stale.GetName(name));
    EXPECT_FALSE(stale.SaveValues());
    DDCControl::Destroy();  // twice is harmless
    DDCControl::LocateDevices(false);
    EXPECT_EQ(DDCControl::GetNumDevices(), 1u) << "the registry starts again after Destroy";
    EXPECT_TRUE(DDCControl::GetDevice(0)->GetValue(Brightness, maximum, current));
}

TEST_F(DDCControlTest, StrictModeReachesDriversMadeBeforeAndAfter) {
    nvidia = MakeMonitors("[monitor]\nfaults = bad-checksum\n");
    amd = MakeMonitors("[monitor]\n");
    utilsExam::SetDevMode(true);
    DDCControl::LocateDevices(false);
    EXPECT_EQ(DDCControl::GetNumDevices(), 2u);
    DDCControl::SetStrictMode({true, 1});
    EXPECT_EQ(DDCControl::GetNvidiaDriver()->GetStrictMode().retries, 1u);
    DDCControl::LocateDevices(false);
    EXPECT_EQ(DDCControl::GetNumDevices(), 1u) << "the monitor with wrong checksums no longer passes the probe";
    DDCControl::Destroy();
    DDCControl::LocateDevices(false);
    EXPECT_TRUE(DDCControl::GetAtiDriver()->GetStrictMode().verifyChecksum);
}

}  // namespace
