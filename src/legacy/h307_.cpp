// h307_.cpp — coincidence of two points in space under an explicit tolerance on the
// (unsquared) distance, boundary included.
#define QX_SOURCE_FILE "h307_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h307_(const double p[3], const double q[3], const double *t, int *eq)
{
    *eq = std::sqrt(qx_space::dist2(p, q)) <= std::fabs(*t) ? 1 : 0;
}
