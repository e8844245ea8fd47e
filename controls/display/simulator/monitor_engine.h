// The simulated DDC/CI monitor: VCP table, EDID and faults behind an I2C-level interface, every transfer recorded.
#pragma once

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "display/simulator/display_sim_config.h"

namespace uc::display::sim {

// One transfer as it went over the bus: the 8-bit address byte followed by the bytes written or read.
struct Transfer {
    std::vector<std::uint8_t> bytes;
    bool ok = true;
    bool IsRead() const { return !bytes.empty() && (bytes[0] & 1) != 0; }
};

// "W 6E 51 82 01 10 AC" / "R 6F 6E 88 ..." with " FAIL" appended to a failed transfer.
std::string FormatTransfer(const Transfer& transfer);

// Thread-safe: the vendor libraries may be called from any thread.
class SimulatedMonitor {
public:
    explicit SimulatedMonitor(const MonitorConfig& config);

    // address8 0x6E: a DDC/CI message (data starts with the source byte 0x51); 0xA0: the EDID offset.
    bool Write(std::uint8_t address8, const std::uint8_t* data, std::size_t size);
    // address8 0x6F: the pending DDC/CI reply (a null message when none); 0xA1: EDID bytes from the offset.
    bool Read(std::uint8_t address8, std::uint8_t* data, std::size_t size);

    std::vector<Transfer> Transfers() const;
    void ClearTransfers();
    // Value of a VCP code (0 for an unknown one), and how often "save current settings" arrived.
    std::uint16_t Value(std::uint8_t code) const;
    int Saves() const;
    const MonitorConfig& Config() const { return m_config; }
    // The 256 EDID bytes (a base block and an empty extension).
    const std::uint8_t* Edid() const { return m_edid; }

    static constexpr std::size_t TransferHistory = 4096;  // older transfers are forgotten

private:
    bool Answering();
    void Record(std::uint8_t address8, const std::uint8_t* data, std::size_t size, bool ok);
    void Handle(const std::uint8_t* data, std::size_t size);

    mutable std::mutex m_mutex;
    MonitorConfig m_config;
    std::uint8_t m_edid[256] = {};
    std::size_t m_edidOffset = 0;
    std::uint8_t m_reply[16] = {};
    std::size_t m_replySize = 0;
    int m_transfers = 0;
    int m_gets = 0;
    int m_saves = 0;
    std::vector<Transfer> m_log;
};

}  // namespace uc::display::sim
