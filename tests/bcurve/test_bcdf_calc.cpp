// Automatic derivatives against a parabola sampled at uneven parameters
// (every rule), the periodic and two-point rules, mirrored slopes, the
// quadratic approximation and the position checks; slopes in the normalised
// range (h813_), unitising and denormalising.
#include <cmath>
#include <vector>

#include "support/qx_test.h"

namespace
{

using Doubles = std::vector<double>;
using Ints = std::vector<int>;
using qxtest::host_copy;
using qxtest::kNaN;
constexpr double kEps = 2.220446049250313e-16;

class BcdfCalc : public qxtest::QxTest
{
};

PNTLST *list(const Doubles &v, int dim)
{
    return PNTLST_create_from_list_of_pts(host_copy(v), int(v.size()) / dim, dim);
}

// A record of 3-D points (4-D with weights 1, 2, ... when weighted) at
// parameters t, with slopes of the given types at the points `at`.
BCDF *record(const Doubles &pts, const Doubles &t, int periodic = 0, const Ints &at = {},
             const Doubles &slopes = {}, const Ints &types = {}, bool weighted = false)
{
    Doubles par, w;
    for (int i : at) par.push_back(t[size_t(i)]);
    for (size_t i = 0; i < pts.size(); ++i) {
        w.push_back(pts[i] * double(i / 3 + 1));
        if (i % 3 == 2) w.push_back(double(i / 3 + 1));
    }
    const bool s = !at.empty();
    return BCDF_create_from_pntlst(periodic, 4, 0, weighted ? list(w, 4) : list(pts, 3), list(t, 1),
                                   nullptr, s ? list(slopes, 3) : nullptr,
                                   s ? list(par, 1) : nullptr, s ? host_copy(types) : nullptr,
                                   nullptr, nullptr, nullptr);
}

// q(t) = A t^2 + B t + C (d = 0), or its derivative d, at each t (xyz).
Doubles q(const Doubles &t, int d = 0)
{
    const double a[3] = {0.5, -1.25, 2.0}, b[3] = {1.0, 3.0, -0.75}, c[3] = {-2.0, 0.5, 1.0};
    Doubles r;
    for (double x : t)
        for (int j = 0; j < 3; ++j)
            r.push_back(d == 0   ? (a[j] * x + b[j]) * x + c[j]
                        : d == 1 ? 2 * a[j] * x + b[j]
                                 : 2 * a[j]);
    return r;
}

void expect_all(const double *got, const Doubles &want, double tol, const char *what)
{
    for (size_t i = 0; i < want.size(); ++i)
        EXPECT_NEAR(got[i], want[i], tol) << what << " [" << i << "]";
}

// q's first and second derivatives at t, as auto_derivatives gives them.
Doubles dq(double t)
{
    Doubles d = q({t}, 1), d2 = q({t}, 2);
    d.insert(d.end(), d2.begin(), d2.end());
    return d;
}

// auto_derivatives (num_derivs 2) at point i into a NaN-filled array.
Doubles derivs(const BCDF *df, int i, int status = 0)
{
    Doubles d(6, kNaN);
    EXPECT_EQ(BCDF_CALC_auto_derivatives(df, i, 2, d.data()), status) << i;
    return d;
}

// f makes no report at checking level 1.
template <class F> void expect_silent(F f)
{
    qxsys_clear_reports();
    MACH__checking_level = 1;
    f();
    MACH__checking_level = 0;
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(BcdfCalc, EveryRuleReproducesAParabola)
{
    // Uneven parameters, not always from 0: plain; with the neighbours' own
    // exact slopes (type 1 at the start, mode 1; type 0 at the end, mode 2;
    // unread inside); weighted.
    for (const Doubles &t : {Doubles{0, 0.7, 1.5, 3.1, 4.0}, Doubles{1.0, 1.2, 2.9, 3.0}}) {
        const int n = int(t.size());
        const Doubles p = q(t), s = q({t[1], t[size_t(n) - 2]}, 1);
        for (BCDF *df : {record(p, t), record(p, t, 0, {1, n - 2}, s, {1, 0}),
                         record(p, t, 0, {}, {}, {}, true)}) {
            for (int i = 0; i < n; ++i) {
                const Doubles d = derivs(df, i);
                double sl[3];
                expect_all(d.data(), dq(t[size_t(i)]), 1e-12, "parabola");
                EXPECT_EQ(BCDF_CALC_auto_slope(df, i, sl), 0);
                expect_all(sl, {d[0], d[1], d[2]}, 0, "auto slope");
            }
            BCDF_free_structure(df);
        }
    }
    // Periodic: the point before the seam stands at t[n-2] - t[n-1] = -1.5,
    // not shifted by t[0] = 1 (-0.5); data sampled there reproduce q (point
    // 2 is off q, so the start rule would not).
    BCDF *df = record(q({1.0, 2.0, 7.0, -1.5, 1.0}), {1.0, 2.0, 3.5, 4.0, 5.5}, 1);
    expect_all(derivs(df, 0).data(), dq(1.0), 1e-12, "periodic");
    BCDF_free_structure(df);
    // Two points: the chord quotient at either end, the difference times the
    // reciprocal 1/(t1 - t0) bit for bit (0.3 r != 0.3 / 0.7); no second
    // derivative.
    df = record({0.1, 0, 0, 1.1, 0.7, 0.3}, {0.2, 0.9});
    const double r = 1.0 / (0.9 - 0.2);
    for (int i : {0, 1})
        expect_all(derivs(df, i).data(), {(1.1 - 0.1) * r, 0.7 * r, 0.3 * r, 0, 0, 0}, 0, "chord");
    BCDF_free_structure(df);
}

TEST_F(BcdfCalc, MirroredSlopesAndAutoCurvature)
{
    // Types 2, 4, 5 at the neighbour: m, the slope (1, 1, 0) mirrored about
    // the chord (2, 0, 0), and m x unit(c x m) in their plane, as long as m.
    // At the end the slope (0, 1, 0) lies along the chord from (3, 1, 0) to
    // (3, 3, 0): no second derivative.
    for (int type : {2, 4, 5}) {
        BCDF *df = record({0, 0, 0, 2, 0, 0, 3, 1, 0, 3, 3, 0}, {0, 2, 3.5, 5.5}, 0, {1, 2},
                          {1, 1, 0, 0, 1, 0}, {type, type});
        Doubles d = derivs(df, 0);
        double c[3], k[3];
        expect_all(d.data(), {1, -1, 0, 1, 1, 0}, 4 * kEps, "mirrored start");
        expect_all(derivs(df, 3).data(), {0, 1, 0, 0, 0, 0}, 4 * kEps, "mirrored end");
        // auto_curvature: from the derivatives, a point's own slope (point 1:
        // (1, 1, 0)) replacing the first.
        ASSERT_EQ(BCDF_CALC_auto_curvature(df, 0, c), 0);
        DGEOM_crv_curvature(d.data(), d.data() + 3, k);
        expect_all(c, {k[0], k[1], k[2]}, 0, "auto curvature");
        d = derivs(df, 1);
        BCDF_CALC_auto_curvature(df, 1, c);
        d[0] = d[1] = 1, d[2] = 0;
        DGEOM_crv_curvature(d.data(), d.data() + 3, k);
        expect_all(c, {k[0], k[1], k[2]}, 0, "auto curvature with own slope");
        BCDF_free_structure(df);
    }
}

TEST_F(BcdfCalc, QuadraticApproximationModesAndFailure)
{
    // Mode 0: three positions; 1: the third condition a slope; 2: the second
    // (its point slot holds NaN). num_derivs 1 writes no second derivative.
    const Doubles params[3] = {{-0.5, 0.25, 2.0}, {-0.5, 0.25, 0.25}, {0.25, 2.0, 2.0}};
    for (int mode = 0; mode < 3; ++mode) {
        const Doubles &t = params[mode];
        Doubles pts = q(t), slope = mode == 0 ? Doubles(3, kNaN) : q({t[3 - size_t(mode)]}, 1);
        if (mode > 0) std::fill_n(pts.begin() + 9 - 3 * mode, 3, kNaN);
        double out[9], one[9] = {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
        ASSERT_EQ(BCDF_CALC_quadratic_apprx(pts.data(), t.data(), slope.data(), mode, 1.3, 2, out),
                  0);
        BCDF_CALC_quadratic_apprx(pts.data(), t.data(), slope.data(), mode, 1.3, 1, one);
        for (int d = 0; d <= 2; ++d) expect_all(out + 3 * d, q({1.3}, d), 1e-13, "q");
        expect_all(one, Doubles(out, out + 6), 0, "num_derivs 1");
        EXPECT_TRUE(std::isnan(one[6]) && std::isnan(one[8]));
    }
    // Two equal position parameters: the solver's 1, out untouched; in a
    // record the derivatives stay cleared.
    const double pts[9] = {0, 0, 0, 1, 0, 0, 2, 0, 0}, eq[3] = {0, 1, 1};
    double out[9] = {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
    EXPECT_EQ(BCDF_CALC_quadratic_apprx(pts, eq, nullptr, 0, 0.5, 2, out), 1);
    EXPECT_TRUE(std::isnan(out[0]));
    BCDF *df = record({0, 0, 0, 1, 0, 0, 2, 0, 0, 3, 0, 0}, {0, 1, 1, 2});
    expect_all(derivs(df, 1, 1).data(), Doubles(6, 0.0), 0, "singular");
    BCDF_free_structure(df);
}

TEST_F(BcdfCalc, PositionChecks)
{
    BCDF *df = record({0, 0, 0, 1, 0, 0, 2, 1, 0}, {0, 1, 2});
    double d[6];
    for (int bad : {-1, 3}) {
        const char *text = "An Invalid Point Position Was Given By Calling Routine";
        expect_checked([&] { BCDF_CALC_auto_derivatives(df, bad, 2, d); }, "bcdf_calc",
                       QX_ERR_INVALID_POSITION, text);
        expect_checked([&] { BCDF_CALC_auto_curvature(df, bad, d); }, "bcdf_calc",
                       QX_ERR_INVALID_POSITION, text);
        expect_checked([&] { BCDF_CALC_normalized_slope(df, bad, d); }, "bcdf_calc",
                       QX_ERR_INVALID_POSITION,
                       "The Point Position Is Not Valid For The Array Of Points");
        // Unchecked: zeros.
        expect_all(derivs(df, bad).data(), Doubles(6, 0.0), 0, "unchecked");
        EXPECT_EQ(BCDF_CALC_normalized_slope(df, bad, d), 1);
        EXPECT_EQ(d[0], 0.0);
    }
    expect_silent([&] { // valid positions, checking on
        for (int i = 0; i < 3; ++i) BCDF_CALC_auto_curvature(df, i, d);
    });
    BCDF_free_structure(df);
    df = record({1, 2, 3}, {0}); // one point: no derivatives
    expect_all(derivs(df, 0).data(), Doubles(6, 0.0), 0, "one point");
    BCDF_free_structure(df);
}

TEST_F(BcdfCalc, NormalizedSlopesUnitizingAndParameters)
{
    // Slope types 0..5 (and 9) at points 0..6, L = 6: derivatives times L,
    // directions unit, the fixed vector (type 3) kept.
    const Doubles t{0, 1, 2, 3, 4, 5, 6};
    Doubles p, sl;
    for (double x : t) p.insert(p.end(), {x, x * x / 4, 0}), sl.insert(sl.end(), {3, 0, 4});
    BCDF *df = record(p, t, 0, {0, 1, 2, 3, 4, 5, 6}, sl, {0, 1, 2, 3, 4, 5, 9});
    const Doubles scaled{18, 0, 24}, unit{0.6, 0, 0.8}, kept{3, 0, 4};
    const Doubles *want[7] = {&scaled, &unit, &scaled, &kept, &unit, &unit, &scaled};
    for (int i = 0; i < 7; ++i) {
        double s[3] = {kNaN, kNaN, kNaN};
        ASSERT_EQ(BCDF_CALC_normalized_slope(df, i, s), 0) << i;
        expect_all(s, *want[i], 0, "normalised");
    }
    const double L = BCDF_normalize(df); // mapped back exactly
    for (size_t i = 0; i < t.size(); ++i)
        EXPECT_EQ(BCDF_CALC_denormalize_param(df->params->points[i], L), t[i]);
    BCDF_free_structure(df);
    df = record(q({0, 0.5, 2}), {0, 0.5, 2}); // no slope: the estimate times L
    double s[3];
    ASSERT_EQ(BCDF_CALC_normalized_slope(df, 1, s), 0);
    const Doubles d1 = q({0.5}, 1);
    expect_all(s, {2 * d1[0], 2 * d1[1], 2 * d1[2]}, 1e-13, "estimate");
    BCDF_free_structure(df);
    // h813_: zero directions (2, out zero), unknown codes (3, out untouched);
    // out may alias the slope.
    const double zero[3] = {0, 0, 1e-11}, two = 2.0;
    double out[3], alias[3] = {1, 2, 2};
    int status = 0;
    for (int code : {2, 5, 0, 6}) {
        out[0] = kNaN;
        h813_(zero, &two, &code, out, &status);
        EXPECT_EQ(status, code == 2 || code == 5 ? 2 : 3) << code;
        EXPECT_EQ(std::isnan(out[0]), status == 3) << code;
    }
    const int code3 = 3;
    h813_(alias, &two, &code3, alias, &status);
    EXPECT_TRUE(status == 1 && alias[2] == 4.0);
    // Unitising: a squared length at most 1.0e-20 is zero (checked), just
    // above is not.
    const double s5[3] = {0, 3, 4}, z[3] = {0.99e-10, 0, 0}, nz[3] = {1.01e-10, 0, 0};
    EXPECT_EQ(BCDF_CALC_unitize_slope(s5, out), 5.0);
    expect_all(out, {0, 0.6, 0.8}, 0, "unit");
    expect_checked([&] { BCDF_CALC_unitize_slope(z, out); }, "bcdf_calc", QX_ERR_ZERO_LENGTH_SLOPE,
                   "The Input Slope Has Zero Length");
    out[1] = kNaN;
    EXPECT_EQ(BCDF_CALC_unitize_slope(z, out), 0.0);
    expect_all(out, {0, 0, 0}, 0, "zero slope");
    expect_silent([&] { EXPECT_EQ(BCDF_CALC_unitize_slope(nz, out), 1.01e-10); });
    EXPECT_EQ(out[0], 1.0);
}

} // namespace
