// The 2-D orientation matrix: unit axes, perpendicular on the cosine within
// 1e-10, neither re-derived nor tested for handedness.
#include <array>
#include <cmath>

#include "support/qx_test.h"

namespace
{

using M4 = std::array<double, 4>;
using qxtest::kNaN;

class Mtx2 : public qxtest::QxTest
{
};

TEST_F(Mtx2, InitUnitizesAndChecksTheCosineOnly)
{
    MACH__checking_level = 1;
    M4 m{kNaN, kNaN, kNaN, kNaN};
    const double x[2] = {2, 0}, y[2] = {0, 3}, down[2] = {0, -0.5}, nearly[2] = {5e-11, 1};
    EXPECT_EQ(MTX2_init(x, y, m.data()), 1);
    EXPECT_EQ(m, (M4{1, 0, 0, 1}));
    EXPECT_EQ(MTX2_init(x, down, m.data()), 1); // left-handed is accepted
    EXPECT_EQ(m, (M4{1, 0, 0, -1}));
    EXPECT_EQ(MTX2_init(x, nearly, m.data()), 1); // Y kept as given, |Y| rounds to 1
    EXPECT_EQ(m, (M4{1, 0, 5e-11, 1}));

    // Not perpendicular, or null (length <= 1e-10): 0, M not written.
    const double tilted[2] = {2e-10, 1}, diagonal[2] = {1, 1}, null[2] = {1e-10, 0};
    M4 untouched{kNaN, kNaN, kNaN, kNaN};
    EXPECT_EQ(MTX2_init(x, tilted, untouched.data()), 0);
    EXPECT_EQ(MTX2_init(x, diagonal, untouched.data()), 0);
    EXPECT_EQ(MTX2_init(null, y, untouched.data()), 0);
    EXPECT_EQ(MTX2_init(y, null, untouched.data()), 0);
    for (double e : untouched) EXPECT_TRUE(std::isnan(e));
    EXPECT_EQ(qxsys_report_count(), 0);
}

} // namespace
