// bc_xyz_box: on random rational curves (orders 1-6, repeated knots, full,
// partial and empty ranges) the box contains an independent Cox-de Boor
// sampling and is within 0.5% of its extent; negative and mixed weights;
// every invalid input, box untouched.
#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;

struct Curve {
    int n = 0, k = 0;
    std::vector<double> poles, knots;
    BC_CURVE record(int full = 0) const { return {poles.data(), knots.data(), n, k, full}; }
    // Cox-de Boor: the first-order functions, then the recursion with 0/0 = 0;
    // at the domain's end the last non-empty span is closed.
    void eval(double u, double p[3]) const
    {
        const double *t = knots.data();
        std::vector<double> N(static_cast<size_t>(n + k), 0.0);
        int j = u >= t[n] ? n - 1 : k - 1;
        while (u >= t[n] ? !(t[j] < t[j + 1]) : t[j + 1] <= u) j += u >= t[n] ? -1 : 1;
        N[j] = 1.0;
        for (int q = 2; q <= k; ++q)
            for (int i = 0; i + q < n + k; ++i) {
                const double d1 = t[i + q - 1] - t[i], d2 = t[i + q] - t[i + 1];
                N[i] = (d1 > 0 ? (u - t[i]) / d1 * N[i] : 0) +
                       (d2 > 0 ? (t[i + q] - u) / d2 * N[i + 1] : 0);
            }
        double h[4] = {0, 0, 0, 0};
        for (int i = 0; i < 4 * n; ++i) h[i % 4] += N[i / 4] * poles[i];
        for (int c = 0; c < 3; ++c) p[c] = h[c] / h[3];
    }
};

class BcXyzBox : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{2614};
    double uniform(double lo, double hi) { return std::uniform_real_distribution<>(lo, hi)(rng); }
    int pick(int lo, int hi) { return std::uniform_int_distribution<>(lo, hi)(rng); }

    Curve random_curve(int k)
    {
        Curve c;
        c.k = k;
        c.n = pick(k, k + 7);
        do {
            c.knots.clear();
            for (int i = 0; i < c.n + k; ++i)
                c.knots.push_back(i > 0 && pick(0, 2) == 0 ? c.knots.back() : uniform(0, 10));
            std::sort(c.knots.begin(), c.knots.end());
            if (pick(0, 1)) { // clamped
                std::fill(c.knots.begin(), c.knots.begin() + k, c.knots[k - 1]);
                std::fill(c.knots.end() - k, c.knots.end(), c.knots[c.n]);
            }
        } while (!(c.knots[k - 1] < c.knots[c.n]));
        for (int i = 0; i < c.n; ++i) {
            const double w = uniform(0.2, 5.0);
            for (int d = 0; d < 3; ++d) c.poles.push_back(w * uniform(-10, 10));
            c.poles.push_back(w);
        }
        return c;
    }

    // 400 samples on each span's part of [a, b], with the ends and the left limits at the
    // knots (the curve may jump), lie in the box; each side exceeds the sampled extent by
    // at most 0.5% of its largest side (plus rounding).
    void expect_contains_tightly(const Curve &c, double a, double b, const double box[6])
    {
        std::vector<double> us{a, b};
        for (int j = c.k - 1; j < c.n; ++j) {
            const double u0 = std::max(a, c.knots[j]), u1 = std::min(b, c.knots[j + 1]);
            for (int i = 0; u0 < u1 && i <= 400; ++i) us.push_back(u0 + (u1 - u0) * i / 400.0);
            if (u0 <= u1) us.push_back(std::max(a, std::nextafter(u1, a)));
        }
        double lo[3] = {HUGE_VAL, HUGE_VAL, HUGE_VAL}, hi[3] = {-HUGE_VAL, -HUGE_VAL, -HUGE_VAL};
        for (double u : us) {
            double p[3];
            c.eval(u, p);
            for (int d = 0; d < 3; ++d) {
                ASSERT_GE(p[d], box[d]) << "u " << u << " axis " << d;
                ASSERT_LE(p[d], box[3 + d]) << "u " << u << " axis " << d;
                lo[d] = std::min(lo[d], p[d]);
                hi[d] = std::max(hi[d], p[d]);
            }
        }
        const double ext = std::max({hi[0] - lo[0], hi[1] - lo[1], hi[2] - lo[2]});
        for (int d = 0; d < 3; ++d)
            EXPECT_LE(box[3 + d] - box[d], hi[d] - lo[d] + 0.005 * ext + 1e-9) << "axis " << d;
    }
};

// bc_xyz_box on a NaN-filled box, which must be written exactly when it succeeds.
int boxed(const BC_CURVE *rec, const double *r, double box[6])
{
    std::fill(box, box + 6, kNaN);
    const int status = bc_xyz_box(rec, r, box);
    EXPECT_EQ(std::all_of(box, box + 6, [](double v) { return std::isnan(v); }),
              status != BC_BOX_OK);
    return status;
}

TEST_F(BcXyzBox, RandomCurvesContainedAndTight)
{
    for (int trial = 0; trial < 150; ++trial) {
        SCOPED_TRACE(trial);
        Curve c = random_curve(1 + trial % 6);
        const double t0 = c.knots[c.k - 1], t1 = c.knots[c.n];
        double box[6], neg[6];
        BC_CURVE rec = c.record(1);
        ASSERT_EQ(bc_xyz_box(&rec, nullptr, box), BC_BOX_OK);
        expect_contains_tightly(c, t0, t1, box);
        double r[2] = {uniform(t0, t1), uniform(t0, t1)};
        if (r[0] > r[1]) std::swap(r[0], r[1]);
        if (trial % 5 == 0) r[0] = c.knots[pick(c.k - 1, c.n)], r[1] = std::max(r[0], r[1]);
        if (trial % 7 == 0) r[1] = r[0]; // empty range: one point
        rec.full_range = 0;
        ASSERT_EQ(bc_xyz_box(&rec, r, box), BC_BOX_OK);
        expect_contains_tightly(c, r[0], r[1], box);
        // Weights all negative: the same curve, the same box bit for bit.
        for (double &v : c.poles) v = -v;
        ASSERT_EQ(bc_xyz_box(&rec, r, neg), BC_BOX_OK);
        for (int i = 0; i < 6; ++i) EXPECT_EQ(neg[i], box[i]);
        if (HasFailure()) return;
    }
}

TEST_F(BcXyzBox, MixedWeights)
{
    double box[6];
    // One quadratic Bezier arc, middle weight w: the denominator 1 + 2(w-1)t(1-t) has no
    // zero for w = -0.2, a double one at 1/2 for w = -1 and zeros at 0.211 and 0.789 for
    // w = -2; a zero end weight makes the arc unbounded too.
    Curve q;
    q.n = q.k = 3;
    q.knots = {0, 0, 0, 1, 1, 1};
    const struct {
        double w0, w, a, b;
        int expected;
    } cases[] = {{1, -0.2, 0, 1, BC_BOX_OK},      {1, -1, 0, 1, BC_BOX_UNBOUNDED},
                 {1, -2, 0, 1, BC_BOX_UNBOUNDED}, {1, -2, 0, 0.2, BC_BOX_OK},
                 {1, -2, 0.25, 0.75, BC_BOX_OK},  {1, -2, 0.1, 0.25, BC_BOX_UNBOUNDED},
                 {0, 1, 0, 1, BC_BOX_UNBOUNDED},  {0, 1, 0.5, 1, BC_BOX_OK}};
    for (const auto &t : cases) {
        q.poles = {0, 0, 0, t.w0, t.w * 2, t.w * 3, t.w * -1, t.w, 4, 1, 2, 1};
        const BC_CURVE rec = q.record();
        const double r[2] = {t.a, t.b};
        ASSERT_EQ(boxed(&rec, r, box), t.expected) << t.w0 << " " << t.w << " " << t.a;
        if (t.expected == BC_BOX_OK) expect_contains_tightly(q, t.a, t.b, box);
    }
}

TEST_F(BcXyzBox, InvalidInputsLeaveTheBox)
{
    // Each case edits a copy of this curve and range [0.5, 1.5]; only span [1, 2] uses pole 3.
    Curve c;
    c.n = 4, c.k = 3;
    c.knots = {0, 0, 0, 1, 2, 2, 2};
    c.poles = {0, 0, 0, 1, 1, 1, 0, 1, 2, 0, 1, 1, 3, 3, 3, 1};
    using Edit = void (*)(Curve &, BC_CURVE &, double *);
    const struct {
        int expected;
        Edit edit;
    } cases[] = {
        {BC_BOX_BAD_CURVE, [](Curve &, BC_CURVE &b, double *) { b.poles = nullptr; }},
        {BC_BOX_BAD_CURVE, [](Curve &, BC_CURVE &b, double *) { b.order = 0; }},
        {BC_BOX_BAD_CURVE, [](Curve &, BC_CURVE &b, double *) { b.num_poles = 2; }},
        {BC_BOX_BAD_CURVE, [](Curve &d, BC_CURVE &, double *) { d.knots[4] = 0.5; }},
        {BC_BOX_BAD_CURVE, [](Curve &d, BC_CURVE &, double *) { d.knots[3] = kNaN; }},
        {BC_BOX_BAD_CURVE, [](Curve &d, BC_CURVE &, double *) { d.knots = {0, 0, 1, 1, 1, 1, 2}; }},
        {BC_BOX_BAD_RANGE, [](Curve &, BC_CURVE &, double *r) { r[0] = kNaN; }},
        {BC_BOX_BAD_RANGE, [](Curve &, BC_CURVE &, double *r) { r[0] = 1.6; }},
        {BC_BOX_BAD_RANGE, [](Curve &, BC_CURVE &, double *r) { r[0] = -2e-10; }},
        {BC_BOX_BAD_RANGE, [](Curve &, BC_CURVE &, double *r) { r[1] = 2 + 2e-10; }},
        {BC_BOX_BAD_POLES, [](Curve &d, BC_CURVE &, double *) { d.poles[13] = kNaN; }},
        {BC_BOX_OK, [](Curve &d, BC_CURVE &, double *r) { d.poles[13] = kNaN, r[1] = 1; }},
        {BC_BOX_OK, [](Curve &, BC_CURVE &b, double *r) { b.full_range = 1, r[0] = kNaN; }},
    };
    double box[6];
    for (const auto &t : cases) {
        Curve d = c;
        BC_CURVE rec = d.record();
        double r[2] = {0.5, 1.5};
        t.edit(d, rec, r);
        if (rec.poles != nullptr) rec.poles = d.poles.data(), rec.knots = d.knots.data();
        EXPECT_EQ(boxed(&rec, r, box), t.expected) << &t - cases;
    }
    // Ends within 1e-10 outside the domain move onto it: the box of the domain.
    double near[6];
    BC_CURVE rec = c.record();
    const double whole[2] = {0, 2}, close[2] = {-1e-10, 2 + 5e-11};
    ASSERT_EQ(bc_xyz_box(&rec, close, near), BC_BOX_OK);
    ASSERT_EQ(bc_xyz_box(&rec, whole, box), BC_BOX_OK);
    for (int i = 0; i < 6; ++i) EXPECT_EQ(near[i], box[i]);
    EXPECT_EQ(boxed(nullptr, whole, box), BC_BOX_BAD_CURVE);
    EXPECT_EQ(boxed(&rec, nullptr, box), BC_BOX_BAD_RANGE);
    EXPECT_EQ(qxsys_report_count(), 0);
    // The host reports the failed allocation; when that returns, so does the box.
    qxsys_fail_allocation(1);
    EXPECT_EQ(boxed(&rec, whole, box), BC_BOX_NO_MEMORY);
    EXPECT_EQ(qxsys_report_count(), 1);
}

} // namespace
