// Shared main of the test programs. Writes the run marker the Wine wrapper checks: Wine exits 0 even
// when it could not start a program at all, so a missing marker is how such a run is caught.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (const char* marker = std::getenv("UC_RUN_MARKER"); marker && *marker) {
        if (std::FILE* f = std::fopen(marker, "w")) {
            std::fputs("started\n", f);
            std::fclose(f);
        }
    }
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
