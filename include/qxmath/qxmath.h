/* qxmath.h — all of libqxmath's public interface.
 *
 * libqxmath is the geometry-mathematics library of a mechanical CAD system:
 * plain functions over caller-owned memory, with session state in exported
 * blocks. It takes memory, error reporting and its checking level from the
 * host (qxhost.h); link the reference host libqxsys or define those names.
 */
#ifndef QXMATH_QXMATH_H
#define QXMATH_QXMATH_H

#include "qxexport.h"
#include "qxhost.h"
#include "frame.h"
#include "session.h"
#include "vector.h"
#include "orientation.h"
#include "solvers.h"
#include "matrix.h"
#include "pntlst.h"
#include "bcdf.h"
#include "dgeom.h"
#include "transform.h"
#include "eigen.h"
#include "lsfit.h"
#include "numbered.h"
#include "spline.h"
#include "facet.h"
#include "pole.h"

#endif
