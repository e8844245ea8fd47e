// Throughput of the battery frame parser on a long buffer of mixed garbage and frames, and of the UPS reply cutter.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "platform/serial/circular_buffer.h"
#include "power/battery_protocol.h"
#include "power/ups_protocol.h"

namespace {
namespace bp = uc::power::battery;

// About a third garbage (false start bytes included), the rest status and ping replies.
std::vector<unsigned char> MixedStream(std::size_t size) {
    std::mt19937 rng(42);
    std::vector<unsigned char> out;
    const std::vector<unsigned char> status = bp::EncodeReply(bp::StatusReply, std::vector<unsigned char>(39, 0x5A));
    const std::vector<unsigned char> ping = bp::EncodeReply(bp::PingReply, {0});
    while (out.size() < size) {
        switch (rng() % 3) {
            case 0: {
                const int n = 1 + static_cast<int>(rng() % 16);
                for (int i = 0; i < n; ++i) out.push_back(static_cast<unsigned char>(rng()));
                break;
            }
            case 1: out.insert(out.end(), status.begin(), status.end()); break;
            default: out.insert(out.end(), ping.begin(), ping.end()); break;
        }
    }
    out.resize(size);
    return out;
}

void BM_BatteryFrameParser(benchmark::State& state) {
    const std::vector<unsigned char> stream = MixedStream(static_cast<std::size_t>(state.range(0)));
    CCircularBuffer buffer(static_cast<unsigned>(stream.size()));
    std::size_t frames = 0;
    for (auto _ : state) {
        buffer.Clear();
        buffer.Write(stream.data(), static_cast<unsigned>(stream.size()));
        bp::Frame frame;
        for (;;) {
            const bp::ParseResult r = bp::ExtractFrame(buffer, bp::ReplyStart, bp::ReplyEnd, frame);
            if (r == bp::ParseResult::Frame) ++frames;
            // After a damaged frame the link waits for more data; here the next call goes on at once.
            if (r == bp::ParseResult::NeedMore) break;
        }
    }
    benchmark::DoNotOptimize(frames);
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
    state.counters["frames"] = benchmark::Counter(static_cast<double>(frames), benchmark::Counter::kAvgIterations);
}
BENCHMARK(BM_BatteryFrameParser)->Arg(64 << 10)->Arg(1 << 20);

void BM_UpsReplyCutter(benchmark::State& state) {
    std::string stream;
    for (int i = 0; stream.size() < 64 * 1024; ++i) stream += std::to_string(i % 101) + "\r";
    CCircularBuffer buffer(static_cast<unsigned>(stream.size()));
    for (auto _ : state) {
        buffer.Clear();
        buffer.Write(reinterpret_cast<const unsigned char*>(stream.data()), static_cast<unsigned>(stream.size()));
        unsigned char reply[4];
        unsigned size = 0;
        while (uc::power::ups::TakeReply(buffer, 3, reply, size) == uc::power::ups::ReplyResult::Reply) {
        }
        benchmark::DoNotOptimize(size);
    }
    state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * stream.size()));
}
BENCHMARK(BM_UpsReplyCutter);

}  // namespace
