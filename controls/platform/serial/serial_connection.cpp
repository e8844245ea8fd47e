// Portable part of CSerialConnection: lifecycle, the receiving thread and the buffer handed to Tokenize.
#include "platform/serial/serial_connection.h"

#include <future>

#include "platform/logger.h"
#include "platform/serial/port_backend.h"

CSerialConnection::CSerialConnection() : m_received(ReceiveBufferSize) {}

CSerialConnection::~CSerialConnection() {
    Close(true);
    if (m_thread.joinable()) m_thread.join();
}

bool CSerialConnection::Open(int port, int baud) {
    std::lock_guard<std::mutex> state(m_stateMutex);
    if (m_open) return false;
    if (m_thread.joinable()) {
        // Left behind by a Close from the receiving thread: finish it and release its port first.
        m_thread.join();
        m_receiverId = std::thread::id();
        std::lock_guard<std::mutex> w(m_writeMutex);
        m_backend.reset();
    }
    DCB dcb{};
    uc::serial::DefaultLineSetup(dcb, baud);
    SetupDCB(dcb);
    std::wstring error;
    std::unique_ptr<uc::serial::PortBackend> backend = uc::serial::OpenPortBackend(port, dcb, error);
    if (!backend) {
        UC_LOG(zelLogger::Fallback)(L"CSerialConnection::Open - port %d: %s", port, error.c_str());
        return false;
    }
    {
        std::lock_guard<std::mutex> g(m_receiveMutex);
        m_received.Clear();
    }
    {
        std::lock_guard<std::mutex> g(m_countMutex);
        m_receivedCount = 0;
    }
    uc::serial::PortBackend* raw = backend.get();
    {
        std::lock_guard<std::mutex> w(m_writeMutex);
        m_backend = std::move(backend);
    }
    m_port = port;
    m_open = true;
    m_receiving = true;
    // The thread waits until its identity is recorded, so a Close from inside Tokenize knows it is on the
    // receiving thread (and neither waits for the state lock nor joins itself).
    std::promise<void> settled;
    std::future<void> go = settled.get_future();
    m_thread = std::thread([this, raw, go = std::move(go)]() mutable {
        go.wait();
        ReceiveLoop(raw);
    });
    m_receiverId = m_thread.get_id();
    settled.set_value();
    return true;
}

bool CSerialConnection::Close(bool wait) {
    std::unique_lock<std::mutex> state(m_stateMutex, std::defer_lock);
    const bool onReceiver = std::this_thread::get_id() == m_receiverId.load();
    // From inside Tokenize the caller already holds the receive lock; Open/Close may not run concurrently there.
    if (!onReceiver) state.lock();
    if (!m_open.exchange(false)) return false;
    {
        std::lock_guard<std::mutex> w(m_writeMutex);
        if (m_backend) m_backend->CancelRead();
    }
    if (!onReceiver) {
        (void)wait;  // joining is needed before the back-end can be released, so Close always waits
        if (m_thread.joinable()) m_thread.join();
        m_receiverId = std::thread::id();  // a later thread may be given the same id
        std::lock_guard<std::mutex> w(m_writeMutex);
        m_backend.reset();
    }
    // On the receiving thread the back-end is released by the next Open or by the destructor.
    m_port = -1;
    return true;
}

bool CSerialConnection::SendData(const unsigned char* bytes, unsigned int count) {
    if (!bytes && count) return false;
    std::lock_guard<std::mutex> w(m_writeMutex);
    if (!m_open || !m_backend) return false;
    if (count == 0) return true;
    return m_backend->Write(bytes, count);
}

std::uint64_t CSerialConnection::GetReceivedCount() const {
    std::lock_guard<std::mutex> g(m_countMutex);
    return m_receivedCount;
}

bool CSerialConnection::WaitForReceivedCount(std::uint64_t count, uc::Millis limit) const {
    std::unique_lock<std::mutex> g(m_countMutex);
    return m_receivedChanged.wait_for(g, limit, [&] { return m_receivedCount >= count; });
}

void CSerialConnection::Tokenize(CCircularBuffer& received) { received.Clear(); }

void CSerialConnection::SetupDCB(DCB&) {}

void CSerialConnection::ReceiveLoop(uc::serial::PortBackend* port) {
    unsigned char chunk[512];
    for (;;) {
        const int n = port->Read(chunk, sizeof chunk);
        if (n == 0) break;  // cancelled by Close
        if (n < 0) {
            UC_LOG(zelLogger::Failure)(L"CSerialConnection - port %d failed while receiving; receiving stopped",
                                       m_port.load());
            break;
        }
        {
            std::lock_guard<std::mutex> g(m_receiveMutex);
            const unsigned int lost = m_received.Write(chunk, static_cast<unsigned int>(n));
            if (lost)
                UC_LOG(zelLogger::Failure)(L"CSerialConnection - receive buffer full, %u old bytes dropped", lost);
            Tokenize(m_received);
        }
        {
            std::lock_guard<std::mutex> g(m_countMutex);
            m_receivedCount += static_cast<std::uint64_t>(n);
        }
        m_receivedChanged.notify_all();
    }
    m_receiving = false;
    m_receivedChanged.notify_all();
}
