// The please-wait box's geometry and animation, apart from its window: size from the wrapped text, frame,
// bar and text areas, the bar's moving gradient and what each timer tick does.
#pragma once

#include "platform/export.h"
#include "ui/geometry.h"

namespace uc::ui::wait_box {

inline constexpr int kWidth = 420;
inline constexpr int kTextWidth = 400;          // the text is wrapped to this many pixels
inline constexpr unsigned kShowTimer = 1;       // fires once after the show delay
inline constexpr unsigned kAnimationTimer = 2;  // moves the bar
inline constexpr unsigned kAnimationPeriodMs = 100;
inline constexpr int kBarStep = 10;
inline constexpr int kBarLimit = 400;           // the gradient offset stays within -400..400

// Screen rectangle of the box for a text of `lines` lines whose whole measured height is `textHeight`:
// 420 wide, (textHeight + 10) x lines + 55 high, centred on the screen (signed, truncating halves).
// The height term multiplies the whole text's height by the line count, so a many-line box is taller than its
// text needs; the box's layout keeps the text centred in the space.
UC_API Rect BoxRect(int screenW, int screenH, int textHeight, int lines);

// One filled rectangle of the frame: x, y, width, height and the system colour index (COLOR_*) to fill with.
struct FrameBand {
    int x, y, cx, cy;
    int sysColour;
};
// The four nested bands of the frame for a client area of w x b, outermost first.
UC_API void FrameBands(int w, int b, FrameBand out[4]);

// The bar: a fixed rectangle whose gradient brush moves with the offset.
struct Bar {
    int x, y, cx, cy;          // filled and outlined rectangle
    int x1, y1, x2, y2;        // gradient from (x1, y1) in the light colour to (x2, y2) in the dark one
};
inline constexpr unsigned kBarLightArgb = 0xFFC8FFFFu;
inline constexpr unsigned kBarDarkArgb = 0xFF0000FFu;
UC_API Bar BarFor(int b, int offset);

// Layout rectangle of the text (x, y, width, height), the same with or without the bar.
UC_API Rect TextArea(int b);

// What the box does on a timer tick.
enum class TickAction { None, Show, Animate };

// Timer state of one box: the show delay's one tick, then the animation's ticks.
class UC_API Animation {
public:
    // Offset after one animation step: +10, and past 400 back to -400.
    static int Step(int offset);

    TickAction OnTimer(unsigned id);
    int Offset() const { return m_offset; }
    bool Shown() const { return m_shown; }

private:
    int m_offset = 0;
    bool m_shown = false;
};

}  // namespace uc::ui::wait_box
