// h0926 — h0926_, the rows of the dense interpolation matrix: the point
// rows, then the condition rows, then the periodic wrap rows (9.0 / -9.0),
// each row computed as the band assembly (h0926a) computes it. The matrix
// is zero on entry; only the k coefficients of a row are written, so an
// assembly that stops leaves zero rows, which the dense solver reports.
#define QX_SOURCE_FILE "h0926"
#include "frame/check.h"

#include <cstddef>

#include "spline/spline_internal.h"

namespace
{

// Rows first, first + 1, ... of a, one per parameter: returns false at the
// first whose span search or evaluation fails.
bool fill_rows(double *a, std::ptrdiff_t order, std::ptrdiff_t first, const double *params,
               int count, bool condition, const double *knots, int nknots, int k)
{
    double coef[qx::spline::kMaxOrder];
    int hint = -1;
    for (int j = 0; j < count; ++j) {
        const int span =
            qx::spline::row_coefficients(params[j], condition, knots, nknots, k, hint, coef);
        if (span < 0) return false;
        hint = span;
        double *row = a + (first + j) * order + (span - (k - 1));
        for (int i = 0; i < k; ++i) row[i] = coef[i];
    }
    return true;
}

} // namespace

int h0926_(const QX_interp_desc *desc, const double *params, const double *condparams,
           const int *condkinds, const double *knots, double *a)
{
    (void)condkinds; // reserved
    qx::spline::Size s;
    if (!qx::spline::interp_size(desc, &s) || params == nullptr || knots == nullptr ||
        a == nullptr || (s.nc > 0 && condparams == nullptr))
        return -1;
    const std::ptrdiff_t order = s.N;
    if (!fill_rows(a, order, 0, params, s.n, false, knots, s.nknots, s.k) ||
        !fill_rows(a, order, s.n, condparams, s.nc, true, knots, s.nknots, s.k))
        return 1;
    for (std::ptrdiff_t j = 0; j < s.r; ++j) {
        double *row = a + (s.n + s.nc + j) * order;
        row[j] = qx::spline::kWrapFactor;
        row[order - s.r + j] = -qx::spline::kWrapFactor;
    }
    return 0;
}
