// libFuzzer target: the two-column sample tables that "uctool fit" reads, in both column orders.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "sample_table.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    for (bool yFirst : {false, true}) {
        const uctool::SampleTable t = uctool::ParseSampleTable(text, yFirst);
        // A table is either whole or names the line it stopped at; every sample it keeps is finite.
        if ((t.errorLine == 0) != t.error.empty()) std::abort();
        for (const auto& [x, y] : t.samples)
            if (!std::isfinite(x) || !std::isfinite(y)) std::abort();
    }
    return 0;
}
