// uctool "fit": a least-squares polynomial through a two-column file, its coefficients and residual.
#include <algorithm>
#include <cmath>
#include <fstream>
#include <iterator>
#include <ostream>
#include <set>

#include "command.h"
#include "platform/text.h"
#include "probe/polynomial_regression.h"
#include "sample_table.h"

namespace uctool::fit {
namespace {

const wchar_t* const kUsage =
    L"usage: uctool fit FILE --degree N [--yx]\n"
    L"\n"
    L"Fits a polynomial of degree N to the (x, y) lines of FILE by least squares, as CPolynomialRegression\n"
    L"does, and prints the coefficients (highest power first) and the residual.\n"
    L"Lines hold two numbers separated by blanks, tabs, ',' or ';'; '#' starts a comment line; lines that\n"
    L"do not start with a number (headers) are skipped and counted. --yx reads y in the first column.\n"
    L"Exit code 0 on a fit, 1 when the file cannot be read, has a malformed line or cannot be fitted, 2 on bad usage.";

bool ReadFile(const std::wstring& path, std::string& bytes) {
    std::ifstream in(uc::ToFsPath(path), std::ios::binary);
    if (!in) return false;
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

int Run(const Args& all, std::wostream& out, std::wostream& err) {
    Args args = all;
    std::wstring degreeText;
    const bool haveDegree = TakeOption(args, L"--degree", degreeText);
    const bool yFirst = TakeFlag(args, L"--yx");
    int degree = 0;
    if (args.size() != 1 || !haveDegree || !uc::ParseInt(degreeText, degree) || degree < 0) {
        err << kUsage << L"\n";
        return 2;
    }
    std::string bytes;
    if (!ReadFile(args[0], bytes)) {
        err << L"uctool fit: cannot read \"" << args[0] << L"\"\n";
        return 1;
    }
    const SampleTable table = ParseSampleTable(bytes, yFirst);
    if (table.errorLine != 0) {
        err << L"uctool fit: " << args[0] << L": " << table.error << L"\n";
        return 1;
    }
    if (table.samples.empty()) {
        err << L"uctool fit: no samples in \"" << args[0] << L"\"\n";
        return 1;
    }

    CPolynomialRegression regression;
    std::set<double> distinct;
    for (const auto& [x, y] : table.samples) {
        regression.AddItem(x, y);
        distinct.insert(x);
    }
    const bool fitted = regression.Compute(degree);
    const int n = regression.GetItemCount();
    out << uc::Format(L"samples: %d", n);
    if (table.textLines > 0) out << uc::Format(L" (%d text lines skipped)", table.textLines);
    out << uc::Format(L"\ndegree: %d\n", degree);
    if (!fitted) {
        err << L"uctool fit: no finite fit of degree " << degree
            << L" (powers of x overflow, or the system is too large)\n";
        return 1;
    }
    if (static_cast<long long>(distinct.size()) < static_cast<long long>(degree) + 1)
        out << uc::Format(L"note: %d distinct x values for %d coefficients: this is the minimum-norm fit\n",
                          static_cast<int>(distinct.size()), degree + 1);
    out << L"coefficients, highest power first:\n";
    for (int j = 0; j <= degree; ++j)
        out << uc::Format(L"  x^%-3d % .17g\n", degree - j, regression.GetCoefficients()[j]);

    double rss = 0.0;
    for (const auto& [x, y] : table.samples) {
        const double r = y - regression.YLookup(x);
        rss += r * r;
    }
    out << uc::Format(L"residual sum of squares: %.17g\n", rss);
    if (n > degree + 1)
        out << uc::Format(L"residual standard deviation: %.17g\n", std::sqrt(rss / (n - degree - 1)));
    return 0;
}

const bool registered = Register({L"fit", L"least-squares polynomial through a two-column file", kUsage, Run});

}  // namespace
}  // namespace uctool::fit
