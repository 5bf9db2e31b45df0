// bcdf_calc.cpp — computed data of a defining-data record: the parameters of
// its points (chord length and its powers, with a uniform fallback when the
// points coincide) and the least-squares weights derived from them.
//
// The parameter sum runs forward from t[0] = 0 with the distances of
// bcurve_internal.h, so that every caller gets the same bits.
#define QX_SOURCE_FILE "bcdf_calc"
#include "frame/check.h"

#include <cmath>

#include <qxmath/bcdf.h>

#include "bcurve/bcurve_internal.h"

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

} // extern "C"
