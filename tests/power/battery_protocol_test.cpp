// The battery frame parser and encoder, in place on a receive buffer, with no I/O.
#include <gtest/gtest.h>

#include <vector>

#include "platform/serial/circular_buffer.h"
#include "power/battery_protocol.h"

namespace {
namespace bp = uc::power::battery;
using Bytes = std::vector<unsigned char>;

struct Parser {
    CCircularBuffer buffer{1024};
    void Add(const Bytes& b) { buffer.Write(b.data(), static_cast<unsigned>(b.size())); }
    bp::ParseResult Next(bp::Frame& f) { return bp::ExtractFrame(buffer, bp::ReplyStart, bp::ReplyEnd, f); }
};

TEST(BatteryProtocol, EncodesCommandsAndReplies) {
    EXPECT_EQ(bp::EncodeCommand(0xD1), (Bytes{0x46, 0xD1, 0x00, 0x55}));
    EXPECT_EQ(bp::EncodeCommand(0x10, {1, 2}), (Bytes{0x46, 0x10, 0x02, 1, 2, 0x55}));
    EXPECT_EQ(bp::EncodeReply(0x1C, {0}), (Bytes{0xB9, 0x1C, 0x01, 0x00, 0xAA}));
    EXPECT_EQ(bp::ReplyCodeFor(bp::PingCommand), bp::PingReply);
    EXPECT_EQ(bp::ReplyCodeFor(bp::StatusCommand), bp::StatusReply);
    EXPECT_EQ(bp::ReplyStart, static_cast<unsigned char>(~bp::CommandStart));
    EXPECT_EQ(bp::ReplyEnd, static_cast<unsigned char>(~bp::CommandEnd));
}

TEST(BatteryProtocol, GarbageBeforeAFrameIsSkipped) {
    Parser p;
    p.Add({0x00, 0xFF, 0x12, 0xB9, 0x1C, 0x01, 0x00, 0xAA});
    bp::Frame f;
    ASSERT_EQ(p.Next(f), bp::ParseResult::Frame);
    EXPECT_EQ(f.code, 0x1C);
    EXPECT_EQ(f.length, 1);
    EXPECT_EQ(f.data[0], 0);
    EXPECT_TRUE(p.buffer.IsEmpty());
}

TEST(BatteryProtocol, OnlyGarbageEmptiesTheBuffer) {
    Parser p;
    p.Add({0x01, 0x02, 0xAA});
    bp::Frame f;
    EXPECT_EQ(p.Next(f), bp::ParseResult::NeedMore);
    EXPECT_TRUE(p.buffer.IsEmpty());
}

TEST(BatteryProtocol, SplitFrameWaitsWithoutConsumingAnything) {
    Parser p;
    p.Add({0xB9, 0x2E, 0x27});
    bp::Frame f;
    EXPECT_EQ(p.Next(f), bp::ParseResult::NeedMore);
    EXPECT_EQ(p.buffer.GetValidCount(), 3u);
    Bytes rest(39, 0x11);
    rest.push_back(0xAA);
    p.Add(Bytes(rest.begin(), rest.begin() + 20));
    EXPECT_EQ(p.Next(f), bp::ParseResult::NeedMore);
    EXPECT_EQ(p.buffer.GetValidCount(), 23u);
    p.Add(Bytes(rest.begin() + 20, rest.end()));
    ASSERT_EQ(p.Next(f), bp::ParseResult::Frame);
    EXPECT_EQ(f.length, 39);
    EXPECT_EQ(f.data[38], 0x11);
}

TEST(BatteryProtocol, LoneStartByteStaysForTheNextCall) {
    Parser p;
    p.Add({0x05, 0xB9});
    bp::Frame f;
    EXPECT_EQ(p.Next(f), bp::ParseResult::NeedMore);
    EXPECT_EQ(p.buffer.GetValidCount(), 1u);
}

TEST(BatteryProtocol, WrongEndByteCostsOnlyTheStartByte) {
    Parser p;
    p.Add({0xB9, 0x1C, 0x01, 0x00, 0x00, 0xB9, 0x2E, 0x00, 0xAA});
    bp::Frame f;
    ASSERT_EQ(p.Next(f), bp::ParseResult::MissingEnd);
    EXPECT_EQ(f.code, 0x1C);
    EXPECT_EQ(f.length, 1);
    EXPECT_EQ(p.buffer.GetValidCount(), 8u) << "only 0xB9 was dropped";
    ASSERT_EQ(p.Next(f), bp::ParseResult::Frame) << "the next start byte begins a new frame";
    EXPECT_EQ(f.code, 0x2E);
    EXPECT_EQ(f.length, 0);
}

TEST(BatteryProtocol, ZeroLengthReplyIsAFourByteFrame) {
    Parser p;
    p.Add({0xB9, 0x40, 0x00, 0xAA, 0xB9});
    bp::Frame f;
    ASSERT_EQ(p.Next(f), bp::ParseResult::Frame);
    EXPECT_EQ(f.length, 0);
    EXPECT_EQ(p.buffer.GetValidCount(), 1u);
}

TEST(BatteryProtocol, MaximalFrameOf255DataBytes) {
    Parser p;
    Bytes frame = bp::EncodeReply(0x77, Bytes(255, 0x42));
    ASSERT_EQ(frame.size(), bp::MaxFrame);
    p.Add(frame);
    bp::Frame f;
    ASSERT_EQ(p.Next(f), bp::ParseResult::Frame);
    EXPECT_EQ(f.length, 255);
    EXPECT_EQ(f.data[254], 0x42);
}

TEST(BatteryProtocol, FramesAcrossTheBufferWrapParse) {
    CCircularBuffer buffer(16);
    bp::Frame f;
    for (int i = 0; i < 50; ++i) {
        Bytes frame = bp::EncodeReply(static_cast<unsigned char>(i), {static_cast<unsigned char>(i), 1, 2});
        buffer.Write(frame.data(), static_cast<unsigned>(frame.size()));
        ASSERT_EQ(bp::ExtractFrame(buffer, bp::ReplyStart, bp::ReplyEnd, f), bp::ParseResult::Frame);
        EXPECT_EQ(f.code, i);
        EXPECT_EQ(f.data[0], i);
    }
}

}  // namespace
