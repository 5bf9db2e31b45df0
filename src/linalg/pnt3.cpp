// pnt3.cpp — PNT3_is_colinear: three points are colinear when two of them
// coincide (a squared distance below tol) or when the squared sine of the
// angle at B between AB and BG is below tol. The one tolerance serves as a
// squared length and as a squared sine, as it always has.
#define QX_SOURCE_FILE "pnt3"

#include <qxmath/facet.h>

#include "frame/check.h"
#include "linalg/vec_internal.h"

int PNT3_is_colinear(const double A[3], const double B[3], const double G[3], double tol)
{
    using qx::vec::dot3;
    const double ag[3] = {A[0] - G[0], A[1] - G[1], A[2] - G[2]};
    const double bg[3] = {G[0] - B[0], G[1] - B[1], G[2] - B[2]};
    const double ab[3] = {B[0] - A[0], B[1] - A[1], B[2] - A[2]};
    const double q_ag = dot3(ag, ag), q_bg = dot3(bg, bg), q_ab = dot3(ab, ab);
    if (q_ag < tol || q_bg < tol || q_ab < tol) return 1;
    const double w = dot3(bg, ab);
    const double s = 1.0 - w * w / (q_bg * q_ab);
    return s < tol ? 1 : 0;
}
