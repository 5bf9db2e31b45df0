// The defining-data record: chord-length parameters and weights against the
// formulas, creation and the ownership of what it takes over, parameters
// that slopes and curvatures follow, queries, copies, freeing, and the move
// to persistent memory that survives the end of a host operation.
#include <cmath>
#include <cstring>
#include <optional>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "support/qx_test.h"

namespace
{

using Points = std::vector<double>;
using Lists = std::vector<Points>;
using qxtest::kNaN;

// The host's codes: their numbers are part of the interface.
static_assert(QX_ERR_POINT_POSITION_TOO_LARGE == 1005302 && QX_ERR_PARAMETERS_NULL == 1005303 &&
                  QX_ERR_NO_POINTS == 1005304 && QX_ERR_NO_SLOPE == 1005305 &&
                  QX_ERR_SLOPE_POSITIONS_NULL == 1005306 &&
                  QX_ERR_PERIODIC_LEAST_SQUARES == 1005312 && QX_ERR_POINT_DIMENSION == 1005313 &&
                  QX_ERR_INVALID_POSITION == 1005315 && QX_ERR_REMOVING_POINTS == 1005316,
              "the host's codes");

class DefiningData : public qxtest::QxTest
{
  protected:
    template <class F>
    static void expect_checked(F f, int code, const char *text, const char *file,
                               bool run_unchecked = true)
    {
        QxTest::expect_checked(f, file, code, text, run_unchecked);
    }
};

PNTLST *list(const Points &v, int dimension = 1)
{
    return PNTLST_create_from_list_of_pts(qxtest::host_copy(v),
                                          static_cast<int>(v.size()) / dimension, dimension);
}

Points values(const PNTLST *l)
{
    return l == nullptr ? Points{} : Points(l->points, l->points + l->num_points * l->dimension);
}

// Parameters, slopes, slope parameters, curvatures, curvature parameters.
Lists vectors(const BCDF *df)
{
    return {values(df->params), values(df->slopes), values(df->slope_params), values(df->crvatrs),
            values(df->crvatr_params)};
}

// Everything a record holds, read through its fields (the knot address
// apart).
Lists contents(const BCDF *df)
{
    Lists c;
    for (const PNTLST *l : {df->points, df->weights, df->params, df->slopes, df->slope_params,
                            df->crvatrs, df->crvatr_params}) {
        c.push_back(values(l));
        c.push_back({l != nullptr ? double(l->dimension) : -1.0});
    }
    c.emplace_back(df->slope_types, df->slope_types + df->slopes->num_points);
    c.emplace_back(df->crvatr_types, df->crvatr_types + df->crvatrs->num_points);
    c.push_back({df->ls_tolerance, double(df->ls_num_of_segments), double(df->order),
                 double(df->periodicity), double(df->num_of_knots)});
    return c;
}

// Chord-length sums written out: t[i] = t[i-1] + sqrt(sum of squares)^e;
// weights half the neighbours' span.
Points chord_oracle(const Points &v, size_t d, double e)
{
    Points t(v.size() / d, 0.0);
    for (size_t i = 1; i < t.size(); ++i) {
        double s = 0.0;
        for (size_t k = i * d; k < i * d + d; ++k) s += (v[k] - v[k - d]) * (v[k] - v[k - d]);
        t[i] = t[i - 1] + (e == 1.0 ? std::sqrt(s) : std::pow(std::sqrt(s), e));
    }
    return t;
}
Points weight_oracle(const Points &t)
{
    const size_t n = t.size();
    Points w(n);
    for (size_t i = 0; i < n; ++i) w[i] = (t[i + 1 < n ? i + 1 : i] - t[i > 0 ? i - 1 : 0]) / 2;
    return w;
}

Points random_points(std::mt19937 &gen, int n, int dim)
{
    std::uniform_real_distribution<double> u(-50.0, 50.0), weight(0.5, 2.0);
    Points v(static_cast<size_t>(n * dim));
    for (size_t i = 0; i < v.size(); ++i) v[i] = (dim == 4 && i % 4 == 3) ? weight(gen) : u(gen);
    return v;
}

// Points (0,0,0) (1,0,0) (1,2,0) (1,2,2) (chord lengths 0 1 3 5) with given
// uniform parameters 0 1 2 3, slopes at parameters 0 and 3 (types 1, 2), a
// curvature at 2 (type 7), open, order 4; least-squares with ls 1, a knot
// sequence attached when given.
BCDF *sample_record(int ls = 0, double *knots = nullptr)
{
    BCDF *df = BCDF_create_from_pntlst(0, 4, ls, list({0, 0, 0, 1, 0, 0, 1, 2, 0, 1, 2, 2}, 3),
                                       list({0, 1, 2, 3}), nullptr, list({1, 0, 0, 0, 0, 2}, 3),
                                       list({0, 3}), qxtest::host_copy<int>({1, 2}),
                                       list({0, 1, 0}, 3), list({2}), qxtest::host_copy<int>({7}));
    df->ls_num_of_segments = 3 * ls;
    df->ls_tolerance = 0.125 * ls;
    BCDF_attach_knot_sequence(df, knots, knots != nullptr ? 3 : 0);
    return df;
}

TEST_F(DefiningData, ParametersAndWeightsBitForBit)
{
    std::mt19937 gen(4201);
    for (size_t dim : {3u, 4u}) {
        const Points v = random_points(gen, 9, int(dim));
        for (double e : {1.0, 0.5}) {
            Points t(9, kNaN), w(9, kNaN);
            BCDF_CALC_parameters(9, int(dim), v.data(), e, t.data());
            EXPECT_EQ(t, chord_oracle(v, dim, e)) << dim << " " << e;
            BCDF_CALC_weights(9, t.data(), w.data());
            EXPECT_EQ(w, weight_oracle(t));
            for (int i = 0; i < 9; ++i)
                EXPECT_EQ(BCDF_CALC_single_weight(9, t.data(), i), w[size_t(i)]);
        }
    }
    // Coincident points or a NaN: uniform with step n - 1 (not 1/(n - 1)).
    const Points same = {1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3}, nan = {0, 0, 0, kNaN, 0, 0, 1, 0, 0};
    Points t(4, kNaN);
    BCDF_CALC_parameters(4, 3, same.data(), 1.0, t.data());
    EXPECT_EQ(t, (Points{0, 3, 6, 9}));
    BCDF_CALC_parameters(3, 3, nan.data(), 1.0, t.data());
    EXPECT_EQ(t, (Points{0, 2, 4, 9}));
    // A total of exactly 1.0e-10 is uniform too; just above, it is kept.
    const double above = std::nextafter(1.0e-10, 1.0);
    for (double x : {1.0e-10, above}) {
        const Points two = {0, 0, 0, x, 0, 0};
        BCDF_CALC_parameters(2, 3, two.data(), 1.0, t.data());
        EXPECT_EQ(t[1], x == above ? above : 1.0);
    }
    // One point: t[0] = 0 and w[0] = 0; none: nothing written.
    Points one = {kNaN, kNaN, kNaN};
    BCDF_CALC_parameters(1, 3, same.data(), 1.0, one.data());
    BCDF_CALC_parameters(0, 3, same.data(), 1.0, one.data() + 2);
    BCDF_CALC_weights(1, t.data(), one.data() + 1);
    BCDF_CALC_weights(0, t.data(), one.data() + 2);
    EXPECT_EQ(one[0] + one[1], 0.0);
    EXPECT_TRUE(std::isnan(one[2]));
    expect_checked([&] { EXPECT_EQ(BCDF_CALC_single_weight(1, t.data(), 0), 0.0); }, 0,
                   "Not Enough Parameters", "bcdf_calc");
}

TEST_F(DefiningData, CreationTakesOverWhatItIsGiven)
{
    srfc1_.ls_tolerance = 0.025;
    std::mt19937 gen(4203);
    const Points v = random_points(gen, 6, 4), t = chord_oracle(v, 4, 1.0);
    for (int ls : {0, 1}) {
        double *array = qxtest::host_copy(v);
        BCDF *df = BCDF_create_df_from_pts(array, 6, 4, ls);
        EXPECT_EQ(df->points->points, array);
        EXPECT_EQ(df->points->max_points, 6);
        EXPECT_EQ(values(df->weights), ls == 1 ? weight_oracle(t) : Points{});
        EXPECT_EQ(df->ls_tolerance, ls == 1 ? 0.025 : 0.0);
        BCDF_free_structure(df);
    }
    // Chord lengths 0 5 17: slope and curvature parameters snap to them, with
    // nothing to rescale from. Not least-squares: the weights are dropped.
    srfc1_.ls_tolerance = 0.5;
    const Points pts = {0, 0, 0, 3, 4, 0, 3, 4, 12};
    BCDF *df = BCDF_create_from_pntlst(0, 3, 0, list(pts, 3), nullptr, list({9, 9, 9}),
                                       list({1, 0, 0, 0, 0, 1}, 3), list({5e-11, 17}),
                                       qxtest::host_copy<int>({1, 2}), list({0, 1, 0}, 3),
                                       list({5}), qxtest::host_copy<int>({3}));
    EXPECT_EQ(vectors(df), (Lists{{0, 5, 17}, {1, 0, 0, 0, 0, 1}, {0, 17}, {0, 1, 0}, {5}}));
    EXPECT_EQ(df->slope_types[1] * 10 + df->crvatr_types[0] + df->order * 100, 323);
    EXPECT_EQ(df->weights, nullptr);
    EXPECT_EQ(df->ls_tolerance, 0.0);
    BCDF_free_structure(df);
    // Least squares: weights computed when missing, kept when given.
    PNTLST *none = nullptr;
    df = BCDF_create_from_pntlst(0, 4, 1, list(pts, 3), none, none, none, none, nullptr, none, none,
                                 nullptr);
    EXPECT_EQ(values(df->weights), (Points{2.5, 8.5, 6}));
    EXPECT_EQ(df->ls_tolerance, 0.5);
    BCDF_free_structure(df);
    df = BCDF_create_from_pntlst(0, 4, 1, list(pts, 3), list({0, 1, 2}), list({4, 4, 4}), none,
                                 none, nullptr, none, none, nullptr);
    EXPECT_EQ(values(df->params), (Points{0, 1, 2}));
    EXPECT_EQ(values(df->weights), (Points{4, 4, 4}));
    EXPECT_EQ(df->ls_tolerance, 0.5);
    BCDF_free_structure(df);
    // Periodic least squares is refused (the host unwinds, then ends the
    // operation). Argument checks come before anything is taken over;
    // unchecked, a missing point list makes an empty record.
    expect_checked(
        [&] {
            BCDF_free_structure(BCDF_create_from_pntlst(1, 4, 1, list(pts, 3), none, none, none,
                                                        none, nullptr, none, none, nullptr));
        },
        QX_ERR_PERIODIC_LEAST_SQUARES, "Periodic Least Squares Splines Are Not Allowed",
        "bcdf_gen");
    qxsys_end_operation();
    expect_checked(
        [&] {
            df = BCDF_create_from_pntlst(0, 4, 0, none, none, none, none, none, nullptr, none, none,
                                         nullptr);
            EXPECT_EQ(BCDF_return_num_of_points(df), 0);
            BCDF_free_structure(df);
        },
        QX_ERR_NO_POINTS, "The Point List Is NULL", "bcdf_gen");
    PNTLST *p = list(pts, 3), *s = list({1, 0, 0}, 3);
    expect_checked(
        [&] {
            BCDF_create_from_pntlst(0, 4, 0, p, none, none, s, none, nullptr, none, none, nullptr);
        },
        QX_ERR_SLOPE_POSITIONS_NULL, "Slope Position Array Is NULL", "bcdf_gen", false);
    PNTLST_free_structure(p);
    PNTLST_free_structure(s);
}

TEST_F(DefiningData, SlopesAndCurvaturesFollowNewParameters)
{
    // Chord lengths 0 1 3 5 replace 0 1 2 3 in the same list: slopes times
    // 3/5, curvatures as they are.
    BCDF *df = sample_record();
    PNTLST *params = df->params;
    BCDF_add_params(df, nullptr);
    EXPECT_EQ(df->params, params);
    const double f = 3.0 / 5.0;
    EXPECT_EQ(vectors(df),
              (Lists{{0, 1, 3, 5}, {1 * f, 0, 0, 0, 0, 2 * f}, {0, 5}, {0, 1, 0}, {3}}));
    // Given parameters, then the record's own array passed back.
    const Points given = {0, 2, 4, 10};
    BCDF_add_params(df, given.data());
    int n = 0;
    BCDF_add_params(df, BCDF_return_param_array(df, &n));
    const double g = f * 0.5;
    EXPECT_EQ(vectors(df), (Lists{given, {1 * g, 0, 0, 0, 0, 2 * g}, {0, 10}, {0, 1, 0}, {4}}));
    // A new point: the list grows; each slope and the curvature stay with
    // their points.
    const double p[3] = {1, 2, 4};
    PNTLST_concat_one_point(df->points, p);
    BCDF_add_params(df, nullptr);
    const double h = g * (10.0 / 7.0);
    EXPECT_EQ(vectors(df),
              (Lists{{0, 1, 3, 5, 7}, {1 * h, 0, 0, 0, 0, 2 * h}, {0, 5}, {0, 1, 0}, {3}}));
    // Weights follow the parameters; a periodic record has none.
    BCDF_add_weights(df);
    EXPECT_EQ(values(df->weights), weight_oracle(values(df->params)));
    df->periodicity = 1;
    expect_checked([&] { BCDF_add_weights(df); }, QX_ERR_PERIODIC_LEAST_SQUARES,
                   "Periodic Least Squares Splines Are Not Allowed", "bcdf_gen");
    BCDF_free_structure(df);
}

TEST_F(DefiningData, Queries)
{
    double knots[3] = {0, 1, 2};
    BCDF *df = sample_record(0, knots);
    EXPECT_EQ(BCDF_return_num_of_points(df), 4);
    EXPECT_EQ(BCDF_return_num_of_slopes(df) * 10 + BCDF_return_num_of_crvatrs(df), 21);
    EXPECT_EQ(BCDF_return_num_of_constraints(df), 7);
    df->periodicity = 1; // the closing point is no constraint of its own
    EXPECT_EQ(BCDF_return_num_of_constraints(df), 6);
    df->periodicity = 0;
    int n[2], d = -1;
    EXPECT_EQ(BCDF_return_knot_sequence(df, &n[0]), knots);
    EXPECT_EQ(n[0], 3);
    BCDF_detach_knot_sequence(df);
    EXPECT_EQ(BCDF_return_knot_sequence(df, &n[0]), nullptr);
    EXPECT_EQ(n[0], 0);
    // A cubic with both end tangents (within 1.0e-10) and no curvature.
    EXPECT_EQ(BCDF_is_qx_spline(df), 0);
    PNTLST *curvatures = df->crvatrs;
    df->crvatrs = nullptr;
    for (auto [end, order, expected] :
         {std::tuple{3.0, 4, 1}, {3 + 5e-11, 4, 1}, {3 + 2e-10, 4, 0}, {1.0, 4, 0}, {3.0, 3, 0}}) {
        df->slope_params->points[1] = end;
        df->order = order;
        EXPECT_EQ(BCDF_is_qx_spline(df), expected) << end << " " << order;
    }
    df->crvatrs = curvatures;
    // Point positions (1-based); an unmatched slope stops the cursor, so it
    // and every later slope stay 0.
    for (auto [first, expected] : {std::pair{0.0, std::vector<int>{1, 4}}, {0.5, {0, 0}}}) {
        df->slope_params->points[0] = first;
        int *pos = BCDF_create_slope_pos_array(df, &n[0]);
        EXPECT_EQ(std::vector<int>(pos, pos + n[0]), expected);
        SM_free(pos);
    }
    int *pos = BCDF_create_crvatr_pos_array(df, &n[0]);
    EXPECT_EQ(std::vector<int>(pos, pos + n[0]), std::vector<int>{3});
    SM_free(pos);
    // Missing lists read as empty.
    PNTLST_free_structure(df->slopes);
    df->slopes = nullptr;
    n[0] = n[1] = -1;
    EXPECT_EQ(BCDF_create_slope_pos_array(df, &n[0]), nullptr);
    EXPECT_EQ(BCDF_return_slope_array(df, &n[1], &d), nullptr);
    EXPECT_EQ(BCDF_return_weight_array(df, &n[1]), nullptr);
    EXPECT_EQ(n[0] + n[1] + d + BCDF_return_num_of_slopes(df), 0);
    // Settings of least-squares records and the order are checked.
    const char *const no_weights = "Weights List Has A NULL Value";
    const char *const no_df = "Defining Data Structure Is NULL";
    expect_checked([&] { EXPECT_EQ(BCDF_return_ls_tolerance(df), 0.0); }, 0, no_weights, "bcdf");
    expect_checked([&] { BCDF_return_ls_num_of_segments(df); }, 0, no_weights, "bcdf");
    expect_checked([&] { BCDF_return_ls_num_of_segments(nullptr); }, 0, no_df, "bcdf");
    expect_checked([&] { BCDF_return_ls_tolerance(nullptr); }, 0, no_df, "bcdf");
    expect_checked([&] { EXPECT_EQ(BCDF_return_order(nullptr), 0); }, 0, no_df, "bcdf");
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
        list({0, 1}), qxtest::host_copy<int>({4, 5}), list({7, 8, 9, 10}, 4), list({1}), nullptr);
    double p[9] = {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
    int type[2] = {-1, -1};
    BCDF_copy_single_3d_point(df, 0, p);
    BCDF_copy_single_3d_slope(df, 1, p + 3, &type[0]);
    BCDF_copy_single_3d_crvatr(df, 0, p + 6, &type[1]); // the dimension is the stride
    EXPECT_EQ(Points(p, p + 9), (Points{1, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_EQ(type[0] * 10 + type[1], 50) << "type 0 without a type array";
    // Bad positions and lists: nothing written.
    double q[3] = {kNaN, kNaN, kNaN};
    int t = -1;
    expect_checked([&] { BCDF_copy_single_3d_point(df, 2, q); }, QX_ERR_POINT_POSITION_TOO_LARGE,
                   "Point Position Too Large For Point Array.", "bcdf");
    expect_checked([&] { BCDF_copy_single_3d_slope(df, -1, q, &t); }, QX_ERR_INVALID_POSITION,
                   "An Invalid Slope Position Was Given By Calling Routine", "bcdf");
    expect_checked([&] { BCDF_copy_single_3d_crvatr(df, 1, q, &t); }, QX_ERR_INVALID_POSITION,
                   "An Invalid Curvature Position Was Given By Calling Routine", "bcdf");
    df->points->dimension = 2;
    expect_checked([&] { BCDF_copy_single_3d_point(df, 0, q); }, QX_ERR_POINT_DIMENSION,
                   "Point Dimension Is Not 3 Or 4.", "bcdf");
    df->points->dimension = 4;
    PNTLST_free_structure(df->slopes);
    df->slopes = nullptr;
    PNTLST *points = df->points;
    df->points = nullptr;
    expect_checked([&] { BCDF_copy_single_3d_slope(df, 0, q, &t); }, QX_ERR_NO_SLOPE,
                   "No Slope Allocated In Defining Data Structure.", "bcdf");
    expect_checked([&] { BCDF_copy_single_3d_point(df, 0, q); }, QX_ERR_NO_POINTS,
                   "No Points Allocated In Defining Data Structure.", "bcdf");
    EXPECT_TRUE(std::isnan(q[0]) && std::isnan(q[1]) && std::isnan(q[2]));
    EXPECT_EQ(t, -1);
    df->points = points;
    BCDF_free_structure(df);
}

// A copy for the caller, read and freed.
template <class T> Points taken(T *copy, int n)
{
    const Points v(copy, copy + n);
    SM_free(copy);
    return v;
}

TEST_F(DefiningData, Copies)
{
    double knots[3] = {0, 0.5, 1};
    BCDF *df = sample_record(1, knots);
    int n = -1, d = -1;
    double *a = BCDF_copy_points(df, &n, &d);
    EXPECT_NE(a, df->points->points);
    EXPECT_EQ(taken(a, n * d), values(df->points));
    a = BCDF_copy_parameters(df, &n);
    EXPECT_EQ(taken(a, n), values(df->params));
    a = BCDF_copy_slopes(df, &n, &d);
    EXPECT_EQ(taken(a, n * d), values(df->slopes));
    a = BCDF_copy_slope_pars(df, &n);
    EXPECT_EQ(taken(a, n), values(df->slope_params));
    int *types = BCDF_copy_slope_type_array(df);
    EXPECT_EQ(SM_length(types), 2 * sizeof(int));
    EXPECT_EQ(taken(types, 2), (Points{1, 2}));
    EXPECT_EQ(taken(BCDF_copy_crvatr_type_array(df), 1), (Points{7}));
    // The whole record: every list copied with capacity equal to its count,
    // no knot sequence.
    PNTLST_concat_one_point(df->params, knots); // spare capacity in the original
    df->params->num_points = 4;
    BCDF *copy = BCDF_copy_structure(df);
    PNTLST *const *mine = &df->points, *const *theirs = &copy->points;
    for (int k = 0; k < 7; ++k) {
        EXPECT_NE(theirs[k]->points, mine[k]->points);
        EXPECT_EQ(theirs[k]->max_points, mine[k]->num_points) << k;
    }
    EXPECT_NE(copy->slope_types, df->slope_types);
    df->num_of_knots = 0;
    EXPECT_EQ(contents(copy), contents(df));
    EXPECT_EQ(copy->knot_sequence, nullptr);
    BCDF_free_structure(df);
    EXPECT_EQ(BCDF_copy_structure(nullptr), nullptr);
    // Slopes absent: NULL with zero counts, unreported. Points and
    // parameters are required.
    PNTLST_free_structure(copy->slopes);
    PNTLST_free_structure(copy->slope_params);
    copy->slopes = copy->slope_params = nullptr;
    int m = n = d = -1;
    EXPECT_EQ(BCDF_copy_slopes(copy, &n, &d), nullptr);
    EXPECT_EQ(BCDF_copy_slope_pars(copy, &m), nullptr);
    EXPECT_EQ(n + d + m, 0);
    EXPECT_EQ(BCDF_copy_slope_type_array(copy), nullptr);
    PNTLST *points = copy->points, *params = copy->params;
    copy->points = copy->params = nullptr;
    expect_checked([&] { EXPECT_EQ(BCDF_copy_points(copy, &n, &d), nullptr); }, QX_ERR_NO_POINTS,
                   "Point Array Is NULL", "bcdf");
    expect_checked([&] { BCDF_copy_parameters(copy, &n); }, QX_ERR_PARAMETERS_NULL,
                   "Parameter Array Is NULL", "bcdf");
    copy->points = points;
    copy->params = params;
    // free_all_but_points: the record, five lists with their arrays and two
    // type arrays go; only the coordinates survive.
    const size_t live = qxsys_live_blocks();
    double *coordinates = BCDF_return_df_point_array(copy, &n, &d);
    const Points expected = values(copy->points);
    BCDF_free_all_but_points(copy);
    EXPECT_EQ(qxsys_live_blocks(), live - 12u);
    EXPECT_EQ(taken(coordinates, n * d), expected);
}

size_t persistent_blocks()
{
    qxsys_memory_stats stats{};
    qxsys_memory_stats_get(&stats);
    return stats.persistent_blocks;
}

TEST_F(DefiningData, PersistentRecordOutlivesTheOperation)
{
    double knots[3] = {0, 0.5, 1};
    BCDF *df = sample_record(1, knots);
    const Lists before = contents(df);
    EXPECT_EQ(BCDF_make_bcdf_data_persistent(nullptr), nullptr);
    BCDF *p = BCDF_make_bcdf_data_persistent(df);
    // The transient record was freed and every block is persistent: nothing
    // is left for the end of the operation to reclaim.
    EXPECT_EQ(qxsys_end_operation(), 0u);
    EXPECT_EQ(persistent_blocks(), 1u + 7u * 2u + 2u);
    EXPECT_EQ(qxsys_block_kind_of(p->crvatr_params->points), QXSYS_PERSISTENT);
    EXPECT_EQ(contents(p), before);
    EXPECT_EQ(p->knot_sequence, knots);
    BCDF_add_params(p, nullptr); // still a working record
    EXPECT_EQ(values(p->params), (Points{0, 1, 3, 5}));
    BCDF_free_structure(p);
    EXPECT_EQ(persistent_blocks(), 0u);
    // A list around an array it does not own gets a copy of its own.
    Points outside = {0, 1, 2, 3};
    df = sample_record(1, knots);
    PNTLST_free_structure(df->params);
    df->params = PNTLST_create_from_list_of_pts(outside.data(), 4, 1);
    df->params->max_points = 0;
    p = BCDF_make_bcdf_data_persistent(df);
    EXPECT_EQ(qxsys_end_operation(), 0u);
    EXPECT_EQ(p->params->max_points, 4);
    EXPECT_EQ(qxsys_block_kind_of(p->params->points), QXSYS_PERSISTENT);
    EXPECT_EQ(values(p->params), outside);
    BCDF_free_structure(p);
    // The n-th persistent allocation fails, the host unwinding: every
    // persistent block made is gone, and the transient record is whole. The
    // 18th is never asked for.
    const std::string message = "Failed to allocate permanent memory for transient conversion of ";
    for (long n = 1; n <= 18; ++n) {
        df = sample_record(1, knots);
        qxsys_fail_allocation(n);
        const std::optional<qxsys_report> r =
            qxsys::first_error([&] { p = BCDF_make_bcdf_data_persistent(df); });
        qxsys_fail_allocation(0);
        if (n == 18) {
            EXPECT_FALSE(r.has_value());
            BCDF_free_structure(p);
            break;
        }
        ASSERT_TRUE(r.has_value()) << n;
        EXPECT_EQ(r->kind, QXSYS_INTERNAL);
        EXPECT_STREQ(r->file, "bcdf_gen");
        EXPECT_EQ(std::string(r->text).rfind(message, 0), 0u) << r->text;
        if (n == 1) {
            EXPECT_EQ(r->text, message + std::to_string(sizeof(BCDF)) + " bytes");
        }
        EXPECT_EQ(persistent_blocks(), 0u) << n;
        EXPECT_EQ(contents(df), before);
        BCDF_free_structure(df);
    }
    // A host that returns from the report: NULL, and the record stays.
    df = sample_record(1, knots);
    qxsys_clear_reports();
    qxsys_fail_allocation(5);
    EXPECT_EQ(BCDF_make_bcdf_data_persistent(df), nullptr);
    EXPECT_EQ(qxsys_report_count(), 1);
    EXPECT_EQ(persistent_blocks(), 0u);
    EXPECT_EQ(contents(df), before);
    BCDF_free_structure(df);
}

} // namespace

namespace
{

TEST_F(DefiningData, EveryArrayQueryHandsOutTheRecordsOwn)
{
    BCDF *df = sample_record(1);
    int n = -1, d = -1;
    // Each query: the list it reads, what it returns, its count and (for
    // vector lists) its dimension.
    const PNTLST *points = df->points, *slopes = df->slopes, *crvatrs = df->crvatrs;
    EXPECT_EQ(BCDF_return_df_point_array(df, &n, &d), points->points);
    EXPECT_EQ(n * 10 + d, 43);
    EXPECT_EQ(BCDF_return_slope_array(df, &n, &d), slopes->points);
    EXPECT_EQ(n * 10 + d, 23);
    EXPECT_EQ(BCDF_return_crvatr_array(df, &n, &d), crvatrs->points);
    EXPECT_EQ(n * 10 + d, 13);
    for (auto [query, own, count] : {std::tuple{&BCDF_return_param_array, df->params->points, 4},
                                     {&BCDF_return_slope_pars_array, df->slope_params->points, 2},
                                     {&BCDF_return_crvatr_pars_array, df->crvatr_params->points, 1},
                                     {&BCDF_return_weight_array, df->weights->points, 4}}) {
        n = -1;
        EXPECT_EQ(query(df, &n), own);
        EXPECT_EQ(n, count);
    }
    EXPECT_EQ(BCDF_return_slope_type_array(df), df->slope_types);
    EXPECT_EQ(BCDF_return_crvatr_type_array(df), df->crvatr_types);
    EXPECT_EQ(BCDF_is_least_squares(df), 1);
    df->periodicity = 1;
    EXPECT_EQ(BCDF_return_periodicity(df), 1);
    PNTLST_free_structure(df->weights);
    df->weights = nullptr;
    EXPECT_EQ(BCDF_is_least_squares(df), 0);
    BCDF_free_structure(df);

    // No record reads as an empty one, silently even when checking.
    qxsys_clear_reports();
    MACH__checking_level = 1;
    n = d = -1;
    EXPECT_EQ(BCDF_return_df_point_array(nullptr, &n, &d), nullptr);
    EXPECT_EQ(n + d, 0);
    for (auto query : {&BCDF_return_slope_array, &BCDF_return_crvatr_array}) {
        n = d = -1;
        EXPECT_EQ(query(nullptr, &n, &d), nullptr);
        EXPECT_EQ(n + d, 0);
    }
    for (auto query : {&BCDF_return_param_array, &BCDF_return_slope_pars_array,
                       &BCDF_return_crvatr_pars_array, &BCDF_return_weight_array}) {
        n = -1;
        EXPECT_EQ(query(nullptr, &n), nullptr);
        EXPECT_EQ(n, 0);
    }
    for (auto query : {&BCDF_create_slope_pos_array, &BCDF_create_crvatr_pos_array}) {
        n = -1;
        EXPECT_EQ(query(nullptr, &n), nullptr);
        EXPECT_EQ(n, 0);
    }
    n = -1;
    EXPECT_EQ(BCDF_return_knot_sequence(nullptr, &n), nullptr);
    EXPECT_EQ(n, 0);
    EXPECT_EQ(BCDF_return_slope_type_array(nullptr), nullptr);
    EXPECT_EQ(BCDF_return_crvatr_type_array(nullptr), nullptr);
    EXPECT_EQ(BCDF_return_periodicity(nullptr) + BCDF_is_least_squares(nullptr) +
                  BCDF_is_qx_spline(nullptr),
              0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

} // namespace
