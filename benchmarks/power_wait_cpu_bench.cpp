// CPU used while a caller is blocked in WaitForAcknowledge for its full 2 s with the port open and silent.
#include <benchmark/benchmark.h>
#include <time.h>

#include "platform/serial/port_map.h"
#include "power/battery_connection.h"
#include "power/simulator/battery_simulator.h"
#include "power/simulator/simulator_host.h"

namespace {

double ProcessCpuSeconds() {
    timespec ts{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &ts);
    return static_cast<double>(ts.tv_sec) + static_cast<double>(ts.tv_nsec) * 1e-9;
}

class Silent : public BatteryConnection {
public:
    bool Wait() {
        unsigned char length = 0, data[255];
        return WaitForAcknowledge(0x2E, length, data, 2000);
    }
};

// Reports the waiting thread's CPU time (the benchmark's cpu column) and the whole process's
// (process_cpu_ms, which includes the receiving thread and the simulator's threads).
void BM_BlockedWaitTwoSeconds(benchmark::State& state) {
    uc::power::sim::BatteryModuleSimulator module;
    uc::power::sim::SimulatorHost host(module);
    if (!host.StartPty()) {
        state.SkipWithError("no pty");
        return;
    }
    uc::serial::MapPort(91, host.DevicePath());
    Silent link;
    if (!link.Open(91, 38400)) {
        state.SkipWithError("cannot open the simulator's port");
        return;
    }
    double processCpu = 0;
    for (auto _ : state) {
        const double before = ProcessCpuSeconds();
        if (link.Wait()) state.SkipWithError("a reply appeared from nowhere");
        processCpu += ProcessCpuSeconds() - before;
    }
    state.counters["process_cpu_ms"] =
        benchmark::Counter(processCpu * 1000.0, benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_BlockedWaitTwoSeconds)->Iterations(2)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace
