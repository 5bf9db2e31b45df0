// Orientation matrices: construction against independent frames and
// Eigen's rotations, roll/pitch/yaw round trips, the ortho-normality test
// and its uses (equality, products, repair), and the assertions made with
// checking on.
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
using qxtest::kNaN;

constexpr double kPi = 3.141592653589793;

class Mtx3 : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{20240611};

    double uniform(double lo, double hi) { return std::uniform_real_distribution<>(lo, hi)(rng); }
    Eigen::Vector3d random_vector(double scale = 1.0)
    {
        return Eigen::Vector3d(uniform(-1, 1), uniform(-1, 1), uniform(-1, 1)) * scale;
    }
    Eigen::Vector3d random_direction()
    {
        Eigen::Vector3d v;
        do v = random_vector();
        while (v.norm() < 0.1);
        return v * std::exp(uniform(-5, 5)); // length 0.007 .. 150
    }
    M9 random_rotation()
    {
        M9 m;
        Mat::Map(m.data()) = Eigen::AngleAxisd(uniform(-kPi, kPi), random_direction().normalized())
                                 .toRotationMatrix();
        return m;
    }
};

Mat mat(const double *m) { return Mat::Map(m); }
Eigen::Vector3d row(const double *m, int i) { return Eigen::Vector3d::Map(m + 3 * i); }
M9 filled(double v)
{
    M9 m;
    m.fill(v);
    return m;
}
bool same_bits(const M9 &a, const M9 &b) { return std::memcmp(a.data(), b.data(), 72) == 0; }
// Element by element with ==, so that -0.0 matches 0.0.
bool same_values(const M9 &a, const M9 &b)
{
    for (int i = 0; i < 9; ++i)
        if (!(a[i] == b[i])) return false;
    return true;
}
bool all_nan(const M9 &m)
{
    for (double e : m)
        if (!std::isnan(e)) return false;
    return true;
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

// An ortho-normal, right-handed frame: checked with Eigen, not the library.
void expect_rotation(const M9 &m, double tol = 1e-15)
{
    const Mat r = mat(m.data());
    EXPECT_LE((r * r.transpose() - Mat::Identity()).cwiseAbs().maxCoeff(), tol);
    EXPECT_NEAR(r.determinant(), 1.0, tol);
}

TEST_F(Mtx3, InitKeepsXAndTurnsYIntoTheXYPlane)
{
    MACH__checking_level = 1;
    M9 m = filled(kNaN);
    const double x[3] = {2, 0, 0}, y[3] = {0, 3, 0};
    EXPECT_EQ(MTX3_init(x, y, m.data()), 1);
    EXPECT_TRUE(same_bits(m, M9{1, 0, 0, 0, 1, 0, 0, 0, 1}));

    for (int k = 0; k < 200; ++k) {
        const Eigen::Vector3d X = random_direction();
        const Eigen::Vector3d Y = X.cross(random_vector()).normalized() * uniform(0.01, 100);
        m = filled(kNaN);
        ASSERT_EQ(MTX3_init(X.data(), Y.data(), m.data()), 1);
        expect_rotation(m);
        EXPECT_LE((row(m.data(), 0) - X.normalized()).norm(), 1e-15);
        EXPECT_NEAR(row(m.data(), 2).dot(X.cross(Y).normalized()), 1.0, 1e-15);

        // Inputs that are rows of the output.
        M9 in_place = m;
        std::memcpy(in_place.data(), X.data(), 24);
        std::memcpy(in_place.data() + 3, Y.data(), 24);
        ASSERT_EQ(MTX3_init(in_place.data(), in_place.data() + 3, in_place.data()), 1);
        EXPECT_TRUE(same_bits(in_place, m));
    }

    // Not perpendicular within 1e-10 on the cosine, or null: 0, M unwritten.
    const double diagonal[3] = {1, 1, 0}, tilted[3] = {2e-10, 1, 0}, nearly[3] = {5e-11, 1, 0},
                 tiny[3] = {0, 1e-10, 0};
    m = filled(kNaN);
    EXPECT_EQ(MTX3_init(x, diagonal, m.data()), 0);
    EXPECT_EQ(MTX3_init(x, tilted, m.data()), 0);
    EXPECT_EQ(MTX3_init(tiny, y, m.data()), 0); // length exactly the tolerance
    EXPECT_EQ(MTX3_init(y, tiny, m.data()), 0);
    EXPECT_TRUE(all_nan(m));
    EXPECT_EQ(MTX3_init(x, nearly, m.data()), 1);
    EXPECT_EQ(m[3], 0.0); // Y re-derived from Z x X
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Mtx3, InitYZKeepsZAndXYZDiscardsTheGivenZ)
{
    MACH__checking_level = 1;
    for (int k = 0; k < 200; ++k) {
        const Eigen::Vector3d Z = random_direction();
        const Eigen::Vector3d Y = Z.cross(random_vector()).normalized() * uniform(0.01, 100);
        M9 m = filled(kNaN);
        ASSERT_EQ(MTX3_init_y_z(Y.data(), Z.data(), m.data()), 1);
        expect_rotation(m);
        EXPECT_LE((row(m.data(), 2) - Z.normalized()).norm(), 1e-15);
        EXPECT_NEAR(row(m.data(), 0).dot(Y.cross(Z).normalized()), 1.0, 1e-15);

        // Z checked, then replaced by X x Y: a left-handed Z gives MTX3_init's matrix.
        const Eigen::Vector3d X = Y.cross(Z) * uniform(0.01, 100);
        const Eigen::Vector3d left = -X.cross(Y);
        M9 expected = filled(kNaN), got = filled(kNaN);
        ASSERT_EQ(MTX3_init(X.data(), Y.data(), expected.data()), 1);
        ASSERT_EQ(MTX3_init_x_y_z(X.data(), Y.data(), left.data(), got.data()), 1);
        EXPECT_TRUE(same_bits(got, expected));
        expect_rotation(got);
    }
    const double x[3] = {1, 0, 0}, y[3] = {0, 1, 0}, z[3] = {0, 0, 1}, skew[3] = {0, 1e-9, 1},
                 null[3] = {0, 0, 0};
    M9 m = filled(kNaN);
    EXPECT_EQ(MTX3_init_y_z(y, skew, m.data()), 0);
    EXPECT_EQ(MTX3_init_y_z(null, z, m.data()), 0);
    EXPECT_EQ(MTX3_init_x_y_z(x, y, skew, m.data()), 0); // Z vs Y
    EXPECT_EQ(MTX3_init_x_y_z(skew, x, y, m.data()), 0); // Z vs X
    EXPECT_EQ(MTX3_init_x_y_z(x, y, null, m.data()), 0);
    EXPECT_TRUE(all_nan(m));
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Mtx3, InitXAndInitZCompleteAFrame)
{
    MACH__checking_level = 1;
    M9 m = filled(kNaN);
    const double up[3] = {0, 0, 5}, north[3] = {0, 1, 0}, null[3] = {0, 0, 1e-11};
    ASSERT_EQ(MTX3_init_z(up, m.data()), 1);
    EXPECT_TRUE(same_values(m, M9{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    ASSERT_EQ(MTX3_init_z(north, m.data()), 1); // |Zy| > 0.9: the second choice of X
    EXPECT_TRUE(same_values(m, M9{0, 0, -1, -1, 0, 0, 0, 1, 0}));

    for (int k = 0; k < 300; ++k) {
        const Eigen::Vector3d v = random_direction();
        m = filled(kNaN);
        ASSERT_EQ(MTX3_init_z(v.data(), m.data()), 1);
        expect_rotation(m);
        EXPECT_LE((row(m.data(), 2) - v.normalized()).norm(), 1e-15);
        // X lies in the XZ plane unless Z is within about 26 degrees of Y.
        EXPECT_EQ(m[std::fabs(m[7]) <= 0.9 ? 1 : 0], 0.0);

        m = filled(kNaN);
        ASSERT_EQ(MTX3_init_x(v.data(), m.data()), 1);
        expect_rotation(m);
        EXPECT_LE((row(m.data(), 0) - v.normalized()).norm(), 1e-15);
    }
    m = filled(kNaN);
    EXPECT_EQ(MTX3_init_z(null, m.data()), 0);
    EXPECT_EQ(MTX3_init_x(null, m.data()), 0);
    EXPECT_TRUE(all_nan(m));
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Mtx3, RotationAboutAxisIsEigensAngleAxis)
{
    MACH__checking_level = 1;
    for (int k = 0; k < 500; ++k) {
        const Eigen::Vector3d axis = random_direction();
        const double angle = uniform(-10, 10);
        M9 m = filled(kNaN);
        MTX3_rot_about_axis(angle, axis.data(), m.data());
        const Mat expected = Eigen::AngleAxisd(angle, axis.normalized()).toRotationMatrix();
        EXPECT_LE((mat(m.data()) - expected).cwiseAbs().maxCoeff(), 1e-15) << k;
    }
    M9 m = filled(kNaN);
    const double null[3] = {1e-11, 0, 0};
    MTX3_rot_about_axis(1.0, null, m.data());
    EXPECT_TRUE(same_bits(m, M9{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Mtx3, RollPitchYawRoundTrips)
{
    double r = kNaN, p = kNaN, y = kNaN;
    const M9 identity{1, 0, 0, 0, 1, 0, 0, 0, 1};
    MTX3_ask_roll_pitch_yaw(identity.data(), &r, &p, &y);
    EXPECT_EQ(r, 0.0);
    EXPECT_EQ(p, 0.0);
    EXPECT_EQ(y, 0.0);

    for (int k = 0; k < 500; ++k) {
        const double roll = uniform(-3.1, 3.1), pitch = uniform(-1.5, 1.5),
                     yaw = uniform(-3.1, 3.1);
        const Mat rz = Eigen::AngleAxisd(yaw, Eigen::Vector3d::UnitZ()).toRotationMatrix();
        const Mat ry = Eigen::AngleAxisd(pitch, Eigen::Vector3d::UnitY()).toRotationMatrix();
        const Mat rx = Eigen::AngleAxisd(roll, Eigen::Vector3d::UnitX()).toRotationMatrix();
        M9 m;
        Mat::Map(m.data()) = rz * ry * rx;
        MTX3_ask_roll_pitch_yaw(m.data(), &r, &p, &y);
        EXPECT_NEAR(r, roll, 1e-13) << k;
        EXPECT_NEAR(p, pitch, 1e-13) << k;
        EXPECT_NEAR(y, yaw, 1e-13) << k;
    }

    // At the pole yaw is 0 and the turn about the vertical is roll.
    const double s = std::sin(0.3), c = std::cos(0.3);
    const M9 down{0, s, c, 0, c, -s, -1, 0, 0}, up{0, -s, -c, 0, c, s, 1, 0, 0};
    MTX3_ask_roll_pitch_yaw(down.data(), &r, &p, &y);
    EXPECT_EQ(p, kPi / 2);
    EXPECT_EQ(y, 0.0);
    EXPECT_NEAR(r, 0.3, 1e-15);
    MTX3_ask_roll_pitch_yaw(up.data(), &r, &p, &y);
    EXPECT_EQ(p, -kPi / 2);
    EXPECT_EQ(y, 0.0);
    EXPECT_NEAR(r, 0.3, 1e-15);

    // Pairs within 1e-10 of an axis are snapped: exactly 0 and pi/2.
    const M9 near_x{1, 1e-11, 0, -1e-11, 1, 0, 0, 0, 1};
    MTX3_ask_roll_pitch_yaw(near_x.data(), &r, &p, &y);
    EXPECT_EQ(y, 0.0);
    const M9 quarter{1e-11, 1, 0, -1, 1e-11, 0, 0, 0, 1};
    MTX3_ask_roll_pitch_yaw(quarter.data(), &r, &p, &y);
    EXPECT_EQ(y, -kPi / 2);
}

TEST_F(Mtx3, OrthoNormalityIsAbsoluteAtOneEMinus14)
{
    const double edge = 1e-14, past = std::nextafter(1e-14, 1.0);
    EXPECT_EQ(MTX3_is_ortho_normal(M9{1, 0, 0, edge, 1, 0, 0, 0, 1}.data()), 1);
    EXPECT_EQ(MTX3_is_ortho_normal(M9{1, 0, 0, past, 1, 0, 0, 0, 1}.data()), 0);
    EXPECT_EQ(MTX3_is_ortho_normal(M9{1, 0, 0, 0, 1, 0, 0, past, 1}.data()), 0);
    EXPECT_EQ(MTX3_is_ortho_normal(M9{1, 0, 0, 0, 1, 0, past, 0, 1}.data()), 0);
    EXPECT_EQ(MTX3_is_ortho_normal(M9{1, 0, 0, 0, 1, 0, 0, 0, 1}.data()), 1);
    EXPECT_EQ(MTX3_is_ortho_normal(M9{1, 0, 0, 0, 1, 0, 0, 0, -1}.data()), 1); // a reflection
    for (int row = 0; row < 3; ++row) {
        M9 m{1, 0, 0, 0, 1, 0, 0, 0, 1};
        m[4 * row] = 1 + 4e-15; // squared length off by 8e-15
        EXPECT_EQ(MTX3_is_ortho_normal(m.data()), 1) << row;
        m[4 * row] = 1 + 6e-15; // by 1.2e-14
        EXPECT_EQ(MTX3_is_ortho_normal(m.data()), 0) << row;
        m[4 * row] = kNaN;
        EXPECT_EQ(MTX3_is_ortho_normal(m.data()), 0) << row;
    }
}

TEST_F(Mtx3, EqualityAlsoComparesOrthoNormality)
{
    const M9 loose{2, 1, 0, 0, 3, 0, 1, 1, 1};
    M9 other = loose;
    EXPECT_EQ(MTX3_is_equal(loose.data(), other.data(), 0.0), 1);
    other[5] = 0.25;
    EXPECT_EQ(MTX3_is_equal(loose.data(), other.data(), 0.25), 1); // inclusive
    EXPECT_EQ(MTX3_is_equal(loose.data(), other.data(), std::nextafter(0.25, 0.0)), 0);
    other[5] = kNaN;
    EXPECT_EQ(MTX3_is_equal(loose.data(), other.data(), 1e300), 0);

    const M9 r = random_rotation();
    M9 nudged = r;
    nudged[4] += 1e-12; // within tol, but no longer ortho-normal
    EXPECT_EQ(MTX3_is_equal(r.data(), nudged.data(), 1e-10), 0);
    EXPECT_EQ(MTX3_is_equal(r.data(), r.data(), 0.0), 1);

    const M9 identity{1, 0, 0, 0, 1, 0, 0, 0, 1};
    M9 turned;
    const double z[3] = {0, 0, 1};
    MTX3_rot_about_axis(1e-12, z, turned.data());
    EXPECT_EQ(MTX3_is_identity(turned.data(), 1e-10), 1);
    EXPECT_EQ(MTX3_is_identity(turned.data(), 1e-13), 0);
    nudged = identity;
    nudged[0] += 1e-12;
    EXPECT_EQ(MTX3_is_identity(nudged.data(), 1e-10), 0);
}

TEST_F(Mtx3, ProductsComposeAxesAndFlagRepairs)
{
    MACH__checking_level = 1;
    for (int k = 0; k < 200; ++k) {
        // Not ortho-normal: the plain product, term by term in k order, and 0.
        M9 a, b, p = filled(kNaN), pt = filled(kNaN);
        for (double &e : a) e = uniform(-2, 2);
        for (double &e : b) e = uniform(-2, 2);
        EXPECT_EQ(MTX3_multiply(a.data(), b.data(), p.data()), 0);
        EXPECT_EQ(MTX3_multiply_t(a.data(), b.data(), pt.data()), 0);
        M9 expected, expected_t;
        for (int i = 0; i < 3; ++i)
            for (int j = 0; j < 3; ++j) {
                expected[3 * i + j] =
                    b[3 * i] * a[j] + b[3 * i + 1] * a[3 + j] + b[3 * i + 2] * a[6 + j];
                expected_t[3 * i + j] =
                    b[3 * i] * a[3 * j] + b[3 * i + 1] * a[3 * j + 1] + b[3 * i + 2] * a[3 * j + 2];
            }
        EXPECT_TRUE(same_bits(p, expected));
        EXPECT_TRUE(same_bits(pt, expected_t));
        EXPECT_LE((mat(p.data()) - mat(b.data()) * mat(a.data())).cwiseAbs().maxCoeff(), 1e-14);
        EXPECT_LE(
            (mat(pt.data()) - mat(b.data()) * mat(a.data()).transpose()).cwiseAbs().maxCoeff(),
            1e-14);

        // P may be A or B.
        M9 into_a = a, into_b = b;
        MTX3_multiply(into_a.data(), b.data(), into_a.data());
        MTX3_multiply_t(a.data(), into_b.data(), into_b.data());
        EXPECT_TRUE(same_bits(into_a, expected));
        EXPECT_TRUE(same_bits(into_b, expected_t));

        // Ortho-normal: the product, repaired when it must be.
        const M9 ra = random_rotation(), rb = random_rotation();
        if (!MTX3_is_ortho_normal(ra.data()) || !MTX3_is_ortho_normal(rb.data())) continue;
        const int flag = MTX3_multiply(ra.data(), rb.data(), p.data());
        EXPECT_TRUE(flag == 0 || flag == 1);
        EXPECT_EQ(MTX3_is_ortho_normal(p.data()), 1);
        EXPECT_LE((mat(p.data()) - mat(rb.data()) * mat(ra.data())).cwiseAbs().maxCoeff(), 1e-14);
        MTX3_multiply_t(ra.data(), rb.data(), pt.data());
        EXPECT_EQ(MTX3_is_ortho_normal(pt.data()), 1);
        EXPECT_LE(
            (mat(pt.data()) - mat(rb.data()) * mat(ra.data()).transpose()).cwiseAbs().maxCoeff(),
            1e-14);
    }

    // Exactly ortho-normal product: 0. Inputs that pass but whose product
    // does not: repaired, 1.
    const M9 identity{1, 0, 0, 0, 1, 0, 0, 0, 1}, r = random_rotation();
    M9 p;
    ASSERT_EQ(MTX3_is_ortho_normal(r.data()), 1);
    EXPECT_EQ(MTX3_multiply(identity.data(), r.data(), p.data()), 0);
    EXPECT_TRUE(same_bits(p, r));
    const M9 stretched{1 + 4.9e-15, 0, 0, 0, 1, 0, 0, 0, 1};
    ASSERT_EQ(MTX3_is_ortho_normal(stretched.data()), 1);
    EXPECT_EQ(MTX3_multiply(stretched.data(), stretched.data(), p.data()), 1);
    EXPECT_TRUE(same_values(p, identity));
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Mtx3, OrthoNormalizeRepairsNearbyMatrices)
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
            expect_rotation(m, 1.5e-14);
            EXPECT_LE((mat(m.data()) - mat(input.data())).cwiseAbs().maxCoeff(),
                      4 * eps * angle_route_gain(r));
        }
    }

    // Already ortho-normal (a reflection too): 0, untouched.
    M9 m{1, 0, 0, 0, 1, 0, 0, 0, -1};
    EXPECT_EQ(MTX3_ortho_normalize(m.data()), 0);
    EXPECT_TRUE(same_bits(m, M9{1, 0, 0, 0, 1, 0, 0, 0, -1}));

    // X and Z perpendicular: Z keeps its direction, X is re-derived, row 1 is not read.
    m = M9{2, 0, 0, kNaN, kNaN, kNaN, 0, 0, 3};
    EXPECT_EQ(MTX3_ortho_normalize(m.data()), 1);
    EXPECT_TRUE(same_values(m, M9{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    const M9 r = random_rotation();
    m = r;
    for (int i = 3; i < 6; ++i) m[i] = uniform(-5, 5);
    EXPECT_EQ(MTX3_ortho_normalize(m.data()), 1);
    EXPECT_LE((mat(m.data()) - mat(r.data())).cwiseAbs().maxCoeff(), 1e-15);

    // Through the angles, the first pass snaps to the axes: exactly the identity.
    m = M9{1, 1e-12, 0, 0, 1, 0, 3e-12, 0, 1};
    EXPECT_EQ(MTX3_ortho_normalize(m.data()), 1);
    EXPECT_TRUE(same_values(m, M9{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Mtx3, OrthoNormalizeAlwaysReturns)
{
    // Any finite matrix with rows that are not tiny is repaired.
    for (int k = 0; k < 2000; ++k) {
        M9 m;
        for (double &e : m) e = uniform(-1, 1) * std::exp(uniform(-8, 8));
        if (k % 4 == 1) // nearly singular: rank one plus noise
            for (int i = 0; i < 9; ++i) m[i] = m[i % 3] * (1 + i / 3) + uniform(-1e-9, 1e-9);
        if (k % 4 == 2) m[3 * (k % 3) + k % 7 % 3] = 0.0;
        if (row(m.data(), 0).norm() < 1e-4 || row(m.data(), 2).norm() < 1e-4) continue;
        EXPECT_GE(MTX3_ortho_normalize(m.data()), 0);
        EXPECT_EQ(MTX3_is_ortho_normal(m.data()), 1) << k;
    }

    // Rows too short to give a cross product, yet passing the test for the
    // first route: nothing a pass can change, so it stops with M as it was.
    const M9 tiny{1e-12, 0, 0, 0.5, 0.5, 0, 0, 0, 1e-12};
    M9 m = tiny;
    EXPECT_EQ(MTX3_ortho_normalize(m.data()), 1);
    EXPECT_TRUE(same_bits(m, tiny));

    // NaN and infinities anywhere: it returns, not ortho-normal.
    const double inf = std::numeric_limits<double>::infinity();
    for (int k = 0; k < 500; ++k) {
        for (double &e : m) e = uniform(-1, 1);
        m[k % 9] = k % 2 ? kNaN : inf;
        if (k % 3 == 0) m[(k + 4) % 9] = -inf;
        if (k % 5 == 0) m = filled(k % 2 ? kNaN : inf);
        EXPECT_EQ(MTX3_ortho_normalize(m.data()), 1);
    }
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Mtx3, FailedResultsAreAssertedOnlyWithCheckingOn)
{
    const double axis[3] = {0, 0, 1}, x[3] = {kNaN, 0, 0}, y[3] = {0, 1, 0};
    M9 m;
    const M9 bad = filled(kNaN);
    auto run = [&] {
        MTX3_rot_about_axis(kNaN, axis, m.data());
        MTX3_init(x, y, m.data()); // a NaN cosine is not > 1e-10: built and asserted
        m = bad;
        MTX3_ortho_normalize(m.data());
    };
    run();
    EXPECT_EQ(qxsys_report_count(), 0);

    MACH__checking_level = 1;
    MTX3_rot_about_axis(kNaN, axis, m.data());
    ASSERT_EQ(qxsys_report_count(), 1);
    EXPECT_EQ(last_report().kind, QXSYS_INTERNAL);
    EXPECT_EQ(last_report().code, 0);
    EXPECT_STREQ(last_report().file, "mtx3");
    EXPECT_STREQ(last_report().text, "Assertion failed: condition");
    EXPECT_GT(last_report().line, 0);

    qxsys_clear_reports();
    EXPECT_EQ(MTX3_init(x, y, m.data()), 1); // the host returned: carries on
    EXPECT_STREQ(last_report().file, "mtx3");
    EXPECT_STREQ(last_report().text, "Assertion failed: condition");

    // The rebuild from angles asserts on every pass; the repair still ends.
    qxsys_clear_reports();
    m = bad;
    EXPECT_EQ(MTX3_ortho_normalize(m.data()), 1);
    EXPECT_GE(qxsys_report_count(), 1);
    EXPECT_STREQ(last_report().file, "mtx3");
    EXPECT_STREQ(last_report().text, "Assertion failed: condition");

    // A host that unwinds leaves the call at the first report.
    const auto err = qxsys::first_error([&] { run(); });
    ASSERT_TRUE(err.has_value());
    EXPECT_STREQ(err->file, "mtx3");
}

} // namespace
