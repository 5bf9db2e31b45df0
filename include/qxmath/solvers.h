/* solvers.h — dense and banded linear solvers and the banded solver's error state.
 *
 * Two matrix conventions, both 0-based and row-major:
 *   - row-pointer matrix: an array of n pointers, one per row, each to that
 *     row's doubles; element (i, j) is a[i][j]. Rows need not be contiguous.
 *   - band matrix of order n and half-bandwidth m (msetup_banded): row i
 *     stores the columns lo(i) = max(0, i - m) ... hi(i) = min(n - 1, i + m)
 *     only, but is addressed with the absolute column index, a[i][j] for
 *     lo(i) <= j <= hi(i). Columns outside that range do not exist and must
 *     not be touched. The stored elements of all rows lie in one block, row
 *     after row, so a sweep down the band walks memory in order.
 *
 * None of these functions reports through the host's error interface, and
 * none checks its arguments at any checking level: the dense drivers return
 * codes, the banded solver leaves its failures in the error state below.
 *
 * NaN and infinite input. Every loop runs a number of steps fixed by n, m and
 * nrhs, whatever the values. SOLVE_solve_3equations returns 1 for a NaN
 * determinant and leaves x unwritten; an infinite determinant is solved (x =
 * finite / infinity or NaN). SOLVE_lu_solver behaves as ludcmp_a does
 * (matrix.h): a row of nothing but zeros and NaNs gives 1, any other NaN is
 * not caught (0). The banded solver's pivot tests are written so that NaN
 * fails them: a NaN pivot pushes 7235 in mdecompose_banded, a NaN diagonal
 * element 7235 in msolve_banded, each stopping there; an infinite pivot
 * passes (its multipliers are 0.0 or NaN). A NaN right-hand side is never
 * tested.
 */
#ifndef QXMATH_SOLVERS_H
#define QXMATH_SOLVERS_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* ---- dense drivers ------------------------------------------------------ */

/* Solves the 3x3 system m x = b by Cramer's rule, without pivoting.
 *   m  in   nine doubles, row-major: equation r is sum_c m[3r+c] x[c] = b[r]
 *   b  in   three doubles
 *   x  out  three doubles; may be the same array as b
 * Returns 0 when solved, 1 when the determinant is exactly zero or NaN; x is
 * then not written. There is deliberately no tolerance: a nearly singular
 * matrix gives a large solution, and callers that need a test make it on the
 * matrix themselves. */
QXMATH_API int SOLVE_solve_3equations(const double m[9], const double b[3], double x[3]);

/* Solves a x = b for nrhs right-hand sides at once, by LU decomposition with
 * scaled partial pivoting (ludcmp_a, matrix.h) and one back-substitution
 * (lubksb_a) per column of b.
 *   a     in/out  row-pointer n x n; overwritten by its LU factors
 *   b     in/out  row-pointer n x nrhs; column c holds a right-hand side on
 *                 entry and its solution on return
 *   n     order of a
 *   nrhs  number of right-hand sides; below 1 a is decomposed and b is
 *         not touched
 * Returns 0 on success, otherwise the code of ludcmp_a (1: a row of a is
 * entirely zero; 2: its own scratch vector could not be had; a and b are
 * then unchanged). Any other singularity is not
 * detected: ludcmp_a replaces a zero pivot by 1.0e-20 and the solution comes
 * out huge. Returns -1, with a and b unchanged, when the host could not give
 * the scratch vectors (n ints and n doubles, freed on every path) and its
 * report returned; n below 1 is an empty system and gives 0 at once. The
 * caller's matrices may be of any memory; only the scratch vectors come
 * from the host. */
QXMATH_API int SOLVE_lu_solver(double **a, double **b, int n, int nrhs);

/* ---- the banded solver ---------------------------------------------------- */

/* Error numbers of the banded solver and the spline routines, all pushed
 * with level QX_MERR_LEVEL. */
enum {
    QX_MERR_LEVEL = 4,
    QX_MERR_BAD_ORDER = 280,      /* msetup_banded: n < 1 or m < 0 */
    QX_MERR_NO_STORAGE = 950,     /* no band storage could be set up */
    QX_MERR_EMPTY_RANGE = 951,    /* knot-vector allocation of an empty index range */
    QX_MERR_OUTSIDE_KNOTS = 2900, /* basis evaluation outside the knot range */
    QX_MERR_SMALL_PIVOT = 7235    /* pivot of magnitude below 1.0e-15, or NaN */
};

/* Sets up a band matrix of order n and half-bandwidth m, all elements 0.0,
 * and a right-hand-side vector of n doubles (not cleared).
 *   n, m  in   order (>= 1) and half-bandwidth (>= 0); m >= n - 1 gives a
 *              full matrix
 *   a     out  address of the matrix handle; *a must be NULL on entry
 *   b     out  address of the vector pointer; *b must be NULL on entry
 * On failure the error state holds 280 (n < 1 or m < 0) or 950 (the element
 * block, the row pointers or the vector could not be had from the host, or
 * a or b is NULL), level 4, and both pointers are NULL. Whatever the
 * arguments, if an error is pending when setup ends (also one left unflushed
 * by an earlier call) the new storage is disposed of and both pointers end
 * NULL without a new push; so flush before setting up. Because a failed
 * argument test disposes of what *a and *b point to, pass them NULL.
 * The handle points at slot 1 of an array of n + 1 pointers (SM_calloc);
 * slot 0 holds the element block (SM_calloc). Give both back to
 * mdispose_banded. A host whose failed allocation does not return leaves
 * the blocks made before it to the end of its current operation, as with
 * any transient memory. */
QXMATH_API void msetup_banded(int n, int m, double ***a, double **b);

/* Factorises the band matrix in place, a = L U without pivoting (L unit
 * lower, both kept in the band, so the band never widens).
 *   a     in/out  handle from msetup_banded
 *   n, m  in      the order and half-bandwidth given to msetup_banded
 * Nothing is done when m < 1 or n < 2. A pivot of magnitude below 1.0e-15
 * (or NaN) pushes 7235, level 4, and returns with the matrix partly
 * factorised. The last diagonal element is not tested here but by
 * msolve_banded. A NULL handle pushes 950, level 4. The arithmetic is fixed
 * so that results are the same bits everywhere: for each row i, for each
 * column k < i of its band in increasing order, the multiplier is element
 * (i, k) divided by the pivot (k, k) (not multiplied by a reciprocal), then
 * (i, j) -= multiplier * (k, j) for j = k + 1 ... min(k + m, n - 1). */
QXMATH_API void mdecompose_banded(double **a, int n, int m);

/* Solves L U x = b in place for one right-hand side.
 *   a     in      handle factorised by mdecompose_banded
 *   n, m  in      as given to mdecompose_banded
 *   b     in/out  n doubles: the right-hand side on entry, x on return
 * A diagonal element of magnitude below 1.0e-15 (or NaN) pushes 7235,
 * level 4, and returns with b partly solved (the rows below it are done;
 * its products subtracted, not yet divided). Each row subtracts its
 * products from b[i] one at a time in increasing column order. A
 * NULL handle or vector pushes 950, level 4, and changes nothing. */
QXMATH_API void msolve_banded(double *const *a, int n, int m, double *b);

/* Frees the band matrix (element block, then row pointers) and the vector,
 * and sets *a and *b to NULL. NULL pointers (and NULL addresses) are
 * skipped, so a second call does nothing. */
QXMATH_API void mdispose_banded(double ***a, double **b);

/* Prints the matrix and the vector on standard output, one line per row:
 * every column j = 0 ... n-1 as "%10.5f  " inside the band (i - m <= j <=
 * i + m) and as the fixed text "     0      " outside it, then b[i] as
 * "%10.5f\n", or a bare newline when b is NULL. With a NULL handle only the
 * vector (or the newlines) is printed; with n < 1 nothing. Returns n. */
QXMATH_API int mdump_banded(double *const *a, const double *b, int n, int m);

/* ---- the error state ---------------------------------------------------- */

/* One pending error, process-wide, 0/0 at load; not thread-safe. A push
 * overwrites what is pending (there is no stack); only merrorflush clears.
 *   place   identifies the reporting place (each call site passes its own
 *           static item); it is neither kept nor read
 *   number  error number (QX_MERR_...)
 *   level   error level; 0 would mean "nothing pending" */
QXMATH_API void merrorpush(const void *place, int number, int level);
/* Clears the pending error: number and level 0. */
QXMATH_API void merrorflush(void);
/* The pending error number (0 when none was pushed since the last flush). */
QXMATH_API int merrornum(void);
/* The pending error level; 0 when no error is pending. */
QXMATH_API int merrorlevel(void);

QXMATH_END_DECLS

#endif
