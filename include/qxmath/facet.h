/* facet.h — small geometric queries on parametric lines, planes and points
 * (source files facet_util_math, pln3, pnt3).
 *
 * Three independent families, each with its own plane convention:
 *
 *   FACET_ (facet_util_math)  A parametric line is a base point L0 and a
 *       direction D, two separate 3-vectors; the point at parameter t is
 *       L0 + t.D. D need not be unit unless a routine says so. A plane is a
 *       normal N and a double d: the plane N.x + d = 0. Mind the sign: the
 *       MC_ routines (vector.h) use n.x = d. N is expected to be unit wherever
 *       a point on the plane is formed (FACET_ask_point_on_plane and the
 *       routines built on it).
 *   PLN3_ (pln3)  A plane record is six doubles:
 *       elements 0-2  a point on the plane
 *       elements 3-5  a normal, of any non-zero length
 *   PNT3_ (pnt3)  three points.
 *
 * Points and vectors are three doubles. None of these routines reports an
 * error of its own; degenerate input shows in the result or in the
 * fall-back computations described below. Outputs that a failing path does
 * not write keep their previous contents. Where a routine unitizes a
 * direction it does so with VEC3_unitize (vector.h), so with checking on
 * (MACH__checking_level > 0) an input component of magnitude 1e19 or more
 * is reported by that routine's assertion (module vec3) first;
 * PLN3_is_coincident does the same through VEC3_is_parallel.
 *
 * Aliasing: every routine reads all its inputs before it writes its first
 * output, so an output may be (or overlap) any input.
 * Nothing is allocated and nothing is kept between calls.
 *
 * NaN and infinite input. Nothing here tests for them: they propagate into the distances,
 * parameters and points computed, and every threshold test on a NaN value is false. So
 * FACET_line_int_plane and FACET_point_plane_proj return 0 ("not parallel") for a NaN in N or
 * in the line and write NaN; FACET_line_line_dist, FACET_line_point_dist and
 * FACET_compute_undirected_angle return NaN; FACET_plane_plane_int returns 0 (as for coincident
 * planes) for a NaN normal, leaving P untouched. The PLN3_ predicates answer 0 for NaN input,
 * and so does PNT3_is_colinear unless two of its points are finite and within tol of each other
 * (its first test). VEC3_unitize accepts a NaN direction (vector.h), so
 * FACET_points_to_param_line with normalize 1 writes the unitized direction even for a NaN or
 * infinite difference (NaN where 0 x infinity arises), not the raw difference.
 */
#ifndef QXMATH_FACET_H
#define QXMATH_FACET_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* ---- facet_util_math: parametric lines ---------------------------------- */

/* The line through A and B.
 *   A, B       in, 3 doubles each
 *   normalize  in: 1 to make D unit, any other value leaves D = B - A
 *   L0         out, 3 doubles: A
 *   D          out, 3 doubles: B - A, made unit with VEC3_unitize at 1.0e-5
 *              when normalize is 1; when |B - A| <= 1.0e-5 it stays B - A */
QXMATH_API void FACET_points_to_param_line(const double A[3], const double B[3], int normalize,
                                           double L0[3], double D[3]);

/* P := L0 + t.D, component by component. */
QXMATH_API void FACET_point_on_param_line(const double L0[3], const double D[3], double t,
                                          double P[3]);

/* Where the line through A and B meets the plane N.x + d = 0.
 *   A, B  in, 3 doubles each; the line is L0 = A, D = B - A (not unitized)
 *   N, d  in: the plane; N need not be unit here
 *   P     out, 3 doubles: A + t.D
 *   t     out: -(N.A + d) / (N.D), in units of the segment AB (0 at A, 1 at B)
 * Result 0 with P and t written; 1 when |N.D| < 1.0e-10 (the line is
 * parallel to the plane, or A and B coincide), P and t then untouched. */
QXMATH_API int FACET_line_int_plane(const double A[3], const double B[3], const double N[3],
                                    double d, double P[3], double *t);

/* N.P + d: the signed distance of P from the plane N.x + d = 0 when N is
 * unit (for another N it is scaled by |N|). */
QXMATH_API double FACET_point_plane_dist(const double P[3], const double N[3], double d);

/* The foot Q of P on the plane N.x + d = 0 along N.
 *   P, N, d  in
 *   Q, t     out: exactly FACET_line_int_plane(P, P + N, N, d, Q, t), so t is
 *            measured in units of the rounded P + N - P, about N, and
 *            Q = P + t.((P + N) - P)
 * Result as FACET_line_int_plane: 1 (Q, t untouched) when
 * |N.((P + N) - P)| < 1.0e-10, as for a null N. */
QXMATH_API int FACET_point_plane_proj(const double P[3], const double N[3], double d, double Q[3],
                                      double *t);

/* Distance from P to the line through A and B: |U x (P - A)| with U the
 * unitized B - A (VEC3_unitize, 1.0e-5); when A and B are within 1.0e-5 of
 * each other, |P - A|. */
QXMATH_API double FACET_line_point_dist(const double A[3], const double B[3], const double P[3]);

/* Signed distance between the lines (L1, D1) and (L2, D2).
 * With K = D1 x D2: when |K| < 1.0e-6 (parallel lines, or a null direction)
 * the unsigned FACET_line_point_dist(L2, L2 + D2, L1); otherwise
 * ((L2 - L1).K) / |K|, whose sign follows D1 x D2 on purpose: reversing one
 * direction flips it, exchanging the two lines does not. Callers wanting a
 * distance take its magnitude. */
QXMATH_API double FACET_line_line_dist(const double L1[3], const double D1[3], const double L2[3],
                                       const double D2[3]);

/* Parameters of the closest points of the lines (L1, D1) and (L2, D2).
 *   t1, t2  out: L1 + t1.D1 and L2 + t2.D2 are the closest points
 * With a = D2.D2, b = D1.D1, c = D1.D2, e = D2.(L1 - L2), f = D1.(L2 - L1)
 * and den = a.b - c.c:
 *   |den| > 1.0e-10      t1 = (e.c + f.a) / den, t2 = (f.c + e.b) / den
 *   else, a > 1.0e-6     t1 = 0, t2 = e / (a.a)
 *   else, b <= 1.0e-6    t1 = 0, t2 = 0
 *   else                 t1 = (D1.L2 + D1.L1) / (b.b), t2 = 0
 * The parallel branches divide by the square of the squared length and the
 * last one adds the two dot products: they give the geometric answer only
 * for unit directions and, in the last branch, for L1 at the origin. This
 * is the routine's long-standing behaviour and is kept; callers pass unit
 * directions. A NaN den takes the parallel branches. */
QXMATH_API void FACET_line_line_closest_point(const double L1[3], const double D1[3],
                                              const double L2[3], const double D2[3], double *t1,
                                              double *t2);

/* Projection of P on the line (L0, D).
 *   is_unit  in: 0 when D may be of any length; any other value promises a
 *            unit D and skips the division
 *   Q        out, 3 doubles: L0 + t.D
 *   t        out: (P - L0).D, divided by D.D when is_unit is 0 and D.D is
 *            not exactly 0 (a null D then gives t = 0 and Q = L0). The
 *            division is otherwise unguarded: a tiny non-zero D.D can make
 *            t overflow to infinity. */
QXMATH_API void FACET_point_line_proj(const double P[3], const double L0[3], const double D[3],
                                      int is_unit, double Q[3], double *t);

/* The undirected angle between A and B, atan2(|A x B|, A.B), in [0, pi].
 * Neither need be unit. A null vector gives 0 or pi, as the sign of the zero
 * dot product falls. */
QXMATH_API double FACET_compute_undirected_angle(const double A[3], const double B[3]);

/* A point of the plane N.x + d = 0: Q := -d.N^, N^ the unitized N
 * (VEC3_unitize, 1.0e-10; a null N gives Q = 0). Q lies on the plane only
 * for a unit N, which callers supply. */
QXMATH_API void FACET_ask_point_on_plane(const double N[3], double d, double Q[3]);

/* Intersection of the planes N1.x + d1 = 0 and N2.x + d2 = 0 (unit normals).
 *   D  out, 3 doubles: N1 x N2 as it is (not unitized), always written
 *   P  out, 3 doubles, written for result 2 only: the point where the line
 *      from Q1 = FACET_ask_point_on_plane(N1, d1) along (N1 x N2) x N1
 *      meets plane 2
 * Result 2 when |D|^2 > 1.0000000000000002e-10 (the square of 1.0e-5 as
 * stored): the planes intersect along the line (P, D). Otherwise 1 when
 * |N1.(Q1 - Q2)| >= 1.0e-10 (parallel and apart) and 0 when not
 * (coincident; also for NaN input). In the rare case of result 2 where the
 * rounded direction within plane 1 still has |N2.E| < 1.0e-10, P is left
 * untouched. */
QXMATH_API int FACET_plane_plane_int(const double N1[3], double d1, const double N2[3], double d2,
                                     double P[3], double D[3]);

/* ---- pln3: tests on a plane record ------------------------------------------- */

/* 1 when |(P - R0).RN| / |RN| <= tol (R0 = R[0..2], RN = R[3..5]), else 0.
 * A null normal is not guarded: the division gives an infinite or NaN
 * distance, hence 0 (unless tol is +infinity). */
QXMATH_API int PLN3_is_point_on_plane(const double R[6], const double P[3], double tol);

/* 1 when the normals of A and B pass VEC3_is_parallel(., ., tol_a) (tol_a
 * is the sine of the angle; a null normal counts as parallel) and B's point
 * lies on A by PLN3_is_point_on_plane(A, B's point, tol_d); else 0. Only B's
 * point is tested against A, not A's against B, so the test is not
 * symmetric when the normals differ slightly. */
QXMATH_API int PLN3_is_coincident(const double A[6], const double B[6], double tol_d, double tol_a);

/* 1 when the segment AB meets or touches the plane R, else 0.
 * With sa, sb the signed distances (X - R0).RN / |RN| of A and B and
 * p = sa.sb: 1 when |p| <= tol (an end on or near the plane), else 1 when
 * p <= 0 (the ends on opposite sides), else 0. tol is compared with the
 * product of two distances (an area), not with a distance: for an end
 * within distance e of the plane and the other end at distance h, pass
 * tol = e.h. A null normal is not guarded (NaN distances give 0). */
QXMATH_API int PLN3_is_segment_intersecting(const double R[6], const double A[3], const double B[3],
                                            double tol);

/* ---- pnt3 ------------------------------------------------------------------ */

/* 1 when A, B and G are colinear within tol, else 0.
 * With q_AG = |A - G|^2, q_BG = |G - B|^2, q_AB = |B - A|^2: 1 when any of
 * the three is < tol (two points coincide; the squared length is compared
 * with tol as given, not squared). Otherwise, with w = (G - B).(B - A),
 * s = 1 - w^2 / (q_BG.q_AB), the squared sine of the angle at B between AB
 * and BG: 1 when s < tol, else 0. tol is thus a squared length and a
 * squared sine at once. The division is guarded only by the first test: a
 * tol <= 0 with coincident points gives 0/0 and the result 0. */
QXMATH_API int PNT3_is_colinear(const double A[3], const double B[3], const double G[3],
                                double tol);

QXMATH_END_DECLS

#endif
