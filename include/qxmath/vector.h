/* vector.h — vectors in two and three dimensions: the MC_, VEC2_ and VEC3_ families and the
 * by-address vunt2_, vunt3_ and vcru3_.
 *
 * A 3-vector is three consecutive doubles x, y, z; a 2-vector two, x, y. Points and vectors
 * share the layout. Every output array is supplied by the caller; nothing is allocated and
 * nothing is kept between calls.
 *
 * The three families differ in style on purpose, and callers depend on each style:
 *
 *  - MC_ (module mc_math): no argument checks, fixed absolute constants as tolerances.
 *    A degenerate input (null vector, singular system) prints a line on standard output and
 *    is then raised with ERROR_raise, code QX_ERR_VECTOR (17). If the host's error service
 *    returns, the arithmetic is carried out anyway (a division by the small value).
 *    Directions and plane normals are expected to be unit vectors; nothing checks it.
 *    Lines are (unit direction U, point Q); planes are (unit normal n, d) with n.x = d
 *    (the opposite sign of the FACET_ planes).
 *
 *  - VEC2_/VEC3_ (modules vec2, vec3): the tolerance comes from the caller, the result is a
 *    1/0 flag, a failure writes zeros (or +infinity where stated) and nothing is ever raised.
 *    With MACH__checking_level > 0 the routines marked [asserts] report every input vector
 *    having a component of magnitude 1e19 or more through ERROR_internal ("Assertion
 *    failed: %s", "condition") and then carry on; at level 0 nothing is tested.
 *
 *  - vunt2_, vunt3_, vcru3_ (module vector_ftn): every argument by address; they unitize
 *    with the session's length tolerance (EQ_ask_length_tolerance, unsquared).
 *
 * Aliasing: the component-wise MC_AmB, MC_ApB, MC_aA, MC_aApB accept an output that is one
 * of their inputs; MC_AxB, VEC3_make_trihedral, VEC2_ask_perpendicular and
 * VEC3_ask_perpendicular do not (their output must be distinct from every input). The
 * unitize routines accept W == V.
 *
 * NaN and infinite input. Nothing here tests for them: they propagate into the outputs, and as
 * every comparison with NaN is false, a tolerance test on a NaN length takes its "not small"
 * branch. VEC2_unitize, VEC3_unitize (and vunt2_, vunt3_, vcru3_ with flag 1) return 1 for a
 * NaN vector, with NaN length and components; an infinite component gives length +infinity and,
 * by the reciprocal 0.0, NaN for that component and 0.0 for finite ones. The ask_perpendicular
 * routines return 1 and VEC2_components returns 1 (NaN components); the parallel and
 * perpendicular tests (VEC2_/VEC3_is_parallel, _is_perpendicular, MC_q_parallel, MC_q_perp)
 * answer 0 for a non-finite vector unless, for VEC2_/VEC3_, the other one is null within tol.
 * VEC3_angle_between and MC_get_angle give NaN for NaN input. VEC2_ask_shortest_vector never
 * takes a NaN length as shorter, so a NaN first vector is never displaced (the result is 0).
 * The null-vector and singular tests of MC_ (length below 0.0001, |determinant| below 1.0e-8)
 * are false for a NaN length or determinant: a NaN vector or matrix coefficient is neither
 * printed nor raised, and MC_v_unit and MC_solve_3 write NaN (MC_dist_lines takes a NaN cross
 * product for parallel lines). With checking on, a NaN component fails the range assertion of
 * the [asserts] routines like an infinite one (|NaN| < 1e19 is false) and is reported.
 */
#ifndef QXMATH_VECTOR_H
#define QXMATH_VECTOR_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* ---- mc_math: component-wise and scalar routines on 3-vectors ------------------------- */

/* K[0..2] := A[0..2]. */
QXMATH_API void MC_v_copy(const double A[3], double K[3]);
/* K := A - B. K may be A or B. */
QXMATH_API void MC_AmB(const double A[3], const double B[3], double K[3]);
/* K := A + B. K may be A or B. */
QXMATH_API void MC_ApB(const double A[3], const double B[3], double K[3]);
/* K := a.A. K may be A. */
QXMATH_API void MC_aA(double a, const double A[3], double K[3]);
/* K := a.A + B. K may be A or B. */
QXMATH_API void MC_aApB(double a, const double A[3], const double B[3], double K[3]);
/* K := A x B = (Ay.Bz - Az.By, Az.Bx - Ax.Bz, Ax.By - Bx.Ay). K must be neither A nor B. */
QXMATH_API void MC_AxB(const double A[3], const double B[3], double K[3]);
/* A.B, summed x, y, z in that order. */
QXMATH_API double MC_A_dot_B(const double A[3], const double B[3]);
/* |A| = sqrt(A.A). */
QXMATH_API double MC_length(const double A[3]);
/* A.A, the squared length. */
QXMATH_API double MC_length2(const double A[3]);
/* |A - B|. */
QXMATH_API double MC_dist(const double A[3], const double B[3]);
/* |A - B|^2. */
QXMATH_API double MC_dist2(const double A[3], const double B[3]);
/* (A x B).K. */
QXMATH_API double MC_triple_product(const double A[3], const double B[3], const double K[3]);
/* Determinant of the left 3x3 part of the augmented system M (three rows of four doubles,
 * row i = a_i0, a_i1, a_i2, b_i; the b_i are not read), by the rule of Sarrus in the fixed
 * order m00.m11.m22 + m10.m21.m02 + m20.m01.m12 - m20.m11.m02 - m00.m21.m12 - m10.m01.m22. */
QXMATH_API double MC_determinant(const double M[12]);

/* ---- mc_math: geometric routines ------------------------------------------------------ */

/* A := A / |A| in place (three divisions, not a multiplication by the reciprocal).
 * |A| < 1e-4 (strict, absolute): prints "\nERROR: zero vector in unitize\n" on standard
 * output, then ERROR_raise(mc_math, line, 17, "tried to unitize null vector"); if that
 * returns, the divisions by the small length still take place. */
QXMATH_API void MC_v_unit(double A[3]);
/* 1 when |A x B|^2 < 1.7453292519943296e-5, else 0. The constant is 1/1000 degree in
 * radians, compared against the squared sine for unit inputs; it is kept so on purpose. */
QXMATH_API int MC_q_parallel(const double A[3], const double B[3]);
/* 1 when |A.B| < 1e-4 (strict), else 0. */
QXMATH_API int MC_q_perp(const double A[3], const double B[3]);
/* Angle between unit A and unit B in [0, pi]: with c = A.B, exactly 0.0 when c > 0.9999999,
 * exactly 3.141592653589793 when c < -0.9999999, else acos(c). Inputs are not normalised. */
QXMATH_API double MC_get_angle(const double A[3], const double B[3]);
/* K := a unit vector perpendicular to the unit vector A: (-Ay/Ax, 1, 0) when |Ax| > 0.5,
 * else (1, 0, -Ax/Az) when |Ay| <= 0.5, else (1, -Ax/Ay, 0); then made unit by MC_v_unit.
 * A non-unit A with |Ax| <= 0.5, |Ay| <= 0.5, Az = 0 divides by zero (left unguarded). */
QXMATH_API void MC_perp_vec(const double A[3], double K[3]);
/* R := the foot of P on the line (U, Q): ((P.U) - (Q.U)).U + Q. */
QXMATH_API void MC_proj_point_onto_line(const double P[3], const double U[3], const double Q[3],
                                        double R[3]);
/* K := unit vector from the foot of P on the line (U, Q) towards P. A point on the line gives
 * the null-vector report of MC_v_unit. */
QXMATH_API void MC_perp_from_line_to_point(const double P[3], const double U[3], const double Q[3],
                                           double K[3]);
/* 1 when |P - R|^2 <= 1e-8 with R the foot of P on the line (U, Q), else 0. */
QXMATH_API int MC_q_point_on_line(const double P[3], const double U[3], const double Q[3]);
/* R := the foot of P on the plane (n, d): -((P.n) - d).n + P. */
QXMATH_API void MC_proj_point_onto_plane(const double P[3], const double n[3], double d,
                                         double R[3]);
/* Distance (>= 0) between the lines (U1, P1) and (U2, P2). Lines count as parallel when
 * |U1 x U2|^2 < 1e-8; coincident lines give 0. */
QXMATH_API double MC_dist_lines(const double U1[3], const double P1[3], const double U2[3],
                                const double P2[3]);
/* Signed distance from plane (nA, dA) to plane (nB, dB): 0 unless MC_q_parallel(nA, nB);
 * then (nA.nB <= 0 ? -dB : dB) - dA (opposite normals, and exactly perpendicular ones,
 * count as the same orientation with dB negated). */
QXMATH_API double MC_signed_dist_planes(const double nA[3], double dA, const double nB[3],
                                        double dB);
/* n.P - d when the axis (U, P) is parallel to the plane (n, d) in the sense of MC_q_perp(n, U),
 * else 0. */
QXMATH_API double MC_signed_dist_plane_axis(const double n[3], double d, const double U[3],
                                            const double P[3]);
/* X := (x, y, z) solving the augmented system M (three rows a_i0, a_i1, a_i2, b_i) by
 * Cramer's rule: each unknown is the determinant with its column replaced by the b_i,
 * divided by MC_determinant(M). |det| < 1e-8: prints
 * "\nERROR: zero determinant in 3 by 3 system\n" on standard output, then
 * ERROR_raise(mc_math, line, 17, "zero determinant in linear system"); if that returns, the
 * divisions by the small determinant still take place. M is writable as the interface has
 * always had it, and is left bit for bit as it was. */
QXMATH_API void MC_solve_3(double M[12], double X[3]);
/* X := the point where the axis (U, P) pierces the plane (n, d). Two planes through the axis
 * are chosen by the dominant component of U (ties favour x over y, and x or y over z) and
 * the 3x3 system is solved by MC_solve_3; an axis parallel to the plane gives its
 * zero-determinant report. */
QXMATH_API void MC_axis_plane_x(const double U[3], const double P[3], const double n[3], double d,
                                double X[3]);

/* ---- vec2, vec3: tolerance-taking routines -------------------------------------------- */

/* [asserts] With s = |V|^2: when tol.tol >= s (a vector of length exactly tol fails),
 * *length := 0, W := 0 and the result is 0. Otherwise *length := sqrt(s),
 * W := V.(1/sqrt(s)) and the result is 1. W may be V. tol is a length (it is squared
 * here); a negative tol acts as its magnitude. */
QXMATH_API int VEC2_unitize(const double V[2], double tol, double *length, double W[2]);
QXMATH_API int VEC3_unitize(const double V[3], double tol, double *length, double W[3]);

/* [asserts] 1 when |A|^2 <= tol^2 or |B|^2 <= tol^2 (a vector within tol of zero is parallel
 * to everything), or when |A x B| / (|B|.|A|) <= tol; else 0. tol is both a length and the
 * sine of an angle. */
QXMATH_API int VEC2_is_parallel(const double A[2], const double B[2], double tol);
QXMATH_API int VEC3_is_parallel(const double A[3], const double B[3], double tol);

/* [asserts] 1 when |A|^2 <= tol^2 or |B|^2 <= tol^2 (a vector within tol of zero is
 * perpendicular to everything), or when |A.B| / (|B|.|A|) <= tol; else 0. */
QXMATH_API int VEC2_is_perpendicular(const double A[2], const double B[2], double tol);
QXMATH_API int VEC3_is_perpendicular(const double A[3], const double B[3], double tol);

/* [asserts] W := V turned by a right angle, same length: (Vy, -Vx) when |Vy| <= |Vx|,
 * else (-Vy, Vx); result 1. |V|^2 <= 1e-20: W := 0, result 0. W must not be V.
 * The sign rule is the reverse of VEC3_ask_perpendicular's last case, deliberately. */
QXMATH_API int VEC2_ask_perpendicular(const double V[2], double W[2]);

/* [asserts] W := a vector perpendicular to V, not normalised: the component of smallest
 * magnitude is zeroed and the other two exchanged with one negated. With a = |V| by
 * component, in this order:
 *   ax < ay and ax < az:   ay >= az: (0, -Vz, Vy);  else (0, Vz, -Vy)
 *   ax >= ay and ay < az:  ax >= az: (-Vz, 0, Vx);  else (Vz, 0, -Vx)
 *   otherwise:             ay >= ax: (Vy, -Vx, 0);  else (-Vy, Vx, 0)
 * Result 1. |V|^2 <= 1e-20: W := 0, result 0. W must not be V. */
QXMATH_API int VEC3_ask_perpendicular(const double V[3], double W[3]);

/* Angle from A to B about N, in [0, 2 pi): A and B are unitized at 1e-10 (either failing
 * gives 0.0); the sine |A x B| takes the sign of (A x B).N, so N only chooses the sense and
 * need be neither unit nor perpendicular. Angles of magnitude <= 1e-10 give exactly 0.0. */
QXMATH_API double VEC3_angle_between(const double A[3], const double B[3], const double N[3]);

/* Splits V along the unit normal N: T := (V.N).N, P := V - T, Q := N x P. Nothing is
 * normalised. P, Q and T must be distinct from V, N and each other. */
QXMATH_API void VEC3_make_trihedral(const double V[3], const double N[3], double P[3], double Q[3],
                                    double T[3]);

/* Components of K in the base (A, B): with det = Ax.By - Ay.Bx, when |det| <= tol,
 * *alpha := *beta := +infinity (HUGE_VAL) and the result is 0; otherwise K = alpha.A + beta.B
 * with alpha = (By.Kx - Ky.Bx)/det, beta = (Ky.Ax - Ay.Kx)/det, result 1. */
QXMATH_API int VEC2_components(const double A[2], const double B[2], const double K[2], double tol,
                               double *alpha, double *beta);

/* Index of the shortest of the n 2-vectors stored consecutively in V (2n doubles:
 * x0, y0, x1, y1, ...). Lengths are compared as square roots and only a strictly shorter
 * vector replaces the current one, so ties keep the lower index. n < 2 gives 0.
 * With checking on, asserts n > 0. */
QXMATH_API int VEC2_ask_shortest_vector(int n, const double *V);

/* ---- vector_ftn: by-address entry points of the numbered routines -------------------- */

/* *flag := VEC2_unitize(V, EQ_ask_length_tolerance(), &length, W) (the length is dropped).
 * A failure leaves W = 0 and *flag = 0. W may be V. */
QXMATH_API void vunt2_(const double *V, int *flag, double *W);
/* As vunt2_ on a 3-vector, with VEC3_unitize. */
QXMATH_API void vunt3_(const double *V, int *flag, double *W);
/* W := unit(A x B) by VEC3_unitize with the session's length tolerance; *flag 1 on success,
 * 0 (W = 0) for parallel or null inputs. The product is formed locally, so W may be A or
 * B. */
QXMATH_API void vcru3_(const double *A, const double *B, int *flag, double *W);

QXMATH_END_DECLS

#endif
