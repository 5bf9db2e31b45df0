// v6045_.cpp — a coordinate system around a line: Z along the line from b to
// a, the origin f the foot of p on the line, p on the positive X axis. Fixed
// tolerance 1.0e-10 of VEC3_unitize, deliberately.
#define QX_SOURCE_FILE "v6045_"

#include <qxmath/numbered.h>
#include <qxmath/orientation.h>

#include "linalg/vec_internal.h"

void v6045_(const double a[3], const double b[3], const double p[3], double m[9], double f[3],
            int *status)
{
    *status = 1;
    double foot[3];
    (void)h430_(a, b, p, foot);
    const double pf[3] = {p[0] - foot[0], p[1] - foot[1], p[2] - foot[2]};
    const double ab[3] = {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
    f[0] = foot[0];
    f[1] = foot[1];
    f[2] = foot[2];
    double yd[3], zd[3], y[3], len;
    if (!qx_vec3_unitize(pf, 1.0e-10, &len, yd)) {
        *status = 2;
        return;
    }
    // A null line leaves Zd zero, and MTX3_init_y_z then fails.
    (void)qx_vec3_unitize(ab, 1.0e-10, &len, zd);
    qx::vec::cross3(zd, yd, y);
    if (!MTX3_init_y_z(y, zd, m)) *status = 2;
}
