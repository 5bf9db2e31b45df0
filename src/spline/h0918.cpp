// h0918 — the span of a parameter for a B-spline of order k, with the
// parameter clamped into the curve's range (the condition rows of the
// interpolation take their spans from here). The span is searched before
// the clamp and returned as found; the clamp at the top lowers t by 5.0e-13
// below the range's end so that it evaluates inside the last span.
#define QX_SOURCE_FILE "h0918"
#include "frame/check.h"

#include "spline/spline_internal.h"

namespace qx::spline
{

int span_clamp(double *t, const double *knots, int count, int k, int hint)
{
    if (t == nullptr || k < 1) return -1;
    const int i = span_find(*t, knots, count, kClampTolerance, hint);
    // Also keeps k - 1 and count - k inside the vector.
    if (i < k - 1 || i > count - k - 1) return -1;
    const double lo = knots[k - 1], hi = knots[count - k];
    if (*t < lo - kClampTolerance || *t > hi + kClampTolerance) return -1;
    if (*t <= lo) *t = lo;
    if (*t >= hi) *t = hi - kEndLowering;
    return i;
}

} // namespace qx::spline

int h0918(double *t, const double *knots, int count, int k)
{
    return qx::spline::span_clamp(t, knots, count, k, -1);
}
