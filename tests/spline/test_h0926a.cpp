// Rows of the interpolation system: h0916 against the recursive definition
// and bit for bit against the assembly's whole rows; the interleaving of
// points and conditions in the band (h0926a); the dense and wrap rows
// (h0926_).
#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "spline/spline_internal.h"
#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using Vec = std::vector<double>;

// B_{i,k}(t) and its derivative by the recursive definition (0/0 = 0).
double bspline(const Vec &u, int i, int k, double t, bool deriv = false)
{
    const auto at = [&](int j) { return u[static_cast<std::size_t>(j)]; };
    if (k == 1) return deriv ? 0.0 : at(i) <= t && t < at(i + 1) ? 1.0 : 0.0;
    const double d0 = at(i + k - 1) - at(i), d1 = at(i + k) - at(i + 1);
    const double b0 = d0 > 0 ? bspline(u, i, k - 1, t) / d0 : 0.0;
    const double b1 = d1 > 0 ? bspline(u, i + 1, k - 1, t) / d1 : 0.0;
    return deriv ? (k - 1) * (b0 - b1) : (t - at(i)) * b0 + (at(i + k) - t) * b1;
}

// h0916's k values (or derivatives) of the span at t.
Vec h0916_row(const Vec &u, int k, int span, double t, bool deriv)
{
    Vec row(static_cast<std::size_t>(k));
    for (int i = 0; i < k; ++i) {
        double v = kNaN, d = kNaN;
        EXPECT_EQ(h0916(t, u.data(), static_cast<int>(u.size()), k, span, i, &v, &d), 0);
        row[static_cast<std::size_t>(i)] = deriv ? d : v;
    }
    return row;
}

// A band of order n, half-width 3, assembled by h0926a from points and
// conditions whose right-hand sides hold their item numbers (points 1, 2,
// ...; conditions 10, 11, ...) so that the rows' order can be read back.
struct Band {
    double **a = nullptr;
    double *b = nullptr;
    Vec poles;
    int result;
    Band(const QX_interp_desc &d, const Vec &params, const Vec &condparams, const Vec &knots)
    {
        const int n = static_cast<int>(knots.size()) - d.order;
        msetup_banded(n, 3, &a, &b);
        Vec points, condvectors;
        for (int i = 0; i < 3 * d.n_points; ++i) points.push_back(1 + i / 3);
        for (int i = 0; i < 3 * (d.n_cond1 + d.n_cond2); ++i) condvectors.push_back(10 + i / 3);
        poles.assign(static_cast<std::size_t>(3 * n), kNaN);
        result = h0926a(&d, points.data(), params.data(), condparams.data(), condvectors.data(),
                        knots.data(), a, poles.data());
    }
    ~Band() { mdispose_banded(&a, &b); }
    Vec row(int r, int lo) const { return {a[r] + lo, a[r] + lo + 4}; }
    Vec items() const
    {
        Vec out;
        for (std::size_t i = 0; i < poles.size(); i += 3) out.push_back(poles[i]);
        return out;
    }
};

using Rows = qxtest::QxTest;

TEST_F(Rows, H0916MatchesTheDefinitionAndTheWholeRow)
{
    std::mt19937_64 rng(916);
    std::uniform_int_distribution<int> grid(0, 10), order(1, 7);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int trial = 0; trial < 300; ++trial) {
        const int k = order(rng);
        Vec u(static_cast<std::size_t>(2 * k + 6));
        for (double &x : u) x = grid(rng) / 4.0;
        std::sort(u.begin(), u.end());
        const int count = static_cast<int>(u.size());
        for (int span = k - 1; span <= count - k - 1; ++span) {
            const double lo = u[static_cast<std::size_t>(span)], hi = u[span + 1u];
            const double t = lo + unit(rng) * (hi - lo);
            double values[25], derivs[25];
            const int st = qx::spline::basis_row(t, u.data(), count, k, span, values, derivs);
            ASSERT_EQ(st, lo == hi ? 2 : 0);
            if (lo == hi) continue;
            const Vec v = h0916_row(u, k, span, t, false), d = h0916_row(u, k, span, t, true);
            for (int i = 0; i < k; ++i) {
                EXPECT_EQ(v[i], values[i]); // the same bits as the row
                EXPECT_EQ(d[i], derivs[i]);
                EXPECT_NEAR(v[i], bspline(u, span - k + 1 + i, k, t), 1.0e-13);
                EXPECT_NEAR(d[i], bspline(u, span - k + 1 + i, k, t, true),
                            1.0e-11 * (1 + std::fabs(d[i])));
            }
        }
    }
    const Vec u = {0, 0, 0, 0, 1, 1, 1, 1};
    double v = kNaN;
    const int cases[][4] = {{0, 3, 0, 1}, {26, 3, 0, 1}, {4, 2, 0, 2}, {4, 4, 0, 2}, {4, 3, 4, 3}};
    for (const auto &c : cases)
        EXPECT_EQ(h0916(0.5, u.data(), 8, c[0], c[1], c[2], &v, nullptr), c[3]);
    EXPECT_TRUE(std::isnan(v)); // failures write nothing
}

TEST_F(Rows, InterleavingAndTheLoweringAtTmax)
{
    { // Slopes at both ends of two points: condition, point, condition,
        // point; the last two evaluated at 1 - 5.0e-13.
        const Vec u = {0, 0, 0, 0, 1, 1, 1, 1};
        const Band band({2, 4, 0, 3, 2, 0, 0}, {0, 1}, {0, 1}, u);
        ASSERT_EQ(band.result, 0);
        EXPECT_EQ(band.items(), (Vec{10, 1, 11, 2}));
        EXPECT_EQ(band.row(0, 0), (Vec{-3, 3, 0, 0}));
        EXPECT_EQ(band.row(1, 0), (Vec{1, 0, 0, 0}));
        EXPECT_EQ(band.row(2, 0), h0916_row(u, 4, 3, 1.0 - 5.0e-13, true));
        EXPECT_EQ(band.row(3, 0), h0916_row(u, 4, 3, 1.0 - 5.0e-13, false));
    }
    const Vec params = {0, 0.25, 0.5, 0.75, 1}, u = {0, 0, 0, 0, 0.25, 0.5, 0.75, 1, 1, 1, 1};
    const Vec v = {0, 0, 0, 0, 0.25, 0.5, 0.5, 0.75, 1, 1, 1, 1};
    // A condition stands before the point at its parameter.
    const Band inner({5, 4, 0, 3, 3, 0, 0}, params, {0, 0.5, 1}, v);
    ASSERT_EQ(inner.result, 0);
    EXPECT_EQ(inner.items(), (Vec{10, 1, 2, 11, 3, 4, 12, 5}));
    EXPECT_EQ(inner.row(3, 3), h0916_row(v, 4, 6, 0.5, true));
    // A second condition at tmax follows the last point.
    EXPECT_EQ(Band({5, 4, 0, 3, 1, 1, 0}, params, {1, 1}, u).items(), (Vec{1, 2, 3, 4, 10, 5, 11}));
    // A second condition at an inner parameter is deferred to the end,
    // where its functions lie outside the band: the assembly stops.
    const Band deferred({5, 4, 0, 3, 2, 0, 0}, params, {0.5, 0.5}, u);
    EXPECT_EQ(deferred.result, 1);
    EXPECT_EQ(deferred.items(), (Vec{1, 2, 10, 3, 4, 5, 11}));
    EXPECT_EQ(deferred.row(6, 3), (Vec{0, 0, 0, 0}));
    // A point at tmax, an inner knot, lands in the last span, not in the
    // one starting at tmax.
    const Vec w = {0, 1, 2, 3, 4, 5, 6, 7};
    const Band top({4, 4, 0, 3, 0, 0, 0}, {3, 3.25, 3.5, 4}, {}, w);
    ASSERT_EQ(top.result, 0);
    EXPECT_EQ(top.row(3, 0), h0916_row(w, 4, 3, 4.0 - 5.0e-13, false));
}

// h0926_: point rows, condition rows, wrap rows 9.0 / -9.0.
TEST_F(Rows, DenseRowsAndWrapRows)
{
    const QX_interp_desc desc = {4, 4, 1, 3, 1, 0, 2}; // periodic, r = 3, N = 8
    const int N = 8;
    const Vec params = {0, 0.25, 0.5, 0.75}, condparams = {0.5};
    Vec u;
    for (int i = 0; i < 12; ++i) u.push_back((i - 3) / 5.0);
    Vec a(N * N, 0.0);
    ASSERT_EQ(h0926_(&desc, params.data(), condparams.data(), nullptr, u.data(), a.data()), 0);
    const auto row = [&](int r, int lo) { return Vec(&a[r * N + lo], &a[r * N + lo + 4]); };
    for (int j = 0; j < 4; ++j) {
        const int span = h0917(params[j], u.data(), 12, 1.0e-5);
        EXPECT_EQ(row(j, span - 3), h0916_row(u, 4, span, params[j], false)) << j;
    }
    EXPECT_EQ(row(4, 2), h0916_row(u, 4, 5, 0.5, true));
    for (int j = 0; j < 3; ++j)
        for (int c = 0; c < N; ++c)
            EXPECT_EQ(a[(5 + j) * N + c], c == j ? 9.0 : c == N - 3 + j ? -9.0 : 0.0);
    // A failed row leaves it and the rest (wrap rows too) zero.
    const Vec bad = {0, kNaN, 0.5, 0.75};
    std::fill(a.begin(), a.end(), 0.0);
    EXPECT_EQ(h0926_(&desc, bad.data(), condparams.data(), nullptr, u.data(), a.data()), 1);
    EXPECT_TRUE(std::all_of(a.begin() + N, a.end(), [](double x) { return x == 0.0; }));
    // The band holds wrap rows only in a tiny system; otherwise they stop it.
    EXPECT_EQ(Band(desc, params, condparams, u).result, 1);
    const Band tiny({1, 4, 1, 3, 0, 0, 2}, params, {}, Vec(u.begin(), u.begin() + 8));
    ASSERT_EQ(tiny.result, 0);
    for (int j = 0; j < 3; ++j) {
        EXPECT_EQ(tiny.a[1 + j][j], 9.0);
        EXPECT_EQ(tiny.a[1 + j][1 + j], -9.0);
    }
}

} // namespace
