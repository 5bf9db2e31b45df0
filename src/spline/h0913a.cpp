// h0913a — the banded path of the interpolation: band storage, rows by
// h0926a, factorisation, the solve of every coordinate (side by side, with
// msolve_banded's arithmetic), the negative-weight test of 4-D poles. Every return flushes the
// error state of the banded solver. A periodic description, whose wrap rows
// do not fit a band, goes to the dense path. Also the checks of the
// description shared by the family (interp_size, interp_args).
#define QX_SOURCE_FILE "h0913a"
#include "frame/check.h"

#include <algorithm>
#include <climits>
#include <cstddef>

#include <qxmath/solvers.h>

#include "numeric/banded_internal.h"
#include "spline/spline_internal.h"

namespace qx::spline
{

bool interp_size(const QX_interp_desc *desc, Size *s)
{
    if (desc == nullptr) return false;
    const int n = desc->n_points, k = desc->order, dim = desc->dimension;
    const int c1 = desc->n_cond1, c2 = desc->n_cond2;
    if (n < 1 || k < 2 || k > kMaxOrder || (dim != 3 && dim != 4) || c1 < 0 || c2 < 0) return false;
    const bool periodic = desc->periodic != 0;
    long long r = 0;
    if (periodic) {
        const long long continuity = desc->closure_continuity;
        if (continuity < -1) return false;
        r = std::min<long long>(continuity + 1, k - 1);
    }
    const long long nc = static_cast<long long>(c1) + c2;
    const long long size = n + nc + r;
    if (size + k > INT_MAX) return false;
    s->n = n;
    s->k = k;
    s->dim = dim;
    s->nc = static_cast<int>(nc);
    s->r = static_cast<int>(r);
    s->N = static_cast<int>(size);
    s->nknots = static_cast<int>(size + k);
    s->periodic = periodic;
    return true;
}

bool interp_args(const QX_interp_desc *desc, const double *points, const double *params,
                 const double *condparams, const double *condvectors, const double *knots,
                 const double *poles, Size *s)
{
    return interp_size(desc, s) && points != nullptr && params != nullptr && knots != nullptr &&
           poles != nullptr && (s->nc == 0 || (condparams != nullptr && condvectors != nullptr));
}

} // namespace qx::spline

namespace
{

// Disposes of the band, flushes the error state, and returns result.
int finish(double ***a, double **b, int result)
{
    mdispose_banded(a, b);
    merrorflush();
    return result;
}

} // namespace

int h0913a(const QX_interp_desc *desc, const double *points, const double *params,
           const double *condparams, const int *condkinds, const double *condvectors,
           const double *knots, double *poles)
{
    qx::spline::Size s;
    if (!qx::spline::interp_args(desc, points, params, condparams, condvectors, knots, poles, &s)) {
        merrorflush();
        return -1;
    }
    if (s.periodic)
        return qx::spline::solve_dense(s, desc, points, params, condparams, condkinds, condvectors,
                                       knots, poles);

    const int order = s.N, half = s.k - 1;
    const std::ptrdiff_t rows = order, dim = s.dim;
    double **a = nullptr;
    double *b = nullptr;
    // Also fails, disposing of what it made, when an error was pending.
    msetup_banded(order, half, &a, &b);
    if (merrorlevel() != 0) return finish(&a, &b, -1);

    // A row the assembly could not fill stays zero: the factorisation or
    // the solve meets its zero pivot and says so.
    (void)h0926a(desc, points, params, condparams, condvectors, knots, a, poles);

    mdecompose_banded(a, order, half);
    if (merrorlevel() != 0) return finish(&a, &b, 1);
    // Every coordinate solved in place in the poles array: the same bits as
    // copying each column into the solver's vector, msolve_banded, and back,
    // with the band read once per sweep for all coordinates.
    qx_msolve_banded_columns(a, order, half, poles, static_cast<long>(dim), s.dim);
    if (merrorlevel() != 0) return finish(&a, &b, 1);
    int result = 0;
    if (dim == 4)
        for (std::ptrdiff_t i = 0; i < rows; ++i)
            if (poles[i * 4 + 3] < 0.0) result = 1;
    return finish(&a, &b, result);
}
