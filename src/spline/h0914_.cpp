// h0914_ — the general knot placement of the interpolation (every case
// knot_seq_order_4 does not take). The data sites (point and condition
// parameters, merged in order) are turned into knots by de Boor's averaging
// of k - 1 consecutive sites: clamped ends for an open curve; for a periodic
// one a seam of multiplicity k - r at params[0] and the r outer knots at each
// end wrapped from the other end by the period 1.0 - params[0]. Why this
// keeps the Schoenberg-Whitney conditions is argued in spline.h.
#define QX_SOURCE_FILE "h0914_"
#include "frame/check.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include <qxmath/spline.h>

#include "spline/spline_internal.h"

namespace
{

// Two sites closer than this are at the same parameter.
constexpr double kSame = 1.0e-10;
// A cyclic average this close to the seam counts as on it.
constexpr double kOnSeam = 1.0e-12;

// Site l of the periodic extension of the m sites s[0 ... m - 1], period p.
double site_ext(const double *s, long m, double p, long l)
{
    long q = l / m;
    if (l - q * m < 0) --q;
    return s[l - q * m] + static_cast<double>(q) * p;
}

// The average of the k - 1 sites l = j - k + 1 ... j - 1 of the extension.
double cyclic_average(const double *s, long m, double p, int k, long j)
{
    double sum = 0.0;
    for (long l = j - k + 1; l <= j - 1; ++l) sum += site_ext(s, m, p, l);
    return sum / (k - 1);
}

// Open placement on [a, b] from the sites s[0 ... N - 1]: k copies of a,
// the N - k interior knots by averaging, then k copies of b (knots has
// N + k values). Order 2 keeps a simple site as its knot and moves the knot
// of a site that shares its parameter to the middle of its neighbours.
void place_open(const double *s, int N, int k, double a, double b, double *knots)
{
    for (int i = 0; i < k; ++i) knots[i] = a;
    for (int j = 0; j < N - k; ++j) {
        double t;
        if (k == 2) {
            const bool simple = s[j + 1] - s[j] > kSame && s[j + 2] - s[j + 1] > kSame;
            t = simple ? s[j + 1] : 0.5 * (s[j] + s[j + 2]);
        } else {
            double sum = 0.0;
            for (int l = j + 1; l <= j + k - 1; ++l) sum += s[l];
            t = sum / (k - 1);
        }
        knots[k + j] = t;
    }
    for (int i = N; i < N + k; ++i) knots[i] = b;
}

// Periodic placement for r >= 2 from the M = N - r sites s[0] = a ...
// s[M - 1] < b. The cyclic averages v(j) (B_j matched with site j) give M
// knots a period; the mu = k - r of them that become the seam are v(j0) ...
// v(j0 + mu - 1), j0 chosen so that the knots keep their order and every
// site stays strictly inside its basis function's support, and, among
// those, so that the seam moves the knots least. Returns false if rounding
// spoils the order (parameters of extreme magnitude).
bool place_cyclic(const double *s, int N, int k, int r, double a, double b, double *knots)
{
    const long M = N - r;
    const int mu = k - r;
    const double p = b - a;
    int m_a = 0; // sites on the seam (a point, perhaps a condition)
    while (m_a < M && s[m_a] == a) ++m_a;
    int q = 0; // v(1) ... v(q) lie left of the seam
    while (q + 1 <= k - 1 && cyclic_average(s, M, p, k, q + 1) < a - kOnSeam) ++q;
    const int e = q + 1 <= k - 1 && cyclic_average(s, M, p, k, q + 1) <= a + kOnSeam ? 1 : 0;
    const int lo = std::max(m_a, q + 1 + e - mu), hi = std::min(q + 1, r);
    if (lo > hi) return false; // cannot happen for valid sites (see spline.h)
    int j0 = lo;
    double best = -1.0;
    for (int j = lo; j <= hi; ++j) {
        double moved = 0.0;
        for (int i = j; i < j + mu; ++i) moved += std::fabs(cyclic_average(s, M, p, k, i) - a);
        if (best < 0.0 || moved < best) best = moved, j0 = j;
    }
    // The period block u(j0) ... u(j0 + M - 1): the seam, then the averages.
    for (int i = r; i < k; ++i) knots[i] = a;
    for (int i = k; i < N; ++i) knots[i] = cyclic_average(s, M, p, k, i + j0 - r);
    for (int i = N; i < N + mu; ++i) knots[i] = b;
    // The outer knots on the periodic extension, read from the knots
    // already placed (from the right end down, so a period shorter than r
    // wraps onto knots it has just written).
    for (int i = r - 1; i >= 0; --i) knots[i] = knots[i + M] - p;
    for (int i = N + mu; i < N + k; ++i) knots[i] = knots[i - M] + p;
    // Equal within a seam's run of mu, strictly increasing elsewhere.
    for (int i = 0; i + 1 < N + k; ++i) {
        const bool seam = ((i - r) % M + M) % M < mu - 1;
        if (seam ? knots[i] != knots[i + 1] : !(knots[i] < knots[i + 1])) return false;
    }
    return true;
}

// Sorts the nc condition parameters into c (clamped into [a, b] when within
// kSame of it; for a seam with r >= 2, b is the seam a) and checks them:
// finite, inside the range, no two at the same parameter.
bool sorted_conditions(const double *condparams, int nc, double a, double b, bool to_seam,
                       double *c)
{
    for (int i = 0; i < nc; ++i) {
        double t = condparams[i];
        if (!(t >= a - kSame && t <= b + kSame)) return false; // NaN too
        if (t - a <= kSame) t = a;
        if (b - t <= kSame) t = to_seam ? a : b;
        c[i] = t;
    }
    std::sort(c, c + nc);
    for (int i = 1; i < nc; ++i)
        if (!(c[i] - c[i - 1] > kSame)) return false;
    return true;
}

} // namespace

int h0914_(const QX_interp_desc *desc, const double *params, const double *condparams, int *nknots,
           double *knots)
{
    qx::spline::Size z;
    if (!qx::spline::interp_size(desc, &z) || params == nullptr || nknots == nullptr ||
        knots == nullptr || (z.nc > 0 && condparams == nullptr))
        return -1;
    const int n = z.n, k = z.k, N = z.N, r = z.r, nc = z.nc;
    if (N < k || (!z.periodic && n < 2)) return -1;
    const double a = params[0];
    if (!std::isfinite(a)) return -1;
    for (int i = 1; i < n; ++i)
        if (!(params[i] - params[i - 1] > kSame) || !std::isfinite(params[i])) return -1;
    const double b = z.periodic ? 1.0 : params[n - 1];
    if (z.periodic && !(b - params[n - 1] > kSame)) return -1; // the closing point

    // Scratch: the sorted conditions, the merged sites (one more for the
    // closing site of r = 1), the knots before they are known to be good.
    const std::size_t M = static_cast<std::size_t>(n + nc);
    const std::size_t total =
        M + static_cast<std::size_t>(nc) + 1 + static_cast<std::size_t>(N + k);
    double *c = static_cast<double *>(SM_alloc(total * sizeof(double)));
    if (c == nullptr) return -1;
    double *s = c + nc, *out = s + M + 1;
    bool ok = sorted_conditions(condparams, nc, a, b, z.periodic && r >= 2, c);
    if (ok) {
        std::merge(c, c + nc, params, params + n, s); // a condition first on a tie
        if (!z.periodic || r == 0) {
            place_open(s, N, k, a, b, out);
        } else if (r == 1) {
            // The closing point, params[0] again at b, is the last site of
            // an open placement; then one knot wraps at each end.
            s[M] = b;
            place_open(s, N, k, a, b, out);
            out[0] = out[N - 1] - (b - a);
            out[N + k - 1] = out[k] + (b - a);
        } else {
            ok = place_cyclic(s, N, k, r, a, b, out);
        }
    }
    if (ok) {
        for (int l = 0; l < N + k; ++l) knots[l] = out[l];
        *nknots = N + k;
    }
    SM_free(c);
    return ok ? 0 : -1;
}
