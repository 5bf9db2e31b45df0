// h922_.cpp — a scalar 3x3 matrix s I.
#define QX_SOURCE_FILE "h922_"

#include <qxmath/numbered.h>

void h922_(const double *s, double m[9])
{
    const double v = *s;
    for (int k = 0; k < 9; ++k) m[k] = (k % 4 == 0) ? v : 0.0;
}
