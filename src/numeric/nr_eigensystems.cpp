// nr_eigensystems.cpp — eigen-systems: all eigenpairs of a real symmetric
// matrix by cyclic Jacobi rotations, the symmetric-definite generalised
// problem A x = lambda B x by Cholesky reduction to S = L^-1 A L^-T, and the
// dominant eigenpair of a general matrix by power iteration.
//
// Jacobi keeps the classical cyclic scheme with its fixed thresholds: the
// convergence test (sum of |a[p][q]| over p < q at most 1.0e-10) is absolute
// and made only at the start of a sweep, sweeps run while the counter i
// (from 1) is below the limit, the first three sweeps skip elements below
// 0.2 sm / n^2, and from sweep 5 elements negligible next to both diagonal
// values (to 1.0e-10) are dropped. Exhausted sweeps are reported through
// ERROR_internal; every scratch block is given back before any report, so
// a host that unwinds from it loses nothing.
#define QX_SOURCE_FILE "nr_eigensystems"
#include "frame/check.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include <qxmath/eigen.h>
#include <qxmath/matrix.h>
#include <qxmath/solvers.h>

#include "numeric/count.h"

namespace
{

using std::size_t;

// Off-diagonal sum at or below this (or NaN): converged.
constexpr double kConverged = 1.0e-10;
// An addition that changes a value by no more than this counts as none.
constexpr double kNegligible = 1.0e-10;
// Power iteration: squared change at most this times the squared size.
constexpr double kPowerConverged = 1.0e-10;

using qx::numeric::count;

// The rotation of one pair of elements, x' = g - s (h + g tau),
// y' = h + s (g - h tau), g and h the old values.
inline void rotate(double &x, double &y, double s, double tau)
{
    const double g = x, h = y;
    x = g - s * (h + g * tau);
    y = h + s * (g - h * tau);
}

// Step 1 of Jacobi without its scratch: v = identity, d = diagonal of a,
// *nrot = 0.
void jacobi_start(double *const *a, int n, double *d, double **v, int *nrot)
{
    NR_2d_matrix_identity(v, n);
    for (int i = 0; i < n; ++i) d[i] = a[i][i];
    *nrot = 0;
}

// The sweeps of Jacobi after jacobi_start, with the scratch b and z of n
// doubles each. True when converged; false when the sweeps ran out (nothing
// is reported here).
bool jacobi_sweeps(double **a, int n, int limit, double *d, double **v, int *nrot, double *b,
                   double *z)
{
    for (int ip = 0; ip < n; ++ip) {
        b[ip] = d[ip];
        z[ip] = 0.0;
    }
    const double n2 = static_cast<double>(n) * static_cast<double>(n);
    for (int i = 1; i < limit; ++i) {
        double sm = 0.0;
        for (int p = 0; p < n - 1; ++p)
            for (int q = p + 1; q < n; ++q) sm += std::fabs(a[p][q]);
        if (!(sm > kConverged)) return true;
        const double tresh = i < 4 ? 0.2 * sm / n2 : 0.0;
        for (int p = 0; p < n - 1; ++p) {
            for (int q = p + 1; q < n; ++q) {
                const double apq = a[p][q];
                const double g = 100.0 * std::fabs(apq);
                const double dp = std::fabs(d[p]), dq = std::fabs(d[q]);
                if (i > 4 && std::fabs((dp + g) - dp) <= kNegligible &&
                    std::fabs((dq + g) - dq) <= kNegligible) {
                    a[p][q] = 0.0;
                    continue;
                }
                if (std::fabs(apq) <= tresh) continue;
                double h = d[q] - d[p];
                double t;
                const double ah = std::fabs(h);
                // The small-angle rotation t = apq / h is taken only while
                // |t| <= 1, as every exact rotation is: the absolute test also
                // passes nearly equal diagonal elements with a coupling of at
                // most 1.0e-12, where apq / h would be huge (infinite for h
                // exactly zero) and wreck d and v.
                if (std::fabs((ah + g) - ah) <= kNegligible && std::fabs(apq) <= ah) {
                    t = apq / h;
                } else {
                    const double theta = 0.5 * h / apq;
                    t = 1.0 / (std::fabs(theta) + std::sqrt(1.0 + theta * theta));
                    if (theta < 0.0) t = -t;
                }
                const double c = 1.0 / std::sqrt(1.0 + t * t);
                const double s = t * c;
                const double tau = s / (1.0 + c);
                h = t * apq;
                z[p] -= h;
                z[q] += h;
                d[p] -= h;
                d[q] += h;
                a[p][q] = 0.0;
                for (int j = 0; j < p; ++j) rotate(a[j][p], a[j][q], s, tau);
                for (int j = p + 1; j < q; ++j) rotate(a[p][j], a[j][q], s, tau);
                for (int j = q + 1; j < n; ++j) rotate(a[p][j], a[q][j], s, tau);
                for (int j = 0; j < n; ++j) rotate(v[j][p], v[j][q], s, tau);
                ++*nrot;
            }
        }
        for (int ip = 0; ip < n; ++ip) {
            b[ip] += z[ip];
            d[ip] = b[ip];
            z[ip] = 0.0;
        }
    }
    return false;
}

void report_sweeps_exhausted()
{
    QX_INTERNAL("Too many iterations in routine NR_ask_eigenvalues_jacobi.");
}

// Phase A of the generalised problem (steps 2 to 5), B holding the Cholesky
// factor from NR_cholesky_decomp and lambda its diagonal: reduces to
// S = L^-1 A L^-T, runs Jacobi on S into lambda and X, and leaves L in B
// (flat, zero above the diagonal) for the final solve, so that none of its
// own storage need outlive it. Returns -1 when the host gave no storage
// (after its report returned; lambda and B as the decomposition left them),
// 1 converged, 0 sweeps exhausted (not reported here).
int reduce_and_rotate(const double *A, double *B, int n, int limit, double *lambda, double *X,
                      int *nrot)
{
    const size_t nn = count(n), n2 = nn * nn;
    // The work matrix, L (flat) and the rotation scratch b and z, in one block.
    double *block = static_cast<double *>(SM_alloc((2 * n2 + 2 * nn) * sizeof(double)));
    if (block == nullptr) return -1;
    double *work_block = block, *l = block + n2;
    double **work = NR_2d_matrix_allo(n, n, &work_block);
    double **y = work != nullptr ? NR_2d_matrix_allo(n, n, &X) : nullptr;
    int result = -1;
    if (y != nullptr) {
        for (size_t i = 0; i < nn; ++i) {
            double *row = l + i * nn;
            for (size_t j = 0; j < i; ++j) row[j] = B[i * nn + j];
            row[i] = lambda[i];
            for (size_t j = i + 1; j < nn; ++j) row[j] = 0.0;
        }
        NR_cholesky_inverse(n, lambda, B);
        NR_matrix_2d_as_1d_init_zero_ut(B, n);
        NR_matrix_2d_as_1d_product_of_2(B, A, n, n, n, X); // T = L^-1 A
        NR_matrix_2d_as_1d_nxn_transp(B, n);               // L^-T
        NR_matrix_2d_as_1d_product_of_2(X, B, n, n, n, work_block);
        std::copy(l, l + n2, B); // B is free again: it keeps L
        jacobi_start(work, n, lambda, y, nrot);
        result = jacobi_sweeps(work, n, limit, lambda, y, nrot, l + n2, l + n2 + nn) ? 1 : 0;
    }
    SM_free(y);
    SM_free(work);
    SM_free(block);
    return result;
}

// Step 6: X := L^-T X with L in B (flat), by L^T x = y for all n columns.
// False when the solve failed or its row pointers could not be had.
bool solve_transposed(double *B, int n, double *X)
{
    double **lt = NR_2d_matrix_allo(n, n, &B);
    double **x = lt != nullptr ? NR_2d_matrix_allo(n, n, &X) : nullptr;
    bool solved = false;
    if (x != nullptr) {
        NR_2d_matrix_nxn_transp(lt, n);
        solved = SOLVE_lu_solver(lt, x, n, n) == 0;
    }
    SM_free(x);
    SM_free(lt);
    return solved;
}

} // namespace

void NR_ask_eigenvalues_jacobi(double **a, int n, int limit, double *d, double **v, int *nrot)
{
    const size_t nn = count(n);
    if (nn == 0) n = 0; // no n - 1 overflow below
    jacobi_start(a, n, d, v, nrot);
    // Orders 2 and 3 (the line and plane fits) keep their scratch on the
    // stack: a caller cannot tell a refused allocation from a matrix that
    // needs no rotation.
    constexpr size_t kStackOrder = 3;
    double local[2 * kStackOrder];
    double *scratch = local;
    if (nn > kStackOrder) {
        scratch = static_cast<double *>(SM_alloc(2 * nn * sizeof(double)));
        // The host has reported; leave the state before any sweep.
        if (scratch == nullptr) return;
    }
    const bool converged = jacobi_sweeps(a, n, limit, d, v, nrot, scratch, scratch + nn);
    if (scratch != local) SM_free(scratch);
    if (!converged) report_sweeps_exhausted();
}

void NR_generalized_eigenvalues_symm(const double *A, double *B, int n, int limit, double *lambda,
                                     double *X, int *nrot, int *status)
{
    *status = 0;
    NR_cholesky_decomp(n, B, lambda, status);
    if (*status == 1) return;
    if (n < 1) {
        // Jacobi on the empty matrix: *nrot = 0, and the report of a limit
        // below 2.
        NR_ask_eigenvalues_jacobi(nullptr, 0, limit, lambda, nullptr, nrot);
        return;
    }
    const int reduced = reduce_and_rotate(A, B, n, limit, lambda, X, nrot);
    if (reduced < 0) {
        *status = 2;
        return;
    }
    if (reduced == 0) report_sweeps_exhausted();
    if (!solve_transposed(B, n, X)) {
        *status = 3; // so that a caller whose host returns does not take y for x
        QX_INTERNAL("The third call of SOLVE_lu_solver failed.");
    }
}

int NR_ask_max_eigen_val_vec(int n, double **A, int limit, const double *x0, double *lambda,
                             double *x, int *notconverged)
{
    const size_t nn = count(n);
    *notconverged = 0;
    double *block = nullptr;
    if (nn > 0) {
        block = static_cast<double *>(SM_alloc(2 * nn * sizeof(double)));
        if (block == nullptr) {
            // The host has reported: the outputs of no iteration at all.
            *lambda = 0.0;
            for (size_t i = 0; i < nn; ++i) x[i] = x0[i];
            *notconverged = 1;
            return 0;
        }
    }
    // cur is the iterate and, while the next one is formed, the previous one.
    double *cur = block, *y = block + nn;
    for (size_t i = 0; i < nn; ++i) cur[i] = x0[i];
    double lam = 0.0; // what no iteration leaves
    bool converged = false;
    for (int k = 0; k < limit && !converged; ++k) {
        for (size_t i = 0; i < nn; ++i) {
            double sum = 0.0;
            for (size_t j = 0; j < nn; ++j) sum += A[i][j] * cur[j];
            y[i] = sum;
        }
        if (nn > 0) lam = y[0];
        for (size_t i = 1; i < nn; ++i)
            if (std::fabs(y[i]) > std::fabs(lam)) lam = y[i];
        double change = 0.0, size = 0.0;
        for (size_t i = 0; i < nn; ++i) {
            const double next = y[i] / lam, e = next - cur[i];
            change += e * e;
            size += cur[i] * cur[i];
            cur[i] = next;
        }
        // The start vector does not count as a previous iterate.
        if (k > 0 && change <= kPowerConverged * size) converged = true;
    }
    *lambda = lam;
    for (size_t i = 0; i < nn; ++i) x[i] = cur[i];
    if (!converged) *notconverged = 1;
    SM_free(block);
    return 0;
}
