// h310_.cpp — the distance of a point from a line given by a point and a direction of any
// length: |unit(u) x (p - a)|. The direction is unitised by vunt3_'s rule and its flag is
// not examined, so a null direction gives a zero vector and the distance 0.
#define QX_SOURCE_FILE "h310_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h310_(const double p[3], const double a[3], const double u[3], double *d)
{
    *d = qx_space::line_distance(p, a, u);
}
