// fuzz_eigen.cpp — the eigen-systems (Jacobi, the generalised symmetric-
// definite problem, power iteration) on arbitrary matrices (the fits and
// differential geometry have harnesses of their own). Promises checked where
// the input meets the contract: Jacobi's eigenpairs of a clean symmetric
// matrix satisfy A v = lambda v, the generalised ones A x = lambda B x.
#include <algorithm>

#include "fuzz_common.h"

namespace
{

using Vec = std::vector<double>;

std::size_t sz(int n) { return static_cast<std::size_t>(std::max(n, 1)); }

std::vector<double *> rows_of(Vec &block, int n)
{
    std::vector<double *> r(sz(n));
    for (int i = 0; i < n; ++i) r[static_cast<std::size_t>(i)] = block.data() + i * n;
    return r;
}

bool moderate(double v) { return std::isfinite(v) && std::fabs(v) <= 1e6; }

// A symmetric matrix from the input; whether every element is moderate.
bool symmetric(qxfuzz::Reader &in, Vec &a, int n)
{
    bool clean = true;
    for (int i = 0; i < n; ++i)
        for (int j = i; j < n; ++j) {
            const double v = in.real();
            clean = clean && moderate(v);
            a[static_cast<std::size_t>(i * n + j)] = a[static_cast<std::size_t>(j * n + i)] = v;
        }
    return clean;
}

double norm_inf(const Vec &a)
{
    double m = 0.0;
    for (double v : a) m = std::max(m, std::fabs(v));
    return m;
}

// ||A x - lambda B x|| for column j of the flat X (B = identity when null).
void check_pair(const char *what, const Vec &A, const Vec *B, int n, const Vec &X, double lambda,
                int j, double scale)
{
    for (int i = 0; i < n; ++i) {
        double r = 0.0;
        for (int k = 0; k < n; ++k) {
            const double xk = X[static_cast<std::size_t>(k * n + j)];
            const double b = B ? (*B)[static_cast<std::size_t>(i * n + k)] : (i == k ? 1.0 : 0.0);
            r += A[static_cast<std::size_t>(i * n + k)] * xk - lambda * b * xk;
        }
        if (!(std::fabs(r) <= scale)) {
            std::fprintf(stderr, "n %d, pair %d, lambda %.17g, residual %.3g, bound %.3g\n", n, j,
                         lambda, r, scale);
            qxfuzz::finding(what);
        }
    }
}

void fuzz_jacobi(qxfuzz::Reader &in)
{
    const int n = in.integer(-1, in.flag() ? 60 : 6);
    const int limit = in.flag() ? 60 : in.integer(-1, 80);
    Vec a(sz(n) * sz(n)), v(a.size(), std::nan("")), d(sz(n), std::nan(""));
    const bool clean = symmetric(in, a, n);
    const Vec a0 = a;
    auto ar = rows_of(a, n), vr = rows_of(v, n);
    int nrot = -1;
    qxfuzz::arm_fault(in);
    const bool returned = qxfuzz::call(
        [&] { NR_ask_eigenvalues_jacobi(ar.data(), n, limit, d.data(), vr.data(), &nrot); });
    if (!returned || n < 1) return;
    if (nrot < 0) qxfuzz::finding("NR_ask_eigenvalues_jacobi: negative rotation count");
    // Converged (no report) on a clean matrix: every pair holds (to the 1.0e-10 of
    // coupling the absolute convergence test leaves), v is orthogonal, the trace kept.
    if (clean && limit == 60 && qxsys_report_count() == 0) {
        double trace = 0.0, sum = 0.0;
        for (int i = 0; i < n; ++i) {
            trace += a0[static_cast<std::size_t>(i * n + i)];
            sum += d[static_cast<std::size_t>(i)];
            for (int j = 0; j < n; ++j) {
                double dot = 0.0;
                for (int k = 0; k < n; ++k)
                    dot += v[static_cast<std::size_t>(k * n + i)] *
                           v[static_cast<std::size_t>(k * n + j)];
                if (!(std::fabs(dot - (i == j ? 1.0 : 0.0)) <= 1e-12 * (n + 1) * (nrot + 1)))
                    qxfuzz::finding("NR_ask_eigenvalues_jacobi: v is not orthogonal");
            }
        }
        if (!(std::fabs(trace - sum) <= 1e-12 * (n + 1) * (nrot + 1) * norm_inf(a0) + 1e-300)) {
            std::fprintf(stderr, "n %d, nrot %d, trace %.17g, sum %.17g\n", n, nrot, trace, sum);
            qxfuzz::finding("NR_ask_eigenvalues_jacobi: the trace is not kept");
        }
        const double scale = 1e-9 * (n + 1) * norm_inf(a0) * n + 1e-9;
        for (int j = 0; j < n; ++j)
            check_pair("NR_ask_eigenvalues_jacobi: A v != lambda v", a0, nullptr, n, v,
                       d[static_cast<std::size_t>(j)], j, scale);
    }
}

void fuzz_generalised(qxfuzz::Reader &in)
{
    const int n = in.integer(-1, in.flag() ? 30 : 5);
    Vec A(sz(n) * sz(n)), B(A.size()), X(A.size(), std::nan("")), lambda(sz(n), std::nan(""));
    const bool clean = symmetric(in, A, n);
    const bool spd = in.flag();
    if (spd) { // B = G G^T + n I, well conditioned
        Vec g(A.size());
        for (double &x : g) x = std::fmod(in.finite_real(), 4.0);
        for (int i = 0; i < n; ++i)
            for (int j = 0; j < n; ++j) {
                double s = i == j ? n : 0.0;
                for (int k = 0; k < n; ++k)
                    s += g[static_cast<std::size_t>(i * n + k)] *
                         g[static_cast<std::size_t>(j * n + k)];
                B[static_cast<std::size_t>(i * n + j)] = s;
            }
    } else {
        symmetric(in, B, n);
    }
    const Vec B0 = B;
    int nrot = -1, status = -1;
    qxfuzz::arm_fault(in);
    const bool returned = qxfuzz::call([&] {
        NR_generalized_eigenvalues_symm(A.data(), B.data(), n, 60, lambda.data(), X.data(), &nrot,
                                        &status);
    });
    if (!returned) return;
    if (status < 0 || status > 3)
        qxfuzz::finding("NR_generalized_eigenvalues_symm: unknown status");
    if (spd && status == 1) qxfuzz::finding("NR_generalized_eigenvalues_symm: SPD B refused");
    if (clean && spd && status == 0 && qxsys_report_count() == 0 && n > 0) {
        double xmax = 0.0;
        for (double x : X) xmax = std::max(xmax, std::fabs(x));
        const double scale =
            1e-8 * (n + 1) * (norm_inf(A) + norm_inf(lambda) * norm_inf(B0)) * n * xmax +
            1e-9 * xmax;
        for (int j = 0; j < n; ++j)
            check_pair("NR_generalized_eigenvalues_symm: A x != lambda B x", A, &B0, n, X,
                       lambda[static_cast<std::size_t>(j)], j, scale);
    }
}

void fuzz_power(qxfuzz::Reader &in)
{
    const int n = in.integer(-1, 20);
    Vec a(sz(n) * sz(n));
    for (double &v : a) v = in.real();
    auto ar = rows_of(a, n);
    Vec x0 = in.reals(sz(n)), x(sz(n), std::nan(""));
    double lambda = std::nan("");
    int notconverged = -1;
    const int limit = in.integer(-1, 200);
    qxfuzz::arm_fault(in);
    qxfuzz::call([&] {
        NR_ask_max_eigen_val_vec(n, ar.data(), limit, x0.data(), &lambda,
                                 in.flag() ? x0.data() : x.data(), &notconverged);
    });
    if (notconverged != 0 && notconverged != 1 && !qxfuzz::unwound())
        qxfuzz::finding("NR_ask_max_eigen_val_vec: flag not written");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    qxfuzz::Reader in(data, size);
    qxfuzz::begin(in.integer(0, 1));
    switch (in.integer(0, 2)) {
    case 0:
        fuzz_jacobi(in);
        break;
    case 1:
        fuzz_generalised(in);
        break;
    default:
        fuzz_power(in);
        break;
    }
    qxfuzz::end();
    return 0;
}
