// Reader of the reference regression problems in tests/probe/data and the correct significant digits of a fit.
#pragma once

#include <algorithm>
#include <cctype>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>

#include "probe/polynomial_regression.h"  // <utility>, <vector>

namespace uc::test {

struct ReferenceProblem {
    std::vector<double> certified;                   // B0, B1, ... (lowest power first, as certified)
    std::vector<std::pair<double, double>> samples;  // (x, y)
    int Degree() const { return static_cast<int>(certified.size()) - 1; }
};

// "B<k> estimate sd" lines, then "y x" pairs after the "Data:  y  x" line; nothing for a missing file.
inline ReferenceProblem ReadReferenceProblem(const std::string& path) {
    ReferenceProblem p;
    std::ifstream in(path);
    bool data = false;
    for (std::string line; std::getline(in, line);) {
        std::istringstream fields(line);
        std::string first;
        double a = 0, b = 0;
        if (data) {
            if (fields >> a >> b) p.samples.emplace_back(b, a);
        } else if (fields >> first && first.size() > 1 && first[0] == 'B' &&
                   std::isdigit(static_cast<unsigned char>(first[1])) && fields >> a) {
            p.certified.push_back(a);
        } else {
            data = first == "Data:" && line.find(" y ") != std::string::npos;
        }
    }
    return p;
}

// Correct significant digits of `estimate`: -log10 of the relative error (absolute for a certified 0), capped
// at the 15 a certificate gives.
inline double CorrectDigits(double estimate, double certified) {
    if (std::isnan(estimate)) return 0.0;
    const double error = std::fabs(estimate - certified) / (certified != 0.0 ? std::fabs(certified) : 1.0);
    return error == 0.0 ? 15.0 : std::clamp(-std::log10(error), 0.0, 15.0);
}

// Fits the problem at its degree; the fewest correct digits over all coefficients.
inline double FitDigits(const ReferenceProblem& p) {
    CPolynomialRegression r;
    for (const auto& [x, y] : p.samples) r.AddItem(x, y);
    if (!r.Compute(p.Degree())) return 0.0;
    double fewest = 15.0;
    for (int k = 0; k <= p.Degree(); ++k)  // certified B_k belongs to x^k, which is coefficient d - k
        fewest = std::min(fewest, CorrectDigits(r.GetCoefficients()[p.Degree() - k], p.certified[k]));
    return fewest;
}

inline const char* const kReferenceProblems[] = {"Pontius", "Wampler1", "Wampler2", "Wampler3",
                                                 "Wampler4", "Wampler5", "Filip"};

}  // namespace uc::test
