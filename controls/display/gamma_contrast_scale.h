// Slider arithmetic of the gamma and contrast page: factors to mirrored slider positions and back, and the preview's colour matrix.
#pragma once

#include <string>

#include "platform/export.h"

namespace uc::display {

// The slider spans the positions of the factors 6.4 (left end) and 0.15625 = 1/6.4 (right end).
constexpr int FactorSliderMin = -540;
constexpr int FactorSliderMax = 540;

// Factor 1.0 sits at 0; larger factors at negative positions, smaller at positive (the left end is the largest).
// Halves round away from zero. A factor that is not positive or not a number gives the right end; the result
// is not clamped to the slider otherwise.
UC_API int ScaleFactor(double factor);
// The factor of a position: (n + 100) × 0.01 for n = −position ≥ 0, else 1 / ((|n| + 100) × 0.01), in single
// precision as the page has always computed it.
UC_API double UnscaleFactor(int position);
inline int ScaleContrast(double factor) { return ScaleFactor(factor); }
inline int ScaleGamma(double factor) { return ScaleFactor(factor); }
inline double UnscaleContrast(int position) { return UnscaleFactor(position); }
inline double UnscaleGamma(int position) { return UnscaleFactor(position); }

// The position for a factor given as text (as the application hands it over), within the slider's range;
// text that is not a number counts as the factor 1.
UC_API int PositionFromText(const std::wstring& text);
// A factor as the application receives it: "%f" ("1.000000").
UC_API std::wstring FormatFactor(double factor);

// The 5 × 5 colour matrix (row-vector convention) that stretches each channel around mid-grey by `contrast`:
// diagonal c, c, c, 1, 1 and last row t, t, t, 0, 1 with t = (1 − c) / 2.
UC_API void ContrastMatrix(float contrast, float matrix[5][5]);

}  // namespace uc::display
