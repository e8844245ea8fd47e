// DDC/CI exchanges over simulated buses: exact bytes, pauses, every reply fault, probing, names, strict mode.
#include <gtest/gtest.h>

#include "display/ddc_protocol.h"
#include "sim_bus_fixture.h"

namespace {
using namespace uc::test;
namespace ddc = uc::display::ddc;
using Pauses = std::vector<long long>;

class BusDriverTest : public testing::Test {
protected:
    // One monitor per "[monitor]" section; the driver enumerated, transfers and pauses of that forgotten.
    void Start(const std::string& text, unsigned expected = 1) {
        monitors = MakeMonitors(text);
        driver = MakeBusDriver(monitors, clock);
        ASSERT_EQ(driver->Enumerate(), expected);
        Forget();
    }
    void Forget() {
        for (auto& m : monitors) m->ClearTransfers();
        clock.Clear();
    }
    dsim::SimulatedMonitor& Monitor(std::size_t i = 0) { return *monitors[i]; }

    PauseRecorder clock;
    std::vector<std::shared_ptr<dsim::SimulatedMonitor>> monitors;
    std::unique_ptr<I2cBusDriver> driver;
};

TEST_F(BusDriverTest, SetSaveAndGetPutTheirExactBytesOnTheBusAndPauseAfterwards) {
    Start("[monitor]\n");
    ASSERT_TRUE(driver->SetVCP(0, 0x10, 50));
    EXPECT_EQ(Log(Monitor()), (std::vector<std::string>{"W 6E 51 84 03 10 00 32 9A"}));
    EXPECT_EQ(clock.Pauses(), (Pauses{50}));
    EXPECT_EQ(Monitor().Value(0x10), 50);

    Forget();
    ASSERT_TRUE(driver->SaveCurrentSettings(0));
    EXPECT_EQ(Log(Monitor()), (std::vector<std::string>{"W 6E 51 81 0C B2"}));
    EXPECT_EQ(clock.Pauses(), (Pauses{200}));
    EXPECT_EQ(Monitor().Saves(), 1);

    Forget();
    std::uint8_t maximum = 0, current = 0;
    ASSERT_TRUE(driver->GetVCP(0, 0x12, maximum, current));
    EXPECT_EQ(maximum, 100);
    EXPECT_EQ(current, 70);
    // Ten bytes are read; the checksum byte stays on the display's side.
    EXPECT_EQ(Log(Monitor()), (std::vector<std::string>{"W 6E 51 82 01 12 AE", "R 6F 6E 88 02 00 12 00 00 64 00 46"}));
    EXPECT_EQ(clock.Pauses(), (Pauses{40, 30}));
    std::uint8_t packet[10];
    driver->GetLastPacket(packet);
    EXPECT_EQ(Bytes(packet, packet + 10), (Bytes{0x6E, 0x88, 0x02, 0x00, 0x12, 0x00, 0x00, 0x64, 0x00, 0x46}));
}

struct FaultCase {
    const char* what;
    const char* monitor;  // lines of the monitor's section
    bool accepted;
    ddc::ReplyStatus status;
};

TEST_F(BusDriverTest, EveryReplyFaultGivesFalseAndLeavesTheOutputsAlone) {
    const FaultCase cases[] = {
        {"result code", "faults = result-code\nfault-codes = 12", false, ddc::ReplyStatus::ResultCode},
        {"reply for another code", "faults = other-code\nfault-codes = 12", false, ddc::ReplyStatus::OtherCode},
        {"type byte", "faults = type-byte\nfault-codes = 12", false, ddc::ReplyStatus::TypeByte},
        {"maximum above 255", "vcp.12 = 50/300", false, ddc::ReplyStatus::WideMaximum},
        {"value above 255", "vcp.12 = 256/255", false, ddc::ReplyStatus::WideValue},
        {"unknown code", "no-vcp = 12", false, ddc::ReplyStatus::ResultCode},
        {"wrong checksum is not looked at", "faults = bad-checksum\nfault-codes = 12", true, ddc::ReplyStatus::Ok},
    };
    for (const FaultCase& c : cases) {
        SCOPED_TRACE(c.what);
        Start(std::string("[monitor]\n") + c.monitor + "\n");
        std::uint8_t maximum = 9, current = 9;
        EXPECT_EQ(driver->GetVCP(0, 0x12, maximum, current), c.accepted);
        EXPECT_EQ(driver->LastReplyStatus(), c.status);
        if (!c.accepted) {
            EXPECT_EQ(maximum * 1000 + current, 9009);
        }
        // The refused reply is still kept raw for diagnosis.
        std::uint8_t packet[10];
        driver->GetLastPacket(packet);
        EXPECT_EQ(packet[0], 0x6E);
        EXPECT_EQ(clock.Pauses(), (Pauses{40, 30})) << "a delivered reply is paused after, valid or not";
    }
}

TEST_F(BusDriverTest, AFailedTransferReturnsAtOnceWithoutPauseOrRetry) {
    Start("[monitor]\nstop-after = 2\n");  // the probe's two transfers are the last it answers
    EXPECT_FALSE(driver->SetVCP(0, 0x10, 1));
    EXPECT_FALSE(driver->SaveCurrentSettings(0));
    std::uint8_t maximum = 0, current = 0;
    EXPECT_FALSE(driver->GetVCP(0, 0x10, maximum, current));
    EXPECT_TRUE(clock.Pauses().empty());
    EXPECT_EQ(Log(Monitor()).size(), 3u) << "one attempt each";

    // The request goes through but the reply read fails: one pause, and the last packet is zeroed.
    Start("[monitor]\nstop-after = 3\n");
    ASSERT_TRUE(driver->GetVCP(0, 0x10, maximum, current) == false);
    EXPECT_EQ(clock.Pauses(), (Pauses{40}));
    std::uint8_t packet[10];
    driver->GetLastPacket(packet);
    EXPECT_EQ(Bytes(packet, packet + 10), Bytes(10, 0));
}

TEST_F(BusDriverTest, IndicesOutsideTheListSendNothing) {
    monitors = MakeMonitors("[monitor]\n");
    driver = MakeBusDriver(monitors, clock);
    std::uint8_t maximum = 0, current = 0;
    std::string name;
    EXPECT_FALSE(driver->GetVCP(0, 0x10, maximum, current)) << "before Enumerate the list is empty";
    ASSERT_EQ(driver->Enumerate(), 1u);
    Forget();
    EXPECT_FALSE(driver->SetVCP(1, 0x10, 1));
    EXPECT_FALSE(driver->SaveCurrentSettings(1));
    EXPECT_FALSE(driver->GetName(1, name));
    EXPECT_TRUE(Log(Monitor()).empty());
    EXPECT_TRUE(clock.Pauses().empty());
}

TEST_F(BusDriverTest, EnumerateKeepsOnlyBusesWhoseMonitorAnswersTheBrightnessProbe) {
    monitors = MakeMonitors("[monitor]\nname = A\n[monitor]\nfaults = fail\n[monitor]\nfaults = type-byte\n[monitor]\nname = D\n");
    driver = MakeBusDriver(monitors, clock);
    EXPECT_TRUE(driver->IsInitialized());
    ASSERT_EQ(driver->Enumerate(), 2u);
    EXPECT_EQ(driver->BusOf(0), 0);
    EXPECT_EQ(driver->BusOf(1), 3);
    EXPECT_EQ(driver->BusOf(2), -1);
    for (auto& m : monitors) {
        const auto log = Log(*m);
        ASSERT_FALSE(log.empty());
        EXPECT_EQ(log[0].rfind("W 6E 51 82 01 10 AC", 0), 0u) << "one Get VCP of 0x10 per candidate";
    }
    // A second Enumerate replaces the list rather than adding to it.
    ASSERT_EQ(driver->Enumerate(), 2u);
    std::string name;
    ASSERT_TRUE(driver->GetName(1, name));
    EXPECT_EQ(name, "D\n          ");
    // No bus at all: nothing found, not initialised.
    I2cBusDriver none(std::make_unique<dsim::SimulatedI2cProvider>(dsim::SimulationConfig{}));
    EXPECT_FALSE(none.IsInitialized());
    EXPECT_EQ(none.Enumerate(), 0u);
}

TEST_F(BusDriverTest, NamesComeFromTheEdidAndAMissingEdidLeavesTheStringAlone) {
    Start("[monitor]\nname = EV2795\n[monitor]\nfaults = no-edid\n[monitor]\nname =\n", 3);
    std::string name = "kept";
    ASSERT_TRUE(driver->GetName(0, name));
    EXPECT_EQ(name, "EV2795\n     ");
    const auto log = Log(Monitor(0));
    ASSERT_EQ(log.size(), 2u);
    EXPECT_EQ(log[0], "W A0 00") << "the EDID offset is set to 0, then the base block read";
    EXPECT_EQ(log[1].substr(0, 28), "R A1 00 FF FF FF FF FF FF 00");
    EXPECT_EQ(log[1].size(), 4u + 128 * 3);
    name = "kept";
    EXPECT_FALSE(driver->GetName(1, name));
    EXPECT_EQ(name, "kept");
    EXPECT_FALSE(driver->GetName(2, name)) << "an EDID without a name block";
    EXPECT_EQ(name, "");
}

TEST_F(BusDriverTest, StrictModeVerifiesTheChecksumAndRetriesWithBackOff) {
    Start("[monitor]\nfaults = bad-checksum\n");
    driver->SetStrictMode({true, 0});
    std::uint8_t maximum = 0, current = 0;
    EXPECT_FALSE(driver->GetVCP(0, 0x10, maximum, current));
    EXPECT_EQ(driver->LastReplyStatus(), ddc::ReplyStatus::BadChecksum);
    EXPECT_EQ(Log(Monitor()).back().size(), std::string("R 6F").size() + 11 * 3) << "eleven bytes read";

    // Every second reply is garbled on the line: the default accepts a wrong value, strict mode retries.
    Start("[monitor]\nvcp.10 = 40/100\ncorrupt-every = 2\n");
    ASSERT_TRUE(driver->GetVCP(0, 0x10, maximum, current));
    EXPECT_EQ(current, 40 ^ 0x21) << "the console's default cannot tell";
    driver->SetStrictMode({true, 2});
    clock.Clear();
    ASSERT_TRUE(driver->GetVCP(0, 0x10, maximum, current));  // the third reply, clean
    EXPECT_EQ(current, 40);
    ASSERT_TRUE(driver->GetVCP(0, 0x10, maximum, current));  // the fourth is garbled, the fifth clean
    EXPECT_EQ(current, 40);
    EXPECT_EQ(clock.Pauses(), (Pauses{40, 30, 40, 30, 50, 40, 30})) << "one back-off before the retry";

    // A monitor that never answers costs every retry and the growing back-off, then false.
    Start("[monitor]\nstop-after = 2\n");
    driver->SetStrictMode({false, 5});
    EXPECT_FALSE(driver->SetVCP(0, 0x10, 5));
    EXPECT_EQ(clock.Pauses(), (Pauses{50, 100, 200, 400, 400}));
    EXPECT_EQ(Log(Monitor()).size(), 6u);
}

}  // namespace
