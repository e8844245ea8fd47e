// Matrix routines of the console's statics library: flat row-major matrices and a least-squares solver.
#pragma once

#include "platform/export.h"

// Stores `value` as element (row, column) of a rows x columns matrix kept row by row in `matrix`.
// False, with nothing written, for a null matrix, a non-positive size or an index outside it.
UC_API bool MAT_SetMatrixElement(int row, int column, int rows, int columns, double* matrix, double value);

// Writes into `solution` (`columns` values) the least-squares solution of matrix x solution ~ rhs for a
// rows x columns row-major `matrix` and `rows` right-hand values; neither input is changed.
// Never forms the normal equations. At least as many rows as columns: the rows are folded block by block
// into a Householder triangular factor (the matrix is read once, never copied), the rank is decided on the
// factor with its columns scaled to unit length, and with full rank the solution is refined from residuals
// carried in long double until it is correct to a rounding. Where that refinement converges too slowly
// (nearly dependent columns), or entries lie beyond 2^+-450, the columns are scaled (by powers of two,
// exactly) and factored by a complete orthogonal decomposition (Householder QR with column pivoting, then an
// orthogonal reduction of any dependent columns), and a full-rank solution is refined through the augmented
// system, which recovers the digits that nearly dependent columns and large residuals cost. Otherwise (fewer
// rows than columns, or dependent columns) the result is the minimum-norm solution in the caller's unknowns
// (all-zero columns get 0).
// False when the arguments are unusable (null pointers, non-positive or overflowing sizes), when an input is
// NaN or infinite, or when memory runs out; `solution` (when not null) then holds NaN in every place.
UC_API bool MAT_LeastSquares(double* matrix, int rows, int columns, double* rhs, double* solution);
