// h0062_ — a parameter moved by whole periods into the half-open range
// [start, start + period): h0005_'s placement, and one period given back when the result
// lies within the number tolerance of the far end, so that x only ever moves by whole periods.
#define QX_SOURCE_FILE "h0062_"
#include "frame/check.h"

#include <qxmath/numbered.h>

void h0062_(double *x, const double *start, const double *period, int *found)
{
    static const int number_tol = 0;
    *found = 0;
    if (!(*period > 0.0)) return;
    const double lim[2] = {*start, *start + *period};
    double y = 0.0;
    h0005_(x, start, period, &y);
    // h0005_ leaves x where it is when it cannot place it, outside the range.
    double t = y;
    h809_(&t, lim, &number_tol, found);
    if (!*found) return;
    int far = 0;
    h805_(&y, &lim[1], &number_tol, &far);
    *x = far ? y - *period : y;
}
