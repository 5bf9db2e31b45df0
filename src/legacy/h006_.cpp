// h006_ — the whole number of periods that moves a parameter into a range: the count that
// h0005_, h0062_, h0063_ and h0065_ apply. Classification by h804_, equality by h805_, both
// under the number tolerance; the truncated count is converted by the host's
// int_overflow_to_zero_, so a count beyond int means "not found" rather than overflow.
#define QX_SOURCE_FILE "h006_"
#include "frame/check.h"

#include <climits>
#include <cmath>

#include <qxmath/numbered.h>

#include "legacy/qxmath_internal.h"

using qx_legacy::classify;
using qx_legacy::equal_under;

void h006_(const double *x, const double lim[2], const int *flag, const double *period, int *found,
           int *count)
{
    const bool with_period = *flag == 1;
    qx_h006(*x, lim, with_period, with_period ? *period : 0.0, found, count);
}

void qx_h006(double x, const double lim[2], bool with_period, double period, int *found, int *count)
{
    constexpr int number_tol = 0;
    double range[2] = {lim[0], lim[1]};
    if (range[1] < range[0]) {
        range[0] = lim[1];
        range[1] = lim[0];
    }
    *found = 0;
    *count = 0;

    double t = x; // classify snaps its argument; x itself stays as given
    const int code = classify(&t, range, number_tol);
    if (code == 2 || code == 3 || code == 4) {
        *found = 1;
        return;
    }

    const double p = with_period ? period : range[1] - range[0];
    if (!(p > 0.0)) return;

    // Below the range x climbs towards lo, above it falls towards hi.
    const bool below = code == 1;
    const double end = below ? range[0] : range[1];
    const double q = (end - x) / p;
    int k = int_overflow_to_zero_(&q);
    if (k == 0 && !(std::fabs(q) < 1.0)) return; // NaN or beyond int

    double y = x + static_cast<double>(k) * p;
    if (!equal_under(y, end, number_tol) && (below ? y < end : y > end)) {
        // The truncated count falls short of the end: one period more.
        if (k == (below ? INT_MAX : INT_MIN)) return;
        k += below ? 1 : -1;
        y = x + static_cast<double>(k) * p;
    }

    // y has reached the near end; it is in the range unless it passed the far end too.
    const double far = below ? range[1] : range[0];
    if (equal_under(y, far, number_tol) || (below ? y <= far : y >= far)) {
        *found = 1;
        *count = k;
    }
}
