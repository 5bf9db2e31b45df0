// h306_.cpp — coarse coincidence of two points in space: the squared distance against the
// magnitude of the coarse squared tolerance (entry 7), boundary included.
#define QX_SOURCE_FILE "h306_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h306_(const double p[3], const double q[3], int *eq)
{
    *eq = qx_space::dist2(p, q) <= std::fabs(qx_tolerance(7)) ? 1 : 0;
}
