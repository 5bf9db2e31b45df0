// vec3.cpp — the VEC3_ routines: unitizing, parallel and perpendicular
// tests with a caller's tolerance, a perpendicular by component exchange,
// the signed angle about a normal and the split of a vector along a normal.
// They never raise: degenerate input gives 0 and zeroed outputs. With
// checking on, the input vectors of the tolerance routines are asserted to
// have every component below 1e19 in magnitude.
#define QX_SOURCE_FILE "vec3"

#include <cmath>

#include <qxmath/vector.h>

#include "frame/check.h"
#include "linalg/vec_internal.h"

namespace
{

using qx::vec::cross3;
using qx::vec::dot3;
using qx::vec::either_null;
using qx::vec::in_range3;

constexpr double kNull2 = 1e-20;    // ask_perpendicular: null squared length
constexpr double kAngleTol = 1e-10; // angle_between: unitizing and zero angle
constexpr double kTwoPi = 6.283185307179586;

inline void set(double *w, double x, double y, double z)
{
    w[0] = x;
    w[1] = y;
    w[2] = z;
}

} // namespace

void qx::vec::assertion_failed(const char *file, int line)
{
    ERROR_internal(file, line, "Assertion failed: %s", "condition");
}

int qx_vec3_unitize(const double V[3], double tol, double *length, double W[3])
{
    QX_VEC_ASSERT(in_range3(V));
    return qx::vec::unitize3(V, tol, length, W);
}

int qx_vec3_ask_perpendicular(const double V[3], double W[3])
{
    QX_VEC_ASSERT(in_range3(V));
    const double x = V[0], y = V[1], z = V[2];
    if (x * x + y * y + z * z <= kNull2) {
        set(W, 0.0, 0.0, 0.0);
        return 0;
    }
    const double ax = std::fabs(x), ay = std::fabs(y), az = std::fabs(z);
    if (ax < ay && ax < az) // x smallest
        ay >= az ? set(W, 0.0, -z, y) : set(W, 0.0, z, -y);
    else if (ax >= ay && ay < az) // y smallest
        ax >= az ? set(W, -z, 0.0, x) : set(W, z, 0.0, -x);
    else // z smallest; every tie of x with y or z lands here
        ay >= ax ? set(W, y, -x, 0.0) : set(W, -y, x, 0.0);
    return 1;
}

int VEC3_unitize(const double V[3], double tol, double *length, double W[3])
{
    return qx_vec3_unitize(V, tol, length, W);
}

int VEC3_is_parallel(const double A[3], const double B[3], double tol)
{
    QX_VEC_ASSERT(in_range3(A));
    QX_VEC_ASSERT(in_range3(B));
    const double a2 = dot3(A, A), b2 = dot3(B, B);
    if (either_null(a2, b2, tol)) return 1;
    double k[3];
    cross3(A, B, k);
    const double s = std::sqrt(dot3(k, k)) / (std::sqrt(b2) * std::sqrt(a2));
    return s <= tol ? 1 : 0;
}

int VEC3_is_perpendicular(const double A[3], const double B[3], double tol)
{
    QX_VEC_ASSERT(in_range3(A));
    QX_VEC_ASSERT(in_range3(B));
    const double a2 = dot3(A, A), b2 = dot3(B, B);
    if (either_null(a2, b2, tol)) return 1;
    const double c = std::fabs(dot3(A, B)) / (std::sqrt(b2) * std::sqrt(a2));
    return c <= tol ? 1 : 0;
}

int VEC3_ask_perpendicular(const double V[3], double W[3])
{
    return qx_vec3_ask_perpendicular(V, W);
}

double VEC3_angle_between(const double A[3], const double B[3], const double N[3])
{
    double a[3], b[3], len;
    const int ok_a = qx_vec3_unitize(A, kAngleTol, &len, a);
    const int ok_b = qx_vec3_unitize(B, kAngleTol, &len, b);
    if (!(ok_a && ok_b)) return 0.0;
    const double c = dot3(a, b);
    double k[3];
    cross3(a, b, k);
    double s = std::sqrt(dot3(k, k));
    if (dot3(k, N) < 0.0) s = -s; // N chooses the sense only
    const double angle = std::atan2(s, c);
    if (std::fabs(angle) <= kAngleTol) return 0.0;
    return angle < 0.0 ? angle + kTwoPi : angle;
}

void VEC3_make_trihedral(const double V[3], const double N[3], double P[3], double Q[3],
                         double T[3])
{
    const double k = dot3(V, N);
    const double t[3] = {k * N[0], k * N[1], k * N[2]};
    const double p[3] = {V[0] - t[0], V[1] - t[1], V[2] - t[2]};
    T[0] = t[0];
    T[1] = t[1];
    T[2] = t[2];
    P[0] = p[0];
    P[1] = p[1];
    P[2] = p[2];
    cross3(N, p, Q);
}
