// The fit against regression problems with certified answers (tests/probe/data): correct significant digits
// of every coefficient and of the residual standard deviation.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <string>

#include "nist_reference.h"
#include "platform/text.h"
#include "probe/polynomial_regression.h"
#include "support/temp_dir.h"

namespace {

struct Expectation {
    const char* name;
    double coefficientDigits;  // fewest correct digits over all coefficients
    double residualDigits;
};

class ReferenceProblems : public testing::TestWithParam<Expectation> {};

TEST_P(ReferenceProblems, MatchTheCertifiedValues) {
    const Expectation& e = GetParam();
    const std::string path = uc::ToUtf8(uc::test::SourceDir()) + "/tests/probe/data/" + e.name + ".dat";
    const uc::test::ReferenceProblem p = uc::test::ReadReferenceProblem(path, e.name);
    ASSERT_FALSE(p.name.empty()) << "cannot read " << path;

    CPolynomialRegression r;
    for (const auto& [x, y] : p.samples) r.AddItem(x, y);
    ASSERT_TRUE(r.Compute(p.Degree()));
    const int d = p.Degree();
    double fewest = 15.0;
    for (int k = 0; k <= d; ++k)  // certified B_k belongs to x^k, which is coefficient d - k
        fewest = std::min(fewest, uc::test::LogRelativeError(r.GetCoefficients()[d - k], p.certified[k]));
    EXPECT_GE(fewest, e.coefficientDigits);

    double rss = 0.0;
    for (const auto& [x, y] : p.samples) rss += (y - r.YLookup(x)) * (y - r.YLookup(x));
    const double sd = std::sqrt(rss / static_cast<double>(p.samples.size() - p.certified.size()));
    if (p.residualSD == 0.0)
        EXPECT_LT(sd, 1e-8 * std::fabs(p.samples.back().second)) << "an exact fit leaves rounding only";
    else
        EXPECT_GE(uc::test::LogRelativeError(sd, p.residualSD), e.residualDigits);
    std::printf("%-9s coefficients %.1f digits\n", e.name, fewest);
}

// The fewest digits each problem must keep on every target (x87 and SSE arithmetic round differently).
// The design matrix holds rounded powers of x: for Filip (condition about 5e9 after column scaling) that
// rounding alone costs about eight of the certificate's fifteen digits.
INSTANTIATE_TEST_SUITE_P(Certified, ReferenceProblems,
                         testing::Values(Expectation{"Pontius", 12, 12}, Expectation{"Wampler1", 12, 0},
                                         Expectation{"Wampler2", 12, 0}, Expectation{"Wampler3", 12, 12},
                                         Expectation{"Wampler4", 12, 12}, Expectation{"Wampler5", 12, 12},
                                         Expectation{"Filip", 7, 7}),
                         [](const testing::TestParamInfo<Expectation>& info) { return std::string(info.param.name); });

}  // namespace
