// Coordinate systems built from picked points, lines and angles: right-handed ortho-normal
// frames with the stated axes (checked against Eigen), the degenerate cases with what they
// leave unwritten, the foot of a point on a line, and the session WCS round trip.
#include <cmath>
#include <random>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using RowMat = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using Vec = Eigen::Vector3d;

class Csys : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{20261122};
    Vec vec()
    {
        std::uniform_real_distribution<double> u(-10.0, 10.0);
        return {u(rng), u(rng), u(rng)};
    }
    // Rows ortho-normal and right-handed (X x Y = Z).
    static void expect_frame(const double m[9])
    {
        const RowMat r = Eigen::Map<const RowMat>(m);
        EXPECT_LT((r * r.transpose() - RowMat::Identity()).norm(), 1e-14);
        EXPECT_GT(r.determinant(), 0.0);
    }
    static Vec row(const double m[9], int k) { return {m[3 * k], m[3 * k + 1], m[3 * k + 2]}; }
};

TEST_F(Csys, FootOfAPointOnALine)
{
    open_session(1000.0, true); // tol[0] = 1e-10, tol[1] = 1e-7
    for (int i = 0; i < 100; ++i) {
        const Vec a = vec(), b = vec(), p = vec();
        double f[3] = {kNaN, kNaN, kNaN};
        ASSERT_EQ(h430_(a.data(), b.data(), p.data(), f), 0);
        const Vec fv(f), d = b - a;
        EXPECT_NEAR((p - fv).dot(d), 0.0, 1e-12 * d.squaredNorm() * (1 + p.norm()));
        EXPECT_LT(((fv - a).cross(d)).norm(), 1e-12 * d.squaredNorm() * (1 + a.norm()));
        Vec alias = p; // f may alias p
        h430_(a.data(), b.data(), alias.data(), alias.data());
        EXPECT_EQ(alias, fv);
    }
    // The squared length against tol[0] (eqz_ kind 0): 1e-11 is a point (1, f = a), 1e-9 not.
    const double a[3] = {1, 2, 3}, p[3] = {5, 5, 5};
    for (double l2 : {1e-11, 1e-9}) {
        const double b[3] = {1, 2 + std::sqrt(l2), 3};
        double f[3];
        EXPECT_EQ(h430_(a, b, p, f), l2 < 1e-10 ? 1 : 0);
        EXPECT_EQ(Vec(f) == Vec(a), l2 < 1e-10);
    }
}

TEST_F(Csys, SystemFromOriginAndTwoPoints)
{
    const double o[3] = {0, 0, 0}, px[3] = {2, 0, 0}, py[3] = {5, 3, 0};
    double m[9], origin[3] = {kNaN, kNaN, kNaN};
    int status = -1;
    v6043_(o, px, py, m, origin, &status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(RowMat(Eigen::Map<RowMat>(m)), RowMat::Identity());
    for (int i = 0; i < 100; ++i) {
        const Vec ov = vec(), x = vec(), y = vec(), n = vec();
        v6043_(ov.data(), x.data(), y.data(), m, origin, &status);
        ASSERT_EQ(status, 1);
        expect_frame(m);
        EXPECT_EQ(Vec(origin), ov);
        EXPECT_LT((row(m, 0) - (x - ov).normalized()).norm(), 1e-14);
        EXPECT_GT(row(m, 1).dot(y - ov), 0.0);          // py on the +Y side
        EXPECT_NEAR(row(m, 2).dot(y - ov), 0.0, 1e-12); // and in the XY plane
        // The normal variant: Z along the normal, X across it towards px.
        v6043_normal(ov.data(), x.data(), n.data(), m, origin, &status);
        ASSERT_EQ(status, 1);
        expect_frame(m);
        EXPECT_LT((row(m, 2) - n.normalized()).norm(), 1e-14);
        const Vec across = (x - ov) - (x - ov).dot(n.normalized()) * n.normalized();
        EXPECT_LT((row(m, 0) - across.normalized()).norm(), 1e-12);
    }
    // Parallel directions: status 2, m and origin untouched.
    const double on_x[3] = {7, 0, 0}, along[3] = {0, 0, 4}, z[3] = {0, 0, 1};
    for (int variant = 0; variant < 2; ++variant) {
        for (double &v : m) v = kNaN;
        origin[0] = origin[1] = origin[2] = kNaN;
        if (variant == 0)
            v6043_(o, px, on_x, m, origin, &status);
        else
            v6043_normal(o, along, z, m, origin, &status);
        EXPECT_EQ(status, 2);
        EXPECT_TRUE(std::isnan(origin[0]) && std::isnan(m[0]) && std::isnan(m[8]));
    }
}

TEST_F(Csys, SystemAroundALine)
{
    open_session(1.0, true);
    double m[9], f[3];
    int status = -1;
    for (int i = 0; i < 100; ++i) {
        const Vec a = vec(), b = vec(), p = vec();
        Vec fa = a; // f aliasing a: every input is read before f is written
        v6045_(fa.data(), b.data(), p.data(), m, fa.data(), &status);
        ASSERT_EQ(status, 1);
        expect_frame(m);
        EXPECT_LT((row(m, 2) - (a - b).normalized()).norm(), 1e-14); // Z from b towards a
        EXPECT_LT((row(m, 0) - (p - fa).normalized()).norm(), 1e-12);
        h430_(a.data(), b.data(), p.data(), f);
        EXPECT_EQ(fa, Vec(f));
    }
    // p on the line: status 2, f (the foot, here p) written first, m untouched.
    const double a[3] = {0, 0, 0}, b[3] = {0, 0, 2}, p[3] = {0, 0, 1}, q[3] = {1, 0, 0};
    for (double &v : m) v = kNaN;
    f[0] = f[1] = f[2] = kNaN;
    v6045_(a, b, p, m, f, &status);
    EXPECT_EQ(status, 2);
    EXPECT_EQ(Vec(f), Vec(p));
    EXPECT_TRUE(std::isnan(m[0]));
    // A null line: the Z unitising fails unexamined, MTX3_init_y_z then refuses.
    v6045_(a, a, q, m, f, &status);
    EXPECT_EQ(status, 2);
}

TEST_F(Csys, WorkCoordinateSystemRoundTrip)
{
    double m[9], o[3];
    const double zero[3] = {0, 0, 0}, origin[3] = {1, -2, 3};
    int status = -1;
    v6043_(zero, vec().data(), vec().data(), m, o, &status);
    ASSERT_EQ(status, 1);
    v6054_(m, origin, &status);
    EXPECT_EQ(status, 1);
    double back_m[9], back_o[3];
    v6051_(back_m, back_o);
    EXPECT_EQ(RowMat(Eigen::Map<RowMat>(back_m)), RowMat(Eigen::Map<RowMat>(m)));
    EXPECT_EQ(Vec(back_o), Vec(origin));

    const Vec p = vec();
    double w[3], q[3];
    int mode = 1;
    v6060_(&mode, p.data(), w, &status);
    EXPECT_EQ(status, 1);
    EXPECT_LT((Vec(w) - Eigen::Map<RowMat>(m) * (p - Vec(origin))).norm(), 1e-13);
    mode = 2;
    v6060_(&mode, w, q, &status);
    EXPECT_LT((Vec(q) - p).norm(), 1e-13);
    mode = 3;
    q[0] = kNaN;
    v6060_(&mode, w, q, &status);
    EXPECT_EQ(status, 2);
    EXPECT_TRUE(std::isnan(q[0]));
    // Not ortho-normal: nothing stored.
    const double skew[9] = {1, 0, 0, 0, 2, 0, 0, 0, 1};
    v6054_(skew, zero, &status);
    EXPECT_EQ(status, 2);
    v6051_(back_m, back_o);
    EXPECT_EQ(Vec(back_o), Vec(origin));
}

TEST_F(Csys, RotationAboutOwnAxesAndReset)
{
    // (90, 0, 0) on the identity turns Y into Z; the caller's angles end in radians.
    double id[9], o[3] = {kNaN, kNaN, kNaN}, r[9];
    v6066_(id, o);
    EXPECT_EQ(RowMat(Eigen::Map<RowMat>(id)), RowMat::Identity());
    EXPECT_EQ(Vec(o), Vec::Zero());
    double ang[3] = {90.0, 0.0, 0.0};
    v6037a_(id, ang, r);
    EXPECT_EQ(ang[0], 90.0 * 0.01745329251994328);
    EXPECT_LT((row(r, 1) - Vec(0, 0, 1)).norm(), 4e-15);
    // Random frames and angles: intrinsic X, Y', Z'' turns, r = (Rx Ry Rz)^T m.
    std::uniform_real_distribution<double> deg(-180.0, 180.0);
    for (int i = 0; i < 100; ++i) {
        double m[9], origin[3], a[3] = {deg(rng), deg(rng), deg(rng)}, rad[3];
        int status = -1;
        v6043_(o, vec().data(), vec().data(), m, origin, &status);
        ASSERT_EQ(status, 1);
        for (int k = 0; k < 3; ++k) rad[k] = a[k] * 0.01745329251994328;
        v6037a_(m, a, r);
        for (int k = 0; k < 3; ++k) EXPECT_EQ(a[k], rad[k]);
        const Eigen::Matrix3d local =
            (Eigen::AngleAxisd(rad[0], Vec::UnitX()) * Eigen::AngleAxisd(rad[1], Vec::UnitY()) *
             Eigen::AngleAxisd(rad[2], Vec::UnitZ()))
                .toRotationMatrix();
        const RowMat want = local.transpose() * Eigen::Map<RowMat>(m);
        EXPECT_LT((Eigen::Map<RowMat>(r) - want).norm(), 1e-13);
        expect_frame(r);
    }
    // r may alias m.
    double m2[9], a2[3] = {0.0, 90.0, 0.0};
    v6066_(m2, o);
    v6037a_(m2, a2, m2);
    EXPECT_LT((row(m2, 2) - Vec(1, 0, 0)).norm(), 4e-15);
}

} // namespace
