// h221_.cpp — h224_'s two angles in degrees (each multiplied by the stored
// factor 57.29577951308235).
#define QX_SOURCE_FILE "h221_"

#include <qxmath/numbered.h>

void h221_(const double p[3], const double q[3], const double c[3], double ang[2])
{
    h224_(p, q, c, ang);
    ang[0] *= 57.29577951308235;
    ang[1] *= 57.29577951308235;
}
