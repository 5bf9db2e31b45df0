/* orientation.h — 3x3 orientation matrices: construction, composition, testing and repair (MTX2_, MTX3_).
 */
#ifndef QXMATH_ORIENTATION_H
#define QXMATH_ORIENTATION_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

QXMATH_END_DECLS

#endif
