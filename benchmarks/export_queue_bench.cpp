// CFileQueue over 100,000 queued files: GetTotalFileSize against a bare size lookup of the same files, the
// folder walk that queues them, and a GetSize/GetAt loop (linear thanks to the queue's walking position).
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <set>
#include <string>

#include <unistd.h>

#include "export/file_queue.h"
#include "platform/text.h"

namespace {
namespace fs = std::filesystem;
constexpr int kFiles = 100000;

// 100 study folders of 1,000 small files each, made once per run.
struct Archive {
    fs::path folder = fs::temp_directory_path() / ("uc-export-bench-" + std::to_string(::getpid()));
    std::wstring root;
    ~Archive() {
        std::error_code ec;
        fs::remove_all(folder, ec);
    }
    Archive() {
        root = uc::FromFsPath(folder / "archive");
        for (int s = 0; s < kFiles / 1000; ++s) {
            const fs::path study = uc::ToFsPath(root) / ("S" + std::to_string(s));
            fs::create_directories(study);
            for (int f = 0; f < 1000; ++f)
                std::ofstream(study / ("img" + std::to_string(f) + ".jpg")) << std::string(f % 64, 'x');
        }
    }
};

Archive& Shared() {
    static Archive archive;
    return archive;
}

void BM_GetTotalFileSize(benchmark::State& state) {
    CFileQueue queue;
    queue.AddFilesToQueue(Shared().root);
    for (auto _ : state) {
        std::wstring unit;
        benchmark::DoNotOptimize(queue.GetTotalFileSize(unit));
    }
    state.counters["files"] = queue.GetSize();
    state.SetItemsProcessed(state.iterations() * queue.GetSize());
}

// The floor: the same files' sizes asked of the file system directly.
void BM_BareFileSizes(benchmark::State& state) {
    CFileQueue queue;
    queue.AddFilesToQueue(Shared().root);
    const std::set<std::wstring> files = queue.GetFilesName();
    for (auto _ : state) {
        std::uintmax_t total = 0;
        std::error_code ec;
        for (const std::wstring& f : files) {
            const auto size = fs::file_size(uc::ToFsPath(f), ec);
            if (!ec) total += size;
        }
        benchmark::DoNotOptimize(total);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(files.size()));
}

void BM_AddFilesToQueue(benchmark::State& state) {
    for (auto _ : state) {
        CFileQueue queue;
        queue.AddFilesToQueue(Shared().root);
        benchmark::DoNotOptimize(queue.GetSize());
    }
    state.SetItemsProcessed(state.iterations() * kFiles);
}

void BM_GetAtLoop(benchmark::State& state) {
    CFileQueue queue;
    queue.AddFilesToQueue(Shared().root);
    for (auto _ : state) {
        std::size_t length = 0;
        for (int i = 0, n = queue.GetSize(); i < n; ++i) length += queue.GetAt(i).size();
        benchmark::DoNotOptimize(length);
    }
    state.SetItemsProcessed(state.iterations() * queue.GetSize());
}

BENCHMARK(BM_GetTotalFileSize)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BareFileSizes)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AddFilesToQueue)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GetAtLoop)->Unit(benchmark::kMillisecond);
}  // namespace
