/* solvers.h — dense and banded linear solvers and the banded solver's error state.
 */
#ifndef QXMATH_SOLVERS_H
#define QXMATH_SOLVERS_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

QXMATH_END_DECLS

#endif
