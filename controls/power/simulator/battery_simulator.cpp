// The simulated battery module: parses command frames and answers ping and get-status.
#include "power/simulator/battery_simulator.h"

#include <cmath>

#include "power/battery_protocol.h"

namespace uc::power::sim {
namespace bp = uc::power::battery;

BatteryModuleSimulator::BatteryModuleSimulator() {
    SetVoltage(25.0);
    SetPercent(80);
    SetState(2);
    SetOnAC(true);
}

std::vector<Output> BatteryModuleSimulator::Receive(const std::uint8_t* data, std::size_t size) {
    std::lock_guard<std::mutex> g(m_mutex);
    std::vector<Output> out;
    m_input.Write(data, static_cast<unsigned int>(size));
    bp::Frame frame;
    for (;;) {
        const bp::ParseResult r = bp::ExtractFrame(m_input, bp::CommandStart, bp::CommandEnd, frame);
        if (r == bp::ParseResult::NeedMore) break;
        if (r == bp::ParseResult::MissingEnd) {
            ++m_badFrames;
            continue;  // the firmware resynchronises on the next start byte at once
        }
        ++m_commands[frame.code];
        std::vector<std::uint8_t> payload;
        if (frame.code == bp::PingCommand) {
            payload = m_pingReply;
        } else if (frame.code == bp::StatusCommand) {
            const std::uint8_t* raw = m_status.GetRawData();
            payload.assign(raw, raw + BatteryStatus::Size);
            if (m_numberReplies) payload[0] = static_cast<std::uint8_t>(++m_replyNumber);
            payload.resize(m_statusLength, 0);
        } else {
            continue;  // commands the console never sends are ignored
        }
        std::vector<std::uint8_t> reply = bp::EncodeReply(bp::ReplyCodeFor(frame.code), payload);
        if (m_faults.wrongEnd) reply.back() = 0x00;
        for (Output& o : Shape(reply, m_faults)) out.push_back(std::move(o));
    }
    m_changed.notify_all();
    return out;
}

void BatteryModuleSimulator::SetStatus(const BatteryStatus& status) {
    std::lock_guard<std::mutex> g(m_mutex);
    m_status = status;
}

BatteryStatus BatteryModuleSimulator::GetStatus() const {
    std::lock_guard<std::mutex> g(m_mutex);
    return m_status;
}

void BatteryModuleSimulator::SetByte(int index, std::uint8_t value) {
    if (index < 0 || index >= BatteryStatus::Size) return;
    std::lock_guard<std::mutex> g(m_mutex);
    unsigned char raw[BatteryStatus::Size];
    std::copy(m_status.GetRawData(), m_status.GetRawData() + BatteryStatus::Size, raw);
    raw[index] = value;
    m_status.Initialize(raw);
}

void BatteryModuleSimulator::SetVoltage(double volts) {
    const long counts = std::lround(std::max(0.0, volts) / 0.03894);
    const unsigned v = static_cast<unsigned>(std::min(counts, 0xFFFFL));
    SetByte(4, static_cast<std::uint8_t>(v >> 8));
    SetByte(5, static_cast<std::uint8_t>(v & 0xFF));
}

void BatteryModuleSimulator::SetPercent(int percent) { SetByte(8, static_cast<std::uint8_t>(percent)); }
void BatteryModuleSimulator::SetState(int code) { SetByte(1, static_cast<std::uint8_t>(code)); }

void BatteryModuleSimulator::SetOnAC(bool onAC) {
    const std::uint8_t b = GetStatus().GetRawData()[35];
    SetByte(35, static_cast<std::uint8_t>(onAC ? (b | 1) : (b & ~1)));
}

void BatteryModuleSimulator::SetNumberReplies(bool on) {
    std::lock_guard<std::mutex> g(m_mutex);
    m_numberReplies = on;
}

void BatteryModuleSimulator::SetPingReply(const std::vector<std::uint8_t>& data) {
    std::lock_guard<std::mutex> g(m_mutex);
    m_pingReply = data;
}

void BatteryModuleSimulator::SetStatusLength(std::size_t length) {
    std::lock_guard<std::mutex> g(m_mutex);
    m_statusLength = std::min<std::size_t>(length, 255);
}

void BatteryModuleSimulator::SetFaults(const Faults& faults) {
    std::lock_guard<std::mutex> g(m_mutex);
    m_faults = faults;
}

Faults BatteryModuleSimulator::GetFaults() const {
    std::lock_guard<std::mutex> g(m_mutex);
    return m_faults;
}

int BatteryModuleSimulator::CommandsReceived(std::uint8_t code) const {
    std::lock_guard<std::mutex> g(m_mutex);
    auto it = m_commands.find(code);
    return it == m_commands.end() ? 0 : it->second;
}

int BatteryModuleSimulator::BadFrames() const {
    std::lock_guard<std::mutex> g(m_mutex);
    return m_badFrames;
}

bool BatteryModuleSimulator::WaitForCommands(std::uint8_t code, int count, uc::Millis limit) const {
    std::unique_lock<std::mutex> g(m_mutex);
    return m_changed.wait_for(g, limit, [&] {
        auto it = m_commands.find(code);
        return it != m_commands.end() && it->second >= count;
    });
}

}  // namespace uc::power::sim
