// h961_.cpp — a length scaled by a scaled frame's factor: y = |scale| x.
#define QX_SOURCE_FILE "h961_"

#include <cmath>

#include <qxmath/numbered.h>

void h961_(const double *x, const double f[13], double *y) { *y = std::fabs(f[12]) * *x; }
