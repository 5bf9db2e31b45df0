// Tests of lsfit: line and plane fits against an SVD total-least-squares
// solution, circle and sphere fits against Pratt's fit solved independently
// (N^-1 M by Eigen's general eigen-solver), exact data, the quirks, the
// fall-backs, degenerate input, the report at n = 0 and allocation failures.
#include <cmath>
#include <random>
#include <vector>

#include <Eigen/Dense>

#include "numeric/lsfit_internal.h"
#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using Pts = std::vector<double>;
using Eigen::ArrayXd, Eigen::MatrixXd, Eigen::Vector2d, Eigen::Vector3d, Eigen::VectorXd;
using Lsfit = qxtest::QxTest;

int count(const Pts &p, int d) { return static_cast<int>(p.size()) / d; }

MatrixXd rows(const Pts &p, int d)
{
    return Eigen::Map<const Eigen::Matrix<double, -1, -1, Eigen::RowMajor>>(p.data(), count(p, d),
                                                                            d);
}

// Total least squares by SVD: unit normal; *lambda the smallest squared
// singular value.
VectorXd svd_normal(const Pts &p, int d, double *lambda = nullptr)
{
    Eigen::JacobiSVD<MatrixXd> svd(rows(p, d).rowwise() - rows(p, d).colwise().mean(),
                                   Eigen::ComputeThinV);
    if (lambda) *lambda = std::pow(svd.singularValues()(d - 1), 2);
    return svd.matrixV().col(d - 1);
}

// Pratt's circle or sphere through the rows of p, (centre, radius):
// M a = eta N a, the smallest positive eta, from the eigenvalues of N^-1 M.
VectorXd pratt(const MatrixXd &p)
{
    const Eigen::RowVectorXd mean = p.colwise().mean();
    const MatrixXd x = p.rowwise() - mean;
    const int d = static_cast<int>(p.cols()), m = d + 2;
    MatrixXd z(x.rows(), m), N = MatrixXd::Identity(m, m);
    z << x.rowwise().squaredNorm(), x, VectorXd::Ones(x.rows());
    N(0, 0) = N(m - 1, m - 1) = 0.0;
    N(0, m - 1) = N(m - 1, 0) = -2.0;
    Eigen::EigenSolver<MatrixXd> es(N.inverse() * z.transpose() * z);
    int best = -1;
    for (int j = 0; j < m; ++j) {
        const double eta = es.eigenvalues()(j).real();
        if (eta > 0.0 && (best < 0 || eta < es.eigenvalues()(best).real())) best = j;
    }
    const VectorXd a = es.eigenvectors().col(best).real();
    VectorXd cr(d + 1);
    cr << mean.transpose() - a.segment(1, d) / (2.0 * a(0)),
        std::sqrt(a.segment(1, d).squaredNorm() - 4.0 * a(0) * a(m - 1)) / (2.0 * std::fabs(a(0)));
    return cr;
}

// Points on a circle in the plane of unit u, v (or on a sphere), the first
// dims coordinates, with normal noise sigma along the radius (and off the
// plane for a circle in 3-D).
Pts round_points(int n, const Vector3d &c, double r, double sigma, unsigned seed, int dims,
                 bool sphere, const Vector3d &u = {1, 0, 0}, const Vector3d &v = {0, 1, 0})
{
    std::mt19937_64 rng(seed);
    std::uniform_real_distribution<double> angle(0.0, 6.283185307179586), height(-1.0, 1.0);
    std::normal_distribution<double> noise(0.0, sigma);
    Pts p;
    for (int i = 0; i < n; ++i) {
        const double t = angle(rng), h = sphere ? height(rng) : 0.0, q = std::sqrt(1.0 - h * h);
        const double rr = r + (sigma > 0.0 ? noise(rng) : 0.0);
        const double off = sigma > 0.0 && dims == 3 && !sphere ? noise(rng) : 0.0;
        const Vector3d x =
            c + rr * (q * std::cos(t) * u + q * std::sin(t) * v) + (rr * h + off) * u.cross(v);
        for (int k = 0; k < dims; ++k) p.push_back(x(k));
    }
    return p;
}

// Results of any fit, prefilled with NaN (centre doubles as the line or
// plane point). n = 0 takes the count from p.
struct Fit {
    double centre[3] = {kNaN, kNaN, kNaN}, radius = kNaN, normal[3] = {kNaN, kNaN, kNaN};
    double dev[3] = {kNaN, kNaN, kNaN};
    int deg = -1;
};
enum Kind { kLine, kPlane, kCircle2, kCircle3, kSphere };
Fit fit(Kind k, const Pts &p, int n = 0)
{
    Fit f;
    if (n == 0) n = count(p, k == kLine || k == kCircle2 ? 2 : 3);
    if (k == kLine || k == kPlane)
        (k == kLine ? LSFIT_line_to_points_2d : LSFIT_plane_to_points)(p.data(), n, f.centre,
                                                                       f.normal, &f.deg, f.dev);
    else if (k == kCircle3)
        LSFIT_circle_to_points_3d(p.data(), n, f.centre, &f.radius, f.normal, &f.deg, f.dev);
    else
        (k == kCircle2 ? LSFIT_circle_to_points_2d : LSFIT_sphere_to_points_3d)(
            p.data(), n, f.centre, &f.radius, &f.deg, f.dev);
    return f;
}

// Not degenerate, (centre, radius) within tol of cr.
void expect_round(const Fit &f, const VectorXd &cr, double tol)
{
    EXPECT_EQ(f.deg, 0);
    for (int k = 0; k + 1 < cr.size(); ++k) EXPECT_NEAR(f.centre[k], cr(k), tol) << k;
    EXPECT_NEAR(f.radius, cr(cr.size() - 1), tol);
}

// dev against the distances d: largest, root-mean-square (unless the fit
// takes it from its eigenvalue), mean.
void expect_devs(const Fit &f, const ArrayXd &d, double tol, bool rms = true)
{
    EXPECT_NEAR(f.dev[0], d.maxCoeff(), tol);
    EXPECT_NEAR(f.dev[1], rms ? std::sqrt(d.square().mean()) : f.dev[1], tol);
    EXPECT_NEAR(f.dev[2], d.mean(), tol);
}

// Flag 1 and every output zero (the normal only for the 3-D circle).
void expect_degenerate(const Fit &r, int dims, bool with_normal = false)
{
    EXPECT_TRUE(r.deg == 1 && r.radius == 0.0);
    for (int k = 0; k < 3; ++k) {
        EXPECT_EQ(r.dev[k], 0.0);
        EXPECT_TRUE(k >= dims || r.centre[k] == 0.0) << k;
        EXPECT_TRUE(!with_normal || r.normal[k] == 0.0) << k;
    }
}

// Line or plane outputs exactly (a NaN expects NaN), the normal up to sign.
void expect_flat(const Fit &f, int deg, const Pts &point, const Pts &normal, const Pts &dev)
{
    const auto same = [](double got, double want) {
        return std::isnan(want) ? std::isnan(got) : got == want;
    };
    EXPECT_EQ(f.deg, deg);
    for (size_t k = 0; k < point.size(); ++k)
        EXPECT_TRUE(same(f.centre[k], point[k]) && same(std::fabs(f.normal[k]), normal[k])) << k;
    for (size_t k = 0; k < 3; ++k) EXPECT_TRUE(same(f.dev[k], dev[k])) << k;
}

TEST_F(Lsfit, LineAndPlaneEdgeCasesQuirksAndFallBacks)
{
    const Fit a = fit(kLine, {0, 0, 1, 1, 2, 2});
    EXPECT_TRUE(a.deg == 0 && a.centre[0] == 1.0 && a.centre[1] == 1.0);
    EXPECT_NEAR(std::fabs(a.normal[0]), std::sqrt(0.5), 1e-15);
    EXPECT_NEAR(a.normal[0] + a.normal[1], 0.0, 1e-15);
    expect_devs(a, ArrayXd::Zero(1), 1e-15);
    // (cx, cx) = (1, 1), not the centroid (1, 3): both points are 2 away;
    // dev[1] comes from the eigenvalue, about the true centroid.
    expect_flat(fit(kLine, {0, 3, 2, 3}), 0, {1, 1}, {0, 1}, {2, 0, 2});
    expect_flat(fit(kPlane, {0, 0, 5, 1, 0, 5, 1, 2, 5, -3, 1, 5}), 0, {-0.25, 0.75, 5}, {0, 0, 1},
                {0, 0, 0});
    // No points take the main path: 0/0 centroid, the first of the equal
    // (zero) eigenvalues.
    expect_flat(fit(kLine, {}), 0, {kNaN, kNaN}, {1, 0}, {0, kNaN, kNaN});
    expect_flat(fit(kPlane, {}), 0, {kNaN, kNaN, kNaN}, {1, 0, 0}, {0, kNaN, kNaN});
    // All-NaN scatter, so no eigenvalue is chosen and the fall-back runs: the
    // line is degenerate, the plane's coincident case is silent; neither
    // writes dev. An infinite point leaves a finite farthest distance: the
    // fall-back's (NaN) normal is taken, lambda stays the bound 1.0e19.
    expect_flat(fit(kLine, {kNaN, kNaN, 1, 2}), 1, {0, 0}, {0, 0}, {kNaN, kNaN, kNaN});
    expect_flat(fit(kPlane, {kNaN, kNaN, kNaN, 1, 2, 3, 4, 5, 6}), 0, {0, 0, 0}, {0, 0, 0},
                {kNaN, kNaN, kNaN});
    EXPECT_EQ(fit(kLine, {0.0, 0.0, HUGE_VAL, HUGE_VAL}).dev[1], std::sqrt(1.0e19 / 2.0));
    EXPECT_EQ(qxsys_report_count(), 0);

    // The constructions themselves, on centred points.
    using namespace qx::lsfit;
    double n[3];
    int deg = 0;
    EXPECT_EQ(line_fallback(Pts{0.1, 0, -3, 4, 3, -4}.data(), 3, n, &deg), kNormalMade);
    // (-dy, dx) of the first farthest point (-0.6, 0.8)
    EXPECT_TRUE(std::fabs(n[0] + 0.8) < 1e-15 && std::fabs(n[1] + 0.6) < 1e-15 && deg == 0);
    EXPECT_EQ(line_fallback(Pts{0.0005, 0, -0.0005, 0}.data(), 2, n, &deg), kDegenerate);
    EXPECT_TRUE(deg == 1 && n[0] == 0.0 && n[1] == 0.0);
    deg = 0;
    EXPECT_EQ(plane_fallback(Pts{2, 0, 0, -2, 0, 0, 0, 0.5, 0, 0, -0.5, 0}.data(), 4, n, &deg),
              kNormalMade);
    EXPECT_TRUE(deg == 0 && n[0] == 0.0 && n[1] == 0.0 && n[2] == 1.0);
    EXPECT_EQ(plane_fallback(Pts{1e-4, 0, 0, -1e-4, 0, 0, 0, 0, 0}.data(), 3, n, &deg),
              kCoincident);
    EXPECT_EQ(deg, 0);
    EXPECT_EQ(plane_fallback(Pts{1, 1, 1, 0, 0, 0, -1, -1, -1.0005}.data(), 3, n, &deg),
              kDegenerate);
    EXPECT_TRUE(deg == 1 && n[0] == 0.0 && n[1] == 0.0 && n[2] == 0.0); // collinear
}

TEST_F(Lsfit, NoisyLinesAndPlanesMatchSvd)
{
    std::mt19937_64 rng(20261122);
    std::normal_distribution<double> noise(0.0, 0.05);
    std::uniform_real_distribution<double> u(-10.0, 10.0);
    for (int trial = 0; trial < 24; ++trial) {
        const int d = 2 + trial % 2, n = 5 + trial * 5;
        Vector3d nrm(u(rng), u(rng), d == 3 ? u(rng) : 0.0), org(u(rng), u(rng), u(rng));
        nrm.normalize();
        Pts p;
        for (int i = 0; i < n; ++i) {
            Vector3d x(u(rng), u(rng), d == 3 ? u(rng) : 0.0);
            x = org + x - nrm * nrm.dot(x) + noise(rng) * nrm;
            p.insert(p.end(), x.data(), x.data() + d);
        }
        const Fit f = fit(d == 2 ? kLine : kPlane, p);
        double lambda;
        const VectorXd ref = svd_normal(p, d, &lambda);
        const Eigen::Map<const VectorXd> got(f.normal, d);
        EXPECT_TRUE(f.deg == 0 && std::fabs(got.norm() - 1.0) < 1e-14);
        EXPECT_NEAR(std::fabs(got.dot(ref)), 1.0, 1e-12) << trial;
        EXPECT_NEAR(f.dev[1], std::sqrt(lambda / n), 1e-9);
        // Distances from the line or plane through the written point.
        VectorXd at = rows(p, d).colwise().mean();
        if (d == 2) at(1) = at(0);
        for (int k = 0; k < d; ++k) EXPECT_NEAR(f.centre[k], at(k), 1e-12);
        expect_devs(f, ((rows(p, d).rowwise() - at.transpose()) * got).array().abs(), 1e-11, false);
    }
}

TEST_F(Lsfit, CirclesAndSpheresAreExactOnExactData)
{
    MACH__checking_level = 1; // nothing to report on good data
    expect_round(fit(kCircle2, {1, 0, -1, 0, 0, 1}), Eigen::Vector3d(0, 0, 1), 1e-14);
    expect_round(fit(kCircle2, round_points(40, {3e3, -2e3, 0}, 7.0, 0.0, 1, 2, false)),
                 Vector3d(3e3, -2e3, 7), 1e-9);
    const Vector3d u = Vector3d(1, 2, 2) / 3.0, v = Vector3d(2, 1, -2) / 3.0;
    const Fit b = fit(kCircle3, round_points(25, {1, -5, 9}, 0.25, 0.0, 2, 3, false, u, v));
    expect_round(b, Eigen::Vector4d(1, -5, 9, 0.25), 1e-12);
    EXPECT_NEAR(std::fabs(Vector3d(b.normal).dot(u.cross(v))), 1.0, 1e-14);
    EXPECT_LT(b.dev[0], 1e-12);
    // The sphere through four points, and through many.
    expect_round(fit(kSphere, round_points(4, {1, 2, 3}, 2.0, 0.0, 7, 3, true)),
                 Eigen::Vector4d(1, 2, 3, 2), 1e-12);
    const Fit s = fit(kSphere, round_points(60, {-4, 8, 2}, 3.0, 0.0, 3, 3, true, u, v));
    expect_round(s, Eigen::Vector4d(-4, 8, 2, 3), 1e-12);
    EXPECT_LT(s.dev[0], 1e-12);
    // Nearly exact (moments singular to the pivot threshold): within the scatter.
    expect_round(fit(kCircle2, round_points(30, {-1, 2, 0}, 5.0, 1e-8, 6, 2, false)),
                 Vector3d(-1, 2, 5), 1e-7);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Lsfit, NoisyCirclesAndSpheresArePrattFits)
{
    const Vector3d u = Vector3d(2, -1, 2) / 3.0, v = Vector3d(2, 2, -1) / 3.0;
    for (unsigned seed = 10; seed < 18; ++seed) {
        const double sigma = seed % 2 ? 0.05 : 1e-4;
        const Vector3d c(seed, -2.0 * seed, 0.5);
        const Pts p2 =
            round_points(8 + 9 * static_cast<int>(seed - 10), c, 4.0, sigma, seed, 2, false);
        const VectorXd r2 = pratt(rows(p2, 2));
        const Fit a = fit(kCircle2, p2);
        expect_round(a, r2, 1e-9);
        expect_devs(
            a,
            ((rows(p2, 2).rowwise() - r2.head(2).transpose()).rowwise().norm().array() - r2(2))
                .abs(),
            1e-8);
        const Pts ps = round_points(30, c, 2.0, sigma, seed + 100, 3, true, u, v);
        expect_round(fit(kSphere, ps), pratt(rows(ps, 3)), 1e-9);

        // Tilted 3-D circle, noisy off its plane too. Reference: SVD plane,
        // Pratt on the in-plane coordinates; distances from the circle as a curve.
        const Pts p3 = round_points(20, c, 3.0, sigma, seed + 200, 3, false, u, v);
        const MatrixXd x3 = rows(p3, 3);
        const Vector3d n3 = svd_normal(p3, 3), e1 = n3.unitOrthogonal(), e2 = n3.cross(e1),
                       mean = x3.colwise().mean();
        const VectorXd r3 = pratt((x3.rowwise() - mean.transpose()) *
                                  (Eigen::Matrix<double, 3, 2>() << e1, e2).finished());
        const Vector3d ref = mean + r3(0) * e1 + r3(1) * e2;
        const Fit b = fit(kCircle3, p3);
        expect_round(b, Eigen::Vector4d(ref(0), ref(1), ref(2), r3(2)), 1e-9);
        EXPECT_NEAR(std::fabs(Vector3d(b.normal).dot(n3)), 1.0, 1e-12);
        const MatrixXd q = x3.rowwise() - ref.transpose();
        const ArrayXd h = q * n3, rho = (q - h.matrix() * n3.transpose()).rowwise().norm();
        expect_devs(b, ((rho - r3(2)).square() + h.square()).sqrt(), 1e-8);
    }
}

TEST_F(Lsfit, DegenerateInputAndNoPointsGiveTheFlagAndZeroes)
{
    // Coincident, collinear, two points, NaN.
    for (const Pts &p : {Pts{2, 3, 2, 3, 2, 3}, Pts{0, 0, 1, 2, 2, 4, -1, -2, 5, 10},
                         Pts{0, 0, 1, 1}, Pts{0, 0, 1, kNaN, 2, 1}})
        expect_degenerate(fit(kCircle2, p), 2);
    for (const Pts &p :
         {Pts{1, 1, 1, 2, 2, 2, 3, 3, 3, -1, -1, -1}, Pts{4, 5, 6, 4, 5, 6, 4, 5, 6}}) {
        expect_degenerate(fit(kCircle3, p), 3, true);
        expect_degenerate(fit(kSphere, p), 3);
    }
    // Coplanar points (on a circle in z = 5) do not define a sphere.
    expect_degenerate(fit(kSphere, round_points(8, Vector3d(0, 0, 5), 2.0, 0.0, 4, 3, false)), 3);
    EXPECT_EQ(qxsys_report_count(), 0);

    // No points: the report, exactly; with a host that returns, one report
    // each, then the flag and zeroes.
    for (Kind k : {kCircle2, kCircle3, kSphere})
        expect_checked([k] { fit(k, {}, k == kSphere ? -2 : 0); }, "lsfit", 0,
                       "There are no input points.", false);
    qxsys_clear_reports();
    expect_degenerate(fit(kCircle2, {}), 2);
    expect_degenerate(fit(kCircle3, {}), 3, true);
    expect_degenerate(fit(kSphere, {}), 3);
    EXPECT_EQ(qxsys_report_count(), 3);
}

TEST_F(Lsfit, FailedAllocationsLeakNothing)
{
    // A host whose failed allocation returns: every fit gives up cleanly.
    const Pts p = round_points(12, {1, 2, 3}, 2.0, 0.01, 5, 3, true, {1, 0, 0}, {0, 0.6, 0.8});
    for (Kind kind : {kLine, kPlane, kCircle2, kCircle3, kSphere}) {
        const unsigned long before = qxsys_allocation_calls();
        fit(kind, p);
        const long calls = static_cast<long>(qxsys_allocation_calls() - before);
        ASSERT_GT(calls, 0);
        for (long k = 1; k <= calls; ++k) {
            const size_t live = qxsys_live_blocks();
            qxsys_fail_allocation(k);
            fit(kind, p);
            EXPECT_EQ(qxsys_live_blocks(), live) << kind << " " << k;
        }
    }
}

} // namespace
