// merge_knots (against multiplicities counted independently, the tie order,
// unequal ranges, the failures), knot_seq_order_4 (insertion and the wrap)
// and get_unique_reals (the drift and NaN rules).
#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <vector>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using Knots = std::vector<double>;

struct KnotVectors : qxtest::QxTest {
    void SetUp() override { QxTest::SetUp(), merrorflush(); }
};

int spans(const Knots &k, int deg) { return int(k.size()) - 2 * deg - 1; }

// merge_knots into a vector (its block checked and freed), s through *s.
Knots merge(const Knots &a, int da, const Knots &b, int db, int d, int *s)
{
    double *out = nullptr;
    merge_knots(a.data(), da, spans(a, da), b.data(), db, spans(b, db), d, &out, s);
    if (out == nullptr) return {};
    Knots r(out, out + *s + 2 * d + 1);
    EXPECT_EQ(SM_length(out), r.size() * sizeof(double));
    SM_free(out);
    return r;
}

TEST_F(KnotVectors, MergeExamplesTiesAndFailures)
{
    int s = -1;
    EXPECT_EQ(merge({0, 0, 0, 0, 0.5, 1, 1, 1, 1}, 3, {0, 0, 0, 0, 1, 1, 1, 1}, 3, 3, &s),
              (Knots{0, 0, 0, 0, 0.5, 1, 1, 1, 1}));
    // A quadratic's double knot (continuity 0) and a cubic's simple one
    // (continuity 2): multiplicity 3 - min(0, 2) = 3.
    EXPECT_EQ(merge({0, 0, 0, 0.5, 0.5, 1, 1, 1}, 2, {0, 0, 0, 0, 0.5, 1, 1, 1, 1}, 3, 3, &s),
              (Knots{0, 0, 0, 0, 0.5, 0.5, 0.5, 1, 1, 1, 1}));
    // Equal within tolerance: one knot valued as the second input's (first
    // on a tie); a run is valued as its first knot.
    const double a = 0.5, b = 0.5 + 6e-11, e = 1.0 - 3e-11;
    const Knots k1 = {0, 0, a, a + 9e-11, 1, 1}, k2 = {0, 0, b, e, e};
    EXPECT_EQ(merge(k1, 1, k2, 1, 1, &s), (Knots{0, 0, b, b, e, e}));
    EXPECT_EQ(merge(k2, 1, k1, 1, 1, &s), (Knots{0, 0, a, a, 1, 1}));
    // Not over the same range: nothing read past either input, the union.
    const Knots short1 = {0, 0, 1, 1}, long2 = {0, 0, 1, 2, 2};
    EXPECT_EQ(merge(short1, 1, long2, 1, 1, &s), (Knots{0, 0, 1, 1, 2, 2}));
    EXPECT_EQ(merge(long2, 1, short1, 1, 1, &s), (Knots{0, 0, 1, 1, 2, 2}));
    EXPECT_EQ(merrorlevel(), 0);
    // Empty result (empty inputs: fail -1; d too small to keep a knot: 0):
    // 951, NULL. Each of the five allocations failing, the report returning:
    // 950, NULL, s = 0, nothing left allocated.
    const double k[] = {0, 0, 1, 1};
    for (long fail = -1; fail <= 5; ++fail) {
        double *out = reinterpret_cast<double *>(&s);
        const int d = fail == 0 ? -1 : 1;
        qxsys_fail_allocation(fail);
        merge_knots(k, 1, fail < 0 ? -3 : 1, fail < 0 ? nullptr : k, 1, 1, d, &out, &s);
        EXPECT_EQ(out, nullptr) << fail;
        EXPECT_EQ(merrornum(), fail > 0 ? QX_MERR_NO_STORAGE : QX_MERR_EMPTY_RANGE) << fail;
        EXPECT_EQ(merrorlevel(), QX_MERR_LEVEL);
        EXPECT_EQ(s, fail > 0 ? 0 : -2 * d - 1);
        merrorflush();
    }
}

TEST_F(KnotVectors, MergeAgainstCountedMultiplicities)
{
    std::mt19937_64 rng(5103);
    std::uniform_int_distribution<int> grid(1, 19), count(0, 6), deg(1, 4);
    for (int trial = 0; trial < 300; ++trial) {
        // Interior knots on a grid of 0.05: far apart or exactly equal.
        Knots in[2];
        int degs[2];
        std::map<double, int> want_cont; // value -> smaller continuity of the two
        for (int k = 0; k < 2; ++k) {
            degs[k] = deg(rng);
            std::map<double, int> mult = {{0.0, degs[k] + 1}, {1.0, degs[k] + 1}};
            for (int i = count(rng); i > 0; --i) {
                int &m = mult[grid(rng) * 0.05];
                m = std::min(m + 1, degs[k]);
            }
            for (const auto &[x, m] : mult) {
                in[k].insert(in[k].end(), m, x);
                const auto it = want_cont.find(x);
                want_cont[x] = std::min(it == want_cont.end() ? 99 : it->second, degs[k] - m);
            }
        }
        const int d = std::max(degs[0], degs[1]) + trial % 2;
        Knots want;
        for (const auto &[x, c] : want_cont) want.insert(want.end(), d - c, x);
        int s;
        EXPECT_EQ(merge(in[0], degs[0], in[1], degs[1], d, &s), want) << trial;
    }
}

TEST_F(KnotVectors, CubicInterpolationKnots)
{
    // Conditions go before an equal knot, those within 1e-10 of an end add
    // none, a value pushed past the count is lost; periodic: the wrapped
    // spacings at both ends.
    const struct {
        Knots params, conds;
        int c1, periodic;
        Knots want;
    } cases[] = {
        {{0, 0.5, 1}, {0, 1}, 1, 0, {0, 0, 0, 0, 0.5, 1, 1, 1, 1}},
        {{0, 0.5, 1}, {0, 0.25}, 1, 0, {0, 0, 0, 0, 0.25, 0.5, 1, 1, 1}},
        {{0, 0.5, 1}, {}, 0, 0, {0, 0, 0, 0, 0.5, 1, 1}},
        {{0, 0.3, 0.6, 1}, {0.2, 0.6}, 2, 0, {0, 0, 0, 0, 0.2, 0.3, 0.6, 0.6, 1, 1}},
        {{0, 0.3, 0.6, 1}, {0, 0.45, 1e-11}, 1, 0, {0, 0, 0, 0, 0.3, 0.45, 0.6, 1, 1, 1, 1}},
        {{0, 0.2, 0.5, 0.7}, {}, 0, 1, {-0.8, -0.5, -0.3, 0, 0.2, 0.5, 0.7, 1, 1.2, 1.5, 1.7}},
        {{0.05, 0.2, 0.5, 0.7},
         {0.35},
         1,
         1,
         {-0.65, -0.5, -0.3, 0.05, 0.2, 0.35, 0.5, 0.7, 1, 1.15, 1.3, 1.45}}};
    for (const auto &c : cases) {
        const int n = c.params.size(), nc = c.conds.size(), N = c.want.size();
        const QX_interp_desc desc = {n, 4, c.periodic, 3, c.c1, nc - c.c1, 0};
        // Room max(N, n + 6) and two more that must stay untouched.
        Knots out(std::max(N, n + 6) + 2, kNaN);
        int nk = -1;
        EXPECT_EQ(knot_seq_order_4(&desc, c.params.data(), c.conds.data(), &nk, out.data()), 0);
        ASSERT_EQ(nk, N);
        for (int i = 0; i < N; ++i) EXPECT_NEAR(out[i], c.want[i], 1e-15) << n << " " << i;
        EXPECT_TRUE(std::isnan(out[out.size() - 1]) && std::isnan(out[out.size() - 2]));
    }
    Knots out(11, kNaN); // a refused description writes nothing
    int nk = -1;
    const QX_interp_desc desc = {-1, 4, 0, 3, 0, 0, 0};
    knot_seq_order_4(&desc, out.data(), nullptr, &nk, out.data());
    EXPECT_EQ(nk, 0);
    EXPECT_TRUE(std::all_of(out.begin(), out.end(), [](double x) { return x != x; }));
}

TEST_F(KnotVectors, UniqueRealsDriftAndNaN)
{
    const Knots cases[][2] = {
        {{0, 1e-11, 2e-11, 1}, {0, 1}},
        {{0, 2e-10, 4e-10}, {0, 2e-10, 4e-10}},
        {{0, 0.6e-10, 1.2e-10, 1.8e-10, 1}, {0, 1}}, // drift: compared with the predecessor
        {{0, kNaN, 1, 2}, {0, 2}},                   // both differences with NaN drop
    };
    for (const auto &c : cases) {
        double *u = nullptr;
        int n = -1;
        get_unique_reals(c[0].data(), c[0].size(), &u, &n);
        ASSERT_NE(u, nullptr);
        EXPECT_EQ(Knots(u, u + n), c[1]);
        EXPECT_EQ(SM_length(u), c[0].size() * sizeof(double));
        SM_free(u);
    }
    double sentinel = 0.0, *u = &sentinel;
    int n = -1;
    get_unique_reals(nullptr, 0, &u, &n);
    EXPECT_EQ(n, 0);
    EXPECT_EQ(u, &sentinel);
}

} // namespace
