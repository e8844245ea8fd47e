// Round button painting: off-screen surface with its colour key, GDI+ face and icon, GDI caption, step arrows.
#include "skin/win/round_button_paint.h"

#include <algorithm>
#include <cstdint>

#include "platform/logger.h"
#include "platform/paths.h"
#include "skin/round_button_layout.h"

using namespace Gdiplus;

namespace uc::skin {

namespace {

// Restores a DC's selections, modes and colours on scope exit (painting straight onto a caller's DC).
class SavedDc {
public:
    explicit SavedDc(HDC dc) : m_dc(dc), m_saved(::SaveDC(dc)) {}
    SavedDc(const SavedDc&) = delete;
    SavedDc& operator=(const SavedDc&) = delete;
    ~SavedDc() {
        if (m_saved) ::RestoreDC(m_dc, m_saved);
    }

private:
    HDC m_dc;
    int m_saved;
};

// Hands GDI the HDC under a GDI+ Graphics (flushing what GDI+ has drawn) and gives it back on scope exit.
class GraphicsHdc {
public:
    explicit GraphicsHdc(Graphics& g) : m_g(g), m_dc(g.GetHDC()) {}
    GraphicsHdc(const GraphicsHdc&) = delete;
    GraphicsHdc& operator=(const GraphicsHdc&) = delete;
    ~GraphicsHdc() {
        if (m_dc) m_g.ReleaseHDC(m_dc);
    }
    HDC get() const { return m_dc; }

private:
    Graphics& m_g;
    HDC m_dc;
};

Color OpaqueGdiColour(std::uint32_t argb) { return Color(255, (argb >> 16) & 0xFF, (argb >> 8) & 0xFF, argb & 0xFF); }

bool Readable(Bitmap* image) { return image && image->GetLastStatus() == Ok && image->GetWidth() && image->GetHeight(); }

}  // namespace

bool RoundButtonPainter::Image::Matches(const RoundButtonLook& l, int w, int h, bool left, int console) const {
    return valid && width == w && height == h && layoutLeft == left && consoleType == console &&
           look.faceState == l.faceState && look.gray == l.gray && look.font == l.font && look.icon == l.icon &&
           look.iconLocation == l.iconLocation && look.type == l.type && look.incrementRate == l.incrementRate &&
           look.caption == l.caption && style == *l.style;
}

RoundButtonPainter::~RoundButtonPainter() { Invalidate(); }

void RoundButtonPainter::Invalidate() {
    for (Image& image : m_images) {
        image.bitmap.reset();
        image.valid = false;
        image.width = image.height = 0;
    }
}

void RoundButtonPainter::Draw(HDC dc, int width, int height, const RoundButtonLook& look) {
    if (!dc || width <= 0 || height <= 0 || !look.style) return;
    if (width > kMaxPaintSide || height > kMaxPaintSide) {
        const int w = std::min(width, kMaxPaintSide), h = std::min(height, kMaxPaintSide);
        if (m_loggedOversize != std::make_pair(width, height))
            UC_LOG(zelLogger::Fallback)(L"Round button %dx%d painted as %dx%d from its top-left", width, height, w, h);
        m_loggedOversize = {width, height};
        width = w;
        height = h;
    }
    if (m_offScreen) {
        if (DrawOffScreen(dc, width, height, look)) return;
        if (m_loggedDirect != std::make_pair(width, height)) {
            UC_LOG(zelLogger::Fallback)(L"Round button %dx%d painted directly: no off-screen bitmap", width, height);
            m_loggedDirect = {width, height};
        }
    }
    SavedDc saved(dc);
    ++m_drawn;
    Paint(dc, width, height, look);
}

bool RoundButtonPainter::DrawOffScreen(HDC dc, int width, int height, const RoundButtonLook& look) {
    if (!m_memDc) m_memDc.reset(::CreateCompatibleDC(nullptr));
    if (!m_memDc) return false;
    const bool left = utilsExam::IsLayoutLeft();
    const int console = utilsExam::m_consoleType;
    Image* image = nullptr;
    for (Image& candidate : m_images)
        if (candidate.Matches(look, width, height, left, console)) image = &candidate;
    const bool kept = image != nullptr;
    if (!kept) {
        // The least recently used image gives way; its bitmap is reused when the size matches.
        image = &m_images[0];
        for (Image& candidate : m_images)
            if (candidate.lastUse < image->lastUse) image = &candidate;
        image->valid = false;
        if (!image->bitmap || image->width != width || image->height != height) {
            image->bitmap.reset();
            // A 24-bit DIB whatever `dc` is: a compatible bitmap of a memory DC could be monochrome, and
            // without an alpha byte the colour key matches GDI+'s opaque pixels as well as the fill.
            BITMAPINFO info{};
            info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
            void* bits = nullptr;
            image->bitmap.reset(::CreateDIBSection(m_memDc.get(), &info, DIB_RGB_COLORS, &bits, nullptr, 0));
            if (!image->bitmap) return false;
            image->width = width;
            image->height = height;
        }
    }
    image->lastUse = ++m_uses;
    {
        SelectObjectGuard selected(m_memDc.get(), image->bitmap.get());
        HDC surface = m_memDc.get();
        if (kept) {
            m_captionColour = image->captionColour;
        } else {
            // The key colour marks what the face leaves unpainted.
            ::SetBkColor(surface, kTransparentKey);
            const RECT all{0, 0, width, height};
            ::ExtTextOutW(surface, 0, 0, ETO_OPAQUE, &all, nullptr, 0, nullptr);
            ++m_drawn;
            Paint(surface, width, height, look);
            image->style = *look.style;
            image->look = look;
            image->look.style = nullptr;
            image->layoutLeft = left;
            image->consoleType = console;
            image->captionColour = m_captionColour;
            image->valid = static_cast<long long>(width) * height <= kMaxCachedPixels;
        }
        ::TransparentBlt(dc, 0, 0, width, height, surface, 0, 0, width, height, kTransparentKey);
    }
    if (!image->valid) {  // too large to keep
        image->bitmap.reset();
        image->width = image->height = 0;
    }
    return true;
}

void RoundButtonPainter::Paint(HDC target, int width, int height, const RoundButtonLook& look) {
    Graphics g(target);
    g.SetSmoothingMode(SmoothingModeAntiAlias);
    if (look.style->iconLocation == IconOnBackground) {
        SolidBrush background(OpaqueGdiColour(look.style->background));
        g.FillRectangle(&background, 0, 0, width, height);
    } else {
        DrawFace(g, width, height, look);
    }
    DrawIcon(g, width, height, look);
    {
        GraphicsHdc hdc(g);
        if (hdc.get()) DrawCaption(hdc.get(), width, height, look);
    }
    DrawArrows(g, width, height, look);
}

void RoundButtonPainter::DrawFace(Graphics& g, int width, int height, const RoundButtonLook& look) const {
    look.style->DrawFace(g, Rect(0, 0, width, height), FaceSlot(look));
}

void RoundButtonPainter::DrawIcon(Graphics& g, int width, int height, const RoundButtonLook& look) const {
    if (!Readable(look.icon)) return;
    const int iw = static_cast<int>(look.icon->GetWidth()), ih = static_cast<int>(look.icon->GetHeight());
    const LayoutRect r = PlaceIcon(look.iconLocation, width, height, iw, ih, look.style->borderRatio,
                                   look.style->shape, utilsExam::IsLayoutLeft());
    if (r.empty()) return;
    ImageAttributes attributes;
    const IconMatrix* matrix = look.gray ? &GrayIconMatrix() : (look.faceState == 1 ? &DisabledIconMatrix() : nullptr);
    if (matrix) {
        ColorMatrix cm;
        for (int i = 0; i < 5; ++i)
            for (int j = 0; j < 5; ++j) cm.m[i][j] = matrix->m[i][j];
        attributes.SetColorMatrix(&cm);
    }
    if (r.width != iw || r.height != ih) g.SetInterpolationMode(InterpolationModeHighQualityBicubic);
    g.DrawImage(look.icon, Rect(r.x, r.y, r.width, r.height), 0, 0, iw, ih, UnitPixel, matrix ? &attributes : nullptr);
}

void RoundButtonPainter::DrawCaption(HDC target, int width, int height, const RoundButtonLook& look) {
    const tButtonStyle& style = *look.style;
    if (look.gray || look.faceState == 1) {
        m_captionColour = ArgbToColorRef(style.colours[1].textColour);
    } else {
        // Contrast with what was actually painted under the caption.
        const COLORREF centre = ::GetPixel(target, width / 2, height / 2);
        const COLORREF face = centre != CLR_INVALID ? centre : ArgbToColorRef(style.colours[FaceSlot(look)].facePrimary);
        m_captionColour = TextColor(face);
    }
    if (look.caption.empty()) return;

    Bitmap* icon = Readable(look.icon) ? look.icon : nullptr;
    const LayoutRect iconRect =
        icon ? PlaceIcon(look.iconLocation, width, height, static_cast<int>(icon->GetWidth()),
                         static_cast<int>(icon->GetHeight()), style.borderRatio, style.shape, utilsExam::IsLayoutLeft())
             : LayoutRect{};
    const LayoutRect room = PlaceCaption(look.iconLocation, width, height, iconRect);
    RECT rc{room.x, room.y, room.x + room.width, room.y + room.height};

    SelectObjectGuard font(target, look.font);
    ::SetBkMode(target, TRANSPARENT);
    UINT format = DT_CENTER;
    if (look.caption.find(L'\n') == std::wstring::npos) {
        format |= DT_SINGLELINE | DT_VCENTER;
    } else {
        // Several lines: measure, then centre the block vertically.
        RECT measure = rc;
        ::DrawTextW(target, look.caption.c_str(), static_cast<int>(look.caption.size()), &measure,
                    format | DT_WORDBREAK | DT_CALCRECT);
        const int offset = ((rc.bottom - rc.top) - (measure.bottom - measure.top)) / 2;
        if (offset > 0) rc.top += offset;
        format |= DT_WORDBREAK;
    }
    auto draw = [&](COLORREF colour, int dx, int dy) {
        RECT at{rc.left + dx, rc.top + dy, rc.right + dx, rc.bottom + dy};
        ::SetTextColor(target, colour);
        ::DrawTextW(target, look.caption.c_str(), static_cast<int>(look.caption.size()), &at, format);
    };
    if (style.shadowText && (look.faceState == 0 || look.faceState == 2)) draw(0xFFFFFF - m_captionColour, 1, 1);
    draw(m_captionColour, 0, 0);
}

void RoundButtonPainter::DrawArrows(Graphics& g, int width, int height, const RoundButtonLook& look) const {
    const auto arrows = PlanArrows(look.type, width, height, look.incrementRate);
    if (arrows.empty()) return;
    const BYTE r = GetRValue(m_captionColour), gr = GetGValue(m_captionColour), b = GetBValue(m_captionColour);
    SolidBrush active(Color(255, r, gr, b)), idle(Color(120, r, gr, b));
    for (const StepArrow& a : arrows) {
        Point pts[3];
        for (int i = 0; i < 3; ++i) pts[i] = Point(a.points[i].first, a.points[i].second);
        g.FillPolygon(a.active ? &active : &idle, pts, 3);
    }
}

}  // namespace uc::skin
