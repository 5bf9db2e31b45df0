// The core primitives of the numbered routines (qxmath): tolerance edges and
// snapping orders, angle quadrants, and oracles (Eigen, std::complex, the
// closed forms) for the arithmetic routines.
#include <cmath>
#include <complex>
#include <random>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using qxtest::QxTest;

constexpr double kEps = 2.220446049250313e-16;
constexpr double kPi = 3.141592653589793;
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kThreeHalfPi = 4.71238898038469;
constexpr double kTwoPi = 6.283185307179586;

using RowMat = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;

class Qxmath : public QxTest
{
  protected:
    std::mt19937_64 rng{20261122};
    double uni(double lo = -1.0, double hi = 1.0)
    {
        return std::uniform_real_distribution<double>(lo, hi)(rng);
    }
    Eigen::Vector3d vec() { return {uni(), uni(), uni()}; }
};

int h805(double a, double b, int i)
{
    int eq = -1;
    h805_(&a, &b, &i, &eq);
    return eq;
}

// h804_ or h809_ as (result, x after).
template <auto F> std::pair<int, double> classify(double x, double lo, double hi, int i)
{
    const double lim[2] = {lo, hi};
    int out = -1;
    F(&x, lim, &i, &out);
    return {out, x};
}
auto h804(double x, double lo, double hi, int i = 0) { return classify<h804_>(x, lo, hi, i); }
auto h809(double x, double lo, double hi, int i = 0) { return classify<h809_>(x, lo, hi, i); }

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

TEST_F(Qxmath, ToleranceComparisons)
{
    open_session(1.0);                  // tol[0] = tol[1] = 1e-4
    EXPECT_EQ(h805(1.0e-4, 0.0, 0), 1); // exactly at the tolerance: equal
    EXPECT_EQ(h805(std::nextafter(1.0e-4, 1.0), 0.0, 0), 0);
    EXPECT_EQ(h805(0.0, 1.0e-4, 1), 1);
    acom_.tolerance[3] = -0.5; // a negative entry acts as its magnitude
    EXPECT_EQ(h805(0.0, 0.5, 3), 1);
    EXPECT_EQ(h805(0.0, 0.5000001, 3), 0);
    // An index outside the table compares exactly.
    for (int i : {-1, 8, 1 << 30}) {
        EXPECT_EQ(h805(2.5, 2.5, i), 1) << i;
        EXPECT_EQ(h805(2.5, std::nextafter(2.5, 3.0), i), 0) << i;
        EXPECT_EQ(h804(1.0 + 1e-12, 1.0, 2.0, i), std::make_pair(3, 1.0 + 1e-12)) << i;
    }

    double a = 1.0, b = 1.25, t = -0.25;
    int eq = -1;
    h806_(&a, &b, &t, &eq);
    EXPECT_EQ(eq, 1);
    t = std::nextafter(0.25, 0.0);
    h806_(&a, &b, &t, &eq);
    EXPECT_EQ(eq, 0);

    // h206_ compares t with the squared XY distance (0.25 here, distance 0.5);
    // 2-D points of two doubles: z is never read.
    const double p[2] = {1.0, 1.0}, q[2] = {1.3, 1.4};
    for (auto [tt, want] : {std::pair{0.3, 1}, {0.26, 1}, {-0.26, 1}, {0.2, 0}, {0.24, 0}}) {
        h206_(p, q, &tt, &eq);
        EXPECT_EQ(eq, want) << tt;
    }
}

TEST_F(Qxmath, IntervalClassificationAndSnapping)
{
    open_session(1.0);
    const double lo = 1.0, hi = 2.0, tol = 1.0e-4;
    EXPECT_EQ(h804(lo - tol / 2, lo, hi), std::make_pair(2, lo)); // snapped exactly
    EXPECT_EQ(h804(0.5, lo, hi), std::make_pair(1, 0.5));
    EXPECT_EQ(h804(1.5, lo, hi), std::make_pair(3, 1.5));
    EXPECT_EQ(h804(hi + tol / 2, lo, hi), std::make_pair(4, hi));
    EXPECT_EQ(h804(hi - tol / 2, lo, hi), std::make_pair(4, hi));
    EXPECT_EQ(h804(2.5, lo, hi), std::make_pair(5, 2.5));
    // Both ends within tolerance: lo is tested first.
    EXPECT_EQ(h804(3.0e-5, 0.0, 5.0e-5), std::make_pair(2, 0.0));
    EXPECT_EQ(h804(6.0e-5, 0.0, 5.0e-5), std::make_pair(2, 0.0));

    EXPECT_EQ(h809(1.5, lo, hi), std::make_pair(1, 1.5));
    EXPECT_EQ(h809(lo + tol / 2, lo, hi), std::make_pair(1, lo + tol / 2)); // inside: kept
    EXPECT_EQ(h809(lo - tol / 2, lo, hi), std::make_pair(1, lo));
    EXPECT_EQ(h809(hi + 0.9 * tol, lo, hi), std::make_pair(1, hi));
    EXPECT_EQ(h809(hi + 2 * tol, lo, hi), std::make_pair(0, hi + 2 * tol));
    EXPECT_EQ(h809(3.0e-5, 5.0e-5, 0.0), std::make_pair(1, 5.0e-5)); // lo before hi

    // h000_ keeps a divisor away from zero; the unset marker disables it.
    const double in[] = {5e-5, -5e-5, 0.0, -0.0, 1e-4, -2e-4, 0.5};
    const double out[] = {1e-4, -1e-4, 1e-4, 1e-4, 1e-4, -2e-4, 0.5};
    for (int k = 0; k < 7; ++k) {
        double x = in[k];
        h000_(&x);
        EXPECT_EQ(x, out[k]) << in[k];
    }
    const int mode = 0;
    sys10_(&mode);
    double x = 0.0;
    h000_(&x);
    EXPECT_EQ(x, 0.0);
}

TEST_F(Qxmath, AngleFromSineAndCosine)
{
    open_session(1.0); // the cases below assume the number tolerance 1e-4
    EXPECT_EQ(h053(1e-12, -1.0), kPi);
    EXPECT_EQ(h053(-1e-12, 1.0), 0.0); // not just below 2pi
    EXPECT_EQ(h053(-5e-5, 1.0), 0.0);
    EXPECT_EQ(h053(-1.0, 0.0), kThreeHalfPi);
    EXPECT_EQ(h053(1.0, 5e-5), kHalfPi);
    EXPECT_EQ(h053(-1.0, 1.0), std::atan(-1.0) + kTwoPi);
    EXPECT_NEAR(h053(-1.0, 1.0), 7 * kPi / 4, 4 * kEps);
    EXPECT_EQ(h053(1.0, -1.0), std::atan(-1.0) + kPi);
    EXPECT_EQ(h053(-1.0, -1.0), std::atan(1.0) + kPi);
    for (int k = 0; k < 200; ++k) {
        const double s = 100 * uni(), c = 100 * uni();
        const double a = h053(s, c);
        ASSERT_GE(a, 0.0);
        ASSERT_LT(a, kTwoPi);
        double ref = std::atan2(s, c);
        if (ref < 0) ref += 2 * M_PI;
        EXPECT_NEAR(a, ref, 16 * kEps) << s << " " << c;
    }
}

TEST_F(Qxmath, PeriodicReduction)
{
    open_session(1.0);
    EXPECT_EQ(h002(-kHalfPi, kTwoPi), kTwoPi - kHalfPi);
    EXPECT_NEAR(h002(-kHalfPi, kTwoPi), kThreeHalfPi, 4 * kEps);
    EXPECT_EQ(h002(kTwoPi - 1e-12, kTwoPi), 0.0);
    EXPECT_EQ(h002(-(kTwoPi - 1e-12), kTwoPi), 0.0); // p - r snapped
    EXPECT_EQ(h002(7.0, kTwoPi), std::fmod(7.0, kTwoPi));
    EXPECT_EQ(h002(2 * kTwoPi + 1e-9, kTwoPi), 0.0);
    EXPECT_EQ(h002(-7.0, kTwoPi), kTwoPi - std::fmod(7.0, kTwoPi));
    // Above one period a remainder just below p is kept, not snapped.
    const double r = h002(2 * kTwoPi - 1e-9, kTwoPi);
    EXPECT_EQ(r, std::fmod(2 * kTwoPi - 1e-9, kTwoPi));
    EXPECT_GT(r, kTwoPi - 1e-8);
    // No reduction for a negative or (tolerantly) zero period.
    EXPECT_EQ(h002(7.0, -kTwoPi), 7.0);
    EXPECT_EQ(h002(7.0, 5e-5), 7.0);
    EXPECT_EQ(h002(-7.0, 0.0), -7.0);
}

TEST_F(Qxmath, VectorsAndMatricesAgainstEigen)
{
    for (int k = 0; k < 100; ++k) {
        RowMat m = RowMat::Random();
        const Eigen::Vector3d v = vec(), b = vec(), c = vec();
        Eigen::Vector3d w = Eigen::Vector3d::Constant(kNaN);
        h100_(v.data(), m.data(), w.data());
        EXPECT_LE((w - m * v).norm(), 8 * kEps) << k;

        RowMat t = RowMat::Constant(kNaN);
        h110_(m.data(), t.data());
        EXPECT_TRUE(t == m.transpose());

        double d = kNaN;
        h004_(v.data(), b.data(), c.data(), &d);
        const double *a = v.data(), *bb = b.data(), *cc = c.data();
        const double literal = a[0] * (bb[1] * cc[2] - bb[2] * cc[1]) -
                               a[1] * (bb[0] * cc[2] - bb[2] * cc[0]) +
                               a[2] * (bb[0] * cc[1] - cc[0] * bb[1]);
        EXPECT_EQ(d, literal); // bit for bit
        EXPECT_NEAR(d, v.dot(b.cross(c)), 16 * kEps);

        h301_(v.data(), b.data(), &d);
        EXPECT_NEAR(d, (v - b).norm(), 4 * kEps);
        h200_(v.data(), b.data(), &d);
        EXPECT_NEAR(d, (v - b).head<2>().squaredNorm(), 8 * kEps);
    }
}

TEST_F(Qxmath, AxisRotationAgainstEigen)
{
    for (int k = 0; k < 200; ++k) {
        const Eigen::Vector3d u = vec().normalized();
        const double theta = uni(-10.0, 10.0);
        RowMat m = RowMat::Constant(kNaN);
        h923_(u.data(), &theta, m.data());
        const Eigen::Matrix3d ref = Eigen::AngleAxisd(theta, u).toRotationMatrix();
        EXPECT_LE((m - ref).cwiseAbs().maxCoeff(), 8 * kEps) << k;
    }
    // The axis is not normalised.
    const double u[3] = {2.0, 0.0, 0.0}, theta = 0.5;
    double m[9];
    h923_(u, &theta, m);
    EXPECT_EQ(m[0], 2.0 * 2.0 * (1.0 - std::cos(0.5)) + std::cos(0.5));
    EXPECT_EQ(m[7], 2.0 * std::sin(0.5));
}

TEST_F(Qxmath, FrameFromNormal)
{
    open_session(1.0, true);
    auto frame = [](Eigen::Vector3d n) {
        RowMat m = RowMat::Constant(kNaN);
        h099_(n.data(), m.data());
        return m;
    };
    auto m = frame({0.0, 1.0, 0.0}); // first branch
    EXPECT_TRUE(m == RowMat({{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}})) << m;
    m = frame({0.0, 0.0, 2.0}); // Z kept as given
    EXPECT_TRUE(m == RowMat({{1, 0, 0}, {0, 2, 0}, {0, 0, 2}})) << m;
    m = frame({0.0, 0.0, 0.0}); // null X: zeros, no failure
    EXPECT_TRUE(m.isZero(0.0));
    for (int k = 0; k < 100; ++k) {
        const Eigen::Vector3d n = vec().normalized();
        m = frame(n);
        EXPECT_LE((m * m.transpose() - Eigen::Matrix3d::Identity()).norm(), 16 * kEps);
        EXPECT_NEAR(m.determinant(), 1.0, 16 * kEps);
        EXPECT_EQ(Eigen::Vector3d(m.row(2)), n);
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
    Roots r = h014(1.0, 0.0, 1.0);
    EXPECT_EQ(r.counts(), std::make_tuple(2, 2, 0));
    EXPECT_TRUE(r.re[0] == 0.0 && r.re[1] == 0.0);
    EXPECT_NEAR(r.im[0], 1.0, 4 * kEps);
    EXPECT_EQ(r.im[1], -r.im[0]);

    for (auto [c0, c1, c2, kind] : {std::tuple{0.0, 0.0, 0.0, 4},
                                    {1e-12, 1e-12, 0.0, 4},
                                    {1.0, 0.0, 0.0, 1},
                                    {-3.0, 1e-9, 0.0, 1}}) {
        r = h014(c0, c1, c2);
        EXPECT_EQ(r.counts(), std::make_tuple(kind, 0, 0)) << c0;
        EXPECT_TRUE(r.re[0] == 0.0 && r.re[1] == 0.0 && r.im[0] == 0.0 && r.im[1] == 0.0);
    }
    r = h014(2.0, 4.0, 0.0);
    EXPECT_EQ(r.counts(), std::make_tuple(3, 1, 1));
    EXPECT_NEAR(r.re[0], -0.5, 2 * kEps);
    EXPECT_EQ(r.re[1], 0.0);

    r = h014(1.0, -2.0, 1.0); // double root reported twice
    EXPECT_EQ(r.counts(), std::make_tuple(3, 2, 2));
    EXPECT_EQ(r.re[0], r.re[1]);
    EXPECT_NEAR(r.re[0], 1.0, 4 * kEps);

    r = h014(-6e200, 1e200, 1e200); // scaled by the norm: no overflow
    EXPECT_EQ(r.kind, 3);
    EXPECT_NEAR(r.re[0], 2.0, 8 * kEps);
    EXPECT_NEAR(r.re[1], -3.0, 8 * kEps);

    // Random quadratics: roots from the closed form, and small residuals.
    open_session(1.0, true);
    for (int k = 0; k < 200; ++k) {
        const double c0 = uni(), c1 = uni(), c2 = uni(0.1, 1.0) * (k % 2 ? 1 : -1);
        r = h014(c0, c1, c2);
        const double disc = c1 * c1 - 4 * c0 * c2;
        const std::complex<double> sq = std::sqrt(std::complex<double>(disc, 0.0));
        const std::complex<double> x0 = (-c1 + sq) / (2 * c2), x1 = (-c1 - sq) / (2 * c2);
        ASSERT_EQ(r.kind, disc < 0 ? 2 : 3) << k;
        EXPECT_NEAR(r.re[0], x0.real(), 1e-13);
        EXPECT_NEAR(r.re[1], x1.real(), 1e-13);
        EXPECT_NEAR(r.im[0], x0.imag(), 1e-13);
        EXPECT_NEAR(r.im[1], x1.imag(), 1e-13);
        for (int j = 0; j < 2; ++j) {
            const std::complex<double> x(r.re[j], r.im[j]);
            EXPECT_LT(std::abs(c0 + c1 * x + c2 * x * x), 1e-13);
        }
    }
}

TEST_F(Qxmath, CramerSolveAgainstEigen)
{
    open_session(1.0, true);
    for (int k = 0; k < 100; ++k) {
        const Eigen::Vector3d a = vec(), b = vec(), c = vec(), d = vec();
        Eigen::Matrix3d m;
        m << a, b, c;
        if (std::abs(m.determinant()) < 1e-3) continue;
        Eigen::Vector3d x = Eigen::Vector3d::Constant(kNaN);
        int status = -1;
        h015_(a.data(), b.data(), c.data(), d.data(), x.data(), &status);
        EXPECT_EQ(status, 1);
        const Eigen::Vector3d ref = m.partialPivLu().solve(d);
        EXPECT_LE((x - ref).norm(), 1e-11 * (1 + ref.norm())) << k;
        EXPECT_LE((m * x - d).norm(), 1e-12) << k;
    }
    const double a[3] = {1, 0, 0}, b[3] = {0, 1, 0}, c[3] = {1, 1, 0}, d[3] = {1, 2, 3};
    double x[3] = {kNaN, kNaN, kNaN};
    int status = -1;
    h015_(a, b, c, d, x, &status);
    EXPECT_EQ(status, 2);
    EXPECT_TRUE(std::isnan(x[0]) && std::isnan(x[1]) && std::isnan(x[2]));
}

TEST_F(Qxmath, ComplexProductAndRoots)
{
    for (int k = 0; k < 200; ++k) {
        const std::complex<double> a(uni(), uni()), b(uni(), uni());
        double c[2] = {kNaN, kNaN};
        h017_(reinterpret_cast<const double *>(&a), reinterpret_cast<const double *>(&b), c);
        const std::complex<double> ref = a * b;
        EXPECT_NEAR(c[0], ref.real(), 4 * kEps);
        EXPECT_NEAR(c[1], ref.imag(), 4 * kEps);

        const std::complex<double> z = std::complex<double>(uni(), uni()) * 10.0;
        const int n = 1 + k % 7;
        std::complex<double> w(kNaN, kNaN);
        h018_(reinterpret_cast<const double *>(&z), &n, reinterpret_cast<double *>(&w));
        EXPECT_LE(std::abs(std::pow(w, n) - z), 64 * kEps * std::abs(z)) << k;
        double arg = std::arg(w); // principal: argument in [0, 2pi/n)
        if (arg < 0) arg += 2 * M_PI;
        EXPECT_LT(arg, 2 * M_PI / n + 1e-14) << k;
    }
    // Axis cases use exact zero tests.
    auto root = [](double re, double im, int n) {
        const double z[2] = {re, im};
        std::complex<double> w(kNaN, kNaN);
        h018_(z, &n, reinterpret_cast<double *>(&w));
        return w;
    };
    EXPECT_EQ(root(0.0, 0.0, 3), std::complex<double>(0.0, 0.0));
    EXPECT_EQ(root(4.0, 0.0, 2), std::complex<double>(2.0, 0.0));
    std::complex<double> w = root(-8.0, 0.0, 3);
    EXPECT_EQ(w,
              std::pow(8.0, 1.0 / 3) * std::complex<double>(std::cos(kPi / 3), std::sin(kPi / 3)));
    w = root(0.0, -1.0, 2);
    EXPECT_EQ(w, std::complex<double>(std::cos(kThreeHalfPi / 2), std::sin(kThreeHalfPi / 2)));
    w = root(1e-300, -1e-300, 1); // tiny but non-zero: quadrant rules, no tolerance
    EXPECT_NEAR(w.real(), 1e-300, 1e-314);
    EXPECT_NEAR(w.imag(), -1e-300, 1e-314);
}

} // namespace
