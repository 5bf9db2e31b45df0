// Dense LU: ludcmp_a + lubksb_a (Crout with implicit scaling, row-pointer
// storage) against Eigen's PartialPivLU (factor + solve) on the same
// matrices, n = 4 .. 512. Each iteration starts again from the original
// matrix (both factor in place of a copy: Eigen copies into its own storage).
#include <cstring>
#include <random>
#include <vector>

#include <Eigen/Dense>
#include <benchmark/benchmark.h>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>

namespace
{

// The matrix and right-hand side of order n, the same for every contender:
// uniform entries, diagonally heavy so that both pivot rarely alike.
struct Problem {
    explicit Problem(int n) : A(n, n), b(n)
    {
        std::mt19937_64 rng(1234u + static_cast<unsigned>(n));
        std::uniform_real_distribution<double> u(-1.0, 1.0);
        for (int i = 0; i < n; ++i) {
            for (int j = 0; j < n; ++j) A(i, j) = u(rng);
            b(i) = u(rng);
        }
    }
    Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor> A;
    Eigen::VectorXd b;
};

void BM_ludcmp_lubksb(benchmark::State &state)
{
    const int n = static_cast<int>(state.range(0));
    const Problem p(n);
    const std::size_t nn = static_cast<std::size_t>(n);
    std::vector<double> block(nn * nn), x(nn);
    std::vector<double *> rows(nn);
    for (std::size_t i = 0; i < nn; ++i) rows[i] = block.data() + i * nn;
    std::vector<int> indx(nn);
    double d = 0.0;
    for (auto _ : state) {
        for (std::size_t i = 0; i < nn; ++i)
            std::memcpy(rows[i], p.A.data() + i * nn, nn * sizeof(double));
        std::memcpy(x.data(), p.b.data(), nn * sizeof(double));
        if (ludcmp_a(rows.data(), n, indx.data(), &d) != 0) state.SkipWithError("singular");
        lubksb_a(rows.data(), n, indx.data(), x.data());
        benchmark::DoNotOptimize(x.data());
        benchmark::ClobberMemory();
    }
    qxsys_end_operation();
}

void BM_eigen_partial_piv_lu(benchmark::State &state)
{
    const int n = static_cast<int>(state.range(0));
    const Problem p(n);
    const Eigen::MatrixXd A = p.A; // Eigen's own (column-major) layout
    Eigen::PartialPivLU<Eigen::MatrixXd> lu(n);
    Eigen::VectorXd x(n);
    for (auto _ : state) {
        lu.compute(A);
        x = lu.solve(p.b);
        benchmark::DoNotOptimize(x.data());
        benchmark::ClobberMemory();
    }
}

void orders(benchmark::internal::Benchmark *b)
{
    for (int n : {4, 16, 64, 256, 512}) b->Arg(n);
}

BENCHMARK(BM_ludcmp_lubksb)->Apply(orders);
BENCHMARK(BM_eigen_partial_piv_lu)->Apply(orders);

} // namespace
