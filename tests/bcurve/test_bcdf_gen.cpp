// The settings, lookups, editing, validation and normalisation of a
// defining-data record: exact results, the reports at checking level 1
// (file, code, message) and silence at 0, the order of the whole-record
// check, and ownership on failing allocations.
#include <cmath>
#include <cstring>
#include <vector>

#include "bcurve/bcurve_internal.h"
#include "support/qx_test.h"

namespace
{

using Doubles = std::vector<double>;
using qxtest::kNaN;

class BcdfGen : public qxtest::QxTest
{
  protected:
    // Exactly `count` reports were made, the newest from bcdf_gen with this
    // kind, code and text.
    static void expect_report(qxsys_kind kind, int code, const char *text, long count = 1)
    {
        EXPECT_EQ(qxsys_report_count(), count);
        const qxsys_report &r = last_report();
        EXPECT_EQ(r.kind, kind);
        EXPECT_STREQ(r.file, "bcdf_gen");
        EXPECT_EQ(r.code, code);
        EXPECT_STREQ(r.text, text);
        EXPECT_GT(r.line, 0);
    }
    static void expect_internal(const char *text, long count = 1)
    {
        expect_report(QXSYS_INTERNAL, 0, text, count);
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
    for (int i = 0; i < n; ++i) {
        p.insert(p.end(), {1.0 * i, 0.5 * i * i, 0.25 * (i % 3)});
    }
    return p;
}

Doubles values(const PNTLST *l)
{
    if (l == nullptr) return {};
    return Doubles(l->points, l->points + l->num_points * l->dimension);
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

Doubles slope_of(const BCDF *df, int i)
{
    double s[3];
    int type = 0;
    BCDF_copy_single_3d_slope(df, i, s, &type);
    return {s[0], s[1], s[2]};
}

// ---- settings ----

TEST_F(BcdfGen, OrderIsStoredAndReportedOutsideTwoToTwentyFive)
{
    BCDF *df = make(bent(4));
    MACH__checking_level = 1;
    BCDF_change_order(df, 25);
    BCDF_change_order(df, 2);
    EXPECT_EQ(qxsys_report_count(), 0);
    EXPECT_EQ(df->order, 2);
    BCDF_change_order(df, 26);
    expect_internal("Maximum Order For Spline Exceeded");
    EXPECT_EQ(df->order, 26);
    BCDF_change_order(df, 1);
    expect_internal("Order Must Be Greater Than 1", 2);
    EXPECT_EQ(df->order, 1);
    MACH__checking_level = 0;
    BCDF_change_order(df, 40);
    EXPECT_EQ(qxsys_report_count(), 2);
    EXPECT_EQ(df->order, 40);
    BCDF_free_structure(df);
}

TEST_F(BcdfGen, ToleranceAndSegmentCountExcludeEachOther)
{
    srfc1_.ls_tolerance = 0.125;
    BCDF *df = make(bent(6));
    EXPECT_EQ(BCDF_change_number_of_segments(df, 3), 3); // converts first
    ASSERT_NE(df->weights, nullptr);
    EXPECT_EQ(df->ls_num_of_segments, 3);
    EXPECT_EQ(df->ls_tolerance, 0.0);
    BCDF_change_tolerance(df, 0.5);
    EXPECT_EQ(df->ls_tolerance, 0.5);
    EXPECT_EQ(df->ls_num_of_segments, 0);
    BCDF_free_structure(df);

    df = make(bent(6));
    BCDF_change_tolerance(df, 0.75); // converts, then sets
    ASSERT_NE(df->weights, nullptr);
    EXPECT_EQ(df->ls_tolerance, 0.75);
    EXPECT_EQ(BCDF_change_number_of_segments(df, 2), 2);
    EXPECT_EQ(df->ls_tolerance, 0.0);
    BCDF_free_structure(df);
}

TEST_F(BcdfGen, TogglingPeriodicityAddsAndRemovesTheClosingPoint)
{
    const Doubles p = bent(4);
    BCDF *df = make(p);
    const double s0[3] = {1, 2, 0};
    BCDF_change_slope(df, 1, s0, 3);
    const double open_last = df->params->points[3];

    BCDF_toggle_periodicity(df);
    EXPECT_EQ(df->periodicity, 1);
    Doubles closed = p;
    closed.insert(closed.end(), p.begin(), p.begin() + 3);
    EXPECT_EQ(values(df->points), closed);
    const Doubles t = chord(closed);
    EXPECT_EQ(values(df->params), t);
    // The slope follows its point and is rescaled by old last / new last.
    ASSERT_EQ(BCDF_return_num_of_slopes(df), 1);
    EXPECT_EQ(df->slope_params->points[0], t[1]);
    const double f = open_last / t[4];
    EXPECT_EQ(slope_of(df, 0), (Doubles{1 * f, 2 * f, 0}));

    // A slope at the closing point goes with it; the first point's stays.
    const double s1[3] = {0, 0, 1};
    df->slope_params->points[0] = t[4]; // tie the slope to the closing point
    BCDF_change_slope(df, 0, s1, 1);
    ASSERT_EQ(BCDF_return_num_of_slopes(df), 2);
    BCDF_toggle_periodicity(df);
    EXPECT_EQ(df->periodicity, 0);
    EXPECT_EQ(values(df->points), p);
    EXPECT_EQ(values(df->params), chord(p));
    ASSERT_EQ(BCDF_return_num_of_slopes(df), 1);
    EXPECT_EQ(df->slope_params->points[0], 0.0);
    EXPECT_EQ(df->slope_types[0], 1);
    BCDF_free_structure(df);

    // An open least-squares record is reported, and toggled all the same.
    df = make(p, 3, 1);
    MACH__checking_level = 1;
    BCDF_toggle_periodicity(df);
    expect_internal("Periodic Least Squares Curves Are Not Allowed");
    EXPECT_EQ(df->periodicity, 1);
    EXPECT_EQ(BCDF_return_num_of_points(df), 5);
    EXPECT_EQ(qx_list_count(df->weights), 5); // one weight per point still
    BCDF_free_structure(df);
}

TEST_F(BcdfGen, ReplacingAWeight)
{
    BCDF *df = make(bent(4), 3, 1);
    const double w = 7.5;
    BCDF_replace_weight(df, 2, &w);
    EXPECT_EQ(df->weights->points[2], 7.5);
    MACH__checking_level = 1;
    const Doubles before = values(df->weights);
    BCDF_replace_weight(df, 4, &w);
    expect_report(QXSYS_RAISE, QX_ERR_INVALID_POSITION,
                  "An Invalid Point Position Was Given By Calling Routine");
    EXPECT_EQ(values(df->weights), before);
    BCDF_free_structure(df);
    df = make(bent(4)); // not least-squares: nothing to replace
    BCDF_replace_weight(df, 0, &w);
    EXPECT_EQ(df->weights, nullptr);
    BCDF_free_structure(df);
}

// ---- lookups ----

TEST_F(BcdfGen, LookupsTieByParameterWithinTheThreshold)
{
    BCDF *df = make(bent(3));
    const double t[3] = {0.0, 1.0, 2.0};
    BCDF_add_params(df, t);
    const double s[3] = {1, 0, 0};
    EXPECT_EQ(BCDF_change_slope(df, 2, s, 0), 0);
    EXPECT_EQ(BCDF_change_slope(df, 0, s, 0), 0); // inserted before
    EXPECT_EQ(values(df->slope_params), (Doubles{0.0, 2.0}));

    int index = -7;
    EXPECT_EQ(BCDF_slope_at_point(df, 1, &index), 0);
    EXPECT_EQ(index, 1); // where a slope of point 1 would go
    EXPECT_EQ(BCDF_slope_at_point(df, 2, &index), 1);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(BCDF_point_at_slope(df, 1), 2);

    // 1.0e-10 away still matches; 1.1e-10 away does not.
    df->slope_params->points[0] = 1.0e-10;
    EXPECT_EQ(BCDF_slope_at_point(df, 0, &index), 1);
    EXPECT_EQ(index, 0);
    df->slope_params->points[0] = 1.1e-10;
    index = -7;
    EXPECT_EQ(BCDF_slope_at_point(df, 0, &index), 0);
    EXPECT_EQ(index, 0);

    // A slope that matches no point: the count, reported at level 1 only.
    EXPECT_EQ(BCDF_point_at_slope(df, 0), 3);
    EXPECT_EQ(qxsys_report_count(), 0);
    MACH__checking_level = 1;
    EXPECT_EQ(BCDF_point_at_slope(df, 0), 3);
    expect_internal("Bcurve Defining Data Structure Corrupt");
    EXPECT_EQ(BCDF_point_at_curvature(df, 0), 3); // there are no curvatures
    expect_internal("Bcurve Defining Data Structure Corrupt", 2);
    df->slope_params->points[0] = 0.0;

    // No curvatures: untouched outputs.
    index = -7;
    EXPECT_EQ(BCDF_curvature_at_point(df, 0, &index), 0);
    EXPECT_EQ(BCDF_curvature_at_slope(df, 0, &index), 0);
    int si = -7;
    double v[3] = {kNaN, kNaN, kNaN};
    EXPECT_EQ(BCDF_slope_at_curvature(df, 0, &si, v), 0);
    EXPECT_EQ(index, -7);
    EXPECT_EQ(si, -7);
    EXPECT_EQ(qxsys_report_count(), 2);

    // A curvature at point 2 shares the second slope; one at point 1 has none.
    const double k[3] = {0, 1, 0};
    EXPECT_EQ(BCDF_change_curvature(df, 2, k, 4), 0);
    EXPECT_EQ(BCDF_curvature_at_slope(df, 1, &index), 1);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(BCDF_curvature_at_slope(df, 0, &index), 0);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(BCDF_curvature_at_point(df, 2, &index), 1);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(BCDF_point_at_curvature(df, 0), 2);
    const double s2[3] = {3, 0, 5};
    BCDF_replace_slope(df, 1, s2, 2);
    EXPECT_EQ(BCDF_slope_at_curvature(df, 0, &si, v), 1);
    EXPECT_EQ(si, 1);
    EXPECT_EQ(Doubles(v, v + 3), (Doubles{3, 0, 5}));
    EXPECT_EQ(BCDF_change_curvature(df, 1, k, 4), 0); // inserted first
    si = -7;
    v[0] = kNaN;
    EXPECT_EQ(BCDF_slope_at_curvature(df, 0, &si, v), 0);
    expect_internal("Point With Assigned Curvature Has No Slope", 3);
    EXPECT_EQ(si, -7);
    EXPECT_TRUE(std::isnan(v[0]));
    BCDF_free_structure(df);
}

// ---- the whole-record check ----

TEST_F(BcdfGen, CheckFailsEachTestAlone)
{
    MACH__checking_level = 1; // the check itself never reports
    const double s[3] = {1, 0, 0}, k[3] = {0, 1, 0};

    BCDF *df = make(bent(5));
    EXPECT_EQ(BCDF_check_defining_data(df), 0);
    BCDF_change_slope(df, 2, s, 0);
    BCDF_change_curvature(df, 2, k, 0);
    EXPECT_EQ(BCDF_check_defining_data(df), 0);
    BCDF_free_structure(df);

    df = make(bent(1));
    df->order = 1;
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_TOO_FEW_POINTS);
    BCDF_free_structure(df);
    df = make(bent(1));
    df->order = 2;
    BCDF_toggle_periodicity(df); // two points, the second the closing copy
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_TOO_FEW_POINTS);
    BCDF_free_structure(df);

    df = make(bent(2)); // a cubic through 2 points: 2 constraints
    EXPECT_EQ(BCDF_return_num_of_constraints(df), 2);
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_TOO_FEW_CONSTRAINTS);
    BCDF_free_structure(df);

    df = make(bent(3));
    df->order = 3;
    PNTLST *fake = PNTLST_allocate_struct(3, 1); // a count no record can hold
    df->slopes = fake;
    fake->num_points = 2147483600 - 3;
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_TOO_MANY_CONSTRAINTS);
    fake->num_points = 2147483600 - 4;
    EXPECT_NE(BCDF_check_defining_data(df), QX_BCDF_TOO_MANY_CONSTRAINTS);
    fake->num_points = 0;
    BCDF_free_structure(df);

    df = make(bent(4));
    const double repeated[4] = {0, 1, 1, 2};
    BCDF_add_params(df, repeated);
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_PARAMS_NOT_INCREASING);
    BCDF_free_structure(df);

    df = make(bent(4));
    BCDF_change_slope(df, 1, s, 0);
    df->order = 3;
    EXPECT_EQ(BCDF_check_defining_data(df), 0);
    df->order = 2;
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_ORDER_TOO_LOW);
    df->order = 3;
    BCDF_change_curvature(df, 1, k, 0);
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_ORDER_TOO_LOW);
    BCDF_free_structure(df);

    df = make(bent(5));
    BCDF_change_curvature(df, 3, k, 0);
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_CURVATURE_WITHOUT_SLOPE);
    const double nearly[3] = {1, 1.0e-8, 0}, not_quite[3] = {1, 1.0e-6, 0};
    BCDF_change_slope(df, 3, nearly, 0);
    EXPECT_EQ(BCDF_check_defining_data(df), 0);
    BCDF_change_slope(df, 3, not_quite, 0);
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_CURVATURE_NOT_PERPENDICULAR);
    BCDF_free_structure(df);

    // Least squares: m = poles + 1 - order.
    df = make(bent(6), 3, 1);
    EXPECT_EQ(BCDF_ask_max_npoles_for_fit(df), 6);
    df->ls_tolerance = -1.0;
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_LS_TOLERANCE);
    df->ls_tolerance = kNaN;
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_LS_TOLERANCE);
    df->ls_tolerance = 0.0;
    EXPECT_EQ(BCDF_check_defining_data(df), 0);
    df->ls_num_of_segments = 3; // m = 6 + 1 - 4
    EXPECT_EQ(BCDF_check_defining_data(df), 0);
    df->ls_num_of_segments = 4;
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_LS_SEGMENTS);
    df->ls_num_of_segments = -1;
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_LS_SEGMENTS);
    BCDF_free_structure(df);
    df = make(bent(3), 3, 1); // 4 constraints, but 3 poles for a cubic
    BCDF_change_slope(df, 0, s, 0);
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_TOO_FEW_POINTS);
    BCDF_free_structure(df);

    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(BcdfGen, CheckReportsTheFirstOfTwoFailures)
{
    MACH__checking_level = 1;
    const double s[3] = {1, 0, 0}, k[3] = {0, 1, 0}, tilted[3] = {1, 1, 0};

    // too few points before too few constraints
    BCDF *df = make(bent(1));
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_TOO_FEW_POINTS);
    BCDF_free_structure(df);

    // too few constraints before parameters
    df = make(bent(3));
    const double t3[3] = {0, 2, 1};
    BCDF_add_params(df, t3);
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_TOO_FEW_CONSTRAINTS);
    df->order = 3;
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_PARAMS_NOT_INCREASING);
    BCDF_free_structure(df);

    // parameters before a curvature without a slope
    df = make(bent(5));
    BCDF_change_curvature(df, 2, k, 0);
    df->params->points[4] = df->params->points[3];
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_PARAMS_NOT_INCREASING);
    BCDF_free_structure(df);

    // order too low before a curvature without a slope
    df = make(bent(5));
    BCDF_change_curvature(df, 2, k, 0);
    df->order = 3;
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_ORDER_TOO_LOW);
    BCDF_free_structure(df);

    // curvatures in turn: a tilted one first wins over a later bare one
    df = make(bent(5));
    BCDF_change_slope(df, 1, s, 0);
    BCDF_change_curvature(df, 1, tilted, 0);
    BCDF_change_curvature(df, 3, k, 0);
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_CURVATURE_NOT_PERPENDICULAR);
    BCDF_replace_curvature(df, 0, k, 0);
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_CURVATURE_WITHOUT_SLOPE);
    BCDF_free_structure(df);

    // curvature fault before the least-squares settings
    df = make(bent(6), 3, 1);
    df->ls_tolerance = -1.0;
    BCDF_change_curvature(df, 2, k, 0);
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_CURVATURE_WITHOUT_SLOPE);
    BCDF_free_structure(df);

    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(BcdfGen, DuplicateAndOverlappingPoints)
{
    open_session(1.0); // length tolerance 1.0e-4
    const double tol = EQ_ask_length_tolerance();
    ASSERT_EQ(tol, 1.0e-4);
    BCDF *df = make({3, 0, 0, 0, 0, 0, tol, 0, 0});
    EXPECT_EQ(BCDF_check_consecutive_dup_pts(df), 0); // exactly the tolerance apart
    EXPECT_EQ(BCDF_check_overlap_points(df, 3, 0, nullptr), 0);
    df->points->points[6] = 0.5 * tol;
    EXPECT_EQ(BCDF_check_consecutive_dup_pts(df), 1);
    EXPECT_EQ(BCDF_check_overlap_points(df, 3, 0, nullptr), 1);
    BCDF_free_structure(df);

    df = make({0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0});

    const double near1[3] = {1 + 0.5 * tol, 0, 0}, far[3] = {5, 5, 5};
    EXPECT_EQ(BCDF_check_overlap_points(df, 1, 0, near1), 1); // after
    EXPECT_EQ(BCDF_check_overlap_points(df, 1, 2, near1), 1); // before
    EXPECT_EQ(BCDF_check_overlap_points(df, 1, 1, near1), 0); // neither neighbour
    EXPECT_EQ(BCDF_check_overlap_points(df, 1, 0, far), 0);
    EXPECT_EQ(BCDF_check_overlap_points(df, 1, 9, near1), 0);  // no such neighbours
    EXPECT_EQ(BCDF_check_overlap_points(df, 1, -5, near1), 0); // no such neighbours
    EXPECT_EQ(BCDF_check_overlap_points(df, 2, 1, nullptr), 0);
    df->points->points[6] = 0.5 * tol; // point 2 onto point 0
    EXPECT_EQ(BCDF_check_overlap_points(df, 2, 1, nullptr), 1);
    EXPECT_EQ(BCDF_check_overlap_points(df, 2, 0, nullptr), 0);
    EXPECT_EQ(BCDF_check_overlap_points(df, 2, 3, nullptr), 0);
    EXPECT_EQ(BCDF_check_overlap_points(df, 4, 1, near1), 0);
    BCDF_free_structure(df);

    // 4-D: duplicates on stored coordinates, overlaps on divided ones.
    df = make({1, 0, 0, 1, 2, 0, 0, 2, 6, 0, 0, 2}, 4);
    EXPECT_EQ(BCDF_check_consecutive_dup_pts(df), 0);
    const double p[3] = {1, 0, 0};
    EXPECT_EQ(BCDF_check_overlap_points(df, 1, 2, p), 1);
    EXPECT_EQ(BCDF_check_overlap_points(df, 2, 1, nullptr), 0);
    EXPECT_DOUBLE_EQ(BCDF_calc_df_polygon_length(df), std::sqrt(2.0) + 4.0);
    BCDF_free_structure(df);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(BcdfGen, CountsLengthAndParameterLookup)
{
    BCDF *df = make(bent(4));
    BCDF_toggle_periodicity(df); // 5 points, a periodic cubic
    EXPECT_EQ(BCDF_return_num_of_constraints(df), 4);
    const int expected[] = {9, 10, 11, 11, 11};
    for (int extra = 0; extra < 5; ++extra) {
        EXPECT_EQ(BCDF_num_of_knots_needed(df, extra), expected[extra]) << extra;
    }
    EXPECT_EQ(BCDF_ask_max_npoles_for_fit(df), 0); // not least-squares
    df->weights = PNTLST_allocate_struct(1, 5);
    EXPECT_EQ(BCDF_ask_max_npoles_for_fit(df), 4);
    BCDF_toggle_periodicity(df);
    EXPECT_EQ(BCDF_num_of_knots_needed(df, 7), 8);
    EXPECT_EQ(BCDF_ask_max_npoles_for_fit(df), 4);
    double length = 0.0;
    const Doubles p = bent(4);
    for (int i = 1; i < 4; ++i) {
        double d2 = 0.0;
        for (int c = 0; c < 3; ++c) d2 += std::pow(p[3 * i + c] - p[3 * i - 3 + c], 2);
        length += std::sqrt(d2);
    }
    EXPECT_NEAR(BCDF_calc_df_polygon_length(df), length, 1e-14 * length);
    BCDF_free_structure(df);

    df = make(bent(3));
    const double t[3] = {0, 1, 2};
    BCDF_add_params(df, t);
    int index = -7;
    EXPECT_EQ(BCDF_parameter_in_list(df, 1.5, &index), 0);
    EXPECT_EQ(index, 2);
    EXPECT_EQ(BCDF_parameter_in_list(df, 1.0 + 1.0e-11, &index), 1);
    EXPECT_EQ(index, 1);
    EXPECT_EQ(BCDF_parameter_in_list(df, -1.0, &index), 0);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(BCDF_parameter_in_list(df, 3.0, &index), 0);
    EXPECT_EQ(index, 3);
    PNTLST *params = df->params;
    df->params = nullptr;
    index = -7;
    EXPECT_EQ(BCDF_parameter_in_list(df, 1.0, &index), 0);
    EXPECT_EQ(index, 0);
    EXPECT_EQ(qxsys_report_count(), 0);
    MACH__checking_level = 1;
    EXPECT_EQ(BCDF_parameter_in_list(df, 1.0, &index), 0);
    expect_internal("The Parameter List Has A NULL Value");
    EXPECT_EQ(BCDF_normalize(df), 0.0);
    expect_internal("The Parameter Array Is NULL", 2);
    BCDF_unnormalize(df, 2.0);
    expect_internal("The Parameter Array Is NULL", 3);
    df->params = params;
    BCDF_free_structure(df);
}

// ---- normalisation ----

TEST_F(BcdfGen, NormalisingAndRestoring)
{
    BCDF *df = make(bent(3));
    const double t[3] = {0, 2, 4};
    BCDF_add_params(df, t);
    const double s[3] = {1, 2, 3}, k[3] = {0, 0, 1};
    BCDF_change_slope(df, 1, s, 0);
    BCDF_change_curvature(df, 2, k, 0);
    EXPECT_EQ(BCDF_normalize(df), 4.0);
    EXPECT_EQ(values(df->params), (Doubles{0, 0.5, 1.0}));
    EXPECT_EQ(values(df->slope_params), (Doubles{0.5}));
    EXPECT_EQ(values(df->slopes), (Doubles{1, 2, 3}));    // left alone
    EXPECT_EQ(values(df->crvatr_params), (Doubles{4.0})); // left alone
    BCDF_unnormalize(df, 4.0);
    EXPECT_EQ(values(df->params), (Doubles{0, 2, 4}));
    EXPECT_EQ(values(df->slope_params), (Doubles{2}));

    // The whole record: curvature parameters too, slopes as derivatives.
    EXPECT_EQ(BCDF_normalize_parameters(df), 4.0);
    EXPECT_EQ(values(df->params), (Doubles{0, 0.5, 1.0}));
    EXPECT_EQ(values(df->crvatr_params), (Doubles{1.0}));
    EXPECT_EQ(values(df->slopes), (Doubles{4, 8, 12}));
    BCDF_unnormalize_parameters(df, 4.0);
    EXPECT_EQ(values(df->params), (Doubles{0, 2, 4}));
    EXPECT_EQ(values(df->crvatr_params), (Doubles{4}));
    EXPECT_EQ(values(df->slopes), (Doubles{1, 2, 3}));
    BCDF_unnormalize_parameters(df, 0.0); // nothing
    EXPECT_EQ(values(df->params), (Doubles{0, 2, 4}));
    BCDF_scale_slopes(df, -0.5);
    EXPECT_EQ(values(df->slopes), (Doubles{-0.5, -1, -1.5}));
    BCDF_free_structure(df);

    df = make(bent(1)); // nothing to normalise against
    EXPECT_EQ(BCDF_normalize_parameters(df), 0.0);
    EXPECT_EQ(values(df->params), (Doubles{0.0}));
    BCDF_free_structure(df);
}

// ---- conversions ----

TEST_F(BcdfGen, ConvertingTo3dAndToLeastSquares)
{
    srfc1_.ls_tolerance = 0.25;
    // 4-D points; slopes at the ends and inside, a curvature.
    BCDF *df = make({0, 0, 0, 1, 2, 4, 6, 2, 6, 3, 0, 3, 4, 4, 4, 1}, 4);
    const double s[3] = {3, 0, 4}, k[3] = {0, 1, 0};
    BCDF_change_slope(df, 0, s, 0);
    BCDF_change_slope(df, 1, s, 5);
    BCDF_change_slope(df, 3, s, 2);
    BCDF_change_curvature(df, 1, k, 0);
    df->slopes->dimension = 4; // as a 4-D slope list would be
    df->slopes->num_points = 2;
    for (int i = 0; i < 8; ++i) df->slopes->points[i] = i + 1;
    BCDF_convert_4d_to_3d(df);
    EXPECT_EQ(df->points->dimension, 3);
    EXPECT_EQ(values(df->points), (Doubles{0, 0, 0, 1, 2, 3, 2, 1, 0, 4, 4, 4}));
    EXPECT_EQ(df->slopes->dimension, 3);
    EXPECT_EQ(values(df->slopes), (Doubles{1, 2, 3, 5, 6, 7}));
    BCDF_free_structure(df);

    df = make({0, 0, 0, 1, 2, 4, 6, 2, 6, 3, 0, 3, 4, 4, 4, 1}, 4);
    BCDF_change_slope(df, 0, s, 0);
    BCDF_change_slope(df, 1, s, 5);
    BCDF_change_slope(df, 3, s, 2);
    BCDF_change_curvature(df, 1, k, 0);
    df->periodicity = 0;
    BCDF_convert_to_least_squares(df);
    const Doubles p3 = {0, 0, 0, 1, 2, 3, 2, 1, 0, 4, 4, 4};
    EXPECT_EQ(values(df->points), p3);
    const Doubles t = chord(p3);
    EXPECT_EQ(values(df->params), t);
    Doubles w(4);
    BCDF_CALC_weights(4, t.data(), w.data());
    EXPECT_EQ(values(df->weights), w);
    EXPECT_EQ(values(df->slope_params), (Doubles{t[0], t[3]})); // the inner one went
    const Doubles unit = values(df->slopes), expected = {0.6, 0, 0.8, 0.6, 0, 0.8};
    ASSERT_EQ(unit.size(), 6u);
    for (int i = 0; i < 6; ++i) EXPECT_NEAR(unit[i], expected[i], 1e-15) << i;
    EXPECT_EQ(df->slope_types[1], 2);
    EXPECT_EQ(df->crvatrs, nullptr);
    EXPECT_EQ(df->crvatr_params, nullptr);
    EXPECT_EQ(df->crvatr_types, nullptr);
    EXPECT_EQ(df->ls_tolerance, 0.25);
    EXPECT_EQ(df->ls_num_of_segments, 0);
    const Doubles before = values(df->weights);
    BCDF_convert_to_least_squares(df); // already: nothing
    EXPECT_EQ(values(df->weights), before);
    BCDF_free_structure(df);

    // Below order 3 every slope goes.
    df = make(bent(4));
    BCDF_change_slope(df, 0, s, 0);
    df->order = 2;
    BCDF_make_least_squares_slopes(df);
    EXPECT_EQ(df->slopes, nullptr);
    EXPECT_EQ(df->slope_types, nullptr);
    BCDF_free_structure(df);

    // A periodic record raises in the weights, a 2-D one is reported.
    MACH__checking_level = 1;
    df = make(bent(4));
    BCDF_toggle_periodicity(df);
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

// ---- editing ----

TEST_F(BcdfGen, EditingPointsKeepsSlopesWithTheirPoints)
{
    Doubles p = bent(5);
    BCDF *df = make(p, 3, 1);
    const double s[3] = {1, 1, 0}, k[3] = {1, -1, 0};
    BCDF_change_slope(df, 1, s, 2);
    BCDF_change_slope(df, 3, s, 4);
    BCDF_change_curvature(df, 3, k, 7);
    double last = df->params->points[4];

    // Replace: new chord lengths, slopes rescaled by old last / new last.
    const double q[3] = {1.5, 2, 2};
    BCDF_replace_defining_point(df, 2, q);
    std::copy(q, q + 3, p.begin() + 6);
    Doubles t = chord(p);
    EXPECT_EQ(values(df->points), p);
    EXPECT_EQ(values(df->params), t);
    EXPECT_EQ(values(df->slope_params), (Doubles{t[1], t[3]}));
    EXPECT_EQ(values(df->crvatr_params), (Doubles{t[3]}));
    double f = last / t[4];
    EXPECT_EQ(slope_of(df, 1), (Doubles{f, f, 0}));
    Doubles w(5);
    BCDF_CALC_weights(5, t.data(), w.data());
    EXPECT_EQ(values(df->weights), w);

    // Insert before point 2: the slopes of points 1 and 3 follow (3 -> 4).
    last = t[4];
    const double r[3] = {1.2, 1.0, -1.0};
    BCDF_insert_defining_point(df, 2, r);
    p.insert(p.begin() + 6, r, r + 3);
    t = chord(p);
    EXPECT_EQ(values(df->points), p);
    EXPECT_EQ(values(df->slope_params), (Doubles{t[1], t[4]}));
    EXPECT_EQ(values(df->crvatr_params), (Doubles{t[4]}));
    EXPECT_EQ(df->slope_types[1], 4);
    EXPECT_EQ(df->crvatr_types[0], 7);
    f *= last / t[5];
    EXPECT_NEAR(slope_of(df, 0)[0], f, 1e-15);
    w.resize(6);
    BCDF_CALC_weights(6, t.data(), w.data());
    EXPECT_EQ(values(df->weights), w);
    BCDF_insert_defining_point(df, 6, r); // appending
    p.insert(p.end(), r, r + 3);
    EXPECT_EQ(values(df->points), p);
    BCDF_insert_defining_point(df, 0, q);
    p.insert(p.begin(), q, q + 3);
    EXPECT_EQ(values(df->points), p);
    t = chord(p);
    EXPECT_EQ(values(df->slope_params), (Doubles{t[2], t[5]}));

    // Remove points 4 .. 5: the slope and curvature at 5 go with them.
    BCDF_remove_defining_points(df, 4, 2);
    p.erase(p.begin() + 12, p.begin() + 18);
    t = chord(p);
    EXPECT_EQ(values(df->points), p);
    EXPECT_EQ(values(df->slope_params), (Doubles{t[2]}));
    EXPECT_EQ(df->crvatrs, nullptr);
    EXPECT_EQ(df->slope_types[0], 2);
    EXPECT_EQ(qx_list_count(df->weights), 6);
    BCDF_remove_defining_points(df, 0, 5); // one point is left
    EXPECT_EQ(BCDF_return_num_of_points(df), 1);
    EXPECT_EQ(df->slopes, nullptr);
    EXPECT_EQ(values(df->params), (Doubles{0.0}));
    EXPECT_EQ(values(df->weights), (Doubles{0.0}));
    BCDF_free_structure(df);
}

TEST_F(BcdfGen, PeriodicEditsKeepTheClosingCopy)
{
    const Doubles p = bent(4);
    BCDF *df = make(p);
    BCDF_toggle_periodicity(df);
    const double s[3] = {0, 1, 0}, q[3] = {-1, -1, -1};
    EXPECT_EQ(BCDF_change_slope(df, 4, s, 3), 0); // the closing point is the first
    EXPECT_EQ(values(df->slope_params), (Doubles{0.0}));
    EXPECT_EQ(BCDF_change_slope(df, 0, s, 5), 0); // the same slope
    EXPECT_EQ(BCDF_return_num_of_slopes(df), 1);
    EXPECT_EQ(df->slope_types[0], 5);

    BCDF_replace_defining_point(df, 4, q);
    Doubles e = {-1, -1, -1, 1, 0.5, 0.25, 2, 2, 0.5, 3, 4.5, 0, -1, -1, -1};
    EXPECT_EQ(values(df->points), e);
    BCDF_insert_defining_point(df, 0, p.data());
    e.insert(e.begin(), p.begin(), p.begin() + 3);
    std::copy(p.begin(), p.begin() + 3, e.end() - 3);
    EXPECT_EQ(values(df->points), e);
    EXPECT_EQ(values(df->slope_params), (Doubles{df->params->points[1]}));
    BCDF_insert_defining_point(df, 5, q); // before the closing copy
    e.insert(e.end() - 3, q, q + 3);
    EXPECT_EQ(values(df->points), e);

    MACH__checking_level = 1;
    BCDF_insert_defining_point(df, 7, q);
    expect_report(QXSYS_RAISE, QX_ERR_INVALID_POSITION,
                  "An Invalid Point Position Was Given By Calling Routine");
    BCDF_remove_defining_points(df, 5, 2); // the closing copy is not removable
    expect_report(QXSYS_RAISE, QX_ERR_REMOVING_POINTS, "Error While Removing Points", 2);
    BCDF_remove_defining_points(df, 0, 6); // no distinct point would be left
    expect_report(QXSYS_RAISE, QX_ERR_REMOVING_POINTS, "Error While Removing Points", 3);
    EXPECT_EQ(values(df->points), e);

    BCDF_remove_defining_points(df, 0, 2); // the closing copy follows the new first
    e.erase(e.begin(), e.begin() + 6);
    std::copy(e.begin(), e.begin() + 3, e.end() - 3);
    EXPECT_EQ(values(df->points), e);
    EXPECT_EQ(df->slopes, nullptr); // its point went
    EXPECT_EQ(qxsys_report_count(), 3);
    BCDF_free_structure(df);
}

TEST_F(BcdfGen, InvalidEditsAreReportedAndChangeNothing)
{
    BCDF *df = make(bent(4));
    const double s[3] = {1, 0, 0};
    BCDF_change_slope(df, 1, s, 0);
    BCDF_change_curvature(df, 1, s, 0);
    BCDF *copy = BCDF_copy_structure(df);
    const double q[3] = {9, 9, 9};
    const int bad_points[2] = {1, 4};
    const double two[6] = {1, 1, 1, 2, 2, 2};
    const auto attempts = [&] {
        BCDF_replace_defining_point(df, 4, q);
        BCDF_insert_defining_point(df, 5, q);
        BCDF_insert_defining_point(df, -1, q);
        BCDF_remove_defining_points(df, 0, 4);
        BCDF_remove_defining_points(df, 3, 2);
        BCDF_remove_defining_points(df, -1, 1);
        BCDF_remove_defining_points(df, 1, 0);
        EXPECT_EQ(BCDF_change_slope(df, 4, s, 0), -1);
        EXPECT_EQ(BCDF_change_curvature(df, -1, s, 0), -1);
        BCDF_replace_slope(df, 1, s, 0);
        BCDF_replace_curvature(df, 1, s, 0);
        BCDF_remove_slopes(df, 0, 2);
        BCDF_remove_curvatures(df, 1, 1);
        BCDF_update_slopes(df, 2, bad_points, two, nullptr);
        BCDF_update_curvatures(df, 2, bad_points, two, nullptr);
    };
    attempts();
    EXPECT_EQ(qxsys_report_count(), 0);
    MACH__checking_level = 1;
    attempts();
    const struct {
        int code;
        const char *text;
    } expected[] = {
        {QX_ERR_INVALID_POSITION, "An Invalid Point Position Was Given By Calling Routine"},
        {QX_ERR_INVALID_POSITION, "An Invalid Point Position Was Given By Calling Routine"},
        {QX_ERR_INVALID_POSITION, "An Invalid Point Position Was Given By Calling Routine"},
        {QX_ERR_REMOVING_POINTS, "Error While Removing Points"},
        {QX_ERR_REMOVING_POINTS, "Error While Removing Points"},
        {QX_ERR_REMOVING_POINTS, "Error While Removing Points"},
        {QX_ERR_REMOVING_POINTS, "Error While Removing Points"},
        {QX_ERR_INVALID_POSITION, "An Invalid Point Position Was Given By Calling Routine"},
        {QX_ERR_INVALID_POSITION, "An Invalid Point Position Was Given By Calling Routine"},
        {QX_ERR_INVALID_POSITION, "An Invalid Slope Position Was Given By Calling Routine"},
        {QX_ERR_INVALID_POSITION, "An Invalid Curvature Position Was Given By Calling Routine"},
        {QX_ERR_INVALID_POSITION, "An Invalid Slope Position Was Given By Calling Routine"},
        {QX_ERR_INVALID_POSITION, "An Invalid Curvature Position Was Given By Calling Routine"},
        {QX_ERR_INVALID_POSITION, "An Invalid Point Position Was Given By Calling Routine"},
        {QX_ERR_INVALID_POSITION, "An Invalid Point Position Was Given By Calling Routine"},
    };
    const int n = static_cast<int>(std::size(expected));
    ASSERT_EQ(qxsys_report_count(), n);
    for (int i = 0; i < n; ++i) {
        const qxsys_report &r = *qxsys_report_back(n - 1 - i);
        EXPECT_EQ(r.kind, QXSYS_RAISE) << i;
        EXPECT_STREQ(r.file, "bcdf_gen") << i;
        EXPECT_EQ(r.code, expected[i].code) << i;
        EXPECT_STREQ(r.text, expected[i].text) << i;
    }
    EXPECT_EQ(values(df->points), values(copy->points));
    EXPECT_EQ(values(df->params), values(copy->params));
    EXPECT_EQ(values(df->slopes), values(copy->slopes));
    EXPECT_EQ(values(df->crvatrs), values(copy->crvatrs));
    EXPECT_EQ(values(df->slope_params), values(copy->slope_params));

    // With no points to edit.
    qxsys_clear_reports();
    BCDF *empty = static_cast<BCDF *>(SM_alloc(sizeof(BCDF)));
    *empty = BCDF{};
    BCDF_insert_defining_point(empty, 0, q);
    expect_report(QXSYS_RAISE, QX_ERR_NO_POINTS, "No Points Allocated In Defining Data Structure.");
    BCDF_update_end_slopes(empty, s, 0, s, 0);
    expect_report(QXSYS_RAISE, QX_ERR_NO_POINTS, "No Points Allocated In Defining Data Structure.",
                  2);
    EXPECT_EQ(empty->slopes, nullptr);
    BCDF_free_structure(empty);
    BCDF_free_structure(copy);
    BCDF_free_structure(df);
}

TEST_F(BcdfGen, SlopesAndCurvaturesAreSetReplacedAndRemovedInPointOrder)
{
    BCDF *df = make(bent(6));
    const int points[3] = {4, 1, 2}, types[3] = {1, 2, 3};
    const double v[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    BCDF_update_slopes(df, 3, points, v, types);
    const double *t = df->params->points;
    EXPECT_EQ(values(df->slope_params), (Doubles{t[1], t[2], t[4]}));
    EXPECT_EQ(values(df->slopes), (Doubles{0, 1, 0, 0, 0, 1, 1, 0, 0}));
    EXPECT_EQ(Doubles(df->slope_types, df->slope_types + 3), (Doubles{2, 3, 1}));
    BCDF_update_curvatures(df, 2, points + 1, v + 3, nullptr);
    EXPECT_EQ(values(df->crvatr_params), (Doubles{t[1], t[2]}));
    EXPECT_EQ(df->crvatr_types[1], 0);

    // Removing a slope takes the curvature at its point with it.
    BCDF_remove_slopes(df, 1, 1);
    EXPECT_EQ(values(df->slope_params), (Doubles{t[1], t[4]}));
    EXPECT_EQ(values(df->crvatr_params), (Doubles{t[1]}));
    EXPECT_EQ(Doubles(df->slope_types, df->slope_types + 2), (Doubles{2, 1}));
    BCDF_remove_curvatures(df, 0, 1);
    EXPECT_EQ(df->crvatrs, nullptr);
    EXPECT_EQ(df->crvatr_types, nullptr);

    // Both end slopes make a qx spline, whose continuity is 1.
    EXPECT_EQ(BCDF_ask_continuity(df), 2);
    const double a[3] = {3, 4, 0}, b[3] = {0, 0, 2};
    BCDF_update_end_slopes(df, a, 8, b, 9);
    EXPECT_EQ(values(df->slope_params), (Doubles{t[0], t[1], t[4], t[5]}));
    EXPECT_EQ(BCDF_is_qx_spline(df), 1);
    EXPECT_EQ(BCDF_ask_continuity(df), 1);
    BCDF_update_end_slopes(df, nullptr, 0, a, 6); // only the end
    EXPECT_EQ(slope_of(df, 3), (Doubles{3, 4, 0}));
    EXPECT_EQ(df->slope_types[3], 6);
    EXPECT_EQ(df->slope_types[0], 8);

    BCDF_unitize_slopes(df);
    EXPECT_EQ(slope_of(df, 0), (Doubles{0.6, 0.8, 0}));
    const double zero[3] = {0, 0, 0};
    BCDF_replace_slope(df, 1, zero, 0);
    BCDF_unitize_slopes(df); // a zero slope stays zero
    EXPECT_EQ(slope_of(df, 1), (Doubles{0, 0, 0}));

    BCDF_make_least_squares_slopes(df); // inner slopes go, the ends stay unit
    EXPECT_EQ(values(df->slope_params), (Doubles{t[0], t[5]}));
    BCDF_remove_slopes(df, 0, 2);
    EXPECT_EQ(df->slopes, nullptr);
    EXPECT_EQ(df->slope_params, nullptr);
    EXPECT_EQ(df->slope_types, nullptr);
    BCDF_free_structure(df);
}

TEST_F(BcdfGen, NeededSlopesArePerpendicularToTheirCurvatures)
{
    BCDF *df = make(bent(5));
    const double k0[3] = {0, 0, 2}, k2[3] = {0.3, -0.4, 1.0}, s4[3] = {1, 0, 0}, k4[3] = {0, 1, 0};
    BCDF_change_curvature(df, 0, k0, 0);
    BCDF_change_curvature(df, 2, k2, 0);
    BCDF_change_slope(df, 4, s4, 7);
    BCDF_change_curvature(df, 4, k4, 0);
    EXPECT_EQ(BCDF_check_defining_data(df), QX_BCDF_CURVATURE_WITHOUT_SLOPE);
    BCDF_add_needed_slopes(df);
    EXPECT_EQ(BCDF_check_defining_data(df), 0);
    ASSERT_EQ(BCDF_return_num_of_slopes(df), 3);
    EXPECT_EQ(df->slope_types[0], 0);
    EXPECT_EQ(df->slope_types[2], 7); // the existing slope is kept
    EXPECT_EQ(slope_of(df, 2), (Doubles{1, 0, 0}));
    // At the first point: the chord to the second over its span, its z part
    // taken out.
    const Doubles p = bent(5), t = chord(p);
    const double span = t[1] - t[0];
    const Doubles s0 = slope_of(df, 0);
    EXPECT_NEAR(s0[0], (p[3] - p[0]) / span, 1e-15);
    EXPECT_NEAR(s0[1], (p[4] - p[1]) / span, 1e-15);
    EXPECT_NEAR(s0[2], 0.0, 1e-15);
    BCDF_free_structure(df);
}

// ---- ownership ----

// Every allocation of a sequence of edits fails in turn, with the host
// returning NULL and with the host unwinding: the record stays freeable and
// nothing is left behind.
TEST_F(BcdfGen, FailingAllocationsLeakNothing)
{
    const double s[3] = {1, 0, 0}, q[3] = {5, 5, 5};
    const size_t live = qxsys_live_blocks();
    long fail_at = 0; // 0: a dry run that counts the allocations
    const auto edits = [&](BCDF *df) {
        qxsys_fail_allocation(fail_at);
        BCDF_change_slope(df, 3, s, 0);
        BCDF_insert_defining_point(df, 1, q);
        BCDF_insert_defining_point(df, 5, q);
        BCDF_change_curvature(df, 0, s, 0);
        BCDF_replace_defining_point(df, 2, q);
        BCDF_remove_defining_points(df, 0, 1);
        BCDF_update_end_slopes(df, s, 1, s, 1);
        BCDF_add_needed_slopes(df);
    };
    const auto fresh = [&] {
        BCDF *df = make(bent(4), 3, 1);
        BCDF_change_slope(df, 1, s, 0);
        BCDF_change_curvature(df, 1, s, 0);
        BCDF_change_curvature(df, 2, s, 0);
        return df;
    };
    BCDF *df = fresh();
    const unsigned long before = qxsys_allocation_calls();
    edits(df);
    const long calls = static_cast<long>(qxsys_allocation_calls() - before);
    BCDF_free_structure(df);
    ASSERT_GE(calls, 8);
    for (int unwind = 0; unwind < 2; ++unwind) {
        for (fail_at = 1; fail_at <= calls; ++fail_at) {
            df = fresh();
            if (unwind == 1) {
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
