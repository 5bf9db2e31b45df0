// bcdf.cpp — reading a defining-data record: counts and settings, the
// record's own arrays, the point position of each slope and curvature,
// single points, slopes and curvatures as 3-D values, and copies of arrays
// and of the whole record.
//
// Queries hand out the record's arrays and allocate nothing; copies allocate
// with SM_alloc for the caller. A missing list reads as empty.
#define QX_SOURCE_FILE "bcdf"
#include "frame/check.h"

#include <climits>
#include <cstring>

#include <qxmath/bcdf.h>
#include <qxmath/frame.h>

#include "bcurve/bcurve_internal.h"

namespace
{

// The array of a list with its count (and dimension); NULL and 0 when the
// list is missing.
double *list_array(const PNTLST *list, int *count)
{
    if (list == nullptr) {
        *count = 0;
        return nullptr;
    }
    *count = list->num_points;
    return list->points;
}

double *list_array(const PNTLST *list, int *count, int *dimension)
{
    *dimension = list != nullptr ? list->dimension : 0;
    return list_array(list, count);
}

// 1-based positions of the points whose parameters the values match, one per
// value: the parameters are walked in increasing order with a cursor on the
// values, which advances on each match. Entries never matched stay 0.
int *positions_of(const PNTLST *values, const PNTLST *params, int count, int *out_count)
{
    *out_count = 0;
    if (count <= 0) return nullptr;
    int *pos = static_cast<int *>(SM_calloc(static_cast<std::size_t>(count), sizeof(int)));
    if (pos == nullptr) return nullptr;
    *out_count = count;
    const int num_values = qx_list_count(values);
    const int known = num_values < count ? num_values : count;
    const int n = qx_list_count(params);
    int cursor = 0;
    for (int i = 0; i < n && cursor < known; ++i) {
        if (qx_same_param(values->points[cursor], params->points[i])) pos[cursor++] = i + 1;
    }
    return pos;
}

// A copy of count ints of types (the caller frees it); NULL for none.
int *copy_types(const int *types, int count)
{
    if (types == nullptr || count <= 0) return nullptr;
    const std::size_t bytes = static_cast<std::size_t>(count) * sizeof(int);
    int *copy = static_cast<int *>(SM_alloc(bytes));
    if (copy != nullptr) std::memcpy(copy, types, bytes);
    return copy;
}

// Vector `position` of a list as three coordinates, and its type.
void copy_vector(const PNTLST *list, const int *types, int position, double *out, int *type)
{
    qx_copy_vector3(list, position, out);
    if (type != nullptr) *type = types != nullptr ? types[position] : 0;
}

} // namespace

extern "C" {

// ---- counts and settings ----

int BCDF_return_num_of_points(const BCDF *df)
{
    return df != nullptr ? qx_list_count(df->points) : 0;
}

int BCDF_return_dimension(const BCDF *df)
{
    return df != nullptr && df->points != nullptr ? df->points->dimension : 0;
}

int BCDF_return_num_of_slopes(const BCDF *df)
{
    return df != nullptr ? qx_list_count(df->slopes) : 0;
}

int BCDF_return_num_of_crvatrs(const BCDF *df)
{
    return df != nullptr ? qx_list_count(df->crvatrs) : 0;
}

int BCDF_return_num_of_constraints(const BCDF *df)
{
    if (df == nullptr) return 0;
    const long long n = qx_num_constraints(df);
    if (n > INT_MAX) return INT_MAX;
    return n < INT_MIN ? INT_MIN : static_cast<int>(n);
}

double BCDF_return_ls_tolerance(const BCDF *df)
{
    QX_CHECK(df != nullptr, "Defining Data Structure Is NULL");
    if (df == nullptr) return 0.0;
    QX_CHECK(df->weights != nullptr, "Weights List Has A NULL Value");
    return df->ls_tolerance;
}

int BCDF_return_ls_num_of_segments(const BCDF *df)
{
    QX_CHECK(df != nullptr, "Defining Data Structure Is NULL");
    if (df == nullptr) return 0;
    QX_CHECK(df->weights != nullptr, "Weights List Has A NULL Value");
    return df->ls_num_of_segments;
}

int BCDF_return_order(const BCDF *df)
{
    QX_CHECK(df != nullptr, "Defining Data Structure Is NULL");
    return df != nullptr ? df->order : 0;
}

int BCDF_return_periodicity(const BCDF *df) { return df != nullptr ? df->periodicity : 0; }

int BCDF_is_least_squares(const BCDF *df) { return df != nullptr && df->weights != nullptr; }

int BCDF_is_qx_spline(const BCDF *df)
{
    if (df == nullptr || df->order != 4 || qx_list_count(df->crvatrs) != 0) return 0;
    const int ns = qx_list_count(df->slopes);
    const int nsp = qx_list_count(df->slope_params);
    const int n = qx_list_count(df->params);
    if (ns < 2 || nsp < ns || n < 1) return 0;
    const double *sp = df->slope_params->points, *t = df->params->points;
    return qx_same_param(sp[0], t[0]) && qx_same_param(sp[ns - 1], t[n - 1]);
}

// ---- the record's arrays ----

double *BCDF_return_df_point_array(const BCDF *df, int *num_points, int *dimension)
{
    return list_array(df != nullptr ? df->points : nullptr, num_points, dimension);
}

double *BCDF_return_param_array(const BCDF *df, int *num_params)
{
    return list_array(df != nullptr ? df->params : nullptr, num_params);
}

double *BCDF_return_slope_pars_array(const BCDF *df, int *num_slope_params)
{
    return list_array(df != nullptr ? df->slope_params : nullptr, num_slope_params);
}

double *BCDF_return_crvatr_pars_array(const BCDF *df, int *num_crvatr_params)
{
    return list_array(df != nullptr ? df->crvatr_params : nullptr, num_crvatr_params);
}

double *BCDF_return_weight_array(const BCDF *df, int *num_weights)
{
    return list_array(df != nullptr ? df->weights : nullptr, num_weights);
}

double *BCDF_return_slope_array(const BCDF *df, int *num_slopes, int *dimension)
{
    return list_array(df != nullptr ? df->slopes : nullptr, num_slopes, dimension);
}

double *BCDF_return_crvatr_array(const BCDF *df, int *num_crvatrs, int *dimension)
{
    return list_array(df != nullptr ? df->crvatrs : nullptr, num_crvatrs, dimension);
}

int *BCDF_return_slope_type_array(const BCDF *df)
{
    return df != nullptr ? df->slope_types : nullptr;
}

int *BCDF_return_crvatr_type_array(const BCDF *df)
{
    return df != nullptr ? df->crvatr_types : nullptr;
}

double *BCDF_return_knot_sequence(const BCDF *df, int *num_of_knots)
{
    *num_of_knots = df != nullptr ? df->num_of_knots : 0;
    return df != nullptr ? df->knot_sequence : nullptr;
}

int *BCDF_create_slope_pos_array(const BCDF *df, int *count)
{
    if (df == nullptr) {
        *count = 0;
        return nullptr;
    }
    return positions_of(df->slope_params, df->params, qx_list_count(df->slopes), count);
}

int *BCDF_create_crvatr_pos_array(const BCDF *df, int *count)
{
    if (df == nullptr) {
        *count = 0;
        return nullptr;
    }
    return positions_of(df->crvatr_params, df->params, qx_list_count(df->crvatrs), count);
}

// ---- single elements ----

void BCDF_copy_single_3d_point(const BCDF *df, int position, double *point)
{
    const PNTLST *list = df != nullptr ? df->points : nullptr;
    QX_CHECK_RAISE(list != nullptr, QX_ERR_NO_POINTS,
                   "No Points Allocated In Defining Data Structure.");
    if (list == nullptr) return;
    const bool inside = position >= 0 && position < list->num_points;
    QX_CHECK_RAISE(inside, QX_ERR_POINT_POSITION_TOO_LARGE,
                   "Point Position Too Large For Point Array.");
    const int dim = list->dimension;
    QX_CHECK_RAISE(dim == 3 || dim == 4, QX_ERR_POINT_DIMENSION, "Point Dimension Is Not 3 Or 4.");
    if (!inside || (dim != 3 && dim != 4)) return;
    const double *p = list->points + static_cast<std::ptrdiff_t>(position) * dim;
    if (dim == 4) {
        const double w = p[3];
        point[0] = p[0] / w;
        point[1] = p[1] / w;
        point[2] = p[2] / w;
    } else {
        point[0] = p[0];
        point[1] = p[1];
        point[2] = p[2];
    }
}

void BCDF_copy_single_3d_slope(const BCDF *df, int position, double *slope, int *type)
{
    const int n = df != nullptr ? qx_list_count(df->slopes) : 0;
    QX_CHECK_RAISE(n > 0, QX_ERR_NO_SLOPE, "No Slope Allocated In Defining Data Structure.");
    const bool inside = position >= 0 && position < n;
    QX_CHECK_RAISE(inside, QX_ERR_INVALID_POSITION,
                   "An Invalid Slope Position Was Given By Calling Routine");
    if (!inside) return;
    copy_vector(df->slopes, df->slope_types, position, slope, type);
}

void BCDF_copy_single_3d_crvatr(const BCDF *df, int position, double *crvatr, int *type)
{
    const int n = df != nullptr ? qx_list_count(df->crvatrs) : 0;
    const bool inside = position >= 0 && position < n;
    QX_CHECK_RAISE(inside, QX_ERR_INVALID_POSITION,
                   "An Invalid Curvature Position Was Given By Calling Routine");
    if (!inside) return;
    copy_vector(df->crvatrs, df->crvatr_types, position, crvatr, type);
}

// ---- copies for the caller ----

double *BCDF_copy_points(const BCDF *df, int *num_points, int *dimension)
{
    const PNTLST *list = df != nullptr ? df->points : nullptr;
    QX_CHECK_RAISE(list != nullptr, QX_ERR_NO_POINTS, "Point Array Is NULL");
    return PNTLST_copy_points(list, num_points, dimension);
}

double *BCDF_copy_parameters(const BCDF *df, int *num_params)
{
    const PNTLST *list = df != nullptr ? df->params : nullptr;
    QX_CHECK_RAISE(list != nullptr, QX_ERR_PARAMETERS_NULL, "Parameter Array Is NULL");
    int dimension = 0;
    return PNTLST_copy_points(list, num_params, &dimension);
}

double *BCDF_copy_slopes(const BCDF *df, int *num_slopes, int *dimension)
{
    return PNTLST_copy_points(df != nullptr ? df->slopes : nullptr, num_slopes, dimension);
}

double *BCDF_copy_slope_pars(const BCDF *df, int *num_slope_params)
{
    int dimension = 0;
    return PNTLST_copy_points(df != nullptr ? df->slope_params : nullptr, num_slope_params,
                              &dimension);
}

int *BCDF_copy_slope_type_array(const BCDF *df)
{
    if (df == nullptr) return nullptr;
    return copy_types(df->slope_types, qx_list_count(df->slopes));
}

int *BCDF_copy_crvatr_type_array(const BCDF *df)
{
    if (df == nullptr) return nullptr;
    return copy_types(df->crvatr_types, qx_list_count(df->crvatrs));
}

BCDF *BCDF_copy_structure(const BCDF *df)
{
    if (df == nullptr) return nullptr;
    BCDF *copy = static_cast<BCDF *>(SM_alloc(sizeof(BCDF)));
    if (copy == nullptr) return nullptr;
    *copy = BCDF{}; // no knot sequence
    copy->points = PNTLST_copy_structure(df->points);
    copy->weights = PNTLST_copy_structure(df->weights);
    copy->params = PNTLST_copy_structure(df->params);
    copy->slopes = PNTLST_copy_structure(df->slopes);
    copy->slope_params = PNTLST_copy_structure(df->slope_params);
    copy->crvatrs = PNTLST_copy_structure(df->crvatrs);
    copy->crvatr_params = PNTLST_copy_structure(df->crvatr_params);
    copy->slope_types = copy_types(df->slope_types, qx_list_count(df->slopes));
    copy->crvatr_types = copy_types(df->crvatr_types, qx_list_count(df->crvatrs));
    copy->ls_tolerance = df->ls_tolerance;
    copy->ls_num_of_segments = df->ls_num_of_segments;
    copy->order = df->order;
    copy->periodicity = df->periodicity;
    // A part the host refused (its report returned): no record lacking it.
    const auto lost = [](const void *from, const void *to) {
        return from != nullptr && to == nullptr;
    };
    const bool whole =
        !lost(df->points, copy->points) && !lost(df->weights, copy->weights) &&
        !lost(df->params, copy->params) && !lost(df->slopes, copy->slopes) &&
        !lost(df->slope_params, copy->slope_params) && !lost(df->crvatrs, copy->crvatrs) &&
        !lost(df->crvatr_params, copy->crvatr_params) &&
        (qx_list_count(df->slopes) <= 0 || !lost(df->slope_types, copy->slope_types)) &&
        (qx_list_count(df->crvatrs) <= 0 || !lost(df->crvatr_types, copy->crvatr_types));
    if (!whole) {
        BCDF_free_structure(copy);
        return nullptr;
    }
    return copy;
}

} // extern "C"
