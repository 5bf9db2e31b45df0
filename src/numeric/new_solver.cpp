// new_solver — the dense drivers SOLVE_solve_3equations (Cramer's rule) and
// SOLVE_lu_solver (ludcmp_a/lubksb_a over several right-hand sides), and the
// banded solver: band storage, LU without pivoting, one-vector solve,
// disposal and a print-out. The banded functions never report through the
// host; their failures are left in the error state of sea_merror.
//
// Band storage: one zero-filled block of the stored elements, row after row,
// and n + 1 row pointers; slot 0 keeps the block for freeing, the handle is
// slot 1, and row i's pointer is biased by -lo(i) so that the absolute
// column index reaches the element. The bias never leaves the block: every
// row before row i holds at least min(m, n - 1) + 1 elements.
//
// The arithmetic is fixed to the operation: the factorisation divides each
// multiplier by its pivot (no reciprocal) and updates row i left to right;
// each substitution step subtracts its products from b[i] one at a time in
// increasing column order, as the dense LU and Cholesky solvers do.
#define QX_SOURCE_FILE "new_solver"
#include "frame/check.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <type_traits>
#include <utility>

#include <qxmath/matrix.h>
#include <qxmath/solvers.h>

#include "numeric/banded_internal.h"

namespace
{

// Indices in 64 bits, so that i + m cannot overflow for any int arguments.
using Index = std::ptrdiff_t;

// A pivot or diagonal element below this magnitude (or NaN) stops the
// factorisation or the solve.
constexpr double min_pivot = 1.0e-15;

// The reporting places of merrorpush, one per call site.
const char place_setup_order[1] = {};
const char place_setup_storage[1] = {};
const char place_decompose_handle[1] = {};
const char place_decompose_pivot[1] = {};
const char place_solve_handle[1] = {};
const char place_solve_pivot[1] = {};

bool unusable_pivot(double p) { return !(std::fabs(p) >= min_pivot); }

// First and last stored column of row i (half-bandwidth m >= 0, order n).
Index band_lo(Index i, Index m) { return i > m ? i - m : 0; }
Index band_hi(Index i, Index m, Index n) { return m < n - 1 - i ? i + m : n - 1; }

// The half-bandwidth that reaches no further than the matrix, and no less
// than the diagonal: every band range is clipped to 0 ... n - 1 and a
// negative half-bandwidth leaves only the diagonal, so the result is the
// same.
Index clipped_half(int n, int m) { return std::max<Index>(0, std::min<Index>(m, Index{n} - 1)); }

void push(const char *place, int number) { merrorpush(place, number, QX_MERR_LEVEL); }

// ---- one row at a time, any half-bandwidth ----
//
// Each returns the row whose pivot (or diagonal) was unusable, or -1.

// Eliminates row i with the factorised rows above it: every multiplier
// divided by its pivot, the row updated left to right.
Index eliminate_row(double *const *a, Index i, Index half, Index order)
{
    double *row = a[i];
    for (Index k = band_lo(i, half); k < i; ++k) {
        const double *pivot_row = a[k];
        const double pivot = pivot_row[k];
        if (unusable_pivot(pivot)) return i;
        const double l = row[k] / pivot;
        row[k] = l;
        const Index last = band_hi(k, half, order);
        for (Index j = k + 1; j <= last; ++j) row[j] -= l * pivot_row[j];
    }
    return -1;
}

// Forward substitution of row i (unit lower triangle).
void forward_row(double *const *a, double *b, Index i, Index half)
{
    const double *row = a[i];
    double x = b[i];
    for (Index k = band_lo(i, half); k < i; ++k) x -= b[k] * row[k];
    b[i] = x;
}

// Back substitution of row i.
Index back_row(double *const *a, double *b, Index i, Index half, Index order)
{
    const double *row = a[i];
    double x = b[i];
    const Index last = band_hi(i, half, order);
    for (Index j = i + 1; j <= last; ++j) x -= row[j] * b[j];
    b[i] = x;
    if (unusable_pivot(row[i])) return i;
    b[i] /= row[i];
    return -1;
}

// ---- the rows away from the edges, half-bandwidth fixed ----
//
// The same operations on the same values in the same order as the row
// functions above (so the same bits), with the row being worked on, or the
// last M solution values, kept in registers instead of being stored and
// reloaded at every step; that chain of stores and loads is what bounds
// the general loops.
template <int M> struct Kernel {
    static constexpr std::size_t width = M; // for array sizes

    // Rows first ... last, each with lo(i) = i - M and every pivot row k
    // reaching k + M. At an unusable pivot the row is stored as far as it
    // got, as eliminate_row leaves it.
    static Index eliminate(double *const *a, Index first, Index last)
    {
        for (Index i = first; i <= last; ++i) {
            double *row = a[i] + (i - M); // element (i, i - M + t) at row[t]
            double r[2 * width];          // column i + M is never updated
            for (int t = 0; t < 2 * M; ++t) r[t] = row[t];
            bool ok = true;
            for (int s = 0; s < M; ++s) {
                const Index k = i - M + s;
                const double *pivot_row = a[k] + k; // element (k, k + d) at pivot_row[d]
                if (unusable_pivot(pivot_row[0])) {
                    ok = false;
                    break;
                }
                const double l = r[s] / pivot_row[0];
                r[s] = l;
                for (int d = 1; d <= M; ++d) r[s + d] -= l * pivot_row[d];
            }
            for (int t = 0; t < 2 * M; ++t) row[t] = r[t];
            if (!ok) return i;
        }
        return -1;
    }

    // Rows first ... order - 1 (first >= M).
    static void forward(double *const *a, double *b, Index first, Index order)
    {
        double w[width]; // b[i - M] ... b[i - 1]
        for (int s = 0; s < M; ++s) w[s] = b[first - M + s];
        for (Index i = first; i < order; ++i) {
            const double *row = a[i] + (i - M);
            double x = b[i];
            for (int s = 0; s < M; ++s) x -= w[s] * row[s];
            b[i] = x;
            for (int s = 0; s + 1 < M; ++s) w[s] = w[s + 1];
            w[M - 1] = x;
        }
    }

    // Rows last down to 0 (last + M <= order - 1).
    static Index back(double *const *a, double *b, Index last)
    {
        double w[width]; // b[i + 1] ... b[i + M]
        for (int s = 0; s < M; ++s) w[s] = b[last + 1 + s];
        for (Index i = last; i >= 0; --i) {
            const double *row = a[i] + i; // element (i, i + d) at row[d]
            double x = b[i];
            for (int d = 1; d <= M; ++d) x -= row[d] * w[d - 1];
            b[i] = x;
            if (unusable_pivot(row[0])) return i;
            const double y = x / row[0];
            b[i] = y;
            for (int s = M - 1; s > 0; --s) w[s] = w[s - 1];
            w[0] = y;
        }
        return -1;
    }
};

// Calls f(std::integral_constant<int, half>) when a kernel of that width is
// built; false otherwise. Widths 1 to 8 cover splines up to order 9.
template <class F, int... W>
bool with_width(Index half, F &&f, std::integer_sequence<int, W...> /*built*/)
{
    return ((half == W ? (f(std::integral_constant<int, W>{}), true) : false) || ...);
}
template <class F> bool with_width(Index half, F &&f)
{
    return with_width(half, f, std::integer_sequence<int, 1, 2, 3, 4, 5, 6, 7, 8>{});
}

// ---- several right-hand sides side by side ----
//
// Column c of a block with row i at x + i * stride: the row functions and
// kernels above, with every operation on b[i] done on x[i][c] for each
// column in turn. The per-element operations and their order are those of
// msolve_banded, so the bits are too.

template <int NC> struct Columns {
    static constexpr std::size_t kc = NC; // for array sizes

    static void forward_row(double *const *a, double *x, Index stride, Index i, Index half)
    {
        const double *row = a[i];
        double v[kc];
        for (int c = 0; c < NC; ++c) v[c] = x[i * stride + c];
        for (Index k = band_lo(i, half); k < i; ++k)
            for (int c = 0; c < NC; ++c) v[c] -= x[k * stride + c] * row[k];
        for (int c = 0; c < NC; ++c) x[i * stride + c] = v[c];
    }

    static Index back_row(double *const *a, double *x, Index stride, Index i, Index half,
                          Index order)
    {
        const double *row = a[i];
        double v[kc];
        for (int c = 0; c < NC; ++c) v[c] = x[i * stride + c];
        const Index last = band_hi(i, half, order);
        for (Index j = i + 1; j <= last; ++j)
            for (int c = 0; c < NC; ++c) v[c] -= row[j] * x[j * stride + c];
        if (unusable_pivot(row[i])) {
            for (int c = 0; c < NC; ++c) x[i * stride + c] = v[c];
            return i;
        }
        for (int c = 0; c < NC; ++c) x[i * stride + c] = v[c] / row[i];
        return -1;
    }

    template <int M>
    static void forward(double *const *a, double *x, Index stride, Index first, Index order)
    {
        double w[static_cast<std::size_t>(M)][kc]; // rows i - M ... i - 1
        for (int s = 0; s < M; ++s)
            for (int c = 0; c < NC; ++c) w[s][c] = x[(first - M + s) * stride + c];
        for (Index i = first; i < order; ++i) {
            const double *row = a[i] + (i - M);
            double v[kc];
            for (int c = 0; c < NC; ++c) v[c] = x[i * stride + c];
            for (int s = 0; s < M; ++s)
                for (int c = 0; c < NC; ++c) v[c] -= w[s][c] * row[s];
            for (int c = 0; c < NC; ++c) x[i * stride + c] = v[c];
            for (int s = 0; s + 1 < M; ++s)
                for (int c = 0; c < NC; ++c) w[s][c] = w[s + 1][c];
            for (int c = 0; c < NC; ++c) w[M - 1][c] = v[c];
        }
    }

    template <int M> static Index back(double *const *a, double *x, Index stride, Index last)
    {
        double w[static_cast<std::size_t>(M)][kc]; // rows i + 1 ... i + M
        for (int s = 0; s < M; ++s)
            for (int c = 0; c < NC; ++c) w[s][c] = x[(last + 1 + s) * stride + c];
        for (Index i = last; i >= 0; --i) {
            const double *row = a[i] + i;
            double v[kc];
            for (int c = 0; c < NC; ++c) v[c] = x[i * stride + c];
            for (int d = 1; d <= M; ++d)
                for (int c = 0; c < NC; ++c) v[c] -= row[d] * w[d - 1][c];
            if (unusable_pivot(row[0])) {
                for (int c = 0; c < NC; ++c) x[i * stride + c] = v[c];
                return i;
            }
            for (int c = 0; c < NC; ++c) v[c] = v[c] / row[0];
            for (int c = 0; c < NC; ++c) x[i * stride + c] = v[c];
            for (int s = M - 1; s > 0; --s)
                for (int c = 0; c < NC; ++c) w[s][c] = w[s - 1][c];
            for (int c = 0; c < NC; ++c) w[0][c] = v[c];
        }
        return -1;
    }

    // msolve_banded's sweeps on NC columns; the row that failed, or -1.
    static Index solve(double *const *a, Index order, Index half, double *x, Index stride)
    {
        const Index first = std::max<Index>(half, 1);
        for (Index i = 1; i < std::min(first, order); ++i) forward_row(a, x, stride, i, half);
        if (first < order && !with_width(half, [&](auto width) {
                forward<decltype(width)::value>(a, x, stride, first, order);
            }))
            for (Index i = first; i < order; ++i) forward_row(a, x, stride, i, half);

        const Index last = order - 1 - half;
        Index failed = -1;
        for (Index i = order - 1; failed < 0 && i > last && i >= 0; --i)
            failed = back_row(a, x, stride, i, half, order);
        if (failed < 0 && last >= 0 && !with_width(half, [&](auto width) {
                failed = back<decltype(width)::value>(a, x, stride, last);
            }))
            for (Index i = last; failed < 0 && i >= 0; --i)
                failed = back_row(a, x, stride, i, half, order);
        return failed;
    }
};

// Element block and row pointers of an n x n band of half-bandwidth m
// (n >= 1, m >= 0); the handle, or NULL with nothing left allocated when
// the host gives no memory and its report returns.
double **new_band(int n, int m)
{
    const Index order = n, half = clipped_half(n, m);
    // Rows 0 .. half-1 and the last half rows are cut by the matrix's edges.
    const std::size_t count =
        static_cast<std::size_t>(order) * static_cast<std::size_t>(2 * half + 1) -
        static_cast<std::size_t>(half) * static_cast<std::size_t>(half + 1);
    double *block = static_cast<double *>(SM_calloc(count, sizeof(double)));
    if (block == nullptr) return nullptr;
    double **slots =
        static_cast<double **>(SM_calloc(static_cast<std::size_t>(order) + 1, sizeof(double *)));
    if (slots == nullptr) {
        SM_free(block);
        return nullptr;
    }
    slots[0] = block;
    Index start = 0;
    for (Index i = 0; i < order; ++i) {
        const Index lo = band_lo(i, half);
        slots[i + 1] = block + (start - lo);
        start += band_hi(i, half, order) - lo + 1;
    }
    return slots + 1;
}

} // namespace

// ---- dense drivers ----------------------------------------------------------

int SOLVE_solve_3equations(const double m[9], const double b[3], double x[3])
{
    const double c0 = m[4] * m[8] - m[7] * m[5];
    const double c1 = m[1] * m[8] - m[7] * m[2];
    const double c2 = m[1] * m[5] - m[2] * m[4];
    const double det = c0 * m[0] - c1 * m[3] + c2 * m[6];
    // Neither below nor above zero: zero of either sign, or NaN.
    if (!(det < 0.0) && !(det > 0.0)) return 1;
    const double x0 = (c0 * b[0] - c1 * b[1] + c2 * b[2]) / det;
    const double x1 = ((m[0] * m[8] - m[6] * m[2]) * b[1] + (m[6] * m[5] - m[3] * m[8]) * b[0] +
                       (m[2] * m[3] - m[0] * m[5]) * b[2]) /
                      det;
    const double x2 = ((m[0] * m[4] - m[1] * m[3]) * b[2] + (m[7] * m[3] - m[6] * m[4]) * b[0] +
                       (m[6] * m[1] - m[7] * m[0]) * b[1]) /
                      det;
    // Written only now, so that x may be b.
    x[0] = x0;
    x[1] = x1;
    x[2] = x2;
    return 0;
}

int SOLVE_lu_solver(double **a, double **b, int n, int nrhs)
{
    if (n < 1) return 0;
    const std::size_t order = static_cast<std::size_t>(n);
    int *indx = static_cast<int *>(SM_alloc(order * sizeof(int)));
    double *column = static_cast<double *>(SM_alloc(order * sizeof(double)));
    int result = -1;
    if (indx != nullptr && column != nullptr) {
        double parity = 1.0;
        result = ludcmp_a(a, n, indx, &parity);
        for (int c = 0; result == 0 && c < nrhs; ++c) {
            for (std::size_t i = 0; i < order; ++i) column[i] = b[i][c];
            lubksb_a(a, n, indx, column);
            for (std::size_t i = 0; i < order; ++i) b[i][c] = column[i];
        }
    }
    SM_free(column);
    SM_free(indx);
    return result;
}

// ---- the banded solver --------------------------------------------------------

void msetup_banded(int n, int m, double ***a, double **b)
{
    if (n < 1 || m < 0) {
        push(place_setup_order, QX_MERR_BAD_ORDER);
    } else if (a == nullptr || b == nullptr) {
        push(place_setup_storage, QX_MERR_NO_STORAGE);
    } else {
        *a = new_band(n, m);
        if (*a == nullptr) {
            push(place_setup_storage, QX_MERR_NO_STORAGE);
        } else {
            *b = static_cast<double *>(SM_alloc(static_cast<std::size_t>(n) * sizeof(double)));
            if (*b == nullptr) push(place_setup_storage, QX_MERR_NO_STORAGE);
        }
    }
    // Any pending error, this call's or an older unflushed one, undoes the
    // setup.
    if (merrorlevel() != 0) mdispose_banded(a, b);
}

void mdecompose_banded(double **a, int n, int m)
{
    if (m < 1 || n < 2) return;
    if (a == nullptr) {
        push(place_decompose_handle, QX_MERR_NO_STORAGE);
        return;
    }
    const Index order = n, half = clipped_half(n, m);
    // Rows 1 .. half-1 and the last half rows are cut by the edges; the
    // rows between take the fixed-width kernel when there is one.
    const Index first = half, last = order - 1 - half;
    Index failed = -1;
    if (first <= last) {
        for (Index i = 1; failed < 0 && i < first; ++i) failed = eliminate_row(a, i, half, order);
        if (failed < 0 && !with_width(half, [&](auto width) {
                failed = Kernel<decltype(width)::value>::eliminate(a, first, last);
            }))
            for (Index i = first; failed < 0 && i <= last; ++i)
                failed = eliminate_row(a, i, half, order);
        for (Index i = last + 1; failed < 0 && i < order; ++i)
            failed = eliminate_row(a, i, half, order);
    } else {
        for (Index i = 1; failed < 0 && i < order; ++i) failed = eliminate_row(a, i, half, order);
    }
    if (failed >= 0) push(place_decompose_pivot, QX_MERR_SMALL_PIVOT);
}

void msolve_banded(double *const *a, int n, int m, double *b)
{
    if (a == nullptr || b == nullptr) {
        push(place_solve_handle, QX_MERR_NO_STORAGE);
        return;
    }
    const Index order = n, half = clipped_half(n, m);
    // Forward: rows from half on reach back a full half-bandwidth.
    const Index first = std::max<Index>(half, 1);
    for (Index i = 1; i < std::min(first, order); ++i) forward_row(a, b, i, half);
    if (first < order && !with_width(half, [&](auto width) {
            Kernel<decltype(width)::value>::forward(a, b, first, order);
        }))
        for (Index i = first; i < order; ++i) forward_row(a, b, i, half);

    // Back: rows up to order - 1 - half reach a full half-bandwidth ahead.
    const Index last = order - 1 - half;
    Index failed = -1;
    for (Index i = order - 1; failed < 0 && i > last && i >= 0; --i)
        failed = back_row(a, b, i, half, order);
    if (failed < 0 && last >= 0 && !with_width(half, [&](auto width) {
            failed = Kernel<decltype(width)::value>::back(a, b, last);
        }))
        for (Index i = last; failed < 0 && i >= 0; --i) failed = back_row(a, b, i, half, order);
    if (failed >= 0) push(place_solve_pivot, QX_MERR_SMALL_PIVOT);
}

void qx_msolve_banded_columns(double *const *a, int n, int m, double *x, long stride, int ncols)
{
    if (a == nullptr || x == nullptr) {
        push(place_solve_handle, QX_MERR_NO_STORAGE);
        return;
    }
    const Index order = n, half = clipped_half(n, m);
    Index failed = -1;
    // Three and four columns (points with and without weights) side by
    // side; any other count one column at a time.
    if (ncols == 3) {
        failed = Columns<3>::solve(a, order, half, x, stride);
    } else if (ncols == 4) {
        failed = Columns<4>::solve(a, order, half, x, stride);
    } else {
        for (int c = 0; c < ncols; ++c) {
            const Index row = Columns<1>::solve(a, order, half, x + c, stride);
            if (row >= 0) failed = row;
        }
    }
    if (failed >= 0) push(place_solve_pivot, QX_MERR_SMALL_PIVOT);
}

void mdispose_banded(double ***a, double **b)
{
    if (a != nullptr && *a != nullptr) {
        double **slots = *a - 1;
        SM_free(slots[0]);
        SM_free(slots);
        *a = nullptr;
    }
    if (b != nullptr && *b != nullptr) {
        SM_free(*b);
        *b = nullptr;
    }
}

int mdump_banded(double *const *a, const double *b, int n, int m)
{
    for (Index i = 0; i < n; ++i) {
        if (a != nullptr) {
            for (Index j = 0; j < n; ++j) {
                if (i - m <= j && j <= i + m)
                    std::printf("%10.5f  ", a[i][j]);
                else
                    std::printf("     0      ");
            }
        }
        if (b != nullptr)
            std::printf("%10.5f\n", b[i]);
        else
            std::printf("\n");
    }
    return n;
}
