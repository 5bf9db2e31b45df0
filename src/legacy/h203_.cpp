// h203_.cpp — which of two points lies nearer to a third in the XY plane:
// squared distances compared exactly, no tolerance.
#define QX_SOURCE_FILE "h203_"

#include <qxmath/numbered.h>

void h203_(const double a[3], const double b[3], const double p[3], int *code)
{
    double da, db;
    h200_(a, p, &da);
    h200_(b, p, &db);
    int k = 1; // a nearer, or a NaN distance
    if (db < da) k = 2;
    if (db == da) k = 3; // exact equality wins, deliberately
    *code = k;
}
