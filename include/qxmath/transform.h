/* transform.h — 4x4 homogeneous transforms (mtx4), their application to points and vectors
 * and the transform between two coordinate-system records (mc_math), and coordinate-system
 * records mapped into one another (csys).
 *
 * Transform: sixteen doubles stored by rows, element (i, j) at index 4*i + j.
 *   - elements 0-2, 4-6, 8-10: the 3x3 orientation part, laid out as an orientation matrix
 *     of orientation.h (its row i is elements 4*i .. 4*i + 2);
 *   - elements 3, 7, 11: the translation (x, y, z);
 *   - elements 12-14 are 0 and element 15 is 1 in every transform built here. All sixteen
 *     take part in products and inversion; element 15 is the overall scale entry compared
 *     on its own by MTX4_is_equal_transform.
 * A point p maps to R.p + t (row i: T[i][0].px + T[i][1].py + T[i][2].pz + T[i][3]); a
 * vector to R.v. The last row is never used to divide (no homogeneous coordinate).
 * Tr(v) below is the identity with elements 3, 7, 11 set to v.
 *
 * Coordinate-system record: twelve doubles, the origin (0-2) followed by an orientation
 * matrix (3-11: the X, Y and Z axes in world components).
 *
 * Products: MTX4_multiply(A, B, P) forms P = B.A, like MTX3_multiply: A first, then B when
 * the product is applied to points. Builders about a point form Tr(q).R.Tr(-q) by two such
 * products in that order, so their results are the same bits as the products written out.
 *
 * Result conventions differ on purpose and callers depend on both:
 *   - MTX4_invert, MTX4_rotation, MTX4_mirror and MTX4_csys_to_csys return 0 for success
 *     and 1 for failure (MC_calc_csys_to_csys_transform returns 0 always);
 *   - the predicates, MTX4_fixup and CSYS_map_csys return 1 for true / success, 0
 *     otherwise; MTX4_ortho_normalize returns 1 when it changed T.
 * A builder that fails leaves its output unwritten and reports nothing.
 *
 * Ortho-normality is judged by MTX3_is_ortho_normal (fixed 1.0e-14), the session tolerances
 * are not used. Directions are unitized as VEC3_unitize does at 1.0e-10: with
 * MACH__checking_level > 0 a component of magnitude 1e19 or more is reported by that
 * routine (module vec3). The 3x3 routines called here make their own assertions and
 * notes (module mtx3, mtx3_privileged); the routines here make none of their own.
 *
 * Aliasing: unless stated, every routine reads all its inputs before it writes its
 * output, so the output may be any of the inputs. Nothing is allocated here (MTX4_invert
 * works on a local copy; ludcmp_a takes a scratch vector from the host) and nothing is
 * kept between calls.
 *
 * NaN and infinite input. Nothing here tests for them: products, applications, scalings and the
 * builders propagate them into every element they touch. The builders' null tests (|v|^2 <=
 * 1.0e-20) are false for a NaN direction, so MTX4_rotation and MTX4_mirror return 0 and write
 * NaN; a NaN angle does the same. MTX4_invert follows ludcmp_a (matrix.h), which passes NaNs
 * over when it looks for a row's largest magnitude: a row holding nothing but zeros and NaNs
 * counts as a zero row, result 1 and R unwritten; an infinite element is not caught (result 0).
 * MTX4_csys_to_csys therefore returns 0 with NaN elements for a NaN x1 or y1, and 1 for a NaN
 * x2 or y2 (the NaN rows of the orientation to invert are zero rows). MTX4_is_equal and
 * MTX4_is_identity answer 0 for a NaN element or tolerance, MTX4_is_ortho_normal for a NaN in
 * the orientation part; MTX4_is_equal_transform tests its scale entries and translations by
 * "differ by more than", so a NaN there (or a NaN tol_s or tol_d) passes and the orientation
 * parts decide. CSYS_map_csys returns 0 for a NaN axis (MTX3_init_x_y_z refuses it) and has
 * written the origin, NaN or not.
 */
#ifndef QXMATH_TRANSFORM_H
#define QXMATH_TRANSFORM_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* ---- mc_math: applying transforms and coordinate-system records ----------------------- */

/* q := R.p + t, the point p carried by the transform T.
 *   T  in, 16 doubles; the last row is not read
 *   p  in, 3 doubles
 *   q  out, 3 doubles; may be p
 * Each component is T[i][0].px + T[i][1].py + T[i][2].pz + T[i][3], summed in that order.
 * No checks. */
QXMATH_API void MC_apply_transform_to_point(const double T[16], const double p[3], double q[3]);

/* w := R.v, the vector v turned by the orientation part of T (no translation).
 *   T  in, 16 doubles; only the orientation part is read
 *   v  in, 3 doubles
 *   w  out, 3 doubles; may be v
 * No checks. */
QXMATH_API void MC_apply_transform_to_vector(const double T[16], const double v[3], double w[3]);

/* The transform that carries a point given relative to system S1 to the point with the
 * same coordinates relative to system S2.
 *   S1, S2  in, coordinate-system records, 12 doubles each (origin o, orientation R)
 *   T       out, 16 doubles: orientation M = R2^T.R1 (M[i][j] = sum over k of
 *           R2[k][i].R1[k][j], k = 0, 1, 2 in order), translation o2 - M.o1,
 *           last row 0, 0, 0, 1
 * Result 0, always: nothing is tested. R2^T stands for the inverse of R2, so the result
 * means something only for ortho-normal records; for those it equals MTX4_csys_to_csys with
 * the records' axes to rounding. */
QXMATH_API int MC_calc_csys_to_csys_transform(const double S1[12], const double S2[12],
                                              double T[16]);

/* ---- mtx4: products and inversion ---------------------------------------------------- */

/* P := B.A, all sixteen elements: P[i][j] = sum over k = 0..3 of B[i][k].A[k][j], summed in
 * increasing k. Applied to points, A acts first and then B.
 *   A, B  in, 16 doubles each
 *   P     out, 16 doubles; may be A or B (the product is formed locally, then copied) */
QXMATH_API void MTX4_multiply(const double A[16], const double B[16], double P[16]);

/* P := B.A^T, all sixteen elements: P[i][j] = sum over k = 0..3 of B[i][k].A[j][k] (row i of
 * B dotted with row j of A), summed in increasing k.
 *   A, B  in, 16 doubles each
 *   P     out, 16 doubles; may be A or B, as for MTX4_multiply */
QXMATH_API void MTX4_multiply_t(const double A[16], const double B[16], double P[16]);

/* R := T^-1 by LU decomposition: ludcmp_a of order 4 on a local copy of T, then lubksb_a
 * against each unit vector e_j, whose solution is column j of R.
 *   T  in, 16 doubles (any 4x4 matrix; the last row takes part)
 *   R  out, 16 doubles; may be T
 * Result 0 on success; 1 when ludcmp_a fails, i.e. a row of T is entirely zero (or its
 * scratch vector could not be allocated and the host's report returned): R is then not
 * written. Any other singularity is not detected: ludcmp_a replaces a zero pivot by 1.0e-20
 * and R comes out huge or non-finite. */
QXMATH_API int MTX4_invert(const double T[16], double R[16]);

/* ---- mtx4: the orientation part -------------------------------------------------------- */

/* MTX3_is_ortho_normal of the orientation part: 1 when its rows are unit and mutually
 * perpendicular within 1.0e-14, else 0. Translation and last row are not read. */
QXMATH_API int MTX4_is_ortho_normal(const double T[16]);

/* MTX3_ortho_normalize on the orientation part of T.
 *   T  in/out, 16 doubles; translation and last row are never touched
 * Result 0 when the orientation part was already ortho-normal (T untouched); 1 when it was
 * repaired and written back. */
QXMATH_API int MTX4_ortho_normalize(double T[16]);

/* MTX3_fixup on the orientation part of T, which is always written back (changed or not).
 *   T  in/out, 16 doubles; translation and last row are never touched
 * Result that of MTX3_fixup: 1 when the X and Y rows could be unitized, 0 when either is
 * null (that row is then zero). Notes as MTX3_fixup writes them. */
QXMATH_API int MTX4_fixup(double T[16]);

/* ---- mtx4: comparison ---------------------------------------------------------------- */

/* 1 when |A[i] - B[i]| <= tol for all sixteen elements (a NaN difference is unequal) and
 * MTX4_is_ortho_normal(A) == MTX4_is_ortho_normal(B); else 0. As for MTX3_is_equal, two
 * element-wise equal transforms of which only one has an ortho-normal orientation part
 * count as different, on purpose. */
QXMATH_API int MTX4_is_equal(const double A[16], const double B[16], double tol);

/* MTX4_is_equal(T, identity, tol): so the orientation part must also be ortho-normal. */
QXMATH_API int MTX4_is_identity(const double T[16], double tol);

/* Equality as transforms, tested in this order:
 *   1. |A[15] - B[15]| > tol_s                          gives 0;
 *   2. the translations' difference d with |d|^2 > tol_d^2 gives 0;
 *   3. otherwise the result is MTX3_is_equal(orientation of A, orientation of B, tol_r),
 *      so both or neither orientation part must be ortho-normal.
 * Elements 12-14 are not compared. The first two tests reject only a difference greater
 * than the tolerance: a NaN there does not make the transforms unequal by itself (the
 * orientation test rejects NaN). tol_d is squared, so its sign does not matter. */
QXMATH_API int MTX4_is_equal_transform(const double A[16], const double B[16], double tol_r,
                                       double tol_d, double tol_s);

/* ---- mtx4: builders ------------------------------------------------------------------ */

/* Scaling about the centre q by the factors s along the world axes.
 *   q  in, 3 doubles
 *   s  in, 3 doubles; not checked: zero and negative factors are accepted
 *   T  out, 16 doubles: Tr(q).S.Tr(-q), S = diag(sx, sy, sz, 1), formed as
 *      MTX4_multiply(Tr(-q), S) followed by MTX4_multiply(that, Tr(q))
 * q maps to q, and q + v to q + (sx.vx, sy.vy, sz.vz). */
QXMATH_API void MTX4_scaling(const double q[3], const double s[3], double T[16]);

/* Rotation by angle degrees (right-handed) about the axis through q along a.
 *   q      in, 3 doubles: a point of the axis, which stays fixed
 *   a      in, 3 doubles: the axis direction, of any non-null length
 *   angle  in, degrees
 *   T      out, 16 doubles: Tr(q).R.Tr(-q), formed by two MTX4_multiply calls as for
 *          MTX4_scaling, R the embedded 3x3 rotation of h923_ about the unit axis by
 *          |angle| . 0.01745329251994328, the axis negated when angle < 0
 * Result 0; 1 when |a|^2 <= 1.0e-20, with T not written. The degree factor is the stored
 * constant, one unit in the last place below pi/180, so a rotation by 90 degrees has
 * entries of order 1e-17 where the exact rotation has zeros; -90 about a is the same matrix
 * as +90 about -a. (The unitizing threshold 1.0e-10 squared rounds just above 1.0e-20: an
 * axis with |a|^2 exactly at that value passes the null test, unitizes to zero, and the
 * orientation part becomes cos(angle) times the identity.) */
QXMATH_API int MTX4_rotation(const double q[3], const double a[3], double angle, double T[16]);

/* Reflection in the plane through q with normal n.
 *   q  in, 3 doubles: a point of the plane
 *   n  in, 3 doubles: the plane normal, of any non-null length; unitized at 1.0e-10
 *   T  out, 16 doubles: Tr(q).R.Tr(-q) formed as for MTX4_scaling, R the embedded
 *      reflection of h924_ (1 - 2.ni^2 on the diagonal, -2.ni.nj off it)
 * Result 0; 1 when |n|^2 <= 1.0e-20, with T not written. (As for MTX4_rotation, an n with
 * |n|^2 exactly 1.0e-10 squared passes that test but unitizes to zero: T is the identity.) */
QXMATH_API int MTX4_mirror(const double q[3], const double n[3], double T[16]);

/* The transform that carries a point given relative to the system (o1, x1, y1) to the point
 * with the same coordinates relative to the system (o2, x2, y2).
 *   o1, x1, y1  in, 3 doubles each: origin, X direction and Y direction of system 1
 *   o2, x2, y2  in, 3 doubles each: the same for system 2
 *   T           out, 16 doubles
 * Method: R1 = MTX3_init(x1, y1) and R2 = MTX3_init(x2, y2), embedded with zero
 * translation; R2 inverted in place with MTX4_invert; T = Tr(o2).R2^-1.R1.Tr(-o1), formed by
 * three MTX4_multiply calls: R1 after Tr(-o1), then R2^-1, then Tr(o2).
 * Result 0; 1 when any of x1, y1, x2, y2 has |v|^2 <= 1.0e-20, or when the host refused
 * the scratch memory of MTX4_invert and its report returned, with T not written.
 * The success of MTX3_init is not tested: directions that are not perpendicular (cosine
 * above 1.0e-10) give result 0 and an unusable T. Such a system's orientation is taken as
 * zero, which MTX4_invert cannot invert, so T is then the same every time but meaningless. */
QXMATH_API int MTX4_csys_to_csys(const double o1[3], const double x1[3], const double y1[3],
                                 const double o2[3], const double x2[3], const double y2[3],
                                 double T[16]);

/* ---- csys ---------------------------------------------------------------------------- */

/* Expresses the coordinate system A in the coordinate system B.
 *   A, B  in, coordinate-system records, 12 doubles each
 *   R     out, 12 doubles; may be A or B
 * R's origin is RB.(oA - oB) (RB the orientation of B, row by row). A's three axes are each
 * mapped with RB, and R's orientation is MTX3_init_x_y_z of the three mapped axes.
 * Result that of MTX3_init_x_y_z: 1 on success; 0 when a mapped axis is null or two are not
 * perpendicular within 1.0e-10 on the cosine. The origin is written even then; the
 * orientation is not. */
QXMATH_API int CSYS_map_csys(const double A[12], const double B[12], double R[12]);

QXMATH_END_DECLS

#endif
