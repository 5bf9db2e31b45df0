/* orientation.h — 3x3 orientation matrices: construction, composition,
 * testing and repair (MTX3_), and the 2-D form (MTX2_).
 *
 * An orientation matrix is nine doubles stored by rows: elements 0-2 are the
 * X axis, 3-5 the Y axis, 6-8 the Z axis, each in world components. A
 * well-formed one has unit, mutually perpendicular rows with Z = X x Y;
 * row i . v gives the component of the world vector v along axis i. The 2-D
 * form is four doubles, X axis then Y axis.
 *
 * Roll, pitch and yaw (radians) describe the matrix Rz(yaw).Ry(pitch).Rx(roll)
 * which, with c and s the cosines and sines, is by rows
 *     cp.cy    sr.sp.cy - cr.sy    sp.cr.cy + sr.sy
 *     cp.sy    sr.sp.sy + cr.cy    sp.cr.sy - sr.cy
 *     -sp      sr.cp               cr.cp
 *
 * Ortho-normality is always judged by MTX3_is_ortho_normal, with the fixed
 * absolute tolerance 1.0e-14; the session tolerances are not used here.
 * Directions are unitized with VEC3_unitize (VEC2_unitize) at the fixed
 * tolerance 1.0e-10, so with checking on an input component of magnitude
 * 1e19 or more is reported by that routine (module vec3, vec2) first.
 *
 * Checking (MACH__checking_level > 0): every builder (MTX3_init,
 * MTX3_init_y_z, MTX3_init_x_y_z, MTX3_init_x, MTX3_init_z,
 * MTX3_rot_about_axis, and the rebuild inside MTX3_ortho_normalize) tests
 * its result with MTX3_is_ortho_normal and reports a failure through
 * ERROR_internal (module mtx3, "Assertion failed: %s", "condition"). Only
 * non-finite input can fail it. If the report returns, the routine carries
 * on and returns as it would have. At level 0 nothing is tested or reported
 * (except the notes of MTX3_fixup that are written at any level).
 *
 * NaN and infinite input. Nothing tests for them; they propagate into the matrices written.
 * VEC3_unitize accepts a NaN or infinite direction (vector.h), and the perpendicularity tests
 * differ on a NaN cosine: MTX2_init and MTX3_init (which refuse a cosine above 1.0e-10) and
 * MTX3_init_x and MTX3_init_z (which test none) return 1 and write NaN elements, while
 * MTX3_init_y_z and MTX3_init_x_y_z (which require |cosine| <= 1.0e-10) return 0 and leave M
 * untouched.
 * MTX3_rot_about_axis writes NaNs for a NaN angle or axis. MTX3_is_ortho_normal,
 * MTX3_is_equal and MTX3_is_identity answer 0 when an element or the tolerance is NaN, so
 * MTX3_multiply (_t) with such a factor returns 0 and the plain product. MTX3_ortho_normalize
 * always ends: a pass whose X and Z rows are sound rebuilds the matrix from them alone (a NaN
 * in the Y row is repaired away, result 1); a matrix no pass can repair comes back to one
 * already seen, bit for bit, which ends the loop with result 1 and NaN left in M. MTX3_fixup
 * neither snaps a NaN element nor notes it as modified (both comparisons are false); a NaN
 * in its X or Y row unitizes, so the result is 1 and the derived rows are NaN. With checking
 * on, the builders' ortho-normality assertion reports each NaN result.
 *
 * Aliasing: every routine here reads all its inputs before it writes its
 * output, so an output may be (or overlap) any input unless stated.
 * Nothing is allocated and nothing is kept between calls.
 */
#ifndef QXMATH_ORIENTATION_H
#define QXMATH_ORIENTATION_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* ---- mtx2 ------------------------------------------------------------- */

/* 2-D orientation from two directions.
 *   X, Y  in, 2 doubles each; unitized at 1.0e-10
 *   M     out, 4 doubles: unit X, then unit Y
 * Result 1; 0 when X or Y is null (length <= 1.0e-10) or |X^.Y^| > 1.0e-10,
 * and M is then not written. Y is not made perpendicular and the handedness
 * is not tested. A NaN component passes the cosine test (it is not greater
 * than 1.0e-10) and gives a NaN matrix with result 1. */
QXMATH_API int MTX2_init(const double X[2], const double Y[2], double M[4]);

/* ---- mtx3: construction ---------------------------------------------- */

/* Orientation with the given X axis and Y in the plane of X and Y.
 *   X, Y  in, 3 doubles each: directions, of any non-null length
 *   M     out, 9 doubles: rows X^, Z x X^, Z with Z = unit(X^ x Y^)
 * Result 1; 0 when X or Y is null (length <= 1.0e-10) or the directions are
 * not perpendicular within 1.0e-10 on the cosine (|X^.Y^| > 1.0e-10). On
 * failure M is not written. The re-derived Y is not unitized again. A NaN
 * component passes the cosine test and gives result 1 with a NaN matrix
 * (and the assertion, checking on). */
QXMATH_API int MTX3_init(const double X[3], const double Y[3], double M[9]);

/* Orientation with the given Z axis and Y in the plane of Y and Z.
 *   Y, Z  in, 3 doubles each
 *   M     out, 9 doubles: rows X, Z^ x X, Z^ with X = unit(Y^ x Z^)
 * Result 1; 0 when Y or Z is null or unless |Y^.Z^| <= 1.0e-10 (so a NaN
 * cosine fails here); M is then not written. */
QXMATH_API int MTX3_init_y_z(const double Y[3], const double Z[3], double M[9]);

/* Checks three directions, then builds exactly MTX3_init(X, Y, M).
 *   X, Y, Z  in, 3 doubles each
 *   M        out, 9 doubles
 * Result 0 (M not written) when any of them is null or unless each of
 * |X^.Y^|, |Z^.X^|, |Z^.Y^| is <= 1.0e-10. The supplied Z takes part in the
 * checks only: a left-handed Z is silently replaced by X^ x Y^, on purpose,
 * so the result is always right-handed. */
QXMATH_API int MTX3_init_x_y_z(const double X[3], const double Y[3], const double Z[3],
                               double M[9]);

/* Some orientation with the given X axis.
 *   X  in, 3 doubles
 *   M  out, 9 doubles: rows X^, P, X^ x P, P the unitized VEC3_ask_perpendicular(X^)
 * Result 1; 0 when X is null (M not written). */
QXMATH_API int MTX3_init_x(const double X[3], double M[9]);

/* Some orientation with the given Z axis.
 *   Z  in, 3 doubles
 *   M  out, 9 doubles: rows X, Z^ x X, Z^, where X is the unitized
 *      (Z^z, 0, -Z^x) when |Z^y| <= 0.9, else (0, Z^z, -Z^y)
 * Result 1; 0 when Z is null (M not written). Z = (0, 0, 1) gives the
 * identity; Z = (0, 1, 0) gives X = (0, 0, -1), Y = (-1, 0, 0). */
QXMATH_API int MTX3_init_z(const double Z[3], double M[9]);

/* Rows X, Y and X x Y exactly as given: no unitizing, no test, no report.
 *   X, Y  in, 3 doubles each (may be rows of M)
 *   M     out, 9 doubles
 * Returns M. */
QXMATH_API double *MTX3_init_no_check(const double X[3], const double Y[3], double M[9]);

/* Rotation by angle (radians, right-handed) about axis.
 *   angle  in
 *   axis   in, 3 doubles; unitized at 1.0e-10 into (x, y, z)
 *   M      out, 9 doubles; with c = cos angle, s = sin angle, t = 1 - c, by rows
 *          t.x.x + c   t.x.y - z.s  y.s + t.x.z
 *          z.s + t.x.y t.y.y + c    t.y.z - x.s
 *          t.x.z - y.s x.s + t.y.z  t.z.z + c
 * A null axis gives the identity (zero axis, s = 0, c = 1) without a report.
 * Row i . v is component i of v turned by angle about the axis. */
QXMATH_API void MTX3_rot_about_axis(double angle, const double axis[3], double M[9]);

/* ---- mtx3: enquiries -------------------------------------------------- */

/* Roll, pitch and yaw (radians) of M, from its cosine/sine pairs cleaned to
 * unit length (pairs within 1.0e-10 of an axis are snapped to it).
 *   M                 in, 9 doubles; meant to be ortho-normal, not checked
 *   roll, pitch, yaw  out
 * pitch lies in [-pi/2, pi/2], roll and yaw in [-pi, pi]. When
 * M[0]^2 + M[3]^2 <= 1.0e-20 (pitch +-90 degrees) yaw is 0, pitch is
 * -pi/2 when M[6] >= 0 and pi/2 otherwise, and the whole rotation about the
 * vertical is reported as roll. */
QXMATH_API void MTX3_ask_roll_pitch_yaw(const double M[9], double *roll, double *pitch,
                                        double *yaw);

/* 1 when every row has | |row|^2 - 1 | <= 1.0e-14 and every pair of rows
 * | dot | <= 1.0e-14 (absolute), else 0. Handedness is not tested: a
 * reflection passes. NaN fails. */
QXMATH_API int MTX3_is_ortho_normal(const double M[9]);

/* 1 when |A[i] - B[i]| <= tol for all nine elements and A and B are either
 * both ortho-normal or both not; else 0. Two element-wise equal matrices of
 * which only one is ortho-normal count as different, on purpose. */
QXMATH_API int MTX3_is_equal(const double A[9], const double B[9], double tol);

/* MTX3_is_equal(M, identity, tol): so M must also be ortho-normal. */
QXMATH_API int MTX3_is_identity(const double M[9], double tol);

/* ---- mtx3: composition and repair ------------------------------------- */

/* P := B.A (P[i][j] = sum over k of B[i][k].A[k][j], k = 0, 1, 2 in order):
 * when B holds axes expressed in the system of A, P holds the same axes in
 * A's enclosing system.
 *   A, B  in, 9 doubles each
 *   P     out, 9 doubles; may be A or B (the product is formed locally)
 * When A and B are both ortho-normal the product goes through
 * MTX3_ortho_normalize and its result is returned: 0 when the product was
 * already ortho-normal, 1 when it was repaired. When either is not, the
 * plain product is stored and the result is 0. */
QXMATH_API int MTX3_multiply(const double A[9], const double B[9], double P[9]);

/* P := B.A^T (P[i][j] = row i of B . row j of A): B's axes expressed in the
 * system of A. Arguments, aliasing and result as for MTX3_multiply. */
QXMATH_API int MTX3_multiply_t(const double A[9], const double B[9], double P[9]);

/* Repairs M in place: a matrix that fails MTX3_is_ortho_normal is replaced
 * by an ortho-normal, right-handed one (one that passes is left alone, even
 * a reflection).
 *   M  in/out, 9 doubles
 * Result 0 when M already passes MTX3_is_ortho_normal (M untouched), else 1.
 * Passes are repeated until M passes:
 *   - when |X|^2 > 1.0e-28, |Z|^2 > 1.0e-28 and |X.Z| <= 1.0e-14 (X, Z rows
 *     0 and 2; row 1 is not read), M := MTX3_init_y_z(Z x X, Z): Z keeps
 *     its direction and X is re-derived;
 *   - otherwise M is rebuilt from its roll/pitch/yaw pairs (as
 *     MTX3_ask_roll_pitch_yaw reads them), the first pass snapping elements
 *     within 1.0e-10 of 0 or +-1 before and after the rebuild (a row with a
 *     snapped +-1 has its other two elements zeroed). Of each cosine/sine
 *     pair the smaller member is re-derived from the larger, so an error e
 *     in M can move the result by about e / (cos pitch . s), s the smallest
 *     |cos| or |sin| among the three angles.
 * Finite input is done within three passes. Input that cannot be repaired
 * (NaN or infinite elements, or X and Z rows too short for the cross
 * product to be unitized at 1.0e-10 while passing the tests above) would
 * make the passes repeat forever: the routine stops as soon as a pass
 * gives back a matrix that an earlier pass already produced, which happens
 * for such input only, and returns 1 with M as the last pass left it (not
 * ortho-normal: test it with MTX3_is_ortho_normal when that can occur). A
 * matrix that can be repaired is never stopped early. */
QXMATH_API int MTX3_ortho_normalize(double M[9]);

/* ---- mtx3_privileged ----------------------------------------------------- */

/* Repairs a nearly axis-aligned matrix in place.
 *   M  in/out, 9 doubles
 * Each of the X and Y elements (0-5) within 1.0e-10 of 0 becomes 0, within
 * 1.0e-10 of +-1 becomes +-1 (the rest of its row is left alone). Row 0 is
 * then unitized at 1.0e-10, and if that succeeds row 1; if both succeed,
 * Z := unit(X x Y) and Y := Z x X. A row that fails is zeroed.
 * Result 1 when both rows were unitized, 0 when X or Y is null; never raises.
 * Notes (ERROR_note, module mtx3_privileged): with checking on,
 * "X vector of matrix is zero" or "Y vector of matrix is zero"; at any
 * level, for each element 0-5 that moved by more than 1.0e-10,
 * "Element %d of matrix modified from %25.15f to %25.15f" with the index,
 * the NEW value and then the old one: the note names the new value after
 * "from", as it always has, and is kept so on purpose. */
QXMATH_API int MTX3_fixup(double M[9]);

QXMATH_END_DECLS

#endif
