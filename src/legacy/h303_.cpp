// h303_.cpp — which of two points lies nearer to a third in space: squared distances
// compared exactly, no tolerance; exact equality wins over "a nearer".
#define QX_SOURCE_FILE "h303_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h303_(const double a[3], const double b[3], const double p[3], int *code)
{
    const double da = qx_space::dist2(a, p), db = qx_space::dist2(b, p);
    int k = 1; // a nearer, or a NaN distance
    if (db < da) k = 2;
    if (db == da) k = 3; // deliberately after the strict test
    *code = k;
}
