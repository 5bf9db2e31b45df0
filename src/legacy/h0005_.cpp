// h0005_ — a parameter moved by whole periods into [start, start + period]: the count of
// h006_ with the period flag set, applied once. Either end may be the result; the
// half-open placements of h0062_ and h0063_ share qx_place_half_open, here.
#define QX_SOURCE_FILE "h0005_"
#include "frame/check.h"

#include <qxmath/numbered.h>

#include "legacy/qxmath_internal.h"

namespace
{
// count is 0 when nothing was found, so the result is x then.
double placed(double x, double start, double period)
{
    const double lim[2] = {start, start + period};
    int found = 0, count = 0;
    qx_h006(x, lim, true, period, &found, &count);
    return x + static_cast<double>(count) * period;
}
} // namespace

void h0005_(const double *x, const double *start, const double *period, double *out)
{
    *out = placed(*x, *start, *period);
}

void qx_place_half_open(double *x, double start, double period, bool far_to_start, int *found)
{
    constexpr int number_tol = 0;
    *found = 0;
    if (!(period > 0.0)) return;
    const double lim[2] = {start, start + period};
    const double y = placed(*x, start, period);
    // The placement leaves x where it is when it cannot place it, outside the range; the
    // test snaps a copy: y itself must stay a whole number of periods from x.
    double t = y;
    *found = qx_legacy::snap_into(&t, lim, number_tol);
    if (!*found) return;
    if (!qx_legacy::equal_under(y, lim[1], number_tol))
        *x = y;
    else
        *x = far_to_start ? start : y - period;
}
