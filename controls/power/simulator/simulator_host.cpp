// Simulator host: a reader thread feeding the device engine and a writer thread sending timed replies.
#include "power/simulator/simulator_host.h"

#include <algorithm>

#include "platform/serial/port_backend.h"

namespace uc::power::sim {

SimulatorHost::SimulatorHost(SimulatorEngine& engine, uc::Clock& clock) : m_engine(engine), m_clock(clock) {}

SimulatorHost::~SimulatorHost() { Stop(); }

bool SimulatorHost::StartOnPort(int port, int baud) {
    DCB dcb{};
    uc::serial::DefaultLineSetup(dcb, baud);
    std::wstring error;
    auto backend = uc::serial::OpenPortBackend(port, dcb, error);
    if (!backend) return false;
#ifdef _WIN32
    std::wstring path = L"COM" + std::to_wstring(port);
#else
    std::wstring path = L"port " + std::to_wstring(port);
#endif
    return Begin(std::move(backend), path, {});
}

bool SimulatorHost::Begin(std::unique_ptr<uc::serial::PortBackend> port, std::wstring path,
                          std::function<void()> release) {
    Stop();
    std::lock_guard<std::mutex> g(m_mutex);
    m_port = std::move(port);
    m_path = std::move(path);
    m_release = std::move(release);
    m_stop = false;
    m_running = true;
    m_received = m_sent = 0;
    m_queue.clear();
    m_reader = std::thread([this] { ReadLoop(); });
    m_writer = std::thread([this] { WriteLoop(); });
    return true;
}

void SimulatorHost::Stop() {
    {
        std::lock_guard<std::mutex> g(m_mutex);
        if (!m_running) return;
        m_stop = true;
        m_cv.notify_all();
        if (m_port) m_port->CancelRead();
    }
    if (m_reader.joinable()) m_reader.join();
    if (m_writer.joinable()) m_writer.join();
    std::function<void()> release;
    {
        std::lock_guard<std::mutex> g(m_mutex);
        m_port.reset();
        release = std::move(m_release);
        m_release = nullptr;
        m_running = false;
        m_queue.clear();
    }
    if (release) release();
    m_progress.notify_all();
}

bool SimulatorHost::IsRunning() const {
    std::lock_guard<std::mutex> g(m_mutex);
    return m_running;
}

std::wstring SimulatorHost::DevicePath() const {
    std::lock_guard<std::mutex> g(m_mutex);
    return m_path;
}

void SimulatorHost::Inject(const std::vector<std::uint8_t>& bytes, uc::Millis at) { Schedule({Output{at, bytes}}); }

std::uint64_t SimulatorHost::BytesReceived() const {
    std::lock_guard<std::mutex> g(m_mutex);
    return m_received;
}

std::uint64_t SimulatorHost::BytesSent() const {
    std::lock_guard<std::mutex> g(m_mutex);
    return m_sent;
}

bool SimulatorHost::WaitForBytesSent(std::uint64_t count, uc::Millis limit) const {
    std::unique_lock<std::mutex> g(m_mutex);
    return m_progress.wait_for(g, limit, [&] { return m_sent >= count; });
}

std::size_t SimulatorHost::PendingOutputs() const {
    std::lock_guard<std::mutex> g(m_mutex);
    return m_queue.size() + (m_writerBusy ? 1 : 0);
}

void SimulatorHost::WriteNow(const std::vector<std::uint8_t>& bytes) {
    // Caller holds m_mutex or is the writer thread with m_writerBusy set; either way writes stay in order.
    if (m_port && !bytes.empty() && m_port->Write(bytes.data(), static_cast<unsigned int>(bytes.size())))
        m_sent += bytes.size();
}

void SimulatorHost::Schedule(std::vector<Output> outputs) {
    if (outputs.empty()) return;
    const uc::Clock::TimePoint now = m_clock.Now();
    std::lock_guard<std::mutex> g(m_mutex);
    if (!m_running || m_stop) return;
    for (Output& o : outputs) {
        uc::Clock::TimePoint due = now + o.at;
        if (!m_queue.empty()) due = std::max(due, m_queue.back().due);  // replies never overtake each other
        if (o.at.count() == 0 && m_queue.empty() && !m_writerBusy) {
            WriteNow(o.bytes);  // the common case: no delay, nothing ahead, so skip the writer thread
            continue;
        }
        m_queue.push_back({due, std::move(o.bytes)});
    }
    m_cv.notify_all();
    m_progress.notify_all();
}

void SimulatorHost::ReadLoop() {
    std::uint8_t chunk[512];
    for (;;) {
        const int n = m_port->Read(chunk, sizeof chunk);
        if (n <= 0) break;
        {
            std::lock_guard<std::mutex> g(m_mutex);
            m_received += static_cast<std::uint64_t>(n);
        }
        Schedule(m_engine.Receive(chunk, static_cast<std::size_t>(n)));
    }
}

void SimulatorHost::WriteLoop() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_stop) {
        if (m_queue.empty()) {
            m_cv.wait(lock);
            continue;
        }
        const uc::Clock::TimePoint due = m_queue.front().due;
        if (m_clock.Now() < due) {
            m_clock.WaitUntil(m_cv, lock, due);
            continue;
        }
        Pending item = std::move(m_queue.front());
        m_queue.pop_front();
        m_writerBusy = true;
        lock.unlock();
        if (m_port && !item.bytes.empty() && m_port->Write(item.bytes.data(), static_cast<unsigned int>(item.bytes.size()))) {
            lock.lock();
            m_sent += item.bytes.size();
        } else {
            lock.lock();
        }
        m_writerBusy = false;
        m_progress.notify_all();
    }
}

}  // namespace uc::power::sim
