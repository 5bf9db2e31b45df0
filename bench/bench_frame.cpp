// The frame's per-call costs that every other family pays: a tolerant
// comparison, a tolerance look-up, a WCS mapping.
#include <benchmark/benchmark.h>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>

namespace
{

void open_session()
{
    const int mode = 0;
    sys10_(&mode);
    acom_.model_scale = 25.4;
    sys21_();
    const double m[9] = {0.6, 0.8, 0, -0.8, 0.6, 0, 0, 0, 1};
    WCS__set_matrix_values(m);
}

void BM_eqz(benchmark::State &state)
{
    open_session();
    double a = 1.0, b = 1.0 + 1e-6;
    const int kind = 1;
    for (auto _ : state) {
        benchmark::DoNotOptimize(eqz_(&a, &b, &kind));
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_eqz);

void BM_length_tolerance(benchmark::State &state)
{
    open_session();
    for (auto _ : state) benchmark::DoNotOptimize(EQ_ask_length_tolerance());
}
BENCHMARK(BM_length_tolerance);

void BM_mappaw_round_trip(benchmark::State &state)
{
    open_session();
    double p[3] = {1.0, 2.0, 3.0};
    for (auto _ : state) {
        mappaw_(p, p);
        mappwa_(p, p);
        benchmark::DoNotOptimize(p);
    }
}
BENCHMARK(BM_mappaw_round_trip);

} // namespace
