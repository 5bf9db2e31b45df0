// h316_.cpp — the closest points of two lines p0 + t0 u0 and p1 + t1 u1, by h019_ on
// (u0, -u1, p1 - p0). h019_'s fallbacks decide the degenerate cases: parallel lines give
// t1 = 0 and the foot of p1 on the first line; coincident base points give t0 = t1 = 0.
#define QX_SOURCE_FILE "h316_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h316_(const double p0[3], const double u0[3], const double p1[3], const double u1[3],
           double *t0, double *t1, double q0[3], double q1[3])
{
    const double b[3] = {-u1[0], -u1[1], -u1[2]};
    double w[3], t[2];
    qx_space::sub3(p1, p0, w);
    qx_space::least_squares_2(u0, b, w, t);
    double r0[3], r1[3];
    for (int k = 0; k < 3; ++k) {
        r0[k] = p0[k] + t[0] * u0[k];
        r1[k] = p1[k] + t[1] * u1[k];
    }
    *t0 = t[0];
    *t1 = t[1];
    for (int k = 0; k < 3; ++k) {
        q0[k] = r0[k];
        q1[k] = r1[k];
    }
}
