// The lock helper process natively: posix_spawn with pipes for standard input and output, SIGKILL, waitpid.
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>

#include "child_process.h"
#include "platform/paths.h"
#include "platform/posix/fd.h"
#include "platform/text.h"

extern char** environ;

namespace uc::test {

bool SpawnLockChild(std::intptr_t& process, std::FILE*& toChild, std::FILE*& fromChild) {
    int in[2], out[2];
    if (::pipe2(in, O_CLOEXEC) != 0) return false;
    if (::pipe2(out, O_CLOEXEC) != 0) {
        ::close(in[0]);
        ::close(in[1]);
        return false;
    }
    const UniqueFd childIn(in[0]), childOut(out[1]);  // closed here once the child has its copies
    toChild = ::fdopen(in[1], "w");
    fromChild = ::fdopen(out[0], "r");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, in[0], 0);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    std::string program = ToUtf8(JoinPath(ExecutableFolder(), L"system_lock_child"));
    char* argv[] = {program.data(), nullptr};
    pid_t pid = -1;
    const int r = ::posix_spawn(&pid, program.c_str(), &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    process = pid;
    return r == 0;
}

void KillChild(std::intptr_t process) { ::kill(static_cast<pid_t>(process), SIGKILL); }

int WaitChild(std::intptr_t process) {
    int status = 0;
    while (::waitpid(static_cast<pid_t>(process), &status, 0) < 0)
        if (errno != EINTR) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace uc::test
