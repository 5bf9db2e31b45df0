// vunt2_, vunt3_ and vcru3_: the session's length tolerance, passed
// unsquared and squared by the unitize routines; the flag; zeroed results
// for null and parallel input; the cross product against Eigen; the
// assertions of the unitize routines.
#include <cmath>
#include <random>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using V = Eigen::Vector3d;
using VectorFtn = qxtest::QxTest;
using qxtest::kNaN;

// vunt3_ (vunt2_ when v.z() is NaN) into a NaN-filled output: the flag,
// and in w the result, |w - expect| when `expect` is given.
int unit(const V &v, double *w, const V &expect = V::Zero())
{
    double out[3] = {kNaN, kNaN, 0.0};
    int flag = -1;
    std::isnan(v.z()) ? vunt2_(v.data(), &flag, out) : vunt3_(v.data(), &flag, out);
    *w = (V::Map(out) - expect).norm();
    return flag;
}

TEST_F(VectorFtn, UnitizeWithTheSessionLengthTolerance)
{
    double w;
    // Before any session the tolerance is 0: only a zero squared length fails.
    EXPECT_EQ(unit(V(1e-170, 0, 0), &w), 0);
    EXPECT_EQ(w, 0.0);
    EXPECT_EQ(unit(V(1e-150, 0, 0), &w, V(1, 0, 0)), 1);
    EXPECT_LT(w, 4e-16);

    open_session(1.0); // length tolerance 1e-4, inclusive
    EXPECT_EQ(unit(V(0, 1e-4, 0), &w), 0);
    EXPECT_EQ(w, 0.0);
    EXPECT_EQ(unit(V(0, 0, -2e-4), &w, V(0, 0, -1)), 1);
    EXPECT_LT(w, 4e-16);
    EXPECT_EQ(unit(V(-1e-4, 0, kNaN), &w), 0);
    EXPECT_EQ(w, 0.0);
    EXPECT_EQ(unit(V(1.2e-4, 1.6e-4, kNaN), &w, V(0.6, 0.8, 0)), 1);
    EXPECT_LT(w, 8e-16);

    open_session(25.4); // the scale is the length unit of the tolerance
    EXPECT_EQ(unit(V(0, 0, -2e-4), &w), 0);
    // With only sys10_ run the tolerance is the unset marker -939, squared.
    const int mode = 0;
    sys10_(&mode);
    EXPECT_EQ(unit(V(900, 0, 0), &w), 0);
    EXPECT_EQ(unit(V(0, 940, 0), &w, V(0, 1, 0)), 1);
    EXPECT_EQ(w, 0.0);
}

TEST_F(VectorFtn, UnitCrossProductAndItsAssertions)
{
    open_session(1.0, true);
    std::mt19937_64 rng(1234);
    std::uniform_real_distribution<double> coord(-5.0, 5.0);
    double w[3], a_in[3];
    int flag;
    for (int trial = 0; trial < 300; ++trial) {
        const V a(coord(rng), coord(rng), coord(rng)), b(coord(rng), coord(rng), coord(rng));
        vcru3_(a.data(), b.data(), &flag, w);
        EXPECT_EQ(flag, 1);
        EXPECT_LT((V::Map(w) - a.cross(b).normalized()).norm(), 1e-13);
        V::Map(a_in) = a;
        vcru3_(a_in, b.data(), &flag, a_in); // the output may be an input
        EXPECT_EQ(V::Map(a_in), V::Map(w));
    }
    // Parallel, null, and |A x B| at the tolerance 1e-4: flag 0, zeros.
    open_session(1.0);
    for (const V &b : {V(-5, 0, 0), V(0, 0, 0), V(1, 0.5e-4, 0)}) {
        V::Map(w).setConstant(kNaN);
        vcru3_(V(2, 0, 0).data(), b.data(), &flag, w);
        EXPECT_EQ(flag, 0);
        EXPECT_EQ(V::Map(w), V::Zero());
    }
    // The assertions are those of unitizing: vcru3_'s on the product.
    const double huge[3] = {0, 0, 2e19}, big[3] = {0, 0, 5e18}, big_y[3] = {0, 5e18, 0};
    for (int level : {0, 1}) {
        MACH__checking_level = level;
        qxsys_clear_reports();
        vunt3_(huge, &flag, w);
        vunt2_(huge + 1, &flag, w);
        vcru3_(huge, huge, &flag, w);
        EXPECT_EQ(flag, 0);
        vcru3_(big, V(1, 0, 0).data(), &flag, w);
        vcru3_(big, big_y, &flag, w);
        EXPECT_EQ(flag, 1);
        ASSERT_EQ(qxsys_report_count(), 3 * level);
        const char *files[] = {"vec3", "vec2", "vec3"};
        for (int i = 0; i < 3 * level; ++i) {
            EXPECT_STREQ(qxsys_report_back(2 - i)->file, files[i]);
            EXPECT_STREQ(qxsys_report_back(2 - i)->text, "Assertion failed: condition");
        }
    }
}

} // namespace
