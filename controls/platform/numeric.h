// Numeric helpers of the console's utility module.
#pragma once

#include <climits>
#include <cmath>

namespace vex_utils {
// Nearest integer, halves away from zero, saturated to the int range (NaN gives 0).
inline int round(double value) {
    if (std::isnan(value)) return 0;
    const double r = std::round(value);
    if (r >= static_cast<double>(INT_MAX)) return INT_MAX;
    if (r <= static_cast<double>(INT_MIN)) return INT_MIN;
    return static_cast<int>(r);
}
}  // namespace vex_utils
