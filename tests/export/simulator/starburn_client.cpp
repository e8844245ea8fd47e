// Test client of the simulated disc-writing library.
#include "simulator/starburn_client.h"

#include <cstdlib>
#include <fstream>

#include "export/simulator/file_tree.h"

namespace uc::test {
namespace ex = uc::exporting;

void SetWriterSettings(const std::string& settings) {
#ifdef _WIN32
    _putenv_s("UC_STARBURN_SET", settings.c_str());
    _putenv_s("UC_STARBURN_CONFIG", "");
#else
    setenv("UC_STARBURN_SET", settings.c_str(), 1);
    unsetenv("UC_STARBURN_CONFIG");
#endif
}

namespace {
// The first failure of a sequence of operations, and the objects to destroy at its end.
struct Steps {
    explicit Steps(ex::IDiscOperations& lib) : lib(lib) {}
    ~Steps() {
        lib.Destroy(tree);
        lib.Destroy(burner);
    }
    bool operator()(const char* step, const ex::DiscResult& r) {
        if (r.ok()) return true;
        static_cast<ex::DiscResult&>(outcome) = r;
        outcome.step = step;
        return false;
    }
    bool Open() { return (*this)("Create", lib.CreateBurner({}, burner, nullptr)); }
    ex::IDiscOperations& lib;
    ex::DiscObject tree = nullptr, burner = nullptr;
    BurnOutcome outcome;
};
}  // namespace

BurnOutcome StarBurnClient::Burn(const std::vector<std::filesystem::path>& folders, bool append, bool close) {
    Steps s(lib);
    ex::TrackInformation next;
    long last = 0;
    bool ok = s("TreeCreate", lib.CreateTree(s.tree)) && s.Open() && s("TestUnitReady", lib.TestUnitReady(s.burner)) &&
              s("GetTrackInformation", lib.GetTrackInformation(s.burner, 0xFF, next));
    if (ok && append)
        ok = s("GetLastTrack", lib.GetLastTrack(s.burner, last)) && s("ImportTrack", lib.ImportTrack(s.tree, s.burner, last));
    for (std::size_t i = 0; ok && i < folders.size(); ++i) {
        ex::DiscObject added = nullptr;
        ok = s("Add", lib.AddFromDisk(s.tree, nullptr, uc::disc::PathUtf8(folders[i]), "", added));
    }
    ok = ok && s("BuildImage", lib.BuildImage(s.tree, next.nextWritableAddress, "V", "KAVEL Media", "TrackAtOnceFromTree.exe")) &&
         s("TrackAtOnceFromTree", lib.TrackAtOnceFromTree(s.burner, s.tree, !close)) &&
         s("CloseSession", lib.CloseSession(s.burner));
    return s.outcome;
}

DiscFacts StarBurnClient::Inspect() {
    Steps s(lib);
    DiscFacts d;
    if (s.Open()) {
        d.type = lib.GetInsertedDiscType(s.burner);
        s("GetDiscInformation", lib.GetDiscInformation(s.burner, d.info)) &&
            s("GetTrackInformation", lib.GetTrackInformation(s.burner, 0xFF, d.next));
    }
    d.outcome = s.outcome;
    return d;
}

BurnOutcome StarBurnClient::Erase() {
    Steps s(lib);
    if (s.Open()) s("Erase", lib.Erase(s.burner));
    return s.outcome;
}

void WritePatternFile(const std::filesystem::path& path, std::uint64_t size, unsigned seed) {
    std::filesystem::create_directories(path.parent_path());
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    std::vector<char> block(64 * 1024);
    std::uint32_t state = seed * 2654435761u + 1;
    for (std::uint64_t done = 0; done < size;) {
        for (char& c : block) {
            state = state * 1103515245u + 12345u;
            c = static_cast<char>(state >> 24);
        }
        const std::size_t n = static_cast<std::size_t>(std::min<std::uint64_t>(block.size(), size - done));
        out.write(block.data(), static_cast<std::streamsize>(n));
        done += n;
    }
}

}  // namespace uc::test
