// Plane fit to 10^6 noisy points: LSFIT_plane_to_points (centred copy,
// scatter matrix, Jacobi, deviations) against Eigen doing the same total
// least squares the natural way (centroid, 3x3 covariance of the centred
// points, SelfAdjointEigenSolver), without and with the deviation pass that
// LSFIT_plane_to_points also makes. Run with --benchmark_repetitions for
// medians (the registrations below ask for 9).
#include <cmath>
#include <random>
#include <vector>

#include <Eigen/Dense>
#include <benchmark/benchmark.h>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>

namespace
{

constexpr int kPoints = 1000000;

// Points near the plane through (3, -1, 2) with normal (1, 2, 2)/3, spread
// over a 100 x 100 patch, noise 0.01 along the normal.
const std::vector<double> &points()
{
    static const std::vector<double> p = [] {
        std::mt19937_64 rng(42);
        std::uniform_real_distribution<double> u(-50.0, 50.0);
        std::normal_distribution<double> noise(0.0, 0.01);
        const Eigen::Vector3d n(1.0 / 3, 2.0 / 3, 2.0 / 3), o(3, -1, 2);
        const Eigen::Vector3d e1 = n.unitOrthogonal(), e2 = n.cross(e1);
        std::vector<double> v;
        v.reserve(3 * static_cast<size_t>(kPoints));
        for (int i = 0; i < kPoints; ++i) {
            const Eigen::Vector3d x = o + u(rng) * e1 + u(rng) * e2 + noise(rng) * n;
            v.insert(v.end(), {x(0), x(1), x(2)});
        }
        return v;
    }();
    return p;
}

void BM_lsfit_plane_to_points(benchmark::State &state)
{
    const std::vector<double> &p = points();
    double point[3], normal[3], dev[3];
    int degenerate = 0;
    for (auto _ : state) {
        LSFIT_plane_to_points(p.data(), kPoints, point, normal, &degenerate, dev);
        benchmark::DoNotOptimize(normal);
        benchmark::DoNotOptimize(dev);
        benchmark::ClobberMemory();
    }
    qxsys_end_operation();
}

using Cloud = Eigen::Map<const Eigen::Matrix<double, 3, Eigen::Dynamic>>;

// Normal and centroid by Eigen; with deviations, also the largest and mean
// distance from the plane (what LSFIT_plane_to_points writes besides).
template <bool kDeviations> void BM_eigen_plane(benchmark::State &state)
{
    const std::vector<double> &p = points();
    const Cloud x(p.data(), 3, kPoints);
    for (auto _ : state) {
        const Eigen::Vector3d mean = x.rowwise().mean();
        const Eigen::Matrix3Xd centred = x.colwise() - mean;
        const Eigen::Matrix3d cov = centred * centred.transpose();
        const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> es(cov);
        const Eigen::Vector3d normal = es.eigenvectors().col(0);
        benchmark::DoNotOptimize(normal.data());
        if constexpr (kDeviations) {
            const auto dist = ((normal.transpose() * x).array() - normal.dot(mean)).abs();
            const double worst = dist.maxCoeff(), mean_dist = dist.mean();
            benchmark::DoNotOptimize(worst);
            benchmark::DoNotOptimize(mean_dist);
        }
        benchmark::ClobberMemory();
    }
}

BENCHMARK(BM_lsfit_plane_to_points)->Unit(benchmark::kMillisecond)->Repetitions(9);
BENCHMARK(BM_eigen_plane<false>)->Unit(benchmark::kMillisecond)->Repetitions(9);
BENCHMARK(BM_eigen_plane<true>)->Unit(benchmark::kMillisecond)->Repetitions(9);

} // namespace
