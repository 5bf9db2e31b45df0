// h019_.cpp — least-squares parameters t0, t1 of t0 a + t1 b ~ w from the 2x2 normal
// equations, with fallbacks: a one-vector projection when a and b are parallel, zeros when
// w or both vectors are null. Every test uses the length tolerance (entry 1), the squared
// quantities included.
#define QX_SOURCE_FILE "h019_"

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h019_(const double a[3], const double b[3], const double w[3], double t[2])
{
    qx_space::least_squares_2(a, b, w, t);
}
