// Fuzzes the UPS reply handling: the reply cutter on arbitrary chunks, level parsing and averaging.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "platform/serial/circular_buffer.h"
#include "power/simulator/ups_simulator.h"
#include "power/ups_protocol.h"

namespace ups = uc::power::ups;

// Byte 0: reply length (1 to 8); byte 1: chunk size; the rest arrives from the UPS in chunks.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const unsigned replyLength = 1 + data[0] % 8;
    const std::size_t chunk = 1 + data[1] % 32;
    data += 2;
    size -= 2;
    CCircularBuffer buffer(2048);
    std::vector<int> levels;
    for (std::size_t off = 0; off < size; off += chunk) {
        const unsigned n = static_cast<unsigned>(size - off < chunk ? size - off : chunk);
        buffer.Write(data + off, n);
        for (int guard = 0; guard < 4096; ++guard) {
            unsigned char reply[9] = {};
            unsigned got = 0;
            const unsigned before = buffer.GetValidCount();
            const ups::ReplyResult r = ups::TakeReply(buffer, replyLength, reply, got);
            if (got > replyLength) std::abort();
            if (r == ups::ReplyResult::Reply) {
                if (before - buffer.GetValidCount() != got + 1) std::abort();
                for (unsigned i = 0; i < got; ++i)
                    if (reply[i] == 0x0D) std::abort();
                int v = 0;
                if (ups::ParseBatteryLevel(std::string(reinterpret_cast<char*>(reply), got), v)) levels.push_back(v);
                (void)ups::PowerSourceFromReply(std::string(reinterpret_cast<char*>(reply), got));
                continue;
            }
            if (r == ups::ReplyResult::TooLong && !buffer.IsEmpty()) std::abort();
            if (r == ups::ReplyResult::NeedMore && buffer.GetValidCount() > replyLength) std::abort();
            break;
        }
    }
    const int average = ups::AverageLevel(levels);
    if (average < -1 || average > 100) std::abort();
    (void)ups::WarningLevelFor(average, 35, 20, 10);

    // The simulated UPS on the same bytes as commands: it must never answer more than once per CR.
    uc::power::sim::UpsSimulator device;
    std::size_t crs = 0;
    for (std::size_t i = 0; i < size; ++i) crs += data[i] == 0x0D;
    if (device.Receive(data, size).size() > crs) std::abort();
    return 0;
}
