// h319_.cpp — a point on the segment ab under tolerance: its distance from the line
// within the length tolerance, then its projection parameter in [0, 1] with the ends
// widened by the number tolerance (h809_). a = b is not guarded: the distance is 0 and the
// parameter 0/0, which is on no segment.
#define QX_SOURCE_FILE "h319_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h319_(const double p[3], const double a[3], const double b[3], int *on)
{
    double u[3];
    qx_space::sub3(b, a, u);
    if (!qx_legacy::equal_under(qx_space::line_distance(p, a, u), 0.0, 1)) {
        *on = 0;
        return;
    }
    double t = qx_space::segment_parameter(p, a, b);
    const double unit_range[2] = {0.0, 1.0};
    *on = qx_legacy::snap_into(&t, unit_range, 0);
}
