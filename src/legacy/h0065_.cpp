// h0065_ — a parameter moved into the half-open range [lo, hi) that is itself one period
// (a closed curve's parameter range): h006_'s count with the range length as period, a
// result within the number tolerance of hi snapped to lo and counted as one period less.
#define QX_SOURCE_FILE "h0065_"
#include "frame/check.h"

#include <climits>

#include <qxmath/numbered.h>

#include "legacy/qxmath_internal.h"

void h0065_(double *x, const double lim[2], int *count, int *found)
{
    constexpr int number_tol = 0;
    const double lo = lim[0] < lim[1] ? lim[0] : lim[1];
    const double hi = lim[0] < lim[1] ? lim[1] : lim[0];
    const double p = hi - lo;
    *count = 0;
    *found = 0;
    if (!(p > 0.0)) return;
    int k = 0;
    qx_h006(*x, lim, false, p, found, &k);
    if (!*found) return;
    double y = *x + static_cast<double>(k) * p;
    if (qx_legacy::equal_under(y, hi, number_tol)) {
        if (k == INT_MIN) { // one period less does not fit: as a count beyond int
            *found = 0;
            return;
        }
        y = lo;
        --k;
    }
    *x = y;
    *count = k;
}
