// bc_pole.cpp — comparison, distance, translation, projection and averaging
// of the weighted poles (w.x, w.y, w.z, w) of rational B-curves. The 3-D
// point of a pole is formed by division everywhere except in equal_in_3d,
// which multiplies by the reciprocal weight; the two can differ in the last
// bit and callers see the difference, so both are kept. Nothing is checked
// or reported; zero weights are not tested for.
#define QX_SOURCE_FILE "bc_pole"

#include <cmath>

#include <qxmath/numbered.h>
#include <qxmath/pole.h>

#include "frame/check.h"
#include "frame/session_block.h"
#include "linalg/vec_internal.h"

namespace
{

using qx::vec::dot3;

constexpr double kWeightTol = 1e-10; // equal_in_4d: absolute weight difference
constexpr double kMeanTol = 1e-10;   // identical_poles: per-pole deviation scale

// The 3-D point of pole P, by division.
inline void point_of(const double *P, double p[3])
{
    const double w = P[3];
    p[0] = P[0] / w;
    p[1] = P[1] / w;
    p[2] = P[2] / w;
}

} // namespace

int bc_POLE_equal_in_3d(const double P[4], const double Q[4])
{
    const double rp = 1.0 / P[3], rq = 1.0 / Q[3];
    const double D[3] = {rp * P[0] - rq * Q[0], rp * P[1] - rq * Q[1], rp * P[2] - rq * Q[2]};
    return qx_tolerance(2) >= dot3(D, D) ? 1 : 0;
}

int bc_POLE_equal_in_4d(const double P[4], const double Q[4])
{
    if (std::fabs(P[3] - Q[3]) > kWeightTol) return 0;
    return bc_POLE_equal_in_3d(P, Q);
}

double bc_POLE_3d_distance(const double P[4], const double Q[4], double V[3])
{
    double p[3], q[3];
    point_of(P, p);
    point_of(Q, q);
    const double v[3] = {p[0] - q[0], p[1] - q[1], p[2] - q[2]};
    V[0] = v[0];
    V[1] = v[1];
    V[2] = v[2];
    return std::sqrt(dot3(v, v));
}

void bc_POLE_translate_pole(const double P[4], const double T[3], double R[4])
{
    double p[3];
    point_of(P, p);
    const double w = P[3];
    const double x = w * (p[0] + T[0]), y = w * (p[1] + T[1]), z = w * (p[2] + T[2]);
    R[0] = x;
    R[1] = y;
    R[2] = z;
    R[3] = w;
}

void bc_POLE_project_to_line(const double P[4], const double L1[4], const double L2[4], double R[4])
{
    double a[3], b[3], c[3], f[3];
    point_of(P, a);
    point_of(L1, b);
    point_of(L2, c);
    const double w = P[3];
    (void)h430_(b, c, a, f);
    R[0] = w * f[0];
    R[1] = w * f[1];
    R[2] = w * f[2];
    R[3] = w;
}

void bc_POLE_average_in_3d(const double *poles, int n, double A[3])
{
    double s[3] = {0.0, 0.0, 0.0};
    for (int i = 0; i < n; ++i) {
        double p[3];
        point_of(poles + 4 * i, p);
        s[0] = s[0] + p[0];
        s[1] = s[1] + p[1];
        s[2] = s[2] + p[2];
    }
    // Unguarded on purpose: n = 0 gives 0 x inf.
    const double r = 1.0 / static_cast<double>(n);
    A[0] = s[0] * r;
    A[1] = s[1] * r;
    A[2] = s[2] * r;
}

int bc_POLE_identical_poles_in_3d(const double *poles, int n)
{
    // For n <= -2, ceil(n/2) would index before the array; compare pole 0
    // with itself as n = 0 and -1 do.
    int m = static_cast<int>(std::ceil(static_cast<double>(n) * 0.5));
    if (m < 0) m = 0;
    if (!bc_POLE_equal_in_3d(poles, poles + 4 * m)) return 0;
    double A[3];
    bc_POLE_average_in_3d(poles, n, A);
    if (n < 1) return 1;
    const double e = static_cast<double>(n - 1) * kMeanTol / static_cast<double>(n);
    const double tol = e * e;
    for (int i = 0; i < n; ++i) {
        double p[3];
        point_of(poles + 4 * i, p);
        const double d[3] = {p[0] - A[0], p[1] - A[1], p[2] - A[2]};
        if (dot3(d, d) > tol) return 0;
    }
    return 1;
}
