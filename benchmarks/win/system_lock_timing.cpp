// Lock timings of the Windows builds: uncontended CMutexLock beside WaitForSingleObject/ReleaseMutex, and hand-over between processes.
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "system/custom_mutex.h"

// Run by hand under Wine: `system_lock_timing.exe` prints both figures; it starts itself again with "child"
// for the second process of the hand-over.
namespace {

double Now() {
    static LARGE_INTEGER frequency = [] {
        LARGE_INTEGER f;
        ::QueryPerformanceFrequency(&f);
        return f;
    }();
    LARGE_INTEGER t;
    ::QueryPerformanceCounter(&t);
    return static_cast<double>(t.QuadPart) * 1e9 / static_cast<double>(frequency.QuadPart);
}

struct Shared {
    volatile double releasedAt;
    volatile double latencyNs;
};

std::wstring Name(const wchar_t* tag) { return L"uc-timing-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + tag; }

// The fastest of many interleaved batches, per acquire/release pair: the minimum leaves out preemption.
void Uncontended() {
    CCustomMutex m;
    m.Create(nullptr, FALSE, Name(L"uncontended").c_str());
    HANDLE h = m.GetHandle();
    constexpr int kBatch = 500, kBatches = 200;
    double bare = 1e18, guarded = 1e18;
    for (int b = 0; b < kBatches; ++b) {
        double t = Now();
        for (int i = 0; i < kBatch; ++i) {
            ::WaitForSingleObject(h, INFINITE);
            ::ReleaseMutex(h);
        }
        bare = std::min(bare, (Now() - t) / kBatch);
        t = Now();
        for (int i = 0; i < kBatch; ++i) {
            CMutexLock lock(m);
        }
        guarded = std::min(guarded, (Now() - t) / kBatch);
    }
    std::printf("uncontended: WaitForSingleObject+ReleaseMutex %.0f ns, CMutexLock %.0f ns, ratio %.3f\n", bare, guarded,
                guarded / bare);
}

void HandOver(const wchar_t* self) {
    const std::wstring base = Name(L"handover");
    CCustomMutex m;
    m.Create(nullptr, FALSE, base.c_str());
    HANDLE go = ::CreateEventW(nullptr, FALSE, FALSE, (base + L"-go").c_str());
    HANDLE ready = ::CreateEventW(nullptr, FALSE, FALSE, (base + L"-ready").c_str());
    HANDLE done = ::CreateEventW(nullptr, FALSE, FALSE, (base + L"-done").c_str());
    HANDLE mapping = ::CreateFileMappingW(INVALID_HANDLE_VALUE, nullptr, PAGE_READWRITE, 0, sizeof(Shared), (base + L"-shm").c_str());
    auto* shared = static_cast<Shared*>(::MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(Shared)));
    std::wstring command = L"\"" + std::wstring(self) + L"\" child " + base;
    STARTUPINFOW si{};
    si.cb = sizeof si;
    PROCESS_INFORMATION pi{};
    if (!shared || !::CreateProcessW(self, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &si, &pi)) {
        std::printf("hand-over: cannot start the second process\n");
        return;
    }
    std::vector<double> latencies;
    for (int i = 0; i < 300; ++i) {
        ::WaitForSingleObject(m.GetHandle(), INFINITE);
        ::SetEvent(go);
        ::WaitForSingleObject(ready, INFINITE);
        ::Sleep(1);  // the child is now blocked in its wait
        shared->releasedAt = Now();
        ::ReleaseMutex(m.GetHandle());
        ::WaitForSingleObject(done, INFINITE);
        latencies.push_back(static_cast<double>(shared->latencyNs));
    }
    shared->releasedAt = -1;
    ::SetEvent(go);
    ::WaitForSingleObject(pi.hProcess, INFINITE);
    std::sort(latencies.begin(), latencies.end());
    std::printf("hand-over between processes: median %.1f us, p99 %.1f us (%zu hand-overs)\n", latencies[latencies.size() / 2] / 1000,
                latencies[latencies.size() * 99 / 100] / 1000, latencies.size());
}

int Child(const std::wstring& base) {
    CCustomMutex m;
    m.Create(nullptr, FALSE, base.c_str());
    HANDLE go = ::OpenEventW(EVENT_ALL_ACCESS, FALSE, (base + L"-go").c_str());
    HANDLE ready = ::OpenEventW(EVENT_ALL_ACCESS, FALSE, (base + L"-ready").c_str());
    HANDLE done = ::OpenEventW(EVENT_ALL_ACCESS, FALSE, (base + L"-done").c_str());
    HANDLE mapping = ::OpenFileMappingW(FILE_MAP_ALL_ACCESS, FALSE, (base + L"-shm").c_str());
    auto* shared = static_cast<Shared*>(::MapViewOfFile(mapping, FILE_MAP_ALL_ACCESS, 0, 0, sizeof(Shared)));
    if (!go || !ready || !done || !shared) return 1;
    for (;;) {
        ::WaitForSingleObject(go, INFINITE);
        if (shared->releasedAt < 0) return 0;
        ::SetEvent(ready);
        ::WaitForSingleObject(m.GetHandle(), INFINITE);
        shared->latencyNs = Now() - shared->releasedAt;
        ::ReleaseMutex(m.GetHandle());
        ::SetEvent(done);
    }
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
    if (argc == 3 && std::wstring(argv[1]) == L"child") return Child(argv[2]);
    Uncontended();
    HandOver(argv[0]);
    return 0;
}
