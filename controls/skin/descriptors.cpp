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
    LoadColor(node.getChildByName(L"facePrimary"), facePrimary);
    LoadColor(node.getChildByName(L"faceSeconday"), faceSecondary);
    LoadColor(node.getChildByName(L"border"), border);
}

void ColorState::Store(const zelXMLNode& node) const {
    StoreColor(node.createElement(L"facePrimary"), facePrimary);
    StoreColor(node.createElement(L"faceSeconday"), faceSecondary);
    StoreColor(node.createElement(L"border"), border);
}

void ColorState::LoadColor(const zelXMLNode& node, unsigned long& colour) {
    if (!node.isValid()) return;
    const unsigned a = static_cast<unsigned>(node.getAttributeInt(L"a", 200)) & 0xFFu;
    const unsigned r = static_cast<unsigned>(node.getAttributeInt(L"r", 0)) & 0xFFu;
    const unsigned g = static_cast<unsigned>(node.getAttributeInt(L"g", 0)) & 0xFFu;
    const unsigned b = static_cast<unsigned>(node.getAttributeInt(L"b", 0)) & 0xFFu;
    colour = (static_cast<unsigned long>(a) << 24) | (r << 16) | (g << 8) | b;
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
    name = node.getAttribute(L"name", L"");
    size = node.getAttributeInt(L"size", 16);
}

void FontDescriptor::Store(const zelXMLNode& node) const {
    node.setAttribute(L"name", name.c_str());
    node.setAttributeInt(L"size", size);
}
