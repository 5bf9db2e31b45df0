// h963_.cpp — global to frame components, the same as h100_ (same arithmetic, same bits).
#define QX_SOURCE_FILE "h963_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h963_(const double v[3], const double m[9], double w[3]) { qx_legacy::to_frame(v, m, w); }
