// libFuzzer target: polynomial fits of arbitrary samples (any doubles, NaN and extremes included) at degrees 0-15.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "probe/polynomial_regression.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 1) return 0;
    const int degree = data[0] % 16;
    CPolynomialRegression r;
    for (std::size_t at = 1; at + 2 * sizeof(double) <= size; at += 2 * sizeof(double)) {
        double x = 0, y = 0;
        std::memcpy(&x, data + at, sizeof x);
        std::memcpy(&y, data + at + sizeof x, sizeof y);
        r.AddItem(x, y);
    }
    const bool fitted = r.Compute(degree);
    // A fit is finite everywhere it is defined; a refused fit with samples leaves every coefficient NaN, so no
    // caller can mistake it for a plausible curve.
    const double* c = r.GetCoefficients();
    if (r.GetItemCount() == 0) {
        if (fitted || c) std::abort();
        return 0;
    }
    if (!c) std::abort();
    for (int j = 0; j <= degree; ++j)
        if (fitted ? !std::isfinite(c[j]) : !std::isnan(c[j])) std::abort();
    return 0;
}
