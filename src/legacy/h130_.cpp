// h130_.cpp — a 3x3 matrix widened to 4x4: in the upper left, zeros in the fourth column
// and row, 1.0 at [3][3]; the rows are copied three doubles at a time.
#define QX_SOURCE_FILE "h130_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h130_(const double a[9], double m[16]) { qx_space::widen(a, m); }
