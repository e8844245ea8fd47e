// The device simulators' engines, without ports: framing, replies, scripts and fault shaping.
#include <gtest/gtest.h>

#include "power/battery_protocol.h"
#include "power/simulator/battery_simulator.h"
#include "power/simulator/ups_simulator.h"

namespace {
namespace sim = uc::power::sim;
namespace bp = uc::power::battery;
using namespace std::chrono_literals;
using Bytes = std::vector<std::uint8_t>;

Bytes Join(const std::vector<sim::Output>& outs) {
    Bytes all;
    for (const auto& o : outs) all.insert(all.end(), o.bytes.begin(), o.bytes.end());
    return all;
}

TEST(BatterySimulator, AnswersPingAndStatusAcrossSplitCommands) {
    sim::BatteryModuleSimulator m;
    Bytes ping = bp::EncodeCommand(bp::PingCommand);
    EXPECT_TRUE(m.Receive(ping.data(), 2).empty());
    auto out = m.Receive(ping.data() + 2, 2);
    EXPECT_EQ(Join(out), bp::EncodeReply(bp::PingReply, {0}));
    Bytes status = bp::EncodeCommand(bp::StatusCommand);
    Bytes noisy = {0x00, 0x46, 0x01, 0x00, 0x00};  // a damaged frame first
    noisy.insert(noisy.end(), status.begin(), status.end());
    out = m.Receive(noisy.data(), noisy.size());
    Bytes reply = Join(out);
    ASSERT_EQ(reply.size(), 43u);
    EXPECT_EQ(reply[1], bp::StatusReply);
    EXPECT_EQ(reply[2], 39);
    EXPECT_EQ(m.BadFrames(), 1);
    EXPECT_EQ(m.CommandsReceived(bp::StatusCommand), 1);
}

TEST(BatterySimulator, ReadingsLandInTheRecord) {
    sim::BatteryModuleSimulator m;
    m.SetVoltage(20.4);
    m.SetPercent(12);
    m.SetState(10);
    m.SetOnAC(false);
    const BatteryStatus s = m.GetStatus();
    EXPECT_NEAR(s.GetVoltage(), 20.4, 0.02);
    EXPECT_EQ(s.GetPercent(), 12);
    EXPECT_TRUE(s.FaultState());
    EXPECT_FALSE(s.OnAC());
}

TEST(BatterySimulator, FaultsShapeTheReply) {
    sim::BatteryModuleSimulator m;
    sim::Faults f;
    f.garbage = {1, 2};
    f.splitAt = 4;
    f.splitDelay = 30ms;
    f.replyDelay = 100ms;
    f.repeat = 2;
    f.wrongEnd = true;
    m.SetFaults(f);
    Bytes ping = bp::EncodeCommand(bp::PingCommand);
    auto out = m.Receive(ping.data(), ping.size());
    ASSERT_EQ(out.size(), 4u);
    EXPECT_EQ(out[0].at, 100ms);
    EXPECT_EQ(out[1].at, 130ms);
    EXPECT_EQ(out[0].bytes, (Bytes{1, 2, 0xB9, 0x1C}));
    EXPECT_EQ(out[1].bytes, (Bytes{0x01, 0x00, 0x00}));
    f.silent = true;
    m.SetFaults(f);
    EXPECT_TRUE(m.Receive(ping.data(), ping.size()).empty());
}

TEST(UpsSimulator, AnswersLettersAndFollowsItsScript) {
    sim::UpsSimulator u;
    const std::string in = "P\rB\rB\rQ\r\rD\r";
    u.QueueReply('B', "42");
    u.QueueReply('B', std::nullopt);
    auto out = u.Receive(reinterpret_cast<const std::uint8_t*>(in.data()), in.size());
    const Bytes all = Join(out);
    EXPECT_EQ(std::string(all.begin(), all.end()), "1\r42\rOK\r");
    EXPECT_EQ(u.CommandsReceived('B'), 2);
    EXPECT_EQ(u.CommandsReceived('Q'), 1);
    out = u.Receive(reinterpret_cast<const std::uint8_t*>("B"), 1);
    EXPECT_TRUE(out.empty()) << "a command is complete only with its carriage return";
    out = u.Receive(reinterpret_cast<const std::uint8_t*>("\r"), 1);
    EXPECT_EQ(Join(out), (Bytes{'1', '0', '0', 0x0D}));
}

}  // namespace
