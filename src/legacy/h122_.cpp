// h122_.cpp — the 3x3 product c = b a^T (c[i][j] = row i of b . row j of a): b's axes in
// the frame of a. Reversed against the reading of its arguments, deliberately.
#define QX_SOURCE_FILE "h122_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h122_(const double a[9], const double b[9], double c[9]) { qx_space::product_bat(a, b, c); }
