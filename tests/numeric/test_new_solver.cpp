// The dense drivers (SOLVE_solve_3equations, SOLVE_lu_solver) and the banded
// solver with its error state: storage layout, error numbers and levels,
// the print-out, accuracy against LAPACK's residual criterion and against
// dense solvers, and memory on every path.
#include <algorithm>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <initializer_list>
#include <random>
#include <string>
#include <vector>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;

class BandedSolver : public qxtest::QxTest
{
  protected:
    void SetUp() override
    {
        QxTest::SetUp();
        merrorflush(); // the state is process-wide: start each test clean
    }
    void TearDown() override
    {
        merrorflush();
        QxTest::TearDown();
    }
};

using DenseDrivers = BandedSolver;

// A band system owned by the test; disposed of at scope exit.
struct Band {
    int n, m;
    double **a = nullptr;
    double *b = nullptr;
    Band(int n_, int m_) : n(n_), m(m_) { msetup_banded(n, m, &a, &b); }
    ~Band() { mdispose_banded(&a, &b); }
    Band(const Band &) = delete;
    Band &operator=(const Band &) = delete;
    bool in_band(int i, int j) const { return j >= 0 && j < n && j >= i - m && j <= i + m; }
};

// Fills a random row-diagonally-dominant band matrix, every stored element
// written; one diagonal element in three negative.
void fill_dominant(Band &band, std::mt19937_64 &rng)
{
    std::uniform_real_distribution<double> off(-1.0, 1.0), extra(0.25, 1.25);
    for (int i = 0; i < band.n; ++i) {
        double row_sum = 0.0;
        for (int j = std::max(0, i - band.m); j <= std::min(band.n - 1, i + band.m); ++j) {
            if (j == i) continue;
            band.a[i][j] = off(rng);
            row_sum += std::fabs(band.a[i][j]);
        }
        band.a[i][i] = (row_sum + extra(rng)) * (i % 3 == 0 ? -1.0 : 1.0);
    }
}

// The band matrix as a dense one (zero outside the band).
Eigen::MatrixXd to_dense(const Band &band)
{
    Eigen::MatrixXd dense = Eigen::MatrixXd::Zero(band.n, band.n);
    for (int i = 0; i < band.n; ++i)
        for (int j = std::max(0, i - band.m); j <= std::min(band.n - 1, i + band.m); ++j)
            dense(i, j) = band.a[i][j];
    return dense;
}

// Sets the stored elements from a full matrix given by rows.
void set_rows(Band &band, std::initializer_list<std::initializer_list<double>> rows)
{
    int i = 0;
    for (const auto &row : rows) {
        int j = 0;
        for (const double v : row) {
            if (band.in_band(i, j)) band.a[i][j] = v;
            ++j;
        }
        ++i;
    }
}

std::string dump(double *const *a, const double *b, int n, int m, int *result = nullptr)
{
    testing::internal::CaptureStdout();
    const int r = mdump_banded(a, b, n, m);
    std::fflush(stdout);
    if (result != nullptr) *result = r;
    return testing::internal::GetCapturedStdout();
}

// ---- the error state ---------------------------------------------------------

TEST_F(BandedSolver, ErrorStateHasOneSlotClearedOnlyByFlush)
{
    EXPECT_EQ(merrorlevel(), 0);
    EXPECT_EQ(merrornum(), 0);
    static const char place[1] = {};
    merrorpush(place, 2900, 4);
    EXPECT_EQ(merrornum(), 2900);
    EXPECT_EQ(merrorlevel(), 4);
    merrorpush(nullptr, 951, 3); // overwrites: no stack; the place is not read
    EXPECT_EQ(merrornum(), 951);
    EXPECT_EQ(merrorlevel(), 3);
    merrorflush();
    EXPECT_EQ(merrornum(), 0);
    EXPECT_EQ(merrorlevel(), 0);
}

// ---- setup, storage and disposal -------------------------------------------------

TEST_F(BandedSolver, StorageIsOneZeroFilledBlockRowAfterRow)
{
    struct Case {
        int n, m;
        std::size_t stored;
    };
    // 5 x 5 tridiagonal: rows of 2, 3, 3, 3, 2; a band wider than the
    // matrix stores the full matrix.
    for (const Case c : {Case{1, 0, 1}, Case{5, 1, 13}, Case{5, 0, 5}, Case{3, 5, 9},
                         Case{7, 2, 29}, Case{4, 3, 16}}) {
        Band band(c.n, c.m);
        ASSERT_EQ(merrorlevel(), 0);
        ASSERT_NE(band.a, nullptr);
        ASSERT_NE(band.b, nullptr);
        double *block = band.a[-1];
        EXPECT_EQ(SM_length(block), c.stored * sizeof(double)) << c.n << " " << c.m;
        EXPECT_EQ(SM_length(band.a - 1), (c.n + 1) * sizeof(double *));
        EXPECT_EQ(SM_length(band.b), c.n * sizeof(double));
        EXPECT_EQ(qxsys_block_kind_of(block), QXSYS_TRANSIENT);
        EXPECT_EQ(qxsys_block_kind_of(band.a - 1), QXSYS_TRANSIENT);
        // Each stored element at the next address, reached by its
        // absolute column index; all zero.
        const double *next = block;
        for (int i = 0; i < c.n; ++i)
            for (int j = 0; j < c.n; ++j)
                if (band.in_band(i, j)) {
                    EXPECT_EQ(&band.a[i][j], next) << i << "," << j;
                    EXPECT_EQ(*next, 0.0);
                    ++next;
                }
        EXPECT_EQ(next, block + c.stored);
    }
}

TEST_F(BandedSolver, BadSizesPush280AndLeaveBothNull)
{
    for (const auto &[n, m] : {std::pair{0, 1}, std::pair{3, -1}, std::pair{-5, 2}}) {
        double **a = nullptr;
        double *b = nullptr;
        msetup_banded(n, m, &a, &b);
        EXPECT_EQ(merrornum(), 280);
        EXPECT_EQ(merrorlevel(), 4);
        EXPECT_EQ(a, nullptr);
        EXPECT_EQ(b, nullptr);
        merrorflush();
    }
    // A pending error is overwritten by the new push.
    merrorpush(nullptr, 7235, 4);
    double **a = nullptr;
    double *b = nullptr;
    msetup_banded(0, 0, &a, &b);
    EXPECT_EQ(merrornum(), 280);
    EXPECT_EQ(qxsys_report_count(), 0); // nothing through the host
}

TEST_F(BandedSolver, PendingErrorMakesAGoodSetupDisposeOfItsStorage)
{
    merrorpush(nullptr, 2900, 4);
    double **a = nullptr;
    double *b = nullptr;
    const unsigned long calls = qxsys_allocation_calls();
    msetup_banded(6, 2, &a, &b);
    EXPECT_EQ(a, nullptr);
    EXPECT_EQ(b, nullptr);
    EXPECT_GT(qxsys_allocation_calls(), calls); // made, then disposed of
    EXPECT_EQ(merrornum(), 2900);               // the old error stays, no new push
    EXPECT_EQ(merrorlevel(), 4);

    merrorflush(); // after a flush the same call succeeds
    msetup_banded(6, 2, &a, &b);
    EXPECT_NE(a, nullptr);
    EXPECT_NE(b, nullptr);
    mdispose_banded(&a, &b);
    EXPECT_EQ(a, nullptr);
    EXPECT_EQ(b, nullptr);
}

TEST_F(BandedSolver, AllocationFailuresPush950AndLeakNothing)
{
    // The host reports each failure and returns: element block, row
    // pointers and vector in turn.
    for (long k = 1; k <= 3; ++k) {
        double **a = nullptr;
        double *b = nullptr;
        qxsys_fail_allocation(k);
        msetup_banded(10, 3, &a, &b);
        EXPECT_EQ(merrornum(), 950) << k;
        EXPECT_EQ(merrorlevel(), 4);
        EXPECT_EQ(a, nullptr);
        EXPECT_EQ(b, nullptr);
        EXPECT_STREQ(last_report().file, "qxsys_memory");
        EXPECT_EQ(qxsys_live_blocks(), 0u) << k;
        merrorflush();
    }
    // NULL addresses: nothing can be handed over.
    double *b = nullptr;
    msetup_banded(4, 1, nullptr, &b);
    EXPECT_EQ(merrornum(), 950);
    EXPECT_EQ(b, nullptr);
    merrorflush();

    // A host that unwinds: the transient blocks made before the failure are
    // the host operation's, reclaimed when it ends.
    for (long k = 1; k <= 3; ++k) {
        double **a = nullptr;
        b = nullptr;
        qxsys_fail_allocation(k);
        const auto err = qxsys::first_error([&] { msetup_banded(10, 3, &a, &b); });
        ASSERT_TRUE(err.has_value());
        EXPECT_EQ(qxsys_live_blocks(), static_cast<std::size_t>(k - 1));
        EXPECT_EQ(qxsys_end_operation(), static_cast<std::size_t>(k - 1));
    }
}

TEST_F(BandedSolver, DisposeIsSafeOnNullAndTwice)
{
    double **a = nullptr;
    double *b = nullptr;
    mdispose_banded(&a, &b);
    mdispose_banded(nullptr, nullptr);
    msetup_banded(3, 1, &a, &b);
    mdispose_banded(&a, &b);
    mdispose_banded(&a, &b);
    EXPECT_EQ(a, nullptr);
    EXPECT_EQ(b, nullptr);
    EXPECT_EQ(merrorlevel(), 0);
}

// ---- factorisation and solve: failures -----------------------------------------

TEST_F(BandedSolver, OneByOne)
{
    Band band(1, 0);
    band.a[0][0] = 4.0;
    mdecompose_banded(band.a, 1, 0);
    EXPECT_EQ(band.a[0][0], 4.0);
    band.b[0] = 2.0;
    msolve_banded(band.a, 1, 0, band.b);
    EXPECT_EQ(band.b[0], 0.5);
    EXPECT_EQ(merrorlevel(), 0);

    // A diagonal matrix; a negative half-bandwidth leaves the same empty
    // sums.
    for (const int m : {0, -1}) {
        Band diag(3, 0);
        for (int i = 0; i < 3; ++i) {
            diag.a[i][i] = 2.0 + i;
            diag.b[i] = 1.0;
        }
        msolve_banded(diag.a, 3, m, diag.b);
        EXPECT_EQ(diag.b[0], 1.0 / 2.0);
        EXPECT_EQ(diag.b[1], 1.0 / 3.0);
        EXPECT_EQ(diag.b[2], 1.0 / 4.0);
    }

    // Only the solve tests the diagonal: 1.0e-15 itself passes.
    for (const double tiny : {0.0, -0.0, std::nextafter(1.0e-15, 0.0), -9.0e-16, kNaN}) {
        band.a[0][0] = tiny;
        mdecompose_banded(band.a, 1, 0);
        EXPECT_EQ(merrorlevel(), 0);
        band.b[0] = 2.0;
        msolve_banded(band.a, 1, 0, band.b);
        EXPECT_EQ(merrornum(), 7235) << tiny;
        EXPECT_EQ(merrorlevel(), 4);
        EXPECT_EQ(band.b[0], 2.0); // not divided
        merrorflush();
    }
    for (const double edge : {1.0e-15, -1.0e-15}) {
        band.a[0][0] = edge;
        band.b[0] = 1.0e-15;
        msolve_banded(band.a, 1, 0, band.b);
        EXPECT_EQ(merrorlevel(), 0);
        EXPECT_EQ(band.b[0], 1.0e-15 / edge);
    }
}

TEST_F(BandedSolver, SmallPivotsPush7235AndLeaveThePartialWork)
{
    { // Zero pivot in row 0 of a 3 x 3 tridiagonal matrix.
        Band band(3, 1);
        set_rows(band, {{0, 1, 0}, {1, 2, 1}, {0, 1, 2}});
        mdecompose_banded(band.a, 3, 1);
        EXPECT_EQ(merrornum(), 7235);
        EXPECT_EQ(merrorlevel(), 4);
        EXPECT_EQ(band.a[1][0], 1.0); // nothing eliminated yet
        merrorflush();
    }
    { // A pivot that becomes zero in row 1: row 1 done, row 2 untouched.
        Band band(4, 1);
        set_rows(band, {{1, 1, 0, 0}, {1, 1, 1, 0}, {0, 1, 2, 1}, {0, 0, 1, 2}});
        mdecompose_banded(band.a, 4, 1);
        EXPECT_EQ(merrornum(), 7235);
        EXPECT_EQ(band.a[1][0], 1.0); // the multiplier
        EXPECT_EQ(band.a[1][1], 0.0);
        EXPECT_EQ(band.a[2][1], 1.0);
        EXPECT_EQ(band.a[2][2], 2.0);
        merrorflush();
    }
    { // The last diagonal is left to the solve, which stops there.
        Band band(3, 1);
        set_rows(band, {{2, 1, 0}, {1, 3, 1}, {0, 1, 0.4}});
        mdecompose_banded(band.a, 3, 1);
        EXPECT_EQ(merrorlevel(), 0);
        EXPECT_EQ(band.a[2][2], 0.0); // 0.4 - (1 / 2.5) * 1
        for (int i = 0; i < 3; ++i) band.b[i] = 1.0;
        msolve_banded(band.a, 3, 1, band.b);
        EXPECT_EQ(merrornum(), 7235);
        EXPECT_EQ(band.b[0], 1.0);                     // back pass never reached it
        EXPECT_EQ(band.b[1], 0.5);                     // forward pass done
        EXPECT_EQ(band.b[2], 1.0 - 0.5 * (1.0 / 2.5)); // not divided
        merrorflush();
    }
    { // NaN pivots stop as well; m < 1 or n < 2 leaves the matrix alone.
        Band band(3, 1);
        band.a[0][0] = kNaN;
        band.a[1][0] = 1.0;
        mdecompose_banded(band.a, 3, 1);
        EXPECT_EQ(merrornum(), 7235);
        merrorflush();
        mdecompose_banded(band.a, 3, 0);
        mdecompose_banded(band.a, 1, 1);
        EXPECT_EQ(band.a[1][0], 1.0);
        EXPECT_EQ(merrorlevel(), 0);
    }
    // No storage to work on.
    mdecompose_banded(nullptr, 3, 1);
    EXPECT_EQ(merrornum(), 950);
    merrorflush();
    double b[2] = {1.0, 2.0};
    msolve_banded(nullptr, 2, 1, b);
    EXPECT_EQ(merrornum(), 950);
    EXPECT_EQ(b[0], 1.0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(BandedSolver, SilentAtCheckingLevelOne)
{
    MACH__checking_level = 1;
    double **a = nullptr;
    double *b = nullptr;
    msetup_banded(0, 1, &a, &b);
    merrorflush();
    msetup_banded(3, 1, &a, &b);
    mdecompose_banded(a, 3, 1); // zero pivot
    msolve_banded(a, 3, 1, b);
    merrorflush();
    mdispose_banded(&a, &b);
    EXPECT_EQ(qxsys_report_count(), 0);
}

// ---- factorisation and solve: results --------------------------------------------

// The band elimination and substitutions on a dense copy, stopping where
// the library stops: the results must be the same bits whatever the storage
// and whatever the half-bandwidth, so any change of operation order shows.
// Each returns the row of the unusable pivot, or -1.
bool unusable(double p) { return !(std::fabs(p) >= 1.0e-15); }

int dense_band_lu(Eigen::MatrixXd &d, int m)
{
    const int n = static_cast<int>(d.rows());
    for (int i = 1; i < n; ++i)
        for (int k = std::max(0, i - m); k < i; ++k) {
            if (unusable(d(k, k))) return i;
            const double l = d(i, k) / d(k, k);
            d(i, k) = l;
            for (int j = k + 1; j <= std::min(k + m, n - 1); ++j) d(i, j) -= l * d(k, j);
        }
    return -1;
}

int dense_band_solve(const Eigen::MatrixXd &d, int m, std::vector<double> &b)
{
    const int n = static_cast<int>(d.rows());
    for (int i = 1; i < n; ++i) {
        for (int k = std::max(0, i - m); k < i; ++k) b[i] -= b[k] * d(i, k);
    }
    for (int i = n - 1; i >= 0; --i) {
        for (int j = i + 1; j <= std::min(i + m, n - 1); ++j) b[i] -= d(i, j) * b[j];
        if (unusable(d(i, i))) return i;
        b[i] /= d(i, i);
    }
    return -1;
}

void expect_same_band(const Band &band, const Eigen::MatrixXd &ref)
{
    for (int i = 0; i < band.n; ++i)
        for (int j = 0; j < band.n; ++j)
            if (band.in_band(i, j)) {
                EXPECT_EQ(band.a[i][j], ref(i, j))
                    << band.n << " " << band.m << " " << i << "," << j;
            }
}

TEST_F(BandedSolver, FactorsReproduceTheMatrixAndFollowTheEliminationOrder)
{
    std::mt19937_64 rng(20240611);
    std::uniform_real_distribution<double> rhs(-3.0, 3.0);
    for (const auto &[n, m] :
         {std::pair{40, 1}, std::pair{40, 3}, std::pair{25, 8}, std::pair{40, 10}, std::pair{9, 12},
          std::pair{6, 3}, std::pair{2, 1}}) {
        Band band(n, m);
        fill_dominant(band, rng);
        const Eigen::MatrixXd a = to_dense(band);
        mdecompose_banded(band.a, n, m);
        ASSERT_EQ(merrorlevel(), 0);
        Eigen::MatrixXd ref = a;
        ASSERT_EQ(dense_band_lu(ref, m), -1);
        expect_same_band(band, ref);
        Eigen::MatrixXd l = Eigen::MatrixXd::Identity(n, n), u = Eigen::MatrixXd::Zero(n, n);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j)
                if (band.in_band(i, j)) {
                    (j < i ? l(i, j) : u(i, j)) = band.a[i][j];
                }
        // L U = A, with no fill-in outside the band.
        const double err = (l * u - a).cwiseAbs().maxCoeff();
        EXPECT_LE(err, 4.0 * (2 * m + 1) * DBL_EPSILON * a.cwiseAbs().maxCoeff()) << n << " " << m;

        std::vector<double> x(n);
        for (int i = 0; i < n; ++i) band.b[i] = x[i] = rhs(rng);
        msolve_banded(band.a, n, m, band.b);
        ASSERT_EQ(dense_band_solve(ref, m, x), -1);
        for (int i = 0; i < n; ++i) EXPECT_EQ(band.b[i], x[i]) << n << " " << m << " " << i;

        // Stops at a pivot or diagonal that is too small, wherever it is,
        // leaving the same partial work.
        for (const int bad : {1, n / 2, n - 2}) {
            if (bad < 1 || bad > n - 2) continue;
            Band broken(n, m);
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j)
                    if (band.in_band(i, j)) broken.a[i][j] = a(i, j);
            for (int j = std::max(0, bad - m); j <= std::min(n - 1, bad + m); ++j)
                broken.a[bad][j] = 0.0; // its pivot eliminates to 0
            Eigen::MatrixXd dref = to_dense(broken);
            const int stop = dense_band_lu(dref, m);
            mdecompose_banded(broken.a, n, m);
            EXPECT_EQ(merrornum(), 7235);
            EXPECT_EQ(stop, bad + 1);
            expect_same_band(broken, dref);
            merrorflush();

            // The factors of the whole matrix with one diagonal spoilt: the
            // back substitution stops there.
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j)
                    if (band.in_band(i, j)) broken.a[i][j] = band.a[i][j];
            broken.a[bad][bad] = -0.0;
            Eigen::MatrixXd sref = to_dense(broken);
            for (int i = 0; i < n; ++i) broken.b[i] = x[i] = rhs(rng);
            msolve_banded(broken.a, n, m, broken.b);
            EXPECT_EQ(merrornum(), 7235);
            EXPECT_EQ(dense_band_solve(sref, m, x), bad);
            for (int i = 0; i < n; ++i) EXPECT_EQ(broken.b[i], x[i]) << n << " " << m << " " << i;
            merrorflush();
        }
    }
}

// LAPACK's test ratio of a solution: |b - A x|_1 / (|A|_1 |x|_1 eps).
TEST_F(BandedSolver, ResidualsMeetLapacksCriterionUpToOneHundredThousand)
{
    std::mt19937_64 rng(77);
    std::uniform_real_distribution<double> rhs(-10.0, 10.0);
    const double eps = DBL_EPSILON / 2; // LAPACK's relative machine precision
    for (const auto &[n, m] : {std::pair{1, 0}, std::pair{10, 1}, std::pair{1000, 3},
                               std::pair{100000, 3}, std::pair{100000, 1}, std::pair{20000, 9}}) {
        Band band(n, m);
        Band copy(n, m); // the original matrix, for the residual
        fill_dominant(band, rng);
        for (int i = 0; i < n; ++i)
            for (int j = std::max(0, i - m); j <= std::min(n - 1, i + m); ++j)
                copy.a[i][j] = band.a[i][j];
        std::vector<double> b(n);
        for (int i = 0; i < n; ++i) band.b[i] = b[i] = rhs(rng);
        mdecompose_banded(band.a, n, m);
        msolve_banded(band.a, n, m, band.b);
        ASSERT_EQ(merrorlevel(), 0);

        std::vector<double> column_sum(n, 0.0);
        double residual = 0.0, xnorm = 0.0;
        for (int i = 0; i < n; ++i) {
            double r = b[i];
            for (int j = std::max(0, i - m); j <= std::min(n - 1, i + m); ++j) {
                r -= copy.a[i][j] * band.b[j];
                column_sum[j] += std::fabs(copy.a[i][j]);
            }
            residual += std::fabs(r);
            xnorm += std::fabs(band.b[i]);
        }
        double anorm = 0.0;
        for (double s : column_sum) anorm = std::max(anorm, s);
        const double ratio = residual / (anorm * xnorm * eps);
        EXPECT_LT(ratio, 30.0) << n << " " << m;
    }
}

TEST_F(BandedSolver, AgreesWithDenseSolversOnTheSameSystem)
{
    std::mt19937_64 rng(5);
    std::uniform_real_distribution<double> rhs(-1.0, 1.0);
    for (const auto &[n, m] : {std::pair{300, 3}, std::pair{60, 1}, std::pair{50, 10}}) {
        Band band(n, m);
        fill_dominant(band, rng);
        const Eigen::MatrixXd a = to_dense(band);
        Eigen::VectorXd b(n);
        for (int i = 0; i < n; ++i) band.b[i] = b(i) = rhs(rng);
        mdecompose_banded(band.a, n, m);
        msolve_banded(band.a, n, m, band.b);
        ASSERT_EQ(merrorlevel(), 0);
        const Eigen::VectorXd x = a.partialPivLu().solve(b);

        // The same system through the dense driver.
        std::vector<double> flat(a.size()), col(b.data(), b.data() + n);
        std::vector<double *> rows(n), brows(n);
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) flat[i * n + j] = a(i, j);
            rows[i] = &flat[i * n];
            brows[i] = &col[i];
        }
        ASSERT_EQ(SOLVE_lu_solver(rows.data(), brows.data(), n, 1), 0);

        // Diagonal dominance keeps the condition small: a few ulps per
        // unknown coupled.
        const double tol = 8.0 * n * DBL_EPSILON * x.cwiseAbs().maxCoeff();
        for (int i = 0; i < n; ++i) {
            EXPECT_NEAR(band.b[i], x(i), tol) << n << " " << m << " " << i;
            EXPECT_NEAR(col[i], x(i), tol) << n << " " << m << " " << i;
        }
    }
}

// ---- the print-out ----------------------------------------------------------------

TEST_F(BandedSolver, DumpPrintsTheBandInFixedColumns)
{
    {
        Band band(3, 0);
        for (int i = 0; i < 3; ++i) band.a[i][i] = 1.0;
        int result = -1;
        EXPECT_EQ(dump(band.a, nullptr, 3, 0, &result), "   1.00000       0           0      \n"
                                                        "     0         1.00000       0      \n"
                                                        "     0           0         1.00000  \n");
        EXPECT_EQ(result, 3);
        // The vector alone.
        band.b[0] = 1.0;
        band.b[1] = -0.000004;
        band.b[2] = 123456.789;
        EXPECT_EQ(dump(nullptr, band.b, 3, 0), "   1.00000\n  -0.00000\n123456.78900\n");
        EXPECT_EQ(dump(nullptr, nullptr, 3, 0), "\n\n\n");
    }
    {
        Band band(3, 1);
        set_rows(band, {{-2.5, 1e5, 0}, {0.125, 3, -1}, {0, 7.000004, 0.5}});
        band.b[0] = 1.0;
        band.b[1] = -1.0;
        band.b[2] = 0.0;
        EXPECT_EQ(dump(band.a, band.b, 3, 1), "  -2.50000  100000.00000       0         1.00000\n"
                                              "   0.12500     3.00000    -1.00000    -1.00000\n"
                                              "     0         7.00000     0.50000     0.00000\n");
    }
    int result = -1;
    EXPECT_EQ(dump(nullptr, nullptr, 0, 0, &result), "");
    EXPECT_EQ(result, 0);
    EXPECT_EQ(dump(nullptr, nullptr, -2, 0, &result), "");
    EXPECT_EQ(result, -2);
}

// ---- dense drivers ------------------------------------------------------------------

TEST_F(DenseDrivers, ThreeEquationsByCramersRule)
{
    const double identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    const double b[3] = {1.5, -2.0, 7.25};
    double x[3] = {kNaN, kNaN, kNaN};
    EXPECT_EQ(SOLVE_solve_3equations(identity, b, x), 0);
    EXPECT_EQ(x[0], 1.5);
    EXPECT_EQ(x[1], -2.0);
    EXPECT_EQ(x[2], 7.25);

    // Singular (two equal rows), NaN and tiny-but-non-zero determinants.
    const double equal_rows[9] = {1, 2, 3, 1, 2, 3, 0, 1, 5};
    const double with_nan[9] = {1, 0, 0, 0, kNaN, 0, 0, 0, 1};
    double kept[3] = {4.0, 5.0, 6.0};
    EXPECT_EQ(SOLVE_solve_3equations(equal_rows, b, kept), 1);
    EXPECT_EQ(SOLVE_solve_3equations(with_nan, b, kept), 1);
    EXPECT_EQ(kept[0], 4.0);
    EXPECT_EQ(kept[1], 5.0);
    EXPECT_EQ(kept[2], 6.0);
    const double tiny[9] = {1e-100, 0, 0, 0, 1e-100, 0, 0, 0, 1e-100};
    EXPECT_EQ(SOLVE_solve_3equations(tiny, b, x), 0); // no tolerance
    EXPECT_DOUBLE_EQ(x[0], 1.5e100);

    // Random systems against Eigen, the solution written over b, and the
    // cofactor formula to the bit.
    std::mt19937_64 rng(3);
    std::uniform_real_distribution<double> u(-4.0, 4.0);
    for (int trial = 0; trial < 200; ++trial) {
        double m[9], y[3];
        for (double &v : m) v = u(rng);
        for (double &v : y) v = u(rng);
        const Eigen::Matrix3d em =
            Eigen::Map<const Eigen::Matrix<double, 3, 3, Eigen::RowMajor>>(m);
        const Eigen::Vector3d ex = em.fullPivLu().solve(Eigen::Vector3d(y[0], y[1], y[2]));
        const double c0 = m[4] * m[8] - m[7] * m[5], c1 = m[1] * m[8] - m[7] * m[2],
                     c2 = m[1] * m[5] - m[2] * m[4];
        const double det = c0 * m[0] - c1 * m[3] + c2 * m[6];
        const double x1 = ((m[0] * m[8] - m[6] * m[2]) * y[1] + (m[6] * m[5] - m[3] * m[8]) * y[0] +
                           (m[2] * m[3] - m[0] * m[5]) * y[2]) /
                          det;
        double in_place[3] = {y[0], y[1], y[2]};
        ASSERT_EQ(SOLVE_solve_3equations(m, in_place, in_place), 0);
        EXPECT_EQ(in_place[1], x1);
        const double cond = em.inverse().cwiseAbs().maxCoeff() * em.cwiseAbs().maxCoeff();
        for (int i = 0; i < 3; ++i)
            EXPECT_NEAR(in_place[i], ex(i), 64 * cond * DBL_EPSILON * ex.cwiseAbs().maxCoeff());
    }
}

// Row pointers over a flat copy of a dense matrix.
struct Rows {
    std::vector<double> flat;
    std::vector<double *> ptr;
    Rows(const Eigen::MatrixXd &m)
        : flat(static_cast<std::size_t>(m.size())), ptr(static_cast<std::size_t>(m.rows()))
    {
        const auto r = m.rows(), c = m.cols();
        for (Eigen::Index i = 0; i < r; ++i) {
            ptr[i] = &flat[i * c];
            for (Eigen::Index j = 0; j < c; ++j) ptr[i][j] = m(i, j);
        }
    }
};

TEST_F(DenseDrivers, LuSolverOverSeveralRightHandSides)
{
    std::mt19937_64 rng(11);
    const int n = 12, nrhs = 3;
    const Eigen::MatrixXd a = Eigen::MatrixXd::Random(n, n) + 0.5 * Eigen::MatrixXd::Identity(n, n);
    const Eigen::MatrixXd b = Eigen::MatrixXd::Random(n, nrhs);
    Rows la(a), lb(b);
    EXPECT_EQ(SOLVE_lu_solver(la.ptr.data(), lb.ptr.data(), n, nrhs), 0);
    const Eigen::MatrixXd x = a.fullPivLu().solve(b);
    const double cond = a.inverse().cwiseAbs().maxCoeff() * a.cwiseAbs().maxCoeff();
    for (int i = 0; i < n; ++i)
        for (int c = 0; c < nrhs; ++c)
            EXPECT_NEAR(lb.ptr[i][c], x(i, c),
                        8 * n * cond * DBL_EPSILON * x.cwiseAbs().maxCoeff());

    // Exactly ludcmp_a once and lubksb_a per column.
    Rows ra(a), rb(b);
    std::vector<int> indx(n);
    double parity = 0.0;
    ASSERT_EQ(ludcmp_a(ra.ptr.data(), n, indx.data(), &parity), 0);
    for (int c = 0; c < nrhs; ++c) {
        std::vector<double> col(n);
        for (int i = 0; i < n; ++i) col[i] = rb.ptr[i][c];
        lubksb_a(ra.ptr.data(), n, indx.data(), col.data());
        for (int i = 0; i < n; ++i) EXPECT_EQ(lb.ptr[i][c], col[i]) << i << "," << c;
    }
    EXPECT_EQ(la.flat, ra.flat);

    // No right-hand side: a decomposed, b untouched.
    Rows na(a), nb(b);
    EXPECT_EQ(SOLVE_lu_solver(na.ptr.data(), nb.ptr.data(), n, 0), 0);
    EXPECT_EQ(na.flat, ra.flat);
    EXPECT_EQ(nb.flat, Rows(b).flat);

    // A zero row: code 1, a and b unchanged, scratch freed.
    Eigen::MatrixXd z = a;
    z.row(5).setZero();
    Rows za(z), zb(b);
    EXPECT_EQ(SOLVE_lu_solver(za.ptr.data(), zb.ptr.data(), n, nrhs), 1);
    EXPECT_EQ(za.flat, Rows(z).flat);
    EXPECT_EQ(zb.flat, Rows(b).flat);

    // An empty system is solved at once.
    EXPECT_EQ(SOLVE_lu_solver(nullptr, nullptr, 0, 1), 0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(DenseDrivers, LuSolverWithoutScratchMemoryReturnsMinusOne)
{
    const int n = 4;
    const Eigen::MatrixXd a = Eigen::MatrixXd::Random(n, n) + 4.0 * Eigen::MatrixXd::Identity(n, n);
    const Eigen::MatrixXd b = Eigen::MatrixXd::Random(n, 2);
    for (long k = 1; k <= 2; ++k) {
        Rows ra(a), rb(b);
        qxsys_fail_allocation(k);
        EXPECT_EQ(SOLVE_lu_solver(ra.ptr.data(), rb.ptr.data(), n, 2), -1) << k;
        EXPECT_EQ(ra.flat, Rows(a).flat);
        EXPECT_EQ(rb.flat, Rows(b).flat);
        EXPECT_EQ(qxsys_live_blocks(), 0u);
    }
}

} // namespace
