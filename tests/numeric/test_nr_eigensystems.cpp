// Eigen-systems against Eigen's self-adjoint solvers (bounds scaled by n eps), the sweep count
// and its report, the Cholesky failure, power iteration's tie rule and convergence boundary,
// and memory: the host unwinds from every report, so scratch still held then would leak.
#include <algorithm>
#include <cfloat>
#include <cmath>
#include <random>
#include <vector>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using Eigen::MatrixXd;
using Eigen::VectorXd;
using Flat = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using Eigensystems = qxtest::QxTest;
using qxtest::kNaN;
using GSolver = Eigen::GeneralizedSelfAdjointEigenSolver<MatrixXd>;

constexpr const char *kTooMany = "Too many iterations in routine NR_ask_eigenvalues_jacobi.";

// Jacobi on a (b empty), else the generalised solver on a and b, on copies, outputs
// NaN-prefilled; err: the host unwound from a report.
struct Eig {
    Flat a, b, v = Flat::Constant(a.rows(), a.rows(), kNaN);
    VectorXd d = VectorXd::Constant(a.rows(), kNaN);
    int nrot = -7, status = -7;
    bool err;
    Eig(const MatrixXd &a_, int limit, const MatrixXd &b_ = {}, bool unwind = true) : a(a_), b(b_)
    {
        const int n = int(a.rows());
        std::vector<double *> ap, vp;
        for (int i = 0; i < n; ++i) ap.push_back(&a(i, 0)), vp.push_back(&v(i, 0));
        const auto f = [&] {
            b.size() == 0
                ? NR_ask_eigenvalues_jacobi(ap.data(), n, limit, d.data(), vp.data(), &nrot)
                : NR_generalized_eigenvalues_symm(a.data(), b.data(), n, limit, d.data(), v.data(),
                                                  &nrot, &status);
        };
        err = unwind ? qxsys::first_error(f).has_value() : (f(), false);
    }
};

MatrixXd random_symmetric(int n, std::mt19937_64 &rng)
{
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    const MatrixXd r = MatrixXd::NullaryExpr(n, n, [&] { return u(rng); });
    return r + r.transpose();
}

VectorXd sorted(VectorXd v) { return std::sort(v.begin(), v.end()), v; }

} // namespace

TEST_F(Eigensystems, JacobiAndGeneralisedMatchEigen)
{
    std::mt19937_64 rng(20261122);
    for (int k = 2; k < 26; ++k) { // n = 1 .. 12, each at two scales
        const int n = k / 2;
        const MatrixXd m = (k % 2 ? 1000.0 : 1.0) * random_symmetric(n, rng);
        const MatrixXd I = MatrixXd::Identity(n, n), g = random_symmetric(n, rng);
        const double tol = 60 * n * DBL_EPSILON, norm = m.lpNorm<1>();
        // Stopped at an off-diagonal sum of at most 1.0e-10 left in a's upper triangle; with it
        // V^T A V is reproduced to rounding, but for elements dropped from sweep 5 on.
        const Eig r(m, 60);
        MatrixXd t = r.a.triangularView<Eigen::StrictlyUpper>();
        EXPECT_LE(t.lpNorm<1>(), 1.0e-10);
        t += MatrixXd(t.transpose()) + MatrixXd(r.d.asDiagonal());
        EXPECT_LT((m - r.v * t * r.v.transpose()).lpNorm<1>(), tol * norm + n * (n - 1) * 1e-12);
        EXPECT_LT((I - r.v.transpose() * r.v).lpNorm<1>(), tol);
        const VectorXd ref = Eigen::SelfAdjointEigenSolver<MatrixXd>(m).eigenvalues();
        EXPECT_LT((sorted(r.d) - ref).cwiseAbs().maxCoeff(), tol * norm) << n;
        EXPECT_TRUE(MatrixXd((r.a - m).triangularView<Eigen::Lower>()).isZero(0)); // kept
        // B = identity: every step of the reduction is exact, so the results are Jacobi's.
        const Eig id(m, 60, I);
        EXPECT_TRUE(id.d == r.d && id.v == r.v && id.nrot == r.nrot) << n;
        // X^T A X = diag(lambda) but for S's off-diagonal rest; X^T B X = I to rounding.
        const MatrixXd b = g * g.transpose() + 0.5 * I;
        const Eig p(m, 60, b);
        EXPECT_EQ(MatrixXd(p.a), m); // read only
        EXPECT_EQ(p.status, 0);
        const VectorXd gref = GSolver(m, b).eigenvalues();
        EXPECT_LT((sorted(p.d) - gref).cwiseAbs().maxCoeff(), 1e-12 * gref.cwiseAbs().maxCoeff());
        EXPECT_LT((p.v.transpose() * m * p.v - MatrixXd(p.d.asDiagonal())).lpNorm<1>(),
                  1e-10 * (1 + norm));
        EXPECT_LT((p.v.transpose() * b * p.v - I).lpNorm<1>(), 1e-12) << n;
    }
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Eigensystems, JacobiSweepsAndTheirReport)
{
    // A diagonal matrix: no rotation; limits 1, 0, -3 make no sweep and report.
    for (int limit : {60, 1, 0, -3}) {
        qxsys_clear_reports();
        const Eig r(Eigen::Vector3d(-1.5, 0.0, 3.0).asDiagonal().toDenseMatrix(), limit);
        EXPECT_EQ(r.d, Eigen::Vector3d(-1.5, 0.0, 3.0));
        EXPECT_EQ(MatrixXd(r.v), MatrixXd::Identity(3, 3));
        EXPECT_EQ(r.nrot, 0);
        EXPECT_TRUE(r.err == (limit < 2) && qxsys_report_count() == r.err) << limit;
    }
    EXPECT_TRUE(last_report().kind == QXSYS_INTERNAL && last_report().code == 0);
    EXPECT_STREQ(last_report().file, "nr_eigensystems");
    EXPECT_STREQ(last_report().text, kTooMany);
    // One rotation gives eigenvectors +-(1, -1) / sqrt 2 and +-(1, 1) / sqrt 2. Limit 2: the
    // one sweep converges, but the test is made only at a sweep's start.
    MatrixXd m2(2, 2);
    m2 << 2, 1, 1, 2;
    const Eig r(m2, 60), two(m2, 2);
    EXPECT_EQ(sorted(r.d), Eigen::Vector2d(1.0, 3.0));
    EXPECT_LT((r.v.cwiseAbs().array() - M_SQRT1_2).abs().maxCoeff(), 1e-15);
    EXPECT_LT((r.v.transpose() * m2 * r.v - MatrixXd(r.d.asDiagonal())).norm(), 1e-15);
    EXPECT_TRUE(r.nrot == 1 && !r.err && two.nrot == 1 && two.err);
    // Converged at an off-diagonal sum of 1.0e-10 or less, however large the diagonal.
    for (double scale : {1.0, 1.0e8})
        for (double e : {1.0e-10, std::nextafter(1.0e-10, 1.0)}) {
            m2 << scale, e, e, 2.0 * scale;
            EXPECT_EQ(Eig(m2, 60).nrot, e > 1.0e-10 ? 1 : 0);
        }
    // Sweeps 1 to 3 pass over elements at most 0.2 sm / n^2 (here 0.022): after the first
    // rotation the other is about 7e-4.
    MatrixXd m3(3, 3);
    m3 << 1, 1, 1e-3, 1, 1, 0, 1e-3, 0, 1;
    EXPECT_EQ(Eig(m3, 2).nrot, 1);
}

TEST_F(Eigensystems, GeneralisedFailuresAndAllocation)
{
    // Not positive definite to 1.0e-10: status 1 and nothing else written.
    const MatrixXd I = MatrixXd::Identity(3, 3);
    const Eig np(I, 60, 1.0e-11 * I);
    EXPECT_TRUE(np.status == 1 && np.nrot == -7 && np.v.array().isNaN().all());
    EXPECT_EQ(qxsys_report_count(), 0);

    // Limit 1: Jacobi's report comes while lambda and X hold S's eigenpairs (S = diag(1, 1/4,
    // 1/16), y = I); a host that returns from it still gets x = L^-T y.
    for (bool unwind : {true, false}) {
        qxsys_clear_reports();
        const Eig r(I, 1, Eigen::Vector3d(1.0, 4.0, 16.0).asDiagonal(), unwind);
        EXPECT_EQ(qxsys_report_count(), 1);
        EXPECT_STREQ(last_report().text, kTooMany);
        EXPECT_TRUE(r.err == unwind && r.nrot == 0 && r.status == 0);
        EXPECT_EQ(r.d, Eigen::Vector3d(1, 0.25, 0.0625));
        const Eigen::Vector3d x = unwind ? Eigen::Vector3d(1, 1, 1) : Eigen::Vector3d(1, 0.5, 0.25);
        EXPECT_EQ(MatrixXd(r.v), MatrixXd(x.asDiagonal()));
    }
    // Each allocation failing in turn (reported by the host, which returns NULL): status 2 and
    // X unwritten, or the solve's report after the host's; nothing left allocated.
    std::mt19937_64 rng(3);
    const MatrixXd m = random_symmetric(4, rng), b = m * m.transpose() + MatrixXd::Identity(4, 4);
    for (long k = 1;; ++k) {
        qxsys_clear_reports();
        qxsys_fail_allocation(k);
        const Eig r(m, 60, b, false);
        qxsys_fail_allocation(0);
        if (qxsys_report_count() == 0) break;
        EXPECT_EQ(r.v.array().isNaN().all(), r.status == 2) << k;
        EXPECT_EQ(qxsys_report_count(), r.status == 2 ? 1 : 2) << k;
        EXPECT_STREQ(last_report().text, r.status == 2
                                             ? last_report().text
                                             : "The third call of SOLVE_lu_solver failed.");
    }
    qxsys_fail_allocation(1);
    const Eig j(m, 60);
    EXPECT_TRUE(j.d == m.diagonal() && j.v == MatrixXd::Identity(4, 4) && j.nrot == 0);
}

TEST_F(Eigensystems, PowerIteration)
{
    double a[2][2] = {{1.0, 0.0}, {0.0, 3.0}}, *ap[2] = {a[0], a[1]}, x[2], lambda;
    const double x0[2] = {1.0, 1.0};
    int nc;
    const auto power = [&](int limit, double l, double x_0, double x_1, int c, double tol) {
        NR_ask_max_eigen_val_vec(2, ap, limit, x0, &lambda, x, &nc);
        EXPECT_TRUE(std::fabs(lambda - l) <= tol && std::fabs(x[0] - x_0) <= tol &&
                    std::fabs(x[1] - x_1) <= tol && nc == c)
            << limit << ": " << lambda << " (" << x[0] << ", " << x[1] << ") " << nc;
    };
    // diag(1, 3): after k iterations x = (3^-k, 1); the squared change first falls to
    // 1.0e-10 |x_prev|^2 at the twelfth.
    for (int limit : {1, 11, 12}) power(limit, 3.0, std::pow(3.0, -limit), 1.0, limit < 12, 1e-18);
    a[0][0] = -2.0, a[1][1] = 2.0; // equal magnitudes: the first wins
    power(1, -2.0, 1.0, -1.0, 1, 0.0);
    // Not symmetric: (1, 0) for 2, the transpose's is (1, 1); x[1] halves each iteration and
    // is about 2e-5 when converged.
    a[0][0] = 2.0, a[0][1] = 1.0, a[1][1] = 1.0;
    power(100, 2.0, 1.0, 0.0, 0, 1e-4);
    // No iteration: lambda 0.0, x = x0 (x may be x0 itself).
    double same[2] = {0.25, -4.0};
    NR_ask_max_eigen_val_vec(2, ap, 0, same, &lambda, same, &nc);
    EXPECT_TRUE(lambda == 0.0 && same[0] == 0.25 && same[1] == -4.0 && nc == 1);
}
