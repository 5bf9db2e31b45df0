// pln3.cpp — the PLN3_ tests on a plane record (a point, elements 0-2, and a
// normal of any length, elements 3-5). Distances are (X - R0).RN / |RN|;
// the segment test compares the product of the two end distances with the
// caller's tolerance, as it always has.
#define QX_SOURCE_FILE "pln3"

#include <cmath>

#include <qxmath/facet.h>
#include <qxmath/vector.h>

#include "frame/check.h"
#include "linalg/vec_internal.h"

namespace
{

using qx::vec::dot3;

// Signed distance of x from the plane of the record r, over the normal's
// length rn_len (not guarded: a null normal gives inf or NaN).
inline double signed_dist(const double *r, double rn_len, const double *x)
{
    const double w[3] = {x[0] - r[0], x[1] - r[1], x[2] - r[2]};
    return dot3(w, r + 3) / rn_len;
}

inline double normal_length(const double *r) { return std::sqrt(dot3(r + 3, r + 3)); }

int point_on_plane(const double *r, const double *p, double tol)
{
    return std::fabs(signed_dist(r, normal_length(r), p)) <= tol ? 1 : 0;
}

} // namespace

int PLN3_is_point_on_plane(const double R[6], const double P[3], double tol)
{
    return point_on_plane(R, P, tol);
}

int PLN3_is_coincident(const double A[6], const double B[6], double tol_d, double tol_a)
{
    if (VEC3_is_parallel(A + 3, B + 3, tol_a) == 0) return 0;
    return point_on_plane(A, B, tol_d);
}

int PLN3_is_segment_intersecting(const double R[6], const double A[3], const double B[3],
                                 double tol)
{
    const double len = normal_length(R);
    const double p = signed_dist(R, len, A) * signed_dist(R, len, B);
    if (std::fabs(p) <= tol) return 1;
    return p <= 0.0 ? 1 : 0;
}
