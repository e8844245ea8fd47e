// The please-wait box's geometry and animation state.
#include "ui/wait_box_layout.h"

namespace uc::ui::wait_box {

namespace {
// System colour indices (the values of COLOR_* in the Windows headers), so this file needs none of them.
constexpr int kColorActiveBorder = 10;
constexpr int kColorBtnHighlight = 20;
constexpr int kColorBtnShadow = 16;
constexpr int kColorBtnFace = 15;
}  // namespace

Rect BoxRect(int screenW, int screenH, int textHeight, int lines) {
    const int h = (textHeight + 10) * lines + 55;
    const int left = (screenW - kWidth) / 2;
    const int top = (screenH - h) / 2;
    return {left, top, left + kWidth, top + h};
}

void FrameBands(int w, int b, FrameBand out[4]) {
    out[0] = {0, 0, w, b, kColorActiveBorder};
    out[1] = {1, 1, w - 3, b - 3, kColorBtnHighlight};
    out[2] = {3, 3, w - 7, b - 7, kColorBtnShadow};
    out[3] = {5, 5, w - 9, b - 9, kColorBtnFace};
}

Bar BarFor(int b, int offset) {
    return {10, b - 35, kTextWidth, 25, offset + 10, b - 35, offset + 410, b - 10};
}

Rect TextArea(int b) { return {10, 10, 10 + kTextWidth, 10 + (b - 55)}; }

int Animation::Step(int offset) {
    offset += kBarStep;
    return offset > kBarLimit ? -kBarLimit : offset;
}

TickAction Animation::OnTimer(unsigned id) {
    if (id == kShowTimer) {
        // A late duplicate of the show tick must not restart anything.
        if (m_shown) return TickAction::None;
        m_shown = true;
        return TickAction::Show;
    }
    if (id == kAnimationTimer && m_shown) {
        m_offset = Step(m_offset);
        return TickAction::Animate;
    }
    return TickAction::None;
}

}  // namespace uc::ui::wait_box
