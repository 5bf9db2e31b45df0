/* pole.h — weighted control points (poles) of rational B-curves and the
 * coordinate box of a B-curve over a parameter range (source files bc_pole,
 * bc_xyz_box).
 *
 * A pole is four doubles (w.x, w.y, w.z, w): the homogeneous form of the 3-D
 * point (x, y, z) with weight w. A pole array holds poles one after another,
 * four doubles each. Weights are expected to be non-zero; the bc_POLE_
 * routines never test for w = 0 (a zero weight gives infinities or NaNs,
 * which then compare unequal, except as noted below for
 * bc_POLE_identical_poles_in_3d). They never report and never allocate;
 * every output array is the caller's.
 *
 * Two ways of forming a 3-D point from a pole are used on purpose and are
 * kept: bc_POLE_equal_in_3d multiplies by the reciprocal weight (1/w).x,
 * every other routine divides, x/w. The two may differ in the last bit.
 *
 * NaN and infinite input. The bc_POLE_ routines do not test for them: NaN
 * propagates into the points, distances and averages they write, and
 * bc_POLE_equal_in_3d and bc_POLE_equal_in_4d answer 0 for a NaN coordinate
 * or weight. bc_POLE_identical_poles_in_3d checks only poles 0 and m by
 * equality; a NaN point among the others (a NaN coordinate, or a zero weight
 * over a zero coordinate, 0/0) makes the average NaN, no squared distance
 * from a NaN average exceeds the tolerance, and the result is 1. bc_xyz_box,
 * in contrast, tests every value it uses: a NaN range end is
 * BC_BOX_BAD_RANGE, a knot not finite BC_BOX_BAD_CURVE, a used pole with a
 * coordinate not finite BC_BOX_BAD_POLES, and 3-D points that overflow
 * BC_BOX_UNBOUNDED; its halving is bounded by the fixed budgets below
 * whatever the values.
 */
#ifndef QXMATH_POLE_H
#define QXMATH_POLE_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* ---- bc_pole: single poles ------------------------------------------------------------ */

/* 1 when the weights of P[4] and Q[4] agree, |wP - wQ| <= 1e-10 (absolute, equality
 * included), and bc_POLE_equal_in_3d(P, Q) holds; else 0. */
QXMATH_API int bc_POLE_equal_in_4d(const double P[4], const double Q[4]);

/* 1 when the 3-D points of P[4] and Q[4] coincide within the session's squared length
 * tolerance: with rP = 1/wP, rQ = 1/wQ and D = (rP.Px - rQ.Qx, rP.Py - rQ.Qy,
 * rP.Pz - rQ.Qz), the result is EQ_ask_length_squared_tolerance() >= D.D (equality counts
 * as equal). The points are formed with the reciprocal weight, not by division. A NaN
 * anywhere gives 0; so does a negative tolerance (the unset marker -939.0 before sys21_). */
QXMATH_API int bc_POLE_equal_in_3d(const double P[4], const double Q[4]);

/* |V| = sqrt(Vx.Vx + Vy.Vy + Vz.Vz), with V[3] := P/wP - Q/wQ written out (3-D points by
 * division). V may overlap P or Q. */
QXMATH_API double bc_POLE_3d_distance(const double P[4], const double Q[4], double V[3]);

/* R[4] := (wP.(P/wP + T), wP): the pole P[4] moved by the 3-D vector T[3], its weight kept
 * bit for bit. The 3-D point is formed by division. R may be P (or overlap T). */
QXMATH_API void bc_POLE_translate_pole(const double P[4], const double T[3], double R[4]);

/* R[4] := (wP.f, wP), f the foot of the 3-D point a = P/wP on the line through b = L1/w1
 * and c = L2/w2 (all by division), computed by h430_(b, c, a, f):
 * t = ((a - b).(c - b)) / |c - b|^2, f = b + t.(c - b); t = 0 (f = b) when |c - b|^2 equals
 * 0 within the session's number tolerance (eqz_ kind 0). R may be any of P, L1, L2. */
QXMATH_API void bc_POLE_project_to_line(const double P[4], const double L1[4], const double L2[4],
                                        double R[4]);

/* ---- bc_pole: runs of poles ----------------------------------------------------------- */

/* A[3] := the mean of the 3-D points (by division) of poles[4n]: the sum from (0, 0, 0)
 * in pole order, then multiplied by the factor 1/n. The factor is deliberately
 * unguarded: n = 0 gives A = (0 x inf) = NaN, n < 0 gives (-0, -0, -0) and reads no pole.
 * A may overlap poles. */
QXMATH_API void bc_POLE_average_in_3d(const double *poles, int n, double A[3]);

/* 1 when the n poles of poles[] are one 3-D point, else 0:
 *  1. pole 0 is compared with pole m = ceil(n.0.5) by bc_POLE_equal_in_3d (session
 *     tolerance); unequal gives 0. For n = 1 this reads pole 1, which the caller must
 *     provide; for n = 0 and -1, m = 0 (pole 0 must exist). For n <= -2 the index would
 *     lie before the array; pole 0 is then compared with itself instead.
 *  2. A = bc_POLE_average_in_3d(poles, n); n < 1 gives 1 here.
 *  3. Each pole's 3-D point (by division) whose squared distance from A is greater than
 *     tol = ((n - 1).1e-10/n)^2 gives 0 (equality passes). tol grows from 0 (n = 1)
 *     towards 1e-20 and is independent of the session tolerances on purpose.
 *  4. Otherwise 1.
 * With the session tolerance 0 (before sys21_) step 1 asks for exact equality. */
QXMATH_API int bc_POLE_identical_poles_in_3d(const double *poles, int n);

/* ---- bc_xyz_box: coordinate box of a B-curve ------------------------------------------ */

/* A B-curve as bc_xyz_box reads it: num_poles poles of order `order` (degree + 1) over
 * num_poles + order non-decreasing knots. The curve is
 *   C(t) = sum_i N_i(t) (w_i x_i) / sum_i N_i(t) w_i,   t in [knots[order-1], knots[num_poles]],
 * N_i the B-spline basis of the knot vector; knots need not be clamped and may repeat
 * (a knot of multiplicity >= order makes the curve discontinuous there; each span is
 * still bounded on its own). A periodic curve is stored unwrapped, its poles and knots
 * already repeated. The record only points at the caller's arrays. */
typedef struct BC_CURVE {
    const double *poles; /* num_poles x 4: (w.x, w.y, w.z, w) per pole */
    const double *knots; /* num_poles + order values, non-decreasing */
    int num_poles;       /* >= order */
    int order;           /* >= 1 */
    int full_range;      /* 0: the caller's range; else the whole curve (range not read) */
} BC_CURVE;

/* Results of bc_xyz_box. On any failure the box is left untouched. */
enum {
    BC_BOX_OK = 0,
    BC_BOX_BAD_CURVE = 1, /* NULL record or array, order < 1, num_poles < order, a knot
                             not finite or decreasing, or an empty parameter domain */
    BC_BOX_BAD_RANGE = 2, /* NULL range (with full_range 0), a NaN end, reversed
                             (range[0] > range[1]) or reaching outside the domain */
    BC_BOX_BAD_POLES = 3, /* a pole that the range uses has a coordinate not finite */
    BC_BOX_UNBOUNDED = 4, /* no bound provable: the weights do not keep one sign and the
                             denominator has, or comes too close to, a zero in the range,
                             or the 3-D points overflow */
    BC_BOX_NO_MEMORY = 5  /* the scratch block could not be allocated */
};

/* box[6] := (xmin, ymin, zmin, xmax, ymax, zmax), a box that contains every point of the
 * curve over the parameter range; returns BC_BOX_OK or a failure code above.
 *
 * Range. With curve->full_range 0 it is [range[0], range[1]], taken as given except that
 * an end outside the domain [knots[order-1], knots[num_poles]] by at most 1e-10
 * (absolute) is moved onto the domain's end; farther outside is BC_BOX_BAD_RANGE, and so
 * is a reversed range. An empty range (range[0] == range[1]) is valid: the box of the
 * single point C(range[0]). With full_range non-zero the range is the whole domain and
 * `range` is not read (it may be NULL).
 *
 * Method. Each knot span met by the range is cut to the range and converted to the
 * Bezier form of that piece (by de Boor's algorithm on the polar form, i.e. knot
 * insertion: only convex combinations of the span's poles). When the piece's Bezier
 * weights all have one sign, its curve lies in the convex hull of its Bezier points'
 * 3-D points, whose box bounds it. A piece whose box reaches beyond the box of the curve
 * points found so far (piece ends and midpoints) by more than 1e-3 of that box's largest
 * side is halved (de Casteljau) and its halves bounded instead, at most 10 levels and
 * 512 halvings per span deep, which brings the box to within about 0.1% of the curve's
 * own extent for smooth curves. Each piece's box is widened by a bound of the rounding
 * of its conversion (16 ulps per level and halving, of the span's largest homogeneous
 * coordinate, times (1 + |x|)/|w| over the piece), so that rounding cannot leave a point
 * of the curve outside.
 *
 * Weights. Weights of one sign in a span, all positive or all negative, need nothing
 * more. With weights of both signs or zero the hull property fails; a piece whose Bezier
 * weights are mixed is halved until every piece has Bezier weights of one sign, which
 * proves the denominator has no zero there (at most 40 levels, within the same 512
 * halvings per span). When the denominator is zero or changes sign at a piece's end, or the
 * halving limit is reached, the result is BC_BOX_UNBOUNDED: no box is claimed for a
 * curve that may run to infinity. Nothing is sampled.
 *
 * Scratch memory (172 x order doubles) comes from SM_alloc and is freed before
 * return; when the host's allocator fails (and its report returns) the result is
 * BC_BOX_NO_MEMORY. The routine itself reports nothing.
 * Cost: O(order^3) per span plus O(order^2) per halving. */
QXMATH_API int bc_xyz_box(const BC_CURVE *curve, const double range[2], double box[6]);

QXMATH_END_DECLS

#endif
