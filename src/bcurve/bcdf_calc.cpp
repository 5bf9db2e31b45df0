// bcdf_calc.cpp — computed data of a defining-data record: the parameters of
// its points (chord length and its powers, with a uniform fallback when the
// points coincide), the least-squares weights derived from them, the
// automatic derivatives at a defining point, and the slopes and parameters
// of a record seen in its normalised parameter range.
//
// The parameter sum runs forward from t[0] = 0 with the distances of
// bcurve_internal.h, so that every caller gets the same bits.
//
// Automatic derivatives differentiate a quadratic fitted per coordinate
// (Cramer's rule, SOLVE_solve_3equations) through three conditions: three
// neighbouring points, or two points and the slope of one of them. At an
// end whose neighbour carries a mirrored slope (types 2, 4, 5) the slope is
// reflected in the chord instead, and the second derivative is built in the
// plane of chord and slope. Open records of two points use the chord.
#define QX_SOURCE_FILE "bcdf_calc"
#include "frame/check.h"

#include <cmath>

#include <qxmath/bcdf.h>
#include <qxmath/dgeom.h>
#include <qxmath/frame.h>
#include <qxmath/numbered.h>
#include <qxmath/solvers.h>

#include "bcurve/bcurve_internal.h"
#include "linalg/vec_internal.h"

namespace
{

using qx::vec::cross3;
using qx::vec::dot3;

// Below this |chord x mirrored slope| the two are taken as parallel.
constexpr double kParallel = 1.0e-10;
// A slope whose squared length is at most this is zero (as for the
// record's own unitising).
constexpr double kNullSquared = 1.0e-20;

// The 3-D defining point i (a weighted point divided by its weight); zeros
// where the record cannot give one.
void point3(const BCDF *df, int i, double *p)
{
    p[0] = p[1] = p[2] = 0.0;
    BCDF_copy_single_3d_point(df, i, p);
}

// Three 3-D points into pts[9], in the order given.
void points3(const BCDF *df, int a, int b, int c, double *pts)
{
    point3(df, a, pts);
    point3(df, b, pts + 3);
    point3(df, c, pts + 6);
}

// The quadratic's derivatives (first, and second when k is 2) at `at` into
// out[3k], its position dropped; the solver's status.
int quadratic_derivatives(const double *pts, const double *params, const double *slope, int mode,
                          double at, int k, double *out)
{
    double q[9];
    const int status = BCDF_CALC_quadratic_apprx(pts, params, slope, mode, at, k, q);
    if (status != 0) return status;
    for (int i = 0; i < 3 * k; ++i) out[i] = q[3 + i];
    return 0;
}

// Open record of two points, either end: the chord quotient, the difference
// multiplied by the reciprocal of the span (not guarded).
int two_point_rule(const BCDF *df, const double *t, double *out)
{
    double p0[3], p1[3];
    point3(df, 0, p0);
    point3(df, 1, p1);
    const double r = 1.0 / (t[1] - t[0]);
    for (int j = 0; j < 3; ++j) out[j] = (p1[j] - p0[j]) * r;
    return 0;
}

// The neighbour's slope m mirrored about the chord c = neighbour - end;
// second derivative m x unit(c x m), in the plane of both and as long as m,
// left at zero when |c x m| < 1.0e-10.
void mirrored_rule(const double *slope, const double *end, const double *next, int k, double *out)
{
    double m[3], c[3], n[3];
    BCDF_CALC_mirror_slope(slope, end, next, m);
    for (int j = 0; j < 3; ++j) out[j] = m[j];
    if (k < 2) return;
    for (int j = 0; j < 3; ++j) c[j] = next[j] - end[j];
    cross3(c, m, n);
    const double ln = std::sqrt(dot3(n, n));
    if (ln < kParallel) return;
    for (int j = 0; j < 3; ++j) n[j] = n[j] / ln;
    cross3(m, n, out + 3);
}

// The start rule (at_end false) and its mirror image at the last point: end
// point e, its neighbour, and the point beyond. Every quadratic is set up
// with its conditions in increasing parameter order: at the start (P0 t0,
// P1 t1, slope t1) in mode 1, at the end (P[n-2] t[n-2], slope t[n-2],
// P[n-1] t[n-1]) in mode 2; without a slope the three points in order.
int end_rule(const BCDF *df, int n, const double *t, bool at_end, int k, double *out)
{
    if (n == 2) return two_point_rule(df, t, out);
    const int e = at_end ? n - 1 : 0;
    const int next = at_end ? n - 2 : 1;
    double pts[9] = {};
    int index = 0;
    if (BCDF_slope_at_point(df, next, &index) == 1) {
        double slope[3] = {0.0, 0.0, 0.0};
        int type = 0;
        BCDF_copy_single_3d_slope(df, index, slope, &type);
        // The two positions in parameter order; the slope's slot stays 0.
        const int lo = at_end ? next : e, hi = at_end ? e : next;
        double *plo = pts, *phi = at_end ? pts + 6 : pts + 3;
        point3(df, lo, plo);
        point3(df, hi, phi);
        if (type == 2 || type == 4 || type == 5) {
            mirrored_rule(slope, at_end ? phi : plo, at_end ? plo : phi, k, out);
            return 0;
        }
        const double params[3] = {t[lo], t[next], t[hi]};
        return quadratic_derivatives(pts, params, slope, at_end ? 2 : 1, t[e], k, out);
    }
    const int first = at_end ? n - 3 : 0;
    points3(df, first, first + 1, first + 2, pts);
    return quadratic_derivatives(pts, t + first, nullptr, 0, t[e], k, out);
}

void clear(double *v, int n)
{
    for (int i = 0; i < n; ++i) v[i] = 0.0;
}

} // namespace

extern "C" {

void BCDF_CALC_parameters(int n, int dimension, const double *points, double exponent,
                          double *params)
{
    if (n < 1) return;
    params[0] = 0.0;
    for (int i = 1; i < n; ++i) {
        const double *a = points + static_cast<std::ptrdiff_t>(i - 1) * dimension;
        const double *b = a + dimension;
        params[i] = params[i - 1] + std::pow(qx_point_distance(a, b, dimension), exponent);
    }
    // All points coincide (or the sum is not a number): a uniform spacing of
    // n - 1, not 1/(n - 1), on purpose.
    if (!(std::fabs(params[n - 1]) > qx_param_match)) {
        const double step = static_cast<double>(n - 1);
        params[0] = 0.0;
        for (int i = 1; i < n; ++i) params[i] = params[i - 1] + step;
    }
}

void BCDF_CALC_weights(int n, const double *params, double *weights)
{
    if (n < 1) return;
    if (n == 1) {
        weights[0] = 0.0;
        return;
    }
    for (int i = 1; i < n - 1; ++i) weights[i] = (params[i + 1] - params[i - 1]) * 0.5;
    weights[0] = (params[1] - params[0]) * 0.5;
    weights[n - 1] = (params[n - 1] - params[n - 2]) * 0.5;
}

double BCDF_CALC_single_weight(int n, const double *params, int i)
{
    QX_CHECK(n >= 2, "Not Enough Parameters");
    if (n < 2 || i < 0 || i > n - 1) return 0.0;
    if (i == 0) return (params[1] - params[0]) * 0.5;
    if (i == n - 1) return (params[n - 1] - params[n - 2]) * 0.5;
    return (params[i + 1] - params[i - 1]) * 0.5;
}

// ---- Automatic derivatives ------------------------------------------------

int BCDF_CALC_quadratic_apprx(const double points[9], const double params[3], const double slope[3],
                              int mode, double t, int num_derivs, double *out)
{
    // Rows (t^2, t, 1) for a position, (2t, 1, 0) for a slope condition.
    const int slope_row = mode == 1 ? 2 : mode == 2 ? 1 : -1;
    double m[9];
    for (int r = 0; r < 3; ++r) {
        const double tr = params[r];
        const bool is_slope = r == slope_row;
        m[3 * r] = is_slope ? 2.0 * tr : tr * tr;
        m[3 * r + 1] = is_slope ? 1.0 : tr;
        m[3 * r + 2] = is_slope ? 0.0 : 1.0;
    }
    double abc[9];
    for (int j = 0; j < 3; ++j) {
        double b[3];
        for (int r = 0; r < 3; ++r) {
            b[r] = r == slope_row ? slope[j] : points[3 * r + j];
        }
        const int status = SOLVE_solve_3equations(m, b, abc + 3 * j);
        if (status != 0) return status;
    }
    for (int j = 0; j < 3; ++j) {
        const double a = abc[3 * j], b = abc[3 * j + 1], c = abc[3 * j + 2];
        out[j] = (a * t + b) * t + c;
        if (num_derivs >= 1) out[3 + j] = 2.0 * a * t + b;
        if (num_derivs >= 2) out[6 + j] = 2.0 * a;
    }
    return 0;
}

void BCDF_CALC_mirror_slope(const double slope[3], const double a[3], const double b[3],
                            double mirrored[3])
{
    double u[3], p[3];
    for (int j = 0; j < 3; ++j) u[j] = b[j] - a[j];
    const double len = std::sqrt(dot3(u, u));
    for (int j = 0; j < 3; ++j) u[j] = u[j] / len;
    const double su = dot3(slope, u);
    for (int j = 0; j < 3; ++j) p[j] = su * u[j];
    for (int j = 0; j < 3; ++j) p[j] = p[j] - (slope[j] - p[j]);
    for (int j = 0; j < 3; ++j) mirrored[j] = p[j];
}

int BCDF_CALC_auto_derivatives(const BCDF *df, int position, int num_derivs, double *out)
{
    const int n = df != nullptr ? qx_list_count(df->points) : 0;
    const bool inside = position >= 0 && position < n;
    QX_CHECK_RAISE(inside, QX_ERR_INVALID_POSITION,
                   "An Invalid Point Position Was Given By Calling Routine");
    if (num_derivs < 1) return 0;
    const int k = num_derivs > 2 ? 2 : num_derivs;
    clear(out, 3 * k);
    if (!inside || n < 2 || qx_list_count(df->params) < n) return 0;
    const double *t = df->params->points;
    double pts[9];
    if (position == 0 && df->periodicity == 1) {
        // The closing copy's predecessor stands one span before t[0]; the
        // parameter is t[n-2] - t[n-1] as it is, not shifted by t[0].
        points3(df, n - 2, 0, 1, pts);
        const double params[3] = {t[n - 2] - t[n - 1], t[0], t[1]};
        return quadratic_derivatives(pts, params, nullptr, 0, t[0], k, out);
    }
    if (position == 0) return end_rule(df, n, t, false, k, out);
    if (position == n - 1) return end_rule(df, n, t, true, k, out);
    points3(df, position - 1, position, position + 1, pts);
    return quadratic_derivatives(pts, t + position - 1, nullptr, 0, t[position], k, out);
}

int BCDF_CALC_auto_slope(const BCDF *df, int position, double slope[3])
{
    return BCDF_CALC_auto_derivatives(df, position, 1, slope);
}

int BCDF_CALC_auto_curvature(const BCDF *df, int position, double crvatr[3])
{
    double d[6];
    const int status = BCDF_CALC_auto_derivatives(df, position, 2, d);
    int index = 0;
    if (BCDF_slope_at_point(df, position, &index) == 1) {
        int type = 0;
        BCDF_copy_single_3d_slope(df, index, d, &type);
    }
    DGEOM_crv_curvature(d, d + 3, crvatr);
    return status;
}

// ---- Slopes and parameters in the normalised range ------------------------

int BCDF_CALC_normalized_slope(const BCDF *df, int position, double slope[3])
{
    const int n = df != nullptr ? qx_list_count(df->points) : 0;
    const bool inside = position >= 0 && position < n && qx_list_count(df->params) >= n;
    QX_CHECK_RAISE(inside, QX_ERR_INVALID_POSITION,
                   "The Point Position Is Not Valid For The Array Of Points");
    clear(slope, 3);
    if (!inside) return 1;
    double s[3] = {0.0, 0.0, 0.0};
    int type = 0, index = 0;
    if (BCDF_slope_at_point(df, position, &index) == 1) {
        BCDF_copy_single_3d_slope(df, index, s, &type);
    } else if (BCDF_CALC_auto_slope(df, position, s) != 0) {
        return 1;
    }
    // Slope types 0 .. 5 to the codes of h813_; the types the library does
    // not know are derivatives.
    static const int kCode[6] = {1, 2, 3, 4, 5, 5};
    const int code = type >= 0 && type <= 5 ? kCode[type] : 1;
    const double scale = df->params->points[n - 1];
    double out[3];
    int status = 0;
    h813_(s, &scale, &code, out, &status);
    if (status != 1) return 1;
    for (int j = 0; j < 3; ++j) slope[j] = out[j];
    return 0;
}

double BCDF_CALC_unitize_slope(const double slope[3], double unit[3])
{
    const double x = slope[0], y = slope[1], z = slope[2];
    const double s = x * x + y * y + z * z;
    const bool nonzero = s > kNullSquared;
    QX_CHECK_RAISE(nonzero, QX_ERR_ZERO_LENGTH_SLOPE, "The Input Slope Has Zero Length");
    if (!nonzero) {
        clear(unit, 3);
        return 0.0;
    }
    const double len = std::sqrt(s);
    unit[0] = x / len;
    unit[1] = y / len;
    unit[2] = z / len;
    return len;
}

double BCDF_CALC_denormalize_param(double param, double scale) { return param * scale; }

} // extern "C"
