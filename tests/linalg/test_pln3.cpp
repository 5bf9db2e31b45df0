// PLN3_ and PNT3_is_colinear: tolerances against products and squares, one-sided tests.
#include "support/qx_test.h"

namespace
{

using Pln3 = qxtest::QxTest;

TEST_F(Pln3, NonUnitNormalsAndUnsquaredTolerances)
{
    const double r[6] = {1, 2, 3, 0, 0, 5}; // z = 3, normal of length 5
    const double on[3] = {7, -4, 3.25}, off[3] = {0, 0, 3.5};
    EXPECT_TRUE(PLN3_is_point_on_plane(r, on, 0.25) == 1 &&
                PLN3_is_point_on_plane(r, off, 0.25) == 0);
    // Normals 1e-3 apart; C's point lies on A but A's lies 0.1 off C: only
    // B's point is tested against A.
    const double a[6] = {0, 0, 0, 0, 0, 1}, c[6] = {0, 100, 0, 0, 1e-3, 1};
    EXPECT_EQ(PLN3_is_coincident(a, c, 1e-6, 2e-3), 1);
    EXPECT_EQ(PLN3_is_coincident(c, a, 1e-6, 2e-3), 0);
    EXPECT_EQ(PLN3_is_coincident(a, c, 1e-6, 5e-4), 0);

    // Segments against z = 0 (normal of length 10): an end on the plane or the
    // ends on both sides meet it at tol 0; ends at 0.5 and 0.25 above give
    // p = 0.125, so tol = 0.125 counts as touching though both ends are farther.
    const double s[6] = {0, 0, 0, 0, 0, 10}, at[3] = {5, 5, 0}, up[3] = {0, 0, 0.5},
                 up2[3] = {1, 0, 0.25}, down[3] = {0, 0, -3};
    EXPECT_EQ(PLN3_is_segment_intersecting(s, at, up, 0), 1);
    EXPECT_EQ(PLN3_is_segment_intersecting(s, up, at, 0), 1);
    EXPECT_EQ(PLN3_is_segment_intersecting(s, down, up, 0), 1);
    EXPECT_EQ(PLN3_is_segment_intersecting(s, up, up2, 0.125), 1);
    EXPECT_EQ(PLN3_is_segment_intersecting(s, up, up2, 0.1249), 0);

    // Colinearity: squared lengths and the squared sine against tol unsquared.
    const double o[3] = {0, 0, 0}, x1[3] = {1, 0, 0}, x2[3] = {2, 0, 0}, xy[3] = {1, 1, 0};
    EXPECT_EQ(PNT3_is_colinear(o, x1, x2, 0.5), 1);
    EXPECT_EQ(PNT3_is_colinear(o, x1, xy, 0.5), 0); // s = 1
    // |AB|^2 = 0.01 against tol itself: coincident for tol 0.011, not 0.0099.
    const double b[3] = {0.1, 0, 0}, g[3] = {5, 5, 0}, g2[3] = {2, 0.1, 0};
    EXPECT_EQ(PNT3_is_colinear(o, b, g, 0.011), 1);
    EXPECT_EQ(PNT3_is_colinear(o, b, g, 0.0099), 0);
    // The squared sine at B, 1 - 1 / 1.01 = 0.0099..., against tol.
    EXPECT_EQ(PNT3_is_colinear(o, x1, g2, 0.01), 1);
    EXPECT_EQ(PNT3_is_colinear(o, x1, g2, 0.0098), 0);
}

} // namespace
