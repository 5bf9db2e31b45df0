// lubksb_a.cpp — forward and back substitution with the LU factors and row
// permutation written by ludcmp_a. Leading zeros of the permuted right-hand
// side are skipped: no product is formed until the first non-zero value.
#define QX_SOURCE_FILE "lubksb_a"
#include "frame/check.h"

#include <cstddef>

#include <qxmath/matrix.h>

#include "numeric/lu_internal.h"

void lubksb_a(double *const *a, int n, const int *indx, double *b)
{
    if (n < 1) return;
    const std::size_t nn = static_cast<std::size_t>(n);

    // L.y = P.b. first is the index of the first non-zero value met (a NaN
    // counts as non-zero); until then there is nothing to subtract.
    std::size_t first = nn;
    for (std::size_t i = 0; i < nn; ++i) {
        const std::size_t ip = static_cast<std::size_t>(indx[i]);
        double sum = b[ip];
        b[ip] = b[i];
        if (first < nn) {
            const double *ai = a[i];
            for (std::size_t k = first; k < i; ++k) sum -= ai[k] * b[k];
        } else if (sum != 0.0) {
            first = i;
        }
        b[i] = sum;
    }

    // U.x = y.
    for (std::size_t i = nn; i-- > 0;) {
        const double *ai = a[i];
        double sum = b[i];
        for (std::size_t k = i + 1; k < nn; ++k) sum -= ai[k] * b[k];
        b[i] = sum / ai[i];
    }
}

namespace
{

// Columns solved side by side; wider blocks are taken in slices this wide.
constexpr std::size_t kSlice = 8;

// lubksb_a's two passes on columns c0 .. c0 + w - 1, step by step across them.
void solve_slice(double *const *a, std::size_t nn, const int *indx, double *const *b,
                 std::size_t c0, std::size_t w)
{
    std::size_t first[kSlice];
    for (std::size_t c = 0; c < w; ++c) first[c] = nn;

    for (std::size_t i = 0; i < nn; ++i) {
        const std::size_t ip = static_cast<std::size_t>(indx[i]);
        const double *ai = a[i];
        for (std::size_t c = c0; c < c0 + w; ++c) {
            double sum = b[ip][c];
            b[ip][c] = b[i][c];
            std::size_t &f = first[c - c0];
            if (f < nn) {
                for (std::size_t k = f; k < i; ++k) sum -= ai[k] * b[k][c];
            } else if (sum != 0.0) {
                f = i;
            }
            b[i][c] = sum;
        }
    }

    for (std::size_t i = nn; i-- > 0;) {
        const double *ai = a[i];
        for (std::size_t c = c0; c < c0 + w; ++c) {
            double sum = b[i][c];
            for (std::size_t k = i + 1; k < nn; ++k) sum -= ai[k] * b[k][c];
            b[i][c] = sum / ai[i];
        }
    }
}

// The same for a fixed order N and width W, on local copies that the
// compiler keeps in registers (the 4x4 inverse of the transforms).
template <std::size_t N, std::size_t W>
void solve_fixed(double *const *a, const int *indx, double *const *b)
{
    double l[N][N], x[N][W];
    for (std::size_t i = 0; i < N; ++i)
        for (std::size_t k = 0; k < N; ++k) l[i][k] = a[i][k];
    for (std::size_t i = 0; i < N; ++i)
        for (std::size_t c = 0; c < W; ++c) x[i][c] = b[i][c];
    std::size_t first[W];
    for (std::size_t c = 0; c < W; ++c) first[c] = N;

    for (std::size_t i = 0; i < N; ++i) {
        const std::size_t ip = static_cast<std::size_t>(indx[i]);
        for (std::size_t c = 0; c < W; ++c) {
            double sum = x[ip][c];
            x[ip][c] = x[i][c];
            if (first[c] < N) {
                for (std::size_t k = first[c]; k < i; ++k) sum -= l[i][k] * x[k][c];
            } else if (sum != 0.0) {
                first[c] = i;
            }
            x[i][c] = sum;
        }
    }
    for (std::size_t i = N; i-- > 0;) {
        for (std::size_t c = 0; c < W; ++c) {
            double sum = x[i][c];
            for (std::size_t k = i + 1; k < N; ++k) sum -= l[i][k] * x[k][c];
            x[i][c] = sum / l[i][i];
        }
    }
    for (std::size_t i = 0; i < N; ++i)
        for (std::size_t c = 0; c < W; ++c) b[i][c] = x[i][c];
}

} // namespace

void qx_lubksb_a_columns(double *const *a, int n, const int *indx, double *const *b, int ncols)
{
    if (n < 1 || ncols < 1) return;
    const std::size_t nn = static_cast<std::size_t>(n);
    const std::size_t nc = static_cast<std::size_t>(ncols);
    if (nn == 4 && nc == 4) return solve_fixed<4, 4>(a, indx, b);
    for (std::size_t c0 = 0; c0 < nc; c0 += kSlice)
        solve_slice(a, nn, indx, b, c0, nc - c0 < kSlice ? nc - c0 : kSlice);
}
