// h204_.cpp — two points of the XY plane equal within a distance t: the
// squared distance against t*t by h806_ (h206_, by contrast, compares the
// squared distance with t itself).
#define QX_SOURCE_FILE "h204_"

#include <qxmath/numbered.h>

void h204_(const double p[3], const double q[3], const double *t, int *eq)
{
    double d2;
    h200_(p, q, &d2);
    const double zero = 0.0, t2 = *t * *t;
    h806_(&d2, &zero, &t2, eq);
}
