// Test client of the simulated disc-writing library: loads it by its real name and burns folders the way the console does.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "export/starburn_api.h"
#include "platform/dynamic_library.h"

namespace uc::test {

// Sets the simulated writer's settings for this process (UC_STARBURN_SET), e.g. "image=/tmp/d.iso;medium=cd-rw".
void SetWriterSettings(const std::string& settings);

struct BurnOutcome {
    EXCEPTION_NUMBER exception = EN_SUCCESS;
    std::string step;  // the call that failed
    std::string text;
    CDB_FAILURE_INFORMATION cdb{};
    bool Ok() const { return exception == EN_SUCCESS; }
};

class StarBurnClient {
public:
    StarBurnClient();
    bool Loaded() const { return m_library.IsLoaded(); }
    const uc::DynamicLibrary& Library() const { return m_library; }

    // Burns `folders` (each added under the root with its own name) as one session on device 0:
    // imports the last track first when `append`, leaves the disc appendable unless `close`.
    BurnOutcome Burn(const std::vector<std::filesystem::path>& folders, bool append = false, bool close = false);
    // Disc and next-track facts of device 0.
    struct Disc {
        STARBURN_DISC_INFORMATION info{};
        STARBURN_TRACK_INFORMATION next{};
        DISC_TYPE type{};
        BurnOutcome outcome;
    };
    Disc Inspect();
    BurnOutcome Erase();

#define UC_STARBURN_FUNCTIONS(X)                                                                                      \
    X(StarBurn_FindDevice) X(StarBurn_Destroy) X(StarBurn_ISO9660FileTree_Create) X(StarBurn_ISO9660JolietFileTree_Add) \
    X(StarBurn_ISO9660FileTree_GetRoot) X(StarBurn_ISO9660JolietFileTree_ImportTrack)                                  \
    X(StarBurn_ISO9660FileTree_BuildImage) X(StarBurn_CdvdBurnerGrabber_Create)                                       \
    X(StarBurn_CdvdBurnerGrabber_TestUnitReady) X(StarBurn_CdvdBurnerGrabber_GetTrackInformation)                     \
    X(StarBurn_CdvdBurnerGrabber_GetDiscInformation) X(StarBurn_CdvdBurnerGrabber_GetInsertedDiscType)                \
    X(StarBurn_CdvdBurnerGrabber_GetLastTrack) X(StarBurn_CdvdBurnerGrabber_Erase)                                    \
    X(StarBurn_CdvdBurnerGrabber_TrackAtOnceFromTree) X(StarBurn_CdvdBurnerGrabber_CloseSession)
#define UC_STARBURN_FN(name) decltype(&::name) name = nullptr;
    UC_STARBURN_FUNCTIONS(UC_STARBURN_FN)
#undef UC_STARBURN_FN

private:
    uc::DynamicLibrary m_library;
};

// Writes `size` bytes of a repeating pattern seeded by `seed` (distinct per file, so misplaced data shows).
void WritePatternFile(const std::filesystem::path& path, std::uint64_t size, unsigned seed);

}  // namespace uc::test
