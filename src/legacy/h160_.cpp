// h160_.cpp — the 3x3 identity.
#define QX_SOURCE_FILE "h160_"

#include <qxmath/numbered.h>

void h160_(double m[9])
{
    for (int k = 0; k < 9; ++k) m[k] = (k % 4 == 0) ? 1.0 : 0.0;
}
