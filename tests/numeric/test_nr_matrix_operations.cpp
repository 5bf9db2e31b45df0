// Making, clearing, copying, multiplying and transposing row-pointer and
// flat matrices; the allocation and its failure paths.
#include <cmath>
#include <cstring>
#include <random>
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

Flat random_flat(int r, int c, std::mt19937_64 &rng)
{
    std::uniform_real_distribution<double> u(-2.0, 2.0);
    Flat m(r, c);
    for (int i = 0; i < r; ++i)
        for (int j = 0; j < c; ++j) m(i, j) = u(rng);
    return m;
}

// Row pointers into the rows of a flat matrix.
std::vector<double *> rows_of(Flat &m)
{
    std::vector<double *> p;
    for (int i = 0; i < m.rows(); ++i) p.push_back(m.row(i).data());
    return p;
}

TEST_F(MatrixUtilities, AllocationOverANewOrGivenBlock)
{
    double *block = nullptr;
    double **m = NR_2d_matrix_allo(3, 4, &block);
    ASSERT_NE(m, nullptr);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(SM_length(block), 12 * sizeof(double));
    EXPECT_EQ(SM_length(m), 3 * sizeof(double *));
    for (int r = 0; r < 3; ++r) EXPECT_EQ(m[r], block + 4 * r);
    EXPECT_EQ(qxsys_live_blocks(), 2u);

    // A given block is reused: only the pointer array is new.
    double **again = NR_2d_matrix_allo(2, 6, &block);
    EXPECT_EQ(again[1], block + 6);
    EXPECT_EQ(qxsys_live_blocks(), 3u);
    SM_free(again);
    SM_free(m);
    SM_free(block);

    // No rows: nothing made.
    block = nullptr;
    EXPECT_EQ(NR_2d_matrix_allo(0, 5, &block), nullptr);
    EXPECT_EQ(block, nullptr);
    EXPECT_EQ(qxsys_live_blocks(), 0u);
}

TEST_F(MatrixUtilities, AllocationFailuresLeaveNothingBehind)
{
    // The host's report returns (no trap): NULL, and a block made by the
    // call is freed again.
    for (long failing : {1, 2}) {
        double *block = nullptr;
        qxsys_fail_allocation(failing);
        EXPECT_EQ(NR_2d_matrix_allo(4, 4, &block), nullptr) << failing;
        EXPECT_EQ(block, nullptr);
        EXPECT_EQ(qxsys_live_blocks(), 0u);
    }
    // A given block stays the caller's.
    double given[4];
    double *block = given;
    qxsys_fail_allocation(1);
    EXPECT_EQ(NR_2d_matrix_allo(2, 2, &block), nullptr);
    EXPECT_EQ(block, given);

    // The host unwinds out of the second allocation: the first one is the
    // block, already stored through the address for the caller to free.
    block = nullptr;
    qxsys_fail_allocation(2);
    EXPECT_TRUE(qxsys::first_error([&] { NR_2d_matrix_allo(4, 4, &block); }).has_value());
    ASSERT_NE(block, nullptr);
    SM_free(block);
}

TEST_F(MatrixUtilities, ClearingAndIdentities)
{
    Flat m = Flat::Constant(3, 3, kNaN);
    std::vector<double *> p = rows_of(m);
    NR_2d_matrix_identity(p.data(), 3);
    EXPECT_EQ(m, Flat::Identity(3, 3));
    m.setConstant(kNaN);
    NR_2d_matrix_init_zero(p.data(), 2, 3); // the third row is not asked for
    EXPECT_EQ(m.topRows(2), Flat::Zero(2, 3));
    EXPECT_TRUE(std::isnan(m(2, 0)));

    Flat f = Flat::Constant(2, 5, kNaN);
    NR_matrix_2d_as_1d_init_zero(f.data(), 2, 5);
    EXPECT_EQ(f, Flat::Zero(2, 5));
    Flat g = Flat::Constant(4, 4, kNaN);
    NR_matrix_2d_as_1d_identity(g.data(), 4);
    EXPECT_EQ(g, Flat::Identity(4, 4));

    // Upper and lower clears on ones keep the diagonal.
    Flat ones = Flat::Ones(3, 3);
    NR_matrix_2d_as_1d_init_zero_ut(ones.data(), 3);
    EXPECT_EQ(ones, (Flat(3, 3) << 1, 0, 0, 1, 1, 0, 1, 1, 1).finished());
    ones.setOnes();
    NR_matrix_2d_as_1d_init_zero_lt(ones.data(), 3);
    EXPECT_EQ(ones, (Flat(3, 3) << 1, 1, 1, 0, 1, 1, 0, 0, 1).finished());

    // Counts below 1: nothing touched (null matrices are never read).
    NR_2d_matrix_identity(nullptr, 0);
    NR_2d_matrix_init_zero(nullptr, 0, 4);
    NR_matrix_2d_as_1d_init_zero(nullptr, -1, 4);
    NR_matrix_2d_as_1d_identity(nullptr, 0);
    NR_matrix_2d_as_1d_init_zero_ut(nullptr, 0);
    NR_matrix_2d_as_1d_init_zero_lt(nullptr, -3);
}

TEST_F(MatrixUtilities, CopiesBetweenTheTwoConventions)
{
    std::mt19937_64 rng(1);
    const Flat src = random_flat(3, 5, rng);
    Flat dst = Flat::Constant(3, 5, kNaN);
    std::vector<double *> p = rows_of(dst);
    std::swap(p[0], p[2]); // any pointer order
    NR_matrix_copy_1d_to_2d(src.data(), 3, 5, p.data());
    EXPECT_EQ(dst.row(2), src.row(0));
    EXPECT_EQ(dst.row(0), src.row(2));
    EXPECT_EQ(dst.row(1), src.row(1));

    Flat back = Flat::Constant(3, 5, kNaN);
    NR_matrix_copy_2d_to_1d(p.data(), 3, 5, back.data());
    EXPECT_EQ(back, src);
}

TEST_F(MatrixUtilities, ProductsSumInIncreasingOrder)
{
    // r = 1, k = 3, c = 1: a dot product, accumulated from 0.0.
    const double a[3] = {1.0e16, 1.0, -1.0e16}, b[3] = {1.0, 1.0, 1.0};
    double dot = kNaN;
    NR_matrix_2d_as_1d_product_of_2(a, b, 1, 3, 1, &dot);
    EXPECT_EQ(dot, (1.0e16 + 1.0) - 1.0e16); // 0: the 1 is lost in order

    std::mt19937_64 rng(2);
    for (int r : {1, 3, 6})
        for (int k : {0, 1, 7})
            for (int c : {1, 4, 5, 9}) {
                Flat A = random_flat(r, k, rng), B = random_flat(k, c, rng);
                Flat want(r, c);
                for (int i = 0; i < r; ++i)
                    for (int j = 0; j < c; ++j) {
                        double s = 0.0;
                        for (int m = 0; m < k; ++m) s += A(i, m) * B(m, j);
                        want(i, j) = s;
                    }
                Flat P = Flat::Constant(r, c, kNaN);
                NR_matrix_2d_as_1d_product_of_2(A.data(), B.data(), r, k, c, P.data());
                EXPECT_EQ(P, want) << r << k << c;
                EXPECT_TRUE(k == 0 || P.isApprox(A * B, 1e-14));

                std::vector<double *> pa = rows_of(A), pb = rows_of(B);
                Flat Q = Flat::Constant(r, c, kNaN);
                std::vector<double *> pq = rows_of(Q);
                NR_2d_matrix_product_of_2(pa.data(), pb.data(), r, k, c, pq.data());
                EXPECT_EQ(Q, want) << r << k << c;
            }

    // No rows: P untouched.
    double p = kNaN;
    NR_matrix_2d_as_1d_product_of_2(a, b, 0, 3, 1, &p);
    NR_2d_matrix_product_of_2(nullptr, nullptr, 0, 3, 1, nullptr);
    EXPECT_TRUE(std::isnan(p));
}

TEST_F(MatrixUtilities, TransposesInPlace)
{
    std::mt19937_64 rng(4);
    for (int n : {1, 2, 5}) {
        const Flat m = random_flat(n, n, rng);
        Flat t = m;
        std::vector<double *> p = rows_of(t);
        NR_2d_matrix_nxn_transp(p.data(), n);
        EXPECT_EQ(t, m.transpose());
        NR_2d_matrix_nxn_transp(p.data(), n);
        EXPECT_EQ(t, m);
        NR_matrix_2d_as_1d_nxn_transp(t.data(), n);
        EXPECT_EQ(t, m.transpose());
        NR_matrix_2d_as_1d_nxn_transp(t.data(), n);
        EXPECT_EQ(t, m);
    }
    NR_2d_matrix_nxn_transp(nullptr, 0);
    NR_matrix_2d_as_1d_nxn_transp(nullptr, -1);
}

} // namespace
