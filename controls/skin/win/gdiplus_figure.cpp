// Outline figures added to GDI+ paths element by element.
#include "skin/win/gdiplus_figure.h"

#include <vector>

namespace uc::skin {

void AppendFigure(Gdiplus::GraphicsPath& path, const ShapeFigure& figure) {
    for (const FigureElement& e : figure.elements) {
        switch (e.kind) {
        case FigureElement::Polygon: {
            std::vector<Gdiplus::Point> pts;
            pts.reserve(e.points.size());
            for (const FigurePoint& p : e.points) pts.emplace_back(p.x, p.y);
            path.AddPolygon(pts.data(), static_cast<INT>(pts.size()));
            break;
        }
        case FigureElement::Arc: path.AddArc(e.x, e.y, e.width, e.height, e.startAngle, e.sweepAngle); break;
        case FigureElement::Ellipse: path.AddEllipse(e.x, e.y, e.width, e.height); break;
        case FigureElement::Rectangle: path.AddRectangle(Gdiplus::Rect(e.x, e.y, e.width, e.height)); break;
        }
    }
    if (figure.closed) path.CloseFigure();
}

}  // namespace uc::skin
