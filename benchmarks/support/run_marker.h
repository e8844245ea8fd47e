// The run marker of the Windows timing programs: Wine exits 0 even when a program never started, so the wrapper
// (scripts/wine-run.sh) checks that the program wrote this file.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace uc::bench {
inline void WriteRunMarker() {
    if (const char* marker = std::getenv("UC_RUN_MARKER"); marker && *marker) {
        if (std::FILE* f = std::fopen(marker, "w")) {
            std::fputs("started\n", f);
            std::fclose(f);
        }
    }
}
}  // namespace uc::bench
