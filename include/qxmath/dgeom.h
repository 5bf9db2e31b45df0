/* dgeom.h — local differential geometry of curves and surfaces (source file
 * dgeom): curvature and torsion vectors, the Frenet frame, the variation of
 * curvature, Gaussian, mean, principal and normal curvatures, and the
 * conversions between curvature vector, radius vector and second derivative.
 *
 * Curves are given by their derivatives d1, d2, d3 (three doubles each) with
 * respect to their own parameter; surfaces by the partials Su, Sv, Suu, Suv,
 * Svv, with E = Su.Su, F = Su.Sv, G = Sv.Sv. Every routine is a pure function
 * of its inputs, checks no argument, reports nothing, and writes only the
 * caller's output arrays. Outputs are computed before they are written, so
 * an output may alias any input. Degeneracy is judged against the absolute
 * threshold 1.0e-10, whatever the scale of the model.
 *
 * NaN and infinite input. Nothing tests for them, and which way a degeneracy
 * test goes on NaN depends on how it is written. The tests "below 1.0e-10" of
 * DGEOM_crv_curvature, DGEOM_crv_torsion, DGEOM_crv_curvature_variation and
 * DGEOM_srf_curvatures are false for NaN, so those routines evaluate their
 * formulas and write NaN (DGEOM_srf_curvatures returns 0).
 * DGEOM_crv_diff_property and DGEOM_srf_normal_curvature test "at least
 * 1.0e-10" instead: a NaN |d1| leaves the Frenet record all zero, a NaN
 * |d1 x d2| leaves only the tangent set (an infinite d1 passes both tests and puts
 * NaN, infinity / infinity, into the record), and a NaN D gives *kn = 0.0;
 * NaN in the other vectors reaches *kn and the torsion. The conversions
 * propagate NaN.
 */
#ifndef QXMATH_DGEOM_H
#define QXMATH_DGEOM_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* ---- Curves -------------------------------------------------------------- */

/* Curvature vector of a curve: with s = 1/|d1|^2 and m = (d1.d2) s^2,
 *   k = s d2 - m d1,
 * the component of d2 normal to d1 divided by |d1|^2. Returns |k|, the
 * curvature. |d1| < 1.0e-10: k = 0 and the result is 0.0. */
QXMATH_API double DGEOM_crv_curvature(const double d1[3], const double d2[3], double k[3]);

/* Torsion tau = d1.(d2 x d3) / |d1 x d2|^2, returned; out[3] receives
 * tau (t x b) with t = d1/|d1| and b = (d1 x d2)/|d1 x d2|, that is -tau
 * times the principal normal. |d1 x d2| < 1.0e-10 (a straight or stopped
 * curve): out = 0 and the result is 0.0. */
QXMATH_API double DGEOM_crv_torsion(const double d1[3], const double d2[3], const double d3[3],
                                    double out[3]);

/* The Frenet record frenet[11]: unit tangent t (0..2), unit binormal b
 * (3..5), unit principal normal n = b x t (6..8), curvature kappa =
 * |d1 x d2| / |d1|^3 (9), torsion (10). The record is cleared first; when
 * |d1| < 1.0e-10 it stays all zero; when |d1 x d2| < 1.0e-10 only the tangent
 * is set. A curvature below 1.0e-10 is stored as 0.0 (the frame is still
 * set). The torsion d1.(d2 x d3) / |d1 x d2|^2 is computed only when
 * want_torsion is exactly 1; otherwise it stays 0.0 and d3 is not read. */
QXMATH_API void DGEOM_crv_diff_property(const double d1[3], const double d2[3], const double d3[3],
                                        int want_torsion, double frenet[11]);

/* Derivative of the curvature vector with respect to the parameter: with
 * s = |d1|, p = d1.d2 and q = d1.d3 + |d2|^2,
 *   out = (1/s^3) d3 + (4p^2/s^7 - q/s^5) d1 - (3p/s^5) d2,
 * the powers of s formed as products (s^3 = s s s, s^5 = s^3 s s, s^7 =
 * s^5 s s). When s < 1.0e-10 the formula would divide by zero: out is
 * cleared to zeros and the formula is not evaluated. Returns 0, which
 * carries no information. */
QXMATH_API int DGEOM_crv_curvature_variation(const double d1[3], const double d2[3],
                                             const double d3[3], double out[3]);

/* ---- Conversions (no degeneracy test; each returns 0, carrying nothing) --
 *
 * A zero input is not guarded: it divides by zero (r, k become NaN), by
 * design; callers test their vectors first. */

/* Radius vector from curvature vector: r = k / |k|^2 (centre minus point). */
QXMATH_API int DGEOM_convert_crvatr_to_radius(const double k[3], double r[3]);

/* Curvature vector from radius vector: k = r / |r|^2 (the same formula;
 * the two are each other's inverse). */
QXMATH_API int DGEOM_convert_radius_to_crvatr(const double r[3], double k[3]);

/* A second derivative carrying curvature vector k at first derivative d1:
 * d2 = |d1|^2 k (the part of d2 along d1 is taken as zero). */
QXMATH_API int DGEOM_convert_crvatr_to_deriv2(const double d1[3], const double k[3], double d2[3]);

/* ---- Surfaces ------------------------------------------------------------ */

/* Surface curvatures at a point into curvatures[7]:
 *   0 Gaussian K = (L Nn - M^2) / D
 *   1 mean H = (2 F M - E Nn - G L) 0.5 / D — the negative of the common
 *     textbook sign (a sphere with outward normal Su x Sv has H = +1/R);
 *     callers rely on this sign
 *   2 smaller principal value H - root, 3 larger H + root, with root = 0.0
 *     when |H^2 - K| <= 1.0e-10, else sqrt(H^2 - K) (a rounding-negative
 *     H^2 - K beyond that gives NaN; it does not arise from real surfaces)
 *   4 (|H + root| + |H - root|) 0.5, the mean magnitude of the two
 *   5 -L/E, 6 -Nn/G, the normal curvatures along u and v, negated like H
 * with D = E G - F^2, N = (Su x Sv)/|Su x Sv|, L = Suu.N, M = Suv.N,
 * Nn = Svv.N. Returns 1 when D < 1.0e-10 (Su and Sv parallel or too short),
 * and also when Su x Sv is exactly zero (parallel partials whose D is no
 * more than the rounding of E G - F^2): the record is then left untouched. With want_principal 0 only entries 0 and
 * 1 are written; with any other value all seven. Returns 0 otherwise. */
QXMATH_API int DGEOM_srf_curvatures(const double su[3], const double sv[3], const double suu[3],
                                    const double suv[3], const double svv[3], int want_principal,
                                    double curvatures[7]);

/* Normal curvature of a surface in direction dir[3], with normal[3] the
 * surface normal (not necessarily unit; it is used as given): dir is taken
 * into the tangent plane by its components
 *   lu = ((dir.Su) G - (dir.Sv) F) / D,  lv = ((dir.Sv) E - (dir.Su) F) / D,
 * and *kn = (lu^2 Suu.N + 2 lu lv Suv.N + lv^2 Svv.N) / w with w = lu^2 E +
 * 2 lu lv F + lv^2 G. Note the sign: L = Suu.N enters positively here,
 * unlike entries 5 and 6 of DGEOM_srf_curvatures; both are kept as they are.
 * *kn = 0.0 unless D = E G - F^2 >= 1.0e-10, |N x dir| is non-zero and w is
 * non-zero (a direction along the normal, parallel partials or a direction
 * with no tangent component give 0.0). Always returns 0. */
QXMATH_API int DGEOM_srf_normal_curvature(const double su[3], const double sv[3],
                                          const double suu[3], const double suv[3],
                                          const double svv[3], const double normal[3],
                                          const double dir[3], double *kn);

QXMATH_END_DECLS

#endif
