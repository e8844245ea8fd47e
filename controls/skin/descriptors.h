// Colour set of one interaction state and font description: the small value records skinned controls are drawn from.
#pragma once

#include <cstdint>
#include <string>

#include "platform/export.h"
#include "platform/xml.h"

// Colours are ARGB: alpha in bits 31-24, then red, green, blue (the GDI+ layout, handed to GDI+ unchanged).
struct UC_API ColorState {
    std::uint32_t border;
    std::uint32_t facePrimary;
    std::uint32_t faceSecondary;
    std::uint32_t textColour;  // caption colour; copied and compared, never read from or written to XML
    float brightness;          // luminance factor of the multi-stop gradient in this state
    float brightness2;         // second factor; carried, copied and compared

    ColorState();
    ColorState(const ColorState& other);
    ColorState& operator=(const ColorState& other);

    bool operator==(const ColorState& other) const;
    bool operator!=(const ColorState& other) const { return !(*this == other); }

    // Reads the children "facePrimary", "faceSeconday" (sic, the file format's spelling) and "border";
    // an absent child leaves its field untouched.
    void Load(const zelXMLNode& node);
    void Store(const zelXMLNode& node) const;

    // One colour from/to the attributes "a", "r", "g", "b" of an element. "a" defaults to 200, the others to 0;
    // each is cut to its low byte. An invalid node leaves the colour as it was / writes nothing.
    static void LoadColor(const zelXMLNode& node, unsigned long& colour);
    static void StoreColor(const zelXMLNode& node, unsigned long colour);
    // The same for a 32-bit field.
    static void LoadColor(const zelXMLNode& node, std::uint32_t& colour);

private:
    void Assign(const ColorState& other);
};

struct UC_API FontDescriptor {
    std::wstring name;
    std::int32_t size;

    FontDescriptor();
    FontDescriptor(const std::wstring& faceName, std::int32_t height);
    FontDescriptor(const FontDescriptor& other);
    FontDescriptor& operator=(const FontDescriptor& other);
    ~FontDescriptor();

    void Reset();  // "Tahoma", 16

    bool operator==(const FontDescriptor& other) const;
    bool operator!=(const FontDescriptor& other) const { return !(*this == other); }
    // Key order of the font cache: by size (signed), then by name (UTF-16 code units, case-sensitive).
    bool operator<(const FontDescriptor& other) const;

    // "name" (default empty: an element without it clears the face name) and "size" (default 16).
    void Load(const zelXMLNode& node);
    void Store(const zelXMLNode& node) const;

private:
    void Assign(const FontDescriptor& other);
};
