// The simulated write filter's environment and module folder on Windows.
#include <windows.h>

#include "system/simulator/ewf_sim_host.h"

namespace uc::ewf::sim {

std::wstring StatePathFromEnvironment() {
    // Read from the process environment block: this DLL's own C runtime keeps a copy made at load time.
    wchar_t buffer[MAX_PATH * 2];
    const DWORD n = ::GetEnvironmentVariableW(L"UC_EWF_SIM", buffer, MAX_PATH * 2);
    return n > 0 && n < MAX_PATH * 2 ? std::wstring(buffer, n) : std::wstring();
}

std::wstring ModuleFolder() {
    HMODULE self = nullptr;
    if (!::GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                              reinterpret_cast<LPCWSTR>(&ModuleFolder), &self))
        return {};
    wchar_t path[MAX_PATH * 2];
    const DWORD n = ::GetModuleFileNameW(self, path, MAX_PATH * 2);
    if (n == 0 || n >= MAX_PATH * 2) return {};
    std::wstring folder(path, n);
    const std::size_t slash = folder.find_last_of(L"\\/");
    return slash == std::wstring::npos ? std::wstring() : folder.substr(0, slash);
}

}  // namespace uc::ewf::sim
