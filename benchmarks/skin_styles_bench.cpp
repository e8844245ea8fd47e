// Style repository speed: loading 10,000 styles (a fifth derived through base chains up to depth 5) against a bare
// XML parse of the same file, and GetStyle by name per lookup.
#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "platform/text.h"
#include "platform/xml.h"
#include "skin/style_repository.h"

namespace {

constexpr int kStyles = 10000;
constexpr int kDerived = kStyles / 5;
constexpr int kMaxDepth = 5;

std::string FullStyle(int id, const std::string& name) {
    const int c = id % 200;
    auto colour = [&](const char* tag, int shift) {
        return "<" + std::string(tag) + " a=\"255\" r=\"" + std::to_string((c + shift) % 256) + "\" g=\"" +
               std::to_string((c * 3 + shift) % 256) + "\" b=\"" + std::to_string((c * 7 + shift) % 256) + "\"/>";
    };
    std::string s = "<style id=\"" + std::to_string(id) + "\" name=\"" + name + "\">";
    s += "<shape shape=\"" + std::to_string(id % 8) + "\" radius=\"12.00\" borderRatio=\"0.15\"/>";
    s += "<font name=\"Tahoma\" size=\"" + std::to_string(12 + id % 8) + "\" shadowText=\"1\" scaleText=\"0\"/>";
    s += "<icon location=\"" + std::to_string(id % 3) + "\"/><color>";
    for (const char* state : {"enabled", "disabled", "clicked", "pressed"})
        s += std::string("<") + state + ">" + colour("facePrimary", 1) + colour("faceSeconday", 2) +
             colour("border", 3) + "</" + state + ">";
    s += colour("background", 4);
    if (id % 4 == 2)
        s += "<brush id=\"2\" rotate=\"90\" position=\"0.00,0.50,1.00\" enabled=\"255 1 2 3,255 4 5 6,255 7 8 9\"/>";
    else
        s += "<brush id=\"" + std::to_string(id % 4) + "\" rotate=\"90\" focus=\"0.50\" scale=\"0.80\"/>";
    return s + "</color></style>\n";
}

// 8,000 full styles and 2,000 derived ones in chains of depth 1 to 5; derived elements are scattered through the
// file, often before the base they name.
const std::wstring& StyleFile() {
    static const std::wstring path = [] {
        std::vector<std::string> elements;
        const int bases = kStyles - kDerived;
        for (int i = 0; i < bases; ++i) elements.push_back(FullStyle(i, "base" + std::to_string(i)));
        for (int i = 0; i < kDerived; ++i) {
            const int depth = i % kMaxDepth + 1;
            const std::string base = depth == 1 ? "base" + std::to_string((i * 37) % bases) : "derived" + std::to_string(i - 1);
            const int id = bases + i;
            elements.push_back("<style id=\"" + std::to_string(id) + "\" name=\"derived" + std::to_string(i) +
                               "\" basename=\"" + base + "\"><font name=\"Verdana\" size=\"" + std::to_string(10 + depth) +
                               "\"/><color><pressed><border r=\"" + std::to_string(depth) + "\"/></pressed></color></style>\n");
        }
        std::mt19937 rng(12345);
        std::shuffle(elements.begin(), elements.end(), rng);
        const auto file = std::filesystem::temp_directory_path() / "uc_bench_ButtonStyles.xml";
        std::ofstream out(file, std::ios::binary | std::ios::trunc);
        out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Styles>\n";
        for (const std::string& e : elements) out << e;
        out << "</Styles>\n";
        return uc::FromFsPath(file);
    }();
    return path;
}

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

// Both in each iteration, reported as the ratio of load time to parse time ("load_over_parse").
void BM_LoadOverParse(benchmark::State& state) {
    using Clock = std::chrono::steady_clock;
    const std::wstring& path = StyleFile();
    StyleRepository* repo = StyleRepository::GetInstance();
    double parse = 0, load = 0;
    for (auto _ : state) {
        auto t0 = Clock::now();
        {
            zelXMLFile file;
            benchmark::DoNotOptimize(file.open(path));
        }
        auto t1 = Clock::now();
        benchmark::DoNotOptimize(repo->LoadFile(path));
        auto t2 = Clock::now();
        parse += std::chrono::duration<double>(t1 - t0).count();
        load += std::chrono::duration<double>(t2 - t1).count();
    }
    state.counters["load_over_parse"] = parse > 0 ? load / parse : 0;
}
BENCHMARK(BM_LoadOverParse)->Unit(benchmark::kMillisecond)->Iterations(10);

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
