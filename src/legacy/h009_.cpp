// h009_ — one angular range covering two: their union (h010_) when it is one range or the
// whole circle, otherwise the union with the shorter of its two gaps filled.
#define QX_SOURCE_FILE "h009_"
#include "frame/check.h"

#include <qxmath/numbered.h>

#include "legacy/angular_range.h"

using qx_legacy::kTwoPi;

namespace
{
// The counter-clockwise angle from a to b, in [0, 2pi).
double ccw_gap(double a, double b) { return b < a ? b - a + kTwoPi : b - a; }
} // namespace

void h009_(const double r1[2], const double r2[2], double out[2], int *code)
{
    double u[4] = {0.0, 0.0, 0.0, 0.0};
    qx_h010(r1, r2, u, code);
    out[0] = u[0];
    out[1] = u[1];
    if (*code != 2) return;
    // u[0..1] holds r1; fill the gap after it unless the one after u[2..3] is shorter.
    if (ccw_gap(u[1], u[2]) <= ccw_gap(u[3], u[0]))
        out[1] = u[3];
    else
        out[0] = u[2];
}
