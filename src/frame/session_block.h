// session_block.h — internal access to the session block.
#ifndef QXMATH_FRAME_SESSION_BLOCK_H
#define QXMATH_FRAME_SESSION_BLOCK_H

#include <qxmath/session.h>

// The session's integer word k.
#define GCA(k) (acom_.gca[(k)])

// Entry i (0..7) of the tolerance table.
inline double qx_tolerance(int i) { return acom_.tolerance[i]; }

#endif
