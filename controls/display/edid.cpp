// EDID monitor-name extraction and the simulated monitors' EDID builder.
#include "display/edid.h"

#include <cstring>

namespace uc::display {

namespace {
constexpr std::size_t DescriptorOffsets[] = {54, 72, 90, 108};
constexpr std::size_t DescriptorSize = 18;
}  // namespace

bool MonitorNameFromEdid(const std::uint8_t* edid, std::size_t size, std::string& name) {
    name.clear();
    bool found = false;
    for (std::size_t offset : DescriptorOffsets) {
        if (offset + DescriptorSize > size) break;
        const std::uint8_t* block = edid + offset;
        if (block[3] != EdidNameTag) continue;
        found = true;
        // Twelve of the thirteen name bytes: the console has always shown names that way.
        for (std::size_t i = 5; i <= 16 && block[i] != 0; ++i) name.push_back(static_cast<char>(block[i]));
    }
    return found;
}

std::string TidyMonitorName(const std::string& name) {
    std::string out = name.substr(0, name.find('\n'));
    while (!out.empty() && (out.back() == ' ' || out.back() == '\r')) out.pop_back();
    return out;
}

void BuildEdid(const std::string& name, std::uint8_t out[EdidBlockSize]) {
    static const std::uint8_t header[8] = {0x00, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0x00};
    std::memset(out, 0, EdidBlockSize);
    std::memcpy(out, header, sizeof header);
    out[8] = 0x55;  // manufacturer "UCS" (compressed ASCII)
    out[9] = 0x73;
    out[18] = 1;  // EDID 1.4
    out[19] = 4;
    // Descriptor blocks: a name block first when named, the others dummy descriptors (tag 0x10).
    for (std::size_t offset : DescriptorOffsets) out[offset + 3] = 0x10;
    if (!name.empty()) {
        std::uint8_t* block = out + DescriptorOffsets[0];
        block[3] = EdidNameTag;
        std::size_t i = 0;
        for (; i < 13 && i < name.size(); ++i) block[5 + i] = static_cast<std::uint8_t>(name[i]);
        if (i < 13) block[5 + i++] = 0x0A;
        for (; i < 13; ++i) block[5 + i] = 0x20;
    }
    std::uint8_t sum = 0;
    for (std::size_t i = 0; i + 1 < EdidBlockSize; ++i) sum = static_cast<std::uint8_t>(sum + out[i]);
    out[EdidBlockSize - 1] = static_cast<std::uint8_t>(0x100 - sum);
}

}  // namespace uc::display
