// h0917 — the knot span of a parameter, as defined in spline.h, found by
// bisection (span_find also gallops from a hint, so that the row assembly,
// whose rows come in parameter order, pays O(1) per row).
//
// For non-decreasing knots without NaN the definition reduces to three
// searches: inside, the last i with knots[i] <= t (then knots[i + 1] > t);
// at or past the last knot, the index before the first knot equal to the
// last; at or before the first knot, the last knot equal to the first.
// Every search keeps its indices in 0 ... count - 1 whatever the knots
// hold.
#define QX_SOURCE_FILE "h0917"
#include "frame/check.h"

#include <cstddef>

#include "spline/spline_internal.h"

namespace
{

using Index = std::ptrdiff_t;

// With knots[lo] <= t < knots[hi] (lo < hi; hi may be one past the end,
// it is never read), the last i in lo ... hi - 1 with knots[i] <= t.
Index bisect(double t, const double *knots, Index lo, Index hi)
{
    while (hi - lo > 1) {
        const Index mid = lo + (hi - lo) / 2;
        if (knots[mid] <= t)
            lo = mid;
        else
            hi = mid;
    }
    return lo;
}

// The first index whose knot is >= x (count when none); knots[0] < x is
// known, so the result is at least 1.
Index first_not_below(double x, const double *knots, Index count)
{
    Index lo = 0, hi = count; // knots[lo] < x; knots[hi] >= x or hi == count
    while (hi - lo > 1) {
        const Index mid = lo + (hi - lo) / 2;
        if (knots[mid] < x)
            lo = mid;
        else
            hi = mid;
    }
    return hi;
}

// Inside the knots (knots[0] < t < knots[count - 1]): bracket t around the
// hint by doubling steps, then bisect.
Index inside(double t, const double *knots, Index count, Index hint)
{
    const Index top = count - 1;
    if (hint < 0 || hint >= top) return bisect(t, knots, 0, top);
    Index lo, hi;
    if (knots[hint] <= t) {
        lo = hint;
        Index step = 1;
        while (lo + step < top && knots[lo + step] <= t) {
            lo += step;
            step *= 2;
        }
        hi = lo + step < top ? lo + step : top;
    } else {
        hi = hint;
        Index step = 1;
        while (hi - step > 0 && knots[hi - step] > t) {
            hi -= step;
            step *= 2;
        }
        lo = hi - step > 0 ? hi - step : 0;
    }
    return bisect(t, knots, lo, hi);
}

} // namespace

namespace qx::spline
{

int span_find(double t, const double *knots, int count, double tolerance, int hint)
{
    if (knots == nullptr || count < 1) return -1;
    const Index n = count;
    const double first = knots[0], last = knots[n - 1];
    if (t < first - tolerance || t > last + tolerance) return -1;
    Index i = -1;
    if (first < t && t < last) {
        i = inside(t, knots, n, hint);
    } else if (t >= last) {
        // The index before the first knot equal to the last; none when the
        // first knot is already equal to it.
        i = knots[0] < last ? first_not_below(last, knots, n) - 1 : -1;
    } else if (t <= first) {
        const Index j = bisect(first, knots, 0, n); // the last knot equal to the first
        i = j < n - 1 ? j : -1;
    }
    return static_cast<int>(i);
}

} // namespace qx::spline

int h0917(double t, const double *knots, int count, double tolerance)
{
    return qx::spline::span_find(t, knots, count, tolerance, -1);
}
