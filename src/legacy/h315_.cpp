// h315_.cpp — the distance between two lines, each a point and a direction: the projection
// of p0 - p1 on the unit common normal unit(u0 x u1). Parallel or null directions (vcru3_
// fails) fall back to the distance of p0 from the second line.
#define QX_SOURCE_FILE "h315_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h315_(const double p0[3], const double u0[3], const double p1[3], const double u1[3],
           double *d)
{
    *d = qx_space::lines_distance(p0, u0, p1, u1);
}
