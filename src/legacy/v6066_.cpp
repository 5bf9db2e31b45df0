// v6066_.cpp — the reset to the identity system: m := identity (h160_),
// o := the origin.
#define QX_SOURCE_FILE "v6066_"

#include <qxmath/numbered.h>

void v6066_(double m[9], double o[3])
{
    h160_(m);
    o[0] = 0.0;
    o[1] = 0.0;
    o[2] = 0.0;
}
