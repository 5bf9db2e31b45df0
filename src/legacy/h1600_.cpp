// h1600_.cpp — a normal turned towards a point: n is negated when n . (p1 - p0) < 0, left
// alone when that projection is within the number tolerance of 0 (ok = 0).
#define QX_SOURCE_FILE "h1600_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h1600_(const double p0[3], const double p1[3], double n[3], int *ok)
{
    double w[3];
    qx_space::sub3(p1, p0, w);
    const double d = qx::vec::dot3(n, w);
    if (qx_legacy::equal_under(d, 0.0, 0)) {
        *ok = 0;
        return;
    }
    *ok = 1;
    if (d < 0.0) {
        n[0] = -n[0];
        n[1] = -n[1];
        n[2] = -n[2];
    }
}
