// Byte-level pieces of ISO 9660 shared by the image writer and reader: both-endian numbers and dates.
#pragma once

#include <cstddef>
#include <cstdint>

namespace uc::disc {

inline constexpr std::uint32_t kBlockSize = 2048;
inline constexpr std::uint32_t kSystemAreaBlocks = 16;
// Largest extent a directory record can describe, kept block-aligned; bigger files are split into
// several extents (ISO 9660 level 3 multi-extent files).
inline constexpr std::uint64_t kMaxExtentBytes = 0xFFFFF800ull;
inline constexpr std::uint8_t kFlagDirectory = 0x02;
inline constexpr std::uint8_t kFlagMultiExtent = 0x80;

inline void PutLe16(std::uint8_t* p, std::uint16_t v) { p[0] = v & 0xFF; p[1] = v >> 8; }
inline void PutBe16(std::uint8_t* p, std::uint16_t v) { p[0] = v >> 8; p[1] = v & 0xFF; }
inline void PutLe32(std::uint8_t* p, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<std::uint8_t>(v >> (8 * i));
}
inline void PutBe32(std::uint8_t* p, std::uint32_t v) {
    for (int i = 0; i < 4; ++i) p[i] = static_cast<std::uint8_t>(v >> (8 * (3 - i)));
}
inline void PutBoth16(std::uint8_t* p, std::uint16_t v) { PutLe16(p, v); PutBe16(p + 2, v); }
inline void PutBoth32(std::uint8_t* p, std::uint32_t v) { PutLe32(p, v); PutBe32(p + 4, v); }
inline std::uint16_t GetLe16(const std::uint8_t* p) { return static_cast<std::uint16_t>(p[0] | (p[1] << 8)); }
inline std::uint32_t GetLe32(const std::uint8_t* p) {
    return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
           (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

struct CivilTime {
    int year, month, day, hour, minute, second;
};
// Seconds since 1970 UTC to a calendar date and time (UTC), valid for any 64-bit input.
CivilTime ToCivil(std::int64_t seconds);
// Calendar date and time (UTC) back to seconds since 1970.
std::int64_t FromCivil(int year, int month, int day, int hour, int minute, int second);

// The 7-byte date of a directory record (years since 1900, clamped to 1900..2155; UTC).
void PutRecordDate(std::uint8_t* p, std::int64_t seconds);
// Reads a directory record date, applying its offset from UTC; 0 for an impossible date.
std::int64_t GetRecordDate(const std::uint8_t* p);
// The 17-byte date of a volume descriptor ("YYYYMMDDHHMMSScc" and offset 0).
void PutVolumeDate(std::uint8_t* p, std::int64_t seconds);

}  // namespace uc::disc
