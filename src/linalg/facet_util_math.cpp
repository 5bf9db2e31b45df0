// facet_util_math.cpp — the FACET_ routines: parametric lines (L0 + t.D),
// their intersection with planes N.x + d = 0, distances, projections, the
// undirected angle and plane-plane intersection. Nothing here reports; the
// degenerate cases fall back on fixed absolute thresholds (1e-5 for
// unitizing a segment, 1e-10 and 1e-6 for parallelism), and the parallel
// branches of the closest-point routine keep their historical formulas.
#define QX_SOURCE_FILE "facet_util_math"

#include <cmath>

#include <qxmath/facet.h>

#include "frame/check.h"
#include "linalg/vec_internal.h"

namespace
{

using qx::vec::cross3;
using qx::vec::dot3;

constexpr double kSegmentTol = 1e-5;    // unitizing B - A
constexpr double kParallelDot = 1e-10;  // |N.D| of a line parallel to a plane
constexpr double kParallelCross = 1e-6; // |D1 x D2| of parallel lines
constexpr double kNullDen = 1e-10;      // closest points: |a.b - c^2|
constexpr double kNullSq = 1e-6;        // closest points: a squared direction length
constexpr double kNormalTol = 1e-10;    // unitizing a plane normal
// The square of 1e-5 as the double product rounds it (1e-5 * 1e-5).
constexpr double kPlaneCross2 = 1.0000000000000002e-10;
constexpr double kApart = 1e-10; // distance of parallel planes

inline void sub3(const double *a, const double *b, double *w)
{
    w[0] = a[0] - b[0];
    w[1] = a[1] - b[1];
    w[2] = a[2] - b[2];
}

inline void add3(const double *a, const double *b, double *w)
{
    w[0] = a[0] + b[0];
    w[1] = a[1] + b[1];
    w[2] = a[2] + b[2];
}

inline void copy3(const double *a, double *w)
{
    w[0] = a[0];
    w[1] = a[1];
    w[2] = a[2];
}

inline double norm3(const double *v) { return std::sqrt(dot3(v, v)); }

// p := l0 + t.d, every input read first (p may be l0 or d).
inline void along(const double *l0, double t, const double *d, double *p)
{
    const double x = l0[0] + t * d[0], y = l0[1] + t * d[1], z = l0[2] + t * d[2];
    p[0] = x;
    p[1] = y;
    p[2] = z;
}

// The body of FACET_line_int_plane, called directly by the routines built on it.
int line_int_plane(const double *a, const double *b, const double *n, double d, double *p,
                   double *t)
{
    double dir[3];
    sub3(b, a, dir);
    const double s = dot3(n, dir);
    if (std::fabs(s) < kParallelDot) return 1;
    const double tt = -(dot3(n, a) + d) / s;
    *t = tt;
    along(a, tt, dir, p);
    return 0;
}

double line_point_dist(const double *a, const double *b, const double *p)
{
    double u[3], w[3], len;
    sub3(b, a, u);
    sub3(p, a, w);
    if (qx_vec3_unitize(u, kSegmentTol, &len, u) == 0) return norm3(w);
    cross3(u, w, u);
    return norm3(u);
}

void ask_point_on_plane(const double *n, double d, double *q)
{
    double u[3], len;
    qx_vec3_unitize(n, kNormalTol, &len, u); // a null N leaves u = 0
    q[0] = -d * u[0];
    q[1] = -d * u[1];
    q[2] = -d * u[2];
}

} // namespace

void FACET_points_to_param_line(const double A[3], const double B[3], int normalize, double L0[3],
                                double D[3])
{
    double dir[3];
    sub3(B, A, dir);
    if (normalize == 1) {
        double unit[3], len;
        // On failure VEC3_unitize zeroes its output: keep the raw difference.
        if (qx_vec3_unitize(dir, kSegmentTol, &len, unit) != 0) copy3(unit, dir);
    }
    copy3(A, L0);
    copy3(dir, D);
}

void FACET_point_on_param_line(const double L0[3], const double D[3], double t, double P[3])
{
    along(L0, t, D, P);
}

int FACET_line_int_plane(const double A[3], const double B[3], const double N[3], double d,
                         double P[3], double *t)
{
    return line_int_plane(A, B, N, d, P, t);
}

double FACET_point_plane_dist(const double P[3], const double N[3], double d)
{
    return dot3(N, P) + d;
}

int FACET_point_plane_proj(const double P[3], const double N[3], double d, double Q[3], double *t)
{
    double b[3];
    add3(P, N, b);
    return line_int_plane(P, b, N, d, Q, t);
}

double FACET_line_point_dist(const double A[3], const double B[3], const double P[3])
{
    return line_point_dist(A, B, P);
}

double FACET_line_line_dist(const double L1[3], const double D1[3], const double L2[3],
                            const double D2[3])
{
    double k[3];
    cross3(D1, D2, k);
    const double len = norm3(k);
    if (len < kParallelCross) {
        double b[3];
        add3(L2, D2, b);
        return line_point_dist(L2, b, L1);
    }
    double w[3];
    sub3(L2, L1, w);
    return dot3(w, k) / len;
}

void FACET_line_line_closest_point(const double L1[3], const double D1[3], const double L2[3],
                                   const double D2[3], double *t1, double *t2)
{
    double w12[3], w21[3];
    sub3(L1, L2, w12);
    sub3(L2, L1, w21);
    const double a = dot3(D2, D2), b = dot3(D1, D1), c = dot3(D1, D2);
    const double e = dot3(D2, w12), f = dot3(D1, w21);
    const double den = a * b - c * c;
    double s1, s2;
    if (std::fabs(den) > kNullDen) {
        s1 = (e * c + f * a) / den;
        s2 = (f * c + e * b) / den;
    } else if (a > kNullSq) {
        // Historical: e / (a.a), not e / a; exact for a unit D2 only.
        s1 = 0.0;
        s2 = e / (a * a);
    } else if (b <= kNullSq) {
        s1 = 0.0;
        s2 = 0.0;
    } else {
        // Historical: the dot products are added and divided by b.b; exact
        // only for a unit D1 and L1 at the origin.
        s1 = (dot3(D1, L2) + dot3(D1, L1)) / (b * b);
        s2 = 0.0;
    }
    *t1 = s1;
    *t2 = s2;
}

void FACET_point_line_proj(const double P[3], const double L0[3], const double D[3], int is_unit,
                           double Q[3], double *t)
{
    double w[3];
    sub3(P, L0, w);
    double tt = dot3(w, D);
    if (is_unit == 0) {
        const double dd = dot3(D, D);
        if (dd != 0.0) tt = tt / dd;
    }
    *t = tt;
    along(L0, tt, D, Q);
}

double FACET_compute_undirected_angle(const double A[3], const double B[3])
{
    double k[3];
    cross3(A, B, k);
    return std::atan2(norm3(k), dot3(A, B));
}

void FACET_ask_point_on_plane(const double N[3], double d, double Q[3])
{
    ask_point_on_plane(N, d, Q);
}

int FACET_plane_plane_int(const double N1[3], double d1, const double N2[3], double d2, double P[3],
                          double D[3])
{
    double q1[3], q2[3], dir[3];
    ask_point_on_plane(N1, d1, q1);
    ask_point_on_plane(N2, d2, q2);
    cross3(N1, N2, dir);
    int code;
    double p[3];
    int p_set = 0;
    if (dot3(dir, dir) > kPlaneCross2) {
        double e[3], b[3], t;
        cross3(dir, N1, e); // within plane 1, across the line
        add3(q1, e, b);
        p_set = line_int_plane(q1, b, N2, d2, p, &t) == 0;
        code = 2;
    } else {
        double w[3];
        sub3(q1, q2, w);
        code = std::fabs(dot3(N1, w)) >= kApart ? 1 : 0;
    }
    // Everything is read: P and D may overlap N1 or N2.
    copy3(dir, D);
    if (p_set) copy3(p, P);
    return code;
}
