// h956_.cpp — h100_ of v by a frame's matrix, plus the frame's origin component by
// component (the sum as written: no subtraction of the origin first).
#define QX_SOURCE_FILE "h956_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h956_(const double v[3], const double f[12], double w[3])
{
    double r[3];
    qx_legacy::to_frame(v, f, r);
    const double o0 = f[9], o1 = f[10], o2 = f[11];
    w[0] = r[0] + o0;
    w[1] = r[1] + o1;
    w[2] = r[2] + o2;
}
