// h314_.cpp — the projection of a point onto the line p0p1 in the XY plane: the parameter t
// along p1 - p0 and the foot f (x and y only). A segment whose squared XY length is within
// the number tolerance of 0 (the plain tolerance on a squared length, deliberately) gives
// t = 0 and f = p0.
#define QX_SOURCE_FILE "h314_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h314_(const double p0[3], const double p1[3], const double q[3], double f[3], double *t)
{
    const double x0 = p0[0], y0 = p0[1];
    const double dx = p1[0] - x0, dy = p1[1] - y0;
    const double den = dx * dx + dy * dy;
    if (qx_legacy::equal_under(den, 0.0, 0)) {
        *t = 0.0;
        f[0] = x0;
        f[1] = y0;
        return;
    }
    const double s = ((q[0] - x0) * dx + (q[1] - y0) * dy) / den;
    *t = s;
    f[0] = x0 + s * dx;
    f[1] = y0 + s * dy;
}
