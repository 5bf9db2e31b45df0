// h318_.cpp — the parameter of a point's projection onto the segment ab and whether it lies
// on the segment, 0 <= t <= 1 exactly. The squared length is the square of a square root,
// and a = b is not guarded (0/0: t is NaN, inside 0).
#define QX_SOURCE_FILE "h318_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h318_(const double p[3], const double a[3], const double b[3], int *inside, double *t)
{
    const double s = qx_space::segment_parameter(p, a, b);
    *inside = (0.0 <= s && s <= 1.0) ? 1 : 0;
    *t = s;
}
