// h0063_ — a parameter moved by whole periods into the half-open range
// [start, start + period): h0005_'s placement, with a result within the number tolerance of
// the far end snapped to start exactly, the value callers compare against.
#define QX_SOURCE_FILE "h0063_"
#include "frame/check.h"

#include <qxmath/numbered.h>

void h0063_(double *x, const double *start, const double *period, int *found)
{
    static const int number_tol = 0;
    *found = 0;
    if (!(*period > 0.0)) return;
    const double lim[2] = {*start, *start + *period};
    double y = 0.0;
    h0005_(x, start, period, &y);
    double t = y; // h809_ snaps: y itself must stay a whole number of periods from x
    h809_(&t, lim, &number_tol, found);
    if (!*found) return;
    int far = 0;
    h805_(&y, &lim[1], &number_tol, &far);
    *x = far ? *start : y;
}
