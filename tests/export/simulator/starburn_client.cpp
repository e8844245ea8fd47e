// Test client of the simulated disc-writing library.
#include "simulator/starburn_client.h"

#include <cstdlib>
#include <fstream>

#include "export/simulator/file_tree.h"

namespace uc::test {

void SetWriterSettings(const std::string& settings) {
#ifdef _WIN32
    _putenv_s("UC_STARBURN_SET", settings.c_str());
    _putenv_s("UC_STARBURN_CONFIG", "");
#else
    setenv("UC_STARBURN_SET", settings.c_str(), 1);
    unsetenv("UC_STARBURN_CONFIG");
#endif
}

StarBurnClient::StarBurnClient() : m_library(STARBURN_LIBRARY_NAME) {
#define UC_RESOLVE(name) m_library.Resolve(#name, name);
    UC_STARBURN_FUNCTIONS(UC_RESOLVE)
#undef UC_RESOLVE
}

namespace {
// Keeps the text buffer, status and CDB of a sequence of calls; the first failure is remembered.
struct Calls {
    char text[1024] = {};
    ULONG status = 0;
    BurnOutcome outcome;
    bool Check(const char* step, EXCEPTION_NUMBER e) {
        if (e == EN_SUCCESS) return true;
        outcome.exception = e;
        outcome.step = step;
        outcome.text = text;
        return false;
    }
};
}  // namespace

// The text, status and sense outputs of every call, kept in a `Calls` named c.
#define SB_OUT c.text, sizeof c.text, &c.status, &c.outcome.cdb

BurnOutcome StarBurnClient::Burn(const std::vector<std::filesystem::path>& folders, bool append, bool close) {
    Calls c;
    PVOID tree = nullptr, burner = nullptr;
    STARBURN_TRACK_INFORMATION next{};
    LONG last = 0;
    bool ok = c.Check("TreeCreate", StarBurn_ISO9660FileTree_Create(&tree, c.text, sizeof c.text, &c.status, nullptr,
                                                                    nullptr, FALSE, FALSE, TRUE, FILE_TREE_JOLIET)) &&
              c.Check("Create", StarBurn_CdvdBurnerGrabber_Create(&burner, SB_OUT, nullptr, nullptr, 0, 0, 0, 0, 0)) &&
              c.Check("TestUnitReady", StarBurn_CdvdBurnerGrabber_TestUnitReady(burner, SB_OUT)) &&
              c.Check("GetTrackInformation", StarBurn_CdvdBurnerGrabber_GetTrackInformation(burner, SB_OUT,
                                                                                            TRACK_NUMBER_INVISIBLE, &next));
    if (ok && append)
        ok = c.Check("GetLastTrack", StarBurn_CdvdBurnerGrabber_GetLastTrack(burner, SB_OUT, &last)) &&
             c.Check("ImportTrack", StarBurn_ISO9660JolietFileTree_ImportTrack(tree, SB_OUT, burner, last));
    for (std::size_t i = 0; ok && i < folders.size(); ++i) {
        PVOID parent = StarBurn_ISO9660FileTree_GetRoot(tree), added = nullptr;
        std::string path = uc::disc::PathUtf8(folders[i]);
        ok = c.Check("Add", StarBurn_ISO9660JolietFileTree_Add(tree, c.text, sizeof c.text, &c.status, path.data(), nullptr,
                                                               FILE_TIME_LAST_WRITE, &parent, &added));
    }
    char name[] = "TrackAtOnceFromTree.exe", publisher[] = "KAVEL Media";
    ok = ok &&
         c.Check("BuildImage", StarBurn_ISO9660FileTree_BuildImage(tree, c.text, sizeof c.text, &c.status,
                                                                   next.m__LONG__NextWritableAddress, 8, FALSE, name,
                                                                   publisher, name)) &&
         c.Check("TrackAtOnceFromTree", StarBurn_CdvdBurnerGrabber_TrackAtOnceFromTree(burner, SB_OUT, tree, FALSE, FALSE,
                                                                                       close ? FALSE : TRUE, 1, 5)) &&
         c.Check("CloseSession", StarBurn_CdvdBurnerGrabber_CloseSession(burner, SB_OUT));
    StarBurn_Destroy(&tree);
    StarBurn_Destroy(&burner);
    return c.outcome;
}

StarBurnClient::Disc StarBurnClient::Inspect() {
    Calls c;
    Disc d;
    PVOID burner = nullptr;
    if (c.Check("Create", StarBurn_CdvdBurnerGrabber_Create(&burner, SB_OUT, nullptr, nullptr, 0, 0, 0, 0, 0))) {
        d.type = StarBurn_CdvdBurnerGrabber_GetInsertedDiscType(burner);
        c.Check("GetDiscInformation", StarBurn_CdvdBurnerGrabber_GetDiscInformation(burner, SB_OUT, &d.info)) &&
            c.Check("GetTrackInformation",
                    StarBurn_CdvdBurnerGrabber_GetTrackInformation(burner, SB_OUT, TRACK_NUMBER_INVISIBLE, &d.next));
    }
    StarBurn_Destroy(&burner);
    d.outcome = c.outcome;
    return d;
}

BurnOutcome StarBurnClient::Erase() {
    Calls c;
    PVOID burner = nullptr;
    if (c.Check("Create", StarBurn_CdvdBurnerGrabber_Create(&burner, SB_OUT, nullptr, nullptr, 0, 0, 0, 0, 0)))
        c.Check("Erase", StarBurn_CdvdBurnerGrabber_Erase(burner, SB_OUT, ERASE_TYPE_BLANK_DISC_FAST));
    StarBurn_Destroy(&burner);
    return c.outcome;
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
