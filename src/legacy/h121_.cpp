// h121_.cpp — the 4x4 product c = b a: the second argument multiplies from the left,
// deliberately reversed against the reading "a times b". One accumulator per element.
#define QX_SOURCE_FILE "h121_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h121_(const double a[16], const double b[16], double c[16]) { qx_space::product_4(a, b, c); }
