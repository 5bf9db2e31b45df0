/* matrix.h — row-pointer and flat matrices: make, clear, copy, multiply, transpose.
 */
#ifndef QXMATH_MATRIX_H
#define QXMATH_MATRIX_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

QXMATH_END_DECLS

#endif
