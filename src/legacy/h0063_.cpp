// h0063_ — a parameter moved by whole periods into the half-open range
// [start, start + period): h0005_'s placement, with a result within the number tolerance of
// the far end snapped to start exactly, the value callers compare against.
#define QX_SOURCE_FILE "h0063_"
#include "frame/check.h"

#include <qxmath/numbered.h>

#include "legacy/qxmath_internal.h"

void h0063_(double *x, const double *start, const double *period, int *found)
{
    qx_place_half_open(x, *start, *period, true, found);
}
