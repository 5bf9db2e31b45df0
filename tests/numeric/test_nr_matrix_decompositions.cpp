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

// A random, well conditioned symmetric positive-definite matrix of order n.
Flat random_spd(int n, std::mt19937_64 &rng)
{
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    Flat b(n, n);
    for (double &v : b.reshaped()) v = u(rng);
    return b * b.transpose() / n + Flat::Identity(n, n);
}

TEST_F(Cholesky, AbsolutePivotThreshold)
{
    MACH__checking_level = 1; // status words, never reports
    // Exactly 1.0e-10 passes; below it (even a positive-definite matrix
    // scaled small), or NaN, fails.
    for (const double d : {1.0e-10, std::nextafter(1.0e-10, 0.0), 1.0e-11, kNaN}) {
        Flat a = Flat::Identity(2, 2) * d;
        double p[2] = {kNaN, kNaN};
        int status = -1;
        NR_cholesky_decomp(2, a.data(), p, &status);
        EXPECT_EQ(status, d == 1.0e-10 ? 0 : 1) << d;
        EXPECT_TRUE(status == 1 || p[1] == std::sqrt(1.0e-10));
    }
    // Failing at the third pivot leaves the first two written, the rest as
    // it was.
    Flat a = Flat::Identity(3, 3) * 4.0;
    a(0, 1) = a(1, 0) = 2.0; // pivot 1: 4 - 1 = 3
    a(2, 2) = -1.0;
    const Flat before = a;
    double p[3] = {kNaN, kNaN, kNaN};
    int status = -1;
    NR_cholesky_decomp(3, a.data(), p, &status);
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(p[0] == 2.0 && p[1] == std::sqrt(3.0) && std::isnan(p[2]));
    EXPECT_EQ(a(1, 0), 1.0);
    EXPECT_TRUE(a(2, 0) == 0.0 && a(2, 1) == 0.0);
    EXPECT_EQ(a.diagonal(), before.diagonal());
    // Order 0: status 0 and nothing read.
    NR_cholesky_decomp(0, nullptr, nullptr, &status);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Cholesky, FactorSolverAndInverseAgainstEigen)
{
    std::mt19937_64 rng(5);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (int n : {1, 2, 5, 16, 60}) {
        const Flat spd = random_spd(n, rng);
        Flat a = spd;
        // The strict lower triangle of the input is never read.
        a.triangularView<Eigen::StrictlyLower>().setConstant(kNaN);
        std::vector<double> p(size_t(n), kNaN);
        int status = -1;
        NR_cholesky_decomp(n, a.data(), p.data(), &status);
        ASSERT_EQ(status, 0);
        const Eigen::LLT<Eigen::MatrixXd> llt(spd);
        const Eigen::MatrixXd L = llt.matrixL();
        Eigen::MatrixXd got = a.triangularView<Eigen::StrictlyLower>();
        got.diagonal() = Eigen::Map<Eigen::VectorXd>(p.data(), n);
        EXPECT_LE((got - L).cwiseAbs().maxCoeff(), 8 * n * kEps) << n;
        EXPECT_TRUE(Flat(a.triangularView<Eigen::Upper>()) == // kept
                    Flat(spd.triangularView<Eigen::Upper>()));

        // The solver: x[1..n-1] solve A.x = b; x[0] keeps b[0] / p[0], the
        // solution of L.y = b, neither corrected by the others nor divided a
        // second time. x may be b.
        Eigen::VectorXd b(n), x = Eigen::VectorXd::Constant(n, kNaN);
        for (double &v : b) v = u(rng);
        NR_cholesky_solver(a.data(), n, p.data(), b.data(), x.data());
        const Eigen::VectorXd xe = llt.solve(b);
        EXPECT_EQ(x(0), b(0) / p[0]) << n;
        for (int i = 1; i < n; ++i) EXPECT_NEAR(x(i), xe(i), 64 * n * kEps) << n;
        NR_cholesky_solver(a.data(), n, p.data(), b.data(), b.data());
        EXPECT_EQ(b, x);

        // The inverse of L over the lower triangle; the upper one untouched.
        NR_cholesky_inverse(n, p.data(), a.data());
        const Eigen::MatrixXd Linv =
            L.triangularView<Eigen::Lower>().solve(Eigen::MatrixXd::Identity(n, n));
        for (int i = 0; i < n; ++i) {
            EXPECT_EQ(a(i, i), 1.0 / p[i]);
            for (int j = 0; j < i; ++j) EXPECT_NEAR(a(i, j), Linv(i, j), 16 * n * kEps);
            for (int j = i + 1; j < n; ++j) EXPECT_EQ(a(i, j), spd(i, j));
        }
    }
}

} // namespace
