// fuzz_bcdf.cpp — point lists and the defining-data record under editing
// sequences. The input makes one record (from an array or from lists, with
// or without slopes, curvatures and weights), then decodes a sequence of up
// to 48 operations on it: edits of points, slopes, curvatures, weights,
// order, periodicity, least-squares settings and parameters, queries and
// copies, with arbitrary positions, counts and values, at checking level 0
// or 1 (the host unwinding from reports), an allocation sometimes refused.
// After every operation the record's structure must hold: every list within
// its room, the vector and parameter lists of slopes and curvatures of one
// length, their type arrays present. The record ends freed, or made
// persistent and then freed: no host block may outlive the operation.
#include <algorithm>

#include "fuzz_common.h"

namespace
{

using qxfuzz::Reader;

// A host array of count reals; none for no reals, since a list made around
// an empty array does not own it.
double *host_reals(Reader &in, int count)
{
    if (count <= 0) return nullptr;
    double *a = static_cast<double *>(SM_alloc(static_cast<std::size_t>(count) * sizeof(double)));
    for (int i = 0; i < count; ++i) a[i] = in.real();
    return a;
}

PNTLST *host_list(Reader &in, int count, int dimension)
{
    return PNTLST_create_from_list_of_pts(host_reals(in, count * dimension), count, dimension);
}

void check_list(const PNTLST *l, const char *what)
{
    if (l == nullptr) return;
    if (l->num_points < 0 || (l->max_points != 0 && l->num_points > l->max_points) ||
        (l->num_points > 0 && l->points == nullptr) || l->dimension < 1) {
        std::fprintf(stderr, "list %s: count %d, room %d, dimension %d\n", what, l->num_points,
                     l->max_points, l->dimension);
        qxfuzz::finding("a point list of the record is out of shape");
    }
}

int count_of(const PNTLST *l) { return l != nullptr ? l->num_points : 0; }

void check_record(const BCDF *df)
{
    if (df == nullptr) return;
    check_list(df->points, "points");
    check_list(df->params, "params");
    check_list(df->weights, "weights");
    check_list(df->slopes, "slopes");
    check_list(df->slope_params, "slope params");
    check_list(df->crvatrs, "curvatures");
    check_list(df->crvatr_params, "curvature params");
    if (count_of(df->slopes) != count_of(df->slope_params))
        qxfuzz::finding("slopes and slope parameters differ in number");
    if (count_of(df->crvatrs) != count_of(df->crvatr_params))
        qxfuzz::finding("curvatures and curvature parameters differ in number");
    if (count_of(df->slopes) > 0 && df->slope_types == nullptr)
        qxfuzz::finding("slopes without their types");
    if (count_of(df->crvatrs) > 0 && df->crvatr_types == nullptr)
        qxfuzz::finding("curvatures without their types");
}

BCDF *make_record(Reader &in)
{
    const int n = in.integer(0, in.flag() ? 300 : 8);
    const int dim = in.flag() ? 3 : in.integer(2, 5);
    const int ls = in.integer(0, 2);
    BCDF *df = nullptr;
    if (in.flag()) {
        double *pts = host_reals(in, n * dim);
        qxfuzz::arm_fault(in);
        if (!qxfuzz::call([&] { df = BCDF_create_df_from_pts(pts, n, dim, ls); }) || df == nullptr)
            SM_free(pts); // still the caller's
        return df;
    }
    PNTLST *points = in.flag() ? host_list(in, n, dim) : nullptr;
    PNTLST *params = in.flag() ? host_list(in, n, 1) : nullptr;
    PNTLST *weights = in.flag() ? host_list(in, n, 1) : nullptr;
    const int ns = in.integer(0, 4), nc = in.integer(0, 3);
    PNTLST *slopes = ns > 0 ? host_list(in, ns, 3) : nullptr;
    PNTLST *slope_params = ns > 0 && (MACH__checking_level == 0 || in.integer(0, 7) != 0)
                               ? host_list(in, ns, 1)
                               : nullptr; // missing: reported at level 1 only
    int *slope_types = nullptr;
    if (ns > 0) {
        slope_types = static_cast<int *>(SM_alloc(static_cast<std::size_t>(ns) * sizeof(int)));
        for (int i = 0; i < ns; ++i) slope_types[i] = in.integer(0, 3);
    }
    PNTLST *crvatrs = nc > 0 ? host_list(in, nc, 3) : nullptr;
    PNTLST *crvatr_params = nc > 0 ? host_list(in, nc, 1) : nullptr;
    int *crvatr_types = nullptr;
    if (nc > 0) {
        crvatr_types = static_cast<int *>(SM_alloc(static_cast<std::size_t>(nc) * sizeof(int)));
        for (int i = 0; i < nc; ++i) crvatr_types[i] = in.integer(0, 3);
    }
    const int periodic = in.integer(0, 1), order = in.integer(0, 8);
    qxfuzz::arm_fault(in);
    const bool returned = qxfuzz::call([&] {
        df = BCDF_create_from_pntlst(periodic, order, ls, points, params, weights, slopes,
                                     slope_params, slope_types, crvatrs, crvatr_params,
                                     crvatr_types);
    });
    if (!returned || df == nullptr) { // nothing was taken over
        for (PNTLST *l : {points, params, weights, slopes, slope_params, crvatrs, crvatr_params})
            PNTLST_free_structure(l);
        SM_free(slope_types);
        SM_free(crvatr_types);
        return nullptr;
    }
    return df;
}

void three(Reader &in, double v[4])
{
    for (int i = 0; i < 4; ++i) v[i] = in.real();
}

// One editing operation, a query or a copy; the results of copies are freed.
void operate(Reader &in, BCDF *df)
{
    const int n = count_of(df->points);
    const int pos = in.flag() ? in.integer(-1, n + 1) : in.integer(-2, 400);
    const int cnt = in.integer(-1, 5);
    double v[4], w[4], out[16];
    three(in, v);
    three(in, w);
    const int type = in.integer(-1, 4);
    int a = 0, b = 0, idx = 0;
    switch (in.integer(0, 39)) {
    case 0:
        BCDF_replace_defining_point(df, pos, v);
        break;
    case 1:
        BCDF_remove_defining_points(df, pos, cnt);
        break;
    case 2:
        BCDF_change_slope(df, pos, v, type);
        break;
    case 3:
        BCDF_change_curvature(df, pos, v, type);
        break;
    case 4:
        BCDF_replace_slope(df, pos, v, type);
        break;
    case 5:
        BCDF_replace_curvature(df, pos, v, type);
        break;
    case 6:
        BCDF_remove_slopes(df, pos, cnt);
        break;
    case 7:
        BCDF_remove_curvatures(df, pos, cnt);
        break;
    case 8: {
        const int k = in.integer(0, 4);
        int points[4];
        double vecs[12];
        for (int i = 0; i < 4; ++i) points[i] = in.integer(-1, n);
        for (double &x : vecs) x = in.real();
        int types[4] = {type, 0, 1, 2};
        if (in.flag())
            BCDF_update_slopes(df, k, points, vecs, in.flag() ? types : nullptr);
        else
            BCDF_update_curvatures(df, k, points, vecs, in.flag() ? types : nullptr);
        break;
    }
    case 9:
        BCDF_update_end_slopes(df, in.flag() ? v : nullptr, type, in.flag() ? w : nullptr, 0);
        break;
    case 10:
        BCDF_add_needed_slopes(df);
        break;
    case 11:
        BCDF_unitize_slopes(df);
        break;
    case 12:
        BCDF_make_least_squares_slopes(df);
        break;
    case 13:
        BCDF_change_number_of_segments(df, cnt * 7);
        break;
    case 14:
        BCDF_change_tolerance(df, v[0]);
        break;
    case 15:
        BCDF_change_order(df, in.integer(-1, 30));
        break;
    case 16:
        BCDF_toggle_periodicity(df);
        break;
    case 17:
        BCDF_replace_weight(df, pos, v);
        break;
    case 18:
        BCDF_convert_to_least_squares(df);
        break;
    case 19:
        BCDF_convert_4d_to_3d(df);
        break;
    case 20:
        BCDF_add_params(df, nullptr);
        break;
    case 21:
        BCDF_add_weights(df);
        break;
    case 22: {
        const double scale = BCDF_normalize(df);
        if (in.flag()) BCDF_unnormalize(df, scale);
        break;
    }
    case 23: {
        const double scale = BCDF_normalize_parameters(df);
        if (in.flag()) BCDF_unnormalize_parameters(df, scale);
        break;
    }
    case 24:
        BCDF_scale_slopes(df, v[0]);
        break;
    case 25:
        BCDF_point_at_slope(df, pos);
        BCDF_point_at_curvature(df, pos);
        BCDF_slope_at_point(df, pos, &idx);
        BCDF_curvature_at_point(df, pos, &idx);
        BCDF_curvature_at_slope(df, pos, &idx);
        BCDF_slope_at_curvature(df, pos, &idx, out);
        break;
    case 26:
        BCDF_check_defining_data(df);
        BCDF_check_consecutive_dup_pts(df);
        BCDF_check_overlap_points(df, in.integer(-1, 3), pos, v);
        BCDF_num_of_knots_needed(df, cnt);
        BCDF_ask_max_npoles_for_fit(df);
        BCDF_ask_continuity(df);
        BCDF_is_qx_spline(df);
        BCDF_return_num_of_constraints(df);
        BCDF_return_ls_tolerance(df);
        BCDF_return_ls_num_of_segments(df);
        BCDF_calc_df_polygon_length(df);
        BCDF_parameter_in_list(df, v[0], &idx);
        break;
    case 27:
        BCDF_copy_single_3d_point(df, pos, out);
        BCDF_copy_single_3d_slope(df, pos, out, &a);
        BCDF_copy_single_3d_crvatr(df, pos, out, &a);
        break;
    case 28: {
        void *copies[8] = {
            BCDF_copy_points(df, &a, &b),        BCDF_copy_parameters(df, &a),
            BCDF_copy_slopes(df, &a, &b),        BCDF_copy_slope_pars(df, &a),
            BCDF_copy_slope_type_array(df),      BCDF_copy_crvatr_type_array(df),
            BCDF_create_slope_pos_array(df, &a), BCDF_create_crvatr_pos_array(df, &a)};
        for (void *p : copies) SM_free(p);
        break;
    }
    case 29: {
        BCDF *copy = BCDF_copy_structure(df);
        check_record(copy);
        BCDF_free_structure(copy);
        break;
    }
    case 30: {
        const int k = in.integer(0, 4);
        std::fill(out, out + 16, std::nan(""));
        BCDF_CALC_auto_derivatives(df, pos, k, out);
        BCDF_CALC_auto_slope(df, pos, out);
        BCDF_CALC_auto_curvature(df, pos, out);
        BCDF_CALC_normalized_slope(df, pos, out);
        break;
    }
    case 31: { // the point list itself, as a caller edits it
        PNTLST *l = df->points;
        if (l == nullptr || l->max_points == 0) break;
        double pts[8];
        for (double &x : pts) x = in.real();
        const int k = in.integer(-1, 2);
        if (l->dimension > 4) break;
        switch (in.integer(0, 3)) {
        case 0:
            PNTLST_insert_points(l, k, pos, pts);
            break;
        case 1:
            PNTLST_remove_points(l, pos, k);
            break;
        case 2:
            PNTLST_replace_points(l, k, pos, pts);
            break;
        default:
            PNTLST_concat_one_point(l, pts);
            break;
        }
        BCDF_add_params(df, nullptr);
        break;
    }
    case 32: {
        PNTLST *copy = PNTLST_copy_structure(df->points);
        if (copy != nullptr && copy->dimension <= 4) {
            PNTLST_copy_single_point(copy, pos, out);
            PNTLST_calc_point_distance(copy, pos, cnt);
            PNTLST_convert_4d_to_3d(copy);
        }
        PNTLST_free_structure(copy);
        break;
    }
    case 33: {
        double params[8];
        for (double &x : params) x = in.real();
        if (n <= 8) BCDF_add_params(df, params);
        break;
    }
    case 34:
        BCDF_return_param_array(df, &a);
        BCDF_return_weight_array(df, &a);
        break;
    case 35: {
        double pts[9], params[3];
        for (double &x : pts) x = in.real();
        for (double &x : params) x = in.real();
        BCDF_CALC_quadratic_apprx(pts, params, v, in.integer(0, 3), w[0], in.integer(-1, 2), out);
        break;
    }
    default:
        break; // idle, so sequences vary in length
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Reader in(data, size);
    qxfuzz::begin(in.integer(0, 1));
    qxfuzz::open_session(in);
    BCDF *df = make_record(in);
    check_record(df);
    for (int step = 0; df != nullptr && step < 48 && !in.empty(); ++step) {
        if (in.integer(0, 15) == 0) qxfuzz::arm_fault(in);
        qxfuzz::call([&] { operate(in, df); });
        qxsys_fail_allocation(0);
        check_record(df);
    }
    if (df != nullptr && in.flag()) {
        BCDF *persistent = nullptr;
        qxfuzz::arm_fault(in);
        if (qxfuzz::call([&] { persistent = BCDF_make_bcdf_data_persistent(df); }) &&
            persistent != nullptr) {
            check_record(persistent);
            df = persistent;
        }
        qxsys_fail_allocation(0);
    }
    BCDF_free_structure(df);
    qxfuzz::end();
    return 0;
}
