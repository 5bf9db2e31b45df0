// h140_.cpp — a frame record given relative to a reference frame brought back to global
// coordinates (local to global, the inverse of h125_): matrix g.m r.m, formed as
// h120_(r.m, g.m), and origin h100_(g.o, h110_(r.m)) + r.o. Everything is formed locally,
// so f may be g or r.
#define QX_SOURCE_FILE "h140_"

#include <cstring>

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h140_(const double g[12], const double r[12], double f[12])
{
    double rt[9], out[12], o[3];
    h120_(r, g, out);
    h110_(r, rt);
    qx_legacy::to_frame(g + 9, rt, o);
    out[9] = o[0] + r[9];
    out[10] = o[1] + r[10];
    out[11] = o[2] + r[11];
    std::memcpy(f, out, sizeof out);
}
