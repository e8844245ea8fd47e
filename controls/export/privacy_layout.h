// The screen layout that says where patient information lies, and the arithmetic that maps its zones onto an image.
#pragma once

#include <string>
#include <vector>

#include "platform/export.h"

class zelXMLNode;

namespace uc::exporting {

struct ZoneRect {
    int x = 0, y = 0, width = 0, height = 0;
    bool operator==(const ZoneRect& o) const { return x == o.x && y == o.y && width == o.width && height == o.height; }
};

// A layout file: the root's "fullscreen" setting and the children of its "zones" element, each with the integers
// "xpos", "ypos", "width", "height" (child elements, or attributes of the zone).
struct PrivacyLayout {
    bool fullscreen = false;
    std::vector<ZoneRect> zones;
    // Zones that were left out because a value was missing or not a whole number, with the reason.
    std::vector<std::wstring> rejected;
};

// Reads the layout under `root`. False when the root is invalid; zones with bad values are listed in `rejected`.
UC_API bool ReadPrivacyLayout(const zelXMLNode& root, PrivacyLayout& layout);
// Opens and reads a layout file; false with `error` when it is missing, malformed or has no root.
UC_API bool LoadPrivacyLayout(const std::wstring& path, PrivacyLayout& layout, std::wstring& error);

// Zones of a full-screen layout are given for an 800 x 600 screen centred horizontally and placed at one fifth
// vertically; other layouts are in screen coordinates as they are.
struct ZoneOffset {
    int x = 0, y = 0;
};
UC_API ZoneOffset OffsetFor(bool fullscreen, int screenWidth, int screenHeight);

// The layout's zones moved by the offset and clipped to a `imageWidth` x `imageHeight` image. Zones that are
// empty or lie wholly outside the image are dropped and described in `dropped` (when given).
UC_API std::vector<ZoneRect> ZonesOnImage(const PrivacyLayout& layout, int screenWidth, int screenHeight,
                                          int imageWidth, int imageHeight,
                                          std::vector<std::wstring>* dropped = nullptr);

}  // namespace uc::exporting
