/* vector.h — vectors in two and three dimensions: the MC_, VEC2_ and VEC3_ families and the by-address vunt2_, vunt3_ and vcru3_.
 */
#ifndef QXMATH_VECTOR_H
#define QXMATH_VECTOR_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

QXMATH_END_DECLS

#endif
