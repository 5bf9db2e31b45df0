// h104_.cpp — the homogeneous transform of a point with the perspective divide: all three
// coordinates divided by the same weight h, unguarded (h = 0 gives infinities or NaN).
#define QX_SOURCE_FILE "h104_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h104_(const double p[3], const double m[16], double q[3])
{
    qx_space::transform_point(p, m, q);
}
