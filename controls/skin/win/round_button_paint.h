// RoundButtonPainter: paints a round button (face, icon, caption, step arrows) into any device context.
#pragma once

#include <string>
#include <utility>

#include "platform/export.h"
#include "platform/win/handles.h"
#include "skin/button_style.h"
#include "skin/round_button_logic.h"
#include "skin/win/gdiplus.h"

namespace uc::skin {

// Everything one paint depends on; the button fills it from its state before each paint.
struct RoundButtonLook {
    const tButtonStyle* style = nullptr;  // nothing is painted without one
    int faceState = 0;                    // slot chosen by the owner draw (0-3)
    bool gray = false;                    // paints slot 1 and a gray icon
    std::wstring caption;
    HFONT font = nullptr;               // null: the DC's font
    Gdiplus::Bitmap* icon = nullptr;    // owned by ImageRepository; null or unreadable: no icon
    int iconLocation = IconNone;        // where `icon` goes (the face gives way to the background only for the
                                        // style's own location 6)
    ButtonType type = RadioButton;
    int incrementRate = 0;
};

class UC_API RoundButtonPainter {
public:
    // Larger sides are painted at this size from the top-left (far beyond any screen; path gradients of much
    // larger sizes exhaust the stack of some GDI+ implementations).
    static constexpr int kMaxPaintSide = 2048;
    // Painted images up to this size are kept for repaints; larger ones are released after the paint.
    static constexpr long long kMaxCachedPixels = 1024LL * 1024LL;
    // Painted images kept: a button mostly alternates between two looks (released and held down).
    static constexpr int kCachedImages = 2;
    static constexpr COLORREF kTransparentKey = RGB(1, 1, 1);

    RoundButtonPainter() = default;
    RoundButtonPainter(const RoundButtonPainter&) = delete;
    RoundButtonPainter& operator=(const RoundButtonPainter&) = delete;
    ~RoundButtonPainter();

    // Paints `look` into (0,0)-(width,height) of `dc`. Off screen (the default) it paints into a memory bitmap
    // first filled with RGB(1,1,1) and copies it with that colour transparent, so the parent's background shows
    // around the face; a repaint of a look painted before copies the kept image. A zero-size rectangle paints
    // nothing; sides beyond kMaxPaintSide are cut to it (logged once per size).
    void Draw(HDC dc, int width, int height, const RoundButtonLook& look);

    bool GetOffScreen() const { return m_offScreen; }
    void SetOffScreen(bool offScreen) { m_offScreen = offScreen; }

    // The slot handed to the style's DrawFace: 1 whenever the button is gray, else the face state.
    static int FaceSlot(const RoundButtonLook& look) { return look.gray ? 1 : look.faceState; }
    // Caption colour of the last paint (GDI layout), for checks.
    COLORREF LastCaptionColour() const { return m_captionColour; }
    // Forgets the kept images and releases their bitmaps (after a font or image cache was emptied, say).
    void Invalidate();
    // Paints that had to draw rather than copy a kept image.
    unsigned long PaintsDrawn() const { return m_drawn; }

private:
    // One painted image and everything it was painted from.
    struct Image {
        UniqueHBitmap bitmap;
        int width = 0, height = 0;
        bool valid = false;
        unsigned long lastUse = 0;
        tButtonStyle style;
        RoundButtonLook look;  // its style pointer is not compared: `style` holds the values
        bool layoutLeft = false;
        int consoleType = 0;
        COLORREF captionColour = 0;
        bool Matches(const RoundButtonLook& l, int w, int h, bool left, int console) const;
    };

    void DrawFace(Gdiplus::Graphics& g, int width, int height, const RoundButtonLook& look) const;
    void DrawIcon(Gdiplus::Graphics& g, int width, int height, const RoundButtonLook& look) const;
    // `target` holds what has been painted so far (the caption colour is read from its centre).
    void DrawCaption(HDC target, int width, int height, const RoundButtonLook& look);
    void DrawArrows(Gdiplus::Graphics& g, int width, int height, const RoundButtonLook& look) const;
    void Paint(HDC target, int width, int height, const RoundButtonLook& look);
    // Paints through a kept or new memory bitmap; false when none can be had.
    bool DrawOffScreen(HDC dc, int width, int height, const RoundButtonLook& look);

    bool m_offScreen = true;
    COLORREF m_captionColour = 0;
    unsigned long m_uses = 0;
    unsigned long m_drawn = 0;
    UniqueHdc m_memDc;
    Image m_images[kCachedImages];
    // The last sizes reported as oversized or painted directly, so repaints do not log again.
    std::pair<int, int> m_loggedOversize{0, 0};
    std::pair<int, int> m_loggedDirect{0, 0};
};

}  // namespace uc::skin
