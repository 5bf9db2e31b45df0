// h010_ — the union of two angular ranges, as the complement of the common part of their
// complements (h012_): no common gap is the whole circle, one gap one range, two gaps two.
#define QX_SOURCE_FILE "h010_"
#include "frame/check.h"

#include <qxmath/numbered.h>

#include "legacy/angular_range.h"

using qx_legacy::unroll_angular_range;

void h010_(const double r1[2], const double r2[2], double out[4], int *code)
{
    qx_h010(r1, r2, out, code);
}

void qx_h010(const double r1[2], const double r2[2], double out[4], int *code)
{
    double s = 0.0, e = 0.0;
    const bool full1 = unroll_angular_range(r1, &s, &e);
    const bool full2 = unroll_angular_range(r2, &s, &e);
    *code = 3;
    if (full1 || full2) {
        out[0] = out[1] = 0.0;
        return;
    }
    // The complement of (start, end) is (end, start): never the whole circle here.
    const double c1[2] = {r1[1], r1[0]}, c2[2] = {r2[1], r2[0]};
    double gaps[4] = {0.0, 0.0, 0.0, 0.0};
    int gap_code = 0;
    qx_h012(c1, c2, gaps, &gap_code);
    if (gap_code == 2) {
        out[0] = out[1] = 0.0;
    } else if (gap_code == 1) {
        *code = 1;
        out[0] = gaps[1];
        out[1] = gaps[0];
    } else {
        // The gaps run counter-clockwise from r1's end: r1 lies between the second gap and
        // the first.
        *code = 2;
        out[0] = gaps[3];
        out[1] = gaps[0];
        out[2] = gaps[1];
        out[3] = gaps[2];
    }
}
