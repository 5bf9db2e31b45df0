// LU decomposition (ludcmp_a) and substitution (lubksb_a): the pivot rules,
// the leading-zero skip, bit-for-bit agreement with Crout's plain
// column-by-column loop, accuracy on random systems against the LAPACK
// residual criterion, memory on every path.
#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <Eigen/Dense>

#include "numeric/lu_internal.h"
#include "support/qx_test.h"

namespace
{

using Eigen::MatrixXd;
using Eigen::VectorXd;
using Flat = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using qxtest::kNaN;
constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kInf = std::numeric_limits<double>::infinity();

// A row-pointer matrix over a block with its rows in reverse order, each
// row between two guard columns.
struct Rows {
    static constexpr double kGuard = -7.25e300;
    Flat block;
    std::vector<double *> ptr;
    explicit Rows(const MatrixXd &m) : block(Flat::Constant(m.rows(), m.cols() + 2, kGuard))
    {
        block.middleCols(1, m.cols()) = m.colwise().reverse();
        for (Eigen::Index i = 0; i < m.rows(); ++i) ptr.push_back(&block(m.rows() - 1 - i, 1));
    }
    double **p() { return ptr.data(); }
    double &operator()(int i, int j) { return ptr[size_t(i)][j]; }
    // The pointers and guards as made, every element the same bits as m's.
    bool holds(const MatrixXd &m) const
    {
        const Eigen::Index n = m.rows();
        for (Eigen::Index i = 0; i < n; ++i)
            if (ptr[size_t(i)] != &block(n - 1 - i, 1) ||
                std::memcmp(ptr[size_t(i)], MatrixXd(m.row(i)).data(),
                            size_t(n) * sizeof(double)) != 0)
                return false;
        return (block.col(0).array() == kGuard).all() && (block.col(n + 1).array() == kGuard).all();
    }
};

// Crout's method exactly as the plain loop states it, on a dense copy
// without a zero row.
void crout_reference(MatrixXd &a, std::vector<int> &indx, double &d)
{
    const int n = int(a.rows());
    VectorXd scale = a.cwiseAbs().rowwise().maxCoeff().cwiseInverse();
    d = 1.0;
    for (int j = 0; j < n; ++j) {
        double big = 0.0;
        int imax = j;
        for (int i = 0; i < n; ++i) {
            for (int k = 0; k < std::min(i, j); ++k) a(i, j) -= a(i, k) * a(k, j);
            if (i >= j && scale[i] * std::fabs(a(i, j)) >= big) {
                big = scale[i] * std::fabs(a(i, j));
                imax = i;
            }
        }
        if (imax != j) {
            a.row(imax).swap(a.row(j));
            d = -d;
            scale[imax] = scale[j];
        }
        indx[j] = imax;
        if (a(j, j) == 0.0) a(j, j) = 1.0e-20;
        for (int i = j + 1; i < n; ++i) a(i, j) /= a(j, j);
    }
}

class LuDecomposition : public qxtest::QxTest
{
};

TEST_F(LuDecomposition, PivotRules)
{
    // [[0,1],[1,0]]: the row contents are swapped, not the pointers.
    Rows a((MatrixXd(2, 2) << 0, 1, 1, 0).finished());
    int indx[3] = {-1, -1, -1};
    double d = kNaN;
    ASSERT_EQ(ludcmp_a(a.p(), 2, indx, &d), 0);
    EXPECT_TRUE(indx[0] == 1 && indx[1] == 1 && d == -1.0);
    EXPECT_TRUE(a.holds(MatrixXd::Identity(2, 2)));

    // Equal scaled figures (rows scaled by 1/2, 1/4, 1/8): the last row wins.
    Rows t((MatrixXd(3, 3) << 2, 1, 0, 4, 0, 1, 8, 2, 2).finished());
    ASSERT_EQ(ludcmp_a(t.p(), 3, indx, &d), 0);
    EXPECT_EQ(indx[0], 2);
    EXPECT_EQ(t(0, 1), 2.0);

    // Singular but decomposed: a tie again, and the zero pivot replaced.
    Rows s(MatrixXd::Ones(2, 2));
    ASSERT_EQ(ludcmp_a(s.p(), 2, indx, &d), 0);
    EXPECT_TRUE(indx[0] == 1 && s(1, 0) == 1.0);
    EXPECT_EQ(s(1, 1), 1.0e-20);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(LuDecomposition, FailuresChangeNothingAndFreeTheScratch)
{
    MACH__checking_level = 1; // failures are results, never reports
    // A zero row anywhere (1) is found before anything changes; NaNs count
    // for nothing in the scan, even as the row's last element. No scratch
    // (2, the host's report returning): the same, untouched.
    for (int zero_row : {0, 4, -1}) {
        MatrixXd m = MatrixXd::Random(5, 5);
        if (zero_row >= 0) m.row(zero_row).setZero();
        if (zero_row == 4) m(4, 4) = kNaN;
        Rows a(m);
        std::vector<int> indx(5, -9);
        double d = kNaN;
        if (zero_row < 0) qxsys_fail_allocation(1);
        EXPECT_EQ(ludcmp_a(a.p(), 5, indx.data(), &d), zero_row < 0 ? 2 : 1) << zero_row;
        EXPECT_TRUE(a.holds(m));
        EXPECT_EQ(indx, std::vector<int>(5, -9));
        EXPECT_EQ(d, 1.0);
    }
    EXPECT_STREQ(last_report().file, "qxsys_memory"); // the only report
    EXPECT_EQ(qxsys_report_count(), 1);

    // Order 0: nothing to do, nothing allocated.
    const unsigned long calls = qxsys_allocation_calls();
    double d = kNaN;
    EXPECT_EQ(ludcmp_a(nullptr, 0, nullptr, &d), 0);
    EXPECT_EQ(d, 1.0);
    EXPECT_EQ(qxsys_allocation_calls(), calls);
}

TEST_F(LuDecomposition, SameBitsAsThePlainCroutLoop)
{
    // Every order up to 40 and some beyond, to pass through every split of
    // the blocked schedule and every tile edge; small integer entries make
    // ties and exact zero pivots common, uniform ones make it generic.
    std::mt19937_64 rng(20240611);
    std::uniform_int_distribution<int> small(-2, 2);
    std::uniform_real_distribution<double> real(-1.0, 1.0);
    std::vector<int> orders;
    for (int n = 1; n <= 40; ++n) orders.push_back(n);
    for (int n : {63, 64, 65, 100, 131, 257}) orders.push_back(n);
    for (int n : orders)
        for (int kind = 0; kind < 3; ++kind) {
            MatrixXd ref(n, n);
            for (double &v : ref.reshaped())
                v = kind == 0 ? small(rng) : kind == 1 ? real(rng) : real(rng) * 1e3;
            if (kind == 2 && n > 3) ref.row(1) = ref.row(n - 1); // exactly singular
            ref.col(0).array() += 3.0;                           // no zero row
            Rows a(ref);
            std::vector<int> want(n), got(want.size(), -1);
            double dw = 0.0, dg = kNaN;
            crout_reference(ref, want, dw);
            ASSERT_EQ(ludcmp_a(a.p(), n, got.data(), &dg), 0);
            EXPECT_EQ(got, want) << "n=" << n << " kind=" << kind;
            EXPECT_EQ(dg, dw);
            EXPECT_TRUE(a.holds(ref)) << "n=" << n << " kind=" << kind;
        }
}

TEST_F(LuDecomposition, SubstitutionSkipsLeadingZeros)
{
    // Hand-made factors, U = I: a product with the NaN or infinite L entry
    // gives NaN; before the first non-zero value none is formed.
    Rows f((MatrixXd(3, 3) << 1, 0, 0, kNaN, 1, 0, kInf, 2, 1).finished());
    const int none[3] = {0, 1, 2}, swap02[3] = {2, 1, 2};
    Eigen::Vector3d b(0.0, 5.0, 1.0);
    lubksb_a(f.p(), 3, none, b.data());
    EXPECT_EQ(b, Eigen::Vector3d(0.0, 5.0, 1.0 - 2.0 * 5.0));
    b = {7.0, 5.0, 0.0}; // the skip applies to the permuted {0, 5, 7}
    lubksb_a(f.p(), 3, swap02, b.data());
    EXPECT_EQ(b, Eigen::Vector3d(0.0, 5.0, 7.0 - 2.0 * 5.0));
    b = {1.0, 0.0, 0.0}; // from the first non-zero on, all are formed
    lubksb_a(f.p(), 3, none, b.data());
    EXPECT_TRUE(std::isnan(b[1]));
}

TEST_F(LuDecomposition, ColumnsSideBySideGiveLubksbBits)
{
    // The library's multi-column substitution against one lubksb_a call per
    // column: random factors, unit and zero-led right-hand sides, widths
    // across the slice boundary, and the NaN/infinite factors above.
    std::mt19937_64 rng(4711);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (int n : {1, 3, 4, 9}) {
        MatrixXd m = MatrixXd::NullaryExpr(n, n, [&] { return u(rng); });
        std::vector<int> indx(static_cast<size_t>(n));
        double d;
        Rows f(m);
        ASSERT_EQ(ludcmp_a(f.p(), n, indx.data(), &d), 0);
        for (int ncols : {1, 4, 8, 11}) {
            Flat b = Flat::NullaryExpr(n, ncols, [&] { return u(rng) < -0.3 ? 0.0 : u(rng); });
            Flat expect = b;
            for (int c = 0; c < ncols; ++c) {
                VectorXd col = expect.col(c);
                lubksb_a(f.p(), n, indx.data(), col.data());
                expect.col(c) = col;
            }
            std::vector<double *> rows;
            for (int i = 0; i < n; ++i) rows.push_back(b.row(i).data());
            qx_lubksb_a_columns(f.p(), n, indx.data(), rows.data(), ncols);
            EXPECT_EQ(std::memcmp(b.data(), expect.data(), sizeof(double) * size_t(n * ncols)), 0)
                << n << " x " << ncols;
        }
    }
    Rows f((MatrixXd(3, 3) << 1, 0, 0, kNaN, 1, 0, kInf, 2, 1).finished());
    const int swap02[3] = {2, 1, 2};
    Flat b = (Flat(3, 3) << 7, 1, 0, 5, 0, 0, 0, 0, 1).finished();
    Flat expect = b;
    for (int c = 0; c < 3; ++c) {
        VectorXd col = expect.col(c);
        lubksb_a(f.p(), 3, swap02, col.data());
        expect.col(c) = col;
    }
    double *rows[3] = {b.row(0).data(), b.row(1).data(), b.row(2).data()};
    qx_lubksb_a_columns(f.p(), 3, swap02, rows, 3);
    EXPECT_EQ(std::memcmp(b.data(), expect.data(), sizeof(double) * 9), 0);
}

TEST_F(LuDecomposition, RandomSystemsMeetLapacksCriterion)
{
    std::mt19937_64 rng(77);
    std::uniform_real_distribution<double> real(-1.0, 1.0);
    for (int n : {1, 2, 3, 7, 16, 33, 64, 100, 255, 500}) {
        // Well conditioned: a dominant diagonal of alternating sign, rows
        // scaled over six orders of magnitude so the implicit scaling matters.
        MatrixXd A(n, n);
        for (double &v : A.reshaped()) v = real(rng);
        for (int i = 0; i < n; ++i) {
            A(i, i) += (i % 2 ? -1.0 : 1.0) * std::sqrt(double(n)) * 2;
            A.row(i) *= std::pow(10.0, (i % 7) - 3);
        }
        Rows a(A);
        std::vector<int> indx(n, -1);
        double d = kNaN;
        ASSERT_EQ(ludcmp_a(a.p(), n, indx.data(), &d), 0);
        const double norm_a = A.cwiseAbs().rowwise().sum().maxCoeff();

        // Several right-hand sides with the same factors; the last one has
        // leading zeros after the permutation.
        for (int rhs = 0; rhs < 3; ++rhs) {
            VectorXd b = VectorXd::Unit(n, n - 1);
            if (rhs < 2)
                for (double &v : b) v = real(rng);
            VectorXd x = b;
            lubksb_a(a.p(), n, indx.data(), x.data());
            // ||b - A x||_inf / (||A||_inf ||x||_inf eps), LAPACK's test ratio.
            const double xn = x.lpNorm<Eigen::Infinity>();
            EXPECT_LT((b - A * x).lpNorm<Eigen::Infinity>() / (norm_a * xn * kEps), 30.0) << n;
        }
    }
}

} // namespace
