// lsfit_internal.h — hidden entry points of lsfit, for the library's tests:
// the fall-back constructions of the line and plane fits, which only input
// with no non-negative eigenvalue (NaN) reaches through the exported fits.
#ifndef QX_NUMERIC_LSFIT_INTERNAL_H
#define QX_NUMERIC_LSFIT_INTERNAL_H

namespace qx::lsfit
{

// Fall-back outcomes: a normal was made; the points are degenerate (flag
// set, normal zeroed); or (plane only) they all coincide and the fit
// returns without writing anything more.
enum Fallback { kNormalMade, kDegenerate, kCoincident };

// The constructions on the n >= 1 centred points c (2n or 3n doubles):
// the normal of the line or plane, made from the point farthest from the
// centroid (and, for the plane, the point farthest from the line along it).
Fallback line_fallback(const double *c, int n, double normal[2], int *degenerate);
Fallback plane_fallback(const double *c, int n, double normal[3], int *degenerate);

} // namespace qx::lsfit

#endif
