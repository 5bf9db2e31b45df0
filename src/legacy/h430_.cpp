// h430_.cpp — the foot of a point on the line through two points, every
// argument by address. The line's squared length is compared with zero by
// the number tolerance (eqz_ kind 0); a degenerate line gives the foot a.
#define QX_SOURCE_FILE "h430_"

#include <qxmath/frame.h>
#include <qxmath/numbered.h>

#include "frame/check.h"

int h430_(const double a[3], const double b[3], const double p[3], double f[3])
{
    const double d[3] = {b[0] - a[0], b[1] - a[1], b[2] - a[2]};
    const double len2 = d[0] * d[0] + d[1] * d[1] + d[2] * d[2];
    const double zero = 0.0;
    const int kind = 0;
    const int degenerate = eqz_(&len2, &zero, &kind);
    double t = 0.0;
    if (!degenerate) {
        t = ((p[0] - a[0]) * d[0] + (p[1] - a[1]) * d[1] + (p[2] - a[2]) * d[2]) / len2;
    }
    // Written after every read, so f may alias a, b or p.
    const double ax = a[0], ay = a[1], az = a[2];
    f[0] = ax + t * d[0];
    f[1] = ay + t * d[1];
    f[2] = az + t * d[2];
    return degenerate;
}
