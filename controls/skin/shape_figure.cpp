// Face outlines of the eight shape codes, built with the integer arithmetic the console's skins were drawn with.
#include "skin/shape_figure.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace uc::skin {

int TruncateToInt(double value) {
    if (std::isnan(value)) return 0;
    if (value >= static_cast<double>(std::numeric_limits<int>::max())) return std::numeric_limits<int>::max();
    if (value <= static_cast<double>(std::numeric_limits<int>::min())) return std::numeric_limits<int>::min();
    return static_cast<int>(value);
}

namespace {

FigureElement Polygon(std::initializer_list<FigurePoint> points) {
    FigureElement e;
    e.kind = FigureElement::Polygon;
    e.points = points;
    return e;
}

FigureElement Box(FigureElement::Kind kind, int x, int y, int w, int h, float start = 0.0f, float sweep = 0.0f) {
    FigureElement e;
    e.kind = kind;
    e.x = x;
    e.y = y;
    e.width = w;
    e.height = h;
    e.startAngle = start;
    e.sweepAngle = sweep;
    return e;
}

}  // namespace

ShapeFigure BuildShapeFigure(int w, int h, int shape, int radius, int inset, bool layoutLeft) {
    ShapeFigure f;
    const int shorter = std::min(w, h);
    const int r = radius < shorter ? radius : shorter;
    auto& out = f.elements;
    switch (shape) {
    case ShapeTriangleLeft:
        out.push_back(Polygon({{inset, h / 2}, {w - inset, inset}, {w - inset, h - inset}}));
        break;
    case ShapeTriangleRight:
        out.push_back(Polygon({{inset, inset}, {w - inset, h / 2}, {inset, h - inset}}));
        break;
    case ShapeTriangleUp:
        out.push_back(Polygon({{inset, h - inset}, {w / 2, inset}, {w - inset, h - inset}}));
        break;
    case ShapeTriangleDown:
        out.push_back(Polygon({{inset, inset}, {w - inset, inset}, {w / 2, h - inset}}));
        break;
    case ShapeHexagon: {
        const int d = 2 * r;
        const int xm = w / 2 - r + inset;
        const int y1 = h / 3 - r + inset;
        const int y2 = 2 * h / 3 - r + inset;
        // 0.33333334 is one third as a single-precision constant; kept so the corners land where they always did.
        const double theta = std::atan2(0.5 * w - r - inset, 0.33333334 * h - r - inset) * 180.0 / std::numbers::pi;
        const float t = static_cast<float>(theta);
        using K = FigureElement;
        out.push_back(Box(K::Arc, inset, y2, d, d, 180.0f - t, t));
        out.push_back(Box(K::Arc, inset, y1, d, d, 180.0f, t));
        out.push_back(Box(K::Arc, xm, inset, d, d, 180.0f + t, 180.0f - 2.0f * t));
        out.push_back(Box(K::Arc, w - d - inset, y1, d, d, 360.0f - t, t));
        out.push_back(Box(K::Arc, w - d - inset, y2, d, d, 0.0f, t));
        out.push_back(Box(K::Arc, xm, h - d - inset, d, d, t, 180.0f - 2.0f * t));
        break;
    }
    case ShapeCircle: {
        const int diameter = shorter - 2 * inset;
        out.push_back(Box(FigureElement::Ellipse, (w - diameter) / 2, (h - diameter) / 2, diameter, diameter));
        break;
    }
    case ShapeArrowTab:
        if (layoutLeft)
            out.push_back(Polygon({{h / 2 + inset, inset},
                                   {w - inset, inset},
                                   {w - inset, h - inset},
                                   {h / 2 + inset, h - inset},
                                   {inset, h / 2}}));
        else
            out.push_back(Polygon({{w - h / 2 - inset, inset},
                                   {inset, inset},
                                   {inset, h - inset},
                                   {w - h / 2 - inset, h - inset},
                                   {w - inset, h / 2}}));
        break;
    default:
        if (r < 1) {
            out.push_back(Box(FigureElement::Rectangle, inset, inset, w - 2 * inset, h - 2 * inset));
        } else {
            // The radius is used as the corner box's side, i.e. as the corner's diameter.
            using K = FigureElement;
            out.push_back(Box(K::Arc, inset, inset, r, r, 180.0f, 90.0f));
            out.push_back(Box(K::Arc, w - r - inset, inset, r, r, 270.0f, 90.0f));
            out.push_back(Box(K::Arc, w - r - inset, h - r - inset, r, r, 0.0f, 90.0f));
            out.push_back(Box(K::Arc, inset, h - r - inset, r, r, 90.0f, 90.0f));
        }
        break;
    }
    f.closed = true;
    return f;
}

std::vector<std::pair<double, double>> FlattenFigure(const ShapeFigure& figure, double stepDegrees) {
    std::vector<std::pair<double, double>> pts;
    if (!(stepDegrees > 0.0)) stepDegrees = 5.0;
    auto onEllipse = [](const FigureElement& e, double deg) {
        const double a = deg * std::numbers::pi / 180.0;
        const double rx = e.width / 2.0, ry = e.height / 2.0;
        return std::pair<double, double>(e.x + rx + rx * std::cos(a), e.y + ry + ry * std::sin(a));
    };
    for (const FigureElement& e : figure.elements) {
        switch (e.kind) {
        case FigureElement::Polygon:
            for (const FigurePoint& p : e.points) pts.emplace_back(p.x, p.y);
            break;
        case FigureElement::Rectangle:
            pts.emplace_back(e.x, e.y);
            pts.emplace_back(e.x + e.width, e.y);
            pts.emplace_back(e.x + e.width, e.y + e.height);
            pts.emplace_back(e.x, e.y + e.height);
            break;
        case FigureElement::Ellipse:
            for (double d = 0.0; d < 360.0; d += stepDegrees) pts.push_back(onEllipse(e, d));
            break;
        case FigureElement::Arc: {
            const int n = std::max(1, static_cast<int>(std::ceil(std::fabs(e.sweepAngle) / stepDegrees)));
            for (int i = 0; i <= n && n < 100000; ++i)
                pts.push_back(onEllipse(e, e.startAngle + e.sweepAngle * i / n));
            break;
        }
        }
    }
    return pts;
}

}  // namespace uc::skin
