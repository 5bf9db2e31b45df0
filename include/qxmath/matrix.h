/* matrix.h — row-pointer and flat matrices: make, clear, copy, multiply,
 * transpose; their LU and Cholesky decompositions.
 *
 * Two storage conventions, both 0-based and row-major, are shared by every
 * numerical routine of the library and by its callers:
 *
 *   Row-pointer matrix (double **m): an array of one pointer per row, each
 *   pointing at that row's doubles; element (i, j) is m[i][j]. The rows need
 *   not be contiguous, nor in any order in memory: only the pointer array is
 *   required. NR_2d_matrix_allo lays one over a single block.
 *
 *   Flat matrix (double *m): rows x cols consecutive doubles, element (i, j)
 *   at m[i * cols + j] (i * n + j for a square one).
 *
 * Routines whose names contain 2d_matrix work on row-pointer matrices, those
 * with matrix_2d_as_1d on flat ones. Read-only row-pointer arguments are
 * typed double *const * so that a plain double ** converts to them in C and
 * C++ alike.
 *
 * None of these routines reports through the host's error interface or
 * reads the checking level: failures are return codes or status words, and
 * the caller decides what to say. None keeps state between calls; they are
 * re-entrant as long as callers do not share the matrices between threads.
 * Every routine does nothing and allocates nothing when its row count or
 * order is below 1, apart from writing the parity or status it reports.
 *
 * NaN and infinite input. Every loop here runs a number of steps fixed by
 * the dimensions, whatever the values, and no routine tests for NaN or
 * infinity except where stated: they propagate through products, copies
 * and substitutions. ludcmp_a's comparisons pass NaNs over: a row holding
 * nothing but zeros and NaNs is "all zeros" (result 1, a and indx
 * untouched), and a NaN figure never wins a pivot search, but a NaN that
 * ends up on the diagonal is used as the pivot as it is (it is not zero,
 * so not replaced by 1.0e-20) and spreads through the factors. A row with
 * an infinite element gets the scale 1/inf = 0, so that row's figures are
 * 0 or NaN. NR_cholesky_decomp ends with status 1 at the first pivot that
 * is NaN, as for one below 1.0e-10; an infinite pivot passes (its root is
 * +infinity).
 */
#ifndef QXMATH_MATRIX_H
#define QXMATH_MATRIX_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* ---- LU decomposition (Crout, implicit scaling, partial pivoting) -------- */

/* Factors the n x n row-pointer matrix a in place into L.U of a row
 * permutation of a: on return the strict lower triangle holds L (unit
 * diagonal not stored), the upper triangle and diagonal hold U.
 *
 *   a     in/out, n row pointers of n doubles each
 *   n     order
 *   indx  out, n ints: indx[j] is the row (0-based) swapped into row j at
 *         step j; indx[j] == j when no swap was made
 *   d     out, parity: +1.0 for an even number of row interchanges, -1.0 for
 *         odd (the determinant is *d times the product of the diagonal)
 *
 * Every row is scanned for its largest magnitude before anything is
 * changed; its reciprocal scales the row's pivot figure scale * |a[i][j]|.
 * The pivot of column j is the row with the greatest figure, compared with
 * ">=" against a running best starting at 0.0, so of rows with equal figures
 * the LAST one is taken (when every figure is NaN, row j stays). Row
 * interchanges swap the rows' contents element by element; the row pointers
 * are left as they are. An exactly zero pivot is replaced by 1.0e-20 so that
 * a singular matrix still decomposes (the solution is then usually huge):
 * only an all-zero row is reported.
 *
 * Result: 0 success; 1 some row holds nothing but zeros (NaNs are passed
 * over): a and indx are then untouched; 2 the scratch vector of n doubles
 * (taken from SM_alloc and freed on every path) could not be allocated and
 * the host's report returned: a and indx untouched. *d is set to +1.0 first
 * on every path. n < 1 gives 0 and allocates nothing.
 *
 * The factorisation is computed blocked for speed, but each element
 * receives exactly the operations of the column-by-column Crout loop, in the
 * same order: a[i][j] -= a[i][k] * a[k][j] one k at a time in increasing k,
 * then, below the diagonal, a division by the pivot. Results are therefore
 * the same bits as that loop's. */
QXMATH_API int ludcmp_a(double **a, int n, int *indx, double *d);

/* Solves A.x = b with the factors a and permutation indx of ludcmp_a
 * (unchanged, so the call repeats for any number of right-hand sides).
 *
 *   a     in, the n x n factors written by ludcmp_a
 *   n     order
 *   indx  in, the permutation written by ludcmp_a
 *   b     in: right-hand side, n doubles; out: the solution
 *
 * Forward pass in the order of the permutation: leading zeros of the
 * permuted right-hand side are skipped, no product being formed with them
 * until the first non-zero value (NaN counts as non-zero) has been met; each
 * sum is b - a[i][k] * b[k] one k at a time in increasing k. The back pass
 * divides by the diagonal of U. Nothing is checked: a zero diagonal gives
 * infinities. n < 1 does nothing. */
QXMATH_API void lubksb_a(double *const *a, int n, const int *indx, double *b);

/* ---- Cholesky decomposition of a symmetric positive-definite matrix ----- */

/* A = L.L^T of the flat n x n symmetric matrix a.
 *
 *   n       order
 *   a       in: only the upper triangle and diagonal are read;
 *           out: L strictly below the diagonal; the diagonal and upper
 *           triangle keep the input
 *   p       out, n doubles: the diagonal of L
 *   status  out: 0 success; 1 not positive definite
 *
 * A pivot below 1.0e-10 (or NaN) gives status 1 at once, leaving a and p
 * partly written. The threshold is absolute, not relative to the size of
 * the matrix: a matrix scaled small enough is treated as not positive
 * definite. n < 1 gives status 0. */
QXMATH_API void NR_cholesky_decomp(int n, double *a, double *p, int *status);

/* Solves A.x = b with the factor of NR_cholesky_decomp (status 0).
 *
 *   a  in, flat n x n from NR_cholesky_decomp (L below the diagonal)
 *   n  order
 *   p  in, n doubles, the diagonal of L
 *   b  in, n doubles
 *   x  out, n doubles; may be b itself
 *
 * Deliberate quirk, kept for the callers that depend on it: the back pass
 * (L^T.x = y) stops at row 1, so x[0] keeps its forward-pass value
 * b[0] / p[0] (the solution of L.y = b) and is neither corrected by the
 * other unknowns nor divided by p[0] a second time; with n = 1 there is no
 * back pass at all. x[1] .. x[n-1] solve A.x = b; x[0] in general does not.
 * Nothing is checked: a zero in p gives infinities. */
QXMATH_API void NR_cholesky_solver(const double *a, int n, const double *p, const double *b,
                                   double *x);

/* Replaces L (from NR_cholesky_decomp, status 0) by its inverse.
 *
 *   n  order
 *   p  in, n doubles, the diagonal of L
 *   a  in/out, flat n x n: L below the diagonal on input; on output the
 *      lower triangle including the diagonal holds L^-1; the strict upper
 *      triangle is not touched
 *
 * Nothing is checked. */
QXMATH_API void NR_cholesky_inverse(int n, const double *p, double *a);

/* ---- making, clearing and copying matrices ------------------------------ */

/* Makes a rows x cols row-pointer matrix over one block of doubles.
 *
 *   rows, cols  the shape; rows < 1 makes nothing and gives NULL; cols < 1
 *               gives rows pointers that all point at the block's start
 *   block       in/out: when *block is NULL a block of rows * cols doubles
 *               (uninitialised) is taken from SM_alloc and stored here; an
 *               existing block is reused and must hold rows * cols doubles
 *
 * Result: the array of rows row pointers (SM_alloc), row r pointing at
 * *block + r * cols. The caller frees both the array and the block with
 * SM_free. NULL when an allocation failed and the host's report returned;
 * a block allocated by this call is then freed again and *block is NULL
 * once more. (A host that unwinds from the failing allocation of the
 * pointer array leaves the new block stored in *block.) */
QXMATH_API double **NR_2d_matrix_allo(int rows, int cols, double **block);

/* The clearing and copying routines below return 0 always; the value
 * carries no meaning and exists only for callers that store it. */

/* m (row-pointer n x n) := identity: every row cleared, then 1.0 on the
 * diagonal. */
QXMATH_API int NR_2d_matrix_identity(double **m, int n);

/* Every element of the row-pointer rows x cols matrix m := 0.0. */
QXMATH_API int NR_2d_matrix_init_zero(double **m, int rows, int cols);

/* Every element of the flat rows x cols matrix m := 0.0. */
QXMATH_API int NR_matrix_2d_as_1d_init_zero(double *m, int rows, int cols);

/* Flat n x n m := identity. */
QXMATH_API int NR_matrix_2d_as_1d_identity(double *m, int n);

/* Flat n x n m: the elements above the diagonal (j > i) := 0.0; the
 * diagonal and lower triangle are kept. */
QXMATH_API int NR_matrix_2d_as_1d_init_zero_ut(double *m, int n);

/* Flat n x n m: the elements below the diagonal (j < i) := 0.0; the
 * diagonal and upper triangle are kept. */
QXMATH_API int NR_matrix_2d_as_1d_init_zero_lt(double *m, int n);

/* Copies the flat rows x cols src into the row-pointer dst, row by row.
 * src and dst must not overlap. */
QXMATH_API int NR_matrix_copy_1d_to_2d(const double *src, int rows, int cols, double **dst);

/* Copies the row-pointer rows x cols src into the flat dst, row by row.
 * src and dst must not overlap. */
QXMATH_API int NR_matrix_copy_2d_to_1d(double *const *src, int rows, int cols, double *dst);

/* ---- products and transposes -------------------------------------------- */

/* P := A.B of row-pointer matrices: A is r x k, B is k x c, P is r x c.
 * Each P[i][j] is accumulated from 0.0 over m = 0 .. k-1 in increasing m
 * and stored once complete (k < 1 gives zeros). P must not share storage
 * with A or B. Nothing happens when r < 1. */
QXMATH_API void NR_2d_matrix_product_of_2(double *const *A, double *const *B, int r, int k, int c,
                                          double **P);

/* P := A.B of flat matrices, as NR_2d_matrix_product_of_2: A is r x k, B
 * is k x c, P is r x c; P must not overlap A or B. */
QXMATH_API void NR_matrix_2d_as_1d_product_of_2(const double *A, const double *B, int r, int k,
                                                int c, double *P);

/* Transposes the row-pointer n x n m in place, swapping (i, j) with (j, i)
 * for j > i. */
QXMATH_API void NR_2d_matrix_nxn_transp(double **m, int n);

/* Transposes the flat n x n m in place. */
QXMATH_API void NR_matrix_2d_as_1d_nxn_transp(double *m, int n);

QXMATH_END_DECLS

#endif
