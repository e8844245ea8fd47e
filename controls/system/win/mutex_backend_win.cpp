// Mutex objects on Windows: CreateMutexW, WaitForSingleObject/WaitForMultipleObjects and ReleaseMutex.
#include <windows.h>

#include "system/mutex_backend.h"

namespace uc::sync {

void* CreateMutexObject(_SECURITY_ATTRIBUTES* attributes, bool initialOwner, const wchar_t* name) {
    return ::CreateMutexW(attributes, initialOwner ? TRUE : FALSE, name);
}

bool CloseMutexObject(void* handle) { return handle && ::CloseHandle(handle) != FALSE; }

WaitResult WaitMutex(void* handle, std::uint32_t timeoutMs) {
    if (!handle) {
        ::SetLastError(ERROR_INVALID_HANDLE);
        return WaitResult::Failed;
    }
    switch (::WaitForSingleObject(handle, timeoutMs)) {
    case WAIT_OBJECT_0: return WaitResult::Acquired;
    case WAIT_ABANDONED: return WaitResult::Abandoned;
    case WAIT_TIMEOUT: return WaitResult::Timeout;
    default: return WaitResult::Failed;
    }
}

WaitResult WaitAllMutexes(void* const* handles, unsigned long count) {
    if (!handles || count == 0 || count > kMaxWaitObjects) {
        ::SetLastError(ERROR_INVALID_PARAMETER);
        return WaitResult::Failed;
    }
    // Windows refuses a handle given twice; not every implementation checks, so it is checked here.
    for (unsigned long i = 1; i < count; ++i)
        for (unsigned long j = 0; j < i; ++j)
            if (handles[i] == handles[j]) {
                ::SetLastError(ERROR_INVALID_PARAMETER);
                return WaitResult::Failed;
            }
    const DWORD r = ::WaitForMultipleObjects(count, handles, TRUE, INFINITE);
    if (r < WAIT_OBJECT_0 + count) return WaitResult::Acquired;
    if (r >= WAIT_ABANDONED_0 && r < WAIT_ABANDONED_0 + count) return WaitResult::Abandoned;
    return WaitResult::Failed;
}

bool ReleaseMutexObject(void* handle) { return handle && ::ReleaseMutex(handle) != FALSE; }

unsigned long LastMutexError() { return ::GetLastError(); }

}  // namespace uc::sync
