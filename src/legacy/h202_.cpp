// h202_.cpp — coincidence of two points in the XY plane: their squared
// distance compared with zero under the squared length tolerance (entry 2).
#define QX_SOURCE_FILE "h202_"

#include <qxmath/numbered.h>

#include "legacy/qxmath_internal.h"

void h202_(const double p[3], const double q[3], int *eq)
{
    double d2;
    h200_(p, q, &d2);
    *eq = qx_legacy::equal_under(d2, 0.0, 2) ? 1 : 0;
}
