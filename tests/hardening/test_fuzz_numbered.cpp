// Faults the fuzzer of the numbered routines found, each on the plain values
// that show it.
#include <cmath>

#include "support/qx_test.h"

namespace
{

using FuzzNumbered = qxtest::QxTest;

// A direction whose squared length overflows: |slope| was infinite, so the
// "unit" direction came out zero (NaN for a 1e308 component) with status 1.
TEST_F(FuzzNumbered, H813HugeDirectionIsMadeUnit)
{
    const double scale = 2.0;
    const double cases[][6] = {
        // slope, the unit direction
        {3e200, -4e200, 0.0, 0.6, -0.8, 0.0},
        {0.0, 1.7e308, 0.0, 0.0, 1.0, 0.0},
        {1e300, 1e-300, -1e300, 1 / std::sqrt(2.0), 0.0, -1 / std::sqrt(2.0)}};
    for (const auto &c : cases)
        for (const int code : {2, 5}) {
            double out[3] = {qxtest::kNaN, qxtest::kNaN, qxtest::kNaN};
            int status = 0;
            h813_(c, &scale, &code, out, &status);
            EXPECT_EQ(status, 1);
            for (int k = 0; k < 3; ++k) EXPECT_NEAR(out[k], c[3 + k], 4e-16) << c[0] << " " << k;
            double alias[3] = {c[0], c[1], c[2]}; // out may be the slope itself
            h813_(alias, &scale, &code, alias, &status);
            for (int k = 0; k < 3; ++k) EXPECT_EQ(alias[k], out[k]);
        }
}

} // namespace
