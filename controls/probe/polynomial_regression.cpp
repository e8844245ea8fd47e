// CPolynomialRegression: the design matrix of powers of x, its least-squares solution and evaluation.
#include "probe/polynomial_regression.h"

#include <climits>
#include <cmath>
#include <new>

#include "platform/matrix.h"

namespace {

// x to an integral power with the power function; the powers 0 and 1, whose results pow gives exactly
// (1 and x, NaN included), skip the call.
double Power(double x, int exponent) {
    if (exponent == 0) return 1.0;
    if (exponent == 1) return x;
    return std::pow(x, exponent);
}

}  // namespace

CPolynomialRegression::CPolynomialRegression() = default;

CPolynomialRegression::~CPolynomialRegression() { Reset(); }

void CPolynomialRegression::AddItem(double x, double y) { m_samples.emplace_back(x, y); }

int CPolynomialRegression::GetItemCount() const {
    return m_samples.size() > static_cast<std::size_t>(INT_MAX) ? INT_MAX : static_cast<int>(m_samples.size());
}

void CPolynomialRegression::Reset() {
    m_samples.clear();
    m_samples.shrink_to_fit();
    m_degree = 0;
    DeleteMatrices();
}

void CPolynomialRegression::DeleteMatrices() {
    m_designMatrix.reset();
    m_rhs.reset();
    m_coefficients.reset();
}

bool CPolynomialRegression::Compute(int degree) {
    m_degree = degree;
    if (m_samples.empty()) return false;
    DeleteMatrices();
    if (degree < 0) return false;

    // The matrix routines index with int: n x (degree + 1) must stay within it.
    const long long columns = static_cast<long long>(degree) + 1;
    const long long rows = static_cast<long long>(m_samples.size());
    if (rows > INT_MAX || columns > INT_MAX / rows) return false;
    const int n = static_cast<int>(rows);
    const int m = static_cast<int>(columns);

    std::unique_ptr<double[]> matrix(new (std::nothrow) double[static_cast<std::size_t>(rows * columns)]);
    std::unique_ptr<double[]> rhs(new (std::nothrow) double[static_cast<std::size_t>(rows)]);
    std::unique_ptr<double[]> coefficients(new (std::nothrow) double[static_cast<std::size_t>(columns)]);
    if (!matrix || !rhs || !coefficients) return false;

    for (int i = 0; i < n; ++i) {
        const double x = m_samples[static_cast<std::size_t>(i)].first;
        for (int j = 0; j < m; ++j) MAT_SetMatrixElement(i, j, n, m, matrix.get(), Power(x, degree - j));
        rhs[i] = m_samples[static_cast<std::size_t>(i)].second;
    }
    m_designMatrix = std::move(matrix);
    m_rhs = std::move(rhs);
    m_coefficients = std::move(coefficients);
    return MAT_LeastSquares(m_designMatrix.get(), n, m, m_rhs.get(), m_coefficients.get());
}

double CPolynomialRegression::YLookup(double x) const {
    if (!m_coefficients) return 0.0;
    double sum = 0.0;
    for (int j = 0; j <= m_degree; ++j) sum += m_coefficients[j] * Power(x, m_degree - j);
    return sum;
}
