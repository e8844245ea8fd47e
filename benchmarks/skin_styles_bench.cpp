// Style repository speed: loading 10,000 styles (a fifth derived through base chains up to depth 5) against a bare
// XML parse of the same file, GetStyle by name per lookup, and loading one chain of growing depth (linear time).
#include <benchmark/benchmark.h>

#include <chrono>
#include <ctime>
#include <string>
#include <vector>

#include "support/style_file.h"
#include "platform/xml.h"
#include "skin/style_repository.h"

namespace {

using uc::bench::kDerived;
using uc::bench::kStyles;
using uc::bench::StyleFile;

void BM_BareParse(benchmark::State& state) {
    const std::wstring& path = StyleFile();
    for (auto _ : state) {
        zelXMLFile file;
        if (!file.open(path)) state.SkipWithError("parse failed");
        benchmark::DoNotOptimize(file.getRootElement());
    }
}
BENCHMARK(BM_BareParse)->Unit(benchmark::kMillisecond);

void BM_RepositoryLoad(benchmark::State& state) {
    const std::wstring& path = StyleFile();
    StyleRepository* repo = StyleRepository::GetInstance();
    for (auto _ : state) {
        if (!repo->LoadFile(path) || repo->GetAllStyles().size() != static_cast<std::size_t>(kStyles))
            state.SkipWithError("load failed");
    }
}
BENCHMARK(BM_RepositoryLoad)->Unit(benchmark::kMillisecond);

// Both in each iteration, reported as the ratio of load time to parse time: "load_over_parse" in elapsed time,
// "load_over_parse_cpu" in the process's processor time, which holds steady on a machine busy with other work.
void BM_LoadOverParse(benchmark::State& state) {
    using Clock = std::chrono::steady_clock;
    const std::wstring& path = StyleFile();
    StyleRepository* repo = StyleRepository::GetInstance();
    double parse = 0, load = 0;
    std::clock_t parseCpu = 0, loadCpu = 0;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        const std::clock_t c0 = std::clock();
        {
            zelXMLFile file;
            benchmark::DoNotOptimize(file.open(path));
        }
        const auto t1 = Clock::now();
        const std::clock_t c1 = std::clock();
        benchmark::DoNotOptimize(repo->LoadFile(path));
        const auto t2 = Clock::now();
        const std::clock_t c2 = std::clock();
        parse += std::chrono::duration<double>(t1 - t0).count();
        load += std::chrono::duration<double>(t2 - t1).count();
        parseCpu += c1 - c0;
        loadCpu += c2 - c1;
    }
    state.counters["load_over_parse"] = parse > 0 ? load / parse : 0;
    state.counters["load_over_parse_cpu"] = parseCpu > 0 ? static_cast<double>(loadCpu) / parseCpu : 0;
}
BENCHMARK(BM_LoadOverParse)->Unit(benchmark::kMillisecond)->Iterations(10);

// One chain: every style derives from the one before it. The reported complexity should be N (linear).
void BM_DeepChainLoad(benchmark::State& state) {
    const int depth = static_cast<int>(state.range(0));
    const std::wstring path = uc::bench::ChainFile(depth);
    StyleRepository* repo = StyleRepository::GetInstance();
    for (auto _ : state) {
        if (!repo->LoadFile(path) || repo->GetAllStyles().size() != static_cast<std::size_t>(depth))
            state.SkipWithError("load failed");
    }
    state.SetComplexityN(depth);
}
BENCHMARK(BM_DeepChainLoad)->RangeMultiplier(4)->Range(1 << 11, 1 << 17)->Complexity(benchmark::oN)->Unit(benchmark::kMillisecond);

void BM_GetStyleByName(benchmark::State& state) {
    StyleRepository* repo = StyleRepository::GetInstance();
    if (!repo->LoadFile(StyleFile())) state.SkipWithError("load failed");
    std::vector<std::wstring> names;
    for (int i = 0; i < 1024; ++i)
        names.push_back(i % 5 == 0 ? L"derived" + std::to_wstring((i * 7) % kDerived)
                                   : L"base" + std::to_wstring((i * 131) % (kStyles - kDerived)));
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(repo->GetStyle(names[i++ & 1023].c_str()));
    }
}
BENCHMARK(BM_GetStyleByName);

}  // namespace
