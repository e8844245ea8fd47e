// Matrix routines: element placement and bounds, least squares on exact, collinear, rank-deficient,
// badly scaled and unusable input.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <vector>

#include "platform/matrix.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct Problem {
    int rows, columns;
    std::vector<double> a, b;
};

std::vector<double> Solve(Problem p, bool* ok = nullptr) {
    std::vector<double> x(static_cast<std::size_t>(p.columns), -7.0);
    const bool r = MAT_LeastSquares(p.a.data(), p.rows, p.columns, p.b.data(), x.data());
    if (ok) *ok = r;
    return x;
}

void ExpectNear(const std::vector<double>& x, const std::vector<double>& expected, double relative) {
    ASSERT_EQ(x.size(), expected.size());
    for (std::size_t j = 0; j < x.size(); ++j)
        EXPECT_NEAR(x[j], expected[j], relative * std::max(1.0, std::fabs(expected[j]))) << "component " << j;
}

TEST(MatrixElement, StoresRowByRow) {
    std::vector<double> m(6, 0.0);
    EXPECT_TRUE(MAT_SetMatrixElement(0, 2, 2, 3, m.data(), 5.0));
    EXPECT_TRUE(MAT_SetMatrixElement(1, 0, 2, 3, m.data(), 7.0));
    EXPECT_EQ(m, (std::vector<double>{0, 0, 5, 7, 0, 0}));
}

TEST(MatrixElement, RefusesEveryPlaceOutsideTheMatrix) {
    struct Case {
        int row, column, rows, columns;
    } cases[] = {{-1, 0, 2, 3}, {2, 0, 2, 3}, {0, -1, 2, 3}, {0, 3, 2, 3}, {0, 0, 0, 3}, {0, 0, 2, 0},
                 {0, 0, INT_MAX, 2}};
    for (const Case& c : cases) {
        std::vector<double> m(6, 0.0);
        EXPECT_FALSE(MAT_SetMatrixElement(c.row, c.column, c.rows, c.columns, m.data(), 1.0))
            << c.row << "," << c.column << " of " << c.rows << "x" << c.columns;
        EXPECT_EQ(m, std::vector<double>(6, 0.0));
    }
    EXPECT_FALSE(MAT_SetMatrixElement(0, 0, 1, 1, nullptr, 1.0));
}

TEST(LeastSquares, SolvesASquareSystemAndLeavesItsInputAlone) {
    Problem p{2, 2, {2, 1, 1, 3}, {5, 10}};
    const Problem before = p;
    bool ok = false;
    ExpectNear(Solve(p, &ok), {1, 3}, 1e-15);
    EXPECT_TRUE(ok);
    EXPECT_EQ(p.a, before.a);
    EXPECT_EQ(p.b, before.b);
}

TEST(LeastSquares, FitsALineThroughInconsistentPoints) {
    // y = 0, 1, 3 at x = 0, 1, 2: slope 1.5, intercept -1/6.
    ExpectNear(Solve({3, 2, {0, 1, 1, 1, 2, 1}, {0, 1, 3}}), {1.5, -1.0 / 6.0}, 1e-15);
}

TEST(LeastSquares, KeepsTheDigitsThatTheNormalEquationsLose) {
    // Lauchli: A^T A = [[1+e^2, 1], [1, 1+e^2]] rounds to a singular matrix for e = 1e-9.
    const double e = 1e-9;
    ExpectNear(Solve({3, 2, {1, 1, e, 0, 0, e}, {2, e, e}}), {1, 1}, 1e-7);
    // The same with a residual: b = (2, 2e, 0) has the least-squares solution (2, 0).
    ExpectNear(Solve({3, 2, {1, 1, e, 0, 0, e}, {2, 2 * e, 0}}), {2, 0}, 1e-7);
}

TEST(LeastSquares, GivesTheMinimumNormSolutionOfUnderdeterminedAndRankDeficientSystems) {
    ExpectNear(Solve({1, 2, {1, 1}, {2}}), {1, 1}, 1e-15);
    ExpectNear(Solve({1, 3, {1, 2, 2}, {9}}), {1, 2, 2}, 1e-15);
    // Two equal columns: any split of 2 fits; the shortest is (1, 1).
    ExpectNear(Solve({3, 2, {1, 1, 1, 1, 1, 1}, {2, 2, 2}}), {1, 1}, 1e-14);
    // An all-zero column gets 0.
    ExpectNear(Solve({3, 2, {0, 1, 0, 2, 0, 3}, {2, 4, 6}}), {0, 2}, 1e-15);
    // A zero matrix: the zero solution.
    ExpectNear(Solve({2, 2, {0, 0, 0, 0}, {1, 1}}), {0, 0}, 0.0);
}

TEST(LeastSquares, HandlesColumnsScaledFarApart) {
    // Column scales 1e150 and 1e-150: squaring them would overflow and underflow.
    ExpectNear(Solve({2, 2, {1e150, 1e-150, 0, 1e-150}, {2e150, 3e-150}}), {2, 3}, 1e-14);
    const std::vector<double> x = Solve({3, 1, {1e300, 1e300, 1e300}, {1e300, 1e300, 1e300}});
    EXPECT_NEAR(x[0], 1.0, 1e-15);
}

TEST(LeastSquares, RefusesNonFiniteInputWithNaNEverywhere) {
    const Problem cases[] = {{2, 1, {1, kNaN}, {1, 1}}, {2, 1, {1, kInf}, {1, 1}}, {2, 1, {1, 1}, {-kInf, 1}},
                             {2, 1, {1, 1}, {1, kNaN}}};
    for (const Problem& p : cases) {
        bool ok = true;
        const std::vector<double> x = Solve(p, &ok);
        EXPECT_FALSE(ok);
        EXPECT_TRUE(std::isnan(x[0]));
    }
}

TEST(LeastSquares, RefusesUnusableArgumentsWithoutTouchingMemoryItDoesNotOwn) {
    double a[2] = {1, 1}, b[2] = {1, 1}, x[2] = {5, 5};
    EXPECT_FALSE(MAT_LeastSquares(nullptr, 2, 1, b, x));
    EXPECT_TRUE(std::isnan(x[0]));
    EXPECT_FALSE(MAT_LeastSquares(a, 2, 1, nullptr, x));
    EXPECT_FALSE(MAT_LeastSquares(a, 0, 1, b, x));
    EXPECT_FALSE(MAT_LeastSquares(a, -3, 1, b, x));
    x[1] = 5;
    EXPECT_FALSE(MAT_LeastSquares(a, 2, 0, b, x));
    EXPECT_EQ(x[1], 5) << "no columns: nothing to write";
    EXPECT_FALSE(MAT_LeastSquares(a, 2, 1, b, nullptr));
    // rows x columns beyond int indexing is refused before anything is read.
    EXPECT_FALSE(MAT_LeastSquares(a, INT_MAX / 2 + 1, 2, b, x));
    EXPECT_TRUE(std::isnan(x[0]) && std::isnan(x[1]));
}

}  // namespace
