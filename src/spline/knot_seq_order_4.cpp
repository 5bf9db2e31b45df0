// knot_seq_order_4 — the knot vector of cubic interpolation on the unit
// parameter range: three zeros, the point parameters, three ones; each
// interior condition parameter inserted before the first knot not below it;
// for a periodic curve three more knots and both ends rewritten with the
// wrapped spacing of the other end.
#define QX_SOURCE_FILE "knot_seq_order_4"
#include "frame/check.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>

#include <qxmath/spline.h>

namespace
{

// A condition this close to 0.0 or 1.0 is at an end, which the clamped
// ends already carry.
constexpr double kEndTol = 1.0e-10;

} // namespace

int knot_seq_order_4(const QX_interp_desc *desc, const double *params, const double *condparams,
                     int *nknots, double *knots)
{
    if (nknots == nullptr) return 0;
    *nknots = 0;
    if (desc == nullptr || knots == nullptr) return 0;
    const long long n = desc->n_points, nc = static_cast<long long>(desc->n_cond1) + desc->n_cond2;
    const bool periodic = desc->periodic != 0;
    const long long count = n + desc->order + nc;
    const long long final_count = periodic ? count + 3 : count;
    if (n < 0 || desc->n_cond1 < 0 || desc->n_cond2 < 0 || (n > 0 && params == nullptr) ||
        (nc > 0 && condparams == nullptr) || count < 0 || final_count > INT_MAX ||
        (periodic && (n < 1 || final_count < 7)))
        return 0;
    knots[0] = knots[1] = knots[2] = 0.0;
    for (long long j = 0; j < n; ++j) knots[3 + j] = params[j];
    knots[n + 3] = knots[n + 4] = knots[n + 5] = 1.0;
    long long filled = n + 6; // values written from the start

    for (long long c = 0; c < nc; ++c) {
        const double value = condparams[c];
        if (!(std::fabs(value) > kEndTol && std::fabs(value - 1.0) > kEndTol)) continue;
        long long at = 0;
        while (at < filled && !(knots[at] >= value)) ++at;
        if (at >= count) continue; // past the count: dropped
        // The tail up to the count moves up by one, read only where written.
        const long long move = std::min(count - at - 1, filled - at);
        std::memmove(knots + at + 1, knots + at, static_cast<size_t>(move) * sizeof(double));
        knots[at] = value;
        filled = std::max(filled, at + 1 + move);
    }

    if (periodic) {
        const long long N = final_count;
        knots[2] = knots[N - 5] - knots[N - 4];
        knots[1] = knots[2] + (knots[N - 6] - knots[N - 5]);
        knots[0] = knots[1] + (knots[N - 7] - knots[N - 6]);
        knots[N - 3] = knots[4] - knots[3] + 1.0;
        knots[N - 2] = knots[N - 3] + (knots[5] - knots[4]);
        knots[N - 1] = knots[N - 2] + (knots[6] - knots[5]);
    }
    *nknots = static_cast<int>(final_count);
    return 0;
}
