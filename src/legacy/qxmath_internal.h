// qxmath_internal.h — the core primitives of the numbered routines for calls from inside the
// library: the comparisons, the period reduction and the complex product as inline kernels,
// the larger routines as hidden twins. The exported h805_, h804_, h809_, h002_, h017_, h100_,
// h014_, h018_ and h006_ are thin wrappers around them, so a library caller gets the same
// bits without the call through the shared library's symbol table.
#ifndef QXMATH_LEGACY_QXMATH_INTERNAL_H
#define QXMATH_LEGACY_QXMATH_INTERNAL_H

#include <cmath>

#include "frame/session_block.h"
#include "linalg/vec_internal.h"

namespace qx_legacy
{

// Stored literals, never computed, so that every routine sees the same bits.
constexpr double kPi = 3.141592653589793;
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kThreeHalfPi = 4.71238898038469;
constexpr double kTwoPi = 6.283185307179586;

// Entry i of the tolerance table; 0.0 (exact comparison) for an index outside the table.
inline double tolerance_entry(int i) { return (i >= 0 && i <= 7) ? qx_tolerance(i) : 0.0; }

// h100_: w := (row 0 . v, row 1 . v, row 2 . v); w may be v (written after all three).
inline void to_frame(const double *v, const double *m, double *w)
{
    const double w0 = qx::vec::dot3(v, m), w1 = qx::vec::dot3(v, m + 3);
    const double w2 = qx::vec::dot3(v, m + 6);
    w[0] = w0;
    w[1] = w1;
    w[2] = w2;
}

// h805_: |a - b| <= |tol[i]|, equality included.
inline bool equal_under(double a, double b, int i)
{
    return std::fabs(a - b) <= std::fabs(tolerance_entry(i));
}

// h804_: the code of *x against [lim[0], lim[1]], *x snapped onto an end it equals.
inline int classify(double *x, const double lim[2], int i)
{
    const double lo = lim[0], hi = lim[1], v = *x;
    if (equal_under(v, lo, i)) {
        *x = lo;
        return 2;
    }
    if (v <= lo) return 1;
    if (equal_under(v, hi, i)) {
        *x = hi;
        return 4;
    }
    return v <= hi ? 3 : 5;
}

// h809_: 1 when *x lies in [lim[0], lim[1]] or equals an end (then snapped onto it).
inline int snap_into(double *x, const double lim[2], int i)
{
    const double lo = lim[0], hi = lim[1], v = *x;
    if (lo <= v && v <= hi) return 1;
    if (equal_under(v, lo, i))
        *x = lo;
    else if (equal_under(v, hi, i))
        *x = hi;
    else
        return 0;
    return 1;
}

// h002_: x reduced modulo p into [0, p) under the number tolerance.
inline double reduced(double v, double p)
{
    if (p < 0.0) return v;
    if (equal_under(v, p, 0)) return 0.0;
    if (equal_under(p, 0.0, 0)) return v;
    if (v > 0.0) {
        const double r = std::fmod(v, p);
        return equal_under(r, 0.0, 0) ? 0.0 : r;
    }
    const double r = std::fmod(std::fabs(v), p);
    if (equal_under(r, 0.0, 0)) return 0.0;
    const double w = p - r;
    return equal_under(w, 0.0, 0) ? 0.0 : w;
}

// h017_: c := a b; a and b are read before c is written.
inline void cmul(const double a[2], const double b[2], double c[2])
{
    const double re = a[0] * b[0] - a[1] * b[1];
    const double im = a[0] * b[1] + a[1] * b[0];
    c[0] = re;
    c[1] = im;
}

} // namespace qx_legacy

// Hidden twins of the exported routines (same results); see numbered.h for their contracts.
void qx_h014(const double c[3], double re[2], double im[2], int *kind, int *degree, int *nreal);
void qx_h018(const double z[2], int n, double w[2]);
void qx_h006(double x, const double lim[2], bool with_period, double period, int *found,
             int *count);

// The placement of h0062_ (far_to_start false: one period given back at the far end) and
// h0063_ (true: snapped onto start); in h0005_.cpp.
void qx_place_half_open(double *x, double start, double period, bool far_to_start, int *found);

#endif
