// mtx2.cpp — the 2-D orientation matrix: two unit axes, X then Y, checked
// for perpendicularity on the cosine but neither re-derived nor tested for
// handedness.
#define QX_SOURCE_FILE "mtx2"

#include <cmath>

#include <qxmath/orientation.h>

#include "frame/check.h"
#include "linalg/vec_internal.h"

int MTX2_init(const double X[2], const double Y[2], double M[4])
{
    constexpr double tol = 1.0e-10;
    double x[2], y[2], length;
    const int x_ok = qx_vec2_unitize(X, tol, &length, x);
    const int y_ok = qx_vec2_unitize(Y, tol, &length, y);
    if (!x_ok || !y_ok) return 0;
    if (std::fabs(qx::vec::dot2(x, y)) > tol) return 0;
    M[0] = x[0];
    M[1] = x[1];
    M[2] = y[0];
    M[3] = y[1];
    return 1;
}
