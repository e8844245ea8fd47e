// The battery module's link: command frames out, reply frames parsed in place and handed to their waiters.
#include "power/battery_connection.h"

#include <cstring>
#include <memory>

#include "platform/logger.h"
#include "platform/text.h"
#include "power/battery_protocol.h"

namespace bp = uc::power::battery;

BatteryConnection::BatteryConnection(uc::Clock& clock) : m_clock(clock) { std::memset(m_frame, 0, sizeof m_frame); }

BatteryConnection::~BatteryConnection() {
    // Stop the receiving thread before the reply list and waiter table go.
    Close(true);
    CriticalSectionLock lock(m_lock);
    m_waiters.clear();
    m_replies.clear();
}

bool BatteryConnection::Query(unsigned char command, unsigned char reply, unsigned long timeoutMs,
                              unsigned char& length, unsigned char* data, const wchar_t* what) {
    if (!SendCommand(command, 0, nullptr))
        return Failed(uc::Format(L"the %s command could not be sent (port %d)", what, GetPort()));
    if (!WaitForAcknowledge(reply, length, data, timeoutMs))
        return Failed(uc::Format(L"no reply to the %s command within %lu ms", what, timeoutMs));
    Failed(L"");
    return true;
}

bool BatteryConnection::PingBattery() {
    unsigned char length = 0;
    unsigned char data[255];
    if (!Query(bp::PingCommand, bp::PingReply, PingTimeoutMs, length, data, L"ping")) return false;
    if (length != 1 || data[0] != 0)
        return Failed(length == 1 ? uc::Format(L"the ping reply held 0x%02X, not 0x00", static_cast<unsigned>(data[0]))
                                  : uc::Format(L"the ping reply held %d bytes, not 1", static_cast<int>(length)));
    return true;
}

bool BatteryConnection::GetBatteryStatus(BatteryStatus& status) {
    unsigned char length = 0;
    unsigned char data[255];
    if (!Query(bp::StatusCommand, bp::StatusReply, StatusTimeoutMs, length, data, L"status")) return false;
    if (length != BatteryStatus::Size)
        return Failed(uc::Format(L"the status reply held %d bytes, not %d", static_cast<int>(length), BatteryStatus::Size));
    status.Initialize(data);
    return true;
}

std::size_t BatteryConnection::PendingReplies() const {
    CriticalSectionLock lock(m_lock);
    return m_replies.size();
}

std::size_t BatteryConnection::Waiters() const {
    CriticalSectionLock lock(m_lock);
    return m_waiters.size();
}

bool BatteryConnection::SendCommand(unsigned char command, unsigned char length, unsigned char* data) {
    if (length != 0 && data == nullptr) {
        UC_LOG(zelLogger::Failure)(L"SendCommand - Null pointer given for data (command %d: bytes expected %d)",
                                   static_cast<int>(command), static_cast<int>(length));
        return false;
    }
    unsigned char frame[bp::MaxFrame];
    const std::size_t size = bp::EncodeFrame(bp::CommandStart, command, length, data, bp::CommandEnd, frame);
    return SendData(frame, static_cast<unsigned int>(size));
}

bool BatteryConnection::WaitForAcknowledge(unsigned char replyCode, unsigned char& length, unsigned char* data,
                                           unsigned long timeoutMs) {
    auto event = std::make_shared<uc::Event>(false, false, m_clock);
    {
        CriticalSectionLock lock(m_lock);
        // Replies already announced to earlier waiters are theirs: a newcomer takes one at once only
        // when the list holds more replies of this code than have been promised.
        std::size_t replies = 0, promised = 0;
        for (const Reply& r : m_replies) replies += r.code == replyCode;
        for (auto it = m_waiters.lower_bound(replyCode); it != m_waiters.end() && it->first == replyCode; ++it)
            promised += it->second.woken;
        if (replies > promised && FindAndRemoveAck(replyCode, length, data)) return true;
        m_waiters.emplace(replyCode, Waiter{event, false});  // after any equal keys: waits are served in order
    }
    event->Wait(uc::Millis(timeoutMs));
    CriticalSectionLock lock(m_lock);
    // A reply may have come in right at the time-out: look again either way.
    const bool found = FindAndRemoveAck(replyCode, length, data);
    auto range = m_waiters.equal_range(replyCode);
    for (auto it = range.first; it != range.second; ++it)
        if (it->second.event == event) {
            m_waiters.erase(it);
            break;
        }
    return found;
}

bool BatteryConnection::FindAndRemoveAck(unsigned char replyCode, unsigned char& length, unsigned char* data) {
    for (auto it = m_replies.begin(); it != m_replies.end(); ++it) {
        if (it->code != replyCode) continue;
        length = it->length;
        if (data && it->length) std::memcpy(data, it->data, it->length);
        m_replies.erase(it);
        return true;
    }
    return false;
}

void BatteryConnection::Tokenize(CCircularBuffer& received) {
    unsigned char code = 0;
    unsigned char length = 0;
    // A framing error ends this batch; the rest is examined when more data arrives.
    while (FindCommand(received, code, length, m_frame)) {
        std::shared_ptr<uc::Event> wake;
        {
            CriticalSectionLock lock(m_lock);
            Reply reply;
            reply.code = code;
            reply.length = length;
            std::memcpy(reply.data, m_frame, length);
            m_replies.push_back(reply);
            // Wake one waiter per frame: the earliest for this code that is not already woken, so a
            // second frame arriving before the first waiter has run still reaches the next waiter.
            for (auto it = m_waiters.lower_bound(code); it != m_waiters.end() && it->first == code; ++it) {
                if (!it->second.woken) {
                    it->second.woken = true;
                    wake = it->second.event;
                    break;
                }
            }
        }
        // Signalled outside the lock: the woken caller's first step is to take that lock.
        if (wake) wake->Set();
    }
}

bool BatteryConnection::FindCommand(CCircularBuffer& received, unsigned char& replyCode, unsigned char& length,
                                    unsigned char* data) {
    bp::Frame frame;
    switch (bp::ExtractFrame(received, bp::ReplyStart, bp::ReplyEnd, frame)) {
        case bp::ParseResult::Frame:
            replyCode = frame.code;
            length = frame.length;
            if (length) std::memcpy(data, frame.data, length);
            return true;
        case bp::ParseResult::MissingEnd:
            UC_LOG(zelLogger::Failure)(L"FindCommand - Command missing end of frame (command %d: bytes expected %d)",
                                       static_cast<int>(frame.code), static_cast<int>(frame.length));
            return false;
        case bp::ParseResult::NeedMore:
        default:
            return false;
    }
}
