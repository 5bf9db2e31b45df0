// v6060_.cpp — a point between absolute coordinates and those of the session's
// work coordinate system (origin o, axes the rows of M): mode 1 gives
// w = M (p - o), mode 2 p = o + M^T w.
#define QX_SOURCE_FILE "v6060_"

#include <qxmath/numbered.h>
#include <qxmath/session.h>

void v6060_(const int *mode, const double p[3], double q[3], int *status)
{
    const double *o = acom_.wcs_origin, *m = acom_.wcs_matrix;
    double r[3];
    if (*mode == 1) {
        const double d[3] = {p[0] - o[0], p[1] - o[1], p[2] - o[2]};
        for (int k = 0; k < 3; ++k)
            r[k] = d[0] * m[3 * k] + d[1] * m[3 * k + 1] + d[2] * m[3 * k + 2];
    } else if (*mode == 2) {
        for (int k = 0; k < 3; ++k) r[k] = o[k] + (p[0] * m[k] + p[1] * m[3 + k] + p[2] * m[6 + k]);
    } else {
        *status = 2;
        return;
    }
    q[0] = r[0];
    q[1] = r[1];
    q[2] = r[2];
    *status = 1;
}
