// lubksb_a.cpp — forward and back substitution with the LU factors and row
// permutation written by ludcmp_a. Leading zeros of the permuted right-hand
// side are skipped: no product is formed until the first non-zero value.
#define QX_SOURCE_FILE "lubksb_a"
#include "frame/check.h"

#include <cstddef>

#include <qxmath/matrix.h>

void lubksb_a(double *const *a, int n, const int *indx, double *b)
{
    if (n < 1) return;
    const std::size_t nn = static_cast<std::size_t>(n);

    // L.y = P.b. first is the index of the first non-zero value met (a NaN
    // counts as non-zero); until then there is nothing to subtract.
    std::size_t first = nn;
    for (std::size_t i = 0; i < nn; ++i) {
        const std::size_t ip = static_cast<std::size_t>(indx[i]);
        double sum = b[ip];
        b[ip] = b[i];
        if (first < nn) {
            const double *ai = a[i];
            for (std::size_t k = first; k < i; ++k) sum -= ai[k] * b[k];
        } else if (sum != 0.0) {
            first = i;
        }
        b[i] = sum;
    }

    // U.x = y.
    for (std::size_t i = nn; i-- > 0;) {
        const double *ai = a[i];
        double sum = b[i];
        for (std::size_t k = i + 1; k < nn; ++k) sum -= ai[k] * b[k];
        b[i] = sum / ai[i];
    }
}
