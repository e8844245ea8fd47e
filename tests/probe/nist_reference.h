// Reader of the reference regression problems in tests/probe/data (certified coefficients, residual SD, data)
// and the log relative error used to count correct significant digits.
#pragma once

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace uc::test {

struct ReferenceProblem {
    std::string name;
    std::vector<double> certified;  // B0, B1, ... (lowest power first, as certified)
    double residualSD = 0.0;
    std::vector<std::pair<double, double>> samples;  // (x, y)
    int Degree() const { return static_cast<int>(certified.size()) - 1; }
};

// Parses a file laid out as the reference files are: "B<k> estimate sd" lines, "Standard Deviation <v>"
// under "Residual", and "y x" pairs after the "Data:  y  x" line. Empty name on a missing or unreadable file.
inline ReferenceProblem ReadReferenceProblem(const std::string& path, const std::string& name) {
    ReferenceProblem p;
    std::ifstream in(path);
    if (!in) return p;
    std::string line;
    bool data = false, residual = false;
    while (std::getline(in, line)) {
        std::istringstream fields(line);
        std::string first;
        fields >> first;
        if (data) {
            std::istringstream pair(line);
            double y = 0, x = 0;
            if (pair >> y >> x) p.samples.emplace_back(x, y);
            continue;
        }
        if (first.size() >= 2 && first[0] == 'B' && std::isdigit(static_cast<unsigned char>(first[1]))) {
            double v = 0;
            if (fields >> v) p.certified.push_back(v);
        } else if (first == "Residual") {
            residual = true;
        } else if (residual && first == "Standard") {
            std::string word;
            fields >> word >> p.residualSD;
            residual = false;
        } else if (first == "Data:" && line.find(" y ") != std::string::npos) {
            data = true;
        }
    }
    if (!p.certified.empty() && !p.samples.empty()) p.name = name;
    return p;
}

// Correct significant digits of `estimate` against `certified`: -log10 of the relative error (absolute error
// for a certified 0), capped at 15, the digits a certificate gives.
inline double LogRelativeError(double estimate, double certified) {
    if (std::isnan(estimate)) return 0.0;
    const double error = certified != 0.0 ? std::fabs(estimate - certified) / std::fabs(certified)
                                          : std::fabs(estimate);
    if (error == 0.0) return 15.0;
    return std::clamp(-std::log10(error), 0.0, 15.0);
}

inline const char* const kReferenceProblems[] = {"Pontius", "Wampler1", "Wampler2", "Wampler3",
                                                 "Wampler4", "Wampler5", "Filip"};

}  // namespace uc::test
