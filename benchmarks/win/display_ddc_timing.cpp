// Display control against the simulated vendor libraries under Windows (Wine), with the real pauses: Get and Set
// VCP over their 70 ms / 50 ms protocol floor through NVAPI and ADL, and LocateDevices with 1, 4 and 16 monitors
// over its probes' pauses. Plain timing program (no Google Benchmark for MinGW); run it by hand, from its folder's
// copies of the simulated libraries:
//   WINEDLLOVERRIDES="nvapi,nvapi64,atiadlxx,atiadlxy=n" scripts/wine-run.sh build/win64/benchmarks/win/display_ddc_timing.exe
#include <windows.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "display/ddc_control.h"
#include "display/vendor_records.h"
#include "display/win/ati_i2c_driver.h"
#include "display/win/nvidia_i2c_driver.h"
#include "platform/clock.h"
#include "platform/dynamic_library.h"
#include "platform/paths.h"

namespace {
using Clock = std::chrono::steady_clock;

// Mean milliseconds of `rounds` calls of `op`.
template <class Op>
double Mean(int rounds, Op op) {
    const Clock::time_point start = Clock::now();
    for (int i = 0; i < rounds; ++i) op();
    return std::chrono::duration<double, std::milli>(Clock::now() - start).count() / rounds;
}

void Report(const char* what, double mean, double floor) {
    std::printf("%-34s %8.2f ms  floor %6.1f ms  %+6.2f %% over\n", what, mean, floor, (mean - floor) / floor * 100.0);
}

bool Configure(const wchar_t* library, const std::string& text) {
    uc::DynamicLibrary sim(library);
    auto configure = sim.Resolve<int (*)(const char*, char*, int)>("UcDisplaySim_Configure");
    char error[256] = {};
    return configure && configure(text.c_str(), error, sizeof error) == 1;
}

// Get and Set interleaved with the same pauses slept bare on the same clock, so load touches all alike: what
// they add beyond the bare pauses is the library's cost, what the bare pauses add beyond the floor the system's.
template <class Driver>
void GetAndSet(const char* name, Driver& driver, int rounds) {
    if (driver.Enumerate() != 1) {
        std::printf("%s: the simulated monitor was not found\n", name);
        return;
    }
    std::uint8_t maximum = 0, current = 0, value = 0;
    double get = 0, bareGet = 0, set = 0, bareSet = 0;
    for (int i = 0; i < rounds; ++i) {
        get += Mean(1, [&] { driver.GetVCP(0, 0x10, maximum, current); });
        bareGet += Mean(1, [] {
            uc::Clock::System().SleepFor(uc::Millis(40));
            uc::Clock::System().SleepFor(uc::Millis(30));
        });
        set += Mean(1, [&] { driver.SetVCP(0, 0x10, value++ % 100); });
        bareSet += Mean(1, [] { uc::Clock::System().SleepFor(uc::Millis(50)); });
    }
    Report((std::string(name) + " Get VCP").c_str(), get / rounds, 70);
    Report((std::string(name) + " bare Get pauses").c_str(), bareGet / rounds, 70);
    std::printf("%-34s %+6.2f %%\n", (std::string(name) + " Get over bare pauses").c_str(), (get - bareGet) / bareGet * 100);
    Report((std::string(name) + " Set VCP").c_str(), set / rounds, 50);
    Report((std::string(name) + " bare Set pause").c_str(), bareSet / rounds, 50);
    std::printf("%-34s %+6.2f %%\n", (std::string(name) + " Set over bare pause").c_str(), (set - bareSet) / bareSet * 100);
}
}  // namespace

int main(int argc, char** argv) {
    if (const char* marker = std::getenv("UC_RUN_MARKER"); marker && *marker)
        if (std::FILE* f = std::fopen(marker, "w")) {
            std::fputs("started\n", f);
            std::fclose(f);
        }
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 20;
    if (rounds < 1) return 2;
    // Each library keeps its configuration while this program holds it.
    uc::DynamicLibrary holdNvapi(uc::display::nvapi::LibraryName), holdAdl(uc::display::adl::LibraryName);
    if (!Configure(uc::display::nvapi::LibraryName, "[monitor]\n") || !Configure(uc::display::adl::LibraryName, "[monitor]\ncard = amd\n")) {
        std::fprintf(stderr, "the simulated libraries are not beside this program\n");
        return 1;
    }
    {
        NvidiaI2CDriver nvidia;
        GetAndSet("NVAPI", nvidia, rounds);
        ATII2CDriver ati;
        GetAndSet("ADL", ati, rounds);
    }
    utilsExam::SetDevMode(true);  // probes only
    for (int monitors : {1, 4, 16}) {
        Configure(uc::display::nvapi::LibraryName, "[monitor]\ncount = " + std::to_string(monitors) + "\n");
        Configure(uc::display::adl::LibraryName, "");
        const double mean = Mean(3, [] { DDCControl::LocateDevices(false); });
        if (DDCControl::GetNumDevices() != static_cast<unsigned>(monitors)) std::printf("monitors missing\n");
        Report(("LocateDevices, " + std::to_string(monitors) + " monitors").c_str(), mean, 70.0 * monitors);
    }
    DDCControl::Destroy();
    return 0;
}
