// The battery frame parser and encoder, in place on a receive buffer, with no I/O.
#include <gtest/gtest.h>

#include <vector>

#include "platform/serial/circular_buffer.h"
#include "power/battery_protocol.h"

namespace {
namespace bp = uc::power::battery;
using Bytes = std::vector<unsigned char>;
using R = bp::ParseResult;

TEST(BatteryProtocol, EncodesCommandsAndReplies) {
    EXPECT_EQ(bp::EncodeCommand(0xD1), (Bytes{0x46, 0xD1, 0x00, 0x55}));
    EXPECT_EQ(bp::EncodeCommand(0x10, {1, 2}), (Bytes{0x46, 0x10, 0x02, 1, 2, 0x55}));
    EXPECT_EQ(bp::EncodeReply(0x1C, {0}), (Bytes{0xB9, 0x1C, 0x01, 0x00, 0xAA}));
    EXPECT_EQ(bp::ReplyCodeFor(bp::PingCommand), bp::PingReply);
    EXPECT_EQ(bp::ReplyCodeFor(bp::StatusCommand), bp::StatusReply);
}

// Bytes arrive in parts; after each part the parser is asked once. Every case says what that call returns,
// which frame it found and what is left in the buffer.
struct ParseCase {
    const char* what;
    std::vector<Bytes> parts;
    std::vector<R> results;
    int code, length, lastData;  // of the last call's frame (-1: not checked)
    unsigned left;
};

Bytes Frame(unsigned char code, const Bytes& data) { return bp::EncodeReply(code, data); }
Bytes Cat(Bytes a, const Bytes& b) {
    a.insert(a.end(), b.begin(), b.end());
    return a;
}

TEST(BatteryProtocol, ExtractsFramesFromWhatArrives) {
    const Bytes status = Frame(0x2E, Bytes(39, 0x11));
    const ParseCase cases[] = {
        {"garbage before a frame is skipped", {Cat({0x00, 0xFF, 0x12}, Frame(0x1C, {0}))}, {R::Frame}, 0x1C, 1, 0, 0},
        {"only garbage empties the buffer", {{0x01, 0x02, 0xAA}}, {R::NeedMore}, -1, -1, -1, 0},
        {"a split frame waits without consuming",
         {Bytes(status.begin(), status.begin() + 3), Bytes(status.begin() + 3, status.begin() + 23),
          Bytes(status.begin() + 23, status.end())},
         {R::NeedMore, R::NeedMore, R::Frame}, 0x2E, 39, 0x11, 0},
        {"a lone start byte stays", {{0x05, 0xB9}}, {R::NeedMore}, -1, -1, -1, 1},
        {"a wrong end byte costs only the start byte", {{0xB9, 0x1C, 0x01, 0x00, 0x00, 0xB9, 0x2E, 0x00, 0xAA}},
         {R::MissingEnd}, 0x1C, 1, -1, 8},
        {"a zero-length reply is four bytes", {Cat(Frame(0x40, {}), {0xB9})}, {R::Frame}, 0x40, 0, -1, 1},
        {"255 data bytes", {Frame(0x77, Bytes(255, 0x42))}, {R::Frame}, 0x77, 255, 0x42, 0},
    };
    for (const ParseCase& c : cases) {
        CCircularBuffer buffer(1024);
        bp::Frame f{};
        unsigned written = 0;
        for (std::size_t i = 0; i < c.parts.size(); ++i) {
            buffer.Write(c.parts[i].data(), static_cast<unsigned>(c.parts[i].size()));
            written += static_cast<unsigned>(c.parts[i].size());
            EXPECT_EQ(bp::ExtractFrame(buffer, bp::ReplyStart, bp::ReplyEnd, f), c.results[i]) << c.what << " " << i;
            if (i + 1 < c.parts.size()) {
                EXPECT_EQ(buffer.GetValidCount(), written) << c.what << ": nothing consumed yet";
            }
        }
        if (c.code >= 0) {
            EXPECT_EQ(f.code, c.code) << c.what;
            EXPECT_EQ(f.length, c.length) << c.what;
        }
        if (c.lastData >= 0) {
            EXPECT_EQ(f.data[f.length - 1], c.lastData) << c.what;
        }
        EXPECT_EQ(buffer.GetValidCount(), c.left) << c.what;
    }
    // After a wrong end byte the next start byte begins a new frame.
    CCircularBuffer buffer(64);
    const Bytes damaged = Cat({0xB9, 0x1C, 0x01, 0x00, 0x00}, Frame(0x2E, {}));
    buffer.Write(damaged.data(), static_cast<unsigned>(damaged.size()));
    bp::Frame f{};
    ASSERT_EQ(bp::ExtractFrame(buffer, bp::ReplyStart, bp::ReplyEnd, f), R::MissingEnd);
    ASSERT_EQ(bp::ExtractFrame(buffer, bp::ReplyStart, bp::ReplyEnd, f), R::Frame);
    EXPECT_EQ(f.code, 0x2E);
}

TEST(BatteryProtocol, FramesAcrossTheBufferWrapParse) {
    CCircularBuffer buffer(16);
    bp::Frame f;
    for (int i = 0; i < 50; ++i) {
        Bytes frame = Frame(static_cast<unsigned char>(i), {static_cast<unsigned char>(i), 1, 2});
        buffer.Write(frame.data(), static_cast<unsigned>(frame.size()));
        ASSERT_EQ(bp::ExtractFrame(buffer, bp::ReplyStart, bp::ReplyEnd, f), R::Frame);
        EXPECT_EQ(f.code, i);
        EXPECT_EQ(f.data[0], i);
    }
}

}  // namespace
