// h302_.cpp — coincidence of two points in space: their squared distance against the
// squared length tolerance (entry 2), compared as h805_ compares, boundary included.
#define QX_SOURCE_FILE "h302_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h302_(const double p[3], const double q[3], int *eq)
{
    *eq = qx_legacy::equal_under(qx_space::dist2(p, q), 0.0, 2) ? 1 : 0;
}
