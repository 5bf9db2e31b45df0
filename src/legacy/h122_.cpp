// h122_.cpp — the 3x3 product c = b a^T (c[i][j] = row i of b . row j of a): b's axes in
// the frame of a. Reversed against the reading of its arguments, deliberately.
#define QX_SOURCE_FILE "h122_"

#include <qxmath/numbered.h>

void h122_(const double a[9], const double b[9], double c[9])
{
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            double s = b[3 * i] * a[3 * j];
            s += b[3 * i + 1] * a[3 * j + 1];
            s += b[3 * i + 2] * a[3 * j + 2];
            c[3 * i + j] = s;
        }
}
