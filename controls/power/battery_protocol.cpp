// Frame encoding and the in-place parser of the battery module's protocol.
#include "power/battery_protocol.h"

#include <cstring>

#include "platform/serial/circular_buffer.h"

namespace uc::power::battery {

std::size_t EncodeFrame(std::uint8_t start, std::uint8_t code, std::uint8_t length, const std::uint8_t* data,
                        std::uint8_t end, std::uint8_t* out) {
    out[0] = start;
    out[1] = code;
    out[2] = length;
    if (length) std::memcpy(out + 3, data, length);
    out[3 + length] = end;
    return static_cast<std::size_t>(length) + 4;
}

static std::vector<std::uint8_t> Encode(std::uint8_t start, std::uint8_t code, const std::vector<std::uint8_t>& data,
                                        std::uint8_t end) {
    const std::uint8_t n = static_cast<std::uint8_t>(data.size() > 255 ? 255 : data.size());
    std::vector<std::uint8_t> out(n + 4u);
    EncodeFrame(start, code, n, data.data(), end, out.data());
    return out;
}

std::vector<std::uint8_t> EncodeCommand(std::uint8_t code, const std::vector<std::uint8_t>& data) {
    return Encode(CommandStart, code, data, CommandEnd);
}

std::vector<std::uint8_t> EncodeReply(std::uint8_t code, const std::vector<std::uint8_t>& data) {
    return Encode(ReplyStart, code, data, ReplyEnd);
}

ParseResult ExtractFrame(CCircularBuffer& buffer, std::uint8_t start, std::uint8_t end, Frame& frame) {
    std::uint8_t b = 0;
    for (;;) {
        if (!buffer.Peek(0, b)) return ParseResult::NeedMore;
        if (b == start) break;
        buffer.Consume(1);
    }
    std::uint8_t header[3];
    if (buffer.GetValidCount() < 4 || !buffer.Read(header, 3)) return ParseResult::NeedMore;
    const std::uint8_t code = header[1];
    const std::uint8_t n = header[2];
    if (buffer.GetValidCount() < static_cast<unsigned>(n) + 4u) return ParseResult::NeedMore;
    std::uint8_t last = 0;
    buffer.Peek(3u + n, last);
    if (last != end) {
        buffer.Consume(1);
        frame.code = code;
        frame.length = n;
        return ParseResult::MissingEnd;
    }
    std::uint8_t whole[MaxFrame];
    buffer.Read(whole, n + 4u);
    frame.code = code;
    frame.length = n;
    if (n) std::memcpy(frame.data, whole + 3, n);
    buffer.Consume(n + 4u);
    return ParseResult::Frame;
}

}  // namespace uc::power::battery
