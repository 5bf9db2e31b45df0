// h264_.cpp — the parameter of a point on a conic (the inverse of h262_).
// The axis direction comes sine first here, unlike h260_ and h262_. Type 1
// computes nothing (t untouched); 3 parabola t = v; 4 hyperbola an angle with
// cosine |a/u|; 2 and every other code the ellipse angle. Divisions unguarded.
#define QX_SOURCE_FILE "h264_"

#include <cmath>

#include <qxmath/numbered.h>

void h264_(const int *type, const double centre[2], const double *a, const double *b,
           const double dir[2], const double p[3], double *t)
{
    const int ty = *type;
    if (ty == 1) return;
    const double dx = p[0] - centre[0], dy = p[1] - centre[1];
    const double s = dir[0], c = dir[1];
    const double u = dx * c + dy * s;
    const double v = dy * c - dx * s;
    if (ty == 3) {
        *t = v;
        return;
    }
    double sn, cs;
    if (ty == 4) {
        const double k = *a / u;
        sn = v * k / *b;
        cs = std::fabs(k);
    } else {
        sn = v / *b;
        cs = u / *a;
    }
    h053_(&sn, &cs, t);
}
