// Test client of the simulated disc-writing library: the burner's own loader, and burns of folders as the console does them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "export/starburn_loader.h"

namespace uc::test {

// Sets the simulated writer's settings for this process (UC_STARBURN_SET), e.g. "image=/tmp/d.iso;medium=cd-rw".
void SetWriterSettings(const std::string& settings);

struct BurnOutcome : uc::exporting::DiscResult {
    std::string step;  // the operation that failed
};

// The disc in device 0 as the library reports it.
struct DiscFacts {
    uc::exporting::DiscInformation info;
    uc::exporting::TrackInformation next;  // the next writable track
    int type = 0;
    BurnOutcome outcome;
};

// The library loaded by its real name (StarBurnLoader, as the burner loads it), driving device 0.
class StarBurnClient {
public:
    bool Loaded() const { return lib.Available(); }
    // Burns `folders` (each added under the root with its own name) as one session: imports the last track first
    // when `append`, leaves the disc appendable unless `close`.
    BurnOutcome Burn(const std::vector<std::filesystem::path>& folders, bool append = false, bool close = false);
    DiscFacts Inspect();
    BurnOutcome Erase();

    uc::exporting::StarBurnLoader lib;
};

// Writes `size` bytes of a repeating pattern seeded by `seed` (distinct per file, so misplaced data shows).
void WritePatternFile(const std::filesystem::path& path, std::uint64_t size, unsigned seed);

}  // namespace uc::test
