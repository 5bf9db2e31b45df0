// h262_.cpp — the point of a conic for a parameter pair (w1, w2): ellipse
// (type < 3) U = a w1, V = b w2 (cosine and sine of the angle); parabola
// (3) V = w1, U = w1^2 / a (w2 not read); hyperbola (> 3) U = a / w1,
// V = b w2 / w1. Then rotated by the axis (cosine d1, sine d2) and moved to
// the centre. Divisions unguarded; q's z is not written.
#define QX_SOURCE_FILE "h262_"

#include <qxmath/numbered.h>

void h262_(const int *type, const double *a, const double *b, const double *w1, const double *w2,
           const double centre[2], const double *d1, const double *d2, double q[3])
{
    double U, V;
    if (*type < 3) {
        U = *a * *w1;
        V = *b * *w2;
    } else if (*type == 3) {
        V = *w1;
        U = *w1 * *w1 / *a;
    } else {
        U = *a / *w1;
        V = *b * *w2 / *w1;
    }
    const double x = centre[0] + U * *d1 - V * *d2;
    const double y = centre[1] + V * *d1 + U * *d2;
    q[0] = x;
    q[1] = y;
}
