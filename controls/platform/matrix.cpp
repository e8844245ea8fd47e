// Matrix routines of the statics library: element store and a least-squares solver over Eigen.
#include "platform/matrix.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <limits>
#include <new>
#include <vector>

namespace {

using RowMajorMatrix = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

bool SizeUsable(int rows, int columns) { return rows > 0 && columns > 0 && rows <= INT_MAX / columns; }

void FillNaN(double* solution, int columns) {
    if (!solution) return;
    for (int j = 0; j < columns; ++j) solution[j] = std::numeric_limits<double>::quiet_NaN();
}

// The power of two nearest to a positive finite `norm`; 1 for zero (an all-zero column stays as it is).
double PowerOfTwoNear(double norm) {
    if (!(norm > 0.0) || !std::isfinite(norm)) return 1.0;
    int exponent = 0;
    std::frexp(norm, &exponent);  // norm = m * 2^exponent with m in [0.5, 1)
    return std::ldexp(1.0, exponent - 1);
}

// The system after scaling: A' = A diag(1 / scale), read from the caller's row-major matrix (multiplying by
// the inverse of a power of two is exact, so A' is known without rounding).
struct ScaledSystem {
    const Eigen::Map<const RowMajorMatrix>& a;
    Eigen::VectorXd inverseScale;
    Eigen::VectorXd b;
    double At(Eigen::Index i, Eigen::Index j) const { return a(i, j) * inverseScale[j]; }
};

// Sums carried in long double: where that type is wider than double (x87 extended on x86 targets) the
// refinement steps recover digits the first solve lost.
using Wide = long double;

// b - A' z.
Eigen::VectorXd Residual(const ScaledSystem& s, const Eigen::VectorXd& z) {
    Eigen::VectorXd r(s.a.rows());
    for (Eigen::Index i = 0; i < s.a.rows(); ++i) {
        Wide sum = s.b[i];
        for (Eigen::Index j = 0; j < s.a.cols(); ++j) sum -= static_cast<Wide>(s.At(i, j)) * z[j];
        r[i] = static_cast<double>(sum);
    }
    return r;
}

using Decomposition = Eigen::CompleteOrthogonalDecomposition<Eigen::Ref<Eigen::MatrixXd>>;

// Q = H_0 H_1 ... H_(m-1) of a decomposition of a matrix with at least as many rows as columns, held as
// I - V T V^T (compact WY form: V the unit lower trapezoidal reflector vectors, T upper triangular), so that
// Q or Q^T is applied to a long vector in two passes over V instead of two per reflector.
class CompactQ {
public:
    explicit CompactQ(const Decomposition& cod)
        : m_v(cod.matrixQTZ()), m_m(cod.matrixQTZ().cols()), m_t(Eigen::MatrixXd::Zero(m_m, m_m)) {
        const Eigen::Index n = m_v.rows();
        const auto top = m_v.topRows(m_m).triangularView<Eigen::UnitLower>();
        Eigen::MatrixXd topV = top;
        // G = V^T V, then T column by column: T(0:i, i) = -tau_i T(0:i, 0:i) G(0:i, i), T(i, i) = tau_i.
        Eigen::MatrixXd g = topV.transpose() * topV;
        g.noalias() += m_v.bottomRows(n - m_m).transpose() * m_v.bottomRows(n - m_m);
        for (Eigen::Index i = 0; i < m_m; ++i) {
            const double tau = cod.hCoeffs()[i];
            m_t(i, i) = tau;
            if (i == 0) continue;
            const Eigen::VectorXd product = m_t.topLeftCorner(i, i).triangularView<Eigen::Upper>() * g.col(i).head(i);
            m_t.col(i).head(i) = -tau * product;
        }
    }

    // c := Q^T c (transpose) or Q c.
    void Apply(Eigen::VectorXd& c, bool transpose) const {
        const Eigen::Index n = m_v.rows();
        const auto top = m_v.topRows(m_m).triangularView<Eigen::UnitLower>();
        const auto bottom = m_v.bottomRows(n - m_m);
        Eigen::VectorXd w = top.transpose() * c.head(m_m);
        w.noalias() += bottom.transpose() * c.tail(n - m_m);
        const auto t = m_t.triangularView<Eigen::Upper>();
        w = transpose ? (t.transpose() * w).eval() : (t * w).eval();
        c.head(m_m) -= top * w;
        c.tail(n - m_m).noalias() -= bottom * w;
    }

private:
    const Eigen::Ref<Eigen::MatrixXd>& m_v;
    Eigen::Index m_m;
    Eigen::MatrixXd m_t;
};

// Least-squares solution z of a full-column-rank problem through the augmented system
// [I A'; A'^T 0] [r; z] = [b; 0] (Bjorck), A' P = Q R from the decomposition. The first pass, from r = z = 0,
// is the plain QR solution; each later one refines r and z together from wide residuals, which also removes
// the error that a large residual feeds through the squared condition number (refining z alone would not).
Eigen::VectorXd SolveFullRank(const ScaledSystem& s, const Decomposition& cod) {
    const Eigen::Index n = s.a.rows(), m = s.a.cols();
    const auto rMatrix = cod.matrixT().topLeftCorner(m, m).triangularView<Eigen::Upper>();
    const CompactQ q(cod);
    Eigen::VectorXd z = Eigen::VectorXd::Zero(m), r = Eigen::VectorXd::Zero(n);
    Eigen::VectorXd f = s.b, g = Eigen::VectorXd::Zero(m);
    std::vector<Wide> gWide(static_cast<std::size_t>(m));
    double previous = 0.0;  // relative size of the previous correction
    for (int pass = 0; pass < 5; ++pass) {
        if (pass > 0) {
            // f = b - r - A'z and g = -A'^T r, carried wide.
            std::fill(gWide.begin(), gWide.end(), Wide(0));
            for (Eigen::Index i = 0; i < n; ++i) {
                Wide sum = static_cast<Wide>(s.b[i]) - r[i];
                for (Eigen::Index j = 0; j < m; ++j) {
                    const Wide aij = s.At(i, j);
                    sum -= aij * z[j];
                    gWide[static_cast<std::size_t>(j)] -= aij * r[i];
                }
                f[i] = static_cast<double>(sum);
            }
            for (Eigen::Index j = 0; j < m; ++j) g[j] = static_cast<double>(gWide[static_cast<std::size_t>(j)]);
        }
        // With Q^T dr = [u1; u2] and Q^T f = [c1; c2]: R^T u1 = P^T g, u2 = c2, R P^T dz = c1 - u1.
        const Eigen::VectorXd u1 = rMatrix.transpose().solve(cod.colsPermutation().transpose() * g);
        q.Apply(f, true);
        const Eigen::VectorXd dz = cod.colsPermutation() * rMatrix.solve(f.head(m) - u1);
        f.head(m) = u1;
        q.Apply(f, false);
        r += f;
        z += dz;
        // Each pass shrinks the error by about the ratio of successive corrections; after the first refinement
        // that ratio is unknown and taken as the square root of the correction's relative size (large-residual
        // problems contract slowly). Sizes are relative per component, so that small coefficients get their
        // digits too; components below sqrt(eps) of the largest count at that floor.
        const double floor = std::sqrt(std::numeric_limits<double>::epsilon()) * z.lpNorm<Eigen::Infinity>();
        double worst = 0.0;
        for (Eigen::Index j = 0; j < m; ++j) worst = std::max(worst, std::abs(dz[j]) / std::max({std::abs(z[j]), floor, DBL_MIN}));
        if (pass > 0) {
            const double ratio = pass == 1 ? std::sqrt(worst) : worst / std::max(previous, DBL_MIN);
            if (worst * std::min(ratio, 1.0) <= std::numeric_limits<double>::epsilon()) break;
        }
        previous = worst;
    }
    return z;
}

// Minimum-norm least-squares solution in the caller's own unknowns (column scaling would minimise a weighted
// norm instead); one common power of two keeps the entries in range.
Eigen::VectorXd SolveMinimumNorm(const Eigen::Map<const RowMajorMatrix>& input, const Eigen::VectorXd& b,
                                 double commonScale) {
    Eigen::MatrixXd a = input * (1.0 / commonScale);
    const ScaledSystem system{input, Eigen::VectorXd::Constant(input.cols(), 1.0 / commonScale), b};
    const Decomposition cod(a);
    Eigen::VectorXd z = cod.solve(b);
    z += cod.solve(Residual(system, z));  // refining z alone keeps it in the row space
    return z / commonScale;
}

bool Solve(const double* matrix, int rows, int columns, const double* rhs, double* solution) {
    const Eigen::Map<const RowMajorMatrix> input(matrix, rows, columns);
    const Eigen::Map<const Eigen::VectorXd> b(rhs, rows);
    if (!b.allFinite()) return false;
    const double bScale = PowerOfTwoNear(b.stableNorm());
    const Eigen::VectorXd bs = b * (1.0 / bScale);

    // Unit-length columns: powers of x differ by many orders of magnitude, and equilibrating them removes
    // that part of the condition number before the rank is decided. The scales are powers of two, so
    // scaling adds no rounding of its own. One pass over the caller's rows checks them and sums the squares;
    // a column whose sum over- or underflows is measured again with a scaled norm.
    std::vector<double> squares(static_cast<std::size_t>(columns), 0.0);
    const double* element = matrix;
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < columns; ++j, ++element) {
            if (!std::isfinite(*element)) return false;
            squares[static_cast<std::size_t>(j)] += *element * *element;
        }
    Eigen::VectorXd scale(columns), inverse(columns);
    for (int j = 0; j < columns; ++j) {
        double norm = std::sqrt(squares[static_cast<std::size_t>(j)]);
        if (!std::isfinite(norm) || norm < 1e-150) norm = input.col(j).stableNorm();
        scale[j] = PowerOfTwoNear(norm);
        inverse[j] = 1.0 / scale[j];
    }
    Eigen::MatrixXd a = input * inverse.asDiagonal();
    Eigen::VectorXd x;
    {
        // Factored in place: the scaled copy is the decomposition's storage.
        const Decomposition cod(a);
        if (cod.rank() == columns && rows >= columns)
            x = SolveFullRank(ScaledSystem{input, scale.cwiseInverse(), bs}, cod).cwiseQuotient(scale);
    }
    if (x.size() == 0) {
        a.resize(0, 0);
        x = SolveMinimumNorm(input, bs, scale.maxCoeff());
    }
    for (int j = 0; j < columns; ++j) solution[j] = x[j] * bScale;
    return Eigen::Map<Eigen::VectorXd>(solution, columns).allFinite();
}

}  // namespace

bool MAT_SetMatrixElement(int row, int column, int rows, int columns, double* matrix, double value) {
    if (!matrix || !SizeUsable(rows, columns) || row < 0 || row >= rows || column < 0 || column >= columns) return false;
    matrix[static_cast<long long>(row) * columns + column] = value;
    return true;
}

bool MAT_LeastSquares(double* matrix, int rows, int columns, double* rhs, double* solution) {
    if (!solution || columns <= 0) return false;
    bool ok = false;
    if (matrix && rhs && SizeUsable(rows, columns)) {
        try {
            ok = Solve(matrix, rows, columns, rhs, solution);
        } catch (const std::bad_alloc&) {
            ok = false;
        }
    }
    if (!ok) FillNaN(solution, columns);
    return ok;
}
