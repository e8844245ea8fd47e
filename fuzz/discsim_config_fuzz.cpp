// Fuzzes the simulated writer's configuration parser (a file or environment text someone else wrote).
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "export/simulator/disc_config.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    uc::disc::DiscConfig config;
    std::vector<uc::disc::ConfigProblem> problems;
    uc::disc::ParseDiscConfig(std::string_view(reinterpret_cast<const char*>(data), size), config, problems);
    // Whatever the text, the settings stay within what the simulated writer can act out.
    if (config.devices < 0 || config.devices > 8 || config.notReady < 0 || config.writeErrorPercent > 100 ||
        config.capacity == 0 || config.freeBlocks < -1)
        std::abort();
    for (const auto& p : problems)
        if (p.line < 1 || p.text.empty()) std::abort();
    return 0;
}
