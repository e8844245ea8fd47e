// CUPSConnection: the UPS's serial link, one letter command and its carriage-return-terminated reply at a time.
#pragma once

#include <string>

#include "platform/clock.h"
#include "platform/export.h"
#include "platform/serial/circular_buffer.h"
#include "platform/serial/critical_section.h"
#include "platform/serial/serial_connection.h"
#include "power/power_probe.h"

class UC_API CUPSConnection : public CSerialConnection {
public:
    static constexpr unsigned int BufferSize = 2048;
    static constexpr unsigned long ReplyTimeoutMs = 2000;

    explicit CUPSConnection(uc::Clock& clock = uc::Clock::System());
    ~CUPSConnection() override;

    // Opens the port with an empty reply buffer: bytes left over from a port tried before (another
    // device during the port search) must not be taken as this UPS's first reply.
    bool Open(int port, int baud);

    // Sends `command` and CR, then collects one reply of at most `replyLength` characters into `reply`
    // (not terminated; callers zero it first). False when closed, on a failed send, after 2000 ms without
    // data, or for a reply too long (discarded whole). Unasked bytes received earlier count as the
    // start of the reply: there is no flush before a command.
    bool SendCommand(unsigned char command, unsigned char* reply, unsigned int replyLength);

    // Bytes waiting in the link's own buffer (diagnostics).
    unsigned int BufferedBytes() const;
    // Why the last command failed: port closed, not sent, no reply in time, or a reply too long (empty after
    // a success).
    std::wstring LastFailure() const { return m_lastFailure.Get(); }

protected:
    void Tokenize(CCircularBuffer& received) override;

private:
    CriticalSection m_commandLock;         // one command and its reply; taken before m_bufferLock
    mutable CriticalSection m_bufferLock;  // m_buffer
    uc::Event m_dataEvent;                 // auto-reset: bytes were received
    CCircularBuffer m_buffer;
    uc::power::FailureText m_lastFailure;

    bool Failed(std::wstring why) {
        m_lastFailure.Set(std::move(why));
        return false;
    }
};
