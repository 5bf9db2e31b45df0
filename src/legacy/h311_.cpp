// h311_.cpp — the distance of a point from the line through two points: h310_ with the
// direction b - a.
#define QX_SOURCE_FILE "h311_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h311_(const double p[3], const double a[3], const double b[3], double *d)
{
    double u[3];
    qx_space::sub3(b, a, u);
    *d = qx_space::line_distance(p, a, u);
}
