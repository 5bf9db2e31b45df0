// Vector and orientation-matrix kernels against Eigen's fixed-size types
// doing the same job, in one run:
//   VEC3_unitize          Vector3d::normalized (plus the norm, which
//                         VEC3_unitize also returns)
//   MTX3_multiply         Matrix3d product; the library routine also tests
//                         both inputs and the product for ortho-normality,
//                         so a second Eigen peer adds that test
//                         (Matrix3d product + three R.R^T checks)
//   MTX3_rot_about_axis   AngleAxisd(angle, axis.normalized()).toRotationMatrix()
//   MTX3_ortho_normalize  of a rotation perturbed by 1e-9: Gram-Schmidt on the
//                         rows (X normalized, Y orthogonalised and
//                         normalized, Z = X x Y); the polar factor U.V^T of a
//                         JacobiSVD is listed for scale
// Every benchmark walks the same pool of 256 inputs so that nothing is
// constant-folded; the library is the shared library, called as a host calls it.
#include <array>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include <benchmark/benchmark.h>
#include <Eigen/Dense>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>

namespace
{

using Mat = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using M9 = std::array<double, 9>;
constexpr std::size_t kPool = 256; // a power of two

struct Pools {
    std::vector<Eigen::Vector3d> vectors;
    std::vector<double> angles;
    std::vector<M9> rotations; // ortho-normal by MTX3_is_ortho_normal
    std::vector<M9> perturbed; // rotations + 1e-9 noise, not ortho-normal

    Pools()
    {
        std::mt19937_64 rng(42);
        std::uniform_real_distribution<> u(-1, 1);
        while (rotations.size() < kPool) {
            const Eigen::Vector3d v(u(rng), u(rng), u(rng));
            if (v.norm() < 0.1) continue;
            const double angle = 3.0 * u(rng);
            M9 r;
            Mat::Map(r.data()) = Eigen::AngleAxisd(angle, v.normalized()).toRotationMatrix();
            if (!MTX3_is_ortho_normal(r.data())) continue;
            M9 p = r;
            for (double &e : p) e += 1e-9 * u(rng);
            if (MTX3_is_ortho_normal(p.data())) continue;
            vectors.push_back(v * 10.0);
            angles.push_back(angle);
            rotations.push_back(r);
            perturbed.push_back(p);
        }
    }
};

const Pools &pools()
{
    static const Pools p;
    return p;
}

// ---- VEC3_unitize --------------------------------------------------------

void BM_VEC3_unitize(benchmark::State &state)
{
    const auto &v = pools().vectors;
    std::size_t i = 0;
    for (auto _ : state) {
        double w[3], length;
        benchmark::DoNotOptimize(VEC3_unitize(v[i++ % kPool].data(), 1e-10, &length, w));
        benchmark::DoNotOptimize(w);
        benchmark::DoNotOptimize(length);
    }
}
BENCHMARK(BM_VEC3_unitize);

void BM_Eigen_Vector3d_normalized(benchmark::State &state)
{
    const auto &v = pools().vectors;
    std::size_t i = 0;
    for (auto _ : state) {
        const Eigen::Vector3d &a = v[i++ % kPool];
        double length = a.norm();
        Eigen::Vector3d w = a.normalized();
        benchmark::DoNotOptimize(w);
        benchmark::DoNotOptimize(length);
    }
}
BENCHMARK(BM_Eigen_Vector3d_normalized);

// ---- MTX3_multiply -------------------------------------------------------

void BM_MTX3_multiply(benchmark::State &state)
{
    const auto &r = pools().rotations;
    std::size_t i = 0;
    for (auto _ : state) {
        double p[9];
        const std::size_t k = i++;
        benchmark::DoNotOptimize(MTX3_multiply(r[k % kPool].data(), r[(k + 7) % kPool].data(), p));
        benchmark::DoNotOptimize(p);
    }
}
BENCHMARK(BM_MTX3_multiply);

void BM_Eigen_Matrix3d_product(benchmark::State &state)
{
    const auto &r = pools().rotations;
    std::size_t i = 0;
    for (auto _ : state) {
        const std::size_t k = i++;
        Mat p = Mat::Map(r[(k + 7) % kPool].data()) * Mat::Map(r[k % kPool].data());
        benchmark::DoNotOptimize(p);
    }
}
BENCHMARK(BM_Eigen_Matrix3d_product);

bool eigen_ortho_normal(const Mat &m)
{
    return ((m * m.transpose() - Mat::Identity()).cwiseAbs().array() <= 1e-14).all();
}

void BM_Eigen_Matrix3d_product_checked(benchmark::State &state)
{
    const auto &r = pools().rotations;
    std::size_t i = 0;
    for (auto _ : state) {
        const std::size_t k = i++;
        const auto a = Mat::Map(r[k % kPool].data()), b = Mat::Map(r[(k + 7) % kPool].data());
        Mat p = b * a;
        bool ok = eigen_ortho_normal(a) && eigen_ortho_normal(b) && eigen_ortho_normal(p);
        benchmark::DoNotOptimize(p);
        benchmark::DoNotOptimize(ok);
    }
}
BENCHMARK(BM_Eigen_Matrix3d_product_checked);

// ---- MTX3_rot_about_axis -------------------------------------------------

void BM_MTX3_rot_about_axis(benchmark::State &state)
{
    const auto &p = pools();
    std::size_t i = 0;
    for (auto _ : state) {
        double m[9];
        const std::size_t k = i++ % kPool;
        MTX3_rot_about_axis(p.angles[k], p.vectors[k].data(), m);
        benchmark::DoNotOptimize(m);
    }
}
BENCHMARK(BM_MTX3_rot_about_axis);

void BM_Eigen_AngleAxisd_toRotationMatrix(benchmark::State &state)
{
    const auto &p = pools();
    std::size_t i = 0;
    for (auto _ : state) {
        const std::size_t k = i++ % kPool;
        Eigen::Matrix3d m =
            Eigen::AngleAxisd(p.angles[k], p.vectors[k].normalized()).toRotationMatrix();
        benchmark::DoNotOptimize(m);
    }
}
BENCHMARK(BM_Eigen_AngleAxisd_toRotationMatrix);

// ---- MTX3_ortho_normalize ------------------------------------------------

void BM_MTX3_ortho_normalize(benchmark::State &state)
{
    const auto &q = pools().perturbed;
    std::size_t i = 0;
    for (auto _ : state) {
        double m[9];
        std::memcpy(m, q[i++ % kPool].data(), sizeof m);
        benchmark::DoNotOptimize(MTX3_ortho_normalize(m));
        benchmark::DoNotOptimize(m);
    }
}
BENCHMARK(BM_MTX3_ortho_normalize);

void BM_Eigen_gram_schmidt(benchmark::State &state)
{
    const auto &q = pools().perturbed;
    std::size_t i = 0;
    for (auto _ : state) {
        const auto m = Mat::Map(q[i++ % kPool].data());
        Mat r;
        r.row(0) = m.row(0).normalized();
        r.row(1) = (m.row(1) - m.row(1).dot(r.row(0)) * r.row(0)).normalized();
        r.row(2) = r.row(0).cross(r.row(1));
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK(BM_Eigen_gram_schmidt);

void BM_Eigen_polar_svd(benchmark::State &state)
{
    const auto &q = pools().perturbed;
    std::size_t i = 0;
    for (auto _ : state) {
        const Eigen::Matrix3d m = Mat::Map(q[i++ % kPool].data());
        Eigen::JacobiSVD<Eigen::Matrix3d> svd(m, Eigen::ComputeFullU | Eigen::ComputeFullV);
        Eigen::Matrix3d r = svd.matrixU() * svd.matrixV().transpose();
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK(BM_Eigen_polar_svd);

} // namespace

// ---- 4x4 transforms --------------------------------------------------------
//   MTX4_invert    Matrix4d::inverse() (Eigen's closed-form 4x4 inverse); the
//                  library factors with ludcmp_a (which takes its scratch
//                  vector from the host allocator) and solves four columns
//                  with lubksb_a
//   MTX4_multiply  Matrix4d product
// on one pool of 256 transforms: random rotations, scaled by factors in
// [0.5, 2.5] per axis, translations in [-100, 100].

namespace
{

using Mat4 = Eigen::Matrix<double, 4, 4, Eigen::RowMajor>;
using M16 = std::array<double, 16>;

const std::vector<M16> &transforms()
{
    static const std::vector<M16> pool = [] {
        std::mt19937_64 rng(4242);
        std::uniform_real_distribution<> u(-1, 1);
        std::vector<M16> p;
        while (p.size() < kPool) {
            const Eigen::Vector3d axis(u(rng), u(rng), u(rng));
            if (axis.norm() < 0.1) continue;
            Mat4 m = Mat4::Identity();
            const Eigen::Vector3d scale(1.5 + u(rng), 1.5 + u(rng), 1.5 + u(rng));
            m.topLeftCorner<3, 3>() =
                Eigen::AngleAxisd(3.0 * u(rng), axis.normalized()).toRotationMatrix() *
                scale.asDiagonal();
            m.topRightCorner<3, 1>() = 100.0 * Eigen::Vector3d(u(rng), u(rng), u(rng));
            M16 a;
            Mat4::Map(a.data()) = m;
            p.push_back(a);
        }
        return p;
    }();
    return pool;
}

void BM_MTX4_invert(benchmark::State &state)
{
    const auto &t = transforms();
    std::size_t i = 0;
    for (auto _ : state) {
        double r[16];
        benchmark::DoNotOptimize(MTX4_invert(t[i++ % kPool].data(), r));
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK(BM_MTX4_invert);

void BM_Eigen_Matrix4d_inverse(benchmark::State &state)
{
    const auto &t = transforms();
    std::size_t i = 0;
    for (auto _ : state) {
        Mat4 r = Mat4::Map(t[i++ % kPool].data()).inverse();
        benchmark::DoNotOptimize(r);
    }
}
BENCHMARK(BM_Eigen_Matrix4d_inverse);

void BM_MTX4_multiply(benchmark::State &state)
{
    const auto &t = transforms();
    std::size_t i = 0;
    for (auto _ : state) {
        double p[16];
        const std::size_t k = i++;
        MTX4_multiply(t[k % kPool].data(), t[(k + 7) % kPool].data(), p);
        benchmark::DoNotOptimize(p);
    }
}
BENCHMARK(BM_MTX4_multiply);

void BM_Eigen_Matrix4d_product(benchmark::State &state)
{
    const auto &t = transforms();
    std::size_t i = 0;
    for (auto _ : state) {
        const std::size_t k = i++;
        Mat4 p = Mat4::Map(t[(k + 7) % kPool].data()) * Mat4::Map(t[k % kPool].data());
        benchmark::DoNotOptimize(p);
    }
}
BENCHMARK(BM_Eigen_Matrix4d_product);

} // namespace
