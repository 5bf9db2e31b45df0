// h0913b — interpolation on the caller's knot vector: the dense path for a
// periodic curve or when second-group conditions are present, the banded
// path (h0913a) otherwise. Also the dense path itself (solve_dense), which
// h0913 and h0913a use for periodic curves.
#define QX_SOURCE_FILE "h0913b"
#include "frame/check.h"

#include <cstddef>

#include <qxmath/solvers.h>

#include "spline/spline_internal.h"

namespace qx::spline
{

int solve_dense(const Size &s, const QX_interp_desc *desc, const double *points,
                const double *params, const double *condparams, const int *condkinds,
                const double *condvectors, const double *knots, double *poles)
{
    const std::size_t order = static_cast<std::size_t>(s.N);
    const std::size_t dim = static_cast<std::size_t>(s.dim);
    int result = -1;
    // A host whose report returns gives NULL: stop there, free what was had.
    double *matrix = static_cast<double *>(SM_calloc(order * order, sizeof(double)));
    double **rows = nullptr, **rhs = nullptr;
    if (matrix != nullptr) rows = static_cast<double **>(SM_alloc(order * sizeof(double *)));
    if (rows != nullptr) rhs = static_cast<double **>(SM_alloc(order * sizeof(double *)));
    if (rhs != nullptr) {
        // A row the assembly could not fill stays zero, and the solver
        // reports a zero row.
        (void)h0926_(desc, params, condparams, condkinds, knots, matrix);
        (void)h0927_(desc, points, condvectors, poles);
        for (std::size_t i = 0; i < order; ++i) {
            rows[i] = matrix + i * order;
            rhs[i] = poles + i * dim;
        }
        const int solved = SOLVE_lu_solver(rows, rhs, s.N, s.dim);
        // Other codes mean the solver's scratch memory was not had.
        result = solved == 0 || solved == 1 ? solved : -1;
    }
    SM_free(rhs);
    SM_free(rows);
    SM_free(matrix);
    merrorflush();
    return result;
}

} // namespace qx::spline

int h0913b(const QX_interp_desc *desc, const double *points, const double *params,
           const double *condparams, const int *condkinds, const double *condvectors,
           const double *knots, double *poles)
{
    qx::spline::Size s;
    if (!qx::spline::interp_args(desc, points, params, condparams, condvectors, knots, poles, &s)) {
        merrorflush();
        return -1;
    }
    if (s.periodic || desc->n_cond2 != 0)
        return qx::spline::solve_dense(s, desc, points, params, condparams, condkinds, condvectors,
                                       knots, poles);
    return h0913a(desc, points, params, condparams, condkinds, condvectors, knots, poles);
}
