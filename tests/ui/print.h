// Readable test output for the framework's portable rectangles and points.
#pragma once

#include <ostream>

#include "ui/geometry.h"

namespace uc::ui {
inline void PrintTo(const Rect& r, std::ostream* os) { *os << "{" << r.left << ", " << r.top << ", " << r.right << ", " << r.bottom << "}"; }
inline void PrintTo(const Point& p, std::ostream* os) { *os << "(" << p.x << ", " << p.y << ")"; }
}  // namespace uc::ui
