// The DDC/CI message set, both checksum conventions, the reply check, EDID names and the simulation file format.
#include <gtest/gtest.h>

#include "display/ddc_bus_driver.h"
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

Bytes Of(const ddc::Message& m) { return Bytes(m.bytes, m.bytes + m.size); }

TEST(DdcMessages, HostMessagesCarryTheirExactBytes) {
    EXPECT_EQ(Of(ddc::SetVcpRequest(0x10, 50)), (Bytes{0x6E, 0x51, 0x84, 0x03, 0x10, 0x00, 0x32, 0x9A}));
    EXPECT_EQ(Of(ddc::SaveCurrentSettingsRequest()), (Bytes{0x6E, 0x51, 0x81, 0x0C, 0xB2}));
    EXPECT_EQ(Of(ddc::GetVcpRequest(0x10)), (Bytes{0x6E, 0x51, 0x82, 0x01, 0x10, 0xAC}));
    EXPECT_EQ(Of(ddc::SetVcpRequest(0xE1, 0xE0)), (Bytes{0x6E, 0x51, 0x84, 0x03, 0xE1, 0x00, 0xE0, 0xB9}));
}

TEST(DdcMessages, BothChecksumConventionsAgreeForEveryCodeAndValue) {
    for (int code = 0; code < 256; code += 7) {
        for (int value = 0; value < 256; value += 13) {
            const ddc::Message m = ddc::SetVcpRequest(static_cast<std::uint8_t>(code), static_cast<std::uint8_t>(value));
            const std::uint8_t overBuffer = ddc::Checksum(m.bytes, m.size - 1u);
            const std::uint8_t running = ddc::PayloadChecksum(m.Payload(), m.PayloadSize() - 1u);
            ASSERT_EQ(overBuffer, running) << code << "/" << value;
            ASSERT_EQ(m.bytes[m.size - 1], overBuffer);
            // The whole message XORs to zero, as a display checks it.
            ASSERT_EQ(ddc::Checksum(m.bytes, m.size), 0);
        }
    }
    EXPECT_EQ(ddc::PayloadChecksumSeed, 0x3F);
}

struct ReplyCase {
    const char* what;
    Bytes reply;
    ddc::ReplyStatus status;
};

TEST(DdcMessages, ReplyCheckRefusesEveryMalformedReply) {
    const Bytes good = {0x6E, 0x88, 0x02, 0x00, 0x10, 0x00, 0x00, 0x64, 0x00, 0x32};
    auto with = [&](std::size_t i, std::uint8_t v) {
        Bytes b = good;
        b[i] = v;
        return b;
    };
    const ReplyCase cases[] = {
        {"valid", good, ddc::ReplyStatus::Ok},
        {"null message", {0x6E, 0x80, 0xBE, 0, 0, 0, 0, 0, 0, 0}, ddc::ReplyStatus::BadHeader},
        {"other source", with(0, 0x6F), ddc::ReplyStatus::BadHeader},
        {"other length", with(1, 0x87), ddc::ReplyStatus::BadHeader},
        {"other opcode", with(2, 0x01), ddc::ReplyStatus::BadHeader},
        {"result code", with(3, 0x01), ddc::ReplyStatus::ResultCode},
        {"other code", with(4, 0x12), ddc::ReplyStatus::OtherCode},
        {"type byte", with(5, 0x01), ddc::ReplyStatus::TypeByte},
        {"maximum above 255", with(6, 0x01), ddc::ReplyStatus::WideMaximum},
        {"value above 255", with(8, 0x01), ddc::ReplyStatus::WideValue},
    };
    for (const ReplyCase& c : cases) {
        std::uint8_t maximum = 7, current = 7;
        EXPECT_EQ(ddc::CheckGetVcpReply(c.reply.data(), 0x10, maximum, current), c.status) << c.what;
        if (c.status == ddc::ReplyStatus::Ok) {
            EXPECT_EQ(maximum, 100);
            EXPECT_EQ(current, 50);
        } else {
            EXPECT_EQ(maximum, 7) << c.what << ": outputs untouched on refusal";
            EXPECT_EQ(current, 7);
        }
    }
}

TEST(DdcMessages, TheDisplaysSideEncodesRepliesAndDropsMessagesWithBadChecksums) {
    std::uint8_t reply[ddc::ReplySizeWithChecksum];
    ddc::EncodeGetVcpReply(0, 0x12, 0, 100, 70, reply);
    std::uint8_t maximum = 0, current = 0;
    EXPECT_EQ(ddc::CheckGetVcpReply(reply, 0x12, maximum, current), ddc::ReplyStatus::Ok);
    EXPECT_EQ(reply[10], 0x50 ^ 0x6E ^ 0x88 ^ 0x02 ^ 0x12 ^ 100 ^ 70) << "seeded with the host address 0x50";
    EXPECT_TRUE(ddc::ReplyChecksumValid(reply));
    reply[10] ^= 1;
    EXPECT_FALSE(ddc::ReplyChecksumValid(reply));

    ddc::Message set = ddc::SetVcpRequest(0x12, 9);
    const ddc::HostMessage m = ddc::DecodeHostMessage(set.bytes + 1, set.size - 1u);
    EXPECT_TRUE(m.kind == ddc::HostMessage::SetVcp && m.vcp == 0x12 && m.value == 9 && m.checksumOk);
    set.bytes[set.size - 1] ^= 0xFF;
    EXPECT_FALSE(ddc::DecodeHostMessage(set.bytes + 1, set.size - 1u).checksumOk);
    // Truncated messages, a missing length flag and a length running past the data are invalid.
    const Bytes invalid[] = {{0x51, 0x82, 0x01}, {0x51, 0x02, 0x01, 0x10, 0x00}, {0x51, 0x8F, 0x01, 0x10, 0x00}};
    for (const Bytes& b : invalid) EXPECT_EQ(ddc::DecodeHostMessage(b.data(), b.size()).kind, ddc::HostMessage::Invalid);
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

    NameBlock(edid, 1, "ABCDEFGHIJKLM");  // 13 characters: the last is dropped
    ASSERT_TRUE(uc::display::MonitorNameFromEdid(edid, sizeof edid, name));
    EXPECT_EQ(name, "ABCDEFGHIJKL");

    NameBlock(edid, 0, "EV2450\n     ");  // terminator and padding stay
    NameBlock(edid, 3, "X\0Y");           // cut at the first zero byte
    ASSERT_TRUE(uc::display::MonitorNameFromEdid(edid, sizeof edid, name));
    EXPECT_EQ(name, std::string("EV2450\n     ") + "ABCDEFGHIJKL" + "X");
    EXPECT_EQ(uc::display::TidyMonitorName("EV2450\n     "), "EV2450");

    // A short buffer only offers the blocks that fit.
    EXPECT_TRUE(uc::display::MonitorNameFromEdid(edid, 72, name));
    EXPECT_EQ(name, "EV2450\n     ");
    EXPECT_FALSE(uc::display::MonitorNameFromEdid(edid, 71, name));
}

TEST(EdidNames, BuiltEdidHasHeaderChecksumAndPaddedName) {
    std::uint8_t edid[128];
    uc::display::BuildEdid("UC SIM", edid);
    std::uint8_t sum = 0;
    for (std::uint8_t b : edid) sum = static_cast<std::uint8_t>(sum + b);
    EXPECT_EQ(sum, 0);
    EXPECT_EQ(edid[1], 0xFF);
    std::string name;
    ASSERT_TRUE(uc::display::MonitorNameFromEdid(edid, sizeof edid, name));
    EXPECT_EQ(name, "UC SIM\n     ");
}

TEST(SimulationFile, MonitorsAdaptersFaultsAndCopies) {
    const char* text =
        "# two AMD monitors on one adapter, one NVIDIA monitor that lies\n"
        "[monitor]\n"
        "name = Left\n"
        "card = amd\n"
        "count = 2\n"
        "vcp.10 = 30/100\n"
        "vcp.E2 = 0/1   # already off\n"
        "no-vcp = 16, 18\n"
        "adapter = 1\n"
        "mapped = 0\n"
        "[monitor]\n"
        "faults = other-code, bad-checksum\n"
        "fault-codes = 12, e2\n"
        "stop-after = 5\n"
        "corrupt-every = 3\n"
        "[adapter]\n"
        "index = 1\n"
        "bus = 4\n"
        "[nvapi]\n"
        "missing = I2CRead, GPU_GetEDID\n";
    sim::SimulationConfig c;
    std::string error;
    ASSERT_TRUE(sim::ParseSimulationConfig(text, c, error)) << error;
    ASSERT_EQ(c.monitors.size(), 3u);
    EXPECT_EQ(c.monitors[0].name, "Left 1");
    EXPECT_EQ(c.monitors[1].name, "Left 2");
    EXPECT_EQ(c.monitors[1].vcp.at(0x10).current, 30);
    EXPECT_EQ(c.monitors[1].vcp.count(0x16), 0u);
    EXPECT_FALSE(c.monitors[1].mapped);
    EXPECT_EQ(c.MonitorsOf("amd").size(), 2u);
    EXPECT_EQ(c.MonitorsOf("nvidia").size(), 1u);
    const sim::MonitorFaults& f = c.monitors[2].faults;
    EXPECT_TRUE(f.otherCode && f.badChecksum && !f.fail);
    EXPECT_EQ(f.answerCount, 5);
    EXPECT_EQ(f.corruptEvery, 3);
    EXPECT_EQ(f.codes, (std::set<std::uint8_t>{0x12, 0xE2}));
    ASSERT_EQ(c.adapters.size(), 1u);
    EXPECT_EQ(c.adapters[0].bus, 4);
    EXPECT_EQ(c.missingFunctions.count("GPU_GetEDID"), 1u);
}

TEST(SimulationFile, MistakesAreRefusedWithTheirLine) {
    const std::pair<const char*, const char*> bad[] = {
        {"name = x\n", "line 1: a key outside a section"},
        {"[monitor]\nfaults = melt\n", "line 2: unknown fault 'melt'"},
        {"[monitor]\nvcp.10 = 50\n", "line 2: a VCP value is CURRENT/MAXIMUM, each 0 to 65535"},
        {"[monitor]\nvcp.1G0 = 1/2\n", "line 2: vcp.XX takes a hexadecimal code"},
        {"[monitor]\nvcp.10 = 1/99999999999\n", "line 2: a VCP value is CURRENT/MAXIMUM, each 0 to 65535"},
        {"[monitor]\ncount = 0\n", "line 2: count is 1 to 64"},
        {"[screen]\n", "line 1: unknown section [screen]"},
        {"[monitor\n", "line 1: a section header needs a closing ']'"},
        {"[adapter]\nbus = -1\n", "line 2: bus is 0 to 1000"},
        {"[monitor]\nbrightness\n", "line 2: expected 'key = value'"},
    };
    for (const auto& [text, message] : bad) {
        sim::SimulationConfig c = sim::SimulationConfig::Default();
        std::string error;
        EXPECT_FALSE(sim::ParseSimulationConfig(text, c, error)) << text;
        EXPECT_EQ(error, message);
        EXPECT_EQ(c.monitors.size(), 2u) << "a refused file leaves the configuration alone";
    }
}

TEST(SimulationFile, LoadingFallsBackOnlyWhenNoFileIsNamed) {
    uc::test::TempDir dir;
    sim::SimulationConfig c;
    std::string source, error;
    ASSERT_TRUE(sim::LoadSimulationConfig("", "", c, source, error));
    EXPECT_EQ(source, "built-in default");
    EXPECT_EQ(c.monitors.size(), 2u);
    EXPECT_FALSE(sim::LoadSimulationConfig(uc::ToUtf8(dir.file(L"absent.ini")), "", c, source, error));
    const std::string beside = uc::ToUtf8(dir.write(L"display-sim.ini", "[monitor]\ncount = 3\n"));
    ASSERT_TRUE(sim::LoadSimulationConfig("", beside, c, source, error)) << error;
    EXPECT_EQ(c.monitors.size(), 3u);
    EXPECT_EQ(source, beside);
}

}  // namespace
