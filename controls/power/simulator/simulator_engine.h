// The device side of a simulator: bytes from the host in, timed reply bytes out (no I/O here).
#pragma once

#include <cstdint>
#include <vector>

#include "platform/clock.h"

namespace uc::power::sim {

// Bytes to send `at` after the input that caused them arrived.
struct Output {
    uc::Millis at{0};
    std::vector<std::uint8_t> bytes;
};

class SimulatorEngine {
public:
    virtual ~SimulatorEngine() = default;
    // Called with every chunk the host sends; returns what the device answers, in order.
    virtual std::vector<Output> Receive(const std::uint8_t* data, std::size_t size) = 0;
};

// Misbehaviour shared by both devices, applied to every reply.
struct Faults {
    uc::Millis replyDelay{0};              // answer this late
    bool silent = false;                   // never answer
    int repeat = 1;                        // answer this many times (2: every reply twice)
    std::vector<std::uint8_t> garbage;     // bytes sent before each reply
    std::size_t splitAt = 0;               // >0: send the reply in two parts, the first this long
    uc::Millis splitDelay{0};              // pause between the two parts
    bool wrongEnd = false;                 // battery: end byte 0x00 instead of 0xAA; UPS: no carriage return
};

// Applies `faults` to one reply: garbage, split and repetition, as a list of timed outputs.
std::vector<Output> Shape(const std::vector<std::uint8_t>& reply, const Faults& faults);

}  // namespace uc::power::sim
