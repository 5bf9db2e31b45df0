// The VEC2_ routines: unitizing at the tolerance limit, the parallel and
// perpendicular tests, the right-angle turn and its sign rule, components in
// a base (+infinity when degenerate), the shortest vector and its tie rule,
// and the assertions (reported from vec2 at level 1, silent at 0).
#include <cmath>
#include <limits>
#include <random>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using Eigen::Vector2d;
using qxtest::kNaN;

constexpr double kEps = 2.220446049250313e-16;
constexpr double kInf = std::numeric_limits<double>::infinity();

class Vec2 : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{4242};
    std::uniform_real_distribution<double> coord{-50.0, 50.0};
    Vector2d random_vector() { return {coord(rng), coord(rng)}; }
};

Vector2d vec(const double *v) { return {v[0], v[1]}; }

TEST_F(Vec2, UnitizeAgreesWithEigenAndFailsAtLengthTol)
{
    for (int trial = 0; trial < 300; ++trial) {
        const Vector2d v = random_vector();
        double w[2] = {kNaN, kNaN}, length = kNaN;
        ASSERT_EQ(VEC2_unitize(v.data(), 1e-10, &length, w), 1);
        EXPECT_NEAR(length, v.norm(), 2 * kEps * v.norm());
        EXPECT_LT((vec(w) - v.normalized()).norm(), 4 * kEps);
    }
    double v[2] = {-3.0, 4.0}, length = kNaN;
    double w[2] = {kNaN, kNaN};
    EXPECT_EQ(VEC2_unitize(v, 5.0, &length, w), 0);
    EXPECT_EQ(length, 0.0);
    EXPECT_EQ(vec(w), Vector2d::Zero());
    EXPECT_EQ(VEC2_unitize(v, -5.0, &length, w), 0);
    EXPECT_EQ(VEC2_unitize(v, 4.99, &length, v), 1); // in place
    EXPECT_EQ(length, 5.0);
    EXPECT_EQ(vec(v), Vector2d((1.0 / 5.0) * -3.0, (1.0 / 5.0) * 4.0)); // by the reciprocal
}

TEST_F(Vec2, ParallelAndPerpendicular)
{
    const double zero[2] = {0.0, 0.0}, x[2] = {3.0, 0.0}, y[2] = {0.0, -1.0};
    EXPECT_EQ(VEC2_is_parallel(zero, x, 0.0), 1);
    EXPECT_EQ(VEC2_is_perpendicular(x, zero, 0.0), 1);
    EXPECT_EQ(VEC2_is_parallel(x, y, 0.5), 0);
    EXPECT_EQ(VEC2_is_perpendicular(x, y, 0.0), 1);
    // Null by length <= tol (inclusive): tol serves as a length too.
    const double short_y[2] = {0.0, 0.5};
    EXPECT_EQ(VEC2_is_parallel(x, short_y, 0.5), 1);
    EXPECT_EQ(VEC2_is_perpendicular(short_y, short_y, 0.5), 1);
    EXPECT_EQ(VEC2_is_parallel(x, short_y, 0.49), 0);

    for (int trial = 0; trial < 300; ++trial) {
        const Vector2d a = random_vector(), b = random_vector();
        const double ab = a.norm() * b.norm();
        const double sine = std::fabs(a.x() * b.y() - a.y() * b.x()) / ab;
        const double cosine = std::fabs(a.dot(b)) / ab;
        const double tol = 0.5;
        if (std::fabs(sine - tol) > 1e-12) {
            EXPECT_EQ(VEC2_is_parallel(a.data(), b.data(), tol), sine <= tol ? 1 : 0);
        }
        if (std::fabs(cosine - tol) > 1e-12) {
            EXPECT_EQ(VEC2_is_perpendicular(a.data(), b.data(), tol), cosine <= tol ? 1 : 0);
        }
    }
}

TEST_F(Vec2, AskPerpendicularTurnsByItsOwnSignRule)
{
    struct Case {
        Vector2d v, w;
    } cases[] = {
        {{1.0, 1.0}, {1.0, -1.0}},   // tie: (Vy, -Vx)
        {{-2.0, 2.0}, {2.0, 2.0}},   // tie with signs
        {{3.0, 1.0}, {1.0, -3.0}},   // |Vy| < |Vx|
        {{1.0, 3.0}, {-3.0, 1.0}},   // |Vy| > |Vx|
        {{0.0, -2.0}, {2.0, 0.0}},   // |Vy| > |Vx|
        {{-1e-9, 0.0}, {0.0, 1e-9}}, // just above null
    };
    for (const Case &c : cases) {
        double w[2] = {kNaN, kNaN};
        EXPECT_EQ(VEC2_ask_perpendicular(c.v.data(), w), 1) << c.v.transpose();
        EXPECT_EQ(vec(w), c.w) << c.v.transpose();
    }
    const double tiny[2] = {1e-11, -1e-11};
    double w[2] = {kNaN, kNaN};
    EXPECT_EQ(VEC2_ask_perpendicular(tiny, w), 0);
    EXPECT_EQ(vec(w), Vector2d::Zero());
}

TEST_F(Vec2, ComponentsInABase)
{
    for (int trial = 0; trial < 300; ++trial) {
        const Vector2d a = random_vector(), b = random_vector(), k = random_vector();
        const double det = a.x() * b.y() - a.y() * b.x();
        if (std::fabs(det) < 1.0) continue;
        double alpha = kNaN, beta = kNaN;
        ASSERT_EQ(VEC2_components(a.data(), b.data(), k.data(), 1e-10, &alpha, &beta), 1);
        Eigen::Matrix2d base;
        base << a, b;
        const Vector2d ref = base.partialPivLu().solve(k);
        EXPECT_NEAR(alpha, ref.x(), 1e-9 * (1.0 + ref.norm()));
        EXPECT_NEAR(beta, ref.y(), 1e-9 * (1.0 + ref.norm()));
        EXPECT_LT((alpha * a + beta * b - k).norm(), 1e-9 * (1.0 + k.norm()));
    }
    // |det| <= tol (inclusive): both components +infinity.
    const double a[2] = {2.0, 0.0}, b[2] = {1.0, 0.5}, k[2] = {1.0, 1.0};
    double alpha = kNaN, beta = kNaN;
    EXPECT_EQ(VEC2_components(a, b, k, 1.0, &alpha, &beta), 0);
    EXPECT_EQ(alpha, kInf);
    EXPECT_EQ(beta, kInf);
    EXPECT_EQ(alpha, HUGE_VAL);
    EXPECT_EQ(VEC2_components(a, b, k, std::nextafter(1.0, 0.0), &alpha, &beta), 1);
    EXPECT_EQ(alpha, -0.5);
    EXPECT_EQ(beta, 2.0);
    const double back[2] = {-4.0, 0.0};
    EXPECT_EQ(VEC2_components(a, back, k, 0.0, &alpha, &beta), 0);
    EXPECT_EQ(alpha, kInf);
}

TEST_F(Vec2, ShortestVectorKeepsTheFirstOfEqualOnes)
{
    const double v[] = {3.0, 4.0, 0.0, -2.0, 5.0, 1.0, 2.0, 0.0, 1.0, 1.0};
    EXPECT_EQ(VEC2_ask_shortest_vector(5, v), 4);
    EXPECT_EQ(VEC2_ask_shortest_vector(4, v), 1); // (0,-2) before the equal (2,0)
    EXPECT_EQ(VEC2_ask_shortest_vector(2, v), 1);
    EXPECT_EQ(VEC2_ask_shortest_vector(1, v + 2), 0);
    const double same[] = {1.0, 0.0, 0.0, 1.0, -1.0, 0.0};
    EXPECT_EQ(VEC2_ask_shortest_vector(3, same), 0);
    EXPECT_EQ(qxsys_report_count(), 0);

    std::uniform_int_distribution<int> count(1, 40);
    for (int trial = 0; trial < 100; ++trial) {
        const int n = count(rng);
        Eigen::Matrix2Xd pts(2, n);
        for (int i = 0; i < n; ++i) pts.col(i) = random_vector();
        Eigen::Index expect;
        pts.colwise().norm().minCoeff(&expect);
        EXPECT_EQ(VEC2_ask_shortest_vector(n, pts.data()), expect);
    }
}

TEST_F(Vec2, AssertionsAtLevelOneOnly)
{
    const double huge[2] = {-1e19, 0.0}, x[2] = {1.0, 0.0};
    const double under[2] = {std::nextafter(1e19, 0.0), -std::nextafter(1e19, 0.0)};
    double w[2], length;
    for (int level : {0, 1}) {
        MACH__checking_level = level;
        const long n = level;
        qxsys_clear_reports();
        EXPECT_EQ(VEC2_unitize(huge, 1.0, &length, w), 1);
        EXPECT_EQ(qxsys_report_count(), n);
        EXPECT_EQ(VEC2_is_parallel(huge, x, 0.0), 1);
        EXPECT_EQ(qxsys_report_count(), 2 * n);
        EXPECT_EQ(VEC2_is_perpendicular(x, huge, 0.0), 0);
        EXPECT_EQ(qxsys_report_count(), 3 * n);
        EXPECT_EQ(VEC2_ask_perpendicular(huge, w), 1);
        EXPECT_EQ(qxsys_report_count(), 4 * n);
        EXPECT_EQ(VEC2_is_parallel(huge, huge, 0.0), 1);
        EXPECT_EQ(qxsys_report_count(), 6 * n);
        EXPECT_EQ(VEC2_ask_shortest_vector(0, x), 0);
        EXPECT_EQ(qxsys_report_count(), 7 * n);
        for (int i = 0; i < qxsys_report_count(); ++i) {
            const qxsys_report &r = *qxsys_report_back(i);
            EXPECT_EQ(r.kind, QXSYS_INTERNAL);
            EXPECT_STREQ(r.file, "vec2");
            EXPECT_STREQ(r.text, "Assertion failed: condition");
        }
        const double huge_y[2] = {0.0, 1e19};
        qxsys_clear_reports();
        VEC2_unitize(huge_y, 1.0, &length, w);
        EXPECT_EQ(qxsys_report_count(), n);
        // Below the bound, and the routines without assertions.
        qxsys_clear_reports();
        VEC2_unitize(under, 1.0, &length, w);
        VEC2_is_parallel(under, under, 0.1);
        VEC2_is_perpendicular(under, under, 0.1);
        VEC2_ask_perpendicular(under, w);
        VEC2_components(huge, huge, huge, 0.0, &length, w);
        VEC2_ask_shortest_vector(1, huge);
        EXPECT_EQ(qxsys_report_count(), 0);
    }
}

} // namespace
