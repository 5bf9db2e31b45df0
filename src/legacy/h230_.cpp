// h230_.cpp — the implicit line a x + b y + c = 0 through two points of the
// XY plane, divided by the norm of all three coefficients (so c is not the
// origin's signed distance). Coincident points: status 2, outputs untouched.
#define QX_SOURCE_FILE "h230_"

#include <cmath>

#include <qxmath/frame.h>
#include <qxmath/numbered.h>

void h230_(const double p[3], const double q[3], int *status, double *a, double *b, double *c)
{
    const double la = q[1] - p[1];
    const double lb = -(q[0] - p[0]);
    const double lc = q[0] * p[1] - q[1] * p[0];
    const double n2 = la * la + lb * lb, zero = 0.0;
    const int kind = 0;
    if (eqz_(&n2, &zero, &kind)) {
        *status = 2;
        return;
    }
    const double k = std::sqrt(la * la + lb * lb + lc * lc);
    *a = la / k;
    *b = lb / k;
    *c = lc / k;
    *status = 1;
}
