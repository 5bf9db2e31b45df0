// The core primitives of the numbered routines (qxmath): tolerance edges and snapping
// orders, angle quadrants, and oracles (Eigen, std::complex, the closed forms) for the
// arithmetic routines.
#include <cmath>
#include <complex>
#include <random>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using cplx = std::complex<double>;
using RowMat = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using Vec = Eigen::Vector3d;
constexpr double kEps = 2.220446049250313e-16;
constexpr double kPi = 3.141592653589793, kHalfPi = 1.5707963267948966;
constexpr double kThreeHalfPi = 4.71238898038469, kTwoPi = 6.283185307179586;

class Qxmath : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{20261122};
    double uni(double lo = -1.0, double hi = 1.0)
    {
        return std::uniform_real_distribution<double>(lo, hi)(rng);
    }
    Vec vec() { return {uni(), uni(), uni()}; }
};

int h805(double a, double b, int i)
{
    int eq = -1;
    h805_(&a, &b, &i, &eq);
    return eq;
}

// h804_ or h809_ as (result, x after).
template <auto F> std::pair<int, double> classify(double x, double lo, double hi, int i = 0)
{
    const double lim[2] = {lo, hi};
    int out = -1;
    F(&x, lim, &i, &out);
    return {out, x};
}

double h053(double s, double c)
{
    double a = kNaN;
    h053_(&s, &c, &a);
    return a;
}
double h002(double x, double p)
{
    h002_(&x, &p);
    return x;
}

TEST_F(Qxmath, ToleranceComparisonsAndClassification)
{
    open_session(1.0);                  // tol[0] = tol[1] = 1e-4
    EXPECT_EQ(h805(1.0e-4, 0.0, 0), 1); // exactly at the tolerance: equal
    EXPECT_EQ(h805(std::nextafter(1.0e-4, 1.0), 0.0, 0), 0);
    acom_.tolerance[3] = -0.5; // a negative entry acts as its magnitude
    EXPECT_EQ(h805(0.0, 0.5, 3), 1);
    for (int i : {-1, 8}) { // an index outside the table compares exactly
        EXPECT_EQ(h805(2.5, std::nextafter(2.5, 3.0), i), 0) << i;
        EXPECT_EQ(classify<h804_>(1.0 + 1e-12, 1.0, 2.0, i), std::make_pair(3, 1.0 + 1e-12));
    }
    double a = 1.0, b = 1.25, t = -0.25;
    int eq = -1;
    h806_(&a, &b, &t, &eq);
    EXPECT_EQ(eq, 1);
    // h206_ compares t with the squared XY distance (0.25 here); z is never read.
    const double p[2] = {1.0, 1.0}, q[2] = {1.3, 1.4};
    for (auto [tt, want] : {std::pair{0.26, 1}, {-0.26, 1}, {0.24, 0}}) {
        h206_(p, q, &tt, &eq);
        EXPECT_EQ(eq, want) << tt;
    }

    // x, lo, hi, then h804_'s code and x after it, h809_'s result and x after it; the last
    // two have both ends within tolerance: lo is tested first.
    const double l = 1.0, h = 2.0, tol = 1.0e-4;
    // clang-format off
    const std::tuple<double, double, double, int, double, int, double> cases[] = {
        {l - tol / 2, l, h, 2, l, 1, l}, {0.5, l, h, 1, 0.5, 0, 0.5}, {1.5, l, h, 3, 1.5, 1, 1.5},
        {h - tol / 2, l, h, 4, h, 1, h - tol / 2}, {h + 0.9 * tol, l, h, 4, h, 1, h},
        {h + 2 * tol, l, h, 5, h + 2 * tol, 0, h + 2 * tol}, {6.0e-5, 0.0, 5.0e-5, 2, 0.0, 1, 0.0},
        {3.0e-5, 5.0e-5, 0.0, 2, 5.0e-5, 1, 5.0e-5}};
    // clang-format on
    for (auto [x, lo, hi, c4, x4, c9, x9] : cases) {
        EXPECT_EQ(classify<h804_>(x, lo, hi), std::make_pair(c4, x4)) << x;
        EXPECT_EQ(classify<h809_>(x, lo, hi), std::make_pair(c9, x9)) << x;
    }

    // h000_ keeps a divisor away from zero; the unset marker disables it.
    for (auto [in, out] : {std::pair{5e-5, 1e-4}, {-5e-5, -1e-4}, {-0.0, 1e-4}, {-2e-4, -2e-4}}) {
        h000_(&in);
        EXPECT_EQ(in, out);
    }
    const int mode = 0;
    sys10_(&mode);
    double x = 0.0;
    h000_(&x);
    EXPECT_EQ(x, 0.0);
}

TEST_F(Qxmath, AnglesAndPeriodicReduction)
{
    // Number tolerance 1e-4 (s at it counts as 0); a tiny negative s gives 0 or pi, never
    // just below 2pi.
    open_session(1.0);
    // clang-format off
    const double h053_cases[][3] = {{1e-4, -1.0, kPi}, {-1e-12, -1.0, kPi}, {-1e-12, 1.0, 0.0},
        {-5e-5, 1.0, 0.0}, {-1.0, 0.0, kThreeHalfPi}, {1.0, 5e-5, kHalfPi},
        {-1.0, 1.0, std::atan(-1.0) + kTwoPi}, {1.0, -1.0, std::atan(-1.0) + kPi}};
    // clang-format on
    for (auto [s, c, want] : h053_cases) EXPECT_EQ(h053(s, c), want) << s << " " << c;
    EXPECT_NEAR(h053(-1.0, 1.0), 7 * kPi / 4, 4 * kEps);
    for (int k = 0; k < 100; ++k) {
        const double s = 100 * uni(), c = 100 * uni(), ref = std::atan2(s, c);
        EXPECT_NEAR(h053(s, c), ref < 0 ? ref + kTwoPi : ref, 16 * kEps) << s << " " << c;
    }

    // -pi/2 gives 3pi/2, p - r is snapped, a remainder just below p kept above one period,
    // no reduction for a negative or (tolerantly) zero period.
    // clang-format off
    const double h002_cases[][3] = {{-kHalfPi, kTwoPi, kTwoPi - kHalfPi},
        {kTwoPi - 1e-12, kTwoPi, 0.0}, {-(kTwoPi - 1e-12), kTwoPi, 0.0},
        {2 * kTwoPi + 1e-9, kTwoPi, 0.0}, {-7.0, kTwoPi, kTwoPi - std::fmod(7.0, kTwoPi)},
        {2 * kTwoPi - 1e-9, kTwoPi, std::fmod(2 * kTwoPi - 1e-9, kTwoPi)}, {7.0, -kTwoPi, 7.0},
        {7.0, 5e-5, 7.0}};
    // clang-format on
    for (auto [x, p, want] : h002_cases) EXPECT_EQ(h002(x, p), want) << x << " " << p;
    EXPECT_NEAR(h002(-kHalfPi, kTwoPi), kThreeHalfPi, 4 * kEps);
    // With a zero tolerance a remainder below half an ulp of p is not near 0, and p - r
    // rounds to p itself: p is the result, outside [0, p) (the rule is kept as it stands).
    const double saved = acom_.tolerance[0];
    acom_.tolerance[0] = 0.0;
    EXPECT_EQ(h002(-1e-300, kTwoPi), kTwoPi);
    EXPECT_EQ(h002(-0.0, kTwoPi), 0.0);
    acom_.tolerance[0] = saved;
}

TEST_F(Qxmath, VectorsMatricesSolvesAndFramesAgainstEigen)
{
    open_session(1.0, true);
    for (int k = 0; k < 100; ++k) {
        RowMat m = RowMat::Random(), t = RowMat::Constant(kNaN);
        const Vec v = vec(), b = vec(), c = vec(), d = vec();
        Vec w = Vec::Constant(kNaN);
        h100_(v.data(), m.data(), w.data());
        EXPECT_LE((w - m * v).norm(), 8 * kEps);
        h110_(m.data(), t.data());
        EXPECT_TRUE(t == m.transpose());

        double r = kNaN;
        h004_(v.data(), b.data(), c.data(), &r);
        EXPECT_EQ(r, v[0] * (b[1] * c[2] - b[2] * c[1]) - v[1] * (b[0] * c[2] - b[2] * c[0]) +
                         v[2] * (b[0] * c[1] - c[0] * b[1])); // bit for bit
        h301_(v.data(), b.data(), &r);
        EXPECT_NEAR(r, (v - b).norm(), 4 * kEps);
        h200_(v.data(), b.data(), &r);
        EXPECT_NEAR(r, (v - b).head<2>().squaredNorm(), 8 * kEps);

        const Vec u = vec().normalized();
        const double theta = uni(-10.0, 10.0);
        h923_(u.data(), &theta, t.data());
        EXPECT_LE((t - Eigen::AngleAxisd(theta, u).toRotationMatrix()).cwiseAbs().maxCoeff(),
                  8 * kEps);

        m << v, b, c; // columns: x0 v + x1 b + x2 c = d
        if (std::abs(m.determinant()) < 1e-3) continue;
        int status = -1;
        w.setConstant(kNaN);
        h015_(v.data(), b.data(), c.data(), d.data(), w.data(), &status);
        EXPECT_EQ(status, 1);
        EXPECT_LE((m * w - d).norm(), 1e-12) << k;
        EXPECT_LE((w - m.partialPivLu().solve(d)).norm(), 1e-11 * (1 + w.norm())) << k;
    }
    // h923_ does not normalise its axis.
    const double u[3] = {2.0, 0.0, 0.0}, theta = 0.5;
    double m[9];
    h923_(u, &theta, m);
    EXPECT_EQ(m[0], 2.0 * 2.0 * (1.0 - std::cos(0.5)) + std::cos(0.5));
    // Coplanar columns: status 2, x untouched.
    const double a[3] = {1, 0, 0}, b[3] = {0, 1, 0}, c[3] = {1, 1, 0}, d[3] = {1, 2, 3};
    double x[3] = {kNaN, kNaN, kNaN};
    int status = -1;
    h015_(a, b, c, d, x, &status);
    EXPECT_EQ(status, 2);
    EXPECT_TRUE(std::isnan(x[0]) && std::isnan(x[1]) && std::isnan(x[2]));

    // h099_: an orthonormal frame from a unit normal, Z as given, the |n.y| > 0.9 branch.
    auto frame = [](Vec n) {
        RowMat m = RowMat::Constant(kNaN);
        h099_(n.data(), m.data());
        return m;
    };
    EXPECT_EQ(frame({0.0, 1.0, 0.0}), RowMat({{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}})); // |n.y| > 0.9
    EXPECT_EQ(frame({0.0, 0.0, 2.0}), RowMat({{1, 0, 0}, {0, 2, 0}, {0, 0, 2}}));   // Z as given
    EXPECT_TRUE(frame({0.0, 0.0, 0.0}).isZero(0.0)); // null X: zeros, no failure
    for (int k = 0; k < 100; ++k) {
        const Vec n = vec().normalized();
        const RowMat m = frame(n);
        EXPECT_LE((m * m.transpose() - Eigen::Matrix3d::Identity()).norm(), 16 * kEps);
        EXPECT_NEAR(m.determinant(), 1.0, 16 * kEps);
        EXPECT_EQ(Vec(m.row(2)), n);
    }
}

struct Roots {
    double re[2] = {kNaN, kNaN}, im[2] = {kNaN, kNaN};
    int kind = -1, degree = -1, nreal = -1;
    std::tuple<int, int, int> counts() const { return {kind, degree, nreal}; }
};

Roots h014(double c0, double c1, double c2)
{
    Roots r;
    const double c[3] = {c0, c1, c2};
    h014_(c, r.re, r.im, &r.kind, &r.degree, &r.nreal);
    return r;
}

TEST_F(Qxmath, QuadraticRoots)
{
    open_session(1.0);
    // c0, c1, c2, kind, degree, nreal, re[0], re[1] (im always 0): identically zero, no root,
    // linear, a double root reported twice, huge coefficients scaled by the norm.
    // clang-format off
    const std::tuple<double, double, double, int, int, int, double, double> cases[] = {
        {0.0, 0.0, 0.0, 4, 0, 0, 0.0, 0.0}, {1e-12, 1e-12, 0.0, 4, 0, 0, 0.0, 0.0},
        {1.0, 0.0, 0.0, 1, 0, 0, 0.0, 0.0}, {-3.0, 1e-9, 0.0, 1, 0, 0, 0.0, 0.0},
        {2.0, 4.0, 0.0, 3, 1, 1, -0.5, 0.0}, {1.0, -2.0, 1.0, 3, 2, 2, 1.0, 1.0},
        {-6e200, 1e200, 1e200, 3, 2, 2, 2.0, -3.0}};
    // clang-format on
    for (auto [c0, c1, c2, kind, degree, nreal, x0, x1] : cases) {
        const Roots r = h014(c0, c1, c2);
        EXPECT_EQ(r.counts(), std::make_tuple(kind, degree, nreal)) << c0;
        EXPECT_TRUE(std::fabs(r.re[0] - x0) <= 8 * kEps && std::fabs(r.re[1] - x1) <= 8 * kEps &&
                    r.im[0] == 0.0 && r.im[1] == 0.0 &&
                    (nreal < 2 || x0 != x1 || r.re[0] == r.re[1]))
            << c0;
    }

    // Random quadratics (both kinds 2 and 3) against the closed form, with residuals.
    open_session(1.0, true);
    for (int k = 0; k < 200; ++k) {
        const double c0 = uni(), c1 = uni(), c2 = uni(0.1, 1.0) * (k % 2 ? 1 : -1);
        const Roots r = h014(c0, c1, c2);
        const double disc = c1 * c1 - 4 * c0 * c2;
        const cplx sq = std::sqrt(cplx(disc, 0.0));
        const cplx x[2] = {(-c1 + sq) / (2 * c2), (-c1 - sq) / (2 * c2)};
        ASSERT_EQ(r.counts(), disc < 0 ? std::make_tuple(2, 2, 0) : std::make_tuple(3, 2, 2));
        for (int j = 0; j < 2; ++j) {
            const cplx z(r.re[j], r.im[j]);
            EXPECT_LE(std::abs(z - x[j]), 1e-13) << k;
            EXPECT_LT(std::abs(c0 + c1 * z + c2 * z * z), 1e-13);
        }
    }
}

TEST_F(Qxmath, ComplexProductAndRoots)
{
    auto root = [](cplx z, int n) {
        cplx w(kNaN, kNaN);
        h018_(reinterpret_cast<const double *>(&z), &n, reinterpret_cast<double *>(&w));
        return w;
    };
    for (int k = 0; k < 200; ++k) {
        const cplx a(uni(), uni()), b(uni(), uni()), z = cplx(uni(), uni()) * 10.0;
        cplx c(kNaN, kNaN);
        h017_(reinterpret_cast<const double *>(&a), reinterpret_cast<const double *>(&b),
              reinterpret_cast<double *>(&c));
        EXPECT_LE(std::abs(c - a * b), 4 * kEps);
        const int n = 1 + k % 7;
        const cplx w = root(z, n);
        EXPECT_LE(std::abs(std::pow(w, n) - z), 64 * kEps * std::abs(z)) << k;
        const double arg = std::arg(w); // principal: argument in [0, 2pi/n)
        EXPECT_LT(arg < 0 ? arg + kTwoPi : arg, kTwoPi / n + 1e-14) << k;
    }
    // Axis cases use exact zero tests.
    EXPECT_EQ(root({0.0, 0.0}, 3), cplx(0.0, 0.0));
    EXPECT_EQ(root({4.0, 0.0}, 2), cplx(2.0, 0.0));
    EXPECT_EQ(root({-8.0, 0.0}, 3),
              std::pow(8.0, 1.0 / 3) * cplx(std::cos(kPi / 3), std::sin(kPi / 3)));
    EXPECT_EQ(root({0.0, -1.0}, 2), cplx(std::cos(kThreeHalfPi / 2), std::sin(kThreeHalfPi / 2)));
    const cplx w = root({1e-300, -1e-300}, 1); // tiny but non-zero: no tolerance
    EXPECT_LE(std::abs(w - cplx(1e-300, -1e-300)), 1e-314);
}

} // namespace
