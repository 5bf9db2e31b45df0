// bc_xyz_box.cpp — a coordinate box that contains a rational B-curve over a
// parameter range.
//
// Method: every knot span met by the range is cut to the range and turned
// into the Bezier form of that piece through the polar form (de Boor's
// algorithm with different arguments per level: only convex combinations of
// the span's poles, so nothing grows). A piece whose Bezier weights share one
// sign lies in the hull of its Bezier points' 3-D points. Pieces whose hull
// box overshoots the curve points found so far are halved (de Casteljau)
// until the box is tight; pieces whose weights are mixed are halved until
// the signs settle, which proves the denominator has no zero there, or the
// call gives up with BC_BOX_UNBOUNDED. Each piece's box is widened by a
// bound of its rounding. Nothing is sampled and nothing is reported.
//
// The steps that the numbered routines k71433_ (parameter range of the
// curve), e4322_ (span location), em0912_ (a span's piece in Bezier form),
// em0926_ (halving a piece) and e0925_ (bounding a piece) take in the
// older code are internal helpers here, with the contracts written beside
// each: their exported by-address forms are not part of this interface.
#define QX_SOURCE_FILE "bc_xyz_box"

#include <cfloat>
#include <climits>
#include <cmath>
#include <cstddef>
#include <cstring>

#include <qxmath/pole.h>
#include <qxmath/qxhost.h>

#include "frame/check.h"

namespace
{

constexpr double kRangeSnap = 1e-10; // range ends this close outside the domain move onto it
constexpr double kTightRel = 1e-3;   // allowed overshoot, relative to the curve's extent
constexpr int kTightDepth = 10;      // halvings deep for tightness
constexpr int kSignDepth = 40;       // halvings deep to settle the weights' signs
constexpr int kSplitBudget = 512;    // halvings per span
constexpr double kPadUlps = 16.0;    // rounding bound per conversion step, in ulps

struct Box {
    double lo[3], hi[3];
};

void box_clear(Box *b)
{
    for (int c = 0; c < 3; ++c) {
        b->lo[c] = HUGE_VAL;
        b->hi[c] = -HUGE_VAL;
    }
}

void box_add_point(Box *b, const double p[3])
{
    for (int c = 0; c < 3; ++c) {
        if (p[c] < b->lo[c]) b->lo[c] = p[c];
        if (p[c] > b->hi[c]) b->hi[c] = p[c];
    }
}

void box_add_box(Box *b, const Box &a)
{
    box_add_point(b, a.lo);
    box_add_point(b, a.hi);
}

// Adds the 3-D point of the homogeneous point H when it has one.
void box_add_homogeneous(Box *b, const double H[4])
{
    if (H[3] == 0.0) return;
    const double p[3] = {H[0] / H[3], H[1] / H[3], H[2] / H[3]};
    if (std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2])) box_add_point(b, p);
}

double box_largest_side(const Box &b)
{
    double s = 0.0;
    for (int c = 0; c < 3; ++c)
        if (b.hi[c] - b.lo[c] > s) s = b.hi[c] - b.lo[c];
    return s;
}

bool box_within(const Box &inner, const Box &outer, double tol)
{
    for (int c = 0; c < 3; ++c)
        if (inner.lo[c] < outer.lo[c] - tol || inner.hi[c] > outer.hi[c] + tol) return false;
    return true;
}

// (k71433_) The curve's whole parameter range [t[k-1], t[n]].
void curve_domain(const double *t, int k, int n, double *t0, double *t1)
{
    *t0 = t[k - 1];
    *t1 = t[n];
}

// (e4322_) The span j in [k-1, n-1] with t[j] <= u < t[j+1]; for u at or
// beyond t[n], the last non-empty span. u must lie in [t[k-1], t[n]] and
// that domain must be non-empty, so the span found is non-empty.
int locate_span(const double *t, int k, int n, double u)
{
    if (u >= t[n]) {
        int j = n - 1;
        while (!(t[j] < t[j + 1])) --j;
        return j;
    }
    int lo = k - 1, hi = n; // t[lo] <= u < t[hi]
    while (hi - lo > 1) {
        const int mid = lo + (hi - lo) / 2;
        if (t[mid] <= u)
            lo = mid;
        else
            hi = mid;
    }
    return lo;
}

// The polar form of span j's polynomial (4-D) at (u1 taken m times, u0 the
// other k-1-m times): de Boor's triangle from the span's poles
// P[j-k+1 .. j], with argument u1 on the first m levels. For arguments in
// [t[j], t[j+1]] every factor lies in [0, 1]. work: 4k doubles.
void polar_form(const double *P, const double *t, int k, int j, double u0, double u1, int m,
                double *work, double out[4])
{
    const int first = j - k + 1;
    std::memcpy(work, P + 4 * static_cast<std::ptrdiff_t>(first),
                4 * static_cast<std::size_t>(k) * sizeof(double));
    for (int r = 1; r < k; ++r) {
        const double x = r <= m ? u1 : u0;
        for (int i = k - 1; i >= r; --i) {
            const int g = first + i;
            const double a = (x - t[g]) / (t[g + k - r] - t[g]);
            const double b = 1.0 - a;
            double *d = work + 4 * i;
            for (int c = 0; c < 4; ++c) d[c] = b * d[c - 4] + a * d[c];
        }
    }
    std::memcpy(out, work + 4 * (k - 1), 4 * sizeof(double));
}

// (em0912_) The Bezier points Q[k x 4] of span j's piece over [u0, u1].
void span_piece(const double *P, const double *t, int k, int j, double u0, double u1, double *work,
                double *Q)
{
    for (int m = 0; m < k; ++m) polar_form(P, t, k, j, u0, u1, m, work, Q + 4 * m);
}

// (em0926_) Halves the Bezier piece A[k x 4] at its parameter midpoint:
// A := the first half, B := the second.
void halve_piece(double *A, double *B, int k)
{
    std::memcpy(B, A, 4 * static_cast<std::size_t>(k) * sizeof(double));
    for (int r = 1; r < k; ++r) {
        for (int i = 0; i < k - r; ++i)
            for (int c = 0; c < 4; ++c) B[4 * i + c] = 0.5 * (B[4 * i + c] + B[4 * i + 4 + c]);
        std::memcpy(A + 4 * r, B, 4 * sizeof(double));
    }
}

enum Verdict { kBounded, kMixed, kUnbounded };

// (e0925_) Bounds the Bezier piece Q[k x 4]. kUnbounded when a weight at an
// end is zero (or NaN), the end weights differ in sign, or a 3-D point or the
// rounding bound overflows; kMixed when only inner weights break the sign;
// else kBounded with the hull box of the 3-D points in *raw and the bound of
// the rounding (conversion from poles of magnitude up to mag, depth
// halvings) in *pad.
Verdict bound_piece(const double *Q, int k, double mag, int depth, Box *raw, double *pad)
{
    const double w0 = Q[3], w1 = Q[4 * (k - 1) + 3];
    if (!(w0 > 0.0 || w0 < 0.0)) return kUnbounded;
    const double s = w0 > 0.0 ? 1.0 : -1.0;
    if (!(s * w1 > 0.0)) return kUnbounded;
    for (int i = 1; i < k - 1; ++i)
        if (!(s * Q[4 * i + 3] > 0.0)) return kMixed;
    box_clear(raw);
    double wmin = HUGE_VAL, xmax = 0.0;
    for (int i = 0; i < k; ++i) {
        const double *H = Q + 4 * i;
        const double p[3] = {H[0] / H[3], H[1] / H[3], H[2] / H[3]};
        for (int c = 0; c < 3; ++c) {
            if (!std::isfinite(p[c])) return kUnbounded;
            if (std::fabs(p[c]) > xmax) xmax = std::fabs(p[c]);
        }
        if (std::fabs(H[3]) < wmin) wmin = std::fabs(H[3]);
        box_add_point(raw, p);
    }
    // Each polar-form level and halving errs by a few ulps of mag in X and W;
    // x = X/W then errs by about that times (1 + |x|)/|W|.
    *pad = kPadUlps * DBL_EPSILON * static_cast<double>(k + depth) * mag * (1.0 + xmax) / wmin;
    return std::isfinite(*pad) ? kBounded : kUnbounded;
}

// True when the k poles of span j are all finite; *mag := their largest
// magnitude.
bool span_poles_finite(const double *P, int k, int j, double *mag)
{
    const double *S = P + 4 * static_cast<std::ptrdiff_t>(j - k + 1);
    double m = 0.0;
    for (int i = 0; i < 4 * k; ++i) {
        if (!std::isfinite(S[i])) return false;
        if (std::fabs(S[i]) > m) m = std::fabs(S[i]);
    }
    *mag = m;
    return true;
}

// Checks the record; BC_BOX_OK when it describes a curve.
int check_curve(const BC_CURVE *curve)
{
    if (curve == nullptr || curve->poles == nullptr || curve->knots == nullptr)
        return BC_BOX_BAD_CURVE;
    const int k = curve->order, n = curve->num_poles;
    if (k < 1 || n < k || n > INT_MAX - k) return BC_BOX_BAD_CURVE;
    const double *t = curve->knots;
    for (int i = 0; i < n + k; ++i) {
        if (!std::isfinite(t[i])) return BC_BOX_BAD_CURVE;
        if (i > 0 && t[i] < t[i - 1]) return BC_BOX_BAD_CURVE;
    }
    return t[k - 1] < t[n] ? BC_BOX_OK : BC_BOX_BAD_CURVE;
}

// Moves u onto [t0, t1] when it lies outside by at most kRangeSnap.
bool snap_into(double *u, double t0, double t1)
{
    if (*u < t0) {
        if (t0 - *u > kRangeSnap) return false;
        *u = t0;
    } else if (*u > t1) {
        if (*u - t1 > kRangeSnap) return false;
        *u = t1;
    }
    return true;
}

// The spans met by [a, b], each cut to the range: span j, piece [u0, u1].
// Empty spans are passed over; an empty range gives one piece [a, a].
struct SpanWalk {
    const double *t;
    int n, j, first;
    double a, b;

    SpanWalk(const double *knots, int k, int num_poles, double lo, double hi)
        : t(knots), n(num_poles), j(locate_span(knots, k, num_poles, lo) - 1), first(j + 1), a(lo),
          b(hi)
    {
    }

    bool next(double *u0, double *u1)
    {
        for (++j; j < n; ++j) {
            if (j > first && !(t[j] < b)) return false;
            if (!(t[j] < t[j + 1])) continue;
            *u0 = j == first ? a : t[j];
            *u1 = t[j + 1] < b ? t[j + 1] : b;
            return true;
        }
        return false;
    }
};

// Adds to *total a bound of span j's piece over [u0, u1], halving pieces
// that overshoot *found (the curve points known so far, which grows by the
// midpoints) or whose weights are mixed. stack: (kSignDepth + 2) pieces of
// 4k doubles; each halving adds one piece and one level, so that suffices.
int bound_span(const double *P, const double *t, int k, int j, double u0, double u1, double *work,
               double *stack, Box *found, Box *total)
{
    const std::size_t piece = 4 * static_cast<std::size_t>(k);
    double mag = 0.0;
    (void)span_poles_finite(P, k, j, &mag);
    span_piece(P, t, k, j, u0, u1, work, stack);
    int depth[kSignDepth + 2];
    depth[0] = 0;
    int count = 1, splits = 0;
    while (count > 0) {
        double *Q = stack + static_cast<std::size_t>(count - 1) * piece;
        const int d = depth[count - 1];
        Box raw;
        double pad = 0.0;
        const Verdict v = bound_piece(Q, k, mag, d, &raw, &pad);
        if (v == kUnbounded) return BC_BOX_UNBOUNDED;
        if (v == kMixed && (d >= kSignDepth || splits >= kSplitBudget)) return BC_BOX_UNBOUNDED;
        if (v == kBounded && (d >= kTightDepth || splits >= kSplitBudget ||
                              box_within(raw, *found, kTightRel * box_largest_side(*found)))) {
            for (int c = 0; c < 3; ++c) {
                raw.lo[c] -= pad;
                raw.hi[c] += pad;
            }
            box_add_box(total, raw);
            --count;
            continue;
        }
        halve_piece(Q, Q + piece, k);
        box_add_homogeneous(found, Q + piece);
        depth[count - 1] = depth[count] = d + 1;
        ++count;
        ++splits;
    }
    return BC_BOX_OK;
}

} // namespace

int bc_xyz_box(const BC_CURVE *curve, const double range[2], double box[6])
{
    const int status = check_curve(curve);
    if (status != BC_BOX_OK) return status;
    const double *P = curve->poles, *t = curve->knots;
    const int k = curve->order, n = curve->num_poles;

    double t0, t1;
    curve_domain(t, k, n, &t0, &t1);
    double a = t0, b = t1;
    if (curve->full_range == 0) {
        if (range == nullptr) return BC_BOX_BAD_RANGE;
        a = range[0];
        b = range[1];
        if (std::isnan(a) || std::isnan(b) || a > b) return BC_BOX_BAD_RANGE;
        if (!snap_into(&a, t0, t1) || !snap_into(&b, t0, t1)) return BC_BOX_BAD_RANGE;
    }

    // Scratch: the polar-form triangle, then the stack of bound_span.
    const std::size_t piece = 4 * static_cast<std::size_t>(k);
    double *work = static_cast<double *>(SM_alloc((kSignDepth + 3) * piece * sizeof(double)));
    if (work == nullptr) return BC_BOX_NO_MEMORY;

    // The curve points at the pieces' ends: the yardstick of tightness.
    Box found;
    box_clear(&found);
    double u0 = 0.0, u1 = 0.0, mag = 0.0;
    int result = BC_BOX_OK;
    for (SpanWalk w(t, k, n, a, b); w.next(&u0, &u1);) {
        if (!span_poles_finite(P, k, w.j, &mag)) {
            result = BC_BOX_BAD_POLES;
            break;
        }
        double H[4];
        polar_form(P, t, k, w.j, u0, u0, 0, work, H);
        box_add_homogeneous(&found, H);
        polar_form(P, t, k, w.j, u0, u1, k - 1, work, H);
        box_add_homogeneous(&found, H);
    }

    Box total;
    box_clear(&total);
    for (SpanWalk w(t, k, n, a, b); result == BC_BOX_OK && w.next(&u0, &u1);)
        result = bound_span(P, t, k, w.j, u0, u1, work, work + piece, &found, &total);
    SM_free(work);
    if (result != BC_BOX_OK) return result;
    for (int c = 0; c < 3; ++c)
        if (!std::isfinite(total.lo[c]) || !std::isfinite(total.hi[c])) return BC_BOX_UNBOUNDED;
    for (int c = 0; c < 3; ++c) {
        box[c] = total.lo[c];
        box[3 + c] = total.hi[c];
    }
    return BC_BOX_OK;
}
