// v6043_.cpp — a coordinate system from an origin and two picked points (X
// towards the first, Y on the side of the second), and v6043_normal, the
// same with the Z axis given as a normal instead of the second point. Both
// test against the fixed 1.0e-10 of VEC3_unitize / VEC3_is_parallel, not the
// tolerance table, deliberately.
#define QX_SOURCE_FILE "v6043_"

#include <qxmath/numbered.h>
#include <qxmath/orientation.h>
#include <qxmath/vector.h>

#include "linalg/vec_internal.h"

namespace
{
constexpr double kTol = 1.0e-10;
}

void v6043_(const double o[3], const double px[3], const double py[3], double m[9],
            double origin[3], int *status)
{
    const double d1[3] = {px[0] - o[0], px[1] - o[1], px[2] - o[2]};
    const double d2[3] = {py[0] - o[0], py[1] - o[1], py[2] - o[2]};
    if (VEC3_is_parallel(d1, d2, kTol)) {
        *status = 2;
        return;
    }
    double x[3], yp[3], xy[3], z[3], y[3], len;
    int built = 0;
    if (qx_vec3_unitize(d1, kTol, &len, x) && qx_vec3_unitize(d2, kTol, &len, yp)) {
        qx::vec::cross3(x, yp, xy);
        if (qx_vec3_unitize(xy, kTol, &len, z)) {
            qx::vec::cross3(z, x, y);
            built = MTX3_init(x, y, m);
        }
    }
    const double ox = o[0], oy = o[1], oz = o[2];
    origin[0] = ox;
    origin[1] = oy;
    origin[2] = oz;
    *status = built ? 1 : 2;
}

void v6043_normal(const double o[3], const double px[3], const double normal[3], double m[9],
                  double origin[3], int *status)
{
    const double d1[3] = {px[0] - o[0], px[1] - o[1], px[2] - o[2]};
    if (VEC3_is_parallel(d1, normal, kTol)) {
        *status = 2;
        return;
    }
    // Y = Z x X, then MTX3_init_y_z re-derives X = Y x Z: the component of
    // px - o across the normal.
    double z[3], x[3], y[3], len;
    int built = 0;
    if (qx_vec3_unitize(normal, kTol, &len, z) && qx_vec3_unitize(d1, kTol, &len, x)) {
        qx::vec::cross3(z, x, y);
        built = MTX3_init_y_z(y, z, m);
    }
    const double ox = o[0], oy = o[1], oz = o[2];
    origin[0] = ox;
    origin[1] = oy;
    origin[2] = oz;
    *status = built ? 1 : 2;
}
