// The battery module's wire format: frame encoding and the in-place frame parser (no I/O).
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/export.h"

class CCircularBuffer;

namespace uc::power::battery {

// Host to module: 0x46 code N data... 0x55. Module to host: the complements, 0xB9 ~code N data... 0xAA.
constexpr std::uint8_t CommandStart = 0x46;
constexpr std::uint8_t CommandEnd = 0x55;
constexpr std::uint8_t ReplyStart = 0xB9;
constexpr std::uint8_t ReplyEnd = 0xAA;
constexpr std::uint8_t PingCommand = 0xE3;
constexpr std::uint8_t PingReply = 0x1C;
constexpr std::uint8_t StatusCommand = 0xD1;
constexpr std::uint8_t StatusReply = 0x2E;
constexpr std::size_t MaxFrame = 255 + 4;

constexpr std::uint8_t ReplyCodeFor(std::uint8_t command) { return static_cast<std::uint8_t>(0xFF - command); }

struct Frame {
    std::uint8_t code = 0;
    std::uint8_t length = 0;
    std::uint8_t data[255] = {};
};

// Lays out start, code, length, data, end into `out` (room for length + 4) and returns the frame size.
UC_API std::size_t EncodeFrame(std::uint8_t start, std::uint8_t code, std::uint8_t length, const std::uint8_t* data,
                               std::uint8_t end, std::uint8_t* out);
UC_API std::vector<std::uint8_t> EncodeCommand(std::uint8_t code, const std::vector<std::uint8_t>& data = {});
UC_API std::vector<std::uint8_t> EncodeReply(std::uint8_t code, const std::vector<std::uint8_t>& data = {});

enum class ParseResult {
    Frame,       // one frame taken out of the buffer into `frame`
    NeedMore,    // no complete frame yet; a pending start byte stays buffered, garbage before it is gone
    MissingEnd,  // the byte after the data is not the end byte: only the start byte was dropped
};

// Takes one frame starting with `start` and ending with `end` off the front of `buffer`, in place:
// bytes before a start byte are dropped one by one; an incomplete frame is left untouched; a frame whose
// end byte is wrong costs its start byte only, and the caller stops until more data arrives.
UC_API ParseResult ExtractFrame(CCircularBuffer& buffer, std::uint8_t start, std::uint8_t end, Frame& frame);

}  // namespace uc::power::battery
