// The DDC/CI message set as pure code: host messages, both checksum conventions, the reply check and the pauses.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/clock.h"
#include "platform/export.h"

namespace uc::display::ddc {

// I2C addresses in their 8-bit (write/read) form, as DDC/CI names them; 0x37 is the 7-bit form of 0x6E/0x6F.
constexpr std::uint8_t WriteAddress = 0x6E;
constexpr std::uint8_t ReadAddress = 0x6F;
constexpr std::uint8_t SlaveAddress = 0x37;
constexpr std::uint8_t EdidSlaveAddress = 0x50;  // E-DDC EDID memory, 7-bit
constexpr std::uint8_t HostSource = 0x51;
// A display's replies are checksummed as if sent to the host address 0x50.
constexpr std::uint8_t ReplyChecksumSeed = 0x50;
// Running XOR of a payload that leaves 0x6E and 0x51 out (NVAPI carries them as address and register).
constexpr std::uint8_t PayloadChecksumSeed = WriteAddress ^ HostSource;  // 0x3F

constexpr std::uint8_t GetVcpOpcode = 0x01;
constexpr std::uint8_t GetVcpReplyOpcode = 0x02;
constexpr std::uint8_t SetVcpOpcode = 0x03;
constexpr std::uint8_t SaveOpcode = 0x0C;
constexpr std::uint8_t LengthFlag = 0x80;  // the length byte's top bit marks a DDC/CI message

// Pauses after a transfer that succeeded. A Get costs at least 70 ms, a Set 50 ms, a Save 200 ms.
constexpr Millis GetRequestPause{40};
constexpr Millis GetReplyPause{30};
constexpr Millis SetPause{50};
constexpr Millis SavePause{200};

// Bytes of a Get VCP reply that are read and checked; the checksum follows as an eleventh byte.
constexpr std::size_t ReplySize = 10;
constexpr std::size_t ReplySizeWithChecksum = 11;

// One host message in its full form on the bus: 0x6E, 0x51, length, opcode, arguments, checksum.
struct Message {
    std::uint8_t bytes[8] = {};
    std::uint8_t size = 0;
    // The part after 0x6E and 0x51 (what NVAPI sends as data behind its register byte).
    const std::uint8_t* Payload() const { return bytes + 2; }
    std::size_t PayloadSize() const { return size - 2u; }
};

// XOR of `size` bytes, starting from `seed`.
UC_API std::uint8_t Checksum(const std::uint8_t* data, std::size_t size, std::uint8_t seed = 0);
// The checksum of a payload that starts after 0x6E 0x51: the running XOR seeded 0x3F. Equal by design to
// Checksum over the full message.
UC_API std::uint8_t PayloadChecksum(const std::uint8_t* payload, std::size_t size);

UC_API Message GetVcpRequest(std::uint8_t vcp);                     // 6 bytes
UC_API Message SetVcpRequest(std::uint8_t vcp, std::uint8_t value);  // 8 bytes
UC_API Message SaveCurrentSettingsRequest();                        // 5 bytes, checksum 0xB2

// Why a Get VCP reply was refused, first failing check first.
enum class ReplyStatus {
    Ok,
    BadHeader,       // byte 0 not 0x6E, byte 1 not 0x88 or byte 2 not 0x02 (a null message lands here)
    ResultCode,      // byte 3 not 0: the display does not support the code
    OtherCode,       // byte 4 is not the code asked for
    TypeByte,        // byte 5 not 0
    WideMaximum,     // byte 6 not 0: a maximum above 255
    WideValue,       // byte 8 not 0: a value above 255
    BadChecksum,     // only when the checksum is asked to be verified
};

// Checks the first ten bytes of a Get VCP reply for `vcp`; on Ok sets maximum := byte 7, current := byte 9.
// The checksum (byte 10) is not looked at.
UC_API ReplyStatus CheckGetVcpReply(const std::uint8_t* reply, std::uint8_t vcp, std::uint8_t& maximum,
                                    std::uint8_t& current);
// Whether the eleventh byte of a reply is the XOR of 0x50 and its first ten bytes.
UC_API bool ReplyChecksumValid(const std::uint8_t* reply11);
UC_API const wchar_t* ReplyStatusText(ReplyStatus status);

// The display's side, for simulators and tests: a Get VCP reply with its checksum (11 bytes).
UC_API void EncodeGetVcpReply(std::uint8_t resultCode, std::uint8_t vcp, std::uint8_t type, std::uint16_t maximum,
                              std::uint16_t current, std::uint8_t out[ReplySizeWithChecksum]);

// A host message as a display decodes it from the bytes after the address 0x6E.
struct HostMessage {
    enum Kind { Invalid, GetVcp, SetVcp, Save, Other } kind = Invalid;
    std::uint8_t vcp = 0;
    std::uint16_t value = 0;
    bool checksumOk = false;
};
UC_API HostMessage DecodeHostMessage(const std::uint8_t* data, std::size_t size);

}  // namespace uc::display::ddc
