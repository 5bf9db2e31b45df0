// h0916 — value and first derivative of one B-spline basis function. The
// whole row of the span is computed by the recurrence of basis_row
// (spline_internal.h) and one entry picked, so the row assembly, which
// takes whole rows from basis_row, holds exactly these bits.
#define QX_SOURCE_FILE "h0916"
#include "frame/check.h"

#include "spline/spline_internal.h"

int h0916(double t, const double *knots, int count, int k, int span, int i, double *value,
          double *deriv)
{
    double values[qx::spline::kMaxOrder], derivs[qx::spline::kMaxOrder];
    const int status = qx::spline::basis_row(t, knots, count, k, span, values, derivs);
    if (status != 0) return status;
    if (i < 0 || i >= k) return 3;
    if (value != nullptr) *value = values[i];
    if (deriv != nullptr) *deriv = derivs[i];
    return 0;
}
