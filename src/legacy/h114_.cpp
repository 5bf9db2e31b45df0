// h114_.cpp — the transform of a direction: the image of v less the image of the origin,
// both by h104_ (so a projective m divides each by its own weight, unguarded).
#define QX_SOURCE_FILE "h114_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h114_(const double v[3], const double m[16], double w[3])
{
    static constexpr double origin[3] = {0.0, 0.0, 0.0};
    double a[3], b[3];
    qx_space::transform_point(v, m, a);
    qx_space::transform_point(origin, m, b);
    qx_space::sub3(a, b, w);
}
