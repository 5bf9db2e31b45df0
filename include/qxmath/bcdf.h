/* bcdf.h — the B-curve defining-data record: creation, queries, copies, persistence, editing and validation.
 */
#ifndef QXMATH_BCDF_H
#define QXMATH_BCDF_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

QXMATH_END_DECLS

#endif
