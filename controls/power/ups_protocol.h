// The UPS's wire format and the pure decisions of its monitor: command bytes, reply extraction, levels, port order.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/export.h"

class CCircularBuffer;

namespace uc::power::ups {

constexpr std::uint8_t CarriageReturn = 0x0D;
constexpr unsigned char PowerSourceCommand = 'P';
constexpr unsigned char BatteryLevelCommand = 'B';
constexpr unsigned char ShutdownCommand = 'D';
constexpr unsigned char InverterShutdownCommand = 'X';
constexpr int BaudRate = 2400;
constexpr int NoPort = 255;  // "none" in the port settings
constexpr int LastScannedPort = 20;

enum class ReplyResult {
    Reply,      // `reply` holds the text before the carriage return; it and the CR were consumed
    NeedMore,   // no carriage return yet and not too long: wait for more
    TooLong,    // no carriage return within replyLength + 1 bytes: everything buffered was discarded
    NoData,     // the buffer is empty
    ReadError,  // the buffer could not be read
};

// Looks for one reply of at most `replyLength` characters at the front of `buffer`.
// Writes at most `replyLength` characters to `reply` (not terminated) and their number to `size`.
UC_API ReplyResult TakeReply(CCircularBuffer& buffer, unsigned int replyLength, unsigned char* reply,
                             unsigned int& size);

// "1" mains (1), "0" UPS battery (0), anything else unknown (2).
UC_API int PowerSourceFromReply(const std::string& reply);
// The reply to "B" as a percentage: the leading decimal number (optional sign); false without digits.
UC_API bool ParseBatteryLevel(const std::string& reply, int& value);
// Average of the values within 0 to 100 (truncated), or -1 when there is none.
UC_API int AverageLevel(const std::vector<int>& values);
// 3 below `three`, 2 below `two`, 1 below `one`, else 0.
UC_API int WarningLevelFor(int percent, int one, int two, int three);
// Ports to try in order: the saved port first (unless none or the touch-screen port), then 0 to 20
// without the saved, touch-screen and FTDI ports.
UC_API std::vector<int> PortSearchOrder(int savedPort, int touchScreenPort, int ftdiPort);

}  // namespace uc::power::ups
