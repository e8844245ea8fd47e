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

// rows x columns within int indexing; multiplied in 64 bits (a division would cost more than the element store).
bool SizeUsable(int rows, int columns) {
    return rows > 0 && columns > 0 && static_cast<long long>(rows) * columns <= INT_MAX;
}

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

// The size of a correction `dz` to the scaled unknowns `z`, relative per component so that small coefficients
// get their digits too; components below sqrt(eps) of the largest count at that floor.
double RelativeChange(const Eigen::VectorXd& z, const Eigen::VectorXd& dz) {
    const double floor = std::sqrt(std::numeric_limits<double>::epsilon()) * z.lpNorm<Eigen::Infinity>();
    double worst = 0.0;
    for (Eigen::Index j = 0; j < z.size(); ++j)
        worst = std::max(worst, std::abs(dz[j]) / std::max({std::abs(z[j]), floor, DBL_MIN}));
    return worst;
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
        // problems contract slowly).
        const double worst = RelativeChange(z, dz);
        if (pass > 0) {
            // The first correction says nothing of the contraction (it depends on how small the smallest
        // components are), so a second pass measures it unless the first changed less than a rounding.
        const double ratio = pass == 1 ? 1.0 : worst / std::max(previous, DBL_MIN);
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

// Tall problems are first factored as they stream by: blocks of rows small enough for the first-level cache
// are folded into the triangular factor of everything before them (Householder reflections of the stacked
// [R c; block b]), so the n x m matrix is read once and never copied. Householder QR commutes exactly with
// scaling columns by powers of two, so no scaling is needed while every entry stays far from over- and
// underflow; the scales only matter for the rank decision and the refinement's measures.
class StreamedQR {
public:
    enum Status { kFactored, kNotFinite, kOutOfRange };

    StreamedQR(const double* matrix, int rows, int columns, const double* rhs)
        : m_r(Eigen::MatrixXd::Zero(columns, columns + 1)), m_block(kBlockRows, columns + 1) {
        const Eigen::Index m = columns;
        for (int first = 0; first < rows && m_status == kFactored; first += kBlockRows) {
            const int count = std::min(kBlockRows, rows - first);
            bool finite = true, inRange = true;
            for (int i = 0; i < count; ++i) {
                const double* row = matrix + static_cast<std::ptrdiff_t>(first + i) * m;
                for (Eigen::Index j = 0; j <= m; ++j) {
                    const double v = j < m ? row[j] : rhs[first + i];
                    const double magnitude = std::fabs(v);
                    finite &= magnitude <= DBL_MAX;
                    inRange &= (magnitude <= kLargest) & ((magnitude >= kSmallest) | (v == 0.0));
                    m_block(i, j) = v;
                }
            }
            if (!finite) m_status = kNotFinite;
            else if (!inRange) m_status = kOutOfRange;
            else Fold(count);
        }
    }

    Status status() const { return m_status; }
    // R (columns x columns, upper triangular) and c = Q^T b (its last column).
    const Eigen::MatrixXd& factor() const { return m_r; }

private:
    // Entries between these powers of two keep every sum of squares in range.
    static constexpr double kLargest = 0x1p450, kSmallest = 0x1p-450;
    static constexpr int kBlockRows = 256;

    // One reflection per column zeroes the block below R's diagonal; R's own zeros below the diagonal stay.
    void Fold(int count) {
        const Eigen::Index m = m_r.rows();
        for (Eigen::Index k = 0; k < m; ++k) {
            auto v = m_block.col(k).head(count);
            const double sigma = v.squaredNorm();
            if (sigma == 0.0) continue;
            const double alpha = m_r(k, k);
            const double beta = -std::copysign(std::sqrt(alpha * alpha + sigma), alpha);
            const double tau = (beta - alpha) / beta;
            v *= 1.0 / (alpha - beta);
            for (Eigen::Index j = k + 1; j <= m; ++j) {
                auto column = m_block.col(j).head(count);
                const double w = tau * (m_r(k, j) + column.dot(v));
                m_r(k, j) -= w;
                column -= w * v;
            }
            m_r(k, k) = beta;
        }
    }

    Eigen::MatrixXd m_r;
    Eigen::MatrixXd m_block;
    Status m_status = kFactored;
};

// g += A^T (b - A z), the residual and the sums carried wide. Rows go by chunks that stay in the first-level
// cache: residuals of the chunk first, then one column at a time; two interleaved sums halve the chains of
// dependent additions.
void WideNormalProduct(const double* matrix, int rows, Eigen::Index m, const double* rhs, const Eigen::VectorXd& z,
                       std::vector<Wide>& g) {
    constexpr int kChunk = 64;
    Wide s[kChunk];
    for (int first = 0; first < rows; first += kChunk) {
        const int count = std::min(kChunk, rows - first);
        const double* chunk = matrix + static_cast<std::ptrdiff_t>(first) * m;
        for (int i = 0; i < count; ++i) {
            const double* row = chunk + i * m;
            Wide even = rhs[first + i], odd = 0;
            Eigen::Index j = 0;
            for (; j + 1 < m; j += 2) {
                even -= static_cast<Wide>(row[j]) * z[j];
                odd -= static_cast<Wide>(row[j + 1]) * z[j + 1];
            }
            if (j < m) even -= static_cast<Wide>(row[j]) * z[j];
            s[i] = even + odd;
        }
        for (Eigen::Index j = 0; j < m; ++j) {
            Wide even = 0, odd = 0;
            int i = 0;
            for (; i + 1 < count; i += 2) {
                even += static_cast<Wide>(chunk[i * m + j]) * s[i];
                odd += static_cast<Wide>(chunk[(i + 1) * m + j]) * s[i + 1];
            }
            if (i < count) even += static_cast<Wide>(chunk[i * m + j]) * s[i];
            g[static_cast<std::size_t>(j)] += even + odd;
        }
    }
}

// Full-column-rank least squares from the streamed factor, refined with the corrected semi-normal equations:
// dz = (R^T R)^-1 A^T (b - A z), residual and product carried wide in one pass over the rows. Each pass
// contracts the error by about eps * cond^2, so this serves well-conditioned problems (the usual fit) and
// reports false (the caller then takes the augmented-system route) when the corrections stop shrinking.
bool RefineSemiNormal(const double* matrix, int rows, int columns, const double* rhs, const Eigen::MatrixXd& factor,
                      const Eigen::VectorXd& scale, Eigen::VectorXd& z) {
    const Eigen::Index m = columns;
    const auto r = factor.leftCols(m).triangularView<Eigen::Upper>();
    z = r.solve(factor.col(m));
    std::vector<Wide> g(static_cast<std::size_t>(m));
    double previous = 0.0;
    for (int pass = 1; pass <= 6; ++pass) {
        std::fill(g.begin(), g.end(), Wide(0));
        WideNormalProduct(matrix, rows, m, rhs, z, g);
        Eigen::VectorXd dz(m);
        for (Eigen::Index j = 0; j < m; ++j) dz[j] = static_cast<double>(g[static_cast<std::size_t>(j)]);
        r.transpose().solveInPlace(dz);
        r.solveInPlace(dz);
        z += dz;
        if (!z.allFinite()) return false;
        const double worst = RelativeChange(z.cwiseProduct(scale), dz.cwiseProduct(scale));
        // The first correction says nothing of the contraction (it depends on how small the smallest
        // components are), so a second pass measures it unless the first changed less than a rounding.
        const double ratio = pass == 1 ? 1.0 : worst / std::max(previous, DBL_MIN);
        if (worst * std::min(ratio, 1.0) <= std::numeric_limits<double>::epsilon()) return true;
        if (pass > 1 && ratio > 0.1) return false;  // too slow: the augmented route does better
        previous = worst;
    }
    return false;
}

// The streamed route: true with `x` set when the problem is tall, in range and of full rank and the
// refinement converged; false (nothing decided) otherwise.
bool SolveStreamed(const double* matrix, int rows, int columns, const double* rhs, Eigen::VectorXd& x,
                   bool& notFinite) {
    const StreamedQR qr(matrix, rows, columns, rhs);
    notFinite = qr.status() == StreamedQR::kNotFinite;
    if (qr.status() != StreamedQR::kFactored) return false;
    // Column norms of A are those of R; the rank is decided on the equilibrated factor, as on the matrix.
    const Eigen::Index m = columns;
    Eigen::VectorXd scale(m);
    for (Eigen::Index j = 0; j < m; ++j) scale[j] = PowerOfTwoNear(qr.factor().col(j).head(j + 1).norm());
    const Eigen::MatrixXd equilibrated = qr.factor().leftCols(m) * scale.cwiseInverse().asDiagonal();
    if (Eigen::ColPivHouseholderQR<Eigen::MatrixXd>(equilibrated).rank() < m) return false;
    return RefineSemiNormal(matrix, rows, columns, rhs, qr.factor(), scale, x);
}

bool Solve(const double* matrix, int rows, int columns, const double* rhs, double* solution) {
    if (rows >= columns) {
        Eigen::VectorXd x;
        bool notFinite = false;
        if (SolveStreamed(matrix, rows, columns, rhs, x, notFinite)) {
            Eigen::Map<Eigen::VectorXd>(solution, columns) = x;
            return true;
        }
        if (notFinite) return false;
    }
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
