// Round trip of GetBatteryStatus against the simulated module over a pty, beside a bare write-then-read of the same bytes.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <chrono>
#include <vector>

#include "platform/serial/port_map.h"
#include "platform/serial/posix/pty.h"
#include "platform/text.h"
#include "power/battery_connection.h"
#include "power/battery_protocol.h"
#include "power/simulator/battery_simulator.h"
#include "power/simulator/simulator_host.h"

namespace {
namespace bp = uc::power::battery;

// Reads until `count` bytes have arrived on `fd` (the bytes themselves are not needed).
void ReadAll(int fd, std::size_t count) {
    unsigned char buffer[256];
    std::size_t got = 0;
    while (got < count) {
        pollfd p{fd, POLLIN, 0};
        ::poll(&p, 1, 1000);
        const ssize_t n = ::read(fd, buffer, sizeof buffer);
        if (n > 0) got += static_cast<std::size_t>(n);
    }
}

// The baseline: the same 4 command bytes and 43 reply bytes through one pty pair, on one thread.
void BM_BareWriteThenRead(benchmark::State& state) {
    uc::serial::PtyPair pair;
    if (!uc::serial::OpenPty(pair)) {
        state.SkipWithError("no pty");
        return;
    }
    const std::vector<unsigned char> command = bp::EncodeCommand(bp::StatusCommand);
    const std::vector<unsigned char> reply = bp::EncodeReply(bp::StatusReply, std::vector<unsigned char>(39, 0x11));
    for (auto _ : state) {
        (void)!::write(pair.slave.get(), command.data(), command.size());
        ReadAll(pair.master.get(), command.size());
        (void)!::write(pair.master.get(), reply.data(), reply.size());
        ReadAll(pair.slave.get(), reply.size());
    }
}
BENCHMARK(BM_BareWriteThenRead)->UseRealTime()->Unit(benchmark::kMicrosecond);

// A bare client of the simulator: the same bytes written to and read from the simulator's pty on one
// thread, without the connection's receiving thread, reply list or event.
void BM_BareClientOfTheSimulator(benchmark::State& state) {
    uc::power::sim::BatteryModuleSimulator module;
    uc::power::sim::SimulatorHost host(module);
    if (!host.StartPty()) {
        state.SkipWithError("no pty");
        return;
    }
    uc::UniqueFd fd(::open(uc::ToUtf8(host.DevicePath()).c_str(), O_RDWR | O_NOCTTY));
    const std::vector<unsigned char> command = bp::EncodeCommand(bp::StatusCommand);
    unsigned char buffer[256];
    for (auto _ : state) {
        (void)!::write(fd.get(), command.data(), command.size());
        std::size_t got = 0;
        while (got < 43) {
            const ssize_t n = ::read(fd.get(), buffer, sizeof buffer);
            if (n <= 0) break;
            got += static_cast<std::size_t>(n);
        }
    }
}
BENCHMARK(BM_BareClientOfTheSimulator)->UseRealTime()->Unit(benchmark::kMicrosecond);

// The product path: framing, the simulator's reader, the connection's receiving thread, the waiter's event.
void BM_GetBatteryStatus(benchmark::State& state) {
    uc::power::sim::BatteryModuleSimulator module;
    uc::power::sim::SimulatorHost host(module);
    if (!host.StartPty()) {
        state.SkipWithError("no pty");
        return;
    }
    uc::serial::MapPort(90, host.DevicePath());
    BatteryConnection link;
    if (!link.Open(90, 38400)) {
        state.SkipWithError("cannot open the simulator's port");
        return;
    }
    BatteryStatus status;
    for (auto _ : state)
        if (!link.GetBatteryStatus(status)) state.SkipWithError("no reply");
}
BENCHMARK(BM_GetBatteryStatus)->UseRealTime()->Unit(benchmark::kMicrosecond);

// The three round trips interleaved in one loop, so machine noise hits them alike; the counters are
// the ratios of GetBatteryStatus to each baseline over the whole run.
void BM_InterleavedRatios(benchmark::State& state) {
    using Clock = std::chrono::steady_clock;
    uc::power::sim::BatteryModuleSimulator moduleA, moduleB;
    uc::power::sim::SimulatorHost hostA(moduleA), hostB(moduleB);
    uc::serial::PtyPair pair;
    if (!hostA.StartPty() || !hostB.StartPty() || !uc::serial::OpenPty(pair)) {
        state.SkipWithError("no pty");
        return;
    }
    uc::serial::MapPort(92, hostA.DevicePath());
    BatteryConnection link;
    uc::UniqueFd bare(::open(uc::ToUtf8(hostB.DevicePath()).c_str(), O_RDWR | O_NOCTTY));
    if (!link.Open(92, 38400) || !bare) {
        state.SkipWithError("cannot open the simulators' ports");
        return;
    }
    const std::vector<unsigned char> command = bp::EncodeCommand(bp::StatusCommand);
    const std::vector<unsigned char> reply = bp::EncodeReply(bp::StatusReply, std::vector<unsigned char>(39, 0x11));
    Clock::duration viaLink{}, viaBareClient{}, viaWriteRead{};
    BatteryStatus status;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        if (!link.GetBatteryStatus(status)) state.SkipWithError("no reply");
        const auto t1 = Clock::now();
        (void)!::write(bare.get(), command.data(), command.size());
        ReadAll(bare.get(), reply.size());
        const auto t2 = Clock::now();
        (void)!::write(pair.slave.get(), command.data(), command.size());
        ReadAll(pair.master.get(), command.size());
        (void)!::write(pair.master.get(), reply.data(), reply.size());
        ReadAll(pair.slave.get(), reply.size());
        const auto t3 = Clock::now();
        viaLink += t1 - t0;
        viaBareClient += t2 - t1;
        viaWriteRead += t3 - t2;
    }
    const double n = static_cast<double>(state.iterations());
    state.counters["status_us"] = std::chrono::duration<double, std::micro>(viaLink).count() / n;
    state.counters["bare_client_us"] = std::chrono::duration<double, std::micro>(viaBareClient).count() / n;
    state.counters["write_read_us"] = std::chrono::duration<double, std::micro>(viaWriteRead).count() / n;
    state.counters["ratio_to_bare_client"] =
        std::chrono::duration<double>(viaLink).count() / std::chrono::duration<double>(viaBareClient).count();
    state.counters["ratio_to_write_read"] =
        std::chrono::duration<double>(viaLink).count() / std::chrono::duration<double>(viaWriteRead).count();
}
BENCHMARK(BM_InterleavedRatios)->UseRealTime()->Unit(benchmark::kMicrosecond);

}  // namespace
