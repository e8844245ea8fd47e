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
#define UC_RESOLVE(name) m_library.Resolve(#name, name)
    UC_RESOLVE(StarBurn_FindDevice);
    UC_RESOLVE(StarBurn_Destroy);
    UC_RESOLVE(StarBurn_ISO9660FileTree_Create);
    UC_RESOLVE(StarBurn_ISO9660JolietFileTree_Add);
    UC_RESOLVE(StarBurn_ISO9660FileTree_GetRoot);
    UC_RESOLVE(StarBurn_ISO9660JolietFileTree_GetLevel);
    UC_RESOLVE(StarBurn_ISO9660JolietFileTree_ImportTrack);
    UC_RESOLVE(StarBurn_ISO9660FileTree_BuildImage);
    UC_RESOLVE(StarBurn_ISO9660JolietFileTree_GetSizeInUCHARs);
    UC_RESOLVE(StarBurn_CdvdBurnerGrabber_Create);
    UC_RESOLVE(StarBurn_CdvdBurnerGrabber_GetDeviceInformation);
    UC_RESOLVE(StarBurn_CdvdBurnerGrabber_ProbeSupportedWriteModes);
    UC_RESOLVE(StarBurn_CdvdBurnerGrabber_TestUnitReady);
    UC_RESOLVE(StarBurn_CdvdBurnerGrabber_GetTrackInformation);
    UC_RESOLVE(StarBurn_CdvdBurnerGrabber_GetDiscInformation);
    UC_RESOLVE(StarBurn_CdvdBurnerGrabber_GetInsertedDiscType);
    UC_RESOLVE(StarBurn_CdvdBurnerGrabber_GetLastTrack);
    UC_RESOLVE(StarBurn_CdvdBurnerGrabber_Erase);
    UC_RESOLVE(StarBurn_CdvdBurnerGrabber_TrackAtOnceFromTree);
    UC_RESOLVE(StarBurn_CdvdBurnerGrabber_CloseSession);
    UC_RESOLVE(StarBurn_CdvdBurnerGrabber_Eject);
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

BurnOutcome StarBurnClient::Burn(const std::vector<std::filesystem::path>& folders, bool append, bool close) {
    Calls c;
    PVOID tree = nullptr, burner = nullptr;
    CDB_FAILURE_INFORMATION& cdb = c.outcome.cdb;
    auto done = [&] {
        StarBurn_Destroy(&tree);
        StarBurn_Destroy(&burner);
        return c.outcome;
    };
    if (!c.Check("TreeCreate", StarBurn_ISO9660FileTree_Create(&tree, c.text, sizeof c.text, &c.status, nullptr, nullptr,
                                                               FALSE, FALSE, TRUE, FILE_TREE_JOLIET)) ||
        !c.Check("Create", StarBurn_CdvdBurnerGrabber_Create(&burner, c.text, sizeof c.text, &c.status, &cdb, nullptr,
                                                             nullptr, 0, 0, 0, 0, 0)) ||
        !c.Check("TestUnitReady", StarBurn_CdvdBurnerGrabber_TestUnitReady(burner, c.text, sizeof c.text, &c.status, &cdb)))
        return done();
    STARBURN_TRACK_INFORMATION next{};
    if (!c.Check("GetTrackInformation",
                 StarBurn_CdvdBurnerGrabber_GetTrackInformation(burner, c.text, sizeof c.text, &c.status, &cdb,
                                                                TRACK_NUMBER_INVISIBLE, &next)))
        return done();
    if (append) {
        LONG last = 0;
        if (!c.Check("GetLastTrack",
                     StarBurn_CdvdBurnerGrabber_GetLastTrack(burner, c.text, sizeof c.text, &c.status, &cdb, &last)) ||
            !c.Check("ImportTrack", StarBurn_ISO9660JolietFileTree_ImportTrack(tree, c.text, sizeof c.text, &c.status,
                                                                               &cdb, burner, last)))
            return done();
    }
    for (const auto& folder : folders) {
        PVOID parent = StarBurn_ISO9660FileTree_GetRoot(tree), added = nullptr;
        std::string path = uc::disc::PathUtf8(folder);
        if (!c.Check("Add", StarBurn_ISO9660JolietFileTree_Add(tree, c.text, sizeof c.text, &c.status, path.data(),
                                                               nullptr, FILE_TIME_LAST_WRITE, &parent, &added)))
            return done();
    }
    char name[] = "TrackAtOnceFromTree.exe", publisher[] = "KAVEL Media";
    if (!c.Check("BuildImage", StarBurn_ISO9660FileTree_BuildImage(tree, c.text, sizeof c.text, &c.status,
                                                                   next.m__LONG__NextWritableAddress, 8, FALSE, name,
                                                                   publisher, name)) ||
        !c.Check("TrackAtOnceFromTree",
                 StarBurn_CdvdBurnerGrabber_TrackAtOnceFromTree(burner, c.text, sizeof c.text, &c.status, &cdb, tree,
                                                                FALSE, FALSE, close ? FALSE : TRUE, 1, 5)) ||
        !c.Check("CloseSession", StarBurn_CdvdBurnerGrabber_CloseSession(burner, c.text, sizeof c.text, &c.status, &cdb)))
        return done();
    return done();
}

BurnOutcome StarBurnClient::Inspect(STARBURN_DISC_INFORMATION& disc, STARBURN_TRACK_INFORMATION& next, DISC_TYPE& type) {
    Calls c;
    PVOID burner = nullptr;
    if (c.Check("Create", StarBurn_CdvdBurnerGrabber_Create(&burner, c.text, sizeof c.text, &c.status, &c.outcome.cdb,
                                                            nullptr, nullptr, 0, 0, 0, 0, 0))) {
        type = StarBurn_CdvdBurnerGrabber_GetInsertedDiscType(burner);
        c.Check("GetDiscInformation", StarBurn_CdvdBurnerGrabber_GetDiscInformation(burner, c.text, sizeof c.text,
                                                                                   &c.status, &c.outcome.cdb, &disc)) &&
            c.Check("GetTrackInformation",
                    StarBurn_CdvdBurnerGrabber_GetTrackInformation(burner, c.text, sizeof c.text, &c.status,
                                                                   &c.outcome.cdb, TRACK_NUMBER_INVISIBLE, &next));
    }
    StarBurn_Destroy(&burner);
    return c.outcome;
}

BurnOutcome StarBurnClient::Erase() {
    Calls c;
    PVOID burner = nullptr;
    if (c.Check("Create", StarBurn_CdvdBurnerGrabber_Create(&burner, c.text, sizeof c.text, &c.status, &c.outcome.cdb,
                                                            nullptr, nullptr, 0, 0, 0, 0, 0)))
        c.Check("Erase", StarBurn_CdvdBurnerGrabber_Erase(burner, c.text, sizeof c.text, &c.status, &c.outcome.cdb,
                                                          ERASE_TYPE_BLANK_DISC_FAST));
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
