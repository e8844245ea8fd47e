// Monitor names from EDID descriptor blocks, and a small EDID builder for simulated monitors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "platform/export.h"

namespace uc::display {

constexpr std::size_t EdidBlockSize = 128;
constexpr std::uint8_t EdidNameTag = 0xFC;

// Clears `name`, then appends from each of the four descriptor blocks (offsets 54, 72, 90, 108) whose tag byte
// (byte 3) is 0xFC its bytes 5 to 16, cut at the first zero byte and otherwise kept as they are (a 0x0A
// terminator or padding spaces stay). True when at least one name block was found. `size` below 126 finds none.
UC_API bool MonitorNameFromEdid(const std::uint8_t* edid, std::size_t size, std::string& name);

// Removes the 0x0A terminator and padding a name block carries, for showing the name to a person.
UC_API std::string TidyMonitorName(const std::string& name);

// A 128-byte base EDID block with a valid header and checksum, and, unless `name` is empty, a monitor name
// descriptor holding the first 13 characters of `name` (0x0A-terminated and space-padded as EDID asks).
UC_API void BuildEdid(const std::string& name, std::uint8_t out[EdidBlockSize]);

}  // namespace uc::display
