// A helper program run as a child process, talked to by lines over its standard input and output.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace uc::test {

class ChildProcess {
public:
    ChildProcess();
    ~ChildProcess();  // kills the child if it still runs
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    bool Start(const std::wstring& program, const std::vector<std::wstring>& args);
    bool Send(const std::string& line);
    // The child's next output line. False when its output ended, or after `limit` of real time (a safety
    // limit for a child that hangs; the tests never rely on it elapsing).
    bool Receive(std::string& line, std::chrono::milliseconds limit = std::chrono::seconds(30));
    // Sends a command and returns the reply line ("" when none came).
    std::string Ask(const std::string& command);
    void Kill();
    // Waits for the child to end and returns its exit code (-1 when it could not be waited for).
    int Wait();

    // The platform part: spawning with pipes, raw I/O and the end of the process.
    struct Pipes;
    struct PipesDeleter {
        void operator()(Pipes* pipes) const;
    };

private:
    void ReadLoop();

    std::unique_ptr<Pipes, PipesDeleter> m_pipes;
    std::thread m_reader;
    std::mutex m_mutex;
    std::condition_variable m_cv;
    std::deque<std::string> m_lines;
    bool m_eof = false;
};

// The lock helper program built beside the test program.
std::wstring LockChildProgram();

}  // namespace uc::test
