// Faults the fit fuzzer found, each on the plain values that show it.
#include <cmath>
#include <vector>

#include "support/qx_test.h"

namespace
{

using FuzzFits = qxtest::QxTest;
using qxtest::kNaN;

constexpr double kPi = 3.14159265358979323846;

// Points exactly on a line (or plane) a few hundred units long: Jacobi's
// rounding, some eps times the scatter matrix's trace, can leave the zero
// eigenvalue below -1.0e-10, beyond the cleaning threshold. The rule (the
// smallest non-negative eigenvalue after cleaning) then skips it and takes
// the normal from a larger one, along the line (in the plane). That is kept:
// every normal is either the shape's normal or lies in the shape, the skip
// never happens at unit size, and it does happen at the larger sizes.
TEST_F(FuzzFits, CollinearAndCoplanarPointsKeepTheSmallestNonNegativeRule)
{
    for (const double size : {1.0, 300.0, 1000.0, 5000.0}) {
        int skipped = 0;
        for (int step = 0; step < 24; ++step) {
            const double a = 2.0 * kPi * step / 24.0, b = 0.3 + step * 0.05;
            const double u[3] = {std::cos(a), std::sin(a), 0.0};
            const double w[3] = {-std::sin(a) * std::cos(b), std::cos(a) * std::cos(b),
                                 std::sin(b)};
            const double nrm[3] = {u[1] * w[2] - u[2] * w[1], u[2] * w[0] - u[0] * w[2],
                                   u[0] * w[1] - u[1] * w[0]};
            std::vector<double> line, plane;
            for (int i = 0; i < 12; ++i) {
                const double s = size * ((i * 7) % 12) / 11.0, t = size * ((i * 5) % 12) / 11.0;
                line.insert(line.end(), {-45.2 + s * u[0], 17.5 + s * u[1]});
                for (int k = 0; k < 3; ++k) plane.push_back(3.0 * k - 45.2 + s * u[k] + t * w[k]);
            }
            double point[3], normal[3] = {kNaN, kNaN, kNaN}, dev[3];
            int degenerate = -1;
            LSFIT_line_to_points_2d(line.data(), 12, point, normal, &degenerate, dev);
            EXPECT_EQ(degenerate, 0);
            const double across = std::fabs(normal[0] * u[1] - normal[1] * u[0]);
            if (across < 1e-12) {
                ++skipped; // along the line: dev[1] is the spread along it
                EXPECT_GT(dev[1], 0.1 * size);
            } else {
                EXPECT_NEAR(across, 1.0, 1e-12) << "line, size " << size << ", step " << step;
            }
            LSFIT_plane_to_points(plane.data(), 12, point, normal, &degenerate, dev);
            EXPECT_EQ(degenerate, 0);
            const double off =
                std::fabs(normal[0] * nrm[0] + normal[1] * nrm[1] + normal[2] * nrm[2]);
            if (off < 1e-12) {
                ++skipped;
                EXPECT_GT(dev[1], 0.1 * size);
            } else {
                EXPECT_NEAR(off, 1.0, 1e-12) << "plane, size " << size << ", step " << step;
                EXPECT_LE(dev[0], 1e-11 * size);
            }
        }
        if (size == 1.0) {
            EXPECT_EQ(skipped, 0);
        }
        if (size >= 1000.0) {
            EXPECT_GT(skipped, 0) << "size " << size;
        }
    }
}

// Three distinct coplanar points (there is always a plane through three),
// half a unit apart or with two of them close together: the plane fit's
// normal is only as good as Jacobi's absolute threshold over the eigenvalue
// gap, so the points lay beyond the 1.0e-10 flatness ratio from the fitted
// plane and the sphere fit returned a sphere with the flag 0.
TEST_F(FuzzFits, SphereThroughCoplanarPointsIsDegenerate)
{
    const double a[3] = {-40.869140625, -1.66796875, 30.9921875},
                 b[3] = {-40.369178274080426, -1.66796875, 30.998323269142858},
                 c[3] = {-40.869140625, -2.16796875, 30.9921875},
                 d[3] = {-0.001953125, -0.064453125, -0.001953125},
                 e[3] = {-194.31184180848308, -4.8382534231599559, 7.1484332811926343},
                 f[3] = {1.5160917430743974, -0.027111451780283999, -0.057815435019361754};
    for (const auto &set : {std::vector<const double *>{a, b, c, a, a, a},
                            std::vector<const double *>{d, e, f, d, d, d, d, d}}) {
        std::vector<double> pts;
        for (const double *p : set) pts.insert(pts.end(), p, p + 3);
        double centre[3] = {kNaN, kNaN, kNaN}, radius = kNaN, dev[3] = {kNaN, kNaN, kNaN};
        int degenerate = -1;
        LSFIT_sphere_to_points_3d(pts.data(), int(set.size()), centre, &radius, &degenerate, dev);
        EXPECT_EQ(degenerate, 1);
        EXPECT_EQ(radius, 0.0);
        for (int k = 0; k < 3; ++k) EXPECT_EQ(centre[k], 0.0);
    }
}

// Eight coplanar points some hundreds of units apart, the first repeated 30
// times: the plane fit skips the zero eigenvalue that rounding puts below
// -1.0e-10, so its normal lies in the plane and the points seemed far from
// it; the sphere fit returned a sphere with the flag 0.
TEST_F(FuzzFits, SphereThroughLongCoplanarPointsIsDegenerate)
{
    const double first[3] = {-0.001953125, 47.84375, 0.03125};
    const double others[][3] = {{244.54820443463564, 92.420363782922806, -21.378933119383039},
                                {42.431524540903006, -85.841893382490184, 206.37513463578702},
                                {20.911079546967326, -56.420703022807885, 158.73179539802811},
                                {-66.182562593119968, 42.439638342469671, -4.0660717519020153},
                                {-13.515617344757267, 52.039771504886858, -8.6770233593692421},
                                {-13.515617344757267, 52.039771504886858, -8.6770233593692421},
                                {22.200017680515948, -64.088001058448242, 170.35655520394965},
                                {-13.375789866542574, 45.405966433746407, 1.2021193893412598}};
    std::vector<double> pts(first, first + 3);
    for (const auto &p : others) pts.insert(pts.end(), p, p + 3);
    for (int i = 0; i < 29; ++i) pts.insert(pts.end(), first, first + 3);
    double centre[3] = {kNaN, kNaN, kNaN}, radius = kNaN, dev[3] = {kNaN, kNaN, kNaN};
    int degenerate = -1;
    LSFIT_sphere_to_points_3d(pts.data(), 38, centre, &radius, &degenerate, dev);
    EXPECT_EQ(degenerate, 1);
    EXPECT_EQ(radius, 0.0);
    for (int k = 0; k < 3; ++k) EXPECT_EQ(centre[k], 0.0);
}

} // namespace
