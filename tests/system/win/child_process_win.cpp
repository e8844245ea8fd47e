// ChildProcess on Windows: CreateProcessW with inherited pipe ends for standard input and output.
#include <windows.h>

#include "child_process_pipes.h"
#include "platform/paths.h"
#include "platform/win/handles.h"

namespace uc::test {

struct ChildProcess::Pipes {
    UniqueKernelHandle process;
    UniqueKernelHandle toChild, fromChild;
    bool waited = false;
    DWORD code = static_cast<DWORD>(-1);
};

ChildProcess::Pipes* NewPipes() { return new ChildProcess::Pipes; }
void ChildProcess::PipesDeleter::operator()(Pipes* pipes) const { delete pipes; }

namespace {
// One argument quoted the way the C runtime splits a command line.
std::wstring Quote(const std::wstring& arg) {
    if (!arg.empty() && arg.find_first_of(L" \t\"") == std::wstring::npos) return arg;
    std::wstring out = L"\"";
    std::size_t slashes = 0;
    for (wchar_t c : arg) {
        if (c == L'\\') {
            ++slashes;
            continue;
        }
        out.append(c == L'"' ? slashes * 2 + 1 : slashes, L'\\');
        slashes = 0;
        out += c;
    }
    out.append(slashes * 2, L'\\');
    return out + L"\"";
}
}  // namespace

bool SpawnChild(ChildProcess::Pipes& p, const std::wstring& program, const std::vector<std::wstring>& args) {
    SECURITY_ATTRIBUTES inherit{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE inRead = nullptr, inWrite = nullptr, outRead = nullptr, outWrite = nullptr;
    if (!::CreatePipe(&inRead, &inWrite, &inherit, 0)) return false;
    UniqueKernelHandle childIn(inRead);
    p.toChild.reset(inWrite);
    if (!::CreatePipe(&outRead, &outWrite, &inherit, 0)) return false;
    UniqueKernelHandle childOut(outWrite);
    p.fromChild.reset(outRead);
    // Only the child's ends are inherited.
    ::SetHandleInformation(p.toChild.get(), HANDLE_FLAG_INHERIT, 0);
    ::SetHandleInformation(p.fromChild.get(), HANDLE_FLAG_INHERIT, 0);

    std::wstring commandLine = Quote(program);
    for (const auto& a : args) commandLine += L" " + Quote(a);
    STARTUPINFOW si{};
    si.cb = sizeof si;
    si.dwFlags = STARTF_USESTDHANDLES;
    si.hStdInput = childIn.get();
    si.hStdOutput = childOut.get();
    si.hStdError = ::GetStdHandle(STD_ERROR_HANDLE);
    PROCESS_INFORMATION pi{};
    if (!::CreateProcessW(program.c_str(), commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &si, &pi))
        return false;
    ::CloseHandle(pi.hThread);
    p.process.reset(pi.hProcess);
    return true;
}

long ReadChild(ChildProcess::Pipes& p, char* buffer, std::size_t size) {
    DWORD n = 0;
    if (!::ReadFile(p.fromChild.get(), buffer, static_cast<DWORD>(size), &n, nullptr)) return 0;
    return static_cast<long>(n);
}

bool WriteChild(ChildProcess::Pipes& p, const std::string& bytes) {
    DWORD n = 0;
    return ::WriteFile(p.toChild.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &n, nullptr) && n == bytes.size();
}

void CloseChildInput(ChildProcess::Pipes& p) { p.toChild.reset(); }

void KillChild(ChildProcess::Pipes& p) {
    if (p.process && !p.waited) ::TerminateProcess(p.process.get(), 9);
}

int WaitChild(ChildProcess::Pipes& p) {
    if (!p.process) return -1;
    if (!p.waited) {
        p.toChild.reset();
        ::WaitForSingleObject(p.process.get(), INFINITE);
        ::GetExitCodeProcess(p.process.get(), &p.code);
        p.waited = true;
    }
    return static_cast<int>(p.code);
}

std::wstring LockChildProgram() { return JoinPath(ExecutableFolder(), L"system_lock_child.exe"); }

}  // namespace uc::test
