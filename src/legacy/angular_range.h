// angular_range.h — the unrolled form of an angular range that h009_, h010_ and h012_
// share: the start reduced into [0, 2pi) and the end unrolled to lie in [start, start+2pi].
#ifndef QXMATH_LEGACY_ANGULAR_RANGE_H
#define QXMATH_LEGACY_ANGULAR_RANGE_H

#include "legacy/qxmath_internal.h"

namespace qx_legacy
{

// a reduced into [0, 2pi) as h002_ does.
inline double reduced_angle(double a) { return reduced(a, kTwoPi); }

// Reduces r = (start, end) with h002_ on copies into *s in [0, 2pi) and *e in [*s, *s + 2pi).
// True for the whole circle (ends equal, or an arc within the number tolerance of 0 or 2pi
// long); *e is then *s + 2pi.
inline bool unroll_angular_range(const double r[2], double *s, double *e)
{
    *s = reduced_angle(r[0]);
    *e = reduced_angle(r[1]);
    if (*e < *s) *e += kTwoPi;
    const double w = *e - *s;
    const bool full = equal_under(w, 0.0, 0) || equal_under(w, kTwoPi, 0);
    if (full) *e = *s + kTwoPi;
    return full;
}

} // namespace qx_legacy

// Hidden twins of h010_ and h012_ for h009_ and h010_ (same results).
void qx_h010(const double r1[2], const double r2[2], double out[4], int *code);
void qx_h012(const double r1[2], const double r2[2], double out[4], int *code);

#endif
