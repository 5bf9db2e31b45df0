// csys.cpp — coordinate-system records (origin, then the X, Y and Z axes:
// twelve doubles) expressed in one another. The orientation of the result
// is rebuilt from the mapped axes by MTX3_init_x_y_z, which checks them and
// keeps X, so a mapped system comes back right-handed and ortho-normal.
#define QX_SOURCE_FILE "csys"

#include <qxmath/orientation.h>
#include <qxmath/transform.h>

#include "frame/check.h"
#include "linalg/vec_internal.h"

namespace
{

// w := RB.v, row by row.
void map(const double *rb, const double *v, double *w)
{
    w[0] = qx::vec::dot3(rb, v);
    w[1] = qx::vec::dot3(rb + 3, v);
    w[2] = qx::vec::dot3(rb + 6, v);
}

} // namespace

int CSYS_map_csys(const double A[12], const double B[12], double R[12])
{
    const double *rb = B + 3;
    const double d[3] = {A[0] - B[0], A[1] - B[1], A[2] - B[2]};
    double origin[3], x[3], y[3], z[3];
    map(rb, d, origin);
    map(rb, A + 3, x);
    map(rb, A + 6, y);
    map(rb, A + 9, z);
    // Everything is read; R may be A or B. The origin is written whatever
    // MTX3_init_x_y_z makes of the axes.
    R[0] = origin[0];
    R[1] = origin[1];
    R[2] = origin[2];
    return MTX3_init_x_y_z(x, y, z, R + 3);
}
