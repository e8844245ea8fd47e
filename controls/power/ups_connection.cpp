// The UPS link: letter commands out, received bytes collected and cut into replies at the carriage return.
#include "power/ups_connection.h"

#include "platform/logger.h"
#include "platform/text.h"
#include "power/ups_protocol.h"

namespace ups = uc::power::ups;

CUPSConnection::CUPSConnection(uc::Clock& clock)
    : m_dataEvent(false, false, clock), m_buffer(BufferSize) {}

CUPSConnection::~CUPSConnection() { Close(true); }

bool CUPSConnection::Open(int port, int baud) {
    if (IsOpen()) return false;
    {
        CriticalSectionLock lock(m_bufferLock);
        m_buffer.Clear();
        m_dataEvent.Reset();
    }
    return CSerialConnection::Open(port, baud);
}

unsigned int CUPSConnection::BufferedBytes() const {
    CriticalSectionLock lock(m_bufferLock);
    return m_buffer.GetValidCount();
}

void CUPSConnection::Tokenize(CCircularBuffer& received) {
    bool any = false;
    {
        CriticalSectionLock lock(m_bufferLock);
        m_buffer.ConsumeValid(received);
        any = !m_buffer.IsEmpty();
    }
    // Signalled outside the lock: the woken caller's first step is to take it.
    if (any) m_dataEvent.Set();
}

bool CUPSConnection::SendCommand(unsigned char command, unsigned char* reply, unsigned int replyLength) {
    if (!IsOpen() || reply == nullptr || replyLength == 0) return Failed(IsOpen() ? L"no room for a reply" : L"the port is not open");
    CriticalSectionLock commandLock(m_commandLock);
    const unsigned char bytes[2] = {command, ups::CarriageReturn};
    if (!SendData(bytes, 2)) {
        UC_LOG(zelLogger::Failure)(L"SendCommand - SendData failed");
        return Failed(uc::Format(L"the command \"%c\" could not be sent", static_cast<wchar_t>(command)));
    }
    for (;;) {
        if (!m_dataEvent.Wait(uc::Millis(ReplyTimeoutMs)))
            return Failed(uc::Format(L"no reply to \"%c\" within %lu ms", static_cast<wchar_t>(command), ReplyTimeoutMs));
        CriticalSectionLock bufferLock(m_bufferLock);
        unsigned int size = 0;
        switch (ups::TakeReply(m_buffer, replyLength, reply, size)) {
            case ups::ReplyResult::Reply:
                m_lastFailure.Set(L"");
                return true;
            case ups::ReplyResult::TooLong:
                return Failed(uc::Format(L"the reply to \"%c\" was longer than %u characters",
                                         static_cast<wchar_t>(command), replyLength));
            case ups::ReplyResult::NoData:
                UC_LOG(zelLogger::Failure)(L"SendCommand - Data event triggered with no data");
                break;
            case ups::ReplyResult::ReadError:
                UC_LOG(zelLogger::Failure)(L"SendCommand - CCircularBuffer read error");
                break;
            case ups::ReplyResult::NeedMore:
                break;
        }
    }
}
