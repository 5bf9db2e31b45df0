// Angular ranges (h009_, h010_, h012_): union, single covering range and common part
// against a brute-force membership check on a fine grid of angles, for random ranges from a
// fixed seed (ends outside [0, 2pi) included), and the tolerance cases by hand.
#include <cmath>
#include <random>
#include <vector>

#include "support/qx_test.h"

namespace
{

using AngularRanges = qxtest::QxTest;
using qxtest::kNaN;
constexpr double kTwoPi = 6.283185307179586;

double reduce(double a)
{
    a = std::fmod(a, kTwoPi);
    return a < 0.0 ? a + kTwoPi : a;
}

// The counter-clockwise length of r (equal ends: the whole circle), and membership of theta.
double arc_length(const double *r)
{
    const double w = reduce(r[1]) - reduce(r[0]);
    return w <= 0.0 ? w + kTwoPi : w;
}
bool on_arc(double theta, const double *r) { return reduce(theta - r[0]) <= arc_length(r); }

TEST_F(AngularRanges, AgreeWithMembershipOnAGrid)
{
    open_session(1.0, true);
    std::mt19937_64 gen(424242);
    std::uniform_real_distribution<double> angle(-2.0 * kTwoPi, 2.0 * kTwoPi);
    for (int trial = 0; trial < 1500; ++trial) {
        const double r1[2] = {angle(gen), angle(gen)};
        double r2[2] = {angle(gen), angle(gen)};
        if (trial % 10 == 0) r2[1] = r2[0] + kTwoPi; // the whole circle
        if (trial % 10 == 1) r2[1] = r1[0];          // touching
        double u[4] = {kNaN, kNaN, kNaN, kNaN}, m[2], c[4] = {kNaN, kNaN, kNaN, kNaN};
        int ucode = 0, mcode = 0, ccode = 0;
        h010_(r1, r2, u, &ucode);
        h009_(r1, r2, m, &mcode);
        h012_(r1, r2, c, &ccode);
        SCOPED_TRACE(::testing::Message() << r1[0] << " " << r1[1] << " " << r2[0] << " " << r2[1]);
        ASSERT_TRUE(ucode >= 1 && ucode <= 3 && ccode >= 1 && ccode <= 3);
        EXPECT_EQ(mcode, ucode);
        const int nu = ucode == 2 ? 4 : 2, nc = ccode == 1 ? 2 : ccode == 3 ? 4 : 0;
        for (int i = 0; i < 4; ++i) { // results in [0, 2pi), unused entries untouched
            EXPECT_TRUE(i >= nu || (u[i] >= 0.0 && u[i] < kTwoPi));
            EXPECT_TRUE(i < nc ? c[i] >= 0.0 && c[i] < kTwoPi : std::isnan(c[i]));
        }
        EXPECT_TRUE(ucode != 3 || (u[0] == 0.0 && u[1] == 0.0));
        std::vector<double> ends = {r1[0], r1[1], r2[0], r2[1], m[0], m[1]};
        ends.insert(ends.end(), u, u + nu);
        ends.insert(ends.end(), c, c + nc);
        int mismatches = 0;
        for (int g = 0; g < 1440; ++g) {
            const double theta = (g + 0.5) * kTwoPi / 1440;
            bool near_end = false;
            for (double e : ends) near_end |= std::fabs(std::remainder(theta - e, kTwoPi)) < 1e-9;
            if (near_end) continue;
            const bool in1 = on_arc(theta, r1), in2 = on_arc(theta, r2);
            const bool in_u =
                ucode == 3 || on_arc(theta, u) || (ucode == 2 && on_arc(theta, u + 2));
            const int in_c = (nc > 0 && on_arc(theta, c)) + (nc > 2 && on_arc(theta, c + 2));
            mismatches += (in_u != (in1 || in2)) + (in_c != (in1 && in2));
            if (in1 || in2) mismatches += mcode != 3 && !on_arc(theta, m); // m holds both
        }
        EXPECT_EQ(mismatches, 0);
        // u[0..1] holds r1; the pieces of the common part run from r1's start.
        EXPECT_TRUE(ucode == 3 || (on_arc(r1[0] + 1e-7, u) && on_arc(r1[1] - 1e-7, u)));
        EXPECT_TRUE(ccode != 3 || reduce(c[0] - r1[0]) < reduce(c[2] - r1[0]));
        EXPECT_TRUE(mcode != 1 || (m[0] == u[0] && m[1] == u[1]));
        if (mcode == 2) { // the shorter gap filled
            const double gap = std::fmin(reduce(u[2] - u[1]), reduce(u[0] - u[3]));
            EXPECT_NEAR(arc_length(m), arc_length(u) + arc_length(u + 2) + gap, 1e-12);
        }
    }
}

TEST_F(AngularRanges, TouchingWrappingAndWholeCircle)
{
    open_session(1.0, true);
    const double tol = EQ_ask_number_tolerance();
    struct Case {
        void (*f)(const double *, const double *, double *, int *);
        double r1[2], r2[2];
        int code;
        std::vector<double> out;
    };
    const Case cases[] = {
        {h010_, {0.0, 1.0}, {1.0 + 0.5 * tol, 2.0}, 1, {0.0, 2.0}},       // a gap within tol merges
        {h012_, {0.0, 1.0}, {1.0, 2.0}, 2, {}},                           // a common point is none
        {h010_, {5.0 - kTwoPi, 1.0}, {0.5, 2.0 + kTwoPi}, 1, {5.0, 2.0}}, // across 0, reduced
        {h010_, {2.0, 3.0}, {0.0, 1.0}, 2, {2.0, 3.0, 0.0, 1.0}},         // r1's range first
        {h009_, {2.0, 3.0}, {0.0, 1.0}, 2, {0.0, 3.0}},                   // the shorter gap filled
        {h012_, {3.0, 0.5}, {0.0, 3.5}, 3, {3.0, 3.5, 0.0, 0.5}},         // from r1's start on
        {h010_, {1.0, 1.0 - 0.5 * tol}, {2.0, 3.0}, 3, {0.0, 0.0}},       // within tol of 2pi
        {h009_, {0.0, 4.0}, {3.0, 1.0}, 3, {0.0, 0.0}},
        {h012_, {1.0, 1.0}, {2.0, 3.0}, 1, {2.0, 3.0}}, // equal ends: the whole circle
        {h012_, {4.0, 4.0}, {2.0, 2.0}, 1, {0.0, 0.0}},
    };
    for (const Case &c : cases) {
        double out[4] = {kNaN, kNaN, kNaN, kNaN};
        int code = 0;
        c.f(c.r1, c.r2, out, &code);
        SCOPED_TRACE(::testing::Message() << c.r1[0] << " " << c.r1[1] << " " << c.r2[0]);
        EXPECT_EQ(code, c.code);
        for (size_t i = 0; i < 4; ++i)
            EXPECT_TRUE(i < c.out.size() ? std::fabs(out[i] - c.out[i]) <= 1e-15
                                         : std::isnan(out[i]));
    }
    // In place: the inputs are read before the result is written.
    double r[4] = {3.0, 0.5, kNaN, kNaN};
    const double more[2] = {0.0, 3.5};
    int code = 0;
    h012_(r, more, r, &code);
    EXPECT_TRUE(code == 3 && r[0] == 3.0 && r[1] == 3.5 && r[2] == 0.0 && r[3] == 0.5);
    h009_(r, more, r, &code);
    EXPECT_TRUE(code == 1 && r[0] == 0.0 && r[1] == 3.5);
}

} // namespace
