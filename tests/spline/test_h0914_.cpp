// The general knot placement h0914_: the averaging rule bit for bit on small
// cases, the structure (count, order, clamped or wrapped ends, seam
// multiplicity) and the Schoenberg-Whitney conditions on random site sets,
// and the refused inputs with nothing written. The end-to-end behaviour
// (solvability, conditioning) is in test_h0913.
#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using V = std::vector<double>;

struct Placed {
    int result;
    int nknots;
    V knots;
};

QX_interp_desc make_desc(int n, int k, int periodic, int c1, int c2 = 0, int cc = 0)
{
    return {n, k, periodic, 3, c1, c2, cc};
}

Placed place(const QX_interp_desc &d, const V &params, const V &conds)
{
    Placed p{0, -7, V(static_cast<std::size_t>(d.n_points + d.n_cond1 + d.n_cond2 + 30), kNaN)};
    p.result = h0914_(&d, params.data(), conds.empty() ? nullptr : conds.data(), &p.nknots,
                      p.knots.data());
    return p;
}

// The run of knots equal to t[e] from e in direction step, at most cap.
int run(const V &t, int e, int step, int cap)
{
    int m = 1;
    for (int i = e + step; m < cap && i >= 0 && i < static_cast<int>(t.size()) && t[i] == t[e];
         i += step)
        ++m;
    return m;
}

// B_i is "non-zero" at site s (value, or first derivative when cond): s
// strictly inside its support, or on an end where the knot is repeated
// enough for the value (k times) or the slope (k - 1 times) not to vanish.
bool sw_pair(const V &t, int i, int k, double s, bool cond)
{
    if (t[i] < s && s < t[i + k]) return true;
    const int need = k - (cond ? 1 : 0);
    if (s == t[i] && s < t[i + k]) return run(t, i, 1, k) >= need;
    if (s == t[i + k] && t[i] < s) return run(t, i + k, -1, k) >= need;
    return false;
}

} // namespace

using H0914 = qxtest::QxTest;

TEST_F(H0914, AveragingRuleOnSmallCases)
{
    auto expect_knots = [](const Placed &p, const V &want) {
        ASSERT_EQ(p.result, 0);
        ASSERT_EQ(p.nknots, static_cast<int>(want.size()));
        EXPECT_EQ(V(p.knots.begin(), p.knots.begin() + p.nknots), want);
        EXPECT_TRUE(std::isnan(p.knots[want.size()])) << "wrote beyond N + k";
    };
    // Open, order 3: one interior knot, the average of sites 1 and 2.
    expect_knots(place(make_desc(4, 3, 0, 0), {0.0, 0.25, 0.5, 1.0}, {}),
                 {0, 0, 0, (0.25 + 0.5) / 2, 1, 1, 1});
    // Order 2: a simple site is its knot; a point with its condition gets a
    // piece of its own between the neighbours' midpoints.
    expect_knots(place(make_desc(4, 2, 0, 1), {0.0, 0.2, 0.6, 1.0}, {0.6}),
                 {0, 0, 0.2, (0.2 + 0.6) / 2, (0.6 + 1.0) / 2, 1, 1});
    // Periodic order 3, r = 2 (seam multiplicity 1): cyclic averages of two
    // sites, the seam replacing the one that moves least (0.05, not
    // -0.15), the outer knots wrapped by the period.
    const double v3 = (0.1 + 0.5) / 2, v4 = (0.5 + 0.7) / 2, v5 = (0.7 + 1.0) / 2;
    expect_knots(place(make_desc(4, 3, 1, 0, 0, 1), {0.0, 0.1, 0.5, 0.7}, {}),
                 {v4 - 1.0, v5 - 1.0, 0, v3, v4, v5, 1, v3 + 1.0, v4 + 1.0});
    // Periodic cubics on uniform sites: knots at the sites, as the cubic
    // knot builder places them.
    const QX_interp_desc d = make_desc(4, 4, 1, 0, 0, 2);
    const V u{0.0, 0.25, 0.5, 0.75};
    const Placed p = place(d, u, {});
    V ref(20, kNaN);
    int nref = 0;
    knot_seq_order_4(&d, u.data(), nullptr, &nref, ref.data());
    ASSERT_EQ(p.nknots, nref);
    for (int i = 0; i < nref; ++i) EXPECT_NEAR(p.knots[i], ref[i], 1e-15) << i;
}

TEST_F(H0914, StructureAndSchoenbergWhitneyOnRandomSites)
{
    std::mt19937_64 rng(914);
    std::uniform_real_distribution<double> gap(0.05, 1.0), unit(0.0, 1.0);
    int checked = 0;
    for (int trial = 0; trial < 1500; ++trial) {
        const int k = 2 + trial % 7, periodic = (trial / 7) % 2;
        const int cc = periodic ? static_cast<int>(rng() % static_cast<unsigned>(k + 1)) - 1 : 0;
        const int r = periodic ? std::min(cc + 1, k - 1) : 0;
        const int n = 1 + static_cast<int>(rng() % 14);
        // Chord-length-like parameters on [0, 1] (periodic: [0, 1)).
        V params(static_cast<std::size_t>(n));
        double acc = 0.0;
        for (double &x : params) x = acc, acc += gap(rng);
        const double total = periodic ? acc : params.back();
        for (double &x : params) x = total > 0 ? x / total : 0.0;
        // Conditions at some points (ends included), perhaps at 1.0.
        V conds;
        for (int i = 0; i < n; ++i)
            if (unit(rng) < 0.3) conds.push_back(params[static_cast<std::size_t>(i)]);
        if (periodic && r <= 1 && unit(rng) < 0.3) conds.push_back(1.0);
        std::shuffle(conds.begin(), conds.end(), rng);
        const int c = static_cast<int>(conds.size()), c1 = c / 2;
        const QX_interp_desc d = make_desc(n, k, periodic, c1, c - c1, cc);
        const int N = n + c + r;
        const Placed p = place(d, params, conds);
        if (N < k || (!periodic && n < 2)) {
            EXPECT_EQ(p.result, -1);
            continue;
        }
        ASSERT_EQ(p.result, 0) << trial;
        ASSERT_EQ(p.nknots, N + k);
        const V &t = p.knots;
        EXPECT_TRUE(std::isnan(t[static_cast<std::size_t>(N + k)]));
        for (int i = 0; i + 1 < N + k; ++i) ASSERT_LE(t[i], t[i + 1]) << trial;
        const double a = params[0], b = periodic ? 1.0 : params.back(), P = b - a;
        const int mu = k - r; // end or seam multiplicity
        ASSERT_EQ(t[k - 1], a);
        ASSERT_EQ(t[N], b);
        EXPECT_EQ(run(t, k - 1, -1, N + k), mu) << trial;
        EXPECT_EQ(run(t, N, 1, N + k), mu) << trial;
        for (int i = 0; i < r; ++i) {
            EXPECT_EQ(t[i], t[N - r + i] - P);
            EXPECT_EQ(t[N + mu + i], t[k + i] + P);
        }
        for (int i = k; i < N; ++i) EXPECT_TRUE(a < t[i] && t[i] < b);
        // Schoenberg-Whitney: sites merged, a condition first on a tie; a
        // closed curve with r = 1 has its closing point as the last site;
        // with r >= 2, sites match the periodic functions up to a shift.
        std::vector<std::pair<double, bool>> sites;
        for (double x : params) sites.emplace_back(x, false);
        for (double x : conds) sites.emplace_back(r >= 2 && x == 1.0 ? a : x, true);
        // On a tie the point comes first at the start (B_0 carries the
        // value there), the condition first elsewhere.
        std::sort(sites.begin(), sites.end(), [a](const auto &l, const auto &m) {
            return l.first < m.first ||
                   (l.first == m.first && l.second != m.second && (l.first == a) != l.second);
        });
        if (r == 1) sites.emplace_back(b, false);
        const int M = n + c;
        bool sw = false;
        if (r < 2) {
            sw = true;
            for (int i = 0; i < N; ++i)
                sw = sw && sw_pair(t, i, k, sites[i].first, sites[i].second);
        } else {
            // The periodic extension of the knots around the range.
            V ext;
            for (int q = -k - 1; q <= k + 1; ++q)
                for (int i = r; i < N; ++i) ext.push_back(t[i] + q * P);
            for (int d0 = 0; d0 + M + k < static_cast<int>(ext.size()) && !sw; ++d0) {
                sw = true;
                for (int l = 0; l < M && sw; ++l)
                    sw = sw_pair(ext, d0 + l, k, sites[l].first, sites[l].second);
            }
        }
        EXPECT_TRUE(sw) << "trial " << trial << " k " << k << " r " << r << " n " << n;
        ++checked;
    }
    EXPECT_GT(checked, 800);
}

TEST_F(H0914, RefusesWithNothingWritten)
{
    const V good{0.0, 0.4, 1.0};
    struct Case {
        QX_interp_desc d;
        V params, conds;
    };
    const Case cases[] = {
        {make_desc(3, 1, 0, 0), good, {}},                          // order 1
        {make_desc(3, 4, 1, 0, 0, -2), good, {}},                   // closure below -1
        {make_desc(3, 4, 0, 0), good, {}},                          // N < k
        {make_desc(1, 2, 0, 1), {0.0}, {0.0}},                      // open, one point
        {make_desc(3, 3, 0, 0), {0.0, 0.4, 0.4 + 5e-11}, {}},       // points within 1e-10
        {make_desc(3, 3, 0, 0), {0.0, kNaN, 1.0}, {}},              // NaN
        {make_desc(3, 3, 0, 0), {0.0, 0.5, INFINITY}, {}},          // infinite
        {make_desc(3, 3, 0, 0), {-INFINITY, 0.5, 1.0}, {}},         // infinite first
        {make_desc(3, 3, 0, 1), good, {1.0 + 2e-10}},               // condition outside
        {make_desc(3, 3, 0, 1), good, {kNaN}},                      // NaN condition
        {make_desc(3, 3, 0, 1, 1), good, {0.4, 0.4 + 1e-11}},       // two conditions
        {make_desc(3, 3, 1, 0, 0, 1), {0.0, 0.4, 1.0 - 5e-11}, {}}, // closing point listed
        {make_desc(3, 4, 1, 1, 1, 2), {0.0, 0.4, 0.7}, {0.0, 1.0}}, // r >= 2: 0 and 1 alike
        {make_desc(2, 3, 1, 0, 0, 1), {1.5, 1.8}, {}},              // no period left
    };
    auto untouched = [](const Placed &p) {
        return p.result == -1 && p.nknots == -7 &&
               std::all_of(p.knots.begin(), p.knots.end(), [](double x) { return std::isnan(x); });
    };
    for (const Case &cs : cases)
        EXPECT_TRUE(untouched(place(cs.d, cs.params, cs.conds))) << &cs - cases;
    // NULL arrays; conditions may be NULL only when there are none.
    const QX_interp_desc d = make_desc(3, 3, 0, 0), dc = make_desc(3, 3, 0, 1);
    V knots(16, kNaN);
    int nknots = -7;
    EXPECT_EQ(h0914_(nullptr, good.data(), nullptr, &nknots, knots.data()), -1);
    EXPECT_EQ(h0914_(&d, nullptr, nullptr, &nknots, knots.data()) +
                  h0914_(&d, good.data(), nullptr, nullptr, knots.data()) +
                  h0914_(&d, good.data(), nullptr, &nknots, nullptr),
              -3);
    EXPECT_TRUE(untouched(place(dc, good, {})));
    EXPECT_EQ(nknots, -7);
    // A host that gives no scratch memory (its report returning): -1,
    // nothing written.
    qxsys_fail_allocation(1);
    EXPECT_TRUE(untouched(place(d, good, {})));
    EXPECT_EQ(place(d, good, {}).nknots, 6);
}
