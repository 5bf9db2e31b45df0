// Tests of lsfit: line and plane fits against an SVD total-least-squares
// solution, circle and sphere fits against Pratt's fit solved independently
// (N^-1 M by Eigen's general eigen-solver) and against closed-form circles and
// spheres through three and four points; the quirks, the fall-backs, the
// degenerate cases, the report at n = 0 and allocation failures.
#include <cmath>
#include <random>
#include <vector>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace qx::lsfit
{
enum Fallback { kNormalMade, kDegenerate, kCoincident };
Fallback line_fallback(const double *c, int n, double normal[2], int *degenerate);
Fallback plane_fallback(const double *c, int n, double normal[3], int *degenerate);
} // namespace qx::lsfit

namespace
{

using qxtest::kNaN;
using Pts = std::vector<double>;

class Lsfit : public qxtest::QxTest
{
};

int count(const Pts &p, int d) { return static_cast<int>(p.size()) / d; }

Eigen::MatrixXd as_rows(const Pts &p, int d)
{
    const int n = count(p, d);
    Eigen::MatrixXd m(n, d);
    for (int i = 0; i < n; ++i)
        for (int k = 0; k < d; ++k) m(i, k) = p[static_cast<size_t>(i * d + k)];
    return m;
}

// Total least squares by SVD: unit normal and smallest squared singular value.
void svd_fit(const Pts &p, int d, Eigen::VectorXd &normal, double &lambda)
{
    Eigen::MatrixXd m = as_rows(p, d);
    m.rowwise() -= m.colwise().mean();
    Eigen::JacobiSVD<Eigen::MatrixXd> svd(m, Eigen::ComputeThinV);
    normal = svd.matrixV().col(d - 1);
    const double s = svd.singularValues()(d - 1);
    lambda = s * s;
}

// Pratt's circle (d = 2) or sphere (d = 3): M a = eta N a, the smallest
// positive eta, from the eigenvalues of N^-1 M.
void pratt_reference(const Pts &p, int d, Eigen::VectorXd &centre, double &radius)
{
    Eigen::MatrixXd x = as_rows(p, d);
    const Eigen::RowVectorXd mean = x.colwise().mean();
    x.rowwise() -= mean;
    const int m = d + 2;
    Eigen::MatrixXd z(x.rows(), m);
    z.col(0) = x.rowwise().squaredNorm();
    z.middleCols(1, d) = x;
    z.col(m - 1).setOnes();
    const Eigen::MatrixXd M = z.transpose() * z;
    Eigen::MatrixXd N = Eigen::MatrixXd::Identity(m, m);
    N(0, 0) = N(m - 1, m - 1) = 0.0;
    N(0, m - 1) = N(m - 1, 0) = -2.0;
    Eigen::EigenSolver<Eigen::MatrixXd> es(N.inverse() * M);
    int best = -1;
    for (int j = 0; j < m; ++j) {
        const double eta = es.eigenvalues()(j).real();
        if (eta > 0.0 && (best < 0 || eta < es.eigenvalues()(best).real())) best = j;
    }
    const Eigen::VectorXd a = es.eigenvectors().col(best).real();
    centre = mean.transpose() - a.segment(1, d) / (2.0 * a(0));
    radius =
        std::sqrt(a.segment(1, d).squaredNorm() - 4.0 * a(0) * a(m - 1)) / (2.0 * std::fabs(a(0)));
}

// Points on a circle (in the plane spanned by unit u, v) or, with w, on a
// sphere, with normal noise of deviation sigma along the radius.
Pts round_points(int n, const Eigen::Vector3d &c, double r, double sigma, unsigned seed,
                 const Eigen::Vector3d &u, const Eigen::Vector3d &v, int dims, bool sphere)
{
    std::mt19937_64 rng(seed);
    std::uniform_real_distribution<double> angle(0.0, 6.283185307179586);
    std::uniform_real_distribution<double> height(-1.0, 1.0);
    std::normal_distribution<double> noise(0.0, sigma);
    const Eigen::Vector3d w = u.cross(v);
    Pts p;
    for (int i = 0; i < n; ++i) {
        const double t = angle(rng);
        const double h = sphere ? height(rng) : 0.0;
        const double q = std::sqrt(1.0 - h * h);
        const double rr = r + (sigma > 0.0 ? noise(rng) : 0.0);
        const Eigen::Vector3d x = c + rr * (q * std::cos(t) * u + q * std::sin(t) * v + h * w);
        for (int k = 0; k < dims; ++k) p.push_back(x(k));
    }
    return p;
}

const Eigen::Vector3d kX(1, 0, 0), kY(0, 1, 0);

TEST_F(Lsfit, LineAndPlaneEdgeCasesKeepThePointQuirk)
{
    double point[3], normal[3], dev[3];
    int deg = -1;
    const double s = std::sqrt(0.5);

    LSFIT_line_to_points_2d(Pts{0, 0, 1, 1, 2, 2}.data(), 3, point, normal, &deg, dev);
    EXPECT_EQ(deg, 0);
    EXPECT_EQ(point[0], 1.0);
    EXPECT_EQ(point[1], 1.0);
    EXPECT_NEAR(std::fabs(normal[0]), s, 1e-15);
    EXPECT_NEAR(normal[0] + normal[1], 0.0, 1e-15);
    for (double e : dev) EXPECT_NEAR(e, 0.0, 1e-15);

    LSFIT_line_to_points_2d(Pts{0, 1, 2, 1}.data(), 2, point, normal, &deg, dev);
    EXPECT_EQ(point[0], 1.0);
    EXPECT_EQ(point[1], 1.0);
    EXPECT_EQ(normal[0], 0.0);
    EXPECT_EQ(std::fabs(normal[1]), 1.0);

    // (cx, cx) = (1, 1), not the centroid (1, 3): both points are 2 away.
    LSFIT_line_to_points_2d(Pts{0, 3, 2, 3}.data(), 2, point, normal, &deg, dev);
    EXPECT_EQ(point[0], 1.0);
    EXPECT_EQ(point[1], 1.0);
    EXPECT_EQ(dev[0], 2.0);
    EXPECT_EQ(dev[2], 2.0);
    EXPECT_EQ(dev[1], 0.0); // from the eigenvalue, about the true centroid

    LSFIT_plane_to_points(Pts{0, 0, 5, 1, 0, 5, 1, 2, 5, -3, 1, 5}.data(), 4, point, normal, &deg,
                          dev);
    EXPECT_EQ(deg, 0);
    EXPECT_EQ(point[0], -0.25);
    EXPECT_EQ(point[1], 0.75);
    EXPECT_EQ(point[2], 5.0);
    EXPECT_EQ(std::fabs(normal[2]), 1.0);
    for (double e : dev) EXPECT_EQ(e, 0.0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Lsfit, NoisyLinesAndPlanesMatchSvd)
{
    std::mt19937_64 rng(20261122);
    std::normal_distribution<double> noise(0.0, 0.05);
    std::uniform_real_distribution<double> u(-10.0, 10.0);
    for (int d = 2; d <= 3; ++d) {
        for (int trial = 0; trial < 20; ++trial) {
            Eigen::Vector3d nrm(u(rng), u(rng), d == 3 ? u(rng) : 0.0), org(u(rng), u(rng), u(rng));
            nrm.normalize();
            const int n = 5 + trial * 7;
            Pts p;
            for (int i = 0; i < n; ++i) {
                Eigen::Vector3d x(u(rng), u(rng), d == 3 ? u(rng) : 0.0);
                x = org + x - nrm * nrm.dot(x) + noise(rng) * nrm;
                for (int k = 0; k < d; ++k) p.push_back(x(k));
            }
            double point[3] = {kNaN, kNaN, kNaN}, normal[3] = {kNaN, kNaN, kNaN}, dev[3];
            int deg = -1;
            if (d == 2)
                LSFIT_line_to_points_2d(p.data(), n, point, normal, &deg, dev);
            else
                LSFIT_plane_to_points(p.data(), n, point, normal, &deg, dev);
            Eigen::VectorXd ref;
            double lambda;
            svd_fit(p, d, ref, lambda);
            const Eigen::RowVectorXd mean = as_rows(p, d).colwise().mean();
            const Eigen::Map<const Eigen::VectorXd> got(normal, d);
            EXPECT_EQ(deg, 0);
            EXPECT_NEAR(got.norm(), 1.0, 1e-14);
            EXPECT_NEAR(std::fabs(got.dot(ref)), 1.0, 1e-12) << d << " " << trial;
            EXPECT_NEAR(dev[1], std::sqrt(lambda / n), 1e-9);
            // Distances from the line or plane through the written point.
            Eigen::VectorXd at(d);
            for (int k = 0; k < d; ++k) at(k) = d == 2 ? mean(0) : mean(k);
            for (int k = 0; k < d; ++k) EXPECT_NEAR(point[k], at(k), 1e-12);
            const Eigen::VectorXd dist =
                ((as_rows(p, d).rowwise() - at.transpose()) * got).cwiseAbs();
            EXPECT_NEAR(dev[0], dist.maxCoeff(), 1e-11);
            EXPECT_NEAR(dev[2], dist.mean(), 1e-11);
        }
    }
}

TEST_F(Lsfit, NoPointsTakeTheMainPathWithoutReport)
{
    double point[3], normal[3], dev[3] = {kNaN, kNaN, kNaN};
    int deg = -1;
    LSFIT_line_to_points_2d(nullptr, 0, point, normal, &deg, dev);
    EXPECT_EQ(deg, 0);
    EXPECT_TRUE(std::isnan(point[0]) && std::isnan(point[1]));
    EXPECT_EQ(normal[0], 1.0);
    EXPECT_EQ(normal[1], 0.0);
    EXPECT_EQ(dev[0], 0.0);
    EXPECT_TRUE(std::isnan(dev[1]) && std::isnan(dev[2]));
    LSFIT_plane_to_points(nullptr, 0, point, normal, &deg, dev);
    EXPECT_EQ(deg, 0);
    EXPECT_TRUE(std::isnan(point[2]));
    EXPECT_EQ(normal[0], 1.0);
    EXPECT_EQ(normal[1], 0.0);
    EXPECT_EQ(normal[2], 0.0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Lsfit, FallBacksRunOnNanInputAndBuildNormals)
{
    // All-NaN scatter: no eigenvalue is chosen.
    const Pts nan2{kNaN, kNaN, 1.0, 2.0};
    double point[3] = {kNaN, kNaN, kNaN}, normal[3] = {kNaN, kNaN, kNaN};
    double dev[3] = {7.0, 7.0, 7.0};
    int deg = -1;
    LSFIT_line_to_points_2d(nan2.data(), 2, point, normal, &deg, dev);
    EXPECT_EQ(deg, 1);
    EXPECT_EQ(point[0], 0.0);
    EXPECT_EQ(normal[1], 0.0);
    EXPECT_EQ(dev[0], 7.0); // not written
    const Pts nan3{kNaN, kNaN, kNaN, 1.0, 2.0, 3.0, 4, 5, 6};
    LSFIT_plane_to_points(nan3.data(), 3, point, normal, &deg, dev);
    EXPECT_EQ(deg, 0); // the coincident case is silent
    EXPECT_EQ(point[2], 0.0);
    EXPECT_EQ(normal[2], 0.0);
    EXPECT_EQ(dev[1], 7.0);

    // An infinite point gives a finite farthest distance: the fall-back's
    // normal (NaN here) is taken and lambda is the bound 1.0e19.
    const Pts inf{0.0, 0.0, HUGE_VAL, HUGE_VAL};
    LSFIT_line_to_points_2d(inf.data(), 2, point, normal, &deg, dev);
    EXPECT_EQ(deg, 0);
    EXPECT_EQ(dev[1], std::sqrt(1.0e19 / 2.0));

    using namespace qx::lsfit;
    // The constructions themselves, on centred points.
    const Pts line{0.1, 0.0, -3.0, 4.0, 3.0, -4.0};
    EXPECT_EQ(line_fallback(line.data(), 3, normal, &deg), kNormalMade);
    EXPECT_NEAR(normal[0], -0.8, 1e-15); // (-dy, dx) of (-0.6, 0.8), the first farthest
    EXPECT_NEAR(normal[1], -0.6, 1e-15);
    deg = 0;
    const Pts tiny{0.0005, 0.0, -0.0005, 0.0};
    EXPECT_EQ(line_fallback(tiny.data(), 2, normal, &deg), kDegenerate);
    EXPECT_EQ(deg, 1);
    EXPECT_EQ(normal[0], 0.0);

    deg = 0;
    const Pts plane{2, 0, 0, -2, 0, 0, 0, 0.5, 0, 0, -0.5, 0};
    EXPECT_EQ(plane_fallback(plane.data(), 4, normal, &deg), kNormalMade);
    EXPECT_EQ(deg, 0);
    EXPECT_EQ(normal[0], 0.0);
    EXPECT_EQ(normal[1], 0.0);
    EXPECT_EQ(normal[2], 1.0);
    const Pts collinear{1, 1, 1, 0, 0, 0, -1, -1, -1.0005};
    EXPECT_EQ(plane_fallback(collinear.data(), 3, normal, &deg), kDegenerate);
    EXPECT_EQ(deg, 1);
    deg = 0;
    EXPECT_EQ(plane_fallback(plane.data(), 2, normal, &deg), kDegenerate); // two points
    deg = 0;
    const Pts same{0.0001, 0, 0, -0.0001, 0, 0, 0, 0, 0};
    EXPECT_EQ(plane_fallback(same.data(), 3, normal, &deg), kCoincident);
    EXPECT_EQ(deg, 0);
}

// Circle or sphere results, prefilled with NaN.
struct Round {
    double centre[3] = {kNaN, kNaN, kNaN}, radius = kNaN, normal[3] = {kNaN, kNaN, kNaN};
    double dev[3] = {kNaN, kNaN, kNaN};
    int deg = -1;
};

Round circle2(const Pts &p)
{
    Round r;
    LSFIT_circle_to_points_2d(p.data(), count(p, 2), r.centre, &r.radius, &r.deg, r.dev);
    return r;
}
Round circle3(const Pts &p)
{
    Round r;
    LSFIT_circle_to_points_3d(p.data(), count(p, 3), r.centre, &r.radius, r.normal, &r.deg, r.dev);
    return r;
}
Round sphere(const Pts &p)
{
    Round r;
    LSFIT_sphere_to_points_3d(p.data(), count(p, 3), r.centre, &r.radius, &r.deg, r.dev);
    return r;
}

// Flag 1 and every output zero (centre[2] only in 3-D, the normal only for the
// 3-D circle).
void expect_degenerate(const Round &r, int dims, bool with_normal = false)
{
    EXPECT_EQ(r.deg, 1);
    for (int k = 0; k < 3; ++k) {
        if (k < dims) {
            EXPECT_EQ(r.centre[k], 0.0);
        }
        if (with_normal) {
            EXPECT_EQ(r.normal[k], 0.0);
        }
        EXPECT_EQ(r.dev[k], 0.0);
    }
    EXPECT_EQ(r.radius, 0.0);
}

// Not degenerate, centre and radius within tol of (c, r).
void expect_round(const Round &f, const Eigen::VectorXd &c, double r, double tol)
{
    EXPECT_EQ(f.deg, 0);
    for (int k = 0; k < c.size(); ++k) EXPECT_NEAR(f.centre[k], c(k), tol) << k;
    EXPECT_NEAR(f.radius, r, tol);
}

TEST_F(Lsfit, CirclesAndSpheresAreExactOnExactData)
{
    MACH__checking_level = 1;                     // nothing to report on good data
    const Round t = circle2({1, 0, -1, 0, 0, 1}); // through three points
    expect_round(t, Eigen::Vector2d(0, 0), 1.0, 1e-14);
    EXPECT_LT(t.dev[0], 1e-14);
    const Round a = circle2(round_points(40, {3e3, -2e3, 0}, 7.0, 0.0, 1, kX, kY, 2, false));
    expect_round(a, Eigen::Vector2d(3e3, -2e3), 7.0, 1e-9);
    EXPECT_LT(a.dev[0], 1e-9);

    const Eigen::Vector3d u = Eigen::Vector3d(1, 2, 2) / 3.0, v = Eigen::Vector3d(2, 1, -2) / 3.0;
    const Round b = circle3(round_points(25, {1, -5, 9}, 0.25, 0.0, 2, u, v, 3, false));
    expect_round(b, Eigen::Vector3d(1, -5, 9), 0.25, 1e-12);
    EXPECT_NEAR(std::fabs(Eigen::Vector3d(b.normal).dot(u.cross(v))), 1.0, 1e-14);
    EXPECT_LT(b.dev[0], 1e-12);

    // Through four points: the circumsphere (2 (p_i - p_0).c = |p_i|^2 - |p_0|^2).
    const Pts q{1, 2, 3, -1, 0.5, 2, 0, -2, 1, 0.3, 0.1, -1};
    const Eigen::MatrixXd x = as_rows(q, 3);
    const Eigen::Matrix3d m = 2.0 * (x.bottomRows(3).rowwise() - x.row(0));
    const Eigen::Vector3d rhs =
        x.bottomRows(3).rowwise().squaredNorm().array() - x.row(0).squaredNorm();
    const Eigen::Vector3d cc = m.partialPivLu().solve(rhs);
    expect_round(sphere(q), cc, (x.row(0).transpose() - cc).norm(), 1e-12);
    const Round s = sphere(round_points(60, {-4, 8, 2}, 3.0, 0.0, 3, u, v, 3, true));
    expect_round(s, Eigen::Vector3d(-4, 8, 2), 3.0, 1e-12);
    EXPECT_LT(s.dev[0], 1e-12);

    // Nearly exact (moments singular to the pivot threshold): the circle
    // within the scatter.
    const Round f = circle2(round_points(30, {-1, 2, 0}, 5.0, 1e-8, 6, kX, kY, 2, false));
    expect_round(f, Eigen::Vector2d(-1, 2), 5.0, 1e-7);
    EXPECT_LT(f.dev[0], 1e-7);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Lsfit, NoisyCirclesAndSpheresArePrattFits)
{
    const Eigen::Vector3d u = Eigen::Vector3d(2, -1, 2) / 3.0, v = Eigen::Vector3d(2, 2, -1) / 3.0;
    for (unsigned seed = 10; seed < 20; ++seed) {
        const double sigma = seed % 2 ? 0.05 : 1e-4;
        const Eigen::Vector3d c(seed, -2.0 * seed, 0.5);
        Eigen::VectorXd rc;
        double rr;
        const Pts p2 = round_points(8 + 9 * static_cast<int>(seed - 10), c, 4.0, sigma, seed, kX,
                                    kY, 2, false);
        pratt_reference(p2, 2, rc, rr);
        const Round a = circle2(p2);
        expect_round(a, rc, rr, 1e-9);
        EXPECT_NEAR(a.radius, 4.0, 6 * sigma);
        const Eigen::ArrayXd dist =
            ((as_rows(p2, 2).rowwise() - rc.transpose()).rowwise().norm().array() - rr).abs();
        EXPECT_NEAR(a.dev[0], dist.maxCoeff(), 1e-8);
        EXPECT_NEAR(a.dev[1], std::sqrt(dist.square().mean()), 1e-8);
        EXPECT_NEAR(a.dev[2], dist.mean(), 1e-8);

        const Pts ps = round_points(30, c, 2.0, sigma, seed + 100, u, v, 3, true);
        pratt_reference(ps, 3, rc, rr);
        expect_round(sphere(ps), rc, rr, 1e-9);

        // Tilted 3-D circle, noisy off its plane too. Reference: SVD plane,
        // in-plane coordinates, Pratt in 2-D.
        Pts p3 = round_points(20, c, 3.0, sigma, seed + 200, u, v, 3, false);
        std::mt19937_64 rng(seed);
        std::normal_distribution<double> off(0.0, sigma);
        for (size_t i = 0; i < p3.size(); i += 3) {
            const Eigen::Vector3d h = off(rng) * u.cross(v);
            for (int k = 0; k < 3; ++k) p3[i + static_cast<size_t>(k)] += h(k);
        }
        Eigen::VectorXd nrm;
        double lam;
        svd_fit(p3, 3, nrm, lam);
        const Eigen::Vector3d n3 = nrm, e1 = n3.unitOrthogonal(), e2 = n3.cross(e1);
        const Eigen::MatrixXd centred = as_rows(p3, 3).rowwise() - as_rows(p3, 3).colwise().mean();
        Pts flat;
        for (Eigen::Index i = 0; i < centred.rows(); ++i)
            flat.insert(flat.end(), {centred.row(i).dot(e1), centred.row(i).dot(e2)});
        pratt_reference(flat, 2, rc, rr);
        const Eigen::Vector3d ref =
            as_rows(p3, 3).colwise().mean().transpose() + rc(0) * e1 + rc(1) * e2;
        const Round b = circle3(p3);
        expect_round(b, ref, rr, 1e-9);
        EXPECT_NEAR(std::fabs(Eigen::Vector3d(b.normal).dot(n3)), 1.0, 1e-12);
        double worst = 0.0;
        for (Eigen::Index i = 0; i < centred.rows(); ++i) {
            const Eigen::Vector3d q = as_rows(p3, 3).row(i).transpose() - ref;
            const double h = q.dot(n3);
            worst = std::max(worst, std::hypot((q - h * n3).norm() - rr, h));
        }
        EXPECT_NEAR(b.dev[0], worst, 1e-8);
    }
}

TEST_F(Lsfit, DegenerateInputGivesTheFlagAndZeroes)
{
    expect_degenerate(circle2({2, 3, 2, 3, 2, 3}), 2);                // coincident
    expect_degenerate(circle2({0, 0, 1, 2, 2, 4, -1, -2, 5, 10}), 2); // collinear
    expect_degenerate(circle2({0, 0, 1, 1}), 2);                      // two points
    expect_degenerate(circle2({0, 0, 1, kNaN, 2, 1}), 2);             // NaN
    expect_degenerate(circle3({1, 1, 1, 2, 2, 2, 3, 3, 3, -1, -1, -1}), 3, true);
    expect_degenerate(circle3({4, 5, 6, 4, 5, 6, 4, 5, 6}), 3, true);
    // Coplanar points (on a circle in z = 5) do not define a sphere.
    expect_degenerate(
        sphere(round_points(8, Eigen::Vector3d(0, 0, 5), 2.0, 0.0, 4, kX, kY, 3, false)), 3);
    expect_degenerate(sphere({1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3}), 3);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Lsfit, NoPointsForACircleOrSphereIsReported)
{
    const auto check = [](auto fit) {
        const std::optional<qxsys_report> r = qxsys::first_error(fit);
        ASSERT_TRUE(r.has_value());
        EXPECT_EQ(r->kind, QXSYS_INTERNAL);
        EXPECT_EQ(r->code, 0);
        EXPECT_STREQ(r->file, "lsfit");
        EXPECT_STREQ(r->text, "There are no input points.");
        qxsys_clear_reports();
    };
    Round r;
    check([&] { LSFIT_circle_to_points_2d(nullptr, 0, r.centre, &r.radius, &r.deg, r.dev); });
    check([&] {
        LSFIT_circle_to_points_3d(nullptr, 0, r.centre, &r.radius, r.normal, &r.deg, r.dev);
    });
    check([&] { LSFIT_sphere_to_points_3d(nullptr, -2, r.centre, &r.radius, &r.deg, r.dev); });
    // With a host that returns: one report each, then the flag and zeroes.
    expect_degenerate(circle2({}), 2);
    expect_degenerate(circle3({}), 3, true);
    expect_degenerate(sphere({}), 3);
    EXPECT_EQ(qxsys_report_count(), 3);
}

TEST_F(Lsfit, FailedAllocationsLeakNothing)
{
    // A host whose failed allocation returns: every fit gives up cleanly.
    static const Pts p = round_points(12, {1, 2, 3}, 2.0, 0.01, 5, kX, {0, 0.6, 0.8}, 3, true);
    Round r;
    const std::vector<void (*)(Round &)> fits = {
        [](Round &f) { LSFIT_line_to_points_2d(p.data(), 18, f.centre, f.normal, &f.deg, f.dev); },
        [](Round &f) { LSFIT_plane_to_points(p.data(), 12, f.centre, f.normal, &f.deg, f.dev); },
        [](Round &f) { f = circle2(p); }, [](Round &f) { f = circle3(p); },
        [](Round &f) { f = sphere(p); }};
    for (auto fit : fits) {
        const unsigned long before = qxsys_allocation_calls();
        fit(r);
        const long calls = static_cast<long>(qxsys_allocation_calls() - before);
        ASSERT_GT(calls, 0);
        for (long k = 1; k <= calls; ++k) {
            const size_t live = qxsys_live_blocks();
            qxsys_fail_allocation(k);
            fit(r);
            EXPECT_EQ(qxsys_live_blocks(), live) << k;
        }
    }
}

} // namespace
