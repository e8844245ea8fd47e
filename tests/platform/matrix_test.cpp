// Matrix routines: element placement and bounds, least squares on exact, collinear, rank-deficient, badly
// scaled and unusable input.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "platform/matrix.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double e = 1e-9;

struct Problem {
    const char* what;
    int rows, columns;
    std::vector<double> a, b, x;  // x: the expected solution, or empty when the input must be refused
    double tolerance;              // relative to max(1, |x_j|)
};

const Problem kProblems[] = {
    {"square", 2, 2, {2, 1, 1, 3}, {5, 10}, {1, 3}, 1e-15},
    {"line through inconsistent points", 3, 2, {0, 1, 1, 1, 2, 1}, {0, 1, 3}, {1.5, -1.0 / 6.0}, 1e-15},
    // Lauchli: A^T A = [[1+e^2, 1], [1, 1+e^2]] rounds to a singular matrix.
    {"Lauchli", 3, 2, {1, 1, e, 0, 0, e}, {2, e, e}, {1, 1}, 1e-7},
    {"Lauchli with a residual", 3, 2, {1, 1, e, 0, 0, e}, {2, 2 * e, 0}, {2, 0}, 1e-7},
    {"one equation: minimum norm", 1, 3, {1, 2, 2}, {9}, {1, 2, 2}, 1e-15},
    {"equal columns: the shortest split", 3, 2, {1, 1, 1, 1, 1, 1}, {2, 2, 2}, {1, 1}, 1e-14},
    {"zero column gets 0", 3, 2, {0, 1, 0, 2, 0, 3}, {2, 4, 6}, {0, 2}, 1e-15},
    {"zero matrix", 2, 2, {0, 0, 0, 0}, {1, 1}, {0, 0}, 0.0},
    {"columns 1e150 and 1e-170", 2, 2, {1e150, 1e-170, 0, 1e-170}, {2e150, 3e-170}, {2, 3}, 1e-14},
    {"entries near the top of the range", 3, 1, {1e300, 1e300, 1e300}, {1e300, 1e300, 1e300}, {1}, 1e-15},
    {"NaN in the matrix", 2, 1, {1, kNaN}, {1, 1}, {}, 0},
    {"infinity on the right", 2, 1, {1, 1}, {-kInf, 1}, {}, 0},
};

TEST(LeastSquares, SolvesOrRefusesWithNaNAndLeavesItsInputAlone) {
    for (const Problem& p : kProblems) {
        Problem copy = p;
        std::vector<double> x(static_cast<std::size_t>(p.columns), -7.0);
        EXPECT_EQ(MAT_LeastSquares(copy.a.data(), p.rows, p.columns, copy.b.data(), x.data()), !p.x.empty()) << p.what;
        EXPECT_EQ(std::memcmp(copy.a.data(), p.a.data(), p.a.size() * sizeof(double)), 0) << p.what;  // NaN too
        EXPECT_EQ(std::memcmp(copy.b.data(), p.b.data(), p.b.size() * sizeof(double)), 0) << p.what;
        for (std::size_t j = 0; j < x.size(); ++j) {
            if (p.x.empty()) EXPECT_TRUE(std::isnan(x[j])) << p.what;
            else EXPECT_NEAR(x[j], p.x[j], p.tolerance * std::max(1.0, std::fabs(p.x[j]))) << p.what << " x" << j;
        }
    }
}

TEST(LeastSquares, RefusesUnusableArgumentsWithoutTouchingMemoryItDoesNotOwn) {
    double a[2] = {1, 1}, b[2] = {1, 1}, x[2] = {5, 5};
    EXPECT_FALSE(MAT_LeastSquares(a, 2, 0, b, x) || MAT_LeastSquares(a, 2, 1, b, nullptr));
    EXPECT_EQ(x[0], 5) << "no columns: nothing to write";
    // The last: rows x columns beyond int indexing, refused before anything is read.
    for (int rows : {0, -3, INT_MAX / 2 + 1}) EXPECT_FALSE(MAT_LeastSquares(a, rows, 2, b, x)) << rows;
    EXPECT_FALSE(MAT_LeastSquares(nullptr, 2, 2, b, x) || MAT_LeastSquares(a, 2, 2, nullptr, x));
    EXPECT_TRUE(std::isnan(x[0]) && std::isnan(x[1]));
}

TEST(MatrixElement, StoresRowByRowInsideTheMatrixOnly) {
    std::vector<double> m(6, 0.0);
    EXPECT_TRUE(MAT_SetMatrixElement(0, 2, 2, 3, m.data(), 5.0));
    EXPECT_TRUE(MAT_SetMatrixElement(1, 0, 2, 3, m.data(), 7.0));
    const int outside[][4] = {{-1, 0, 2, 3}, {2, 0, 2, 3}, {0, -1, 2, 3}, {0, 3, 2, 3},
                              {0, 0, 0, 3},  {0, 0, 2, 0}, {0, 0, INT_MAX, 2}};
    for (const auto& c : outside)
        EXPECT_FALSE(MAT_SetMatrixElement(c[0], c[1], c[2], c[3], m.data(), 1.0)) << c[0] << "," << c[1] << " of "
                                                                                    << c[2] << "x" << c[3];
    EXPECT_FALSE(MAT_SetMatrixElement(0, 0, 1, 1, nullptr, 1.0));
    EXPECT_EQ(m, (std::vector<double>{0, 0, 5, 7, 0, 0}));
}

}  // namespace
