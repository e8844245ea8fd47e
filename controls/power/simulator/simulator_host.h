// SimulatorHost: runs a simulated device on a port (a new pseudo-terminal, or an existing serial port).
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "platform/clock.h"
#include "platform/export.h"
#include "power/simulator/simulator_engine.h"

namespace uc::serial {
class PortBackend;
}

namespace uc::power::sim {

class UC_API SimulatorHost {
public:
    // Reply delays are measured on `clock`, so tests can hold a reply back and release it by hand.
    explicit SimulatorHost(SimulatorEngine& engine, uc::Clock& clock = uc::Clock::System());
    ~SimulatorHost();
    SimulatorHost(const SimulatorHost&) = delete;
    SimulatorHost& operator=(const SimulatorHost&) = delete;

    // POSIX: creates a raw pseudo-terminal; DevicePath() is what the console side opens. False on Windows.
    bool StartPty();
    // Opens an existing port (Windows: COMn, e.g. one end of a null-modem pair) and serves on it.
    bool StartOnPort(int port, int baud);
    void Stop();
    // The device vanishes: POSIX closes both ends of the pseudo-terminal, so the console side sees a
    // hang-up; on a port the port is closed.
    void Unplug() { Stop(); }
    bool IsRunning() const;
    std::wstring DevicePath() const;

    // Sends bytes nobody asked for, `at` from now.
    void Inject(const std::vector<std::uint8_t>& bytes, uc::Millis at = uc::Millis(0));

    std::uint64_t BytesReceived() const;
    std::uint64_t BytesSent() const;
    // Real-time bounded waits for progress (never a fixed sleep).
    bool WaitForBytesSent(std::uint64_t count, uc::Millis limit) const;
    std::size_t PendingOutputs() const;

private:
    struct Pending {
        uc::Clock::TimePoint due;
        std::vector<std::uint8_t> bytes;
    };

    bool Begin(std::unique_ptr<uc::serial::PortBackend> port, std::wstring path, std::function<void()> release);
    void ReadLoop();
    void WriteLoop();
    void Schedule(std::vector<Output> outputs);
    void WriteNow(const std::vector<std::uint8_t>& bytes);

    SimulatorEngine& m_engine;
    uc::Clock& m_clock;
    mutable std::mutex m_mutex;
    std::condition_variable m_cv;
    mutable std::condition_variable m_progress;
    std::deque<Pending> m_queue;
    bool m_writerBusy = false;
    bool m_stop = false;
    bool m_running = false;
    std::uint64_t m_received = 0;
    std::uint64_t m_sent = 0;
    std::wstring m_path;
    std::unique_ptr<uc::serial::PortBackend> m_port;
    std::function<void()> m_release;  // closes what the platform start kept open
    std::thread m_reader;
    std::thread m_writer;
};

}  // namespace uc::power::sim
