// qxmath.cpp — the core primitives of the numbered routines: tolerant
// comparison and interval classification, angles and their reduction, 2-D and
// 3-D distances, a frame product, transpose, axis rotation and frame from a
// normal, the quadratic and 3x3 Cramer solvers and two complex operations.
// Every argument is by address; nothing here raises or prints. The bodies the
// other numbered routines share (comparisons, period reduction, complex
// product, the angle constants) live in qxmath_internal.h; h014_ and h018_
// are wrappers of their hidden twins qx_h014 and qx_h018.
#define QX_SOURCE_FILE "qxmath"
#include "frame/check.h"

#include <cmath>

#include <qxmath/numbered.h>

#include "legacy/qxmath_internal.h"
#include "linalg/vec_internal.h"

using namespace qx_legacy;

namespace
{

// a . (b x c) expanded by the cofactors of a, in the order h004_ fixes.
inline double triple(const double *a, const double *b, const double *c)
{
    return a[0] * (b[1] * c[2] - b[2] * c[1]) - a[1] * (b[0] * c[2] - b[2] * c[0]) +
           a[2] * (b[0] * c[1] - c[0] * b[1]);
}

// The angle in [0, 2pi) of (c, s): s within t of 0 gives 0 or pi, else c within t of 0
// pi/2 or 3pi/2, else atan(s/c) moved into the quadrant (h053_ under the number tolerance,
// h018_ with exact tests).
inline double quadrant_angle(double s, double c, double t)
{
    if (std::fabs(s) <= t) return c < 0.0 ? kPi : 0.0;
    if (std::fabs(c) <= t) return s < 0.0 ? kThreeHalfPi : kHalfPi;
    const double a = std::atan(s / c);
    if (c > 0.0 && s < 0.0) return a + kTwoPi;
    if (c < 0.0) return a + kPi;
    return a;
}

} // namespace

/* ---- comparison and classification ------------------------------------- */

void h805_(const double *a, const double *b, const int *i, int *eq)
{
    *eq = equal_under(*a, *b, *i) ? 1 : 0;
}

void h806_(const double *a, const double *b, const double *t, int *eq)
{
    *eq = std::fabs(*a - *b) <= std::fabs(*t) ? 1 : 0;
}

void h804_(double *x, const double lim[2], const int *i, int *code)
{
    *code = classify(x, lim, *i);
}

void h809_(double *x, const double lim[2], const int *i, int *inside)
{
    *inside = snap_into(x, lim, *i);
}

void h000_(double *x)
{
    const double t = qx_tolerance(0);
    if (std::fabs(*x) <= t) *x = *x >= 0.0 ? t : -t;
}

void h206_(const double *p, const double *q, const double *t, int *eq)
{
    const double dx = p[0] - q[0], dy = p[1] - q[1];
    *eq = dx * dx + dy * dy <= std::fabs(*t) ? 1 : 0;
}

/* ---- angles --------------------------------------------------------------- */

void h053_(const double *s, const double *c, double *ang)
{
    *ang = quadrant_angle(*s, *c, std::fabs(tolerance_entry(0)));
}

void h002_(double *x, const double *p) { *x = reduced(*x, *p); }

void h013_(const double p[3], const double *r, const double *ang, double q[3])
{
    const double rv = *r, a = *ang;
    const double x = p[0] + rv * std::cos(a);
    const double y = p[1] + rv * std::sin(a);
    const double z = p[2];
    q[0] = x;
    q[1] = y;
    q[2] = z;
}

/* ---- vectors and matrices ------------------------------------------------- */

void h100_(const double v[3], const double m[9], double w[3]) { qx_legacy::to_frame(v, m, w); }

void h110_(const double m[9], double t[9])
{
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) t[3 * r + c] = m[3 * c + r];
}

void h200_(const double *p, const double *q, double *d2)
{
    const double dx = p[0] - q[0], dy = p[1] - q[1];
    *d2 = dx * dx + dy * dy;
}

void h301_(const double p[3], const double q[3], double *d)
{
    const double dx = p[0] - q[0], dy = p[1] - q[1], dz = p[2] - q[2];
    *d = std::sqrt(dx * dx + dy * dy + dz * dz);
}

void h003_(const double *a, const double *b, double *z) { *z = a[0] * b[1] - a[1] * b[0]; }

void h004_(const double a[3], const double b[3], const double c[3], double *t)
{
    *t = triple(a, b, c);
}

void h923_(const double u[3], const double *theta, double m[9])
{
    const double ux = u[0], uy = u[1], uz = u[2];
    const double c = std::cos(*theta), s = std::sin(*theta);
    const double k = 1.0 - c;
    m[0] = ux * ux * k + c;
    m[1] = ux * uy * k - uz * s;
    m[2] = ux * uz * k + uy * s;
    m[3] = ux * uy * k + uz * s;
    m[4] = uy * uy * k + c;
    m[5] = uy * uz * k - ux * s;
    m[6] = ux * uz * k - uy * s;
    m[7] = uy * uz * k + ux * s;
    m[8] = uz * uz * k + c;
}

void h099_(const double n[3], double m[9])
{
    const double z[3] = {n[0], n[1], n[2]};
    double x[3];
    if (std::fabs(z[1]) > 0.9) {
        x[0] = 0.0;
        x[1] = z[2];
        x[2] = -z[1];
    } else {
        x[0] = z[2];
        x[1] = 0.0;
        x[2] = -z[0];
    }
    double length;
    (void)qx_vec3_unitize(x, qx_tolerance(1), &length, x);
    double y[3];
    qx::vec::cross3(z, x, y);
    for (int k = 0; k < 3; ++k) {
        m[k] = x[k];
        m[3 + k] = y[k];
        m[6 + k] = z[k];
    }
}

/* ---- equations and complex numbers --------------------------------------- */

void h014_(const double c[3], double re[2], double im[2], int *kind, int *degree, int *nreal)
{
    qx_h014(c, re, im, kind, degree, nreal);
}

void qx_h014(const double c[3], double re[2], double im[2], int *kind, int *degree, int *nreal)
{
    double c0 = c[0], c1 = c[1], c2 = c[2];
    const double eps = qx_tolerance(0);
    re[0] = re[1] = im[0] = im[1] = 0.0;
    *kind = 1;
    *degree = 0;
    *nreal = 0;

    // hypot: the norm of large coefficients must not overflow to infinity.
    const double n = std::hypot(c0, c1, c2);
    if (n <= eps) {
        *kind = 4;
        return;
    }
    c0 /= n;
    c1 /= n;
    c2 /= n;

    if (std::fabs(c2) <= eps) {
        if (std::fabs(c1) > eps) {
            re[0] = -c0 / c1;
            *kind = 3;
            *degree = 1;
            *nreal = 1;
        } else if (std::fabs(c0) <= eps) {
            *kind = 4;
        }
        return;
    }

    *degree = 2;
    const double disc = std::fabs(c1) <= eps ? -4.0 * c0 * c2 : c1 * c1 - 4.0 * c0 * c2;
    const double q = std::fabs(disc) > eps ? std::sqrt(std::fabs(disc)) : 0.0;
    if (disc <= -eps) {
        *kind = 2;
        re[0] = re[1] = -c1 / (2.0 * c2);
        im[0] = q / (2.0 * c2);
        im[1] = -im[0];
    } else {
        *kind = 3;
        *nreal = 2;
        re[0] = (q - c1) / (2.0 * c2);
        re[1] = (-c1 - q) / (2.0 * c2);
    }
}

void h015_(const double a[3], const double b[3], const double c[3], const double d[3], double x[3],
           int *status)
{
    const double det = triple(a, b, c);
    if (std::fabs(det) <= qx_tolerance(0)) {
        *status = 2;
        return;
    }
    const double x0 = triple(d, b, c) / det;
    const double x1 = triple(a, d, c) / det;
    const double x2 = triple(a, b, d) / det;
    x[0] = x0;
    x[1] = x1;
    x[2] = x2;
    *status = 1;
}

void h017_(const double a[2], const double b[2], double c[2]) { cmul(a, b, c); }

void h018_(const double z[2], const int *n, double w[2]) { qx_h018(z, *n, w); }

void qx_h018(const double z[2], int n, double w[2])
{
    const double x = z[0], y = z[1];
    const double r = std::hypot(x, y);            // the modulus of a tiny z must not underflow
    const double phi = quadrant_angle(y, x, 0.0); // exact zero tests
    const double dn = static_cast<double>(n);
    const double rn = std::pow(r, 1.0 / dn);
    w[0] = rn * std::cos(phi / dn);
    w[1] = rn * std::sin(phi / dn);
}
