// Reading the privacy layout and placing its zones on an image.
#include "export/privacy_layout.h"

#include <algorithm>
#include <cstdint>

#include "platform/text.h"
#include "platform/xml.h"

namespace uc::exporting {
namespace {

// A zone value from a child element or, failing that, an attribute of the zone.
bool ZoneValue(const zelXMLNode& zone, const wchar_t* name, int& value) {
    const zelXMLNode child = zone.getChildByName(name);
    if (child.isValid()) return ParseInt(child.getText(), value);
    if (zone.hasAttribute(name)) return ParseInt(zone.getAttribute(name), value);
    return false;
}

std::wstring Describe(const ZoneRect& r) {
    return Format(L"(%d, %d, %d x %d)", r.x, r.y, r.width, r.height);
}

}  // namespace

bool ReadPrivacyLayout(const zelXMLNode& root, PrivacyLayout& layout) {
    layout = PrivacyLayout();
    if (!root.isValid()) return false;
    std::wstring fullscreen = root.getAttribute(L"fullscreen");
    if (const zelXMLNode node = root.getChildByName(L"fullscreen"); node.isValid()) fullscreen = node.getText();
    int flag = 0;
    layout.fullscreen = ParseInt(fullscreen, flag) && flag == 1;

    int index = 0;
    for (zelXMLNode zone = root.getChildByName(L"zones").getFirstChild(); zone.isValid(); ++zone, ++index) {
        ZoneRect r;
        const wchar_t* bad = nullptr;
        if (!ZoneValue(zone, L"xpos", r.x)) bad = L"xpos";
        else if (!ZoneValue(zone, L"ypos", r.y)) bad = L"ypos";
        else if (!ZoneValue(zone, L"width", r.width)) bad = L"width";
        else if (!ZoneValue(zone, L"height", r.height)) bad = L"height";
        if (bad)
            layout.rejected.push_back(Format(L"zone %d: \"%s\" is missing or not a whole number", index, bad));
        else
            layout.zones.push_back(r);
    }
    return true;
}

bool LoadPrivacyLayout(const std::wstring& path, PrivacyLayout& layout, std::wstring& error) {
    layout = PrivacyLayout();
    zelXMLFile file;
    if (!file.open(path)) {
        error = file.getLastError();
        if (error.empty()) error = L"cannot be read";
        return false;
    }
    if (!ReadPrivacyLayout(file.getRootElement(), layout)) {
        error = L"has no root element";
        return false;
    }
    return true;
}

ZoneOffset OffsetFor(bool fullscreen, int screenWidth, int screenHeight) {
    if (!fullscreen) return {};
    return {(screenWidth - 800) / 2, (screenHeight - 600) / 5};
}

std::vector<ZoneRect> ZonesOnImage(const PrivacyLayout& layout, int screenWidth, int screenHeight, int imageWidth,
                                   int imageHeight, std::vector<std::wstring>* dropped) {
    const ZoneOffset offset = OffsetFor(layout.fullscreen, screenWidth, screenHeight);
    std::vector<ZoneRect> out;
    for (const ZoneRect& zone : layout.zones) {
        // 64-bit arithmetic: layout values are outside input and may be near the int range.
        const std::int64_t left = std::int64_t(zone.x) + offset.x;
        const std::int64_t top = std::int64_t(zone.y) + offset.y;
        const std::int64_t right = std::min<std::int64_t>(left + zone.width, imageWidth);
        const std::int64_t bottom = std::min<std::int64_t>(top + zone.height, imageHeight);
        const std::int64_t l = std::max<std::int64_t>(left, 0), t = std::max<std::int64_t>(top, 0);
        if (zone.width <= 0 || zone.height <= 0) {
            if (dropped) dropped->push_back(L"zone " + Describe(zone) + L" is empty");
            continue;
        }
        if (right <= l || bottom <= t) {
            if (dropped)
                dropped->push_back(Format(L"zone %s lies outside the %d x %d image", Describe(zone).c_str(),
                                          imageWidth, imageHeight));
            continue;
        }
        out.push_back({int(l), int(t), int(right - l), int(bottom - t)});
    }
    return out;
}

}  // namespace uc::exporting
