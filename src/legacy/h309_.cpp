// h309_.cpp — the segment p0p1 offset by d within the plane of p0, p1, p2, towards p2's
// side: v = unit((a x b) x a) with a = p1 - p0, b = p2 - p0 (vcru3_, flag not examined, so
// collinear or coincident points give v = 0 and the segment itself).
#define QX_SOURCE_FILE "h309_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h309_(const double p0[3], const double p1[3], const double p2[3], const double *d,
           double q0[3], double q1[3])
{
    double a[3], b[3], n[3], v[3];
    qx_space::sub3(p1, p0, a);
    qx_space::sub3(p2, p0, b);
    qx::vec::cross3(a, b, n);
    qx_space::unit_cross(n, a, v);
    const double s = *d;
    double r0[3], r1[3];
    for (int k = 0; k < 3; ++k) {
        r0[k] = p0[k] + s * v[k];
        r1[k] = p1[k] + s * v[k];
    }
    for (int k = 0; k < 3; ++k) {
        q0[k] = r0[k];
        q1[k] = r1[k];
    }
}
