// The VEC3_ routines: unitizing against Eigen and at the tolerance limit,
// the parallel/perpendicular tests with tol as a length and as a sine, the
// six cases of the component-exchange perpendicular, the signed angle, the
// trihedral, and the 1e19 assertions (reported at level 1, silent at 0).
#include <cmath>
#include <cstring>
#include <random>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using Eigen::Vector3d;
using qxtest::kNaN;

constexpr double kEps = 2.220446049250313e-16;
constexpr double kPi = 3.141592653589793;

class Vec3 : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{7331};
    std::uniform_real_distribution<double> coord{-100.0, 100.0};
    Vector3d random_vector() { return {coord(rng), coord(rng), coord(rng)}; }
};

Vector3d vec(const double *v) { return {v[0], v[1], v[2]}; }

// Every report since the last clear is a "condition" assertion from vec3.
void expect_assertions(long count)
{
    ASSERT_EQ(qxsys_report_count(), count);
    for (int i = 0; i < count; ++i) {
        const qxsys_report &r = *qxsys_report_back(i);
        EXPECT_EQ(r.kind, QXSYS_INTERNAL);
        EXPECT_STREQ(r.file, "vec3");
        EXPECT_STREQ(r.text, "Assertion failed: condition");
        EXPECT_GT(r.line, 0);
    }
}

TEST_F(Vec3, UnitizeAgreesWithEigen)
{
    for (int trial = 0; trial < 500; ++trial) {
        const Vector3d v = random_vector();
        double w[3] = {kNaN, kNaN, kNaN}, length = kNaN;
        ASSERT_EQ(VEC3_unitize(v.data(), 1e-10, &length, w), 1);
        EXPECT_NEAR(length, v.norm(), 2 * kEps * v.norm());
        EXPECT_LT((vec(w) - v.normalized()).norm(), 4 * kEps);
        // In place.
        double u[3] = {v.x(), v.y(), v.z()};
        ASSERT_EQ(VEC3_unitize(u, 1e-10, &length, u), 1);
        EXPECT_EQ(vec(u), vec(w));
    }
}

TEST_F(Vec3, UnitizeFailsAtLengthExactlyTol)
{
    const double v[3] = {3.0, 4.0, 0.0};
    double w[3] = {kNaN, kNaN, kNaN}, length = kNaN;
    EXPECT_EQ(VEC3_unitize(v, 5.0, &length, w), 0);
    EXPECT_EQ(length, 0.0);
    EXPECT_EQ(vec(w), Vector3d::Zero());
    // The tolerance is squared: its sign does not matter.
    w[0] = w[1] = w[2] = length = kNaN;
    EXPECT_EQ(VEC3_unitize(v, -5.0, &length, w), 0);
    EXPECT_EQ(vec(w), Vector3d::Zero());
    EXPECT_EQ(length, 0.0);

    EXPECT_EQ(VEC3_unitize(v, std::nextafter(5.0, 0.0), &length, w), 1);
    EXPECT_EQ(length, 5.0);
    // Multiplied by the reciprocal of the length, not divided by it.
    EXPECT_EQ(vec(w), Vector3d((1.0 / 5.0) * 3.0, (1.0 / 5.0) * 4.0, 0.0));
    const double zero[3] = {0.0, 0.0, 0.0};
    EXPECT_EQ(VEC3_unitize(zero, 0.0, &length, w), 0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Vec3, ParallelAndPerpendicularUseTolAsLengthAndAsSine)
{
    const double zero[3] = {0.0, 0.0, 0.0}, x[3] = {1.0, 0.0, 0.0}, y[3] = {0.0, 2.0, 0.0};
    EXPECT_EQ(VEC3_is_parallel(zero, x, 1e-10), 1);
    EXPECT_EQ(VEC3_is_parallel(x, zero, 0.0), 1);
    EXPECT_EQ(VEC3_is_perpendicular(zero, x, 1e-10), 1);
    EXPECT_EQ(VEC3_is_perpendicular(x, zero, 0.0), 1);
    EXPECT_EQ(VEC3_is_parallel(x, y, 1e-3), 0);
    EXPECT_EQ(VEC3_is_perpendicular(x, y, 0.0), 1);
    EXPECT_EQ(VEC3_is_perpendicular(x, x, 0.5), 0);
    EXPECT_EQ(VEC3_is_parallel(x, x, 0.0), 1);

    // A short vector of length exactly tol counts as null: parallel to y.
    const double short_x[3] = {0.25, 0.0, 0.0};
    EXPECT_EQ(VEC3_is_parallel(short_x, y, 0.25), 1);
    EXPECT_EQ(VEC3_is_parallel(short_x, y, 0.24), 0);
    EXPECT_EQ(VEC3_is_perpendicular(short_x, short_x, 0.25), 1);

    std::mt19937_64 gen(99);
    std::uniform_real_distribution<double> angle(0.0, kPi);
    for (int trial = 0; trial < 500; ++trial) {
        const Vector3d a = random_vector();
        const Vector3d b = random_vector();
        const double sine = a.cross(b).norm() / (a.norm() * b.norm());
        const double cosine = std::fabs(a.dot(b)) / (a.norm() * b.norm());
        const double tol = 0.05 + 0.9 * angle(gen) / kPi;
        // Away from the limit by more than rounding.
        if (std::fabs(sine - tol) > 1e-12) {
            EXPECT_EQ(VEC3_is_parallel(a.data(), b.data(), tol), sine <= tol ? 1 : 0);
        }
        if (std::fabs(cosine - tol) > 1e-12) {
            EXPECT_EQ(VEC3_is_perpendicular(a.data(), b.data(), tol), cosine <= tol ? 1 : 0);
        }
    }
}

TEST_F(Vec3, AskPerpendicularZeroesTheSmallestComponent)
{
    struct Case {
        Vector3d v, w;
    } cases[] = {
        {{1.0, 3.0, 2.0}, {0.0, -2.0, 3.0}},  // x smallest, ay >= az
        {{1.0, 3.0, 3.0}, {0.0, -3.0, 3.0}},  // x smallest, ay == az
        {{-1.0, 2.0, 3.0}, {0.0, 3.0, -2.0}}, // x smallest, ay < az
        {{3.0, 1.0, 2.0}, {-2.0, 0.0, 3.0}},  // y smallest, ax >= az
        {{2.0, 1.0, 2.0}, {-2.0, 0.0, 2.0}},  // y smallest, ax == az
        {{2.0, 1.0, 3.0}, {3.0, 0.0, -2.0}},  // y smallest, ax < az
        {{2.0, 3.0, 1.0}, {3.0, -2.0, 0.0}},  // z smallest, ay >= ax
        {{1.0, 1.0, 1.0}, {1.0, -1.0, 0.0}},  // all equal: last case, ay >= ax
        {{1.0, 1.0, 5.0}, {5.0, 0.0, -1.0}},  // ax == ay < az: the y case, ax < az
        {{3.0, -2.0, 3.0}, {-3.0, 0.0, 3.0}}, // ay < ax == az: the y case, ax >= az
        {{3.0, 2.0, 1.0}, {-2.0, 3.0, 0.0}},  // z smallest, ay < ax
        {{1.0, 3.0, 1.0}, {3.0, -1.0, 0.0}},  // ax == az < ay: the last case
        {{2.0, 2.0, 1.0}, {2.0, -2.0, 0.0}},  // ax == ay > az: the last case
    };
    for (const Case &c : cases) {
        double w[3] = {kNaN, kNaN, kNaN};
        EXPECT_EQ(VEC3_ask_perpendicular(c.v.data(), w), 1) << c.v.transpose();
        EXPECT_EQ(vec(w), c.w) << c.v.transpose();
        EXPECT_EQ(vec(w).dot(c.v), 0.0);
    }
    // The 2-D routine turns the other way on the tie.
    const double v2[2] = {1.0, 1.0};
    double w2[2] = {kNaN, kNaN};
    EXPECT_EQ(VEC2_ask_perpendicular(v2, w2), 1);
    EXPECT_EQ(w2[0], 1.0);
    EXPECT_EQ(w2[1], -1.0);
    const double v3[3] = {1.0, 2.0, 0.0};
    double w3[3];
    const double v2b[2] = {1.0, 2.0};
    VEC3_ask_perpendicular(v3, w3);
    VEC2_ask_perpendicular(v2b, w2);
    EXPECT_EQ(vec(w3), Vector3d(2.0, -1.0, 0.0));
    EXPECT_EQ(w2[0], -2.0);
    EXPECT_EQ(w2[1], 1.0);

    // Random: exactly perpendicular, length of the two kept components.
    for (int trial = 0; trial < 200; ++trial) {
        const Vector3d v = random_vector();
        double w[3];
        ASSERT_EQ(VEC3_ask_perpendicular(v.data(), w), 1);
        EXPECT_EQ(vec(w).dot(v), 0.0);
        Eigen::Index smallest;
        v.cwiseAbs().minCoeff(&smallest);
        EXPECT_EQ(w[smallest], 0.0);
        EXPECT_NEAR(vec(w).squaredNorm(), v.squaredNorm() - v(smallest) * v(smallest),
                    8 * kEps * v.squaredNorm());
    }

    // Null below 1e-20 squared length (inclusive), whatever the direction.
    const double tiny[3] = {1e-11, -1e-11, 0.0}, small[3] = {1e-9, 0.0, 0.0};
    double w[3] = {kNaN, kNaN, kNaN};
    EXPECT_EQ(VEC3_ask_perpendicular(tiny, w), 0);
    EXPECT_EQ(vec(w), Vector3d::Zero());
    EXPECT_EQ(VEC3_ask_perpendicular(small, w), 1);
    EXPECT_EQ(vec(w), Vector3d(0.0, 1e-9, 0.0)); // y, z tie at 0: the last case
}

TEST_F(Vec3, AngleBetweenAboutANormal)
{
    const double x[3] = {1.0, 0.0, 0.0}, y[3] = {0.0, 1.0, 0.0};
    const double z[3] = {0.0, 0.0, 1.0}, mz[3] = {0.0, 0.0, -1.0};
    EXPECT_NEAR(VEC3_angle_between(x, y, z), kPi / 2, 4 * kEps);
    EXPECT_NEAR(VEC3_angle_between(x, y, mz), 3 * kPi / 2, 8 * kEps);
    // The normal chooses the sense only: long and tilted normals do too.
    const double tilted[3] = {5.0, -7.0, 0.1};
    EXPECT_NEAR(VEC3_angle_between(x, y, tilted), kPi / 2, 4 * kEps);
    // A normal in the plane of A and B does not turn the sense.
    EXPECT_NEAR(VEC3_angle_between(x, y, x), kPi / 2, 4 * kEps);
    const double mx[3] = {-3.0, 0.0, 0.0};
    EXPECT_NEAR(VEC3_angle_between(x, mx, z), kPi, 4 * kEps);
    EXPECT_EQ(VEC3_angle_between(x, x, z), 0.0);
    const double x2[3] = {2.0, 1e-11, 0.0}; // 5e-12 rad: snapped to 0, not 2 pi
    EXPECT_EQ(VEC3_angle_between(x, x2, mz), 0.0);
    const double null[3] = {1e-10, 0.0, 0.0};
    EXPECT_EQ(VEC3_angle_between(null, y, z), 0.0);
    EXPECT_EQ(VEC3_angle_between(y, null, z), 0.0);

    for (int trial = 0; trial < 300; ++trial) {
        const Vector3d a = random_vector(), b = random_vector(), n = random_vector();
        const Vector3d k = a.normalized().cross(b.normalized());
        double expect =
            std::atan2(k.dot(n) < 0 ? -k.norm() : k.norm(), a.normalized().dot(b.normalized()));
        if (expect < 0) expect += 2 * kPi;
        const double got = VEC3_angle_between(a.data(), b.data(), n.data());
        EXPECT_GE(got, 0.0);
        EXPECT_LT(got, 2 * kPi);
        EXPECT_NEAR(got, expect, 1e-13);
    }
}

TEST_F(Vec3, TrihedralSplitsAlongTheNormal)
{
    for (int trial = 0; trial < 200; ++trial) {
        const Vector3d v = random_vector(), n = random_vector().normalized();
        double p[3] = {kNaN, kNaN, kNaN}, q[3] = {kNaN, kNaN, kNaN}, t[3] = {kNaN, kNaN, kNaN};
        VEC3_make_trihedral(v.data(), n.data(), p, q, t);
        const Vector3d tt = n * v.dot(n), pp = v - tt, qq = n.cross(pp);
        const double tol = 64 * kEps * v.norm();
        EXPECT_LT((vec(t) - tt).norm(), tol);
        EXPECT_LT((vec(p) - pp).norm(), tol);
        EXPECT_LT((vec(q) - qq).norm(), tol);
        EXPECT_NEAR(vec(p).dot(n), 0.0, tol);
        EXPECT_NEAR(vec(q).norm(), vec(p).norm(), tol);
    }
    // Nothing normalised: a long normal scales T by its square.
    const double v[3] = {1.0, 2.0, 3.0}, n[3] = {0.0, 0.0, 2.0};
    double p[3], q[3], t[3];
    VEC3_make_trihedral(v, n, p, q, t);
    EXPECT_EQ(vec(t), Vector3d(0.0, 0.0, 12.0));
    EXPECT_EQ(vec(p), Vector3d(1.0, 2.0, -9.0));
    EXPECT_EQ(vec(q), Vector3d(-4.0, 2.0, 0.0));
}

TEST_F(Vec3, AssertionsOnHugeComponentsAtLevelOneOnly)
{
    const double big = 1e19, under = std::nextafter(1e19, 0.0);
    const double huge[3] = {0.0, -big, 0.0}, fine[3] = {under, -under, under};
    const double nan[3] = {0.0, 0.0, kNaN}, x[3] = {1.0, 0.0, 0.0};
    double w[3], length;

    for (int level : {0, -1, 1}) {
        MACH__checking_level = level;
        const long n = level > 0 ? 1 : 0;
        qxsys_clear_reports();
        // The routines carry on after the report.
        EXPECT_EQ(VEC3_unitize(huge, 1.0, &length, w), 1);
        EXPECT_EQ(vec(w), Vector3d(0.0, -1.0, 0.0));
        expect_assertions(n);
        qxsys_clear_reports();
        VEC3_unitize(nan, 1.0, &length, w);
        expect_assertions(n);
        for (int i = 0; i < 3; ++i) { // each component is tested
            double at[3] = {0.0, 0.0, 0.0};
            at[i] = big;
            qxsys_clear_reports();
            VEC3_unitize(at, 1.0, &length, w);
            expect_assertions(n);
        }
        qxsys_clear_reports();
        EXPECT_EQ(VEC3_is_parallel(huge, huge, 1e-10), 1);
        expect_assertions(2 * n);
        qxsys_clear_reports();
        VEC3_is_parallel(x, huge, 1e-10);
        expect_assertions(n);
        qxsys_clear_reports();
        EXPECT_EQ(VEC3_is_perpendicular(huge, x, 1e-10), 1);
        expect_assertions(n);
        qxsys_clear_reports();
        EXPECT_EQ(VEC3_ask_perpendicular(huge, w), 1);
        expect_assertions(n);
        // Through angle_between, whose unitizing is VEC3_unitize's.
        qxsys_clear_reports();
        VEC3_angle_between(huge, x, x);
        expect_assertions(n);

        qxsys_clear_reports();
        VEC3_unitize(fine, 1.0, &length, w);
        VEC3_is_parallel(fine, fine, 0.1);
        VEC3_is_perpendicular(fine, fine, 0.1);
        VEC3_ask_perpendicular(fine, w);
        double p[3], q[3], t[3];
        VEC3_make_trihedral(huge, huge, p, q, t); // never asserted
        EXPECT_EQ(qxsys_report_count(), 0);
    }

    // A host that unwinds stops the call at the assertion.
    MACH__checking_level = 1;
    double out[3] = {kNaN, kNaN, kNaN};
    const auto err = qxsys::first_error([&] { VEC3_unitize(huge, 1.0, &length, out); });
    ASSERT_TRUE(err.has_value());
    EXPECT_STREQ(err->file, "vec3");
    EXPECT_TRUE(std::isnan(out[0]));
}

} // namespace
