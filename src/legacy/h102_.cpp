// h102_.cpp — a point's position in the XY plane of a frame: its frame coordinates (h100_
// of p - origin) with z replaced by 0, i.e. the coordinates of its foot on that plane.
#define QX_SOURCE_FILE "h102_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h102_(const double p[3], const double f[12], double q[3])
{
    double d[3], r[3];
    qx_space::sub3(p, f + 9, d);
    qx_legacy::to_frame(d, f, r);
    q[0] = r[0];
    q[1] = r[1];
    q[2] = 0.0;
}
