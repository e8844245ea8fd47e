// Fuzzes the battery link's receive side: arbitrary bytes in arbitrary chunks through the frame parser and Tokenize.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "platform/serial/circular_buffer.h"
#include "power/battery_connection.h"
#include "power/battery_protocol.h"

namespace {
namespace bp = uc::power::battery;

class Link : public BatteryConnection {
public:
    using BatteryConnection::FindAndRemoveAck;
    using BatteryConnection::Tokenize;
};
}  // namespace

// The first byte picks the chunk size; the rest is the byte stream as it would arrive from the port.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const std::size_t chunk = 1 + data[0] % 64;
    ++data;
    --size;

    // The parser alone: every call either takes a whole well-formed frame, or leaves the buffer
    // starting with a start byte (or empty), and never grows it.
    CCircularBuffer buffer(512);
    for (std::size_t off = 0; off < size; off += chunk) {
        const unsigned n = static_cast<unsigned>(size - off < chunk ? size - off : chunk);
        buffer.Write(data + off, n);
        for (int guard = 0; guard < 1024; ++guard) {
            const unsigned before = buffer.GetValidCount();
            bp::Frame f;
            const bp::ParseResult r = bp::ExtractFrame(buffer, bp::ReplyStart, bp::ReplyEnd, f);
            unsigned char first = 0;
            if (buffer.GetValidCount() > before) std::abort();
            if (r == bp::ParseResult::Frame && before - buffer.GetValidCount() < static_cast<unsigned>(f.length) + 4u)
                std::abort();
            if (r == bp::ParseResult::NeedMore) {
                if (buffer.Peek(0, first) && first != bp::ReplyStart) std::abort();
                break;
            }
            if (r == bp::ParseResult::MissingEnd) continue;  // the link stops here; the fuzzer goes on
        }
    }

    // The link: replies land in the list in order and can all be taken out again.
    Link link;
    CCircularBuffer received(4096);
    for (std::size_t off = 0; off < size; off += chunk) {
        const unsigned n = static_cast<unsigned>(size - off < chunk ? size - off : chunk);
        received.Write(data + off, n);
        link.Tokenize(received);
    }
    unsigned char length = 0, payload[255];
    for (int code = 0; code < 256; ++code)
        while (link.FindAndRemoveAck(static_cast<unsigned char>(code), length, payload)) {
        }
    if (link.PendingReplies() != 0) std::abort();
    return 0;
}
