// tButtonStyle: the complete look of one skinned button, its XML form, and (on Windows) its painted face.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/export.h"
#include "platform/xml.h"
#include "skin/descriptors.h"

#ifdef _WIN32
namespace Gdiplus {
class Graphics;
class GraphicsPath;
struct Rect;
}  // namespace Gdiplus
#endif

// One stop of the multi-stop gradient: its position (0..1) and one ARGB colour per colour slot.
// Only the colours of the four named slots have an XML form.
struct UC_API RibbonItem {
    static constexpr int kSlots = 5;
    float position;
    std::uint32_t colours[kSlots];

    RibbonItem();
    RibbonItem(const RibbonItem& other);
    RibbonItem& operator=(const RibbonItem& other);
    bool operator==(const RibbonItem& other) const;
    bool operator!=(const RibbonItem& other) const { return !(*this == other); }

private:
    void Assign(const RibbonItem& other);
};

// Brush id 0: a plain fill.
struct UC_API tSolidBrush {
    std::int32_t fill;  // 0 paints the face fully transparent

    void Reset();
    bool operator==(const tSolidBrush& other) const;
    bool operator!=(const tSolidBrush& other) const { return !(*this == other); }
    void Load(const zelXMLNode& brush);
    void Store(const zelXMLNode& brush) const;
};

// Brush id 1: a two-colour linear gradient from the face's primary to its secondary colour.
struct UC_API tLinearBrush {
    float rotate;  // degrees; an integer in XML
    float focus;
    float scale;
    std::int32_t shapeBell;
    std::int32_t gamma;
    std::int32_t shapeTriangle;

    void Reset();
    bool operator==(const tLinearBrush& other) const;
    bool operator!=(const tLinearBrush& other) const { return !(*this == other); }
    void Load(const zelXMLNode& brush);
    void Store(const zelXMLNode& brush) const;
};

// Brush id 2: a linear gradient through a list of colour stops; an empty list paints the default ramp.
struct UC_API tMultiStopBrush {
    float rotate;  // degrees; an integer in XML
    std::vector<RibbonItem> stops;

    // Four stops at 0, 0.3, 0.35 and 1.0 with colours secondary, secondary, primary, secondary of each slot.
    void Reset(const ColorState (&colours)[RibbonItem::kSlots]);
    bool operator==(const tMultiStopBrush& other) const;
    bool operator!=(const tMultiStopBrush& other) const { return !(*this == other); }
    // "position" gives the number of stops ("0.00,0.30,..."; absent or empty: none); "enabled", "disabled", "clicked" and "pressed"
    // give that state's colours ("200 255 0 0,..."). Each list is cut to 199 characters, as the console's
    // reader always did: a list longer than that loses its tail.
    void Load(const zelXMLNode& brush);
    void Store(const zelXMLNode& brush) const;

    static constexpr std::size_t kAttributeBuffer = 200;  // characters, terminator included
};

// Brush id 3: a path gradient on the face outline, secondary colour at the centre, primary at the edge.
struct UC_API tPathBrush {
    float rotate;  // an integer in XML; not used for painting
    float focus;
    float focusx;
    float focusy;
    float scale;
    std::int32_t gamma;  // gamma correction of the fill; no XML form
    std::int32_t shapeBell;
    std::int32_t shapeTriangle;

    void Reset();
    bool operator==(const tPathBrush& other) const;
    bool operator!=(const tPathBrush& other) const { return !(*this == other); }
    void Load(const zelXMLNode& brush);
    void Store(const zelXMLNode& brush) const;
};

struct UC_API tButtonStyle {
    // Colour slots 0-3 are the named states; slot 4 has no name, is never loaded or stored and keeps its
    // defaults (deliberately asymmetric).
    enum State { Enabled = 0, Disabled = 1, Clicked = 2, Pressed = 3, Unnamed = 4 };
    static constexpr int kNamedStates = 4;
    static constexpr int kSlots = 5;
    enum BrushType { BrushSolid = 0, BrushLinear = 1, BrushMultiStop = 2, BrushPath = 3 };

    std::int32_t id;
    std::wstring name;
    std::wstring basename;
    std::int32_t flags;  // carried and copied; no XML form
    std::int32_t shadowText;
    std::int32_t scaleText;
    std::int32_t shape;
    double radius;
    double borderRatio;  // border thickness as a fraction of the face's shorter side
    FontDescriptor font;
    std::int32_t iconLocation;
    std::int32_t brushType;  // 0-3; any other value paints no face fill
    tSolidBrush solidBrush;
    tLinearBrush linearBrush;
    tMultiStopBrush multiStopBrush;
    tPathBrush pathBrush;
    std::uint32_t background;  // ARGB; the surround colour of the border
    ColorState colours[kSlots];

    tButtonStyle();
    tButtonStyle(const tButtonStyle& other);
    tButtonStyle& operator=(const tButtonStyle& other);
    ~tButtonStyle();

    void Reset();

    // Every field, all brush records and all five slots.
    bool operator==(const tButtonStyle& other) const;
    bool operator!=(const tButtonStyle& other) const { return !(*this == other); }

    // Merges a "style" element into the current values: what the element does not mention is kept, so a
    // derived style read on top of its base overrides only what it names. Children in any order; a later
    // duplicate wins. False (style unchanged) only for an invalid element.
    bool Load(const zelXMLNode& styleElement);
    // Writes the style; with a base, only the groups that differ from it. False only for an invalid element.
    bool Store(const zelXMLNode& styleElement, const tButtonStyle* base) const;

    // New alpha for the four colours of slots 0-3 and for every stop colour; slot 4 and `background` keep theirs.
    void SetAlpha(unsigned char alpha);

    // XML name of a named state ("enabled", "disabled", "clicked", "pressed"); empty for any other slot.
    static const std::wstring& StateName(int slot);
    // Slot of a state name (case-sensitive), or -1.
    static int StateIndex(const std::wstring& name);

#ifdef _WIN32
    // Paints the face for colour slot `state` (0-4; anything else paints nothing). Only `rect`'s size places
    // the outline, at (0,0); the gradients span `rect` itself.
    void DrawFace(Gdiplus::Graphics& g, const Gdiplus::Rect& rect, int state) const;
    // Resets `path` and adds the closed outline of `shape` in (0,0)-(width,height) of `rect`, `inset` inside.
    static void GeneratePath(Gdiplus::GraphicsPath& path, const Gdiplus::Rect& rect, int shape, int radius, int inset);
#endif

private:
    void Assign(const tButtonStyle& other);
    // Fills the state-name tables; run once while the library's static objects are initialised.
    static bool StaticInit();
    static std::wstring m_colStateStr[kNamedStates];
    static std::map<std::wstring, int> m_colStateMap;
    static const bool m_staticInitDone;
};

namespace uc::skin {
// Default desktop colour the style background starts from, as 0x00RRGGBB (the system colour on Windows).
UC_API std::uint32_t DesktopColour();
}  // namespace uc::skin
