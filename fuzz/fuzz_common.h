// fuzz_common.h — what every libFuzzer harness of libqxmath shares.
//
// Reader turns the fuzzer's bytes into choices, sizes and doubles. A double
// is a special value one time in three (NaN, ±Inf, subnormals, ±1e300, the
// extremes, signed zeros), a small or moderate number most other times, and
// raw bits otherwise, so that both the degenerate and the ordinary paths are
// reached. Once the bytes run out every read yields zero.
//
// Each input is one host operation: begin() resets the reference host and the
// session blocks and sets the checking level; call() runs library code under
// a trap, as a host that unwinds on error does (at level 0 the reports are
// recorded and the calls return); end() ends the operation and stops the run
// with a message when a host block outlives it that the harness did not keep
// on purpose. arm_fault() may make one allocation of the input fail.
#ifndef QXMATH_FUZZ_FUZZ_COMMON_H
#define QXMATH_FUZZ_FUZZ_COMMON_H

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <vector>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>
#include <qxsys/qxsys.hpp>

namespace qxfuzz
{

class Reader
{
  public:
    Reader(const std::uint8_t *data, std::size_t size) : data_(data), size_(size) {}

    bool empty() const { return pos_ >= size_; }

    std::uint8_t byte() { return pos_ < size_ ? data_[pos_++] : 0; }

    bool flag() { return (byte() & 1) != 0; }

    // An integer in [lo, hi] (lo when the bytes have run out).
    int integer(int lo, int hi)
    {
        if (hi <= lo) return lo;
        const std::uint32_t span = static_cast<std::uint32_t>(hi - lo) + 1u;
        std::uint32_t v = byte();
        if (span > 256u) v = (v << 8) | byte();
        if (span > 65536u) v = (v << 8) | byte();
        return lo + static_cast<int>(v % span);
    }

    // A moderate value: a signed 16-bit fixed-point number, hi * 256 + lo over
    // unit (zero, or of magnitude 1/unit to 32768/unit).
    double moderate(double unit)
    {
        const int hi = static_cast<std::int8_t>(byte());
        return (hi * 256 + byte()) / unit;
    }

    double real()
    {
        const std::uint8_t selector = byte();
        switch (selector % 24) {
        case 0:
            return std::numeric_limits<double>::quiet_NaN();
        case 1:
            return (selector & 32) ? std::numeric_limits<double>::infinity()
                                   : -std::numeric_limits<double>::infinity();
        case 2:
            return (selector & 32) ? std::numeric_limits<double>::denorm_min() : -DBL_MIN / 3.0;
        case 3:
            return (selector & 32) ? 1e300 : -1e300;
        case 4:
            return (selector & 32) ? DBL_MAX : DBL_MIN;
        case 5:
            return (selector & 32) ? 0.0 : -0.0;
        case 6:
        case 7:
        case 8:
        case 9:
        case 10:
        case 11: // small values with ties and repeats likely
            return static_cast<double>(static_cast<std::int8_t>(byte())) / 4.0;
        case 12:
        case 13:
        case 14:
        case 15:
        case 16:
        case 17: { // moderate values with a fraction
            const int hi = static_cast<std::int8_t>(byte());
            const int lo = byte();
            return (hi * 256 + lo) / 256.0;
        }
        case 18: // tiny offsets near 1, for tolerant comparisons
            return 1.0 + static_cast<std::int8_t>(byte()) * 1e-12;
        default: {
            std::uint64_t bits = 0;
            for (int i = 0; i < 8; ++i) bits = (bits << 8) | byte();
            double d;
            std::memcpy(&d, &bits, sizeof d);
            return d;
        }
        }
    }

    // A double that is never NaN or infinite (data a contract covers).
    double finite_real()
    {
        const double d = real();
        return std::isfinite(d) ? d : 0.0;
    }

    std::vector<double> reals(std::size_t n)
    {
        std::vector<double> v(n);
        for (double &d : v) d = real();
        return v;
    }

  private:
    const std::uint8_t *data_;
    std::size_t size_;
    std::size_t pos_ = 0;
};

// Whether a call of the current input was unwound by a report.
inline double dot3(const double *a, const double *b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline bool all_finite(const double *v, int n)
{
    for (int i = 0; i < n; ++i)
        if (!std::isfinite(v[i])) return false;
    return true;
}

// Whether every value lies within [-limit, limit] (NaN does not).
inline bool bounded(const double *v, int n, double limit)
{
    for (int i = 0; i < n; ++i)
        if (!(std::fabs(v[i]) <= limit)) return false;
    return true;
}

inline bool &unwound()
{
    static bool flag = false;
    return flag;
}

// Resets the host and the session blocks for one input, at a checking level.
inline void begin(int checking_level)
{
    qxsys_reset();
    qxsys_set_error_stream(nullptr);
    qxsys_set_log_stream(nullptr);
    qxsys_end_operation();
    unwound() = false;
    MACH__checking_level = checking_level;
    std::memset(&acom_, 0, sizeof acom_);
    std::memset(&pxsfac_, 0, sizeof pxsfac_);
    std::memset(&spint_, 0, sizeof spint_);
    std::memset(&srfc1_, 0, sizeof srfc1_);
}

// Opens a session as a host does, with a model scale drawn from the input.
inline void open_session(Reader &in)
{
    const int mode = 0;
    sys10_(&mode);
    static const double scales[] = {1.0, 1000.0, 0.001, 25.4, 1e6, 1e-6};
    acom_.model_scale = scales[in.integer(0, 5)];
    acom_.gca[31] = in.flag() ? 1 : 0;
    sys21_();
}

// With a small chance, makes one of the next allocations fail.
inline void arm_fault(Reader &in)
{
    const int choice = in.integer(0, 15);
    if (choice >= 12) qxsys_fail_allocation(choice - 11 + 4 * in.integer(0, 7));
}

// Runs f with a trap; a report ends it (returns false), as it does in a host.
template <class F> bool call(F &&f)
{
    try {
        qxsys::guarded(f);
        return true;
    } catch (const qxsys::report_error &) {
        unwound() = true;
        return false;
    }
}

// Ends the host operation. A persistent block beyond the kept ones is a
// finding. So is a transient block beyond the kept ones when no call of the
// input was unwound: scratch memory is freed on every path that returns (an
// unwound call may leave its scratch to the end of the operation, as the
// host allows).
inline void end(std::size_t kept_transient = 0, std::size_t kept_persistent = 0)
{
    qxsys_fail_allocation(0);
    qxsys_memory_stats stats;
    qxsys_memory_stats_get(&stats);
    if (!unwound() && stats.transient_blocks != kept_transient) {
        std::fprintf(stderr,
                     "qxfuzz: %zu transient blocks alive after the calls returned, %zu kept\n",
                     stats.transient_blocks, kept_transient);
        std::abort();
    }
    unwound() = false;
    qxsys_end_operation();
    qxsys_memory_stats_get(&stats);
    if (stats.persistent_blocks != kept_persistent) {
        std::fprintf(stderr, "qxfuzz: %zu persistent blocks alive after the operation, %zu kept\n",
                     stats.persistent_blocks, kept_persistent);
        std::abort();
    }
}

// Stops the run with a message: a result that breaks a documented promise.
[[noreturn]] inline void finding(const char *what)
{
    std::fprintf(stderr, "qxfuzz: %s\n", what);
    std::abort();
}

} // namespace qxfuzz

#endif
