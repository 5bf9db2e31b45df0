// h964_internal.h — the cross-check step of h964_, hidden, for the library's
// own tests.
#ifndef QXMATH_LINALG_H964_INTERNAL_H
#define QXMATH_LINALG_H964_INTERNAL_H

// The last step of h964_ at checking level 1 or more, once the older method
// ("V14", result v) and the first attempt of the current one ("V15", result
// m) have both succeeded and k is ortho-normal: when v passes
// MTX3_is_ortho_normal and MTX3_is_equal(m, v, 1.0e-8) fails, dumps t (the
// 3x3 part of the transformation), k, the scale factor, v and m through
// ERROR_lprintf and reports the disagreement through ERROR_internal (module
// h964). Both methods carry the same transformed axes, so for finite input
// they agree to rounding; the report guards them against drifting apart.
void qx_h964_cross_check(const double k[9], const double t[9], double scale, const double v[9],
                         const double m[9]);

#endif
