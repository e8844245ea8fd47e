// Lock costs: uncontended CMutexLock beside a bare wait/release, hand-over between processes, the priority scheme's effect.
#include <benchmark/benchmark.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <ctime>
#include <vector>

#include "system/custom_mutex.h"
#include "system/mutex_backend.h"

namespace {
using Clock = std::chrono::steady_clock;
using uc::sync::WaitResult;

// This thread's CPU time in ns: time the thread spends preempted on a loaded machine does not count.
double ThreadNs() {
    timespec t{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) * 1e9 + static_cast<double>(t.tv_nsec);
}

std::wstring BenchName(const wchar_t* tag) {
    return L"uc-bench-" + std::to_wstring(::getpid()) + L"-" + tag;
}

// One loop, three ways of taking and releasing the same kind of mutex, interleaved in batches so that they
// share the machine's state: the raw pthread calls on a robust process-shared mutex of this process, the
// library's bare wait/release on a named mutex (what WaitForSingleObject/ReleaseMutex are on Windows), and
// the CMutexLock guard over that named mutex. The counters are per acquire/release pair, in thread CPU time.
void BM_UncontendedAcquireRelease(benchmark::State& state) {
    pthread_mutexattr_t attr;
    pthread_mutexattr_init(&attr);
    pthread_mutexattr_setpshared(&attr, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attr, PTHREAD_MUTEX_ROBUST);
    pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_t raw;
    pthread_mutex_init(&raw, &attr);
    CCustomMutex m;
    if (!m.Create(nullptr, 0, BenchName(L"uncontended").c_str())) {
        state.SkipWithError("no mutex");
        return;
    }
    void* h = m.GetHandle();
    constexpr long kBatch = 2000;
    double rawNs = 0, bareNs = 0, lockNs = 0;
    long batches = 0;
    for (auto _ : state) {
        double t = ThreadNs();
        for (long i = 0; i < kBatch; ++i) {
            pthread_mutex_lock(&raw);
            pthread_mutex_unlock(&raw);
        }
        rawNs += (ThreadNs() - t) / kBatch;
        t = ThreadNs();
        for (long i = 0; i < kBatch; ++i) {
            uc::sync::WaitMutex(h);
            uc::sync::ReleaseMutexObject(h);
        }
        bareNs += (ThreadNs() - t) / kBatch;
        t = ThreadNs();
        for (long i = 0; i < kBatch; ++i) {
            CMutexLock lock(m);
            benchmark::DoNotOptimize(lock.IsValid());
        }
        lockNs += (ThreadNs() - t) / kBatch;
        ++batches;
    }
    state.counters["raw_pthread_ns"] = rawNs / batches;
    state.counters["bare_wait_release_ns"] = bareNs / batches;
    state.counters["CMutexLock_ns"] = lockNs / batches;
    state.counters["lock_over_bare"] = lockNs / bareNs;
    state.counters["bare_over_raw"] = bareNs / rawNs;
    pthread_mutex_destroy(&raw);
}
BENCHMARK(BM_UncontendedAcquireRelease)->Iterations(300)->Unit(benchmark::kMicrosecond);

// Hand-over between two processes: the child waits on the named mutex the parent holds; the time from the
// parent's release to the child's acquisition, per hand-over.
void BM_HandOverBetweenProcesses(benchmark::State& state) {
    const std::wstring name = BenchName(L"handover");
    CCustomMutex m;
    if (!m.Create(nullptr, 0, name.c_str())) {
        state.SkipWithError("no mutex");
        return;
    }
    struct Shared {
        std::atomic<long long> releasedAt;
        std::atomic<long long> latencyNs;
    };
    auto* shared = static_cast<Shared*>(::mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
    int go[2], ready[2];
    if (shared == MAP_FAILED || ::pipe(go) != 0 || ::pipe(ready) != 0) {
        state.SkipWithError("no pipes");
        return;
    }
    const pid_t child = ::fork();
    if (child == 0) {
        CCustomMutex mine;
        mine.Create(nullptr, 0, name.c_str());
        char c;
        while (::read(go[0], &c, 1) == 1 && c == 'g') {
            (void)!::write(ready[1], "r", 1);
            uc::sync::WaitMutex(mine.GetHandle());
            shared->latencyNs = Clock::now().time_since_epoch().count() - shared->releasedAt.load();
            uc::sync::ReleaseMutexObject(mine.GetHandle());
            (void)!::write(ready[1], "d", 1);
        }
        ::_exit(0);
    }
    std::vector<double> latencies;
    for (auto _ : state) {
        uc::sync::WaitMutex(m.GetHandle());
        char c;
        (void)!::write(go[1], "g", 1);
        (void)!::read(ready[0], &c, 1);
        // Give the child time to block in its wait (outside the measured interval).
        std::this_thread::sleep_for(std::chrono::microseconds(300));
        shared->releasedAt = Clock::now().time_since_epoch().count();
        uc::sync::ReleaseMutexObject(m.GetHandle());
        (void)!::read(ready[0], &c, 1);
        const double ns = static_cast<double>(shared->latencyNs.load());
        latencies.push_back(ns);
        state.SetIterationTime(ns / 1e9);
    }
    (void)!::write(go[1], "q", 1);
    ::waitpid(child, nullptr, 0);
    std::sort(latencies.begin(), latencies.end());
    state.counters["median_us"] = latencies[latencies.size() / 2] / 1000.0;
    state.counters["p99_us"] = latencies[latencies.size() * 99 / 100] / 1000.0;
    ::munmap(shared, sizeof(Shared));
}
BENCHMARK(BM_HandOverBetweenProcesses)->Iterations(500)->UseManualTime()->Unit(benchmark::kMicrosecond);

// An ordinary locker's wait for a mutex that `priority` threads keep taking with CPriorityLock (each holds it
// for 200 µs, then lets go). An ordinary locker that finds a priority locker waiting polls every 10 ms, so
// its latency jumps to that floor as soon as two priority lockers overlap.
void BM_OrdinaryLatencyUnderPriorityLockers(benchmark::State& state) {
    const int priorityThreads = static_cast<int>(state.range(0));
    CCustomMutex m;
    if (!m.Create(nullptr, 0, nullptr)) {
        state.SkipWithError("no mutex");
        return;
    }
    std::atomic<bool> stop{false};
    std::vector<std::thread> lockers;
    for (int i = 0; i < priorityThreads; ++i)
        lockers.emplace_back([&] {
            while (!stop) {
                CPriorityLock p(m);
                const auto until = Clock::now() + std::chrono::microseconds(200);
                while (Clock::now() < until) {
                }
            }
        });
    std::vector<double> waits;
    for (auto _ : state) {
        const auto t = Clock::now();
        {
            CMutexLock o(m);
            waits.push_back(std::chrono::duration<double, std::micro>(Clock::now() - t).count());
        }
        std::this_thread::sleep_for(std::chrono::microseconds(500));
    }
    stop = true;
    for (auto& l : lockers) l.join();
    std::sort(waits.begin(), waits.end());
    double sum = 0;
    for (double w : waits) sum += w;
    state.counters["mean_wait_us"] = sum / static_cast<double>(waits.size());
    state.counters["median_wait_us"] = waits[waits.size() / 2];
    state.counters["max_wait_us"] = waits.back();
}
BENCHMARK(BM_OrdinaryLatencyUnderPriorityLockers)->Arg(0)->Arg(1)->Arg(2)->Iterations(200)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
