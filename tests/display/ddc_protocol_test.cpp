// The DDC/CI message set: both checksum conventions, the reply check, EDID names and the simulation file format.
#include <gtest/gtest.h>

#include "display/ddc_protocol.h"
#include "display/edid.h"
#include "display/simulator/display_sim_config.h"
#include "display/vendor_records.h"  // its layouts are checked at compile time, here for 64-bit Linux
#include "display_test_support.h"
#include "platform/text.h"

namespace {
namespace ddc = uc::display::ddc;
namespace sim = uc::display::sim;
using uc::test::Bytes;

TEST(DdcMessages, BothChecksumConventionsAgreeForEveryCodeAndValue) {
    const ddc::Message save = ddc::SaveCurrentSettingsRequest();
    EXPECT_EQ(Bytes(save.bytes, save.bytes + save.size), (Bytes{0x6E, 0x51, 0x81, 0x0C, 0xB2}));
    for (int code = 0; code < 256; code += 7) {
        for (int value = 0; value < 256; value += 13) {
            const ddc::Message m = ddc::SetVcpRequest(static_cast<std::uint8_t>(code), static_cast<std::uint8_t>(value));
            const std::uint8_t running = ddc::PayloadChecksum(m.Payload(), m.PayloadSize() - 1u);
            ASSERT_EQ(ddc::Checksum(m.bytes, m.size - 1u), running) << code << "/" << value;
            ASSERT_EQ(m.bytes[m.size - 1], running);
        }
    }
}

TEST(DdcMessages, ReplyCheckRefusesEveryMalformedReply) {
    const Bytes good = {0x6E, 0x88, 0x02, 0x00, 0x10, 0x00, 0x00, 0x64, 0x00, 0x32};
    const std::pair<std::size_t, ddc::ReplyStatus> cases[] = {
        {0, ddc::ReplyStatus::BadHeader},  {1, ddc::ReplyStatus::BadHeader}, {2, ddc::ReplyStatus::BadHeader},
        {3, ddc::ReplyStatus::ResultCode}, {4, ddc::ReplyStatus::OtherCode}, {5, ddc::ReplyStatus::TypeByte},
        {6, ddc::ReplyStatus::WideMaximum}, {8, ddc::ReplyStatus::WideValue},
    };
    std::uint8_t maximum = 0, current = 0;
    ASSERT_EQ(ddc::CheckGetVcpReply(good.data(), 0x10, maximum, current), ddc::ReplyStatus::Ok);
    EXPECT_EQ(maximum * 1000 + current, 100050);
    for (const auto& [byte, status] : cases) {
        Bytes bad = good;
        bad[byte] ^= 0x01;
        maximum = current = 7;
        EXPECT_EQ(ddc::CheckGetVcpReply(bad.data(), 0x10, maximum, current), status) << "byte " << byte;
        EXPECT_EQ(maximum * 1000 + current, 7007) << "outputs untouched on refusal";
    }
    // The display's checksum is seeded with the host address 0x50.
    std::uint8_t reply[ddc::ReplySizeWithChecksum];
    ddc::EncodeGetVcpReply(0, 0x12, 0, 100, 70, reply);
    EXPECT_EQ(reply[10], 0x50 ^ 0x6E ^ 0x88 ^ 0x02 ^ 0x12 ^ 100 ^ 70);
    EXPECT_TRUE(ddc::ReplyChecksumValid(reply));
}

// EDID descriptor block `slot` (0-3) as a name block holding `text` in its 13 name bytes.
void NameBlock(std::uint8_t* edid, int slot, const std::string& text) {
    std::uint8_t* block = edid + 54 + 18 * slot;
    block[3] = 0xFC;
    for (std::size_t i = 0; i < 13; ++i) block[5 + i] = i < text.size() ? static_cast<std::uint8_t>(text[i]) : 0;
}

TEST(EdidNames, TwelveBytesOfEachNameBlockInOrder) {
    std::uint8_t edid[256] = {};
    std::string name = "untouched";
    EXPECT_FALSE(uc::display::MonitorNameFromEdid(edid, sizeof edid, name)) << "no name block";
    EXPECT_EQ(name, "") << "the string is cleared even when nothing is found";
    NameBlock(edid, 0, "EV2450\n     ");   // terminator and padding stay
    NameBlock(edid, 1, "ABCDEFGHIJKLM");  // 13 characters: the last is dropped
    NameBlock(edid, 3, "X\0Y");           // cut at the first zero byte
    ASSERT_TRUE(uc::display::MonitorNameFromEdid(edid, sizeof edid, name));
    EXPECT_EQ(name, std::string("EV2450\n     ") + "ABCDEFGHIJKL" + "X");
    EXPECT_EQ(uc::display::TidyMonitorName("EV2450\n     "), "EV2450");
    // A short buffer only offers the blocks that fit.
    EXPECT_TRUE(uc::display::MonitorNameFromEdid(edid, 72, name));
    EXPECT_EQ(name, "EV2450\n     ");
    EXPECT_FALSE(uc::display::MonitorNameFromEdid(edid, 71, name));
}

TEST(SimulationFile, MistakesAreRefusedWithTheirLineAndChangeNothing) {
    const std::pair<const char*, const char*> bad[] = {
        {"name = x\n", "line 1: a key outside a section"},
        {"[monitor]\nfaults = melt\n", "line 2: unknown fault 'melt'"},
        {"[monitor]\nvcp.10 = 50\n", "line 2: a VCP value is CURRENT/MAXIMUM, each 0 to 65535"},
        {"[monitor]\nvcp.10 = 1/99999999999\n", "line 2: a VCP value is CURRENT/MAXIMUM, each 0 to 65535"},
        {"[monitor]\nvcp.1G0 = 1/2\n", "line 2: vcp.XX takes a hexadecimal code"},
        {"[screen]\n", "line 1: unknown section [screen]"},
        {"[adapter]\nbus = -1\n", "line 2: bus is 0 to 1000"},
    };
    for (const auto& [text, message] : bad) {
        sim::SimulationConfig c = sim::SimulationConfig::Default();
        std::string error;
        EXPECT_FALSE(sim::ParseSimulationConfig(text, c, error)) << text;
        EXPECT_EQ(error, message);
        EXPECT_EQ(c.monitors.size(), 2u);
    }
    // A file named but missing is an error; with none named, one beside the library counts, else the default.
    uc::test::TempDir dir;
    sim::SimulationConfig c;
    std::string source, error;
    EXPECT_FALSE(sim::LoadSimulationConfig(uc::ToUtf8(dir.file(L"absent.ini")), "", c, source, error));
    ASSERT_TRUE(sim::LoadSimulationConfig("", "", c, source, error));
    EXPECT_EQ(source, "built-in default");
    const std::string beside = uc::ToUtf8(dir.write(L"display-sim.ini", "[monitor]\ncount = 3\n"));
    ASSERT_TRUE(sim::LoadSimulationConfig("", beside, c, source, error)) << error;
    EXPECT_EQ(c.monitors.size(), 3u);
}

}  // namespace
