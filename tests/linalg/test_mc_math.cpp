// The MC_ routines: arithmetic and Cramer's solve against Eigen on random
// inputs, the fixed constants of the predicates (strict or not), the line
// and plane measures against independent formulas, and the stdout line +
// raise of the two degenerate cases, whatever the checking level.
#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include <unistd.h>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using V = Eigen::Vector3d;
using qxtest::kNaN;

constexpr double kEps = 2.220446049250313e-16;
constexpr double kPi = 3.141592653589793;
constexpr const char *kNullLine = "\nERROR: zero vector in unitize\n";
constexpr const char *kSingularLine = "\nERROR: zero determinant in 3 by 3 system\n";

class McMath : public qxtest::QxTest
{
  protected:
    std::mt19937_64 rng{20240521};
    std::uniform_real_distribution<double> coord{-10.0, 10.0};
    V random_vector() { return {coord(rng), coord(rng), coord(rng)}; }
    V random_unit() { return random_vector().normalized(); }
};

V vec(const double *v) { return {v[0], v[1], v[2]}; }

// f, run with stdout captured (and under a trap when `unwind`), prints
// `line` and makes one raise from mc_math, code 17, with `text`.
template <class F> void expect_vector_raise(F f, const char *line, const char *text, bool unwind)
{
    qxsys_clear_reports();
    testing::internal::CaptureStdout();
    if (unwind)
        EXPECT_TRUE(qxsys::first_error(f).has_value());
    else
        f();
    EXPECT_EQ(testing::internal::GetCapturedStdout(), line);
    ASSERT_EQ(qxsys_report_count(), 1);
    const qxsys_report &r = *qxsys_report_back(0);
    EXPECT_EQ(r.kind, QXSYS_RAISE);
    EXPECT_STREQ(r.file, "mc_math");
    EXPECT_EQ(r.code, 17);
    EXPECT_EQ(r.code, QX_ERR_VECTOR);
    EXPECT_STREQ(r.text, text);
}

// Sarrus on a 3x4 system, the six products in the library's order;
// `grouped` sums the positive and the negative terms apart.
double sarrus(const double *m, bool grouped = false)
{
    const double p[6] = {m[0] * m[5] * m[10], m[4] * m[9] * m[2], m[8] * m[1] * m[6],
                         m[8] * m[5] * m[2],  m[0] * m[9] * m[6], m[4] * m[1] * m[10]};
    if (grouped) return (p[0] + p[1] + p[2]) - (p[3] + p[4] + p[5]);
    return p[0] + p[1] + p[2] - p[3] - p[4] - p[5];
}

TEST_F(McMath, ArithmeticAndSolveAgreeWithEigen)
{
    int by_reciprocal = 0, by_grouping = 0;
    for (int trial = 0; trial < 200; ++trial) {
        const V a = random_vector(), b = random_vector(), c = random_vector();
        const double s = coord(rng), tol = 64 * kEps * a.norm() * b.norm();
        double k[3] = {kNaN, kNaN, kNaN};
        MC_AxB(a.data(), b.data(), k);
        EXPECT_LT((vec(k) - a.cross(b)).norm(), tol);
        EXPECT_EQ(k[0], a.y() * b.z() - a.z() * b.y());
        EXPECT_EQ(k[2], a.x() * b.y() - b.x() * a.y());
        // Component-wise results, written over one of the inputs.
        const auto over = [&k](const V &v) {
            return static_cast<double *>(std::memcpy(k, v.data(), 24));
        };
        MC_AmB(over(a), b.data(), k);
        EXPECT_EQ(vec(k), a - b);
        MC_ApB(a.data(), over(b), k);
        EXPECT_EQ(vec(k), a + b);
        MC_aA(s, over(a), k);
        EXPECT_EQ(vec(k), s * a);
        MC_aApB(s, over(a), b.data(), k);
        EXPECT_EQ(vec(k), (s * a + b).eval());
        MC_aApB(s, a.data(), over(b), k);
        EXPECT_EQ(vec(k), (s * a + b).eval());
        MC_v_copy(c.data(), k);
        EXPECT_EQ(vec(k), c);

        EXPECT_NEAR(MC_A_dot_B(a.data(), b.data()), a.dot(b), tol);
        EXPECT_NEAR(MC_length(a.data()), a.norm(), 4 * kEps * a.norm());
        EXPECT_NEAR(MC_length2(a.data()), a.squaredNorm(), 4 * kEps * a.squaredNorm());
        const double d2 = (a - b).squaredNorm();
        EXPECT_NEAR(MC_dist(a.data(), b.data()), std::sqrt(d2), 8 * kEps * std::sqrt(d2));
        EXPECT_NEAR(MC_dist2(a.data(), b.data()), d2, 8 * kEps * d2);
        EXPECT_NEAR(MC_triple_product(a.data(), b.data(), c.data()), a.cross(b).dot(c),
                    64 * kEps * a.norm() * b.norm() * c.norm());

        // Unit by three divisions (not by the reciprocal), bit for bit.
        double unit[3] = {a.x(), a.y(), a.z()};
        const double len = std::sqrt(a.x() * a.x() + a.y() * a.y() + a.z() * a.z());
        MC_v_unit(unit);
        EXPECT_EQ(vec(unit), V(a.x() / len, a.y() / len, a.z() / len));
        by_reciprocal += vec(unit) != a * (1 / len);

        // Sarrus's terms in their order, bit for bit, the right-hand sides
        // unread; Cramer's solve against Eigen, M unchanged.
        double m[12], before[12], x[3] = {kNaN, kNaN, kNaN};
        for (double &e : m) e = coord(rng);
        const V rhs(m[3], m[7], m[11]);
        m[3] = m[7] = m[11] = kNaN;
        const Eigen::Matrix3d mm{{m[0], m[1], m[2]}, {m[4], m[5], m[6]}, {m[8], m[9], m[10]}};
        EXPECT_EQ(MC_determinant(m), sarrus(m));
        EXPECT_NEAR(MC_determinant(m), mm.determinant(), 4096 * kEps);
        by_grouping += sarrus(m) != sarrus(m, true);
        if (std::fabs(mm.determinant()) < 1.0) continue;
        m[3] = rhs.x(), m[7] = rhs.y(), m[11] = rhs.z();
        std::memcpy(before, m, sizeof m);
        MC_solve_3(m, x);
        EXPECT_EQ(std::memcmp(m, before, sizeof m), 0);
        const V ref = mm.partialPivLu().solve(rhs);
        EXPECT_LT((vec(x) - ref).norm(), 1e-10 * (1.0 + ref.norm()));
    }
    EXPECT_GT(by_reciprocal, 0); // the inputs tell the roundings apart
    EXPECT_GT(by_grouping, 0);
}

TEST_F(McMath, PredicatesUseFixedConstants)
{
    const double x[3] = {1.0, 0.0, 0.0};
    // Parallel: 1/1000 degree in radians compared, strictly, with |A x B|^2
    // (so sine 0.004 is parallel: 0.004^2 < k).
    const double k = 1.7453292519943296e-5, y = 0.0005613353556526114, z = 0.004139830327252272;
    const double z_in = std::nextafter(z, 0.0);
    ASSERT_EQ(z * z + y * y, k);
    ASSERT_LT(z_in * z_in + y * y, k);
    EXPECT_EQ(MC_q_parallel(x, V(0, 0.004, 0).data()), 1);
    EXPECT_EQ(MC_q_parallel(x, V(0, 0, 0.0042).data()), 0);
    EXPECT_EQ(MC_q_parallel(x, V(0, y, z).data()), 0);
    EXPECT_EQ(MC_q_parallel(x, V(0, y, z_in).data()), 1);
    EXPECT_EQ(MC_q_parallel(x, V(-1, 0, 0).data()), 1);
    EXPECT_EQ(MC_q_parallel(x, V(std::cos(0.0174533), std::sin(0.0174533), 0).data()), 0);
    // Perpendicular: |A.B| < 1e-4, strict.
    EXPECT_EQ(MC_q_perp(x, V(0.0001, 1, 0).data()), 0);
    EXPECT_EQ(MC_q_perp(x, V(std::nextafter(0.0001, 0.0), 1, 0).data()), 1);

    // Angle: snapped to 0 and pi beyond +-0.9999999 on the dot product.
    for (int trial = 0; trial < 50; ++trial) {
        const V u = random_unit(), v = random_unit(), w = -u;
        EXPECT_EQ(MC_get_angle(u.data(), u.data()), 0.0);
        EXPECT_EQ(MC_get_angle(u.data(), w.data()), kPi);
        EXPECT_NEAR(MC_get_angle(u.data(), v.data()), std::atan2(u.cross(v).norm(), u.dot(v)),
                    1e-7);
    }
    const double c = 0.9999999;
    EXPECT_EQ(MC_get_angle(x, V(c, 0.1, 0).data()), std::acos(c));
    EXPECT_EQ(MC_get_angle(x, V(std::nextafter(c, 1.0), 0.1, 0).data()), 0.0);
    EXPECT_EQ(MC_get_angle(x, V(-c, 0.1, 0).data()), std::acos(-c));
    EXPECT_EQ(MC_get_angle(x, V(std::nextafter(-c, -1.0), 0.1, 0).data()), kPi);
    // Not normalised: a long pair 53 degrees apart has a dot product above 1.
    EXPECT_EQ(MC_get_angle(V(2, 0, 0).data(), V(0.6, 0.8, 0).data()), 0.0);
}

TEST_F(McMath, PerpendicularsProjectionsAndDistances)
{
    for (int trial = 0; trial < 200; ++trial) {
        const V p = random_vector(), q = random_vector(), u = random_unit(), u2 = random_unit();
        const V foot = q + u * u.dot(p - q), on = q + 3.0 * u, back = -u, n = u.cross(u2);
        double r[3] = {kNaN, kNaN, kNaN}, k[3] = {kNaN, kNaN, kNaN};
        MC_perp_vec(u.data(), k);
        EXPECT_NEAR(vec(k).norm(), 1.0, 4 * kEps);
        EXPECT_NEAR(vec(k).dot(u), 0.0, 8 * kEps);

        MC_proj_point_onto_line(p.data(), u.data(), q.data(), r);
        EXPECT_LT((vec(r) - foot).norm(), 256 * kEps);
        MC_perp_from_line_to_point(p.data(), u.data(), q.data(), k);
        EXPECT_LT((vec(k) - (p - foot).normalized()).norm(), 1e-12);
        EXPECT_EQ(MC_q_point_on_line(p.data(), u.data(), q.data()), (p - foot).norm() <= 1e-4);
        EXPECT_EQ(MC_q_point_on_line(on.data(), u.data(), q.data()), 1);

        const double d = coord(rng);
        MC_proj_point_onto_plane(p.data(), u.data(), d, r);
        EXPECT_LT((vec(r) - (p - (u.dot(p) - d) * u)).norm(), 256 * kEps);

        // Skew lines; parallel ones (either sense): P's distance from line 1.
        EXPECT_NEAR(MC_dist_lines(u.data(), q.data(), u2.data(), p.data()),
                    std::fabs((q - p).dot(n)) / n.norm(), 1e-9);
        const double apart = (p - q).cross(u).norm();
        EXPECT_NEAR(MC_dist_lines(u.data(), q.data(), u.data(), p.data()), apart, 1e-12);
        EXPECT_NEAR(MC_dist_lines(u.data(), q.data(), back.data(), p.data()), apart, 1e-12);
        EXPECT_EQ(MC_dist_lines(u.data(), q.data(), u.data(), on.data()), 0.0);

        // The axis (U, P) pierces the plane (u2, d).
        if (std::fabs(u.dot(u2)) < 0.1) continue;
        MC_axis_plane_x(u.data(), p.data(), u2.data(), d, r);
        const V pierce = p + u * ((d - u2.dot(p)) / u2.dot(u));
        EXPECT_LT((vec(r) - pierce).norm(), 1e-9 * (1.0 + pierce.norm()));
    }
    // The branches of MC_perp_vec by the 0.5 thresholds; K may be A.
    double k[3] = {0.0, 0.0, 1.0}; // |Ax|, |Ay| <= 0.5: (1, 0, -Ax/Az)
    MC_perp_vec(k, k);
    EXPECT_EQ(vec(k), V(1, 0, 0));
    MC_perp_vec(V(0, 1, 0).data(), k); // |Ay| > 0.5: (1, -Ax/Ay, 0)
    EXPECT_EQ(vec(k), V(1, 0, 0));
    MC_perp_vec(V(0.6, 0.8, 0).data(), k); // |Ax| > 0.5: (-Ay/Ax, 1, 0)
    EXPECT_EQ(vec(k), V(-0.8 / 0.6, 1, 0) / std::sqrt(0.8 / 0.6 * (0.8 / 0.6) + 1));

    // On the line: squared distance <= 1e-8, a fixed constant.
    const double y = 8.474337369372328e-05, z = 5.3090117865813506e-05,
                 y_out = std::nextafter(y, 1.0);
    ASSERT_EQ(y * y + z * z, 1e-8);
    ASSERT_GT(y_out * y_out + z * z, 1e-8);
    const double x[3] = {1.0, 0.0, 0.0}, o[3] = {0.0, 0.0, 0.0};
    EXPECT_EQ(MC_q_point_on_line(V(5, y_out, z).data(), x, o), 0);
    open_session(1e-6, true);
    EXPECT_EQ(MC_q_point_on_line(V(5, y, z).data(), x, o), 1);
    EXPECT_EQ(MC_dist_lines(x, o, x, o), 0.0);

    // Planes: dB - dA, dB negated for opposite normals (a zero dot product
    // counts as opposite), 0 unless parallel by MC_q_parallel.
    const double n[3] = {0.0, 0.6, 0.8};
    EXPECT_EQ(MC_signed_dist_planes(n, 2.0, V(0, -0.6, -0.8).data(), 3.0), -5.0);
    EXPECT_EQ(MC_signed_dist_planes(n, 2.0, n, 3.0), 1.0);
    EXPECT_EQ(MC_signed_dist_planes(n, 2.0, V(0, 0.8, 0.6).data(), 3.0), 0.0);
    EXPECT_EQ(MC_signed_dist_planes(V(1e-3, 0, 0).data(), 1.0, V(0, 1e-3, 0).data(), 2.0), -3.0);
    // Axis and plane: n.P - d only when MC_q_perp(n, U).
    const double up[3] = {0.0, 0.0, 1.0}, p[3] = {4.0, 5.0, 6.0};
    EXPECT_EQ(MC_signed_dist_plane_axis(up, 2.0, x, p), 4.0);
    EXPECT_EQ(MC_signed_dist_plane_axis(up, 2.0, V(std::sqrt(1 - 1e-8), 0, 1e-4).data(), p), 0.0);
    EXPECT_EQ(MC_signed_dist_plane_axis(up, 2.0, V(1, 0, std::nextafter(1e-4, 0.0)).data(), p),
              4.0);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(McMath, AxisPlaneTiesGoToXThenY)
{
    // The two axis planes keep U's dominant component; ties go to x over y
    // and to x or y over z. The systems built on the two tied components
    // give solutions differing in their last bits, which shows the choice.
    const auto solve_with = [](int k, const double *u, const double *p, const double *n,
                               double *x) {
        const double yz[4] = {0.0, u[2], -u[1], u[2] * p[1] - u[1] * p[2]};
        const double zx[4] = {-u[2], 0.0, u[0], u[0] * p[2] - u[2] * p[0]};
        const double xy[4] = {u[1], -u[0], 0.0, u[1] * p[0] - u[0] * p[1]};
        const double *r2 = k == 0 ? zx : yz, *r3 = k == 2 ? zx : xy;
        double m[12] = {n[0],  n[1],  n[2],  4.25,  r2[0], r2[1],
                        r2[2], r2[3], r3[0], r3[1], r3[2], r3[3]};
        MC_solve_3(m, x);
    };
    const double s = 1.0 / std::sqrt(2.0), p[3] = {0.3, 1.7, -2.9}, n[3] = {0.48, 0.6, 0.64};
    const struct {
        double u[3];
        int wins, loses;
    } ties[] = {{{s, -s, 0.1}, 0, 1}, {{-s, 0.1, s}, 0, 2}, {{0.1, s, -s}, 1, 2}};
    for (const auto &t : ties) {
        double expect[3], other[3], x[3] = {kNaN, kNaN, kNaN};
        solve_with(t.wins, t.u, p, n, expect);
        solve_with(t.loses, t.u, p, n, other);
        ASSERT_NE(vec(expect), vec(other)) << t.wins;
        MC_axis_plane_x(t.u, p, n, 4.25, x);
        EXPECT_EQ(vec(x), vec(expect)) << t.wins;
    }
}

TEST_F(McMath, DegenerateInputPrintsThenRaisesAtAnyLevel)
{
    const char *null_text = "tried to unitize null vector";
    for (int level : {0, 1}) {
        MACH__checking_level = level;
        // The host returns: the division by the small length still happens.
        double a[3] = {0.0, 3e-5, -4e-5};
        const double len = std::sqrt(3e-5 * 3e-5 + 4e-5 * 4e-5);
        expect_vector_raise([&] { MC_v_unit(a); }, kNullLine, null_text, false);
        EXPECT_EQ(vec(a), V(0.0, 3e-5 / len, -4e-5 / len));
    }
    double ok[3] = {0.0, 0.0, 1e-4}; // long enough: the limit is strict
    qxsys_clear_reports();
    MC_v_unit(ok);
    EXPECT_EQ(vec(ok), V(0, 0, 1));
    EXPECT_EQ(qxsys_report_count(), 0);

    // The line is out before the host sees the report.
    qxsys_set_handler([](const qxsys_report *, void *) { (void)!write(1, "[host]", 6); }, nullptr,
                      nullptr);
    testing::internal::CaptureStdout();
    MC_v_unit(V(1e-5, 0, 0).data());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string(kNullLine) + "[host]");
    qxsys_set_handler(nullptr, nullptr, nullptr);

    // The host unwinds: the input is left as it was; a point on the line
    // has no direction towards it.
    double z[3] = {0.0, 0.0, 0.0}, k[3];
    expect_vector_raise([&] { MC_v_unit(z); }, kNullLine, null_text, true);
    EXPECT_EQ(vec(z), V::Zero());
    const double u[3] = {0.0, 1.0, 0.0}, q[3] = {1.0, 1.0, 1.0}, on[3] = {1.0, 5.0, 1.0};
    expect_vector_raise([&] { MC_perp_from_line_to_point(on, u, q, k); }, kNullLine, null_text,
                        true);

    // |det| = 1e-9 < 1e-8: reported, then solved anyway when the host returns.
    double m[12] = {1e-3, 0, 0, 1e-3, 0, 1e-3, 0, 2e-3, 0, 0, 1e-3, 3e-3};
    double before[12], x[3] = {kNaN, kNaN, kNaN};
    std::memcpy(before, m, sizeof m);
    const char *singular_text = "zero determinant in linear system";
    expect_vector_raise([&] { MC_solve_3(m, x); }, kSingularLine, singular_text, false);
    EXPECT_LT((vec(x) - V(1, 2, 3)).norm(), 1e-12);
    EXPECT_EQ(std::memcmp(m, before, sizeof m), 0);
    // An axis parallel to the plane; unwinding leaves the output unwritten.
    double out[3] = {kNaN, kNaN, kNaN};
    expect_vector_raise([&] { MC_axis_plane_x(u, q, V(0, 0, 1).data(), 2.0, out); }, kSingularLine,
                        singular_text, true);
    EXPECT_TRUE(std::isnan(out[0]) && std::isnan(out[1]) && std::isnan(out[2]));
}

} // namespace
