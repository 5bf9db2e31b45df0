/* numbered.h — the numbered routines (h805_, h923_, h016_ …): the older routine library
 * that lives inside libqxmath with conventions of its own.
 *
 * Calling convention, binding for every routine here: every argument is passed by address,
 * inputs included; a scalar is a pointer to one double or one 32-bit int. Results are
 * written through pointer arguments. A point or vector is three doubles (x, y, z); a 2-D
 * routine reads only x and y of a three-double point. A 3x3 matrix is nine doubles, three
 * triples row after row (in an orientation matrix: the X, Y and Z axes). Logical results
 * are int 1 (true) and 0 (false); case and status codes start at 1 — 0 is never success.
 * Angles are radians, normalised into [0, 2pi) where a routine produces one.
 *
 * Tolerances come from the session's tolerance table, addressed by a 0-based index passed
 * by address: 0 number tolerance (dimensionless quantities), 1 length tolerance, 2 squared
 * length tolerance, 3-6 host slots, 7 coarse squared tolerance (see session.h, sys21_).
 *
 * No routine here raises an error or prints: degenerate input is reported through the
 * routine's own code or absorbed by snapping onto a tolerance.
 */
#ifndef QXMATH_NUMBERED_H
#define QXMATH_NUMBERED_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* ==== core primitives (source file qxmath) ================================================ */

/* The primitives every other numbered routine builds on. tol[i] below is entry i of the
 * tolerance table, read afresh at each call (sys21_ may change it). An index outside 0..7
 * selects tolerance 0.0, so the comparison becomes exact; it never reads outside the table.
 * Unless a routine says otherwise, outputs may share storage with inputs: every input is
 * read before the first output is written. */

/* ---- comparison and classification ---- */

/* h805_: tolerant equality. eq (out) := 1 when |a - b| <= |tol[i]| (the boundary counts as
 * equal), else 0. The magnitude of the entry is used, so a negative entry acts as its
 * absolute value. */
QXMATH_API void h805_(const double *a, const double *b, const int *i, int *eq);

/* h806_: as h805_ with an explicit tolerance: eq (out) := 1 when |a - b| <= |t|, else 0. */
QXMATH_API void h806_(const double *a, const double *b, const double *t, int *eq);

/* h804_: classifies x (in/out) against lim = [lo, hi] (2 doubles) under tol[i]; code (out):
 *   2  x equals lo under tol[i]; x := lo exactly
 *   1  x < lo (below)
 *   4  x equals hi under tol[i]; x := hi exactly
 *   3  lo < x < hi (strictly inside)
 *   5  x > hi (above)
 * lo is tested before hi, so when both ends lie within the tolerance of x (a range
 * shorter than the tolerance) the answer is 2 and x snaps to lo. The range is not ordered
 * here; a NaN x gives 5. */
QXMATH_API void h804_(double *x, const double lim[2], const int *i, int *code);

/* h809_: inside (out) := 1 when lo <= x <= hi for lim = [lo, hi] (x then unchanged), or when
 * x equals lo or else hi under tol[i] (x (in/out) then snapped onto that end); else 0 with
 * x unchanged. */
QXMATH_API void h809_(double *x, const double lim[2], const int *i, int *inside);

/* h000_: a guard before dividing by x (in/out): when |x| <= tol[0], x := +tol[0] for x >= 0
 * (-0.0 included) and -tol[0] for x < 0. The entry is used as stored: while it is
 * negative (the unset marker) nothing changes. */
QXMATH_API void h000_(double *x);

/* h206_: eq (out) := 1 when the squared XY distance of the 2-D points p and q is <= |t|,
 * else 0. t is compared with the squared distance, not the distance: callers pass a
 * squared tolerance. */
QXMATH_API void h206_(const double *p, const double *q, const double *t, int *eq);

/* ---- angles ---- */

/* h053_: ang (out) := the angle in [0, 2pi) whose sine and cosine are proportional to s and
 * c. s and c are tested against 0.0 under tol[0] (the number tolerance, although they are
 * usually lengths): s equal to 0 gives 0, or pi when c < 0; else c equal to 0 gives pi/2, or
 * 3pi/2 when s < 0; otherwise atan(s/c) moved into the right quadrant. A nearly horizontal
 * vector with a tiny negative s thus gives 0 (or pi), not a value just below 2pi. Only when
 * s is outside the tolerance but |s/c| is below about 4e-16 (c huge) does atan(s/c) + 2pi
 * round to 2pi itself. */
QXMATH_API void h053_(const double *s, const double *c, double *ang);

/* h002_: reduces x (in/out) modulo the period p into [0, p) under tol[0]: x equal to p gives
 * 0; p equal to 0 leaves x alone; x > 0 becomes fmod(x, p), snapped to 0 when that is near
 * 0; x <= 0 becomes p - fmod(|x|, p), snapped to 0 when either the remainder or the result
 * is near 0. So -pi/2 gives 3pi/2 and 2pi - 1e-12 gives 0 for p = 2pi. Only a positive x
 * just below p itself is snapped near p: for x > p a remainder just below p is kept.
 * Nothing is done when p < 0. */
QXMATH_API void h002_(double *x, const double *p);

/* h013_: q (out, 3) := the point at distance r and angle ang from p (3) in its XY plane:
 * (p.x + r cos ang, p.y + r sin ang, p.z). */
QXMATH_API void h013_(const double p[3], const double *r, const double *ang, double q[3]);

/* ---- vectors and matrices ---- */

/* h100_: w (out, 3) := (v . m[0..2], v . m[3..5], v . m[6..8]): the components of v (3) in
 * the frame whose axes are the rows of m (9). w must not overlap v (callers must not rely
 * on this implementation reading v first). */
QXMATH_API void h100_(const double v[3], const double m[9], double w[3]);

/* h110_: t (out, 9) := transpose of m (9), t[3r + c] = m[3c + r]. m and t must not overlap
 * (an in-place transpose comes out wrong). */
QXMATH_API void h110_(const double m[9], double t[9]);

/* h200_: d2 (out) := squared distance of p and q in the XY plane (z ignored). */
QXMATH_API void h200_(const double *p, const double *q, double *d2);

/* h301_: d (out) := 3-D distance of p and q. */
QXMATH_API void h301_(const double p[3], const double q[3], double *d);

/* h003_: z (out) := a.x b.y - a.y b.x, the cross product of two 2-D vectors. */
QXMATH_API void h003_(const double *a, const double *b, double *z);

/* h004_: t (out) := a . (b x c), evaluated exactly as
 * a.x (b.y c.z - b.z c.y) - a.y (b.x c.z - b.z c.x) + a.z (b.x c.y - c.x b.y)
 * (the grouping fixes the rounding; h015_ uses the same expansion). */
QXMATH_API void h004_(const double a[3], const double b[3], const double c[3], double *t);

/* h923_: m (out, 9) := rotation by theta about the axis u (3), with c = cos theta,
 * s = sin theta, k = 1 - c, by rows:
 *   ux ux k + c,     ux uy k - uz s,  ux uz k + uy s
 *   ux uy k + uz s,  uy uy k + c,     uy uz k - ux s
 *   ux uz k - uy s,  uy uz k + ux s,  uz uz k + c
 * u is not normalised here: a non-unit axis gives a matrix that is not a rotation. */
QXMATH_API void h923_(const double u[3], const double *theta, double m[9]);

/* h099_: m (out, 9) := an orientation matrix whose Z row is n (3) as given (not
 * normalised). X = (0, n.z, -n.y) when |n.y| > 0.9, else (n.z, 0, -n.x), unitised by
 * VEC3_unitize under the length tolerance (a null X becomes zero); Y = Z x X. Rows X, Y, Z.
 * Y is a unit vector only when n is. */
QXMATH_API void h099_(const double n[3], double m[9]);

/* ---- equations and complex numbers (a complex number is re, im) ---- */

/* h014_: roots of c0 + c1 x + c2 x^2 for c (3), all tests against eps = the number
 * tolerance. The coefficients are first divided by their Euclidean norm; a norm <= eps
 * gives kind 4. Outputs (re (2), im (2) cleared first):
 *   kind 1  no root (degree 0, a non-zero constant)
 *   kind 2  complex pair re[0] = re[1], im[0] = -im[1] (degree 2, nreal 0)
 *   kind 3  real roots: degree 1 with re[0] (nreal 1), or degree 2 with re[0] = (q - c1)/2c2,
 *           re[1] = (-c1 - q)/2c2 (nreal 2; a double root is reported twice)
 *   kind 4  identically zero: every x is a root
 * The discriminant (with c1 taken as 0 in it when |c1| <= eps) counts as zero within eps;
 * it is complex only when <= -eps. */
QXMATH_API void h014_(const double c[3], double re[2], double im[2], int *kind, int *degree,
                      int *nreal);

/* h015_: solves x0 a + x1 b + x2 c = d (all 3) by Cramer's rule, each determinant expanded
 * as h004_ does. status (out) 1: solved, x (out, 3) written; 2: |det(a, b, c)| <= the number
 * tolerance (singular, e.g. coplanar a, b, c), x untouched. */
QXMATH_API void h015_(const double a[3], const double b[3], const double c[3],
                      const double d[3], double x[3], int *status);

/* h017_: c (out, 2) := a b (complex product). */
QXMATH_API void h017_(const double a[2], const double b[2], double c[2]);

/* h018_: w (out, 2) := the principal n-th root of z (2): r^(1/n) (cos(phi/n), sin(phi/n)),
 * phi the argument of z in [0, 2pi) with exact zero tests (z = 0 gives w = 0). n must be
 * non-zero (0 gives NaN); a negative n gives the principal root of 1/z. */
QXMATH_API void h018_(const double z[2], const int *n, double w[2]);

/* ==== end of core primitives ============================================================== */

/* ==== periodic parameters, angular ranges and polynomial roots ============================ */

/* Periodic parameter placement. The curve and interval routines keep a parameter of a
 * periodic curve inside its range: these routines find how many whole periods move a
 * parameter x into a range [lo, hi] and move it. Every comparison is tolerant, by h805_ /
 * h804_ under tolerance entry 0 (the number tolerance, tol below). None reports an error. */

/* h006_: the whole number of periods that moves x into a range.
 *   x       in   the parameter (not changed).
 *   lim     in   two doubles, the ends of the range in either order (ordered lo <= hi here).
 *   flag    in   1: the period is *period; any other value: the period is hi - lo.
 *   period  in   the period, read only when *flag is 1.
 *   found   out  1 when x + count*period lies in [lo, hi] within tol, else 0.
 *   count   out  the signed number of periods to ADD to x: x + count*period is in the
 *                range. 0 whenever x is on an end or inside (h804_ codes 2, 3, 4: found = 1
 *                at once) and whenever found is 0.
 * x below lo: count >= 1 is the fewest periods that bring x up to lo (within tol); x above
 * hi: count <= -1 the fewest that bring it down to hi. The count is the quotient of the
 * distance from x to that end by the period, truncated towards zero (int_overflow_to_zero_)
 * and stepped once more when the truncated count falls short of the end. When the period is
 * longer than the range x may fall in the gap between two copies of it: found = 0.
 * Degenerate input gives found = 0, count = 0 when x is outside the range: a period that is
 * not > 0 (zero-length range with flag 0, NaN), x NaN, or a count that does not fit an int
 * (x very far from the range compared with the period). */
QXMATH_API void h006_(const double *x, const double lim[2], const int *flag, const double *period,
                      int *found, int *count);

/* h0005_: x moved by whole periods into [start, start + period].
 *   out = x + count*period with count from h006_ on the range [start, start + period] with
 *   the period flag set; out = x when h006_ finds nothing (period <= 0 with x outside the
 *   range, NaN, a count beyond int). The result may equal either end (within tol); h0062_
 *   and h0063_ give the half-open placement. out may be the same double as x. */
QXMATH_API void h0005_(const double *x, const double *start, const double *period, double *out);

/* h0062_: x (in/out) moved by whole periods into the half-open range [start, start+period).
 *   The placement is h0005_'s; a result within tol of the far end start + period gives
 *   back one period, so that x only ever changes by whole periods (up to rounding) and
 *   then lands within tol of start.
 *   found out: 1 when placed; 0 (x unchanged) when period is not > 0, x is NaN or the count
 *   does not fit an int. */
QXMATH_API void h0062_(double *x, const double *start, const double *period, int *found);

/* h0063_: as h0062_, but a result within tol of the far end start + period is snapped to
 *   start exactly (the value callers compare against the range start). */
QXMATH_API void h0063_(double *x, const double *start, const double *period, int *found);

/* h0065_: x (in/out) moved into the half-open range [lo, hi) that is itself one period
 *   (closed curves whose parameter range is their period).
 *   lim    in   the two ends, either order.
 *   count  out  the signed whole number of periods (hi - lo) added to x; a result within tol
 *               of hi is snapped to lo exactly and counted as one period less, so that the
 *               new x equals x + count*(hi - lo) within tol.
 *   found  out  1 when placed; 0 with count = 0 and x unchanged when hi - lo is not > 0, x
 *               is NaN or the count does not fit an int. */
QXMATH_API void h0065_(double *x, const double lim[2], int *count, int *found);

/* Angular ranges. A range is two doubles (start, end), angles in radians: the arc that runs
 * counter-clockwise from start to end, across 0 when end < start. Both ends are reduced into
 * [0, 2pi) by h002_ on copies first (inputs are not changed). Ends equal within tol, or an
 * arc within tol of 2pi long, denote the whole circle; an arc cannot be a single point.
 * Results are ranges in the same form, both ends in [0, 2pi); the whole circle is written
 * (0, 0). Overlaps, touches and gaps are judged under tol with h809_ / h805_: ranges that
 * touch or leave a gap of at most tol between them are merged, and a common part of at most
 * tol is no common part. out may be r1 or r2 (both are read before out is written). */

/* h009_: one range covering both r1 and r2.
 *   code out: 1 the ranges overlap or touch: out is their union;
 *             2 they are disjoint: out is the smallest single range holding both, the union
 *               with the shorter of the two gaps between them filled (the gap after r1's
 *               union range first on a tie);
 *             3 together they cover the whole circle: out = (0, 0). */
QXMATH_API void h009_(const double r1[2], const double r2[2], double out[2], int *code);

/* h010_: the union of r1 and r2.
 *   out    out  four doubles: out[0..1] the union range holding r1; out[2..3] the second
 *               range when code is 2 (left unchanged otherwise).
 *   code   out  1 one range; 2 two disjoint ranges; 3 the whole circle, out[0..1] = (0, 0). */
QXMATH_API void h010_(const double r1[2], const double r2[2], double out[4], int *code);

/* h012_: the common part of r1 and r2 (an arc of length <= 2pi can meet another in two
 * separate pieces).
 *   out    out  four doubles: the pieces in counter-clockwise order from r1's start, the
 *               first in out[0..1], the second in out[2..3]; the entries a code does not
 *               use are left unchanged.
 *   code   out  1 one common range (r2 itself when r1 is the whole circle, r1 when r2 is;
 *               (0, 0) when both are); 2 no common part (out unchanged); 3 two common
 *               pieces. */
QXMATH_API void h012_(const double r1[2], const double r2[2], double out[4], int *code);

/* h016_: the roots of the real polynomial c[0] + c[1] x + ... + c[n] x^n, n up to 4.
 *   n       in   the nominal degree, 0..4.
 *   c       in   n + 1 coefficients, constant term first.
 *   re, im  out  n doubles each (entries past the degree found are set to 0): the roots,
 *                real roots first in ascending order (a multiple root repeated), then complex
 *                conjugate pairs by ascending real part, the one with im > 0 first.
 *   kind    out  1 no root (a non-zero constant); 2 roots, all complex; 3 at least one real
 *                root; 4 the polynomial is identically zero (every x is a root); 5 not
 *                solved: n outside 0..4 or a coefficient infinite or NaN (degree and nreal
 *                0, re and im not touched), or roots that overflow (re and im 0).
 *   degree  out  the degree solved: leading coefficients that vanish under tol after the
 *                coefficients are divided by their Euclidean norm are dropped (as h014_
 *                does); degree 2 and below are h014_'s answer.
 *   nreal   out  the number of real roots among the first degree entries.
 * Degree 3 is solved by Cardano's formulas (cube roots by h018_), degree 4 by Ferrari's
 * resolvent cubic and two quadratics (h014_); each root is then refined by Newton steps on
 * the polynomial, a step kept only when it lowers |p(root)|. A discriminant within tol of 0,
 * relative to the size of its terms, gives a multiple real root (so the coarse tolerance
 * merges roots closer than about sqrt(tol) of their spread); a coefficient of the shifted
 * polynomial below its rounding noise counts as 0. Roots are as accurate as the
 * conditioning allows: a root of multiplicity m that is not recognised as multiple carries
 * an error of order eps^(1/m) of the roots' size. */
QXMATH_API void h016_(const int *n, const double *c, double *re, double *im, int *kind,
                      int *degree, int *nreal);

/* ==== end of periodic parameters ========================================================== */

/* ==== reflection (h924_) ================================================================== */

/* The reflection in the plane through the origin with unit normal n (source file h924_).
 *   n  in, 3 doubles: the unit normal; not normalised here (a non-unit n gives a matrix
 *      that is no reflection)
 *   m  out, 3x3 matrix: m[i][i] = 1 - 2.ni.ni, m[i][j] = -2.ni.nj (i != j), so m is
 *      symmetric and m.v = v - 2.(n.v).n; may overlap n (n is read first)
 * No failure case. */
QXMATH_API void h924_(const double n[3], double m[9]);

/* ==== end of reflection =================================================================== */

/* ==== slope normalisation (h813_) ========================================================= */

/* h813_ — a defining slope brought into a record's normalised parameter range (source file
 * h813_; called by BCDF_CALC_normalized_slope, bcdf.h).
 *
 *   slope[3]  in   the slope as stored with the record (3-D)
 *   *scale    in   the record's former last parameter L, by which normalising divides every
 *                  parameter (BCDF_normalize); u = t / L
 *   *code     in   what the slope's length means, from its slope type (0 .. 5 -> codes
 *                  1, 2, 3, 4, 5, 5):
 *                    1 (type 0)     a derivative dP/dt: scaled to dP/du = L slope
 *                    2 (type 1)     a direction only: made unit
 *                    3 (type 2)     a mirrored derivative: scaled by L as code 1
 *                    4 (type 3)     a fixed vector, its length not tied to the parameter:
 *                                   copied as it is
 *                    5 (types 4, 5) a mirrored direction: made unit as code 2
 *   out[3]    out  the normalised slope; may alias slope
 *   *status   out  1 done; 2 a direction of zero length (squared length at most 1.0e-20, or
 *                  not a number): out = 0; 3 a code outside 1 .. 5: out untouched
 *
 * The multiplication by L is not guarded (a zero L gives a zero slope). Unit directions are
 * slope / |slope|, component by component. */
QXMATH_API void h813_(const double slope[3], const double *scale, const int *code, double out[3],
                      int *status);

/* ==== end of slope normalisation ========================================================== */

QXMATH_END_DECLS

#endif
