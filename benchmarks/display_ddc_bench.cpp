// Display control against simulated monitors on the i2c-dev driver, with the real pauses: Get and Set VCP over
// their 70 ms / 50 ms protocol floor, and LocateDevices with 1, 4 and 16 monitors over its probes' pauses.
#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>
#include <string>

#include "display/ddc_control.h"
#include "display/i2c_bus_driver.h"
#include "display/simulator/simulated_i2c_bus.h"
#include "platform/paths.h"

namespace {
namespace sim = uc::display::sim;
using Clock = std::chrono::steady_clock;

std::unique_ptr<I2cBusDriver> Driver(int monitors) {
    sim::SimulationConfig config;
    std::string error;
    sim::ParseSimulationConfig("[monitor]\ncount = " + std::to_string(monitors) + "\n", config, error);
    return std::make_unique<I2cBusDriver>(std::make_unique<sim::SimulatedI2cProvider>(config));
}

// Runs `op` per iteration and reports how far the mean lies above `floorMs`, in per cent of it.
template <class Op>
void Overhead(benchmark::State& state, double floorMs, Op op) {
    const Clock::time_point start = Clock::now();
    for (auto _ : state) op();
    const double mean = std::chrono::duration<double, std::milli>(Clock::now() - start).count() /
                        static_cast<double>(state.iterations());
    state.counters["floor_ms"] = floorMs;
    state.counters["over_floor_pct"] = (mean - floorMs) / floorMs * 100.0;
}

// Get, Set and the same pauses slept bare on the same clock, interleaved in one loop so that load on the machine
// touches all four alike. What Get and Set add beyond their bare pauses is the library's (and the simulated
// bus's) own cost; what the bare pauses add beyond the floor is the system's wake-up latency.
void BM_GetSetInterleaved(benchmark::State& state) {
    auto driver = Driver(1);
    driver->Enumerate();
    std::uint8_t maximum = 0, current = 0, value = 0;
    double get = 0, bareGet = 0, set = 0, bareSet = 0;
    auto timed = [](double& total, auto op) {
        const Clock::time_point t = Clock::now();
        op();
        total += std::chrono::duration<double, std::milli>(Clock::now() - t).count();
    };
    for (auto _ : state) {
        timed(get, [&] { benchmark::DoNotOptimize(driver->GetVCP(0, 0x10, maximum, current)); });
        timed(bareGet, [] {
            uc::Clock::System().SleepFor(uc::Millis(40));
            uc::Clock::System().SleepFor(uc::Millis(30));
        });
        timed(set, [&] { benchmark::DoNotOptimize(driver->SetVCP(0, 0x10, value++ % 100)); });
        timed(bareSet, [] { uc::Clock::System().SleepFor(uc::Millis(50)); });
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["get_ms"] = get / n;
    state.counters["get_over_floor_pct"] = (get / n - 70.0) / 70.0 * 100.0;
    state.counters["get_over_bare_pct"] = (get - bareGet) / bareGet * 100.0;
    state.counters["set_ms"] = set / n;
    state.counters["set_over_floor_pct"] = (set / n - 50.0) / 50.0 * 100.0;
    state.counters["set_over_bare_pct"] = (set - bareSet) / bareSet * 100.0;
}
BENCHMARK(BM_GetSetInterleaved)->UseRealTime()->Iterations(30)->Unit(benchmark::kMillisecond);

// In developer mode LocateDevices sends nothing but one brightness probe (70 ms of pauses) per monitor.
void BM_LocateDevices(benchmark::State& state) {
    const int monitors = static_cast<int>(state.range(0));
    DDCDriverFactory factory;
    factory.nvidia = [monitors] { return Driver(monitors); };
    DDCControl::SetDriverFactory(factory);
    utilsExam::SetDevMode(true);
    Overhead(state, 70.0 * monitors, [&] {
        DDCControl::LocateDevices(false);
        if (DDCControl::GetNumDevices() != static_cast<unsigned>(monitors)) state.SkipWithError("monitors missing");
    });
    DDCControl::Destroy();
    DDCControl::SetDriverFactory(DDCDriverFactory::PlatformDefault());
    utilsExam::SetDevMode(false);
}
BENCHMARK(BM_LocateDevices)->Arg(1)->Arg(4)->Arg(16)->UseRealTime()->Iterations(5)->Unit(benchmark::kMillisecond);

}  // namespace
