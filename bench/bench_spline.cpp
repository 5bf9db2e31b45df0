// Cubic interpolation through n = 10^3 ... 10^6 points of a helix: h0913
// against SISL (s1357), OpenCASCADE (GeomAPI_Interpolate) and scipy
// (make_interp_spline), all on the same problem: the same points, the same
// chord-length parameters normalised to [0, 1], the helix's end tangents
// scaled to that parameter as first-derivative conditions at 0 and 1, order
// 4, open. The data are prepared outside the timed region; each peer's
// curve is checked once, before timing, to pass through a sample of the
// points with the prescribed end derivatives, so that every peer is timed
// solving the problem rather than failing fast. Per-point time: the
// counter ns_per_point (seconds per point, printed with an SI prefix).
//
// scipy runs in a child process (QX_PEER_PYTHON, bench/peers/scipy_interp.py)
// that times the call itself, best of several; its figure is reported as
// manual time, one iteration per repetition.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include <unistd.h>

#include <benchmark/benchmark.h>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>

#ifdef QX_HAVE_SISL
#include <sisl.h>
#endif
#ifdef QX_HAVE_OCCT
#include <GeomAPI_Interpolate.hxx>
#include <Geom_BSplineCurve.hxx>
#include <Precision.hxx>
#include <TColStd_HArray1OfReal.hxx>
#include <TColgp_HArray1OfPnt.hxx>
#include <gp_Vec.hxx>
#endif

namespace
{

// Ten turns of radius 10 rising 2 per radian, sampled at slightly irregular
// angles so that the knot vector is not uniform.
struct Helix {
    int n = 0;
    std::vector<double> params;    // n, chord length normalised to [0, 1]
    std::vector<double> points;    // n rows x, y, z
    double d0[3] = {}, d1[3] = {}; // dp/du at u = 0 and u = 1
    double scale = 1.0;            // size of the coordinates and derivatives

    explicit Helix(int count) : n(count), params(std::size_t(count)), points(3 * std::size_t(count))
    {
        constexpr double radius = 10.0, rise = 2.0, turns = 10.0;
        const double sweep = 2.0 * M_PI * turns;
        for (int i = 0; i < n; ++i) {
            const double jitter =
                (i == 0 || i == n - 1) ? 0.0 : 0.3 * std::sin(1.7 * i * i + 0.3 * i);
            const double theta = sweep * (i + jitter) / (n - 1);
            double *p = &points[3 * std::size_t(i)];
            p[0] = radius * std::cos(theta);
            p[1] = radius * std::sin(theta);
            p[2] = rise * theta;
        }
        double length = 0.0;
        for (int i = 1; i < n; ++i) {
            const double *a = &points[3 * std::size_t(i - 1)], *b = a + 3;
            length += std::sqrt((b[0] - a[0]) * (b[0] - a[0]) + (b[1] - a[1]) * (b[1] - a[1]) +
                                (b[2] - a[2]) * (b[2] - a[2]));
            params[std::size_t(i)] = length;
        }
        for (double &u : params) u /= length;
        params[std::size_t(n - 1)] = 1.0;
        // Unit tangent times the total chord length: the derivative with
        // respect to the normalised chord-length parameter.
        const double norm = std::sqrt(radius * radius + rise * rise);
        for (int end = 0; end < 2; ++end) {
            const double t = end == 0 ? 0.0 : sweep;
            double *d = end == 0 ? d0 : d1;
            d[0] = -radius * std::sin(t) / norm * length;
            d[1] = radius * std::cos(t) / norm * length;
            d[2] = rise / norm * length;
        }
        scale = std::max(length, rise * sweep);
    }

    const double *point(int i) const { return &points[3 * std::size_t(i)]; }
    // The largest of the errors of a curve, given as a function (u, order of
    // derivative, out[3]), at eleven of the points and both end derivatives.
    template <class Eval> double deviation(Eval eval) const
    {
        double worst = 0.0, v[3];
        for (int s = 0; s <= 10; ++s) {
            const int i = int(std::lround(double(n - 1) * s / 10.0));
            eval(params[std::size_t(i)], 0, v);
            for (int c = 0; c < 3; ++c) worst = std::max(worst, std::fabs(v[c] - point(i)[c]));
        }
        for (int end = 0; end < 2; ++end) {
            eval(end == 0 ? 0.0 : 1.0, 1, v);
            const double *d = end == 0 ? d0 : d1;
            for (int c = 0; c < 3; ++c) worst = std::max(worst, std::fabs(v[c] - d[c]));
        }
        return worst;
    }
};

const Helix &helix(int n)
{
    static std::map<int, Helix> cache;
    auto it = cache.find(n);
    if (it == cache.end()) it = cache.emplace(n, Helix(n)).first;
    return it->second;
}

// Aborts the run when a peer's curve misses the data: timing it would
// compare a failure with a solution.
void require(bool ok, const char *who, int n, double deviation)
{
    if (ok) return;
    std::fprintf(stderr, "bench_spline: %s does not interpolate the helix at n = %d (%g)\n", who, n,
                 deviation);
    std::abort();
}

void count_points(benchmark::State &state, int n)
{
    state.SetItemsProcessed(state.iterations() * n);
    state.counters["ns_per_point"] = benchmark::Counter(
        double(n), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

// ---- h0913 ---------------------------------------------------------------

struct Qx {
    const Helix &h;
    QX_interp_desc desc;
    double condparams[2] = {0.0, 1.0};
    int condkinds[2] = {1, 1};
    double condvectors[6];
    int nknots = 0;
    std::vector<double> knots, poles;

    explicit Qx(const Helix &helix)
        : h(helix), desc{helix.n, 4, 0, 3, 2, 0, 0}, knots(std::size_t(helix.n) + 8),
          poles(3 * (std::size_t(helix.n) + 2))
    {
        std::copy(h.d0, h.d0 + 3, condvectors);
        std::copy(h.d1, h.d1 + 3, condvectors + 3);
    }
    int solve()
    {
        return h0913(&desc, h.points.data(), h.params.data(), condparams, condkinds, condvectors,
                     &nknots, knots.data(), poles.data());
    }
    // Position (order 0) or first derivative (order 1, at the clamped ends
    // only) of the solved cubic, by de Boor's algorithm.
    void eval(double u, int order, double *out) const
    {
        const int npoles = nknots - 4;
        const double *t = knots.data(), *p = poles.data();
        if (order == 1) {
            const int a = u < 0.5 ? 0 : npoles - 2;
            const double span = u < 0.5 ? t[4] - t[1] : t[npoles + 2] - t[npoles - 1];
            for (int c = 0; c < 3; ++c) out[c] = 3.0 * (p[3 * (a + 1) + c] - p[3 * a + c]) / span;
            return;
        }
        int span = int(std::upper_bound(t + 3, t + npoles, u) - t) - 1;
        span = std::min(span, npoles - 1);
        double d[4][3];
        for (int j = 0; j < 4; ++j)
            for (int c = 0; c < 3; ++c) d[j][c] = p[3 * (span - 3 + j) + c];
        for (int r = 1; r < 4; ++r)
            for (int j = 3; j >= r; --j) {
                const int i = span - 3 + j;
                const double alpha = (u - t[i]) / (t[i + 4 - r] - t[i]);
                for (int c = 0; c < 3; ++c) d[j][c] = (1.0 - alpha) * d[j - 1][c] + alpha * d[j][c];
            }
        std::copy(d[3], d[3] + 3, out);
    }
};

void BM_h0913(benchmark::State &state)
{
    const Helix &h = helix(int(state.range(0)));
    Qx qx(h);
    const int rc = qx.solve();
    const double dev = h.deviation([&](double u, int order, double *v) { qx.eval(u, order, v); });
    require(rc == 0 && qx.nknots == h.n + 6 && dev < 1e-8 * h.scale, "h0913", h.n, dev);
    for (auto _ : state) {
        benchmark::DoNotOptimize(qx.solve());
        benchmark::ClobberMemory();
    }
    qxsys_end_operation();
    count_points(state, h.n);
}
BENCHMARK(BM_h0913)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMicrosecond);

// ---- SISL s1357 ----------------------------------------------------------
// s1357 is s1356 with the parameters given rather than computed. Its input
// is a list of conditions with a type each: the start derivative (type 3,
// belongs to the next point), the n points (type 1), the end derivative
// (type 4, belongs to the preceding point); parameters only for the points.

#ifdef QX_HAVE_SISL
struct Sisl {
    const Helix &h;
    std::vector<double> conditions;
    std::vector<int> types;
    SISLCurve *curve = nullptr;

    explicit Sisl(const Helix &helix) : h(helix), types(std::size_t(helix.n) + 2, 1)
    {
        conditions.reserve(3 * (std::size_t(h.n) + 2));
        conditions.insert(conditions.end(), h.d0, h.d0 + 3);
        conditions.insert(conditions.end(), h.points.begin(), h.points.end());
        conditions.insert(conditions.end(), h.d1, h.d1 + 3);
        types.front() = 3;
        types.back() = 4;
    }
    ~Sisl() { release(); }
    int solve()
    {
        double end = 0.0, *params_out = nullptr;
        int nparams = 0, status = 0;
        s1357(conditions.data(), h.n + 2, 3, types.data(), const_cast<double *>(h.params.data()), 0,
              0, 1, 4, 0.0, &end, &curve, &params_out, &nparams, &status);
        std::free(params_out);
        return status;
    }
    void release()
    {
        if (curve) freeCurve(curve);
        curve = nullptr;
    }
    void eval(double u, int order, double *out) const
    {
        double d[6];
        int left = 0, status = 0;
        s1221(curve, order, u, &left, d, &status);
        std::copy(d + 3 * order, d + 3 * order + 3, out);
    }
};

void BM_sisl_s1357(benchmark::State &state)
{
    const Helix &h = helix(int(state.range(0)));
    Sisl sisl(h);
    const int status = sisl.solve();
    const double dev =
        sisl.curve ? h.deviation([&](double u, int order, double *v) { sisl.eval(u, order, v); })
                   : HUGE_VAL;
    require(status >= 0 && dev < 1e-8 * h.scale, "SISL s1357", h.n, dev);
    for (auto _ : state) {
        sisl.release();
        benchmark::DoNotOptimize(sisl.solve());
        benchmark::ClobberMemory();
    }
    count_points(state, h.n);
}
BENCHMARK(BM_sisl_s1357)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMicrosecond);
#endif

// ---- OpenCASCADE GeomAPI_Interpolate -------------------------------------
// The point and parameter arrays are built outside the timed region; the
// interpolator (its input checks included), the tangents and Perform inside.

#ifdef QX_HAVE_OCCT
struct Occt {
    const Helix &h;
    Handle(TColgp_HArray1OfPnt) points;
    Handle(TColStd_HArray1OfReal) params;
    gp_Vec start, end;

    explicit Occt(const Helix &helix)
        : h(helix), points(new TColgp_HArray1OfPnt(1, helix.n)),
          params(new TColStd_HArray1OfReal(1, helix.n)), start(h.d0[0], h.d0[1], h.d0[2]),
          end(h.d1[0], h.d1[1], h.d1[2])
    {
        for (int i = 0; i < h.n; ++i) {
            points->SetValue(i + 1, gp_Pnt(h.point(i)[0], h.point(i)[1], h.point(i)[2]));
            params->SetValue(i + 1, h.params[std::size_t(i)]);
        }
    }
    Handle(Geom_BSplineCurve) solve() const
    {
        GeomAPI_Interpolate interpolate(points, params, Standard_False, Precision::Confusion());
        interpolate.Load(start, end, Standard_False);
        interpolate.Perform();
        return interpolate.IsDone() ? interpolate.Curve() : Handle(Geom_BSplineCurve)();
    }
};

void BM_occt_GeomAPI_Interpolate(benchmark::State &state)
{
    const Helix &h = helix(int(state.range(0)));
    const Occt occt(h);
    const Handle(Geom_BSplineCurve) curve = occt.solve();
    const double dev = curve.IsNull() ? HUGE_VAL : h.deviation([&](double u, int order, double *v) {
        gp_Pnt p;
        gp_Vec d;
        curve->D1(u, p, d);
        const gp_XYZ &r = order == 0 ? p.XYZ() : d.XYZ();
        for (int c = 0; c < 3; ++c) v[c] = r.Coord(c + 1);
    });
    require(dev < 1e-8 * h.scale, "OpenCASCADE GeomAPI_Interpolate", h.n, dev);
    for (auto _ : state) {
        benchmark::DoNotOptimize(occt.solve().get());
        benchmark::ClobberMemory();
    }
    count_points(state, h.n);
}
BENCHMARK(BM_occt_GeomAPI_Interpolate)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMicrosecond);
#endif

// ---- scipy make_interp_spline --------------------------------------------

#ifdef QX_HAVE_SCIPY
// Writes the helix for the driver, runs it, and returns its best time in
// seconds, or a negative value with *why set.
double run_scipy(const Helix &h, std::string *why)
{
    char path[] = "/tmp/qx_bench_spline_XXXXXX";
    const int fd = mkstemp(path);
    if (fd < 0) return *why = "cannot create a temporary file", -1.0;
    std::vector<double> data(h.params);
    data.insert(data.end(), h.points.begin(), h.points.end());
    data.insert(data.end(), h.d0, h.d0 + 3);
    data.insert(data.end(), h.d1, h.d1 + 3);
    const ssize_t size = ssize_t(data.size() * sizeof(double));
    const bool written = write(fd, data.data(), std::size_t(size)) == size;
    close(fd);
    double seconds = -1.0, deviation = HUGE_VAL;
    if (written) {
        const std::string command = std::string(QX_PEER_PYTHON) + " " + QX_PEER_DIR +
                                    "/scipy_interp.py " + path + " " + std::to_string(h.n);
        if (FILE *pipe = popen(command.c_str(), "r")) {
            char line[256];
            while (std::fgets(line, sizeof line, pipe)) {
                std::sscanf(line, "seconds %lf", &seconds);
                std::sscanf(line, "deviation %lf", &deviation);
            }
            if (pclose(pipe) != 0) seconds = -1.0;
        }
    }
    unlink(path);
    if (seconds < 0.0)
        *why = "scipy driver failed (is python3-scipy installed for " QX_PEER_PYTHON "?)";
    else if (!(deviation < 1e-8 * h.scale))
        *why = "scipy's curve does not interpolate the helix", seconds = -1.0;
    return seconds;
}

void BM_scipy_make_interp_spline(benchmark::State &state)
{
    const Helix &h = helix(int(state.range(0)));
    std::string why;
    const double seconds = run_scipy(h, &why);
    if (seconds < 0.0) {
        state.SkipWithError(why.c_str());
        return;
    }
    for (auto _ : state) state.SetIterationTime(seconds);
    count_points(state, h.n);
}
BENCHMARK(BM_scipy_make_interp_spline)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMicrosecond)
    ->UseManualTime()
    ->Iterations(1);
#endif

} // namespace
