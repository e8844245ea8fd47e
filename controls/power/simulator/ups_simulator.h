// UpsSimulator: a UPS answering one-letter commands with carriage-return-terminated text, with faults and scripts.
#pragma once

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "power/simulator/simulator_engine.h"

namespace uc::power::sim {

class UpsSimulator final : public SimulatorEngine {
public:
    // Starts on mains ("1") at 100 %, accepting shutdown orders with "OK".
    UpsSimulator();

    std::vector<Output> Receive(const std::uint8_t* data, std::size_t size) override;

    // Reply to "P": "1" mains, "0" battery, anything else reads as unknown.
    void SetSource(const std::string& reply);
    void SetLevel(int percent);
    void SetLevelText(const std::string& reply);     // any text as the reply to "B"
    void SetShutdownReply(const std::string& reply);  // reply to "D" and "X"
    // One-off replies to `letter`, used before the standing ones, oldest first; nullopt stays silent once.
    void QueueReply(char letter, std::optional<std::string> reply);

    void SetFaults(const Faults& faults);

    int CommandsReceived(char letter) const;
    bool WaitForCommands(char letter, int count, uc::Millis limit) const;

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    std::string m_line;
    std::string m_source = "1";
    std::string m_level = "100";
    std::string m_shutdown = "OK";
    std::map<char, std::deque<std::optional<std::string>>> m_script;
    Faults m_faults;
    std::map<char, int> m_commands;
};

}  // namespace uc::power::sim
