// Symmetric eigenproblem: NR_ask_eigenvalues_jacobi (cyclic Jacobi, row-pointer storage,
// sweep limit 60) against Eigen's SelfAdjointEigenSolver (tridiagonalisation + implicit QR),
// eigenvalues and eigenvectors both, on the same random symmetric matrices, n = 3, 10, 50.
// Jacobi destroys its input's upper triangle, so each iteration copies the matrix in first
// (Eigen copies into its own storage too).
#include <cstring>
#include <random>
#include <vector>

#include <Eigen/Dense>
#include <benchmark/benchmark.h>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>

namespace
{

Eigen::MatrixXd random_symmetric(int n)
{
    std::mt19937_64 rng(4321u + static_cast<unsigned>(n));
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    Eigen::MatrixXd m(n, n);
    for (int i = 0; i < n; ++i)
        for (int j = 0; j <= i; ++j) m(i, j) = m(j, i) = u(rng);
    return m;
}

void BM_jacobi(benchmark::State &state)
{
    const int n = static_cast<int>(state.range(0));
    const Eigen::MatrixXd m = random_symmetric(n); // symmetric: layout does not matter
    const std::size_t nn = static_cast<std::size_t>(n);
    std::vector<double> a(nn * nn), v(nn * nn), d(nn);
    std::vector<double *> ar(nn), vr(nn);
    for (std::size_t i = 0; i < nn; ++i) {
        ar[i] = a.data() + i * nn;
        vr[i] = v.data() + i * nn;
    }
    int nrot = 0;
    for (auto _ : state) {
        std::memcpy(a.data(), m.data(), nn * nn * sizeof(double));
        NR_ask_eigenvalues_jacobi(ar.data(), n, 60, d.data(), vr.data(), &nrot);
        benchmark::DoNotOptimize(d.data());
        benchmark::DoNotOptimize(v.data());
        benchmark::ClobberMemory();
    }
    state.counters["rotations"] = nrot;
    qxsys_end_operation();
}

void BM_eigen_self_adjoint(benchmark::State &state)
{
    const int n = static_cast<int>(state.range(0));
    const Eigen::MatrixXd m = random_symmetric(n);
    Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(n);
    for (auto _ : state) {
        es.compute(m, Eigen::ComputeEigenvectors);
        benchmark::DoNotOptimize(es.eigenvalues().data());
        benchmark::DoNotOptimize(es.eigenvectors().data());
        benchmark::ClobberMemory();
    }
}

void orders(benchmark::internal::Benchmark *b)
{
    for (int n : {3, 10, 50}) b->Arg(n);
}

BENCHMARK(BM_jacobi)->Apply(orders);
BENCHMARK(BM_eigen_self_adjoint)->Apply(orders);

} // namespace
