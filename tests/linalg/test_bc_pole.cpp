// The bc_POLE_ routines: the documented cases bit for bit, reciprocal weight
// in equal_in_3d against division elsewhere, the direction of every
// tolerance test, the projection through h430_, the unguarded 1/n of the
// average and the two comparisons of identical_poles_in_3d.
#include <cmath>
#include <initializer_list>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;

using BcPole = qxtest::QxTest;

void expect_values(const double *got, std::initializer_list<double> want)
{
    for (size_t i = 0; i < want.size(); ++i) EXPECT_EQ(got[i], want.begin()[i]) << i;
}

TEST_F(BcPole, DocumentedCases)
{
    open_session(1.0, true);
    const double P[4] = {2, 4, 6, 2}, Q[4] = {1, 2, 3, 1}, O[4] = {0, 0, 0, 1}, T[3] = {1, 0, 0};
    EXPECT_EQ(bc_POLE_equal_in_4d(P, Q), 0);
    EXPECT_EQ(bc_POLE_equal_in_3d(P, Q), 1);
    double R[4] = {kNaN, kNaN, kNaN, kNaN}, V[3] = {kNaN, kNaN, kNaN};
    bc_POLE_translate_pole(P, T, R);
    expect_values(R, {4, 4, 6, 2});
    EXPECT_EQ(bc_POLE_3d_distance(P, O, V), std::sqrt(14.0));
    expect_values(V, {1, 2, 3});
    for (bool fine : {false, true}) { // fails at the first comparison, or at the mean
        open_session(1.0, fine);
        double run[12] = {1, 1, 1, 1, 2, 2, 2, 2, 3, 3, 3, 3};
        EXPECT_EQ(bc_POLE_identical_poles_in_3d(run, 3), 1);
        run[10] = 3 + 3e-7;
        EXPECT_EQ(bc_POLE_identical_poles_in_3d(run, 3), 0) << fine;
    }
}

TEST_F(BcPole, ReciprocalOrDivisionAndToleranceDirections)
{
    // x and w whose 3-D value differs by reciprocal and by division; tolerance 0.
    double x = 1.0, w = 3.0;
    while ((1.0 / w) * x == x / w) x += 1.0;
    const double P[4] = {x, 0, 0, w}, Q[4] = {x / w, 0, 0, 1}, zero[3] = {0, 0, 0};
    EXPECT_EQ(bc_POLE_equal_in_3d(P, Q), 0);
    double V[3], R[4], A[3];
    EXPECT_EQ(bc_POLE_3d_distance(P, Q, V), 0.0);
    bc_POLE_translate_pole(P, zero, R);
    EXPECT_EQ(R[0], w * (x / w));
    bc_POLE_average_in_3d(P, 1, A);
    EXPECT_EQ(A[0], x / w);
    // Outputs may overlap inputs.
    double S[4] = {2, 4, 6, 2}, U[4] = {4, 0, 0, 2};
    bc_POLE_translate_pole(S, S, S);
    expect_values(S, {6, 12, 18, 2});
    EXPECT_EQ(bc_POLE_3d_distance(U, P, U), std::fabs(2.0 - x / w));
    // D.D <= tolerance is equal; the unset marker -939 makes nothing equal.
    const double d = 0.375, O[4] = {0, 0, 0, 1}, D[4] = {d, 0, 0, 1};
    for (double tol : {d * d, std::nextafter(d * d, 0.0), -939.0}) {
        acom_.tolerance[2] = tol;
        EXPECT_EQ(bc_POLE_equal_in_3d(O, D), tol == d * d ? 1 : 0) << tol;
    }
    EXPECT_EQ(bc_POLE_equal_in_3d(O, O), 0);
    // Weights: |wP - wQ| > 1e-10 strictly. 1e-10 and 2e-10 differ by exactly 1e-10 and give
    // the same 3-D point.
    const double v = 1e-10, W1[4] = {v, 0, 0, v}, W2[4] = {2 * v, 0, 0, 2 * v};
    const double W3[4] = {2 * v, 0, 0, std::nextafter(2 * v, 1.0)};
    acom_.tolerance[2] = 0.0;
    EXPECT_EQ(bc_POLE_equal_in_4d(W1, W2), 1);
    EXPECT_EQ(bc_POLE_equal_in_4d(W1, W3), 0);
}

TEST_F(BcPole, ProjectToLineThroughH430)
{
    open_session(1.0);
    const double P[4] = {0.9, 2.1, -0.6, 3}, L1[4] = {0.2, 0.1, 0.7, 0.5};
    const double L2[4] = {1.3, -0.4, 0.9, 1.1};
    double a[3], b[3], e[3]; // 3-D points by division; f = b + t e, t = (a - b).e / e.e
    for (int i = 0; i < 3; ++i)
        a[i] = P[i] / P[3], b[i] = L1[i] / L1[3], e[i] = L2[i] / L2[3] - b[i];
    const double t = ((a[0] - b[0]) * e[0] + (a[1] - b[1]) * e[1] + (a[2] - b[2]) * e[2]) /
                     (e[0] * e[0] + e[1] * e[1] + e[2] * e[2]);
    double R[4] = {kNaN, kNaN, kNaN, kNaN}, S[4] = {0.9, 2.1, -0.6, 3};
    bc_POLE_project_to_line(P, L1, L2, R);
    expect_values(R, {3 * (b[0] + t * e[0]), 3 * (b[1] + t * e[1]), 3 * (b[2] + t * e[2]), 3});
    bc_POLE_project_to_line(S, L1, L2, S); // in place
    expect_values(S, {R[0], R[1], R[2], R[3]});
    // |c - b|^2 = 1e-10 <= number tolerance: the foot is b, re-weighted.
    const double Q[4] = {3, 6, -3, 3}, M[4] = {2, 0, 0, 2}, M2[4] = {1 + 1e-5, 0, 0, 1};
    bc_POLE_project_to_line(Q, M, M2, R);
    expect_values(R, {3, 0, 0, 3});
}

TEST_F(BcPole, AverageAndIdenticalPoles)
{
    // Average: the sum in pole order times 1/n, unguarded.
    const double poles[12] = {0.1, 0, 0, 1, 0.2, 0, 0, 1, 0.3, 0, 0, 1};
    double A[3];
    bc_POLE_average_in_3d(poles, 3, A);
    EXPECT_EQ(A[0], ((0.0 + 0.1) + 0.2 + 0.3) * (1.0 / 3.0));
    bc_POLE_average_in_3d(poles, 0, A);
    EXPECT_TRUE(std::isnan(A[0]) && std::isnan(A[1]) && std::isnan(A[2]));
    bc_POLE_average_in_3d(nullptr, -2, A); // no pole read
    EXPECT_TRUE(A[0] == 0.0 && std::signbit(A[0]) && std::signbit(A[2]));
    // Identical, tolerance 0: the first comparison asks for bit-equal points, the mean test
    // allows ((n-1) 1e-10/n)^2. With n = 5 pole ceil(2.5) = 3 is the one compared.
    for (int moved = 0; moved < 5; ++moved) {
        double run[20];
        for (int i = 0; i < 20; ++i) run[i] = i % 4 == 3 ? 1.0 : 0.5;
        run[4 * moved + 1] += 1e-12;
        EXPECT_EQ(bc_POLE_identical_poles_in_3d(run, 5), moved == 0 || moved == 3 ? 0 : 1) << moved;
    }
    // n = 1 compares pole 0 with pole 1; n = 0 and n = -3 compare pole 0 with itself.
    const double two[8] = {1, 1, 1, 1, 2, 1, 1, 1};
    EXPECT_EQ(bc_POLE_identical_poles_in_3d(two, 1), 0);
    EXPECT_EQ(bc_POLE_identical_poles_in_3d(two, 0), 1);
    EXPECT_EQ(bc_POLE_identical_poles_in_3d(two, -3), 1);
    // n = 2: deviation from the mean exactly 5e-11 = sqrt(tol): not greater.
    acom_.tolerance[2] = 1.0;
    double pair[8] = {0, 0, 0, 1, 1e-10, 0, 0, 1};
    EXPECT_EQ(bc_POLE_identical_poles_in_3d(pair, 2), 1);
    pair[4] = std::nextafter(1e-10, 1.0);
    EXPECT_EQ(bc_POLE_identical_poles_in_3d(pair, 2), 0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

} // namespace
