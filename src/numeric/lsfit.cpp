// lsfit.cpp — least-squares fits: a line to 2-D points and a plane to 3-D
// points (total least squares: the smallest eigenpair of the centred scatter
// matrix by Jacobi), circles in 2-D and 3-D and spheres (algebraic fits with
// Pratt's normalisation, a generalised symmetric eigenproblem).
//
// The line and plane fits share one body over the dimension; their quirks
// are kept: the line's point is (cx, cx), the plane returns silently when
// its fall-back finds coincident points. The fall-back constructions run only
// when no eigenvalue is non-negative, which in practice means NaN input. The
// circle and sphere fits scale their moments so that the absolute Cholesky
// pivot threshold of the generalised solver separates noisy data (Pratt)
// from data on an exact circle or sphere (unit-norm algebraic fit, whose
// null vector is then exact); formulation in lsfit.h.
#define QX_SOURCE_FILE "lsfit"
#include "frame/check.h"

#include <cfloat>
#include <cmath>
#include <cstddef>

#include <qxmath/eigen.h>
#include <qxmath/lsfit.h>
#include <qxmath/matrix.h>
#include <qxmath/orientation.h>

#include "linalg/vec_internal.h"
#include "numeric/count.h"
#include "numeric/lsfit_internal.h"

namespace
{

using std::size_t;

constexpr int kSweepLimit = 60;
constexpr double kZeroEigen = 1.0e-10; // cleaned to 0.0, and the "bound moved" margin
constexpr double kNoEigen = 1.0e19;    // the starting bound of the eigenvalue choice
constexpr double kUnitTol = 1.0e-10;
constexpr double kFallbackDist = 0.001;
constexpr double kMinPositive = 1.0e-19; // Pratt's eigenvalue must exceed this
constexpr double kFlatRatio = 1.0e-10;   // collinear / coplanar, relative to the spread

using qx::numeric::count;

void report_no_points() { QX_INTERNAL("There are no input points."); }

template <size_t D> void zero(double *v)
{
    for (size_t k = 0; k < D; ++k) v[k] = 0.0;
}

template <size_t D> double dot(const double *a, const double *b)
{
    if constexpr (D == 2)
        return qx::vec::dot2(a, b);
    else
        return qx::vec::dot3(a, b);
}

template <size_t D> int unitize(const double *v, double *w)
{
    double length;
    if constexpr (D == 2)
        return qx_vec2_unitize(v, kUnitTol, &length, w);
    else
        return qx_vec3_unitize(v, kUnitTol, &length, w);
}

// Mean of each coordinate (sum divided by n; 0/0 for n = 0).
template <size_t D> void centroid(const double *pts, size_t n, double *c)
{
    double sum[D] = {};
    for (size_t i = 0; i < n; ++i)
        for (size_t k = 0; k < D; ++k) sum[k] += pts[i * D + k];
    for (size_t k = 0; k < D; ++k) c[k] = sum[k] / static_cast<double>(n);
}

// Index of the centred point of largest squared length (the first of equal
// ones) and that length; index 0 and its length when every one is NaN.
template <size_t D> size_t farthest(const double *c, size_t n, double *len2)
{
    size_t best = 0;
    double b = dot<D>(c, c);
    for (size_t i = 1; i < n; ++i) {
        const double l = dot<D>(c + i * D, c + i * D);
        if (l > b) {
            b = l;
            best = i;
        }
    }
    *len2 = b;
    return best;
}

// The eigenvalue choice of the line and plane fits (and of the unit-norm
// algebraic fit): each of the m eigenvalues of magnitude at most kZeroEigen
// is set to 0.0, then the smallest non-negative one is taken from the bound
// kNoEigen, only a strictly smaller value replacing it. *lambda is the
// chosen value (the bound when none); the result its index, or m when the
// bound has not moved by more than kZeroEigen.
size_t choose_smallest(double *eig, size_t m, double *lambda)
{
    *lambda = kNoEigen;
    size_t chosen = 0;
    for (size_t j = 0; j < m; ++j) {
        if (std::fabs(eig[j]) <= kZeroEigen) eig[j] = 0.0;
        if (eig[j] >= 0.0 && eig[j] < *lambda) {
            *lambda = eig[j];
            chosen = j;
        }
    }
    return kNoEigen - *lambda > kZeroEigen ? chosen : m;
}

// The scratch of a line or plane fit: scatter and eigenvector matrices and
// the centred copy. NULL members are allowed (a failed allocation).
struct FlatScratch {
    double *s_block, **s, *v_block, **v, *copy;
};

void free_scratch(FlatScratch &w)
{
    SM_free(w.copy);
    SM_free(w.s);
    SM_free(w.s_block);
    SM_free(w.v);
    SM_free(w.v_block);
}

// The line (D = 2) and plane (D = 3) fits. With rounding_zero (the circle
// and sphere fits' own flatness test, not the exported fits) a negative
// eigenvalue within Jacobi's rounding, 8 D eps of the scatter matrix's
// trace, is taken as 0.0 as well: the scatter matrix has none, and points
// exactly on a line or plane hundreds of units long would otherwise have
// their zero eigenvalue skipped and a normal along the line (in the plane).
template <size_t D>
void fit_flat(const double *pts, int n, double *point, double *normal, int *degenerate, double *dev,
              bool rounding_zero = false)
{
    constexpr int kD = static_cast<int>(D);
    zero<D>(point);
    zero<D>(normal);
    *degenerate = 0;
    const size_t np = count(n);

    FlatScratch w{nullptr, nullptr, nullptr, nullptr, nullptr};
    w.s = NR_2d_matrix_allo(kD, kD, &w.s_block);
    if (w.s != nullptr) w.v = NR_2d_matrix_allo(kD, kD, &w.v_block);
    if (w.v != nullptr) w.copy = static_cast<double *>(SM_alloc(np * D * sizeof(double)));
    if (w.v == nullptr || (w.copy == nullptr && np > 0)) {
        free_scratch(w);
        *degenerate = 1;
        return;
    }

    double cen[D];
    centroid<D>(pts, np, cen);
    for (size_t i = 0; i < np; ++i)
        for (size_t k = 0; k < D; ++k) w.copy[i * D + k] = pts[i * D + k] - cen[k];

    NR_2d_matrix_init_zero(w.s, kD, kD);
    for (size_t i = 0; i < np; ++i) {
        const double *p = w.copy + i * D;
        for (size_t j = 0; j < D; ++j)
            for (size_t k = j; k < D; ++k) w.s[j][k] += p[j] * p[k];
    }
    for (size_t j = 1; j < D; ++j)
        for (size_t k = 0; k < j; ++k) w.s[j][k] = w.s[k][j];

    double eig[D];
    int nrot = 0;
    double trace = 0.0; // read before Jacobi overwrites the diagonal
    if (rounding_zero)
        for (size_t k = 0; k < D; ++k) trace += w.s[k][k];
    NR_ask_eigenvalues_jacobi(w.s, kD, kSweepLimit, eig, w.v, &nrot);
    if (rounding_zero)
        for (double &e : eig)
            if (e < 0.0 && -e <= 8.0 * kD * DBL_EPSILON * trace) e = 0.0;

    double lambda;
    const size_t chosen = choose_smallest(eig, D, &lambda);
    if (chosen < D) {
        double col[D];
        for (size_t k = 0; k < D; ++k) col[k] = w.v[k][chosen];
        unitize<D>(col, normal);
    } else if (np == 0) {
        // Everything is freed before the report, which need not return.
        free_scratch(w);
        report_no_points();
        if constexpr (D == 2) *degenerate = 1; // the plane's coincident case is silent
        return;
    } else {
        const qx::lsfit::Fallback f =
            D == 2 ? qx::lsfit::line_fallback(w.copy, n, normal, degenerate)
                   : qx::lsfit::plane_fallback(w.copy, n, normal, degenerate);
        if (f != qx::lsfit::kNormalMade) {
            free_scratch(w);
            return;
        }
    }

    if constexpr (D == 2) {
        point[0] = cen[0];
        point[1] = cen[0]; // (cx, cx), kept as callers know it
    } else {
        for (size_t k = 0; k < D; ++k) point[k] = cen[k];
    }

    const double c = -dot<D>(normal, point);
    double worst = 0.0, sum = 0.0;
    for (size_t i = 0; i < np; ++i) {
        const double dist = std::fabs(dot<D>(normal, pts + i * D) + c);
        if (dist > worst) worst = dist;
        sum += dist;
    }
    dev[0] = worst;
    dev[1] = std::sqrt(lambda / static_cast<double>(np));
    dev[2] = sum / static_cast<double>(np);
    free_scratch(w);
}

// ---- circles and spheres ------------------------------------------------

// Largest distance of the points from the centroid cen, their root-mean-
// square distance, and (with a unit normal) their largest distance from the
// line or plane through cen with that normal.
struct Spread {
    double max_dist, rms, max_off;
};

template <size_t D>
Spread spread(const double *pts, size_t n, const double *cen, const double *unit_normal)
{
    Spread r{0.0, 0.0, 0.0};
    double sum2 = 0.0;
    for (size_t i = 0; i < n; ++i) {
        double q[D];
        for (size_t k = 0; k < D; ++k) q[k] = pts[i * D + k] - cen[k];
        const double l2 = dot<D>(q, q);
        sum2 += l2;
        const double l = std::sqrt(l2);
        if (!(l <= r.max_dist)) r.max_dist = l; // NaN propagates
        const double off = std::fabs(dot<D>(q, unit_normal));
        if (!(off <= r.max_off)) r.max_off = off;
    }
    r.rms = std::sqrt(sum2 / static_cast<double>(n));
    return r;
}

// Flat (collinear or coplanar) within kFlatRatio of the spread; NaN counts,
// and so does a null normal.
bool is_flat(const Spread &s)
{
    return !(s.max_off > kFlatRatio * s.max_dist) || !(s.rms > 0.0) || !std::isfinite(s.rms);
}

// The algebraic fit of a circle (D = 2) or sphere (D = 3) to n >= 1 points
// about their centroid cen, scaled by scale > 0. Writes centre and radius
// and returns 1; returns 0 when there is no such circle or sphere.
template <size_t D>
int algebraic_fit(const double *pts, size_t n, const double *cen, double scale, double *centre,
                  double *radius)
{
    constexpr size_t m = D + 2;
    constexpr size_t mm = m * m;
    // Moments (kept), second matrix (destroyed by the solver), Pratt's matrix,
    // eigenvectors, eigenvalues: small enough for the stack, so nothing of
    // this fit is left behind if a report in the solver unwinds.
    double mom[mm], second[mm], pratt[mm], vec[mm], eig[m];

    NR_matrix_2d_as_1d_init_zero(mom, static_cast<int>(m), static_cast<int>(m));
    const double inv_scale = 1.0 / scale;
    for (size_t i = 0; i < n; ++i) {
        double z[m];
        double w = 0.0;
        for (size_t k = 0; k < D; ++k) {
            const double u = (pts[i * D + k] - cen[k]) * inv_scale;
            z[k + 1] = u;
            w += u * u;
        }
        z[0] = w;
        z[m - 1] = 1.0;
        for (size_t j = 0; j < m; ++j)
            for (size_t k = j; k < m; ++k) mom[j * m + k] += z[j] * z[k];
    }
    const double inv_n = 1.0 / static_cast<double>(n);
    for (size_t j = 0; j < m; ++j)
        for (size_t k = j; k < m; ++k) {
            mom[j * m + k] *= inv_n;
            mom[k * m + j] = mom[j * m + k];
        }

    // Pratt: |B|^2 - 4AD = a^T P a.
    NR_matrix_2d_as_1d_identity(pratt, static_cast<int>(m));
    pratt[0] = 0.0;
    pratt[mm - 1] = 0.0;
    pratt[m - 1] = -2.0;
    pratt[(m - 1) * m] = -2.0;

    for (size_t k = 0; k < mm; ++k) second[k] = mom[k];
    int nrot = 0, status = 0;
    NR_generalized_eigenvalues_symm(pratt, second, static_cast<int>(m), kSweepLimit, eig, vec,
                                    &nrot, &status);
    size_t chosen = m;
    if (status == 0) {
        // P a = mu M a: Pratt's fit has the largest mu, which must be positive.
        double best = kMinPositive;
        for (size_t j = 0; j < m; ++j)
            if (eig[j] > best) {
                best = eig[j];
                chosen = j;
            }
    } else if (status == 1) {
        // M is singular to the pivot threshold: the points lie on a circle
        // or sphere (or nearly). Its null vector by M a = lambda a.
        NR_matrix_2d_as_1d_identity(second, static_cast<int>(m));
        NR_generalized_eigenvalues_symm(mom, second, static_cast<int>(m), kSweepLimit, eig, vec,
                                        &nrot, &status);
        double lambda;
        chosen = choose_smallest(eig, m, &lambda);
        if (status != 0) chosen = m;
    }
    int ok = 0;
    if (chosen < m) {
        double a[m];
        for (size_t k = 0; k < m; ++k) a[k] = vec[k * m + chosen];
        const double A = a[0], D0 = a[m - 1];
        double b2 = 0.0;
        for (size_t k = 1; k <= D; ++k) b2 += a[k] * a[k];
        const double q = b2 - 4.0 * A * D0;
        if (A != 0.0 && q > 0.0) {
            const double r = scale * std::sqrt(q) / (2.0 * std::fabs(A));
            double c[D];
            bool finite = std::isfinite(r);
            for (size_t k = 0; k < D; ++k) {
                c[k] = cen[k] - scale * a[k + 1] / (2.0 * A);
                finite = finite && std::isfinite(c[k]);
            }
            if (finite) {
                for (size_t k = 0; k < D; ++k) centre[k] = c[k];
                *radius = r;
                ok = 1;
            }
        }
    }
    return ok;
}

// dev = [largest, root-mean-square, mean] of dist(i) over the n points.
template <class Dist> void write_deviations(size_t n, Dist dist, double *dev)
{
    double worst = 0.0, sum = 0.0, sum2 = 0.0;
    for (size_t i = 0; i < n; ++i) {
        const double d = dist(i);
        if (d > worst) worst = d;
        sum += d;
        sum2 += d * d;
    }
    const double dn = static_cast<double>(n);
    dev[0] = worst;
    dev[1] = std::sqrt(sum2 / dn);
    dev[2] = sum / dn;
}

// Deviations of the points from a circle (D = 2) or sphere (D = 3).
template <size_t D>
void round_deviations(const double *pts, size_t n, const double *centre, double radius, double *dev)
{
    write_deviations(
        n,
        [&](size_t i) {
            double q[D];
            for (size_t k = 0; k < D; ++k) q[k] = pts[i * D + k] - centre[k];
            return std::fabs(std::sqrt(dot<D>(q, q)) - radius);
        },
        dev);
}

template <size_t D> void zero_round(double *centre, double *radius, int *degenerate, double *dev)
{
    zero<D>(centre);
    *radius = 0.0;
    *degenerate = 0;
    zero<3>(dev);
}

// The circle (D = 2) and sphere (D = 3) fits. The line or plane fit comes
// first: its normal measures how far the points are from a line or plane (a
// degenerate or silent fit leaves it null, which counts as flat).
template <size_t D>
void fit_round(const double *pts, int n, double *centre, double *radius, int *degenerate,
               double *dev)
{
    zero_round<D>(centre, radius, degenerate, dev);
    // fdev[1] stays NaN (no verdict) where the fit does not write it.
    double fpoint[D], fnormal[D], fdev[3] = {0.0, std::nan(""), 0.0};
    int fdeg = 0;
    fit_flat<D>(pts, n, fpoint, fnormal, &fdeg, fdev, true);
    if (n < 1) {
        report_no_points();
        *degenerate = 1;
        return;
    }
    const size_t np = count(n);
    double cen[D];
    centroid<D>(pts, np, cen);
    const Spread s = spread<D>(pts, np, cen, fnormal);
    // The normal's direction is only as good as Jacobi's absolute threshold
    // over the eigenvalue gap, which on a small or badly spread set can put
    // exactly coplanar points beyond the ratio; the fit's root-mean-square
    // distance, from its eigenvalue, does not depend on that direction.
    const bool flat_by_eigenvalue = fdev[1] <= kFlatRatio * s.max_dist;
    if (is_flat(s) || flat_by_eigenvalue ||
        !algebraic_fit<D>(pts, np, cen, s.rms, centre, radius)) {
        zero_round<D>(centre, radius, degenerate, dev);
        *degenerate = 1;
        return;
    }
    round_deviations<D>(pts, np, centre, *radius, dev);
}

} // namespace

namespace qx::lsfit
{

Fallback line_fallback(const double *c, int n, double normal[2], int *degenerate)
{
    double len2;
    const size_t far = farthest<2>(c, count(n), &len2);
    if (std::sqrt(len2) >= kFallbackDist) {
        double dir[2];
        unitize<2>(c + far * 2, dir);
        normal[0] = -dir[1];
        normal[1] = dir[0];
        return kNormalMade;
    }
    *degenerate = 1;
    zero<2>(normal);
    return kDegenerate;
}

Fallback plane_fallback(const double *c, int n, double normal[3], int *degenerate)
{
    const size_t np = count(n);
    double len2;
    const size_t far = farthest<3>(c, np, &len2);
    if (!(std::sqrt(len2) >= kFallbackDist)) return kCoincident;
    if (np >= 3) {
        double dir[3];
        unitize<3>(c + far * 3, dir);
        size_t off_best = 0;
        double off2 = -1.0;
        for (size_t i = 0; i < np; ++i) {
            const double *p = c + i * 3;
            const double t = qx::vec::dot3(p, dir);
            const double e[3] = {p[0] - t * dir[0], p[1] - t * dir[1], p[2] - t * dir[2]};
            const double l2 = qx::vec::dot3(e, e);
            if (l2 > off2) {
                off2 = l2;
                off_best = i;
            }
        }
        if (off2 >= kFallbackDist * kFallbackDist) {
            double k[3];
            qx::vec::cross3(dir, c + off_best * 3, k);
            unitize<3>(k, normal);
            return kNormalMade;
        }
    }
    *degenerate = 1;
    zero<3>(normal);
    return kDegenerate;
}

} // namespace qx::lsfit

void LSFIT_line_to_points_2d(const double *pts, int n, double point[2], double normal[2],
                             int *degenerate, double dev[3])
{
    fit_flat<2>(pts, n, point, normal, degenerate, dev);
}

void LSFIT_plane_to_points(const double *pts, int n, double point[3], double normal[3],
                           int *degenerate, double dev[3])
{
    fit_flat<3>(pts, n, point, normal, degenerate, dev);
}

void LSFIT_circle_to_points_2d(const double *pts, int n, double centre[2], double *radius,
                               int *degenerate, double dev[3])
{
    fit_round<2>(pts, n, centre, radius, degenerate, dev);
}

void LSFIT_sphere_to_points_3d(const double *pts, int n, double centre[3], double *radius,
                               int *degenerate, double dev[3])
{
    fit_round<3>(pts, n, centre, radius, degenerate, dev);
}

void LSFIT_circle_to_points_3d(const double *pts, int n, double centre[3], double *radius,
                               double normal[3], int *degenerate, double dev[3])
{
    zero_round<3>(centre, radius, degenerate, dev);
    zero<3>(normal);
    double ppoint[3], pnormal[3], pdev[3];
    int pdeg = 0;
    fit_flat<3>(pts, n, ppoint, pnormal, &pdeg, pdev);
    if (n < 1) {
        report_no_points();
        *degenerate = 1;
        return;
    }
    double frame[9];
    const size_t np = count(n);
    double *flat = nullptr;
    if (pdeg == 0 && MTX3_init_z(pnormal, frame))
        flat = static_cast<double *>(SM_alloc(np * 2 * sizeof(double)));
    int deg2 = 1;
    double c2[2], r = 0.0, dev2[3];
    if (flat != nullptr) {
        for (size_t i = 0; i < np; ++i) {
            const double *p = pts + i * 3;
            const double q[3] = {p[0] - ppoint[0], p[1] - ppoint[1], p[2] - ppoint[2]};
            flat[i * 2] = qx::vec::dot3(frame, q);
            flat[i * 2 + 1] = qx::vec::dot3(frame + 3, q);
        }
        fit_round<2>(flat, n, c2, &r, &deg2, dev2);
        SM_free(flat);
    }
    if (deg2 != 0) {
        *degenerate = 1;
        return;
    }
    const double *ax = frame, *ay = frame + 3, *az = frame + 6;
    for (int k = 0; k < 3; ++k) {
        centre[k] = ppoint[k] + c2[0] * ax[k] + c2[1] * ay[k];
        normal[k] = az[k];
    }
    *radius = r;
    // Distance from the circle as a curve: height h over its plane, rho from
    // its axis.
    write_deviations(
        np,
        [&](size_t i) {
            const double *p = pts + i * 3;
            const double q[3] = {p[0] - centre[0], p[1] - centre[1], p[2] - centre[2]};
            const double h = qx::vec::dot3(q, az);
            const double e[3] = {q[0] - h * az[0], q[1] - h * az[1], q[2] - h * az[2]};
            const double rho = std::sqrt(qx::vec::dot3(e, e));
            return std::sqrt((rho - r) * (rho - r) + h * h);
        },
        dev);
}
