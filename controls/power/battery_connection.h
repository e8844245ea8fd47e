// BatteryConnection: the battery module's serial link, matching framed replies to the callers waiting for them.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/clock.h"
#include "platform/export.h"
#include "platform/serial/critical_section.h"
#include "platform/serial/serial_connection.h"
#include "power/battery_status.h"
#include "power/power_probe.h"

class UC_API BatteryConnection : public CSerialConnection {
public:
    static constexpr unsigned long PingTimeoutMs = 1000;
    static constexpr unsigned long StatusTimeoutMs = 2000;

    // `clock` measures the reply time-outs (tests pass a hand-driven one).
    explicit BatteryConnection(uc::Clock& clock = uc::Clock::System());
    ~BatteryConnection() override;

    // Ping; true only for a one-byte reply holding 0. Both queries fail at once when the command
    // cannot be sent (port closed, device gone) rather than wait for a reply that cannot come.
    bool PingBattery();
    // Reads one status record; false (and `status` untouched) unless the reply holds exactly 39 bytes.
    bool GetBatteryStatus(BatteryStatus& status);

    // Why the last ping or status query failed: the command could not be sent, no reply in time, or what the
    // reply held instead (empty after a success).
    std::wstring LastFailure() const { return m_lastFailure.Get(); }

    // Replies received that no caller has taken yet, and callers currently waiting (diagnostics).
    std::size_t PendingReplies() const;
    std::size_t Waiters() const;

protected:
    // Sends one command frame; false for a missing data pointer (logged) or a failed send.
    bool SendCommand(unsigned char command, unsigned char length, unsigned char* data);
    // Delivers the oldest reply with `replyCode`, waiting up to `timeoutMs` for one. `data` holds 255 bytes.
    // A reply that arrived while others were already waiting for this code is left to them.
    bool WaitForAcknowledge(unsigned char replyCode, unsigned char& length, unsigned char* data,
                            unsigned long timeoutMs);
    // Takes the oldest reply with `replyCode` out of the list. Caller holds the lock.
    bool FindAndRemoveAck(unsigned char replyCode, unsigned char& length, unsigned char* data);
    void Tokenize(CCircularBuffer& received) override;
    // Extracts one reply frame from the front of `received`; logs a frame without its end byte.
    bool FindCommand(CCircularBuffer& received, unsigned char& replyCode, unsigned char& length, unsigned char* data);

private:
    struct Reply {
        unsigned char code;
        unsigned char length;
        unsigned char data[255];
    };

    struct Waiter {
        // Shared so the receiving thread can signal it after releasing the lock, even if the waiter
        // has given up and left meanwhile.
        std::shared_ptr<uc::Event> event;
        bool woken;  // a frame has already been announced to this waiter
    };

    uc::Clock& m_clock;
    mutable CriticalSection m_lock;                   // guards m_replies and m_waiters
    std::vector<Reply> m_replies;                     // arrival order; no bound, no ageing
    std::multimap<unsigned char, Waiter> m_waiters;  // one entry per waiting caller, in order of waiting
    unsigned char m_frame[259];                           // scratch for the parser
    uc::power::FailureText m_lastFailure;

    bool Failed(std::wstring why) {
        m_lastFailure.Set(std::move(why));
        return false;
    }
    bool Query(unsigned char command, unsigned char reply, unsigned long timeoutMs, unsigned char& length,
               unsigned char* data, const wchar_t* what);
};
