// The DDC/CI exchanges shared by the bus drivers: ordering, pauses, reply check, opt-in checksum and retries.
#include "display/ddc_bus_driver.h"

#include <algorithm>
#include <cstring>

namespace uc::display {

Millis RetryBackOff(unsigned attempt) {
    if (attempt == 0) return Millis(0);
    const unsigned shift = std::min(attempt - 1, 3u);
    return Millis(50 << shift);
}

}  // namespace uc::display

namespace ddc = uc::display::ddc;

bool DdcBusDriver::Send(unsigned device, const ddc::Message& message, uc::Millis pause) {
    for (unsigned attempt = 0; attempt <= m_strict.retries; ++attempt) {
        if (attempt > 0) Pause(uc::display::RetryBackOff(attempt));
        if (WriteMessage(device, message)) {
            Pause(pause);
            return true;
        }
    }
    return false;
}

bool DdcBusDriver::SetVCP(unsigned device, std::uint8_t code, std::uint8_t value) {
    if (!ValidIndex(device)) return false;
    return Send(device, ddc::SetVcpRequest(code, value), ddc::SetPause);
}

bool DdcBusDriver::SaveCurrentSettings(unsigned device) {
    if (!ValidIndex(device)) return false;
    return Send(device, ddc::SaveCurrentSettingsRequest(), ddc::SavePause);
}

bool DdcBusDriver::GetVCP(unsigned device, std::uint8_t code, std::uint8_t& maximum, std::uint8_t& current) {
    if (!ValidIndex(device)) return false;
    for (unsigned attempt = 0; attempt <= m_strict.retries; ++attempt) {
        if (attempt > 0) Pause(uc::display::RetryBackOff(attempt));
        if (GetOnce(device, code, maximum, current)) return true;
    }
    return false;
}

bool DdcBusDriver::GetOnce(unsigned device, std::uint8_t code, std::uint8_t& maximum, std::uint8_t& current) {
    m_lastStatus = ddc::ReplyStatus::Ok;
    if (!WriteMessage(device, ddc::GetVcpRequest(code))) return false;
    Pause(ddc::GetRequestPause);
    std::memset(m_lastReply, 0, sizeof m_lastReply);
    std::uint8_t reply[ddc::ReplySizeWithChecksum] = {};
    const std::size_t size = m_strict.verifyChecksum ? ddc::ReplySizeWithChecksum : ddc::ReplySize;
    if (!ReadReply(device, reply, size)) return false;
    std::memcpy(m_lastReply, reply, ddc::ReplySize);
    Pause(ddc::GetReplyPause);
    std::uint8_t max = 0, cur = 0;
    ddc::ReplyStatus status = ddc::CheckGetVcpReply(reply, code, max, cur);
    if (status == ddc::ReplyStatus::Ok && m_strict.verifyChecksum && !ddc::ReplyChecksumValid(reply))
        status = ddc::ReplyStatus::BadChecksum;
    m_lastStatus = status;
    if (status != ddc::ReplyStatus::Ok) return false;
    maximum = max;
    current = cur;
    return true;
}

bool DdcBusDriver::Probe(unsigned device) {
    std::uint8_t maximum = 0, current = 0;
    return GetVCP(device, 0x10, maximum, current);
}

void DdcBusDriver::GetLastPacket(std::uint8_t out[ddc::ReplySize]) const { std::memcpy(out, m_lastReply, ddc::ReplySize); }
