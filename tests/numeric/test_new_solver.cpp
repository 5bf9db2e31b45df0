// The dense drivers (SOLVE_solve_3equations, SOLVE_lu_solver) and the banded
// solver with its error state: storage layout, error numbers and levels,
// the print-out, bit-for-bit agreement with the plain band loops, accuracy
// against LAPACK's residual criterion and dense solvers, memory on every path.
#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include <Eigen/Dense>
#include <Eigen/Sparse>

#include "numeric/banded_internal.h"
#include "support/qx_test.h"

namespace
{

using Eigen::MatrixXd;
using Eigen::VectorXd;
using Flat = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;
using qxtest::kNaN;

// The error state is process-wide: each test starts and ends clean.
class BandedSolver : public qxtest::QxTest
{
  protected:
    BandedSolver() { merrorflush(); }
    ~BandedSolver() override { merrorflush(); }
};
using DenseDrivers = BandedSolver;

// The pending error is number, level 4; then flushed.
void expect_error(int number)
{
    EXPECT_EQ(merrornum(), number);
    EXPECT_EQ(merrorlevel(), 4);
    merrorflush();
}

// A band system owned by the test, disposed of at scope exit.
struct Band {
    int n, m;
    double **a = nullptr;
    double *b = nullptr;
    Band(int n_, int m_) : n(n_), m(m_) { msetup_banded(n, m, &a, &b); }
    ~Band() { mdispose_banded(&a, &b); }
    Band(const Band &) = delete;
    int lo(int i) const { return std::max(0, i - m); }
    int hi(int i) const { return std::min(n - 1, i + m); }
    Eigen::SparseMatrix<double> sparse() const
    {
        std::vector<Eigen::Triplet<double>> t;
        for (int i = 0; i < n; ++i)
            for (int j = lo(i); j <= hi(i); ++j) t.emplace_back(i, j, a[i][j]);
        Eigen::SparseMatrix<double> s(n, n);
        s.setFromTriplets(t.begin(), t.end());
        return s;
    }
    MatrixXd dense() const { return MatrixXd(sparse()); } // zero outside the band
    void set(const MatrixXd &d)
    {
        for (int i = 0; i < n; ++i)
            for (int j = lo(i); j <= hi(i); ++j) a[i][j] = d(i, j);
    }
    // A random row-diagonally-dominant matrix, one diagonal in three negative.
    void fill_dominant(std::mt19937_64 &rng)
    {
        std::uniform_real_distribution<double> off(-1.0, 1.0), extra(0.25, 1.25);
        for (int i = 0; i < n; ++i) {
            double sum = 0.0;
            for (int j = lo(i); j <= hi(i); ++j)
                if (j != i) sum += std::fabs(a[i][j] = off(rng));
            a[i][i] = (sum + extra(rng)) * (i % 3 == 0 ? -1.0 : 1.0);
        }
    }
    std::vector<double> rhs() const { return {b, b + n}; }
};

MatrixXd mat3(std::array<double, 9> v) { return Eigen::Map<Flat>(v.data(), 3, 3); }

std::vector<double *> rows_of(Flat &m)
{
    std::vector<double *> p;
    for (Eigen::Index i = 0; i < m.rows(); ++i) p.push_back(m.row(i).data());
    return p;
}

// ---- the error state, setup and disposal -----------------------------------------

TEST_F(BandedSolver, StorageIsOneZeroFilledBlockRowAfterRow)
{
    // {n, m, stored}: 5 x 5 tridiagonal has rows of 2, 3, 3, 3, 2; a band
    // wider than the matrix stores the full matrix.
    for (const auto &[n, m, stored] :
         {std::array{1, 0, 1}, std::array{5, 1, 13}, std::array{3, 5, 9}, std::array{7, 2, 29}}) {
        Band band(n, m);
        ASSERT_EQ(merrorlevel(), 0);
        const double *next = band.a[-1];
        EXPECT_EQ(SM_length(next), size_t(stored) * sizeof(double));
        EXPECT_EQ(SM_length(band.a - 1), size_t(n + 1) * sizeof(double *));
        EXPECT_EQ(SM_length(band.b), size_t(n) * sizeof(double));
        // Each element at the next address, by its absolute column; all 0.
        for (int i = 0; i < n; ++i)
            for (int j = band.lo(i); j <= band.hi(i); ++j, ++next) {
                EXPECT_EQ(&band.a[i][j], next) << i << "," << j;
                EXPECT_EQ(*next, 0.0);
            }
    }
}

TEST_F(BandedSolver, FailedSetupsLeaveBothNullAndNothingAllocated)
{
    // One slot: a push overwrites, only a flush clears; the place is not read.
    merrorpush(nullptr, 2900, 3);
    merrorpush(nullptr, 951, 4);
    expect_error(951);
    EXPECT_TRUE(merrornum() == 0 && merrorlevel() == 0);

    double **a = nullptr;
    double *b = nullptr;
    for (const auto &[n, m] : {std::pair{0, 1}, std::pair{3, -1}}) {
        msetup_banded(n, m, &a, &b);
        EXPECT_TRUE(a == nullptr && b == nullptr);
        expect_error(280);
    }
    // An unflushed error makes a good setup dispose of its storage, with no
    // new push; after a flush the same call succeeds.
    merrorpush(nullptr, 2900, 4);
    const unsigned long calls = qxsys_allocation_calls();
    msetup_banded(6, 2, &a, &b);
    EXPECT_TRUE(a == nullptr && b == nullptr);
    EXPECT_GT(qxsys_allocation_calls(), calls);
    expect_error(2900);
    msetup_banded(6, 2, &a, &b);
    EXPECT_TRUE(a != nullptr && b != nullptr);
    mdispose_banded(&a, &b);
    mdispose_banded(&a, &b); // twice, and on NULL addresses: nothing
    mdispose_banded(nullptr, nullptr);
    EXPECT_TRUE(a == nullptr && b == nullptr);

    // The element block, row pointers and vector in turn not given, the
    // host's report returning: 950; and a NULL address.
    for (long k = 1; k <= 3; ++k) {
        qxsys_fail_allocation(k);
        msetup_banded(10, 3, &a, &b);
        EXPECT_TRUE(a == nullptr && b == nullptr);
        EXPECT_EQ(qxsys_live_blocks(), 0u) << k;
        expect_error(950);
    }
    msetup_banded(4, 1, nullptr, &b);
    expect_error(950);
    // A host that unwinds: the blocks made before the failure are the host
    // operation's, reclaimed when it ends.
    qxsys_fail_allocation(3);
    ASSERT_TRUE(qxsys::first_error([&] { msetup_banded(10, 3, &a, &b); }).has_value());
    EXPECT_EQ(qxsys_end_operation(), 2u);
    EXPECT_EQ(qxsys_report_count(), 4); // the allocation failures only
}

// ---- factorisation and solve ---------------------------------------------------

TEST_F(BandedSolver, SmallPivotsStopSilently)
{
    MACH__checking_level = 1; // the error state only, never a report
    // 1 x 1: only the solve tests the diagonal; 1.0e-15 itself passes.
    Band one(1, 0);
    for (const double p : {0.0, -0.0, std::nextafter(1.0e-15, 0.0), kNaN, 1.0e-15, -1.0e-15}) {
        one.a[0][0] = p;
        one.b[0] = 2.0;
        mdecompose_banded(one.a, 1, 0);
        EXPECT_EQ(merrorlevel(), 0);
        msolve_banded(one.a, 1, 0, one.b);
        const bool passes = std::fabs(p) == 1.0e-15;
        EXPECT_EQ(one.b[0], passes ? 2.0 / p : 2.0) << p; // else not divided
        if (!passes) expect_error(7235);
    }
    ASSERT_EQ(merrorlevel(), 0);
    // The last diagonal is left to the solve, which stops there: the forward
    // pass done, that row not divided, the rows above not reached.
    Band band(3, 1);
    band.set(mat3({2, 1, 0, 1, 3, 1, 0, 1, 0.4}));
    mdecompose_banded(band.a, 3, 1);
    EXPECT_EQ(merrorlevel(), 0);
    EXPECT_EQ(band.a[2][2], 0.0); // 0.4 - (1 / 2.5) * 1
    std::fill_n(band.b, 3, 1.0);
    msolve_banded(band.a, 3, 1, band.b);
    expect_error(7235);
    EXPECT_EQ(band.rhs(), (std::vector<double>{1.0, 0.5, 1.0 - 0.5 * (1.0 / 2.5)}));
    // A NaN pivot stops; m < 1 or n < 2 leaves the matrix alone.
    band.a[0][0] = kNaN;
    mdecompose_banded(band.a, 3, 1);
    expect_error(7235);
    band.a[1][0] = 1.0;
    mdecompose_banded(band.a, 3, 0);
    mdecompose_banded(band.a, 1, 1);
    EXPECT_TRUE(band.a[1][0] == 1.0 && merrorlevel() == 0);
    // No storage to work on.
    mdecompose_banded(nullptr, 3, 1);
    expect_error(950);
    msolve_banded(nullptr, 3, 1, band.b);
    expect_error(950);
    EXPECT_EQ(band.b[0], 1.0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

// The band elimination and substitutions as plainly written, on a dense copy,
// stopping where the library stops; each returns the row of the unusable
// pivot, or -1.
bool unusable(double p) { return !(std::fabs(p) >= 1.0e-15); }

int plain_band_lu(MatrixXd &d, int m)
{
    const int n = int(d.rows());
    for (int i = 1; i < n; ++i)
        for (int k = std::max(0, i - m); k < i; ++k) {
            if (unusable(d(k, k))) return i;
            const double l = d(i, k) / d(k, k);
            d(i, k) = l;
            for (int j = k + 1; j <= std::min(k + m, n - 1); ++j) d(i, j) -= l * d(k, j);
        }
    return -1;
}

int plain_band_solve(const MatrixXd &d, int m, std::vector<double> &b)
{
    const int n = int(d.rows());
    for (int i = 1; i < n; ++i)
        for (int k = std::max(0, i - m); k < i; ++k) b[i] -= b[k] * d(i, k);
    for (int i = n - 1; i >= 0; --i) {
        for (int j = i + 1; j <= std::min(i + m, n - 1); ++j) b[i] -= d(i, j) * b[j];
        if (unusable(d(i, i))) return i;
        b[i] /= d(i, i);
    }
    return -1;
}

TEST_F(BandedSolver, SameBitsAsThePlainBandLoops)
{
    // Every fixed-width fast path (1 to 8) and the general loops beyond,
    // with the edge rows; bands as wide as the matrix or wider.
    std::mt19937_64 rng(20240611);
    std::uniform_real_distribution<double> rhs(-3.0, 3.0);
    std::vector<std::pair<int, int>> cases = {{9, 12}, {6, 3}, {2, 1}, {17, 8}};
    for (int m = 0; m <= 10; ++m) cases.emplace_back(40, m);
    for (const auto &[n, m] : cases) {
        Band band(n, m);
        band.fill_dominant(rng);
        const MatrixXd a = band.dense();
        MatrixXd ref = a;
        mdecompose_banded(band.a, n, m);
        ASSERT_EQ(merrorlevel(), 0);
        ASSERT_EQ(plain_band_lu(ref, m), -1);
        EXPECT_EQ(band.dense(), ref) << n << " " << m;
        std::vector<double> x(n);
        for (int i = 0; i < n; ++i) band.b[i] = x[i] = rhs(rng);
        msolve_banded(band.a, n, m, band.b);
        ASSERT_EQ(plain_band_solve(ref, m, x), -1);
        EXPECT_EQ(band.rhs(), x) << n << " " << m;

        // A pivot or diagonal too small anywhere: the same partial work.
        for (const int bad : {1, n / 2, n - 2}) {
            if (m == 0 || bad < 1 || bad > n - 2) continue;
            Band broken(n, m);
            MatrixXd dref = a;
            dref.row(bad).setZero(); // its pivot eliminates to 0
            broken.set(dref);
            mdecompose_banded(broken.a, n, m);
            expect_error(7235);
            EXPECT_EQ(plain_band_lu(dref, m), bad + 1);
            EXPECT_EQ(broken.dense(), dref) << n << " " << m << " " << bad;
            // The factors of the whole matrix with one diagonal spoilt.
            MatrixXd sref = ref;
            sref(bad, bad) = -0.0;
            broken.set(sref);
            for (int i = 0; i < n; ++i) broken.b[i] = x[i] = rhs(rng);
            msolve_banded(broken.a, n, m, broken.b);
            expect_error(7235);
            EXPECT_EQ(plain_band_solve(sref, m, x), bad);
            EXPECT_EQ(broken.rhs(), x) << n << " " << m << " " << bad;
        }
    }
}

TEST_F(BandedSolver, ColumnsSideBySideGiveMsolveBandedBits)
{
    // Every width with and without a fixed-width path, 1 to 5 columns in a
    // block with a spare column (untouched), a good and a spoilt diagonal.
    std::mt19937_64 rng(20261122);
    std::uniform_real_distribution<double> rhs(-3.0, 3.0);
    for (int m = 0; m <= 10; ++m) {
        for (const int n : {1, 2, 7, 40}) {
            Band band(n, m);
            band.fill_dominant(rng);
            mdecompose_banded(band.a, n, m);
            ASSERT_EQ(merrorlevel(), 0);
            for (int ncols = 1; ncols <= 5; ++ncols) {
                for (const int bad : {-1, n / 2}) {
                    const double keep = bad >= 0 ? band.a[bad][bad] : 0.0;
                    if (bad >= 0) band.a[bad][bad] = 0.0;
                    const long stride = ncols + 1;
                    std::vector<double> x(static_cast<size_t>(n * stride));
                    for (double &v : x) v = rhs(rng);
                    std::vector<double> want = x;
                    for (int c = 0; c < ncols; ++c) {
                        std::vector<double> col(static_cast<size_t>(n));
                        for (int i = 0; i < n; ++i) col[i] = want[i * stride + c];
                        msolve_banded(band.a, n, m, col.data());
                        if (bad >= 0) expect_error(7235);
                        for (int i = 0; i < n; ++i) want[i * stride + c] = col[i];
                    }
                    qx_msolve_banded_columns(band.a, n, m, x.data(), stride, ncols);
                    if (bad >= 0) expect_error(7235);
                    EXPECT_EQ(merrorlevel(), 0);
                    EXPECT_EQ(x, want) << n << " " << m << " " << ncols << " " << bad;
                    if (bad >= 0) band.a[bad][bad] = keep;
                }
            }
        }
    }
    qx_msolve_banded_columns(nullptr, 3, 1, nullptr, 3, 3);
    expect_error(950);
}

TEST_F(BandedSolver, MeetsLapacksCriterionAndAgreesWithDenseSolvers)
{
    std::mt19937_64 rng(77);
    std::uniform_real_distribution<double> rhs(-10.0, 10.0);
    const double eps = DBL_EPSILON / 2; // LAPACK's relative machine precision
    for (const auto &[n, m] :
         {std::pair{1, 0}, std::pair{60, 1}, std::pair{300, 3}, std::pair{50, 10},
          std::pair{100000, 3}, std::pair{100000, 1}, std::pair{20000, 9}}) {
        Band band(n, m);
        band.fill_dominant(rng);
        const Eigen::SparseMatrix<double> A = band.sparse();
        for (int i = 0; i < n; ++i) band.b[i] = rhs(rng);
        Flat b = Eigen::Map<VectorXd>(band.b, n);
        mdecompose_banded(band.a, n, m);
        msolve_banded(band.a, n, m, band.b);
        ASSERT_EQ(merrorlevel(), 0);
        const Eigen::Map<VectorXd> x(band.b, n);
        // |b - A x|_1 / (|A|_1 |x|_1 eps) below 30.
        const double anorm = (Eigen::RowVectorXd::Ones(n) * A.cwiseAbs()).maxCoeff();
        const double ratio = (b - A * x).lpNorm<1>() / (anorm * x.lpNorm<1>() * eps);
        EXPECT_LT(ratio, 30.0) << n << " " << m;
        if (n > 1000) continue;

        // The same system through Eigen and the dense driver; diagonal
        // dominance keeps the condition small.
        Flat a = MatrixXd(A);
        const VectorXd xe = a.partialPivLu().solve(b);
        ASSERT_EQ(SOLVE_lu_solver(rows_of(a).data(), rows_of(b).data(), n, 1), 0);
        const double tol = 8.0 * n * DBL_EPSILON * xe.cwiseAbs().maxCoeff();
        EXPECT_LE((x - xe).cwiseAbs().maxCoeff(), tol) << n << " " << m;
        EXPECT_LE((b - xe).cwiseAbs().maxCoeff(), tol) << n << " " << m;
    }
}

// ---- the print-out ----------------------------------------------------------------

std::string dump(double *const *a, const double *b, int n, int m)
{
    testing::internal::CaptureStdout();
    EXPECT_EQ(mdump_banded(a, b, n, m), n);
    std::fflush(stdout);
    return testing::internal::GetCapturedStdout();
}

TEST_F(BandedSolver, DumpPrintsTheBandInFixedColumns)
{
    Band band(3, 1);
    band.set(mat3({-2.5, 1e5, 0, 0.125, 3, -1, 0, 7.000004, 0.5}));
    band.b[0] = 1.0;
    band.b[1] = -0.000004;
    band.b[2] = 123456.789;
    EXPECT_EQ(dump(band.a, band.b, 3, 1), "  -2.50000  100000.00000       0         1.00000\n"
                                          "   0.12500     3.00000    -1.00000    -0.00000\n"
                                          "     0         7.00000     0.50000  123456.78900\n");
    EXPECT_EQ(dump(nullptr, band.b, 1, 0), "   1.00000\n");
    EXPECT_EQ(dump(nullptr, nullptr, 2, 0), "\n\n");
    EXPECT_EQ(dump(band.a, band.b, -2, 0), "");
}

// ---- dense drivers ------------------------------------------------------------------

TEST_F(DenseDrivers, ThreeEquationsByCramersRule)
{
    // Small integer systems with integer solutions are solved exactly, the
    // solution written over b; a zero or NaN determinant gives 1, x not
    // written. No tolerance: a tiny determinant is still solved.
    std::mt19937_64 rng(3);
    std::uniform_int_distribution<int> u(-4, 4);
    for (int trial = 0; trial < 300; ++trial) {
        Eigen::Matrix<double, 3, 3, Eigen::RowMajor> m;
        Eigen::Vector3d x, b;
        for (double &v : m.reshaped()) v = u(rng);
        for (double &v : x) v = u(rng);
        b = m * x;
        const int singular = m.determinant() == 0.0;
        ASSERT_EQ(SOLVE_solve_3equations(m.data(), b.data(), b.data()), singular);
        EXPECT_EQ(b, singular ? Eigen::Vector3d(m * x) : x) << m;
    }
    const double with_nan[9] = {1, 0, 0, 0, kNaN, 0, 0, 0, 1};
    const double tiny[9] = {1e-100, 0, 0, 0, 1e-100, 0, 0, 0, 1e-100};
    double x[3] = {1.5, -2.0, 7.25};
    EXPECT_EQ(SOLVE_solve_3equations(with_nan, x, x), 1);
    EXPECT_EQ(x[2], 7.25);
    EXPECT_EQ(SOLVE_solve_3equations(tiny, x, x), 0);
    EXPECT_DOUBLE_EQ(x[2], 7.25e100);
}

TEST_F(DenseDrivers, LuSolverIsOneDecompositionAndASubstitutionPerColumn)
{
    const int n = 12, nrhs = 3;
    const Flat a0 = MatrixXd::Random(n, n) + 0.5 * MatrixXd::Identity(n, n);
    const Flat b0 = MatrixXd::Random(n, nrhs);
    Flat a, b; // the driver's result on a copy of a_in and b0
    const auto solve = [&](const Flat &a_in, int columns) {
        a = a_in;
        b = b0;
        return SOLVE_lu_solver(rows_of(a).data(), rows_of(b).data(), n, columns);
    };
    // Exactly ludcmp_a once and lubksb_a per column.
    EXPECT_EQ(solve(a0, nrhs), 0);
    Flat lu = a0, x = b0;
    std::vector<int> indx(n);
    double parity = 0.0;
    ASSERT_EQ(ludcmp_a(rows_of(lu).data(), n, indx.data(), &parity), 0);
    for (int c = 0; c < nrhs; ++c) {
        VectorXd col = x.col(c);
        lubksb_a(rows_of(lu).data(), n, indx.data(), col.data());
        x.col(c) = col;
    }
    EXPECT_TRUE(a == lu && b == x);
    // No right-hand side: a decomposed, b untouched.
    EXPECT_EQ(solve(a0, 0), 0);
    EXPECT_TRUE(a == lu && b == b0);
    // A zero row (1), or no scratch memory (-1): a and b unchanged.
    Flat z = a0;
    z.row(5).setZero();
    EXPECT_EQ(solve(z, nrhs), 1);
    EXPECT_TRUE(a == z && b == b0);
    for (long k = 1; k <= 2; ++k) {
        qxsys_fail_allocation(k);
        EXPECT_EQ(solve(a0, nrhs), -1) << k;
        EXPECT_TRUE(a == a0 && b == b0);
    }
    EXPECT_EQ(SOLVE_lu_solver(nullptr, nullptr, 0, 1), 0); // empty: solved at once
}

} // namespace
