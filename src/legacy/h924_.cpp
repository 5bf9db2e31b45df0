// h924_.cpp — the reflection matrix of the numbered routines: the 3x3
// I - 2.n.n^T of a unit plane normal n, every argument by address. The
// normal is taken as given; 2.ni.nj is formed as (2.ni).nj, the doubling
// being exact.
#define QX_SOURCE_FILE "h924_"

#include <qxmath/numbered.h>

#include "frame/check.h"

void h924_(const double n[3], double m[9])
{
    const double x = n[0], y = n[1], z = n[2];
    const double xy = -2.0 * x * y, xz = -2.0 * x * z, yz = -2.0 * y * z;
    m[0] = 1.0 - 2.0 * x * x;
    m[1] = xy;
    m[2] = xz;
    m[3] = xy;
    m[4] = 1.0 - 2.0 * y * y;
    m[5] = yz;
    m[6] = xz;
    m[7] = yz;
    m[8] = 1.0 - 2.0 * z * z;
}
