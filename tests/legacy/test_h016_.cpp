// Polynomial roots up to degree 4 (h016_): random polynomials from a fixed seed against
// GSL's companion-matrix solver and against residuals |p(root)| scaled by the coefficients
// and epsilon; multiple roots, vanishing leading coefficients, the order of the outputs.
#include <algorithm>
#include <cmath>
#include <complex>
#include <random>
#include <vector>

#include <gsl/gsl_poly.h>

#include "support/qx_test.h"

namespace
{

using PolyRoots = qxtest::QxTest;
using cplx = std::complex<double>;
constexpr double kEps = 2.220446049250313e-16;

struct Roots {
    int kind = -1, degree = -1, nreal = -1;
    std::vector<cplx> z;
};

// h016_ with NaN-prefilled outputs: entries past the degree must be 0, none past n written;
// the roots must come real ascending, then (+im, -im) pairs by real part.
Roots solve(const std::vector<double> &c)
{
    const int n = static_cast<int>(c.size()) - 1;
    std::vector<double> re(c.size(), qxtest::kNaN), im(c.size(), qxtest::kNaN);
    Roots r;
    h016_(&n, c.data(), re.data(), im.data(), &r.kind, &r.degree, &r.nreal);
    for (size_t i = 0; i < c.size() - 1; ++i) {
        if (static_cast<int>(i) < r.degree)
            r.z.emplace_back(re[i], im[i]);
        else
            EXPECT_TRUE(re[i] == 0.0 && im[i] == 0.0) << "entry " << i << " past the degree";
    }
    EXPECT_TRUE(std::isnan(re.back())) << "wrote past n entries";
    const auto nr = static_cast<size_t>(r.nreal);
    for (size_t i = 0; i < r.z.size(); ++i) {
        const cplx z = r.z[i];
        if (i < nr) {
            EXPECT_TRUE(z.imag() == 0.0 && (i == 0 || r.z[i - 1].real() <= z.real())) << i;
        } else if ((i - nr) % 2 == 0) {
            EXPECT_TRUE(i + 1 < r.z.size() && z.imag() > 0.0 && r.z[i + 1] == std::conj(z));
            EXPECT_TRUE(i == nr || r.z[i - 2].real() <= z.real()) << i;
        }
    }
    EXPECT_EQ(r.kind, r.degree == 0 ? r.kind : r.nreal > 0 ? 3 : 2);
    return r;
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
    open_session(1.0, true);
    std::mt19937_64 gen(16016);
    std::uniform_real_distribution<double> coef(-10.0, 10.0);
    for (int trial = 0; trial < 4000; ++trial) {
        const size_t n = 1 + trial % 4;
        std::vector<double> c(n + 1), z(2 * n);
        for (double &x : c) x = coef(gen);
        if (trial % 7 == 0) c[0] = 0.0; // a zero root
        const Roots r = solve(c);
        SCOPED_TRACE(::testing::Message() << "trial " << trial << " degree " << n);
        ASSERT_EQ(r.degree, static_cast<int>(n));
        gsl_poly_complex_workspace *w = gsl_poly_complex_workspace_alloc(c.size());
        ASSERT_EQ(gsl_poly_complex_solve(c.data(), c.size(), w, z.data()), 0);
        gsl_poly_complex_workspace_free(w);
        std::vector<cplx> oracle;
        int oracle_real = 0;
        for (size_t i = 0; i < n; ++i) {
            oracle.emplace_back(z[2 * i], z[2 * i + 1]);
            oracle_real += z[2 * i + 1] == 0.0;
        }
        expect_same_roots(r.z, oracle, 1e-7);
        EXPECT_EQ(r.nreal, oracle_real);
        for (const cplx &x : r.z) { // |p(x)| against the rounding that evaluating p costs
            cplx v = 0.0;
            double scale = 0.0;
            for (size_t i = c.size(); i-- > 0;) {
                v = v * x + c[i];
                scale = scale * std::abs(x) + std::fabs(c[i]);
            }
            EXPECT_LE(std::abs(v), 64.0 * kEps * scale) << "root " << x;
        }
    }
}

TEST_F(PolyRoots, MultipleRootsKnownCasesAndDegenerateInput)
{
    open_session(1.0, true);
    const double h = std::sqrt(0.5), s3 = 0.8660254037844386;
    struct Case {
        std::vector<double> c;
        std::vector<cplx> roots;
        double tol; // a root of multiplicity m: eps^(1/m)
        int nreal;
    };
    const Case cases[] = {
        {{1.0, 0.0, 0.0, 1.0}, {-1.0, {0.5, s3}, {0.5, -s3}}, 1e-15, 1}, // Cardano
        {{-4.0, 0.0, 3.0, -1.0}, {-1.0, 2.0, 2.0}, 1e-7, 3},
        {{-1.0, 3.0, -3.0, 1.0}, {1.0, 1.0, 1.0}, 1e-5, 3},
        {{4.0, 0.0, -5.0, 0.0, 1.0}, {-2.0, -1.0, 1.0, 2.0}, 1e-14, 4}, // Ferrari: biquadratic
        {{1.0, 0.0, 0.0, 0.0, 1.0}, {{h, h}, {h, -h}, {-h, h}, {-h, -h}}, 1e-15, 0},
        {{1.0, 0.0, 2.0, 0.0, 1.0}, {{0, 1}, {0, -1}, {0, 1}, {0, -1}}, 1e-7, 0},
        {{1.0, -4.0, 6.0, -4.0, 1.0}, {1.0, 1.0, 1.0, 1.0}, 2e-4, 4},
        {{-12.0, 20.0, -7.0, -2.0, 1.0}, {-3.0, 1.0, 2.0, 2.0}, 1e-7, 4},
        {{24e8, -50e6, 35e4, -1000.0, 1.0}, {100.0, 200.0, 300.0, 400.0}, 1e-12, 4}, // far from 1
        {{-2.0, 1.0, 0.0, 1e-13, 0.0}, {2.0}, 1e-15, 1}, // vanishing leading ones: down to h014_
        {{1.0, 0.0, 1.0, 0.0, 0.0}, {{0.0, 1.0}, {0.0, -1.0}}, 1e-15, 0},
        {{-4e200, 0.0, 1e200}, {-2.0, 2.0}, 1e-15, 2}, // squares that overflow
    };
    for (const Case &c : cases) {
        const Roots r = solve(c.c);
        EXPECT_EQ(r.nreal, c.nreal);
        expect_same_roots(r.z, c.roots, c.tol);
    }
    // A non-zero constant, the zero polynomial, a small leading coefficient kept.
    const std::vector<double> c5 = {5.0, 0.0, 0.0, 0.0, 0.0}, c0(5, 0.0),
                              keep = {-2.0, 1.0, 0.0, 1e-6};
    for (auto [c, kind, degree] : {std::tuple{c5, 1, 0}, {c0, 4, 0}, {{3.0}, 1, 0}, {keep, 3, 3}}) {
        const Roots r = solve(c);
        EXPECT_TRUE(r.kind == kind && r.degree == degree) << r.kind << " " << r.degree;
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
