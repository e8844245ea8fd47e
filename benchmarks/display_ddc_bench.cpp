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

void BM_GetVcp(benchmark::State& state) {
    auto driver = Driver(1);
    driver->Enumerate();
    std::uint8_t maximum = 0, current = 0;
    Overhead(state, 70.0, [&] { benchmark::DoNotOptimize(driver->GetVCP(0, 0x10, maximum, current)); });
}
BENCHMARK(BM_GetVcp)->UseRealTime()->Iterations(30)->Unit(benchmark::kMillisecond);

void BM_SetVcp(benchmark::State& state) {
    auto driver = Driver(1);
    driver->Enumerate();
    std::uint8_t value = 0;
    Overhead(state, 50.0, [&] { benchmark::DoNotOptimize(driver->SetVCP(0, 0x10, value++ % 100)); });
}
BENCHMARK(BM_SetVcp)->UseRealTime()->Iterations(30)->Unit(benchmark::kMillisecond);

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
