// h0005_ — a parameter moved by whole periods into [start, start + period]: the count of
// h006_ with the period flag set, applied once. Either end may be the result; the
// half-open placements are h0062_ and h0063_.
#define QX_SOURCE_FILE "h0005_"
#include "frame/check.h"

#include <qxmath/numbered.h>

void h0005_(const double *x, const double *start, const double *period, double *out)
{
    static const int with_period = 1;
    const double lim[2] = {*start, *start + *period};
    int found = 0, count = 0;
    h006_(x, lim, &with_period, period, &found, &count);
    // count is 0 when nothing was found, so out = x then.
    *out = *x + static_cast<double>(count) * *period;
}
