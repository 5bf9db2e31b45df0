// h201_.cpp — the distance of two points in the XY plane: the square root of
// h200_'s squared distance, every argument by address.
#define QX_SOURCE_FILE "h201_"

#include <cmath>

#include <qxmath/numbered.h>

void h201_(const double p[3], const double q[3], double *d)
{
    double d2;
    h200_(p, q, &d2);
    *d = std::sqrt(d2);
}
