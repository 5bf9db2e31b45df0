// The non-zero cubic B-spline basis functions at 10^7 random parameters on a
// clamped, non-uniform knot vector of 1000 spans: mbasiseval against
// OpenCASCADE's BSplCLib::EvalBsplineBasis and GSL's gsl_bspline_eval_nonzero
// on the same knots and parameters. Each call includes its own span search
// (EvalBsplineBasis calls BSplCLib::LocateParameter itself; GSL 2.7 scans
// the knots linearly from the start, which is why it falls behind). One
// iteration is one pass over the pre-generated parameters; ns_per_eval is
// the time per call (seconds per evaluation, printed with an SI prefix).
// The three are checked against each other once, outside the timed region.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>

#ifdef QX_HAVE_OCCT
#include <BSplCLib.hxx>
#include <TColStd_Array1OfReal.hxx>
#include <math_Matrix.hxx>
#endif
#ifdef QX_HAVE_GSL
#include <gsl/gsl_bspline.h>
#include <gsl/gsl_vector.h>
#endif

namespace
{

constexpr int kDegree = 3, kSpans = 1000, kEvals = 10000000, kChecks = 10000;

// Breakpoints 0 = b[0] < b[1] < ... < b[kSpans] = 1, random spacing; the
// clamped knot vector repeats each end kDegree + 1 times.
const std::vector<double> &breakpoints()
{
    static const std::vector<double> b = [] {
        std::mt19937_64 rng(2024);
        std::uniform_real_distribution<double> gap(0.2, 1.8);
        std::vector<double> v(kSpans + 1, 0.0);
        for (int i = 1; i <= kSpans; ++i) v[std::size_t(i)] = v[std::size_t(i - 1)] + gap(rng);
        for (double &x : v) x /= v.back();
        v.back() = 1.0;
        return v;
    }();
    return b;
}

const std::vector<double> &knots()
{
    static const std::vector<double> k = [] {
        std::vector<double> v(kDegree, 0.0);
        v.insert(v.end(), breakpoints().begin(), breakpoints().end());
        v.insert(v.end(), kDegree, 1.0);
        return v; // kSpans + 2 kDegree + 1 values
    }();
    return k;
}

const std::vector<double> &parameters()
{
    static const std::vector<double> t = [] {
        std::mt19937_64 rng(77);
        std::uniform_real_distribution<double> u(0.0, 1.0);
        std::vector<double> v(kEvals);
        for (double &x : v) x = u(rng);
        return v;
    }();
    return t;
}

// One evaluator per library: eval(t, first, values) with first the 0-based
// index of the basis function of values[0].
struct Qx {
    bool eval(double t, int *first, double *values) const
    {
        mbasiseval(kDegree, kSpans, knots().data(), t, first, values);
        return true;
    }
};

#ifdef QX_HAVE_OCCT
struct Occt {
    TColStd_Array1OfReal flat{1, int(knots().size())};
    mutable math_Matrix basis{1, 1, 1, kDegree + 1};

    Occt()
    {
        for (int i = 0; i < int(knots().size()); ++i) flat.SetValue(i + 1, knots()[std::size_t(i)]);
    }
    bool eval(double t, int *first, double *values) const
    {
        int index = 0;
        const int rc = BSplCLib::EvalBsplineBasis(0, kDegree + 1, flat, t, index, basis);
        *first = index - 1;
        for (int j = 0; j <= kDegree; ++j) values[j] = basis(1, j + 1);
        return rc == 0;
    }
};
#endif

#ifdef QX_HAVE_GSL
struct Gsl {
    gsl_bspline_workspace *w = gsl_bspline_alloc(kDegree + 1, kSpans + 1);
    gsl_vector *b = gsl_vector_alloc(kDegree + 1);

    Gsl()
    {
        const gsl_vector_const_view view =
            gsl_vector_const_view_array(breakpoints().data(), breakpoints().size());
        gsl_bspline_knots(&view.vector, w);
        for (std::size_t i = 0; i < knots().size(); ++i)
            if (gsl_vector_get(w->knots, i) != knots()[i]) std::abort();
    }
    ~Gsl()
    {
        gsl_vector_free(b);
        gsl_bspline_free(w);
    }
    Gsl(const Gsl &) = delete;
    Gsl &operator=(const Gsl &) = delete;
    bool eval(double t, int *first, double *values) const
    {
        std::size_t start = 0, end = 0;
        const int rc = gsl_bspline_eval_nonzero(t, b, &start, &end, w);
        *first = int(start);
        for (int j = 0; j <= kDegree; ++j) values[j] = gsl_vector_get(b, std::size_t(j));
        return rc == 0;
    }
};
#endif

// The peer against mbasiseval on the first parameters and at both ends:
// timing is only fair if they compute the same thing.
template <class Peer> void check(const Peer &peer, const char *name)
{
    const Qx qx;
    std::vector<double> t(parameters().begin(), parameters().begin() + kChecks);
    t.insert(t.end(), {0.0, 1.0, breakpoints()[500]});
    double worst = 0.0;
    for (double x : t) {
        int f1 = -1, f2 = -2;
        double v1[kDegree + 1], v2[kDegree + 1];
        merrorflush();
        const bool ok = qx.eval(x, &f1, v1) && merrorlevel() == 0 && peer.eval(x, &f2, v2);
        // At a breakpoint the two may pick adjacent spans (the functions
        // vanishing there then shift by one); compare as sparse vectors.
        double dense1[kDegree + 3] = {}, dense2[kDegree + 3] = {};
        const int base = std::min(f1, f2);
        if (!ok || std::abs(f1 - f2) > 1)
            worst = HUGE_VAL;
        else {
            for (int j = 0; j <= kDegree; ++j) {
                dense1[f1 - base + j] = v1[j];
                dense2[f2 - base + j] = v2[j];
            }
            for (int j = 0; j < kDegree + 3; ++j)
                worst = std::max(worst, std::fabs(dense1[j] - dense2[j]));
        }
    }
    if (!(worst < 1e-13)) {
        std::fprintf(stderr, "bench_basis: mbasiseval and %s disagree: %g\n", name, worst);
        std::abort();
    }
}

template <class Evaluator> void run(benchmark::State &state, const Evaluator &e)
{
    const std::vector<double> &t = parameters();
    int first = 0;
    double values[kDegree + 1];
    for (auto _ : state) {
        double sum = 0.0;
        for (double x : t) {
            e.eval(x, &first, values);
            sum += values[1] + first;
        }
        benchmark::DoNotOptimize(sum);
    }
    state.SetItemsProcessed(state.iterations() * kEvals);
    state.counters["ns_per_eval"] =
        benchmark::Counter(double(kEvals), benchmark::Counter::kIsIterationInvariantRate |
                                               benchmark::Counter::kInvert);
}

void BM_mbasiseval(benchmark::State &state)
{
    const Qx qx;
    merrorflush();
    run(state, qx);
    if (merrorlevel() != 0) state.SkipWithError("mbasiseval reported an error");
}
BENCHMARK(BM_mbasiseval)->Unit(benchmark::kMillisecond);

#ifdef QX_HAVE_OCCT
void BM_occt_EvalBsplineBasis(benchmark::State &state)
{
    const Occt occt;
    check(occt, "OpenCASCADE EvalBsplineBasis");
    run(state, occt);
}
BENCHMARK(BM_occt_EvalBsplineBasis)->Unit(benchmark::kMillisecond);
#endif

#ifdef QX_HAVE_GSL
void BM_gsl_bspline_eval_nonzero(benchmark::State &state)
{
    const Gsl gsl;
    check(gsl, "GSL gsl_bspline_eval_nonzero");
    run(state, gsl);
}
BENCHMARK(BM_gsl_bspline_eval_nonzero)->Unit(benchmark::kMillisecond);
#endif

} // namespace
