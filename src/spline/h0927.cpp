// h0927 — h0927_, the right-hand sides of the dense interpolation system in
// the order of h0926_'s rows: the points, the condition vectors, and a zero
// row per periodic wrap row.
#define QX_SOURCE_FILE "h0927"
#include "frame/check.h"

#include <cstddef>
#include <cstring>

#include "spline/spline_internal.h"

int h0927_(const QX_interp_desc *desc, const double *points, const double *condvectors,
           double *poles)
{
    qx::spline::Size s;
    if (!qx::spline::interp_size(desc, &s) || points == nullptr || poles == nullptr ||
        (s.nc > 0 && condvectors == nullptr))
        return -1;
    const std::size_t dim = static_cast<std::size_t>(s.dim);
    const std::size_t n = static_cast<std::size_t>(s.n), nc = static_cast<std::size_t>(s.nc);
    std::memmove(poles, points, n * dim * sizeof(double));
    if (nc > 0) std::memmove(poles + n * dim, condvectors, nc * dim * sizeof(double));
    for (std::size_t i = (n + nc) * dim; i < static_cast<std::size_t>(s.N) * dim; ++i)
        poles[i] = 0.0;
    return 0;
}
