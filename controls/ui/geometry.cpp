// Portable window arithmetic: centring, anchored re-layout, tab page areas.
#include "ui/geometry.h"

namespace uc::ui {

Point CenterOnMidpoint(const Rect& area, int w, int h) {
    return {(area.left + area.right) / 2 - w / 2, (area.top + area.bottom) / 2 - h / 2};
}

Point CenterFromCorner(const Rect& area, int w, int h) {
    return {area.left + (area.Width() - w) / 2, area.top + (area.Height() - h) / 2};
}

namespace {

int MoveSide(int value, int originalSize, int size, Edge edge) {
    switch (edge) {
    case Edge::Start:
        return value;
    case Edge::End:
        return value + (size - originalSize);
    case Edge::Scale:
        if (originalSize <= 0) return value;
        // 64-bit product: huge coordinates times huge sizes must not overflow.
        return static_cast<int>(static_cast<long long>(value) * size / originalSize);
    }
    return value;
}

}  // namespace

Rect Relayout(const Rect& original, int originalW, int originalH, int w, int h, const Anchors& a) {
    return {MoveSide(original.left, originalW, w, a.left), MoveSide(original.top, originalH, h, a.top),
            MoveSide(original.right, originalW, w, a.right), MoveSide(original.bottom, originalH, h, a.bottom)};
}

Rect TabPageArea(const Rect& tabClient, int itemHeight) {
    return {tabClient.left + 2, tabClient.top + itemHeight + 3, tabClient.right - 4, tabClient.bottom - 4};
}

}  // namespace uc::ui
