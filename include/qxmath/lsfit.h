/* lsfit.h — least-squares fits of lines, planes, circles and spheres to points (source file
 * lsfit).
 *
 * Points are passed as n consecutive 2-D (x, y) or 3-D (x, y, z) points. Every fit writes a
 * degeneracy flag (1 when the points do not define the shape) and, unless stated otherwise,
 * a deviation triple dev[3]:
 *   dev[0]  the largest distance of a point from the fitted shape,
 *   dev[1]  the root-mean-square distance,
 *   dev[2]  the mean distance.
 *
 * Line and plane fits are total least squares: the normal is the eigenvector of the smallest
 * eigenvalue of the scatter matrix of the points about their centroid (cyclic Jacobi,
 * NR_ask_eigenvalues_jacobi, sweep limit 60). Circle and sphere fits are algebraic fits
 * solved as a generalised symmetric eigenproblem (NR_generalized_eigenvalues_symm, limit 60);
 * see LSFIT_circle_to_points_2d for the formulation.
 *
 * Scratch memory comes from SM_alloc and is freed on every path before any report of this
 * file. A report made inside a routine called from here (an exhausted Jacobi sweep count, a
 * failing host allocation) leaves to the host's current operation, if the host unwinds, the
 * scratch alive at that moment: the scatter and eigenvector matrices and the centred copy
 * of the line and plane fits (around Jacobi), the in-plane points of the 3-D circle fit
 * (around its 2-D fit). The algebraic part of the circle and sphere fits keeps its small
 * matrices on the stack. When a host allocation fails and its report returns, the fit
 * returns with the flag set to 1 and its point/centre, radius and normal outputs zeroed; the
 * line and plane fits then leave dev unwritten, the circle and sphere fits zero it.
 *
 * Nothing is checked at any checking level; the only report of this file is
 * "There are no input points." through ERROR_internal, made whatever the checking level.
 * Inputs are read only; outputs must not overlap the points or each other.
 *
 * NaN and infinite input. The circle and sphere fits refuse them: a NaN or infinite
 * coordinate among those a fit reads (x and y only for LSFIT_circle_to_points_2d) makes the
 * points' spread non-finite, which counts as collinear (coplanar), so the flag is 1 and
 * every output zero. The line and plane fits do not test for them. A NaN or infinite
 * coordinate makes the scatter-matrix entries that involve it NaN, couplings included, so
 * Jacobi stops before its first rotation (eigen.h): the eigenvalues are the scatter
 * matrix's diagonal, the eigenvectors the coordinate axes, and when some diagonal entry is
 * still a number the smallest non-negative one is chosen as usual: flag 0, a coordinate
 * axis as normal, point formed from the centroid as usual (not finite where the centroid
 * is not), and dev[2] NaN. Only when every diagonal entry is NaN (a non-finite x and y,
 * for the plane also z, among the points) does the fall-back run; its distance tests fail
 * on NaN, so the line fit ends with flag 1 and the plane fit with flag 0, both with point
 * and normal zero and dev not written. Jacobi's sweep limit is never reached on such input.
 */
#ifndef QXMATH_LSFIT_H
#define QXMATH_LSFIT_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* Total-least-squares line through 2-D points.
 *
 *   pts         in, n points (2n doubles)
 *   n           number of points
 *   point       out, 2 doubles: (cx, cx) — the x value of the centroid in BOTH coordinates
 *   normal      out, 2 doubles: unit normal of the line
 *   degenerate  out: 1 when the fall-back construction found all points coincident
 *   dev         out, 3 doubles, see below
 *
 * Deliberate quirk, kept for the callers that depend on it: point is (cx, cx), not the
 * centroid (cx, cy), and the deviations are measured from the line through (cx, cx) with
 * the fitted normal. With c = -normal.point each input point's distance is
 * |normal.p + c|; dev[0] is the largest, dev[2] the mean, and dev[1] = sqrt(lambda / n) with
 * lambda the chosen eigenvalue (the sum of squared distances from the line through the true
 * centroid), not a root-mean-square of the measured distances.
 *
 * The eigenvalues are cleaned (magnitude <= 1.0e-10 becomes 0.0) and the smallest
 * non-negative one is chosen, the first of equal ones winning. Coincident points therefore
 * take this path too: every eigenvalue is 0, the normal is (1, 0), the flag stays 0.
 * The rule is kept as it stands where it surprises: Jacobi's rounding on the scatter
 * matrix is some eps times its trace, so for points exactly on a line (plane) some hundreds
 * of units long the zero eigenvalue can come out below -1.0e-10; it is then skipped and
 * the normal is the eigenvector of a larger eigenvalue, along the line (in the plane), with
 * dev[1] its root-mean-square. Callers fitting such data at that size scale it first.
 *
 * Only when no eigenvalue is non-negative and below the bound 1.0e19 (NaN input, or points
 * spread over some 1e9 units and more) does the fall-back run: the normal is
 * perpendicular to the direction from the centroid to the farthest point, provided that
 * point is at least 0.001 away; then lambda = 1.0e19 enters dev[1]. Otherwise (all points
 * within 0.001, or NaN) the flag is 1, point and normal are zero and dev is not written.
 *
 * n = 0 (or negative) takes the main path: the centroid is 0/0, so point is (NaN, NaN), the
 * normal (1, 0), dev[0] = 0 and dev[1], dev[2] NaN; there is no report. The report
 * "There are no input points." is made only if the fall-back is reached with n < 1; the
 * flag is then 1 and the outputs zero. */
QXMATH_API void LSFIT_line_to_points_2d(const double *pts, int n, double point[2], double normal[2],
                                        int *degenerate, double dev[3]);

/* Total-least-squares plane through 3-D points.
 *
 *   pts         in, n points (3n doubles)
 *   n           number of points
 *   point       out, 3 doubles: the centroid
 *   normal      out, 3 doubles: unit normal of the plane
 *   degenerate  out: 1 when the fall-back construction found the points collinear
 *   dev         out, 3 doubles: distances |normal.p - normal.point|; dev[0] the largest,
 *               dev[2] the mean, dev[1] = sqrt(lambda / n) with lambda the chosen eigenvalue
 *               (1.0e19 after the fall-back)
 *
 * Eigenvalue choice as in LSFIT_line_to_points_2d: coincident or collinear points take the
 * main path and get an arbitrary normal (a column of the Jacobi eigenvector matrix) with
 * the flag 0. The fall-back (no non-negative eigenvalue below 1.0e19: NaN input or points
 * spread over some 1e9 units and more) takes d, the unit
 * direction to the point farthest from the centroid, and p, the point farthest from the
 * line along d, and uses d x p when there are at least three points, the farthest is at
 * least 0.001 away and p is at least 0.001 from the line. When the farthest point is within
 * 0.001 (all points coincide, or NaN) the fit returns at once: point and normal stay zero,
 * the flag stays 0 and dev is not written. Otherwise (collinear) the flag is 1, point and
 * normal are zero and dev is not written. At coordinates of 1e20 and more the distance from
 * the line is rounding itself: points collinear in exact arithmetic can pass its test while
 * d x p is too short to be made unit; the normal then stays zero with the flag 0.
 *
 * n = 0 (or negative): point (NaN, NaN, NaN), normal (1, 0, 0), dev[0] = 0, dev[1] and
 * dev[2] NaN, no report (the report of the fall-back needs n < 1 and NaN eigenvalues). */
QXMATH_API void LSFIT_plane_to_points(const double *pts, int n, double point[3], double normal[3],
                                      int *degenerate, double dev[3]);

/* Circle through 2-D points.
 *
 *   pts         in, n points (2n doubles)
 *   n           number of points
 *   centre      out, 2 doubles
 *   radius      out
 *   degenerate  out: 1 when the points do not define a circle
 *   dev         out, 3 doubles: distances ||p - centre| - radius|; dev[0] the largest, dev[1]
 *               the root-mean-square, dev[2] the mean
 *
 * Formulation. The points are centred on their centroid c and scaled by s, their
 * root-mean-square distance from it: u = (p - c) / s. The circle is the algebraic curve
 * A|u|^2 + B.u + D = 0 with a = (A, B_x, B_y, D), whose centre is c - s B / (2A) and radius
 * s sqrt(|B|^2 - 4AD) / (2|A|). The moment matrix M = (1/n) sum z z^T of the terms
 * z = (|u|^2, u_x, u_y, 1) is positive semi-definite, with the exact circle as null vector
 * when the points lie on one; the normalisation is Pratt's |B|^2 - 4AD = a^T P a, P the
 * identity with its first and last diagonal elements cleared and -2.0 at (0, 3) and (3, 0)
 * (indefinite: one negative eigenvalue).
 *
 * Pratt's fit minimises a^T M a / a^T P a over a^T P a > 0. Since NR_generalized_eigenvalues_symm
 * needs its second matrix positive definite, the pencil is solved the other way round,
 * P a = mu M a: the fit is the eigenvector of the largest eigenvalue mu, which must exceed
 * 1.0e-19. When M is not positive definite to the Cholesky pivot threshold (1.0e-10 on the
 * scaled moments: the points lie on a circle within about 1.0e-5 of their spread, or
 * exactly, e.g. three points), the unit-norm algebraic fit M a = lambda a is taken instead
 * (the same solver with the identity as second matrix): eigenvalues of magnitude at most
 * 1.0e-10 become 0.0 and the smallest non-negative one is chosen from the bound 1.0e19,
 * the first of equal ones winning. On such data both normalisations give the same circle
 * to well within the data's own scatter, and on exact data the exact circle.
 *
 * Degenerate input: flag 1, centre and radius zero, dev zero, when the points are
 * collinear — the normal of LSFIT_line_to_points_2d is used to measure the largest
 * distance from the line through the centroid, and the points count as collinear when it
 * is not above 1.0e-10 times the largest distance from the centroid (coincident points,
 * two distinct points, NaN included), or when the line fit's dev[1] (the root-mean-square
 * distance from its eigenvalue, which unlike the normal's direction does not suffer from
 * Jacobi's absolute threshold on small point sets) is not above that — or when the
 * solution has A = 0 or |B|^2 - 4AD <= 0 or gives a non-finite centre or radius. For this
 * test only, the line fit takes a negative eigenvalue within Jacobi's rounding (8 D eps
 * times the scatter matrix's trace) as 0.0, so that points exactly on a line hundreds of
 * units long count as collinear (the exported line fit skips such an eigenvalue).
 *
 * n < 1: "There are no input points." through ERROR_internal (after the line fit, which
 * does not report); if the host returns, flag 1 and zeroed outputs. */
QXMATH_API void LSFIT_circle_to_points_2d(const double *pts, int n, double centre[2],
                                          double *radius, int *degenerate, double dev[3]);

/* Circle through 3-D points.
 *
 *   pts         in, n points (3n doubles)
 *   n           number of points
 *   centre      out, 3 doubles
 *   radius      out
 *   normal      out, 3 doubles: unit normal of the circle's plane (the plane fit's normal)
 *   degenerate  out: 1 when the points do not define a circle
 *   dev         out, 3 doubles: distances of the points from the circle (as a curve in
 *               space, sqrt((rho - radius)^2 + h^2) with h the height above the circle's
 *               plane and rho the distance from its axis); largest, root-mean-square, mean
 *
 * Fits the plane (LSFIT_plane_to_points), maps the points into the frame whose Z axis is the
 * plane normal (MTX3_init_z) with its origin at the centroid, fits the circle to their X, Y
 * coordinates (LSFIT_circle_to_points_2d) and maps the centre back. Degenerate (flag 1, every
 * output zero) when the plane fit is degenerate or its normal is null, or when the 2-D fit
 * is (coincident or collinear points). n < 1: "There are no input points." through
 * ERROR_internal (after the plane fit, which does not report); if the host returns, flag 1
 * and zeroed outputs. */
QXMATH_API void LSFIT_circle_to_points_3d(const double *pts, int n, double centre[3],
                                          double *radius, double normal[3], int *degenerate,
                                          double dev[3]);

/* Sphere through 3-D points.
 *
 *   pts         in, n points (3n doubles)
 *   n           number of points
 *   centre      out, 3 doubles
 *   radius      out
 *   degenerate  out: 1 when the points do not define a sphere
 *   dev         out, 3 doubles: distances ||p - centre| - radius|; largest, root-mean-square,
 *               mean
 *
 * The formulation of LSFIT_circle_to_points_2d in three dimensions: terms
 * z = (|u|^2, u_x, u_y, u_z, 1), a 5 x 5 moment matrix, Pratt's matrix with -2.0 at (0, 4)
 * and (4, 0). LSFIT_plane_to_points is called first: points whose largest distance from the
 * fitted plane, or whose root-mean-square distance from it by the plane fit's dev[1], is
 * not above 1.0e-10 times their largest distance from the centroid are coplanar
 * (coincident, collinear, NaN included; a negative eigenvalue within rounding counts as
 * 0.0 here, as for the circle) and give flag 1 with every output zero; so
 * do the solution failures listed for the circle. At least four points not in a plane are
 * needed; four give the exact sphere through them.
 *
 * n < 1: "There are no input points." through ERROR_internal (after the plane fit, which
 * does not report); if the host returns, flag 1 and zeroed outputs. */
QXMATH_API void LSFIT_sphere_to_points_3d(const double *pts, int n, double centre[3],
                                          double *radius, int *degenerate, double dev[3]);

QXMATH_END_DECLS

#endif
