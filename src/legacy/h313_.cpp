// h313_.cpp — the distance between two lines each given by two points: h315_ with the
// directions a1 - a0 and b1 - b0.
#define QX_SOURCE_FILE "h313_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h313_(const double a0[3], const double a1[3], const double b0[3], const double b1[3],
           double *d)
{
    double u0[3], u1[3];
    qx_space::sub3(a1, a0, u0);
    qx_space::sub3(b1, b0, u1);
    *d = qx_space::lines_distance(a0, u0, b0, u1);
}
