// The banded solver against LAPACK's dgbsv on the same matrices: factor and
// solve of one right-hand side, half-bandwidth 3, n = 10^3 ... 10^6. The
// matrix is restored outside the timed region before every iteration (both
// solvers work in place). dgbsv pivots and keeps room for the fill-in that
// pivoting may cause (2 kl + ku + 1 rows), so it does somewhat more work;
// on these diagonally dominant matrices it never actually swaps.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>

extern "C" void dgbsv_(const int *n, const int *kl, const int *ku, const int *nrhs, double *ab,
                       const int *ldab, int *ipiv, double *b, const int *ldb, int *info);

namespace
{

constexpr int half = 3;

// A random, row-diagonally-dominant band system of order n, the same for
// every solver: element (i, j) for |i - j| <= half, and a right-hand side.
struct System {
    int n;
    std::vector<double> band; // row i, column j at (i * (2 half + 1) + j - i + half)
    std::vector<double> rhs;

    explicit System(int order) : n(order), band(std::size_t(order) * (2 * half + 1)), rhs(order)
    {
        std::mt19937_64 rng(1234567u + unsigned(order));
        std::uniform_real_distribution<double> off(-1.0, 1.0), extra(0.25, 1.25);
        for (int i = 0; i < n; ++i) {
            double sum = 0.0;
            for (int j = std::max(0, i - half); j <= std::min(n - 1, i + half); ++j)
                if (j != i) sum += std::fabs(at(i, j) = off(rng));
            at(i, i) = sum + extra(rng);
            rhs[std::size_t(i)] = off(rng);
        }
    }
    double &at(int i, int j) { return band[std::size_t(i) * (2 * half + 1) + (j - i + half)]; }
};

// The system in the banded solver's storage; pristine copy of the element
// block kept beside it.
struct Banded {
    int n;
    double **a = nullptr;
    double *b = nullptr;
    std::vector<double> elements, rhs;

    explicit Banded(System &s) : n(s.n)
    {
        merrorflush();
        msetup_banded(n, half, &a, &b);
        if (merrorlevel() != 0) std::abort();
        for (int i = 0; i < n; ++i)
            for (int j = std::max(0, i - half); j <= std::min(n - 1, i + half); ++j)
                a[i][j] = s.at(i, j);
        double *block = a[-1];
        elements.assign(block, block + SM_length(block) / sizeof(double));
        rhs = s.rhs;
        restore();
    }
    ~Banded() { mdispose_banded(&a, &b); }
    void restore()
    {
        std::memcpy(a[-1], elements.data(), elements.size() * sizeof(double));
        std::memcpy(b, rhs.data(), rhs.size() * sizeof(double));
    }
    void factor_and_solve()
    {
        mdecompose_banded(a, n, half);
        msolve_banded(a, n, half, b);
    }
};

// The system in LAPACK's general band storage: column-major, ldab =
// 2 kl + ku + 1 rows, A(i, j) at row kl + ku + i - j of column j.
struct Lapack {
    int n, ldab = 3 * half + 1, info = 0;
    std::vector<double> ab, ab0, b, b0;
    std::vector<int> ipiv;

    explicit Lapack(System &s)
        : n(s.n), ab(std::size_t(n) * std::size_t(ldab)), b(s.rhs), b0(s.rhs), ipiv(n)
    {
        for (int i = 0; i < n; ++i)
            for (int j = std::max(0, i - half); j <= std::min(n - 1, i + half); ++j)
                ab[std::size_t(j) * std::size_t(ldab) + std::size_t(2 * half + i - j)] = s.at(i, j);
        ab0 = ab;
    }
    void restore()
    {
        std::memcpy(ab.data(), ab0.data(), ab.size() * sizeof(double));
        std::memcpy(b.data(), b0.data(), b.size() * sizeof(double));
    }
    void factor_and_solve()
    {
        const int kl = half, ku = half, nrhs = 1;
        dgbsv_(&n, &kl, &ku, &nrhs, ab.data(), &ldab, ipiv.data(), b.data(), &n, &info);
    }
};

// Both solvers once on the same system: the comparison is only fair if
// they agree.
void check_agreement(int n)
{
    System s(n);
    Banded band(s);
    Lapack lapack(s);
    band.factor_and_solve();
    lapack.factor_and_solve();
    double worst = 0.0;
    for (int i = 0; i < n; ++i) worst = std::max(worst, std::fabs(band.b[i] - lapack.b[i]));
    if (merrorlevel() != 0 || lapack.info != 0 || !(worst < 1e-12)) {
        std::fprintf(stderr, "banded and dgbsv disagree at n = %d: %g\n", n, worst);
        std::abort();
    }
}

template <class Solver> void run(benchmark::State &state)
{
    const int n = int(state.range(0));
    check_agreement(n);
    System s(n);
    Solver solver(s);
    for (auto _ : state) {
        state.PauseTiming();
        solver.restore();
        state.ResumeTiming();
        solver.factor_and_solve();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * n);
    state.counters["ns_per_row"] = benchmark::Counter(
        double(n), benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_banded_factor_solve(benchmark::State &state) { run<Banded>(state); }
void BM_dgbsv(benchmark::State &state) { run<Lapack>(state); }

BENCHMARK(BM_banded_factor_solve)
    ->RangeMultiplier(10)
    ->Range(1000, 1000000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_dgbsv)->RangeMultiplier(10)->Range(1000, 1000000)->Unit(benchmark::kMicrosecond);

} // namespace
