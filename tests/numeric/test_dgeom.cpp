// Differential geometry: curves against the helix, circles and a line;
// the curvature variation against a difference quotient on a curve of
// varying speed; surfaces against sphere, cylinder, saddle, plane and the
// shape operator solved by Eigen (with the library's negated mean curvature
// and its two normal-curvature signs); degenerate and unguarded inputs.
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using V3 = std::array<double, 3>;
using qxtest::kNaN;
constexpr double kEps = 2.220446049250313e-16;

class Dgeom : public qxtest::QxTest
{
};

void expect_all(const double *got, const std::vector<double> &want, double tol, const char *what)
{
    for (size_t i = 0; i < want.size(); ++i)
        EXPECT_NEAR(got[i], want[i], tol) << what << " [" << i << "]";
}

TEST_F(Dgeom, HelixCurvatureTorsionAndFrenetFrame)
{
    // (a cos t, a sin t, b t): kappa = a/(a^2+b^2), tau = b/(a^2+b^2).
    for (const V3 h : {V3{1.0, 0.5, 0.3}, V3{3.0, -2.0, 2.0}, V3{0.2, 4.0, -1.1}}) {
        const double a = h[0], b = h[1], ct = std::cos(h[2]), st = std::sin(h[2]);
        const double c2 = a * a + b * b, c = std::sqrt(c2), kap = a / c2, tau = b / c2;
        const double d1[3] = {-a * st, a * ct, b}, d2[3] = {-a * ct, -a * st, 0},
                     d3[3] = {a * st, -a * ct, 0}, tol = 64 * kEps;
        double k[3], out[3], f[11], v[3];
        EXPECT_NEAR(DGEOM_crv_curvature(d1, d2, k), kap, tol);
        expect_all(k, {-kap * ct, -kap * st, 0}, tol, "curvature vector");
        EXPECT_NEAR(DGEOM_crv_torsion(d1, d2, d3, out), tau, tol);
        expect_all(out, {tau * ct, tau * st, 0}, tol, "torsion vector, -tau n");
        std::fill(f, f + 11, kNaN);
        DGEOM_crv_diff_property(d1, d2, d3, 1, f);
        expect_all(
            f,
            {-a * st / c, a * ct / c, b / c, b * st / c, -b * ct / c, a / c, -ct, -st, 0, kap, tau},
            tol, "Frenet record");
        // Torsion only for want_torsion exactly 1 (d3 then unread).
        const double nan3[3] = {kNaN, kNaN, kNaN};
        DGEOM_crv_diff_property(d1, d2, nan3, 2, f);
        EXPECT_EQ(f[10], 0.0);
        DGEOM_crv_curvature_variation(d1, d2, d3, v);
        expect_all(v, {kap * st / c, -kap * ct / c, 0}, tol, "d(kappa n)/ds");
    }
}

TEST_F(Dgeom, CirclesLineAndDegenerateCurves)
{
    const double d1[3] = {0, 2, 0}, d2[3] = {-2, 0, 0};
    double k[3], r[3], f[11], v[3];
    EXPECT_EQ(DGEOM_crv_curvature(d1, d2, k), 0.5);
    DGEOM_convert_crvatr_to_radius(k, r);
    expect_all(k, {-0.5, 0, 0}, 0, "radius 2");
    expect_all(r, {-2, 0, 0}, 0, "radius vector");
    for (double R : {1e-3, 0.7, 5.0, 1e4})
        for (double w : {0.1, 1.0, 30.0}) {
            const double c = std::cos(0.4 * w), s = std::sin(0.4 * w);
            const double e1[3] = {-R * w * s, R * w * c, 0},
                         e2[3] = {-R * w * w * c, -R * w * w * s, 0};
            EXPECT_NEAR(DGEOM_crv_curvature(e1, e2, k), 1 / R, 32 * kEps / R);
            DGEOM_convert_crvatr_to_radius(k, r);
            expect_all(r, {-R * c, -R * s, 0}, 32 * kEps * R, "centre - point");
        }
    // A straight line: zero curvature and torsion, only the tangent set.
    const double l1[3] = {1, 2, -2}, l2[3] = {2, 4, -4}, l3[3] = {0.5, 1, 7};
    EXPECT_EQ(DGEOM_crv_curvature(l1, l2, k), 0.0);
    EXPECT_EQ(DGEOM_crv_torsion(l1, l2, l3, r), 0.0);
    expect_all(k, {0, 0, 0}, 0, "line");
    expect_all(r, {0, 0, 0}, 0, "line torsion");
    std::fill(f, f + 11, kNaN);
    DGEOM_crv_diff_property(l1, l2, l3, 1, f);
    expect_all(f, {1.0 / 3, 2.0 / 3, -2.0 / 3, 0, 0, 0, 0, 0, 0, 0, 0}, kEps, "line frame");
    // A curvature below 1.0e-10 is stored as 0, the frame still set.
    const double s1[3] = {1e3, 0, 0}, s2[3] = {0, 1e-5, 0};
    DGEOM_crv_diff_property(s1, s2, l3, 0, f);
    expect_all(f + 3, {0, 0, 1, 0, 1, 0, 0}, 0, "flat curve");
    // |d1| < 1.0e-10: zeros everywhere; the variation is not evaluated.
    const double z1[3] = {9e-11, 0, 0};
    std::fill(f, f + 11, kNaN);
    std::fill(v, v + 3, kNaN);
    DGEOM_crv_diff_property(z1, d2, l3, 1, f);
    DGEOM_crv_curvature_variation(z1, d2, l3, v);
    EXPECT_EQ(DGEOM_crv_curvature(z1, d2, k), 0.0);
    expect_all(f, std::vector<double>(11, 0.0), 0, "stopped curve");
    expect_all(v, {0, 0, 0}, 0, "stopped curve variation");
    expect_all(k, {0, 0, 0}, 0, "stopped curve curvature");
}

// With varying speed (d1.d2 != 0) the variation is d k/dt / |d1|.
TEST_F(Dgeom, CurvatureVariationIsTheArcLengthDerivative)
{
    auto derivs = [](double t, double *d) { // (t + t^3/3, t^2 - t^4/10, sin t)
        const double v[9] = {1 + t * t,
                             2 * t - 0.4 * t * t * t,
                             std::cos(t),
                             2 * t,
                             2 - 1.2 * t * t,
                             -std::sin(t),
                             2.0,
                             -2.4 * t,
                             -std::cos(t)};
        std::copy(v, v + 9, d);
    };
    for (double t : {-1.3, 0.0, 0.4, 2.2}) {
        double d[9], v[3], kp[3], km[3];
        const double h = 1e-5;
        derivs(t + h, d);
        DGEOM_crv_curvature(d, d + 3, kp);
        derivs(t - h, d);
        DGEOM_crv_curvature(d, d + 3, km);
        derivs(t, d);
        DGEOM_crv_curvature_variation(d, d + 3, d + 6, v);
        const double speed = std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(v[i], (kp[i] - km[i]) / (2 * h) / speed, 1e-8);
    }
}

TEST_F(Dgeom, ConversionsRoundTripAndDivideByZero)
{
    std::mt19937 gen(813);
    std::uniform_real_distribution<double> u(-10, 10);
    for (int rep = 0; rep < 200; ++rep) {
        double k[3] = {u(gen), u(gen), u(gen)}, r[3], back[3], d1[3] = {u(gen), u(gen), u(gen)};
        DGEOM_convert_crvatr_to_radius(k, r);
        DGEOM_convert_radius_to_crvatr(r, back);
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(back[i], k[i], 8 * kEps * std::fabs(k[i]));
        EXPECT_EQ(r[1], k[1] / (k[0] * k[0] + k[1] * k[1] + k[2] * k[2])); // the formula's bits
        // d2 = |d1|^2 k; with k normal to d1 the curvature of (d1, d2) is k.
        const double p = (k[0] * d1[0] + k[1] * d1[1] + k[2] * d1[2]) /
                         (d1[0] * d1[0] + d1[1] * d1[1] + d1[2] * d1[2]);
        for (int i = 0; i < 3; ++i) k[i] -= p * d1[i];
        DGEOM_convert_crvatr_to_deriv2(d1, k, r);
        DGEOM_crv_curvature(d1, r, back);
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(back[i], k[i], 1e-12 * (1 + std::fabs(k[i])));
    }
    const double zero[3] = {0, 0, 0}; // unguarded: divides by zero
    double r[3];
    DGEOM_convert_crvatr_to_radius(zero, r);
    EXPECT_TRUE(std::isnan(r[0]));
    DGEOM_convert_radius_to_crvatr(zero, r);
    EXPECT_TRUE(std::isnan(r[2]));
}

struct Surface {
    V3 su, sv, suu, suv, svv;
    int curvatures(int want, double *rec) const
    {
        return DGEOM_srf_curvatures(su.data(), sv.data(), suu.data(), suv.data(), svv.data(), want,
                                    rec);
    }
    double kn(const V3 &n, const V3 &d) const
    {
        double k = kNaN;
        EXPECT_EQ(DGEOM_srf_normal_curvature(su.data(), sv.data(), suu.data(), suv.data(),
                                             svv.data(), n.data(), d.data(), &k),
                  0);
        return k;
    }
};

TEST_F(Dgeom, SphereCylinderSaddlePlane)
{
    double rec[7];
    const double u = 0.7, v = -0.4, cu = std::cos(u), su = std::sin(u), cv = std::cos(v),
                 sv = std::sin(v);
    for (double R : {0.5, 2.0, 40.0}) { // Su x Sv points outward
        const Surface s{{-R * su * cv, R * cu * cv, 0},
                        {-R * cu * sv, -R * su * sv, R * cv},
                        {-R * cu * cv, -R * su * cv, 0},
                        {R * su * sv, -R * cu * sv, 0},
                        {-R * cu * cv, -R * su * cv, -R * sv}};
        ASSERT_EQ(s.curvatures(1, rec), 0);
        const double tol = 64 * kEps / (R * R);
        // K = 1/R^2; H, principal values, u and v curvatures +1/R (negated).
        expect_all(rec, {1 / (R * R), 1 / R, 1 / R, 1 / R, 1 / R, 1 / R, 1 / R}, tol, "sphere");
        // Positive L in the normal curvature: -1/R in every direction.
        for (const V3 &d : {s.su, s.sv, V3{s.su[0] + s.sv[0], s.su[1] + s.sv[1], 3}})
            EXPECT_NEAR(s.kn({cu * cv, su * cv, sv}, d), -1 / R, tol);
    }
    // Cylinder (R cos u, R sin u, v); Euler: kn = -cos^2(theta)/R.
    const double R = 3.0;
    const Surface c{{-R * su, R * cu, 0}, {0, 0, 1}, {-R * cu, -R * su, 0}, {0, 0, 0}, {0, 0, 0}};
    ASSERT_EQ(c.curvatures(1, rec), 0);
    expect_all(rec, {0, 1 / (2 * R), 0, 1 / R, 1 / (2 * R), 1 / R, 0}, 1e-15, "cylinder");
    for (double th : {0.0, 0.5, 1.2, M_PI / 2})
        EXPECT_NEAR(c.kn({cu, su, 0}, {-std::cos(th) * su, std::cos(th) * cu, std::sin(th)}),
                    -std::cos(th) * std::cos(th) / R, 1e-15);
    // Saddle z = uv at the origin; plane; want_principal 0 writes K, H only.
    const Surface sd{{1, 0, 0}, {0, 1, 0}, {0, 0, 0}, {0, 0, 1}, {0, 0, 0}};
    ASSERT_EQ(sd.curvatures(1, rec), 0);
    expect_all(rec, {-1, 0, -1, 1, 1, 0, 0}, 0, "saddle");
    EXPECT_EQ(sd.kn({0, 0, 1}, {1, 1, 0}), 1.0);
    EXPECT_EQ(sd.kn({0, 0, 1}, {2, -2, 5}), -1.0);
    const Surface pl{{1, 0, 0}, {0, 1, 0}, {0, 0, 0}, {0, 0, 0}, {0, 0, 0}};
    ASSERT_EQ(pl.curvatures(1, rec), 0);
    expect_all(rec, std::vector<double>(7, 0.0), 0, "plane");
    std::fill(rec, rec + 7, kNaN);
    ASSERT_EQ(sd.curvatures(0, rec), 0);
    EXPECT_EQ(rec[0], -1.0);
    for (int i = 2; i < 7; ++i) EXPECT_TRUE(std::isnan(rec[i])) << i;

    // Su parallel to Sv, and D just below 1.0e-10: 1, record untouched, kn 0.
    const double a = std::sqrt(1e-5) * 0.999;
    for (const Surface &bad : {Surface{{1, 2, 0}, {2, 4, 0}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}},
                               Surface{{a, 0, 0}, {0, a, 0}, {0, 0, 1}, {0, 0, 0}, {0, 0, 1}}}) {
        EXPECT_EQ(bad.curvatures(1, rec), 1);
        EXPECT_TRUE(std::isnan(rec[2]));
        EXPECT_EQ(bad.kn({0, 0, 1}, {1, 0, 0}), 0.0);
    }
    // A direction along the normal, or without tangent component: 0.
    const Surface t{{1, 0, 0}, {0, 1, 0}, {0, 0, 2}, {0, 0, 1}, {0, 0, 0}};
    EXPECT_EQ(t.kn({0, 0, 1}, {0, 0, -3}), 0.0);
    EXPECT_EQ(t.kn({1, 0, 0}, {0, 0, 1}), 0.0);
    EXPECT_EQ(t.kn({0, 0, 1}, {1, 0, 0}), 2.0);
}

// Graphs z = f(u, v) at random points against the shape operator I^-1 II
// (textbook sign): K its determinant, the library's H minus half its
// trace, the principal values the negated eigenvalues.
TEST_F(Dgeom, RandomGraphsAgainstShapeOperator)
{
    std::mt19937 gen(37);
    std::uniform_real_distribution<double> c(-2, 2);
    for (int rep = 0; rep < 100; ++rep) {
        const double a = c(gen), b = c(gen), e = c(gen), u = c(gen) / 2, v = c(gen) / 2;
        // f = a u^2 + b u v + e v^2 + u^3 v
        const double fu = 2 * a * u + b * v + 3 * u * u * v, fv = b * u + 2 * e * v + u * u * u;
        const double fuu = 2 * a + 6 * u * v, fuv = b + 3 * u * u, fvv = 2 * e;
        const Surface s{{1, 0, fu}, {0, 1, fv}, {0, 0, fuu}, {0, 0, fuv}, {0, 0, fvv}};
        const Eigen::Vector3d su(1, 0, fu), sv(0, 1, fv), n = su.cross(sv).normalized();
        Eigen::Matrix2d I, II;
        I << su.dot(su), su.dot(sv), su.dot(sv), sv.dot(sv);
        II << fuu * n.z(), fuv * n.z(), fuv * n.z(), fvv * n.z();
        const Eigen::Matrix2d shape = I.inverse() * II;
        Eigen::Vector2d ev = shape.eigenvalues().real();
        std::sort(ev.data(), ev.data() + 2);
        double rec[7];
        ASSERT_EQ(s.curvatures(1, rec), 0);
        const double tol = 1e-12 * (1 + ev.cwiseAbs().maxCoeff());
        // Near-umbilic points (|H^2 - K| <= 1e-10) collapse the root to 0.
        const double gap = std::fabs(rec[1] * rec[1] - rec[0]) <= 1e-10 ? 1e-5 : tol;
        expect_all(rec, {shape.determinant(), -shape.trace() / 2}, tol, "K, H");
        expect_all(rec + 2, {-ev[1], -ev[0], (std::fabs(ev[0]) + std::fabs(ev[1])) / 2}, gap,
                   "principal");
        expect_all(rec + 5, {-II(0, 0) / I(0, 0), -II(1, 1) / I(1, 1)}, tol, "along u, v");
        for (const Eigen::Vector2d &w : {Eigen::Vector2d(1, 0), Eigen::Vector2d(0.3, -1.7)}) {
            const Eigen::Vector3d d = w.x() * su + w.y() * sv;
            EXPECT_NEAR(s.kn({n.x(), n.y(), n.z()}, {d.x(), d.y(), d.z()}),
                        w.dot(II * w) / w.dot(I * w), tol);
        }
    }
}

} // namespace
