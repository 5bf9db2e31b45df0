// The VEC2_ routines: unitizing at the tolerance limit, the parallel and
// perpendicular tests, the right-angle turn and its sign rule, components in
// a base (+infinity when degenerate), the shortest vector and its tie rule,
// and the assertions (reported from vec2 at level 1, silent at 0).
#include <cmath>
#include <random>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using V = Eigen::Vector2d;
using qxtest::kNaN;

constexpr double kEps = 2.220446049250313e-16;

class Vec2 : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{4242};
    std::uniform_real_distribution<double> coord{-50.0, 50.0};
    V random_vector() { return {coord(rng), coord(rng)}; }
};

V vec(const double *v) { return {v[0], v[1]}; }

TEST_F(Vec2, UnitizeAndTheTwoTestsAgreeWithEigen)
{
    for (int trial = 0; trial < 300; ++trial) {
        const V v = random_vector(), b = random_vector();
        double w[2] = {kNaN, kNaN}, length = kNaN;
        ASSERT_EQ(VEC2_unitize(v.data(), 1e-10, &length, w), 1);
        EXPECT_NEAR(length, v.norm(), 2 * kEps * v.norm());
        EXPECT_LT((vec(w) - v.normalized()).norm(), 4 * kEps);

        const double sine = std::fabs(v.x() * b.y() - v.y() * b.x()) / (v.norm() * b.norm());
        const double cosine = std::fabs(v.dot(b)) / (v.norm() * b.norm());
        if (std::fabs(sine - 0.5) <= 1e-12 || std::fabs(cosine - 0.5) <= 1e-12) continue;
        EXPECT_EQ(VEC2_is_parallel(v.data(), b.data(), 0.5), sine <= 0.5 ? 1 : 0);
        EXPECT_EQ(VEC2_is_perpendicular(v.data(), b.data(), 0.5), cosine <= 0.5 ? 1 : 0);
    }
    // Null when |V| <= |tol|: zeros and length 0.
    double v[2] = {-3.0, 4.0}, w[2] = {kNaN, kNaN}, length = kNaN;
    EXPECT_EQ(VEC2_unitize(v, 5.0, &length, w), 0);
    EXPECT_EQ(length, 0.0);
    EXPECT_EQ(vec(w), V::Zero());
    EXPECT_EQ(VEC2_unitize(v, -5.0, &length, w), 0);
    EXPECT_EQ(VEC2_unitize(v, 4.99, &length, v), 1); // in place
    EXPECT_EQ(length, 5.0);
    EXPECT_EQ(vec(v), V((1.0 / 5.0) * -3.0, (1.0 / 5.0) * 4.0)); // by the reciprocal

    // Either vector no longer than tol (inclusive): both tests hold.
    const double x[2] = {3.0, 0.0}, y[2] = {0.0, -1.0}, short_y[2] = {0.0, 0.5};
    EXPECT_EQ(VEC2_is_parallel(V::Zero().eval().data(), x, 0.0), 1);
    EXPECT_EQ(VEC2_is_parallel(x, y, 0.5), 0);
    EXPECT_EQ(VEC2_is_parallel(x, short_y, 0.5), 1);
    EXPECT_EQ(VEC2_is_parallel(x, short_y, 0.49), 0);
    EXPECT_EQ(VEC2_is_perpendicular(short_y, short_y, 0.5), 1);
    EXPECT_EQ(VEC2_is_perpendicular(x, y, 0.0), 1);
}

TEST_F(Vec2, AskPerpendicularTurnsByItsOwnSignRule)
{
    const struct {
        V v, w;
        int ok;
    } cases[] = {
        {{1, 1}, {1, -1}, 1},       // tie: (Vy, -Vx)
        {{-2, 2}, {2, 2}, 1},       // tie with signs
        {{3, 1}, {1, -3}, 1},       // |Vy| < |Vx|
        {{1, 3}, {-3, 1}, 1},       // |Vy| > |Vx|
        {{-1e-9, 0}, {0, 1e-9}, 1}, // just above null
        {{1e-11, -1e-11}, {0, 0}, 0},
    };
    for (const auto &c : cases) {
        double w[2] = {kNaN, kNaN};
        EXPECT_EQ(VEC2_ask_perpendicular(c.v.data(), w), c.ok) << c.v.transpose();
        EXPECT_EQ(vec(w), c.w) << c.v.transpose();
    }
}

TEST_F(Vec2, ComponentsInABaseAndTheShortestVector)
{
    for (int trial = 0; trial < 300; ++trial) {
        const V a = random_vector(), b = random_vector(), k = random_vector();
        double alpha = kNaN, beta = kNaN;
        if (std::fabs(a.x() * b.y() - a.y() * b.x()) < 1.0) continue;
        ASSERT_EQ(VEC2_components(a.data(), b.data(), k.data(), 1e-10, &alpha, &beta), 1);
        EXPECT_LT((alpha * a + beta * b - k).norm(), 1e-12 * (1.0 + k.norm()));
    }
    // |det| <= tol (inclusive): both components +infinity.
    const double a[2] = {2.0, 0.0}, b[2] = {1.0, 0.5}, k[2] = {1.0, 1.0}, back[2] = {-4.0, 0.0};
    double alpha = kNaN, beta = kNaN;
    EXPECT_EQ(VEC2_components(a, b, k, 1.0, &alpha, &beta), 0);
    EXPECT_EQ(V(alpha, beta), V(HUGE_VAL, HUGE_VAL));
    EXPECT_EQ(VEC2_components(a, b, k, std::nextafter(1.0, 0.0), &alpha, &beta), 1);
    EXPECT_EQ(V(alpha, beta), V(-0.5, 2.0));
    EXPECT_EQ(VEC2_components(a, back, k, 0.0, &alpha, &beta), 0);
    EXPECT_EQ(alpha, HUGE_VAL);

    // The shortest of n; the first of equal ones.
    const double v[] = {3.0, 4.0, 0.0, -2.0, 5.0, 1.0, 2.0, 0.0, 1.0, 1.0};
    EXPECT_EQ(VEC2_ask_shortest_vector(5, v), 4);
    EXPECT_EQ(VEC2_ask_shortest_vector(4, v), 1); // (0,-2) before the equal (2,0)
    EXPECT_EQ(VEC2_ask_shortest_vector(1, v + 2), 0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Vec2, AssertionsAtLevelOneOnly)
{
    const double huge[2] = {-1e19, 0.0}, huge_y[2] = {0.0, 1e19}, x[2] = {1.0, 0.0};
    const double under[2] = {std::nextafter(1e19, 0.0), -std::nextafter(1e19, 0.0)};
    double w[2], length;
    for (int level : {0, 1}) {
        MACH__checking_level = level;
        qxsys_clear_reports();
        EXPECT_EQ(VEC2_unitize(huge, 1.0, &length, w), 1); // carries on after the report
        VEC2_unitize(huge_y, 1.0, &length, w);
        EXPECT_EQ(VEC2_is_parallel(huge, x, 0.0), 1);
        EXPECT_EQ(VEC2_is_perpendicular(x, huge, 0.0), 0);
        EXPECT_EQ(VEC2_ask_perpendicular(huge, w), 1);
        EXPECT_EQ(VEC2_is_parallel(huge, huge, 0.0), 1); // two reports
        EXPECT_EQ(VEC2_ask_shortest_vector(0, x), 0);
        // Below the bound, and the routines without assertions.
        VEC2_unitize(under, 1.0, &length, w);
        VEC2_is_parallel(under, under, 0.1);
        VEC2_is_perpendicular(under, under, 0.1);
        VEC2_ask_perpendicular(under, w);
        VEC2_components(huge, huge, huge, 0.0, &length, w);
        VEC2_ask_shortest_vector(1, huge);
        ASSERT_EQ(qxsys_report_count(), 8 * level);
        for (int i = 0; i < 8 * level; ++i) {
            const qxsys_report &r = *qxsys_report_back(i);
            EXPECT_EQ(r.kind, QXSYS_INTERNAL);
            EXPECT_STREQ(r.file, "vec2");
            EXPECT_STREQ(r.text, "Assertion failed: condition");
        }
    }
}

} // namespace
