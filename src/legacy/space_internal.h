// space_internal.h — the small kernels that several numbered routines of points and lines
// in space and of the matrix and frame layer share (hidden; not exported). Each reproduces
// one exported routine's arithmetic exactly, so a caller inside the library gets the same
// bits without going through the shared library's symbol table.
#ifndef QXMATH_LEGACY_SPACE_INTERNAL_H
#define QXMATH_LEGACY_SPACE_INTERNAL_H

#include <cmath>

#include "frame/session_block.h"
#include "legacy/qxmath_internal.h"
#include "linalg/vec_internal.h"

namespace qx_space
{

// k := a - b, component by component (k may be a or b).
inline void sub3(const double *a, const double *b, double *k)
{
    k[0] = a[0] - b[0];
    k[1] = a[1] - b[1];
    k[2] = a[2] - b[2];
}

// h300_: the squared distance of p and q, summed x, y, z.
inline double dist2(const double *p, const double *q)
{
    const double dx = p[0] - q[0], dy = p[1] - q[1], dz = p[2] - q[2];
    return dx * dx + dy * dy + dz * dz;
}

// vunt3_: w := unit(v) under the session's length tolerance, zeros on failure; the flag.
inline int unit(const double *v, double *w)
{
    double length;
    return qx_vec3_unitize(v, qx_tolerance(1), &length, w);
}

// vcru3_: w := unit(a x b), zeros and 0 for parallel or null inputs.
inline int unit_cross(const double *a, const double *b, double *w)
{
    double k[3];
    qx::vec::cross3(a, b, k);
    return unit(k, w);
}

// h310_: the distance of p from the line through a along u (any length; a null u gives 0).
inline double line_distance(const double *p, const double *a, const double *u)
{
    double e[3], d[3], k[3];
    unit(u, e);
    sub3(p, a, d);
    qx::vec::cross3(e, d, k);
    return std::sqrt(qx::vec::dot3(k, k));
}

// h315_: the distance between the lines p0 + s u0 and p1 + s u1.
inline double lines_distance(const double *p0, const double *u0, const double *p1, const double *u1)
{
    double c[3];
    if (unit_cross(u0, u1, c) == 0) return line_distance(p0, p1, u1);
    double w[3];
    sub3(p0, p1, w);
    return std::fabs(qx::vec::dot3(c, w));
}

// h318_ / h319_: the parameter of p's projection onto ab, ((p - a).(b - a)) / L^2 with L
// the length of b - a taken by a square root and squared again. Unguarded for a = b.
inline double segment_parameter(const double *p, const double *a, const double *b)
{
    double u[3], d[3];
    sub3(b, a, u);
    sub3(p, a, d);
    const double len = std::sqrt(qx::vec::dot3(u, u));
    return qx::vec::dot3(d, u) / (len * len);
}

// h019_: least-squares t of t[0] a + t[1] b ~ w with its fallbacks, every test under
// tol[1]. t is written once, at the end.
inline void least_squares_2(const double *a, const double *b, const double *w, double t[2])
{
    using qx_legacy::equal_under;
    double t0 = 0.0, t1 = 0.0;
    if (!equal_under(std::sqrt(qx::vec::dot3(w, w)), 0.0, 1)) {
        const double aa = qx::vec::dot3(a, a), bb = qx::vec::dot3(b, b);
        const double ab = qx::vec::dot3(a, b), aw = qx::vec::dot3(a, w);
        const double bw = qx::vec::dot3(b, w);
        const double den = aa * bb - ab * ab;
        if (!equal_under(den, 0.0, 1)) {
            t0 = (aw * bb - bw * ab) / den;
            t1 = (bw * aa - aw * ab) / den;
        } else if (!equal_under(aa, 0.0, 1)) {
            t0 = aw / aa;
        } else if (!equal_under(bb, 0.0, 1)) {
            t1 = bw / bb;
        }
    }
    t[0] = t0;
    t[1] = t1;
}

// h104_: q := m p with the perspective divide; q must not overlap p or m.
inline void transform_point(const double *p, const double *m, double *q)
{
    const double x = p[0], y = p[1], z = p[2];
    const double h = m[12] * x + m[13] * y + m[14] * z + m[15];
    for (int r = 0; r < 3; ++r)
        q[r] = (m[4 * r] * x + m[4 * r + 1] * y + m[4 * r + 2] * z + m[4 * r + 3]) / h;
}

// h121_: c := b a for 4x4 matrices, one accumulator per element, k = 0 .. 3 in order.
inline void product_4(const double *a, const double *b, double *c)
{
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) {
            double s = b[4 * i] * a[j];
            for (int k = 1; k < 4; ++k) s += b[4 * i + k] * a[4 * k + j];
            c[4 * i + j] = s;
        }
}

// h122_ / h150_: c := b a^T for 3x3 matrices (c[i][j] = row i of b . row j of a), one
// accumulator per element, k = 0, 1, 2 in order.
inline void product_bat(const double *a, const double *b, double *c)
{
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) {
            double s = b[3 * i] * a[3 * j];
            s += b[3 * i + 1] * a[3 * j + 1];
            s += b[3 * i + 2] * a[3 * j + 2];
            c[3 * i + j] = s;
        }
}

// h130_: m := a widened to 4x4 (a upper left, zeros in row and column 3, 1.0 at [3][3]).
inline void widen(const double *a, double *m)
{
    for (int r = 0; r < 3; ++r) {
        m[4 * r] = a[3 * r];
        m[4 * r + 1] = a[3 * r + 1];
        m[4 * r + 2] = a[3 * r + 2];
        m[4 * r + 3] = 0.0;
    }
    m[12] = m[13] = m[14] = 0.0;
    m[15] = 1.0;
}

// h105_: w[c] := sum over r of m[r][c] v[r], r = 0, 1, 2 in order; w may be v.
inline void from_frame(const double *v, const double *m, double *w)
{
    const double x = v[0], y = v[1], z = v[2];
    const double w0 = m[0] * x + m[3] * y + m[6] * z;
    const double w1 = m[1] * x + m[4] * y + m[7] * z;
    const double w2 = m[2] * x + m[5] * y + m[8] * z;
    w[0] = w0;
    w[1] = w1;
    w[2] = w2;
}

} // namespace qx_space

#endif
