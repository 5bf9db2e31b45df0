// vec2.cpp — the VEC2_ routines: unitizing, parallel and perpendicular
// tests with a caller's tolerance, the right-angle turn, the components of a
// vector in a base of two, and the shortest of a set of vectors. They never
// raise: degenerate input gives 0 and zeroed (or infinite) outputs. With
// checking on, the input vectors of the tolerance routines are asserted to
// have every component below 1e19 in magnitude.
#define QX_SOURCE_FILE "vec2"

#include <cmath>

#include <qxmath/vector.h>

#include "frame/check.h"
#include "linalg/vec_internal.h"

namespace
{

using qx::vec::dot2;
using qx::vec::either_null;
using qx::vec::in_range2;

constexpr double kNull2 = 1e-20; // ask_perpendicular: null squared length

} // namespace

int qx_vec2_unitize(const double V[2], double tol, double *length, double W[2])
{
    QX_VEC_ASSERT(in_range2(V));
    return qx::vec::unitize2(V, tol, length, W);
}

int VEC2_unitize(const double V[2], double tol, double *length, double W[2])
{
    return qx_vec2_unitize(V, tol, length, W);
}

int VEC2_is_parallel(const double A[2], const double B[2], double tol)
{
    QX_VEC_ASSERT(in_range2(A));
    QX_VEC_ASSERT(in_range2(B));
    const double a2 = dot2(A, A), b2 = dot2(B, B);
    if (either_null(a2, b2, tol)) return 1;
    const double s = std::fabs(A[0] * B[1] - A[1] * B[0]) / (std::sqrt(b2) * std::sqrt(a2));
    return s <= tol ? 1 : 0;
}

int VEC2_is_perpendicular(const double A[2], const double B[2], double tol)
{
    QX_VEC_ASSERT(in_range2(A));
    QX_VEC_ASSERT(in_range2(B));
    const double a2 = dot2(A, A), b2 = dot2(B, B);
    if (either_null(a2, b2, tol)) return 1;
    const double c = std::fabs(dot2(A, B)) / (std::sqrt(b2) * std::sqrt(a2));
    return c <= tol ? 1 : 0;
}

int VEC2_ask_perpendicular(const double V[2], double W[2])
{
    QX_VEC_ASSERT(in_range2(V));
    const double x = V[0], y = V[1];
    if (x * x + y * y <= kNull2) {
        W[0] = W[1] = 0.0;
        return 0;
    }
    // Not the 3-D sign rule: here the tie |Vy| = |Vx| gives (Vy, -Vx).
    const bool turn_back = std::fabs(y) <= std::fabs(x);
    W[0] = turn_back ? y : -y;
    W[1] = turn_back ? -x : x;
    return 1;
}

int VEC2_components(const double A[2], const double B[2], const double K[2], double tol,
                    double *alpha, double *beta)
{
    const double det = A[0] * B[1] - A[1] * B[0];
    if (std::fabs(det) <= tol) {
        *alpha = *beta = HUGE_VAL;
        return 0;
    }
    *alpha = (B[1] * K[0] - K[1] * B[0]) / det;
    *beta = (K[1] * A[0] - A[1] * K[0]) / det;
    return 1;
}

int VEC2_ask_shortest_vector(int n, const double *V)
{
    QX_VEC_ASSERT(n > 0);
    if (n < 2) return 0;
    int best = 0;
    double best_length = std::sqrt(dot2(V, V));
    for (int i = 1; i < n; ++i) {
        const double *v = V + 2 * static_cast<long>(i);
        const double length = std::sqrt(dot2(v, v));
        if (length < best_length) { // strictly: ties keep the earlier index
            best = i;
            best_length = length;
        }
    }
    return best;
}
