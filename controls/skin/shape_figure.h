// Outline of a button face as a portable figure of polygons, arcs, ellipses and rectangles (integer geometry).
#pragma once

#include <utility>
#include <vector>

#include "platform/export.h"

namespace uc::skin {

// Shape codes of a button style.
enum ShapeCode {
    ShapeRoundRect = 0,  // also every code outside 1-7
    ShapeTriangleLeft = 1,
    ShapeTriangleRight = 2,
    ShapeTriangleUp = 3,
    ShapeTriangleDown = 4,
    ShapeHexagon = 5,
    ShapeCircle = 6,
    ShapeArrowTab = 7,
};

struct FigurePoint {
    int x = 0;
    int y = 0;
    bool operator==(const FigurePoint&) const = default;
};

// One element of the outline, in the order it is added to the path.
struct FigureElement {
    enum Kind { Polygon, Arc, Ellipse, Rectangle };
    Kind kind = Polygon;
    std::vector<FigurePoint> points;  // Polygon: the corners
    int x = 0, y = 0, width = 0, height = 0;  // Arc, Ellipse, Rectangle: the bounding box
    float startAngle = 0.0f;  // Arc: degrees, clockwise from the x axis (GDI+ convention)
    float sweepAngle = 0.0f;
};

// A single closed figure; consecutive arcs are joined by straight lines as in a GDI+ path.
struct ShapeFigure {
    std::vector<FigureElement> elements;
    bool closed = true;
};

// The closed outline of `shape` in the rectangle (0,0)-(width,height), `inset` pixels inside it.
// `radius` is clamped to the shorter side; for the rounded rectangle it is the corner's diameter and a radius
// below 1 gives a plain rectangle. `layoutLeft` points the arrow tab (shape 7) left. Halves and thirds are
// integer divisions rounding toward zero.
UC_API ShapeFigure BuildShapeFigure(int width, int height, int shape, int radius, int inset, bool layoutLeft);

// Points along the outline (arcs and ellipses sampled every `stepDegrees`), for hit tests and checks.
UC_API std::vector<std::pair<double, double>> FlattenFigure(const ShapeFigure& figure, double stepDegrees = 5.0);

// Truncates toward zero into the int range; NaN becomes 0 (values from files may be anything).
UC_API int TruncateToInt(double value);

}  // namespace uc::skin
