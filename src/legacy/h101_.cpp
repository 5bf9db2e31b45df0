// h101_.cpp — a 4-vector times a 4x4 matrix, w = m v, each element one accumulator over
// c = 0 .. 3 in order.
#define QX_SOURCE_FILE "h101_"

#include <qxmath/numbered.h>

void h101_(const double v[4], const double m[16], double w[4])
{
    for (int r = 0; r < 4; ++r) {
        double s = m[4 * r] * v[0];
        for (int c = 1; c < 4; ++c) s += m[4 * r + c] * v[c];
        w[r] = s;
    }
}
