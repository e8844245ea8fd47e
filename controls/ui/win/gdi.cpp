// The off-screen canvas.
#include "ui/win/gdi.h"

namespace uc::ui {

namespace {
// A zero-sized bitmap cannot be created; a 1 x 1 one keeps the canvas usable for empty windows.
int AtLeastOne(int v) { return v > 0 ? v : 1; }
}  // namespace

Canvas::Canvas(HDC reference, int w, int h)
    : m_w(AtLeastOne(w)),
      m_h(AtLeastOne(h)),
      m_dc(::CreateCompatibleDC(reference)),
      m_bitmap(reference ? ::CreateCompatibleBitmap(reference, m_w, m_h) : nullptr),
      m_selected(m_dc.get(), m_bitmap.get()) {}

bool Canvas::CopyTo(HDC target, int x, int y) const {
    return ok() && ::BitBlt(target, x, y, m_w, m_h, m_dc.get(), 0, 0, SRCCOPY);
}

}  // namespace uc::ui
