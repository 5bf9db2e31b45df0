// v6037a_.cpp — a coordinate system turned by three angles (degrees) about
// its own X, then new Y, then newest Z axis: each step multiplies by the
// transposed rotation h923_ gives about the current axis (h120_). The
// caller's angles are left in radians, deliberately.
#define QX_SOURCE_FILE "v6037a_"

#include <cstring>

#include <qxmath/numbered.h>

void v6037a_(const double m[9], double ang[3], double r[9])
{
    double cur[9], rot[9], rott[9], next[9];
    std::memcpy(cur, m, sizeof cur);
    for (int axis = 0; axis < 3; ++axis) {
        ang[axis] *= 0.01745329251994328;
        h923_(cur + 3 * axis, &ang[axis], rot);
        h110_(rot, rott);
        h120_(rott, cur, next); // cur . rot^T
        std::memcpy(cur, next, sizeof cur);
    }
    std::memcpy(r, cur, sizeof cur);
}
