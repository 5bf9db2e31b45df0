// ludcmp_a.cpp — LU decomposition of a row-pointer matrix by Crout's method
// with implicit scaling and partial pivoting: every row is scanned before
// anything changes, pivot ties go to the last row, an exactly zero pivot
// becomes 1.0e-20.
//
// Method. Crout's column-by-column loop gives each element a[i][j] the
// operations a[i][j] -= a[i][k] * a[k][j] for k = 0 .. min(i, j)-1 in
// increasing k, with final L values a[i][k] and final U values a[k][j], and
// then, below the diagonal, the division by the pivot. Any schedule that
// gives every element exactly that sequence produces the same bits, so the
// columns are factored recursively by halves: factor the left half, apply
// its updates to the right half as a triangular solve (U rows) and a product
// (rows below) in register tiles, factor the right half. Row interchanges
// swap whole rows at pivot time, as the plain loop does; a row carries its
// partial updates with it, which the plain loop's untouched columns would
// receive later in the same order.
#define QX_SOURCE_FILE "ludcmp_a"
#include "frame/check.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <utility>

#include <qxmath/matrix.h>

namespace
{

using std::size_t;

// The stand-in for an exactly zero pivot.
constexpr double kTinyPivot = 1.0e-20;

// Column ranges at most this wide are factored column by column.
constexpr size_t kLeafColumns = 8;

// Two doubles operated on lane by lane: each lane performs exactly the
// scalar operation, so results do not depend on the vector width.
typedef double v2d __attribute__((vector_size(16)));

template <class V> struct Lanes;
template <> struct Lanes<double> {
    static constexpr size_t width = 1;
    static double load(const double *p) { return *p; }
    static void store(double *p, double v) { *p = v; }
    static double splat(double x) { return x; }
};
template <> struct Lanes<v2d> {
    static constexpr size_t width = 2;
    static v2d load(const double *p)
    {
        v2d v;
        std::memcpy(&v, p, sizeof v);
        return v;
    }
    static void store(double *p, v2d v) { std::memcpy(p, &v, sizeof v); }
    static v2d splat(double x) { return v2d{x, x}; }
};

// One decomposition in progress.
struct Crout {
    double **a;
    size_t n;
    double *scale; // 1 / largest magnitude of the row now at each position
    int *indx;
    double parity;
};

// A tile of MR rows (rows[0 .. MR-1]) by NV * width columns from column c:
// takes away a[r][k0 + k] * u[k][c ..] for k = 0 .. kc-1, one k at a time;
// then, when Tri, the tile's own rows are U rows k0 + kc .. k0 + kc + MR-1
// and row q is taken away from every later row r, in increasing q (a
// triangular solve). The tile stays in registers throughout.
template <size_t MR, size_t NV, class V, bool Tri>
inline void tile(double *const *rows, double *const *u, size_t k0, size_t kc, size_t c)
{
    using L = Lanes<V>;
    V acc[MR][NV];
    const double *l[MR];
#pragma GCC unroll 8
    for (size_t r = 0; r < MR; ++r) {
        l[r] = rows[r] + k0;
#pragma GCC unroll 4
        for (size_t v = 0; v < NV; ++v) acc[r][v] = L::load(rows[r] + c + v * L::width);
    }
    for (size_t k = 0; k < kc; ++k) {
        const double *b = u[k] + c;
        V bv[NV];
#pragma GCC unroll 4
        for (size_t v = 0; v < NV; ++v) bv[v] = L::load(b + v * L::width);
#pragma GCC unroll 8
        for (size_t r = 0; r < MR; ++r) {
            const V f = L::splat(l[r][k]);
#pragma GCC unroll 4
            for (size_t v = 0; v < NV; ++v) acc[r][v] -= f * bv[v];
        }
    }
    if constexpr (Tri) {
#pragma GCC unroll 8
        for (size_t q = 0; q + 1 < MR; ++q)
#pragma GCC unroll 8
            for (size_t r = q + 1; r < MR; ++r) {
                const V f = L::splat(l[r][kc + q]);
#pragma GCC unroll 4
                for (size_t v = 0; v < NV; ++v) acc[r][v] -= f * acc[q][v];
            }
    }
#pragma GCC unroll 8
    for (size_t r = 0; r < MR; ++r)
#pragma GCC unroll 4
        for (size_t v = 0; v < NV; ++v) L::store(rows[r] + c + v * L::width, acc[r][v]);
}

// tile() over columns c0 .. c1-1.
template <size_t MR, bool Tri>
void strip(double *const *rows, double *const *u, size_t k0, size_t kc, size_t c0, size_t c1)
{
    size_t c = c0;
    for (; c + 4 <= c1; c += 4) tile<MR, 2, v2d, Tri>(rows, u, k0, kc, c);
    if (c + 2 <= c1) {
        tile<MR, 1, v2d, Tri>(rows, u, k0, kc, c);
        c += 2;
    }
    if (c < c1) tile<MR, 1, double, Tri>(rows, u, k0, kc, c);
}

// strip() over the rows i0 .. i1-1, four at a time. With Tri the rows are
// the U rows k0 + kc .. of a triangular solve (kc grows with the row).
template <bool Tri>
void rows_update(double **a, size_t i0, size_t i1, size_t k0, size_t kc, size_t c0, size_t c1)
{
    size_t i = i0;
    for (; i + 4 <= i1; i += 4) {
        strip<4, Tri>(a + i, a + k0, k0, kc, c0, c1);
        if constexpr (Tri) kc += 4;
    }
    switch (i1 - i) {
    case 3:
        strip<3, Tri>(a + i, a + k0, k0, kc, c0, c1);
        break;
    case 2:
        strip<2, Tri>(a + i, a + k0, k0, kc, c0, c1);
        break;
    case 1:
        strip<1, Tri>(a + i, a + k0, k0, kc, c0, c1);
        break;
    default:
        break;
    }
}

// Columns j0 .. mid-1 are factored: their updates reach columns mid .. j1-1.
void update_right(Crout &lu, size_t j0, size_t mid, size_t j1)
{
    // U rows j0 .. mid-1: each takes away the U rows above it in the block.
    rows_update<true>(lu.a, j0, mid, j0, 0, mid, j1);
    // Every row below: takes away all of them.
    rows_update<false>(lu.a, mid, lu.n, j0, mid - j0, mid, j1);
}

void swap_rows(double *x, double *y, size_t n)
{
    for (size_t k = 0; k < n; ++k) std::swap(x[k], y[k]);
}

// Columns j0 .. j1-1, one at a time; every row from j0 down has received the
// updates of the columns left of j0.
void factor_columns(Crout &lu, size_t j0, size_t j1)
{
    double **a = lu.a;
    const size_t n = lu.n;
    for (size_t j = j0; j < j1; ++j) {
        // Pivot: the greatest scaled magnitude, ">=" so that the last of
        // equal rows wins.
        double big = 0.0;
        size_t imax = j;
        for (size_t i = j; i < n; ++i) {
            const double figure = lu.scale[i] * std::fabs(a[i][j]);
            if (figure >= big) {
                big = figure;
                imax = i;
            }
        }
        if (imax != j) {
            swap_rows(a[imax], a[j], n);
            lu.parity = -lu.parity;
            lu.scale[imax] = lu.scale[j];
        }
        lu.indx[j] = static_cast<int>(imax);
        double *aj = a[j];
        if (aj[j] == 0.0) aj[j] = kTinyPivot;
        const double pivot = aj[j];
        // Below the pivot: the L value, then its update of the columns of
        // this range to the right.
        for (size_t i = j + 1; i < n; ++i) {
            double *ai = a[i];
            ai[j] /= pivot;
            const double f = ai[j];
            for (size_t c = j + 1; c < j1; ++c) ai[c] -= f * aj[c];
        }
    }
}

void factor(Crout &lu, size_t j0, size_t j1)
{
    const size_t width = j1 - j0;
    if (width <= kLeafColumns) {
        factor_columns(lu, j0, j1);
        return;
    }
    const size_t mid = j0 + ((width / 2 + 3) & ~static_cast<size_t>(3));
    factor(lu, j0, mid);
    update_right(lu, j0, mid, j1);
    factor(lu, mid, j1);
}

} // namespace

int ludcmp_a(double **a, int n, int *indx, double *d)
{
    *d = 1.0;
    if (n < 1) return 0;
    const size_t nn = static_cast<size_t>(n);
    double *scale = static_cast<double *>(SM_alloc(nn * sizeof(double)));
    if (scale == nullptr) return 2;

    // Every row is scanned before anything changes.
    for (size_t i = 0; i < nn; ++i) {
        const double *ai = a[i];
        double big = 0.0;
        for (size_t j = 0; j < nn; ++j) {
            const double t = std::fabs(ai[j]);
            if (t > big) big = t;
        }
        if (big == 0.0) {
            SM_free(scale);
            return 1;
        }
        scale[i] = 1.0 / big;
    }

    Crout lu{a, nn, scale, indx, 1.0};
    factor(lu, 0, nn);
    *d = lu.parity;
    SM_free(scale);
    return 0;
}
