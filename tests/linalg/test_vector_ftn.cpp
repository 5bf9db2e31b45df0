// vunt2_, vunt3_ and vcru3_: the session's length tolerance, passed
// unsquared and squared by the unitize routines; the flag; zeroed results
// for null and parallel input; the cross product against Eigen.
#include <cmath>
#include <random>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using Eigen::Vector3d;
using qxtest::kNaN;

constexpr double kEps = 2.220446049250313e-16;

class VectorFtn : public qxtest::QxTest
{
};

Vector3d vec(const double *v) { return {v[0], v[1], v[2]}; }

TEST_F(VectorFtn, UnitizeWithTheSessionLengthTolerance)
{
    open_session(1.0); // length tolerance 1e-4
    const double at[3] = {0.0, 1e-4, 0.0}, above[3] = {0.0, 0.0, -2e-4};
    double w[3] = {kNaN, kNaN, kNaN};
    int flag = -1;
    vunt3_(at, &flag, w);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(vec(w), Vector3d::Zero());
    vunt3_(above, &flag, w);
    EXPECT_EQ(flag, 1);
    EXPECT_LT((vec(w) - Vector3d(0.0, 0.0, -1.0)).norm(), 2 * kEps);

    const double at2[2] = {-1e-4, 0.0}, above2[2] = {1.2e-4, 1.6e-4};
    double w2[2] = {kNaN, kNaN};
    flag = -1;
    vunt2_(at2, &flag, w2);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(w2[0], 0.0);
    EXPECT_EQ(w2[1], 0.0);
    vunt2_(above2, &flag, w2);
    EXPECT_EQ(flag, 1);
    EXPECT_NEAR(w2[0], 0.6, 4 * kEps);
    EXPECT_NEAR(w2[1], 0.8, 4 * kEps);

    // The scale is the length unit of the tolerance.
    open_session(25.4);
    vunt3_(above, &flag, w);
    EXPECT_EQ(flag, 0);

    // With only sys10_ run, the tolerance is the unset marker -939: it is
    // squared, so everything up to length 939 fails.
    const int mode = 0;
    sys10_(&mode);
    const double long_v[3] = {900.0, 0.0, 0.0}, longer[3] = {0.0, 940.0, 0.0};
    vunt3_(long_v, &flag, w);
    EXPECT_EQ(flag, 0);
    vunt3_(longer, &flag, w);
    EXPECT_EQ(flag, 1);
    EXPECT_LT((vec(w) - Vector3d(0.0, 1.0, 0.0)).norm(), 2 * kEps);
}

TEST_F(VectorFtn, BeforeAnySessionOnlyTheZeroVectorFails)
{
    const double zero[3] = {0.0, 0.0, 0.0}, tiny[3] = {1e-150, 0.0, 0.0};
    const double underflow[3] = {1e-170, 0.0, 0.0};
    double w[3] = {kNaN, kNaN, kNaN};
    int flag = -1;
    vunt3_(zero, &flag, w);
    EXPECT_EQ(flag, 0);
    EXPECT_EQ(vec(w), Vector3d::Zero());
    vunt3_(tiny, &flag, w);
    EXPECT_EQ(flag, 1);
    EXPECT_LT((vec(w) - Vector3d(1.0, 0.0, 0.0)).norm(), 2 * kEps);
    vunt3_(underflow, &flag, w); // its squared length is 0
    EXPECT_EQ(flag, 0);
}

TEST_F(VectorFtn, UnitCrossProduct)
{
    open_session(1.0, true);
    std::mt19937_64 rng(1234);
    std::uniform_real_distribution<double> coord(-5.0, 5.0);
    for (int trial = 0; trial < 300; ++trial) {
        const Vector3d a(coord(rng), coord(rng), coord(rng)), b(coord(rng), coord(rng), coord(rng));
        double w[3] = {kNaN, kNaN, kNaN};
        int flag = -1;
        vcru3_(a.data(), b.data(), &flag, w);
        EXPECT_EQ(flag, 1);
        EXPECT_LT((vec(w) - a.cross(b).normalized()).norm(), 1e-13);
        // The product is formed first: the output may be an input.
        double a_in[3] = {a.x(), a.y(), a.z()};
        vcru3_(a_in, b.data(), &flag, a_in);
        EXPECT_EQ(vec(a_in), vec(w));
    }
    // Parallel and null inputs: flag 0, zero vector.
    open_session(1.0);
    const double x[3] = {2.0, 0.0, 0.0}, back[3] = {-5.0, 0.0, 0.0}, zero[3] = {0, 0, 0};
    const double near_x[3] = {1.0, 0.5e-4, 0.0}; // |x * near_x| = 1e-4: at the tolerance
    for (const double *b : {back, zero, near_x}) {
        double w[3] = {kNaN, kNaN, kNaN};
        int flag = -1;
        vcru3_(x, b, &flag, w);
        EXPECT_EQ(flag, 0);
        EXPECT_EQ(vec(w), Vector3d::Zero());
    }
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(VectorFtn, AssertionsComeFromTheUnitizeRoutines)
{
    MACH__checking_level = 1;
    const double huge[3] = {0.0, 0.0, 2e19}, x[3] = {1.0, 0.0, 0.0};
    double w[3];
    int flag;
    vunt3_(huge, &flag, w);
    ASSERT_EQ(qxsys_report_count(), 1);
    EXPECT_STREQ(last_report().file, "vec3");
    EXPECT_STREQ(last_report().text, "Assertion failed: condition");
    vunt2_(huge + 1, &flag, w);
    ASSERT_EQ(qxsys_report_count(), 2);
    EXPECT_STREQ(last_report().file, "vec2");
    // vcru3_ asserts on the product it unitizes, not on its inputs.
    vcru3_(huge, huge, &flag, w);
    EXPECT_EQ(qxsys_report_count(), 2);
    EXPECT_EQ(flag, 0);
    const double big[3] = {0.0, 0.0, 5e18}, big_y[3] = {0.0, 5e18, 0.0};
    vcru3_(big, big_y, &flag, w);
    ASSERT_EQ(qxsys_report_count(), 3);
    EXPECT_STREQ(last_report().file, "vec3");
    EXPECT_EQ(flag, 1);
    vcru3_(big, x, &flag, w);
    EXPECT_EQ(qxsys_report_count(), 3);
    MACH__checking_level = 0;
    vcru3_(big, big_y, &flag, w);
    vunt3_(huge, &flag, w);
    EXPECT_EQ(qxsys_report_count(), 3);
}

} // namespace
