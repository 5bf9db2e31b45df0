// bcurve_internal.h — hidden helpers shared by the point-list and
// defining-data sources (pntlst_gen, bcdf, bcdf_gen, bcdf_calc). Nothing here
// is exported.
#ifndef QXMATH_BCURVE_INTERNAL_H
#define QXMATH_BCURVE_INTERNAL_H

#include <cmath>
#include <cstddef>

#include <qxmath/bcdf.h>
#include <qxmath/pntlst.h>

// Two parameters (of points, slopes, curvatures, knots) are the same when
// they differ by at most this much, absolutely.
constexpr double qx_param_match = 1.0e-10;

// |a - b| <= qx_param_match (a NaN never matches).
inline bool qx_same_param(double a, double b) { return std::fabs(a - b) <= qx_param_match; }

// Points in use of a list; 0 for a NULL list.
inline int qx_list_count(const PNTLST *list) { return list != nullptr ? list->num_points : 0; }

// Points + slopes + curvatures, less 1 for a periodic record (its closing
// point is no constraint of its own), summed wide so that the counts of a
// damaged record cannot overflow.
inline long long qx_num_constraints(const BCDF *df)
{
    const long long n = static_cast<long long>(qx_list_count(df->points)) +
                        qx_list_count(df->slopes) + qx_list_count(df->crvatrs);
    return df->periodicity == 1 ? n - 1 : n;
}

// The number of doubles of n points of the given dimension, as a size for
// the allocator and memmove; negative counts or dimensions give 0.
inline std::size_t qx_doubles(int n, int dimension)
{
    if (n <= 0 || dimension <= 0) return 0;
    return static_cast<std::size_t>(n) * static_cast<std::size_t>(dimension);
}

// Euclidean distance between two stored points of `dimension` doubles, over
// every coordinate (a homogeneous weight takes part): the square root of the
// sum of squared differences, summed from the first coordinate on. The one
// formula of point distances and chord-length parameters, so that both give
// the same bits.
inline double qx_point_distance(const double *a, const double *b, int dimension)
{
    double sum = 0.0;
    for (int k = 0; k < dimension; ++k) {
        const double d = b[k] - a[k];
        sum += d * d;
    }
    return std::sqrt(sum);
}

// The first three stored coordinates of entry i of a vector list (slopes,
// curvatures), its dimension being the stride; coordinates a lower
// dimension lacks read 0.0.
inline void qx_copy_vector3(const PNTLST *list, int i, double *out)
{
    const int d = list->dimension;
    const double *v = list->points + static_cast<std::ptrdiff_t>(i) * d;
    for (int k = 0; k < 3; ++k) out[k] = k < d ? v[k] : 0.0;
}

// Inserts point[] before point `position` (0 .. n; n appends), keeping the
// slopes and curvatures with their points as the other point edits do.
// Periodic: 0 .. n - 1, the closing copy staying last (n - 1 puts the new
// point just before it; 0 makes it the first point, and the closing copy
// follows). Checked: the position (QX_ERR_INVALID_POSITION "An Invalid Point
// Position Was Given By Calling Routine"). Not part of the interface: the
// host inserts points through the point list and BCDF_add_params; the
// library's own editing and its tests use this.
extern "C" void BCDF_insert_defining_point(BCDF *df, int position, const double *point);

#endif
