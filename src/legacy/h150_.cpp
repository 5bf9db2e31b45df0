// h150_.cpp — c = b a^T, the same product as h122_ (the same kernel, so the same bits).
#define QX_SOURCE_FILE "h150_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h150_(const double a[9], const double b[9], double c[9]) { qx_space::product_bat(a, b, c); }
