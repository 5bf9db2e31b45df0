// h222_.cpp — the length of a circular arc between two points of the XY
// plane: counter-clockwise from p to q (sense 1) or from q to p (any other
// sense). End angles equal under the number tolerance mean a full circle.
#define QX_SOURCE_FILE "h222_"

#include <qxmath/numbered.h>

#include "legacy/qxmath_internal.h"

void h222_(const int *sense, const double *r, const double *c, const double p[3], const double q[3],
           double *len)
{
    const double *from = p, *to = q;
    if (*sense != 1) {
        from = q;
        to = p;
    }
    const double fy = from[1] - c[1], fx = from[0] - c[0];
    const double ty = to[1] - c[1], tx = to[0] - c[0];
    double alpha, beta;
    h053_(&fy, &fx, &alpha);
    h053_(&ty, &tx, &beta);
    if (qx_legacy::equal_under(beta, alpha, 0)) {
        *len = qx_legacy::kTwoPi * *r;
        return;
    }
    if (beta <= alpha) beta += qx_legacy::kTwoPi;
    *len = *r * (beta - alpha);
}
