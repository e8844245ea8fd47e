// Turns a portable face outline into a GDI+ path.
#pragma once

#include "skin/shape_figure.h"
#include "skin/win/gdiplus.h"

namespace uc::skin {
// Appends `figure` to `path` as one figure (consecutive arcs joined by lines) and closes it.
void AppendFigure(Gdiplus::GraphicsPath& path, const ShapeFigure& figure);
}  // namespace uc::skin
