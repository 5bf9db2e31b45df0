// Automatic derivatives of a defining-data record: every rule on points
// sampled from a parabola (whose derivatives it must reproduce, uneven
// parameters included), the periodic rule's unshifted first parameter, the
// two-point chord, mirrored slopes and their in-plane second derivative, the
// quadratic approximation's modes and solver failure, the position check;
// slopes in the normalised range (h813_), unitising and denormalising.
#include <array>
#include <cmath>
#include <vector>

#include "support/qx_test.h"

namespace
{

using Doubles = std::vector<double>;
using V3 = std::array<double, 3>;
using qxtest::host_copy;
using qxtest::kNaN;
constexpr double kEps = 2.220446049250313e-16;

class BcdfCalc : public qxtest::QxTest
{
  protected:
    template <class F> static void expect_checked(F f, int code, const char *text)
    {
        QxTest::expect_checked(f, "bcdf_calc", code, text);
    }
};

PNTLST *list(const Doubles &v, int dimension)
{
    return PNTLST_create_from_list_of_pts(host_copy(v), static_cast<int>(v.size()) / dimension,
                                          dimension);
}

// A record of 3-D points with the given parameters, slopes at the given
// points (by index) with their types.
BCDF *record(const Doubles &pts, const Doubles &t, int periodic = 0,
             const std::vector<int> &slope_at = {}, const Doubles &slopes = {},
             const std::vector<int> &types = {})
{
    PNTLST *s = nullptr, *sp = nullptr;
    int *ty = nullptr;
    if (!slope_at.empty()) {
        Doubles par;
        for (int i : slope_at) par.push_back(t[static_cast<size_t>(i)]);
        s = list(slopes, 3);
        sp = list(par, 1);
        ty = host_copy(types);
    }
    return BCDF_create_from_pntlst(periodic, 4, 0, list(pts, 3), list(t, 1), nullptr, s, sp, ty,
                                   nullptr, nullptr, nullptr);
}

// q(t) = A t^2 + B t + C and its derivatives.
const V3 qa{0.5, -1.25, 2.0}, qb{1.0, 3.0, -0.75}, qc{-2.0, 0.5, 1.0};
V3 q(double t, int d = 0)
{
    V3 r;
    for (size_t j = 0; j < 3; ++j)
        r[j] = d == 0   ? (qa[j] * t + qb[j]) * t + qc[j]
               : d == 1 ? 2 * qa[j] * t + qb[j]
                        : 2 * qa[j];
    return r;
}
Doubles sample(const Doubles &t)
{
    Doubles p;
    for (double x : t) {
        const V3 v = q(x);
        p.insert(p.end(), v.begin(), v.end());
    }
    return p;
}

void expect_all(const double *got, const std::vector<double> &want, double tol, const char *what)
{
    for (size_t i = 0; i < want.size(); ++i)
        EXPECT_NEAR(got[i], want[i], tol) << what << " [" << i << "]";
}

void expect_derivs(const double *out, double t, double tol, const char *what)
{
    for (int d = 1; d <= 2; ++d)
        for (size_t j = 0; j < 3; ++j)
            EXPECT_NEAR(out[3 * (d - 1) + static_cast<int>(j)], q(t, d)[j], tol)
                << what << " t=" << t << " derivative " << d << " [" << j << "]";
}

TEST_F(BcdfCalc, EveryRuleReproducesAParabola)
{
    // Uneven parameters, also not starting at 0; a weighted record too.
    for (const Doubles &t : {Doubles{0, 0.7, 1.5, 3.1, 4.0}, Doubles{1.0, 1.2, 2.9, 3.0}}) {
        const int n = static_cast<int>(t.size());
        BCDF *df = record(sample(t), t);
        for (int i = 0; i < n; ++i) {
            double out[6] = {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
            ASSERT_EQ(BCDF_CALC_auto_derivatives(df, i, 2, out), 0);
            expect_derivs(out, t[static_cast<size_t>(i)], 1e-12, "three points");
            double s[3];
            EXPECT_EQ(BCDF_CALC_auto_slope(df, i, s), 0);
            for (int j = 0; j < 3; ++j) EXPECT_EQ(s[j], out[j]);
        }
        BCDF_free_structure(df);
        // Ends from two points and the neighbour's own (exact) slope, type 1
        // (mode 1 at the start, mode 2 at the end); interior slopes unread.
        const V3 s1 = q(t[1], 1), s2 = q(t[size_t(n) - 2], 1);
        df =
            record(sample(t), t, 0, {1, n - 2}, {s1[0], s1[1], s1[2], s2[0], s2[1], s2[2]}, {1, 0});
        for (int i = 0; i < n; ++i) {
            double out[6];
            ASSERT_EQ(BCDF_CALC_auto_derivatives(df, i, 2, out), 0);
            expect_derivs(out, t[static_cast<size_t>(i)], 1e-12, "slope at the neighbour");
        }
        BCDF_free_structure(df);
    }
    // Weighted points are divided by their weights.
    const Doubles t{0, 1, 2.5};
    Doubles p = sample(t), w;
    for (size_t i = 0; i < 3; ++i) {
        const double wt = 1.0 + static_cast<double>(i);
        w.insert(w.end(), {p[3 * i] * wt, p[3 * i + 1] * wt, p[3 * i + 2] * wt, wt});
    }
    BCDF *df = BCDF_create_from_pntlst(0, 4, 0, list(w, 4), list(t, 1), nullptr, nullptr, nullptr,
                                       nullptr, nullptr, nullptr, nullptr);
    double out[6];
    ASSERT_EQ(BCDF_CALC_auto_derivatives(df, 0, 2, out), 0);
    expect_derivs(out, 0.0, 1e-13, "weighted");
    BCDF_free_structure(df);
}

TEST_F(BcdfCalc, PeriodicRuleUsesTheUnshiftedLastSpan)
{
    // Parameters from 1: the point before the seam is taken at t[n-2] -
    // t[n-1] = -1.5 (not t[0] - 1.5 = -0.5); data sampled there reproduce q.
    const Doubles t{1.0, 2.0, 3.5, 4.0, 5.5};
    Doubles p = sample({1.0, 2.0, 3.5, -1.5});
    const V3 first = q(1.0);
    p.insert(p.end(), first.begin(), first.end()); // the closing copy
    BCDF *df = record(p, t, 1);
    double out[6] = {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
    ASSERT_EQ(BCDF_CALC_auto_derivatives(df, 0, 2, out), 0);
    expect_derivs(out, 1.0, 1e-12, "periodic");
    BCDF_free_structure(df);
}

TEST_F(BcdfCalc, TwoPointChordAndCollinearStart)
{
    BCDF *df = record({0, 0, 0, 3, 0, 0}, {0, 1.5});
    for (int i : {0, 1}) {
        double out[6] = {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
        ASSERT_EQ(BCDF_CALC_auto_derivatives(df, i, 2, out), 0);
        expect_all(out, {2, 0, 0, 0, 0, 0}, 0, "two points");
    }
    BCDF_free_structure(df);
    // The difference times the reciprocal, bit for bit.
    df = record({0.1, 0, 0, 1.1, 0.7, 0.1}, {0.2, 0.5});
    double out[3];
    BCDF_CALC_auto_slope(df, 1, out);
    const double r = 1.0 / (0.5 - 0.2);
    EXPECT_EQ(out[0], (1.1 - 0.1) * r);
    EXPECT_EQ(out[1], 0.7 * r);
    BCDF_free_structure(df);
    // Three collinear evenly spaced points; the interior of a bent triple.
    df = record({0, 0, 0, 1, 0, 0, 2, 0, 0}, {0, 1, 2});
    double d[6];
    BCDF_CALC_auto_derivatives(df, 0, 2, d);
    expect_all(d, {1, 0, 0, 0, 0, 0}, 0, "collinear start");
    BCDF_free_structure(df);
    df = record({0, 0, 0, 1, 1, 0, 2, 0, 0}, {0, 1, 2});
    BCDF_CALC_auto_derivatives(df, 1, 2, d);
    expect_all(d, {1, 0, 0, 0, -2, 0}, 0, "bent interior");
    BCDF_free_structure(df);
}

TEST_F(BcdfCalc, MirroredSlopes)
{
    const double S[3] = {1, 1, 0}, A[3] = {0, 0, 0}, B[3] = {2, 0, 0};
    double m[3];
    BCDF_CALC_mirror_slope(S, A, B, m);
    expect_all(m, {1, -1, 0}, 0, "mirror");
    // Types 2, 4, 5 at the second point: m and m x unit(c x m), which lies
    // in the chord's plane on the chord's side, as long as m.
    for (int type : {2, 4, 5}) {
        BCDF *df = record({0, 0, 0, 2, 0, 0, 3, 1, 0, 3, 3, 0}, {0, 2, 3.5, 5.5}, 0, {1, 2},
                          {1, 1, 0, 0, 1, 0}, {type, type});
        double d[6];
        ASSERT_EQ(BCDF_CALC_auto_derivatives(df, 0, 2, d), 0);
        expect_all(d, {1, -1, 0, 1, 1, 0}, 4 * kEps, "mirrored start");
        // At the end: the slope (0, 1, 0) at (3, 1, 0) about the chord to
        // (3, 3, 0) stays (0, 1, 0); it lies along the chord, so no second
        // derivative.
        double e[6] = {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
        ASSERT_EQ(BCDF_CALC_auto_derivatives(df, 3, 2, e), 0);
        expect_all(e, {0, 1, 0, 0, 0, 0}, 4 * kEps, "mirrored end");
        BCDF_free_structure(df);
    }
    // A circular arc: the mirrored end tangent and the curvature vector of
    // the rule are the circle's (radius 2, centre origin).
    const double a0 = 0.3, a1 = 0.9;
    BCDF *df = record(
        {2 * std::cos(a0), 2 * std::sin(a0), 0, 2 * std::cos(a1), 2 * std::sin(a1), 0, 0, 2, 0},
        {0, 1.2, 3}, 0, {1}, {-std::sin(a1), std::cos(a1), 0}, {2});
    double d[6], k[3];
    BCDF_CALC_auto_derivatives(df, 0, 2, d);
    EXPECT_NEAR(d[0], -std::sin(a0), 1e-15);
    EXPECT_NEAR(d[1], std::cos(a0), 1e-15);
    EXPECT_NEAR(DGEOM_crv_curvature(d, d + 3, k), 1.0, 1e-15); // |m| = |d2| = 1
    EXPECT_NEAR(k[0], -std::cos(a0), 1e-15);
    // auto_curvature: derivatives with the point's own slope replacing the
    // first (point 1 has one; point 0 has none).
    double c[3], d1[6], own[3];
    ASSERT_EQ(BCDF_CALC_auto_curvature(df, 0, c), 0);
    expect_all(c, {k[0], k[1], k[2]}, 0, "auto curvature");
    BCDF_CALC_auto_derivatives(df, 1, 2, d1);
    BCDF_copy_single_3d_slope(df, 0, own, nullptr);
    BCDF_CALC_auto_curvature(df, 1, c);
    DGEOM_crv_curvature(own, d1 + 3, k);
    expect_all(c, {k[0], k[1], k[2]}, 0, "auto curvature with own slope");
    BCDF_free_structure(df);
}

TEST_F(BcdfCalc, QuadraticApproximationModesAndFailure)
{
    // Mode 0: three positions; 1: positions at t0, t1 and the slope at t1;
    // 2: position at t1, slope and position at t2. Unread slots hold NaN.
    const Doubles params[3] = {{-0.5, 0.25, 2.0}, {-0.5, 0.25, 0.25}, {0.25, 2.0, 2.0}};
    const double x = 1.3;
    for (int mode = 0; mode < 3; ++mode) {
        const Doubles &t = params[mode];
        Doubles pts = sample(t);
        V3 slope{kNaN, kNaN, kNaN};
        if (mode > 0) {
            const size_t slot = mode == 1 ? 2 : 1;
            slope = q(t[slot], 1);
            std::fill(pts.begin() + long(3 * slot), pts.begin() + long(3 * slot + 3), kNaN);
        }
        for (int nd = 0; nd <= 2; ++nd) {
            double out[9];
            std::fill(out, out + 9, kNaN);
            ASSERT_EQ(
                BCDF_CALC_quadratic_apprx(pts.data(), t.data(), slope.data(), mode, x, nd, out), 0);
            for (int d = 0; d <= 2; ++d)
                for (size_t j = 0; j < 3; ++j)
                    if (d > nd)
                        EXPECT_TRUE(std::isnan(out[3 * d + int(j)])) << mode << " " << nd;
                    else
                        EXPECT_NEAR(out[3 * d + int(j)], q(x, d)[j], 1e-13) << mode << " " << nd;
        }
    }
    // Two equal position parameters: the solver's 1, out untouched; in a
    // record the derivatives stay cleared.
    const double pts[9] = {0, 0, 0, 1, 0, 0, 2, 0, 0}, eq[3] = {0, 1, 1};
    double out[9] = {kNaN, kNaN, kNaN};
    EXPECT_EQ(BCDF_CALC_quadratic_apprx(pts, eq, nullptr, 0, 0.5, 2, out), 1);
    EXPECT_TRUE(std::isnan(out[0]));
    BCDF *df = record({0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0}, {0, 1, 1, 2});
    double d[6] = {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
    EXPECT_EQ(BCDF_CALC_auto_derivatives(df, 1, 2, d), 1);
    for (double v : d) EXPECT_EQ(v, 0.0);
    BCDF_free_structure(df);
}

TEST_F(BcdfCalc, PositionChecks)
{
    BCDF *df = record({0, 0, 0, 1, 0, 0, 2, 1, 0}, {0, 1, 2});
    for (int bad : {-1, 3}) {
        double d[6] = {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
        expect_checked([&] { BCDF_CALC_auto_derivatives(df, bad, 2, d); }, QX_ERR_INVALID_POSITION,
                       "An Invalid Point Position Was Given By Calling Routine");
        expect_checked([&] { BCDF_CALC_auto_curvature(df, bad, d); }, QX_ERR_INVALID_POSITION,
                       "An Invalid Point Position Was Given By Calling Routine");
        expect_checked([&] { BCDF_CALC_normalized_slope(df, bad, d); }, QX_ERR_INVALID_POSITION,
                       "The Point Position Is Not Valid For The Array Of Points");
        // Unchecked: zeros, no report.
        std::fill(d, d + 6, kNaN);
        EXPECT_EQ(BCDF_CALC_auto_derivatives(df, bad, 2, d), 0);
        for (double v : d) EXPECT_EQ(v, 0.0);
        EXPECT_EQ(BCDF_CALC_normalized_slope(df, bad, d), 1);
        EXPECT_EQ(d[0], 0.0);
    }
    // No checks at valid positions with checking on.
    qxsys_clear_reports();
    MACH__checking_level = 1;
    double d[6];
    for (int i = 0; i < 3; ++i) BCDF_CALC_auto_curvature(df, i, d);
    MACH__checking_level = 0;
    EXPECT_EQ(qxsys_report_count(), 0);
    BCDF_free_structure(df);
    // A record of one point has no derivatives.
    df = record({1, 2, 3}, {0});
    EXPECT_EQ(BCDF_CALC_auto_derivatives(df, 0, 2, d), 0);
    for (double v : d) EXPECT_EQ(v, 0.0);
    BCDF_free_structure(df);
}

TEST_F(BcdfCalc, NormalizedSlopesAndParameters)
{
    // Slope types 0..5 (and 9) at points 0..6; L = 6.
    const Doubles t{0, 1, 2, 3, 4, 5, 6};
    Doubles p;
    for (double x : t) p.insert(p.end(), {x, x * x / 4, 0});
    Doubles sl;
    for (int i = 0; i < 7; ++i) sl.insert(sl.end(), {3.0, 0, 4.0});
    BCDF *df = record(p, t, 0, {0, 1, 2, 3, 4, 5, 6}, sl, {0, 1, 2, 3, 4, 5, 9});
    const double scaled[3] = {18, 0, 24}, unit[3] = {0.6, 0, 0.8}, kept[3] = {3, 0, 4};
    const double *expect[7] = {scaled, unit, scaled, kept, unit, unit, scaled};
    for (int i = 0; i < 7; ++i) {
        double s[3] = {kNaN, kNaN, kNaN};
        ASSERT_EQ(BCDF_CALC_normalized_slope(df, i, s), 0) << i;
        expect_all(s, {expect[i][0], expect[i][1], expect[i][2]}, 0, "normalised");
    }
    // Normalising the record and mapping its parameters back.
    const double L = BCDF_normalize(df);
    for (size_t i = 0; i < t.size(); ++i)
        EXPECT_EQ(BCDF_CALC_denormalize_param(df->params->points[i], L), t[i]);
    BCDF_free_structure(df);
    // A point without a slope: the estimate, times L.
    df = record(sample({0, 0.5, 2}), {0, 0.5, 2});
    double s[3];
    ASSERT_EQ(BCDF_CALC_normalized_slope(df, 1, s), 0);
    for (size_t j = 0; j < 3; ++j) EXPECT_NEAR(s[j], 2 * q(0.5, 1)[j], 1e-13);
    BCDF_free_structure(df);

    // h813_ directly: zero directions and unknown codes.
    const double zero[3] = {0, 0, 1e-11}, v[3] = {1, 2, 2}, two = 2.0;
    double out[3] = {kNaN, kNaN, kNaN};
    int status = 0;
    for (int code : {2, 5}) {
        h813_(zero, &two, &code, out, &status);
        EXPECT_EQ(status, 2);
        EXPECT_EQ(out[2], 0.0);
    }
    out[0] = kNaN;
    for (int code : {0, 6}) {
        h813_(v, &two, &code, out, &status);
        EXPECT_EQ(status, 3);
        EXPECT_TRUE(std::isnan(out[0]));
    }
    double alias[3] = {1, 2, 2};
    const int code3 = 3;
    h813_(alias, &two, &code3, alias, &status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(alias[2], 4.0);
}

TEST_F(BcdfCalc, UnitizeSlope)
{
    double u[3] = {kNaN, kNaN, kNaN};
    const double s[3] = {0, 3, 4};
    EXPECT_EQ(BCDF_CALC_unitize_slope(s, u), 5.0);
    expect_all(u, {0, 0.6, 0.8}, 0, "unit");
    // Squared length at most 1.0e-20 is zero; just above is not.
    const double z[3] = {0.99e-10, 0, 0}, nz[3] = {1.01e-10, 0, 0};
    expect_checked([&] { BCDF_CALC_unitize_slope(z, u); }, QX_ERR_ZERO_LENGTH_SLOPE,
                   "The Input Slope Has Zero Length");
    std::fill(u, u + 3, kNaN);
    EXPECT_EQ(BCDF_CALC_unitize_slope(z, u), 0.0);
    expect_all(u, {0, 0, 0}, 0, "zero slope");
    qxsys_clear_reports();
    MACH__checking_level = 1;
    EXPECT_GT(BCDF_CALC_unitize_slope(nz, u), 0.0);
    MACH__checking_level = 0;
    EXPECT_EQ(u[0], 1.0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

} // namespace
