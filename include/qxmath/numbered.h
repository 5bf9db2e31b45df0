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
 *
 * NaN and infinite input. Only h016_ refuses them (kind 5 for an infinite or NaN coefficient)
 * and the periodic placements test for a NaN x or period (h006_, h0062_, h0063_, h0065_:
 * nothing found, x unchanged; h0005_ then gives x, or NaN for a NaN period). Elsewhere NaN
 * propagates into the outputs, and a tolerance test on NaN is false. So the equality tests
 * (h805_, h806_, h206_, h202_, h204_, h302_, h306_, h307_) answer 0, even for two identical NaN
 * points; h809_, h312_, h318_ and h319_ answer 0, h804_ gives 5 and h303_, h203_ give 1. A
 * routine that falls back when a quantity is within tolerance of zero takes its general branch
 * and writes NaN: h000_ leaves a NaN x as it is, h015_ gives status 1, h230_ status 1, h1600_
 * ok 1 (n left unchanged), h430_ 0, h019_ and h704_ NaN parameters. h014_ takes any NaN
 * coefficient to kind 3, degree 2, with NaN roots. Unitising is vunt3_'s, which succeeds on NaN
 * (vector.h): h960_ gives ok 1 with NaN rows and v6043_ status 1 with a NaN matrix, while the
 * constructions that test with VEC3_is_parallel, MTX3_init_y_z or MTX3_is_ortho_normal
 * (v6043_normal, v6045_, and v6054_ for a NaN matrix element) give status 2; h813_ takes a NaN
 * direction as of zero length (status 2). The angular-range routines (h009_, h010_, h012_) end
 * with one of their codes, but a NaN end makes their result meaningless (it may count as the
 * whole circle or spread NaN into out). No loop depends on a value: h016_'s Newton refinement
 * takes at most 8 steps, and the periodic placements compute their counts by division, not by
 * stepping.
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
 *   range, a NaN x, a count beyond int), except that a NaN or infinite period gives out =
 *   NaN (x + 0 x period) even then. The result may equal either end (within tol); h0062_
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
 * slope / |slope|, component by component; when the squared length overflows (a component
 * beyond about 1e154) the slope is first divided by its largest component magnitude, so a
 * finite direction is always made unit. An infinite component gives NaN (status 1). */
QXMATH_API void h813_(const double slope[3], const double *scale, const int *code, double out[3],
                      int *status);

/* ==== end of slope normalisation ========================================================== */

/* ==== coordinate-system orientation (h964_) =========================================== */

/* h964_ — a coordinate-system orientation carried through a transformation, returned as a
 * clean orientation matrix (source file h964; called by h981_).
 *   K  in, 9 doubles: the orientation matrix, rows X, Y, Z (orientation.h)
 *   T  in, at least 13 doubles: elements 0-8 a 3x3 matrix by rows, element 12 the
 *      transformation's scale factor (read with checking on only); 9-11 are not read
 *   M  out, 9 doubles: always written; may overlap K or T
 * With P = MTX3_multiply_t(T, K) (the rows of K carried through T; repaired there when T
 * and K are both ortho-normal and P is not), M = MTX3_init(row 0, row 1 of P): the
 * transformed X is kept, Z = X x Y and Y are re-derived, so M is right-handed and a scale
 * or a reflection in T does not reach it (row 2 of P is not used). When the transformed X or Y is null or they are not perpendicular within 1.0e-10
 * on the cosine, M is P repaired by MTX3_ortho_normalize instead.
 *
 * Unlike the rest of this header, h964_ writes diagnostics when MACH__checking_level > 0
 * (nothing at all at level 0). It then also runs its older method ("V14") as a cross-check:
 * P unscaled by s = T[12] when |s - 1| > 1.0e-10 (rows 0-1 times 1/|s|, row 2 times 1/s)
 * and rebuilt by MTX3_init_x_y_z, refused when left-handed. Through ERROR_note (module
 * h964) and ERROR_lprintf it writes:
 *   - older method failed: the log line "Old method of FTN(h964) () returning a left-handed
 *     matrix" (when that was the reason), then the note "Old method of FTN(h964) () failed
 *     to produce a matrix";
 *   - repair path: the note "First attempt in FTN(h964) () failed to produce a matrix", the
 *     dumps "transformation matrix" (T), "orginal csys matrix" (K, spelled so), "X axis",
 *     "Y axis" (rows 0 and 1 of P) and, after the repair, "h964 output" (M);
 *   - when the older method succeeded, the repair was not needed, K and the older result
 *     are ortho-normal (MTX3_is_ortho_normal) and the two results differ by more than
 *     1.0e-8 in some element (MTX3_is_equal): dumps of T and K, the line
 *     "transformation scale factor = % 14.12e" with T[12], the dumps "V14 output result"
 *     and "V15 output result" (M), then ERROR_internal (module h964) "V14 version of
 *     FTN(h964) () produced different result than V15 version.". M is written before that
 *     report and keeps the current method's result. Both methods start from the same P, so
 *     for finite input they agree to rounding and this report is not expected; it guards
 *     the two against drifting apart.
 * A matrix dump prints its caption, then one line per column of the row-stored matrix
 * ("       % 14.12e % 14.12e % 14.12e"); a vector dump one such line.
 * The older method's division by s is unguarded: with |s| below 1e-19 (0 included) its
 * rows reach VEC3_unitize's range assertion (module vec3), and s = 0 gives non-finite
 * rows, which its rebuild then rejects ("Old method" note). */
QXMATH_API void h964_(const double *K, const double *T, double *M);

/* ==== end of coordinate-system orientation ============================================ */

/* ==== points and lines in space (h300_ ... h319_, h019_, h704_) ======================= */

/* Points and directions are three doubles; a direction may have any length unless stated.
 * tol[i] is entry i of the tolerance table, read at each call. "Within tol[i] of x" is
 * h805_'s test |value - x| <= |tol[i]|, the boundary included. Unless stated otherwise
 * every input is read before an output is written, so outputs may share storage with
 * inputs. Unitising follows vunt3_ (a vector of length <= tol[1] becomes zero) and a unit
 * cross product vcru3_; with the checking level above 0 they carry VEC3_unitize's range
 * assertion (a component of magnitude 1e19 or more, reported from vec3), which is the only
 * report these routines can make. */

/* h300_ — *d2 := the squared distance of p and q, (dx^2 + dy^2) + dz^2. */
QXMATH_API void h300_(const double p[3], const double q[3], double *d2);

/* h302_ — *eq := 1 when the squared distance of p and q is within tol[2] (the squared
 * length tolerance) of 0, else 0. */
QXMATH_API void h302_(const double p[3], const double q[3], int *eq);

/* h306_ — *eq := 1 when the squared distance of p and q is <= |tol[7]| (the coarse squared
 * tolerance, read directly), else 0. */
QXMATH_API void h306_(const double p[3], const double q[3], int *eq);

/* h307_ — *eq := 1 when the distance of p and q (unsquared) is <= |*t|, else 0. */
QXMATH_API void h307_(const double p[3], const double q[3], const double *t, int *eq);

/* h303_ — which of a and b lies nearer to p, by exact squared distances (no tolerance):
 * *code 1 a nearer (also when a distance is NaN), 2 b strictly nearer, 3 the squared
 * distances exactly equal (equality wins over 1, deliberately). */
QXMATH_API void h303_(const double a[3], const double b[3], const double p[3], int *code);

/* h310_ — *d := the distance of p from the line through a along u: |unit(u) x (p - a)|.
 * The flag of unitising u is not examined: a null u (length <= tol[1]) gives *d = 0. */
QXMATH_API void h310_(const double p[3], const double a[3], const double u[3], double *d);

/* h311_ — *d := the distance of p from the line through a and b: h310_(p, a, b - a), so
 * a = b gives 0. */
QXMATH_API void h311_(const double p[3], const double a[3], const double b[3], double *d);

/* h315_ — *d := the distance between the lines p0 + s u0 and p1 + s u1:
 * |unit(u0 x u1) . (p0 - p1)|. When the unit cross product fails (parallel or null
 * directions) *d := h310_(p0, p1, u1), the distance of p0 from the second line (0 when u1
 * is null too). */
QXMATH_API void h315_(const double p0[3], const double u0[3], const double p1[3],
                      const double u1[3], double *d);

/* h313_ — *d := h315_(a0, a1 - a0, b0, b1 - b0): the distance between the line through a0
 * and a1 and the line through b0 and b1. */
QXMATH_API void h313_(const double a0[3], const double a1[3], const double b0[3],
                      const double b1[3], double *d);

/* h019_ — least squares t0 a + t1 b ~ w (a, b, w 3 doubles; t out, 2 doubles t0, t1), from
 * aa = a.a, bb = b.b, ab = a.b, aw = a.w, bw = b.w and den = aa bb - ab^2:
 *   |w| within tol[1] of 0:          t = (0, 0)
 *   den not within tol[1] of 0:      t0 = (aw bb - bw ab) / den, t1 = (bw aa - aw ab) / den
 *   else aa not within tol[1] of 0:  t = (aw / aa, 0)       (a and b parallel)
 *   else bb not within tol[1] of 0:  t = (0, bw / bb)
 *   else                             t = (0, 0)
 * Every test uses the length tolerance tol[1], the tests of the squared quantities den, aa
 * and bb included, deliberately (their scale is the square of a length's). */
QXMATH_API void h019_(const double a[3], const double b[3], const double w[3], double t[2]);

/* h704_ — least squares t0 a + t1 b ~ w as h019_ but without its fallbacks (note w comes
 * first here): den = bb aa - ab^2 is passed through h000_ (within tol[0] of 0 it becomes
 * +tol[0], or -tol[0] when negative), then *t0 = (aw bb - bw ab) / den and
 * *t1 = (bw aa - aw ab) / den. w is never tested; parallel a and b give very large
 * parameters, deliberately. While tol[0] is not positive (no session: 0, or the unset
 * marker) h000_ changes nothing and a zero den is divided by unguarded. */
QXMATH_API void h704_(const double w[3], const double a[3], const double b[3], double *t0,
                      double *t1);

/* h316_ — the closest points of the lines p0 + t0 u0 and p1 + t1 u1: (t0, t1) from
 * h019_(u0, -u1, p1 - p0), then q0 := p0 + t0 u0, q1 := p1 + t1 u1 (*t0, *t1, q0, q1 out).
 * By h019_'s fallbacks, parallel lines give t1 = 0 and q0 the foot of p1 on the first line;
 * p0 = p1 gives t0 = t1 = 0, q0 = p0, q1 = p1. */
QXMATH_API void h316_(const double p0[3], const double u0[3], const double p1[3],
                      const double u1[3], double *t0, double *t1, double q0[3], double q1[3]);

/* h312_ — *par := 1 when the line through a0, a1 and the line through b0, b1 are parallel or
 * anti-parallel: |unit(a1 - a0) . unit(b1 - b0)| within tol[0] of 1.0; else 0. A null
 * direction unitises to zero, so it is parallel to nothing. */
QXMATH_API void h312_(const double a0[3], const double a1[3], const double b0[3],
                      const double b1[3], int *par);

/* h314_ — the projection of q onto the line p0p1 in the XY plane (z is read nowhere):
 * with (dx, dy) = p1 - p0 and den = dx^2 + dy^2, *t := ((q - p0) . (dx, dy)) / den and
 * f := p0 + t (dx, dy), x and y only (f[2] is not written). den within tol[0] of 0 (the
 * number tolerance on a squared length, deliberately) gives *t = 0 and f = p0. */
QXMATH_API void h314_(const double p0[3], const double p1[3], const double q[3], double f[3],
                      double *t);

/* h318_ — *t := ((p - a) . (b - a)) / L^2, the parameter of p's projection on ab, with L
 * the length of b - a taken by a square root and squared again; *inside := 1 when
 * 0 <= t <= 1 exactly (no tolerance), else 0. a = b is deliberately not guarded: 0/0 gives
 * t = NaN and inside = 0. */
QXMATH_API void h318_(const double p[3], const double a[3], const double b[3], int *inside,
                      double *t);

/* h319_ — *on := 1 when p lies on the segment ab under tolerance: its distance from the
 * line (h311_) within tol[1] of 0, and t as h318_ computes it in [0, 1] or within tol[0]
 * of an end (h809_); else 0. So a point just past b on the line is on the segment here but
 * not inside for h318_. a = b is not guarded: t = 0/0 and on = 0. */
QXMATH_API void h319_(const double p[3], const double a[3], const double b[3], int *on);

/* h309_ — the segment p0p1 offset by *d within the plane of p0, p1, p2, towards p2's side
 * for d > 0: v = unit((a x b) x a) with a = p1 - p0, b = p2 - p0; q0 := p0 + d v,
 * q1 := p1 + d v. Collinear or coincident points give v = 0 (the flag is not examined):
 * q0 = p0, q1 = p1. */
QXMATH_API void h309_(const double p0[3], const double p1[3], const double p2[3],
                      const double *d, double q0[3], double q1[3]);


/* ==== end of points and lines in space ================================================ */

/* ==== matrix and frame routines (h101_ ... h160_, h922_, h956_, h960_, h961_, h963_, h1600_)  */

/* A 3x3 matrix is nine doubles by rows, m[r][c] = m[3r + c]; in a frame matrix the rows are
 * the frame's X, Y, Z axes in global components. A 4x4 matrix is sixteen doubles by rows,
 * m[r][c] = m[4r + c]; in a homogeneous transform column 3 holds the translation and row 3
 * the projective terms. A frame record is twelve doubles, the frame matrix (0..8) then the
 * origin (9..11); a scaled frame record adds the scale factor as element 12.
 *
 * Products are formed element by element in the order stated, one accumulator per
 * element, starting from the k = 0 term. Several argument orders are deliberately reversed
 * against the mathematical reading (h120_, h121_, h122_, h150_, h123_: the second argument
 * multiplies from the left). The output must not overlap an input unless a routine says it
 * may. No routine here reports an error except through the unitising of h960_ (as in
 * points and lines in space above). */

/* h101_ — w (out, 4) := m v for v (4), m (4x4): w[r] = sum over c = 0..3 of m[r][c] v[c]. */
QXMATH_API void h101_(const double v[4], const double m[16], double w[4]);

/* h104_ — q (out, 3) := the homogeneous transform of the point p (3) by m (4x4), with the
 * perspective divide: h = m[3][0] x + m[3][1] y + m[3][2] z + m[3][3] and
 * q[r] = (m[r][0] x + m[r][1] y + m[r][2] z + m[r][3]) / h, r = 0, 1, 2. An affine m
 * (row 3 = 0, 0, 0, 1) gives h = 1. h = 0 is deliberately not guarded (infinities or NaN). */
QXMATH_API void h104_(const double p[3], const double m[16], double q[3]);

/* h114_ — w (out, 3) := h104_(v, m) - h104_((0, 0, 0), m): the transform of the direction
 * v, so the translation cancels (a pure translation leaves v unchanged, up to the rounding
 * of the two sums). Each image is divided by its own weight, unguarded as in h104_. */
QXMATH_API void h114_(const double v[3], const double m[16], double w[3]);

/* h105_ — w (out, 3) := m^T v, w[c] = sum over r = 0..2 of m[r][c] v[r]: components in the
 * frame whose axes are m's rows back to global ones (the transpose of h100_). */
QXMATH_API void h105_(const double v[3], const double m[9], double w[3]);

/* h106_ — w (out, 3) := h100_(h105_(v, m1), m2): components in frame 1 re-expressed in
 * frame 2 (m1 = m2 an ortho-normal frame gives v back, up to rounding). The intermediate
 * is local, so w may be v. */
QXMATH_API void h106_(const double v[3], const double m1[9], const double m2[9], double w[3]);

/* h102_ — q (out, 3) := h100_(p - origin of f, matrix of f) with q[2] := 0: the coordinates
 * of the foot of p on the XY plane of the frame record f (12). p - origin is formed
 * locally, so q may be p. */
QXMATH_API void h102_(const double p[3], const double f[12], double q[3]);

/* h111_ — t (out, 4x4) := transpose of m (4x4), t[r][c] = m[c][r]. */
QXMATH_API void h111_(const double m[16], double t[16]);

/* h120_ — c (out, 3x3) := MTX3_multiply(a, b) = b a (reversed, deliberately). When a and b
 * are both ortho-normal the product is repaired by MTX3_ortho_normalize as MTX3_multiply
 * does; MTX3_multiply's result is dropped. c may be a or b. */
QXMATH_API void h120_(const double a[9], const double b[9], double c[9]);

/* h121_ — c (out, 4x4) := b a for a, b (4x4): c[i][j] = sum over k = 0..3 of
 * b[i][k] a[k][j]. The second argument multiplies from the left, deliberately: with a
 * transform, b after a. */
QXMATH_API void h121_(const double a[16], const double b[16], double c[16]);

/* h122_ — c (out, 3x3) := b a^T: c[i][j] = sum over k = 0..2 of b[i][k] a[j][k] (row i of b
 * dot row j of a: b's axes expressed in the frame a). Reversed, deliberately. */
QXMATH_API void h122_(const double a[9], const double b[9], double c[9]);

/* h150_ — c (out, 3x3) := b a^T, the same product as h122_ by a separate routine (the same
 * arithmetic order, so the same bits). */
QXMATH_API void h150_(const double a[9], const double b[9], double c[9]);

/* h123_ — c (out, 4x4) := h121_(h130_(a), b) = b (widened a), for a (3x3), b (4x4). The
 * widening is local, so c may overlap a but not b. */
QXMATH_API void h123_(const double a[9], const double b[16], double c[16]);

/* h130_ — m (out, 4x4) := a (3x3) widened: a in the upper left, zeros in column 3 and
 * row 3, m[3][3] = 1.0 (no translation). */
QXMATH_API void h130_(const double a[9], double m[16]);

/* h116_ — w (out, 3) := c0 a + c1 b + c2 d + c3 e for the weights c (4), summed left to
 * right per component (the blend of the four-point curve forms). Each component reads
 * only the same component of the inputs, so w may be a, b, d or e exactly (no partial
 * overlap). */
QXMATH_API void h116_(const double c[4], const double a[3], const double b[3],
                      const double d[3], const double e[3], double w[3]);

/* h1600_ — orients n (in/out, 3) towards p1: with d = n . (p1 - p0), d within tol[0] of 0
 * (p1 on the plane through p0 normal to n, or a null n) gives *ok = 0 and n unchanged;
 * otherwise *ok = 1 and n is negated when d < 0. */
QXMATH_API void h1600_(const double p0[3], const double p1[3], double n[3], int *ok);

/* h160_ — m (out, 3x3) := the identity. */
QXMATH_API void h160_(double m[9]);

/* h922_ — m (out, 3x3) := *s I: s on the diagonal, zeros elsewhere. */
QXMATH_API void h922_(const double *s, double m[9]);

/* h956_ — w (out, 3) := h100_(v, matrix of f) + origin of f, component by component, for the
 * frame record f (12). The origin is added, not subtracted first, as callers expect. w may
 * be v. */
QXMATH_API void h956_(const double v[3], const double f[12], double w[3]);

/* h961_ — *y := |scale of f| *x, the scale being element 12 of the scaled frame record f
 * (13). */
QXMATH_API void h961_(const double *x, const double f[13], double *y);

/* h963_ — the same as h100_ (the same bits); w may be v. */
QXMATH_API void h963_(const double v[3], const double m[9], double w[3]);

/* h960_ — m (out, 3x3) := the frame of three points: row 0 X = unit(p1 - p0); row 1 first
 * unit(p2 - p1) (p2 - p1, not p2 - p0, deliberately); row 2 Z = unit(X x row 1) with *ok
 * its flag. *ok = 0 (collinear or coincident points) stops there, the rows as written: X
 * (zero when p0 = p1), unit(p2 - p1) (zero when p1 = p2) and zeros. Otherwise row 1 :=
 * Z x X, a right-handed ortho-normal frame with X along p0 -> p1 and p2 on the positive Y
 * side. Unitising is vunt3_'s. m must not overlap the points. */
QXMATH_API void h960_(const double p0[3], const double p1[3], const double p2[3], double m[9],
                      int *ok);

/* Change of frame of frame records (f, r, g: 12 doubles each). A frame given in global
 * coordinates is re-expressed relative to a reference frame r by h125_ and brought back by
 * h140_: h140_(h125_(f, r), r) = f up to rounding when r's matrix is ortho-normal. The
 * matrix products go through h120_, so ortho-normal operands give a repaired ortho-normal
 * product. Results are formed locally and copied out: the output may be either input. */

/* h125_ — g (out) := f relative to r: matrix h120_(h110_(r.m), f.m) = f.m r.m^T (row i: f's
 * axis i in r's components), origin h100_(f.o - r.o, r.m). */
QXMATH_API void h125_(const double f[12], const double r[12], double g[12]);

/* h140_ — f (out) := g, given relative to r, in global coordinates: matrix
 * h120_(r.m, g.m) = g.m r.m, origin h100_(g.o, h110_(r.m)) + r.o (= r.m^T g.o + r.o). */
QXMATH_API void h140_(const double g[12], const double r[12], double f[12]);


/* ==== end of matrix and frame routines ================================================ */

/* ==== points, arcs and conics in the plane (h201_ ... h264_) ========================== */

/* Points of the XY plane are three doubles of which only x and y are read. tol[i] is entry i
 * of the tolerance table. */

/* h201_ — the XY distance of p and q: sqrt of h200_'s squared distance (source file h201_). */
QXMATH_API void h201_(const double p[3], const double q[3], double *d);

/* h202_ — *eq = 1 when the squared XY distance of p and q is within tol[2] of 0, else 0. */
QXMATH_API void h202_(const double p[3], const double q[3], int *eq);

/* h203_ — which of a and b is nearer to p in XY: *code 1 a nearer (also when a distance is
 * NaN), 2 b strictly nearer, 3 the squared distances exactly equal (no tolerance; equality
 * wins). The XY counterpart of h303_. */
QXMATH_API void h203_(const double a[3], const double b[3], const double p[3], int *code);

/* h204_ — *eq = 1 when the squared XY distance of p and q is <= (*t)^2 (h806_ against t*t).
 * h206_, by contrast, compares the squared distance with *t itself: deliberate. */
QXMATH_API void h204_(const double p[3], const double q[3], const double *t, int *eq);

/* h224_ — the angles of p and q around the centre c, each h053_(y - c.y, x - c.x) in
 * [0, 2 pi): ang[0] for p, ang[1] for q. Every input is read before ang is written. */
QXMATH_API void h224_(const double p[3], const double q[3], const double c[3], double ang[2]);

/* h221_ — h224_ in degrees: both angles multiplied by 57.29577951308235. */
QXMATH_API void h221_(const double p[3], const double q[3], const double c[3], double ang[2]);

/* h222_ — the length of the circular arc of radius *r around c: counter-clockwise from p to
 * q when *sense is 1, from q to p for any other sense; r (beta' - alpha) with beta' = beta + 2
 * pi when beta <= alpha. End angles equal under tol[0] (p = q included) give the full circle
 * 2 pi r, deliberately not an empty arc. */
QXMATH_API void h222_(const int *sense, const double *r, const double c[3], const double p[3],
                      const double q[3], double *len);

/* h230_ — the line *a x + *b y + *c = 0 through p and q: a = q.y - p.y, b = -(q.x - p.x),
 * c = q.x p.y - q.y p.x, each divided by sqrt(a^2 + b^2 + c^2) — the norm of all three
 * coefficients, deliberately, so c is not the origin's signed distance. *status 1 done; 2
 * when a^2 + b^2 equals 0 by eqz_ kind 0 (p and q coincide): a, b, c untouched. */
QXMATH_API void h230_(const double p[3], const double q[3], int *status, double *a, double *b,
                      double *c);

/* Conics. *type 2 ellipse ((u/a)^2 + (v/b)^2 = 1), 3 parabola (v^2 = a u, a the parameter,
 * the centre its vertex), 4 hyperbola ((u/a)^2 - (v/b)^2 = 1); u = (x - x0) d1 + (y - y0) d2
 * along the axis, v = -(x - x0) d2 + (y - y0) d1 across it, (d1, d2) the axis's cosine and
 * sine. h260_ and h262_ take every code below 3 as the ellipse and above 3 as the hyperbola.
 * a, b, u and w1 divide without guards. */

/* h260_ — the implicit coefficients coef = (A, B, C, D, E, F) of A x^2 + B xy + C y^2 + D x +
 * E y + F = 0, not normalised, each formula evaluated as written (centre = (x0, y0)). */
QXMATH_API void h260_(const int *type, const double centre[2], const double *a, const double *b,
                      const double *d1, const double *d2, double coef[6]);

/* h262_ — the conic point q (x and y written; z not) for the parameter pair (w1, w2):
 * ellipse U = a w1, V = b w2 (w1, w2 the cosine and sine of the parameter angle); parabola
 * V = w1, U = w1^2 / a (w2 not read); hyperbola U = a / w1, V = b w2 / w1. Then
 * q.x = x0 + U d1 - V d2, q.y = y0 + V d1 + U d2. q may alias centre. */
QXMATH_API void h262_(const int *type, const double *a, const double *b, const double *w1,
                      const double *w2, const double centre[2], const double *d1,
                      const double *d2, double q[3]);

/* h264_ — the parameter *t of p on the conic; the axis direction dir = (sine, cosine) comes
 * sine first here, deliberately unlike h260_ and h262_. Type 1: *t untouched; 3: t = v;
 * 4: t = h053_(v k / b, |k|) with k = a / u; 2 and every code outside 1 .. 4: the ellipse
 * angle h053_(v / b, u / a). */
QXMATH_API void h264_(const int *type, const double centre[2], const double *a, const double *b,
                      const double dir[2], const double p[3], double *t);

/* ==== end of points, arcs and conics in the plane ===================================== */

/* ==== coordinate-system constructions (v6037a_ ... h430_) ============================= */

/* Matrices are 3x3 as three rows, the X, Y and Z axes. Status 1 done, 2 degenerate; no
 * message is written. These constructions test against the fixed 1.0e-10 of VEC3_unitize /
 * VEC3_is_parallel, not the tolerance table, deliberately. */

/* v6043_ — the system with origin o, X towards px and Y on the side of py (source file
 * v6043_). Status 2 when px - o and py - o are parallel (m and origin untouched) or a
 * unitising or MTX3_init fails (origin = o written, m as MTX3_init left it). */
QXMATH_API void v6043_(const double o[3], const double px[3], const double py[3], double m[9],
                       double origin[3], int *status);

/* v6043_normal — v6043_ with the Z axis given as a normal direction instead of the point py:
 * Z = unit(normal), X the unit component of px - o across it, Y = Z x X. Status 2 (m and
 * origin untouched) when px - o is parallel to the normal or either is null (1.0e-10); when a
 * later step fails, origin = o and status 2. */
QXMATH_API void v6043_normal(const double o[3], const double px[3], const double normal[3],
                             double m[9], double origin[3], int *status);

/* v6045_ — the system around the line ab: Z along the line from b towards a, f the foot of
 * p on it (h430_, written first), X = unit(p - f), so p lies on the positive X axis. Status
 * 2 when p lies on the line, |p - f| <= 1.0e-10 (f still written, then within 1.0e-10 of p;
 * m untouched), or when a = b (MTX3_init_y_z fails). f may alias a, b or p. */
QXMATH_API void v6045_(const double a[3], const double b[3], const double p[3], double m[9],
                       double f[3], int *status);

/* v6037a_ — m turned by ang[0] about its X axis, then ang[1] about the new Y, then ang[2]
 * about the newest Z (degrees): each step r := r . R^T with R = h923_(current axis, angle),
 * formed by h110_ and h120_. The caller's angles are converted in place (times
 * 0.01745329251994328) and left in radians: a deliberate side effect. r may alias m. */
QXMATH_API void v6037a_(const double m[9], double ang[3], double r[9]);

/* v6066_ — the reset to the identity system: m := identity (h160_), o := (0, 0, 0). */
QXMATH_API void v6066_(double m[9], double o[3]);

/* v6054_ — makes (matrix, origin) the session's work coordinate system (the counterpart of
 * v6051_, same argument order). Status 1 stored; 2 when the matrix is not ortho-normal
 * (MTX3_is_ortho_normal): nothing stored. The WCS tags and display state are not touched. */
QXMATH_API void v6054_(const double matrix[9], const double origin[3], int *status);

/* v6060_ — a point between absolute and work-coordinate-system coordinates (origin o, axes
 * the rows of M): *mode 1 q = M (p - o), mode 2 q = o + M^T p. Status 1 done, 2 any other
 * mode (q untouched). q may alias p. */
QXMATH_API void v6060_(const int *mode, const double p[3], double q[3], int *status);

/* h430_ — the foot f of point p on the line through a and b (source file h430_).
 *   a[3], b[3]  in   two points of the line
 *   p[3]        in   the point to project
 *   f[3]        out  a + t (b - a) with t = ((p - a).(b - a)) / |b - a|^2; may alias a, b or p
 * Returns 1 when |b - a|^2 equals 0.0 by the number tolerance (eqz_, kind 0: the squared
 * length, deliberately, against the plain number tolerance); t is then 0 and f = a.
 * Returns 0 otherwise. */
QXMATH_API int h430_(const double a[3], const double b[3], const double p[3], double f[3]);

/* ==== end of coordinate-system constructions ========================================== */

QXMATH_END_DECLS

#endif
