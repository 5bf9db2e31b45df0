/* eigen.h — eigen-systems (source file nr_eigensystems): cyclic Jacobi for a real symmetric
 * matrix, the symmetric-definite generalised problem A x = lambda B x, and power iteration
 * for the dominant eigenpair of a general square matrix. Matrices follow the row-pointer
 * (double **) and flat (double *, row after row) conventions of matrix.h.
 *
 * Eigenvalues come out unsorted, in the order the rotations leave them; eigenvector j is
 * column j of the eigenvector matrix. The thresholds are absolute (1.0e-10), not scaled by
 * the size of the matrix: they suit the moment and scatter matrices of model geometry,
 * whose entries are well above them. Reports go through ERROR_internal from file
 * "nr_eigensystems" whatever the checking level; every scratch block is given back before a
 * report is made, so a host that unwinds from it loses nothing. Scratch memory comes from
 * SM_alloc; should the host fail to give it and its report return, each routine returns
 * with the outputs described under "storage" below. Re-entrant: no state is kept.
 *
 * NaN and infinite input. Nothing is tested for them, and every iteration is bounded by its
 * limit whatever the values. Jacobi's convergence test is written so that NaN passes it: the
 * first sweep whose starting off-diagonal sum is NaN ends the iteration, without a report. A
 * NaN coupling in the strict upper triangle therefore ends it at once: d is the diagonal of a,
 * v the identity, *nrot 0. A rotation on a pair with a NaN diagonal element spreads NaN into d,
 * v and, for n >= 3, into the other couplings of its rows, so the next sweep ends it; a NaN
 * diagonal element whose couplings are all 0.0 is never rotated and stays in d. An infinite
 * element that Jacobi reads gives infinite or NaN eigenvalues. The generalised problem gives
 * status 1 for a NaN anywhere in B's upper triangle or diagonal (what NR_cholesky_decomp reads:
 * the NaN reaches a pivot); a NaN in A is not caught (status 0) and meets Jacobi as above.
 * Power iteration never converges on NaN (its test compares NaN): it runs to its limit and ends
 * with *notconverged 1.
 */
#ifndef QXMATH_EIGEN_H
#define QXMATH_EIGEN_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* All eigenvalues and eigenvectors of the real symmetric n x n matrix a, by cyclic Jacobi
 * rotations.
 *
 *   a      in/out  row-pointer n x n. Only the diagonal and the strict upper triangle are
 *                  read (a need not be exactly symmetric); the strict upper triangle is
 *                  destroyed, the diagonal and the strict lower triangle are kept
 *   n      order; n <= 0 is an empty matrix: only *nrot = 0 is written (and a limit of
 *          1 or less still reports)
 *   limit  sweep limit: sweeps are counted from 1 and run while the count is below
 *          limit, so at most limit - 1 sweeps are made (59 for the usual 60); a limit of 1
 *          or less makes none and reports at once, even for a diagonal matrix
 *   d      out  n doubles, the eigenvalues, unsorted
 *   v      out  row-pointer n x n, not overlapping a: column j (v[0][j] .. v[n-1][j]) is
 *               the unit eigenvector of d[j]; v is orthogonal to rounding
 *   nrot   out  the number of rotations made
 *
 * Convergence is tested only at the start of a sweep: the sum of |a[p][q]| over p < q at
 * most 1.0e-10 (absolute), or NaN, ends the iteration. Within the first three sweeps
 * elements at most 0.2 sum / n^2 are passed over; from the fifth sweep an element with
 * 100 |a[p][q]| no larger than 1.0e-10 next to both |d[p]| and |d[q]| is set to zero
 * without a rotation. A rotation takes t = a[p][q] / h (h = d[q] - d[p]) when 100 |a[p][q]|
 * is negligible (1.0e-10, absolute) next to |h|, provided |a[p][q]| <= |h|: the absolute
 * test also passes nearly equal diagonal elements with a coupling of at most 1.0e-12, for
 * which a[p][q] / h would be far above 1 (infinite for h = 0), unlike any exact rotation,
 * and would wreck d and v; those pairs take the general formula. A diagonal matrix
 * (limit >= 2) gives d = its diagonal, v = identity, *nrot = 0.
 *
 * Report: when the sweeps run out, "Too many iterations in routine
 * NR_ask_eigenvalues_jacobi." (ERROR_internal); d, v and *nrot hold the last sweep's values
 * (a convergence reached during that last sweep is not noticed). Storage: 2n doubles of
 * scratch, on the stack for n <= 3 (so that the fits of lsfit.h cannot fail), else from
 * the host; without them d is the diagonal of a, v the identity and *nrot 0, as before any
 * sweep (the host's report of the allocation is the only one). */
QXMATH_API void NR_ask_eigenvalues_jacobi(double **a, int n, int limit, double *d, double **v,
                                          int *nrot);

/* The symmetric-definite generalised eigenproblem A x = lambda B x, reduced with B = L L^T
 * (NR_cholesky_decomp) to the standard problem S y = lambda y, S = L^-1 A L^-T, solved by
 * NR_ask_eigenvalues_jacobi, and x = L^-T y.
 *
 *   A       in   flat n x n, symmetric (both triangles are read)
 *   B       in/out  flat n x n, symmetric positive definite (upper triangle and diagonal
 *                   read); destroyed: on return its contents carry no meaning
 *   n       order; n <= 0 is an empty problem (*nrot = 0, and the Jacobi report when
 *           limit <= 1)
 *   limit   the sweep limit of NR_ask_eigenvalues_jacobi (at most limit - 1 sweeps)
 *   lambda  out  n doubles, the eigenvalues, unsorted
 *   X       out  flat n x n block: column j (X[j], X[n + j], ...) is the eigenvector of
 *                lambda[j], normalised so that x^T B x = 1 only as far as the rounding of
 *                the reduction allows (it is not renormalised)
 *   nrot    out  rotations made by Jacobi
 *   status  out  0 success; 1 B is not positive definite (a Cholesky pivot below 1.0e-10,
 *                absolute, or NaN): lambda then holds part of L's diagonal and nothing else
 *                is written, X and *nrot included; 2 the host gave no scratch storage and
 *                its report returned: lambda holds L's diagonal, X and *nrot not written;
 *                3 the final solve failed (reported, below): X holds y, not x
 *
 * A, B, lambda and X must not overlap. Scratch: 2n^2 + 2n doubles and two arrays of n
 * row pointers, then two more arrays of row pointers and the solver's scratch.
 *
 * Reports (ERROR_internal): Jacobi's "Too many iterations in routine
 * NR_ask_eigenvalues_jacobi." when its sweeps run out, made while lambda and X hold the
 * eigenpairs of S (y, not yet x); if it returns, the solve still follows. "The third call
 * of SOLVE_lu_solver failed." when the final solve L^T x = y fails (in practice only for
 * want of storage): *status is then 3 and X holds y. */
QXMATH_API void NR_generalized_eigenvalues_symm(const double *A, double *B, int n, int limit,
                                                double *lambda, double *X, int *nrot, int *status);

/* The dominant eigenvalue and its eigenvector of a general n x n matrix, by power
 * iteration from x0.
 *
 *   n             order; n <= 0 leaves *lambda = 0.0, converged from the second iteration
 *                 (*notconverged = 1 only when limit <= 1)
 *   A             in   row-pointer n x n
 *   limit         iteration limit: at most limit products y = A x
 *   x0            in   n doubles, the start vector
 *   lambda        out  the eigenvalue estimate
 *   x             out  n doubles, its eigenvector scaled so that its largest element is
 *                      1.0; may be x0 itself
 *   notconverged  out  0 converged; 1 the limit was reached first (lambda and x are then
 *                      the last iterate)
 *
 * Each iteration takes y = A x, lambda = the element of y of largest magnitude (the first
 * of equal magnitudes wins, a later one replacing it only when strictly larger) and
 * x = y / lambda element by element. From the second iteration on it has converged when
 * sum (x - x_prev)^2 <= 1.0e-10 sum x_prev^2. Nothing is guarded: a zero lambda gives
 * infinities or NaNs, and a dominant pair of opposite sign (or complex) never converges.
 *
 * limit <= 0 runs no iteration: *lambda = 0.0, x = x0, *notconverged = 1; so do the
 * outputs when the host gives no scratch (2n doubles) and its report returns.
 *
 * Returns 0 always; the value carries no meaning. */
QXMATH_API int NR_ask_max_eigen_val_vec(int n, double **A, int limit, const double *x0,
                                        double *lambda, double *x, int *notconverged);

QXMATH_END_DECLS

#endif
