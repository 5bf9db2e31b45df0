// Orientation matrices: construction against independent frames and
// Eigen's rotations, roll/pitch/yaw round trips, the ortho-normality test
// and its uses (equality, products, repair), and the assertions made with
// checking on.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <random>

#include <Eigen/Geometry>

#include "support/qx_test.h"

namespace
{

using M9 = std::array<double, 9>;
using Mat = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using V = Eigen::Vector3d;
using qxtest::kNaN;

constexpr double kPi = 3.141592653589793;
const M9 kIdentity{1, 0, 0, 0, 1, 0, 0, 0, 1};
const M9 kNaNs{kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};

class Mtx3 : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{20240611};
    double uniform(double lo, double hi) { return std::uniform_real_distribution<>(lo, hi)(rng); }
    V random_vector() { return {uniform(-1, 1), uniform(-1, 1), uniform(-1, 1)}; }
    V random_direction() // length 0.007 .. 150
    {
        V v;
        do v = random_vector();
        while (v.norm() < 0.1);
        return v * std::exp(uniform(-5, 5));
    }
    M9 random_rotation()
    {
        M9 m;
        Mat::Map(m.data()) = Eigen::AngleAxisd(uniform(-kPi, kPi), random_direction().normalized())
                                 .toRotationMatrix();
        return m;
    }
};

Mat mat(const M9 &m) { return Mat::Map(m.data()); }
V row(const M9 &m, int i) { return V::Map(m.data() + 3 * i); }
double max_diff(const Mat &a, const Mat &b) { return (a - b).cwiseAbs().maxCoeff(); }
bool same_bits(const M9 &a, const M9 &b) { return std::memcmp(a.data(), b.data(), 72) == 0; }
bool all_nan(const M9 &m)
{
    return std::all_of(m.begin(), m.end(), [](double e) { return e != e; });
}

// How much the repair through the angles can magnify a perturbation of the
// rotation r: the roll and yaw pairs are divided by cos(pitch), and of each
// cosine/sine pair the smaller member is re-derived from the larger.
double angle_route_gain(const M9 &r)
{
    const double cp = std::hypot(r[0], r[3]);
    double smallest = std::min(cp, std::fabs(r[6]));
    for (double e : {r[8], r[7], r[0], r[3]}) smallest = std::min(smallest, std::fabs(e) / cp);
    return 1 / (cp * smallest);
}

// The frame with rows X, Z x X and Z, from unit X and Z, by Eigen.
Mat frame(const V &x, const V &z)
{
    Mat m;
    m << x.transpose(), z.cross(x).transpose(), z.transpose();
    return m;
}

// Every builder asserts ortho-normality at checking level 1: no report
// means the frames are ortho-normal within 1e-14.
TEST_F(Mtx3, BuildersGiveRightHandedFramesKeepingTheirAxis)
{
    MACH__checking_level = 1;
    for (int k = 0; k < 200; ++k) {
        const V a = random_direction(),
                b = a.cross(random_vector()).normalized() * uniform(0.01, 100);
        const V ua = a.normalized(), ub = b.normalized();
        M9 m = kNaNs, x_y = kNaNs;
        // MTX3_init: X kept, Z along X x Y; inputs may be rows of M.
        ASSERT_EQ(MTX3_init(a.data(), b.data(), x_y.data()), 1);
        EXPECT_LE(max_diff(mat(x_y), frame(ua, ua.cross(ub).normalized())), 1e-15);
        Mat::Map(m.data()) << a.transpose(), b.transpose(), 0, 0, 0;
        ASSERT_EQ(MTX3_init(m.data(), m.data() + 3, m.data()), 1);
        EXPECT_TRUE(same_bits(m, x_y));
        // MTX3_init_x_y_z checks Z, then discards it: with a left-handed Z
        // the matrix is MTX3_init's.
        ASSERT_EQ(MTX3_init_x_y_z(a.data(), b.data(), V(-a.cross(b)).data(), m.data()), 1);
        EXPECT_TRUE(same_bits(m, x_y));
        // MTX3_init_y_z: Z kept, X along Y x Z.
        ASSERT_EQ(MTX3_init_y_z(b.data(), a.data(), m.data()), 1);
        EXPECT_LE(max_diff(mat(m), frame(ub.cross(ua).normalized(), ua)), 1e-15);
        // MTX3_init_z: X in the XZ plane unless Z is within about 26
        // degrees of Y. MTX3_init_x: X kept.
        ASSERT_EQ(MTX3_init_z(a.data(), m.data()), 1);
        EXPECT_LE((row(m, 2) - ua).norm(), 1e-15);
        EXPECT_EQ(m[std::fabs(m[7]) <= 0.9 ? 1 : 0], 0.0);
        EXPECT_NEAR(mat(m).determinant(), 1.0, 1e-15);
        ASSERT_EQ(MTX3_init_x(a.data(), m.data()), 1);
        EXPECT_LE((row(m, 0) - ua).norm(), 1e-15);
        EXPECT_NEAR(mat(m).determinant(), 1.0, 1e-15);
        // MTX3_rot_about_axis is Eigen's AngleAxis.
        const double angle = uniform(-10, 10);
        MTX3_rot_about_axis(angle, a.data(), m.data());
        EXPECT_LE(max_diff(mat(m), Mat(Eigen::AngleAxisd(angle, ua))), 1e-15);
    }
    M9 m = kNaNs;
    ASSERT_EQ(MTX3_init_z(V(0, 1, 0).data(), m.data()), 1); // |Zy| > 0.9: the second X
    EXPECT_EQ(mat(m), mat(M9{0, 0, -1, -1, 0, 0, 0, 1, 0}));
    EXPECT_EQ(MTX3_init(V(1, 0, 0).data(), V(5e-11, 1, 0).data(), m.data()), 1);
    EXPECT_EQ(m[3], 0.0);                                      // Y re-derived from Z x X
    MTX3_rot_about_axis(1.0, V(1e-11, 0, 0).data(), m.data()); // null axis
    EXPECT_TRUE(same_bits(m, kIdentity));

    // Not perpendicular within 1e-10 on the cosine, or of length <= 1e-10:
    // 0, M unwritten.
    const double x[3] = {1, 0, 0}, y[3] = {0, 1, 0}, skew[3] = {0, 1e-9, 1},
                 tiny[3] = {0, 0, 1e-10};
    m = kNaNs;
    EXPECT_EQ(MTX3_init(x, V(2e-10, 1, 0).data(), m.data()), 0);
    EXPECT_EQ(MTX3_init(tiny, y, m.data()), 0);
    EXPECT_EQ(MTX3_init(y, tiny, m.data()), 0);
    EXPECT_EQ(MTX3_init_y_z(y, skew, m.data()), 0);
    EXPECT_EQ(MTX3_init_x_y_z(x, y, skew, m.data()), 0); // Z against Y
    EXPECT_EQ(MTX3_init_x_y_z(skew, x, y, m.data()), 0); // Z against X
    EXPECT_EQ(MTX3_init_x_y_z(x, y, tiny, m.data()), 0);
    EXPECT_EQ(MTX3_init_z(tiny, m.data()), 0);
    EXPECT_EQ(MTX3_init_x(tiny, m.data()), 0);
    EXPECT_TRUE(all_nan(m));
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Mtx3, RollPitchYawRoundTrips)
{
    const auto rot = [](double a, const V &axis) { return Mat(Eigen::AngleAxisd(a, axis)); };
    double r = kNaN, p = kNaN, y = kNaN;
    for (int k = 0; k < 500; ++k) {
        const double roll = uniform(-3.1, 3.1), pitch = uniform(-1.5, 1.5),
                     yaw = uniform(-3.1, 3.1);
        M9 m;
        Mat::Map(m.data()) = rot(yaw, V::UnitZ()) * rot(pitch, V::UnitY()) * rot(roll, V::UnitX());
        MTX3_ask_roll_pitch_yaw(m.data(), &r, &p, &y);
        EXPECT_LT(V(r - roll, p - pitch, y - yaw).cwiseAbs().maxCoeff(), 1e-13) << k;
    }
    MTX3_ask_roll_pitch_yaw(kIdentity.data(), &r, &p, &y);
    EXPECT_EQ(V(r, p, y), V::Zero());

    // At the pole yaw is 0 and the turn about the vertical is roll.
    const double s = std::sin(0.3), c = std::cos(0.3);
    const M9 down{0, s, c, 0, c, -s, -1, 0, 0}, up{0, -s, -c, 0, c, s, 1, 0, 0};
    MTX3_ask_roll_pitch_yaw(down.data(), &r, &p, &y);
    EXPECT_EQ(V(p, y, 0), V(kPi / 2, 0, 0));
    EXPECT_NEAR(r, 0.3, 1e-15);
    MTX3_ask_roll_pitch_yaw(up.data(), &r, &p, &y);
    EXPECT_EQ(V(p, y, 0), V(-kPi / 2, 0, 0));
    EXPECT_NEAR(r, 0.3, 1e-15);

    // Pairs within 1e-10 of an axis are snapped: exactly 0 and -pi/2.
    MTX3_ask_roll_pitch_yaw(M9{1, 1e-11, 0, -1e-11, 1, 0, 0, 0, 1}.data(), &r, &p, &y);
    EXPECT_EQ(y, 0.0);
    MTX3_ask_roll_pitch_yaw(M9{1e-11, 1, 0, -1, 1e-11, 0, 0, 0, 1}.data(), &r, &p, &y);
    EXPECT_EQ(y, -kPi / 2);
}

TEST_F(Mtx3, OrthoNormalityIsAbsoluteAtOneEMinus14AndPartOfEquality)
{
    const double past = std::nextafter(1e-14, 1.0);
    EXPECT_EQ(MTX3_is_ortho_normal(M9{1, 0, 0, 1e-14, 1, 0, 0, 0, 1}.data()), 1);
    EXPECT_EQ(MTX3_is_ortho_normal(M9{1, 0, 0, past, 1, 0, 0, 0, 1}.data()), 0);
    EXPECT_EQ(MTX3_is_ortho_normal(M9{1, 0, 0, 0, 1, 0, 0, past, 1}.data()), 0);
    EXPECT_EQ(MTX3_is_ortho_normal(M9{1, 0, 0, 0, 1, 0, past, 0, 1}.data()), 0);
    EXPECT_EQ(MTX3_is_ortho_normal(M9{1, 0, 0, 0, 1, 0, 0, 0, -1}.data()), 1); // a reflection
    for (int i = 0; i < 9; i += 4) {
        M9 m = kIdentity;
        m[i] = 1 + 4e-15; // squared length off by 8e-15
        EXPECT_EQ(MTX3_is_ortho_normal(m.data()), 1) << i;
        m[i] = 1 + 6e-15; // by 1.2e-14
        EXPECT_EQ(MTX3_is_ortho_normal(m.data()), 0) << i;
        m[i] = kNaN;
        EXPECT_EQ(MTX3_is_ortho_normal(m.data()), 0) << i;
    }

    // Equal: every element within tol (inclusive), and both or neither
    // ortho-normal.
    const M9 loose{2, 1, 0, 0, 3, 0, 1, 1, 1};
    M9 other = loose;
    other[5] = 0.25;
    EXPECT_EQ(MTX3_is_equal(loose.data(), other.data(), 0.25), 1);
    EXPECT_EQ(MTX3_is_equal(loose.data(), other.data(), std::nextafter(0.25, 0.0)), 0);
    other[5] = kNaN;
    EXPECT_EQ(MTX3_is_equal(loose.data(), other.data(), 1e300), 0);
    const M9 r = random_rotation();
    M9 nudged = r;
    nudged[4] += 1e-12; // within tol, but no longer ortho-normal
    EXPECT_EQ(MTX3_is_equal(r.data(), r.data(), 0.0), 1);
    EXPECT_EQ(MTX3_is_equal(r.data(), nudged.data(), 1e-10), 0);
    M9 turned;
    MTX3_rot_about_axis(1e-12, V(0, 0, 1).data(), turned.data());
    EXPECT_EQ(MTX3_is_identity(turned.data(), 1e-10), 1);
    EXPECT_EQ(MTX3_is_identity(turned.data(), 1e-13), 0);
}

TEST_F(Mtx3, ProductsComposeAxesAndFlagRepairs)
{
    MACH__checking_level = 1;
    for (int k = 0; k < 200; ++k) {
        // Not ortho-normal: B.A (B.A^T), term by term in k order, and 0.
        M9 a, b, p = kNaNs, pt = kNaNs, expected, expected_t;
        for (int i = 0; i < 9; ++i) a[i] = uniform(-2, 2), b[i] = uniform(-2, 2);
        EXPECT_EQ(MTX3_multiply(a.data(), b.data(), p.data()), 0);
        EXPECT_EQ(MTX3_multiply_t(a.data(), b.data(), pt.data()), 0);
        for (int i = 0; i < 9; i += 3)
            for (int j = 0; j < 3; ++j) {
                expected[i + j] = b[i] * a[j] + b[i + 1] * a[3 + j] + b[i + 2] * a[6 + j];
                expected_t[i + j] =
                    b[i] * a[3 * j] + b[i + 1] * a[3 * j + 1] + b[i + 2] * a[3 * j + 2];
            }
        EXPECT_TRUE(same_bits(p, expected));
        EXPECT_TRUE(same_bits(pt, expected_t));
        // P may be A or B.
        M9 into_a = a, into_b = b;
        MTX3_multiply(into_a.data(), b.data(), into_a.data());
        MTX3_multiply_t(a.data(), into_b.data(), into_b.data());
        EXPECT_TRUE(same_bits(into_a, expected));
        EXPECT_TRUE(same_bits(into_b, expected_t));
        // Ortho-normal: the product, repaired when it must be.
        const M9 ra = random_rotation(), rb = random_rotation();
        if (!MTX3_is_ortho_normal(ra.data()) || !MTX3_is_ortho_normal(rb.data())) continue;
        MTX3_multiply(ra.data(), rb.data(), p.data());
        EXPECT_EQ(MTX3_is_ortho_normal(p.data()), 1);
        EXPECT_LE(max_diff(mat(p), mat(rb) * mat(ra)), 1e-14);
    }
    // An ortho-normal product: 0. Inputs that pass but whose product does
    // not: repaired, 1.
    const M9 r = random_rotation(), stretched{1 + 4.9e-15, 0, 0, 0, 1, 0, 0, 0, 1};
    M9 p;
    ASSERT_EQ(MTX3_is_ortho_normal(r.data()), 1);
    EXPECT_EQ(MTX3_multiply(kIdentity.data(), r.data(), p.data()), 0);
    EXPECT_TRUE(same_bits(p, r));
    ASSERT_EQ(MTX3_is_ortho_normal(stretched.data()), 1);
    EXPECT_EQ(MTX3_multiply(stretched.data(), stretched.data(), p.data()), 1);
    EXPECT_EQ(mat(p), mat(kIdentity));
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Mtx3, OrthoNormalizeRepairsAndAlwaysReturns)
{
    MACH__checking_level = 1;
    for (double eps : {1e-13, 1e-10, 1e-8, 1e-6, 1e-4}) {
        for (int k = 0; k < 200; ++k) {
            const M9 r = random_rotation();
            M9 m = r;
            for (double &e : m) e += uniform(-eps, eps);
            const M9 input = m;
            const int expected = MTX3_is_ortho_normal(input.data()) ? 0 : 1;
            ASSERT_EQ(MTX3_ortho_normalize(m.data()), expected) << eps << " " << k;
            EXPECT_EQ(MTX3_is_ortho_normal(m.data()), 1);
            EXPECT_LE(max_diff(mat(m) * mat(m).transpose(), Mat::Identity()), 1.5e-14);
            EXPECT_NEAR(mat(m).determinant(), 1.0, 1.5e-14);
            EXPECT_LE(max_diff(mat(m), mat(input)), 4 * eps * angle_route_gain(r));
        }
    }
    // Already ortho-normal (a reflection too): 0, untouched.
    M9 m{1, 0, 0, 0, 1, 0, 0, 0, -1};
    EXPECT_EQ(MTX3_ortho_normalize(m.data()), 0);
    EXPECT_TRUE(same_bits(m, M9{1, 0, 0, 0, 1, 0, 0, 0, -1}));
    // X and Z perpendicular: Z keeps its direction, X is re-derived, row 1
    // is not read.
    m = M9{2, 0, 0, kNaN, kNaN, kNaN, 0, 0, 3};
    EXPECT_EQ(MTX3_ortho_normalize(m.data()), 1);
    EXPECT_EQ(mat(m), mat(kIdentity));
    // Through the angles, the first pass snaps to the axes: exactly the identity.
    m = M9{1, 1e-12, 0, 0, 1, 0, 3e-12, 0, 1};
    EXPECT_EQ(MTX3_ortho_normalize(m.data()), 1);
    EXPECT_EQ(mat(m), mat(kIdentity));
    // Any finite matrix with rows that are not tiny is repaired: general,
    // nearly singular (rank one plus noise) and with zeros.
    for (int k = 0; k < 2000; ++k) {
        for (double &e : m) e = uniform(-1, 1) * std::exp(uniform(-8, 8));
        if (k % 4 == 1)
            for (int i = 0; i < 9; ++i) m[i] = m[i % 3] * (1 + i / 3) + uniform(-1e-9, 1e-9);
        if (k % 4 == 2) m[3 * (k % 3) + k % 7 % 3] = 0.0;
        if (row(m, 0).norm() < 1e-4 || row(m, 2).norm() < 1e-4) continue;
        EXPECT_GE(MTX3_ortho_normalize(m.data()), 0);
        EXPECT_EQ(MTX3_is_ortho_normal(m.data()), 1) << k;
    }
    // Rows too short to give a cross product, yet passing the test for the
    // first route: nothing a pass can change, so it stops with M as it was.
    const M9 tiny{1e-12, 0, 0, 0.5, 0.5, 0, 0, 0, 1e-12};
    m = tiny;
    EXPECT_EQ(MTX3_ortho_normalize(m.data()), 1);
    EXPECT_TRUE(same_bits(m, tiny));
    EXPECT_EQ(qxsys_report_count(), 0);
    // NaN and infinities anywhere: it returns (silently at level 0).
    MACH__checking_level = 0;
    const double inf = std::numeric_limits<double>::infinity();
    for (int k = 0; k < 500; ++k) {
        for (double &e : m) e = uniform(-1, 1);
        m[k % 9] = k % 2 ? kNaN : inf;
        if (k % 3 == 0) m[(k + 4) % 9] = -inf;
        if (k % 5 == 0) m.fill(k % 2 ? kNaN : inf);
        EXPECT_EQ(MTX3_ortho_normalize(m.data()), 1);
    }
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Mtx3, FailedResultsAreAssertedOnlyWithCheckingOn)
{
    const double axis[3] = {0, 0, 1}, x[3] = {kNaN, 0, 0}, y[3] = {0, 1, 0};
    M9 m;
    for (int level : {0, 1}) {
        MACH__checking_level = level;
        qxsys_clear_reports();
        const auto expect_asserted = [level](long count) {
            ASSERT_EQ(qxsys_report_count(), count);
            if (level == 0) return;
            EXPECT_EQ(last_report().kind, QXSYS_INTERNAL);
            EXPECT_EQ(last_report().code, 0);
            EXPECT_STREQ(last_report().file, "mtx3");
            EXPECT_STREQ(last_report().text, "Assertion failed: condition");
        };
        MTX3_rot_about_axis(kNaN, axis, m.data());
        expect_asserted(level);
        // A NaN cosine is not > 1e-10: built, and asserted after the
        // assertions of unitizing X and Z (from vec3).
        EXPECT_EQ(MTX3_init(x, y, m.data()), 1);
        expect_asserted(4 * level);
        m = kNaNs;
        EXPECT_EQ(MTX3_ortho_normalize(m.data()), 1); // asserted on every pass, and ends
        EXPECT_EQ(qxsys_report_count() > 4, level == 1);
        EXPECT_STREQ(level ? last_report().file : "mtx3", "mtx3");
    }
    // A host that unwinds leaves the call at the report.
    qxsys_clear_reports();
    EXPECT_TRUE(qxsys::first_error([&] { MTX3_rot_about_axis(kNaN, axis, m.data()); }).has_value());
    EXPECT_EQ(qxsys_report_count(), 1);
}

} // namespace
