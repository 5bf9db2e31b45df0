// h116_.cpp — the weighted sum of four vectors, w = c0 a + c1 b + c2 d + c3 e, summed left
// to right per component (the blend of the four-point curve forms).
#define QX_SOURCE_FILE "h116_"

#include <qxmath/numbered.h>

void h116_(const double c[4], const double a[3], const double b[3], const double d[3],
           const double e[3], double w[3])
{
    const double c0 = c[0], c1 = c[1], c2 = c[2], c3 = c[3];
    for (int k = 0; k < 3; ++k) w[k] = c0 * a[k] + c1 * b[k] + c2 * d[k] + c3 * e[k];
}
