// Building the ISO 9660/Joliet image of a 2 GiB tree of a few hundred files, beside xorriso building one of the same tree.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <vector>

#include "export/simulator/block_file.h"
#include "export/simulator/file_tree.h"
#include "export/simulator/image_pump.h"
#include "export/simulator/iso_image.h"

namespace {
namespace fs = std::filesystem;
using namespace uc::disc;

// The tree is written once per run in a temporary folder: `files` files of `bytes` each (real data, so
// neither tool gets a sparse shortcut), in folders of 20.
fs::path MakeTree(const fs::path& root, int files, std::uint64_t bytes) {
    std::vector<char> block(1 << 20);
    for (std::size_t i = 0; i < block.size(); ++i) block[i] = static_cast<char>(i * 131 + 7);
    for (int f = 0; f < files; ++f) {
        const fs::path folder = root / ("study" + std::to_string(f / 20));
        fs::create_directories(folder);
        std::ofstream out(folder / ("image" + std::to_string(f) + ".dcm"), std::ios::binary);
        block[0] = static_cast<char>(f);
        for (std::uint64_t done = 0; done < bytes; done += block.size())
            out.write(block.data(), static_cast<std::streamsize>(std::min<std::uint64_t>(block.size(), bytes - done)));
    }
    return root;
}

long PeakRssKiB() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// Builds the image of `tree` and streams it into `out`, as the simulated writer does.
bool BuildImageFile(const fs::path& tree, const fs::path& out) {
    FileTree files(false, true, true);
    if (!files.AddFromDisk(files.Root(), tree, u"", nullptr).ok) return false;
    IsoImage image;
    std::string error;
    if (!image.Build(files, 0, {"BENCH", "P", "A"}, 0, error)) return false;
    BlockFile file;
    if (!file.Open(out, BlockFile::Mode::ReadWrite) || !file.Truncate(0)) return false;
    std::uint64_t at = 0;
    StreamError streamError;
    const bool read = PumpImage(image, image.Bytes(), 1 << 20, [&](std::uint8_t* data, std::size_t size) {
        if (!file.WriteAt(at, data, size)) return false;
        at += size;
        return true;
    }, streamError);
    if (!read) return false;
    return at == image.Bytes();
}

double Seconds(const std::function<bool()>& work, bool& ok) {
    const auto start = std::chrono::steady_clock::now();
    ok = work() && ok;
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// One iteration builds both images (alternating which goes first); the counters are the mean times and
// their ratio, plus the process's peak memory after building a tree ten times smaller and then the full one.
void BM_ImageOf2GiBTree(benchmark::State& state) {
    if (std::system("xorriso -version >/dev/null 2>&1") != 0) {
        state.SkipWithError("xorriso is not installed");
        return;
    }
    const fs::path root = fs::temp_directory_path() / ("uc-iso-bench-" + std::to_string(::getpid()));
    const fs::path small = MakeTree(root / "small", 30, 7u << 20);  // 210 MiB
    const fs::path big = MakeTree(root / "big", 300, 7u << 20);     // 2.05 GiB in 300 files
    // The trees' dirty pages are written out before timing, and each image after its run, so no run pays for
    // another's writeback.
    ::sync();
    bool ok = true;
    BuildImageFile(small, root / "small.iso");
    const long rssSmall = PeakRssKiB();
    double ours = 0, theirs = 0;
    int runs = 0;
    for (auto _ : state) {
        const std::string xorriso = "xorriso -as mkisofs -quiet -J -iso-level 3 -o '" + (root / "xorriso.iso").string() +
                                    "' '" + big.string() + "' >/dev/null 2>&1";
        auto runOurs = [&] {
            const double s = Seconds([&] { return BuildImageFile(big, root / "ours.iso"); }, ok);
            ::sync();
            return s;
        };
        auto runTheirs = [&] {
            const double s = Seconds([&] { return std::system(xorriso.c_str()) == 0; }, ok);
            ::sync();
            return s;
        };
        if (runs % 2 == 0) {
            ours += runOurs();
            theirs += runTheirs();
        } else {
            theirs += runTheirs();
            ours += runOurs();
        }
        ++runs;
        fs::remove(root / "ours.iso");
        fs::remove(root / "xorriso.iso");
        ::sync();
    }
    const long rssBig = PeakRssKiB();
    fs::remove_all(root);
    if (!ok) state.SkipWithError("an image could not be built");
    state.counters["ours_s"] = ours / runs;
    state.counters["xorriso_s"] = theirs / runs;
    state.counters["ratio"] = ours / theirs;
    state.counters["peak_rss_210MiB_tree_MiB"] = rssSmall / 1024.0;
    state.counters["peak_rss_2GiB_tree_MiB"] = rssBig / 1024.0;
}
BENCHMARK(BM_ImageOf2GiBTree)->Iterations(3)->Unit(benchmark::kSecond);

}  // namespace
