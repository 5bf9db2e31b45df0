// Periodic parameter placement (h006_, h0005_, h0062_, h0063_, h0065_): the placed value lies
// in the range and differs from x by the fewest whole periods, whatever the side, distance
// and sign of x; ends within tolerance, gaps, degenerate periods, counts beyond int.
#include <climits>
#include <cmath>
#include <random>

#include "support/qx_test.h"

namespace
{

using Periodic = qxtest::QxTest;

// {found, count} of h006_.
std::pair<int, int> place(double x, double a, double b, int flag, double period)
{
    const double lim[2] = {a, b};
    int found = -1, count = -7;
    h006_(&x, lim, &flag, &period, &found, &count);
    return {found, count};
}

TEST_F(Periodic, CountIsTheFewestPeriodsAndHalfOpenPlacementsAgree)
{
    open_session(1.0, true);
    const double tol = EQ_ask_number_tolerance();
    std::mt19937_64 gen(20261122);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    for (int trial = 0; trial < 20000; ++trial) {
        const double lo = -50.0 + 100.0 * unit(gen), len = 0.01 + 10.0 * unit(gen), hi = lo + len;
        const int flag = trial % 3 == 0 ? 0 : 1;
        const double p = flag == 1 ? len * (0.2 + 2.0 * unit(gen)) : len; // shorter and longer
        const double x = lo + (unit(gen) - 0.5) * std::pow(10.0, 1.0 + 5.0 * unit(gen));
        const auto [found, count] =
            trial % 2 ? place(x, hi, lo, flag, p) : place(x, lo, hi, flag, p);
        SCOPED_TRACE(::testing::Message() << x << " [" << lo << ", " << hi << "] p " << p);
        const double slack = tol + 1e-15 * std::fabs(x);
        if (x >= lo - tol && x <= hi + tol) {
            EXPECT_TRUE(found == 1 && count == 0);
        } else if (found == 0) {
            // The oracle: the first copy of x at or past the near end is in the gap.
            const double k = x < lo ? std::ceil((lo - x) / p) : -std::ceil((x - hi) / p);
            const double y = x + k * p;
            EXPECT_TRUE(count == 0 && p > len && (y < lo + slack || y > hi - slack));
        } else {
            const double moved = x + count * p, fewer = x < lo ? moved - p : moved + p;
            EXPECT_EQ(count > 0, x < lo);
            EXPECT_TRUE(moved >= lo - slack && moved <= hi + slack) << moved;
            EXPECT_TRUE(x < lo ? fewer < lo + slack : fewer > hi - slack) << fewer;
        }
        if (flag == 0 || std::fabs(x - lo) > 1e4) continue;
        // The placements on [lo, lo + p]: whole periods from x, half-open ones below the far end.
        const double far = lo + p, range[2] = {far, lo};
        double out = qxtest::kNaN, a = x, b = x, c = x;
        int fa = -1, fb = -1, fc = -1, n = -7;
        h0005_(&x, &lo, &p, &out);
        h0062_(&a, &lo, &p, &fa);
        h0063_(&b, &lo, &p, &fb);
        h0065_(&c, range, &n, &fc);
        EXPECT_TRUE(out >= lo - slack && out <= far + slack && fa == 1 && fb == 1 && fc == 1);
        for (double v : {a, b, c}) EXPECT_TRUE(v >= lo - slack && v < far - tol) << v;
        for (double v : {out, a}) EXPECT_NEAR((v - x) / p, std::round((v - x) / p), 1e-9);
        EXPECT_NEAR(c, x + n * p, slack + 1e-12 * std::fabs(n * p));
        EXPECT_TRUE(b == a || b == lo); // they differ only where h0063_ snaps
    }
}

TEST_F(Periodic, EndsGapsAndDegenerateInput)
{
    open_session(1.0, true);
    const double tol = EQ_ask_number_tolerance();
    for (double x : {1.0 - 0.5 * tol, 2.0, 3.0 + 0.5 * tol}) // an end within tol, or inside
        EXPECT_EQ(place(x, 3.0, 1.0, 1, 0.5), std::make_pair(1, 0));
    EXPECT_EQ(place(1.0 - 3 * 0.5, 1.0, 3.0, 1, 0.5).second, 3); // exact multiples
    EXPECT_EQ(place(3.0 + 4 * 0.5, 1.0, 3.0, 1, 0.5).second, -4);
    EXPECT_EQ(place(-1.0, 0.0, 2.0, 0, 99.0).second, 1); // flag 0: the range length
    EXPECT_EQ(place(-0.5, 0.0, 1.0, 1, 2.0).first, 0);   // in the gap between copies
    // No period, zero-length range, NaN, counts beyond int: nothing found.
    for (const auto &r :
         {place(5.0, 0.0, 1.0, 1, 0.0), place(5.0, 1.0, 1.0, 0, 1.0),
          place(qxtest::kNaN, 0.0, 1.0, 1, 1.0), place(2.0, 0.0, 1.0, 1, qxtest::kNaN),
          place(-2147483648.5, 0.0, 1.0, 0, 0), place(2147483649.5, 0.0, 1.0, 0, 0)})
        EXPECT_EQ(r, std::make_pair(0, 0));
    EXPECT_EQ(place(-2147483646.5, 0.0, 1.0, 0, 0).second, INT_MAX); // the largest that fit
    EXPECT_EQ(place(2147483648.5, 0.0, 1.0, 0, 0).second, INT_MIN);

    // Within tolerance of a copy of the far end: h0005_ keeps it, h0062_ gives back a period,
    // h0063_ and h0065_ snap onto start.
    const double start = 0.25, period = 0.5, lim[2] = {start, start + period};
    const double x = start + 3 * period + 0.5 * tol;
    double out = qxtest::kNaN, a = x, b = x, c = x, far = start + period;
    int found = -1, count = -7;
    h0005_(&x, &start, &period, &out);
    EXPECT_EQ(out, x - 2 * period);
    h0062_(&a, &start, &period, &found);
    EXPECT_EQ(a, x - 3 * period);
    h0063_(&b, &start, &period, &found);
    EXPECT_EQ(b, start);
    h0065_(&c, lim, &count, &found);
    EXPECT_TRUE(c == start && count == -3);
    h0065_(&far, lim, &count, &found);
    EXPECT_TRUE(far == start && count == -1);

    // Not placed: x untouched, found 0.
    const double zero = 0.0, huge = 1e300, flat[2] = {1.0, 1.0};
    double y = 7.0, z = huge;
    h0062_(&y, &start, &zero, &found);
    EXPECT_EQ(found, 0);
    h0065_(&y, flat, &count, &found);
    EXPECT_TRUE(found == 0 && count == 0 && y == 7.0);
    h0005_(&huge, &start, &period, &out);
    EXPECT_EQ(out, huge);
    h0063_(&z, &start, &period, &found);
    EXPECT_TRUE(found == 0 && z == huge);
}

} // namespace
