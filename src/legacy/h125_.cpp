// h125_.cpp — a frame record re-expressed relative to a reference frame (global to local):
// matrix f.m r.m^T, formed as h120_(h110_(r.m), f.m), and origin h100_(f.o - r.o, r.m).
// h140_ is its inverse. Everything is formed locally, so g may be f or r.
#define QX_SOURCE_FILE "h125_"

#include <cstring>

#include <qxmath/numbered.h>

#include "legacy/space_internal.h"

void h125_(const double f[12], const double r[12], double g[12])
{
    double rt[9], out[12], d[3];
    h110_(r, rt);
    h120_(rt, f, out);
    qx_space::sub3(f + 9, r + 9, d);
    qx_legacy::to_frame(d, r, out + 9);
    std::memcpy(g, out, sizeof out);
}
