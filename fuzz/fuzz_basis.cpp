// fuzz_basis.cpp — B-spline basis evaluation, span searches and knot vectors
// (mbasiseval, h0916, h0917, h0918, merge_knots, knot_seq_order_4,
// get_unique_reals) on arbitrary knots and parameters. Buffers are sized as
// the contracts ask; everything else (order, unsorted or NaN knots, any t)
// is the input's. Where the input meets a contract, its promise is checked:
// the basis of a clean knot vector is a partition of unity, a span search
// gives a span that holds t.
#include <algorithm>

#include "fuzz_common.h"

namespace
{

// Knots: sorted or not as the input says, with runs of repeats.
std::vector<double> knots_from(qxfuzz::Reader &in, int count)
{
    std::vector<double> k(static_cast<std::size_t>(count));
    for (double &v : k) v = in.real();
    if (in.flag()) std::sort(k.begin(), k.end(), [](double a, double b) { return a < b; });
    return k;
}

// A clamped vector on moderate, well separated knots, where the basis is a
// partition of unity inside its range.
bool clean(const std::vector<double> &k)
{
    for (std::size_t i = 0; i < k.size(); ++i) {
        if (!std::isfinite(k[i]) || std::fabs(k[i]) > 1e6) return false;
        if (i > 0 && k[i] != k[i - 1] && k[i] - k[i - 1] < 1e-3) return false;
        if (i > 0 && k[i] < k[i - 1]) return false;
    }
    return true;
}

void fuzz_mbasiseval(qxfuzz::Reader &in)
{
    const int d = in.integer(-1, 26);
    const int s = in.integer(0, 60);
    const int dd = std::clamp(d, 0, 24);
    const int count = s + 2 * dd + 1;
    std::vector<double> knots = knots_from(in, count);
    const double t =
        in.flag() ? in.real() : knots[static_cast<std::size_t>(in.integer(0, count - 1))];
    int first = -7;
    double values[25];
    std::fill(values, values + 25, std::nan(""));
    merrorflush();
    qxfuzz::call([&] { mbasiseval(d, s, knots.data(), t, &first, values); });
    if (merrorlevel() != 0 || d != dd || s < 1) return;
    if (first < 0 || first + d > s + d - 1)
        qxfuzz::finding("mbasiseval: first function out of range");
    const double lo = knots[static_cast<std::size_t>(d)];
    const double hi = knots[static_cast<std::size_t>(count - 1 - d)];
    if (clean(knots) && lo < hi && t >= lo && t <= hi) {
        double sum = 0.0;
        for (int j = 0; j <= d; ++j) {
            if (values[j] < -1e-12)
                qxfuzz::finding("mbasiseval: negative basis value inside the range");
            sum += values[j];
        }
        if (std::fabs(sum - 1.0) > 1e-9) qxfuzz::finding("mbasiseval: values do not sum to 1");
    }
}

void fuzz_spans(qxfuzz::Reader &in)
{
    const int count = in.integer(0, 80);
    std::vector<double> knots = knots_from(in, std::max(count, 1));
    double t = in.real();
    const int k = in.integer(-1, 27);
    switch (in.integer(0, 2)) {
    case 0: {
        const double tol = in.flag() ? 1e-12 : in.real();
        const int i = h0917(t, knots.data(), count, tol);
        if (i < -1 || (i >= 0 && i > count - 2)) qxfuzz::finding("h0917: index outside the vector");
        if (i >= 0 && clean(knots) && t > knots.front() &&
            t < knots[static_cast<std::size_t>(count - 1)] &&
            !(knots[static_cast<std::size_t>(i)] <= t &&
              t < knots[static_cast<std::size_t>(i + 1)]))
            qxfuzz::finding("h0917: span does not hold t");
        break;
    }
    case 1: {
        const int i = h0918(&t, knots.data(), count, k);
        if (i < -1 || (i >= 0 && i > count - 2)) qxfuzz::finding("h0918: index outside the vector");
        break;
    }
    default: {
        const int span = in.integer(-2, count + 1);
        const int i = in.integer(-1, 26);
        double value = std::nan(""), deriv = std::nan("");
        h0916(t, knots.data(), count, k, span, i, in.flag() ? &value : nullptr, &deriv);
        break;
    }
    }
}

void fuzz_merge(qxfuzz::Reader &in)
{
    const int d1 = in.integer(0, 6), s1 = in.integer(0, 30);
    const int d2 = in.integer(0, 6), s2 = in.integer(0, 30);
    const int d = in.integer(0, 8);
    std::vector<double> k1 = knots_from(in, s1 + 2 * d1 + 1);
    std::vector<double> k2 = knots_from(in, s2 + 2 * d2 + 1);
    double *out = nullptr;
    int s = -99;
    merrorflush();
    qxfuzz::arm_fault(in);
    qxfuzz::call([&] { merge_knots(k1.data(), d1, s1, k2.data(), d2, s2, d, &out, &s); });
    if (out != nullptr) {
        // The result is a vector of s + 2d + 1 knots; read it all.
        double sum = 0.0;
        for (int i = 0; i < s + 2 * d + 1; ++i) sum += out[i];
        (void)sum;
        SM_free(out);
    }
    merrorflush();
}

void fuzz_knot_seq(qxfuzz::Reader &in)
{
    QX_interp_desc desc{};
    desc.n_points = in.integer(-1, 60);
    desc.order = in.integer(0, 6);
    desc.periodic = in.flag();
    desc.dimension = 3;
    desc.n_cond1 = in.integer(-1, 3);
    desc.n_cond2 = in.integer(-1, 3);
    std::vector<double> params = in.reals(static_cast<std::size_t>(std::max(desc.n_points, 1)));
    if (in.flag())
        std::sort(params.begin(), params.end(), [](double a, double b) { return a < b; });
    std::vector<double> cond = in.reals(8);
    const int c = std::max(desc.n_cond1, 0) + std::max(desc.n_cond2, 0);
    std::vector<double> knots(
        static_cast<std::size_t>(std::max(desc.n_points, 1) + desc.order + c + 9), std::nan(""));
    int nknots = -1;
    knot_seq_order_4(&desc, params.data(), cond.data(), &nknots, knots.data());
    if (nknots < 0 || static_cast<std::size_t>(nknots) > knots.size())
        qxfuzz::finding("knot_seq_order_4: count outside the caller's room");
}

void fuzz_unique(qxfuzz::Reader &in)
{
    const int count = in.integer(-1, 200);
    std::vector<double> v = in.reals(static_cast<std::size_t>(std::max(count, 1)));
    if (in.flag()) std::sort(v.begin(), v.end(), [](double a, double b) { return a < b; });
    double *unique = nullptr;
    int n = -1;
    qxfuzz::arm_fault(in);
    const bool returned = qxfuzz::call([&] { get_unique_reals(v.data(), count, &unique, &n); });
    if (returned && (n < 0 || n > std::max(count, 0)))
        qxfuzz::finding("get_unique_reals: count out of range");
    if (unique != nullptr) SM_free(unique);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    qxfuzz::Reader in(data, size);
    qxfuzz::begin(in.integer(0, 1));
    switch (in.integer(0, 4)) {
    case 0:
        fuzz_mbasiseval(in);
        break;
    case 1:
        fuzz_spans(in);
        break;
    case 2:
        fuzz_merge(in);
        break;
    case 3:
        fuzz_knot_seq(in);
        break;
    default:
        fuzz_unique(in);
        break;
    }
    merrorflush();
    qxfuzz::end();
    return 0;
}
