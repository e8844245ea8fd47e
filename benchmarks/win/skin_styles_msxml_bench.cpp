// Style repository speed over the Windows XML back-end (MSXML): load time as a ratio to a bare parse of the same
// file, measured interleaved in one run, and GetStyle by name per lookup. Google Benchmark is not built for
// MinGW, so this is a plain timing loop; run it by hand under Wine:
//   scripts/wine-run.sh build/win64/benchmarks/win/skin_styles_msxml_bench.exe [ROUNDS]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "../support/run_marker.h"
#include "../support/style_file.h"
#include "platform/xml.h"
#include "skin/style_repository.h"

namespace {
using Clock = std::chrono::steady_clock;
double Seconds(Clock::time_point a, Clock::time_point b) { return std::chrono::duration<double>(b - a).count(); }
}  // namespace

int main(int argc, char** argv) {
    uc::bench::WriteRunMarker();
    const int rounds = argc > 1 ? std::atoi(argv[1]) : 5;
    if (rounds < 1) {
        std::fprintf(stderr, "usage: skin_styles_msxml_bench [ROUNDS >= 1]\n");
        return 2;
    }

    const std::wstring& path = uc::bench::StyleFile();
    StyleRepository* repo = StyleRepository::GetInstance();
    {
        zelXMLFile warm;
        if (!warm.open(path) || !repo->LoadFile(path)) {
            std::fprintf(stderr, "the generated style file could not be read\n");
            return 1;
        }
    }

    double parse = 0, load = 0;
    for (int r = 0; r < rounds; ++r) {
        const auto t0 = Clock::now();
        {
            zelXMLFile file;
            if (!file.open(path)) return 1;
        }
        const auto t1 = Clock::now();
        const bool loaded = repo->LoadFile(path);
        const auto t2 = Clock::now();
        if (!loaded || repo->GetAllStyles().size() != static_cast<std::size_t>(uc::bench::kStyles)) {
            std::fprintf(stderr, "round %d: the repository did not load every style\n", r);
            return 1;
        }
        parse += Seconds(t0, t1);
        load += Seconds(t1, t2);
        std::printf("round %d: bare parse %.1f ms, repository load %.1f ms\n", r, Seconds(t0, t1) * 1e3,
                    Seconds(t1, t2) * 1e3);
    }
    std::printf("load over parse: %.2f (%d rounds, %d styles)\n", load / parse, rounds, uc::bench::kStyles);

    std::vector<std::wstring> names;
    for (int i = 0; i < 1024; ++i)
        names.push_back(i % 5 == 0 ? L"derived" + std::to_wstring((i * 7) % uc::bench::kDerived)
                                   : L"base" + std::to_wstring((i * 131) % (uc::bench::kStyles - uc::bench::kDerived)));
    constexpr int kLookups = 2'000'000;
    std::size_t found = 0;
    const auto l0 = Clock::now();
    for (int i = 0; i < kLookups; ++i) found += repo->GetStyle(names[i & 1023].c_str()) != nullptr;
    const auto l1 = Clock::now();
    std::printf("GetStyle(name): %.0f ns per lookup (%zu of %d found)\n", Seconds(l0, l1) * 1e9 / kLookups, found,
                kLookups);
    StyleRepository::DestroyInstance();
    return found == static_cast<std::size_t>(kLookups) ? 0 : 1;
}
