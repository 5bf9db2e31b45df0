// Making, clearing, copying, multiplying and transposing row-pointer and
// flat matrices; the allocation and its failure paths.
#include <functional>
#include <random>
#include <tuple>
#include <vector>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
using Flat = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

class MatrixUtilities : public qxtest::QxTest
{
};

// Row pointers into the rows of a flat matrix.
std::vector<double *> rows_of(Flat &m)
{
    std::vector<double *> p;
    for (Eigen::Index i = 0; i < m.rows(); ++i) p.push_back(m.row(i).data());
    return p;
}

TEST_F(MatrixUtilities, AllocationOverANewOrGivenBlock)
{
    double *block = nullptr;
    double **m = NR_2d_matrix_allo(3, 4, &block);
    ASSERT_TRUE(m != nullptr && block != nullptr);
    EXPECT_EQ(SM_length(block), 12 * sizeof(double));
    EXPECT_EQ(SM_length(m), 3 * sizeof(double *));
    for (int r = 0; r < 3; ++r) EXPECT_EQ(m[r], block + 4 * r);
    double **again = NR_2d_matrix_allo(2, 6, &block); // only the pointers are new
    EXPECT_EQ(again[1], block + 6);
    EXPECT_EQ(qxsys_live_blocks(), 3u);
    SM_free(again);
    SM_free(m);
    SM_free(block);
    block = nullptr;
    EXPECT_EQ(NR_2d_matrix_allo(0, 5, &block), nullptr); // no rows: nothing made
    EXPECT_EQ(block, nullptr);

    // The host's report returns: NULL, and a block made by the call is freed
    // again (checked at tear-down); a given block stays the caller's.
    for (long failing : {1, 2}) {
        qxsys_fail_allocation(failing);
        EXPECT_EQ(NR_2d_matrix_allo(4, 4, &block), nullptr);
        EXPECT_EQ(block, nullptr) << failing;
    }
    double given[4];
    block = given;
    qxsys_fail_allocation(1);
    EXPECT_EQ(NR_2d_matrix_allo(2, 2, &block), nullptr);
    EXPECT_EQ(block, given);
    // The host unwinds out of the pointer array: the new block is already
    // stored through the address, for the caller to free.
    block = nullptr;
    qxsys_fail_allocation(2);
    EXPECT_TRUE(qxsys::first_error([&] { NR_2d_matrix_allo(4, 4, &block); }).has_value());
    ASSERT_NE(block, nullptr);
    SM_free(block);
}

TEST_F(MatrixUtilities, ClearingCopyingAndTransposing)
{
    // Each operation on a 3 x 3 matrix of sevens, both conventions; the
    // zeroing of 2 x 3 leaves the third row.
    Flat m(3, 3), sevens = Flat::Constant(3, 3, 7.0), two_rows = sevens;
    two_rows.topRows(2).setZero();
    std::vector<double *> p = rows_of(m);
    const std::tuple<std::function<void()>, Flat> cases[] = {
        {[&] { NR_2d_matrix_identity(p.data(), 3); }, Flat::Identity(3, 3)},
        {[&] { NR_2d_matrix_init_zero(p.data(), 2, 3); }, two_rows},
        {[&] { NR_matrix_2d_as_1d_init_zero(m.data(), 2, 3); }, two_rows},
        {[&] { NR_matrix_2d_as_1d_identity(m.data(), 3); }, Flat::Identity(3, 3)},
        {[&] { NR_matrix_2d_as_1d_init_zero_ut(m.data(), 3); },
         sevens.triangularView<Eigen::Lower>()},
        {[&] { NR_matrix_2d_as_1d_init_zero_lt(m.data(), 3); },
         sevens.triangularView<Eigen::Upper>()},
    };
    for (const auto &[operation, want] : cases) {
        m = sevens;
        operation();
        EXPECT_EQ(m, want);
    }
    // Counts below 1: nothing touched (null matrices are never read).
    NR_2d_matrix_identity(nullptr, 0);
    NR_2d_matrix_init_zero(nullptr, 0, 4);
    NR_matrix_2d_as_1d_init_zero(nullptr, -1, 4);
    NR_matrix_2d_as_1d_identity(nullptr, 0);
    NR_matrix_2d_as_1d_init_zero_ut(nullptr, 0);
    NR_matrix_2d_as_1d_init_zero_lt(nullptr, -3);
    NR_2d_matrix_nxn_transp(nullptr, 0);
    NR_matrix_2d_as_1d_nxn_transp(nullptr, -1);

    // Copies both ways, with the row pointers in any order.
    const Flat src = Flat::Random(3, 5);
    Flat dst = Flat::Constant(3, 5, kNaN), back = dst;
    std::vector<double *> q = rows_of(dst);
    std::swap(q[0], q[2]);
    NR_matrix_copy_1d_to_2d(src.data(), 3, 5, q.data());
    EXPECT_EQ(dst, src.colwise().reverse());
    NR_matrix_copy_2d_to_1d(q.data(), 3, 5, back.data());
    EXPECT_EQ(back, src);

    // Transposes in place, both conventions.
    for (int n : {1, 2, 5}) {
        const Flat r = Flat::Random(n, n);
        Flat t = r;
        NR_2d_matrix_nxn_transp(rows_of(t).data(), n);
        EXPECT_EQ(t, r.transpose());
        NR_matrix_2d_as_1d_nxn_transp(t.data(), n);
        EXPECT_EQ(t, r);
    }
}

TEST_F(MatrixUtilities, ProductsSumInIncreasingOrder)
{
    // A dot product accumulated from 0.0 in order: the 1 is lost.
    const double a[3] = {1.0e16, 1.0, -1.0e16}, b[3] = {1.0, 1.0, 1.0};
    double dot = kNaN;
    NR_matrix_2d_as_1d_product_of_2(a, b, 1, 3, 1, &dot);
    EXPECT_EQ(dot, 0.0);
    for (int r : {1, 3, 6})
        for (int k : {0, 1, 7})
            for (int c : {1, 4, 5, 9}) {
                Flat A = Flat::Random(r, k), B = Flat::Random(k, c);
                Flat want(r, c), P = Flat::Constant(r, c, kNaN), Q = P;
                for (int i = 0; i < r; ++i)
                    for (int j = 0; j < c; ++j) {
                        want(i, j) = 0.0;
                        for (int m = 0; m < k; ++m) want(i, j) += A(i, m) * B(m, j);
                    }
                NR_matrix_2d_as_1d_product_of_2(A.data(), B.data(), r, k, c, P.data());
                NR_2d_matrix_product_of_2(rows_of(A).data(), rows_of(B).data(), r, k, c,
                                          rows_of(Q).data());
                EXPECT_TRUE(P == want && Q == want) << r << k << c;
                EXPECT_TRUE(k == 0 || P.isApprox(A * B, 1e-14));
            }
    // No rows: P untouched.
    dot = kNaN;
    NR_matrix_2d_as_1d_product_of_2(a, b, 0, 3, 1, &dot);
    NR_2d_matrix_product_of_2(nullptr, nullptr, 0, 3, 1, nullptr);
    EXPECT_TRUE(dot != dot);
}

} // namespace
