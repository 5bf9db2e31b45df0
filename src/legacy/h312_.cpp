// h312_.cpp — parallelism of two lines each given by two points: the dot product of their
// unit directions (vunt3_'s rule) equal to +-1 under the number tolerance. A null
// direction unitises to zero and so is never parallel.
#define QX_SOURCE_FILE "h312_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h312_(const double a0[3], const double a1[3], const double b0[3], const double b1[3], int *par)
{
    double u[3], v[3];
    qx_space::sub3(a1, a0, u);
    qx_space::sub3(b1, b0, v);
    qx_space::unit(u, u);
    qx_space::unit(v, v);
    *par = qx_legacy::equal_under(std::fabs(qx::vec::dot3(u, v)), 1.0, 0) ? 1 : 0;
}
