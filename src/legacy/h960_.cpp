// h960_.cpp — the frame matrix of three points: X along p0 -> p1, Z = unit(X x unit(p2 -
// p1)) (p2 - p1, not p2 - p0, deliberately), Y = Z x X. Rows are written as they are
// formed, so a failure (collinear or coincident points) leaves what was written so far:
// row 0 X (zero when p0 = p1), row 1 unit(p2 - p1), row 2 zero.
#define QX_SOURCE_FILE "h960_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h960_(const double p0[3], const double p1[3], const double p2[3], double m[9], int *ok)
{
    double d[3];
    qx_space::sub3(p1, p0, d);
    qx_space::unit(d, m);
    qx_space::sub3(p2, p1, d);
    qx_space::unit(d, m + 3);
    const int flag = qx_space::unit_cross(m, m + 3, m + 6);
    *ok = flag;
    if (flag == 0) return;
    qx::vec::cross3(m + 6, m, m + 3);
}
