// Factor/slider conversions and the contrast colour matrix of the gamma and contrast page.
#include "display/gamma_contrast_scale.h"

#include <algorithm>
#include <cmath>

#include "platform/text.h"

namespace uc::display {

int ScaleFactor(double factor) {
    if (!(factor > 0.0)) return FactorSliderMax;
    double s = factor >= 1.0 ? factor * 100.0 - 100.0 : -(100.0 / factor - 100.0);
    // Far outside the slider the exact value no longer matters; keep the integer conversion defined.
    s = std::clamp(s, -1.0e6, 1.0e6);
    const double t = std::trunc(s);
    return -static_cast<int>(std::trunc(s + (s - t)));
}

double UnscaleFactor(int position) {
    const long long n = -static_cast<long long>(position);
    if (n >= 0) return static_cast<float>(n + 100) * 0.01f;
    const float scale = static_cast<float>(-n + 100) * 0.01f;
    return 1.0f / scale;
}

int PositionFromText(const std::wstring& text) {
    double factor = 1.0;
    if (!ParseDouble(text, factor)) factor = 1.0;
    return std::clamp(ScaleFactor(factor), FactorSliderMin, FactorSliderMax);
}

std::wstring FormatFactor(double factor) { return Format(L"%f", factor); }

void ContrastMatrix(float contrast, float matrix[5][5]) {
    const float t = (1.0f - contrast) * 0.5f;
    for (int r = 0; r < 5; ++r)
        for (int c = 0; c < 5; ++c) matrix[r][c] = 0.0f;
    matrix[0][0] = matrix[1][1] = matrix[2][2] = contrast;
    matrix[3][3] = matrix[4][4] = 1.0f;
    matrix[4][0] = matrix[4][1] = matrix[4][2] = t;
}

}  // namespace uc::display
