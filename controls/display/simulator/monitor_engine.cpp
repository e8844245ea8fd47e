// The simulated monitor's DDC/CI behaviour: Get/Set/Save, the maker's page switch, EDID reads and faults.
#include "display/simulator/monitor_engine.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "display/ddc_protocol.h"
#include "display/edid.h"

namespace uc::display::sim {

namespace ddc = uc::display::ddc;

namespace {
constexpr std::uint8_t kPageSwitch = 0xE1;
constexpr std::uint8_t kPageOpen = 0xE0;
constexpr std::uint8_t kPagedCode = 0xE2;
constexpr std::uint8_t kEdidWrite = 0xA0;
constexpr std::uint8_t kEdidRead = 0xA1;
// The DDC/CI null message: the display has nothing to say (yet).
constexpr std::uint8_t kNullMessage[3] = {0x6E, 0x80, 0xBE};
}  // namespace

std::string FormatTransfer(const Transfer& t) {
    std::string s = t.IsRead() ? "R" : "W";
    char hex[4];
    for (std::uint8_t b : t.bytes) {
        std::snprintf(hex, sizeof hex, " %02X", b);
        s += hex;
    }
    if (!t.ok) s += " FAIL";
    return s;
}

SimulatedMonitor::SimulatedMonitor(const MonitorConfig& config) : m_config(config) { BuildEdid(config.name, m_edid); }

bool SimulatedMonitor::Answering() {
    ++m_transfers;
    if (m_config.faults.fail) return false;
    return m_config.faults.answerCount < 0 || m_transfers <= m_config.faults.answerCount;
}

void SimulatedMonitor::Record(std::uint8_t address8, const std::uint8_t* data, std::size_t size, bool ok) {
    if (m_log.size() >= TransferHistory) m_log.erase(m_log.begin(), m_log.begin() + TransferHistory / 2);
    Transfer t;
    t.ok = ok;
    t.bytes.push_back(address8);
    t.bytes.insert(t.bytes.end(), data, data + size);
    m_log.push_back(std::move(t));
}

bool SimulatedMonitor::Write(std::uint8_t address8, const std::uint8_t* data, std::size_t size) {
    std::lock_guard<std::mutex> lock(m_mutex);
    bool ok = Answering() && (address8 == ddc::WriteAddress || address8 == kEdidWrite);
    if (ok && address8 == kEdidWrite) {
        ok = !m_config.faults.noEdid && size >= 1;
        if (ok) m_edidOffset = data[0];
    }
    // A failed write is recorded with the bytes the host meant to send, so tests see what was attempted.
    Record(address8, data, size, ok);
    if (ok && address8 == ddc::WriteAddress) Handle(data, size);
    return ok;
}

void SimulatedMonitor::Handle(const std::uint8_t* data, std::size_t size) {
    const ddc::HostMessage message = ddc::DecodeHostMessage(data, size);
    // A display drops a message with a wrong checksum; the host then reads a null message.
    m_replySize = 0;
    if (message.kind == ddc::HostMessage::Invalid || !message.checksumOk) return;
    auto& table = m_config.vcp;
    const bool pageOpen = table.count(kPageSwitch) && table[kPageSwitch].current == kPageOpen;
    // 0xE2 exists only while the maker's page is open.
    auto known = [&](std::uint8_t code) { return table.count(code) && (code != kPagedCode || pageOpen); };
    switch (message.kind) {
    case ddc::HostMessage::GetVcp: {
        ++m_gets;
        MonitorFaults f = m_config.faults;
        if (!f.codes.empty() && !f.codes.count(message.vcp)) f.resultCode = f.otherCode = f.typeByte = f.badChecksum = false;
        VcpValue v = known(message.vcp) ? table[message.vcp] : VcpValue{0, 0};
        const std::uint8_t result = (!known(message.vcp) || f.resultCode) ? 1 : 0;
        const std::uint8_t code = f.otherCode ? static_cast<std::uint8_t>(message.vcp + 1) : message.vcp;
        ddc::EncodeGetVcpReply(result, code, f.typeByte ? 1 : 0, v.maximum, v.current, m_reply);
        if (f.badChecksum) m_reply[ddc::ReplySize] ^= 0x5A;
        if (f.corruptEvery > 0 && m_gets % f.corruptEvery == 0) {
            // Line noise: the value byte flips and the checksum no longer matches.
            m_reply[9] ^= 0x21;
        }
        m_replySize = ddc::ReplySizeWithChecksum;
        break;
    }
    case ddc::HostMessage::SetVcp:
        if (!known(message.vcp)) break;
        if (message.vcp == kPagedCode && m_config.faults.ecoViewStuck) break;
        table[message.vcp].current = std::min(message.value, table[message.vcp].maximum);
        break;
    case ddc::HostMessage::Save: ++m_saves; break;
    default: break;
    }
}

bool SimulatedMonitor::Read(std::uint8_t address8, std::uint8_t* data, std::size_t size) {
    std::lock_guard<std::mutex> lock(m_mutex);
    bool ok = Answering();
    if (ok && address8 == ddc::ReadAddress) {
        std::memset(data, 0, size);
        if (m_replySize > 0) {
            std::memcpy(data, m_reply, std::min(size, m_replySize));
            m_replySize = 0;  // read once; a second read gets the null message
        } else {
            std::memcpy(data, kNullMessage, std::min(size, sizeof kNullMessage));
        }
    } else if (ok && address8 == kEdidRead && !m_config.faults.noEdid) {
        for (std::size_t i = 0; i < size; ++i) data[i] = m_edid[(m_edidOffset + i) % sizeof m_edid];
        m_edidOffset = (m_edidOffset + size) % sizeof m_edid;
    } else {
        ok = false;
    }
    Record(address8, data, ok ? size : 0, ok);  // a failed read delivered nothing
    return ok;
}

std::vector<Transfer> SimulatedMonitor::Transfers() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_log;
}

void SimulatedMonitor::ClearTransfers() {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_log.clear();
}

std::uint16_t SimulatedMonitor::Value(std::uint8_t code) const {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto it = m_config.vcp.find(code);
    return it == m_config.vcp.end() ? 0 : it->second.current;
}

int SimulatedMonitor::Saves() const {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_saves;
}

}  // namespace uc::display::sim
