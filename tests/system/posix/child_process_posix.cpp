// ChildProcess natively: posix_spawn with pipes for standard input and output, SIGKILL, waitpid.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "child_process_pipes.h"
#include "platform/paths.h"
#include "platform/posix/fd.h"
#include "platform/text.h"

extern char** environ;

namespace uc::test {

struct ChildProcess::Pipes {
    pid_t pid = -1;
    UniqueFd toChild, fromChild;
    bool waited = false;
    int status = -1;
};

ChildProcess::Pipes* NewPipes() { return new ChildProcess::Pipes; }
void ChildProcess::PipesDeleter::operator()(Pipes* pipes) const { delete pipes; }

bool SpawnChild(ChildProcess::Pipes& p, const std::wstring& program, const std::vector<std::wstring>& args) {
    int in[2], out[2];
    if (::pipe2(in, O_CLOEXEC) != 0) return false;
    if (::pipe2(out, O_CLOEXEC) != 0) {
        ::close(in[0]);
        ::close(in[1]);
        return false;
    }
    UniqueFd childIn(in[0]), childOut(out[1]);
    p.toChild.reset(in[1]);
    p.fromChild.reset(out[0]);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, childIn.get(), 0);
    posix_spawn_file_actions_adddup2(&actions, childOut.get(), 1);
    std::vector<std::string> strings{ToUtf8(program)};
    for (const auto& a : args) strings.push_back(ToUtf8(a));
    std::vector<char*> argv;
    for (auto& s : strings) argv.push_back(s.data());
    argv.push_back(nullptr);
    const int r = ::posix_spawn(&p.pid, strings[0].c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (r != 0) p.pid = -1;
    return r == 0;
}

long ReadChild(ChildProcess::Pipes& p, char* buffer, std::size_t size) {
    for (;;) {
        const ssize_t n = ::read(p.fromChild.get(), buffer, size);
        if (n >= 0 || errno != EINTR) return static_cast<long>(n);
    }
}

bool WriteChild(ChildProcess::Pipes& p, const std::string& bytes) {
    return ::write(p.toChild.get(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

void CloseChildInput(ChildProcess::Pipes& p) { p.toChild.reset(); }

void KillChild(ChildProcess::Pipes& p) {
    if (p.pid > 0 && !p.waited) ::kill(p.pid, SIGKILL);
}

int WaitChild(ChildProcess::Pipes& p) {
    if (p.pid <= 0) return -1;
    if (!p.waited) {
        p.toChild.reset();  // a child reading commands sees the end of its input
        while (::waitpid(p.pid, &p.status, 0) < 0 && errno == EINTR) {
        }
        p.waited = true;
    }
    return WIFEXITED(p.status) ? WEXITSTATUS(p.status) : -1;
}

std::wstring LockChildProgram() { return JoinPath(ExecutableFolder(), L"system_lock_child"); }

}  // namespace uc::test
