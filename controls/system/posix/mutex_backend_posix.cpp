// Mutex objects natively: robust, recursive, process-shared pthread mutexes in named shared memory under /dev/shm.
#include <fcntl.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/text.h"
#include "system/mutex_backend.h"

// A name maps to one file in /dev/shm holding the pthread mutex. Like a Windows mutex it is robust (a holder
// that dies leaves it "abandoned" for the next owner), recursive for its owning thread, and lives as long as
// some handle names it: every handle holds a shared flock on the file, and whoever closes the last one (its
// exclusive flock succeeds) removes the file. Handles are slots of a process-wide table with generation
// numbers, so a closed handle fails cleanly instead of touching unmapped memory.

namespace uc::sync {
namespace {

static_assert(sizeof(void*) == 8, "handles pack a slot index and a generation into a pointer");

constexpr unsigned long ErrorFileNotFound = 2;
constexpr unsigned long ErrorPathNotFound = 3;
constexpr unsigned long ErrorAccessDenied = 5;
constexpr unsigned long ErrorInvalidHandle = 6;
constexpr unsigned long ErrorNotEnoughMemory = 8;
constexpr unsigned long ErrorInvalidParameter = 87;
constexpr unsigned long ErrorFilenameTooLong = 206;
constexpr unsigned long ErrorNotOwner = 288;
constexpr unsigned long ErrorAlreadyExists = 183;

thread_local unsigned long t_lastError = 0;
unsigned long Fail(unsigned long code) {
    t_lastError = code;
    return code;
}
unsigned long FromErrno(int e) {
    switch (e) {
    case EACCES:
    case EPERM: return ErrorAccessDenied;
    case ENOENT: return ErrorFileNotFound;
    case ENAMETOOLONG: return ErrorFilenameTooLong;
    case ENOMEM:
    case ENOSPC:
    case EMFILE:
    case ENFILE: return ErrorNotEnoughMemory;
    default: return ErrorInvalidParameter;
    }
}

constexpr std::uint32_t kMagic = 0x75634D58;  // "ucMX"
constexpr std::uint32_t kVersion = 2;
struct SharedBlock {
    std::atomic<std::uint32_t> magic;
    std::uint32_t version;
    pthread_mutex_t mutex;
    // The owning thread and its recursion depth, written only by the owner: a release by any other thread is
    // refused before it reaches pthread_mutex_unlock (as ReleaseMutex refuses a thread that does not own it).
    std::atomic<pid_t> owner;
    std::uint32_t depth;
};

pid_t ThisThread() {
    thread_local const pid_t tid = ::gettid();
    return tid;
}

bool InitMutex(SharedBlock* block) {
    pthread_mutexattr_t attr;
    if (pthread_mutexattr_init(&attr) != 0) return false;
    bool ok = pthread_mutexattr_setpshared(&attr, PTHREAD_PROCESS_SHARED) == 0 &&
              pthread_mutexattr_setrobust(&attr, PTHREAD_MUTEX_ROBUST) == 0 &&
              pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE) == 0 &&
              pthread_mutex_init(&block->mutex, &attr) == 0;
    pthread_mutexattr_destroy(&attr);
    if (ok) {
        block->version = kVersion;
        block->owner.store(0, std::memory_order_relaxed);
        block->depth = 0;
        block->magic.store(kMagic, std::memory_order_release);
    }
    return ok;
}

// ---- the handle table -------------------------------------------------------------------------------

struct Slot {
    // generation (high 32 bits) | closed (bit 31) | users (bits 0-30): one word, so taking a use and closing
    // can never miss each other.
    std::atomic<std::uint64_t> word{0};
    SharedBlock* block = nullptr;
    int fd = -1;
    std::string path;  // empty for an unnamed mutex
};
constexpr std::uint64_t kClosed = 1ull << 31;
constexpr std::uint64_t kUsers = kClosed - 1;
constexpr std::size_t kChunkSize = 256;
constexpr std::size_t kMaxChunks = 4096;

struct Table {
    std::array<std::atomic<Slot*>, kMaxChunks> chunks{};
    std::mutex mutex;  // guards growth and the free list
    std::vector<std::uint32_t> freeSlots;
    std::uint32_t used = 0;
};
Table& TheTable() {
    static Table* t = new Table;  // never destroyed: handles may be closed during process exit
    return *t;
}

Slot* SlotAt(std::uint32_t index) {
    const std::size_t chunk = index / kChunkSize;
    if (chunk >= kMaxChunks) return nullptr;
    Slot* base = TheTable().chunks[chunk].load(std::memory_order_acquire);
    return base ? base + index % kChunkSize : nullptr;
}

void* MakeHandle(std::uint32_t index, std::uint32_t generation) {
    return reinterpret_cast<void*>((std::uintptr_t{generation} << 32) | (std::uintptr_t{index} + 1));
}

// Allocates a slot holding `block`; returns its handle.
void* AddSlot(SharedBlock* block, int fd, std::string path) {
    Table& t = TheTable();
    std::lock_guard<std::mutex> lock(t.mutex);
    std::uint32_t index;
    if (!t.freeSlots.empty()) {
        index = t.freeSlots.back();
        t.freeSlots.pop_back();
    } else {
        index = t.used;
        const std::size_t chunk = index / kChunkSize;
        if (chunk >= kMaxChunks) return nullptr;
        if (!t.chunks[chunk].load(std::memory_order_relaxed))
            t.chunks[chunk].store(new Slot[kChunkSize], std::memory_order_release);
        ++t.used;
    }
    Slot* s = SlotAt(index);
    s->block = block;
    s->fd = fd;
    s->path = std::move(path);
    const std::uint32_t generation = static_cast<std::uint32_t>(s->word.load() >> 32);
    s->word.store(std::uint64_t{generation} << 32, std::memory_order_release);
    return MakeHandle(index, generation);
}

void Unmap(SharedBlock* block, int fd, const std::string& path) {
    if (block) ::munmap(block, sizeof(SharedBlock));
    if (fd >= 0) {
        // The last handle anywhere removes the name; the identity check keeps a file another process has
        // created since from being removed.
        struct stat mine {}, named {};
        if (!path.empty() && ::flock(fd, LOCK_EX | LOCK_NB) == 0 && ::fstat(fd, &mine) == 0 &&
            ::stat(path.c_str(), &named) == 0 && mine.st_ino == named.st_ino && mine.st_dev == named.st_dev)
            ::unlink(path.c_str());
        ::close(fd);
    }
}

// Frees a closed slot once its last use has ended, and makes its handles stale.
void Retire(std::uint32_t index, Slot* s) {
    Unmap(s->block, s->fd, s->path);
    s->block = nullptr;
    s->fd = -1;
    s->path.clear();
    const std::uint64_t generation = (s->word.load() >> 32) + 1;
    s->word.store((generation & 0xFFFFFFFFull) << 32, std::memory_order_release);
    Table& t = TheTable();
    std::lock_guard<std::mutex> lock(t.mutex);
    t.freeSlots.push_back(index);
}

// A counted use of a handle's slot: the mapping stays valid until the use ends, even if the handle is closed.
class Use {
public:
    explicit Use(void* handle) {
        const auto value = reinterpret_cast<std::uintptr_t>(handle);
        if ((value & 0xFFFFFFFFu) == 0) return;
        m_index = static_cast<std::uint32_t>((value & 0xFFFFFFFFu) - 1);
        const auto generation = static_cast<std::uint32_t>(value >> 32);
        Slot* s = SlotAt(m_index);
        if (!s) return;
        std::uint64_t w = s->word.load();
        do {
            if ((w >> 32) != generation || (w & kClosed) || (w & kUsers) == kUsers) return;
        } while (!s->word.compare_exchange_weak(w, w + 1));
        m_slot = s;
    }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    Use(Use&& o) noexcept : m_slot(o.m_slot), m_index(o.m_index) { o.m_slot = nullptr; }
    ~Use() {
        if (!m_slot) return;
        const std::uint64_t before = m_slot->word.fetch_sub(1);
        if ((before & kClosed) && (before & kUsers) == 1) Retire(m_index, m_slot);
    }
    explicit operator bool() const { return m_slot != nullptr; }
    SharedBlock* Block() const { return m_slot->block; }
    std::uint32_t Index() const { return m_index; }

private:
    Slot* m_slot = nullptr;
    std::uint32_t m_index = 0;
};

// ---- names ------------------------------------------------------------------------------------------

// The /dev/shm file for a mutex name: safe characters kept, others as %XX of their UTF-8 bytes; names too
// long for one file name are shortened and made unique with a hash of the whole name.
bool ShmPath(const wchar_t* name, std::string& path) {
    std::wstring n = name;
    for (const wchar_t* prefix : {L"Global\\", L"Local\\"})
        if (n.rfind(prefix, 0) == 0) {
            n.erase(0, std::wcslen(prefix));
            break;
        }
    if (n.find(L'\\') != std::wstring::npos) {
        Fail(ErrorPathNotFound);
        return false;
    }
    const std::string utf8 = ToUtf8(n);
    std::string encoded;
    for (unsigned char c : utf8) {
        if (std::isalnum(c) || c == '_' || c == '-' || c == '.') {
            encoded += static_cast<char>(c);
        } else {
            char hex[4];
            std::snprintf(hex, sizeof hex, "%%%02X", c);
            encoded += hex;
        }
    }
    if (encoded.size() > 200) {
        std::uint64_t h = 1469598103934665603ull;
        for (unsigned char c : utf8) h = (h ^ c) * 1099511628211ull;
        char hash[24];
        std::snprintf(hash, sizeof hash, "#%016llx", static_cast<unsigned long long>(h));
        encoded = encoded.substr(0, 160) + hash;
    }
    path = "/dev/shm/ucmtx." + encoded;
    return true;
}

bool SameFile(int fd, const std::string& path) {
    struct stat mine {}, named {};
    return ::fstat(fd, &mine) == 0 && ::stat(path.c_str(), &named) == 0 && mine.st_ino == named.st_ino &&
           mine.st_dev == named.st_dev;
}

SharedBlock* Map(int fd) {
    void* p = ::mmap(nullptr, sizeof(SharedBlock), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    return p == MAP_FAILED ? nullptr : static_cast<SharedBlock*>(p);
}

// Opens or creates the named block. On success the caller holds a shared flock on `fd`.
SharedBlock* OpenNamed(const std::string& path, int& fdOut, bool& created) {
    for (int attempt = 0; attempt < 100; ++attempt) {
        created = false;
        int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
        if (fd >= 0) {
            created = true;
        } else if (errno == EEXIST) {
            fd = ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
            if (fd < 0) {
                if (errno == ENOENT) continue;  // removed by its last closer meanwhile
                Fail(FromErrno(errno));
                return nullptr;
            }
        } else {
            Fail(FromErrno(errno));
            return nullptr;
        }
        // The creator initialises under an exclusive lock; openers wait for it with their shared one.
        SharedBlock* block = nullptr;
        if (::flock(fd, created ? LOCK_EX : LOCK_SH) == 0) {
            struct stat st {};
            bool ready = false;
            if (!created && ::fstat(fd, &st) == 0 && st.st_size >= static_cast<off_t>(sizeof(SharedBlock))) {
                block = Map(fd);
                ready = block && block->magic.load(std::memory_order_acquire) == kMagic && block->version == kVersion;
            }
            // A creator that died half-way left no usable mutex: whoever gets the file alone initialises it.
            if (!ready && (created || ::flock(fd, LOCK_EX | LOCK_NB) == 0)) {
                if (!block && ::ftruncate(fd, sizeof(SharedBlock)) == 0) block = Map(fd);
                ready = block && InitMutex(block);
            }
            if (ready && ::flock(fd, LOCK_SH) == 0 && SameFile(fd, path)) {
                fdOut = fd;
                return block;
            }
        }
        // Not usable, or its name was removed while we opened it: start again.
        if (block) ::munmap(block, sizeof(SharedBlock));
        ::close(fd);
    }
    Fail(ErrorAccessDenied);
    return nullptr;
}

// Records the calling thread as owner after an acquisition.
void Owned(SharedBlock* b) {
    if (b->owner.load(std::memory_order_relaxed) == ThisThread()) {
        ++b->depth;
    } else {
        b->owner.store(ThisThread(), std::memory_order_relaxed);
        b->depth = 1;
    }
}

WaitResult Lock(SharedBlock* b, std::uint32_t timeoutMs) {
    pthread_mutex_t* m = &b->mutex;
    int r;
    if (timeoutMs == kInfinite) {
        r = pthread_mutex_lock(m);
    } else if (timeoutMs == 0) {
        r = pthread_mutex_trylock(m);
    } else {
        timespec deadline{};
        clock_gettime(CLOCK_REALTIME, &deadline);
        deadline.tv_sec += timeoutMs / 1000;
        deadline.tv_nsec += static_cast<long>(timeoutMs % 1000) * 1000000L;
        if (deadline.tv_nsec >= 1000000000L) {
            ++deadline.tv_sec;
            deadline.tv_nsec -= 1000000000L;
        }
        r = pthread_mutex_timedlock(m, &deadline);
    }
    switch (r) {
    case 0: Owned(b); return WaitResult::Acquired;
    case EOWNERDEAD:
        // Ours now; marking it consistent lets the next owner take it normally. The dead owner's record goes.
        pthread_mutex_consistent(m);
        b->owner.store(0, std::memory_order_relaxed);
        Owned(b);
        return WaitResult::Abandoned;
    case EBUSY:
    case ETIMEDOUT: return WaitResult::Timeout;
    default: Fail(ErrorInvalidParameter); return WaitResult::Failed;
    }
}

bool Unlock(SharedBlock* b) {
    if (b->owner.load(std::memory_order_relaxed) != ThisThread()) return false;
    if (--b->depth == 0) b->owner.store(0, std::memory_order_relaxed);
    return pthread_mutex_unlock(&b->mutex) == 0;
}

}  // namespace

void* CreateMutexObject(_SECURITY_ATTRIBUTES*, bool initialOwner, const wchar_t* name) {
    SharedBlock* block = nullptr;
    int fd = -1;
    std::string path;
    bool created = true;
    if (name && *name) {
        if (std::wcslen(name) > kMaxNameLength) {
            Fail(ErrorFilenameTooLong);
            return nullptr;
        }
        if (!ShmPath(name, path)) return nullptr;
        block = OpenNamed(path, fd, created);
        if (!block) return nullptr;
    } else {
        void* p = ::mmap(nullptr, sizeof(SharedBlock), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (p == MAP_FAILED || !InitMutex(static_cast<SharedBlock*>(p))) {
            if (p != MAP_FAILED) ::munmap(p, sizeof(SharedBlock));
            Fail(ErrorNotEnoughMemory);
            return nullptr;
        }
        block = static_cast<SharedBlock*>(p);
    }
    void* handle = AddSlot(block, fd, path);
    if (!handle) {
        Unmap(block, fd, path);
        Fail(ErrorNotEnoughMemory);
        return nullptr;
    }
    if (created && initialOwner) Lock(block, kInfinite);
    t_lastError = created ? 0 : ErrorAlreadyExists;
    return handle;
}

bool CloseMutexObject(void* handle) {
    Use use(handle);
    if (!use) {
        Fail(ErrorInvalidHandle);
        return false;
    }
    Slot* s = SlotAt(use.Index());
    std::uint64_t w = s->word.load();
    while (!(w & kClosed) && !s->word.compare_exchange_weak(w, w | kClosed)) {
    }
    if (w & kClosed) {
        Fail(ErrorInvalidHandle);  // closed by another thread meanwhile
        return false;
    }
    return true;  // the slot is retired when `use`, the last use, ends
}

WaitResult WaitMutex(void* handle, std::uint32_t timeoutMs) {
    Use use(handle);
    if (!use) {
        Fail(ErrorInvalidHandle);
        return WaitResult::Failed;
    }
    return Lock(use.Block(), timeoutMs);
}

WaitResult WaitAllMutexes(void* const* handles, unsigned long count) {
    if (!handles || count == 0 || count > kMaxWaitObjects) {
        Fail(ErrorInvalidParameter);
        return WaitResult::Failed;
    }
    std::vector<Use> uses;
    uses.reserve(count);
    for (unsigned long i = 0; i < count; ++i) {
        uses.emplace_back(handles[i]);
        if (!uses.back()) {
            Fail(ErrorInvalidHandle);
            return WaitResult::Failed;
        }
        for (unsigned long j = 0; j < i; ++j)
            if (uses[j].Index() == uses[i].Index()) {
                Fail(ErrorInvalidParameter);
                return WaitResult::Failed;
            }
    }
    // Block on one mutex while holding none, then take the others without blocking; when one is busy,
    // give everything back and block on that one. No partial holding ever waits.
    bool abandoned = false;
    std::size_t first = 0;
    std::vector<std::size_t> held;
    for (;;) {
        held.clear();
        WaitResult r = Lock(uses[first].Block(), kInfinite);
        if (r == WaitResult::Failed) return r;
        abandoned |= r == WaitResult::Abandoned;
        held.push_back(first);
        std::size_t busy = count;
        for (std::size_t i = 0; i < count && busy == count; ++i) {
            if (i == first) continue;
            r = Lock(uses[i].Block(), 0);
            if (r == WaitResult::Timeout) {
                busy = i;
            } else if (r == WaitResult::Failed) {
                for (std::size_t h : held) Unlock(uses[h].Block());
                return r;
            } else {
                abandoned |= r == WaitResult::Abandoned;
                held.push_back(i);
            }
        }
        if (busy == count) return abandoned ? WaitResult::Abandoned : WaitResult::Acquired;
        for (std::size_t h : held) Unlock(uses[h].Block());
        first = busy;
    }
}

bool ReleaseMutexObject(void* handle) {
    Use use(handle);
    if (!use) {
        Fail(ErrorInvalidHandle);
        return false;
    }
    if (!Unlock(use.Block())) {
        Fail(ErrorNotOwner);
        return false;
    }
    return true;
}

unsigned long LastMutexError() { return t_lastError; }

}  // namespace uc::sync
