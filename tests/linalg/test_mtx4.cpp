// 4x4 transforms and coordinate-system records: products and inverses
// against plain loops and Eigen, the builders against Eigen's affine
// transforms and the worked cases (degree factor, mirror, scaling),
// comparison, repair, application to points, h924_, CSYS_map_csys.
#include <array>
#include <cmath>
#include <cstring>
#include <random>

#include <Eigen/Geometry>

#include "support/qx_test.h"

namespace
{

using M16 = std::array<double, 16>;
using Mat4 = Eigen::Matrix<double, 4, 4, Eigen::RowMajor>;
using Mat3 = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using V = Eigen::Vector3d;
using qxtest::kNaN;

constexpr double kEps = 2.220446049250313e-16;
constexpr double kDegree = 0.01745329251994328; // the library's stored factor

template <class A> A nans()
{
    A m;
    m.fill(kNaN);
    return m;
}
template <class A> bool untouched(const A &m, size_t from = 0) // still NaN
{
    for (size_t i = from; i < m.size(); ++i)
        if (m[i] == m[i]) return false;
    return true;
}
Mat4 mat(const M16 &m) { return Mat4::Map(m.data()); }
double inf_norm(const Mat4 &m) { return m.cwiseAbs().rowwise().sum().maxCoeff(); }
double max_diff(const Mat4 &a, const Mat4 &b) { return (a - b).cwiseAbs().maxCoeff(); }
bool same_bits(const M16 &a, const M16 &b) { return std::memcmp(a.data(), b.data(), 128) == 0; }
V image(const M16 &t, const V &p)
{
    V q;
    MC_apply_transform_to_point(t.data(), p.data(), q.data());
    return q;
}

class Mtx4 : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{20261122};
    double uniform(double lo, double hi) { return std::uniform_real_distribution<>(lo, hi)(rng); }
    V vec(double r = 1) { return {uniform(-r, r), uniform(-r, r), uniform(-r, r)}; }
    V direction()
    {
        V v;
        do v = vec();
        while (v.norm() < 0.1);
        return v * std::exp(uniform(-3, 3));
    }
    M16 transform(bool scaled) // rotation (scaled per column by 0.5 .. 2.5), translation
    {
        Mat4 m = Mat4::Identity();
        m.topLeftCorner<3, 3>() =
            Eigen::AngleAxisd(uniform(-3, 3), direction().normalized()).toRotationMatrix();
        if (scaled)
            m.topLeftCorner<3, 3>() *= (vec().cwiseAbs() * 2 + V::Constant(0.5)).asDiagonal();
        m.topRightCorner<3, 1>() = vec(100);
        M16 a;
        Mat4::Map(a.data()) = m;
        return a;
    }
};

// B.A and B.A^T are the plain loops (k increasing from 0) bit for bit, and
// the output may be either operand.
TEST_F(Mtx4, ProductsAreThePlainLoopsAndMayAlias)
{
    for (int trial = 0; trial < 100; ++trial) {
        M16 a, b, loop, loop_t, p, pt;
        for (int i = 0; i < 16; ++i) a[i] = uniform(-10, 10), b[i] = uniform(-10, 10);
        for (int i = 0; i < 4; ++i)
            for (int j = 0; j < 4; ++j) {
                double s = b[4 * i] * a[j], t = b[4 * i] * a[4 * j];
                for (int k = 1; k < 4; ++k) {
                    s += b[4 * i + k] * a[4 * k + j];
                    t += b[4 * i + k] * a[4 * j + k];
                }
                loop[4 * i + j] = s, loop_t[4 * i + j] = t;
            }
        MTX4_multiply(a.data(), b.data(), p.data());
        MTX4_multiply_t(a.data(), b.data(), pt.data());
        ASSERT_TRUE(same_bits(p, loop) && same_bits(pt, loop_t)) << trial;
        EXPECT_LE(max_diff(mat(p), mat(b) * mat(a)), 1e-12);
        for (auto f : {MTX4_multiply, MTX4_multiply_t}) {
            M16 in_a = a, in_b = b;
            f(in_a.data(), b.data(), in_a.data());
            f(a.data(), in_b.data(), in_b.data());
            const M16 &want = f == MTX4_multiply ? loop : loop_t;
            EXPECT_TRUE(same_bits(in_a, want) && same_bits(in_b, want));
        }
    }
}

// Backward-stable residual and Eigen's inverse within the conditioning; in
// place the same bits; a zero row, or no scratch for ludcmp_a, gives 1 and
// leaves the output alone.
TEST_F(Mtx4, InverseAgainstEigenAndFailures)
{
    for (int trial = 0; trial < 300; ++trial) {
        M16 t = transform(trial % 2 == 0), r = nans<M16>();
        if (trial % 3 != 0)
            for (double &e : t) e = uniform(-1, 1); // general matrices too
        ASSERT_EQ(MTX4_invert(t.data(), r.data()), 0);
        const Mat4 ref = mat(t).inverse();
        const double cond = inf_norm(mat(t)) * inf_norm(ref);
        EXPECT_LE(inf_norm(mat(t) * mat(r) - Mat4::Identity()), 64 * kEps * cond) << trial;
        EXPECT_LE(inf_norm(mat(r) - ref), 64 * kEps * cond * inf_norm(ref)) << trial;
        EXPECT_EQ(MTX4_invert(t.data(), t.data()), 0);
        EXPECT_TRUE(same_bits(t, r));
    }
    const M16 t = transform(true);
    for (int row = 0; row < 4; ++row) {
        M16 z = t, r = nans<M16>();
        for (int j = 0; j < 4; ++j) z[4 * row + j] = 0.0;
        EXPECT_EQ(MTX4_invert(z.data(), r.data()), 1) << row;
        EXPECT_TRUE(untouched(r));
    }
    M16 r = nans<M16>();
    qxsys_fail_allocation(1);
    EXPECT_EQ(MTX4_invert(t.data(), r.data()), 1);
    EXPECT_TRUE(untouched(r));
    EXPECT_STREQ(last_report().file, "qxsys_memory");
}

// Degrees by the stored factor: 90 about Z has cos(90 k) != 0 where the exact
// rotation has 0; -90 about Z is +90 about -Z; the axis stays fixed; Eigen's
// angle-axis about q agrees; null axes give 1 and write nothing.
TEST_F(Mtx4, RotationAboutAnAxisThroughAPoint)
{
    const double o[3] = {0, 0, 0}, z[3] = {0, 0, 1}, minus_z[3] = {0, 0, -1};
    M16 t = nans<M16>(), neg = nans<M16>(), about_minus = nans<M16>();
    ASSERT_EQ(MTX4_rotation(o, z, 90.0, t.data()), 0);
    const double c = std::cos(90.0 * kDegree);
    EXPECT_NE(c, std::cos(90.0 * (3.141592653589793 / 180)));
    EXPECT_EQ(t, (M16{c, -1, 0, 0, 1, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
    MTX4_rotation(o, z, -90.0, neg.data());
    MTX4_rotation(o, minus_z, 90.0, about_minus.data());
    EXPECT_EQ(neg, about_minus);
    EXPECT_NE(neg, t);

    for (int trial = 0; trial < 200; ++trial) {
        const V q = vec(50), a = direction();
        const double deg = uniform(-720, 720);
        ASSERT_EQ(MTX4_rotation(q.data(), a.data(), deg, t.data()), 0);
        const Eigen::Affine3d ref = Eigen::Translation3d(q) *
                                    Eigen::AngleAxisd(deg * kDegree, a.normalized()) *
                                    Eigen::Translation3d(-q);
        EXPECT_LE(max_diff(mat(t), ref.matrix()), 1e-12) << trial;
        const V on_axis = q + uniform(-5, 5) * a;
        EXPECT_LE((image(t, on_axis) - on_axis).norm(), 1e-12);
    }
    // |a|^2 <= 1e-20 is null. (1e-10, 0, 0) squares to just above 1e-20 and
    // passes, but does not unitize at 1e-10: cos(angle) times the identity.
    const double tiny[3] = {0.99e-10, 0, 0}, q[3] = {1, 2, 3}, limit[3] = {1e-10, 0, 0};
    t = nans<M16>();
    EXPECT_EQ(MTX4_rotation(q, tiny, 30.0, t.data()), 1);
    EXPECT_EQ(MTX4_mirror(q, tiny, t.data()), 1);
    EXPECT_TRUE(untouched(t));
    ASSERT_EQ(MTX4_rotation(o, limit, 60.0, t.data()), 0);
    const double c60 = std::cos(60.0 * kDegree);
    EXPECT_EQ(t, (M16{c60, 0, 0, 0, 0, c60, 0, 0, 0, 0, c60, 0, 0, 0, 0, 1}));
}

// h924_ is I - 2 n n^T by its formula; the worked mirror case; mirrors agree
// with x - 2((x - c).n)n. Scaling about q keeps q and doubles offsets.
TEST_F(Mtx4, MirrorAndScaling)
{
    for (int trial = 0; trial < 50; ++trial) {
        const V n = direction().normalized(), c = vec(50), x = vec(50), normal = direction();
        double m[9];
        h924_(n.data(), m);
        for (int i = 0; i < 9; ++i) {
            const int r = i / 3, k = i % 3;
            EXPECT_EQ(m[i], r == k ? 1 - 2 * n[r] * n[r] : -2 * n[r] * n[k]);
        }
        M16 t;
        ASSERT_EQ(MTX4_mirror(c.data(), normal.data(), t.data()), 0);
        const V u = normal.normalized();
        EXPECT_LE((image(t, x) - (x - 2 * (x - c).dot(u) * u)).norm(), 1e-12);
    }
    const double q5[3] = {0, 0, 5}, n2[3] = {0, 0, 2};
    M16 t = nans<M16>();
    ASSERT_EQ(MTX4_mirror(q5, n2, t.data()), 0);
    EXPECT_EQ(image(t, V(1, 2, 3)), V(1, 2, 7));

    const V q(1.5, -2.25, 7), v(0.3, -4, 11);
    const double two[3] = {2, 2, 2}, odd[3] = {-1, 0, 3.5};
    MTX4_scaling(q.data(), two, t.data());
    EXPECT_EQ(image(t, q), q);
    EXPECT_LE((image(t, q + v) - (q + 2 * v)).norm(), 1e-13);
    MTX4_scaling(q.data(), odd, t.data()); // factors not checked
    const Eigen::Affine3d ref =
        Eigen::Translation3d(q) * Eigen::Scaling(V::Map(odd)) * Eigen::Translation3d(-q);
    EXPECT_LE(max_diff(mat(t), ref.matrix()), 1e-13);
}

// Element-wise with the same ortho-normality; as transforms: scale entry,
// translation distance, orientation, in that order (last row ignored).
TEST_F(Mtx4, Comparisons)
{
    M16 a = transform(false), b = a;
    a[7] = 0.0, b[7] = 0.1;
    EXPECT_EQ(MTX4_is_equal_transform(a.data(), b.data(), 1e-12, 0.05, 1e-12), 0);
    EXPECT_EQ(MTX4_is_equal_transform(a.data(), b.data(), 1e-12, 0.1, 1e-12), 1);
    EXPECT_EQ(MTX4_is_equal(a.data(), b.data(), 0.1), 1);
    EXPECT_EQ(MTX4_is_equal(a.data(), b.data(), 0.05), 0);
    b = a, b[12] = 0.5;
    EXPECT_EQ(MTX4_is_equal_transform(a.data(), b.data(), 1e-12, 1e-12, 1e-12), 1);
    EXPECT_EQ(MTX4_is_equal(a.data(), b.data(), 0.4), 0);
    b = a, b[15] = 1.5;
    EXPECT_EQ(MTX4_is_equal_transform(a.data(), b.data(), 1, 1, 0.4), 0);
    EXPECT_EQ(MTX4_is_equal_transform(a.data(), b.data(), 1, 1, 0.5), 1);
    b = a, b[3] = kNaN; // only a greater difference is rejected there
    EXPECT_EQ(MTX4_is_equal_transform(a.data(), b.data(), 1e-12, 1e-12, 1e-12), 1);
    EXPECT_EQ(MTX4_is_equal(a.data(), b.data(), 1e9), 0);
    b = a, b[1] += 1e-12; // within tol, but no longer ortho-normal
    EXPECT_EQ(MTX4_is_equal(a.data(), b.data(), 1e-9), 0);
    EXPECT_EQ(MTX4_is_equal_transform(a.data(), b.data(), 1e-9, 1, 1), 0);
    EXPECT_EQ(MTX4_is_equal(b.data(), b.data(), 0.0), 1);
    M16 id{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 1e-3, 0, 0, 0, 1};
    EXPECT_EQ(MTX4_is_identity(id.data(), 1e-3), 1);
    EXPECT_EQ(MTX4_is_identity(id.data(), 1e-4), 0);
    id[11] = 0, id[0] = 1 + 1e-9;
    EXPECT_EQ(MTX4_is_identity(id.data(), 1e-6), 0);
}

// The orientation part goes through the 3x3 repairs, the rest never changes.
TEST_F(Mtx4, RepairOfTheOrientationPart)
{
    M16 t = transform(false);
    t[12] = 7, t[13] = 8, t[14] = 9, t[15] = 2;
    const M16 good = t;
    EXPECT_EQ(MTX4_ortho_normalize(t.data()), 0);
    EXPECT_TRUE(same_bits(t, good));
    for (int i : {0, 1, 2, 4, 5, 6, 8, 9, 10}) t[i] += 1e-9 * uniform(-1, 1);
    const M16 perturbed = t;
    M16 f = t;
    double m[9], fixed[9];
    for (int i = 0; i < 9; ++i) m[i] = fixed[i] = t[4 * (i / 3) + i % 3];
    ASSERT_EQ(MTX3_ortho_normalize(m), 1);
    ASSERT_EQ(MTX3_fixup(fixed), 1);
    EXPECT_EQ(MTX4_ortho_normalize(t.data()), 1);
    EXPECT_EQ(MTX4_fixup(f.data()), 1);
    for (int i = 0; i < 16; ++i) {
        const bool part = i < 12 && i % 4 != 3;
        EXPECT_EQ(t[i], part ? m[3 * (i / 4) + i % 4] : perturbed[i]) << i;
        EXPECT_EQ(f[i], part ? fixed[3 * (i / 4) + i % 4] : perturbed[i]) << i;
    }
}

// Against Eigen's affine transform; the last row is not read; out may be in.
TEST_F(Mtx4, ApplyToPointsAndVectors)
{
    for (int trial = 0; trial < 100; ++trial) {
        M16 t = transform(true);
        const Eigen::Affine3d ref(mat(t));
        t[12] = t[13] = t[14] = t[15] = kNaN;
        V p = vec(100), w = p;
        EXPECT_LE((image(t, p) - ref * p).norm(), 1e-12);
        MC_apply_transform_to_vector(t.data(), w.data(), w.data());
        EXPECT_LE((w - ref.linear() * p).norm(), 1e-12);
        const V q = image(t, p);
        MC_apply_transform_to_point(t.data(), p.data(), p.data());
        EXPECT_EQ(p, q);
    }
}

// Systems (o, X, Y): a point with coordinates c in system 1 goes to the one
// with coordinates c in system 2, and MC_calc_csys_to_csys_transform agrees
// on the records. CSYS_map_csys against Eigen; its origin is written even
// when the mapped axes fail.
TEST_F(Mtx4, CoordinateSystems)
{
    using Rec = std::array<double, 12>;
    for (int trial = 0; trial < 100; ++trial) {
        V x[2], y[2];
        Rec s[2];
        for (int k = 0; k < 2; ++k) {
            x[k] = direction(), y[k] = x[k].cross(vec()).normalized() * 0.5;
            V::Map(s[k].data()) = vec(100);
            ASSERT_EQ(MTX3_init(x[k].data(), y[k].data(), s[k].data() + 3), 1);
        }
        M16 t = nans<M16>(), u = nans<M16>();
        ASSERT_EQ(MTX4_csys_to_csys(s[0].data(), x[0].data(), y[0].data(), s[1].data(), x[1].data(),
                                    y[1].data(), t.data()),
                  0);
        ASSERT_EQ(MC_calc_csys_to_csys_transform(s[0].data(), s[1].data(), u.data()), 0);
        const V o1 = V::Map(s[0].data()), o2 = V::Map(s[1].data()), c = vec(10);
        const Mat3 r1 = Mat3::Map(s[0].data() + 3), r2 = Mat3::Map(s[1].data() + 3);
        EXPECT_LE((image(t, o1 + r1.transpose() * c) - (o2 + r2.transpose() * c)).norm(), 1e-11);
        EXPECT_LE(max_diff(mat(t), mat(u)), 1e-12);
        EXPECT_TRUE(u[12] == 0 && u[13] == 0 && u[14] == 0 && u[15] == 1);

        Rec r = nans<Rec>(), in_a = s[0];
        ASSERT_EQ(CSYS_map_csys(s[0].data(), s[1].data(), r.data()), 1);
        EXPECT_LE((V::Map(r.data()) - r2 * (o1 - o2)).norm(), 1e-12);
        EXPECT_LE((Mat3::Map(r.data() + 3) - r1 * r2.transpose()).cwiseAbs().maxCoeff(), 1e-14);
        EXPECT_EQ(CSYS_map_csys(in_a.data(), s[1].data(), in_a.data()), 1);
        EXPECT_EQ(in_a, r);
    }
    const double o[3] = {1, 2, 3}, x[3] = {1, 0, 0}, y[3] = {0, 2, 0}, null[3] = {0, 0.99e-10, 0};
    M16 t = nans<M16>();
    EXPECT_EQ(MTX4_csys_to_csys(o, x, y, o, x, null, t.data()), 1);
    EXPECT_EQ(MTX4_csys_to_csys(o, null, y, o, x, y, t.data()), 1);
    EXPECT_TRUE(untouched(t));
    EXPECT_EQ(MTX4_csys_to_csys(o, x, y, o, x, V(1, 1, 0).data(), t.data()), 0); // no error
    const std::array<double, 12> a{1, 2, 3, 1, 0, 0, 0.5, 1, 0, 0, 0, 1},
        world{0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
    auto r = nans<std::array<double, 12>>();
    EXPECT_EQ(CSYS_map_csys(a.data(), world.data(), r.data()), 0);
    EXPECT_EQ(V::Map(r.data()), V(1, 2, 3));
    EXPECT_TRUE(untouched(r, 3));
}

// Silent with checking on, except VEC3_unitize's own range assertion.
TEST_F(Mtx4, CheckingOn)
{
    const double q[3] = {1, 2, 3}, a[3] = {0.3, 0.4, 1}, huge[3] = {1e20, 0, 0};
    M16 t, r;
    MACH__checking_level = 1;
    EXPECT_EQ(MTX4_rotation(q, a, 33.0, t.data()), 0);
    EXPECT_EQ(MTX4_invert(t.data(), r.data()), 0);
    EXPECT_EQ(MTX4_mirror(q, a, t.data()), 0);
    EXPECT_EQ(MTX4_csys_to_csys(q, a, V(0, 1, -0.4).data(), q, q, V(2, -1, 0).data(), t.data()), 0);
    EXPECT_EQ(qxsys_report_count(), 0);
    MACH__checking_level = 0;
    expect_checked([&] { MTX4_rotation(q, huge, 10.0, t.data()); }, "vec3", 0,
                   "Assertion failed: condition");
}

} // namespace
