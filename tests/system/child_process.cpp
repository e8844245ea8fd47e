// ChildProcess: the line protocol over the platform's pipes, with a reader thread per child.
#include "child_process.h"

#include "child_process_pipes.h"

namespace uc::test {

ChildProcess::ChildProcess() : m_pipes(NewPipes()) {}

ChildProcess::~ChildProcess() {
    // The end of its input lets the child release and close everything itself (the last closer of a
    // mutex removes its name natively); one that does not end is killed.
    CloseChildInput(*m_pipes);
    if (m_reader.joinable()) {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_cv.wait_for(lock, std::chrono::seconds(10), [&] { return m_eof; });
    }
    Kill();
    Wait();
    if (m_reader.joinable()) m_reader.join();
}

bool ChildProcess::Start(const std::wstring& program, const std::vector<std::wstring>& args) {
    if (!SpawnChild(*m_pipes, program, args)) return false;
    m_reader = std::thread([this] { ReadLoop(); });
    return true;
}

void ChildProcess::ReadLoop() {
    std::string pending;
    char buffer[512];
    for (;;) {
        const long n = ReadChild(*m_pipes, buffer, sizeof buffer);
        std::lock_guard<std::mutex> lock(m_mutex);
        if (n <= 0) {
            m_eof = true;
            m_cv.notify_all();
            return;
        }
        pending.append(buffer, static_cast<std::size_t>(n));
        for (std::size_t nl; (nl = pending.find('\n')) != std::string::npos;) {
            std::string line = pending.substr(0, nl);
            if (!line.empty() && line.back() == '\r') line.pop_back();
            m_lines.push_back(std::move(line));
            pending.erase(0, nl + 1);
        }
        m_cv.notify_all();
    }
}

bool ChildProcess::Send(const std::string& line) { return WriteChild(*m_pipes, line + "\n"); }

bool ChildProcess::Receive(std::string& line, std::chrono::milliseconds limit) {
    std::unique_lock<std::mutex> lock(m_mutex);
    if (!m_cv.wait_for(lock, limit, [&] { return !m_lines.empty() || m_eof; }) || m_lines.empty()) return false;
    line = std::move(m_lines.front());
    m_lines.pop_front();
    return true;
}

std::string ChildProcess::Ask(const std::string& command) {
    std::string reply;
    if (!Send(command) || !Receive(reply)) return {};
    return reply;
}

void ChildProcess::Kill() { KillChild(*m_pipes); }

int ChildProcess::Wait() { return WaitChild(*m_pipes); }

}  // namespace uc::test
