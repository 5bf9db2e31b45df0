// bspline_utilities — mbasiseval, the d + 1 B-spline basis functions of
// degree d that are non-zero at a parameter. The span is found by bisection
// over the whole knot vector (the last knot <= t, clamped into the spans that
// carry d + 1 functions), and the values come from the triangular Cox-de
// Boor recurrence in place (left and right differences, one division per
// value and level; degrees 1 to 3 unrolled, same arithmetic). Failures go to
// the error state of solvers.h (2900, level 4); the outputs are then left
// alone.
#define QX_SOURCE_FILE "bspline_utilities"
#include "frame/check.h"

#include <climits>
#include <cmath>

#include <qxmath/solvers.h>
#include <qxmath/spline.h>

#include "frame/general_utilities.h"

namespace
{

// The recurrence keeps its values and differences in arrays of this size.
constexpr int kMaxOrder = 25;

// Knot equality at the ends of the range.
constexpr double kAbsTol = 1.0e-10;
constexpr double kRelTol = 1.0e-15;

// The reporting place of merrorpush.
const char place_outside[1] = {};

// The last index lo in [0, last - 1] with knots[lo] <= t (a run of equal
// knots gives its last member; t below knots[0] gives 0, t at or above
// knots[last] gives last - 1): on a non-decreasing vector the index the
// plain bisection finds. The window halves by its length rather than by two
// bounds, so each step is one select that compiles to a conditional move:
// random parameters cost no mispredicted branches.
inline unsigned bisect(const double *knots, unsigned last, double t)
{
    unsigned lo = 0, len = last;
    while (len > 1) {
        const unsigned half = len / 2;
        lo = t >= knots[lo + half] ? lo + half : lo;
        len -= half;
    }
    return lo;
}

// The triangular recurrence on span i, degree Fixed when that is > 0 (the
// loops then unroll and the values stay in registers: about a fifth faster
// for cubics, same operations), otherwise degree d_any. At level j the value
// of function r is divided by the knot span it covers, right[r + 1] +
// left[j - r]; the share right[r + 1] * temp stays with function r,
// left[j - r] * temp moves up to function r + 1, and the top function
// starts from zero.
template <int Fixed> void basis(const double *knots, int d_any, int i, double t, double *values)
{
    const int d = Fixed > 0 ? Fixed : d_any;
    double left[kMaxOrder], right[kMaxOrder], n[kMaxOrder];
    n[0] = 1.0;
#pragma GCC unroll 8
    for (int j = 1; j <= d; ++j) {
        left[j] = t - knots[i + 1 - j];
        right[j] = knots[i + j] - t;
        double saved = 0.0;
#pragma GCC unroll 8
        for (int r = 0; r < j; ++r) {
            const double temp = n[r] / (right[r + 1] + left[j - r]);
            n[r] = saved + right[r + 1] * temp;
            saved = left[j - r] * temp;
        }
        n[j] = saved;
    }
#pragma GCC unroll 8
    for (int r = 0; r <= d; ++r) values[r] = n[r];
}

} // namespace

void mbasiseval(int d, int s, const double *knots, double t, int *first, double *values)
{
    // A description with no span to evaluate on (or one the work arrays
    // cannot hold, or whose last index is not an int) has no knot range.
    if (d < 0 || d >= kMaxOrder || s < 1 || s > INT_MAX - 2 * d || knots == nullptr ||
        first == nullptr || values == nullptr) {
        merrorpush(place_outside, QX_MERR_OUTSIDE_KNOTS, QX_MERR_LEVEL);
        return;
    }
    const int last = s + 2 * d;
    // The exact test first: it is the first thing the tolerant one tries.
    // An infinite t is refused before the tolerant test, whose relative
    // part (|t - end| <= rel * max(|t|, |end|)) would admit it.
    if (!(knots[0] <= t && t <= knots[last]) &&
        (std::isinf(t) || !mx_in_closed_interval(t, knots[0], knots[last], kAbsTol, kRelTol))) {
        merrorpush(place_outside, QX_MERR_OUTSIDE_KNOTS, QX_MERR_LEVEL);
        return;
    }

    int i = static_cast<int>(bisect(knots, static_cast<unsigned>(last), t));
    // At or past the right end: the last span that carries d + 1 functions.
    if (i > last - (d + 1)) i = last - (d + 1);
    // Below knots[d] (t tolerantly below a clamped start, or in the leading
    // spans of an unclamped vector) the first such span, so that the
    // recurrence never reads before knots[0].
    if (i < d) i = d;

    switch (d) {
    case 1:
        basis<1>(knots, d, i, t, values);
        break;
    case 2:
        basis<2>(knots, d, i, t, values);
        break;
    case 3:
        basis<3>(knots, d, i, t, values);
        break;
    default:
        basis<0>(knots, d, i, t, values);
        break;
    }
    *first = i - d;
}
