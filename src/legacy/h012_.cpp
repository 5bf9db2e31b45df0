// h012_ — the common part of two angular ranges: the first range against the second and
// its copies shifted by -2pi, 0 and +2pi, a piece starting where one start lies in the
// other range (h809_, tolerant) and kept when longer than the number tolerance; at most two.
#define QX_SOURCE_FILE "h012_"
#include "frame/check.h"

#include <qxmath/numbered.h>

#include "legacy/angular_range.h"

using qx_legacy::equal_under;
using qx_legacy::kTwoPi;
using qx_legacy::reduced_angle;
using qx_legacy::snap_into;
using qx_legacy::unroll_angular_range;

void h012_(const double r1[2], const double r2[2], double out[4], int *code)
{
    qx_h012(r1, r2, out, code);
}

void qx_h012(const double r1[2], const double r2[2], double out[4], int *code)
{
    constexpr int number_tol = 0;
    double s1 = 0.0, e1 = 0.0, s2 = 0.0, e2 = 0.0;
    const bool full1 = unroll_angular_range(r1, &s1, &e1);
    const bool full2 = unroll_angular_range(r2, &s2, &e2);
    *code = 1;
    if (full1 || full2) {
        // The whole circle leaves the other range as it is.
        out[0] = full1 && full2 ? 0.0 : full1 ? s2 : s1;
        out[1] = full1 && full2 ? 0.0 : reduced_angle(full1 ? e2 : e1);
        return;
    }

    int pieces = 0;
    const double a[2] = {s1, e1};
    for (int m = -1; m <= 1 && pieces < 2; ++m) {
        const double b[2] = {s2 + m * kTwoPi, e2 + m * kTwoPi};
        double lo = b[0];
        if (!snap_into(&lo, a, number_tol)) {
            lo = s1;
            if (!snap_into(&lo, b, number_tol)) continue;
        }
        const double hi = e1 < b[1] ? e1 : b[1];
        if (equal_under(lo, hi, number_tol) || hi < lo) continue;
        out[2 * pieces] = reduced_angle(lo);
        out[2 * pieces + 1] = reduced_angle(hi);
        ++pieces;
    }
    *code = pieces == 0 ? 2 : pieces == 1 ? 1 : 3;
}
