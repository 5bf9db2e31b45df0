// Tolerance table, sys21_/sys22_ and eqz_.
#include <array>
#include <cmath>

#include "support/qx_test.h"

namespace
{

using qxtest::QxTest;

class Tolerances : public QxTest
{
};

int eqz(double a, double b, int kind) { return eqz_(&a, &b, &kind); }

TEST_F(Tolerances, ZeroAtLoadSoOnlyExactEqualityPasses)
{
    EXPECT_EQ(EQ_ask_number_tolerance(), 0.0);
    EXPECT_EQ(EQ_ask_length_tolerance(), 0.0);
    EXPECT_EQ(EQ_ask_length_squared_tolerance(), 0.0);
    for (int kind : {0, 1, 2, 3}) {
        EXPECT_EQ(eqz(2.5, 2.5, kind), 1) << kind;
        EXPECT_EQ(eqz(2.5, std::nextafter(2.5, 3.0), kind), 0) << kind;
    }
}

TEST_F(Tolerances, StandardAndFinePrecision)
{
    open_session(1.0);
    EXPECT_EQ(EQ_ask_number_tolerance(), 1.0e-4);
    EXPECT_EQ(EQ_ask_length_tolerance(), 1.0e-4);
    EXPECT_EQ(EQ_ask_length_squared_tolerance(), 1.0e-4 * 1.0e-4);
    EXPECT_EQ(acom_.tolerance[7], (1.0e-4 * 1.0e-4) * 1.0e8);
    EXPECT_NEAR(acom_.tolerance[7], 1.0, 4 * 1e-16);

    open_session(1.0, true);
    EXPECT_EQ(EQ_ask_number_tolerance(), 1.0e-10);
    EXPECT_EQ(EQ_ask_length_tolerance(), 1.0e-10);
    EXPECT_EQ(EQ_ask_length_squared_tolerance(), 1.0e-10 * 1.0e-10);
    EXPECT_EQ(acom_.tolerance[7], (1.0e-10 * 1.0e-10) * 1.0e8);

    // Any non-zero switch is fine precision; the length unit is the scale.
    sys10_(std::array<int, 1>{0}.data());
    acom_.model_scale = 25.4;
    acom_.gca[31] = -3;
    sys21_();
    EXPECT_EQ(EQ_ask_number_tolerance(), 1.0e-10);
    EXPECT_EQ(EQ_ask_length_tolerance(), 25.4 * 1.0e-10);
    EXPECT_EQ(EQ_ask_length_squared_tolerance(), (25.4 * 1.0e-10) * (25.4 * 1.0e-10));
}

TEST_F(Tolerances, Sys21LeavesSlots3To6ToTheHost)
{
    const int mode = 0;
    sys10_(&mode);
    for (int i = 0; i < 8; ++i) EXPECT_EQ(acom_.tolerance[i], -939.0) << i;
    acom_.model_scale = 2.0;
    for (int i = 3; i <= 6; ++i) acom_.tolerance[i] = 10.0 * i;
    sys21_();
    for (int i = 3; i <= 6; ++i) EXPECT_EQ(acom_.tolerance[i], 10.0 * i) << i;

    // sys22_ scales by any slot, host-filled ones included.
    for (int slot = 0; slot < 8; ++slot) {
        const double value = -3.25;
        double result = qxtest::kNaN;
        sys22_(&value, &slot, &result);
        EXPECT_EQ(result, acom_.tolerance[slot] * value) << slot;
    }
}

TEST_F(Tolerances, UnsetScaleMakesEveryLengthUnequal)
{
    // sys21_ without a model scale: the marker -939.0 gives a negative
    // length tolerance, so not even identical lengths compare equal, while
    // the squared tolerance is positive.
    const int mode = 0;
    sys10_(&mode);
    sys21_();
    EXPECT_EQ(EQ_ask_length_tolerance(), -939.0 * 1.0e-4);
    EXPECT_GT(EQ_ask_length_squared_tolerance(), 0.0);
    EXPECT_EQ(eqz(1.0, 1.0, 1), 0);
    EXPECT_EQ(eqz(1.0, 1.0, 2), 1);
}

TEST_F(Tolerances, EqzKindsAndBoundary)
{
    open_session(10.0); // number 1e-4, length 1e-3, squared 1e-6
    const double tol[3] = {EQ_ask_number_tolerance(), EQ_ask_length_tolerance(),
                           EQ_ask_length_squared_tolerance()};
    for (int kind = 0; kind < 3; ++kind) {
        // |a - b| exactly the tolerance counts as equal.
        EXPECT_EQ(eqz(0.0, tol[kind], kind), 1) << kind;
        EXPECT_EQ(eqz(tol[kind], 0.0, kind), 1) << kind;
        EXPECT_EQ(eqz(0.0, std::nextafter(tol[kind], 1.0), kind), 0) << kind;
    }
    // Every other kind compares against the number tolerance squared.
    const double squared = tol[0] * tol[0];
    for (int kind : {3, 7, 99, -1}) {
        EXPECT_EQ(eqz(0.0, squared, kind), 1) << kind;
        EXPECT_EQ(eqz(0.0, std::nextafter(squared, 1.0), kind), 0) << kind;
    }
    EXPECT_EQ(eqz(qxtest::kNaN, qxtest::kNaN, 0), 0);
}

} // namespace
