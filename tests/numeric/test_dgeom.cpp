// Differential geometry against analytic curves (helix, circles, a line, a
// curve of varying speed; conversions as round trips) and surfaces (sphere, cylinder, saddle,
// plane, and random graphs against Eigen's shape operator I^-1 II), with the library's signs: H and
// the u, v normal curvatures negated, L positive in kn.
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using V3 = std::array<double, 3>;
using Srf = std::array<V3, 5>; // Su, Sv, Suu, Suv, Svv
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

TEST_F(Dgeom, HelixCirclesLineAndDegenerateCurves)
{
    // Helix (a cos t, a sin t, b t): kappa = a/(a^2+b^2), tau = b/(a^2+b^2).
    for (const V3 h : {V3{1.0, 0.5, 0.3}, V3{3.0, -2.0, 2.0}}) {
        const double a = h[0], b = h[1], ct = std::cos(h[2]), st = std::sin(h[2]);
        const double c2 = a * a + b * b, c = std::sqrt(c2), kap = a / c2, tau = b / c2;
        const double d1[3] = {-a * st, a * ct, b}, d2[3] = {-a * ct, -a * st, 0},
                     d3[3] = {a * st, -a * ct, 0}, nan3[3] = {kNaN, kNaN, kNaN}, tol = 64 * kEps;
        double k[3], out[3], f[11];
        EXPECT_NEAR(DGEOM_crv_curvature(d1, d2, k), kap, tol);
        expect_all(k, {-kap * ct, -kap * st, 0}, tol, "curvature vector");
        EXPECT_NEAR(DGEOM_crv_torsion(d1, d2, d3, out), tau, tol);
        expect_all(out, {tau * ct, tau * st, 0}, tol, "torsion vector, -tau n");
        std::fill(f, f + 11, kNaN);
        DGEOM_crv_diff_property(d1, d2, d3, 1, f);
        expect_all(f, {-a * st / c, a * ct / c, b / c, b * st / c, -b * ct / c, a / c, -ct, -st},
                   tol, "t, b, n");
        expect_all(f + 8, {0, kap, tau}, tol, "kappa, tau");
        DGEOM_crv_diff_property(d1, d2, nan3, 2, f); // torsion only for exactly 1
        EXPECT_EQ(f[10], 0.0);
    }
    // Circles: curvature 1/R (exact for R = 2); the three conversions as
    // round trips: radius vector centre - point and back, d2 = |d1|^2 k.
    double k[3], r[3], back[3], f[11], v[3] = {kNaN, kNaN, kNaN};
    for (double R : {2.0, 1e-3, 1e4}) {
        const double c = R == 2.0 ? 1 : std::cos(2.0), s = R == 2.0 ? 0 : std::sin(2.0);
        const double e1[3] = {-R * s, R * c, 0}, e2[3] = {-R * c, -R * s, 0}, tol = 32 * kEps;
        EXPECT_NEAR(DGEOM_crv_curvature(e1, e2, k), 1 / R, R == 2.0 ? 0 : tol / R);
        DGEOM_convert_crvatr_to_radius(k, r);
        EXPECT_EQ(r[1], k[1] / (k[0] * k[0] + k[1] * k[1] + k[2] * k[2])); // the formula's bits
        expect_all(r, {-R * c, -R * s, 0}, R == 2.0 ? 0 : tol * R, "centre - point");
        DGEOM_convert_radius_to_crvatr(r, back);
        expect_all(back, {k[0], k[1], k[2]}, tol / R, "back to k");
        DGEOM_convert_crvatr_to_deriv2(e1, k, back);
        expect_all(back, {e2[0], e2[1], e2[2]}, tol * R, "back to d2");
    }
    const double zero[3] = {0, 0, 0}; // the conversions divide by zero unguarded
    DGEOM_convert_crvatr_to_radius(zero, r);
    DGEOM_convert_radius_to_crvatr(zero, k);
    EXPECT_TRUE(std::isnan(r[0]) && std::isnan(k[2]));
    // A straight line sets only the tangent; |d1| < 1.0e-10 nothing at all.
    const double l1[3] = {1, 2, -2}, l2[3] = {2, 4, -4}, z1[3] = {9e-11, 0, 0}, s1[3] = {1e3, 0, 0},
                 s2[3] = {0, 1e-5, 0};
    for (const double *d1 : {l1, z1}) {
        const double t = d1 == l1 ? 1.0 / 3 : 0.0;
        std::fill(f, f + 11, kNaN);
        DGEOM_crv_diff_property(d1, l2, s1, 1, f);
        expect_all(f, {t, 2 * t, -2 * t, 0, 0, 0, 0, 0, 0, 0, 0}, kEps, "line, stopped curve");
        EXPECT_EQ(DGEOM_crv_curvature(d1, l2, k) + DGEOM_crv_torsion(d1, l2, s1, r), 0.0);
        expect_all(k, {0, 0, 0}, 0, "curvature");
        expect_all(r, {0, 0, 0}, 0, "torsion");
    }
    DGEOM_crv_curvature_variation(z1, l2, s1, v); // not evaluated
    expect_all(v, {0, 0, 0}, 0, "stopped variation");
    DGEOM_crv_diff_property(s1, s2, l2, 0, f); // curvature below 1.0e-10: 0, the frame set
    expect_all(f + 3, {0, 0, 1, 0, 1, 0, 0}, 0, "flat curve");
    // The variation is dk/dt / |d1|: a curve of varying speed, (t, t^2, t^3),
    // against a difference quotient.
    auto at = [](double t, double *k, double *var) { // k, its variation; |d1|
        const double d[9] = {1, 2 * t, 3 * t * t, 0, 2, 6 * t, 0, 0, 6};
        DGEOM_crv_curvature(d, d + 3, k);
        DGEOM_crv_curvature_variation(d, d + 3, d + 6, var);
        return std::sqrt(d[0] * d[0] + d[1] * d[1] + d[2] * d[2]);
    };
    for (double t : {-1.3, 0.4, 2.2}) {
        double kp[3], km[3], h = 1e-5;
        at(t + h, kp, r);
        at(t - h, km, r);
        const double speed = at(t, k, v);
        for (int i = 0; i < 3; ++i) EXPECT_NEAR(v[i], (kp[i] - km[i]) / (2 * h) / speed, 1e-8);
    }
}

// The record of DGEOM_srf_curvatures with want_principal p (NaN where it
// writes nothing; an empty `want`: result 1, record untouched), and the
// normal curvature along d with normal n.
void check(const Srf &s, int p, const std::vector<double> &want, const V3 &n, const V3 &d,
           double kn, double tol = 4 * kEps)
{
    double rec[7] = {kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN}, k = kNaN;
    const double *v[5] = {s[0].data(), s[1].data(), s[2].data(), s[3].data(), s[4].data()};
    EXPECT_EQ(DGEOM_srf_curvatures(v[0], v[1], v[2], v[3], v[4], p, rec), want.empty() ? 1 : 0);
    for (size_t i = 0; i < 7; ++i)
        if (i < want.size())
            EXPECT_NEAR(rec[i], want[i], tol) << i;
        else
            EXPECT_TRUE(std::isnan(rec[i])) << i;
    DGEOM_srf_normal_curvature(v[0], v[1], v[2], v[3], v[4], n.data(), d.data(), &k);
    EXPECT_NEAR(k, kn, tol);
}

TEST_F(Dgeom, SphereCylinderSaddlePlane)
{
    // Spheres, Su x Sv outward: K = 1/R^2, the rest +1/R (negated), kn -1/R
    // (L positive).
    for (double R : {0.5, 40.0}) {
        std::vector<double> want(7, 1 / R);
        want[0] = 1 / (R * R);
        check({{{0, R, 0}, {0, 0, R}, {-R, 0, 0}, {}, {-R, 0, 0}}}, 1, want, {1, 0, 0}, {0, 1, 1},
              -1 / R);
    }
    // Cylinder of radius 4 (Euler: kn = -cos^2(45 deg)/4), saddle z = uv
    // (want_principal 0: K and H only), plane.
    check({{{0, 4, 0}, {0, 0, 1}, {-4, 0, 0}, {}, {}}}, 1, {0, 0.125, 0, 0.25, 0.125, 0.25, 0},
          {1, 0, 0}, {0, 1, 1}, -0.125);
    const Srf saddle{{{1, 0, 0}, {0, 1, 0}, {}, {0, 0, 1}, {}}};
    check(saddle, 1, {-1, 0, -1, 1, 1, 0, 0}, {0, 0, 1}, {2, -2, 5}, -1);
    check(saddle, 0, {-1, 0}, {0, 0, 1}, {1, 1, 0}, 1);
    check({{{1, 0, 0}, {0, 1, 0}, {}, {}, {}}}, 1, {0, 0, 0, 0, 0, 0, 0}, {0, 0, 1}, {1, 0, 0}, 0);
    // Su parallel to Sv, and D just below 1.0e-10: 1, record untouched, kn 0.
    const double a = std::sqrt(1e-5) * 0.999;
    check({{{1, 2, 0}, {2, 4, 0}, {0, 0, 1}, {0, 0, 1}, {0, 0, 1}}}, 1, {}, {0, 0, 1}, {1, 0, 0},
          0);
    check({{{a, 0, 0}, {0, a, 0}, {0, 0, 1}, {}, {0, 0, 1}}}, 1, {}, {0, 0, 1}, {1, 0, 0}, 0);
    // A direction along the normal, or without tangent component: kn 0.
    check(saddle, 0, {-1, 0}, {0, 0, 1}, {0, 0, -3}, 0);
    check(saddle, 0, {-1, 0}, {1, 0, 0}, {0, 0, 1}, 0);
}

// Graphs z = a u^2 + b u v + e v^2 + u^3 v at random points against the
// shape operator (textbook sign): K its determinant, the library's H minus
// half its trace, the principal values the negated eigenvalues.
TEST_F(Dgeom, RandomGraphsAgainstShapeOperator)
{
    std::mt19937 gen(37);
    std::uniform_real_distribution<double> c(-2, 2);
    for (int rep = 0; rep < 100; ++rep) {
        const double a = c(gen), b = c(gen), e = c(gen), u = c(gen) / 2, v = c(gen) / 2;
        const double fu = 2 * a * u + b * v + 3 * u * u * v, fv = b * u + 2 * e * v + u * u * u;
        const double fuu = 2 * a + 6 * u * v, fuv = b + 3 * u * u, fvv = 2 * e;
        const Eigen::Vector3d su(1, 0, fu), sv(0, 1, fv), n = su.cross(sv).normalized();
        Eigen::Matrix2d I, II;
        I << su.dot(su), su.dot(sv), su.dot(sv), sv.dot(sv);
        II << fuu * n.z(), fuv * n.z(), fuv * n.z(), fvv * n.z();
        const Eigen::Matrix2d shape = I.inverse() * II;
        Eigen::Vector2d ev = shape.eigenvalues().real();
        std::sort(ev.data(), ev.data() + 2);
        const double H = -shape.trace() / 2, K = shape.determinant();
        // Near-umbilic points (|H^2 - K| <= 1e-10) collapse the root to 0.
        const double tol =
            (std::fabs(H * H - K) <= 2e-10 ? 1e-5 : 1e-12) * (1 + ev.cwiseAbs().maxCoeff());
        const Eigen::Vector2d w(0.3, -1.7);
        const Eigen::Vector3d d = w.x() * su + w.y() * sv;
        check({{{1, 0, fu}, {0, 1, fv}, {0, 0, fuu}, {0, 0, fuv}, {0, 0, fvv}}}, 1,
              {K, H, -ev[1], -ev[0], (std::fabs(ev[0]) + std::fabs(ev[1])) / 2, -II(0, 0) / I(0, 0),
               -II(1, 1) / I(1, 1)},
              {n.x(), n.y(), n.z()}, {d.x(), d.y(), d.z()}, w.dot(II * w) / w.dot(I * w), tol);
    }
}

} // namespace
