/* spline.h — B-spline basis, knot vectors and spline interpolation through points.
 *
 * Knot vectors are 0-based arrays of non-decreasing doubles. A B-spline of
 * order k (degree k - 1) with N poles has N + k knots; its parameter range is
 * [knots[k - 1], knots[N]]. Failures of the basis, knot and banded routines are
 * left in the error state of solvers.h (merrorpush ... merrorlevel); the
 * interpolation routines flush it before they return.
 *
 * NaN and infinite input. A NaN parameter lies outside every range:
 * mbasiseval pushes 2900 for a NaN or infinite t and writes nothing, h0917
 * and h0918 return -1, and h0914_ refuses a NaN or infinite point or
 * condition parameter (-1, and so does h0913 when it places its knots by
 * h0914_). On knots that do not come from h0914_ (the caller's, in h0913a and
 * h0913b, or knot_seq_order_4's in h0913) such a parameter leaves its row
 * unfilled and the result is 1. h0916 does not test t: a NaN t gives NaN
 * values. Coordinates of points and condition vectors are not tested: a NaN
 * or infinite one propagates into the poles of its coordinate and the result
 * stays 0. Knots are not tested for being finite either. Every search over
 * knots is a bisection or a pass bounded by the count, so NaN or infinite
 * knots end every routine; they only change the span found, give NaN basis
 * values, leave rows unfilled (result 1) or make a result that is not a knot
 * vector. The tolerant knot equality below holds between an infinite knot and
 * any finite one (the relative test scales by the infinite magnitude);
 * get_unique_reals' absolute test drops a value whose difference from its
 * predecessor is NaN.
 */
#ifndef QXMATH_SPLINE_H
#define QXMATH_SPLINE_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* The interpolation description, passed by address: seven ints in this order
 * (an int[7] laid out the same way may be passed instead). */
typedef struct QX_interp_desc {
    int n_points;           /* n >= 1 points to pass through */
    int order;              /* k, degree + 1; the band half-width is k - 1 */
    int periodic;           /* 0 open, non-zero closed (periodic) */
    int dimension;          /* 3 Cartesian points, 4 with a weight as the fourth value */
    int n_cond1;            /* c1, first group of derivative conditions */
    int n_cond2;            /* c2, second group (h0913b: non-zero forces the dense path) */
    int closure_continuity; /* periodic: the wrap ties r = min(this + 1, k - 1) poles */
} QX_interp_desc;

/* ==== basis and knot vectors ============================================================== */

/* Knot equality and order in this section are tolerant: two knots are equal
 * when they differ by at most 1.0e-10, or by at most 1.0e-15 times the larger
 * magnitude. A knot vector of degree d with s spans is s + 2d + 1
 * non-decreasing doubles carrying s + d basis functions; (d, s) is how its
 * length is given. Failures are left in the error state of solvers.h
 * (merrorpush; the caller tests merrorlevel and flushes). Not thread-safe. */

/* The d + 1 B-spline basis functions of degree d that are non-zero at t
 * (source file bspline_utilities).
 *   d       in   degree, 0 ... 24 (the recurrence works in 25-value arrays)
 *   s       in   span count, >= 1
 *   knots   in   s + 2d + 1 doubles, non-decreasing; last = s + 2d
 *   t       in   parameter in [knots[0], knots[last]], tolerantly
 *   first   out  index (0-based) of the basis function of values[0]
 *   values  out  d + 1 doubles, the functions first ... first + d in
 *                increasing index; non-negative and summing to 1 on
 *                [knots[d], knots[last - d]]
 * The span i is the last index in 0 ... last - 1 whose knot is <= t (a run of
 * equal knots gives its last member), found by bisection (lo = 0, hi = last;
 * mid = (lo + hi) / 2; t >= knots[mid] moves lo, otherwise hi), then clamped
 * into d ... last - d - 1, and *first = i - d. The upper clamp makes t at the
 * right end of a clamped vector use the last non-empty span (t = knots[last]
 * gives the last function the value 1). The lower clamp only acts where the
 * span found is below d: t tolerantly below knots[0] of a clamped vector (it
 * then uses the first span), or t in the d leading spans of an unclamped
 * vector, where the functions of negative index would need knots before
 * knots[0]; there the polynomial pieces of span d are extended, so *first is
 * never negative. Likewise past the end of an unclamped vector's range,
 * knots[last - d] < t <= knots[last], span last - d - 1 is extended (such
 * values may be negative). The values come from the triangular Cox-de Boor
 * recurrence on span i, with left[j] = t - knots[i + 1 - j] and right[j] =
 * knots[i + j] - t: at level j = 1 ... d, for r = 0 ... j - 1, temp =
 * N[r] / (right[r + 1] + left[j - r]), N[r] = saved + right[r + 1] * temp,
 * saved = left[j - r] * temp (saved starting at 0.0), and N[j] = saved.
 * Failure: t outside the range (so also a NaN or infinite t), d outside 0 ... 24, s < 1,
 * s + 2d beyond an int, or a NULL pointer push 2900 (QX_MERR_OUTSIDE_KNOTS),
 * level 4, and nothing is written. An empty span (a run of more than d + 1
 * equal knots at the right end) divides zero by zero: NaN values. values may
 * not overlap knots. */
QXMATH_API void mbasiseval(int d, int s, const double *knots, double t, int *first, double *values);

/* A knot vector of degree d on which both inputs can be represented (source
 * file sea_knot).
 *   knots1, d1, s1   in   first vector: s1 + 2 d1 + 1 doubles of degree d1
 *   knots2, d2, s2   in   second vector, likewise
 *   d                in   degree of the result, normally >= d1 and d2
 *   knots            out  *knots: the result, *s + 2d + 1 doubles, allocated
 *                         with SM_alloc and owned by the caller; NULL on
 *                         failure
 *   s                out  span count of the result
 * Each input is read as its distinct knots, each with the continuity
 * (degree - multiplicity) the input has there; a knot joins a run when it
 * equals its predecessor, starts a new one when it is greater. The two lists
 * are merged in order, the second input's knot first when two are equal.
 * A knot of both inputs keeps the smaller continuity c, a knot of one input
 * its own, and each is written d - c times (0 times if that is negative,
 * which only happens for d below an input's degree). So with clamped cubic
 * inputs the ends get multiplicity 4, and a quadratic's double knot meeting
 * a cubic's simple knot at d = 3 gets 3 - min(0, 2) = 3.
 * The inputs should cover the same parameter range. If they do not, no knot
 * is read past either input: when the first input's knots run out while the
 * second's remain, the rest of the second follow, and the result is the
 * merge of both as above (e.g. {0,0,1,1} and {0,0,1,2,2} at d = 1 give
 * {0,0,1,1,2,2}).
 * Inputs that are not non-decreasing, contain NaN or have knots of one
 * input within tolerance of two of the other give a result in the merge
 * order, limited to the number of distinct values counted (one plus the
 * number of increases along the merged list); such results are not
 * guaranteed to be a knot vector.
 * A NULL input, or one with s + 2d + 1 < 1, is an empty vector.
 * Failures, in the error state, level 4: an empty result (both inputs empty,
 * or d too small to keep any knot) pushes 951 (QX_MERR_EMPTY_RANGE) and
 * stores *knots = NULL, *s = -2d - 1; a result whose length or span count
 * does not fit an int, or memory the host did not give (its report having
 * returned), pushes 950 (QX_MERR_NO_STORAGE), *knots = NULL, *s = 0. NULL
 * knots or s pushes 951 and stores nothing. The temporary lists (host memory) are
 * freed before the return; a host that unwinds from a failed allocation
 * keeps them until its operation ends. */
QXMATH_API void merge_knots(const double *knots1, int d1, int s1, const double *knots2, int d2,
                            int s2, int d, double **knots, int *s);

/* The knot vector of cubic interpolation on the unit parameter range (source
 * file knot_seq_order_4), for h0913.
 *   desc        in   reads n_points (n), order (k, normally 4), periodic,
 *                    n_cond1 and n_cond2 (c = n_cond1 + n_cond2)
 *   params      in   n point parameters, non-decreasing; 0.0 ... 1.0 for an
 *                    open curve; a periodic curve's do not include the
 *                    closing 1.0
 *   condparams  in   c condition parameters (first group, then second)
 *   nknots      out  n + k + c, plus 3 when periodic
 *   knots       out  the vector; the caller supplies room for
 *                    max(*nknots, n + 6) doubles, i.e. up to two more than
 *                    the count (open, c = 0: n + 6 values are written for a
 *                    count of n + 4)
 * The vector is 0, 0, 0, the parameters, 1, 1, 1; then each condition
 * parameter p with |p| > 1.0e-10 and |p - 1| > 1.0e-10, in order, is
 * inserted before the first knot >= p, the knots up to the count moving up
 * by one (the value that falls past the count is dropped); a condition at
 * an end adds no knot (the ends already carry it), and nor does a NaN.
 * Periodic: the count grows by 3 and, with N the new count, knots[2] =
 * knots[N-5] - knots[N-4]; knots[1] = knots[2] + (knots[N-6] - knots[N-5]);
 * knots[0] = knots[1] + (knots[N-7] - knots[N-6]); knots[N-3] = knots[4] -
 * knots[3] + 1.0; knots[N-2] = knots[N-3] + (knots[5] - knots[4]);
 * knots[N-1] = knots[N-2] + (knots[6] - knots[5]) (in that order).
 * The counts should make the vector consistent (at most two conditions at
 * the ends for an open curve); with more, the positions past those written
 * keep what the caller had there. A parameter above every knot is written
 * after them if that is inside the count, otherwise dropped.
 * Returns 0. A NULL desc or knots, NULL params (n > 0) or condparams
 * (c > 0), negative counts, a count beyond an int, or a periodic
 * description with n < 1 or fewer than 7 knots set *nknots = 0 (if nknots
 * is not NULL) and write nothing. */
QXMATH_API int knot_seq_order_4(const QX_interp_desc *desc, const double *params,
                                const double *condparams, int *nknots, double *knots);

/* The sorted values without repeats (source file get_unique_reals).
 *   values   in   count doubles, sorted
 *   count    in   number of values
 *   unique   out  *unique: the values kept, in a block of count doubles
 *                 allocated with SM_alloc and owned by the caller
 *   nunique  out  number kept
 * values[0] is always kept; values[i] is kept when |values[i] - values[i-1]|
 * > 1.0e-10, compared with the preceding input value, not the last one kept:
 * a run drifting by less than 1.0e-10 per step collapses to its first member
 * however far it drifts, and a NaN difference drops the value.
 * count <= 0 (or NULL values or unique) sets *nunique = 0 and leaves *unique
 * untouched. Memory the host did not give (its report having returned) sets
 * *nunique = 0 and *unique = NULL. */
QXMATH_API void get_unique_reals(const double *values, int count, double **unique, int *nunique);

/* ==== end of basis and knot vectors ======================================================= */

/* ==== interpolation ======================================================================= */

/* The family builds the poles of a B-spline of order k through n points at
 * their parameters, meeting c1 + c2 first-derivative conditions, open or
 * periodic, with 3-D points or weighted 4-D points (x.w, y.w, z.w, w).
 *
 * System size N (number of poles): n + c1 + c2 for an open curve; for a
 * periodic one n + c1 + c2 + r with r = min(closure continuity + 1, k - 1)
 * wrap rows. The knot vector has N + k knots; the curve's range is
 * [tmin, tmax] = [knots[k - 1], knots[N]].
 *
 * Descriptions the family accepts: n >= 1, 2 <= k <= 25, dimension 3 or 4,
 * c1 >= 0, c2 >= 0, for a periodic curve a closure continuity >= -1, and
 * N + k within an int. Any other description, a NULL description or a NULL
 * array that would be read or written (points, params, knots, poles,
 * nknots; condparams and condvectors only when c1 + c2 > 0) gives -1 at
 * once with nothing written. The condition-kind array (condkinds) is
 * reserved: handed through to h0926_, read by no routine of the family, and
 * may be NULL.
 *
 * Results: 0 poles computed; 1 the system is singular (a zero pivot in the
 * band, error 7235, or a zero row of the dense matrix, which includes a row
 * the assembly could not fill: a parameter outside the knots, a NaN, a row
 * whose basis functions fall outside the band; the dense LU reports no
 * other singularity: equal rows give 0 and a huge solution), or a negative
 * weight on the banded path; -1 a refused description, band storage that could not be
 * set up (also because an error was already pending in the error state of
 * solvers.h: msetup_banded refuses then), memory the host did not give
 * (its report having returned), or a failed knot placement. Whatever the
 * result, the error state is flushed before the return: nothing stays
 * pending, not even an error that was pending on entry. On 1 or -1 (other
 * than a refused description) the poles (and h0913's knots) may hold
 * intermediate values. The outputs must not overlap the inputs.
 *
 * Paths: an open curve is solved on the band (h0913a, half-bandwidth k - 1;
 * rows interleaved in parameter order by h0926a). A periodic curve is
 * always solved densely, whichever entry point is called, and so is any
 * curve given to h0913b with c2 != 0: an N x N matrix (SM_calloc), rows by
 * h0926_ (point rows, then condition rows, then wrap rows), right-hand
 * sides by h0927_, SOLVE_lu_solver with nrhs = dimension, solved in place in
 * poles. The negative-weight test (result 1 when a 4-D pole's weight is
 * below 0.0) belongs to the banded path only; the dense path returns the
 * solver's result. Not thread-safe (the shared error state). */

/* Knots and poles of the interpolating B-spline. For order 4, open, c1 > 0,
 * and the first and the c1-th condition parameters within 1.0e-10 of the
 * first and last point parameters (strictly), the knots come from
 * knot_seq_order_4 (which places them on [0, 1]: the parameters must run
 * from 0 to 1 then), otherwise from h0914_; -1 from either is returned.
 *   desc        in   the description (see above)
 *   points      in   n rows of dimension doubles
 *   params      in   n doubles, non-decreasing
 *   condparams  in   c1 + c2 doubles (first group, then second)
 *   condkinds   in   c1 + c2 ints, reserved (may be NULL)
 *   condvectors in   c1 + c2 rows of dimension doubles, the derivatives
 *   nknots      out  N + k
 *   knots       out  room for N + k + 2 doubles (knot_seq_order_4 writes
 *                    two more than it counts); N + k are the vector
 *   poles       out  N rows of dimension doubles
 * Returns 0, 1 or -1 as above. */
QXMATH_API int h0913(const QX_interp_desc *desc, const double *points, const double *params,
                     const double *condparams, const int *condkinds, const double *condvectors,
                     int *nknots, double *knots, double *poles);

/* As h0913 on the caller's knot vector (N + k doubles, non-decreasing):
 * periodic, or c2 != 0, dense; otherwise h0913a. */
QXMATH_API int h0913b(const QX_interp_desc *desc, const double *points, const double *params,
                      const double *condparams, const int *condkinds, const double *condvectors,
                      const double *knots, double *poles);

/* The banded path: msetup_banded(N, k - 1) (-1 when it fails, including
 * for an error pending on entry), rows and right-hand sides by h0926a,
 * mdecompose_banded, then every coordinate solved with msolve_banded's
 * arithmetic (1 at a zero pivot), and the weight test for dimension 4. The
 * coordinates are solved side by side in place in poles rather than one
 * column at a time through the solver's vector: the same bits, with the
 * band read once per sweep (the vector msetup_banded makes goes unused). A periodic description is
 * solved densely instead. Arguments as h0913b. */
QXMATH_API int h0913a(const QX_interp_desc *desc, const double *points, const double *params,
                      const double *condparams, const int *condkinds, const double *condvectors,
                      const double *knots, double *poles);

/* Value and first derivative of one B-spline basis function of order k,
 * number span - (k - 1) + i, at t (source file h0916).
 *   t        in   parameter, normally in the span (outside it the span's
 *                 polynomial piece is extended)
 *   knots    in   count doubles, non-decreasing
 *   k        in   order, 1 ... 25
 *   span     in   knots[span] < knots[span + 1], k - 1 <= span <= count - k - 1
 *                 (h0917's result)
 *   i        in   0 ... k - 1
 *   value, deriv  out (either may be NULL)
 * Returns 0; 1 for k outside 1 ... 25; 2 for a span out of range or empty
 * (or NULL knots); 3 for i outside 0 ... k - 1; nothing is written then.
 * All k functions of the span come from one triangular Cox-de Boor
 * recurrence (at level j: temp = v[r] * (1 / (right[r + 1] + left[j - r])),
 * the reciprocal taken first so that it overlaps the recurrence's chain,
 * v[r] = saved + right[r + 1] * temp, saved = left[j - r] * temp, with
 * left[j] = t - knots[span + 1 - j], right[j] = knots[span + j] - t; the
 * derivative d[r] = (k - 1) * temp[r - 1] - (k - 1) * temp[r] from the last
 * level's temps) and entry i is picked, so the row assembly (h0926a,
 * h0926_), which computes the whole row at once, gets the same bits. */
QXMATH_API int h0916(double t, const double *knots, int count, int k, int span, int i,
                     double *value, double *deriv);

/* The knot span of t (source file h0917): -1 if t < knots[0] - tolerance
 * or t > knots[count - 1] + tolerance; inside (knots[0] < t < knots[count -
 * 1]) the first i with knots[i] != knots[i + 1], knots[i] <= t < knots[i +
 * 1]; at or past the last knot the last non-empty span, at or before the
 * first knot the first non-empty span; -1 when there is none (all knots
 * equal, count < 2, NULL knots, t NaN). Found by bisection in O(log count): the knots
 * must be non-decreasing and free of NaN for the result to be the one just
 * defined (otherwise it is still -1 or an index 0 ... count - 2). */
QXMATH_API int h0917(double t, const double *knots, int count, double tolerance);

/* The span of *t for a B-spline of order k, with *t clamped into the curve's
 * range [lo, hi] = [knots[k - 1], knots[count - k]] (source file h0918):
 * i = h0917(*t, knots, count, 1.0e-12); -1 when i < k - 1 or i > count -
 * k - 1, or *t < lo - 1.0e-12 or *t > hi + 1.0e-12 (or k < 1); otherwise
 * *t <= lo sets *t = lo, *t >= hi sets *t = hi - 5.0e-13 (the caller's t is
 * changed), and i (the span found before the change) is returned. */
QXMATH_API int h0918(double *t, const double *knots, int count, int k);

/* Band rows and right-hand sides of the interpolation system (source file
 * h0926a), in parameter order:
 *   - the first row is a condition row if c1 + c2 > 0 and |condparams[0] -
 *     tmin| < 1.0e-12;
 *   - after a point row, while conditions and points remain, the next row is
 *     a condition row if the next point's and the next condition's
 *     parameters are both within 1.0e-12 of tmax, or the next condition's
 *     parameter is within 1.0e-12 of the next point's;
 *   - after a condition row, the next is a condition row only if conditions
 *     remain, the next one's parameter is within 1.0e-12 of tmax and the
 *     point rows written number nknots - k - 1 (= N - 1, which cannot hold
 *     while another condition remains; kept as the rule is written);
 *   - otherwise a point row; once one kind is used up, the rest are of the
 *     other kind.
 * Row r's right-hand side (point or condition vector) is copied into poles
 * row r. A parameter equal to tmax is lowered by 5.0e-13; point rows take
 * their span from h0917 at tolerance 1.0e-5, condition rows from h0918; the
 * k values (point) or first derivatives (condition) of h0916 go into
 * columns span - (k - 1) ... span. For a periodic description the r wrap
 * rows that follow get 9.0 in column j and -9.0 in column N - r + j and
 * zero right-hand sides (they fit a band of half-width k - 1 only in tiny
 * systems).
 *   band   in/out  handle of msetup_banded(N, k - 1), zero on entry
 *   poles  out     N rows of dimension doubles
 * Returns 0 when every row is filled; 1 when the assembly stopped at a row
 * whose span search gave -1, whose h0916 failed, or whose columns fall
 * outside that row's band (r <= span <= r + k - 1 is required): that row's
 * right-hand side is copied, its coefficients and the later rows are not
 * written; -1 for a refused description (nothing written). Reads neither
 * the error state nor condkinds. */
QXMATH_API int h0926a(const QX_interp_desc *desc, const double *points, const double *params,
                      const double *condparams, const double *condvectors, const double *knots,
                      double *const *band, double *poles);

/* Rows of the dense interpolation matrix (source file h0926): rows 0 ... n
 * - 1 the points, then the c1 + c2 conditions, then the r wrap rows
 * (periodic), each computed as in h0926a (tmax lowering, h0917 at 1.0e-5
 * for points, h0918 for conditions, h0916's row; wrap rows 9.0 / -9.0).
 *   condkinds  reserved, not read (may be NULL)
 *   a          in/out  N x N flat, row-major, zero on entry; only the
 *                      non-zero coefficients are written
 * Returns 0; 1 when the assembly stopped at a point or condition row (its
 * span search gave -1 or h0916 failed): that row and the ones after it,
 * wrap rows included, stay zero; -1 for a refused description. */
QXMATH_API int h0926_(const QX_interp_desc *desc, const double *params, const double *condparams,
                      const int *condkinds, const double *knots, double *a);

/* Right-hand sides of the dense system (source file h0927): poles rows 0
 * ... n - 1 the points, then the c1 + c2 condition vectors, then r zero
 * rows (periodic). poles: N rows of dimension doubles. Returns 0, or -1 for
 * a refused description (nothing written). */
QXMATH_API int h0927_(const QX_interp_desc *desc, const double *points, const double *condvectors,
                      double *poles);

/* ==== end of interpolation ================================================================ */

/* ==== knot placement (h0914_) ============================================================= */

/* The knot vector of the interpolation the description asks for (source
 * file h0914_), for every case knot_seq_order_4 does not take.
 *   desc        in   the description (as h0913; dimension is not used)
 *   params      in   n doubles, strictly increasing (gaps above 1.0e-10)
 *   condparams  in   c1 + c2 doubles in any order (read only when c1 + c2 > 0)
 *   nknots      out  N + k
 *   knots       out  N + k doubles (no more room is used)
 *
 * Sites: the point and condition parameters merged in parameter order (a
 * condition before a point at the same parameter); two sites within
 * 1.0e-10 are at the same parameter, and a condition within 1.0e-10 of an
 * end of the range is taken at that end.
 *
 * Open curve: range [a, b] = [params[0], params[n - 1]]; k copies of a, the
 * N - k interior knots knots[k + j] = (s[j + 1] + ... + s[j + k - 1]) / (k -
 * 1) (de Boor's averaging of the N sites s[0 ... N - 1]), k copies of b.
 * Order 2 keeps a site that shares its parameter with no other as its knot
 * and puts the knot of one that does (a point with its condition) midway
 * between its neighbours, so each such pair gets a linear piece of its own
 * (two neighbouring pairs then share a double knot, where the curve may
 * break: the count of conditions leaves no other choice).
 *
 * Periodic curve: range [a, b] = [params[0], 1.0], period P = b - a; the
 * points lie in [a, b) (the closing point, params[0] again at b, is not in
 * the list) and the conditions in [a, b]. r wrap rows need a seam of
 * multiplicity mu = k - r at a and at b, so the closed curve is C^(r - 1)
 * there, and knots[i] = knots[N - r + i] - P, knots[N + mu + i] = knots[k +
 * i] + P (i < r), taken on the periodic extension.
 *   r = 0: as an open curve on [a, b] (no closure; a condition at b is the
 *          end derivative).
 *   r = 1: as an open curve on [a, b] whose sites end with the closing point
 *          at b, then one wrapped knot each end; conditions at a and at b are
 *          the one-sided derivatives there, both allowed.
 *   r >= 2: cyclic averaging: with the sites s[0] = a ... s[M - 1] extended
 *          by s[l + M] = s[l] + P (M = n + c1 + c2), v(j) = (s[j - k + 1] +
 *          ... + s[j - 1]) / (k - 1) for every integer j; the M knots of a
 *          period are v(j0 + mu) ... v(j0 + M - 1) and the seam, which takes
 *          the place of v(j0) ... v(j0 + mu - 1). Among the j0 (1 <= j0 <= r)
 *          that keep the knots in order, the seam exactly mu knots (an
 *          average within 1.0e-12 of a counts as on it) and every site
 *          strictly inside its basis function's support (such j0 always
 *          exist), the one that moves those mu averages least (the first
 *          of a tie). A condition at b is the same as one at a (the
 *          derivative is continuous there).
 *
 * Why it is solvable: with B_i matched to site s[i], averaging gives knots[i]
 * < s[i] < knots[i + k] whenever no k consecutive sites coincide, which the
 * checks below ensure (a parameter holds at most a point and a condition);
 * at a clamped end the end site sits on the end knot as the clamping
 * requires. For points, and for conditions each at a point's parameter
 * (Hermite data), these Schoenberg-Whitney conditions make the open system
 * non-singular, and their rows taken in site order (as h0926a takes them)
 * fit the band: row i's span lies in i ... i + k - 1 (order 2's rule keeps
 * the same inequalities). For a periodic curve the cyclic conditions are
 * necessary, not sufficient; averaging puts knots at (averaged) sites for
 * even k and between sites for odd k, the placements that make periodic
 * interpolation well posed for (near-)uniform sites, and the system is found
 * well conditioned on random chord-length data. A condition at a parameter that
 * carries no point (derivative only) gets a site like any other, but the
 * system may be singular then (e.g. order 3, points at 0 and 1, a
 * derivative at 0.5).
 *
 * Returns 0; -1 with nothing written for: a description the family refuses
 * (see above) or NULL params, nknots, knots (condparams when c1 + c2 > 0);
 * N < k (too few sites for the order); an open curve with n < 2; a NaN or
 * infinite parameter; two point parameters not increasing by more than
 * 1.0e-10; a periodic last point within 1.0e-10 of 1.0 or beyond it; a
 * condition outside the range by more than 1.0e-10; two conditions at the
 * same parameter (for r >= 2 one at a and one at b included); and knots
 * that rounding would leave out of order (parameters of extreme magnitude).
 * Scratch memory from SM_alloc, freed before returning; -1 if the host
 * gives none. Reads params[0 ... n - 1] and condparams[0 ... c1 + c2 - 1]
 * only. */
QXMATH_API int h0914_(const QX_interp_desc *desc, const double *params, const double *condparams,
                      int *nknots, double *knots);

/* ==== end of knot placement =============================================================== */

QXMATH_END_DECLS

#endif
