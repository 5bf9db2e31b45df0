/* pntlst.h — point lists: growable arrays of 3-D or 4-D (homogeneous) points.
 */
#ifndef QXMATH_PNTLST_H
#define QXMATH_PNTLST_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

QXMATH_END_DECLS

#endif
