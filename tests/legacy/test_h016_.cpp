// Polynomial roots up to degree 4 (h016_): random polynomials from a fixed seed against
// GSL's companion-matrix solver and against residuals |p(root)| scaled by the coefficients
// and epsilon; multiple roots, vanishing leading coefficients, the order of the outputs.
#include <algorithm>
#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include <gsl/gsl_errno.h>
#include <gsl/gsl_poly.h>

#include "support/qx_test.h"

namespace
{

using cplx = std::complex<double>;
constexpr double kEps = 2.220446049250313e-16;

class PolyRoots : public qxtest::QxTest
{
  protected:
    void SetUp() override
    {
        QxTest::SetUp();
        open_session(1.0, true);
    }
};

struct Roots {
    int kind = -1, degree = -1, nreal = -1;
    std::vector<cplx> z;
};

Roots solve(const std::vector<double> &c)
{
    const int n = static_cast<int>(c.size()) - 1;
    std::vector<double> re(c.size(), qxtest::kNaN), im(c.size(), qxtest::kNaN);
    Roots r;
    h016_(&n, c.data(), re.data(), im.data(), &r.kind, &r.degree, &r.nreal);
    for (int i = 0; i < n; ++i) {
        const auto k = static_cast<size_t>(i);
        if (i < r.degree)
            r.z.emplace_back(re[k], im[k]);
        else
            EXPECT_TRUE(re[k] == 0.0 && im[k] == 0.0) << "entry " << i << " past the degree";
    }
    EXPECT_TRUE(std::isnan(re[static_cast<size_t>(n)])) << "wrote past n entries";
    return r;
}

// The order promised: real roots ascending, then (+im, -im) pairs by real part.
void expect_ordered(const Roots &r)
{
    const auto nr = static_cast<size_t>(r.nreal);
    for (size_t i = 0; i < r.z.size(); ++i) {
        if (i < nr) {
            EXPECT_EQ(r.z[i].imag(), 0.0);
            EXPECT_TRUE(i == 0 || r.z[i - 1].real() <= r.z[i].real());
        } else if ((i - nr) % 2 == 0) {
            ASSERT_LT(i + 1, r.z.size());
            EXPECT_GT(r.z[i].imag(), 0.0);
            EXPECT_EQ(r.z[i + 1], std::conj(r.z[i]));
            EXPECT_TRUE(i == nr || r.z[i - 2].real() <= r.z[i].real());
        }
    }
    EXPECT_EQ(r.kind, r.degree == 0 ? r.kind : r.nreal > 0 ? 3 : 2);
}

// |p(z)| against the rounding that evaluating p at z costs.
void expect_small_residual(const std::vector<double> &c, cplx z, double factor)
{
    cplx v = 0.0;
    double scale = 0.0;
    for (size_t i = c.size(); i-- > 0;) {
        v = v * z + c[i];
        scale = scale * std::abs(z) + std::fabs(c[i]);
    }
    EXPECT_LE(std::abs(v), factor * kEps * scale) << "root " << z;
}

// Every root of the one list within tol of a distinct root of the other.
void expect_same_roots(std::vector<cplx> a, std::vector<cplx> b, double tol)
{
    ASSERT_EQ(a.size(), b.size());
    for (const cplx &z : a) {
        auto best = std::min_element(b.begin(), b.end(), [&](const cplx &p, const cplx &q) {
            return std::abs(p - z) < std::abs(q - z);
        });
        EXPECT_LE(std::abs(*best - z), tol * (1.0 + std::abs(z))) << "root " << z;
        b.erase(best);
    }
}

TEST_F(PolyRoots, RandomPolynomialsAgreeWithTheCompanionMatrix)
{
    std::mt19937_64 gen(16016);
    std::uniform_real_distribution<double> coef(-10.0, 10.0);
    for (int trial = 0; trial < 4000; ++trial) {
        const int n = 1 + trial % 4;
        std::vector<double> c(static_cast<size_t>(n) + 1);
        for (double &x : c) x = coef(gen);
        if (trial % 7 == 0) c[0] = 0.0; // a zero root
        const Roots r = solve(c);
        SCOPED_TRACE(::testing::Message() << "trial " << trial << " degree " << n);
        ASSERT_EQ(r.degree, n);
        expect_ordered(r);

        std::vector<double> z(2 * static_cast<size_t>(n));
        gsl_poly_complex_workspace *w = gsl_poly_complex_workspace_alloc(c.size());
        ASSERT_EQ(gsl_poly_complex_solve(c.data(), c.size(), w, z.data()), GSL_SUCCESS);
        gsl_poly_complex_workspace_free(w);
        std::vector<cplx> oracle;
        int oracle_real = 0;
        for (size_t i = 0; i < static_cast<size_t>(n); ++i) {
            oracle.emplace_back(z[2 * i], z[2 * i + 1]);
            oracle_real += z[2 * i + 1] == 0.0;
        }
        expect_same_roots(r.z, oracle, 1e-7);
        EXPECT_EQ(r.nreal, oracle_real);
        for (const cplx &x : r.z) expect_small_residual(c, x, 64.0);
    }
}

TEST_F(PolyRoots, MultipleRootsAndKnownCases)
{
    auto expect_roots = [](const std::vector<double> &c, std::vector<cplx> want, double tol,
                           int nreal) {
        const Roots r = solve(c);
        EXPECT_EQ(r.nreal, nreal);
        expect_ordered(r);
        expect_same_roots(r.z, std::move(want), tol);
    };
    const double cbrt_eps = 1e-5, fourth_eps = 2e-4; // a root of multiplicity m: eps^(1/m)
    // Cardano: three real, one real and a pair, double, triple.
    expect_roots({-6.0, 11.0, -6.0, 1.0}, {1.0, 2.0, 3.0}, 1e-14, 3);
    expect_roots({1.0, 0.0, 0.0, 1.0},
                 {-1.0, {0.5, 0.8660254037844386}, {0.5, -0.8660254037844386}}, 1e-15, 1);
    expect_roots({-4.0, 0.0, 3.0, -1.0}, {-1.0, 2.0, 2.0}, 1e-7, 3); // -(x+1)(x-2)^2
    expect_roots({-1.0, 3.0, -3.0, 1.0}, {1.0, 1.0, 1.0}, cbrt_eps, 3);
    // Ferrari: biquadratic, four complex, double pairs, a quadruple root, resolvent cases.
    expect_roots({4.0, 0.0, -5.0, 0.0, 1.0}, {-2.0, -1.0, 1.0, 2.0}, 1e-14, 4);
    const double h = std::sqrt(0.5);
    expect_roots({1.0, 0.0, 0.0, 0.0, 1.0}, {{h, h}, {h, -h}, {-h, h}, {-h, -h}}, 1e-15, 0);
    expect_roots({1.0, 0.0, 2.0, 0.0, 1.0}, {{0, 1}, {0, -1}, {0, 1}, {0, -1}}, 1e-7, 0);
    expect_roots({1.0, -4.0, 6.0, -4.0, 1.0}, {1.0, 1.0, 1.0, 1.0}, fourth_eps, 4);
    expect_roots({-6.0, -5.0, 5.0, 5.0, 1.0}, {-3.0, -2.0, -1.0, 1.0}, 1e-13, 4);
    expect_roots({-12.0, 20.0, -7.0, -2.0, 1.0}, {-3.0, 1.0, 2.0, 2.0}, 1e-7, 4);

    // Roots far from 1: the quadratic factors keep their leading coefficient.
    expect_roots({1e8 * 24.0, -1e6 * 50.0, 1e4 * 35.0, -100.0 * 10.0, 1.0},
                 {100.0, 200.0, 300.0, 400.0}, 1e-12, 4);
}

TEST_F(PolyRoots, VanishingLeadingCoefficientsAndDegenerateInput)
{
    struct Case {
        std::vector<double> c;
        int kind, degree;
        std::vector<cplx> roots;
    };
    const Case cases[] = {
        {{-2.0, 1.0, 0.0, 1e-13, 0.0}, 3, 1, {2.0}}, // vanishing leading ones: down to h014_
        {{1.0, 0.0, 1.0, 0.0, 0.0}, 2, 2, {{0.0, 1.0}, {0.0, -1.0}}},
        {{5.0, 0.0, 0.0, 0.0, 0.0}, 1, 0, {}},
        {{0.0, 0.0, 0.0, 0.0, 0.0}, 4, 0, {}},
        {{3.0}, 1, 0, {}},
        {{-2.0, 1.0, 0.0, 1e-6}, 3, 3, {}},        // kept at the fine tolerance
        {{-4e200, 0.0, 1e200}, 3, 2, {-2.0, 2.0}}, // squares that overflow
    };
    for (const Case &c : cases) {
        const Roots r = solve(c.c);
        EXPECT_TRUE(r.kind == c.kind && r.degree == c.degree) << r.kind << " " << r.degree;
        if (!c.roots.empty()) expect_same_roots(r.z, c.roots, 1e-15);
    }
    open_session(1.0); // the same leading coefficient vanishes at the coarse tolerance
    EXPECT_EQ(solve({-2.0, 1.0, 0.0, 1e-6}).degree, 1);
    // Without a session the tolerance is 0: a leading 1e-300 is kept, and the roots overflow.
    std::memset(acom_.tolerance, 0, sizeof acom_.tolerance);
    const Roots r = solve({1.0, 1.0, 1.0, 1e-300});
    EXPECT_TRUE(r.kind == 5 && r.degree == 0);

    // Degree outside 0..4, or a coefficient not finite: kind 5 and the arrays untouched.
    double c[6] = {1, 2, 3, 4, 5, 6}, re[5] = {qxtest::kNaN}, im[5] = {qxtest::kNaN};
    const double bad[3] = {1.0, qxtest::kNaN, HUGE_VAL};
    int kind = 0, degree = -1, nreal = -1;
    for (int n : {5, -1, 2, 1}) {
        h016_(&n, n > 0 && n < 3 ? bad + 2 - n : c, re, im, &kind, &degree, &nreal);
        EXPECT_TRUE(kind == 5 && degree == 0 && nreal == 0) << n;
        EXPECT_TRUE(std::isnan(re[0]) && std::isnan(im[0]));
    }
}

} // namespace
