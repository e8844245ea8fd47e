// The operating system's mutex objects beneath the lock classes: Windows mutexes, or robust shared-memory mutexes natively.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/export.h"

struct _SECURITY_ATTRIBUTES;

namespace uc::sync {

// What a wait ended with. Abandoned: the previous owner ended without releasing; the caller owns the
// mutex now (as with WAIT_ABANDONED), but what it protects may be half-changed.
enum class WaitResult { Acquired, Abandoned, Timeout, Failed };

constexpr std::uint32_t kInfinite = 0xFFFFFFFFu;
// Longest name accepted (MAX_PATH characters), and most mutexes in one wait (MAXIMUM_WAIT_OBJECTS).
constexpr std::size_t kMaxNameLength = 260;
constexpr unsigned long kMaxWaitObjects = 64;

// Creates the mutex `name`, or opens it when another thread or process already created it; null or empty
// names an unnamed mutex. `initialOwner` takes ownership only of a mutex this call created. Null on failure,
// with the reason in `LastMutexError`. Natively "Global\" and "Local\" prefixes name the same mutex as the
// bare name; any other backslash is refused, as Windows refuses it.
UC_API void* CreateMutexObject(_SECURITY_ATTRIBUTES* attributes, bool initialOwner, const wchar_t* name);
// Closes one handle; the mutex lives on while other handles (in any process) name it.
UC_API bool CloseMutexObject(void* handle);
// Waits up to `timeoutMs` for ownership; recursive for the owning thread. A null or closed handle fails at once.
UC_API WaitResult WaitMutex(void* handle, std::uint32_t timeoutMs = kInfinite);
// Waits, without a time limit, until the caller owns all `count` mutexes at once; it never holds some of them
// while waiting for the others. Abandoned when any of them was; Failed for a bad handle, a handle given twice
// or more than kMaxWaitObjects handles.
UC_API WaitResult WaitAllMutexes(void* const* handles, unsigned long count);
// Releases one level of ownership; false (and nothing changes) when the caller does not own the mutex.
UC_API bool ReleaseMutexObject(void* handle);
// The calling thread's error code (Windows codes on every platform) from the last call that failed.
UC_API unsigned long LastMutexError();

}  // namespace uc::sync
