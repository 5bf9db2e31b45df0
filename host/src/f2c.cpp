// f2c.cpp — arithmetic, conversion and copy services of the numbered
// routines, with the semantics of the f2c run-time library: dmod, real and
// complex powers, dimag, dsign, and the int/copy/fill helpers.
#include <climits>
#include <cmath>
#include <cstring>

#include <qxsys/qxsys.h>

namespace
{

// |z| without needless overflow, as f2c computes it.
double complex_abs(double re, double im)
{
    double real = std::fabs(re);
    double imag = std::fabs(im);
    if (real < imag) {
        const double t = real;
        real = imag;
        imag = t;
    }
    if (real + imag == real) return real;
    const double t = imag / real;
    return real * std::sqrt(1.0 + t * t);
}

} // namespace

QXMATH_HOST double F2C_dmod(const double *x, const double *y)
{
    double q = *x / *y;
    q = q >= 0 ? std::floor(q) : -std::floor(-q);
    return *x - *y * q;
}

QXMATH_HOST double F2C_pow_dd(const double *a, const double *b) { return std::pow(*a, *b); }

QXMATH_HOST double F2C_pow_di(const double *a, const int *n)
{
    double p = 1.0;
    double x = *a;
    if (*n != 0) {
        // The magnitude of n in unsigned arithmetic, so INT_MIN is fine.
        unsigned u = static_cast<unsigned>(*n);
        if (*n < 0) {
            u = 0u - u;
            x = 1.0 / x;
        }
        for (;;) {
            if (u & 1u) p *= x;
            u >>= 1;
            if (u == 0) break;
            x *= x;
        }
    }
    return p;
}

QXMATH_HOST void F2C_pow_zz(double *result, const double *a, const double *b)
{
    const double logr = std::log(complex_abs(a[0], a[1]));
    const double logi = std::atan2(a[1], a[0]);
    const double x = std::exp(logr * b[0] - logi * b[1]);
    const double y = logr * b[1] + logi * b[0];
    const double re = x * std::cos(y);
    const double im = x * std::sin(y);
    result[0] = re;
    result[1] = im;
}

QXMATH_HOST double F2Cdimag(const double *z) { return z[1]; }

QXMATH_HOST double F2Cdsign(const double *a, const double *b)
{
    const double x = *a >= 0 ? *a : -*a;
    return *b >= 0 ? x : -x;
}

QXMATH_HOST int int_overflow_to_zero_(const double *x)
{
    const double t = std::trunc(*x);
    // False for NaN as well as for values outside int.
    if (!(t >= static_cast<double>(INT_MIN) && t <= static_cast<double>(INT_MAX))) return 0;
    return static_cast<int>(t);
}

QXMATH_HOST void movf_(const int *n, const double *from, double *to)
{
    if (*n <= 0) return;
    std::memmove(to, from, static_cast<size_t>(*n) * sizeof *to);
}

QXMATH_HOST void wf256_(const int *n, const int *value, int *to)
{
    const int count = *n;
    const int v = *value;
    for (int i = 0; i < count; ++i) to[i] = v;
}

QXMATH_HOST void wf266_(const int *n, const double *value, double *to)
{
    const int count = *n;
    const double v = *value;
    for (int i = 0; i < count; ++i) to[i] = v;
}
