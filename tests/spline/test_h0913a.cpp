// The interpolation paths: banded (h0913a) and dense (periodic curves
// whichever entry point, h0913b with second-group conditions) against
// independent solutions (cubic Hermite poles; Eigen on the uniform periodic
// cubic system); the negative weight; the result codes with the error state
// flushed on each; refused descriptions; memory on every path. Curves on
// random data are checked end to end in test_h0913.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using Vec = std::vector<double>;
using Entry = decltype(&h0913a);

struct Problem {
    QX_interp_desc desc{};
    Vec points, params, condparams, condvectors, knots;
    std::size_t N() const
    {
        const int r = desc.periodic ? std::min(desc.closure_continuity + 1, desc.order - 1) : 0;
        return std::size_t(desc.n_points + desc.n_cond1 + desc.n_cond2 + r);
    }
    // The poles from f, which must return `expected` and leave nothing
    // pending.
    Vec call(Entry f, int expected) const
    {
        Vec poles(N() * std::size_t(desc.dimension), kNaN);
        EXPECT_EQ(f(&desc, points.data(), params.data(), condparams.data(), nullptr,
                    condvectors.data(), knots.data(), poles.data()),
                  expected);
        EXPECT_EQ(merrorlevel(), 0) << "error state not flushed";
        return poles;
    }
};

// Cubic through n points of a helix, end tangents as c1 = 2 conditions at 0
// and 1, the knots 0,0,0, params, 1,1,1.
Problem helix(int n)
{
    Problem p;
    p.desc = {n, 4, 0, 3, 2, 0, 0};
    for (int i = 0; i < n; ++i) {
        p.points.insert(p.points.end(), {std::cos(0.3 * i), std::sin(0.3 * i), 0.03 * i});
        p.params.push_back(i / (n - 1.0));
    }
    p.condparams = {0.0, 1.0};
    p.condvectors = {0, 1, 0.1, -1, 0, 0.1};
    p.knots = {0, 0, 0};
    p.knots.insert(p.knots.end(), p.params.begin(), p.params.end());
    p.knots.insert(p.knots.end(), {1, 1, 1});
    return p;
}

void expect_near(const Vec &got, const Vec &want, double tol)
{
    ASSERT_EQ(got.size(), want.size());
    for (std::size_t i = 0; i < got.size(); ++i)
        EXPECT_NEAR(got[i], want[i], tol * (1.0 + std::fabs(want[i]))) << i;
}

bool all_nan(const Vec &v)
{
    return std::all_of(v.begin(), v.end(), [](double x) { return std::isnan(x); });
}

// The first allocation fails and the host returns: -1, and the report's
// size tells the dense path (N x N doubles) from the banded one.
void expect_failed_allocation(const Problem &p, Entry f, long doubles)
{
    qxsys_clear_reports();
    qxsys_fail_allocation(1);
    p.call(f, -1);
    qxsys_fail_allocation(0);
    ASSERT_EQ(qxsys_report_count(), 1);
    EXPECT_EQ(std::string(qxsys_report_back(0)->text),
              "Failed to allocate " + std::to_string(doubles * 8) + " bytes");
}

class Interpolation : public qxtest::QxTest
{
  protected:
    Interpolation() { merrorflush(); }
    ~Interpolation() override { merrorflush(); }
};

TEST_F(Interpolation, HermitePolesAndNegativeWeight)
{
    Problem p; // P0, P0 + d0/3, P1 - d1/3, P1 on [0, 1]
    p.desc = {2, 4, 0, 3, 2, 0, 0};
    p.points = {1, 2, 3, 4, 0, -2};
    p.params = p.condparams = {0, 1};
    p.condvectors = {3, -6, 9, 1.5, 3, 0};
    p.knots = {0, 0, 0, 0, 1, 1, 1, 1};
    const Vec want = {1, 2, 3, 2, 0, 6, 3.5, -1, -2, 4, 0, -2};
    const Vec banded = p.call(h0913a, 0);
    expect_near(banded, want, 1.0e-11);
    EXPECT_EQ(p.call(h0913b, 0), banded);
    p.desc.n_cond1 = p.desc.n_cond2 = 1; // dense in h0913b
    expect_near(p.call(h0913b, 0), want, 1.0e-11);
    // Dimension 4: a solved weight below zero gives 1 on the band only.
    p.desc = {2, 4, 0, 4, 2, 0, 0};
    p.points = {1, 2, 3, 1, 4, 0, -2, 1};
    p.condvectors = {3, -6, 9, 1.5, 3, 0, 0, 0};
    EXPECT_NEAR(p.call(h0913a, 0)[7], 1.5, 1.0e-11); // 1 + 1.5/3
    p.condvectors[3] = -6.0;                         // 1 - 6/3
    EXPECT_NEAR(p.call(h0913a, 1)[7], -1.0, 1.0e-11);
    p.desc.n_cond1 = p.desc.n_cond2 = 1;
    EXPECT_NEAR(p.call(h0913b, 0)[7], -1.0, 1.0e-11);
}

TEST_F(Interpolation, PeriodicIsDenseWhicheverEntryPoint)
{
    // Eight points round a circle at the uniform knots i/8, r = 3: at a
    // uniform knot the cubics are 1/6, 2/3, 1/6; the wrap ties poles 0, 1, 2
    // to 8, 9, 10.
    Problem p;
    p.desc = {8, 4, 1, 3, 0, 0, 2};
    Eigen::MatrixXd a = Eigen::MatrixXd::Zero(11, 11), b = Eigen::MatrixXd::Zero(11, 3);
    for (int i = 0; i < 8; ++i) {
        const double t = 2.0 * M_PI * i / 8.0;
        p.points.insert(p.points.end(), {std::cos(t), std::sin(t), 0.0});
        p.params.push_back(i / 8.0);
        a(i, i) = a(i, i + 2) = 1.0 / 6.0;
        a(i, i + 1) = 2.0 / 3.0;
        b.row(i) << std::cos(t), std::sin(t), 0.0;
    }
    for (int j = 0; j < 3; ++j) a(8 + j, j) = 9.0, a(8 + j, 8 + j) = -9.0;
    for (int i = 0; i < 15; ++i) p.knots.push_back((i - 3) / 8.0);
    const Eigen::MatrixXd x = a.partialPivLu().solve(b).transpose();
    for (Entry f : {h0913a, h0913b}) {
        merrorpush(nullptr, 950, 4); // no band: a pending error does not matter
        expect_near(p.call(f, 0), Vec(x.data(), x.data() + 33), 1.0e-12);
        expect_failed_allocation(p, f, 11 * 11);
    }
}

TEST_F(Interpolation, EveryResultFlushesTheErrorState)
{
    // An error pending on entry: the band cannot be set up; -1, poles
    // untouched.
    const Problem p = helix(6);
    merrorpush(nullptr, 2900, 4);
    EXPECT_TRUE(all_nan(p.call(h0913a, -1)));
    // Singular: two points at one parameter (7235 in the band; the dense LU
    // replaces the zero pivot and returns 0), a NaN parameter (the assembly
    // stops: a zero pivot in the band, a zero row in the dense matrix).
    for (int which : {0, 1}) {
        Problem q = p;
        q.params[3] = which == 0 ? q.params[2] : kNaN;
        q.call(h0913a, 1);
        q.desc.n_cond1 = q.desc.n_cond2 = 1;
        q.call(h0913b, which);
    }
    // h0913 passes on the knot placement's -1 (order 5 through a repeated
    // parameter), flushed.
    Problem q = p;
    q.desc.order = 5;
    q.params[3] = q.params[2];
    Vec knots(16, kNaN), poles(24, kNaN);
    int nk = -1;
    merrorpush(nullptr, 951, 4);
    EXPECT_EQ(h0913(&q.desc, q.points.data(), q.params.data(), q.condparams.data(), nullptr,
                    q.condvectors.data(), &nk, knots.data(), poles.data()),
              -1);
    EXPECT_EQ(merrorlevel(), 0);
}

TEST_F(Interpolation, RefusedDescriptionsWriteNothing)
{
    const Problem good = helix(5);
    const std::vector<QX_interp_desc> bad = {
        {0, 4, 0, 3, 2, 0, 0},          {5, 1, 0, 3, 2, 0, 0},
        {5, 26, 0, 3, 2, 0, 0},         {5, 4, 0, 2, 2, 0, 0},
        {5, 4, 0, 5, 2, 0, 0},          {5, 4, 0, 3, -1, 0, 0},
        {5, 4, 0, 3, 2, -1, 0},         {5, 4, 1, 3, 2, 0, -2},
        {5, 4, 0, 3, 2147483640, 0, 0}, {2147483000, 4, 0, 3, 2147483000, 0, 0}};
    const double *pts = good.points.data(), *prm = good.params.data(), *cp = good.condparams.data(),
                 *cv = good.condvectors.data(), *kn = good.knots.data();
    Vec poles(64, kNaN), a(64, kNaN);
    double *band[8] = {};
    int nk = -7;
    for (std::size_t i = 0; i <= bad.size(); ++i) {
        const QX_interp_desc *d = i < bad.size() ? &bad[i] : nullptr;
        merrorpush(nullptr, 280, 4);
        EXPECT_EQ(h0913a(d, pts, prm, cp, nullptr, cv, kn, poles.data()), -1) << i;
        EXPECT_EQ(merrorlevel(), 0);
        EXPECT_EQ(h0913b(d, pts, prm, cp, nullptr, cv, kn, poles.data()), -1);
        EXPECT_EQ(h0913(d, pts, prm, cp, nullptr, cv, &nk, a.data(), poles.data()), -1);
        EXPECT_EQ(h0926a(d, pts, prm, cp, cv, kn, band, poles.data()), -1);
        EXPECT_EQ(h0926_(d, prm, cp, nullptr, kn, a.data()), -1);
        EXPECT_EQ(h0927_(d, pts, cv, poles.data()), -1);
    }
    // NULL arrays that would be read or written.
    EXPECT_EQ(h0913(&good.desc, pts, prm, cp, nullptr, cv, nullptr, a.data(), poles.data()), -1);
    for (int z = 0; z < 6; ++z)
        EXPECT_EQ(h0913a(&good.desc, z == 0 ? nullptr : pts, z == 1 ? nullptr : prm,
                         z == 2 ? nullptr : cp, nullptr, z == 3 ? nullptr : cv,
                         z == 4 ? nullptr : kn, z == 5 ? nullptr : poles.data()),
                  -1)
            << z;
    EXPECT_EQ(nk, -7);
    EXPECT_TRUE(all_nan(poles));
    EXPECT_TRUE(all_nan(a));
    // condkinds may be NULL, condparams and condvectors without conditions.
    const QX_interp_desc none = {5, 4, 0, 3, 0, 0, 0};
    const Vec knots = {0, 0, 0, 0, good.params[2], 1, 1, 1, 1};
    EXPECT_EQ(h0913a(&none, pts, prm, nullptr, nullptr, nullptr, knots.data(), poles.data()), 0);
}

// The nth allocation fails and the host returns: -1, nothing kept, nothing
// pending; past the last allocation the call succeeds. The first is the
// band (11 rows, half-width 3) or the dense matrix (11 x 11).
TEST_F(Interpolation, FailedAllocationsLeakNothing)
{
    Problem band = helix(9), dense = helix(9);
    dense.desc.n_cond1 = dense.desc.n_cond2 = 1;
    expect_failed_allocation(band, h0913b, 11 * 7 - 3 * 4);
    expect_failed_allocation(dense, h0913b, 11 * 11);
    for (const Problem *p : {&band, &dense})
        for (long n = 1; n < 10; ++n) {
            const std::size_t live = qxsys_live_blocks();
            qxsys_fail_allocation(n);
            const bool last = n == (p == &band ? 4 : 7); // band 3; dense 3 + LU 3
            p->call(h0913b, last ? 0 : -1);
            qxsys_fail_allocation(0);
            EXPECT_EQ(qxsys_live_blocks(), live) << n;
            if (last) break;
        }
}

} // namespace
