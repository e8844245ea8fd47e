// Polynomial regression: Compute with 1,000,000 samples at degree 5 and YLookup per call, against numpy's
// polyfit on the same samples in the same run (ratio), and the correct digits of both on the reference problems.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <ctime>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "probe/nist_reference.h"  // tests/probe
#include "probe/polynomial_regression.h"

namespace {

constexpr int kSamples = 1000000;
constexpr int kDegree = 5;

std::string SourceDir() {
    const char* dir = std::getenv("UC_SOURCE_DIR");
    return dir ? dir : UC_SOURCE_DIR;
}

// The output of /usr/bin/python3 running the numpy companion script; empty when python or numpy is missing.
std::string Numpy(const std::string& arguments) {
    const std::string command =
        "/usr/bin/python3 '" + SourceDir() + "/benchmarks/probe_polyfit_numpy.py' " + arguments + " 2>/dev/null";
    std::string output;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char buffer[256];
        while (std::fgets(buffer, sizeof buffer, pipe)) output += buffer;
        if (pclose(pipe) != 0) output.clear();
    }
    return output;
}

// Noisy samples of a cubic on [-2, 2], the same in every run.
const std::vector<std::pair<double, double>>& Samples() {
    static const std::vector<std::pair<double, double>> samples = [] {
        std::mt19937_64 random(20240613);
        std::uniform_real_distribution<double> x(-2.0, 2.0);
        std::normal_distribution<double> noise(0.0, 0.1);
        std::vector<std::pair<double, double>> s(kSamples);
        for (auto& [sx, sy] : s) {
            sx = x(random);
            sy = 1 + sx - 0.5 * sx * sx + 0.25 * sx * sx * sx + noise(random);
        }
        return s;
    }();
    return samples;
}

void BM_ReferenceDigits(benchmark::State& state) {
    std::map<std::string, double> numpy;
    std::string names;
    for (const char* name : uc::test::kReferenceProblems) names += std::string(" ") + name;
    std::string output = Numpy("digits '" + SourceDir() + "/tests/probe/data'" + names);
    for (std::size_t pos = 0; pos < output.size();) {
        const std::size_t end = output.find('\n', pos);
        const std::string line = output.substr(pos, end - pos);
        const std::size_t space = line.find(' ');
        if (space != std::string::npos) numpy[line.substr(0, space)] = std::atof(line.c_str() + space + 1);
        pos = end == std::string::npos ? output.size() : end + 1;
    }
    for (auto _ : state) {
        for (const char* name : uc::test::kReferenceProblems) {
            const auto p = uc::test::ReadReferenceProblem(SourceDir() + "/tests/probe/data/" + name + ".dat");
            state.counters[std::string(name) + "_ours"] = uc::test::FitDigits(p);
            if (numpy.count(name)) state.counters[std::string(name) + "_numpy"] = numpy[name];
        }
    }
}
BENCHMARK(BM_ReferenceDigits)->Iterations(1)->Unit(benchmark::kMillisecond);

// Compute at 1,000,000 samples. "numpy_s" and "numpy_cpu_s" are polyfit's fastest of five on the same samples
// (wall and process CPU time); "ratio" and "cpu_ratio" are this benchmark's means over them. On a loaded
// machine the CPU ratio is the one to trust.
void BM_Compute1MDegree5(benchmark::State& state) {
    CPolynomialRegression r;
    for (const auto& [x, y] : Samples()) r.AddItem(x, y);
    const std::string file = "/tmp/uc-probe-regression-bench.bin";
    {
        std::ofstream out(file, std::ios::binary);
        for (const auto& [x, y] : Samples()) {
            out.write(reinterpret_cast<const char*>(&x), sizeof x);
            out.write(reinterpret_cast<const char*>(&y), sizeof y);
        }
    }
    double numpyWall = 0.0, numpyCpu = 0.0;
    std::sscanf(Numpy("time " + file + " 5 5").c_str(), "%lf %lf", &numpyWall, &numpyCpu);
    std::remove(file.c_str());
    double wall = 0.0, cpu = 0.0;
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const std::clock_t startCpu = std::clock();
        if (!r.Compute(kDegree)) state.SkipWithError("fit failed");
        cpu += static_cast<double>(std::clock() - startCpu) / CLOCKS_PER_SEC;
        wall += std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }
    const double n = static_cast<double>(state.iterations());
    if (numpyWall > 0 && numpyCpu > 0) {
        state.counters["numpy_s"] = numpyWall;
        state.counters["numpy_cpu_s"] = numpyCpu;
        state.counters["ratio"] = wall / n / numpyWall;
        state.counters["cpu_ratio"] = cpu / n / numpyCpu;
    }
}
BENCHMARK(BM_Compute1MDegree5)->Unit(benchmark::kMillisecond)->MinTime(2.0);

void BM_YLookupDegree5(benchmark::State& state) {
    CPolynomialRegression r;
    for (int i = 0; i < 1000; ++i) r.AddItem(Samples()[i].first, Samples()[i].second);
    r.Compute(kDegree);
    double x = -2.0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(r.YLookup(x));
        x += 1e-6;
    }
}
BENCHMARK(BM_YLookupDegree5);

}  // namespace
