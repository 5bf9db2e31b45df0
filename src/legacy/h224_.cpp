// h224_.cpp — the angles of two points around a centre in the XY plane, each
// by h053_ in [0, 2*pi).
#define QX_SOURCE_FILE "h224_"

#include <qxmath/numbered.h>

void h224_(const double p[3], const double q[3], const double c[3], double ang[2])
{
    const double sp = p[1] - c[1], cp = p[0] - c[0];
    const double sq = q[1] - c[1], cq = q[0] - c[0];
    double a0, a1;
    h053_(&sp, &cp, &a0);
    h053_(&sq, &cq, &a1);
    ang[0] = a0;
    ang[1] = a1;
}
