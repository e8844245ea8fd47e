// tButtonStyle and its brush records: defaults, copies, comparisons, merging XML reads and difference writes.
#include "skin/button_style.h"

#include <cfloat>
#include <cmath>

#include "platform/text.h"
#include "skin/shape_figure.h"

namespace {

struct DefaultSlot {
    std::uint32_t border, facePrimary, faceSecondary, textColour;
    float brightness, brightness2;
};

constexpr DefaultSlot kDefaultSlots[tButtonStyle::kSlots] = {
    {0xC87B7BC0, 0xC80000A6, 0xC8B7B8E1, 0xC8FDFDFD, 1.0f, 1.0f},  // enabled
    {0xC8808080, 0xC8808080, 0xC8CCCCCC, 0xC8404040, 0.1f, 0.2f},  // disabled
    {0xC8C0C0C0, 0xC8D5D5FF, 0xC8C6CAD2, 0xC8020202, 1.8f, 1.0f},  // clicked
    {0xC8A48080, 0xC8404040, 0xC8C0C0C0, 0xC8020202, 1.5f, 1.0f},  // pressed
    {0xC8A48080, 0xC8404040, 0xC8C0C0C0, 0xC8020202, 2.0f, 1.0f},  // unnamed slot 4
};

float ToFloat(double v) {
    if (std::isnan(v)) return 0.0f;
    if (v > FLT_MAX) return FLT_MAX;
    if (v < -FLT_MAX) return -FLT_MAX;
    return static_cast<float>(v);
}

// Reals from a file may be garbage, infinite or out of float range: non-finite values take the default and
// narrowing saturates instead of overflowing. Elements are read in one pass over their attributes; a value is
// taken from the attribute of that name, else the default.
double Real(const zelXMLAttribute& a, double defaultValue) {
    double v = defaultValue;
    return a.toDouble(v) && std::isfinite(v) ? v : defaultValue;
}
float Float(const zelXMLAttribute& a, double defaultValue) { return ToFloat(Real(a, defaultValue)); }
float Whole(const zelXMLAttribute& a, int defaultValue) {
    int v = defaultValue;
    a.toInt(v);
    return static_cast<float>(v);
}

std::vector<std::wstring> SplitCommas(const std::wstring& text) {
    std::vector<std::wstring> parts;
    if (text.empty()) return parts;
    std::size_t start = 0;
    for (;;) {
        const std::size_t comma = text.find(L',', start);
        parts.push_back(text.substr(start, comma == std::wstring::npos ? std::wstring::npos : comma - start));
        if (comma == std::wstring::npos) break;
        start = comma + 1;
    }
    return parts;
}

// "a r g b" as four whole numbers, each cut to its low byte; false (colour unchanged) for anything else.
bool ParseStopColour(const std::wstring& text, std::uint32_t& colour) {
    unsigned bytes[4];
    int count = 0;
    std::size_t i = 0;
    while (i < text.size()) {
        while (i < text.size() && (text[i] == L' ' || text[i] == L'\t' || text[i] == L'\r' || text[i] == L'\n')) ++i;
        if (i >= text.size()) break;
        std::size_t end = i;
        while (end < text.size() && !(text[end] == L' ' || text[end] == L'\t' || text[end] == L'\r' || text[end] == L'\n'))
            ++end;
        int v = 0;
        if (count >= 4 || !uc::ParseInt(text.substr(i, end - i), v)) return false;
        bytes[count++] = static_cast<unsigned>(v) & 0xFFu;
        i = end;
    }
    if (count != 4) return false;
    colour = (bytes[0] << 24) | (bytes[1] << 16) | (bytes[2] << 8) | bytes[3];
    return true;
}

std::wstring CutToBuffer(const std::wstring& text) {
    return text.size() < tMultiStopBrush::kAttributeBuffer ? text : text.substr(0, tMultiStopBrush::kAttributeBuffer - 1);
}

void StoreReal(const zelXMLNode& node, const wchar_t* name, double value) { node.setAttributeDouble(name, value, 2); }
void StoreWhole(const zelXMLNode& node, const wchar_t* name, float value) {
    node.setAttributeInt(name, uc::skin::TruncateToInt(value));
}

}  // namespace

// ---- RibbonItem ----

RibbonItem::RibbonItem() : position(0.0f), colours{0, 0, 0, 0, 0} {}
RibbonItem::RibbonItem(const RibbonItem& other) { Assign(other); }
RibbonItem& RibbonItem::operator=(const RibbonItem& other) {
    if (this != &other) Assign(other);
    return *this;
}
void RibbonItem::Assign(const RibbonItem& other) {
    position = other.position;
    for (int i = 0; i < kSlots; ++i) colours[i] = other.colours[i];
}
bool RibbonItem::operator==(const RibbonItem& other) const {
    if (position != other.position) return false;
    for (int i = 0; i < kSlots; ++i)
        if (colours[i] != other.colours[i]) return false;
    return true;
}

// ---- brush records ----
// Brush flags an element leaves out keep their current value (the base's), through the in/out getAttributeInt.

void tSolidBrush::Reset() { fill = 1; }
bool tSolidBrush::operator==(const tSolidBrush& o) const { return fill == o.fill; }
void tSolidBrush::Load(const zelXMLNode& b) { b.getAttributeInt(L"fill", fill); }
void tSolidBrush::Store(const zelXMLNode& b) const { b.setAttributeInt(L"fill", fill); }

void tLinearBrush::Reset() {
    rotate = 90.0f;
    focus = 0.0f;
    scale = 1.0f;
    shapeBell = 0;
    gamma = 0;
    shapeTriangle = 1;
}
bool tLinearBrush::operator==(const tLinearBrush& o) const {
    return rotate == o.rotate && focus == o.focus && scale == o.scale && shapeBell == o.shapeBell &&
           gamma == o.gamma && shapeTriangle == o.shapeTriangle;
}
void tLinearBrush::Load(const zelXMLNode& b) {
    rotate = 90.0f;
    focus = 0.0f;
    scale = 1.0f;
    b.forEachAttribute([this](const zelXMLAttribute& a) {
        switch (a.oneOf({L"rotate", L"focus", L"scale", L"shapeBell", L"gamma", L"shapeTriangle"})) {
        case 0: rotate = Whole(a, 90); break;
        case 1: focus = Float(a, 0.0); break;
        case 2: scale = Float(a, 1.0); break;
        case 3: a.toInt(shapeBell); break;
        case 4: a.toInt(gamma); break;
        case 5: a.toInt(shapeTriangle); break;
        }
    });
}
void tLinearBrush::Store(const zelXMLNode& b) const {
    StoreWhole(b, L"rotate", rotate);
    StoreReal(b, L"focus", focus);
    StoreReal(b, L"scale", scale);
    b.setAttributeInt(L"shapeBell", shapeBell);
    b.setAttributeInt(L"gamma", gamma);
    b.setAttributeInt(L"shapeTriangle", shapeTriangle);
}

void tPathBrush::Reset() {
    rotate = 0.0f;
    focus = 1.0f;
    focusx = 0.5f;
    focusy = 0.5f;
    scale = 1.0f;
    gamma = 0;
    shapeBell = 0;
    shapeTriangle = 1;
}
bool tPathBrush::operator==(const tPathBrush& o) const {
    return rotate == o.rotate && focus == o.focus && focusx == o.focusx && focusy == o.focusy && scale == o.scale &&
           gamma == o.gamma && shapeBell == o.shapeBell && shapeTriangle == o.shapeTriangle;
}
void tPathBrush::Load(const zelXMLNode& b) {
    rotate = 0.0f;
    focus = 1.0f;
    focusx = 0.5f;
    focusy = 0.5f;
    scale = 1.0f;
    b.forEachAttribute([this](const zelXMLAttribute& a) {
        switch (a.oneOf({L"rotate", L"focus", L"focusx", L"focusy", L"scale", L"shapeBell", L"shapeTriangle"})) {
        case 0: rotate = Whole(a, 0); break;
        case 1: focus = Float(a, 1.0); break;
        case 2: focusx = Float(a, 0.5); break;
        case 3: focusy = Float(a, 0.5); break;
        case 4: scale = Float(a, 1.0); break;
        case 5: a.toInt(shapeBell); break;
        case 6: a.toInt(shapeTriangle); break;
        }
    });
}
void tPathBrush::Store(const zelXMLNode& b) const {
    StoreWhole(b, L"rotate", rotate);
    StoreReal(b, L"focus", focus);
    StoreReal(b, L"focusx", focusx);
    StoreReal(b, L"focusy", focusy);
    StoreReal(b, L"scale", scale);
    b.setAttributeInt(L"shapeBell", shapeBell);
    b.setAttributeInt(L"shapeTriangle", shapeTriangle);
}

void tMultiStopBrush::Reset(const ColorState (&c)[RibbonItem::kSlots]) {
    rotate = 90.0f;
    stops.assign(4, RibbonItem());
    const float positions[4] = {0.0f, 0.3f, 0.35f, 1.0f};
    for (int i = 0; i < 4; ++i) {
        stops[i].position = positions[i];
        for (int s = 0; s < RibbonItem::kSlots; ++s)
            stops[i].colours[s] = i == 2 ? c[s].facePrimary : c[s].faceSecondary;
    }
}
bool tMultiStopBrush::operator==(const tMultiStopBrush& o) const { return rotate == o.rotate && stops == o.stops; }

void tMultiStopBrush::Load(const zelXMLNode& b) {
    rotate = 90.0f;
    std::wstring position, lists[tButtonStyle::kNamedStates];
    bool listed[tButtonStyle::kNamedStates] = {};
    b.forEachAttribute([&](const zelXMLAttribute& a) {
        const int k = a.oneOf({L"rotate", L"position", L"enabled", L"disabled", L"clicked", L"pressed"});
        if (k == 0) {
            rotate = Whole(a, 90);
        } else if (k == 1) {
            position = a.value();
        } else if (k > 1) {
            lists[k - 2] = a.value();  // the state names in slot order
            listed[k - 2] = true;
        }
    });
    // The stop count comes from "position" (absent or empty: no stops, as Store writes a brush without stops).
    // Stops that existed before keep their colours where the state lists do not reach; new stops start at zero.
    const std::vector<std::wstring> parts = SplitCommas(CutToBuffer(position));
    stops.resize(parts.size());
    for (std::size_t i = 0; i < parts.size(); ++i) {
        double p = 0.0;
        stops[i].position = uc::ParseDouble(parts[i], p) && std::isfinite(p) ? ToFloat(p) : 0.0f;
    }
    for (int s = 0; s < tButtonStyle::kNamedStates; ++s) {
        if (!listed[s]) continue;
        const std::vector<std::wstring> colours = SplitCommas(CutToBuffer(lists[s]));
        for (std::size_t i = 0; i < colours.size() && i < stops.size(); ++i) ParseStopColour(colours[i], stops[i].colours[s]);
    }
}

void tMultiStopBrush::Store(const zelXMLNode& b) const {
    StoreWhole(b, L"rotate", rotate);
    if (stops.empty()) return;
    std::wstring positions;
    for (const RibbonItem& r : stops) {
        if (!positions.empty()) positions += L',';
        positions += uc::FormatFixed(r.position, 2);
    }
    b.setAttribute(L"position", positions);
    for (int s = 0; s < tButtonStyle::kNamedStates; ++s) {
        std::wstring list;
        for (const RibbonItem& r : stops) {
            if (!list.empty()) list += L',';
            const std::uint32_t c = r.colours[s];
            list += uc::Format(L"%d %d %d %d", static_cast<int>((c >> 24) & 0xFF), static_cast<int>((c >> 16) & 0xFF),
                               static_cast<int>((c >> 8) & 0xFF), static_cast<int>(c & 0xFF));
        }
        b.setAttribute(tButtonStyle::StateName(s).c_str(), list);
    }
}

// ---- tButtonStyle ----

std::wstring tButtonStyle::m_colStateStr[kNamedStates];
std::map<std::wstring, int> tButtonStyle::m_colStateMap;
const bool tButtonStyle::m_staticInitDone = tButtonStyle::StaticInit();

bool tButtonStyle::StaticInit() {
    static const wchar_t* const names[kNamedStates] = {L"enabled", L"disabled", L"clicked", L"pressed"};
    m_colStateMap.clear();
    for (int i = 0; i < kNamedStates; ++i) {
        m_colStateStr[i] = names[i];
        m_colStateMap[m_colStateStr[i]] = i;
    }
    return true;
}

const std::wstring& tButtonStyle::StateName(int slot) {
    static const std::wstring none;
    return slot >= 0 && slot < kNamedStates ? m_colStateStr[slot] : none;
}

int tButtonStyle::StateIndex(const std::wstring& stateName) {
    auto it = m_colStateMap.find(stateName);
    return it == m_colStateMap.end() ? -1 : it->second;
}

tButtonStyle::tButtonStyle() { Reset(); }
tButtonStyle::tButtonStyle(const tButtonStyle& other) { Assign(other); }
tButtonStyle& tButtonStyle::operator=(const tButtonStyle& other) {
    if (this != &other) Assign(other);
    return *this;
}
tButtonStyle::~tButtonStyle() = default;

void tButtonStyle::Assign(const tButtonStyle& o) {
    id = o.id;
    name = o.name;
    basename = o.basename;
    flags = o.flags;
    shadowText = o.shadowText;
    scaleText = o.scaleText;
    shape = o.shape;
    radius = o.radius;
    borderRatio = o.borderRatio;
    font = o.font;
    iconLocation = o.iconLocation;
    brushType = o.brushType;
    solidBrush = o.solidBrush;
    linearBrush = o.linearBrush;
    multiStopBrush = o.multiStopBrush;
    pathBrush = o.pathBrush;
    background = o.background;
    for (int i = 0; i < kSlots; ++i) colours[i] = o.colours[i];
}

void tButtonStyle::Reset() {
    id = -1;
    name.clear();
    basename.clear();
    flags = 0;
    shadowText = 1;
    scaleText = 0;
    shape = 0;
    radius = 10.0;
    borderRatio = 0.18;
    font.Reset();
    iconLocation = 0;
    brushType = BrushLinear;
    background = 0xC8000000u | (uc::skin::DesktopColour() & 0x00FFFFFFu);
    for (int i = 0; i < kSlots; ++i) {
        const DefaultSlot& d = kDefaultSlots[i];
        colours[i].border = d.border;
        colours[i].facePrimary = d.facePrimary;
        colours[i].faceSecondary = d.faceSecondary;
        colours[i].textColour = d.textColour;
        colours[i].brightness = d.brightness;
        colours[i].brightness2 = d.brightness2;
    }
    solidBrush.Reset();
    linearBrush.Reset();
    pathBrush.Reset();
    multiStopBrush.Reset(colours);
}

bool tButtonStyle::operator==(const tButtonStyle& o) const {
    if (id != o.id || name != o.name || basename != o.basename || flags != o.flags || shadowText != o.shadowText ||
        scaleText != o.scaleText || shape != o.shape || radius != o.radius || borderRatio != o.borderRatio ||
        font != o.font || iconLocation != o.iconLocation || brushType != o.brushType || solidBrush != o.solidBrush ||
        linearBrush != o.linearBrush || multiStopBrush != o.multiStopBrush || pathBrush != o.pathBrush ||
        background != o.background)
        return false;
    for (int i = 0; i < kSlots; ++i)
        if (colours[i] != o.colours[i]) return false;
    return true;
}

bool tButtonStyle::Load(const zelXMLNode& el) {
    if (!el.isValid()) return false;
    id = -1;
    name.clear();
    basename.clear();
    el.forEachAttribute([this](const zelXMLAttribute& a) {
        switch (a.oneOf({L"id", L"name", L"basename"})) {
        case 0: a.toInt(id); break;
        case 1: name = a.value(); break;
        case 2: basename = a.value(); break;
        }
    });
    for (zelXMLNode child = el.getFirstChild(); child.isValid(); ++child) {
        const int group = child.nameOneOf({L"shape", L"font", L"icon", L"color"});
        if (group == 0) {
            shape = 0;
            radius = 10.0;
            borderRatio = ToFloat(0.18);  // single precision, as it always was read
            child.forEachAttribute([this](const zelXMLAttribute& a) {
                switch (a.oneOf({L"shape", L"radius", L"borderRatio"})) {
                case 0: a.toInt(shape); break;
                case 1: radius = Real(a, 10.0); break;
                case 2: borderRatio = Float(a, 0.18); break;
                }
            });
        } else if (group == 1) {
            font.name.clear();
            font.size = 16;
            shadowText = 1;
            scaleText = 0;
            child.forEachAttribute([this](const zelXMLAttribute& a) {
                switch (a.oneOf({L"name", L"size", L"shadowText", L"scaleText"})) {
                case 0: font.name = a.value(); break;
                case 1: a.toInt(font.size); break;
                case 2: a.toInt(shadowText); break;
                case 3: a.toInt(scaleText); break;
                }
            });
        } else if (group == 2) {
            iconLocation = child.getAttributeInt(L"location", 0);
        } else if (group == 3) {
            for (zelXMLNode c = child.getFirstChild(); c.isValid(); ++c) {
                // The four state names in slot order, then the other children of "color".
                const int k = c.nameOneOf({L"enabled", L"disabled", L"clicked", L"pressed", L"background", L"brush"});
                if (k >= 0 && k < kNamedStates) {
                    colours[k].Load(c);
                } else if (k == 4) {
                    ColorState::LoadColor(c, background);
                } else if (k == 5) {
                    brushType = c.getAttributeInt(L"id", 1);
                    switch (brushType) {
                    case BrushSolid: solidBrush.Load(c); break;
                    case BrushLinear: linearBrush.Load(c); break;
                    case BrushMultiStop: multiStopBrush.Load(c); break;
                    case BrushPath: pathBrush.Load(c); break;
                    default: break;  // out of range: no parameters, and no face fill when painted
                    }
                }
            }
        }
    }
    return true;
}

bool tButtonStyle::Store(const zelXMLNode& el, const tButtonStyle* base) const {
    if (!el.isValid()) return false;
    el.setAttributeInt(L"id", id);
    el.setAttribute(L"name", name);
    if (!basename.empty()) el.setAttribute(L"basename", basename);

    if (!base || base->shape != shape || base->radius != radius || base->borderRatio != borderRatio) {
        zelXMLNode s = el.createElement(L"shape");
        s.setAttributeInt(L"shape", shape);
        StoreReal(s, L"radius", radius);
        StoreReal(s, L"borderRatio", borderRatio);
    }
    if (!base || base->font != font || base->shadowText != shadowText || base->scaleText != scaleText) {
        zelXMLNode f = el.createElement(L"font");
        font.Store(f);
        f.setAttributeInt(L"shadowText", shadowText);
        f.setAttributeInt(L"scaleText", scaleText);
    }
    if (!base || base->iconLocation != iconLocation) el.createElement(L"icon").setAttributeInt(L"location", iconLocation);

    bool slotDiffers[kSlots];
    bool anySlot = false;
    for (int i = 0; i < kSlots; ++i) {
        slotDiffers[i] = !base || base->colours[i] != colours[i];
        anySlot = anySlot || slotDiffers[i];
    }
    const bool backgroundDiffers = !base || base->background != background;
    bool brushDiffers = !base || base->brushType != brushType;
    if (!brushDiffers) {
        switch (brushType) {
        case BrushSolid: brushDiffers = base->solidBrush != solidBrush; break;
        case BrushLinear: brushDiffers = base->linearBrush != linearBrush; break;
        case BrushMultiStop: brushDiffers = base->multiStopBrush != multiStopBrush; break;
        case BrushPath: brushDiffers = base->pathBrush != pathBrush; break;
        default: break;
        }
    }
    // A difference in slot 4 alone still creates "color", which then stays empty: that slot has no XML form.
    if (!anySlot && !backgroundDiffers && !brushDiffers) return true;

    zelXMLNode color = el.createElement(L"color");
    for (int i = 0; i < kNamedStates; ++i)
        if (slotDiffers[i]) colours[i].Store(color.createElement(m_colStateStr[i].c_str()));
    if (backgroundDiffers) ColorState::StoreColor(color.createElement(L"background"), background);
    if (brushDiffers) {
        zelXMLNode b = color.createElement(L"brush");
        b.setAttributeInt(L"id", brushType);
        switch (brushType) {
        case BrushSolid: solidBrush.Store(b); break;
        case BrushLinear: linearBrush.Store(b); break;
        case BrushMultiStop: multiStopBrush.Store(b); break;
        case BrushPath: pathBrush.Store(b); break;
        default: break;
        }
    }
    return true;
}

void tButtonStyle::SetAlpha(unsigned char alpha) {
    const std::uint32_t a = static_cast<std::uint32_t>(alpha) << 24;
    auto apply = [a](std::uint32_t& c) { c = a | (c & 0x00FFFFFFu); };
    for (int i = 0; i < kNamedStates; ++i) {
        apply(colours[i].border);
        apply(colours[i].facePrimary);
        apply(colours[i].faceSecondary);
        apply(colours[i].textColour);
    }
    // Every stop colour, slot 4's included: the stops carry no slot asymmetry.
    for (RibbonItem& r : multiStopBrush.stops)
        for (std::uint32_t& c : r.colours) apply(c);
}
