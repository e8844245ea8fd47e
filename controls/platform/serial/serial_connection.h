// CSerialConnection: one serial port with its own receiving thread that hands the accumulated bytes to Tokenize.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>

#include "platform/clock.h"
#include "platform/export.h"
#include "platform/serial/circular_buffer.h"
#include "platform/serial/line_settings.h"

namespace uc::serial {
class PortBackend;
}

class UC_API CSerialConnection {
public:
    static constexpr unsigned int ReceiveBufferSize = 4096;

    CSerialConnection();
    // Closes the port. Derived classes must call Close() in their own destructor: the receiving thread
    // calls the virtual Tokenize, which must not run while the derived part is being destroyed.
    virtual ~CSerialConnection();
    CSerialConnection(const CSerialConnection&) = delete;
    CSerialConnection& operator=(const CSerialConnection&) = delete;

    // Opens port `port` at `baud` with the line set-up of SetupDCB and starts the receiving thread.
    // False when already open or when the port cannot be opened or configured (the reason is logged).
    bool Open(int port, int baud);
    // Stops the receiving thread and closes the port; false when it was not open. `wait` joins the
    // thread (skipped anyway when called from the receiving thread itself, e.g. inside Tokenize).
    bool Close(bool wait = true);
    // Sends all bytes in one write; false when closed or the write fails.
    bool SendData(const unsigned char* bytes, unsigned int count);
    // True from a successful Open to Close, even if the device has gone away meanwhile.
    bool IsOpen() const { return m_open.load(); }
    int GetPort() const { return m_port.load(); }
    // False once the receiving thread has stopped on a port failure (device unplugged).
    bool IsReceiving() const { return m_receiving.load(); }

    // Bytes received since Open, for diagnostics and for tests that must know a chunk has been handled.
    std::uint64_t GetReceivedCount() const;
    // Waits (in real time, at most `limit`) until at least `count` bytes have been received and tokenized.
    bool WaitForReceivedCount(std::uint64_t count, uc::Millis limit) const;

protected:
    // Called on the receiving thread after every read, with the buffer of everything not yet consumed.
    // The buffer is locked during the call; the default implementation discards everything.
    virtual void Tokenize(CCircularBuffer& received);
    // Adjusts the line settings before they are applied; the default leaves DefaultLineSetup's values.
    virtual void SetupDCB(DCB& dcb);

private:
    void ReceiveLoop(uc::serial::PortBackend* port);

    mutable std::mutex m_stateMutex;    // Open/Close
    mutable std::mutex m_writeMutex;    // the back-end pointer against concurrent SendData/Close
    std::mutex m_receiveMutex;          // m_received during Tokenize
    mutable std::condition_variable m_receivedChanged;
    mutable std::mutex m_countMutex;
    std::uint64_t m_receivedCount = 0;
    CCircularBuffer m_received;
    std::unique_ptr<uc::serial::PortBackend> m_backend;
    std::thread m_thread;
    // The receiving thread's id, settled before it runs any user code: Close compares against it instead of
    // reading m_thread, which Open may still be assigning.
    std::atomic<std::thread::id> m_receiverId{};
    std::atomic<bool> m_open{false};
    std::atomic<bool> m_receiving{false};
    std::atomic<int> m_port{-1};
};
