// h0913 — interpolation through points with its own knot vector: the knots
// of knot_seq_order_4 for an open cubic whose first conditions sit at both
// end points, of the general placement h0914_ otherwise; then the banded
// path for an open curve, the dense one for a periodic curve.
#define QX_SOURCE_FILE "h0913"
#include "frame/check.h"

#include <cmath>

#include <qxmath/solvers.h>

#include "spline/spline_internal.h"

int h0913(const QX_interp_desc *desc, const double *points, const double *params,
          const double *condparams, const int *condkinds, const double *condvectors, int *nknots,
          double *knots, double *poles)
{
    qx::spline::Size s;
    if (nknots == nullptr ||
        !qx::spline::interp_args(desc, points, params, condparams, condvectors, knots, poles, &s)) {
        merrorflush();
        return -1;
    }
    *nknots = s.nknots;
    const int c1 = desc->n_cond1;
    const bool ends = c1 > 0 && std::fabs(condparams[0] - params[0]) < 1.0e-10 &&
                      std::fabs(condparams[c1 - 1] - params[s.n - 1]) < 1.0e-10;
    const int placed = s.k == 4 && !s.periodic && ends
                           ? knot_seq_order_4(desc, params, condparams, nknots, knots)
                           : h0914_(desc, params, condparams, nknots, knots);
    if (placed == -1) {
        merrorflush();
        return -1;
    }
    // h0913a sends a periodic curve to the dense path.
    return h0913a(desc, points, params, condparams, condkinds, condvectors, knots, poles);
}
