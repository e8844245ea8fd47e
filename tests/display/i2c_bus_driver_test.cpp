// DDC/CI exchanges over simulated buses: exact bytes, pauses, every reply fault, probing, names, strict mode.
#include <gtest/gtest.h>

#include "display/ddc_protocol.h"
#include "display_test_support.h"

namespace {
using namespace uc::test;
namespace ddc = uc::display::ddc;

class BusDriverTest : public testing::Test {
protected:
    // One monitor per "[monitor]" section; the driver enumerated, transfers and pauses of that forgotten.
    void Start(const std::string& text, unsigned expected = 1) {
        monitors = MakeMonitors(text);
        driver = MakeBusDriver(monitors, clock);
        ASSERT_EQ(driver->Enumerate(), expected);
        for (auto& m : monitors) m->ClearTransfers();
        clock.Clear();
    }
    Bytes LastPacket() const {
        std::uint8_t packet[10];
        driver->GetLastPacket(packet);
        return Bytes(packet, packet + 10);
    }

    PauseRecorder clock;
    std::vector<std::shared_ptr<dsim::SimulatedMonitor>> monitors;
    std::unique_ptr<I2cBusDriver> driver;
};

TEST_F(BusDriverTest, SetSaveAndGetPutTheirExactBytesOnTheBusAndPauseAfterwards) {
    Start("[monitor]\n");
    ExpectExactExchanges(*driver, clock, [&] { return Log(*monitors[0]); });
    EXPECT_EQ(monitors[0]->Value(0x10), 50);
    EXPECT_EQ(monitors[0]->Saves(), 1);
}

TEST_F(BusDriverTest, EveryReplyFaultGivesFalseAndLeavesTheOutputsAlone) {
    const struct {
        const char* monitor;  // lines of the monitor's section
        ddc::ReplyStatus status;
    } cases[] = {
        {"faults = result-code\nfault-codes = 12", ddc::ReplyStatus::ResultCode},
        {"faults = other-code\nfault-codes = 12", ddc::ReplyStatus::OtherCode},
        {"faults = type-byte\nfault-codes = 12", ddc::ReplyStatus::TypeByte},
        {"vcp.12 = 50/300", ddc::ReplyStatus::WideMaximum},
        {"vcp.12 = 256/255", ddc::ReplyStatus::WideValue},
        {"no-vcp = 12", ddc::ReplyStatus::ResultCode},
        {"faults = bad-checksum\nfault-codes = 12", ddc::ReplyStatus::Ok},  // by default not looked at
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.monitor);
        Start(std::string("[monitor]\n") + c.monitor + "\n");
        EXPECT_EQ(Vcp(*driver, 0, 0x12) != "refused", c.status == ddc::ReplyStatus::Ok);
        EXPECT_EQ(driver->LastReplyStatus(), c.status);
        EXPECT_EQ(LastPacket()[0], 0x6E) << "the refused reply is still kept raw for diagnosis";
        EXPECT_EQ(clock.Taken(), (Pauses{40, 30})) << "a delivered reply is paused after, valid or not";
    }
}

TEST_F(BusDriverTest, AFailedTransferReturnsAtOnceWithoutPauseOrRetry) {
    Start("[monitor]\nstop-after = 2\n");  // the probe's two transfers are the last it answers
    EXPECT_FALSE(driver->SetVCP(0, 0x10, 1));
    EXPECT_FALSE(driver->SaveCurrentSettings(0));
    EXPECT_EQ(Vcp(*driver, 0, 0x10), "refused");
    EXPECT_TRUE(clock.Taken().empty());
    EXPECT_EQ(Log(*monitors[0]).size(), 3u) << "one attempt each";
    // The request goes through but the reply read fails: one pause, and the last packet is zeroed.
    Start("[monitor]\nstop-after = 3\n");
    EXPECT_EQ(Vcp(*driver, 0, 0x10), "refused");
    EXPECT_EQ(clock.Taken(), (Pauses{40}));
    EXPECT_EQ(LastPacket(), Bytes(10, 0));
}

TEST_F(BusDriverTest, EnumerateKeepsOnlyAnsweringBusesAndIndicesOutsideTheListSendNothing) {
    monitors = MakeMonitors("[monitor]\nname = A\n[monitor]\nfaults = fail\n[monitor]\nfaults = type-byte\n[monitor]\nname = D\n");
    driver = MakeBusDriver(monitors, clock);
    EXPECT_EQ(Vcp(*driver, 0, 0x10), "refused") << "before Enumerate the list is empty";
    EXPECT_TRUE(driver->IsInitialized());
    ASSERT_EQ(driver->Enumerate(), 2u);
    ASSERT_EQ(driver->Enumerate(), 2u) << "a second Enumerate replaces the list";
    EXPECT_EQ(driver->BusOf(0), 0);
    EXPECT_EQ(driver->BusOf(1), 3);
    for (auto& m : monitors) {
        EXPECT_EQ(Log(*m).at(0).substr(0, 19), "W 6E 51 82 01 10 AC") << "one Get VCP of 0x10 each";
        m->ClearTransfers();
    }
    std::string name;
    EXPECT_FALSE(driver->SetVCP(2, 0x10, 1));
    EXPECT_FALSE(driver->SaveCurrentSettings(2));
    EXPECT_FALSE(driver->GetName(2, name));
    for (auto& m : monitors) EXPECT_TRUE(Log(*m).empty());
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
    const Lines log = Log(*monitors[0]);
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
    EXPECT_EQ(Vcp(*driver, 0, 0x10), "refused");
    EXPECT_EQ(driver->LastReplyStatus(), ddc::ReplyStatus::BadChecksum);
    EXPECT_EQ(Log(*monitors[0]).back().size(), std::string("R 6F").size() + 11 * 3) << "eleven bytes read";
    // Every second reply is garbled on the line: the default accepts a wrong value, strict mode retries.
    Start("[monitor]\nvcp.10 = 40/100\ncorrupt-every = 2\n");
    EXPECT_EQ(Vcp(*driver, 0, 0x10), std::to_string(40 ^ 0x21) + "/100") << "the console's default cannot tell";
    driver->SetStrictMode({true, 2});
    clock.Clear();
    EXPECT_EQ(Vcp(*driver, 0, 0x10), "40/100");  // the third reply, clean
    EXPECT_EQ(Vcp(*driver, 0, 0x10), "40/100");  // the fourth is garbled, the fifth clean
    EXPECT_EQ(clock.Taken(), (Pauses{40, 30, 40, 30, 50, 40, 30})) << "one back-off before the retry";
    // A monitor that never answers costs every retry and the growing back-off, then false.
    Start("[monitor]\nstop-after = 2\n");
    driver->SetStrictMode({false, 5});
    EXPECT_FALSE(driver->SetVCP(0, 0x10, 5));
    EXPECT_EQ(clock.Taken(), (Pauses{50, 100, 200, 400, 400}));
    EXPECT_EQ(Log(*monitors[0]).size(), 6u);
}

}  // namespace
