// h150_.cpp — c = b a^T, h122_'s product formed by its own loop (row i of b times the
// columns of a^T, k = 0, 1, 2 in order), so both give the same bits.
#define QX_SOURCE_FILE "h150_"

#include <qxmath/numbered.h>

void h150_(const double a[9], const double b[9], double c[9])
{
    for (int i = 0; i < 3; ++i) {
        const double *bi = b + 3 * i;
        for (int j = 0; j < 3; ++j) {
            const double *aj = a + 3 * j;
            double s = bi[0] * aj[0];
            for (int k = 1; k < 3; ++k) s += bi[k] * aj[k];
            c[3 * i + j] = s;
        }
    }
}
