// fuzz_solvers.cpp — the dense and banded solvers and the matrix utilities
// (SOLVE_solve_3equations, SOLVE_lu_solver, ludcmp_a/lubksb_a and the
// several-column companion, NR_cholesky_*, msetup/mdecompose/msolve/
// mdispose_banded and the several-column band solve, NR_2d_matrix_* and
// NR_matrix_*) on arbitrary orders, counts and values. Buffers are sized as
// the contracts ask. Where the input is a well-conditioned system (strictly
// diagonally dominant, moderate values) the residual |A x - b| of a solve
// that reports success is checked; so are the bit-identity promises of the
// several-column companions, the parity and permutation of ludcmp_a, the
// products against a plain sum, and the transposes.
#include <algorithm>
#include <numeric>

#include "fuzz_common.h"
#include "numeric/banded_internal.h"
#include "numeric/lu_internal.h"

namespace
{

// A row-pointer matrix whose rows lie in one block in an order drawn from
// the input (rows need not be contiguous nor in order).
struct RowMatrix {
    std::vector<double> block;
    std::vector<double *> rows;

    RowMatrix(qxfuzz::Reader &in, int nrows, int ncols)
        : block(static_cast<std::size_t>(std::max(nrows, 1)) *
                    static_cast<std::size_t>(std::max(ncols, 1)),
                std::nan("")),
          rows(static_cast<std::size_t>(std::max(nrows, 1)))
    {
        std::vector<std::size_t> order(rows.size());
        std::iota(order.begin(), order.end(), std::size_t{0});
        if (in.flag()) std::reverse(order.begin(), order.end());
        for (std::size_t r = 0; r < rows.size(); ++r)
            rows[r] = block.data() + order[r] * static_cast<std::size_t>(std::max(ncols, 1));
    }
    double &at(int r, int c) { return rows[static_cast<std::size_t>(r)][c]; }
};

// Fills an n x n matrix: arbitrary values, or (well = true) moderate values
// with a diagonal that dominates its row by at least half of it.
void fill_square(qxfuzz::Reader &in, RowMatrix &a, int n, bool well)
{
    for (int i = 0; i < n; ++i) {
        double off = 0.0;
        for (int j = 0; j < n; ++j) {
            a.at(i, j) = well ? in.moderate(1024.0) : in.real();
            if (j != i) off += std::fabs(a.at(i, j));
        }
        if (well) a.at(i, i) = (in.flag() ? -1.0 : 1.0) * (2.0 * off + 1.0 + std::fabs(a.at(i, i)));
    }
}

// |A x - b| <= tol (|A| |x| + |b|), infinity norms, for one solution.
bool small_residual(const std::vector<double> &a, int n, const double *x, const double *b,
                    double tol)
{
    double anorm = 0.0, xnorm = 0.0, bnorm = 0.0, rnorm = 0.0;
    for (int i = 0; i < n; ++i) {
        double row = 0.0, r = -b[i];
        for (int j = 0; j < n; ++j) {
            const double aij = a[static_cast<std::size_t>(i * n + j)];
            row += std::fabs(aij);
            r += aij * x[j];
        }
        anorm = std::max(anorm, row);
        xnorm = std::max(xnorm, std::fabs(x[i]));
        bnorm = std::max(bnorm, std::fabs(b[i]));
        if (!(std::fabs(r) <= rnorm)) rnorm = std::fabs(r);
    }
    return rnorm <= tol * (anorm * xnorm + bnorm);
}

std::vector<double> flat_copy(RowMatrix &a, int rows, int cols)
{
    std::vector<double> f(static_cast<std::size_t>(std::max(rows * cols, 1)));
    for (int i = 0; i < rows; ++i)
        for (int j = 0; j < cols; ++j) f[static_cast<std::size_t>(i * cols + j)] = a.at(i, j);
    return f;
}

// The same bits, any NaN matching any NaN: which operand's NaN an operation
// passes on is the compiler's choice (it may commute a product), so only
// numbers are compared bit for bit.
bool same_bits(double x, double y)
{
    return std::memcmp(&x, &y, sizeof x) == 0 || (std::isnan(x) && std::isnan(y));
}

// Runs f under a trap, or (as a host whose reports return) directly.
template <class F> bool run(bool trapped, F &&f)
{
    if (trapped) return qxfuzz::call(f);
    f();
    return true;
}

void fuzz_solve3(qxfuzz::Reader &in)
{
    const bool well = in.flag();
    RowMatrix a(in, 3, 3);
    fill_square(in, a, 3, well);
    double m[9], b[3];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) m[i * 3 + j] = a.at(i, j);
    for (double &v : b) v = well ? in.moderate(1024.0) : in.real();
    const bool alias = in.flag();
    double out[3] = {std::nan("1"), std::nan("1"), std::nan("1")};
    double bcopy[3] = {b[0], b[1], b[2]};
    double *x = alias ? bcopy : out;
    const double before[3] = {x[0], x[1], x[2]};
    const int rc = SOLVE_solve_3equations(m, bcopy, x);
    if (rc != 0 && rc != 1) qxfuzz::finding("SOLVE_solve_3equations: result neither 0 nor 1");
    if (rc == 1) {
        for (int i = 0; i < 3; ++i)
            if (!same_bits(x[i], before[i]))
                qxfuzz::finding("SOLVE_solve_3equations: x written on a singular system");
        return;
    }
    if (well) {
        if (!small_residual(std::vector<double>(m, m + 9), 3, x, b, 1e-13))
            qxfuzz::finding("SOLVE_solve_3equations: large residual on a dominant system");
    }
}

void fuzz_lu(qxfuzz::Reader &in)
{
    const int n = in.integer(-1, 24);
    const int nrhs = in.integer(-1, 5);
    const bool well = in.flag();
    const int nn = std::max(n, 0), nc = std::max(nrhs, 1);
    RowMatrix a(in, nn, nn);
    fill_square(in, a, nn, well);
    // Zero rows now and then (result 1).
    if (nn > 0 && in.integer(0, 7) == 0) {
        const int r = in.integer(0, nn - 1);
        for (int j = 0; j < nn; ++j) a.at(r, j) = in.flag() ? 0.0 : -0.0;
    }
    RowMatrix b(in, nn, nc);
    for (int i = 0; i < nn; ++i)
        for (int c = 0; c < nc; ++c) b.at(i, c) = well ? in.moderate(1024.0) : in.real();
    const std::vector<double> a0 = flat_copy(a, nn, nn), b0 = flat_copy(b, nn, nc);
    const bool trapped = in.flag();

    switch (in.integer(0, 1)) {
    case 0: { // the driver
        qxfuzz::arm_fault(in);
        int rc = -99;
        const bool returned =
            run(trapped, [&] { rc = SOLVE_lu_solver(a.rows.data(), b.rows.data(), n, nrhs); });
        if (!returned) return;
        if (rc < -1 || rc > 2) qxfuzz::finding("SOLVE_lu_solver: unknown result");
        if (rc != 0 || n < 1) {
            const std::vector<double> after = flat_copy(a, nn, nn);
            for (std::size_t k = 0; rc != 0 && k < a0.size() && nn > 0; ++k)
                if (!same_bits(after[k], a0[k]))
                    qxfuzz::finding("SOLVE_lu_solver: a changed by a failed solve");
            break;
        }
        if (!well || nrhs < 1) break;
        std::vector<double> x(static_cast<std::size_t>(nn)), bc(static_cast<std::size_t>(nn));
        for (int c = 0; c < nrhs; ++c) {
            for (int i = 0; i < nn; ++i) {
                x[static_cast<std::size_t>(i)] = b.at(i, c);
                bc[static_cast<std::size_t>(i)] = b0[static_cast<std::size_t>(i * nc + c)];
            }
            if (!small_residual(a0, nn, x.data(), bc.data(), 1e-13 * nn))
                qxfuzz::finding("SOLVE_lu_solver: large residual on a dominant system");
        }
        break;
    }
    default: { // ludcmp_a, then lubksb_a per column against the companion
        std::vector<int> indx(static_cast<std::size_t>(std::max(nn, 1)), -7);
        double d = 0.0;
        qxfuzz::arm_fault(in);
        int rc = -99;
        if (!run(trapped, [&] { rc = ludcmp_a(a.rows.data(), n, indx.data(), &d); })) return;
        if (d != 1.0 && d != -1.0) qxfuzz::finding("ludcmp_a: parity neither +1 nor -1");
        if (rc < 0 || rc > 2) qxfuzz::finding("ludcmp_a: unknown result");
        if (rc != 0 || n < 1) break;
        int swaps = 0;
        for (int j = 0; j < nn; ++j) {
            const int p = indx[static_cast<std::size_t>(j)];
            if (p < j || p >= nn) qxfuzz::finding("ludcmp_a: pivot row outside j .. n-1");
            if (p != j) ++swaps;
        }
        if ((swaps % 2 == 0) != (d == 1.0))
            qxfuzz::finding("ludcmp_a: parity does not match swaps");
        // The companion on a copy of b gives the same bits as one call per column.
        RowMatrix b2(in, nn, nc);
        for (int i = 0; i < nn; ++i)
            for (int c = 0; c < nc; ++c) b2.at(i, c) = b.at(i, c);
        qx_lubksb_a_columns(a.rows.data(), n, indx.data(), b2.rows.data(), nrhs);
        std::vector<double> col(static_cast<std::size_t>(nn));
        for (int c = 0; c < std::max(nrhs, 0); ++c) {
            for (int i = 0; i < nn; ++i) col[static_cast<std::size_t>(i)] = b.at(i, c);
            lubksb_a(a.rows.data(), n, indx.data(), col.data());
            for (int i = 0; i < nn; ++i)
                if (!same_bits(col[static_cast<std::size_t>(i)], b2.at(i, c)))
                    qxfuzz::finding("qx_lubksb_a_columns: not the bits of lubksb_a");
            if (well) {
                std::vector<double> bc(static_cast<std::size_t>(nn));
                for (int i = 0; i < nn; ++i)
                    bc[static_cast<std::size_t>(i)] = b0[static_cast<std::size_t>(i * nc + c)];
                if (!small_residual(a0, nn, col.data(), bc.data(), 1e-13 * nn))
                    qxfuzz::finding("ludcmp_a/lubksb_a: large residual on a dominant system");
            }
        }
        break;
    }
    }
}

void fuzz_cholesky(qxfuzz::Reader &in)
{
    const int n = in.integer(-1, 16);
    const int nn = std::max(n, 0);
    const std::size_t sz = static_cast<std::size_t>(std::max(nn * nn, 1));
    const bool spd = in.flag();
    std::vector<double> a(sz, std::nan("")),
        p(static_cast<std::size_t>(std::max(nn, 1)), std::nan("2"));
    if (spd) { // G G^T + n I with moderate G: well conditioned
        std::vector<double> g(sz);
        for (double &v : g) v = in.moderate(1024.0) / 8.0;
        for (int i = 0; i < nn; ++i)
            for (int j = 0; j < nn; ++j) {
                double s = i == j ? nn + 1.0 : 0.0;
                for (int k = 0; k < nn; ++k)
                    s += g[static_cast<std::size_t>(i * nn + k)] *
                         g[static_cast<std::size_t>(j * nn + k)];
                a[static_cast<std::size_t>(i * nn + j)] = s;
            }
    } else {
        for (double &v : a) v = in.real();
    }
    const std::vector<double> a0 = a;
    int status = -7;
    NR_cholesky_decomp(n, a.data(), p.data(), &status);
    if (status != 0 && status != 1) qxfuzz::finding("NR_cholesky_decomp: status neither 0 nor 1");
    for (int i = 0; i < nn; ++i)
        for (int j = i; j < nn; ++j)
            if (!same_bits(a[static_cast<std::size_t>(i * nn + j)],
                           a0[static_cast<std::size_t>(i * nn + j)]))
                qxfuzz::finding("NR_cholesky_decomp: upper triangle changed");
    if (spd && status != 0) qxfuzz::finding("NR_cholesky_decomp: a dominant SPD matrix refused");
    if (status != 0) return;
    // L L^T = A (upper triangle) to rounding.
    auto L = [&](int i, int j) {
        return i == j  ? p[static_cast<std::size_t>(i)]
               : i > j ? a[static_cast<std::size_t>(i * nn + j)]
                       : 0.0;
    };
    if (spd) {
        for (int i = 0; i < nn; ++i)
            for (int j = i; j < nn; ++j) {
                double s = 0.0;
                for (int k = 0; k <= i; ++k) s += L(i, k) * L(j, k);
                const double ref = a0[static_cast<std::size_t>(i * nn + j)];
                if (!(std::fabs(s - ref) <= 1e-12 * nn * (nn + 2.0)))
                    qxfuzz::finding("NR_cholesky_decomp: L L^T is not A");
            }
    }
    std::vector<double> b(static_cast<std::size_t>(std::max(nn, 1))), x(b.size(), std::nan("3"));
    for (double &v : b) v = spd ? in.moderate(1024.0) : in.real();
    const bool alias = in.flag();
    std::vector<double> bc = b;
    double *xp = alias ? bc.data() : x.data();
    NR_cholesky_solver(a.data(), n, p.data(), bc.data(), xp);
    if (spd && nn >= 2) {
        // x[1] .. x[n-1] are those of the true solution (x[0] keeps y[0]).
        RowMatrix full(in, nn, nn);
        for (int i = 0; i < nn; ++i)
            for (int j = 0; j < nn; ++j)
                full.at(i, j) = a0[static_cast<std::size_t>(std::min(i, j) * nn + std::max(i, j))];
        std::vector<int> indx(static_cast<std::size_t>(nn));
        double d;
        std::vector<double> ref = b;
        if (ludcmp_a(full.rows.data(), n, indx.data(), &d) != 0) return;
        lubksb_a(full.rows.data(), n, indx.data(), ref.data());
        double scale = 0.0;
        for (double v : ref) scale = std::max(scale, std::fabs(v));
        for (int i = 1; i < nn; ++i)
            if (!(std::fabs(xp[i] - ref[static_cast<std::size_t>(i)]) <=
                  1e-11 * nn * (scale + 1.0)))
                qxfuzz::finding("NR_cholesky_solver: x[1..n-1] do not solve A x = b");
        if (!(std::fabs(xp[0] - b[0] / p[0]) <= 1e-12 * (std::fabs(xp[0]) + 1.0)))
            qxfuzz::finding("NR_cholesky_solver: x[0] is not the forward value");
    }
    // The inverse of L: L^-1 L = I on the lower triangle.
    std::vector<double> li = a;
    NR_cholesky_inverse(n, p.data(), li.data());
    for (int i = 0; i < nn; ++i)
        for (int j = i + 1; j < nn; ++j)
            if (!same_bits(li[static_cast<std::size_t>(i * nn + j)],
                           a[static_cast<std::size_t>(i * nn + j)]))
                qxfuzz::finding("NR_cholesky_inverse: upper triangle touched");
    if (spd) {
        for (int i = 0; i < nn; ++i)
            for (int j = 0; j <= i; ++j) {
                double s = 0.0;
                for (int k = j; k <= i; ++k)
                    s += li[static_cast<std::size_t>(i * nn + k)] * L(k, j);
                if (!(std::fabs(s - (i == j ? 1.0 : 0.0)) <= 1e-12 * nn))
                    qxfuzz::finding("NR_cholesky_inverse: not the inverse of L");
            }
    }
}

void fuzz_banded(qxfuzz::Reader &in)
{
    const int n = in.integer(-1, 60);
    const int m = in.integer(-1, 12);
    const bool well = in.flag();
    const bool trapped = in.flag();
    merrorflush();
    double **a = nullptr;
    double *b = nullptr;
    qxfuzz::arm_fault(in);
    if (!run(trapped, [&] { msetup_banded(n, m, &a, &b); })) return;
    if (merrorlevel() != 0) {
        if (a != nullptr || b != nullptr)
            qxfuzz::finding("msetup_banded: pointers left on failure");
        if (n >= 1 && m >= 0 && merrornum() != QX_MERR_NO_STORAGE)
            qxfuzz::finding("msetup_banded: failure without a storage error");
        merrorflush();
        return;
    }
    if (n < 1 || m < 0) qxfuzz::finding("msetup_banded: bad order accepted");
    if (a == nullptr || b == nullptr) qxfuzz::finding("msetup_banded: no storage and no error");
    qxsys_fail_allocation(0);
    const int h = std::min(m, n - 1);
    std::vector<double> full(static_cast<std::size_t>(n) * static_cast<std::size_t>(n), 0.0);
    for (int i = 0; i < n; ++i) {
        double off = 0.0;
        for (int j = std::max(0, i - h); j <= std::min(n - 1, i + h); ++j) {
            if (a[i][j] != 0.0) qxfuzz::finding("msetup_banded: element not cleared");
            a[i][j] = well ? in.moderate(1024.0) : in.real();
            if (j != i) off += std::fabs(a[i][j]);
        }
        if (well) a[i][i] = (in.flag() ? -1.0 : 1.0) * (2.0 * off + 1.0);
        for (int j = std::max(0, i - h); j <= std::min(n - 1, i + h); ++j)
            full[static_cast<std::size_t>(i * n + j)] = a[i][j];
    }
    for (int i = 0; i < n; ++i) b[i] = well ? in.moderate(1024.0) : in.real();
    const std::vector<double> b0(b, b + n);
    // A second block of right-hand sides for the several-column solve.
    const int ncols = in.integer(1, 5);
    const long stride = ncols + in.integer(0, 2);
    std::vector<double> x(static_cast<std::size_t>(n * stride), std::nan("4"));
    for (int i = 0; i < n; ++i) {
        x[static_cast<std::size_t>(i * stride)] = b[i];
        for (int c = 1; c < ncols; ++c)
            x[static_cast<std::size_t>(i * stride + c)] = well ? in.moderate(1024.0) : in.real();
    }
    const std::vector<double> x0 = x;

    mdecompose_banded(a, n, m);
    const bool factored = merrorlevel() == 0;
    if (well && !factored) qxfuzz::finding("mdecompose_banded: small pivot on a dominant band");
    merrorflush();
    msolve_banded(a, n, m, b);
    const int solve_error = merrornum();
    if (well && factored && solve_error != 0)
        qxfuzz::finding("msolve_banded: small diagonal on a dominant band");
    if (well && factored && !small_residual(full, n, b, b0.data(), 1e-13 * (2 * h + 1)))
        qxfuzz::finding("msolve_banded: large residual on a dominant band");
    merrorflush();
    qx_msolve_banded_columns(a, n, m, x.data(), stride, ncols);
    if (merrornum() != solve_error)
        qxfuzz::finding("qx_msolve_banded_columns: error differs from msolve_banded");
    merrorflush();
    // Column c equals msolve_banded on that column, bit for bit.
    std::vector<double> col(static_cast<std::size_t>(n));
    for (int c = 0; c < ncols; ++c) {
        for (int i = 0; i < n; ++i)
            col[static_cast<std::size_t>(i)] = x0[static_cast<std::size_t>(i * stride + c)];
        msolve_banded(a, n, m, col.data());
        merrorflush();
        for (int i = 0; i < n; ++i)
            if (!same_bits(col[static_cast<std::size_t>(i)],
                           x[static_cast<std::size_t>(i * stride + c)])) {
                qxfuzz::finding("qx_msolve_banded_columns: not the bits of msolve_banded");
            }
        for (long s = ncols; s < stride; ++s)
            for (int i = 0; i < n; ++i)
                if (!same_bits(x[static_cast<std::size_t>(i * stride + s)],
                               x0[static_cast<std::size_t>(i * stride + s)]))
                    qxfuzz::finding("qx_msolve_banded_columns: wrote outside its columns");
    }
    mdispose_banded(&a, &b);
    if (a != nullptr || b != nullptr) qxfuzz::finding("mdispose_banded: pointers not cleared");
    mdispose_banded(&a, &b);
    mdispose_banded(nullptr, nullptr);
}

void fuzz_operations(qxfuzz::Reader &in)
{
    const int r = in.integer(-1, 12), k = in.integer(-1, 12), c = in.integer(-1, 12);
    const int nr = std::max(r, 0), nk = std::max(k, 0), nc = std::max(c, 0);
    const bool trapped = in.flag();

    // NR_2d_matrix_allo, with a block of its own or the caller's.
    {
        const bool own = in.flag();
        std::vector<double> caller(static_cast<std::size_t>(std::max(nr * nc, 1)));
        double *block = own ? nullptr : caller.data();
        double **m = nullptr;
        qxfuzz::arm_fault(in);
        const bool returned = run(trapped, [&] { m = NR_2d_matrix_allo(r, c, &block); });
        qxsys_fail_allocation(0);
        if (returned) {
            if (r < 1 && m != nullptr) qxfuzz::finding("NR_2d_matrix_allo: rows < 1 gave a matrix");
            if (m == nullptr && own && block != nullptr)
                qxfuzz::finding("NR_2d_matrix_allo: block left after a failure");
            if (m != nullptr) {
                for (int i = 0; i < nr; ++i)
                    if (m[i] != block + static_cast<std::ptrdiff_t>(i) * nc)
                        qxfuzz::finding("NR_2d_matrix_allo: row pointer misplaced");
                NR_2d_matrix_identity(m, std::min(nr, nc));
                NR_2d_matrix_init_zero(m, r, c);
                for (int i = 0; i < nr * nc; ++i)
                    if (block[i] != 0.0) qxfuzz::finding("NR_2d_matrix_init_zero: not cleared");
            }
            SM_free(m);
            if (own) SM_free(block);
        } else if (own && block != nullptr && qxsys_block_kind_of(block) != 0) {
            // Unwound from the pointer array: the new block stays with the caller.
            SM_free(block);
        }
    }

    // Products: row-pointer and flat give the same bits as a plain sum.
    RowMatrix A(in, nr, nk), B(in, nk, nc), P(in, nr, nc);
    for (int i = 0; i < nr; ++i)
        for (int j = 0; j < nk; ++j) A.at(i, j) = in.real();
    for (int i = 0; i < nk; ++i)
        for (int j = 0; j < nc; ++j) B.at(i, j) = in.real();
    const std::vector<double> fa = flat_copy(A, nr, nk), fb = flat_copy(B, nk, nc);
    std::vector<double> fp(static_cast<std::size_t>(std::max(nr * nc, 1)), std::nan("5"));
    NR_2d_matrix_product_of_2(A.rows.data(), B.rows.data(), r, k, c, P.rows.data());
    NR_matrix_2d_as_1d_product_of_2(fa.data(), fb.data(), r, k, c, fp.data());
    for (int i = 0; i < nr; ++i)
        for (int j = 0; j < nc; ++j) {
            double s = 0.0;
            for (int q = 0; q < nk; ++q) s += A.at(i, q) * B.at(q, j);
            if (!same_bits(s, P.at(i, j)) && !(std::isnan(s) && std::isnan(P.at(i, j))))
                qxfuzz::finding("NR_2d_matrix_product_of_2: not the plain sum");
            const double f = fp[static_cast<std::size_t>(i * nc + j)];
            if (!same_bits(s, f) && !(std::isnan(s) && std::isnan(f)))
                qxfuzz::finding("NR_matrix_2d_as_1d_product_of_2: not the plain sum");
        }

    // Copies both ways, transposes twice, triangles.
    std::vector<double> back(static_cast<std::size_t>(std::max(nr * nk, 1)), std::nan("6"));
    NR_matrix_copy_2d_to_1d(A.rows.data(), r, k, back.data());
    for (int i = 0; i < nr * nk; ++i)
        if (!same_bits(back[static_cast<std::size_t>(i)], fa[static_cast<std::size_t>(i)]))
            qxfuzz::finding("NR_matrix_copy_2d_to_1d: not a copy");
    RowMatrix A2(in, nr, nk);
    NR_matrix_copy_1d_to_2d(fa.data(), r, k, A2.rows.data());
    for (int i = 0; i < nr; ++i)
        for (int j = 0; j < nk; ++j)
            if (!same_bits(A2.at(i, j), A.at(i, j)))
                qxfuzz::finding("NR_matrix_copy_1d_to_2d: not a copy");

    const int n = r;
    RowMatrix S(in, nr, nr);
    for (int i = 0; i < nr; ++i)
        for (int j = 0; j < nr; ++j) S.at(i, j) = in.real();
    std::vector<double> fs = flat_copy(S, nr, nr);
    const std::vector<double> s0 = fs;
    NR_2d_matrix_nxn_transp(S.rows.data(), n);
    NR_matrix_2d_as_1d_nxn_transp(fs.data(), n);
    for (int i = 0; i < nr; ++i)
        for (int j = 0; j < nr; ++j) {
            const double t = s0[static_cast<std::size_t>(j * nr + i)];
            if (!same_bits(S.at(i, j), t) ||
                !same_bits(fs[static_cast<std::size_t>(i * nr + j)], t))
                qxfuzz::finding("nxn_transp: not the transpose");
        }
    std::vector<double> ut = s0, lt = s0, id = s0, z = s0;
    NR_matrix_2d_as_1d_init_zero_ut(ut.data(), n);
    NR_matrix_2d_as_1d_init_zero_lt(lt.data(), n);
    NR_matrix_2d_as_1d_identity(id.data(), n);
    NR_matrix_2d_as_1d_init_zero(z.data(), r, r);
    for (int i = 0; i < nr; ++i)
        for (int j = 0; j < nr; ++j) {
            const std::size_t e = static_cast<std::size_t>(i * nr + j);
            if (!same_bits(ut[e], j > i ? 0.0 : s0[e]) || !same_bits(lt[e], j < i ? 0.0 : s0[e]) ||
                id[e] != (i == j ? 1.0 : 0.0) || !same_bits(z[e], 0.0))
                qxfuzz::finding("NR_matrix_2d_as_1d_init_*: wrong elements");
        }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    qxfuzz::Reader in(data, size);
    qxfuzz::begin(in.integer(0, 1));
    switch (in.integer(0, 4)) {
    case 0:
        fuzz_solve3(in);
        break;
    case 1:
        fuzz_lu(in);
        break;
    case 2:
        fuzz_cholesky(in);
        break;
    case 3:
        fuzz_banded(in);
        break;
    default:
        fuzz_operations(in);
        break;
    }
    merrorflush();
    qxfuzz::end();
    return 0;
}
