// Win32 serial back-end: overlapped COM port I/O; the reader waits for a character event, then reads.
#include <windows.h>

#include <string>

#include "platform/serial/port_backend.h"
#include "platform/serial/port_map.h"
#include "platform/win/handles.h"

namespace uc::serial {
namespace {

// "Win32 error 2 (The system cannot find the file specified.)": the number for searches, the words for people.
std::wstring ErrorText(DWORD code) {
    std::wstring text = L"Win32 error " + std::to_wstring(code);
    wchar_t buffer[256] = {};
    const DWORD n = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code, 0, buffer,
                                     static_cast<DWORD>(sizeof buffer / sizeof buffer[0]), nullptr);
    std::wstring words(buffer, n);
    while (!words.empty() && (words.back() == L'\n' || words.back() == L'\r' || words.back() == L' ')) words.pop_back();
    if (!words.empty()) text += L" (" + words + L")";
    return text;
}

// Waits for an overlapped operation or the cancel event. True when the operation completed.
bool WaitOverlapped(HANDLE port, OVERLAPPED& ov, HANDLE cancel, DWORD& transferred, bool& cancelled) {
    HANDLE handles[2] = {ov.hEvent, cancel};
    const DWORD r = ::WaitForMultipleObjects(2, handles, FALSE, INFINITE);
    if (r == WAIT_OBJECT_0 + 1) {
        cancelled = true;
        ::CancelIoEx(port, &ov);
        ::GetOverlappedResult(port, &ov, &transferred, TRUE);  // the OVERLAPPED must outlive the request
        return false;
    }
    return ::GetOverlappedResult(port, &ov, &transferred, FALSE) != FALSE;
}

class Win32Port final : public PortBackend {
public:
    Win32Port(UniqueFileHandle port, UniqueKernelHandle cancel, UniqueKernelHandle readEvent,
              UniqueKernelHandle waitEvent, UniqueKernelHandle writeEvent)
        : m_port(std::move(port)), m_cancel(std::move(cancel)), m_readEvent(std::move(readEvent)),
          m_waitEvent(std::move(waitEvent)), m_writeEvent(std::move(writeEvent)) {}

    int Read(unsigned char* dest, unsigned int capacity) override {
        for (;;) {
            if (::WaitForSingleObject(m_cancel.get(), 0) == WAIT_OBJECT_0) return 0;
            DWORD events = 0, transferred = 0;
            bool cancelled = false;
            if (m_useCommEvents) {
                // Wait for a received character. Some drivers (Wine's on pseudo-terminals among them)
                // complete this at once or fail it; the read below then blocks instead, so the loop never spins.
                OVERLAPPED wov{};
                wov.hEvent = m_waitEvent.get();
                ::ResetEvent(wov.hEvent);
                if (!::WaitCommEvent(m_port.get(), &events, &wov)) {
                    if (::GetLastError() != ERROR_IO_PENDING) {
                        m_useCommEvents = false;
                    } else if (!WaitOverlapped(m_port.get(), wov, m_cancel.get(), transferred, cancelled)) {
                        if (cancelled) return 0;
                        m_useCommEvents = false;
                    }
                }
            }
            OVERLAPPED rov{};
            rov.hEvent = m_readEvent.get();
            ::ResetEvent(rov.hEvent);
            DWORD got = 0;
            if (!::ReadFile(m_port.get(), dest, capacity, &got, &rov)) {
                if (::GetLastError() != ERROR_IO_PENDING) return -1;
                if (!WaitOverlapped(m_port.get(), rov, m_cancel.get(), got, cancelled)) return cancelled ? 0 : -1;
            }
            if (got > 0) return static_cast<int>(got);
            if (!(events & EV_RXCHAR)) {
                // Neither an event nor data: back off briefly rather than spin.
                if (::WaitForSingleObject(m_cancel.get(), 10) == WAIT_OBJECT_0) return 0;
            }
        }
    }

    bool Write(const unsigned char* bytes, unsigned int count) override {
        OVERLAPPED ov{};
        ov.hEvent = m_writeEvent.get();
        ::ResetEvent(ov.hEvent);
        DWORD written = 0;
        if (!::WriteFile(m_port.get(), bytes, count, &written, &ov)) {
            if (::GetLastError() != ERROR_IO_PENDING) return false;
            if (::WaitForSingleObject(ov.hEvent, 2000) != WAIT_OBJECT_0) {
                ::CancelIoEx(m_port.get(), &ov);
                ::GetOverlappedResult(m_port.get(), &ov, &written, TRUE);
                return false;
            }
            if (!::GetOverlappedResult(m_port.get(), &ov, &written, FALSE)) return false;
        }
        return written == count;
    }

    void CancelRead() override { ::SetEvent(m_cancel.get()); }

private:
    UniqueFileHandle m_port;
    UniqueKernelHandle m_cancel;
    UniqueKernelHandle m_readEvent;
    UniqueKernelHandle m_waitEvent;
    UniqueKernelHandle m_writeEvent;
    bool m_useCommEvents = true;  // only the receiving thread touches it
};

}  // namespace

void DefaultLineSetup(DCB& dcb, int baud) {
    dcb = DCB{};
    dcb.DCBlength = sizeof(DCB);
    dcb.BaudRate = static_cast<DWORD>(baud);
    dcb.fBinary = TRUE;
    dcb.fParity = FALSE;
    dcb.fOutxCtsFlow = FALSE;
    dcb.fOutxDsrFlow = FALSE;
    dcb.fDtrControl = DTR_CONTROL_ENABLE;
    dcb.fDsrSensitivity = FALSE;
    dcb.fOutX = FALSE;
    dcb.fInX = FALSE;
    dcb.fNull = FALSE;
    dcb.fRtsControl = RTS_CONTROL_ENABLE;
    dcb.fAbortOnError = FALSE;
    dcb.ByteSize = 8;
    dcb.Parity = NOPARITY;
    dcb.StopBits = ONESTOPBIT;
    dcb.XonChar = 0x11;
    dcb.XoffChar = 0x13;
    dcb.XonLim = 2048;
    dcb.XoffLim = 512;
}

std::unique_ptr<PortBackend> OpenPortBackend(int port, const DCB& wanted, std::wstring& error) {
    const std::wstring path = PortDevicePath(port);
    if (path.empty()) {
        error = L"no such port";
        return nullptr;
    }
    UniqueFileHandle h(::CreateFileW(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                     FILE_FLAG_OVERLAPPED, nullptr));
    if (!h) {
        error = path + L": " + ErrorText(::GetLastError());
        return nullptr;
    }
    DCB dcb{};
    dcb.DCBlength = sizeof dcb;
    ::GetCommState(h.get(), &dcb);  // keeps the driver's own fields; ours overwrite the rest
    DCB applied = wanted;
    applied.DCBlength = sizeof applied;
    if (!::SetCommState(h.get(), &applied)) {
        error = path + L": line set-up refused, " + ErrorText(::GetLastError());
        return nullptr;
    }
    ::SetupComm(h.get(), 4096, 4096);
    // Reads return what has arrived; writes give up after a second.
    COMMTIMEOUTS timeouts{MAXDWORD, 0, 0, 0, 1000};
    if (!::SetCommTimeouts(h.get(), &timeouts) || !::SetCommMask(h.get(), EV_RXCHAR)) {
        error = path + L": time-out set-up refused, " + ErrorText(::GetLastError());
        return nullptr;
    }
    ::PurgeComm(h.get(), PURGE_RXCLEAR | PURGE_TXCLEAR);
    UniqueKernelHandle cancel(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    UniqueKernelHandle readEvent(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    UniqueKernelHandle waitEvent(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    UniqueKernelHandle writeEvent(::CreateEventW(nullptr, TRUE, FALSE, nullptr));
    if (!cancel || !readEvent || !waitEvent || !writeEvent) {
        error = L"no events for the receiving thread";
        return nullptr;
    }
    return std::make_unique<Win32Port>(std::move(h), std::move(cancel), std::move(readEvent), std::move(waitEvent),
                                       std::move(writeEvent));
}

}  // namespace uc::serial
