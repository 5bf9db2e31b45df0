// h0926a — the band rows and right-hand sides of the interpolation system,
// in parameter order: points and derivative conditions interleaved by the
// rules in spline.h (a condition stands before the point at its parameter).
// Each row's span is searched from the previous row's (rows come in
// parameter order), and its k coefficients come from one basis_row, so the
// work per row is a few comparisons and one triangular recurrence.
//
// A row is written only where the band stores it: row r holds columns
// r - (k - 1) ... r + (k - 1), so its basis functions span - (k - 1) ...
// span must satisfy r <= span <= r + k - 1. Data that break this (say two
// conditions at one interior parameter, the second of which the
// interleaving defers) stop the assembly as a failed evaluation does, and
// the system is then reported singular.
#define QX_SOURCE_FILE "h0926a"
#include "frame/check.h"

#include <cmath>
#include <cstddef>

#include "spline/spline_internal.h"

namespace
{

using qx::spline::kClampTolerance;
using qx::spline::Size;

bool near(double a, double b) { return std::fabs(a - b) < kClampTolerance; }

// The assembly for order K and dimension D, or for s.k and s.dim when the
// template argument is 0 (the common cubic 3-D and 4-D cases get loops of
// fixed length; the operations are the same).
template <int K, int D>
int assemble(const Size &s, const double *points, const double *params, const double *condparams,
             const double *condvectors, const double *knots, double *const *band, double *poles)
{
    const int k = K != 0 ? K : s.k;
    const std::ptrdiff_t dim = D != 0 ? D : s.dim;
    const int n = s.n, nc = s.nc, count = s.nknots;
    const double tmin = knots[k - 1], tmax = knots[count - k];
    double coef[qx::spline::kMaxOrder];
    int ip = 0, ic = 0, hint = -1;
    bool condition = nc > 0 && near(condparams[0], tmin);
    for (int r = 0; r < n + nc; ++r) {
        if (condition ? ic == nc : ip == n) condition = !condition;
        const std::ptrdiff_t item = condition ? ic : ip;
        const double *rhs = (condition ? condvectors : points) + item * dim;
        double *out = poles + std::ptrdiff_t{r} * dim;
        for (std::ptrdiff_t c = 0; c < dim; ++c) out[c] = rhs[c];
        const double t = condition ? condparams[item] : params[item];
        const int span = qx::spline::row_coefficients(t, condition, knots, count, k, hint, coef);
        if (span < r || span > r + k - 1) return 1; // also span == -1
        hint = span;
        double *row = band[r] + (span - (k - 1));
        for (int i = 0; i < k; ++i) row[i] = coef[i];
        if (condition) {
            ++ic;
            condition = ic < nc && near(condparams[ic], tmax) && ip == count - k - 1;
        } else {
            ++ip;
            condition = ic < nc && ip < n &&
                        ((near(params[ip], tmax) && near(condparams[ic], tmax)) ||
                         near(condparams[ic], params[ip]));
        }
    }
    // Periodic wrap rows, in the band only when the system is tiny.
    for (int j = 0; j < s.r; ++j) {
        const int r = n + nc + j;
        double *out = poles + std::ptrdiff_t{r} * dim;
        for (std::ptrdiff_t c = 0; c < dim; ++c) out[c] = 0.0;
        if (r - j > k - 1) return 1; // column j lies left of the band
        band[r][j] = qx::spline::kWrapFactor;
        band[r][s.N - s.r + j] = -qx::spline::kWrapFactor;
    }
    return 0;
}

} // namespace

int h0926a(const QX_interp_desc *desc, const double *points, const double *params,
           const double *condparams, const double *condvectors, const double *knots,
           double *const *band, double *poles)
{
    Size s;
    if (band == nullptr ||
        !qx::spline::interp_args(desc, points, params, condparams, condvectors, knots, poles, &s))
        return -1;
    if (s.k == 4 && s.dim == 3)
        return assemble<4, 3>(s, points, params, condparams, condvectors, knots, band, poles);
    if (s.k == 4 && s.dim == 4)
        return assemble<4, 4>(s, points, params, condparams, condvectors, knots, band, poles);
    return assemble<0, 0>(s, points, params, condparams, condvectors, knots, band, poles);
}
