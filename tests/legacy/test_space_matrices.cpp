// Matrix and frame routines (h101_ ... h160_, h922_, h956_, h960_, h961_, h963_, h1600_, h125_,
// h140_): reversed products against Eigen in their stated order, frame round trips, edges.
#include <cmath>
#include <cstdlib>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using M3 = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using M4 = Eigen::Matrix<double, 4, 4, Eigen::RowMajor>;
using Vec = Eigen::Vector3d;
using V4 = Eigen::Vector4d;
using Frame = Eigen::Matrix<double, 12, 1>;
constexpr double kEps = 2.220446049250313e-16;

class SpaceMatrices : public qxtest::QxTest
{
  protected:
    void SetUp() override
    {
        QxTest::SetUp();
        std::srand(20261123); // Eigen's Random draws from std::rand
    }
    static M3 rotation()
    {
        return Eigen::Quaterniond(V4::Random()).normalized().toRotationMatrix();
    }
    // A frame record: a random rotation and origin.
    static Frame frame()
    {
        Frame f;
        M3 m = rotation();
        std::copy(m.data(), m.data() + 9, f.data());
        f.tail<3>() = 10 * Vec::Random();
        return f;
    }
    static M3 mat(const Frame &f) { return Eigen::Map<const M3>(f.data()); }
};

template <class A, class B> double maxdiff(const A &a, const B &b)
{
    return (a - b).cwiseAbs().maxCoeff();
}

TEST_F(SpaceMatrices, ProductsInTheirStatedOrderAgainstEigen)
{
    for (int k = 0; k < 100; ++k) {
        const M4 a = M4::Random(), b = M4::Random();
        const M3 a3 = M3::Random(), b3 = M3::Random();
        M4 c = M4::Constant(kNaN);
        h121_(a.data(), b.data(), c.data());
        EXPECT_LE(maxdiff(c, b * a), 8 * kEps);
        h111_(a.data(), c.data());
        EXPECT_TRUE(c == a.transpose());
        const M4 wide = (M4() << a3, Vec::Zero(), 0, 0, 0, 1).finished();
        c.setConstant(kNaN);
        h130_(a3.data(), c.data());
        EXPECT_TRUE(c == wide);
        h123_(a3.data(), b.data(), c.data());
        EXPECT_LE(maxdiff(c, b * wide), 8 * kEps);

        M3 c3 = M3::Constant(kNaN), d3 = M3::Constant(kNaN);
        h122_(a3.data(), b3.data(), c3.data());
        EXPECT_LE(maxdiff(c3, b3 * a3.transpose()), 8 * kEps);
        h150_(a3.data(), b3.data(), d3.data());
        EXPECT_TRUE(c3 == d3);                  // the same bits
        h120_(a3.data(), b3.data(), c3.data()); // not ortho-normal: the plain product
        EXPECT_LE(maxdiff(c3, b3 * a3), 8 * kEps);
        const M3 r = rotation(), s = rotation();
        h120_(r.data(), s.data(), c3.data()); // ortho-normal: repaired, still s r
        EXPECT_LE(maxdiff(c3, s * r), 16 * kEps);

        const V4 v = V4::Random();
        V4 w = V4::Constant(kNaN);
        h101_(v.data(), a.data(), w.data());
        EXPECT_LE(maxdiff(w, a * v), 8 * kEps);
        const Vec p = Vec::Random();
        Vec q = Vec::Constant(kNaN);
        h104_(p.data(), a.data(), q.data()); // the stated formula, bit for bit
        const auto row = [&](int r) {
            return a(r, 0) * p[0] + a(r, 1) * p[1] + a(r, 2) * p[2] + a(r, 3);
        };
        EXPECT_TRUE(q == Vec(row(0) / row(3), row(1) / row(3), row(2) / row(3)));
    }
}

TEST_F(SpaceMatrices, FrameComponentsAndPointMappings)
{
    for (int k = 0; k < 100; ++k) {
        const M3 m1 = M3::Random(), r = rotation();
        const Vec v = Vec::Random();
        Vec w = Vec::Constant(kNaN), x = Vec::Constant(kNaN);
        h105_(v.data(), m1.data(), w.data());
        EXPECT_LE(maxdiff(w, m1.transpose() * v), 8 * kEps);
        h963_(v.data(), m1.data(), w.data());
        h100_(v.data(), m1.data(), x.data());
        EXPECT_TRUE(w == x);
        h106_(v.data(), m1.data(), r.data(), w.data());
        EXPECT_LE(maxdiff(w, r * (m1.transpose() * v)), 16 * kEps);
        const V4 c = V4::Random();
        const Vec a = Vec::Random(), b = Vec::Random(), e = Vec::Random();
        h116_(c.data(), v.data(), a.data(), b.data(), e.data(), w.data());
        EXPECT_LE(maxdiff(w, c[0] * v + c[1] * a + c[2] * b + c[3] * e), 8 * kEps);

        const Frame f = frame();
        const Vec o = f.tail<3>(), p = 10 * Vec::Random();
        h956_(v.data(), f.data(), w.data());
        EXPECT_LE(maxdiff(w, mat(f) * v + o), 32 * kEps);
        // A point above the frame's plane: the frame coordinates of its foot, z = 0.
        const Vec foot = p - (p - o).dot(mat(f).row(2)) * mat(f).row(2).transpose();
        h102_(p.data(), f.data(), w.data());
        EXPECT_EQ(w[2], 0.0);
        EXPECT_LE(maxdiff(w, mat(f) * (foot - o)), 128 * kEps);
    }

    // h104_ with a projective row divides all three by h; h114_ of a pure translation
    // gives the direction unchanged.
    M4 m = M4::Identity();
    m.row(3) << 0, 0, 0, 4;
    m.col(3).head<3>() << 4, 8, 12;
    const Vec p(2, 6, -10);
    Vec q = Vec::Constant(kNaN);
    h104_(p.data(), m.data(), q.data());
    EXPECT_EQ(q, Vec(1.5, 3.5, 0.5));
    m(3, 3) = 1.0;
    h114_(p.data(), m.data(), q.data());
    EXPECT_EQ(q, p);
}

TEST_F(SpaceMatrices, NormalOrientationAndSmallBuilders)
{
    open_session(1.0); // tol[0] = 1e-4
    acom_.tolerance[1] = 1.0;
    // n, p1 (p0 at the origin), ok and n after: within tol[0] of the plane is unchanged.
    const std::tuple<Vec, Vec, int, Vec> cases[] = {
        {Vec(0, 0, 2), Vec(5, 5, 5e-5), 0, Vec(0, 0, 2)},
        {Vec(0, 0, 2), Vec(5, 5, 6e-5), 1, Vec(0, 0, 2)},
        {Vec(0, 0, 1), Vec(5, 5, -1), 1, Vec(0, 0, -1)},
        {Vec(1, -2, 0), Vec(0, 1e-3, 0), 1, Vec(-1, 2, 0)}};
    for (const auto &[n, p1, ok_want, n_want] : cases) {
        const Vec p0(0, 0, 0);
        Vec nn = n;
        int ok = -1;
        h1600_(p0.data(), p1.data(), nn.data(), &ok);
        EXPECT_EQ(ok, ok_want) << p1.transpose();
        EXPECT_EQ(nn, n_want) << p1.transpose();
    }

    M3 m = M3::Constant(kNaN);
    h160_(m.data());
    EXPECT_EQ(m, M3::Identity());
    const double s = -2.5, x = 3.0;
    h922_(&s, m.data());
    EXPECT_EQ(m, s * M3::Identity());
    double f[13] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, -0.5}, y = kNaN; // |scale| used
    h961_(&x, f, &y);
    EXPECT_EQ(y, 1.5);
}

TEST_F(SpaceMatrices, FrameOfThreePoints)
{
    open_session(1.0, true);
    for (int k = 0; k < 100; ++k) {
        const Vec p0 = Vec::Random(), p1 = Vec::Random(), p2 = Vec::Random();
        M3 m = M3::Constant(kNaN);
        int ok = -1;
        h960_(p0.data(), p1.data(), p2.data(), m.data(), &ok);
        ASSERT_EQ(ok, 1);
        // Right-handed ortho-normal, X along p0 -> p1, p2 in the XY plane on the +Y side.
        const Vec local = m * (p2 - p0);
        EXPECT_LE(maxdiff(m * m.transpose(), M3::Identity()) + std::abs(m.determinant() - 1) +
                      maxdiff(m.row(0).transpose(), (p1 - p0).normalized()) + std::abs(local[2]),
                  64 * kEps);
        EXPECT_GT(local[1], 0.0);
    }
    // Collinear points: ok 0 and the rows as written so far; row 1 is unit(p2 - p1), which
    // points back here (p2 lies between p0 and p1); p0 = p1 leaves X null.
    const Vec p0(0, 0, 0), p1(1, 0, 0), between(0.5, 0, 0), p2(1, 0, 3);
    M3 m = M3::Constant(kNaN);
    int ok = -1;
    h960_(p0.data(), p1.data(), between.data(), m.data(), &ok);
    EXPECT_EQ(ok, 0);
    EXPECT_EQ(m, M3({{1, 0, 0}, {-1, 0, 0}, {0, 0, 0}}));
    m.setConstant(kNaN);
    h960_(p0.data(), p0.data(), p2.data(), m.data(), &ok);
    EXPECT_EQ(ok, 0);
    EXPECT_TRUE(m.row(0).isZero(0.0) && m.row(2).isZero(0.0));
    EXPECT_LE(maxdiff(m.row(1).transpose(), p2.normalized()), 4 * kEps);
}

TEST_F(SpaceMatrices, ChangeOfFrameRoundTrips)
{
    for (int k = 0; k < 100; ++k) {
        const Frame f = frame(), r = frame();
        Frame g = Frame::Constant(kNaN), back = Frame::Constant(kNaN);
        h125_(f.data(), r.data(), g.data());
        EXPECT_LE(maxdiff(mat(g), mat(f) * mat(r).transpose()), 16 * kEps);
        const Vec o = mat(r) * (f.tail<3>() - r.tail<3>());
        EXPECT_LE(maxdiff(g.tail<3>(), o), 256 * kEps);
        h140_(g.data(), r.data(), back.data());
        EXPECT_LE(maxdiff(back, f), 256 * kEps);
        Frame h = f; // in place: either argument may be the output
        h125_(h.data(), r.data(), h.data());
        EXPECT_TRUE(h == g);
        h = r;
        h140_(g.data(), h.data(), h.data());
        EXPECT_TRUE(h == back);
    }
}

} // namespace
