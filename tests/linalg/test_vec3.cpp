// The VEC3_ routines: unitizing against Eigen and at the tolerance limit,
// the parallel/perpendicular tests with tol as a length and as a sine, the
// six cases of the component-exchange perpendicular, the signed angle, the
// trihedral, and the 1e19 assertions (reported at level 1, silent at 0).
#include <cmath>
#include <random>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using V = Eigen::Vector3d;
using qxtest::kNaN;

constexpr double kEps = 2.220446049250313e-16;
constexpr double kPi = 3.141592653589793;

class Vec3 : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{7331};
    std::uniform_real_distribution<double> coord{-100.0, 100.0};
    V random_vector() { return {coord(rng), coord(rng), coord(rng)}; }
};

V vec(const double *v) { return {v[0], v[1], v[2]}; }

TEST_F(Vec3, UnitizeAgreesWithEigenAndFailsAtLengthTol)
{
    for (int trial = 0; trial < 500; ++trial) {
        const V v = random_vector();
        double w[3] = {kNaN, kNaN, kNaN}, u[3] = {v.x(), v.y(), v.z()}, length = kNaN;
        ASSERT_EQ(VEC3_unitize(v.data(), 1e-10, &length, w), 1);
        EXPECT_NEAR(length, v.norm(), 2 * kEps * v.norm());
        EXPECT_LT((vec(w) - v.normalized()).norm(), 4 * kEps);
        ASSERT_EQ(VEC3_unitize(u, 1e-10, &length, u), 1); // in place
        EXPECT_EQ(vec(u), vec(w));
    }
    // Null when |V| <= |tol|: zeros and length 0.
    const double v[3] = {3.0, 4.0, 0.0}, zero[3] = {0.0, 0.0, 0.0};
    for (double tol : {5.0, -5.0}) {
        double w[3] = {kNaN, kNaN, kNaN}, length = kNaN;
        EXPECT_EQ(VEC3_unitize(v, tol, &length, w), 0);
        EXPECT_EQ(length, 0.0);
        EXPECT_EQ(vec(w), V::Zero());
    }
    double w[3], length;
    EXPECT_EQ(VEC3_unitize(zero, 0.0, &length, w), 0);
    EXPECT_EQ(VEC3_unitize(v, std::nextafter(5.0, 0.0), &length, w), 1);
    EXPECT_EQ(length, 5.0);
    EXPECT_EQ(vec(w), V((1.0 / 5.0) * 3.0, (1.0 / 5.0) * 4.0, 0.0)); // by the reciprocal
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Vec3, ParallelAndPerpendicularUseTolAsLengthAndAsSine)
{
    // Either vector no longer than tol (inclusive): both hold.
    const double zero[3] = {0, 0, 0}, x[3] = {1, 0, 0}, y[3] = {0, 2, 0}, short_x[3] = {.25, 0, 0};
    EXPECT_EQ(VEC3_is_parallel(x, zero, 0.0), 1);
    EXPECT_EQ(VEC3_is_perpendicular(zero, x, 0.0), 1);
    EXPECT_EQ(VEC3_is_parallel(short_x, y, 0.25), 1);
    EXPECT_EQ(VEC3_is_parallel(short_x, y, 0.24), 0);
    EXPECT_EQ(VEC3_is_perpendicular(short_x, short_x, 0.25), 1);
    EXPECT_EQ(VEC3_is_perpendicular(x, x, 0.5), 0);

    std::uniform_real_distribution<double> tols(0.05, 0.95);
    for (int trial = 0; trial < 500; ++trial) {
        const V a = random_vector(), b = random_vector();
        const double sine = a.cross(b).norm() / (a.norm() * b.norm());
        const double cosine = std::fabs(a.dot(b)) / (a.norm() * b.norm()), tol = tols(rng);
        if (std::fabs(sine - tol) <= 1e-12 || std::fabs(cosine - tol) <= 1e-12) continue;
        EXPECT_EQ(VEC3_is_parallel(a.data(), b.data(), tol), sine <= tol ? 1 : 0);
        EXPECT_EQ(VEC3_is_perpendicular(a.data(), b.data(), tol), cosine <= tol ? 1 : 0);
    }
}

TEST_F(Vec3, AskPerpendicularZeroesTheSmallestComponent)
{
    const struct {
        V v, w;
        int ok = 1;
    } cases[] = {
        {{1, 3, 2}, {0, -2, 3}},  // x smallest, ay >= az
        {{1, 3, 3}, {0, -3, 3}},  // x smallest, ay == az
        {{-1, 2, 3}, {0, 3, -2}}, // x smallest, ay < az
        {{3, 1, 2}, {-2, 0, 3}},  // y smallest, ax >= az
        {{2, 1, 2}, {-2, 0, 2}},  // y smallest, ax == az
        {{2, 1, 3}, {3, 0, -2}},  // y smallest, ax < az
        {{2, 3, 1}, {3, -2, 0}},  // z smallest, ay >= ax
        {{3, 2, 1}, {-2, 3, 0}},  // z smallest, ay < ax
        {{1, 1, 1}, {1, -1, 0}},  // all equal: the z case, ay >= ax
        {{1, 1, 5}, {5, 0, -1}},  // ax == ay < az: the y case, ax < az
        {{3, -2, 3}, {-3, 0, 3}}, // ay < ax == az: the y case, ax >= az
        {{1, 3, 1}, {3, -1, 0}},  // ax == az < ay: the z case
        {{2, 2, 1}, {2, -2, 0}},  // ax == ay > az: the z case
        {{1, 2, 0}, {2, -1, 0}},  // the 2-D routine turns (1, 2) to (-2, 1)
        {{1e-9, 0, 0}, {0, 1e-9, 0}},
        {{1e-11, -1e-11, 0}, {0, 0, 0}, 0}, // null: squared length <= 1e-20
        {{6e-11, 8e-11, 0}, {0, 0, 0}, 0},   // squared length exactly 1e-20: null
        {{6e-11, 8.000000000000002e-11, 0}, {8.000000000000002e-11, -6e-11, 0}},
    };
    for (const auto &c : cases) {
        double w[3] = {kNaN, kNaN, kNaN};
        EXPECT_EQ(VEC3_ask_perpendicular(c.v.data(), w), c.ok) << c.v.transpose();
        EXPECT_EQ(vec(w), c.w) << c.v.transpose();
    }
    const double v2[2] = {1.0, 2.0};
    double w2[2];
    VEC2_ask_perpendicular(v2, w2);
    EXPECT_EQ(w2[0], -2.0);
    EXPECT_EQ(w2[1], 1.0);
}

TEST_F(Vec3, AngleBetweenAboutANormal)
{
    const double x[3] = {1, 0, 0}, y[3] = {0, 1, 0}, z[3] = {0, 0, 1}, mz[3] = {0, 0, -1};
    EXPECT_NEAR(VEC3_angle_between(x, y, z), kPi / 2, 4 * kEps);
    EXPECT_NEAR(VEC3_angle_between(x, y, mz), 3 * kPi / 2, 8 * kEps);
    // The normal chooses the sense only; one in the plane of A and B keeps it.
    EXPECT_NEAR(VEC3_angle_between(x, y, V(5, -7, 0.1).data()), kPi / 2, 4 * kEps);
    EXPECT_NEAR(VEC3_angle_between(x, y, x), kPi / 2, 4 * kEps);
    EXPECT_NEAR(VEC3_angle_between(x, V(-3, 0, 0).data(), z), kPi, 4 * kEps);
    EXPECT_EQ(VEC3_angle_between(x, x, z), 0.0);
    EXPECT_EQ(VEC3_angle_between(x, V(2, 1e-11, 0).data(), mz), 0.0); // 5e-12: 0, not 2 pi
    EXPECT_EQ(VEC3_angle_between(V(1e-10, 0, 0).data(), y, z), 0.0);  // null
    EXPECT_EQ(VEC3_angle_between(y, V(1e-10, 0, 0).data(), z), 0.0);

    for (int trial = 0; trial < 300; ++trial) {
        const V a = random_vector(), b = random_vector(), n = random_vector();
        const V k = a.normalized().cross(b.normalized());
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
        const V v = random_vector(), n = random_vector().normalized(), t = n * v.dot(n);
        double p[3] = {kNaN, kNaN, kNaN}, q[3] = {kNaN, kNaN, kNaN}, tt[3] = {kNaN, kNaN, kNaN};
        VEC3_make_trihedral(v.data(), n.data(), p, q, tt);
        EXPECT_LT((vec(tt) - t).norm() + (vec(p) - (v - t)).norm() +
                      (vec(q) - n.cross(v - t)).norm(),
                  64 * kEps * v.norm());
    }
    // Nothing normalised: a long normal scales T by its square.
    const double v[3] = {1.0, 2.0, 3.0}, n[3] = {0.0, 0.0, 2.0};
    double p[3], q[3], t[3];
    VEC3_make_trihedral(v, n, p, q, t);
    EXPECT_EQ(vec(t), V(0, 0, 12));
    EXPECT_EQ(vec(p), V(1, 2, -9));
    EXPECT_EQ(vec(q), V(-4, 2, 0));
}

TEST_F(Vec3, AssertionsOnHugeComponentsAtLevelOneOnly)
{
    const double big = 1e19, under = std::nextafter(1e19, 0.0);
    const double huge[3] = {0.0, -big, 0.0}, fine[3] = {under, -under, under};
    const double x[3] = {1.0, 0.0, 0.0};
    double w[3], length, p[3], q[3], t[3];
    for (int level : {0, -1, 1}) {
        MACH__checking_level = level;
        const long n = level > 0 ? 1 : 0;
        qxsys_clear_reports();
        EXPECT_EQ(VEC3_unitize(huge, 1.0, &length, w), 1); // carries on after the report
        EXPECT_EQ(vec(w), V(0, -1, 0));
        VEC3_unitize(V(0, 0, kNaN).data(), 1.0, &length, w);
        for (int i = 0; i < 3; ++i) VEC3_unitize((big * V::Unit(i)).eval().data(), 1.0, &length, w);
        EXPECT_EQ(VEC3_is_parallel(huge, huge, 1e-10), 1); // two reports
        VEC3_is_parallel(x, huge, 1e-10);
        EXPECT_EQ(VEC3_is_perpendicular(huge, x, 1e-10), 1);
        EXPECT_EQ(VEC3_ask_perpendicular(huge, w), 1);
        VEC3_angle_between(huge, x, x); // VEC3_unitize's assertion
        VEC3_unitize(fine, 1.0, &length, w);
        VEC3_is_parallel(fine, fine, 0.1);
        VEC3_is_perpendicular(fine, fine, 0.1);
        VEC3_ask_perpendicular(fine, w);
        VEC3_make_trihedral(huge, huge, p, q, t); // never asserted
        ASSERT_EQ(qxsys_report_count(), 11 * n);
        for (int i = 0; i < 11 * n; ++i) {
            const qxsys_report &r = *qxsys_report_back(i);
            EXPECT_EQ(r.kind, QXSYS_INTERNAL);
            EXPECT_STREQ(r.file, "vec3");
            EXPECT_STREQ(r.text, "Assertion failed: condition");
            EXPECT_GT(r.line, 0);
        }
    }
    // A host that unwinds stops the call at the assertion.
    double out[3] = {kNaN, kNaN, kNaN};
    const auto err = qxsys::first_error([&] { VEC3_unitize(huge, 1.0, &length, out); });
    ASSERT_TRUE(err.has_value());
    EXPECT_STREQ(err->file, "vec3");
    EXPECT_TRUE(std::isnan(out[0]));
}

} // namespace
