// FACET_ against Eigen, its degenerate branches and historical parallel formulas.
#include <cmath>
#include <random>

#include <Eigen/Geometry>

#include "support/qx_test.h"

namespace
{

using V3 = Eigen::Vector3d;
using Facet = qxtest::QxTest;
const V3 kNaN3 = V3::Constant(qxtest::kNaN), o(0, 0, 0), x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);

TEST_F(Facet, RandomInputsAgreeWithEigen)
{
    std::mt19937_64 rng(2025);
    std::uniform_real_distribution<double> u(-10, 10);
    auto rnd = [&] { return V3(u(rng), u(rng), u(rng)); };
    const double tol = 6400 * std::numeric_limits<double>::epsilon(); // values up to 100
    for (int i = 0; i < 500; ++i) {
        const V3 a = rnd(), b = rnd(), p = rnd(), d2 = rnd(), n = rnd().normalized(), d1 = b - a;
        const V3 n2 = rnd().normalized();
        const double d = u(rng), e = u(rng);
        if (d1.norm() < 1 || std::fabs(n.dot(d1)) < 1 || d1.cross(d2).norm() < 1 ||
            n.cross(n2).norm() < 0.1)
            continue;
        const Eigen::Hyperplane<double, 3> plane(n, d); // n.x + d = 0, as FACET_
        const Eigen::ParametrizedLine<double, 3> line(a, d1.normalized());
        V3 q = kNaN3, q2 = kNaN3, q3 = kNaN3, q4 = kNaN3, dir = kNaN3;
        double t = qxtest::kNaN, t2 = qxtest::kNaN;
        ASSERT_EQ(FACET_line_int_plane(a.data(), b.data(), n.data(), d, q.data(), &t), 0);
        EXPECT_NEAR((q - line.intersectionPoint(plane)).norm(), 0, tol);
        EXPECT_NEAR((a + t * d1 - q).norm(), 0, tol);
        EXPECT_NEAR(FACET_point_plane_dist(p.data(), n.data(), d), plane.signedDistance(p), tol);
        ASSERT_EQ(FACET_point_plane_proj(p.data(), n.data(), d, q2.data(), &t), 0);
        EXPECT_NEAR((q2 - plane.projection(p)).norm(), 0, tol);
        EXPECT_NEAR(t, -plane.signedDistance(p), tol);
        EXPECT_NEAR(FACET_line_point_dist(a.data(), b.data(), p.data()), line.distance(p), tol);
        FACET_point_line_proj(p.data(), a.data(), d1.data(), 0, q3.data(), &t);
        EXPECT_NEAR((q3 - line.projection(p)).norm(), 0, tol);

        // Skew lines: the least-squares solution of [D1 -D2] (t1, t2) = L2 - L1,
        // and the gap signed along D1 x D2.
        Eigen::Matrix<double, 3, 2> sys;
        sys << d1, -d2;
        const Eigen::Vector2d want = sys.colPivHouseholderQr().solve(p - a);
        const double cond = 1 + d1.norm() * d2.norm() / d1.cross(d2).norm();
        FACET_line_line_closest_point(a.data(), d1.data(), p.data(), d2.data(), &t, &t2);
        EXPECT_NEAR((Eigen::Vector2d(t, t2) - want).norm(), 0,
                    tol * cond * cond * (1 + want.norm()));
        const double gap = (p + want[1] * d2 - a - want[0] * d1).norm();
        EXPECT_NEAR(FACET_line_line_dist(a.data(), d1.data(), p.data(), d2.data()),
                    (p - a).dot(d1.cross(d2)) < 0 ? -gap : gap, tol * cond);
        EXPECT_NEAR(FACET_compute_undirected_angle(d1.data(), d2.data()),
                    std::acos(d1.normalized().dot(d2.normalized())), 1e-7);

        // Two planes meet along N1 x N2 (as is) through a point of both.
        ASSERT_EQ(FACET_plane_plane_int(n.data(), d, n2.data(), e, q4.data(), dir.data()), 2);
        EXPECT_EQ(dir, n.cross(n2));
        EXPECT_NEAR(std::fabs(n.dot(q4) + d) + std::fabs(n2.dot(q4) + e), 0, 20 * tol);
    }
}

TEST_F(Facet, DegenerateCasesAndFixedFormulas)
{
    // Across z = 0 at t = 0.5; parallel to x = 0: 1 with P, t untouched.
    const V3 a(0, 0, -1), b(0, 0, 1), z3(0, 0, 3), tiny(1e-5, 0, 0), two(2, 0, 0), far(3, 4, 0);
    V3 p = kNaN3, d = kNaN3, l0 = kNaN3, q = kNaN3;
    double t = qxtest::kNaN, t2 = qxtest::kNaN;
    EXPECT_EQ(FACET_line_int_plane(a.data(), b.data(), z.data(), 0, p.data(), &t), 0);
    EXPECT_EQ(FACET_line_int_plane(a.data(), b.data(), x.data(), 0, q.data(), &t), 1);
    EXPECT_TRUE(t == 0.5 && p == o && q.hasNaN());

    // Plane pairs: crossing (D as is, P on the Y axis), apart, coincident (P untouched).
    EXPECT_EQ(FACET_plane_plane_int(z.data(), 0, x.data(), 0, p.data(), d.data()), 2);
    EXPECT_TRUE(d == y && p.x() == 0 && p.z() == 0);
    EXPECT_EQ(FACET_plane_plane_int(z.data(), 0, z.data(), -1, q.data(), d.data()), 1);
    EXPECT_EQ(FACET_plane_plane_int(z.data(), 0, z.data(), 0, q.data(), d.data()), 0);
    EXPECT_TRUE(d == o && q.hasNaN());

    // The sign follows D1 x D2; |D1 x D2| < 1e-6 gives the unsigned point distance.
    EXPECT_TRUE(FACET_line_line_dist(o.data(), x.data(), z.data(), y.data()) == 1 &&
                FACET_line_line_dist(z.data(), y.data(), o.data(), x.data()) == 1);
    EXPECT_EQ(FACET_line_line_dist(o.data(), x.data(), z.data(), (-y).eval().data()), -1);
    EXPECT_EQ(FACET_line_line_dist(z.data(), V3(0, -1, 1e-7).data(), o.data(), y.data()), 1);

    // Segments of length <= 1e-5 are not unitized; normalize other than 1 leaves D raw.
    FACET_points_to_param_line(o.data(), tiny.data(), 1, l0.data(), d.data());
    FACET_points_to_param_line(o.data(), two.data(), 1, p.data(), q.data());
    EXPECT_TRUE(d == tiny && l0 == o && q == x);
    FACET_points_to_param_line(o.data(), far.data(), 2, l0.data(), q.data());
    EXPECT_EQ(q, far);
    EXPECT_EQ(FACET_line_point_dist(o.data(), tiny.data(), far.data()), 5);

    // -d.N^ from a non-unit normal (off the plane 3z + 3 = 0); a null N gives 0.
    FACET_ask_point_on_plane(z3.data(), 3, p.data());
    FACET_ask_point_on_plane(o.data(), 3, q.data());
    EXPECT_TRUE(p == V3(0, 0, -3) && q == o);

    // is_unit skips the division; a null D gives t = 0, Q = L0.
    FACET_point_line_proj(far.data(), o.data(), two.data(), 1, p.data(), &t);
    FACET_point_line_proj(far.data(), y.data(), o.data(), 0, q.data(), &t2);
    EXPECT_TRUE(t == 6 && t2 == 0 && q == y);
}

TEST_F(Facet, ClosestPointParallelBranchesKeepTheirFormulas)
{
    const V3 l1(1, 0, 3), dz(0, 0, 2), tiny(0, 1e-4, 0), dy(0, 2, 0), l2(0, 3, 0);
    // a = 4 > 1e-6: t2 = e / a^2 = 6 / 16 (the geometric foot is 6 / 4); both squared
    // lengths 1e-8 <= 1e-6: both zero; D2 null, b = 4: t1 = (D1.L2 + D1.L1) / b^2 =
    // (6 + 2) / 16 (geometric: 1).
    const struct {
        V3 l1, d1, l2, d2;
        double t1, t2;
    } cases[] = {{l1, dz, o, dz, 0, 6.0 / 16}, {l1, tiny, o, tiny, 0, 0}, {y, dy, l2, o, 0.5, 0}};
    for (const auto &c : cases) {
        double t1 = qxtest::kNaN, t2 = qxtest::kNaN;
        FACET_line_line_closest_point(c.l1.data(), c.d1.data(), c.l2.data(), c.d2.data(), &t1, &t2);
        EXPECT_TRUE(t1 == c.t1 && t2 == c.t2) << t1 << " " << t2;
    }
}

} // namespace
