// BatteryModuleSimulator: the battery module's firmware as far as the console sees it (ping, status), with faults.
#pragma once

#include <condition_variable>
#include <map>
#include <mutex>

#include "platform/serial/circular_buffer.h"
#include "power/battery_status.h"
#include "power/simulator/simulator_engine.h"

namespace uc::power::sim {

class BatteryModuleSimulator final : public SimulatorEngine {
public:
    // Starts as a healthy module on mains: 25.0 V, 80 %, state 2 (normal charge).
    BatteryModuleSimulator();

    std::vector<Output> Receive(const std::uint8_t* data, std::size_t size) override;

    // Readings reported by the status reply.
    void SetStatus(const BatteryStatus& status);
    BatteryStatus GetStatus() const;
    void SetByte(int index, std::uint8_t value);
    void SetVoltage(double volts);  // rounded to the module's 0.03894 V steps
    void SetPercent(int percent);
    void SetState(int code);
    void SetOnAC(bool onAC);
    // When on, byte 0 of every status reply carries a running reply number (1, 2, ...), so tests can
    // tell replies apart.
    void SetNumberReplies(bool on);

    // Data of the ping reply (normally one byte 0); the status reply's data length (normally 39).
    void SetPingReply(const std::vector<std::uint8_t>& data);
    void SetStatusLength(std::size_t length);

    void SetFaults(const Faults& faults);
    Faults GetFaults() const;

    // Command frames received, by command code; frames without a valid end byte.
    int CommandsReceived(std::uint8_t code) const;
    int BadFrames() const;
    // Waits (real time, at most `limit`) until `count` commands with `code` have been received.
    bool WaitForCommands(std::uint8_t code, int count, uc::Millis limit) const;

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    CCircularBuffer m_input{4096};
    BatteryStatus m_status;
    std::vector<std::uint8_t> m_pingReply{0};
    std::size_t m_statusLength = BatteryStatus::Size;
    bool m_numberReplies = false;
    int m_replyNumber = 0;
    Faults m_faults;
    std::map<std::uint8_t, int> m_commands;
    int m_badFrames = 0;
};

}  // namespace uc::power::sim
