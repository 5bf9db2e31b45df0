// h0062_ — a parameter moved by whole periods into the half-open range
// [start, start + period): h0005_'s placement, and one period given back when the result
// lies within the number tolerance of the far end, so that x only ever moves by whole periods.
#define QX_SOURCE_FILE "h0062_"
#include "frame/check.h"

#include <qxmath/numbered.h>

#include "legacy/qxmath_internal.h"

void h0062_(double *x, const double *start, const double *period, int *found)
{
    qx_place_half_open(x, *start, *period, false, found);
}
