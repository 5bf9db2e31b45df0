// fuzz_interp.cpp — spline interpolation (h0913, h0913b, h0913a), knot
// placement (h0914_) and the row builders (h0926a, h0926_, h0927_) on
// arbitrary descriptions, points, parameters and derivative conditions, open
// and periodic, 3-D and weighted 4-D, sizes up to a few hundred. Buffers are
// sized as the contracts ask for the description given (refused ones too).
// Promise checked on clean data (moderate points, parameters from 0 to 1 well
// apart, low order): the curve re-evaluated at each parameter passes through
// its point.
#include <algorithm>

#include "fuzz_common.h"

namespace
{

using qxfuzz::Reader;
using Vec = std::vector<double>;

std::size_t room(long long n) { return static_cast<std::size_t>(std::clamp(n, 1LL, 1LL << 20)); }

struct Problem {
    QX_interp_desc desc{};
    int c = 0, N = 0, k = 0, dim = 0;
    bool clean = false;
    Vec points, params, condparams, condvectors;
    std::vector<int> condkinds;
};

Problem make_problem(Reader &in)
{
    Problem p;
    QX_interp_desc &d = p.desc;
    d.n_points = in.integer(-1, in.flag() ? 300 : 10);
    d.order = in.flag() ? 4 : in.integer(0, 26);
    d.periodic = in.integer(0, 3) == 0 ? 1 : 0;
    d.dimension = in.flag() ? 3 : in.integer(2, 5);
    d.n_cond1 = in.integer(-1, 3);
    d.n_cond2 = in.flag() ? 0 : in.integer(-1, 2);
    d.closure_continuity = in.integer(-2, 4);
    if (d.periodic) d.n_points = std::min(d.n_points, 90); // dense: keep N^3 within a millisecond
    p.c = std::max(d.n_cond1, 0) + std::max(d.n_cond2, 0);
    p.k = std::clamp(d.order, 0, 26);
    p.dim = std::clamp(d.dimension, 1, 5);
    const int n = std::max(d.n_points, 0);
    const int r = d.periodic ? std::clamp(std::min(d.closure_continuity + 1, p.k - 1), 0, 26) : 0;
    p.N = n + p.c + r;
    p.points.resize(room(static_cast<long long>(n) * p.dim));
    p.params.resize(room(n));
    p.condparams.resize(room(p.c));
    p.condvectors.resize(room(static_cast<long long>(p.c) * p.dim));
    p.condkinds.assign(room(p.c), 0);
    // Clean data: moderate points, parameters rising from 0 to 1 (to less
    // than 1 for a closed curve) in steps of comparable size, conditions at
    // point parameters.
    p.clean = in.flag();
    for (double &v : p.points) v = p.clean ? std::fmod(in.finite_real(), 1e3) : in.real();
    for (double &v : p.condvectors) v = p.clean ? std::fmod(in.finite_real(), 1e3) : in.real();
    if (p.clean && n >= 2) {
        double t = 0.0;
        for (int i = 0; i < n; ++i) {
            p.params[static_cast<std::size_t>(i)] = t;
            t += 1.0 + in.integer(0, 3);
        }
        const double last = p.params[static_cast<std::size_t>(n - 1)];
        const double span = d.periodic ? t : last;
        for (double &v : p.params) v /= span;
        if (!d.periodic) p.params[static_cast<std::size_t>(n - 1)] = 1.0;
        for (int j = 0; j < p.c; ++j)
            p.condparams[static_cast<std::size_t>(j)] =
                p.params[static_cast<std::size_t>(in.integer(0, n - 1))];
        if (d.n_cond1 > 0 && in.flag()) { // the Hermite ends of knot_seq_order_4's path
            p.condparams[0] = p.params[0];
            p.condparams[static_cast<std::size_t>(d.n_cond1 - 1)] =
                p.params[static_cast<std::size_t>(n - 1)];
        }
        std::sort(p.condparams.begin(), p.condparams.begin() + p.c);
    } else {
        p.clean = false;
        for (double &v : p.params) v = in.real();
        for (double &v : p.condparams) v = in.real();
        if (in.flag())
            std::sort(p.params.begin(), p.params.end(), [](double a, double b) { return a < b; });
    }
    return p;
}

// The curve of poles and knots at t, by the basis of mbasiseval.
bool evaluate(const Problem &p, const Vec &knots, const Vec &poles, double t, double *out)
{
    const int deg = p.k - 1, spans = p.N - p.k + 1;
    int first = -1;
    double values[25];
    merrorflush();
    mbasiseval(deg, spans, knots.data(), t, &first, values);
    if (merrorlevel() != 0) {
        merrorflush();
        return false;
    }
    for (int c = 0; c < p.dim; ++c) {
        double s = 0.0;
        for (int j = 0; j <= deg; ++j)
            s += values[j] * poles[static_cast<std::size_t>((first + j) * p.dim + c)];
        out[c] = s;
    }
    return true;
}

void check_passes(const Problem &p, const Vec &knots, const Vec &poles)
{
    // The promise holds on well-posed systems; these are (clean, low order,
    // conditions only at points, each at most once: the knot placement
    // refuses two at one parameter).
    if (!p.clean || p.k < 2 || p.k > 6 || p.dim < 3 || p.dim > 4 || p.desc.periodic) return;
    double scale = 1.0;
    for (double v : p.points) scale = std::max(scale, std::fabs(v));
    for (double v : p.condvectors) scale = std::max(scale, std::fabs(v));
    for (int i = 0; i < p.desc.n_points; ++i) {
        double at[5];
        if (!evaluate(p, knots, poles, p.params[static_cast<std::size_t>(i)], at)) continue;
        for (int c = 0; c < p.dim; ++c) {
            const double want = p.points[static_cast<std::size_t>(i * p.dim + c)];
            if (!(std::fabs(at[c] - want) <= 1e-6 * scale)) {
                std::fprintf(stderr, "n %d k %d c %d: point %d coordinate %d %.17g, curve %.17g\n",
                             p.desc.n_points, p.k, p.c, i, c, want, at[c]);
                qxfuzz::finding("h0913: the curve misses a point it was fitted to");
            }
        }
    }
}

void fuzz_fit(Reader &in)
{
    Problem p = make_problem(in);
    Vec knots(room(static_cast<long long>(p.N) + p.k + 2), std::nan(""));
    Vec poles(room(static_cast<long long>(p.N) * p.dim), std::nan(""));
    int nknots = -1, result = -9;
    const int entry = in.integer(0, 2);
    bool arbitrary = false; // knots of no placement: the curve may jump at a repeated knot
    if (entry > 0) {        // the caller's knots: placed by h0914_, or arbitrary
        if ((arbitrary = in.flag())) {
            for (double &v : knots) v = in.real();
            std::sort(knots.begin(), knots.end(), [](double a, double b) { return a < b; });
        } else {
            if (h0914_(&p.desc, p.params.data(), p.condparams.data(), &nknots, knots.data()) != 0)
                return;
            if (nknots != p.N + p.k) qxfuzz::finding("h0914_: knot count is not N + k");
            for (int i = 1; i < nknots; ++i)
                if (!(knots[static_cast<std::size_t>(i - 1)] <= knots[static_cast<std::size_t>(i)]))
                    qxfuzz::finding("h0914_: knots out of order");
        }
    }
    const int *kinds = in.flag() ? p.condkinds.data() : nullptr;
    if (in.integer(0, 5) == 0) merrorpush(&result, 999, 4); // an error left pending by the caller
    qxfuzz::arm_fault(in);
    const bool returned = qxfuzz::call([&] {
        switch (entry) {
        case 0:
            result = h0913(&p.desc, p.points.data(), p.params.data(), p.condparams.data(), kinds,
                           p.condvectors.data(), &nknots, knots.data(), poles.data());
            break;
        case 1:
            result = h0913b(&p.desc, p.points.data(), p.params.data(), p.condparams.data(), kinds,
                            p.condvectors.data(), knots.data(), poles.data());
            break;
        default:
            result = h0913a(&p.desc, p.points.data(), p.params.data(), p.condparams.data(), kinds,
                            p.condvectors.data(), knots.data(), poles.data());
            break;
        }
    });
    if (!returned) {
        merrorflush();
        return;
    }
    if (result < -1 || result > 1) qxfuzz::finding("h0913: unknown result");
    if (merrorlevel() != 0) qxfuzz::finding("h0913: an error left pending");
    if (result != 0) return;
    if (entry == 0 && nknots != p.N + p.k) qxfuzz::finding("h0913: knot count is not N + k");
    for (int i = 0; i < p.N * p.dim; ++i)
        if (std::isnan(poles[static_cast<std::size_t>(i)]) && p.clean && !arbitrary) {
            std::fprintf(stderr, "entry %d, n %d, k %d, c %d, periodic %d, pole %d\n", entry,
                         p.desc.n_points, p.k, p.c, p.desc.periodic, i);
            qxfuzz::finding("h0913: a pole of clean data not written");
        }
    if (!arbitrary) check_passes(p, knots, poles);
}

void fuzz_rows(Reader &in)
{
    Problem p = make_problem(in);
    Vec knots(room(static_cast<long long>(p.N) + p.k + 2));
    for (double &v : knots) v = in.real();
    if (in.flag()) std::sort(knots.begin(), knots.end(), [](double a, double b) { return a < b; });
    Vec poles(room(static_cast<long long>(p.N) * p.dim), std::nan(""));
    switch (in.integer(0, 2)) {
    case 0: {
        if (p.N < 1 || p.N > 400 || p.k < 1 || p.k > 26) return; // a band the caller could set up
        double **band = nullptr;
        double *b = nullptr;
        merrorflush();
        msetup_banded(p.N, p.k - 1, &band, &b);
        if (band == nullptr) return;
        h0926a(&p.desc, p.points.data(), p.params.data(), p.condparams.data(), p.condvectors.data(),
               knots.data(), band, poles.data());
        mdispose_banded(&band, &b);
        break;
    }
    case 1: {
        if (p.N > 400) return;
        Vec a(room(static_cast<long long>(p.N) * p.N), 0.0);
        h0926_(&p.desc, p.params.data(), p.condparams.data(), p.condkinds.data(), knots.data(),
               a.data());
        break;
    }
    default:
        h0927_(&p.desc, p.points.data(), p.condvectors.data(), poles.data());
        break;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Reader in(data, size);
    qxfuzz::begin(in.integer(0, 1));
    merrorflush();
    if (in.integer(0, 3) != 0)
        fuzz_fit(in);
    else
        fuzz_rows(in);
    merrorflush();
    qxfuzz::end();
    return 0;
}
