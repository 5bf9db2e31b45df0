// The defining-data record: chord-length parameters and weights against the
// formulas, creation and the ownership of what it takes over, parameter
// changes that slopes and curvatures follow, queries, copies, freeing, and
// the move to persistent memory that survives the end of a host operation.
#include <cmath>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "support/qx_test.h"

namespace
{

using Points = std::vector<double>;
using qxtest::kNaN;

class DefiningData : public qxtest::QxTest
{
  protected:
    // Runs f with checking on and a trap; the error that stopped it must be
    // the given one, from `file`.
    template <class F>
    static void expect_error(F &&f, qxsys_kind kind, int code, const char *text, const char *file)
    {
        MACH__checking_level = 1;
        const std::optional<qxsys_report> r = qxsys::first_error(std::forward<F>(f));
        MACH__checking_level = 0;
        ASSERT_TRUE(r.has_value()) << text;
        EXPECT_EQ(r->kind, kind);
        EXPECT_EQ(r->code, code);
        EXPECT_STREQ(r->text, text);
        EXPECT_STREQ(r->file, file);
    }
};

double *host_array(const Points &v)
{
    double *a = static_cast<double *>(SM_alloc(v.size() * sizeof(double)));
    if (!v.empty()) std::memcpy(a, v.data(), v.size() * sizeof(double));
    return a;
}

int *host_ints(const std::vector<int> &v)
{
    int *a = static_cast<int *>(SM_alloc(v.size() * sizeof(int)));
    std::memcpy(a, v.data(), v.size() * sizeof(int));
    return a;
}

PNTLST *list(const Points &v, int dimension)
{
    return PNTLST_create_from_list_of_pts(host_array(v), static_cast<int>(v.size()) / dimension,
                                          dimension);
}

Points values(const PNTLST *l)
{
    return l == nullptr ? Points{} : Points(l->points, l->points + l->num_points * l->dimension);
}

// Chord-length sums written out: t[i] = t[i-1] + sqrt(sum of squares)^e.
Points chord_oracle(const Points &v, int dim, double e)
{
    const size_t n = v.size() / static_cast<size_t>(dim);
    Points t(n, 0.0);
    for (size_t i = 1; i < n; ++i) {
        double s = 0.0;
        for (size_t k = 0; k < static_cast<size_t>(dim); ++k) {
            const double d =
                v[i * static_cast<size_t>(dim) + k] - v[(i - 1) * static_cast<size_t>(dim) + k];
            s += d * d;
        }
        t[i] = t[i - 1] + (e == 1.0 ? std::sqrt(s) : std::pow(std::sqrt(s), e));
    }
    return t;
}

Points weight_oracle(const Points &t)
{
    const size_t n = t.size();
    Points w(n);
    w[0] = (t[1] - t[0]) / 2;
    w[n - 1] = (t[n - 1] - t[n - 2]) / 2;
    for (size_t i = 1; i + 1 < n; ++i) w[i] = (t[i + 1] - t[i - 1]) / 2;
    return w;
}

Points random_points(std::mt19937 &gen, int n, int dim)
{
    std::uniform_real_distribution<double> u(-50.0, 50.0), weight(0.5, 2.0);
    Points v(static_cast<size_t>(n * dim));
    for (size_t i = 0; i < v.size(); ++i) {
        v[i] = (dim == 4 && i % 4 == 3) ? weight(gen) : u(gen);
    }
    return v;
}

// Points (0,0,0) (1,0,0) (1,2,0) (1,2,2) (chord lengths 0 1 3 5) with given
// uniform parameters 0 1 2 3, slopes at parameters 0 and 3, a curvature at
// 2, open, order 4, not least-squares.
BCDF *sample_record()
{
    return BCDF_create_from_pntlst(0, 4, 0, list({0, 0, 0, 1, 0, 0, 1, 2, 0, 1, 2, 2}, 3),
                                   list({0, 1, 2, 3}, 1), nullptr, list({1, 0, 0, 0, 0, 2}, 3),
                                   list({0, 3}, 1), host_ints({1, 2}), list({0, 1, 0}, 3),
                                   list({2}, 1), host_ints({7}));
}

TEST_F(DefiningData, ChordLengthParametersBitForBit)
{
    std::mt19937 gen(4201);
    for (int dim : {3, 4}) {
        const Points v = random_points(gen, 9, dim);
        for (double e : {1.0, 0.5}) {
            Points t(9, kNaN);
            BCDF_CALC_parameters(9, dim, v.data(), e, t.data());
            EXPECT_EQ(t, chord_oracle(v, dim, e)) << dim << " " << e;
        }
    }

    // Coincident points, a NaN, or a tiny total: uniform with step n - 1.
    const Points same = {1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3};
    Points t(4, kNaN);
    BCDF_CALC_parameters(4, 3, same.data(), 1.0, t.data());
    EXPECT_EQ(t, (Points{0, 3, 6, 9}));
    const Points with_nan = {0, 0, 0, kNaN, 0, 0, 1, 0, 0};
    Points u(3, kNaN);
    BCDF_CALC_parameters(3, 3, with_nan.data(), 1.0, u.data());
    EXPECT_EQ(u, (Points{0, 2, 4}));
    const Points tiny = {0, 0, 0, 0.5e-10, 0, 0}, small = {0, 0, 0, 2e-10, 0, 0};
    BCDF_CALC_parameters(2, 3, tiny.data(), 1.0, u.data());
    EXPECT_EQ(u[1], 1.0);
    BCDF_CALC_parameters(2, 3, small.data(), 1.0, u.data());
    EXPECT_EQ(u[1], 2e-10);

    Points one(2, kNaN);
    BCDF_CALC_parameters(1, 3, same.data(), 1.0, one.data());
    EXPECT_EQ(one[0], 0.0);
    EXPECT_TRUE(std::isnan(one[1]));
    BCDF_CALC_parameters(0, 3, same.data(), 1.0, one.data() + 1);
    EXPECT_TRUE(std::isnan(one[1]));
}

TEST_F(DefiningData, Weights)
{
    std::mt19937 gen(4202);
    std::uniform_real_distribution<double> step(0.1, 3.0);
    for (size_t n : {2u, 3u, 7u}) {
        Points t(n, 0.0);
        for (size_t i = 1; i < n; ++i) t[i] = t[i - 1] + step(gen);
        Points w(n, kNaN);
        const int ni = static_cast<int>(n);
        BCDF_CALC_weights(ni, t.data(), w.data());
        EXPECT_EQ(w, weight_oracle(t));
        for (int i = 0; i < ni; ++i) {
            EXPECT_EQ(BCDF_CALC_single_weight(ni, t.data(), i), w[static_cast<size_t>(i)]);
        }
    }
    const double t1[1] = {0.0};
    double w1[2] = {kNaN, kNaN};
    BCDF_CALC_weights(1, t1, w1);
    EXPECT_EQ(w1[0], 0.0);
    EXPECT_TRUE(std::isnan(w1[1]));

    EXPECT_EQ(BCDF_CALC_single_weight(1, t1, 0), 0.0);
    EXPECT_EQ(qxsys_report_count(), 0);
    expect_error([&] { BCDF_CALC_single_weight(1, t1, 0); }, QXSYS_INTERNAL, 0,
                 "Not Enough Parameters", "bcdf_calc");
}

TEST_F(DefiningData, CreationFromAPointArray)
{
    srfc1_.ls_tolerance = 0.025;
    std::mt19937 gen(4203);
    const Points v = random_points(gen, 6, 4);
    double *array = host_array(v);
    BCDF *df = BCDF_create_df_from_pts(array, 6, 4, 0);
    ASSERT_NE(df, nullptr);
    EXPECT_EQ(df->points->points, array) << "the caller's array is taken over";
    EXPECT_EQ(df->points->max_points, 6);
    EXPECT_EQ(BCDF_return_order(df), 4);
    EXPECT_EQ(BCDF_return_periodicity(df), 0);
    EXPECT_EQ(BCDF_return_dimension(df), 4);
    EXPECT_EQ(values(df->params), chord_oracle(v, 4, 1.0));
    EXPECT_FALSE(BCDF_is_least_squares(df));
    EXPECT_EQ(df->ls_tolerance, 0.0);
    EXPECT_EQ(df->knot_sequence, nullptr);
    EXPECT_EQ(df->slopes, nullptr);
    BCDF_free_structure(df);

    df = BCDF_create_df_from_pts(host_array(v), 6, 4, 1);
    EXPECT_TRUE(BCDF_is_least_squares(df));
    EXPECT_EQ(values(df->weights), weight_oracle(chord_oracle(v, 4, 1.0)));
    EXPECT_EQ(BCDF_return_ls_tolerance(df), 0.025);
    EXPECT_EQ(BCDF_return_ls_num_of_segments(df), 0);
    BCDF_free_structure(df);
}

TEST_F(DefiningData, CreationFromPointLists)
{
    srfc1_.ls_tolerance = 0.5;
    // Chord lengths 0 5 17; slope and curvature parameters snap to them.
    const Points pts = {0, 0, 0, 3, 4, 0, 3, 4, 12};
    BCDF *df = BCDF_create_from_pntlst(
        0, 3, 0, list(pts, 3), nullptr, list({9, 9, 9}, 1), list({1, 0, 0, 0, 0, 1}, 3),
        list({5e-11, 17}, 1), host_ints({1, 2}), list({0, 1, 0}, 3), list({5}, 1), host_ints({3}));
    EXPECT_EQ(df->weights, nullptr) << "not least-squares: the weights passed are dropped";
    EXPECT_EQ(BCDF_return_order(df), 3);
    EXPECT_EQ(values(df->params), (Points{0, 5, 17}));
    EXPECT_EQ(values(df->slope_params), (Points{0, 17}));
    EXPECT_EQ(values(df->slopes), (Points{1, 0, 0, 0, 0, 1})) << "nothing to rescale from";
    EXPECT_EQ(values(df->crvatr_params), (Points{5}));
    EXPECT_EQ(df->slope_types[1], 2);
    EXPECT_EQ(df->crvatr_types[0], 3);
    EXPECT_EQ(df->ls_tolerance, 0.0);
    BCDF_free_structure(df);

    // Least squares: weights computed when missing, kept when given.
    df = BCDF_create_from_pntlst(0, 4, 1, list(pts, 3), nullptr, nullptr, nullptr, nullptr, nullptr,
                                 nullptr, nullptr, nullptr);
    EXPECT_EQ(values(df->weights), (Points{2.5, 8.5, 6}));
    EXPECT_EQ(df->ls_tolerance, 0.5);
    BCDF_free_structure(df);
    df = BCDF_create_from_pntlst(0, 4, 1, list(pts, 3), list({0, 1, 2}, 1), list({4, 4, 4}, 1),
                                 nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    EXPECT_EQ(values(df->params), (Points{0, 1, 2}));
    EXPECT_EQ(values(df->weights), (Points{4, 4, 4}));
    EXPECT_EQ(df->ls_tolerance, 0.5);
    BCDF_free_structure(df);

    // A periodic least-squares record is refused (with checking on).
    df = BCDF_create_from_pntlst(1, 4, 1, list(pts, 3), nullptr, nullptr, nullptr, nullptr, nullptr,
                                 nullptr, nullptr, nullptr);
    EXPECT_EQ(qxsys_report_count(), 0);
    BCDF_free_structure(df);
    PNTLST *periodic_points = list(pts, 3);
    expect_error(
        [&] {
            BCDF_free_structure(BCDF_create_from_pntlst(1, 4, 1, periodic_points, nullptr, nullptr,
                                                        nullptr, nullptr, nullptr, nullptr, nullptr,
                                                        nullptr));
        },
        QXSYS_RAISE, QX_ERR_PERIODIC_LEAST_SQUARES,
        "Periodic Least Squares Splines Are Not Allowed", "bcdf_gen");
    qxsys_end_operation(); // what the host does after an unwound operation

    // Unchecked, a missing point list makes an empty record.
    qxsys_clear_reports();
    df = BCDF_create_from_pntlst(0, 4, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                 nullptr, nullptr, nullptr);
    EXPECT_EQ(BCDF_return_num_of_points(df), 0);
    EXPECT_EQ(qxsys_report_count(), 0);
    BCDF_free_structure(df);

    // Argument checks come before anything is taken over.
    expect_error(
        [&] {
            BCDF_create_from_pntlst(0, 4, 0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                    nullptr, nullptr, nullptr);
        },
        QXSYS_RAISE, QX_ERR_NO_POINTS, "The Point List Is NULL", "bcdf_gen");
    PNTLST *p = list(pts, 3), *s = list({1, 0, 0}, 3);
    expect_error(
        [&] {
            BCDF_create_from_pntlst(0, 4, 0, p, nullptr, nullptr, s, nullptr, nullptr, nullptr,
                                    nullptr, nullptr);
        },
        QXSYS_RAISE, QX_ERR_SLOPE_POSITIONS_NULL, "Slope Position Array Is NULL", "bcdf_gen");
    PNTLST_free_structure(p);
    PNTLST_free_structure(s);
}

TEST_F(DefiningData, SlopesAndCurvaturesFollowNewParameters)
{
    BCDF *df = sample_record();
    PNTLST *params = df->params;
    BCDF_add_params(df, nullptr);
    EXPECT_EQ(df->params, params) << "the list is reused";
    EXPECT_EQ(values(df->params), (Points{0, 1, 3, 5}));
    const double f = 3.0 / 5.0;
    EXPECT_EQ(values(df->slopes), (Points{1 * f, 0, 0, 0, 0, 2 * f}));
    EXPECT_EQ(values(df->slope_params), (Points{0, 5}));
    EXPECT_EQ(values(df->crvatr_params), (Points{3}));
    EXPECT_EQ(values(df->crvatrs), (Points{0, 1, 0})) << "curvatures are not rescaled";

    const Points given = {0, 2, 4, 10};
    BCDF_add_params(df, given.data());
    EXPECT_EQ(values(df->params), given);
    EXPECT_EQ(values(df->slopes), (Points{1 * f * 0.5, 0, 0, 0, 0, 2 * f * 0.5}));
    EXPECT_EQ(values(df->slope_params), (Points{0, 10}));
    EXPECT_EQ(values(df->crvatr_params), (Points{4}));

    // The record's own array may be passed.
    int n = 0;
    BCDF_add_params(df, BCDF_return_param_array(df, &n));
    EXPECT_EQ(values(df->params), given);
    EXPECT_EQ(values(df->slopes), (Points{1 * f * 0.5, 0, 0, 0, 0, 2 * f * 0.5}));

    // A new point: the list grows; the slope at the old end stays with its
    // point (position 4), the curvature with point 3.
    const double p[3] = {1, 2, 4};
    PNTLST_concat_one_point(df->points, p);
    BCDF_add_params(df, nullptr);
    EXPECT_EQ(values(df->params), (Points{0, 1, 3, 5, 7}));
    EXPECT_EQ(values(df->slope_params), (Points{0, 5}));
    EXPECT_EQ(values(df->crvatr_params), (Points{3}));
    EXPECT_EQ(values(df->slopes),
              (Points{1 * f * 0.5 * (10.0 / 7.0), 0, 0, 0, 0, 2 * f * 0.5 * (10.0 / 7.0)}));

    // Weights follow the parameters.
    BCDF_add_weights(df);
    EXPECT_EQ(values(df->weights), weight_oracle(values(df->params)));
    df->periodicity = 1;
    BCDF_add_weights(df);
    EXPECT_EQ(qxsys_report_count(), 0);
    expect_error([&] { BCDF_add_weights(df); }, QXSYS_RAISE, QX_ERR_PERIODIC_LEAST_SQUARES,
                 "Periodic Least Squares Splines Are Not Allowed", "bcdf_gen");
    BCDF_free_structure(df);
}

TEST_F(DefiningData, Queries)
{
    // 5 points, 2 slopes, 1 curvature: 8 constraints open, 7 periodic.
    BCDF *df = BCDF_create_from_pntlst(
        0, 4, 0, list({0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0, 4, 0, 0}, 3), nullptr, nullptr,
        list({1, 0, 0, 1, 0, 0}, 3), list({0, 4}, 1), host_ints({1, 1}), list({0, 1, 0}, 3),
        list({2}, 1), host_ints({0}));
    EXPECT_EQ(BCDF_return_num_of_points(df), 5);
    EXPECT_EQ(BCDF_return_num_of_slopes(df), 2);
    EXPECT_EQ(BCDF_return_num_of_crvatrs(df), 1);
    EXPECT_EQ(BCDF_return_num_of_constraints(df), 8);
    df->periodicity = 1;
    EXPECT_EQ(BCDF_return_num_of_constraints(df), 7);
    df->periodicity = 0;

    // The arrays handed out are the record's own.
    int n = -1, d = -1;
    EXPECT_EQ(BCDF_return_df_point_array(df, &n, &d), df->points->points);
    EXPECT_EQ(n * 10 + d, 53);
    EXPECT_EQ(BCDF_return_param_array(df, &n), df->params->points);
    EXPECT_EQ(n, 5);
    EXPECT_EQ(BCDF_return_slope_pars_array(df, &n), df->slope_params->points);
    EXPECT_EQ(n, 2);
    EXPECT_EQ(BCDF_return_crvatr_pars_array(df, &n), df->crvatr_params->points);
    EXPECT_EQ(n, 1);
    EXPECT_EQ(BCDF_return_slope_array(df, &n, &d), df->slopes->points);
    EXPECT_EQ(n * 10 + d, 23);
    EXPECT_EQ(BCDF_return_crvatr_array(df, &n, &d), df->crvatrs->points);
    EXPECT_EQ(n * 10 + d, 13);
    EXPECT_EQ(BCDF_return_slope_type_array(df), df->slope_types);
    EXPECT_EQ(BCDF_return_crvatr_type_array(df), df->crvatr_types);
    n = -1;
    EXPECT_EQ(BCDF_return_weight_array(df, &n), nullptr);
    EXPECT_EQ(n, 0);

    double knots[3] = {0, 1, 2};
    BCDF_attach_knot_sequence(df, knots, 3);
    EXPECT_EQ(BCDF_return_knot_sequence(df, &n), knots);
    EXPECT_EQ(n, 3);
    BCDF_detach_knot_sequence(df);
    EXPECT_EQ(BCDF_return_knot_sequence(df, &n), nullptr);
    EXPECT_EQ(n, 0);

    // Both end tangents of a cubic: a qx spline; not with a curvature, not
    // for another order, not with slopes at the start only.
    EXPECT_EQ(BCDF_is_qx_spline(df), 0);
    PNTLST *curvatures = df->crvatrs;
    df->crvatrs = nullptr;
    EXPECT_EQ(BCDF_is_qx_spline(df), 1);
    df->slope_params->points[1] = 4 + 5e-11;
    EXPECT_EQ(BCDF_is_qx_spline(df), 1);
    df->slope_params->points[1] = 4 + 2e-10;
    EXPECT_EQ(BCDF_is_qx_spline(df), 0);
    df->slope_params->points[1] = 1;
    EXPECT_EQ(BCDF_is_qx_spline(df), 0);
    df->slope_params->points[1] = 4;
    df->order = 3;
    EXPECT_EQ(BCDF_is_qx_spline(df), 0);
    df->order = 4;
    df->crvatrs = curvatures;

    // Point positions (1-based); an unmatched slope stops the cursor, so it
    // and every later slope stay 0.
    int *pos = BCDF_create_slope_pos_array(df, &n);
    ASSERT_EQ(n, 2);
    EXPECT_EQ(pos[0] * 10 + pos[1], 15);
    SM_free(pos);
    pos = BCDF_create_crvatr_pos_array(df, &n);
    ASSERT_EQ(n, 1);
    EXPECT_EQ(pos[0], 3);
    SM_free(pos);
    df->slope_params->points[0] = 0.5;
    pos = BCDF_create_slope_pos_array(df, &n);
    ASSERT_EQ(n, 2);
    EXPECT_EQ(pos[0] * 10 + pos[1], 0);
    SM_free(pos);

    // Missing lists read as empty.
    EXPECT_FALSE(BCDF_is_least_squares(df));
    PNTLST_free_structure(df->slopes);
    df->slopes = nullptr;
    n = d = -1;
    EXPECT_EQ(BCDF_create_slope_pos_array(df, &n), nullptr);
    EXPECT_EQ(n, 0);
    EXPECT_EQ(BCDF_return_slope_array(df, &n, &d), nullptr);
    EXPECT_EQ(n + d, 0);
    EXPECT_EQ(BCDF_return_num_of_slopes(df), 0);

    // Settings of least-squares records and the order are checked.
    EXPECT_EQ(BCDF_return_ls_tolerance(df), 0.0);
    EXPECT_EQ(BCDF_return_order(nullptr), 0);
    EXPECT_EQ(qxsys_report_count(), 0);
    expect_error([&] { BCDF_return_ls_tolerance(df); }, QXSYS_INTERNAL, 0,
                 "Weights List Has A NULL Value", "bcdf");
    expect_error([&] { BCDF_return_ls_num_of_segments(df); }, QXSYS_INTERNAL, 0,
                 "Weights List Has A NULL Value", "bcdf");
    expect_error([&] { BCDF_return_ls_num_of_segments(nullptr); }, QXSYS_INTERNAL, 0,
                 "Defining Data Structure Is NULL", "bcdf");
    expect_error([&] { BCDF_return_ls_tolerance(nullptr); }, QXSYS_INTERNAL, 0,
                 "Defining Data Structure Is NULL", "bcdf");
    expect_error([&] { BCDF_return_order(nullptr); }, QXSYS_INTERNAL, 0,
                 "Defining Data Structure Is NULL", "bcdf");
    BCDF_add_weights(df);
    df->ls_num_of_segments = 6;
    qxsys_clear_reports();
    MACH__checking_level = 1;
    EXPECT_EQ(BCDF_return_ls_num_of_segments(df), 6);
    EXPECT_EQ(qxsys_report_count(), 0);
    BCDF_free_structure(df);
}

TEST_F(DefiningData, SingleElementCopies)
{
    BCDF *df = BCDF_create_from_pntlst(
        0, 4, 0, list({2, 4, 6, 2, 1, 1, 1, 1}, 4), nullptr, nullptr, list({1, 2, 3, 4, 5, 6}, 3),
        list({0, 1}, 1), host_ints({4, 5}), list({7, 8, 9, 10}, 4), list({1}, 1), nullptr);
    double p[3] = {kNaN, kNaN, kNaN};
    BCDF_copy_single_3d_point(df, 0, p);
    EXPECT_EQ(Points(p, p + 3), (Points{1, 2, 3}));
    int type = -1;
    BCDF_copy_single_3d_slope(df, 1, p, &type);
    EXPECT_EQ(Points(p, p + 3), (Points{4, 5, 6}));
    EXPECT_EQ(type, 5);
    BCDF_copy_single_3d_crvatr(df, 0, p, &type);
    EXPECT_EQ(Points(p, p + 3), (Points{7, 8, 9})) << "the list's dimension is the stride";
    EXPECT_EQ(type, 0) << "no type array";

    // Bad positions: nothing written, reported only with checking on.
    double q[3] = {kNaN, kNaN, kNaN};
    BCDF_copy_single_3d_point(df, 2, q);
    BCDF_copy_single_3d_slope(df, -1, q, &type);
    BCDF_copy_single_3d_crvatr(df, 1, q, &type);
    EXPECT_TRUE(std::isnan(q[0]) && std::isnan(q[2]));
    EXPECT_EQ(qxsys_report_count(), 0);
    expect_error([&] { BCDF_copy_single_3d_point(df, 2, q); }, QXSYS_RAISE,
                 QX_ERR_POINT_POSITION_TOO_LARGE, "Point Position Too Large For Point Array.",
                 "bcdf");
    expect_error([&] { BCDF_copy_single_3d_slope(df, 2, q, &type); }, QXSYS_RAISE,
                 QX_ERR_INVALID_POSITION, "An Invalid Slope Position Was Given By Calling Routine",
                 "bcdf");
    expect_error([&] { BCDF_copy_single_3d_crvatr(df, -1, q, &type); }, QXSYS_RAISE,
                 QX_ERR_INVALID_POSITION,
                 "An Invalid Curvature Position Was Given By Calling Routine", "bcdf");
    df->points->dimension = 2;
    expect_error([&] { BCDF_copy_single_3d_point(df, 0, q); }, QXSYS_RAISE, QX_ERR_POINT_DIMENSION,
                 "Point Dimension Is Not 3 Or 4.", "bcdf");
    df->points->dimension = 4;
    EXPECT_TRUE(std::isnan(q[0]) && std::isnan(q[2]));

    PNTLST_free_structure(df->slopes);
    df->slopes = nullptr;
    PNTLST *points = df->points;
    df->points = nullptr;
    expect_error([&] { BCDF_copy_single_3d_slope(df, 0, q, &type); }, QXSYS_RAISE, QX_ERR_NO_SLOPE,
                 "No Slope Allocated In Defining Data Structure.", "bcdf");
    expect_error([&] { BCDF_copy_single_3d_point(df, 0, q); }, QXSYS_RAISE, QX_ERR_NO_POINTS,
                 "No Points Allocated In Defining Data Structure.", "bcdf");
    df->points = points;
    BCDF_free_structure(df);
}

TEST_F(DefiningData, ArrayAndRecordCopies)
{
    BCDF *df = sample_record();
    BCDF_add_weights(df);
    df->ls_tolerance = 0.125;
    df->ls_num_of_segments = 3;
    double knots[2] = {0, 1};
    BCDF_attach_knot_sequence(df, knots, 2);

    int n = -1, d = -1;
    double *a = BCDF_copy_points(df, &n, &d);
    EXPECT_NE(a, df->points->points);
    EXPECT_EQ(Points(a, a + n * d), values(df->points));
    SM_free(a);
    a = BCDF_copy_parameters(df, &n);
    EXPECT_EQ(Points(a, a + n), values(df->params));
    SM_free(a);
    a = BCDF_copy_slopes(df, &n, &d);
    EXPECT_EQ(Points(a, a + n * d), values(df->slopes));
    SM_free(a);
    a = BCDF_copy_slope_pars(df, &n);
    EXPECT_EQ(Points(a, a + n), values(df->slope_params));
    SM_free(a);
    int *types = BCDF_copy_slope_type_array(df);
    EXPECT_NE(types, df->slope_types);
    EXPECT_EQ(SM_length(types), 2 * sizeof(int));
    EXPECT_EQ(types[0] * 10 + types[1], 12);
    SM_free(types);
    types = BCDF_copy_crvatr_type_array(df);
    EXPECT_EQ(types[0], 7);
    SM_free(types);

    // The whole record: every list copied with capacity equal to its count,
    // no knot sequence.
    PNTLST_concat_one_point(df->params, knots); // spare capacity in the original
    df->params->num_points = 4;
    BCDF *copy = BCDF_copy_structure(df);
    PNTLST *const *mine = &df->points, *const *theirs = &copy->points;
    for (int k = 0; k < 7; ++k) {
        ASSERT_NE(theirs[k], nullptr) << k;
        EXPECT_NE(theirs[k], mine[k]);
        EXPECT_NE(theirs[k]->points, mine[k]->points);
        EXPECT_EQ(values(theirs[k]), values(mine[k])) << k;
        EXPECT_EQ(theirs[k]->max_points, mine[k]->num_points) << k;
    }
    EXPECT_EQ(copy->slope_types[1], 2);
    EXPECT_EQ(copy->crvatr_types[0], 7);
    EXPECT_EQ(copy->ls_tolerance, 0.125);
    EXPECT_EQ(copy->ls_num_of_segments, 3);
    EXPECT_EQ(copy->order, 4);
    EXPECT_EQ(copy->periodicity, 0);
    EXPECT_EQ(copy->knot_sequence, nullptr);
    EXPECT_EQ(copy->num_of_knots, 0);
    BCDF_free_structure(df);
    EXPECT_EQ(values(copy->params), (Points{0, 1, 2, 3}));
    EXPECT_EQ(BCDF_copy_structure(nullptr), nullptr);

    // Slopes absent: copies are NULL with zero counts, unreported.
    PNTLST_free_structure(copy->slopes);
    copy->slopes = nullptr;
    n = d = -1;
    EXPECT_EQ(BCDF_copy_slopes(copy, &n, &d), nullptr);
    EXPECT_EQ(n + d, 0);
    EXPECT_EQ(BCDF_copy_slope_type_array(copy), nullptr);
    PNTLST_free_structure(copy->slope_params);
    copy->slope_params = nullptr;
    EXPECT_EQ(BCDF_copy_slope_pars(copy, &n), nullptr);
    EXPECT_EQ(n, 0);

    // Points and parameters are required.
    PNTLST *points = copy->points, *params = copy->params;
    copy->points = copy->params = nullptr;
    EXPECT_EQ(BCDF_copy_points(copy, &n, &d), nullptr);
    EXPECT_EQ(qxsys_report_count(), 0);
    expect_error([&] { BCDF_copy_points(copy, &n, &d); }, QXSYS_RAISE, QX_ERR_NO_POINTS,
                 "Point Array Is NULL", "bcdf");
    expect_error([&] { BCDF_copy_parameters(copy, &n); }, QXSYS_RAISE, QX_ERR_PARAMETERS_NULL,
                 "Parameter Array Is NULL", "bcdf");
    copy->points = points;
    copy->params = params;

    // free_all_but_points leaves the coordinates to the caller.
    const size_t live = qxsys_live_blocks();
    double *coordinates = BCDF_return_df_point_array(copy, &n, &d);
    const Points expected = values(copy->points);
    BCDF_free_all_but_points(copy);
    // The record, five lists with their arrays and two type arrays: all
    // but the coordinates go.
    EXPECT_EQ(qxsys_live_blocks(), live - 12u) << "only the coordinate array survives";
    EXPECT_EQ(Points(coordinates, coordinates + n * d), expected);
    SM_free(coordinates);
}

// Everything a record holds, read through its fields.
struct Snapshot {
    std::vector<Points> lists;
    std::vector<int> dims, slope_types, crvatr_types;
    double tolerance;
    int segments, order, periodicity, num_of_knots;
    double *knots;
};

Snapshot snapshot(const BCDF *df)
{
    Snapshot s{};
    for (const PNTLST *l : {df->points, df->weights, df->params, df->slopes, df->slope_params,
                            df->crvatrs, df->crvatr_params}) {
        s.lists.push_back(values(l));
        s.dims.push_back(l != nullptr ? l->dimension : -1);
    }
    s.slope_types.assign(df->slope_types, df->slope_types + df->slopes->num_points);
    s.crvatr_types.assign(df->crvatr_types, df->crvatr_types + df->crvatrs->num_points);
    s.tolerance = df->ls_tolerance;
    s.segments = df->ls_num_of_segments;
    s.order = df->order;
    s.periodicity = df->periodicity;
    s.num_of_knots = df->num_of_knots;
    s.knots = df->knot_sequence;
    return s;
}

void expect_same(const Snapshot &a, const Snapshot &b)
{
    EXPECT_EQ(a.lists, b.lists);
    EXPECT_EQ(a.dims, b.dims);
    EXPECT_EQ(a.slope_types, b.slope_types);
    EXPECT_EQ(a.crvatr_types, b.crvatr_types);
    EXPECT_EQ(a.tolerance, b.tolerance);
    EXPECT_EQ(a.segments, b.segments);
    EXPECT_EQ(a.order, b.order);
    EXPECT_EQ(a.periodicity, b.periodicity);
    EXPECT_EQ(a.num_of_knots, b.num_of_knots);
    EXPECT_EQ(a.knots, b.knots);
}

// A least-squares record with every list, in transient memory, and a knot
// sequence attached.
BCDF *full_record(double *knots)
{
    BCDF *df = sample_record();
    BCDF_add_weights(df);
    df->ls_tolerance = 0.01;
    BCDF_attach_knot_sequence(df, knots, 3);
    return df;
}

TEST_F(DefiningData, PersistentRecordOutlivesTheOperation)
{
    double knots[3] = {0, 0.5, 1};
    BCDF *df = full_record(knots);
    const Snapshot before = snapshot(df);
    EXPECT_EQ(BCDF_make_bcdf_data_persistent(nullptr), nullptr);

    BCDF *p = BCDF_make_bcdf_data_persistent(df);
    ASSERT_NE(p, nullptr);
    // The transient record was freed: nothing transient is left to reclaim.
    EXPECT_EQ(qxsys_end_operation(), 0u);
    qxsys_memory_stats stats{};
    qxsys_memory_stats_get(&stats);
    EXPECT_EQ(stats.persistent_blocks, 1u + 7u * 2u + 2u);
    EXPECT_EQ(qxsys_block_kind_of(p), QXSYS_PERSISTENT);
    for (const PNTLST *l : {p->points, p->weights, p->params, p->slopes, p->slope_params,
                            p->crvatrs, p->crvatr_params}) {
        EXPECT_EQ(qxsys_block_kind_of(l), QXSYS_PERSISTENT);
        EXPECT_EQ(qxsys_block_kind_of(l->points), QXSYS_PERSISTENT);
    }
    EXPECT_EQ(qxsys_block_kind_of(p->slope_types), QXSYS_PERSISTENT);
    EXPECT_EQ(qxsys_block_kind_of(p->crvatr_types), QXSYS_PERSISTENT);
    expect_same(snapshot(p), before);
    // Still a working record.
    BCDF_add_params(p, nullptr);
    EXPECT_EQ(values(p->params), (Points{0, 1, 3, 5}));
    BCDF_free_structure(p);
    qxsys_memory_stats_get(&stats);
    EXPECT_EQ(stats.persistent_blocks, 0u);

    // A list around an array it does not own gets a copy of its own.
    Points outside = {0, 1, 2, 3};
    df = full_record(knots);
    PNTLST_free_structure(df->params);
    df->params = PNTLST_create_from_list_of_pts(outside.data(), 4, 1);
    df->params->max_points = 0;
    p = BCDF_make_bcdf_data_persistent(df);
    EXPECT_EQ(qxsys_end_operation(), 0u);
    EXPECT_EQ(p->params->max_points, 4);
    EXPECT_EQ(qxsys_block_kind_of(p->params->points), QXSYS_PERSISTENT);
    EXPECT_EQ(values(p->params), outside);
    BCDF_free_structure(p);
}

TEST_F(DefiningData, PersistenceFailureLosesNothing)
{
    double knots[3] = {0, 0.5, 1};
    const std::string message = "Failed to allocate permanent memory for transient conversion of ";
    // The n-th persistent allocation fails, the host unwinding: every
    // persistent block made is gone, and the transient record is whole.
    for (long n = 1; n <= 17; ++n) {
        BCDF *df = full_record(knots);
        const Snapshot before = snapshot(df);
        qxsys_fail_allocation(n);
        BCDF *p = nullptr;
        const std::optional<qxsys_report> r =
            qxsys::first_error([&] { p = BCDF_make_bcdf_data_persistent(df); });
        qxsys_fail_allocation(0);
        ASSERT_TRUE(r.has_value()) << n;
        EXPECT_EQ(r->kind, QXSYS_INTERNAL);
        EXPECT_STREQ(r->file, "bcdf_gen");
        EXPECT_EQ(std::string(r->text).rfind(message, 0), 0u) << r->text;
        if (n == 1) {
            EXPECT_EQ(r->text, message + std::to_string(sizeof(BCDF)) + " bytes");
        }
        qxsys_memory_stats stats{};
        qxsys_memory_stats_get(&stats);
        EXPECT_EQ(stats.persistent_blocks, 0u) << n;
        expect_same(snapshot(df), before);
        BCDF_free_structure(df);
    }
    // One more succeeds: 17 blocks in all.
    BCDF *df = full_record(knots);
    qxsys_fail_allocation(18);
    BCDF *p = BCDF_make_bcdf_data_persistent(df);
    qxsys_fail_allocation(0);
    ASSERT_NE(p, nullptr);
    BCDF_free_structure(p);

    // A host that returns from the report: NULL, and the record stays.
    df = full_record(knots);
    qxsys_clear_reports();
    qxsys_fail_allocation(5);
    EXPECT_EQ(BCDF_make_bcdf_data_persistent(df), nullptr);
    EXPECT_EQ(qxsys_report_count(), 1);
    EXPECT_EQ(values(df->params), (Points{0, 1, 2, 3}));
    BCDF_free_structure(df);
}

} // namespace
