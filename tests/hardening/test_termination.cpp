// Termination on any input: every routine whose loops run for a number of
// steps that depends on the values (iterative solvers, repair passes, knot
// and span searches, subdivision) is called with NaN, infinities, huge and
// subnormal values under a watchdog: a case that does not return within
// 2 s (60 s under valgrind, QX_UNDER_VALGRIND set) aborts naming itself.
// Where a header says what NaN input yields, that is checked too.
#include <unistd.h>

#include <algorithm>
#include <cfloat>
#include <climits>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <vector>

#include "support/qx_test.h"

namespace
{

constexpr double kNaN = qxtest::kNaN;
constexpr double kInf = std::numeric_limits<double>::infinity();
// The hostile values every table draws from.
const double kHostile[] = {kNaN, kInf, -kInf, 1e300, -1e300, DBL_TRUE_MIN, -1e-310};

const char *g_case = "";

extern "C" void on_alarm(int)
{
    const char head[] = "\ntermination watchdog: case did not return: ";
    (void)!write(2, head, sizeof head - 1);
    (void)!write(2, g_case, std::strlen(g_case));
    (void)!write(2, "\n", 1);
    std::abort();
}

// Runs f under the watchdog.
void guarded(const char *name, const std::function<void()> &f)
{
    static const unsigned seconds = std::getenv("QX_UNDER_VALGRIND") != nullptr ? 60 : 2;
    std::signal(SIGALRM, on_alarm);
    g_case = name;
    SCOPED_TRACE(name);
    alarm(seconds);
    f();
    alarm(0);
    g_case = "";
}

struct Case {
    const char *name;
    std::function<void()> run;
};

using Termination = qxtest::QxTest;

// Row pointers over a flat row-major n x n block.
std::vector<double *> rows(std::vector<double> &m, int n)
{
    std::vector<double *> r;
    for (int i = 0; i < n; ++i) r.push_back(m.data() + i * n);
    return r;
}

// MTX3_ortho_normalize repeats passes until the matrix is ortho-normal; input
// that cannot be repaired ends at the first repeated matrix, with result 1.
TEST_F(Termination, OrthoNormalizeEndsOnAnyMatrix)
{
    const double base[9] = {0.8, 0.6, 0.0, -0.6, 0.8, 0.0, 0.0, 0.0, 1.0};
    auto run = [](double m[9]) {
        const bool was = MTX3_is_ortho_normal(m) != 0;
        const int result = MTX3_ortho_normalize(m);
        EXPECT_EQ(result, was ? 0 : 1);
    };
    guarded("MTX3_ortho_normalize: one hostile element", [&] {
        for (double v : kHostile)
            for (int i = 0; i < 9; ++i) {
                double m[9];
                std::memcpy(m, base, sizeof m);
                m[i] = v;
                run(m);
            }
    });
    guarded("MTX3_ortho_normalize: all elements hostile", [&] {
        for (double v : kHostile) {
            double m[9];
            for (double &e : m) e = v;
            run(m);
        }
    });
    guarded("MTX3_ortho_normalize: random mixes", [&] {
        std::mt19937 rng(16);
        const double plain[] = {0.0, 1.0, -1.0, 1e-12, 0.5, 1e19, 1e-160};
        for (int trial = 0; trial < 3000; ++trial) {
            double m[9];
            for (double &e : m) {
                const unsigned pick = rng() % 4;
                e = pick == 0   ? kHostile[rng() % 7]
                    : pick == 1 ? plain[rng() % 7]
                                : std::uniform_real_distribution<double>(-2.0, 2.0)(rng);
            }
            run(m);
        }
    });
}

// Jacobi stops at the first sweep whose off-diagonal sum is NaN (so a NaN
// coupling leaves d the diagonal, no rotation made); the generalised problem
// and the fits run on it; power iteration never converges on NaN and ends at
// its limit.
TEST_F(Termination, EigenSystemsEndOnAnyMatrix)
{
    std::vector<Case> cases = {
        {"NR_ask_eigenvalues_jacobi: hostile matrices",
         [] {
             for (int n : {2, 3, 5})
                 for (double v : kHostile)
                     for (int where = 0; where < 3; ++where) {
                         std::vector<double> a(size_t(n * n), 0.0), vv(size_t(n * n));
                         for (int i = 0; i < n; ++i) a[size_t(i * n + i)] = 1.0 + i;
                         a[1] = where == 0 ? v : 0.5; // a coupling
                         a[0] = where == 1 ? v : 1.0; // a diagonal element
                         if (where == 2)
                             for (double &e : a) e = v;
                         std::vector<double> d(size_t(n), kNaN);
                         auto ar = rows(a, n), vr = rows(vv, n);
                         int nrot = -1;
                         const double diag0 = a[0];
                         NR_ask_eigenvalues_jacobi(ar.data(), n, 1000, d.data(), vr.data(), &nrot);
                         if (where == 0 && std::isnan(v)) {
                             EXPECT_EQ(nrot, 0);
                             EXPECT_EQ(d[0], diag0);
                         }
                     }
             qxsys_clear_reports();
         }},
        {"NR_generalized_eigenvalues_symm: hostile A and B",
         [] {
             for (double v : kHostile)
                 for (int which = 0; which < 2; ++which) {
                     const int n = 3;
                     double A[9] = {2, 1, 0, 1, 3, 1, 0, 1, 4}, B[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
                     (which == 0 ? A : B)[4] = v;
                     double lambda[3], X[9];
                     int nrot = -1, status = -1;
                     NR_generalized_eigenvalues_symm(A, B, n, 60, lambda, X, &nrot, &status);
                     if (which == 1 && std::isnan(v)) {
                         EXPECT_EQ(status, 1);
                     } // a NaN pivot
                 }
             qxsys_clear_reports();
         }},
        {"NR_ask_max_eigen_val_vec: hostile matrices",
         [] {
             for (double v : kHostile) {
                 const int n = 3;
                 std::vector<double> a = {2, 1, 0, 1, 3, 1, 0, 1, v};
                 auto ar = rows(a, n);
                 const double x0[3] = {1, 1, 1};
                 double lambda = 0.0, x[3];
                 int notconverged = -1;
                 NR_ask_max_eigen_val_vec(n, ar.data(), 10000, x0, &lambda, x, &notconverged);
                 if (std::isnan(v)) {
                     EXPECT_EQ(notconverged, 1);
                 }
             }
         }},
        {"LSFIT_*: hostile points",
         [] {
             for (double v : kHostile)
                 for (int at = 0; at < 3; ++at) {
                     double pts[18] = {0, 0, 0, 1, 0, 0, 0, 1, 0, 1, 1, 0.1, 2, 1, 0, 0, 2, 1};
                     pts[3 * at + 1] = v;
                     double p[3], nrm[3], c[3], r, dev[3];
                     int deg;
                     LSFIT_line_to_points_2d(pts, 6, p, nrm, &deg, dev);
                     LSFIT_plane_to_points(pts, 6, p, nrm, &deg, dev);
                     LSFIT_circle_to_points_2d(pts, 6, c, &r, &deg, dev);
                     LSFIT_circle_to_points_3d(pts, 6, c, &r, nrm, &deg, dev);
                     LSFIT_sphere_to_points_3d(pts, 6, c, &r, &deg, dev);
                 }
             qxsys_clear_reports();
         }},
    };
    for (const Case &c : cases) guarded(c.name, c.run);
}

// Searches on knots: a NaN parameter lies outside every range (-1 or the
// outside-knots error), and NaN or infinite knots only end searches early.
TEST_F(Termination, KnotSearchesEndOnAnyValue)
{
    const double knots[] = {0, 0, 0, 0, 0.25, 0.5, 0.5, 0.75, 1, 1, 1, 1};
    const int count = 12;
    std::vector<Case> cases = {
        {"h0917/h0918: hostile parameter",
         [&] {
             for (double t : kHostile) {
                 for (double tol : {0.0, 1e-10, kNaN, kInf}) {
                     const int span = h0917(t, knots, count, tol);
                     if (std::isnan(t)) {
                         EXPECT_EQ(span, -1);
                     }
                 }
                 double tt = t;
                 const int span = h0918(&tt, knots, count, 4);
                 if (std::isnan(t)) {
                     EXPECT_EQ(span, -1);
                 }
             }
         }},
        {"h0917/h0918/mbasiseval: hostile knots",
         [&] {
             for (double v : kHostile)
                 for (int at = 0; at < count; ++at) {
                     double k2[12];
                     std::memcpy(k2, knots, sizeof k2);
                     k2[at] = v;
                     for (double t : {0.0, 0.3, 0.5, 1.0}) {
                         (void)h0917(t, k2, count, 1e-10);
                         double tt = t, value = 0, deriv = 0, values[4];
                         (void)h0918(&tt, k2, count, 4);
                         (void)h0916(t, k2, count, 4, 4, 1, &value, &deriv);
                         int first = -1;
                         mbasiseval(3, 5, k2, t, &first, values);
                     }
                 }
             merrorflush();
         }},
        {"mbasiseval: NaN parameter is outside the knots",
         [&] {
             for (double t : kHostile) {
                 merrorflush();
                 int first = -7;
                 double values[4] = {kNaN, kNaN, kNaN, kNaN};
                 mbasiseval(3, 5, knots, t, &first, values);
                 if (std::isnan(t) || std::isinf(t) || std::fabs(t) > 2) {
                     EXPECT_EQ(merrornum(), QX_MERR_OUTSIDE_KNOTS);
                     EXPECT_EQ(first, -7);
                 }
             }
             merrorflush();
         }},
        {"merge_knots/get_unique_reals: hostile knots",
         [&] {
             for (double v : kHostile)
                 for (int at = 0; at < count; ++at) {
                     double k2[12];
                     std::memcpy(k2, knots, sizeof k2);
                     k2[at] = v;
                     double *merged = nullptr, *unique = nullptr;
                     int s = 0, nu = 0;
                     merge_knots(k2, 3, 5, knots, 3, 5, 3, &merged, &s);
                     SM_free(merged);
                     merrorflush();
                     get_unique_reals(k2, count, &unique, &nu);
                     SM_free(unique);
                 }
         }},
    };
    for (const Case &c : cases) guarded(c.name, c.run);
}

// Knot placement and interpolation with hostile parameters and conditions:
// they fail (or place) without hanging.
TEST_F(Termination, KnotPlacementEndsOnAnyParameter)
{
    guarded("knot_seq_order_4/h0914_/h0913: hostile parameters", [] {
        for (double v : kHostile)
            for (int periodic = 0; periodic < 2; ++periodic)
                for (int at = 0; at < 6; ++at) {
                    QX_interp_desc desc = {5, 4, periodic, 3, 1, 0, 2};
                    double params[5] = {0.0, 0.2, 0.4, 0.6, 0.8};
                    if (periodic == 0) params[4] = 1.0;
                    double cond[1] = {0.5};
                    if (at < 5)
                        params[at] = v;
                    else
                        cond[0] = v;
                    double knots[64], poles[64 * 3];
                    int nknots = 0;
                    (void)knot_seq_order_4(&desc, params, cond, &nknots, knots);
                    (void)h0914_(&desc, params, cond, &nknots, knots);
                    const double pts[15] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 2, 1};
                    const double vec[3] = {1, 0, 0};
                    const int kinds[1] = {1};
                    (void)h0913(&desc, pts, params, cond, kinds, vec, &nknots, knots, poles);
                }
        merrorflush();
        qxsys_clear_reports();
    });
}

// The curve box halves pieces within fixed budgets; hostile ranges, knots,
// poles and weights end in a failure code or a box.
TEST_F(Termination, CurveBoxEndsOnAnyCurve)
{
    guarded("bc_xyz_box: hostile range, knots, poles, weights", [] {
        const double knots[8] = {0, 0, 0, 0, 1, 1, 1, 1};
        for (double v : kHostile) {
            double poles[16] = {0, 0, 0, 1, 1, 2, 0, 1, 2, -1, 1, 1, 3, 0, 0, 1};
            BC_CURVE c = {poles, knots, 4, 4, 0};
            double box[6];
            const double range[2] = {v, 1.0};
            const int r = bc_xyz_box(&c, range, box);
            if (std::isnan(v)) {
                EXPECT_EQ(r, BC_BOX_BAD_RANGE);
            }
            for (int at = 0; at < 8; ++at) {
                double k2[8];
                std::memcpy(k2, knots, sizeof k2);
                k2[at] = v;
                BC_CURVE ck = {poles, k2, 4, 4, 1};
                const int rk = bc_xyz_box(&ck, nullptr, box);
                if (!std::isfinite(v)) {
                    EXPECT_EQ(rk, BC_BOX_BAD_CURVE);
                }
            }
            for (int at = 0; at < 16; ++at) {
                double p2[16];
                std::memcpy(p2, poles, sizeof p2);
                p2[at] = v;
                BC_CURVE cp = {p2, knots, 4, 4, 1};
                const int rp = bc_xyz_box(&cp, nullptr, box);
                if (!std::isfinite(v)) {
                    EXPECT_EQ(rp, BC_BOX_BAD_POLES);
                }
            }
            // Weights of mixed sign and extreme size: the halving budget ends it.
            double mixed[16] = {0, 0, 0, 1, v, v, 0, -1, 2, -1, 1, 1e-300, 3, 0, 0, v};
            BC_CURVE cm = {mixed, knots, 4, 4, 1};
            (void)bc_xyz_box(&cm, nullptr, box);
        }
    });
}

// Polynomial roots (Newton refinement is capped) and the angular ranges
// (reductions by fmod) on hostile coefficients and angles; a NaN or infinite
// coefficient is "not solved" (kind 5).
TEST_F(Termination, RootsAndAnglesEndOnAnyValue)
{
    std::vector<Case> cases = {
        {"h016_: hostile coefficients",
         [] {
             for (double v : kHostile)
                 for (int n = 0; n <= 4; ++n)
                     for (int at = 0; at <= n; ++at) {
                         double c[5] = {1, -3, 2, 5, 1};
                         c[at] = v;
                         double re[4], im[4];
                         int kind = 0, degree = 0, nreal = 0;
                         h016_(&n, c, re, im, &kind, &degree, &nreal);
                         if (!std::isfinite(v)) {
                             EXPECT_EQ(kind, 5);
                         }
                     }
         }},
        {"h009_/h010_/h012_: hostile angles",
         [] {
             for (double v : kHostile)
                 for (int at = 0; at < 4; ++at) {
                     double r[4] = {0.5, 2.0, 1.0, 4.0};
                     r[at] = v;
                     double out[4];
                     int code = 0;
                     h009_(r, r + 2, out, &code);
                     h010_(r, r + 2, out, &code);
                     h012_(r, r + 2, out, &code);
                     double x = v;
                     const double period = 2.0;
                     h002_(&x, &period);
                 }
         }},
        {"ludcmp_a/SOLVE_lu_solver: hostile matrices (recursive factoring)",
         [] {
             for (double v : kHostile) {
                 const int n = 40;
                 std::vector<double> a(size_t(n * n), 0.0), b(size_t(n), 1.0);
                 for (int i = 0; i < n; ++i) a[size_t(i * n + i)] = 4.0;
                 a[size_t(n + 3)] = v;
                 auto ar = rows(a, n);
                 std::vector<int> indx(static_cast<size_t>(n));
                 double d = 0;
                 (void)ludcmp_a(ar.data(), n, indx.data(), &d);
             }
             qxsys_clear_reports();
         }},
    };
    for (const Case &c : cases) guarded(c.name, c.run);
}

// The NaN policy the headers state, where a natural rewrite would change it:
// a null test written "succeeds when s > tol^2" instead of "fails when
// tol^2 >= s", a shortest-vector search started from an infinite best, a
// degeneracy test flipped from "< limit" to "!(>= limit)", and so on.
TEST_F(Termination, NaNPolicyAsDocumented)
{
    const double n3[3] = {kNaN, 0.0, 0.0};
    const double x3[3] = {1.0, 0.0, 0.0}, y3[3] = {0.0, 1.0, 0.0}, z3[3] = {0.0, 0.0, 1.0};
    std::vector<Case> cases = {
        {"vector.h: NaN passes the null tests",
         [&] {
             double w[3] = {7, 7, 7}, len = 7;
             EXPECT_EQ(VEC3_unitize(n3, 1e-10, &len, w), 1);
             EXPECT_TRUE(std::isnan(len) && std::isnan(w[0]) && std::isnan(w[1]));
             EXPECT_EQ(VEC2_unitize(n3, 1e-10, &len, w), 1);
             EXPECT_EQ(VEC3_is_parallel(n3, x3, 1e-10), 0);
             EXPECT_EQ(VEC3_is_perpendicular(n3, y3, 1e-10), 0);
             const double first_nan[6] = {kNaN, 0, 1, 1, 0.5, 0},
                          later_nan[6] = {3, 3, kNaN, 0, 1, 0};
             EXPECT_EQ(VEC2_ask_shortest_vector(3, first_nan), 0);
             EXPECT_EQ(VEC2_ask_shortest_vector(3, later_nan), 2);
             double a[3] = {kNaN, 0, 0}, m[12] = {kNaN, 0, 0, 1, 0, 1, 0, 1, 0, 0, 1, 1}, x[3];
             qxsys_clear_reports();
             MC_v_unit(a);
             MC_solve_3(m, x);
             EXPECT_EQ(qxsys_report_count(), 0);
             EXPECT_TRUE(std::isnan(a[0]) && std::isnan(x[0]));
         }},
        {"orientation.h/transform.h: builders on NaN",
         [&] {
             double m[9];
             std::fill(m, m + 9, 7.0);
             EXPECT_EQ(MTX3_init(n3, y3, m), 1);
             EXPECT_TRUE(std::isnan(m[0]) && std::isnan(m[8]));
             std::fill(m, m + 9, 7.0);
             EXPECT_EQ(MTX3_init_y_z(n3, z3, m), 0);
             EXPECT_EQ(MTX3_init_x_y_z(n3, y3, z3, m), 0);
             EXPECT_EQ(m[0], 7.0);
             double y_nan[9] = {1, 0, 0, 0, kNaN, 0, 0, 0, 1};
             EXPECT_EQ(MTX3_ortho_normalize(y_nan), 1);
             EXPECT_EQ(MTX3_is_identity(y_nan, 0.0), 1);
             double t[16] = {1, 0, 0, 0, 0, kNaN, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}, r[16];
             std::fill(r, r + 16, 7.0);
             EXPECT_EQ(MTX4_invert(t, r), 1); // a row of zeros and NaN is a zero row
             EXPECT_EQ(r[0], 7.0);
             EXPECT_EQ(MTX4_rotation(x3, n3, 30.0, r), 0);
             EXPECT_TRUE(std::isnan(r[0]));
         }},
        {"matrix.h/solvers.h: pivots and determinants",
         [] {
             double r0[2] = {0.0, kNaN}, r1[2] = {1.0, 2.0}, *a[2] = {r0, r1}, d = 0;
             int indx[2] = {-1, -1};
             EXPECT_EQ(ludcmp_a(a, 2, indx, &d), 1);
             EXPECT_EQ(indx[0], -1);
             double c[4] = {1, 0, 0, kNaN}, p[2];
             int status = -1;
             NR_cholesky_decomp(2, c, p, &status);
             EXPECT_EQ(status, 1);
             const double m[9] = {kNaN, 0, 0, 0, 1, 0, 0, 0, 1}, b[3] = {1, 1, 1};
             double x[3] = {7, 7, 7};
             EXPECT_EQ(SOLVE_solve_3equations(m, b, x), 1);
             EXPECT_EQ(x[0], 7.0);
             double **band = nullptr, *rhs = nullptr;
             merrorflush();
             msetup_banded(2, 1, &band, &rhs);
             band[0][0] = kNaN;
             band[0][1] = band[1][0] = 1.0;
             band[1][1] = 2.0;
             mdecompose_banded(band, 2, 1);
             EXPECT_EQ(merrornum(), QX_MERR_SMALL_PIVOT);
             merrorflush();
             mdispose_banded(&band, &rhs);
         }},
        {"frame.h/pole.h/facet.h: comparisons",
         [&] {
             const double inf = kInf, one = 1.0;
             const int number = 0;
             EXPECT_EQ(eqz_(&inf, &inf, &number), 0);
             EXPECT_EQ(eqz_(&one, &one, &number), 1);
             // Pole 0 equals pole 2 (m); the NaN middle pole makes the average NaN.
             const double poles[12] = {1, 2, 3, 1, 0, 0, 0, 0, 1, 2, 3, 1};
             EXPECT_EQ(bc_POLE_identical_poles_in_3d(poles, 3), 1);
             const double p[4] = {1, 2, 3, 1}, q[4] = {1, 2, 3, kNaN};
             EXPECT_EQ(bc_POLE_equal_in_4d(p, q), 0);
             double pp[3] = {7, 7, 7}, dir[3];
             EXPECT_EQ(FACET_plane_plane_int(n3, 1.0, y3, 1.0, pp, dir), 0);
             EXPECT_EQ(pp[0], 7.0);
             EXPECT_EQ(PNT3_is_colinear(x3, n3, y3, 1e-6), 0);
         }},
        {"eigen.h/lsfit.h: NaN diagonal, NaN points",
         [] {
             // A NaN diagonal element without couplings is never rotated.
             double a[9] = {kNaN, 0, 0, 0, 2, 1, 0, 1, 3}, v[9], d[3];
             double *ar[3] = {a, a + 3, a + 6}, *vr[3] = {v, v + 3, v + 6};
             int nrot = -1;
             qxsys_clear_reports();
             NR_ask_eigenvalues_jacobi(ar, 3, 60, d, vr, &nrot);
             EXPECT_EQ(qxsys_report_count(), 0);
             EXPECT_TRUE(std::isnan(d[0]) && std::isfinite(d[1]) && std::isfinite(d[2]));
             EXPECT_EQ(nrot, 1);
             double pts[12] = {0, 0, 1, 0.5, 0, 1, 1, 1, 2, 1, 3, 0};
             pts[3] = kNaN; // a y
             double c[2], r = 7, dev[3], nrm[2];
             int deg = -1;
             LSFIT_circle_to_points_2d(pts, 6, c, &r, &deg, dev);
             EXPECT_EQ(deg, 1);
             EXPECT_TRUE(r == 0.0 && c[0] == 0.0 && dev[0] == 0.0);
             LSFIT_line_to_points_2d(pts, 6, c, nrm, &deg, dev);
             EXPECT_EQ(deg, 0);
             EXPECT_TRUE(nrm[0] == 1.0 && nrm[1] == 0.0 && std::isnan(dev[2]));
         }},
        {"dgeom.h: which way each degeneracy test goes",
         [&] {
             double k[3], f[11];
             EXPECT_TRUE(std::isnan(DGEOM_crv_curvature(n3, y3, k)));
             DGEOM_crv_diff_property(n3, y3, z3, 1, f);
             for (double e : f) EXPECT_EQ(e, 0.0);
             double kn = 7;
             DGEOM_srf_normal_curvature(n3, y3, z3, z3, z3, z3, x3, &kn);
             EXPECT_EQ(kn, 0.0);
             double cv[7];
             EXPECT_EQ(DGEOM_srf_curvatures(n3, y3, z3, z3, z3, 1, cv), 0);
             EXPECT_TRUE(std::isnan(cv[0]));
         }},
        {"numbered.h: tolerance tests on NaN",
         [&] {
             const double nan = kNaN, one = 1.0, t = 1.0;
             const int i0 = 0, dir_code = 2;
             int eq = -1, code = -1, st = -1, ok = -1;
             h805_(&nan, &nan, &i0, &eq);
             EXPECT_EQ(eq, 0);
             h307_(n3, n3, &t, &eq);
             EXPECT_EQ(eq, 0);
             h303_(n3, x3, y3, &code);
             EXPECT_EQ(code, 1);
             double x = kNaN;
             const double lim[2] = {0.0, 1.0};
             h804_(&x, lim, &i0, &code);
             EXPECT_EQ(code, 5);
             const double c[3] = {1, kNaN, 1};
             double re[2], im[2];
             int kind = -1, degree = -1, nreal = -1;
             h014_(c, re, im, &kind, &degree, &nreal);
             EXPECT_TRUE(kind == 3 && degree == 2 && std::isnan(re[0]));
             double out[3];
             h813_(n3, &one, &dir_code, out, &st);
             EXPECT_EQ(st, 2);
             double nrm[3] = {0, 0, 1};
             h1600_(x3, n3, nrm, &ok);
             EXPECT_EQ(ok, 1);
             EXPECT_EQ(nrm[2], 1.0);
             double m[9];
             h960_(x3, n3, y3, m, &ok);
             EXPECT_EQ(ok, 1);
             x = 5.0;
             const double start = 0.0, period = kNaN;
             int found = -1;
             h0062_(&x, &start, &period, &found);
             EXPECT_EQ(found, 0);
             EXPECT_EQ(x, 5.0);
         }},
        {"spline.h/bcdf.h: NaN parameters",
         [] {
             QX_interp_desc desc = {5, 4, 0, 3, 0, 0, 0};
             const double params[5] = {0, 0.25, kNaN, 0.75, 1};
             const double pts[15] = {0, 0, 0, 1, 0, 0, 1, 1, 0, 0, 1, 0, 0, 2, 1};
             const double knots[9] = {0, 0, 0, 0, 0.5, 1, 1, 1, 1};
             double kn[16], poles[15];
             int nk = 0;
             EXPECT_EQ(h0914_(&desc, params, nullptr, &nk, kn), -1);
             EXPECT_EQ(h0913b(&desc, pts, params, nullptr, nullptr, nullptr, knots, poles), 1);
             double *arr = static_cast<double *>(SM_alloc(sizeof pts));
             std::memcpy(arr, pts, sizeof pts);
             BCDF *df = BCDF_create_df_from_pts(arr, 5, 3, 0);
             int index = -1;
             EXPECT_EQ(BCDF_parameter_in_list(df, kNaN, &index), 0);
             EXPECT_EQ(index, 5);
             double t[5];
             double coincident[15] = {};
             coincident[4] = kNaN;
             BCDF_CALC_parameters(5, 3, coincident, 1.0, t);
             EXPECT_EQ(t[4], 16.0); // redone uniformly, step n - 1
             BCDF_free_structure(df);
         }},
    };
    for (const Case &c : cases) guarded(c.name, c.run);
}

} // namespace
