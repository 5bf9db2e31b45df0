// angular_range.h — the unrolled form of an angular range that h009_, h010_ and h012_
// share: the start reduced into [0, 2pi) and the end unrolled to lie in [start, start+2pi].
#ifndef QXMATH_LEGACY_ANGULAR_RANGE_H
#define QXMATH_LEGACY_ANGULAR_RANGE_H

#include <qxmath/numbered.h>

namespace qx_legacy
{

// Stored, not computed, as everywhere in the numbered routines.
constexpr double kTwoPi = 6.283185307179586;

// Reduces r = (start, end) with h002_ on copies into *s in [0, 2pi) and *e in [*s, *s + 2pi).
// True for the whole circle (ends equal, or an arc within the number tolerance of 0 or 2pi
// long); *e is then *s + 2pi.
inline bool unroll_angular_range(const double r[2], double *s, double *e)
{
    static const int number_tol = 0;
    static const double zero = 0.0, two_pi = kTwoPi;
    *s = r[0];
    *e = r[1];
    h002_(s, &two_pi);
    h002_(e, &two_pi);
    if (*e < *s) *e += kTwoPi;
    const double w = *e - *s;
    int none = 0, whole = 0;
    h805_(&w, &zero, &number_tol, &none);
    h805_(&w, &two_pi, &number_tol, &whole);
    if (none || whole) *e = *s + kTwoPi;
    return none || whole;
}

// a reduced into [0, 2pi) by h002_.
inline double reduced_angle(double a)
{
    static const double two_pi = kTwoPi;
    h002_(&a, &two_pi);
    return a;
}

} // namespace qx_legacy

#endif
