// nr_matrix_operations.cpp — making, clearing, copying, multiplying and
// transposing row-pointer and flat matrices (conventions in matrix.h).
// Nothing here reports or checks; a row count or order below 1 does nothing.
// Products accumulate each element from 0.0 in increasing inner index.
#define QX_SOURCE_FILE "nr_matrix_operations"
#include "frame/check.h"

#include <cstddef>
#include <cstring>
#include <utility>

#include <qxmath/matrix.h>

#include "numeric/count.h"

namespace
{

using std::size_t;

using qx::numeric::count;

void zero_row(double *row, size_t cols)
{
    if (cols > 0) std::memset(row, 0, cols * sizeof(double));
}

void copy_row(double *dst, const double *src, size_t cols)
{
    if (cols > 0) std::memcpy(dst, src, cols * sizeof(double));
}

// P[i][j] of the product, summed from 0.0 in increasing m: four columns of
// one row at a time, so that a row of B is read contiguously, each column
// keeping its own sum in its own order.
template <class RowA, class RowB> void product_row(RowA a, RowB b, size_t k, size_t c, double *p)
{
    size_t j = 0;
    for (; j + 4 <= c; j += 4) {
        double s0 = 0.0, s1 = 0.0, s2 = 0.0, s3 = 0.0;
        for (size_t m = 0; m < k; ++m) {
            const double am = a[m];
            const double *bm = b(m) + j;
            s0 += am * bm[0];
            s1 += am * bm[1];
            s2 += am * bm[2];
            s3 += am * bm[3];
        }
        p[j] = s0;
        p[j + 1] = s1;
        p[j + 2] = s2;
        p[j + 3] = s3;
    }
    for (; j < c; ++j) {
        double s = 0.0;
        for (size_t m = 0; m < k; ++m) s += a[m] * b(m)[j];
        p[j] = s;
    }
}

} // namespace

double **NR_2d_matrix_allo(int rows, int cols, double **block)
{
    if (rows < 1) return nullptr;
    const size_t nr = count(rows), nc = count(cols);
    double *own = nullptr;
    if (*block == nullptr) {
        own = static_cast<double *>(SM_alloc(nr * nc * sizeof(double)));
        if (own == nullptr) return nullptr;
        *block = own;
    }
    double **m = static_cast<double **>(SM_alloc(nr * sizeof(double *)));
    if (m == nullptr) {
        // Leave the caller as it was: nothing of ours stays allocated.
        if (own != nullptr) {
            SM_free(own);
            *block = nullptr;
        }
        return nullptr;
    }
    for (size_t r = 0; r < nr; ++r) m[r] = *block + r * nc;
    return m;
}

int NR_2d_matrix_identity(double **m, int n)
{
    const size_t nn = count(n);
    for (size_t i = 0; i < nn; ++i) zero_row(m[i], nn);
    for (size_t i = 0; i < nn; ++i) m[i][i] = 1.0;
    return 0;
}

int NR_2d_matrix_init_zero(double **m, int rows, int cols)
{
    const size_t nr = count(rows), nc = count(cols);
    for (size_t i = 0; i < nr; ++i) zero_row(m[i], nc);
    return 0;
}

int NR_matrix_2d_as_1d_init_zero(double *m, int rows, int cols)
{
    zero_row(m, count(rows) * count(cols));
    return 0;
}

int NR_matrix_2d_as_1d_identity(double *m, int n)
{
    const size_t nn = count(n);
    zero_row(m, nn * nn);
    for (size_t i = 0; i < nn; ++i) m[i * nn + i] = 1.0;
    return 0;
}

int NR_matrix_2d_as_1d_init_zero_ut(double *m, int n)
{
    const size_t nn = count(n);
    for (size_t i = 0; i < nn; ++i) zero_row(m + i * nn + i + 1, nn - i - 1);
    return 0;
}

int NR_matrix_2d_as_1d_init_zero_lt(double *m, int n)
{
    const size_t nn = count(n);
    for (size_t i = 1; i < nn; ++i) zero_row(m + i * nn, i);
    return 0;
}

int NR_matrix_copy_1d_to_2d(const double *src, int rows, int cols, double **dst)
{
    const size_t nr = count(rows), nc = count(cols);
    for (size_t i = 0; i < nr; ++i) copy_row(dst[i], src + i * nc, nc);
    return 0;
}

int NR_matrix_copy_2d_to_1d(double *const *src, int rows, int cols, double *dst)
{
    const size_t nr = count(rows), nc = count(cols);
    for (size_t i = 0; i < nr; ++i) copy_row(dst + i * nc, src[i], nc);
    return 0;
}

void NR_2d_matrix_product_of_2(double *const *A, double *const *B, int r, int k, int c, double **P)
{
    const size_t nr = count(r), nk = count(k), nc = count(c);
    const auto b = [B](size_t m) -> const double * { return B[m]; };
    for (size_t i = 0; i < nr; ++i) product_row(A[i], b, nk, nc, P[i]);
}

void NR_matrix_2d_as_1d_product_of_2(const double *A, const double *B, int r, int k, int c,
                                     double *P)
{
    const size_t nr = count(r), nk = count(k), nc = count(c);
    const auto b = [B, nc](size_t m) { return B + m * nc; };
    for (size_t i = 0; i < nr; ++i) product_row(A + i * nk, b, nk, nc, P + i * nc);
}

void NR_2d_matrix_nxn_transp(double **m, int n)
{
    const size_t nn = count(n);
    for (size_t i = 0; i < nn; ++i)
        for (size_t j = i + 1; j < nn; ++j) std::swap(m[i][j], m[j][i]);
}

void NR_matrix_2d_as_1d_nxn_transp(double *m, int n)
{
    const size_t nn = count(n);
    for (size_t i = 0; i < nn; ++i)
        for (size_t j = i + 1; j < nn; ++j) std::swap(m[i * nn + j], m[j * nn + i]);
}
