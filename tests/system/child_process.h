// The lock helper program run as a child process, talked to by lines over its standard input and output.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>

namespace uc::test {

// The platform part: starts "system_lock_child" from the test's folder with its standard input and output on
// pipes, handed back as C streams. WaitChild returns the exit code (-1 when there is none) and lets go of it.
bool SpawnLockChild(std::intptr_t& process, std::FILE*& toChild, std::FILE*& fromChild);
void KillChild(std::intptr_t process);
int WaitChild(std::intptr_t process);

class ChildProcess {
public:
    ChildProcess() : m_started(SpawnLockChild(m_process, m_in, m_out)) {}
    ~ChildProcess() {
        // After a failure the child may be blocked on a lock this process holds: end it rather than wait.
        if (::testing::Test::HasFailure()) Kill();
        Wait();
        if (m_out) std::fclose(m_out);
    }
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool Started() const { return m_started; }
    bool Send(const std::string& line) {
        return m_in && std::fputs((line + "\n").c_str(), m_in) >= 0 && std::fflush(m_in) == 0;
    }
    // The child's next output line; "" once its output has ended.
    std::string Receive() {
        char buffer[256];
        std::string line = m_out && std::fgets(buffer, sizeof buffer, m_out) ? buffer : "";
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) line.pop_back();
        return line;
    }
    std::string Ask(const std::string& command) { return Send(command) ? Receive() : std::string(); }
    void Kill() {
        if (m_started && !m_waited) KillChild(m_process);
    }
    // The end of its input lets the child release everything and end (the last closer of a mutex removes its
    // name natively); returns its exit code.
    int Wait() {
        if (m_in) std::fclose(m_in);
        m_in = nullptr;
        if (m_started && !m_waited) m_code = WaitChild(m_process);
        m_waited = true;
        return m_code;
    }

private:
    std::intptr_t m_process = 0;
    std::FILE* m_in = nullptr;
    std::FILE* m_out = nullptr;
    bool m_started = false;
    bool m_waited = false;
    int m_code = -1;
};

}  // namespace uc::test
