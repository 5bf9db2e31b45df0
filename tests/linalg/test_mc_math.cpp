// The MC_ routines: arithmetic against Eigen on random inputs, the fixed
// constants of the predicates (strict or not), the line and plane measures
// against independent formulas, Cramer's solve against Eigen, and the
// stdout line + raise of the two degenerate cases, whatever the level.
#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include <unistd.h>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using Eigen::Matrix3d;
using Eigen::Vector3d;
using qxtest::kNaN;

constexpr double kEps = 2.220446049250313e-16;

class McMath : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{20240521};
    std::uniform_real_distribution<double> coord{-10.0, 10.0};

    Vector3d random_vector() { return {coord(rng), coord(rng), coord(rng)}; }
    Vector3d random_unit() { return random_vector().normalized(); }
};

Vector3d vec(const double *v) { return {v[0], v[1], v[2]}; }

// The report of a degenerate MC_ input: stdout line first, then the raise.
void expect_vector_raise(const std::string &out, const char *line, const char *message)
{
    EXPECT_EQ(out, line);
    ASSERT_EQ(qxsys_report_count(), 1);
    const qxsys_report &r = *qxsys_report_back(0);
    EXPECT_EQ(r.kind, QXSYS_RAISE);
    EXPECT_STREQ(r.file, "mc_math");
    EXPECT_EQ(r.code, QX_ERR_VECTOR);
    EXPECT_EQ(r.code, 17);
    EXPECT_STREQ(r.text, message);
}

constexpr const char *kNullLine = "\nERROR: zero vector in unitize\n";
constexpr const char *kSingularLine = "\nERROR: zero determinant in 3 by 3 system\n";

TEST_F(McMath, ArithmeticAgreesWithEigen)
{
    int by_reciprocal = 0; // unit vectors that differ from multiplying by 1/length
    for (int trial = 0; trial < 200; ++trial) {
        const Vector3d a = random_vector(), b = random_vector(), c = random_vector();
        const double s = coord(rng);
        double k[3] = {kNaN, kNaN, kNaN};
        const double tol = 64 * kEps * a.norm() * b.norm();

        MC_AxB(a.data(), b.data(), k);
        EXPECT_LT((vec(k) - a.cross(b)).norm(), tol);
        MC_AmB(a.data(), b.data(), k);
        EXPECT_EQ(vec(k), a - b);
        MC_ApB(a.data(), b.data(), k);
        EXPECT_EQ(vec(k), a + b);
        MC_aA(s, a.data(), k);
        EXPECT_EQ(vec(k), s * a);
        MC_aApB(s, a.data(), b.data(), k);
        EXPECT_EQ(vec(k), (s * a + b).eval());
        MC_v_copy(c.data(), k);
        EXPECT_EQ(vec(k), c);

        EXPECT_NEAR(MC_A_dot_B(a.data(), b.data()), a.dot(b), tol);
        EXPECT_NEAR(MC_length(a.data()), a.norm(), 4 * kEps * a.norm());
        EXPECT_NEAR(MC_length2(a.data()), a.squaredNorm(), 4 * kEps * a.squaredNorm());
        EXPECT_NEAR(MC_dist(a.data(), b.data()), (a - b).norm(), 8 * kEps * (a - b).norm());
        EXPECT_NEAR(MC_dist2(a.data(), b.data()), (a - b).squaredNorm(),
                    8 * kEps * (a - b).squaredNorm());
        EXPECT_NEAR(MC_triple_product(a.data(), b.data(), c.data()), a.cross(b).dot(c),
                    64 * kEps * a.norm() * b.norm() * c.norm());

        // Unit by three divisions (not by the reciprocal), bit for bit.
        double unit[3] = {a.x(), a.y(), a.z()};
        const double len = std::sqrt(a.x() * a.x() + a.y() * a.y() + a.z() * a.z());
        MC_v_unit(unit);
        EXPECT_EQ(vec(unit), Vector3d(a.x() / len, a.y() / len, a.z() / len));
        by_reciprocal +=
            vec(unit) != Vector3d(a.x() * (1 / len), a.y() * (1 / len), a.z() * (1 / len));

        // The last component's products in the stated order, bit for bit.
        MC_AxB(a.data(), b.data(), k);
        EXPECT_EQ(k[0], a.y() * b.z() - a.z() * b.y());
        EXPECT_EQ(k[2], a.x() * b.y() - b.x() * a.y());

        Matrix3d m = Matrix3d::Random();
        double aug[12];
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) aug[4 * i + j] = m(i, j);
            aug[4 * i + 3] = kNaN; // the right-hand side is not read
        }
        EXPECT_NEAR(MC_determinant(aug), m.determinant(), 64 * kEps);
    }
    EXPECT_GT(by_reciprocal, 0);
}

TEST_F(McMath, ComponentWiseOutputMayBeAnInput)
{
    const double a[3] = {1.5, -2.0, 4.0}, b[3] = {0.25, 3.0, -1.0};
    double k[3];
    std::memcpy(k, a, sizeof k);
    MC_AmB(k, b, k);
    EXPECT_EQ(vec(k), vec(a) - vec(b));
    std::memcpy(k, b, sizeof k);
    MC_ApB(a, k, k);
    EXPECT_EQ(vec(k), vec(a) + vec(b));
    std::memcpy(k, a, sizeof k);
    MC_aA(-3.0, k, k);
    EXPECT_EQ(vec(k), -3.0 * vec(a));
    std::memcpy(k, b, sizeof k);
    MC_aApB(2.0, a, k, k);
    EXPECT_EQ(vec(k), 2.0 * vec(a) + vec(b));
    std::memcpy(k, a, sizeof k);
    MC_aApB(2.0, k, b, k);
    EXPECT_EQ(vec(k), 2.0 * vec(a) + vec(b));
}

TEST_F(McMath, DeterminantFollowsSarrusTermOrder)
{
    // A case whose last bit depends on the order of the terms.
    const double m00 = 1.5, m01 = 5.0, m02 = 1.5, m10 = 0.3, m11 = 3.0, m12 = 5.0, m20 = 0.3,
                 m21 = 2.0, m22 = 1e-3;
    const double m[12] = {m00, m01, m02, kNaN, m10, m11, m12, kNaN, m20, m21, m22, kNaN};
    const double sarrus = m00 * m11 * m22 + m10 * m21 * m02 + m20 * m01 * m12 - m20 * m11 * m02 -
                          m00 * m21 * m12 - m10 * m01 * m22;
    const double cofactor = m00 * (m11 * m22 - m12 * m21) - m01 * (m10 * m22 - m12 * m20) +
                            m02 * (m10 * m21 - m11 * m20);
    const double grouped = (m00 * m11 * m22 + m10 * m21 * m02 + m20 * m01 * m12) -
                           (m20 * m11 * m02 + m00 * m21 * m12 + m10 * m01 * m22);
    ASSERT_NE(sarrus, cofactor); // the case tells the orders apart
    ASSERT_NE(sarrus, grouped);
    EXPECT_EQ(MC_determinant(m), sarrus);
}

TEST_F(McMath, ParallelConstantIsComparedWithTheSquaredCrossLength)
{
    const double k = 1.7453292519943296e-5;
    const double a[3] = {1.0, 0.0, 0.0};
    // |A x B|^2 = y^2 for B = (0, y, 0): sine 0.004 is parallel because
    // 0.004^2 = 1.6e-5 < k, though 0.004 itself is far above k.
    const double below[3] = {0.0, 0.004, 0.0}, above[3] = {0.0, 0.0042, 0.0};
    EXPECT_EQ(MC_q_parallel(a, below), 1);
    EXPECT_EQ(MC_q_parallel(a, above), 0);

    // Strict: a squared cross length of exactly k is not parallel.
    const double y = 0.0005613353556526114, z = 0.004139830327252272;
    ASSERT_EQ(z * z + y * y, k);
    const double z_in = std::nextafter(z, 0.0);
    ASSERT_LT(z_in * z_in + y * y, k);
    const double at[3] = {0.0, y, z}, in[3] = {0.0, y, z_in};
    EXPECT_EQ(MC_q_parallel(a, at), 0);
    EXPECT_EQ(MC_q_parallel(a, in), 1);

    // Antiparallel counts; unit inputs one degree apart do not.
    const double back[3] = {-1.0, 0.0, 0.0};
    const double deg[3] = {std::cos(0.0174533), std::sin(0.0174533), 0.0};
    EXPECT_EQ(MC_q_parallel(a, back), 1);
    EXPECT_EQ(MC_q_parallel(a, deg), 0);
}

TEST_F(McMath, PerpendicularIsStrictAtOneTenThousandth)
{
    const double a[3] = {1.0, 0.0, 0.0};
    const double at[3] = {0.0001, 1.0, 0.0}, neg[3] = {-0.0001, 1.0, 0.0};
    const double in[3] = {std::nextafter(0.0001, 0.0), 1.0, 0.0};
    EXPECT_EQ(MC_q_perp(a, at), 0);
    EXPECT_EQ(MC_q_perp(a, neg), 0);
    EXPECT_EQ(MC_q_perp(a, in), 1);
}

TEST_F(McMath, AngleSnapsToZeroAndPiBeyondTheThresholds)
{
    for (int trial = 0; trial < 50; ++trial) {
        const Vector3d u = random_unit(), v = random_unit();
        EXPECT_EQ(MC_get_angle(u.data(), u.data()), 0.0);
        const Vector3d w = -u;
        EXPECT_EQ(MC_get_angle(u.data(), w.data()), 3.141592653589793);
        EXPECT_NEAR(MC_get_angle(u.data(), v.data()), std::atan2(u.cross(v).norm(), u.dot(v)),
                    1e-7);
    }
    const double x[3] = {1.0, 0.0, 0.0};
    const double c = 0.9999999;
    const double at[3] = {c, 0.1, 0.0}, past[3] = {std::nextafter(c, 1.0), 0.1, 0.0};
    const double nat[3] = {-c, 0.1, 0.0}, npast[3] = {std::nextafter(-c, -1.0), 0.1, 0.0};
    EXPECT_EQ(MC_get_angle(x, at), std::acos(c));
    EXPECT_EQ(MC_get_angle(x, past), 0.0);
    EXPECT_EQ(MC_get_angle(x, nat), std::acos(-c));
    EXPECT_EQ(MC_get_angle(x, npast), 3.141592653589793);
    // Not normalised here: a long pair snaps to 0 as its dot product
    // exceeds 1, where the unit directions are 53 degrees apart.
    const double long_x[3] = {2.0, 0.0, 0.0}, tilted[3] = {0.6, 0.8, 0.0};
    EXPECT_EQ(MC_get_angle(long_x, tilted), 0.0);
}

TEST_F(McMath, PerpendicularVectorIsUnitInEveryBranch)
{
    for (int trial = 0; trial < 200; ++trial) {
        const Vector3d u = random_unit();
        double k[3] = {kNaN, kNaN, kNaN};
        MC_perp_vec(u.data(), k);
        EXPECT_NEAR(vec(k).norm(), 1.0, 4 * kEps);
        EXPECT_NEAR(vec(k).dot(u), 0.0, 8 * kEps);
    }
    // The branches by the 0.5 thresholds, and K may be A.
    double k[3] = {0.0, 0.0, 1.0}; // |Ax|, |Ay| <= 0.5: (1, 0, -Ax/Az)
    MC_perp_vec(k, k);
    EXPECT_EQ(vec(k), Vector3d(1.0, 0.0, 0.0));
    const double y[3] = {0.0, 1.0, 0.0}; // |Ay| > 0.5: (1, -Ax/Ay, 0)
    MC_perp_vec(y, k);
    EXPECT_EQ(vec(k), Vector3d(1.0, 0.0, 0.0));
    const double x[3] = {0.6, 0.8, 0.0}; // |Ax| > 0.5: (-Ay/Ax, 1, 0)
    MC_perp_vec(x, k);
    EXPECT_NEAR(k[0], -0.8, 1e-15);
    EXPECT_NEAR(k[1], 0.6, 1e-15);
    EXPECT_EQ(k[2], 0.0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(McMath, ProjectionsOntoLinesAndPlanes)
{
    for (int trial = 0; trial < 200; ++trial) {
        const Vector3d p = random_vector(), q = random_vector(), u = random_unit();
        double r[3] = {kNaN, kNaN, kNaN};
        MC_proj_point_onto_line(p.data(), u.data(), q.data(), r);
        const Vector3d foot = q + u * u.dot(p - q);
        EXPECT_LT((vec(r) - foot).norm(), 256 * kEps);

        double k[3] = {kNaN, kNaN, kNaN};
        MC_perp_from_line_to_point(p.data(), u.data(), q.data(), k);
        EXPECT_LT((vec(k) - (p - foot).normalized()).norm(), 1e-12);
        EXPECT_EQ(MC_q_point_on_line(p.data(), u.data(), q.data()), (p - foot).norm() <= 1e-4);

        const Vector3d on = q + 3.0 * u;
        EXPECT_EQ(MC_q_point_on_line(on.data(), u.data(), q.data()), 1);

        const double d = coord(rng);
        MC_proj_point_onto_plane(p.data(), u.data(), d, r);
        EXPECT_NEAR(u.dot(vec(r)), d, 256 * kEps);
        EXPECT_LT((vec(r) - p).cross(u).norm(), 256 * kEps);
        EXPECT_NEAR((vec(r) - p).norm(), std::fabs(u.dot(p) - d), 256 * kEps);
    }
    // The squared distance limit 1e-8 is inclusive, against a fixed constant.
    const double y = 8.474337369372328e-05, z = 5.3090117865813506e-05;
    ASSERT_EQ(y * y + z * z, 1e-8);
    const double u[3] = {1.0, 0.0, 0.0}, q[3] = {0.0, 0.0, 0.0};
    const double y_out = std::nextafter(y, 1.0);
    ASSERT_GT(y_out * y_out + z * z, 1e-8);
    const double in[3] = {5.0, y, z}, out[3] = {5.0, y_out, z};
    EXPECT_EQ(MC_q_point_on_line(in, u, q), 1);
    EXPECT_EQ(MC_q_point_on_line(out, u, q), 0);
    open_session(1e-6, true); // no session tolerance is involved
    EXPECT_EQ(MC_q_point_on_line(in, u, q), 1);
}

TEST_F(McMath, DistanceBetweenLines)
{
    for (int trial = 0; trial < 200; ++trial) {
        const Vector3d u1 = random_unit(), u2 = random_unit();
        const Vector3d p1 = random_vector(), p2 = random_vector();
        const Vector3d n = u1.cross(u2);
        EXPECT_NEAR(MC_dist_lines(u1.data(), p1.data(), u2.data(), p2.data()),
                    std::fabs((p1 - p2).dot(n)) / n.norm(), 1e-9);
        // Parallel lines (either sense): the distance of P2 from line 1.
        const Vector3d back = -u1;
        const double expect = (p2 - p1).cross(u1).norm();
        EXPECT_NEAR(MC_dist_lines(u1.data(), p1.data(), u1.data(), p2.data()), expect, 1e-12);
        EXPECT_NEAR(MC_dist_lines(u1.data(), p1.data(), back.data(), p2.data()), expect, 1e-12);
        // Coincident lines, through different points.
        const Vector3d p3 = p1 + 2.5 * u1;
        EXPECT_EQ(MC_dist_lines(u1.data(), p1.data(), u1.data(), p3.data()), 0.0);
    }
    const double x[3] = {1.0, 0.0, 0.0}, o[3] = {0.0, 0.0, 0.0}, up[3] = {7.0, 0.0, 1.0};
    EXPECT_EQ(MC_dist_lines(x, o, x, o), 0.0);
    EXPECT_EQ(MC_dist_lines(x, o, x, up), 1.0);
    const double y[3] = {0.0, 1.0, 0.0};
    EXPECT_EQ(MC_dist_lines(x, o, y, up), 1.0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(McMath, SignedDistanceOfPlanes)
{
    const double n[3] = {0.0, 0.6, 0.8}, m[3] = {0.0, -0.6, -0.8};
    EXPECT_EQ(MC_signed_dist_planes(n, 2.0, m, 3.0), -5.0);
    EXPECT_EQ(MC_signed_dist_planes(n, 2.0, n, 3.0), 1.0);
    const double tilted[3] = {0.0, 0.8, 0.6};
    EXPECT_EQ(MC_signed_dist_planes(n, 2.0, tilted, 3.0), 0.0);
    // Short normals at right angles pass the parallel test; a zero dot
    // product counts as opposite.
    const double sx[3] = {1e-3, 0.0, 0.0}, sy[3] = {0.0, 1e-3, 0.0};
    EXPECT_EQ(MC_signed_dist_planes(sx, 1.0, sy, 2.0), -3.0);

    // Axis and plane: n.P - d only when the axis is parallel to the plane.
    const double z[3] = {0.0, 0.0, 1.0}, p[3] = {4.0, 5.0, 6.0};
    const double along[3] = {1.0, 0.0, 0.0}, off[3] = {std::sqrt(1.0 - 1e-8), 0.0, 1e-4};
    const double nearly[3] = {1.0, 0.0, std::nextafter(1e-4, 0.0)};
    EXPECT_EQ(MC_signed_dist_plane_axis(z, 2.0, along, p), 4.0);
    EXPECT_EQ(MC_signed_dist_plane_axis(z, 2.0, off, p), 0.0);
    EXPECT_EQ(MC_signed_dist_plane_axis(z, 2.0, nearly, p), 4.0);
}

TEST_F(McMath, SolveByCramerAgreesWithEigenAndRestoresTheSystem)
{
    for (int trial = 0; trial < 200; ++trial) {
        Matrix3d a;
        for (int i = 0; i < 3; ++i) a.row(i) = random_vector().transpose();
        const Vector3d b = random_vector();
        if (std::fabs(a.determinant()) < 1.0) continue;
        double m[12], before[12];
        for (int i = 0; i < 3; ++i) {
            for (int j = 0; j < 3; ++j) m[4 * i + j] = a(i, j);
            m[4 * i + 3] = b(i);
        }
        std::memcpy(before, m, sizeof m);
        double x[3] = {kNaN, kNaN, kNaN};
        MC_solve_3(m, x);
        EXPECT_EQ(std::memcmp(m, before, sizeof m), 0);
        const Vector3d ref = a.partialPivLu().solve(b);
        EXPECT_LT((vec(x) - ref).norm(), 1e-10 * (1.0 + ref.norm()));
        EXPECT_LT((a * vec(x) - b).norm(), 1e-10 * (a.norm() * vec(x).norm() + b.norm()));
    }
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(McMath, AxisPiercesPlane)
{
    for (int trial = 0; trial < 200; ++trial) {
        const Vector3d u = random_unit(), p = random_vector(), n = random_unit();
        if (std::fabs(u.dot(n)) < 0.1) continue;
        const double d = coord(rng);
        double x[3] = {kNaN, kNaN, kNaN};
        MC_axis_plane_x(u.data(), p.data(), n.data(), d, x);
        const Vector3d expect = p + u * ((d - n.dot(p)) / n.dot(u));
        EXPECT_LT((vec(x) - expect).norm(), 1e-9 * (1.0 + expect.norm()));
    }
    // Ties go to x over y and to x or y over z. The solution of the system
    // built on each dominant component differs in its last bits, which
    // shows the choice.
    const auto solve_with = [](int k, const double *u, const double *p, const double *n,
                               double *x) {
        const double yz[4] = {0.0, u[2], -u[1], u[2] * p[1] - u[1] * p[2]};
        const double zx[4] = {-u[2], 0.0, u[0], u[0] * p[2] - u[2] * p[0]};
        const double xy[4] = {u[1], -u[0], 0.0, u[1] * p[0] - u[0] * p[1]};
        const double *r2 = k == 0 ? zx : yz, *r3 = k == 2 ? zx : xy;
        double m[12] = {n[0],  n[1],  n[2],  4.25,  r2[0], r2[1],
                        r2[2], r2[3], r3[0], r3[1], r3[2], r3[3]};
        MC_solve_3(m, x);
    };
    const double s = 1.0 / std::sqrt(2.0), p[3] = {0.3, 1.7, -2.9}, n[3] = {0.48, 0.6, 0.64};
    const struct {
        double u[3];
        int wins, loses;
    } ties[] = {{{s, -s, 0.1}, 0, 1}, {{-s, 0.1, s}, 0, 2}, {{0.1, s, -s}, 1, 2}};
    for (const auto &t : ties) {
        double expect[3], other[3], x[3] = {kNaN, kNaN, kNaN};
        solve_with(t.wins, t.u, p, n, expect);
        solve_with(t.loses, t.u, p, n, other);
        ASSERT_NE(vec(expect), vec(other)) << t.wins;
        MC_axis_plane_x(t.u, p, n, 4.25, x);
        EXPECT_EQ(vec(x), vec(expect)) << t.wins;
    }
}

TEST_F(McMath, NullVectorPrintsThenRaisesAtAnyLevel)
{
    for (int level : {0, 1}) {
        MACH__checking_level = level;
        qxsys_clear_reports();
        // The host returns: the division by the small length still happens.
        double a[3] = {0.0, 3e-5, -4e-5};
        const double len = std::sqrt(3e-5 * 3e-5 + 4e-5 * 4e-5);
        testing::internal::CaptureStdout();
        MC_v_unit(a);
        expect_vector_raise(testing::internal::GetCapturedStdout(), kNullLine,
                            "tried to unitize null vector");
        EXPECT_EQ(vec(a), Vector3d(0.0, 3e-5 / len, -4e-5 / len));
    }
    // Just long enough: divided, no report.
    double ok[3] = {0.0, 0.0, 1e-4};
    qxsys_clear_reports();
    MC_v_unit(ok);
    EXPECT_EQ(vec(ok), Vector3d(0.0, 0.0, 1.0));
    EXPECT_EQ(qxsys_report_count(), 0);

    // The line is out before the host sees the report, whatever it does.
    qxsys_set_handler([](const qxsys_report *, void *) { (void)!write(1, "[host]", 6); }, nullptr,
                      nullptr);
    double small[3] = {1e-5, 0.0, 0.0};
    testing::internal::CaptureStdout();
    MC_v_unit(small);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string(kNullLine) + "[host]");
    qxsys_set_handler(nullptr, nullptr, nullptr);

    // The host unwinds: the input is left as it was.
    double z[3] = {0.0, 0.0, 0.0};
    testing::internal::CaptureStdout();
    const auto err = qxsys::first_error([&] { MC_v_unit(z); });
    EXPECT_EQ(testing::internal::GetCapturedStdout(), kNullLine);
    ASSERT_TRUE(err.has_value());
    EXPECT_STREQ(err->text, "tried to unitize null vector");
    EXPECT_EQ(vec(z), Vector3d::Zero());

    // A point on the line has no direction towards it.
    const double u[3] = {0.0, 1.0, 0.0}, q[3] = {1.0, 1.0, 1.0}, on[3] = {1.0, 5.0, 1.0};
    double k[3];
    qxsys_clear_reports();
    testing::internal::CaptureStdout();
    EXPECT_TRUE(qxsys::first_error([&] { MC_perp_from_line_to_point(on, u, q, k); }).has_value());
    expect_vector_raise(testing::internal::GetCapturedStdout(), kNullLine,
                        "tried to unitize null vector");
}

TEST_F(McMath, SingularSystemPrintsThenRaises)
{
    // |det| = 1e-9 < 1e-8: reported, then solved anyway when the host returns.
    double m[12] = {1e-3, 0, 0, 1e-3, 0, 1e-3, 0, 2e-3, 0, 0, 1e-3, 3e-3};
    double before[12], x[3] = {kNaN, kNaN, kNaN};
    std::memcpy(before, m, sizeof m);
    testing::internal::CaptureStdout();
    MC_solve_3(m, x);
    expect_vector_raise(testing::internal::GetCapturedStdout(), kSingularLine,
                        "zero determinant in linear system");
    EXPECT_NEAR(x[0], 1.0, 1e-12);
    EXPECT_NEAR(x[1], 2.0, 1e-12);
    EXPECT_NEAR(x[2], 3.0, 1e-12);
    EXPECT_EQ(std::memcmp(m, before, sizeof m), 0);

    // An axis parallel to the plane makes a singular system; unwinding
    // leaves the output untouched.
    const double u[3] = {1.0, 0.0, 0.0}, p[3] = {0.0, 0.0, 1.0}, n[3] = {0.0, 0.0, 1.0};
    double out[3] = {kNaN, kNaN, kNaN};
    qxsys_clear_reports();
    testing::internal::CaptureStdout();
    EXPECT_TRUE(qxsys::first_error([&] { MC_axis_plane_x(u, p, n, 2.0, out); }).has_value());
    expect_vector_raise(testing::internal::GetCapturedStdout(), kSingularLine,
                        "zero determinant in linear system");
    EXPECT_TRUE(std::isnan(out[0]) && std::isnan(out[1]) && std::isnan(out[2]));
}

} // namespace
