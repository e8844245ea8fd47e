// CPolynomialRegression: results before and after a fit, fits of ordinary, degenerate and unusable input.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <vector>

#include "probe/polynomial_regression.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
using Points = std::vector<std::pair<double, double>>;

struct Case {
    const char* what;
    Points samples;
    int degree;
    bool fitted;          // what Compute returns
    Points lookups;       // x and the expected YLookup (NaN: NaN expected)
    std::vector<double> coefficients;  // highest power first; empty when not checked
};

const Case kCases[] = {
    {"no samples: only the degree is stored", {}, 3, false, {{2, 0}}, {}},
    {"line", {{0, 1}, {1, 3}, {2, 5}}, 1, true, {{10, 21}}, {2, 1}},
    {"degree 0: the mean, duplicates counted", {{1, 2}, {1, 2}, {5, 8}, {-3, 4}}, 0, true, {{-100, 4}, {7, 4}}, {4}},
    {"cubic", {{-2, -22}, {-1, -9.5}, {0, -4}, {1, -2.5}, {2, -2}, {3, 0.5}}, 3, true, {{4, 8}}, {0.5, -2, 3, -4}},
    {"all x equal: the mean there", {{3, 1}, {3, 2}, {3, 6}}, 2, true, {{3, 3}}, {}},
    {"fewer samples than coefficients", {{-1, 4}, {0.5, -2}, {1, 7}}, 40, true, {{-1, 4}, {0.5, -2}, {1, 7}}, {}},
    {"NaN y", {{0, 1}, {1, kNaN}, {2, 5}}, 2, false, {{1, kNaN}}, {}},
    {"NaN x", {{0, 1}, {kNaN, 3}, {2, 5}}, 2, false, {{1, kNaN}}, {}},
    {"infinite x", {{0, 1}, {-kInf, 3}, {2, 5}}, 2, false, {{1, kNaN}}, {}},
    {"a power overflows", {{0, 1}, {1e200, 3}, {2, 5}}, 2, false, {{1, kNaN}}, {}},
    // Unusable degrees discard the fit made before them.
    {"negative degree", {{0, 1}, {1, 3}, {2, 5}}, -1, false, {{1, 0}}, {}},
    {"matrix beyond int indexing", {{0, 1}, {1, 3}, {2, 5}}, INT_MAX / 2, false, {{1, 0}}, {}},
    {"coefficients beyond int", {{0, 1}, {1, 3}, {2, 5}}, INT_MAX, false, {{1, 0}}, {}},
};

TEST(PolynomialRegression, FitsAndLooksUp) {
    for (const Case& c : kCases) {
        CPolynomialRegression r;
        for (const auto& [x, y] : c.samples) r.AddItem(x, y);
        r.Compute(1);
        EXPECT_EQ(r.Compute(c.degree), c.fitted) << c.what;
        EXPECT_EQ(r.GetDegree(), c.degree) << c.what;
        EXPECT_EQ(r.GetItemCount(), static_cast<int>(c.samples.size())) << c.what;
        for (const auto& [x, y] : c.lookups) {
            if (std::isnan(y)) EXPECT_TRUE(std::isnan(r.YLookup(x))) << c.what;
            else EXPECT_NEAR(r.YLookup(x), y, 1e-9 * std::max(1.0, std::fabs(y))) << c.what << " at " << x;
        }
        for (std::size_t j = 0; j < c.coefficients.size(); ++j)
            EXPECT_NEAR(r.GetCoefficients()[j], c.coefficients[j], 1e-13) << c.what << " coefficient " << j;
    }
}

TEST(PolynomialRegression, FitsManySamplesRefitsAtAnotherDegreeAndResets) {
    // More rows than the least-squares routine folds in one block.
    CPolynomialRegression r;
    double sum = 0.0;
    for (int i = 0; i < 1000; ++i) {
        const double x = i * 0.004 - 2, y = ((((0.5 * x - 1) * x + 2) * x - 3) * x + 4) * x - 5;
        r.AddItem(x, y);
        sum += y;
    }
    EXPECT_EQ(r.YLookup(1.0), 0.0) << "samples alone are no fit";
    ASSERT_TRUE(r.Compute(5));
    const double expected[] = {0.5, -1, 2, -3, 4, -5};
    for (int j = 0; j < 6; ++j) EXPECT_NEAR(r.GetCoefficients()[j], expected[j], 1e-12) << j;
    ASSERT_TRUE(r.Compute(0));
    EXPECT_NEAR(r.YLookup(123.0), sum / 1000, 1e-12);
    r.Reset();
    EXPECT_EQ(r.GetItemCount() + r.GetDegree(), 0);
    EXPECT_EQ(r.YLookup(1.0), 0.0);
}

}  // namespace
