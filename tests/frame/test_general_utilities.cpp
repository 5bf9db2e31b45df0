// Tolerant comparisons with absolute and relative tolerances.
#include <cmath>

#include <gtest/gtest.h>

#include "frame/general_utilities.h"
#include "support/qx_test.h"

namespace
{

constexpr double nan_ = NAN;

TEST(TolerantCompare, EqualByAbsoluteOrRelativeTest)
{
    EXPECT_TRUE(mx_eq_y(1.0, 1.0, 0.0, 0.0));
    EXPECT_TRUE(mx_eq_y(1.0, 1.5, 0.5, 0.0)); // absolute test, inclusive
    EXPECT_FALSE(mx_eq_y(1.0, 1.5, 0.49, 0.0));
    // 0.5 <= 1e-3 * 1000.5: equal by the relative test, scaled by the larger.
    EXPECT_TRUE(mx_eq_y(1000.0, 1000.5, 1e-3, 1e-3));
    EXPECT_TRUE(mx_eq_y(1000.5, 1000.0, 1e-3, 1e-3));
    EXPECT_FALSE(mx_eq_y(1000.0, 1001.5, 1e-3, 1e-3));
    EXPECT_TRUE(mx_eq_y(-1000.0, -1000.5, 0.0, 1e-3));
    EXPECT_FALSE(mx_eq_y(nan_, nan_, 1.0, 1.0));
}

TEST(TolerantCompare, LessAndGreaterExcludeTolerantEquality)
{
    EXPECT_FALSE(mx_lt_y(3.0, 3.0, 0.0, 0.0));
    EXPECT_FALSE(mx_gt_y(3.0, 3.0, 0.0, 0.0));
    EXPECT_TRUE(mx_lt_y(1.0, 2.0, 0.5, 0.0));
    EXPECT_FALSE(mx_lt_y(1.0, 1.4, 0.5, 0.0));
    EXPECT_FALSE(mx_lt_y(2.0, 1.0, 0.0, 0.0));
    EXPECT_TRUE(mx_gt_y(2.0, 1.0, 0.5, 0.0));
    EXPECT_FALSE(mx_gt_y(1.4, 1.0, 0.5, 0.0));
    EXPECT_FALSE(mx_gt_y(1.0, 2.0, 0.0, 0.0));
    // The relative test also guards: 1000 vs 1000.5 are equal at 1e-3.
    EXPECT_FALSE(mx_lt_y(1000.0, 1000.5, 0.0, 1e-3));
    EXPECT_FALSE(mx_gt_y(1000.5, 1000.0, 0.0, 1e-3));
    EXPECT_FALSE(mx_lt_y(nan_, 1.0, 0.0, 0.0));
    EXPECT_FALSE(mx_gt_y(1.0, nan_, 0.0, 0.0));
}

TEST(TolerantCompare, ClosedIntervalWithTolerantEnds)
{
    EXPECT_TRUE(mx_in_closed_interval(0.5, 0.0, 1.0, 0.0, 0.0));
    EXPECT_TRUE(mx_in_closed_interval(1.0, 0.0, 1.0, 0.0, 0.0));
    EXPECT_TRUE(mx_in_closed_interval(1.00001, 0.0, 1.0, 1e-4, 0.0));
    EXPECT_TRUE(mx_in_closed_interval(-0.00001, 0.0, 1.0, 1e-4, 0.0));
    EXPECT_FALSE(mx_in_closed_interval(1.001, 0.0, 1.0, 1e-4, 0.0));
    EXPECT_TRUE(mx_in_closed_interval(100.05, 0.0, 100.0, 0.0, 1e-3)); // relative at the end
    // Not normalised: with low > high only the end tests can succeed.
    EXPECT_FALSE(mx_in_closed_interval(0.5, 1.0, 0.0, 1e-4, 0.0));
    EXPECT_TRUE(mx_in_closed_interval(0.99995, 1.0, 0.0, 1e-4, 0.0));
    EXPECT_TRUE(mx_in_closed_interval(0.00005, 1.0, 0.0, 1e-4, 0.0));
    EXPECT_FALSE(mx_in_closed_interval(nan_, 0.0, 1.0, 1.0, 1.0));
}

class PersistentCopy : public qxtest::QxTest
{
};

TEST_F(PersistentCopy, CopiesWholeBlockAndReportsFailure)
{
    EXPECT_EQ(qx_persistent_copy(nullptr, "bcdf_gen", 1), nullptr);
    EXPECT_EQ(qxsys_report_count(), 0);

    auto *src = static_cast<unsigned char *>(SM_alloc(37));
    for (int i = 0; i < 37; ++i) src[i] = static_cast<unsigned char>(3 * i + 1);
    void *copy = qx_persistent_copy(src, "bcdf_gen", 10);
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(qxsys_block_kind_of(copy), QXSYS_PERSISTENT);
    EXPECT_EQ(SM_length(copy), 37u);
    EXPECT_EQ(0, std::memcmp(copy, src, 37));
    SM_free(copy);

    // No persistent memory: reported from the caller's file, whatever the
    // checking level, with the block's length.
    qxsys_fail_allocation(1);
    const auto err = qxsys::first_error([&] { qx_persistent_copy(src, "bcdf_gen", 42); });
    ASSERT_TRUE(err.has_value());
    EXPECT_EQ(err->kind, QXSYS_INTERNAL);
    EXPECT_STREQ(err->file, "bcdf_gen");
    EXPECT_EQ(err->line, 42);
    EXPECT_STREQ(err->text,
                 "Failed to allocate permanent memory for transient conversion of 37 bytes");
    // A host that returns gets NULL.
    qxsys_fail_allocation(1);
    EXPECT_EQ(qx_persistent_copy(src, "bcdf_gen", 43), nullptr);
    SM_free(src);
}

} // namespace
