// The simulated UPS: cuts input at carriage returns and answers P, B, D and X.
#include "power/simulator/ups_simulator.h"

namespace uc::power::sim {

UpsSimulator::UpsSimulator() = default;

std::vector<Output> UpsSimulator::Receive(const std::uint8_t* data, std::size_t size) {
    std::lock_guard<std::mutex> g(m_mutex);
    std::vector<Output> out;
    for (std::size_t i = 0; i < size; ++i) {
        if (data[i] != 0x0D) {
            if (m_line.size() < 64) m_line += static_cast<char>(data[i]);
            continue;
        }
        const std::string line = std::move(m_line);
        m_line.clear();
        if (line.empty()) continue;
        const char letter = line.back();  // noise before the letter is ignored, as the UPS does
        ++m_commands[letter];
        std::optional<std::string> reply;
        auto& script = m_script[letter];
        if (!script.empty()) {
            reply = script.front();
            script.pop_front();
        } else if (letter == 'P') {
            reply = m_source;
        } else if (letter == 'B') {
            reply = m_level;
        } else if (letter == 'D' || letter == 'X') {
            reply = m_shutdown;
        }
        if (!reply) continue;  // unknown command or scripted silence
        std::vector<std::uint8_t> bytes(reply->begin(), reply->end());
        if (!m_faults.wrongEnd) bytes.push_back(0x0D);
        for (Output& o : Shape(bytes, m_faults)) out.push_back(std::move(o));
    }
    m_changed.notify_all();
    return out;
}

void UpsSimulator::SetSource(const std::string& reply) {
    std::lock_guard<std::mutex> g(m_mutex);
    m_source = reply;
}

void UpsSimulator::SetLevel(int percent) { SetLevelText(std::to_string(percent)); }

void UpsSimulator::SetLevelText(const std::string& reply) {
    std::lock_guard<std::mutex> g(m_mutex);
    m_level = reply;
}

void UpsSimulator::SetShutdownReply(const std::string& reply) {
    std::lock_guard<std::mutex> g(m_mutex);
    m_shutdown = reply;
}

void UpsSimulator::QueueReply(char letter, std::optional<std::string> reply) {
    std::lock_guard<std::mutex> g(m_mutex);
    m_script[letter].push_back(std::move(reply));
}

void UpsSimulator::SetFaults(const Faults& faults) {
    std::lock_guard<std::mutex> g(m_mutex);
    m_faults = faults;
}

int UpsSimulator::CommandsReceived(char letter) const {
    std::lock_guard<std::mutex> g(m_mutex);
    auto it = m_commands.find(letter);
    return it == m_commands.end() ? 0 : it->second;
}

bool UpsSimulator::WaitForCommands(char letter, int count, uc::Millis limit) const {
    std::unique_lock<std::mutex> g(m_mutex);
    return m_changed.wait_for(g, limit, [&] {
        auto it = m_commands.find(letter);
        return it != m_commands.end() && it->second >= count;
    });
}

}  // namespace uc::power::sim
