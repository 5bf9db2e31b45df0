// h123_.cpp — a 4x4 matrix times a widened 3x3: c = b (widened a), by h121_ on a local
// widening of a (h130_), so the second argument again multiplies from the left.
#define QX_SOURCE_FILE "h123_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h123_(const double a[9], const double b[16], double c[16])
{
    double w[16];
    qx_space::widen(a, w);
    qx_space::product_4(w, b, c);
}
