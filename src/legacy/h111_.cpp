// h111_.cpp — the transpose of a 4x4 matrix, element by element.
#define QX_SOURCE_FILE "h111_"

#include <qxmath/numbered.h>

void h111_(const double m[16], double t[16])
{
    for (int r = 0; r < 4; ++r)
        for (int c = 0; c < 4; ++c) t[4 * r + c] = m[4 * c + r];
}
