// Faults the differential-geometry fuzzer found, each on the plain values
// that show it.
#include <cmath>

#include "support/qx_test.h"

namespace
{

using FuzzDgeom = qxtest::QxTest;

// Parallel partials whose E G - F^2 is rounding above 1.0e-10 while their
// cross product is exactly zero: the unit normal was 0/0 and every
// curvature NaN. Such partials are parallel: result 1, record untouched.
TEST_F(FuzzDgeom, ParallelPartialsWithRoundingDAreDegenerate)
{
    const double suu[3] = {-0.9296875, 29.00390625, 0.125}, suv[3] = {1, 0, -0.00390625},
                 svv[3] = {124.484375, 124.99609375, -0.00390625};
    const double partials[][2][3] = {
        {{29.11328125, 29.11328125, 29.11328125},
         {847.58314514160156, 847.58314514160156, 847.58314514160156}},
        {{0.0, 76.614, 0.0}, {0.0, 584.6311, 0.0}},
    };
    for (const auto &p : partials) {
        const double *su = p[0], *sv = p[1];
        const double e = su[0] * su[0] + su[1] * su[1] + su[2] * su[2];
        const double g = sv[0] * sv[0] + sv[1] * sv[1] + sv[2] * sv[2];
        const double f = su[0] * sv[0] + su[1] * sv[1] + su[2] * sv[2];
        EXPECT_GE(e * g - f * f, 1e-10); // the rounding this case is about
        double record[7] = {7, 7, 7, 7, 7, 7, 7};
        EXPECT_EQ(DGEOM_srf_curvatures(su, sv, suu, suv, svv, 1, record), 1);
        for (const double v : record) EXPECT_EQ(v, 7.0);
    }
}

} // namespace
