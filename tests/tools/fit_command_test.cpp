// uctool "fit": sample tables (separators, headers, malformed lines) and the fit's output and exit codes.
#include <gtest/gtest.h>

#include <cmath>
#include <sstream>

#include "platform/text.h"
#include "sample_table.h"
#include "support/temp_dir.h"
#include "support/tool_run.h"

namespace {

using Outcome = uc::test::ToolRun;
Outcome Fit(const uctool::Args& args) { return uc::test::RunTool(L"fit", args); }

bool Has(const std::wstring& text, const std::wstring& part) { return text.find(part) != std::wstring::npos; }

// The number printed after `label`; NaN when the label is missing.
double ValueAfter(const std::wstring& text, const std::wstring& label) {
    const std::size_t at = text.find(label);
    if (at == std::wstring::npos) return std::nan("");
    std::wistringstream in(text.substr(at + label.size()));
    double v = std::nan("");
    in >> v;
    return v;
}

TEST(SampleTable, ReadsEverySeparatorAndSkipsHeadersAndComments) {
    const uctool::SampleTable t =
        uctool::ParseSampleTable("x y\n# note\n\n1 2\n3,4\r\n5;\t6\n+7e0 -8\nTotal: 4 lines\n", false);
    EXPECT_EQ(t.errorLine, 0) << uc::ToUtf8(t.error);
    EXPECT_EQ(t.textLines, 2);
    const std::vector<std::pair<double, double>> expected = {{1, 2}, {3, 4}, {5, 6}, {7, -8}};
    EXPECT_EQ(t.samples, expected);
    EXPECT_EQ(uctool::ParseSampleTable("2 1\n", true).samples[0], (std::pair<double, double>{1, 2}));
}

TEST(SampleTable, StopsAtTheFirstMalformedDataLine) {
    struct Case {
        const char* text;
        int line;
    } cases[] = {{"1 2\n3\n", 2},       {"1 2\n3 4 5\n", 2}, {"1 2\n\n3 x\n", 3}, {"nan 1\n", 1},
                 {"1 inf\n", 1},        {"1 2.5.1\n", 1},    {"1 1e999\n", 1},    {"1,,\n", 1}};
    for (const Case& c : cases) {
        const uctool::SampleTable t = uctool::ParseSampleTable(c.text, false);
        EXPECT_EQ(t.errorLine, c.line) << c.text;
        EXPECT_TRUE(Has(t.error, uc::Format(L"line %d", c.line))) << c.text;
    }
}

TEST(FitCommand, PrintsCoefficientsHighestPowerFirstAndTheResidual) {
    uc::test::TempDir dir;
    const std::wstring file = dir.write(L"line.txt", "x y\n0 1\n1 3\n2 5\n3 7.5\n");
    const Outcome r = Fit({file, L"--degree", L"1"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_TRUE(Has(r.out, L"samples: 4 (1 text lines skipped)")) << r.out;
    // Least squares through the four points: slope 2.15, intercept 0.9, residuals 0.1 -0.05 -0.2 0.15.
    EXPECT_NEAR(ValueAfter(r.out, L"x^1"), 2.15, 1e-14) << r.out;
    EXPECT_NEAR(ValueAfter(r.out, L"x^0"), 0.9, 1e-14) << r.out;
    EXPECT_NEAR(ValueAfter(r.out, L"residual sum of squares:"), 0.075, 1e-14) << r.out;
    EXPECT_NEAR(ValueAfter(r.out, L"residual standard deviation:"), std::sqrt(0.0375), 1e-14) << r.out;
}

TEST(FitCommand, SaysWhenTheFitIsMinimumNorm) {
    uc::test::TempDir dir;
    const Outcome r = Fit({dir.write(L"two.txt", "1 1\n2 4\n"), L"--degree", L"3"});
    ASSERT_EQ(r.code, 0) << r.err;
    EXPECT_TRUE(Has(r.out, L"2 distinct x values for 4 coefficients")) << r.out;
    EXPECT_FALSE(Has(r.out, L"standard deviation")) << "no degrees of freedom left";
}

TEST(FitCommand, ReportsBadFilesAndUsage) {
    uc::test::TempDir dir;
    struct Case {
        std::vector<std::wstring> args;
        int code;
        const wchar_t* message;
    } cases[] = {
        {{dir.file(L"missing.txt"), L"--degree", L"1"}, 1, L"cannot read"},
        {{dir.write(L"bad.txt", "1 2\n3 four\n"), L"--degree", L"1"}, 1, L"line 2"},
        {{dir.write(L"empty.txt", "# nothing\n"), L"--degree", L"1"}, 1, L"no samples"},
        {{dir.write(L"big.txt", "1e200 1\n2 2\n"), L"--degree", L"3"}, 1, L"no finite fit"},
        {{dir.file(L"x.txt")}, 2, L"usage"},
        {{dir.file(L"x.txt"), L"--degree", L"-1"}, 2, L"usage"},
        {{dir.file(L"x.txt"), L"--degree", L"two"}, 2, L"usage"},
    };
    for (const Case& c : cases) {
        const Outcome r = Fit(c.args);
        EXPECT_EQ(r.code, c.code) << c.message;
        EXPECT_TRUE(Has(r.err, c.message)) << r.err;
    }
}

}  // namespace
