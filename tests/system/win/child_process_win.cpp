// The lock helper process on Windows: CreateProcessW with inherited pipe ends for standard input and output.
#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include "child_process.h"
#include "platform/paths.h"
#include "platform/win/handles.h"

namespace uc::test {

bool SpawnLockChild(std::intptr_t& process, std::FILE*& toChild, std::FILE*& fromChild) {
    SECURITY_ATTRIBUTES inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE inRead = nullptr, inWrite = nullptr, outRead = nullptr, outWrite = nullptr;
    if (!::CreatePipe(&inRead, &inWrite, &inherit, 0)) return false;
    if (!::CreatePipe(&outRead, &outWrite, &inherit, 0)) {
        ::CloseHandle(inRead);
        ::CloseHandle(inWrite);
        return false;
    }
    const UniqueKernelHandle childIn(inRead), childOut(outWrite);  // closed here once the child has its copies
    // Only the child's ends are inherited; ours become C streams.
    ::SetHandleInformation(inWrite, HANDLE_FLAG_INHERIT, 0);
    ::SetHandleInformation(outRead, HANDLE_FLAG_INHERIT, 0);
    toChild = ::_fdopen(::_open_osfhandle(reinterpret_cast<std::intptr_t>(inWrite), 0), "wb");
    fromChild = ::_fdopen(::_open_osfhandle(reinterpret_cast<std::intptr_t>(outRead), _O_RDONLY), "rb");
    const std::wstring program = JoinPath(ExecutableFolder(), L"system_lock_child.exe");
    STARTUPINFOW si{};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = childIn.get();
    si.hStdOutput = childOut.get();
    si.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION pi{};
    if (!::CreateProcessW(program.c_str(), nullptr, nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi)) return false;
    ::CloseHandle(pi.hThread);
    process = reinterpret_cast<std::intptr_t>(pi.hProcess);
    return true;
}

void KillChild(std::intptr_t process) { ::TerminateProcess(reinterpret_cast<HANDLE>(process), 9); }

int WaitChild(std::intptr_t process) {
    const UniqueKernelHandle handle(reinterpret_cast<HANDLE>(process));
    DWORD code = static_cast<DWORD>(-1);
    ::WaitForSingleObject(handle.get(), INFINITE);
    ::GetExitCodeProcess(handle.get(), &code);
    return static_cast<int>(code);
}

}  // namespace uc::test
