// mbasiseval against a plain recursive Cox-de Boor evaluation (degrees 1 to
// 7, clamped and unclamped, at random parameters and at every knot, so a
// wrong span on repeated knots shows); the small cubic cases bit for bit;
// the tolerant ends and the refusals with outputs untouched.
#include <algorithm>
#include <random>
#include <vector>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using Knots = std::vector<double>;

struct Basis : qxtest::QxTest {
    void SetUp() override { QxTest::SetUp(), merrorflush(); }
};

// N(j, p) at t from its definition, half-open spans, 0/0 taken as 0.
double cox_de_boor(const Knots &kn, int j, int p, double t)
{
    if (p == 0) return kn[j] <= t && t < kn[j + 1] ? 1.0 : 0.0;
    double v = 0.0;
    if (kn[j + p] > kn[j]) v += (t - kn[j]) / (kn[j + p] - kn[j]) * cox_de_boor(kn, j, p - 1, t);
    if (kn[j + p + 1] > kn[j + 1])
        v += (kn[j + p + 1] - t) / (kn[j + p + 1] - kn[j + 1]) * cox_de_boor(kn, j + 1, p - 1, t);
    return v;
}

// Clamped around random interior knots, some repeated; or uniform and
// unclamped. Exactly sized: a read past either end trips the sanitizer.
Knots random_knots(std::mt19937_64 &rng, int d, bool clamped)
{
    std::uniform_int_distribution<int> count(1, 12), repeat(1, d / 2 + 1);
    Knots kn, inner(count(rng));
    if (!clamped) {
        for (int i = 0, n = count(rng) + 2 * d + 1; i < n; ++i) kn.push_back(0.25 * i - 1.0);
        return kn;
    }
    for (double &x : inner) x = std::uniform_real_distribution<double>(0.0, 1.0)(rng);
    std::sort(inner.begin(), inner.end());
    kn.assign(d + 1, 0.0);
    for (double x : inner) kn.insert(kn.end(), repeat(rng), x);
    kn.insert(kn.end(), d + 1, 1.0);
    return kn;
}

TEST_F(Basis, AgreesWithRecursiveDefinition)
{
    std::mt19937_64 rng(5101);
    for (int trial = 0; trial < 600; ++trial) {
        const int d = 1 + trial % 7;
        const Knots kn = random_knots(rng, d, trial % 2 == 0);
        const int s = int(kn.size()) - 2 * d - 1;
        std::uniform_real_distribution<double> u(kn[d], kn[s + d]);
        Knots ts(kn.begin() + d, kn.begin() + s + d); // every knot in [knots[d], knots[s+d])
        for (int i = 0; i < 20; ++i) ts.push_back(u(rng));
        for (double t : ts) {
            double v[8];
            std::fill(v, v + 8, kNaN);
            int first = -1;
            mbasiseval(d, s, kn.data(), t, &first, v);
            ASSERT_EQ(merrorlevel(), 0);
            ASSERT_TRUE(first >= 0 && first < s) << first;
            for (int j = 0; j < s + d; ++j) {
                const double x = j >= first && j <= first + d ? v[j - first] : 0.0;
                EXPECT_NEAR(x, cox_de_boor(kn, j, d, t), 1e-13) << d << " " << j;
                EXPECT_GE(x, 0.0);
            }
        }
    }
}

TEST_F(Basis, ExactValuesEndsAndRefusals)
{
    const Knots kn = {0, 0, 0, 0, 1, 1, 1, 1}, uniform = {0, 1, 2, 3, 4, 5, 6, 7, 8};
    const double u = -2.5, u3 = u * u * u; // uniform, t = 0.5: span 3's pieces extended
    const struct {
        const Knots *kn;
        double t, tol, v[4];
    } cases[] = {{&kn, 0.0, 0.0, {1, 0, 0, 0}},
                 {&kn, 1.0, 0.0, {0, 0, 0, 1}},
                 {&kn, 0.5, 0.0, {0.125, 0.375, 0.375, 0.125}},
                 // Within 1.0e-10 of an end: accepted, evaluated on the end span.
                 {&kn, 1.0 + 1.0e-12, 1e-11, {0, 0, 0, 1}},
                 {&kn, -1.0e-12, 1e-11, {1, 0, 0, 0}},
                 // Below knots[d] of an unclamped vector: no read before knots[0].
                 {&uniform,
                  0.5,
                  1e-13,
                  {(1 - u) * (1 - u) * (1 - u) / 6, (3 * u3 - 6 * u * u + 4) / 6,
                   (-3 * u3 + 3 * u * u + 3 * u + 1) / 6, u3 / 6}}};
    for (const auto &c : cases) {
        double v[4] = {kNaN, kNaN, kNaN, kNaN};
        int first = -1;
        mbasiseval(3, int(c.kn->size()) - 7, c.kn->data(), c.t, &first, v);
        EXPECT_EQ(first, 0);
        for (int r = 0; r < 4; ++r) EXPECT_NEAR(v[r], c.v[r], c.tol) << c.t;
    }
    // Degree 0: the indicator of the span, the last non-empty one at the end. Keep: the
    // basis is continuous at interior knots of higher degree, so this is the case where a
    // span search stopping before a run of equal knots changes the values.
    const double steps[] = {0.0, 1.0, 1.0, 2.0};
    for (const double t : {0.0, 0.5, 1.0, 2.0}) {
        int first = -1;
        double v = kNaN;
        mbasiseval(0, 3, steps, t, &first, &v);
        EXPECT_EQ(v, 1.0);
        EXPECT_EQ(first, t < 1.0 ? 0 : 2) << t;
    }
    EXPECT_EQ(merrorlevel(), 0);
    // Refusals: 2900 at level 4, outputs untouched.
    const Knots big(76, 0.0);
    const struct {
        int d, s;
        const double *knots;
        double t;
    } bad[] = {{3, 1, kn.data(), 1.1},   {3, 1, kn.data(), -1.0e-9},     {3, 1, kn.data(), kNaN},
               {25, 1, big.data(), 0.0}, {-1, 3, kn.data(), 0.5},        {3, 0, kn.data(), 0.5},
               {3, 1, nullptr, 0.5},     {3, 0x7ffffffa, kn.data(), 0.5}};
    for (const auto &c : bad) {
        double out[26];
        std::fill(out, out + 26, kNaN);
        int first = -7;
        mbasiseval(c.d, c.s, c.knots, c.t, &first, out);
        EXPECT_EQ(merrornum(), QX_MERR_OUTSIDE_KNOTS) << c.d << " " << c.t;
        EXPECT_EQ(merrorlevel(), QX_MERR_LEVEL);
        EXPECT_EQ(first, -7);
        EXPECT_TRUE(std::all_of(out, out + 26, [](double x) { return x != x; }));
        merrorflush();
    }
}

} // namespace
