// 4x4 transforms and coordinate-system records against plain loops, Eigen and
// the worked cases; comparison, repair, failures and checking.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <random>
#include <utility>

#include <Eigen/Geometry>

#include "support/qx_test.h"

namespace
{

using M16 = std::array<double, 16>;
using Rec = std::array<double, 12>;
using Mat4 = Eigen::Matrix<double, 4, 4, Eigen::RowMajor>;
using Mat3 = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using V = Eigen::Vector3d;
using Eigen::Translation3d;
using qxtest::kNaN;

constexpr double kDegree = 0.01745329251994328; // the library's stored factor

template <class A> A nans(A m = {}) { return m.fill(kNaN), m; }
bool is_nan(double x) { return x != x; }
bool untouched(const M16 &m) { return std::all_of(m.begin(), m.end(), is_nan); }
Mat4 mat(const M16 &m) { return Mat4::Map(m.data()); }
double norm(const Mat4 &m) { return m.cwiseAbs().rowwise().sum().maxCoeff(); } // infinity norm
bool same_bits(const M16 &a, const M16 &b) { return std::memcmp(a.data(), b.data(), 128) == 0; }
V image(const M16 &t, V p) { return MC_apply_transform_to_point(t.data(), p.data(), p.data()), p; }

class Mtx4 : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{20261122};
    double uniform(double lo, double hi) { return std::uniform_real_distribution<>(lo, hi)(rng); }
    V vec(double r = 1) { return {uniform(-r, r), uniform(-r, r), uniform(-r, r)}; }
    V direction() { return vec().normalized() * std::exp(uniform(-3, 3)); } // 0.05 .. 20 long
    M16 transform(bool scaled) // rotation (columns scaled by 0.5 .. 2.5), translation
    {
        const V s = scaled ? V(vec().cwiseAbs() * 2 + V::Constant(0.5)) : V(1, 1, 1);
        const Eigen::AngleAxisd r(uniform(-3, 3), vec().normalized());
        M16 a;
        Mat4::Map(a.data()) = (Translation3d(vec(100)) * r * Eigen::Scaling(s)).matrix();
        return a;
    }
};

// General a, transform b: B.A and B.A^T are the plain loops (k increasing) bit
// for bit, also in place; inverses are Eigen's within the conditioning, in
// place the same bits; application is Eigen's, the last row unread. A zero
// row, or no scratch for ludcmp_a, fails the inverse, writing nothing.
TEST_F(Mtx4, ProductsInversesAndApplication)
{
    for (int trial = 0; trial < 200; ++trial) {
        M16 a, b = transform(trial % 2 == 0), loop, loop_t;
        std::generate(a.begin(), a.end(), [&] { return uniform(-1, 1); });
        for (int i = 0, r = 0, c = 0; i < 16; ++i, r = 4 * (i / 4), c = i % 4) {
            loop[i] = b[r] * a[c], loop_t[i] = b[r] * a[4 * c];
            for (int k = 1; k < 4; ++k)
                loop[i] += b[r + k] * a[4 * k + c], loop_t[i] += b[r + k] * a[4 * c + k];
        }
        EXPECT_LE(norm(mat(loop) - mat(b) * mat(a)), 1e-12);
        for (auto [f, want] : {std::pair{&MTX4_multiply, loop}, {&MTX4_multiply_t, loop_t}}) {
            M16 p, in_a = a, in_b = b;
            f(a.data(), b.data(), p.data());
            f(in_a.data(), b.data(), in_a.data());
            f(a.data(), in_b.data(), in_b.data());
            EXPECT_TRUE(same_bits(p, want) && same_bits(in_a, want) && same_bits(in_b, want));
        }
        for (M16 t : {a, b}) {
            M16 r = nans<M16>();
            ASSERT_EQ(MTX4_invert(t.data(), r.data()), 0);
            const Mat4 ref = mat(t).inverse();
            const double tol = 64 * 2.220446049250313e-16 * norm(mat(t)) * norm(ref);
            EXPECT_LE(norm(mat(t) * mat(r) - Mat4::Identity()), tol) << trial;
            EXPECT_LE(norm(mat(r) - ref), tol * norm(ref)) << trial;
            EXPECT_TRUE(MTX4_invert(t.data(), t.data()) == 0 && same_bits(t, r));
        }
        const Eigen::Affine3d ref(mat(b));
        std::fill_n(b.begin() + 12, 4, kNaN);
        V p = vec(100), w = p;
        MC_apply_transform_to_vector(b.data(), w.data(), w.data());
        EXPECT_LE((image(b, p) - ref * p).norm() + (w - ref.linear() * p).norm(), 1e-12);
    }
    for (int row = 0; row < 5; ++row) { // row 4: the scratch allocation fails
        M16 m = transform(true), r = nans<M16>();
        std::fill_n(m.begin() + 4 * row, row < 4 ? 4 : 0, 0.0);
        if (row == 4) qxsys_fail_allocation(1);
        EXPECT_TRUE(MTX4_invert(m.data(), r.data()) == 1 && untouched(r)) << row;
    }
    EXPECT_STREQ(last_report().file, "qxsys_memory");
}

// Rotation by the stored degree factor (90 about Z keeps cos(90 k) != 0, -90
// about Z is +90 about -Z) is Eigen's about q, the axis fixed; h924_ is its
// formula; mirrors and scalings as worked. Null directions (|v|^2 <= 1e-20)
// give 1, writing nothing; (1e-10, 0, 0) passes but unitizes to zero: cos.I.
TEST_F(Mtx4, Builders)
{
    const double o[3] = {0, 0, 0}, z[3] = {0, 0, 1}, minus_z[3] = {0, 0, -1}, w[3] = {1, 2, 3};
    const double c = std::cos(90 * kDegree), tiny[3] = {0.99e-10, 0, 0}, limit[3] = {1e-10, 0, 0};
    M16 t, neg, about_minus;
    ASSERT_EQ(MTX4_rotation(o, z, 90.0, t.data()) + MTX4_rotation(o, z, -90.0, neg.data()), 0);
    EXPECT_EQ(t, (M16{c, -1, 0, 0, 1, c, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}));
    MTX4_rotation(o, minus_z, 90.0, about_minus.data());
    EXPECT_EQ(neg, about_minus);
    for (int trial = 0; trial < 200; ++trial) {
        const V q = vec(50), a = direction(), on_axis = q + uniform(-5, 5) * a, x = vec(50);
        const V n = a.normalized();
        const double deg = uniform(-720, 720);
        ASSERT_EQ(MTX4_rotation(q.data(), a.data(), deg, t.data()), 0);
        const Eigen::Affine3d ref =
            Translation3d(q) * Eigen::AngleAxisd(deg * kDegree, n) * Translation3d(-q);
        EXPECT_LE(norm(mat(t) - ref.matrix()), 1e-12) << trial;
        EXPECT_LE((image(t, on_axis) - on_axis).norm(), 1e-12);
        ASSERT_EQ(MTX4_mirror(q.data(), a.data(), t.data()), 0);
        EXPECT_LE((image(t, x) - (x - 2 * (x - q).dot(n) * n)).norm(), 1e-12);
        double m[9];
        h924_(n.data(), m);
        for (int i = 0, r = 0, k = 0; i < 9; ++i, r = i / 3, k = i % 3)
            EXPECT_EQ(m[i], r == k ? 1 - 2 * n[r] * n[r] : -2 * n[r] * n[k]);
    }
    const double q5[3] = {0, 0, 5}, n2[3] = {0, 0, 2}, two[3] = {2, 2, 2}, odd[3] = {-1, 0, 3.5};
    ASSERT_EQ(MTX4_mirror(q5, n2, t.data()), 0);
    EXPECT_EQ(image(t, V(1, 2, 3)), V(1, 2, 7));
    const V q(1.5, -2.25, 7), v(0.3, -4, 11);
    for (const double *s : {two, odd}) {
        MTX4_scaling(q.data(), s, t.data());
        EXPECT_LE((image(t, q + v) - (q + V::Map(s).cwiseProduct(v))).norm(), 1e-13);
        EXPECT_TRUE(s == odd || image(t, q) == q);
    }
    t = nans<M16>();
    EXPECT_EQ(MTX4_rotation(w, tiny, 30.0, t.data()) + MTX4_mirror(w, tiny, t.data()), 2);
    EXPECT_EQ(MTX4_csys_to_csys(w, z, tiny, w, z, w, t.data()), 1);
    EXPECT_EQ(MTX4_csys_to_csys(w, z, w, w, tiny, w, t.data()), 1);
    EXPECT_TRUE(untouched(t));
    ASSERT_EQ(MTX4_rotation(o, limit, 90.0, t.data()), 0);
    EXPECT_EQ(t, (M16{c, 0, 0, 0, 0, c, 0, 0, 0, 0, c, 0, 0, 0, 0, 1}));
}

// Element-wise with the same ortho-normality; as transforms: scale entry,
// translation distance (only a greater one rejected), orientation, in that
// order, the last row ignored. Repair touches only the orientation part.
TEST_F(Mtx4, ComparisonsAndRepair)
{
    M16 a = transform(false), b = a;
    auto as_transform = [&](double r, double d, double s) {
        return MTX4_is_equal_transform(a.data(), b.data(), r, d, s);
    };
    auto equal = [&](double tol) { return MTX4_is_equal(a.data(), b.data(), tol); };
    a[7] = 0.0, b[7] = 0.1;
    EXPECT_TRUE(as_transform(1e-12, 0.05, 1e-12) == 0 && as_transform(1e-12, 0.1, 1e-12) == 1);
    EXPECT_TRUE(equal(0.05) == 0 && equal(0.1) == 1);
    b = a, b[12] = 0.5;
    EXPECT_TRUE(as_transform(1e-12, 1e-12, 1e-12) == 1 && equal(0.4) == 0);
    b = a, b[15] = 1.5;
    EXPECT_TRUE(as_transform(1, 1, 0.4) == 0 && as_transform(1, 1, 0.5) == 1);
    b = a, b[3] = kNaN;
    EXPECT_TRUE(as_transform(1e-12, 1e-12, 1e-12) == 1 && equal(1e9) == 0);
    b = a, b[1] += 1e-12; // within tol, but no longer ortho-normal
    EXPECT_TRUE(equal(1e-9) == 0 && as_transform(1e-9, 1, 1) == 0);
    M16 id{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 1e-3, 0, 0, 0, 1};
    EXPECT_TRUE(MTX4_is_identity(id.data(), 1e-3) == 1 && MTX4_is_identity(id.data(), 1e-4) == 0);

    a[12] = 7, a[13] = 8, a[14] = 9, a[15] = 2, b = a;
    EXPECT_TRUE(MTX4_ortho_normalize(b.data()) == 0 && same_bits(a, b));
    for (int i : {0, 1, 2, 4, 5, 6, 8, 9, 10}) a[i] += 1e-9 * uniform(-1, 1);
    M16 n = a, f = a;
    double m[9], fixed[9];
    for (int i = 0; i < 9; ++i) m[i] = fixed[i] = a[4 * (i / 3) + i % 3];
    ASSERT_TRUE(MTX3_ortho_normalize(m) == 1 && MTX3_fixup(fixed) == 1);
    EXPECT_TRUE(MTX4_ortho_normalize(n.data()) == 1 && MTX4_fixup(f.data()) == 1);
    for (int i = 0; i < 9; ++i) a[4 * (i / 3) + i % 3] = m[i], b[4 * (i / 3) + i % 3] = fixed[i];
    EXPECT_TRUE(same_bits(n, a) && same_bits(f, b));
}

// Systems (o, X, Y) from ortho-normal records: a point with coordinates c in
// system 1 goes to the one with coordinates c in system 2, as
// MC_calc_csys_to_csys_transform has it on the records. CSYS_map_csys against Eigen, in place too;
// its origin is written even when the mapped axes fail.
TEST_F(Mtx4, CoordinateSystems)
{
    for (int trial = 0; trial < 100; ++trial) {
        Rec s[2], r = nans<Rec>();
        for (Rec &k : s) {
            const V x = direction(), y = x.cross(vec());
            V::Map(k.data()) = vec(100);
            ASSERT_EQ(MTX3_init(x.data(), y.data(), k.data() + 3), 1);
        }
        const double *o1 = s[0].data(), *o2 = s[1].data();
        M16 t = nans<M16>(), u = nans<M16>();
        ASSERT_EQ(MTX4_csys_to_csys(o1, o1 + 3, o1 + 6, o2, o2 + 3, o2 + 6, t.data()), 0);
        ASSERT_EQ(MC_calc_csys_to_csys_transform(o1, o2, u.data()), 0);
        const Mat3 r1 = Mat3::Map(o1 + 3), r2 = Mat3::Map(o2 + 3);
        const V c = vec(10), p2 = V::Map(o2) + r2.transpose() * c, d = V::Map(o1) - V::Map(o2);
        EXPECT_LE((image(t, V::Map(o1) + r1.transpose() * c) - p2).norm(), 1e-11);
        EXPECT_LE(norm(mat(t) - mat(u)), 1e-12);
        EXPECT_TRUE(u[12] == 0 && u[13] == 0 && u[14] == 0 && u[15] == 1);
        ASSERT_EQ(CSYS_map_csys(o1, o2, r.data()), 1);
        EXPECT_LE((V::Map(r.data()) - r2 * d).norm(), 1e-12);
        EXPECT_LE((Mat3::Map(r.data() + 3) - r1 * r2.transpose()).cwiseAbs().maxCoeff(), 1e-14);
        EXPECT_TRUE(CSYS_map_csys(s[0].data(), o2, s[0].data()) == 1 && s[0] == r);
    }
    const Rec a{1, 2, 3, 1, 0, 0, 0.5, 1, 0, 0, 0, 1}, world{0, 0, 0, 1, 0, 0, 0, 1, 0, 0, 0, 1};
    Rec r = nans<Rec>();
    EXPECT_EQ(CSYS_map_csys(a.data(), world.data(), r.data()), 0);
    EXPECT_TRUE(V::Map(r.data()) == V(1, 2, 3) && std::all_of(r.begin() + 3, r.end(), is_nan));
}

// Silent with checking on, even for axes that are not perpendicular, but for
// VEC3_unitize's range assertion.
TEST_F(Mtx4, CheckingOn)
{
    const double q[3] = {1, 2, 3}, a[3] = {0.3, 0.4, 1}, huge[3] = {1e20, 0, 0};
    M16 t, r;
    MACH__checking_level = 1;
    EXPECT_EQ(MTX4_rotation(q, a, 33.0, t.data()) + MTX4_invert(t.data(), r.data()), 0);
    EXPECT_EQ(MTX4_mirror(q, a, t.data()), 0);
    EXPECT_EQ(MTX4_csys_to_csys(q, a, V(0, 1, -0.4).data(), q, q, V(2, -1, 0).data(), t.data()), 0);
    EXPECT_EQ(MTX4_csys_to_csys(q, a, q, q, a, q, t.data()), 0);
    EXPECT_EQ(qxsys_report_count(), 0);
    MACH__checking_level = 0;
    expect_checked([&] { MTX4_rotation(q, huge, 10.0, t.data()); }, "vec3", 0,
                   "Assertion failed: condition");
}

} // namespace
