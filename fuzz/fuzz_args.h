// fuzz_args.h — the argument buffers of the harnesses that call many small
// routines (the geometry and the numbered routines): eight rows of input
// filled from the fuzzer's bytes, four output rows prefilled with NaN, four
// ints, and fail(), which prints them all with a broken promise so that the
// case can be written down as a test.
#ifndef QXMATH_FUZZ_FUZZ_ARGS_H
#define QXMATH_FUZZ_FUZZ_ARGS_H

#include <algorithm>

#include "fuzz_common.h"

namespace qxfuzz
{

// Buffers: most arguments are arbitrary, some moderate, some unit vectors.
struct Args {
    double a[8][16];
    double out[4][16];
    int i[4];
};

inline Args g_args; // the current input's arguments, printed with a finding

// A broken promise: the arguments (rows of the input buffers and outputs) go to
// stderr with the message, so that the case can be written down as a test.
[[noreturn]] inline void fail(const char *what)
{
    for (const auto &row : g_args.a) {
        for (int k = 0; k < 16; ++k) std::fprintf(stderr, " %.17g", row[k]);
        std::fprintf(stderr, "\n");
    }
    for (const auto &row : g_args.out) {
        std::fprintf(stderr, "out");
        for (int k = 0; k < 16; ++k) std::fprintf(stderr, " %.17g", row[k]);
        std::fprintf(stderr, "\n");
    }
    std::fprintf(stderr, "tol[0..2] %.17g %.17g %.17g\n", acom_.tolerance[0], acom_.tolerance[1],
                 acom_.tolerance[2]);
    finding(what);
}

inline void fill(qxfuzz::Reader &in, Args &g)
{
    const int style = in.integer(0, 3);
    for (auto &row : g.a)
        for (double &x : row) x = style == 0 ? in.real() : in.moderate(256.0);
    if (style == 3) { // some unit vectors among them
        for (auto &row : g.a) {
            const double n = std::sqrt(dot3(row, row));
            if (n > 0.0)
                for (int k = 0; k < 3; ++k) row[k] /= n;
        }
    }
    for (auto &row : g.out) std::fill(row, row + 16, std::nan(""));
    for (int &k : g.i)
        k = in.flag() ? in.integer(-2, 9) : static_cast<int>(in.integer(0, 65535)) - 32768;
}

} // namespace qxfuzz

#endif
