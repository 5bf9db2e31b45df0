// The span searches h0917 and h0918, and the hinted searches of the row
// assembly, against literal implementations of their definitions on random
// knot vectors with repeats: at, between and just outside the knots, NaN,
// infinities, every hint.
#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "spline/spline_internal.h"
#include "support/qx_test.h"

namespace
{

using Knots = std::vector<double>;
constexpr double kInf = std::numeric_limits<double>::infinity();

int literal_h0917(double t, const Knots &kn, double tol)
{
    const int count = static_cast<int>(kn.size());
    if (t < kn[0] - tol || t > kn[count - 1] + tol) return -1;
    const bool inside = kn[0] < t && t < kn[count - 1];
    if (!inside && !(t >= kn[count - 1]) && !(t <= kn[0])) return -1;
    for (int j = 0; j + 1 < count; ++j) {
        const int i = !inside && t >= kn[count - 1] ? count - 2 - j : j; // last one at the top
        if (kn[i] < kn[i + 1] && (!inside || (kn[i] <= t && t < kn[i + 1]))) return i;
    }
    return -1;
}

int literal_h0918(double *t, const Knots &kn, int k)
{
    const int count = static_cast<int>(kn.size()), i = literal_h0917(*t, kn, 1.0e-12);
    if (i < k - 1 || i > count - k - 1) return -1;
    const double lo = kn[k - 1], hi = kn[count - k];
    if (*t < lo - 1.0e-12 || *t > hi + 1.0e-12) return -1;
    if (*t <= lo) *t = lo;
    if (*t >= hi) *t = hi - 5.0e-13;
    return i;
}

using SpanSearch = qxtest::QxTest;

TEST_F(SpanSearch, EqualTheDefinitionsForEveryHint)
{
    std::mt19937_64 rng(917);
    std::uniform_int_distribution<int> size(1, 16), grid(-4, 12);
    for (int trial = 0; trial < 300; ++trial) {
        Knots kn(static_cast<std::size_t>(size(rng))); // coarse grid: many repeats
        for (double &x : kn) x = grid(rng) / 8.0;
        std::sort(kn.begin(), kn.end());
        const int count = static_cast<int>(kn.size());
        Knots probes = {qxtest::kNaN, kInf, -kInf, std::nextafter(kn.front(), -kInf),
                        std::nextafter(kn.back(), kInf)};
        for (std::size_t i = 0; i < kn.size(); ++i)
            probes.insert(probes.end(), {kn[i], i + 1 < kn.size() ? (kn[i] + kn[i + 1]) / 2 : 0});
        for (double f : {0.5, 2.0})
            for (double tol : {1.0e-5, 1.0e-12})
                probes.insert(probes.end(), {kn.front() - f * tol, kn.back() + f * tol});
        for (double t : probes) {
            for (double tol : {1.0e-5, 1.0e-12, 0.0}) {
                const int want = literal_h0917(t, kn, tol);
                ASSERT_EQ(h0917(t, kn.data(), count, tol), want) << t << " trial " << trial;
                for (int hint = -2; hint <= count + 1; ++hint) {
                    ASSERT_EQ(qx::spline::span_find(t, kn.data(), count, tol, hint), want) << hint;
                    ASSERT_EQ(qx::spline::span_next(t, kn.data(), count, tol, hint), want) << hint;
                }
            }
            for (int k = 0; k <= 5; ++k) {
                double want = t, got = t, hinted = t;
                const int i = k == 0 ? -1 : literal_h0918(&want, kn, k);
                ASSERT_EQ(h0918(&got, kn.data(), count, k), i) << t << " k " << k;
                ASSERT_EQ(qx::spline::span_clamp(&hinted, kn.data(), count, k, count / 2), i);
                if (std::isnan(t)) continue;
                ASSERT_EQ(got, want) << t << " k " << k << " trial " << trial;
                ASSERT_EQ(hinted, want);
            }
        }
    }
    // No knots, NULL; unsorted knots give some answer, never outside them.
    const Knots mess = {3, qxtest::kNaN, 1, 0, 5, qxtest::kNaN, 2};
    EXPECT_EQ(h0917(2.0, mess.data(), 0, 1.0e-5), -1);
    EXPECT_EQ(h0917(2.0, nullptr, 3, 1.0e-5), -1);
    EXPECT_EQ(h0918(nullptr, mess.data(), 7, 1), -1);
    for (double x : {-1.0, 0.5, 1.5, 2.0, 2.5, 4.0, 6.0})
        for (int hint = -1; hint < 7; ++hint) {
            const int i = qx::spline::span_find(x, mess.data(), 7, 1.0e-5, hint);
            EXPECT_TRUE(i >= -1 && i <= 5) << x;
        }
}

} // namespace
