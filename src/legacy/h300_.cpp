// h300_.cpp — the squared distance of two points in space (summed x, y, z).
#define QX_SOURCE_FILE "h300_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h300_(const double p[3], const double q[3], double *d2) { *d2 = qx_space::dist2(p, q); }
