// Fuzzes what the export reads from outside: a privacy layout file (any bytes must read or fail cleanly, and every
// zone placed on an image must lie inside it) and the configured export folder name (the disc-safe form never
// keeps a ':', a '/', a doubled backslash or a backslash at either end).
#include <cstddef>
#include <cstdint>
#include <string>

#include "export/export_paths.h"
#include "export/privacy_layout.h"
#include "platform/text.h"
#include "platform/xml.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 4) return 0;
    // The first four bytes choose the screen and image sizes.
    const int screenW = 640 + data[0] * 8, screenH = 480 + data[1] * 4;
    const int imageW = 1 + data[2] * 9, imageH = 1 + data[3] * 7;
    const std::wstring text = uc::FromUtf8(std::string(reinterpret_cast<const char*>(data + 4), size - 4));

    const std::wstring safe = uc::exporting::SafeExportFolder(text);
    if (safe.find(L':') != std::wstring::npos || safe.find(L'/') != std::wstring::npos ||
        safe.find(L"\\\\") != std::wstring::npos || safe.find(L"{PATID}") != std::wstring::npos ||
        (!safe.empty() && (safe.front() == L'\\' || safe.back() == L'\\')))
        __builtin_trap();

    zelXMLFile file;
    if (!file.loadXML(text)) return 0;
    uc::exporting::PrivacyLayout layout;
    if (!uc::exporting::ReadPrivacyLayout(file.getRootElement(), layout)) return 0;
    std::vector<std::wstring> dropped;
    const auto zones = uc::exporting::ZonesOnImage(layout, screenW, screenH, imageW, imageH, &dropped);
    if (zones.size() + dropped.size() != layout.zones.size()) __builtin_trap();
    for (const auto& z : zones)
        if (z.x < 0 || z.y < 0 || z.width <= 0 || z.height <= 0 || z.x + z.width > imageW || z.y + z.height > imageH)
            __builtin_trap();
    return 0;
}
