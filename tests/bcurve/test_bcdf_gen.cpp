// The settings, lookups, editing, validation and normalisation of a
// defining-data record: exact results, the reports at checking level 1
// (file, code, message) and silence at 0, the order of the whole-record
// check, and ownership on failing allocations. (The edits' bookkeeping on
// random records is the business of test_bcdf_random_edits.)
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <functional>
#include <optional>
#include <vector>

#include "bcurve/bcurve_internal.h"
#include "support/qx_test.h"

namespace
{

using Doubles = std::vector<double>;
using qxtest::kNaN;

// The host's codes: their numbers are part of the interface.
static_assert(QX_BCDF_LS_SEGMENTS == 1005005 && QX_BCDF_LS_TOLERANCE == 1005006 &&
                  QX_BCDF_TOO_FEW_CONSTRAINTS == 1005311 &&
                  QX_BCDF_TOO_MANY_CONSTRAINTS == 1005317 &&
                  QX_BCDF_CURVATURE_WITHOUT_SLOPE == 1005318 &&
                  QX_BCDF_CURVATURE_NOT_PERPENDICULAR == 1005319 &&
                  QX_BCDF_ORDER_TOO_LOW == 1005320 && QX_BCDF_TOO_FEW_POINTS == 1005321 &&
                  QX_BCDF_PARAMS_NOT_INCREASING == 1005322,
              "the host's codes");

const char *const kBadPoint = "An Invalid Point Position Was Given By Calling Routine";
const char *const kBadSlope = "An Invalid Slope Position Was Given By Calling Routine";
const char *const kBadCrvatr = "An Invalid Curvature Position Was Given By Calling Routine";
const char *const kNoPoints = "No Points Allocated In Defining Data Structure.";

class BcdfGen : public qxtest::QxTest
{
  protected:
    template <class F> static void expect_checked(F f, int code, const char *text)
    {
        QxTest::expect_checked(f, "bcdf_gen", code, text);
    }
};

// An open order-4 record around a copy of the points (chord-length
// parameters; least-squares when ls is 1).
BCDF *make(const Doubles &pts, int dimension = 3, int ls = 0)
{
    double *a = static_cast<double *>(SM_alloc(pts.size() * sizeof(double)));
    std::memcpy(a, pts.data(), pts.size() * sizeof(double));
    return BCDF_create_df_from_pts(a, static_cast<int>(pts.size()) / dimension, dimension, ls);
}

// n points on a bent line, all distinct.
Doubles bent(int n)
{
    Doubles p;
    for (int i = 0; i < n; ++i) p.insert(p.end(), {1.0 * i, 0.5 * i * i, 0.25 * (i % 3)});
    return p;
}

Doubles values(const PNTLST *l)
{
    return l == nullptr ? Doubles{} : Doubles(l->points, l->points + l->num_points * l->dimension);
}

// Chord-length parameters of 3-D points, computed here.
Doubles chord(const Doubles &p)
{
    Doubles t(p.size() / 3, 0.0);
    for (size_t i = 1; i < t.size(); ++i) {
        const double dx = p[3 * i] - p[3 * i - 3], dy = p[3 * i + 1] - p[3 * i - 2],
                     dz = p[3 * i + 2] - p[3 * i - 1];
        t[i] = t[i - 1] + std::sqrt(dx * dx + dy * dy + dz * dz);
    }
    return t;
}

// Parameters, slope parameters, slopes, curvature parameters.
std::vector<Doubles> state(const BCDF *df)
{
    return {values(df->params), values(df->slope_params), values(df->slopes),
            values(df->crvatr_params)};
}

Doubles slope_of(const BCDF *df, int i)
{
    const double *s = df->slopes->points + 3 * i;
    return {s[0], s[1], s[2]};
}

const double kX[3] = {1, 0, 0}, kY[3] = {0, 1, 0};

TEST_F(BcdfGen, Settings)
{
    // The order is stored whatever it is; outside 2 .. 25 it is reported.
    BCDF *df = make(bent(6));
    MACH__checking_level = 1;
    BCDF_change_order(df, 25);
    BCDF_change_order(df, 2);
    MACH__checking_level = 0;
    EXPECT_EQ(qxsys_report_count(), 0);
    EXPECT_EQ(df->order, 2);
    expect_checked([&] { BCDF_change_order(df, 26); }, 0, "Maximum Order For Spline Exceeded");
    EXPECT_EQ(df->order, 26);
    expect_checked([&] { BCDF_change_order(df, 1); }, 0, "Order Must Be Greater Than 1");
    EXPECT_EQ(df->order, 1);
    // Tolerance and segment count exclude each other; either makes the
    // record least-squares first.
    srfc1_.ls_tolerance = 0.125;
    EXPECT_EQ(BCDF_change_number_of_segments(df, 3), 3);
    EXPECT_EQ(df->weights->num_points, 6);
    EXPECT_EQ(df->ls_num_of_segments, 3);
    EXPECT_EQ(df->ls_tolerance, 0.0);
    BCDF_change_tolerance(df, 0.5);
    EXPECT_EQ(df->ls_tolerance, 0.5);
    EXPECT_EQ(df->ls_num_of_segments, 0);
    // A weight is replaced; the position is checked.
    const double w = 7.5;
    BCDF_replace_weight(df, 2, &w);
    EXPECT_EQ(df->weights->points[2], 7.5);
    const Doubles before = values(df->weights);
    expect_checked([&] { BCDF_replace_weight(df, 6, &w); }, QX_ERR_INVALID_POSITION, kBadPoint);
    EXPECT_EQ(values(df->weights), before);
    BCDF_free_structure(df);
    df = make(bent(4)); // not least-squares: nothing to replace
    BCDF_replace_weight(df, 0, &w);
    EXPECT_EQ(df->weights, nullptr);
    BCDF_free_structure(df);
    // An open least-squares record is reported when closed, and closed all
    // the same, keeping one weight per point.
    df = make(bent(4), 3, 1);
    qxsys_clear_reports();
    MACH__checking_level = 1;
    BCDF_toggle_periodicity(df);
    MACH__checking_level = 0;
    ASSERT_EQ(qxsys_report_count(), 1);
    EXPECT_STREQ(last_report().text, "Periodic Least Squares Curves Are Not Allowed");
    EXPECT_STREQ(last_report().file, "bcdf_gen");
    EXPECT_EQ(df->periodicity, 1);
    EXPECT_EQ(BCDF_return_num_of_points(df) * 10 + df->weights->num_points, 55);
    BCDF_free_structure(df);
    // Opening drops a slope tied to the closing point; the first point's stays.
    df = make(bent(4));
    BCDF_toggle_periodicity(df);
    BCDF_change_slope(df, 0, kX, 1);
    BCDF_change_slope(df, 3, kY, 2);
    df->slope_params->points[1] = df->params->points[4];
    BCDF_toggle_periodicity(df);
    EXPECT_EQ(values(df->slope_params), (Doubles{0.0}));
    EXPECT_EQ(df->slope_types[0], 1);
    BCDF_free_structure(df);
}

TEST_F(BcdfGen, LookupsTieByParameterWithinTheThreshold)
{
    BCDF *df = make(bent(3));
    const double t[3] = {0.0, 1.0, 2.0};
    BCDF_add_params(df, t);
    BCDF_change_slope(df, 2, kX, 0);
    BCDF_change_slope(df, 0, kX, 0);
    int index = -7;
    EXPECT_EQ(BCDF_slope_at_point(df, 1, &index), 0);
    EXPECT_EQ(index, 1); // where a slope of point 1 would go
    // 1.0e-10 away still matches; the next double further does not.
    df->slope_params->points[0] = 1.0e-10;
    EXPECT_EQ(BCDF_slope_at_point(df, 0, &index), 1);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(BCDF_point_at_slope(df, 0), 0);
    df->slope_params->points[0] = std::nextafter(1.0e-10, 1.0);
    EXPECT_EQ(BCDF_slope_at_point(df, 0, &index), 0);
    EXPECT_EQ(index, 0);
    // A slope that matches no point gives the count: corrupt.
    expect_checked([&] { EXPECT_EQ(BCDF_point_at_slope(df, 0), 3); }, 0,
                   "Bcurve Defining Data Structure Corrupt");
    expect_checked([&] { EXPECT_EQ(BCDF_point_at_curvature(df, 0), 3); }, 0,
                   "Bcurve Defining Data Structure Corrupt");
    df->slope_params->points[0] = 0.0;
    // No curvatures: untouched outputs.
    index = -7;
    int si = -7;
    double v[3] = {kNaN, kNaN, kNaN};
    EXPECT_EQ(BCDF_curvature_at_point(df, 0, &index), 0);
    EXPECT_EQ(BCDF_curvature_at_slope(df, 0, &index), 0);
    EXPECT_EQ(BCDF_slope_at_curvature(df, 0, &si, v), 0);
    EXPECT_EQ(index * si, 49);
    // The curvature at point 2 shares the slope; one at point 1 has none.
    BCDF_change_curvature(df, 2, kY, 4);
    EXPECT_EQ(BCDF_curvature_at_slope(df, 1, &index), 1);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(BCDF_curvature_at_slope(df, 0, &index), 0);
    EXPECT_EQ(index, 0);
    const double s2[3] = {3, 0, 5};
    BCDF_replace_slope(df, 1, s2, 2);
    EXPECT_EQ(BCDF_slope_at_curvature(df, 0, &si, v), 1);
    EXPECT_EQ(si, 1);
    EXPECT_EQ(Doubles(v, v + 3), (Doubles{3, 0, 5}));
    BCDF_change_curvature(df, 1, kY, 4); // inserted first
    si = -7;
    v[0] = kNaN;
    expect_checked([&] { EXPECT_EQ(BCDF_slope_at_curvature(df, 0, &si, v), 0); }, 0,
                   "Point With Assigned Curvature Has No Slope");
    EXPECT_EQ(si, -7);
    EXPECT_TRUE(std::isnan(v[0]));
    BCDF_free_structure(df);
}

TEST_F(BcdfGen, CheckFindsTheFirstFailure)
{
    MACH__checking_level = 1; // the check itself never reports
    const double tilted[3] = {1, 1, 0}, on_edge[3] = {1, 1.0e-7, 0};
    const double over[3] = {1, std::nextafter(1.0e-7, 1.0), 0};
    const double repeated[4] = {0, 1, 1, 2}, swapped[3] = {0, 2, 1};
    const auto slope = [](int p, const double *s) {
        return [=](BCDF *df) { BCDF_change_slope(df, p, s, 0); };
    };
    const auto curvature = [](int p, const double *k) {
        return [=](BCDF *df) { BCDF_change_curvature(df, p, k, 0); };
    };
    const auto ls = [](double tolerance, int segments) {
        return [=](BCDF *df) {
            df->ls_tolerance = tolerance;
            df->ls_num_of_segments = segments;
        };
    };
    const auto params = [](const double *t) { return [=](BCDF *df) { BCDF_add_params(df, t); }; };
    const auto toggle = [](BCDF *df) { BCDF_toggle_periodicity(df); };
    const auto s1 = slope(1, kX);
    const auto k1 = curvature(1, kY), k3 = curvature(3, kY);
    const struct {
        int points, order, ls;
        std::vector<std::function<void(BCDF *)>> edits;
        int expected;
    } cases[] = {
        // Each test failing alone, and its boundary.
        {5, 4, 0, {slope(2, kX), curvature(2, kY)}, 0},
        {1, 1, 0, {}, QX_BCDF_TOO_FEW_POINTS},
        {2, 2, 0, {}, 0},
        {1, 2, 0, {toggle}, QX_BCDF_TOO_FEW_POINTS}, // periodic, the closing copy included
        {2, 2, 0, {toggle}, 0},
        {3, 4, 0, {}, QX_BCDF_TOO_FEW_CONSTRAINTS},
        {4, 4, 0, {}, 0},
        {4, 4, 0, {params(repeated)}, QX_BCDF_PARAMS_NOT_INCREASING},
        {4, 3, 0, {s1}, 0},
        {4, 2, 0, {s1}, QX_BCDF_ORDER_TOO_LOW},
        {4, 3, 0, {s1, k1}, QX_BCDF_ORDER_TOO_LOW},
        {5, 4, 0, {k3}, QX_BCDF_CURVATURE_WITHOUT_SLOPE},
        {5, 4, 0, {k3, slope(3, on_edge)}, 0},
        {5, 4, 0, {k3, slope(3, over)}, QX_BCDF_CURVATURE_NOT_PERPENDICULAR},
        // Least squares: m = poles + 1 - order.
        {6, 4, 1, {ls(-1.0, 0)}, QX_BCDF_LS_TOLERANCE},
        {6, 4, 1, {ls(kNaN, 0)}, QX_BCDF_LS_TOLERANCE},
        {6, 4, 1, {ls(0.0, 0)}, 0},
        {6, 4, 1, {ls(-1.0, 3)}, 0},
        {6, 4, 1, {ls(0.0, 4)}, QX_BCDF_LS_SEGMENTS},
        {6, 4, 1, {ls(0.0, -1)}, QX_BCDF_LS_SEGMENTS},
        {3, 4, 1, {slope(0, kX)}, QX_BCDF_TOO_FEW_POINTS}, // 4 constraints, 3 poles
        // Two failures: the first in order wins.
        {1, 4, 0, {}, QX_BCDF_TOO_FEW_POINTS},
        {3, 4, 0, {params(swapped)}, QX_BCDF_TOO_FEW_CONSTRAINTS},
        {3, 3, 0, {params(swapped), s1}, QX_BCDF_PARAMS_NOT_INCREASING},
        {4, 4, 0, {params(repeated), k3}, QX_BCDF_PARAMS_NOT_INCREASING},
        {5, 3, 0, {curvature(2, kY)}, QX_BCDF_ORDER_TOO_LOW},
        {5, 4, 0, {s1, curvature(1, tilted), k3}, QX_BCDF_CURVATURE_NOT_PERPENDICULAR},
        {5, 4, 0, {slope(3, kX), k1, curvature(3, tilted)}, QX_BCDF_CURVATURE_WITHOUT_SLOPE},
        {6, 4, 1, {ls(-1.0, 0), curvature(2, kY)}, QX_BCDF_CURVATURE_WITHOUT_SLOPE},
    };
    int i = 0;
    for (const auto &c : cases) {
        BCDF *df = make(bent(c.points), 3, c.ls);
        df->order = c.order;
        for (const auto &edit : c.edits) edit(df);
        EXPECT_EQ(BCDF_check_defining_data(df), c.expected) << "case " << i++;
        BCDF_free_structure(df);
    }
    EXPECT_EQ(BCDF_check_defining_data(nullptr), QX_BCDF_TOO_FEW_POINTS);
    // A count no record can hold: 2147483600 constraints are too many.
    BCDF *df = make(bent(3));
    df->order = 3;
    df->slopes = PNTLST_allocate_struct(3, 1);
    df->slopes->num_points = 2147483600 - 3;
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_TOO_MANY_CONSTRAINTS);
    df->slopes->num_points = 2147483600 - 4;
    EXPECT_EQ(BCDF_check_defining_data(df), 0);
    // Regression: counts whose sum passes INT_MAX used to wrap negative and
    // read as too few constraints.
    df->crvatrs = PNTLST_allocate_struct(3, 1);
    df->slopes->num_points = 2000000000;
    df->crvatrs->num_points = 2000000000;
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_TOO_MANY_CONSTRAINTS);
    EXPECT_EQ(BCDF_return_num_of_constraints(df), INT_MAX);
    df->crvatrs->num_points = 0;
    df->slopes->num_points = 0;
    BCDF_free_structure(df);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(BcdfGen, DuplicatesOverlapsCountsAndLengths)
{
    open_session(1.0); // length tolerance 1.0e-4
    const double tol = EQ_ask_length_tolerance();
    ASSERT_EQ(tol, 1.0e-4);
    // Exactly the tolerance apart is not close; less is.
    BCDF *df = make({3, 0, 0, 0, 0, 0, tol, 0, 0});
    const double at[3] = {tol, 0, 0}, in[3] = {0.5 * tol, 0, 0};
    EXPECT_EQ(
        BCDF_check_consecutive_dup_pts(df) * 10 + BCDF_check_overlap_points(df, 3, 0, nullptr), 0);
    EXPECT_EQ(
        BCDF_check_overlap_points(df, 1, 2, at) * 10 + BCDF_check_overlap_points(df, 1, 2, in), 1);
    df->points->points[6] = 0.5 * tol;
    EXPECT_EQ(
        BCDF_check_consecutive_dup_pts(df) * 10 + BCDF_check_overlap_points(df, 3, 0, nullptr), 11);
    BCDF_free_structure(df);
    df = make({0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0});
    const double near1[3] = {1 + 0.5 * tol, 0, 0};
    // mode 1: point placed at position, against its neighbours (after,
    // before, neither, none); mode 2: point 1 removed; other modes: 0.
    for (auto [mode, position, expected] :
         {std::tuple{1, 0, 1}, {1, 2, 1}, {1, 1, 0}, {1, 9, 0}, {1, -5, 0}, {2, 1, 0}, {4, 1, 0}}) {
        EXPECT_EQ(BCDF_check_overlap_points(df, mode, position, near1), expected)
            << mode << position;
    }
    df->points->points[6] = tol; // point 2 onto point 0
    EXPECT_EQ(BCDF_check_overlap_points(df, 2, 1, nullptr), 0);
    df->points->points[6] = 0.5 * tol;
    for (auto [position, expected] : {std::pair{1, 1}, {0, 0}, {3, 0}}) {
        EXPECT_EQ(BCDF_check_overlap_points(df, 2, position, nullptr), expected) << position;
    }
    BCDF_free_structure(df);
    // 4-D: duplicates on stored coordinates, overlaps on divided ones.
    df = make({1, 0, 0, 1, 2, 0, 0, 2, 6, 0, 0, 2}, 4);
    EXPECT_EQ(BCDF_check_consecutive_dup_pts(df), 0);
    EXPECT_EQ(BCDF_check_overlap_points(df, 1, 2, kX), 1);
    EXPECT_EQ(BCDF_check_overlap_points(df, 2, 1, nullptr), 0);
    EXPECT_EQ(BCDF_calc_df_polygon_length(df), std::sqrt(2.0) + 4.0);
    BCDF_free_structure(df);
    // Knots: order + constraints, plus min(extra + 1, order - 1) periodic.
    df = make(bent(4));
    BCDF_toggle_periodicity(df); // 5 points, 4 constraints
    for (int extra = 0; extra < 4; ++extra) {
        EXPECT_EQ(BCDF_num_of_knots_needed(df, extra), 8 + std::min(extra + 1, 3)) << extra;
    }
    EXPECT_EQ(BCDF_ask_max_npoles_for_fit(df), 0); // not least-squares
    df->weights = PNTLST_allocate_struct(1, 5);
    EXPECT_EQ(BCDF_ask_max_npoles_for_fit(df), 4);
    BCDF_toggle_periodicity(df);
    EXPECT_EQ(BCDF_num_of_knots_needed(df, 7), 8);
    EXPECT_EQ(BCDF_ask_max_npoles_for_fit(df), 4);
    const Doubles t = chord(bent(4));
    EXPECT_NEAR(BCDF_calc_df_polygon_length(df), t[3], 4e-16 * t[3]);
    BCDF_free_structure(df);
}

TEST_F(BcdfGen, ParameterLookupAndNormalisation)
{
    BCDF *df = make(bent(3));
    const double t[3] = {0, 2, 4};
    BCDF_add_params(df, t);
    int index = -7;
    for (auto [value, found, expected] :
         {std::tuple{3.0, 0, 2}, {2.0 + 1e-11, 1, 1}, {-1.0, 0, 0}, {5.0, 0, 3}}) {
        EXPECT_EQ(BCDF_parameter_in_list(df, value, &index), found) << value;
        EXPECT_EQ(index, expected) << value;
    }
    const double s[3] = {1, 2, 3};
    BCDF_change_slope(df, 1, s, 0);
    BCDF_change_curvature(df, 2, kY, 0);
    // Plain: slope parameters follow, slopes and curvature parameters stay;
    // the whole record: curvature parameters too, slopes as derivatives.
    using State = std::vector<Doubles>;
    const State given = {{0, 2, 4}, {2}, {1, 2, 3}, {4}};
    EXPECT_EQ(BCDF_normalize(df), 4.0);
    EXPECT_EQ(state(df), (State{{0, 0.5, 1.0}, {0.5}, {1, 2, 3}, {4}}));
    BCDF_unnormalize(df, 4.0);
    EXPECT_EQ(state(df), given);
    EXPECT_EQ(BCDF_normalize_parameters(df), 4.0);
    EXPECT_EQ(state(df), (State{{0, 0.5, 1.0}, {0.5}, {4, 8, 12}, {1}}));
    BCDF_unnormalize_parameters(df, 4.0);
    BCDF_unnormalize_parameters(df, 0.0); // nothing
    EXPECT_EQ(state(df), given);
    // Without parameters: reported, and an empty list.
    PNTLST *params = df->params;
    df->params = nullptr;
    expect_checked([&] { EXPECT_EQ(BCDF_parameter_in_list(df, 1.0, &index), 0); }, 0,
                   "The Parameter List Has A NULL Value");
    EXPECT_EQ(index, 0);
    expect_checked([&] { EXPECT_EQ(BCDF_normalize(df), 0.0); }, 0, "The Parameter Array Is NULL");
    expect_checked([&] { BCDF_unnormalize(df, 2.0); }, 0, "The Parameter Array Is NULL");
    df->params = params;
    BCDF_free_structure(df);
    df = make(bent(1)); // nothing to normalise against
    EXPECT_EQ(BCDF_normalize_parameters(df), 0.0);
    EXPECT_EQ(values(df->params), (Doubles{0.0}));
    BCDF_free_structure(df);
}

TEST_F(BcdfGen, ConversionsTo3dAndToLeastSquares)
{
    srfc1_.ls_tolerance = 0.25;
    const Doubles p4 = {0, 0, 0, 1, 2, 4, 6, 2, 6, 3, 0, 3, 4, 4, 4, 1},
                  p3 = {0, 0, 0, 1, 2, 3, 2, 1, 0, 4, 4, 4};
    const double s[3] = {3, 0, 4};
    const auto sample = [&] {
        BCDF *df = make(p4, 4);
        BCDF_change_slope(df, 0, s, 0);
        BCDF_change_slope(df, 1, s, 5);
        BCDF_change_slope(df, 3, s, 2);
        BCDF_change_curvature(df, 1, kY, 0);
        return df;
    };
    // 4-D slopes lose their fourth coordinate, undivided.
    BCDF *df = sample();
    df->slopes->dimension = 4;
    df->slopes->num_points = 2;
    for (int i = 0; i < 8; ++i) df->slopes->points[i] = i + 1;
    BCDF_convert_4d_to_3d(df);
    EXPECT_EQ(df->points->dimension * 10 + df->slopes->dimension, 33);
    EXPECT_EQ(values(df->points), p3);
    EXPECT_EQ(values(df->slopes), (Doubles{1, 2, 3, 5, 6, 7}));
    BCDF_free_structure(df);
    // To least squares (the slopes and parameters that result: see the
    // random edits): the session's tolerance, no segments, no curvature.
    df = sample();
    BCDF_convert_to_least_squares(df);
    EXPECT_EQ(values(df->points), p3);
    EXPECT_EQ(BCDF_return_num_of_slopes(df), 2);
    EXPECT_TRUE(df->crvatrs == nullptr && df->crvatr_params == nullptr &&
                df->crvatr_types == nullptr);
    EXPECT_EQ(df->ls_tolerance, 0.25);
    EXPECT_EQ(df->ls_num_of_segments, 0);
    const Doubles before = values(df->weights);
    BCDF_convert_to_least_squares(df); // already: nothing
    EXPECT_EQ(values(df->weights), before);
    BCDF_free_structure(df);
    // A periodic record raises in the weights, a 2-D one is reported.
    df = make(bent(4));
    BCDF_toggle_periodicity(df);
    MACH__checking_level = 1;
    auto err = qxsys::first_error([&] { BCDF_convert_to_least_squares(df); });
    ASSERT_TRUE(err.has_value());
    EXPECT_EQ(err->code, QX_ERR_PERIODIC_LEAST_SQUARES);
    BCDF_free_structure(df);
    df = make({0, 0, 1, 1, 2, 0}, 2);
    err = qxsys::first_error([&] { BCDF_convert_to_least_squares(df); });
    ASSERT_TRUE(err.has_value());
    EXPECT_STREQ(err->file, "bcdf_gen");
    EXPECT_STREQ(err->text, "Points Are An Invalid Dimension");
    BCDF_free_structure(df);
}

TEST_F(BcdfGen, InvalidEditsAreReportedAndChangeNothing)
{
    BCDF *df = make(bent(4));
    BCDF_change_slope(df, 1, kX, 0);
    BCDF_change_curvature(df, 1, kX, 0);
    BCDF *periodic = make(bent(4));
    BCDF_toggle_periodicity(periodic); // 5 points
    BCDF *empty = static_cast<BCDF *>(SM_alloc(sizeof(BCDF)));
    *empty = BCDF{};
    BCDF *copy = BCDF_copy_structure(df), *periodic_copy = BCDF_copy_structure(periodic);
    const double q[3] = {9, 9, 9}, two[6] = {1, 1, 1, 2, 2, 2};
    const int bad_points[2] = {1, 4};
    const struct {
        std::function<void()> edit;
        int code;
        const char *text;
    } attempts[] = {
        {[&] { BCDF_replace_defining_point(df, 4, q); }, QX_ERR_INVALID_POSITION, kBadPoint},
        {[&] { BCDF_insert_defining_point(df, 5, q); }, QX_ERR_INVALID_POSITION, kBadPoint},
        {[&] { BCDF_insert_defining_point(df, -1, q); }, QX_ERR_INVALID_POSITION, kBadPoint},
        {[&] { BCDF_insert_defining_point(periodic, 5, q); }, QX_ERR_INVALID_POSITION, kBadPoint},
        {[&] { BCDF_remove_defining_points(df, 0, 4); }, QX_ERR_REMOVING_POINTS, nullptr},
        {[&] { BCDF_remove_defining_points(df, 3, 2); }, QX_ERR_REMOVING_POINTS, nullptr},
        {[&] { BCDF_remove_defining_points(df, -1, 1); }, QX_ERR_REMOVING_POINTS, nullptr},
        {[&] { BCDF_remove_defining_points(df, 1, 0); }, QX_ERR_REMOVING_POINTS, nullptr},
        // The closing copy is not removable; a distinct point must remain.
        {[&] { BCDF_remove_defining_points(periodic, 3, 2); }, QX_ERR_REMOVING_POINTS, nullptr},
        {[&] { BCDF_remove_defining_points(periodic, 0, 4); }, QX_ERR_REMOVING_POINTS, nullptr},
        {[&] { EXPECT_EQ(BCDF_change_slope(df, 4, kX, 0), -1); }, QX_ERR_INVALID_POSITION,
         kBadPoint},
        {[&] { EXPECT_EQ(BCDF_change_curvature(df, -1, kX, 0), -1); }, QX_ERR_INVALID_POSITION,
         kBadPoint},
        {[&] { BCDF_replace_slope(df, 1, kX, 0); }, QX_ERR_INVALID_POSITION, kBadSlope},
        {[&] { BCDF_replace_curvature(df, 1, kX, 0); }, QX_ERR_INVALID_POSITION, kBadCrvatr},
        {[&] { BCDF_remove_slopes(df, 0, 2); }, QX_ERR_INVALID_POSITION, kBadSlope},
        {[&] { BCDF_remove_curvatures(df, 1, 1); }, QX_ERR_INVALID_POSITION, kBadCrvatr},
        {[&] { BCDF_update_slopes(df, 2, bad_points, two, nullptr); }, QX_ERR_INVALID_POSITION,
         kBadPoint},
        {[&] { BCDF_update_curvatures(df, 2, bad_points, two, nullptr); }, QX_ERR_INVALID_POSITION,
         kBadPoint},
        {[&] { BCDF_insert_defining_point(empty, 0, q); }, QX_ERR_NO_POINTS, kNoPoints},
        {[&] { BCDF_update_end_slopes(empty, kX, 0, kX, 0); }, QX_ERR_NO_POINTS, kNoPoints},
    };
    for (const auto &a : attempts) {
        expect_checked(a.edit, a.code, a.text != nullptr ? a.text : "Error While Removing Points");
    }
    for (auto [mine, theirs] : {std::pair{df, copy}, {periodic, periodic_copy}}) {
        for (int k = 0; k < 7; ++k) {
            EXPECT_EQ(values((&mine->points)[k]), values((&theirs->points)[k])) << k;
        }
    }
    EXPECT_EQ(empty->slopes, nullptr);
    for (BCDF *r : {df, periodic, empty, copy, periodic_copy}) BCDF_free_structure(r);
}

TEST_F(BcdfGen, SlopeValues)
{
    BCDF *df = make(bent(6));
    const double *t = df->params->points;
    // Both end slopes make a qx spline, whose continuity is 1.
    BCDF_change_slope(df, 2, kY, 0);
    EXPECT_EQ(BCDF_ask_continuity(df), 2);
    const double a[3] = {3, 4, 0}, b[3] = {0, 0, 2};
    BCDF_update_end_slopes(df, a, 8, b, 9);
    EXPECT_EQ(values(df->slope_params), (Doubles{t[0], t[2], t[5]}));
    EXPECT_EQ(BCDF_ask_continuity(df) * 10 + BCDF_is_qx_spline(df), 11);
    // Unit length; a zero slope stays zero.
    const double zero[3] = {0, 0, 0};
    BCDF_replace_slope(df, 1, zero, 0);
    BCDF_unitize_slopes(df);
    EXPECT_EQ(values(df->slopes), (Doubles{0.6, 0.8, 0, 0, 0, 0, 0, 0, 1}));
    BCDF_free_structure(df);
    // A curvature's needed slope: the chord to the neighbours over their
    // span, made perpendicular; an existing slope is kept.
    const Doubles p = bent(5), u = chord(p);
    df = make(p);
    const double k0[3] = {0, 0, 2}, k2[3] = {0.3, -0.4, 1.0};
    BCDF_change_curvature(df, 0, k0, 0);
    BCDF_change_curvature(df, 2, k2, 0);
    BCDF_change_slope(df, 4, kX, 7);
    BCDF_change_curvature(df, 4, kY, 0);
    BCDF_add_needed_slopes(df);
    EXPECT_EQ(BCDF_check_defining_data(df), 0);
    ASSERT_EQ(BCDF_return_num_of_slopes(df), 3);
    EXPECT_EQ(df->slope_types[0] * 10 + df->slope_types[2], 7);
    EXPECT_EQ(slope_of(df, 2), (Doubles{1, 0, 0}));
    const Doubles s0 = slope_of(df, 0);
    EXPECT_NEAR(s0[0], (p[3] - p[0]) / u[1], 1e-15);
    EXPECT_NEAR(s0[1], (p[4] - p[1]) / u[1], 1e-15);
    EXPECT_NEAR(s0[2], 0.0, 1e-15);
    const Doubles s1 = slope_of(df, 1), d = {p[9] - p[3], p[10] - p[4], p[11] - p[5]};
    const double span = u[3] - u[1], kk = 0.09 + 0.16 + 1.0;
    const double f = (d[0] * k2[0] + d[1] * k2[1] + d[2] * k2[2]) / span / kk;
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(s1[size_t(i)], d[size_t(i)] / span - f * k2[i], 1e-14);
    BCDF_free_structure(df);
}

// Every allocation of a sequence of edits fails in turn, with the host
// returning NULL and with the host unwinding: the record stays freeable and
// nothing is left behind.
TEST_F(BcdfGen, FailingAllocationsLeakNothing)
{
    const double q[3] = {5, 5, 5};
    const size_t live = qxsys_live_blocks();
    const auto fresh = [&] {
        BCDF *df = make(bent(4), 3, 1);
        BCDF_change_slope(df, 1, kX, 0);
        BCDF_change_curvature(df, 1, kX, 0);
        BCDF_change_curvature(df, 2, kX, 0);
        return df;
    };
    const auto edits = [&](BCDF *df) {
        BCDF_change_slope(df, 3, kX, 0);
        BCDF_insert_defining_point(df, 1, q);
        BCDF_insert_defining_point(df, 5, q);
        BCDF_change_curvature(df, 0, kX, 0);
        BCDF_replace_defining_point(df, 2, q);
        BCDF_remove_defining_points(df, 0, 1);
        BCDF_update_end_slopes(df, kX, 1, kX, 1);
        BCDF_add_needed_slopes(df);
    };
    BCDF *df = fresh();
    const unsigned long before = qxsys_allocation_calls();
    edits(df);
    const long calls = static_cast<long>(qxsys_allocation_calls() - before);
    BCDF_free_structure(df);
    ASSERT_GE(calls, 8);
    for (bool unwind : {false, true}) {
        for (long fail_at = 1; fail_at <= calls; ++fail_at) {
            df = fresh();
            qxsys_fail_allocation(fail_at);
            if (unwind) {
                EXPECT_TRUE(qxsys::first_error([&] { edits(df); }).has_value());
            } else {
                edits(df);
            }
            qxsys_fail_allocation(0);
            BCDF_free_structure(df);
            EXPECT_EQ(qxsys_live_blocks(), live) << unwind << " " << fail_at;
        }
    }
}

} // namespace
