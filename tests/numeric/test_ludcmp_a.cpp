// LU decomposition (ludcmp_a) and substitution (lubksb_a): the pivot rules,
// the leading-zero skip, bit-for-bit agreement with Crout's plain
// column-by-column loop, accuracy on random systems against the LAPACK
// residual criterion and Eigen's PartialPivLU, memory on every path.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kInf = std::numeric_limits<double>::infinity();

// A row-pointer matrix whose rows lie apart from each other, in an order
// unrelated to their index, with a guard value after each row.
class Rows
{
  public:
    explicit Rows(int n, int cols = -1) : n_(n), cols_(cols < 0 ? n : cols)
    {
        const std::size_t stride = static_cast<std::size_t>(cols_) + 3;
        store_.assign(stride * static_cast<std::size_t>(n_), kGuard);
        // Row i lies after row i + 1 in memory.
        for (int i = 0; i < n_; ++i)
            ptr_.push_back(store_.data() + stride * static_cast<std::size_t>(n_ - 1 - i) + 1);
        saved_ = ptr_;
    }
    double **p() { return ptr_.data(); }
    double &operator()(int i, int j) { return ptr_[static_cast<std::size_t>(i)][j]; }
    int n() const { return n_; }
    void set(const Eigen::MatrixXd &m)
    {
        for (int i = 0; i < n_; ++i)
            for (int j = 0; j < cols_; ++j) (*this)(i, j) = m(i, j);
    }
    Eigen::MatrixXd get()
    {
        Eigen::MatrixXd m(n_, cols_);
        for (int i = 0; i < n_; ++i)
            for (int j = 0; j < cols_; ++j) m(i, j) = (*this)(i, j);
        return m;
    }
    // The pointer array and the guards around every row are as made.
    bool intact() const
    {
        if (ptr_ != saved_) return false;
        for (double *r : ptr_)
            if (!(r[-1] == kGuard && r[cols_] == kGuard)) return false;
        return true;
    }

  private:
    static constexpr double kGuard = -7.25e300;
    int n_, cols_;
    std::vector<double> store_;
    std::vector<double *> ptr_, saved_;
};

// Crout's method exactly as the plain loop states it, on a dense copy.
int crout_reference(std::vector<std::vector<double>> &a, std::vector<int> &indx, double &d)
{
    const int n = static_cast<int>(a.size());
    std::vector<double> scale(a.size());
    d = 1.0;
    for (int i = 0; i < n; ++i) {
        double big = 0.0;
        for (int j = 0; j < n; ++j)
            if (std::fabs(a[i][j]) > big) big = std::fabs(a[i][j]);
        if (big == 0.0) return 1;
        scale[i] = 1.0 / big;
    }
    for (int j = 0; j < n; ++j) {
        for (int i = 0; i < j; ++i) {
            double sum = a[i][j];
            for (int k = 0; k < i; ++k) sum -= a[i][k] * a[k][j];
            a[i][j] = sum;
        }
        double big = 0.0;
        int imax = j;
        for (int i = j; i < n; ++i) {
            double sum = a[i][j];
            for (int k = 0; k < j; ++k) sum -= a[i][k] * a[k][j];
            a[i][j] = sum;
            if (scale[i] * std::fabs(sum) >= big) {
                big = scale[i] * std::fabs(sum);
                imax = i;
            }
        }
        if (imax != j) {
            std::swap(a[imax], a[j]);
            d = -d;
            scale[imax] = scale[j];
        }
        indx[j] = imax;
        if (a[j][j] == 0.0) a[j][j] = 1.0e-20;
        if (j != n - 1)
            for (int i = j + 1; i < n; ++i) a[i][j] /= a[j][j];
    }
    return 0;
}

bool same_bits(double x, double y) { return std::memcmp(&x, &y, sizeof x) == 0; }

class LuDecomposition : public qxtest::QxTest
{
};

TEST_F(LuDecomposition, PivotRulesOnSmallMatrices)
{
    // [[0,1],[1,0]]: the rows are swapped; indx = {1, 1}; odd parity.
    Rows a(2);
    a.set((Eigen::Matrix2d() << 0, 1, 1, 0).finished());
    int indx[2] = {-1, -1};
    double d = kNaN;
    ASSERT_EQ(ludcmp_a(a.p(), 2, indx, &d), 0);
    EXPECT_EQ(indx[0], 1);
    EXPECT_EQ(indx[1], 1);
    EXPECT_EQ(d, -1.0);
    EXPECT_EQ(a.get(), Eigen::Matrix2d::Identity());
    EXPECT_TRUE(a.intact()); // contents swapped, not the pointers

    // Equal scaled figures: the later row is the pivot. Rows scaled by 1/2,
    // 1/4, 1/8 all give the figure 1 in column 0.
    Rows t(3);
    t.set((Eigen::Matrix3d() << 2, 1, 0, 4, 0, 1, 8, 2, 2).finished());
    int it[3];
    ASSERT_EQ(ludcmp_a(t.p(), 3, it, &d), 0);
    EXPECT_EQ(it[0], 2);
    EXPECT_EQ(t(0, 0), 8.0);
    EXPECT_EQ(t(0, 1), 2.0);

    // [[1,1],[1,1]]: singular but decomposed, the zero pivot replaced.
    Rows s(2);
    s.set(Eigen::Matrix2d::Ones());
    ASSERT_EQ(ludcmp_a(s.p(), 2, indx, &d), 0);
    EXPECT_EQ(indx[0], 1); // a tie again
    EXPECT_EQ(indx[1], 1);
    EXPECT_EQ(s(1, 0), 1.0);
    EXPECT_EQ(s(1, 1), 1.0e-20);

    // A zero pivot in the last column is replaced too; nothing below it.
    Rows z(3);
    z.set((Eigen::Matrix3d() << 1, 2, 3, 2, 4, 6, 1, 1, 1).finished());
    ASSERT_EQ(ludcmp_a(z.p(), 3, it, &d), 0);
    EXPECT_EQ(z(2, 2), 1.0e-20);

    // Singular systems report nothing through the host.
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(LuDecomposition, ZeroRowIsFoundBeforeAnythingChanges)
{
    MACH__checking_level = 1; // failures are results, never reports
    for (int zero_row : {0, 2, 4}) {
        Rows a(5);
        Eigen::MatrixXd m = Eigen::MatrixXd::Random(5, 5);
        m.row(zero_row).setZero();
        if (zero_row == 4) m(4, 1) = kNaN; // NaNs count for nothing in the scan
        a.set(m);
        int indx[5] = {-9, -9, -9, -9, -9};
        double d = kNaN;
        EXPECT_EQ(ludcmp_a(a.p(), 5, indx, &d), 1) << zero_row;
        for (int i = 0; i < 5; ++i)
            for (int j = 0; j < 5; ++j) EXPECT_TRUE(same_bits(a(i, j), m(i, j))) << i << j;
        for (int v : indx) EXPECT_EQ(v, -9);
        EXPECT_EQ(d, 1.0);
        EXPECT_TRUE(a.intact());
    }
    EXPECT_EQ(qxsys_report_count(), 0);

    // Order 0: nothing to do, nothing allocated.
    double d = kNaN;
    const unsigned long calls = qxsys_allocation_calls();
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
            std::vector<std::vector<double>> ref(static_cast<std::size_t>(n),
                                                 std::vector<double>(static_cast<std::size_t>(n)));
            for (auto &row : ref)
                for (double &v : row)
                    v = kind == 0 ? small(rng) : kind == 1 ? real(rng) : real(rng) * 1e3;
            if (kind == 2 && n > 3) ref[1] = ref[n - 1]; // exactly singular
            for (auto &row : ref) row[0] += 3.0;         // no zero row
            Rows a(n);
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j) a(i, j) = ref[i][j];

            std::vector<int> want(static_cast<std::size_t>(n)), got(want.size(), -1);
            double dw = 0.0, dg = kNaN;
            ASSERT_EQ(crout_reference(ref, want, dw), 0);
            ASSERT_EQ(ludcmp_a(a.p(), n, got.data(), &dg), 0) << n;
            EXPECT_EQ(got, want) << "n=" << n << " kind=" << kind;
            EXPECT_EQ(dg, dw) << n;
            int differ = 0;
            for (int i = 0; i < n; ++i)
                for (int j = 0; j < n; ++j) differ += !same_bits(a(i, j), ref[i][j]);
            EXPECT_EQ(differ, 0) << "n=" << n << " kind=" << kind;
            EXPECT_TRUE(a.intact());
        }
}

TEST_F(LuDecomposition, ScratchIsFreedOnEveryPath)
{
    Rows a(6);
    const Eigen::MatrixXd m = Eigen::MatrixXd::Random(6, 6);
    int indx[6];
    double d;

    // The host unwinds out of the failing allocation: nothing was changed.
    a.set(m);
    qxsys_fail_allocation(1);
    const auto err = qxsys::first_error([&] { ludcmp_a(a.p(), 6, indx, &d); });
    ASSERT_TRUE(err.has_value());
    EXPECT_STREQ(err->file, "qxsys_memory");
    EXPECT_EQ(a.get(), m);

    // The host's report returns: code 2, matrix untouched.
    qxsys_fail_allocation(1);
    EXPECT_EQ(ludcmp_a(a.p(), 6, indx, &d), 2);
    EXPECT_EQ(a.get(), m);
    EXPECT_EQ(qxsys_report_back(0)->kind, QXSYS_INTERNAL);

    // Success and the zero-row failure both free the scratch (checked by
    // the fixture at tear-down).
    EXPECT_EQ(ludcmp_a(a.p(), 6, indx, &d), 0);
    a.set(Eigen::MatrixXd::Zero(6, 6));
    EXPECT_EQ(ludcmp_a(a.p(), 6, indx, &d), 1);
}

class LuSubstitution : public qxtest::QxTest
{
};

TEST_F(LuSubstitution, LeadingZerosFormNoProducts)
{
    // Hand-made factors, no interchanges: L = [[1,0,0],[inf,1,0],[2,3,1]],
    // U = I. A product with the infinite L entry would give NaN; with the
    // first value zero it is never formed.
    Rows a(3);
    a.set((Eigen::Matrix3d() << 1, 0, 0, kInf, 1, 0, 2, 3, 1).finished());
    const int indx[3] = {0, 1, 2};
    double b[3] = {0.0, 5.0, 1.0};
    lubksb_a(a.p(), 3, indx, b);
    EXPECT_EQ(b[0], 0.0);
    EXPECT_EQ(b[1], 5.0);
    EXPECT_EQ(b[2], 1.0 - 3.0 * 5.0); // only from the first non-zero on

    // The skip applies to the permuted vector: here row 2 comes first.
    const int swap02[3] = {2, 1, 2};
    double c[3] = {0.0, 5.0, 0.0}; // permuted: {0, 5, 0}
    Rows f(3);
    f.set((Eigen::Matrix3d() << 1, 0, 0, kNaN, 1, 0, kInf, 2, 1).finished());
    lubksb_a(f.p(), 3, swap02, c);
    EXPECT_EQ(c[0], 0.0);
    EXPECT_EQ(c[1], 5.0);
    EXPECT_EQ(c[2], -10.0);

    // Once a non-zero is met every later product is formed (here with NaN).
    double e[3] = {1.0, 0.0, 0.0};
    lubksb_a(f.p(), 3, indx, e);
    EXPECT_TRUE(std::isnan(e[1]));

    // A zero on the diagonal of U is not checked: infinities come out.
    Rows u(2);
    u.set((Eigen::Matrix2d() << 0, 0, 0, 1).finished());
    const int id2[2] = {0, 1};
    double g[2] = {1.0, 0.0};
    lubksb_a(u.p(), 2, id2, g);
    EXPECT_TRUE(std::isinf(g[0]));
    EXPECT_EQ(qxsys_report_count(), 0);
}

// ||b - A x||_inf / (||A||_inf ||x||_inf eps), LAPACK's test ratio.
double residual_ratio(const Eigen::MatrixXd &A, const Eigen::VectorXd &x, const Eigen::VectorXd &b)
{
    const double norm_a = A.cwiseAbs().rowwise().sum().maxCoeff();
    return (b - A * x).lpNorm<Eigen::Infinity>() / (norm_a * x.lpNorm<Eigen::Infinity>() * kEps);
}

TEST_F(LuSubstitution, RandomSystemsAgainstEigen)
{
    std::mt19937_64 rng(77);
    std::uniform_real_distribution<double> real(-1.0, 1.0);
    for (int n : {1, 2, 3, 4, 7, 16, 33, 64, 100, 255, 500}) {
        // Well conditioned: random entries and a dominant diagonal of
        // alternating sign, rows scaled over six orders of magnitude so the
        // implicit scaling matters.
        Eigen::MatrixXd A(n, n);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) A(i, j) = real(rng);
        for (int i = 0; i < n; ++i) A(i, i) += (i % 2 ? -1.0 : 1.0) * std::sqrt(double(n)) * 2;
        for (int i = 0; i < n; ++i) A.row(i) *= std::pow(10.0, (i % 7) - 3);
        Rows a(n);
        a.set(A);
        std::vector<int> indx(static_cast<std::size_t>(n), -1);
        double d = kNaN;
        ASSERT_EQ(ludcmp_a(a.p(), n, indx.data(), &d), 0);
        const Eigen::PartialPivLU<Eigen::MatrixXd> oracle(A);

        // Several right-hand sides with the same factors; one with leading
        // zeros after the permutation.
        for (int rhs = 0; rhs < 3; ++rhs) {
            Eigen::VectorXd b(n);
            for (int i = 0; i < n; ++i) b(i) = real(rng);
            if (rhs == 2) b = Eigen::VectorXd::Unit(n, n - 1);
            Eigen::VectorXd x = b;
            lubksb_a(a.p(), n, indx.data(), x.data());
            EXPECT_LT(residual_ratio(A, x, b), 30.0) << "n=" << n;
            const Eigen::VectorXd xe = oracle.solve(b);
            EXPECT_LE((x - xe).lpNorm<Eigen::Infinity>(),
                      1e3 * n * kEps * xe.lpNorm<Eigen::Infinity>())
                << "n=" << n;
        }
        // The determinant: parity times the diagonal.
        if (n <= 64) {
            double det = d;
            for (int i = 0; i < n; ++i) det *= a(i, i);
            EXPECT_NEAR(det / oracle.determinant(), 1.0, 1e-10) << n;
        }
        EXPECT_TRUE(a.intact());
    }
}

} // namespace
