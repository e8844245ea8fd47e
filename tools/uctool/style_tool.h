// Pieces of uctool's "style" command that tests check directly: descriptions of styles and problems, gallery layout.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "skin/style_repository.h"

namespace uctool::style {

std::wstring HexColour(std::uint32_t argb);  // "#AARRGGBB"
std::wstring ShapeName(int shape);
std::wstring BrushSummary(const tButtonStyle& style);
// Several lines: identity and base chain (with how many further bases were left out), shape, font, brush,
// background and the four named states.
std::wstring DescribeStyle(const tButtonStyle& style, const std::vector<std::wstring>& chain, std::size_t more = 0);
// One line for a dropped element (or a note for a loaded one that is not a <style>); empty when all is well.
std::wstring DescribeProblem(const StyleLoadEntry& entry);
int DroppedCount(const StyleLoadReport& report);

// Gallery page: a header row of state names, then one row per style: a label column and five faces.
struct GalleryLayout {
    static constexpr int kStates = 5;
    static constexpr int kGap = 10;
    static constexpr int kLabelWidth = 300;
    static constexpr int kHeaderHeight = 34;
    static constexpr int kLineHeight = 16;

    GalleryLayout(int styles, int faceWidth, int faceHeight);
    int FaceX(int state) const;
    int FaceY(int row) const;

    int faceWidth, faceHeight, rows;
    int cellWidth = 0, cellHeight = 0;
    int width = 0, height = 0;
};

}  // namespace uctool::style
