// The numbered routines of the XY plane: each comparison at the edge of its own tolerance slot
// (a session of scale 1000 keeps tol[0], tol[1] and tol[2] apart), arc lengths, the line and
// the conic coefficients bit for bit, and the conics against their own definitions.
#include <cmath>
#include <random>

#include "support/qx_test.h"

namespace
{

using qxtest::kNaN;
constexpr double kPi = 3.141592653589793, kTwoPi = 6.283185307179586;

class Plane : public qxtest::QxTest
{
  protected:
    void SetUp() override
    {
        qxtest::QxTest::SetUp();
        open_session(1000.0, true); // tol[0] = 1e-10, tol[1] = 1e-7, tol[2] = 1e-14
    }
    std::mt19937_64 rng{20261122};
    double uni(double lo, double hi) { return std::uniform_real_distribution<double>(lo, hi)(rng); }
};

TEST_F(Plane, DistancesAndCoincidence)
{
    const double p[3] = {1, 2, 99}, q[3] = {4, 6, -7}, o[3] = {0, 0, 0};
    double d = kNaN;
    h201_(p, q, &d);
    EXPECT_EQ(d, 5.0); // z ignored
    const auto h202 = [](const double *u, const double *v) {
        int e = -1;
        return h202_(u, v, &e), e;
    };
    const auto h204 = [](const double *u, const double *v, double t) {
        int e = -1;
        return h204_(u, v, &t, &e), e;
    };
    const auto h203 = [&o](const double *u, const double *v) {
        int k = -1;
        return h203_(u, v, o, &k), k;
    };
    // h202_: squared distance against tol[2] = 1e-14, so 1e-7 apart is the edge.
    const double r[3] = {1 + 0.9e-7, 2, 0}, s[3] = {1 + 2e-7, 2, 0};
    EXPECT_EQ(h202(p, r), 1);
    EXPECT_EQ(h202(p, s), 0);
    // h204_ compares with t*t (equality included), h206_ with t: 1.9 apart passes h204_ only.
    const double b[3] = {1.9, 0, 0}, two[3] = {0, -2, 0}, t = 2.0;
    int eq = -1;
    h206_(o, b, &t, &eq);
    EXPECT_EQ(eq, 0);
    EXPECT_EQ(h204(o, b, t), 1);
    EXPECT_EQ(h204(o, two, t), 1);
    EXPECT_EQ(h204(o, two, 1.999), 0);
    // h203_: 1 a nearer, 2 b strictly nearer, 3 exactly equal (no tolerance).
    const double n1[3] = {1, 0, 5}, n2[3] = {0, 1, -5}, far[3] = {1 + 1e-15, 0, 0};
    EXPECT_EQ(h203(n1, far), 1);
    EXPECT_EQ(h203(far, n1), 2);
    EXPECT_EQ(h203(n1, n2), 3);
}

TEST_F(Plane, AnglesAndArcLengths)
{
    const double c[3] = {1, 1, 0}, p[3] = {2, 1, 0}, q[3] = {1, 3, 0}, r = 2.0;
    double ang[3] = {1, 3, 0}; // also q itself: every input is read before ang is written
    h224_(p, ang, c, ang);
    EXPECT_EQ(ang[0], 0.0);
    EXPECT_EQ(ang[1], kPi / 2);
    h221_(p, q, c, ang);
    EXPECT_EQ(ang[1], kPi / 2 * 57.29577951308235);
    // p at 0, q at pi/2: pi counter-clockwise (sense 1), 3 pi from q to p (any other sense).
    double len = kNaN;
    for (int sense : {1, 0, 7}) {
        h222_(&sense, &r, c, p, q, &len);
        EXPECT_DOUBLE_EQ(len, sense == 1 ? kPi : 3 * kPi);
    }
    // End angles equal under tol[0] give the full circle; 1e-8 apart (within tol[1]) do not.
    const int sense = 1;
    h222_(&sense, &r, c, p, p, &len);
    EXPECT_EQ(len, kTwoPi * r);
    for (double gap : {5e-11, 1e-8}) {
        const double u[3] = {c[0] + std::cos(1.0), c[1] + std::sin(1.0), 0};
        const double v[3] = {c[0] + std::cos(1.0 + gap), c[1] + std::sin(1.0 + gap), 0};
        h222_(&sense, &r, c, u, v, &len);
        EXPECT_NEAR(len, gap < 1e-10 ? kTwoPi * r : r * gap, 1e-14);
    }
}

TEST_F(Plane, LineNormalisedByAllThreeCoefficients)
{
    const double p[3] = {0, 1, 0}, q[3] = {1, 1, 0}, o[3] = {0, 0, 0};
    int status = -1;
    double a = kNaN, b = kNaN, c = kNaN;
    h230_(p, q, &status, &a, &b, &c);
    EXPECT_EQ(status, 1);
    EXPECT_EQ(a, 0.0);
    EXPECT_EQ(b, -1.0 / std::sqrt(2.0)); // divided by sqrt(2), not by sqrt(a^2 + b^2) = 1
    EXPECT_EQ(c, 1.0 / std::sqrt(2.0));
    // a^2 + b^2 against tol[0] (eqz_ kind 0): 1e-11 coincides (outputs untouched), 1e-9 not.
    for (double n2 : {1e-11, 1e-9}) {
        const double w[3] = {std::sqrt(n2), 0, 0};
        a = b = c = kNaN;
        h230_(o, w, &status, &a, &b, &c);
        EXPECT_EQ(status, n2 < 1e-10 ? 2 : 1);
        EXPECT_EQ(std::isnan(a) && std::isnan(b) && std::isnan(c), n2 < 1e-10);
    }
}

TEST_F(Plane, Conics)
{
    double coef[6];
    const double centre0[2] = {2, 0}, one = 1.0, zero = 0.0;
    const int ellipse = 2;
    h260_(&ellipse, centre0, &one, &one, &one, &zero, coef);
    const double want[6] = {1, 0, 1, -4, 0, 3};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(coef[i], want[i]) << i;

    // Types 0 and 2 are ellipses, 3 the parabola, 4 and 7 hyperbolas in h260_ and h262_.
    for (int type : {2, 3, 4, 0, 7}) {
        for (int trial = 0; trial < 100; ++trial) {
            const double cen[2] = {uni(-10, 10), uni(-10, 10)};
            const double a = uni(0.5, 4), b = uni(0.5, 4), th = uni(0, kTwoPi);
            const double d1 = std::cos(th), d2 = std::sin(th), x0 = cen[0], y0 = cen[1];
            h260_(&type, cen, &a, &b, &d1, &d2, coef);
            // The written formulas, bit for bit.
            double A, B, C, D, E, F;
            if (type == 3) {
                A = d2 * d2, B = -2 * d1 * d2, C = d1 * d1;
                D = -a * d1 - 2 * (d2 * d2) * x0 - B * y0;
                E = -a * d2 - B * x0 - 2 * (d1 * d1) * y0;
                F = a * (x0 * d1 + y0 * d2) + (B * x0 + (d1 * d1) * y0) * y0 +
                    (d2 * d2) * (x0 * x0);
            } else {
                const double sg = type < 3 ? 1 : -1;
                A = (d1 * d1) / (a * a) + sg * ((d2 * d2) / (b * b));
                B = 2 * (1 / (a * a) - sg * (1 / (b * b))) * d1 * d2;
                C = (d2 * d2) / (a * a) + sg * ((d1 * d1) / (b * b));
                D = -2 * A * x0 - B * y0;
                E = -B * x0 - 2 * C * y0;
                F = (B * x0 + C * y0) * y0 + A * (x0 * x0) - 1;
            }
            const double lit[6] = {A, B, C, D, E, F};
            for (int i = 0; i < 6; ++i) ASSERT_EQ(coef[i], lit[i]) << type << " " << i;

            // h262_'s point lies on the conic; h264_ (direction sine first) recovers it.
            const double ang = uni(-1.4, 1.4); // away from the hyperbola's asymptote
            const double w1 = type == 3 ? uni(-3, 3) : std::cos(ang), w2 = std::sin(ang);
            double pt[3] = {kNaN, kNaN, 42.0};
            h262_(&type, &a, &b, &w1, &w2, cen, &d1, &d2, pt);
            const double U = type < 3 ? a * w1 : type == 3 ? w1 * w1 / a : a / w1;
            const double V = type < 3 ? b * w2 : type == 3 ? w1 : b * w2 / w1;
            EXPECT_EQ(pt[0], x0 + U * d1 - V * d2);
            EXPECT_EQ(pt[1], y0 + V * d1 + U * d2);
            EXPECT_EQ(pt[2], 42.0);
            const double x = pt[0], y = pt[1];
            const double terms[6] = {coef[0] * x * x, coef[1] * x * y, coef[2] * y * y,
                                     coef[3] * x,     coef[4] * y,     coef[5]};
            double value = 0, scale = 0;
            for (double v : terms) value += v, scale += std::fabs(v);
            EXPECT_NEAR(value, 0.0, 64 * 2.2e-16 * scale) << type;
            if (type == 7) continue; // h264_ reads 7 as an ellipse
            const double dir[2] = {d2, d1};
            double t = kNaN;
            h264_(&type, cen, &a, &b, dir, pt, &t);
            if (type == 3)
                EXPECT_NEAR(t, w1, 1e-12 * (1 + std::fabs(w1)));
            else
                EXPECT_NEAR(std::remainder(t - ang, kTwoPi), 0.0, 1e-9) << type;
            // h264_: every code outside 1 .. 4 is the ellipse, bit for bit.
            double te = kNaN, to = kNaN;
            const int out_codes[3] = {0, 5, -3};
            h264_(&ellipse, cen, &a, &b, dir, pt, &te);
            h264_(&out_codes[trial % 3], cen, &a, &b, dir, pt, &to);
            EXPECT_EQ(to, te);
        }
    }
    // h264_ type 1 leaves t alone.
    const int type1 = 1;
    const double dir[2] = {0, 1}, p[3] = {3, 1, 0};
    double t = 123.0;
    h264_(&type1, centre0, &one, &one, dir, p, &t);
    EXPECT_EQ(t, 123.0);
}

} // namespace
