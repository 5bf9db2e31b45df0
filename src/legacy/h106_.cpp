// h106_.cpp — components in one frame re-expressed in another: back to global by the first
// frame's matrix (h105_), then into the second (h100_), through a local intermediate.
#define QX_SOURCE_FILE "h106_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h106_(const double v[3], const double m1[9], const double m2[9], double w[3])
{
    double g[3];
    qx_space::from_frame(v, m1, g);
    qx_legacy::to_frame(g, m2, w);
}
