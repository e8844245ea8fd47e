// CPolynomialRegression: collects (x, y) samples, fits a polynomial of a chosen degree by linear least squares
// and evaluates it.
#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "platform/export.h"

class UC_API CPolynomialRegression {
public:
    // No samples, no fit, degree 0.
    CPolynomialRegression();
    // Calls Reset.
    virtual ~CPolynomialRegression();
    CPolynomialRegression(const CPolynomialRegression&) = delete;
    CPolynomialRegression& operator=(const CPolynomialRegression&) = delete;

    // Appends one sample; duplicates are kept.
    void AddItem(double x, double y);
    // The number of samples.
    int GetItemCount() const;
    // Deletes every sample and the fit; the degree returns to 0.
    void Reset();

    // Stores `degree` and fits the coefficients of x^degree ... x^0 to every sample by least squares (see
    // MAT_LeastSquares): fewer samples than coefficients, or repeated x values, give the minimum-norm fit,
    // which passes through each distinct x at the mean of its y values.
    // Without samples nothing but the degree changes and the result is false.
    // A negative degree, or a design matrix beyond int indexing or beyond memory, discards any earlier fit
    // (YLookup gives 0.0 again) and returns false.
    // A NaN or infinite sample, or a power of x that overflows, leaves every coefficient NaN (YLookup gives
    // NaN, never a plausible number) and returns false. True when the coefficients are a finite fit.
    bool Compute(int degree);

    // The fitted polynomial at `x`: sum over j = 0..degree of coefficient j * x^(degree - j), each power taken
    // with the power function and added from the highest power down; 0.0 before any fit and after Reset.
    double YLookup(double x) const;

    // The degree last given to Compute (0 initially and after Reset).
    int GetDegree() const { return m_degree; }
    // The degree + 1 coefficients, highest power first; null before any fit.
    const double* GetCoefficients() const { return m_coefficients.get(); }
    // Sample `index` (0-based, in the order added).
    const std::pair<double, double>& GetItem(int index) const { return m_samples.at(static_cast<std::size_t>(index)); }

private:
    // Frees the design matrix, the right-hand side and the coefficients.
    void DeleteMatrices();

    std::unique_ptr<double[]> m_designMatrix;  // n x (degree + 1), row-major
    std::unique_ptr<double[]> m_rhs;           // n
    std::unique_ptr<double[]> m_coefficients;  // degree + 1, highest power first
    int m_degree = 0;
    // Samples in the order added, (x, y), held by value: a million samples are a million allocations otherwise.
    std::vector<std::pair<double, double>> m_samples;
};
