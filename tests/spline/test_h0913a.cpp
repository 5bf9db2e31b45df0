// The interpolation paths: banded (h0913a) and dense (periodic curves
// whichever entry point, h0913b with second-group conditions) against
// independent solutions (cubic Hermite poles; Eigen on the collocation
// matrix of GSL's B-splines or of uniform cubics); h0913's choice of knots;
// the result codes with the error state flushed on each; refused
// descriptions; memory on every path.
#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <Eigen/Dense>
#include <gsl/gsl_bspline.h>

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
    // The poles from f (h0913a, h0913b), which must return `expected` and
    // leave nothing pending.
    Vec call(Entry f, int expected) const
    {
        Vec poles(N() * std::size_t(desc.dimension), kNaN);
        EXPECT_EQ(f(&desc, points.data(), params.data(), condparams.data(), nullptr,
                    condvectors.data(), knots.data(), poles.data()),
                  expected);
        EXPECT_EQ(merrorlevel(), 0) << "error state not flushed";
        return poles;
    }
    // Eigen on GSL's collocation matrix (clamped knots: the breakpoints are
    // their distinct values); point rows, then condition rows, t lowered off
    // tmax as the library does.
    Vec oracle() const
    {
        const int n = int(N()), dim = desc.dimension;
        Vec breaks = knots;
        breaks.erase(std::unique(breaks.begin(), breaks.end()), breaks.end());
        gsl_bspline_workspace *w = gsl_bspline_alloc(std::size_t(desc.order), breaks.size());
        gsl_vector_view bv = gsl_vector_view_array(breaks.data(), breaks.size());
        gsl_bspline_knots(&bv.vector, w);
        EXPECT_EQ(gsl_bspline_ncoeffs(w), N());
        gsl_matrix *db = gsl_matrix_alloc(N(), 2);
        Eigen::MatrixXd a(n, n), b(n, dim);
        for (int r = 0; r < n; ++r) {
            const bool cond = r >= desc.n_points;
            const std::size_t item = std::size_t(cond ? r - desc.n_points : r);
            const double t = (cond ? condparams : params)[item];
            gsl_bspline_deriv_eval(std::min(t, breaks.back() - 5.0e-13), 1, db, w);
            for (int j = 0; j < n; ++j) a(r, j) = gsl_matrix_get(db, std::size_t(j), cond);
            for (int c = 0; c < dim; ++c) b(r, c) = (cond ? condvectors : points)[item * dim + c];
        }
        gsl_matrix_free(db);
        gsl_bspline_free(w);
        const Eigen::MatrixXd x = a.partialPivLu().solve(b).transpose();
        return Vec(x.data(), x.data() + x.size());
    }
};

// A helix through n points, chord-length parameters on [0, 1], end tangents
// as the c1 = 2 conditions at 0 and 1, the cubic knots 0,0,0, params, 1,1,1.
Problem helix(int n, int dim)
{
    Problem p;
    p.desc = {n, 4, 0, dim, 2, 0, 0};
    for (int i = 0; i < n; ++i) {
        const double a = 0.3 * i;
        p.points.insert(p.points.end(), {std::cos(a), std::sin(a), 0.1 * a});
        if (dim == 4) p.points.push_back(1.0 + 0.1 * (i % 3));
        p.params.push_back(i == 0 ? 0.0 : p.params.back() + 1.0 + 0.01 * (i % 4));
    }
    for (double &t : p.params) t /= p.params.back();
    p.condparams = {0.0, 1.0};
    p.condvectors = dim == 3 ? Vec{0, 1, 0.1, -1, 0, 0.1} : Vec{0, 1, 0.1, 0, -1, 0, 0.1, 0};
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

class Interpolation : public qxtest::QxTest
{
  protected:
    Interpolation() { merrorflush(); }
    ~Interpolation() override { merrorflush(); }
};

// The nth allocation fails and the host returns: -1, and the report's size
// tells the dense path (N x N doubles) from the banded one.
void expect_failed_allocation(const Problem &p, Entry f, long doubles, long nth = 1)
{
    qxsys_clear_reports();
    qxsys_fail_allocation(nth);
    p.call(f, -1);
    qxsys_fail_allocation(0);
    ASSERT_EQ(qxsys_report_count(), 1);
    EXPECT_EQ(std::string(qxsys_report_back(0)->text),
              "Failed to allocate " + std::to_string(doubles * 8) + " bytes");
}

TEST_F(Interpolation, HermitePolesAndWeights)
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
    // Dimension 4: a solved weight below zero gives 1 on the band.
    p.desc = {2, 4, 0, 4, 2, 0, 0};
    p.points = {1, 2, 3, 1, 4, 0, -2, 1};
    p.condvectors = {3, -6, 9, 1.5, 3, 0, 0, 0};
    EXPECT_NEAR(p.call(h0913a, 0)[7], 1.5, 1.0e-11); // 1 + 1.5/3
    p.condvectors[3] = -6.0;                         // 1 - 6/3
    EXPECT_NEAR(p.call(h0913a, 1)[7], -1.0, 1.0e-11);
}

TEST_F(Interpolation, OpenCurvesMatchADenseSolution)
{
    for (int n : {2, 3, 7, 40})
        for (int dim : {3, 4}) {
            Problem p = helix(n, dim);
            const Vec band = p.call(h0913a, 0);
            expect_near(band, p.oracle(), 1.0e-9);
            p.desc.n_cond1 = p.desc.n_cond2 = 1; // dense, the same curve
            expect_near(p.call(h0913b, 0), band, 1.0e-9);
            expect_failed_allocation(p, h0913b, long{n + 2} * (n + 2));
        }
    Problem q; // a quadratic
    q.desc = {6, 3, 0, 3, 0, 0, 0};
    q.knots = {0, 0, 0, 1, 2, 3, 4, 4, 4};
    q.params = {0, 0.5, 1.5, 2.5, 3.5, 4};
    for (int i = 0; i < 18; ++i) q.points.push_back(std::sin(i));
    expect_near(q.call(h0913a, 0), q.oracle(), 1.0e-12);
    expect_failed_allocation(q, h0913a, 6 * 5 - 2 * 3); // band of half-width 2
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

// h0913: knot_seq_order_4 for an open cubic with its first conditions at
// both ends, h0914_ otherwise; then h0913b's result on those knots, bit for
// bit. The knot placement failing gives -1, flushed.
TEST_F(Interpolation, H0913ChoosesKnotsAndPath)
{
    Problem ends = helix(7, 3), inner = ends, quintic = ends, periodic = ends;
    quintic.desc.order = 5;
    inner.condparams = {0.0, inner.params[3]}; // the c1-th is not at the last point
    periodic.desc = {7, 4, 1, 3, 0, 0, 2};
    periodic.params.back() = 0.9;
    for (Problem *p : {&ends, &inner, &quintic, &periodic, &periodic}) {
        const bool fail = p == &periodic && p->params[2] == p->params[1];
        Vec want(p->N() + 7, kNaN), knots = want, poles(p->N() * 3, kNaN);
        int wnk = -1, nk = -1;
        const int placed = p == &ends ? knot_seq_order_4(&p->desc, p->params.data(),
                                                         p->condparams.data(), &wnk, want.data())
                                      : h0914_(&p->desc, p->params.data(), p->condparams.data(),
                                               &wnk, want.data());
        if (fail) merrorpush(nullptr, 951, 4);
        EXPECT_EQ(h0913(&p->desc, p->points.data(), p->params.data(), p->condparams.data(), nullptr,
                        p->condvectors.data(), &nk, knots.data(), poles.data()),
                  fail ? -1 : 0);
        EXPECT_EQ(merrorlevel(), 0);
        EXPECT_EQ(placed, fail ? -1 : 0);
        if (fail) break;
        EXPECT_EQ(nk, wnk);
        EXPECT_EQ(Vec(knots.begin(), knots.begin() + nk), Vec(want.begin(), want.begin() + nk));
        p->knots.assign(want.begin(), want.begin() + nk);
        EXPECT_EQ(poles, p->call(h0913b, 0));
        if (p == &periodic) periodic.params[2] = periodic.params[1]; // h0914_ refuses
    }
}

TEST_F(Interpolation, FailuresFlushTheErrorState)
{
    // An error pending on entry: the band cannot be set up; -1, poles
    // untouched.
    const Problem p = helix(6, 3);
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
}

TEST_F(Interpolation, RefusedDescriptionsWriteNothing)
{
    const Problem good = helix(5, 3);
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
    // condkinds may always be NULL, condparams and condvectors without
    // conditions.
    const QX_interp_desc none = {5, 4, 0, 3, 0, 0, 0};
    const Vec knots = {0, 0, 0, 0, good.params[2], 1, 1, 1, 1};
    EXPECT_EQ(h0913a(&none, pts, prm, nullptr, nullptr, nullptr, knots.data(), poles.data()), 0);
}

// The nth allocation fails and the host returns: -1, nothing kept, nothing
// pending; past the last allocation the call succeeds.
TEST_F(Interpolation, FailedAllocationsLeakNothing)
{
    Problem band = helix(9, 3), dense = helix(9, 3);
    dense.desc.n_cond1 = dense.desc.n_cond2 = 1;
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
