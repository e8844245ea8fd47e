// The monitor registry over simulated monitors: driver order, Auto EcoView, fall-back, packets, Destroy.
#include <gtest/gtest.h>

#include "display/ddc_control.h"
#include "display/edid.h"
#include "display/gamma_ramp.h"
#include "display_test_support.h"
#include "platform/logger.h"
#include "platform/paths.h"

namespace {
using namespace uc::test;
using Monitors = std::vector<std::shared_ptr<dsim::SimulatedMonitor>>;

std::string Value(DDCControl* device, DDCValueType type) {
    std::uint8_t maximum = 0, current = 0;
    if (!device || !device->GetValue(type, maximum, current)) return "refused";
    return std::to_string(current) + "/" + std::to_string(maximum);
}

// The registry's devices by name, in order.
Lines Names() {
    Lines names;
    std::string name;
    for (unsigned i = 0; i < DDCControl::GetNumDevices(); ++i)
        names.push_back(DDCControl::GetDevice(i)->GetName(name) ? uc::display::TidyMonitorName(name) : "?");
    return names;
}

class DDCControlTest : public testing::Test {
protected:
    void SetUp() override {
        utilsExam::SetDevMode(false);
        zelLogger::Instance().ClearEntries();
        DDCControl::SetDriverFactory({[this] { return Bus(nvidia); }, [this] { return Bus(amd); }, [this] {
                                          ++gammaDriversMade;
                                          return std::make_unique<GammaRampDriver>(uc::display::NoGammaRampOutput());
                                      }});
    }
    void TearDown() override {
        DDCControl::Destroy();
        DDCControl::SetStrictMode({});
        DDCControl::SetDriverFactory(DDCDriverFactory::PlatformDefault());
        utilsExam::SetDevMode(false);
    }
    std::unique_ptr<DdcBusDriver> Bus(const Monitors& monitors) { return MakeBusDriver(monitors, clock); }
    static std::size_t Count(const wchar_t* text) { return zelLogger::Instance().Count(text); }

    DisplayProfileSandbox profile;
    PauseRecorder clock;
    Monitors nvidia, amd;
    int gammaDriversMade = 0;
};

TEST_F(DDCControlTest, NvidiaMonitorsComeFirstAndBothDriversAreAsked) {
    nvidia = MakeMonitors("[monitor]\nname = N0\n[monitor]\nfaults = fail\n[monitor]\nname = N2\n");
    amd = MakeMonitors("[monitor]\nname = A0\n");
    DDCControl::LocateDevices(true);
    EXPECT_EQ(Names(), (Lines{"N0", "N2", "A0"}));
    EXPECT_EQ(DDCControl::GetDevice(0)->GetDriver(), DDCControl::GetNvidiaDriver());
    EXPECT_EQ(DDCControl::GetDevice(1)->GetDeviceIndex(), 1u);
    EXPECT_EQ(DDCControl::GetDevice(2)->GetDriver(), DDCControl::GetAtiDriver());
    EXPECT_FALSE(DDCControl::GetDevice(2)->IsGammaRamp());
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
    EXPECT_EQ(Log(*nvidia[1]).back(), "R 6F 6E 88 02 01 E2 00 00 00 00 00") << "no page close after the failed read";
    for (const auto& e : zelLogger::Instance().Entries()) EXPECT_EQ(e.type, 1);
}

TEST_F(DDCControlTest, DeveloperModeSendsOnlyTheProbesAndTypesReachTheirCodes) {
    utilsExam::SetDevMode(true);
    nvidia = MakeMonitors("[monitor]\n[monitor]\n");
    amd = MakeMonitors("[monitor]\nconnected = 0\n");
    DDCControl::LocateDevices(true);
    for (const Monitors* set : {&nvidia, &amd})
        for (auto& m : *set) EXPECT_EQ(Log(*m), (Lines{"W 6E 51 82 01 10 AC", "R 6F 6E 88 02 00 10 00 00 64 00 32"}));
    EXPECT_EQ(nvidia[0]->Value(0xE2), 1);

    DDCControl* device = DDCControl::GetDevice(0);
    const std::uint8_t codes[] = {0x10, 0x12, 0x14, 0x16, 0x18, 0x1A};
    for (int type = 0; type < 6; ++type) {
        ASSERT_TRUE(device->SetValue(static_cast<DDCValueType>(type), static_cast<std::uint8_t>(type + 7)));
        EXPECT_EQ(nvidia[0]->Value(codes[type]), type + 7);
    }
    nvidia[0]->ClearTransfers();
    EXPECT_FALSE(device->SetValue(static_cast<DDCValueType>(7), 1));
    EXPECT_EQ(Value(device, static_cast<DDCValueType>(7)), "refused");
    EXPECT_TRUE(Log(*nvidia[0]).empty()) << "an unknown type sends nothing";
    ASSERT_TRUE(device->SaveValues());
    EXPECT_EQ(nvidia[0]->Saves(), 1);
}

TEST_F(DDCControlTest, GammaFallBackOnlyWhenAskedAndOnlyOnce) {
    nvidia = MakeMonitors("[monitor]\nfaults = fail\n");
    DDCControl::LocateDevices(false);
    EXPECT_EQ(DDCControl::GetNumDevices(), 0u);
    EXPECT_EQ(Count(L"using gamma ramps"), 0u);
    DDCControl::LocateDevices(true);
    DDCControl::LocateDevices(true);
    ASSERT_EQ(DDCControl::GetNumDevices(), 1u);
    EXPECT_EQ(gammaDriversMade, 1);
    EXPECT_EQ(Count(L"Could not locate DDC/CI devices, using gamma ramps"), 2u);
    EXPECT_EQ(zelLogger::Instance().Entries().back().type, 2);
    DDCControl* device = DDCControl::GetDevice(0);
    EXPECT_TRUE(device->IsGammaRamp());
    EXPECT_EQ(device->GetDriver(), DDCControl::GetGammaDriver());
    EXPECT_EQ(Names(), Lines{"All Displays"});
    EXPECT_EQ(Value(device, Brightness), "115/200");
    // The emulation knows no page switch: Auto EcoView fails at its first step.
    EXPECT_EQ(Value(device, AutoEcoView), "refused");
    EXPECT_FALSE(device->SetValue(AutoEcoView, 0));
}

TEST_F(DDCControlTest, LastPacketsComeOnlyFromDriversThatExistAndDestroyEndsEverything) {
    Bytes ati(10, 0xEE), nv(10, 0xEE);
    DDCControl::GetLastPacket(ati.data(), nv.data());
    EXPECT_EQ(nv, Bytes(10, 0xEE)) << "before LocateDevices";
    utilsExam::SetDevMode(true);
    nvidia = MakeMonitors("[monitor]\nvcp.10 = 9/90\n");
    DDCControl::SetDriverFactory({[this] { return Bus(nvidia); }, nullptr, nullptr});
    DDCControl::LocateDevices(true);
    DDCControl::GetLastPacket(ati.data(), nv.data());
    EXPECT_EQ(nv, (Bytes{0x6E, 0x88, 0x02, 0x00, 0x10, 0x00, 0x00, 90, 0x00, 9}));
    EXPECT_EQ(ati, Bytes(10, 0xEE)) << "no second driver on this machine";
    DDCControl::GetLastPacket(nullptr, nullptr);
    bool a = true, n = false;
    DDCControl::IsInitialized(a, n);
    EXPECT_TRUE(!a && n);

    DDCControl stale(*DDCControl::GetDevice(0));
    DDCControl::Destroy();
    EXPECT_EQ(DDCControl::GetNumDevices(), 0u);
    EXPECT_EQ(DDCControl::GetNvidiaDriver(), nullptr);
    std::string name;
    EXPECT_EQ(Value(&stale, Brightness), "refused") << "a copy kept past Destroy reaches no deleted driver";
    EXPECT_FALSE(stale.SetValue(Brightness, 1));
    EXPECT_FALSE(stale.GetName(name));
    EXPECT_FALSE(stale.SaveValues());
    DDCControl::Destroy();  // twice is harmless
    DDCControl::LocateDevices(false);
    EXPECT_EQ(Value(DDCControl::GetDevice(0), Brightness), "9/90") << "the registry starts again after Destroy";
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
