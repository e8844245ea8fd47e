// DDC/CI message encoding, checksums and the Get VCP reply check.
#include "display/ddc_protocol.h"

#include <initializer_list>

namespace uc::display::ddc {

std::uint8_t Checksum(const std::uint8_t* data, std::size_t size, std::uint8_t seed) {
    std::uint8_t x = seed;
    for (std::size_t i = 0; i < size; ++i) x ^= data[i];
    return x;
}

std::uint8_t PayloadChecksum(const std::uint8_t* payload, std::size_t size) {
    return Checksum(payload, size, PayloadChecksumSeed);
}

namespace {
Message Compose(std::initializer_list<std::uint8_t> body) {
    Message m;
    m.bytes[m.size++] = WriteAddress;
    m.bytes[m.size++] = HostSource;
    for (std::uint8_t b : body) m.bytes[m.size++] = b;
    m.bytes[m.size] = Checksum(m.bytes, m.size);
    ++m.size;
    return m;
}
}  // namespace

Message GetVcpRequest(std::uint8_t vcp) { return Compose({LengthFlag | 2, GetVcpOpcode, vcp}); }

Message SetVcpRequest(std::uint8_t vcp, std::uint8_t value) {
    return Compose({LengthFlag | 4, SetVcpOpcode, vcp, 0x00, value});
}

Message SaveCurrentSettingsRequest() { return Compose({LengthFlag | 1, SaveOpcode}); }

ReplyStatus CheckGetVcpReply(const std::uint8_t* r, std::uint8_t vcp, std::uint8_t& maximum, std::uint8_t& current) {
    if (r[0] != WriteAddress || r[1] != (LengthFlag | 8) || r[2] != GetVcpReplyOpcode) return ReplyStatus::BadHeader;
    if (r[3] != 0) return ReplyStatus::ResultCode;
    if (r[4] != vcp) return ReplyStatus::OtherCode;
    if (r[5] != 0) return ReplyStatus::TypeByte;
    if (r[6] != 0) return ReplyStatus::WideMaximum;
    if (r[8] != 0) return ReplyStatus::WideValue;
    maximum = r[7];
    current = r[9];
    return ReplyStatus::Ok;
}

bool ReplyChecksumValid(const std::uint8_t* reply11) {
    return Checksum(reply11, ReplySize, ReplyChecksumSeed) == reply11[ReplySize];
}

const wchar_t* ReplyStatusText(ReplyStatus status) {
    switch (status) {
    case ReplyStatus::Ok: return L"ok";
    case ReplyStatus::BadHeader: return L"not a Get VCP reply";
    case ReplyStatus::ResultCode: return L"unsupported code";
    case ReplyStatus::OtherCode: return L"reply for another code";
    case ReplyStatus::TypeByte: return L"non-zero type byte";
    case ReplyStatus::WideMaximum: return L"maximum above 255";
    case ReplyStatus::WideValue: return L"value above 255";
    case ReplyStatus::BadChecksum: return L"wrong checksum";
    }
    return L"?";
}

void EncodeGetVcpReply(std::uint8_t resultCode, std::uint8_t vcp, std::uint8_t type, std::uint16_t maximum,
                       std::uint16_t current, std::uint8_t out[ReplySizeWithChecksum]) {
    const std::uint8_t reply[ReplySize] = {WriteAddress,
                                           LengthFlag | 8,
                                           GetVcpReplyOpcode,
                                           resultCode,
                                           vcp,
                                           type,
                                           static_cast<std::uint8_t>(maximum >> 8),
                                           static_cast<std::uint8_t>(maximum & 0xFF),
                                           static_cast<std::uint8_t>(current >> 8),
                                           static_cast<std::uint8_t>(current & 0xFF)};
    for (std::size_t i = 0; i < ReplySize; ++i) out[i] = reply[i];
    out[ReplySize] = Checksum(reply, ReplySize, ReplyChecksumSeed);
}

HostMessage DecodeHostMessage(const std::uint8_t* data, std::size_t size) {
    HostMessage m;
    // Source, length, at least an opcode, checksum; the length byte says how many bytes follow it.
    if (size < 4 || data[0] != HostSource || (data[1] & LengthFlag) == 0) return m;
    const std::size_t length = data[1] & 0x7F;
    if (length == 0 || size < length + 3) return m;
    m.checksumOk = PayloadChecksum(data + 1, length + 1) == data[length + 2];
    const std::uint8_t* op = data + 2;
    if (op[0] == GetVcpOpcode && length == 2) {
        m.kind = HostMessage::GetVcp;
        m.vcp = op[1];
    } else if (op[0] == SetVcpOpcode && length == 4) {
        m.kind = HostMessage::SetVcp;
        m.vcp = op[1];
        m.value = static_cast<std::uint16_t>(op[2] << 8 | op[3]);
    } else if (op[0] == SaveOpcode && length == 1) {
        m.kind = HostMessage::Save;
    } else {
        m.kind = HostMessage::Other;
    }
    return m;
}

}  // namespace uc::display::ddc
