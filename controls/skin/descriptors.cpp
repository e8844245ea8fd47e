// ColorState and FontDescriptor: copying, comparison and their XML form.
#include "skin/descriptors.h"

#include "platform/text.h"

ColorState::ColorState()
    : border(0), facePrimary(0), faceSecondary(0), textColour(0), brightness(0.0f), brightness2(0.0f) {}

ColorState::ColorState(const ColorState& other) { Assign(other); }

ColorState& ColorState::operator=(const ColorState& other) {
    if (this != &other) Assign(other);
    return *this;
}

void ColorState::Assign(const ColorState& other) {
    border = other.border;
    facePrimary = other.facePrimary;
    faceSecondary = other.faceSecondary;
    textColour = other.textColour;
    brightness = other.brightness;
    brightness2 = other.brightness2;
}

bool ColorState::operator==(const ColorState& other) const {
    return border == other.border && facePrimary == other.facePrimary && faceSecondary == other.faceSecondary &&
           textColour == other.textColour && brightness == other.brightness && brightness2 == other.brightness2;
}

void ColorState::Load(const zelXMLNode& node) {
    // One walk over the children; the first child of each name counts, as a lookup by name would find it.
    std::uint32_t* const fields[3] = {&facePrimary, &faceSecondary, &border};
    bool seen[3] = {};
    for (zelXMLNode c = node.getFirstChild(); c.isValid(); ++c) {
        const int i = c.nameOneOf({L"facePrimary", L"faceSeconday", L"border"});
        if (i >= 0 && !seen[i]) {
            seen[i] = true;
            LoadColor(c, *fields[i]);
        }
    }
}

void ColorState::Store(const zelXMLNode& node) const {
    StoreColor(node.createElement(L"facePrimary"), facePrimary);
    StoreColor(node.createElement(L"faceSeconday"), faceSecondary);
    StoreColor(node.createElement(L"border"), border);
}

void ColorState::LoadColor(const zelXMLNode& node, unsigned long& colour) {
    if (!node.isValid()) return;
    int argb[4] = {200, 0, 0, 0};
    node.forEachAttribute([&](const zelXMLAttribute& at) {
        const int i = at.oneOf({L"a", L"r", L"g", L"b"});
        if (i >= 0) at.toInt(argb[i]);
    });
    colour = 0;
    for (int v : argb) colour = (colour << 8) | (static_cast<unsigned>(v) & 0xFFu);
}

void ColorState::LoadColor(const zelXMLNode& node, std::uint32_t& colour) {
    unsigned long c = colour;
    LoadColor(node, c);
    colour = static_cast<std::uint32_t>(c);
}

void ColorState::StoreColor(const zelXMLNode& node, unsigned long colour) {
    if (!node.isValid()) return;
    node.setAttributeInt(L"a", static_cast<int>((colour >> 24) & 0xFF));
    node.setAttributeInt(L"r", static_cast<int>((colour >> 16) & 0xFF));
    node.setAttributeInt(L"g", static_cast<int>((colour >> 8) & 0xFF));
    node.setAttributeInt(L"b", static_cast<int>(colour & 0xFF));
}

FontDescriptor::FontDescriptor() { Reset(); }
FontDescriptor::FontDescriptor(const std::wstring& faceName, std::int32_t height) : name(faceName), size(height) {}
FontDescriptor::FontDescriptor(const FontDescriptor& other) { Assign(other); }
FontDescriptor& FontDescriptor::operator=(const FontDescriptor& other) {
    if (this != &other) Assign(other);
    return *this;
}
FontDescriptor::~FontDescriptor() = default;

void FontDescriptor::Assign(const FontDescriptor& other) {
    name = other.name;
    size = other.size;
}

void FontDescriptor::Reset() {
    name = L"Tahoma";
    size = 16;
}

bool FontDescriptor::operator==(const FontDescriptor& other) const { return size == other.size && name == other.name; }

bool FontDescriptor::operator<(const FontDescriptor& other) const {
    if (size != other.size) return size < other.size;
    // Compare as UTF-16 code units so the order is the same on every platform.
    if constexpr (sizeof(wchar_t) == 2) return name < other.name;
    return uc::ToUtf16(name) < uc::ToUtf16(other.name);
}

void FontDescriptor::Load(const zelXMLNode& node) {
    name.clear();
    size = 16;
    node.forEachAttribute([&](const zelXMLAttribute& a) {
        switch (a.oneOf({L"name", L"size"})) {
        case 0: name = a.value(); break;
        case 1: a.toInt(size); break;
        }
    });
}

void FontDescriptor::Store(const zelXMLNode& node) const {
    node.setAttribute(L"name", name.c_str());
    node.setAttributeInt(L"size", size);
}
