// End-to-end oracle of the interpolation h0913 / h0913b: every curve they
// return, evaluated by a plain recursive Cox-de Boor evaluator written here,
// passes through its points and meets its derivative conditions (open and
// periodic, orders 2-8, dimensions 3 and 4 — a 4-D curve is the homogeneous
// curve, compared with the homogeneous points), closes with the continuity
// asked for, reproduces polynomial data of degree < k on the whole range;
// its knots come from knot_seq_order_4 or h0914_ as h0913's rule says;
// h0913b on those knots gives the same poles.
#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using V = std::vector<double>;

// d-th derivative of B_{i,k} on the polynomial piece of span sp.
double basis(const V &t, int i, int k, int sp, int d, double x)
{
    if (k == 1) return d == 0 && i == sp ? 1.0 : 0.0;
    const double dl = t[i + k - 1] - t[i], dr = t[i + k] - t[i + 1];
    double l = 0.0, r = 0.0;
    if (dl > 0) l = (d == 0 ? x - t[i] : k - 1.0) / dl * basis(t, i, k - 1, sp, d ? d - 1 : 0, x);
    if (dr > 0)
        r = (d == 0 ? t[i + k] - x : 1.0 - k) / dr * basis(t, i + 1, k - 1, sp, d ? d - 1 : 0, x);
    return l + r;
}

struct Curve {
    int k, N, dim;
    V knots, poles;
    // The span of x in [k - 1, N - 1]: right-limit, or left-limit.
    int span(double x, bool left) const
    {
        int sp = k - 1;
        while (sp < N - 1 && (left ? knots[sp + 1] < x : knots[sp + 1] <= x)) ++sp;
        return sp;
    }
    // D^d C(x) into out; returns the size of the sum (sum of |terms|).
    double eval(double x, int d, bool left, double *out) const
    {
        const int sp = span(x, left);
        double size = 0.0;
        for (int c = 0; c < dim; ++c) out[c] = 0.0;
        for (int i = sp - k + 1; i <= sp; ++i) {
            const double b = basis(knots, i, k, sp, d, x);
            for (int c = 0; c < dim; ++c) {
                out[c] += poles[static_cast<std::size_t>(i * dim + c)] * b;
                size += std::fabs(poles[static_cast<std::size_t>(i * dim + c)] * b);
            }
        }
        return size;
    }
};

struct Problem {
    QX_interp_desc d;
    V params, conds, points, vecs;
    int r;
};

// Random chord-length data: n points on [0, 1] (periodic: [0, 1), the
// closing gap counted); conditions at the first point (where & 1), at the
// end (where & 2: the last point, or 1.0 when periodic), at every third
// interior point (where & 4), sorted, the first c1 of them in group 1.
Problem make_problem(std::mt19937_64 &rng, int k, int dim, int periodic, int cc, int where)
{
    std::uniform_real_distribution<double> gap(0.05, 1.0), u(-1.0, 1.0);
    Problem p{};
    p.r = periodic ? std::min(cc + 1, k - 1) : 0;
    const int ends = (where & 1) + (where & 2 ? 1 : 0);
    const int n = std::max(periodic ? 1 : 2, k - p.r - ends + static_cast<int>(rng() % 6));
    double acc = 0.0;
    for (int i = 0; i < n; ++i) p.params.push_back(acc), acc += gap(rng);
    const double total = periodic ? acc : p.params.back();
    for (double &x : p.params) x /= total;
    if (where & 1) p.conds.push_back(0.0);
    for (int i = 3; where & 4 && i < n - 1; i += 3) p.conds.push_back(p.params[i]);
    if (where & 2) p.conds.push_back(periodic ? 1.0 : p.params.back());
    // 4-D: homogeneous points (x w, y w, z w, w), the weights from a smooth
    // periodic function as a rational curve has them (rough weights make
    // the band's poles negative, which it refuses).
    const double phase = 6.0 * u(rng), tau = 6.283185307179586;
    for (int i = 0; i < n; ++i) {
        const double w = dim == 4 ? 1 + 0.2 * std::sin(tau * p.params[i] + phase) : 1.0;
        for (int c = 0; c < dim; ++c) p.points.push_back(c == 3 ? w : w * u(rng));
    }
    for (std::size_t i = 0; i < p.conds.size(); ++i)
        for (int c = 0; c < dim; ++c)
            p.vecs.push_back(c == 3 ? 0.2 * tau * std::cos(tau * p.conds[i] + phase) : u(rng));
    const int nc = static_cast<int>(p.conds.size()), c1 = nc - static_cast<int>(rng() % 2) * nc / 2;
    p.d = QX_interp_desc{n, k, periodic, dim, c1, nc - c1, cc};
    return p;
}

// h0913 on p: result, and the curve.
int solve(const Problem &p, Curve *cv)
{
    const int N = p.d.n_points + p.d.n_cond1 + p.d.n_cond2 + p.r;
    *cv = Curve{p.d.order, N, p.d.dimension, V(static_cast<std::size_t>(N + p.d.order + 2), kNaN),
                V(static_cast<std::size_t>(N * p.d.dimension), kNaN)};
    int nknots = -1;
    const double *cp = p.conds.empty() ? nullptr : p.conds.data();
    const double *cvec = p.vecs.empty() ? nullptr : p.vecs.data();
    const int res = h0913(&p.d, p.points.data(), p.params.data(), cp, nullptr, cvec, &nknots,
                          cv->knots.data(), cv->poles.data());
    EXPECT_TRUE(res != 0 || nknots == N + p.d.order);
    return res;
}

// The parameter a row is evaluated at: the system lowers tmax by 5.0e-13,
// so the curve meets a point or a condition at tmax just inside the range.
double row_param(double x, double tmax) { return x == tmax ? tmax - 5.0e-13 : x; }

// Every point at its parameter, every condition at its, to 1e-10 of the
// size of the evaluation.
void expect_interpolates(const Problem &p, const Curve &cv, const char *what)
{
    const int dim = p.d.dimension;
    const double tmax = cv.knots[static_cast<std::size_t>(cv.N)];
    double out[4];
    for (int i = 0; i < p.d.n_points; ++i) {
        const double size = cv.eval(row_param(p.params[i], tmax), 0, false, out);
        for (int c = 0; c < dim; ++c)
            ASSERT_NEAR(out[c], p.points[static_cast<std::size_t>(i * dim + c)], 1e-10 * (1 + size))
                << what << " point " << i;
    }
    for (std::size_t j = 0; j < p.conds.size(); ++j) {
        const double size = cv.eval(row_param(p.conds[j], tmax), 1, false, out);
        for (int c = 0; c < dim; ++c)
            ASSERT_NEAR(out[c], p.vecs[j * static_cast<std::size_t>(dim) + c], 1e-10 * (1 + size))
                << what << " condition " << j;
    }
}

} // namespace

using H0913 = qxtest::QxTest;

TEST_F(H0913, CurvesInterpolateAndClose)
{
    std::mt19937_64 rng(913);
    // (periodic, closure continuity, where the conditions are); cc = 99
    // stands for k - 2 (full continuity).
    const int configs[][3] = {{0, 0, 0},  {0, 0, 3}, {0, 0, 7}, {0, 0, 4}, {0, 0, 1},  {1, 99, 0},
                              {1, 99, 5}, {1, 1, 1}, {1, 0, 3}, {1, 0, 7}, {1, -1, 0}, {1, -1, 6}};
    int solved = 0, cubics = 0;
    for (int k = 2; k <= 8; ++k)
        for (const auto &cf : configs)
            for (int dim = 3; dim <= 4; ++dim)
                for (int rep = 0; rep < 3; ++rep) {
                    const int cc = cf[1] == 99 ? k - 2 : cf[1];
                    SCOPED_TRACE(testing::Message() << "k " << k << " config " << &cf - configs
                                                    << " dim " << dim << " rep " << rep);
                    Problem p = make_problem(rng, k, dim, cf[0], cc, cf[2]);
                    if (p.r >= 2 && (cf[2] & 3) == 3) continue; // 0 and 1 are one parameter
                    Curve cv;
                    const int res = solve(p, &cv);
                    ASSERT_EQ(res, 0) << "k " << k << " config " << &cf - configs << " dim " << dim;
                    ++solved;
                    expect_interpolates(p, cv, "h0913");
                    // The knots: knot_seq_order_4's for open cubics with
                    // conditions at both ends of group 1, h0914_'s otherwise.
                    const int c1 = p.d.n_cond1;
                    const bool cubic = k == 4 && !p.d.periodic && c1 > 0 &&
                                       std::fabs(p.conds[0] - p.params[0]) < 1e-10 &&
                                       std::fabs(p.conds[c1 - 1u] - p.params.back()) < 1e-10;
                    V ref(cv.knots.size(), kNaN);
                    int nref = 0;
                    const double *cp = p.conds.empty() ? nullptr : p.conds.data();
                    cubics += cubic;
                    ASSERT_EQ((cubic ? knot_seq_order_4 : h0914_)(&p.d, p.params.data(), cp, &nref,
                                                                  ref.data()),
                              0);
                    ASSERT_EQ(nref, cv.N + k);
                    for (int i = 0; i < nref; ++i) ASSERT_EQ(cv.knots[i], ref[i]) << i;
                    // Closure: derivatives 0 ... r - 1 agree across the seam.
                    const double a = p.params[0], b = cv.knots[static_cast<std::size_t>(cv.N)];
                    for (int d = 0; d < p.r; ++d) {
                        double lo[4], hi[4];
                        const double size = cv.eval(a, d, false, lo) + cv.eval(b, d, true, hi);
                        for (int c = 0; c < dim; ++c)
                            ASSERT_NEAR(lo[c], hi[c], 1e-10 * (1 + size)) << "derivative " << d;
                    }
                    // h0913b on these knots: the same poles on the band (bit
                    // for bit), the dense path's to rounding when c2 != 0.
                    V poles(cv.poles.size(), kNaN);
                    ASSERT_EQ(h0913b(&p.d, p.points.data(), p.params.data(), cp, nullptr,
                                     p.vecs.empty() ? nullptr : p.vecs.data(), cv.knots.data(),
                                     poles.data()),
                              0);
                    for (std::size_t i = 0; i < poles.size(); ++i) {
                        if (p.d.periodic || p.d.n_cond2 == 0)
                            ASSERT_EQ(poles[i], cv.poles[i]);
                        else
                            ASSERT_NEAR(poles[i], cv.poles[i], 1e-9 * (1 + std::fabs(poles[i])));
                    }
                }
    EXPECT_GT(solved, 400);
    EXPECT_GT(cubics, 2);
}

TEST_F(H0913, ReproducesPolynomialsOnTheWholeRange)
{
    std::mt19937_64 rng(1913);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (int k = 2; k <= 8; ++k)
        for (int where : {0, 3, 7})
            for (int dim = 3; dim <= 4; ++dim) {
                Problem p = make_problem(rng, k, dim, 0, 0, where);
                // Coordinate c is sum_e coef[c][e] x^e, e < k (the weight
                // 1 + small terms, so it stays positive).
                std::vector<V> coef(static_cast<std::size_t>(dim), V(static_cast<std::size_t>(k)));
                for (int c = 0; c < dim; ++c)
                    for (int e = 0; e < k; ++e)
                        coef[c][e] = c == 3 ? (e == 0 ? 1.0 : 0.05 * u(rng)) : u(rng);
                auto poly = [&](int c, double x, int d) {
                    double s = 0.0;
                    for (int e = k - 1; e >= d; --e) {
                        double f = 1.0;
                        for (int m = 0; m < d; ++m) f *= e - m;
                        s = s * x + coef[c][e] * f;
                    }
                    return s;
                };
                // Sampled where the rows are evaluated (tmax = 1 lowered),
                // so the polynomial solves the system exactly.
                for (int i = 0; i < p.d.n_points; ++i)
                    for (int c = 0; c < dim; ++c)
                        p.points[i * dim + c] = poly(c, row_param(p.params[i], 1.0), 0);
                for (std::size_t j = 0; j < p.conds.size(); ++j)
                    for (int c = 0; c < dim; ++c)
                        p.vecs[j * dim + c] = poly(c, row_param(p.conds[j], 1.0), 1);
                Curve cv;
                ASSERT_EQ(solve(p, &cv), 0) << "k " << k << " where " << where;
                double out[4];
                const double eps = 64 * cv.N * 2.220446049250313e-16;
                for (int s = 0; s <= 200; ++s) {
                    const double x = s / 200.0;
                    const double size = cv.eval(x, 0, s == 200, out);
                    for (int c = 0; c < dim; ++c)
                        ASSERT_NEAR(out[c], poly(c, x, 0), eps * (1 + size))
                            << "k " << k << " where " << where << " x " << x;
                }
            }
}
