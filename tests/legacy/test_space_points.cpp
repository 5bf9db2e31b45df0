// Points and lines in space (h300_ ... h319_, h019_, h704_): tolerance slots at their edges,
// tie rules, degenerate fallbacks; distances, closest points, projections against Eigen.
#include <cmath>
#include <random>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using Vec = Eigen::Vector3d;
constexpr double kEps = 2.220446049250313e-16;

class SpacePoints : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{20261122};
    Vec vec(double s = 10.0)
    {
        std::uniform_real_distribution<double> u(-s, s);
        return {u(rng), u(rng), u(rng)};
    }
    static Vec nan3() { return Vec::Constant(kNaN); }
};

// The distance of p from the line a + s u, the independent way.
double line_dist(const Vec &p, const Vec &a, const Vec &u)
{
    const Vec d = p - a;
    return (d - d.dot(u) / u.squaredNorm() * u).norm();
}

template <auto F> int pair_flag(const Vec &p, const Vec &q)
{
    int eq = -1;
    F(p.data(), q.data(), &eq);
    return eq;
}

TEST_F(SpacePoints, CoincidenceSlotsBoundariesAndTies)
{
    // Squared distance 0.25 exactly; each routine reads its own slot (the others are set
    // so that reading a wrong one, or the unsquared distance, changes the answer).
    const Vec p(1.0, 2.0, 3.0), q(1.0, 2.5, 3.0), far(1.0, std::nextafter(2.5, 3.0), 3.0);
    double d2 = kNaN;
    h300_(p.data(), q.data(), &d2);
    EXPECT_EQ(d2, 0.25);
    acom_.tolerance[0] = acom_.tolerance[1] = 0.3;
    for (auto [t2, t7] : {std::pair{-0.25, 0.2}, {0.2, -0.25}}) { // magnitudes used
        acom_.tolerance[2] = t2;
        acom_.tolerance[7] = t7;
        EXPECT_EQ(pair_flag<h302_>(p, q), t2 < 0 ? 1 : 0);
        EXPECT_EQ(pair_flag<h302_>(p, far), 0);
        EXPECT_EQ(pair_flag<h306_>(p, q), t7 < 0 ? 1 : 0);
        EXPECT_EQ(pair_flag<h306_>(p, far), 0);
    }
    for (auto [t, want] : {std::pair{0.5, 1}, {-0.5, 1}, {0.4999, 0}, {0.25, 0}}) {
        int eq = -1;
        h307_(p.data(), q.data(), &t, &eq); // the plain distance 0.5 against |t|
        EXPECT_EQ(eq, want) << t;
    }

    // h303_: b exactly as far as a gives 3, nearer 2, farther 1; a NaN distance gives 1.
    for (auto [bz, want] : {std::pair{-1.0, 3},
                            {std::nextafter(1.0, 0.0), 2},
                            {std::nextafter(1.0, 2.0), 1},
                            {kNaN, 1}}) {
        const Vec a(1, 0, 0), b(0, 0, bz), o(0, 0, 0);
        int code = -1;
        h303_(a.data(), b.data(), o.data(), &code);
        EXPECT_EQ(code, want) << bz;
    }
}

TEST_F(SpacePoints, DistancesAgainstEigen)
{
    open_session(1.0, true);
    for (int k = 0; k < 200; ++k) {
        const Vec p = vec(), a = vec(), b = vec(), u = vec(), c = vec(), v = vec();
        const double tol = 64 * kEps * (1 + p.norm() + a.norm() + b.norm() + c.norm());
        double d = kNaN;
        h310_(p.data(), a.data(), u.data(), &d);
        EXPECT_NEAR(d, line_dist(p, a, u), tol);
        h311_(p.data(), a.data(), b.data(), &d);
        EXPECT_NEAR(d, line_dist(p, a, b - a), tol);
        const double skew = std::abs((p - c).dot(u.cross(v).normalized()));
        h315_(p.data(), u.data(), c.data(), v.data(), &d);
        EXPECT_NEAR(d, skew, tol);
        const Vec p1 = p + u, c1 = c + v;
        h313_(p.data(), p1.data(), c.data(), c1.data(), &d);
        EXPECT_NEAR(d, skew, 4 * tol);
        // Parallel directions fall back to the distance of p from the second line.
        const Vec w = -2.5 * u;
        h315_(p.data(), u.data(), c.data(), w.data(), &d);
        EXPECT_NEAR(d, line_dist(p, c, u), tol);
        // h309_: p0p1 moved by 3 across itself, in the plane, towards p2's side.
        const Vec side = (b - p).cross(c - p).cross(b - p).normalized(), off = 3.0 * side;
        Vec q0 = nan3(), q1 = nan3();
        const double three = 3.0;
        h309_(p.data(), b.data(), c.data(), &three, q0.data(), q1.data());
        EXPECT_LE((q0 - (p + off)).norm() + (q1 - (b + off)).norm(), 1e-12);
    }
    // A null direction unitises to zero: h310_ gives 0; h315_ falls back to the distance of
    // p0 (not p1) from the second line.
    const Vec p(1, 2, 3), o(0, 0, 0), x(1, 0, 0);
    double d = kNaN;
    h310_(p.data(), o.data(), o.data(), &d);
    EXPECT_EQ(d, 0.0);
    h315_(p.data(), o.data(), o.data(), x.data(), &d);
    EXPECT_EQ(d, std::sqrt(13.0));
    const Vec p2(2, 4, 6); // collinear: h309_ gives the segment itself
    Vec q0 = nan3(), q1 = nan3();
    h309_(o.data(), p.data(), p2.data(), &d, q0.data(), q1.data());
    EXPECT_TRUE(q0 == o && q1 == p);
    // Silent at checking level 0; with checking on, vunt3_'s range assertion is the only report.
    const Vec huge(1e19, 0, 0);
    expect_checked([&] { h310_(p.data(), o.data(), huge.data(), &d); }, "vec3", 0,
                   "Assertion failed: condition");
}

TEST_F(SpacePoints, ClosestPointsAndLeastSquares)
{
    open_session(1.0, true); // tol[0] = tol[1] = 1e-10
    for (int k = 0; k < 200; ++k) {
        const Vec p0 = vec(), u0 = vec(1), p1 = vec(), u1 = vec(1);
        double t0 = kNaN, t1 = kNaN;
        Vec q0 = nan3(), q1 = nan3();
        h316_(p0.data(), u0.data(), p1.data(), u1.data(), &t0, &t1, q0.data(), q1.data());
        Eigen::Matrix<double, 3, 2> m;
        m << u0, -u1;
        const Eigen::Vector2d ref = m.colPivHouseholderQr().solve(p1 - p0);
        const double cond = 1 + 1 / (u0.cross(u1).squaredNorm());
        EXPECT_LE((Eigen::Vector2d(t0, t1) - ref).norm(), 2e-12 * cond * (1 + ref.norm()));
        EXPECT_TRUE(q0 == p0 + t0 * u0 && q1 == p1 + t1 * u1);
        double t[2] = {kNaN, kNaN};
        h019_(u0.data(), u1.data(), p0.data(), t);
        h704_(p0.data(), u0.data(), u1.data(), &t0, &t1);
        EXPECT_TRUE(t0 == t[0] && t1 == t[1]); // the same normal equations off the fallbacks
    }

    // Parallel lines: t1 = 0 and q0 the foot of p1 on the first line; w = 0: zeros.
    const Vec p0(1, 1, 0), u0(2, 0, 0), p1(5, 4, 3), u1(-1, 0, 0);
    double t0 = kNaN, t1 = kNaN;
    Vec q0 = nan3(), q1 = nan3();
    h316_(p0.data(), u0.data(), p1.data(), u1.data(), &t0, &t1, q0.data(), q1.data());
    EXPECT_TRUE(t0 == 2.0 && t1 == 0.0 && q0 == Vec(5, 1, 0) && q1 == p1);
    h316_(p0.data(), u0.data(), p0.data(), u1.data(), &t0, &t1, q0.data(), q1.data());
    EXPECT_TRUE(t0 == 0.0 && t1 == 0.0 && q0 == p0 && q1 == p0);

    // h019_ tests den = |a x b|^2 against the length tolerance (here much larger than the
    // number tolerance) and falls back to a projection on a; its other fallbacks.
    acom_.tolerance[1] = 1e-3;
    const Vec a(1, 0, 0), nearly(1, 0.01, 0), w(3, 1, 0), zero(0, 0, 0); // den = 1e-4
    const std::tuple<Vec, Vec, Vec, double, double> cases[] = {
        {a, nearly, w, 3.0, 0.0},
        {zero, Vec(0, 2, 0), w, 0.0, 0.5},
        {zero, zero, w, 0.0, 0.0},
        {a, nearly, Vec(5e-4, 0, 0), 0.0, 0.0},
        {a, nearly, Vec(0.02, 0, 0), 0.02, 0.0}}; // |w| unsquared against tol[1]
    for (const auto &[ca, cb, cw, want0, want1] : cases) {
        double t[2] = {kNaN, kNaN};
        h019_(ca.data(), cb.data(), cw.data(), t);
        EXPECT_TRUE(t[0] == want0 && t[1] == want1) << ca.transpose() << " | " << cb.transpose();
    }
    // h704_ has no fallback: den within tol[0] of 0 becomes +tol[0], the parameters blow up.
    acom_.tolerance[0] = 0.125;
    h704_(w.data(), a.data(), nearly.data(), &t0, &t1);
    const double bb = 1.0 + 0.01 * 0.01, bw = 3.0 + 0.01 * 1.0; // aa = ab = 1, aw = 3
    EXPECT_EQ(t0, (3.0 * bb - bw * 1.0) / 0.125);
    EXPECT_EQ(t1, (bw * 1.0 - 3.0 * 1.0) / 0.125);
}

TEST_F(SpacePoints, ParallelismAndProjections)
{
    open_session(1.0);           // tol[0] = 1e-4
    acom_.tolerance[1] = 2.0e-4; // distinct from tol[0]
    const Vec o(0, 0, 0), x(3, 0, 0), mx(-1, 0, 0), y(0, 2, 0);
    const Vec tilt_in(1, 0.014, 0), tilt_out(1, 0.0142, 0); // 1 - cos ~ 0.98e-4 / 1.008e-4
    for (auto [b1, want] :
         {std::pair{mx, 1}, {x, 1}, {y, 0}, {o, 0}, {tilt_in, 1}, {tilt_out, 0}}) {
        int par = -1;
        h312_(o.data(), x.data(), o.data(), b1.data(), &par);
        EXPECT_EQ(par, want) << b1.transpose();
    }

    // h314_: XY projection; z never read nor written; a short segment (squared length within
    // the number tolerance) gives t = 0 and f = p0.
    const Vec p0(1, 1, 7), p1(5, 3, -2), q(2, 6, kNaN);
    Vec f = nan3();
    double t = kNaN;
    h314_(p0.data(), p1.data(), q.data(), f.data(), &t);
    EXPECT_EQ(t, (1.0 * 4 + 5.0 * 2) / 20.0);
    EXPECT_LE(std::abs(f[0] - (1 + 4 * 0.7)) + std::abs(f[1] - (1 + 2 * 0.7)), 8 * kEps);
    EXPECT_TRUE(std::isnan(f[2]));
    const Vec tiny = p0 + Vec(0.009, 0.0, 0.0), short_ = p0 + Vec(0.0122, 0.0, 0.0);
    h314_(p0.data(), tiny.data(), q.data(), f.data(), &t); // squared length 8.1e-5 <= tol[0]
    EXPECT_TRUE(t == 0.0 && f[0] == 1.0 && f[1] == 1.0 && std::isnan(f[2]));
    h314_(p0.data(), short_.data(), q.data(), f.data(), &t); // 1.49e-4: projected
    EXPECT_NEAR(t, 1.0 / 0.0122, 1e-9);

    // h318_ exact on [0, 1]; h319_ tolerant at the ends and on the distance.
    const Vec a(1, 2, 3), b(3, 2, 3);
    const double over = 1 + 1e-12;
    const std::tuple<Vec, double, int, int> cases[] = {
        {b, 1.0, 1, 1},
        {a + over * (b - a), over, 0, 1},
        {a - 2e-5 * (b - a), -2e-5, 0, 1},
        {a + 1.00015 * (b - a), 1.00015, 0, 0},
        {a + 0.5 * (b - a) + Vec(0, 1.9e-4, 0), 0.5, 1, 1},
        {a + 0.5 * (b - a) + Vec(0, 2.1e-4, 0), 0.5, 1, 0}};
    for (const auto &[p, want_t, want_in, want_on] : cases) {
        int inside = -1, on = -1;
        h318_(p.data(), a.data(), b.data(), &inside, &t);
        EXPECT_NEAR(t, want_t, 1e-15) << p.transpose();
        EXPECT_EQ(inside, want_in) << p.transpose();
        h319_(p.data(), a.data(), b.data(), &on);
        EXPECT_EQ(on, want_on) << p.transpose();
    }
    int inside = -1, on = -1; // a = b: 0/0 is on no segment
    h318_(a.data(), a.data(), a.data(), &inside, &t);
    h319_(a.data(), a.data(), a.data(), &on);
    EXPECT_TRUE(std::isnan(t) && inside == 0 && on == 0);
}

} // namespace
