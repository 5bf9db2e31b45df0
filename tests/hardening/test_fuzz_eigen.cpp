// Faults the eigen-system and fit fuzzer found, each on the plain values
// that show it.
#include <cmath>
#include <vector>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using FuzzEigen = qxtest::QxTest;
using Flat = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

// Jacobi on a copy of a; every eigenpair must hold to n eps of |a| plus the
// off-diagonal sum the absolute convergence test leaves (1.0e-10).
void expect_pairs(const Flat &a0)
{
    const int n = int(a0.rows());
    Flat a = a0, v = Flat::Constant(n, n, qxtest::kNaN);
    Eigen::VectorXd d = Eigen::VectorXd::Constant(n, qxtest::kNaN);
    std::vector<double *> ap, vp;
    for (int i = 0; i < n; ++i) ap.push_back(&a(i, 0)), vp.push_back(&v(i, 0));
    int nrot = -1;
    NR_ask_eigenvalues_jacobi(ap.data(), n, 60, d.data(), vp.data(), &nrot);
    ASSERT_TRUE(d.allFinite() && v.allFinite()) << d.transpose();
    const double bound = 8 * n * DBL_EPSILON * a0.cwiseAbs().maxCoeff() + 1e-10;
    EXPECT_LE((a0 * v - v * d.asDiagonal()).cwiseAbs().maxCoeff(), bound);
    EXPECT_LE((v.transpose() * v - Flat::Identity(n, n)).cwiseAbs().maxCoeff(),
              8 * n * DBL_EPSILON);
}

// The "h negligible" test is absolute, so nearly equal diagonal elements
// with a coupling of at most 1.0e-12 passed it: t = a[p][q] / h came out far
// above 1 (eigenvalues of 1e17 from a matrix of norm 50), and for h = 0
// infinite, making every output NaN.
TEST_F(FuzzEigen, JacobiNearlyEqualDiagonalsWithTinyCouplingRotateExactly)
{
    Flat a = Flat::Identity(30, 30);
    for (int i = 0; i < 30; ++i)
        for (int j = 0; j < 30; ++j)
            if (i != j) a(i, j) = 5e-13;
    expect_pairs(a);
    if (HasFatalFailure()) return;

    // The fuzzer's case: subnormal diagonal elements beside a 2 x 2 block.
    const double dm = 4.9406564584124654e-324;
    Flat b = Flat::Constant(6, 6, dm);
    b.topLeftCorner(3, 3) << -0.00390625, -28, 5.01953125, -28, 0, 0, 5.01953125, 0, dm;
    for (int i = 0; i < 3; ++i)
        for (int j = 3; j < 6; ++j) b(i, j) = b(j, i) = i == 0 ? 0.0 : dm;
    expect_pairs(b);
    if (HasFatalFailure()) return;

    const double tiny = -1.1655535480901393e-88;
    Flat c = Flat::Zero(6, 6);
    c(0, 0) = -0.83984375, c(0, 1) = c(1, 0) = 49.171875, c(0, 2) = c(2, 0) = 25.75;
    c(0, 3) = c(3, 0) = c(3, 4) = c(4, 3) = tiny;
    expect_pairs(c);
}

} // namespace
