// CPolynomialRegression: results before and after a fit, the fit itself, degenerate data and bad input.
#include <gtest/gtest.h>

#include <climits>
#include <cmath>
#include <limits>
#include <vector>

#include "probe/polynomial_regression.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

void Add(CPolynomialRegression& r, const std::vector<std::pair<double, double>>& samples) {
    for (const auto& [x, y] : samples) r.AddItem(x, y);
}

std::vector<double> Coefficients(const CPolynomialRegression& r) {
    if (!r.GetCoefficients()) return {};
    return std::vector<double>(r.GetCoefficients(), r.GetCoefficients() + r.GetDegree() + 1);
}

TEST(PolynomialRegression, LooksUpZeroBeforeAnyFitAndAfterReset) {
    CPolynomialRegression r;
    for (double x : {-1e300, -2.0, 0.0, 3.5, 1e300}) EXPECT_EQ(r.YLookup(x), 0.0) << x;
    Add(r, {{0, 1}, {1, 3}, {2, 5}});
    EXPECT_EQ(r.YLookup(1.0), 0.0) << "samples alone are no fit";
    ASSERT_TRUE(r.Compute(1));
    EXPECT_NE(r.YLookup(1.0), 0.0);
    r.Reset();
    EXPECT_EQ(r.GetItemCount(), 0);
    EXPECT_EQ(r.GetDegree(), 0);
    EXPECT_EQ(r.GetCoefficients(), nullptr);
    for (double x : {-2.0, 0.0, 3.5}) EXPECT_EQ(r.YLookup(x), 0.0) << x;
}

TEST(PolynomialRegression, FitsALineWithTheHighestPowerFirst) {
    CPolynomialRegression r;
    Add(r, {{0, 1}, {1, 3}, {2, 5}});
    ASSERT_TRUE(r.Compute(1));
    const std::vector<double> c = Coefficients(r);
    ASSERT_EQ(c.size(), 2u);
    EXPECT_NEAR(c[0], 2.0, 1e-14);
    EXPECT_NEAR(c[1], 1.0, 1e-14);
    EXPECT_NEAR(r.YLookup(10), 21.0, 1e-12);
}

TEST(PolynomialRegression, DegreeZeroFitsTheMeanAndDuplicatesCount) {
    CPolynomialRegression r;
    Add(r, {{1, 2}, {1, 2}, {5, 8}, {-3, 4}});
    EXPECT_EQ(r.GetItemCount(), 4);
    ASSERT_TRUE(r.Compute(0));
    for (double x : {-100.0, 0.0, 7.0}) EXPECT_NEAR(r.YLookup(x), 4.0, 1e-14);
}

TEST(PolynomialRegression, RecoversACubicAndRefitsAtAnotherDegree) {
    CPolynomialRegression r;
    for (int i = -10; i <= 10; ++i) {
        const double x = i * 0.37;
        r.AddItem(x, 0.5 * x * x * x - 2 * x * x + 3 * x - 4);
    }
    ASSERT_TRUE(r.Compute(3));
    const std::vector<double> c = Coefficients(r);
    const double expected[] = {0.5, -2, 3, -4};
    for (int j = 0; j < 4; ++j) EXPECT_NEAR(c[j], expected[j], 1e-12) << j;
    ASSERT_TRUE(r.Compute(1));
    EXPECT_EQ(Coefficients(r).size(), 2u) << "the coefficient array follows the new degree";
}

TEST(PolynomialRegression, ComputeWithoutSamplesOnlyStoresTheDegree) {
    CPolynomialRegression r;
    EXPECT_FALSE(r.Compute(3));
    EXPECT_EQ(r.GetDegree(), 3);
    EXPECT_EQ(r.GetCoefficients(), nullptr);
    EXPECT_EQ(r.YLookup(2.0), 0.0);
}

TEST(PolynomialRegression, EqualXGivesTheMeanThere) {
    // Every power column is proportional: the minimum-norm fit still passes through the mean at that x.
    CPolynomialRegression r;
    Add(r, {{3, 1}, {3, 2}, {3, 6}});
    EXPECT_TRUE(r.Compute(2));
    EXPECT_NEAR(r.YLookup(3), 3.0, 1e-13);
}

TEST(PolynomialRegression, FewerSamplesThanCoefficientsInterpolate) {
    CPolynomialRegression r;
    Add(r, {{-1, 4}, {0.5, -2}, {1, 7}});
    for (int degree : {3, 8, 40}) {
        ASSERT_TRUE(r.Compute(degree)) << degree;
        EXPECT_NEAR(r.YLookup(-1), 4, 1e-9) << degree;
        EXPECT_NEAR(r.YLookup(0.5), -2, 1e-9) << degree;
        EXPECT_NEAR(r.YLookup(1), 7, 1e-9) << degree;
    }
}

TEST(PolynomialRegression, UnusableDegreesDiscardTheEarlierFit) {
    for (int degree : {-1, INT_MIN, INT_MAX, INT_MAX / 2}) {
        CPolynomialRegression r;
        Add(r, {{0, 1}, {1, 3}, {2, 5}});
        ASSERT_TRUE(r.Compute(1));
        EXPECT_FALSE(r.Compute(degree)) << degree;
        EXPECT_EQ(r.GetCoefficients(), nullptr) << degree;
        EXPECT_EQ(r.YLookup(1.0), 0.0) << degree;
        EXPECT_EQ(r.GetItemCount(), 3) << "samples stay";
    }
}

TEST(PolynomialRegression, NonFiniteSamplesAndOverflowingPowersGiveNaNNotANumberThatLooksRight) {
    const std::vector<std::pair<double, double>> cases[] = {
        {{0, 1}, {1, kNaN}, {2, 5}}, {{0, 1}, {kNaN, 3}, {2, 5}}, {{0, 1}, {1, kInf}, {2, 5}},
        {{0, 1}, {-kInf, 3}, {2, 5}}, {{0, 1}, {1e200, 3}, {2, 5}}};
    for (const auto& samples : cases) {
        CPolynomialRegression r;
        Add(r, samples);
        EXPECT_FALSE(r.Compute(2));
        ASSERT_NE(r.GetCoefficients(), nullptr);
        EXPECT_TRUE(std::isnan(r.YLookup(1.0)));
    }
}

}  // namespace
