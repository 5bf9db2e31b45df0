// get_unique_reals — a sorted list without its repeats, into a new host
// block. A value is a repeat when it lies within 1.0e-10 of the value just
// before it in the input (not of the last one kept), so a slowly drifting
// run collapses to its first member, and a NaN difference counts as a
// repeat.
#define QX_SOURCE_FILE "get_unique_reals"
#include "frame/check.h"

#include <cmath>
#include <cstddef>

#include <qxmath/spline.h>

namespace
{

constexpr double kRepeatTol = 1.0e-10;

} // namespace

void get_unique_reals(const double *values, int count, double **unique, int *nunique)
{
    if (nunique == nullptr) return;
    if (count <= 0 || values == nullptr || unique == nullptr) {
        *nunique = 0;
        return;
    }
    double *kept =
        static_cast<double *>(SM_alloc(static_cast<std::size_t>(count) * sizeof(double)));
    if (kept == nullptr) { // the host's report returned
        *nunique = 0;
        *unique = nullptr;
        return;
    }
    int n = 0;
    kept[n++] = values[0];
    for (int i = 1; i < count; ++i)
        if (std::fabs(values[i] - values[i - 1]) > kRepeatTol) kept[n++] = values[i];
    *nunique = n;
    *unique = kept;
}
