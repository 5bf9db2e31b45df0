// h105_.cpp — frame components back to global ones: w = m^T v, the transpose of h100_.
#define QX_SOURCE_FILE "h105_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h105_(const double v[3], const double m[9], double w[3]) { qx_space::from_frame(v, m, w); }
