// h704_.cpp — the least-squares parameters of t0 a + t1 b ~ w from the 2x2 normal equations
// without fallbacks: the determinant only passes through h000_, so parallel vectors give
// very large parameters rather than a projection.
#define QX_SOURCE_FILE "h704_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h704_(const double w[3], const double a[3], const double b[3], double *t0, double *t1)
{
    const double aa = qx::vec::dot3(a, a), bb = qx::vec::dot3(b, b);
    const double ab = qx::vec::dot3(a, b), aw = qx::vec::dot3(a, w);
    const double bw = qx::vec::dot3(b, w);
    double den = bb * aa - ab * ab;
    h000_(&den);
    const double s0 = (aw * bb - bw * ab) / den;
    const double s1 = (bw * aa - aw * ab) / den;
    *t0 = s0;
    *t1 = s1;
}
