// Eigen-systems: Jacobi and the generalised problem against Eigen's self-adjoint solvers
// (LAPACK-style residual and orthogonality ratios), the sweep count and its report, the
// Cholesky failure, power iteration's tie rule and convergence boundary, and memory on every
// path (scratch given back before each report; allocation failures).
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
using qxtest::kNaN;
using Eigensystems = qxtest::QxTest;

constexpr const char *kTooMany = "Too many iterations in routine NR_ask_eigenvalues_jacobi.";

// A row-pointer matrix over test-owned storage (NaN-filled unless given).
struct Rows {
    int n;
    Flat m;
    std::vector<double *> ptr;
    explicit Rows(const MatrixXd &init) : n(int(init.rows())), m(init), ptr(size_t(n))
    {
        for (int i = 0; i < n; ++i) ptr[size_t(i)] = m.row(i).data();
    }
    explicit Rows(int n_) : Rows(MatrixXd::Constant(n_, n_, kNaN)) {}
    Rows(const Rows &) = delete;
    double **p() { return ptr.data(); }
};

// Jacobi on a copy of m, outputs NaN-prefilled.
struct Jacobi {
    Rows a, v;
    std::vector<double> d;
    int nrot = -7;
    Jacobi(const MatrixXd &m, int limit) : a(m), v(a.n), d(size_t(a.n), kNaN)
    {
        NR_ask_eigenvalues_jacobi(a.p(), a.n, limit, d.data(), v.p(), &nrot);
    }
};

MatrixXd random_symmetric(int n, std::mt19937_64 &rng)
{
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    MatrixXd m(n, n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j <= i; ++j) m(i, j) = m(j, i) = u(rng);
    return m;
}

VectorXd sorted(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return Eigen::Map<VectorXd>(v.data(), Eigen::Index(v.size()));
}

// Live host blocks when the last report was made.
size_t g_live_at_report;
void note_live(const qxsys_report *, void *) { g_live_at_report = qxsys_live_blocks(); }

} // namespace

TEST_F(Eigensystems, JacobiMatchesEigen)
{
    std::mt19937_64 rng(20261122);
    for (int n = 2; n <= 12; ++n) {
        for (int rep = 0; rep < 6; ++rep) {
            const MatrixXd m = (rep % 2 == 0 ? 1.0 : 1000.0) * random_symmetric(n, rng);
            const Jacobi r(m, 60);
            const MatrixXd V = r.v.m;
            // The sweeps stop when the off-diagonal sum left in a's upper triangle is at
            // most 1.0e-10 (absolute); with it V^T A V is reproduced to rounding, but for
            // elements dropped from sweep 5 on (|a_pq| about 1.0e-12 at most, absolute).
            MatrixXd t = r.a.m.triangularView<Eigen::StrictlyUpper>();
            EXPECT_LE(t.lpNorm<1>(), 1.0e-10);
            t += MatrixXd(t.transpose());
            t.diagonal() = Eigen::Map<const VectorXd>(r.d.data(), n);
            const double eps = DBL_EPSILON, norm = m.lpNorm<1>(), dropped = n * (n - 1) * 1e-12;
            EXPECT_LT((m - V * t * V.transpose()).lpNorm<1>(), 60 * n * norm * eps + dropped);
            EXPECT_LT((MatrixXd::Identity(n, n) - V.transpose() * V).lpNorm<1>(), 60 * n * eps);
            const VectorXd ref = Eigen::SelfAdjointEigenSolver<MatrixXd>(m).eigenvalues();
            EXPECT_LT((sorted(r.d) - ref).cwiseAbs().maxCoeff(), 60 * n * eps * norm) << n;
            // Only the strict upper triangle is used up.
            EXPECT_EQ(MatrixXd(r.a.m.triangularView<Eigen::Lower>()),
                      MatrixXd(m.triangularView<Eigen::Lower>()));
        }
    }
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Eigensystems, JacobiSweepsAndTheirReport)
{
    const Jacobi diag(VectorXd::LinSpaced(4, -1.5, 3.0).asDiagonal().toDenseMatrix(), 60);
    EXPECT_EQ(diag.nrot, 0);
    EXPECT_EQ(diag.d, (std::vector<double>{-1.5, 0.0, 1.5, 3.0}));
    EXPECT_EQ(MatrixXd(diag.v.m), MatrixXd::Identity(4, 4));

    MatrixXd m2(2, 2);
    m2 << 2, 1, 1, 2;
    const Jacobi r(m2, 60);
    EXPECT_EQ(r.nrot, 1);
    EXPECT_EQ(sorted(r.d), Eigen::Vector2d(1.0, 3.0));
    for (int j = 0; j < 2; ++j) {
        EXPECT_NEAR(std::fabs(r.v.m(0, j)), M_SQRT1_2, 1e-15);
        EXPECT_NEAR(r.v.m(1, j), r.d[size_t(j)] > 2.0 ? r.v.m(0, j) : -r.v.m(0, j), 1e-15);
    }
    EXPECT_EQ(qxsys_report_count(), 0);

    // Converged at an off-diagonal sum of 1.0e-10 or less, however large the diagonal.
    for (double scale : {1.0, 1.0e8}) {
        for (double e : {1.0e-10, std::nextafter(1.0e-10, 1.0)}) {
            m2 << scale, e, e, 2.0 * scale;
            EXPECT_EQ(Jacobi(m2, 60).nrot, e > 1.0e-10 ? 1 : 0);
        }
    }
    m2 << 2, 1, 1, 2;

    // Limit 2: the one sweep converges, but the test is made only at a sweep's start.
    EXPECT_EQ(Jacobi(m2, 2).nrot, 1);
    EXPECT_EQ(qxsys_report_count(), 1);
    EXPECT_STREQ(last_report().text, kTooMany);

    // In sweeps 1 to 3 elements at most 0.2 sm / n^2 (here 0.022) wait: after the first
    // rotation the others are about 7e-4.
    MatrixXd m3 = MatrixXd::Identity(3, 3);
    m3(0, 1) = m3(1, 0) = 1.0;
    m3(0, 2) = m3(2, 0) = 1.0e-3;
    EXPECT_EQ(Jacobi(m3, 2).nrot, 1);

    // Limits 1, 0, -3 make no sweep, even for a diagonal matrix; the report comes with the
    // scratch given back, d the diagonal, v the identity.
    qxsys_set_handler(&note_live, nullptr, nullptr);
    for (int limit : {1, 0, -3}) {
        Rows a(Eigen::Vector3d(1.0, 2.0, 3.0).asDiagonal().toDenseMatrix()), v(3);
        std::vector<double> d(3, kNaN);
        int nrot = -7;
        const size_t live = qxsys_live_blocks();
        const auto err = qxsys::first_error(
            [&] { NR_ask_eigenvalues_jacobi(a.p(), 3, limit, d.data(), v.p(), &nrot); });
        ASSERT_TRUE(err.has_value());
        EXPECT_EQ(err->kind, QXSYS_INTERNAL);
        EXPECT_EQ(err->code, 0);
        EXPECT_STREQ(err->file, "nr_eigensystems");
        EXPECT_STREQ(err->text, kTooMany);
        EXPECT_EQ(g_live_at_report, live);
        EXPECT_EQ(d, (std::vector<double>{1.0, 2.0, 3.0}));
        EXPECT_EQ(MatrixXd(v.m), MatrixXd::Identity(3, 3));
        EXPECT_EQ(nrot, 0);
    }
    qxsys_set_handler(nullptr, nullptr, nullptr);
}

// Runs the generalised solver on copies of a and b, outputs NaN-prefilled.
struct Generalised {
    Flat a, b, x;
    std::vector<double> lambda;
    int nrot = -7, status = -7;
    Generalised(const MatrixXd &a_, const MatrixXd &b_)
        : a(a_), b(b_), x(Flat::Constant(a_.rows(), a_.rows(), kNaN)),
          lambda(size_t(a_.rows()), kNaN)
    {
    }
    void run(int limit)
    {
        NR_generalized_eigenvalues_symm(a.data(), b.data(), int(a.rows()), limit, lambda.data(),
                                        x.data(), &nrot, &status);
    }
};

TEST_F(Eigensystems, GeneralisedMatchesEigen)
{
    std::mt19937_64 rng(7);
    for (int n = 1; n <= 8; ++n) {
        const MatrixXd a = random_symmetric(n, rng), g = random_symmetric(n, rng);
        const MatrixXd b = g * g.transpose() + 0.5 * MatrixXd::Identity(n, n);
        Generalised r(a, b);
        r.run(60);
        EXPECT_EQ(r.status, 0);
        EXPECT_EQ(MatrixXd(r.a), a); // read only
        const VectorXd ref = Eigen::GeneralizedSelfAdjointEigenSolver<MatrixXd>(a, b).eigenvalues();
        EXPECT_LT((sorted(r.lambda) - ref).cwiseAbs().maxCoeff(),
                  1e-12 * ref.cwiseAbs().maxCoeff());
        for (int j = 0; j < n; ++j) {
            const VectorXd x = r.x.col(j);
            const double l = r.lambda[size_t(j)];
            // S's off-diagonal sum is left at up to 1.0e-10 (absolute).
            const double res = (a * x - l * b * x).norm();
            EXPECT_LT(res / ((a.norm() + std::fabs(l) * b.norm()) * x.norm()), 1e-10) << n;
            EXPECT_NEAR(x.dot(b * x), 1.0, 1e-12) << n; // B-normalised by construction
        }
    }
    EXPECT_EQ(qxsys_report_count(), 0);

    // B = identity: every step of the reduction is exact, so the results are Jacobi's.
    const MatrixXd a = random_symmetric(6, rng);
    Generalised r(a, MatrixXd::Identity(6, 6));
    r.run(60);
    const Jacobi j(a, 60);
    EXPECT_EQ(r.lambda, j.d);
    EXPECT_EQ(r.x, j.v.m);
    EXPECT_EQ(r.nrot, j.nrot);
}

TEST_F(Eigensystems, GeneralisedFailures)
{
    // Not positive definite to 1.0e-10: status 1 and nothing else written.
    Generalised np(MatrixXd::Identity(3, 3), 1.0e-11 * MatrixXd::Identity(3, 3));
    np.run(60);
    EXPECT_EQ(np.status, 1);
    EXPECT_EQ(np.nrot, -7);
    EXPECT_TRUE(np.x.array().isNaN().all());
    EXPECT_EQ(qxsys_report_count(), 0);

    // Limit 1: Jacobi's report comes with every scratch block given back, lambda and X
    // holding S's eigenpairs (S = diag(1, 1/4, 1/16), y = I); a host that returns from it
    // still gets x = L^-T y.
    qxsys_set_handler(&note_live, nullptr, nullptr);
    const MatrixXd b = Eigen::Vector3d(1.0, 4.0, 16.0).asDiagonal();
    for (bool unwind : {true, false}) {
        qxsys_clear_reports();
        Generalised r(MatrixXd::Identity(3, 3), b);
        const size_t live = qxsys_live_blocks();
        const auto err = qxsys::first_error([&] {
            if (unwind) r.run(1);
        });
        if (!unwind) r.run(1);
        EXPECT_EQ(qxsys_report_count(), 1);
        EXPECT_STREQ(last_report().text, kTooMany);
        EXPECT_STREQ(last_report().file, "nr_eigensystems");
        EXPECT_EQ(err.has_value(), unwind);
        EXPECT_EQ(g_live_at_report, live);
        EXPECT_EQ(r.lambda, (std::vector<double>{1, 0.25, 0.0625}));
        const Eigen::Vector3d x = unwind ? Eigen::Vector3d(1, 1, 1) : Eigen::Vector3d(1, 0.5, 0.25);
        EXPECT_EQ(MatrixXd(r.x), MatrixXd(x.asDiagonal()));
        EXPECT_EQ(r.nrot, 0);
        EXPECT_EQ(r.status, 0);
    }
    qxsys_set_handler(nullptr, nullptr, nullptr);
}

TEST_F(Eigensystems, AllocationFailuresLeaveDocumentedResults)
{
    // The reference host reports each failure and returns NULL: nothing may stay
    // allocated and the outputs are the documented ones.
    std::mt19937_64 rng(3);
    const MatrixXd m = random_symmetric(4, rng);
    for (long k = 1;; ++k) {
        qxsys_clear_reports();
        const size_t live = qxsys_live_blocks();
        Generalised r(m, m * m.transpose() + MatrixXd::Identity(4, 4));
        qxsys_fail_allocation(k);
        r.run(60);
        qxsys_fail_allocation(0);
        EXPECT_EQ(qxsys_live_blocks(), live) << k;
        if (qxsys_report_count() == 0) break;
        if (r.status == 2) {
            EXPECT_EQ(qxsys_report_count(), 1) << k; // the host's own
            EXPECT_TRUE(r.x.array().isNaN().all()) << k;
        } else {
            EXPECT_EQ(r.status, 0) << k;
            EXPECT_STREQ(last_report().text, "The third call of SOLVE_lu_solver failed.") << k;
        }
    }

    qxsys_fail_allocation(1);
    const Jacobi j(m, 60);
    EXPECT_EQ(Eigen::Map<const VectorXd>(j.d.data(), 4), m.diagonal());
    EXPECT_EQ(MatrixXd(j.v.m), MatrixXd::Identity(4, 4));
    EXPECT_EQ(j.nrot, 0);
}

TEST_F(Eigensystems, PowerIteration)
{
    Rows a(Eigen::Vector2d(1.0, 3.0).asDiagonal().toDenseMatrix());
    const double x0[2] = {1.0, 1.0};
    double x[2], lambda;
    int notconverged;
    // After k + 1 iterations x = (3^-(k+1), 1): the squared change 4 * 3^-(2k+2) first
    // falls to 1.0e-10 times |x_prev|^2 (about 1) at k = 11, the twelfth iteration.
    for (int limit : {1, 11, 12}) {
        NR_ask_max_eigen_val_vec(2, a.p(), limit, x0, &lambda, x, &notconverged);
        EXPECT_EQ(lambda, 3.0);
        EXPECT_EQ(x[1], 1.0);
        EXPECT_NEAR(x[0], std::pow(3.0, -limit), 1e-18);
        EXPECT_EQ(notconverged, limit < 12 ? 1 : 0);
    }

    // No iteration: lambda 0.0, x = x0 (x may be x0 itself).
    double same[2] = {0.25, -4.0};
    NR_ask_max_eigen_val_vec(2, a.p(), 0, same, &lambda, same, &notconverged);
    EXPECT_EQ(lambda, 0.0);
    EXPECT_EQ(notconverged, 1);
    EXPECT_EQ(same[1], -4.0);

    // Equal magnitudes: the first wins.
    Rows t(Eigen::Vector2d(-2.0, 2.0).asDiagonal().toDenseMatrix());
    NR_ask_max_eigen_val_vec(2, t.p(), 1, x0, &lambda, x, &notconverged);
    EXPECT_EQ(lambda, -2.0);
    EXPECT_EQ(x[1], -1.0);

    // A dominant eigenvalue well apart, against Eigen: converged means a change of at most
    // 1e-5 |x|, the error left a fraction of that.
    std::mt19937_64 rng(11);
    const VectorXd u = random_symmetric(7, rng).col(0).normalized();
    const MatrixXd s = 0.3 * random_symmetric(7, rng) + 10.0 * u * u.transpose();
    Rows rs(s);
    std::vector<double> start(7, 1.0), xv(7);
    NR_ask_max_eigen_val_vec(7, rs.p(), 200, start.data(), &lambda, xv.data(), &notconverged);
    EXPECT_EQ(notconverged, 0);
    const Eigen::SelfAdjointEigenSolver<MatrixXd> es(s);
    EXPECT_NEAR(lambda, es.eigenvalues()(6), 1e-5 * lambda);
    const VectorXd v = Eigen::Map<VectorXd>(xv.data(), 7).normalized();
    EXPECT_NEAR(std::fabs(v.dot(es.eigenvectors().col(6))), 1.0, 1e-10);
    EXPECT_EQ(qxsys_report_count(), 0);
}
