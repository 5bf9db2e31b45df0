// h016_ — roots of real polynomials up to degree 4. The coefficients are divided by their
// norm and vanishing leading ones dropped (as h014_ does); degree 2 and below is h014_'s
// answer, degree 3 Cardano's formulas (cube roots by h018_, products by h017_), degree 4
// Ferrari's resolvent cubic and two quadratics by h014_. Every root is then refined by
// Newton steps on the normalised polynomial, a step kept only when it lowers |p(root)|.
#define QX_SOURCE_FILE "h016_"
#include "frame/check.h"

#include <cfloat>
#include <cmath>
#include <complex>
#include <utility>

#include <qxmath/numbered.h>

#include "legacy/qxmath_internal.h"

namespace
{

using cplx = std::complex<double>;

constexpr double kSqrt3Half = 0.8660254037844386;

double ipow(double a, int n) { return F2C_pow_di(&a, &n); }

double real_cbrt(double a)
{
    static const double third = 1.0 / 3.0;
    const double m = std::fabs(a);
    const double r = F2C_pow_dd(&m, &third);
    return a < 0.0 ? -r : r;
}

// The magnitude of the roots of the monic x^n + a[n-1] x^(n-1) + ... + a[0]: the largest
// |a[n-k]|^(1/k).
double root_scale(const double *a, int n)
{
    double scale = 0.0;
    for (int k = 1; k <= n; ++k) {
        const double m = std::fabs(a[n - k]), e = 1.0 / k;
        const double v = F2C_pow_dd(&m, &e);
        if (v > scale) scale = v;
    }
    return scale;
}

// A coefficient of the shifted polynomial that is rounding noise of the shift (below a
// few ulps of scale^power) is exactly 0: multiple roots then come out multiple.
double denoise(double v, double scale, int power)
{
    return std::fabs(v) <= 32.0 * DBL_EPSILON * ipow(scale, power) ? 0.0 : v;
}

// The three roots of the monic cubic x^3 + a x^2 + b x + c, into re/im; the return value is
// the number of real roots (1 or 3; 3 also counts a multiple root).
int cardano(double a, double b, double c, double tol, double re[3], double im[3])
{
    const double coef[3] = {c, b, a};
    const double scale = root_scale(coef, 3);
    const double shift = a / 3.0;
    const double p = denoise(b - ipow(a, 2) / 3.0, scale, 2);
    const double q = denoise(2.0 * ipow(a, 3) / 27.0 - a * b / 3.0 + c, scale, 3);
    const double h = ipow(q / 2.0, 2), g = ipow(p / 3.0, 3);
    const double disc = h + g;
    for (int i = 0; i < 3; ++i) im[i] = 0.0;

    if (std::fabs(disc) <= tol * (h + std::fabs(g))) {
        // A multiple root: t = 2u and -u twice (all three 0 when p and q vanish).
        const double u = real_cbrt(-q / 2.0);
        re[0] = 2.0 * u - shift;
        re[1] = re[2] = -u - shift;
        return 3;
    }
    if (disc > 0.0) {
        // One real root; u^3 is taken on the side that avoids cancellation.
        const double w = std::sqrt(disc);
        const double u = real_cbrt(-q / 2.0 + (q > 0.0 ? -w : w));
        const double v = -p / (3.0 * u);
        re[0] = u + v - shift;
        re[1] = re[2] = -(u + v) / 2.0 - shift;
        im[1] = kSqrt3Half * std::fabs(u - v);
        im[2] = -im[1];
        return 1;
    }
    // Three real roots: u is a complex cube root, v its conjugate, t_k = 2 Re(w^k u).
    const double z[2] = {-q / 2.0, std::sqrt(-disc)};
    double u[2] = {0.0, 0.0};
    qx_h018(z, 3, u);
    const double omega[2] = {-0.5, kSqrt3Half};
    double rot[2] = {u[0], u[1]};
    for (int k = 0; k < 3; ++k) {
        re[k] = 2.0 * rot[0] - shift;
        qx_legacy::cmul(rot, omega, rot);
    }
    return 3;
}

// The roots of y^2 + b y + c by h014_, on the variable scaled so that no coefficient
// vanishes against the leading 1.
void quadratic(double b, double c, double re[2], double im[2])
{
    double scale = std::fabs(b);
    const double rc = std::sqrt(std::fabs(c));
    if (rc > scale) scale = rc;
    if (!(scale > 0.0)) scale = 1.0;
    const double k[3] = {c / (scale * scale), b / scale, 1.0};
    int kind = 0, degree = 0, nreal = 0;
    qx_h014(k, re, im, &kind, &degree, &nreal);
    for (int i = 0; i < 2; ++i) {
        re[i] *= scale;
        im[i] *= scale;
    }
}

// The roots of the monic quartic x^4 + a x^3 + b x^2 + c x + d.
void ferrari(double a, double b, double c, double d, double tol, double re[4], double im[4])
{
    const double coef[4] = {d, c, b, a};
    const double size = root_scale(coef, 4);
    const double shift = a / 4.0;
    const double p = denoise(b - 3.0 * ipow(a, 2) / 8.0, size, 2);
    const double q = denoise(c - a * b / 2.0 + ipow(a, 3) / 8.0, size, 3);
    const double r =
        denoise(d - a * c / 4.0 + ipow(a, 2) * b / 16.0 - 3.0 * ipow(a, 4) / 256.0, size, 4);
    // y scales as L: p as L^2, q as L^3, r as L^4.
    static const double quarter = 0.25;
    const double ar = std::fabs(r);
    double scale = std::sqrt(std::fabs(p));
    const double lr = F2C_pow_dd(&ar, &quarter);
    const double lq = real_cbrt(std::fabs(q));
    if (lr > scale) scale = lr;
    if (lq > scale) scale = lq;

    double m = 0.0;
    if (std::fabs(q) > tol * ipow(scale, 3)) {
        // (y^2 + p/2 + m)^2 = 2m (y - q/(4m))^2 for the largest root m of the resolvent.
        double mr[3], mi[3];
        const int nr = cardano(p, ipow(p, 2) / 4.0 - r, -ipow(q, 2) / 8.0, tol, mr, mi);
        m = mr[0];
        for (int i = 1; i < nr; ++i)
            if (mr[i] > m) m = mr[i];
    }
    if (m > 0.0) {
        const double s = std::sqrt(2.0 * m);
        quadratic(-s, p / 2.0 + m + q / (2.0 * s), re, im);
        quadratic(s, p / 2.0 + m - q / (2.0 * s), re + 2, im + 2);
    } else {
        // Biquadratic: y^2 = z for the roots z of z^2 + p z + r.
        double zr[2], zi[2];
        quadratic(p, r, zr, zi);
        for (int i = 0; i < 2; ++i) {
            const double z[2] = {zr[i], zi[i]};
            double w[2] = {0.0, 0.0};
            qx_h018(z, 2, w);
            if (zi[i] == 0.0 && zr[i] >= 0.0) w[1] = 0.0; // real square roots stay real
            re[2 * i] = w[0];
            im[2 * i] = w[1];
            re[2 * i + 1] = -w[0];
            im[2 * i + 1] = w[1] == 0.0 ? 0.0 : -w[1];
        }
    }
    for (int i = 0; i < 4; ++i) re[i] -= shift;
}

cplx eval(const double *c, int degree, cplx x, cplx *derivative)
{
    cplx v = c[degree], dv = 0.0;
    for (int i = degree - 1; i >= 0; --i) {
        dv = dv * x + v;
        v = v * x + c[i];
    }
    *derivative = dv;
    return v;
}

// Newton steps from x while they lower |p(x)|.
cplx refine(const double *c, int degree, cplx x)
{
    cplx d;
    double best = std::abs(eval(c, degree, x, &d));
    for (int it = 0; it < 8 && best > 0.0 && d != 0.0; ++it) {
        const cplx y = x - eval(c, degree, x, &d) / d;
        cplx dy;
        const double f = std::abs(eval(c, degree, y, &dy));
        if (!(f < best)) break;
        x = y;
        best = f;
        d = dy;
    }
    return x;
}

// Real roots ascending, then the conjugate pairs by real part (and |im|), im > 0 first.
int order_roots(double *re, double *im, int n)
{
    double rr[4], pr[4], pi[4];
    int nr = 0, np = 0;
    for (int i = 0; i < n; ++i) {
        if (im[i] == 0.0)
            rr[nr++] = re[i];
        else if (im[i] > 0.0) {
            pr[np] = re[i];
            pi[np++] = im[i];
        }
    }
    for (int i = 1; i < nr; ++i)
        for (int j = i; j > 0 && rr[j] < rr[j - 1]; --j) std::swap(rr[j], rr[j - 1]);
    for (int i = 1; i < np; ++i)
        for (int j = i; j > 0 && (pr[j] < pr[j - 1] || (pr[j] == pr[j - 1] && pi[j] < pi[j - 1]));
             --j) {
            std::swap(pr[j], pr[j - 1]);
            std::swap(pi[j], pi[j - 1]);
        }
    for (int i = 0; i < nr; ++i) {
        re[i] = rr[i];
        im[i] = 0.0;
    }
    for (int i = 0; i < np; ++i) {
        re[nr + 2 * i] = re[nr + 2 * i + 1] = pr[i];
        im[nr + 2 * i] = pi[i];
        im[nr + 2 * i + 1] = -pi[i];
    }
    return nr;
}

} // namespace

void h016_(const int *n, const double *c, double *re, double *im, int *kind, int *degree,
           int *nreal)
{
    *degree = 0;
    *nreal = 0;
    *kind = 5;
    if (*n < 0 || *n > 4) return;
    const int nn = *n;
    // The norm computed on coefficients scaled by the largest, so that none overflows.
    double big = 0.0;
    for (int i = 0; i <= nn; ++i) {
        const double m = std::fabs(c[i]);
        if (!(m <= DBL_MAX)) return; // infinite or NaN: not solved
        if (m > big) big = m;
    }
    for (int i = 0; i < nn; ++i) re[i] = im[i] = 0.0;
    const double tol = qx_tolerance(0);

    double norm = 0.0;
    if (big > 0.0) {
        for (int i = 0; i <= nn; ++i) norm += (c[i] / big) * (c[i] / big);
        norm = big * std::sqrt(norm);
    }
    *kind = 4;
    if (norm <= tol) return;
    double k[5] = {0.0, 0.0, 0.0, 0.0, 0.0};
    for (int i = 0; i <= nn; ++i) k[i] = c[i] / norm;
    int deg = nn;
    while (deg > 0 && !(std::fabs(k[deg]) > tol)) --deg;

    double r[4] = {0.0, 0.0, 0.0, 0.0}, s[4] = {0.0, 0.0, 0.0, 0.0};
    if (deg <= 2) {
        int d2 = 0, nr2 = 0;
        qx_h014(k, r, s, kind, &d2, &nr2);
        if (*kind == 1 || *kind == 4) return; // no root, or identity: degree 0
        deg = d2;
    } else if (deg == 3) {
        cardano(k[2] / k[3], k[1] / k[3], k[0] / k[3], tol, r, s);
    } else {
        ferrari(k[3] / k[4], k[2] / k[4], k[1] / k[4], k[0] / k[4], tol, r, s);
    }

    for (int i = 0; i < deg; ++i) {
        if (!(std::fabs(r[i]) <= DBL_MAX && std::fabs(s[i]) <= DBL_MAX)) {
            *kind = 5; // the roots overflow (a leading coefficient near the tolerance)
            return;
        }
    }

    // Canonical order first: each conjugate pair is then (+im, -im) side by side.
    const int nr = order_roots(r, s, deg);
    for (int i = 0; i < deg; ++i) {
        const cplx x = refine(k, deg, cplx(r[i], s[i]));
        if (i < nr) {
            r[i] = x.real(); // a real start stays real: the coefficients are real
        } else if (x.imag() > 0.0) {
            r[i] = r[i + 1] = x.real();
            s[i] = x.imag();
            s[i + 1] = -x.imag();
            ++i;
        } else {
            ++i; // refinement crossed the real axis: the pair stays as solved
        }
    }
    order_roots(r, s, deg);
    for (int i = 0; i < deg; ++i) {
        re[i] = r[i];
        im[i] = s[i];
    }
    *degree = deg;
    *nreal = nr;
    *kind = nr > 0 ? 3 : 2;
}
