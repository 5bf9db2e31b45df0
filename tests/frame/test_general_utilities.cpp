// Tolerant comparisons with absolute and relative tolerances.
#include <cmath>

#include <gtest/gtest.h>

#include "frame/general_utilities.h"

namespace {

constexpr double nan_ = NAN;

TEST(TolerantCompare, EqualByAbsoluteOrRelativeTest)
{
    EXPECT_TRUE(mx_eq_y(1.0, 1.0, 0.0, 0.0));
    EXPECT_TRUE(mx_eq_y(1.0, 1.5, 0.5, 0.0));  // absolute test, inclusive
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

} // namespace
