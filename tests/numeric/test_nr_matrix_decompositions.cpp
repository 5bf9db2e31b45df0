// Cholesky decomposition, solver and inverse factor of flat symmetric
// matrices: the absolute 1.0e-10 pivot threshold, the solver's x[0] quirk,
// which triangles are read and written, and agreement with Eigen's LLT.
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using Flat = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
constexpr double kEps = std::numeric_limits<double>::epsilon();

class Cholesky : public qxtest::QxTest
{
};

// A random symmetric positive-definite matrix of order n, well conditioned.
Flat random_spd(int n, std::mt19937_64 &rng)
{
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    Flat b(n, n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j < n; ++j) b(i, j) = u(rng);
    Flat a = b * b.transpose() / n;
    a.diagonal().array() += 1.0;
    return a;
}

TEST_F(Cholesky, AbsolutePivotThreshold)
{
    MACH__checking_level = 1; // status words, never reports
    int status = -1;
    double p[3] = {kNaN, kNaN, kNaN};

    Flat a = Flat::Identity(2, 2);
    NR_cholesky_decomp(2, a.data(), p, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(p[0], 1.0);
    EXPECT_EQ(p[1], 1.0);

    // Positive definite, but its pivots are below 1.0e-10.
    a = Flat::Identity(2, 2) * 1.0e-11;
    NR_cholesky_decomp(2, a.data(), p, &status);
    EXPECT_EQ(status, 1);

    // Exactly 1.0e-10 passes, the next double below fails.
    a = Flat::Identity(1, 1) * 1.0e-10;
    NR_cholesky_decomp(1, a.data(), p, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(p[0], std::sqrt(1.0e-10));
    a(0, 0) = std::nextafter(1.0e-10, 0.0);
    NR_cholesky_decomp(1, a.data(), p, &status);
    EXPECT_EQ(status, 1);
    a(0, 0) = kNaN;
    NR_cholesky_decomp(1, a.data(), p, &status);
    EXPECT_EQ(status, 1);

    // Failing at the third pivot leaves the first two written, the rest
    // as it was.
    a = Flat::Identity(3, 3) * 4.0;
    a(0, 1) = a(1, 0) = 2.0; // pivot 1: 4 - 1 = 3
    a(2, 2) = -1.0;
    const Flat before = a;
    p[0] = p[1] = p[2] = kNaN;
    status = -1;
    NR_cholesky_decomp(3, a.data(), p, &status);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(p[0], 2.0);
    EXPECT_EQ(p[1], std::sqrt(3.0));
    EXPECT_TRUE(std::isnan(p[2]));
    EXPECT_EQ(a(1, 0), 1.0);
    EXPECT_EQ(a(2, 0), 0.0);
    EXPECT_EQ(a(2, 1), 0.0);
    EXPECT_EQ(a.diagonal(), before.diagonal());

    // Order 0: status 0 and nothing read.
    status = -1;
    NR_cholesky_decomp(0, nullptr, nullptr, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Cholesky, FactorAgainstEigenReadingOnlyTheUpperTriangle)
{
    std::mt19937_64 rng(5);
    for (int n : {1, 2, 5, 16, 60}) {
        const Flat spd = random_spd(n, rng);
        Flat a = spd;
        // The strict lower triangle of the input is never read.
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < i; ++j) a(i, j) = kNaN;
        std::vector<double> p(static_cast<std::size_t>(n), kNaN);
        int status = -1;
        NR_cholesky_decomp(n, a.data(), p.data(), &status);
        ASSERT_EQ(status, 0);

        const Eigen::MatrixXd L_ref = Eigen::LLT<Eigen::MatrixXd>(spd).matrixL();
        for (int i = 0; i < n; ++i) {
            EXPECT_NEAR(p[i], L_ref(i, i), 8 * n * kEps) << n;
            for (int j = 0; j < i; ++j) EXPECT_NEAR(a(i, j), L_ref(i, j), 8 * n * kEps) << n;
            for (int j = i; j < n; ++j) EXPECT_EQ(a(i, j), spd(i, j)); // kept
        }
    }
}

TEST_F(Cholesky, SolverKeepsTheForwardValueOfX0)
{
    // n = 1: one division only.
    double a1 = 9.0, p1 = kNaN, x1 = kNaN;
    int status;
    NR_cholesky_decomp(1, &a1, &p1, &status);
    const double b1 = 6.0;
    NR_cholesky_solver(&a1, 1, &p1, &b1, &x1);
    EXPECT_EQ(x1, 6.0 / 3.0);

    // n = 2 on the identity: x = b.
    Flat id = Flat::Identity(2, 2);
    double p2[2], b2[2] = {3.5, -1.25}, x2[2] = {kNaN, kNaN};
    NR_cholesky_decomp(2, id.data(), p2, &status);
    NR_cholesky_solver(id.data(), 2, p2, b2, x2);
    EXPECT_EQ(x2[0], 3.5);
    EXPECT_EQ(x2[1], -1.25);

    // Random systems: x[1..n-1] solve A.x = b; x[0] is y[0] = b[0] / p[0],
    // neither corrected by the others nor divided a second time.
    std::mt19937_64 rng(11);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (int n : {2, 3, 8, 40}) {
        const Flat spd = random_spd(n, rng);
        Flat a = spd;
        std::vector<double> p(static_cast<std::size_t>(n));
        NR_cholesky_decomp(n, a.data(), p.data(), &status);
        ASSERT_EQ(status, 0);
        Eigen::VectorXd b(n), x(n);
        for (int i = 0; i < n; ++i) b(i) = u(rng);
        x.setConstant(kNaN);
        NR_cholesky_solver(a.data(), n, p.data(), b.data(), x.data());
        const Eigen::VectorXd xe = Eigen::LLT<Eigen::MatrixXd>(spd).solve(b);
        EXPECT_EQ(x(0), b(0) / p[0]) << n;
        for (int i = 1; i < n; ++i) EXPECT_NEAR(x(i), xe(i), 64 * n * kEps) << n;
        // In place, x on b: the same values.
        Eigen::VectorXd y = b;
        NR_cholesky_solver(a.data(), n, p.data(), y.data(), y.data());
        EXPECT_EQ(y, x);
    }
}

TEST_F(Cholesky, InverseOfTheFactor)
{
    std::mt19937_64 rng(3);
    for (int n : {1, 4, 30}) {
        const Flat spd = random_spd(n, rng);
        Flat a = spd;
        std::vector<double> p(static_cast<std::size_t>(n));
        int status;
        NR_cholesky_decomp(n, a.data(), p.data(), &status);
        ASSERT_EQ(status, 0);
        Eigen::MatrixXd L = Eigen::MatrixXd::Zero(n, n);
        for (int i = 0; i < n; ++i) {
            L(i, i) = p[i];
            for (int j = 0; j < i; ++j) L(i, j) = a(i, j);
        }
        NR_cholesky_inverse(n, p.data(), a.data());
        const Eigen::MatrixXd Linv_ref =
            L.triangularView<Eigen::Lower>().solve(Eigen::MatrixXd::Identity(n, n));
        for (int i = 0; i < n; ++i) {
            EXPECT_EQ(a(i, i), 1.0 / p[i]);
            for (int j = 0; j < i; ++j) EXPECT_NEAR(a(i, j), Linv_ref(i, j), 16 * n * kEps);
            for (int j = i + 1; j < n; ++j) EXPECT_EQ(a(i, j), spd(i, j)); // untouched
        }
    }
    // A zero in p is not checked.
    double one = 1.0;
    const double zero = 0.0;
    NR_cholesky_inverse(1, &zero, &one);
    EXPECT_TRUE(std::isinf(one));
}

} // namespace
