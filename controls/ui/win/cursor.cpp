// Cursor visibility forced for a scope.
#include "ui/win/cursor.h"

namespace {
// ShowCursor moves a display counter; the cursor shows while it is 0 or more. Bounded, so a counter that
// does not move (no mouse installed) cannot hold the loop.
constexpr int kMaxSteps = 64;
}  // namespace

ShowCursorHelper::ShowCursorHelper(bool show) : m_show(show) {
    if (show) {
        while (m_steps < kMaxSteps && ::ShowCursor(TRUE) < 0) ++m_steps;
        ++m_steps;  // the call that reached 0 or more counts too
    } else {
        while (m_steps < kMaxSteps && ::ShowCursor(FALSE) >= 0) ++m_steps;
        ++m_steps;
    }
}

ShowCursorHelper::~ShowCursorHelper() {
    for (int i = 0; i < m_steps; ++i) ::ShowCursor(m_show ? FALSE : TRUE);
}
