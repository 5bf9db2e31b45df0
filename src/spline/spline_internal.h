// spline_internal.h — hidden kernels of the interpolation family (h0913 ...
// h0927_): the checked size of an interpolation description, the span
// searches with a starting hint, one whole row of basis values, and the
// dense solving path. The exported h0916, h0917 and h0918 are thin wrappers
// around these, so a row assembled here has the same bits as the exported
// routines give one value at a time.
#ifndef QXMATH_SPLINE_SPLINE_INTERNAL_H
#define QXMATH_SPLINE_SPLINE_INTERNAL_H

#include <cstddef>

#include <qxmath/spline.h>

namespace qx::spline
{

// Orders above this are outside the family's contract (the recurrence keeps
// its differences in arrays of this size).
constexpr int kMaxOrder = 25;

// The fixed thresholds of the row assembly.
constexpr double kPointTolerance = 1.0e-5;  // h0917 for point rows
constexpr double kClampTolerance = 1.0e-12; // h0918, and "same parameter" in the interleaving
constexpr double kEndLowering = 5.0e-13;    // a row at tmax is evaluated this much lower
constexpr double kWrapFactor = 9.0;         // periodic wrap rows: +9.0 / -9.0

// The sizes of a description the family accepts.
struct Size {
    int n;      // points
    int k;      // order
    int dim;    // 3 or 4
    int nc;     // c1 + c2
    int r;      // wrap rows: min(closure continuity + 1, k - 1) when periodic, else 0
    int N;      // system size, n + nc + r
    int nknots; // N + k
    bool periodic;
};

// Fills *s and returns true when desc is usable: n >= 1, 2 <= k <= 25,
// dimension 3 or 4, c1, c2 >= 0, a periodic closure continuity >= -1, and
// N + k representable as an int. Nothing else is read.
bool interp_size(const QX_interp_desc *desc, Size *s);

// interp_size, and the arrays every entry point reads or writes: points,
// params, knots and poles, and condparams and condvectors when c1 + c2 > 0,
// must not be NULL. condkinds is never read.
bool interp_args(const QX_interp_desc *desc, const double *points, const double *params,
                 const double *condparams, const double *condvectors, const double *knots,
                 const double *poles, Size *s);

// The span search of h0917 starting from a hint (an earlier result, or -1
// for none): the result is the same for every hint, only the work differs
// (O(log distance) from a valid hint, O(log count) without one).
int span_find(double t, const double *knots, int count, double tolerance, int hint);

// span_find for the rows of the assembly, whose parameters mostly fall in
// the hint's span or the next: those two are tried inline first (inside the
// knots, with non-decreasing knots, the span is the unique i with knots[i]
// <= t < knots[i + 1], so the answer is the same).
inline int span_next(double t, const double *knots, int count, double tolerance, int hint)
{
    if (hint >= 0 && hint + 2 < count && knots[0] < t && t < knots[count - 1]) {
        const double *at = knots + hint;
        if (at[0] <= t) {
            if (t < at[1]) return hint;
            if (t < at[2]) return hint + 1;
        }
    }
    return span_find(t, knots, count, tolerance, hint);
}

// h0918 with a hint for its search.
int span_clamp(double *t, const double *knots, int count, int k, int hint);

// The k basis functions of order k that are non-zero on the span at t:
// values[i] (and/or derivs[i], either may be NULL) belongs to basis function
// span - (k - 1) + i. Returns 0, or h0916's failure codes 1 (k outside
// 1 ... 25) and 2 (span outside k - 1 ... count - k - 1, or an empty span),
// writing nothing then.
//
// Method (degree p = k - 1): the triangular Cox-de Boor recurrence in
// place. left[j] = t - knots[span + 1 - j], right[j] = knots[span + j] - t;
// at level j = 1 ... p, with saved = 0: for r = 0 ... j - 1,
//   temp = v[r] * (1.0 / (right[r + 1] + left[j - r]));
//   v[r] = saved + right[r + 1] * temp; saved = left[j - r] * temp;
// then v[j] = saved. At the last level the same temps give the derivatives:
// with s = 0, d[r] = s - p * temp; s = p * temp; and d[p] = s. Order 1 gives
// the value 1 and the derivative 0.
inline int basis_row(double t, const double *knots, int count, int k, int span, double *values,
                     double *derivs)
{
    if (k < 1 || k > kMaxOrder) return 1;
    if (knots == nullptr || span < k - 1 || span > count - k - 1) return 2;
    if (!(knots[span] < knots[span + 1])) return 2;
    const int p = k - 1;
    double v[kMaxOrder], left[kMaxOrder], right[kMaxOrder];
    v[0] = 1.0;
    for (int j = 1; j < p; ++j) {
        left[j] = t - knots[span + 1 - j];
        right[j] = knots[span + j] - t;
        double saved = 0.0;
        for (int r = 0; r < j; ++r) {
            const double temp = v[r] * (1.0 / (right[r + 1] + left[j - r]));
            v[r] = saved + right[r + 1] * temp;
            saved = left[j - r] * temp;
        }
        v[j] = saved;
    }
    if (p == 0) {
        if (values != nullptr) values[0] = 1.0;
        if (derivs != nullptr) derivs[0] = 0.0;
        return 0;
    }
    left[p] = t - knots[span + 1 - p];
    right[p] = knots[span + p] - t;
    const double pd = p;
    double saved = 0.0, dsaved = 0.0;
    for (int r = 0; r < p; ++r) {
        const double temp = v[r] * (1.0 / (right[r + 1] + left[p - r]));
        if (values != nullptr) values[r] = saved + right[r + 1] * temp;
        saved = left[p - r] * temp;
        if (derivs != nullptr) {
            const double scaled = pd * temp;
            derivs[r] = dsaved - scaled;
            dsaved = scaled;
        }
    }
    if (values != nullptr) values[p] = saved;
    if (derivs != nullptr) derivs[p] = dsaved;
    return 0;
}

// The span and the k coefficients (values for a point row, first
// derivatives for a condition row) of one row at parameter t, as h0926a
// and h0926_ compute them: t equal to tmax = knots[count - k] is lowered by
// 5.0e-13, a point row's span comes from h0917 at 1.0e-5, a condition
// row's from h0918 (which may clamp t), the coefficients from basis_row.
// Returns the span, or -1 (search or evaluation failed; coef unwritten).
// count >= k is the caller's to ensure.
inline int row_coefficients(double t, bool condition, const double *knots, int count, int k,
                            int hint, double *coef)
{
    if (t == knots[count - k]) t -= kEndLowering;
    const int span = condition ? span_clamp(&t, knots, count, k, hint)
                               : span_next(t, knots, count, kPointTolerance, hint);
    if (span < 0) return -1;
    const int status = condition ? basis_row(t, knots, count, k, span, nullptr, coef)
                                 : basis_row(t, knots, count, k, span, coef, nullptr);
    return status == 0 ? span : -1;
}

// The dense path of h0913 and h0913b (and of h0913a for a periodic
// description): an N x N zero-filled matrix from SM_calloc, rows by h0926_,
// right-hand sides by h0927_ into poles, SOLVE_lu_solver with nrhs = dim on
// row pointers, everything freed, the error state flushed. Returns 0, 1 (a
// zero row, including one the assembly left unfilled) or -1 (memory the
// host did not give, its report having returned). s describes desc.
int solve_dense(const Size &s, const QX_interp_desc *desc, const double *points,
                const double *params, const double *condparams, const int *condkinds,
                const double *condvectors, const double *knots, double *poles);

} // namespace qx::spline

#endif
