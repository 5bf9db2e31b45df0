/* frame.h — the library frame: tolerances, tolerant equality and the codes
 * of the errors the library raises.
 *
 * The tolerance table is eight doubles of the session block (session.h):
 *   slot 0  number tolerance (dimensionless)
 *   slot 1  length tolerance = model scale x slot 0
 *   slot 2  length-squared tolerance = slot 1 x slot 1
 *   3..6    further scale slots, filled by the host, read only by sys22_
 *   slot 7  scaled squared tolerance = slot 2 x 1.0e8
 * All slots are 0.0 when the library is loaded, -939.0 after sys10_, and
 * computed by sys21_.
 *
 * NaN and infinite input. Nothing here tests for them. sys21_ with a NaN
 * model scale makes slots 1, 2 and 7 NaN (an infinite one, infinite); slot 0
 * does not depend on the scale. eqz_ tests |*a - *b| <= tol, so a NaN operand
 * or a NaN tolerance gives 0, and so do two equal infinities (their
 * difference is NaN); an infinite tolerance admits any finite difference. A
 * NaN length tolerance makes the null-vector test of the by-address unitizing
 * routines (vector.h) false: vunt2_, vunt3_ and vcru3_ then unitize even a
 * null vector, flag 1 and NaN components. sys22_ propagates NaN like any
 * product.
 */
#ifndef QXMATH_FRAME_H
#define QXMATH_FRAME_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* Codes passed to ERROR_raise. Several messages share a code on purpose:
 * the code names the class of fault, the message the place. */
enum {
    QX_ERR_VECTOR = 17, /* null vector, zero determinant */
    QX_ERR_POINT_POSITION_TOO_LARGE = 1005302,
    QX_ERR_PARAMETERS_NULL = 1005303,
    QX_ERR_NO_POINTS = 1005304,
    QX_ERR_NO_SLOPE = 1005305,
    QX_ERR_SLOPE_POSITIONS_NULL = 1005306,
    QX_ERR_PERIODIC_LEAST_SQUARES = 1005312,
    QX_ERR_POINT_DIMENSION = 1005313,
    QX_ERR_ZERO_LENGTH_SLOPE = 1005314,
    QX_ERR_INVALID_POSITION = 1005315,
    QX_ERR_REMOVING_POINTS = 1005316,
    QX_ERR_PNTLST_POSITION = 1005337
};

/* Slot 0 of the tolerance table. */
QXMATH_API double EQ_ask_number_tolerance(void);
/* Slot 1 of the tolerance table. */
QXMATH_API double EQ_ask_length_tolerance(void);
/* Slot 2 of the tolerance table. */
QXMATH_API double EQ_ask_length_squared_tolerance(void);

/* Recomputes slots 0, 1, 2 and 7 from the precision switch GCA(31)
 * (non-zero: 1.0e-10, else 1.0e-4) and the model scale. The host sets the
 * model scale first; with the unset marker -939.0 as scale the length
 * tolerance comes out negative (no length compares equal) and is not
 * guarded. Not thread-safe: call it while nothing reads tolerances. */
QXMATH_API void sys21_(void);

/* *result := table[*slot] x *value. The slot is not range-checked: it must
 * be 0..7. */
QXMATH_API void sys22_(const double *value, const int *slot, double *result);

/* 1 when |*a - *b| <= tol, else 0; tol by *kind: 0 number tolerance,
 * 1 length tolerance, 2 length-squared tolerance, any other value the number
 * tolerance squared (for squared dimensionless quantities). Before sys21_
 * the tolerances are 0.0 and only exact equality passes. */
QXMATH_API int eqz_(const double *a, const double *b, const int *kind);

QXMATH_END_DECLS

#endif
