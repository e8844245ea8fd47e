// Portable window arithmetic: rectangles, centring in an area, anchored re-layout and tab page areas.
#pragma once

#include <cstdint>

#include "platform/export.h"

namespace uc::ui {

// Edges in pixels, right and bottom exclusive (as a Win32 RECT).
struct Rect {
    int left = 0, top = 0, right = 0, bottom = 0;
    int Width() const { return right - left; }
    int Height() const { return bottom - top; }
    bool operator==(const Rect&) const = default;
};

struct Point {
    int x = 0, y = 0;
    bool operator==(const Point&) const = default;
};

// Top-left corner that centres a w x h window on the middle of `area`: (l + r)/2 - w/2, each division
// truncating toward zero. A window larger than the area gets a smaller (possibly negative) offset; nothing clamps.
UC_API Point CenterOnMidpoint(const Rect& area, int w, int h);
// The same placement measured from the area's corner: l + (r - l - w)/2. Differs from CenterOnMidpoint by at
// most one pixel where the halves round differently (odd sizes).
UC_API Point CenterFromCorner(const Rect& area, int w, int h);

// Which parent edge a control's side keeps its distance to when the parent is resized.
enum class Edge : std::uint8_t {
    Start,  // the parent's left (or top) edge: the side does not move
    End,    // the parent's right (or bottom) edge: the side moves with it
    Scale,  // proportionally: the side keeps its fraction of the parent's width (or height)
};

struct Anchors {
    Edge left = Edge::Start, top = Edge::Start, right = Edge::Start, bottom = Edge::Start;
};

// Shorthands for the usual cases.
inline constexpr Anchors kAnchorTopLeft{};
inline constexpr Anchors kAnchorTopRight{Edge::End, Edge::Start, Edge::End, Edge::Start};
inline constexpr Anchors kAnchorBottomLeft{Edge::Start, Edge::End, Edge::Start, Edge::End};
inline constexpr Anchors kAnchorBottomRight{Edge::End, Edge::End, Edge::End, Edge::End};
inline constexpr Anchors kAnchorFill{Edge::Start, Edge::Start, Edge::End, Edge::End};

// Where a control that sat at `original` in a parent client area of `originalW` x `originalH` goes when the
// client area becomes `w` x `h`. A side scaled against a zero-sized original keeps its place.
UC_API Rect Relayout(const Rect& original, int originalW, int originalH, int w, int h, const Anchors& anchors);

// Display area of a tab page inside a tab control's client rectangle: below the tab items (`itemHeight`) and
// inset by 2 left, 3 top, 4 right and 4 bottom.
UC_API Rect TabPageArea(const Rect& tabClient, int itemHeight);

}  // namespace uc::ui
