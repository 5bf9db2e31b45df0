// mc_math.cpp — the MC_ routines: arithmetic, predicates, projections and
// distances on 3-vectors, lines (unit direction, point) and planes
// (unit normal n, d with n.x = d), the 3x3 Cramer solve, and (at the end)
// 4x4 transforms applied to points and vectors or built between two
// coordinate-system records. No argument checks; the tolerances are fixed
// absolute constants. A null vector or a singular system prints a line on
// standard output and is raised (code 17); if the host returns, the
// arithmetic goes on with the small divisor.
//
// Exported routines call each other through the static helpers below, not
// through their exported (interposable) names, so that they inline.
#define QX_SOURCE_FILE "mc_math"

#include <cmath>
#include <cstdio>

#include <qxmath/frame.h>
#include <qxmath/transform.h>
#include <qxmath/vector.h>

#include "frame/check.h"
#include "linalg/vec_internal.h"

namespace
{

using qx::vec::cross3;
using qx::vec::dot3;

constexpr double kNullLength = 0.0001;                   // MC_v_unit, strict
constexpr double kParallelSine2 = 1.7453292519943296e-5; // 1/1000 degree, against sin^2
constexpr double kPerpCosine = 0.0001;                   // MC_q_perp, strict
constexpr double kAngleCosine = 0.9999999;               // MC_get_angle snapping
constexpr double kPi = 3.141592653589793;
constexpr double kOnLine2 = 1e-8; // squared distances: on line, parallel lines
constexpr double kSingular = 1e-8;

// The stdout line comes first and is flushed, so that it precedes anything
// the host prints while it handles (or unwinds from) the raise.
[[gnu::cold, gnu::noinline]] void report_null_vector()
{
    std::fputs("\nERROR: zero vector in unitize\n", stdout);
    std::fflush(stdout);
    QX_RAISE(QX_ERR_VECTOR, "tried to unitize null vector");
}

[[gnu::cold, gnu::noinline]] void report_singular()
{
    std::fputs("\nERROR: zero determinant in 3 by 3 system\n", stdout);
    std::fflush(stdout);
    QX_RAISE(QX_ERR_VECTOR, "zero determinant in linear system");
}

inline void unit_in_place(double *a)
{
    const double len = std::sqrt(dot3(a, a));
    if (len < kNullLength) report_null_vector();
    a[0] /= len;
    a[1] /= len;
    a[2] /= len;
}

// Foot of P on the line (U, Q): ((P.U) - (Q.U)).U + Q.
inline void foot_on_line(const double *p, const double *u, const double *q, double *r)
{
    const double t = dot3(p, u) - dot3(q, u);
    const double x = t * u[0] + q[0], y = t * u[1] + q[1], z = t * u[2] + q[2];
    r[0] = x;
    r[1] = y;
    r[2] = z;
}

inline double dist2(const double *a, const double *b)
{
    const double d[3] = {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
    return dot3(d, d);
}

inline int parallel(const double *a, const double *b)
{
    double k[3];
    cross3(a, b, k);
    return dot3(k, k) < kParallelSine2 ? 1 : 0;
}

inline int perpendicular(const double *a, const double *b)
{
    return std::fabs(dot3(a, b)) < kPerpCosine ? 1 : 0;
}

// Sarrus on the nine coefficients, in the system's fixed order of terms.
inline double sarrus(double m00, double m01, double m02, double m10, double m11, double m12,
                     double m20, double m21, double m22)
{
    return m00 * m11 * m22 + m10 * m21 * m02 + m20 * m01 * m12 - m20 * m11 * m02 - m00 * m21 * m12 -
           m10 * m01 * m22;
}

// Cramer's rule. Each numerator is the determinant with one column
// exchanged for the right-hand sides; forming it from the coefficients
// gives the bits of swapping the columns of M and back, and M is never
// written.
inline void solve3(const double *m, double *x)
{
    const double a00 = m[0], a01 = m[1], a02 = m[2], b0 = m[3];
    const double a10 = m[4], a11 = m[5], a12 = m[6], b1 = m[7];
    const double a20 = m[8], a21 = m[9], a22 = m[10], b2 = m[11];
    const double det = sarrus(a00, a01, a02, a10, a11, a12, a20, a21, a22);
    if (std::fabs(det) < kSingular) report_singular();
    const double u = sarrus(b0, a01, a02, b1, a11, a12, b2, a21, a22) / det;
    const double v = sarrus(a00, b0, a02, a10, b1, a12, a20, b2, a22) / det;
    const double w = sarrus(a00, a01, b0, a10, a11, b1, a20, a21, b2) / det;
    x[0] = u;
    x[1] = v;
    x[2] = w;
}

} // namespace

void MC_v_copy(const double A[3], double K[3])
{
    K[0] = A[0];
    K[1] = A[1];
    K[2] = A[2];
}

void MC_AmB(const double A[3], const double B[3], double K[3])
{
    K[0] = A[0] - B[0];
    K[1] = A[1] - B[1];
    K[2] = A[2] - B[2];
}

void MC_ApB(const double A[3], const double B[3], double K[3])
{
    K[0] = A[0] + B[0];
    K[1] = A[1] + B[1];
    K[2] = A[2] + B[2];
}

void MC_aA(double a, const double A[3], double K[3])
{
    K[0] = a * A[0];
    K[1] = a * A[1];
    K[2] = a * A[2];
}

void MC_aApB(double a, const double A[3], const double B[3], double K[3])
{
    K[0] = a * A[0] + B[0];
    K[1] = a * A[1] + B[1];
    K[2] = a * A[2] + B[2];
}

void MC_AxB(const double A[3], const double B[3], double K[3]) { cross3(A, B, K); }

double MC_A_dot_B(const double A[3], const double B[3]) { return dot3(A, B); }

double MC_length(const double A[3]) { return std::sqrt(dot3(A, A)); }

double MC_length2(const double A[3]) { return dot3(A, A); }

double MC_dist(const double A[3], const double B[3]) { return std::sqrt(dist2(A, B)); }

double MC_dist2(const double A[3], const double B[3]) { return dist2(A, B); }

double MC_triple_product(const double A[3], const double B[3], const double K[3])
{
    double c[3];
    cross3(A, B, c);
    return dot3(c, K);
}

double MC_determinant(const double M[12])
{
    return sarrus(M[0], M[1], M[2], M[4], M[5], M[6], M[8], M[9], M[10]);
}

void MC_v_unit(double A[3]) { unit_in_place(A); }

int MC_q_parallel(const double A[3], const double B[3]) { return parallel(A, B); }

int MC_q_perp(const double A[3], const double B[3]) { return perpendicular(A, B); }

double MC_get_angle(const double A[3], const double B[3])
{
    const double c = dot3(A, B);
    if (c > kAngleCosine) return 0.0;
    if (c < -kAngleCosine) return kPi;
    return std::acos(c);
}

void MC_perp_vec(const double A[3], double K[3])
{
    // For a unit A the divisor chosen exceeds 0.5 in magnitude (A[2] is at
    // least 1/sqrt(2) when neither other component exceeds 0.5).
    double k[3]; // A is read whole before K is written: K may be A
    if (std::fabs(A[0]) > 0.5) {
        k[0] = -A[1] / A[0];
        k[1] = 1.0;
        k[2] = 0.0;
    } else if (std::fabs(A[1]) <= 0.5) {
        k[0] = 1.0;
        k[1] = 0.0;
        k[2] = -A[0] / A[2];
    } else {
        k[0] = 1.0;
        k[1] = -A[0] / A[1];
        k[2] = 0.0;
    }
    K[0] = k[0];
    K[1] = k[1];
    K[2] = k[2];
    unit_in_place(K);
}

void MC_proj_point_onto_line(const double P[3], const double U[3], const double Q[3], double R[3])
{
    foot_on_line(P, U, Q, R);
}

void MC_perp_from_line_to_point(const double P[3], const double U[3], const double Q[3],
                                double K[3])
{
    double r[3];
    foot_on_line(P, U, Q, r);
    K[0] = P[0] - r[0];
    K[1] = P[1] - r[1];
    K[2] = P[2] - r[2];
    unit_in_place(K);
}

int MC_q_point_on_line(const double P[3], const double U[3], const double Q[3])
{
    double r[3];
    foot_on_line(P, U, Q, r);
    return dist2(P, r) <= kOnLine2 ? 1 : 0;
}

void MC_proj_point_onto_plane(const double P[3], const double n[3], double d, double R[3])
{
    const double t = -(dot3(P, n) - d);
    const double x = t * n[0] + P[0], y = t * n[1] + P[1], z = t * n[2] + P[2];
    R[0] = x;
    R[1] = y;
    R[2] = z;
}

double MC_dist_lines(const double U1[3], const double P1[3], const double U2[3], const double P2[3])
{
    const double d[3] = {P1[0] - P2[0], P1[1] - P2[1], P1[2] - P2[2]};
    double k[3];
    cross3(U1, U2, k);
    if (dot3(k, k) >= kOnLine2) { // skew or intersecting: along the common normal
        unit_in_place(k);
        return std::fabs(dot3(k, d));
    }
    // Parallel: along the normal of line 1 in the plane of both lines.
    if (dot3(d, d) < kOnLine2) return 0.0;
    double e[3];
    cross3(d, U1, e);
    if (dot3(e, e) < kOnLine2) return 0.0; // P2 lies on line 1
    double f[3];
    cross3(U1, e, f);
    unit_in_place(f);
    return std::fabs(dot3(d, f));
}

double MC_signed_dist_planes(const double nA[3], double dA, const double nB[3], double dB)
{
    if (!parallel(nA, nB)) return 0.0;
    return (dot3(nA, nB) <= 0.0 ? -dB : dB) - dA;
}

double MC_signed_dist_plane_axis(const double n[3], double d, const double U[3], const double P[3])
{
    return perpendicular(n, U) ? dot3(n, P) - d : 0.0;
}

void MC_solve_3(double M[12], double X[3]) { solve3(M, X); }

void MC_axis_plane_x(const double U[3], const double P[3], const double n[3], double d, double X[3])
{
    // Two planes through the axis: each leaves out one coordinate, and
    // both keep the dominant component of U as a coefficient.
    const double yz[4] = {0.0, U[2], -U[1], U[2] * P[1] - U[1] * P[2]};
    const double zx[4] = {-U[2], 0.0, U[0], U[0] * P[2] - U[2] * P[0]};
    const double xy[4] = {U[1], -U[0], 0.0, U[1] * P[0] - U[0] * P[1]};

    int k = std::fabs(U[0]) >= std::fabs(U[1]) ? 0 : 1;
    if (std::fabs(U[k]) < std::fabs(U[2])) k = 2;
    const double *row2 = k == 0 ? zx : yz;
    const double *row3 = k == 2 ? zx : xy;

    const double m[12] = {n[0],    n[1],    n[2],    d,       row2[0], row2[1],
                          row2[2], row2[3], row3[0], row3[1], row3[2], row3[3]};
    solve3(m, X);
}

// ---- transforms and coordinate-system records ---------------------------------
// Transforms are sixteen doubles by rows (translation at 3, 7, 11); records
// are an origin followed by an orientation matrix (transform.h).

void MC_apply_transform_to_point(const double T[16], const double p[3], double q[3])
{
    const double r0 = dot3(T, p) + T[3];
    const double r1 = dot3(T + 4, p) + T[7];
    const double r2 = dot3(T + 8, p) + T[11];
    q[0] = r0;
    q[1] = r1;
    q[2] = r2;
}

void MC_apply_transform_to_vector(const double T[16], const double v[3], double w[3])
{
    const double r0 = dot3(T, v);
    const double r1 = dot3(T + 4, v);
    const double r2 = dot3(T + 8, v);
    w[0] = r0;
    w[1] = r1;
    w[2] = r2;
}

int MC_calc_csys_to_csys_transform(const double S1[12], const double S2[12], double T[16])
{
    const double *o1 = S1, *r1 = S1 + 3, *o2 = S2, *r2 = S2 + 3;
    double t[16];
    for (int i = 0; i < 3; ++i) {
        for (int j = 0; j < 3; ++j)
            t[4 * i + j] = r2[i] * r1[j] + r2[3 + i] * r1[3 + j] + r2[6 + i] * r1[6 + j];
        t[4 * i + 3] = o2[i] - dot3(t + 4 * i, o1);
    }
    t[12] = t[13] = t[14] = 0.0;
    t[15] = 1.0;
    for (int i = 0; i < 16; ++i) T[i] = t[i];
    return 0;
}
