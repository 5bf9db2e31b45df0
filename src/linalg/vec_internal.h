// vec_internal.h — the arithmetic kernels shared by mc_math, vec2, vec3,
// vector_ftn and other library code, and hidden entry points for calls from
// inside the library.
//
// The kernels are inline and check nothing: they exist so that the hot
// routines are compiled into their callers instead of being called through
// the exported (interposable) names. The qx_vec*_ functions are the exported
// routines' bodies under hidden names: they make the same assertions, from
// the same module (vec2, vec3), as the exported names, so a library caller
// that must behave exactly like VEC3_unitize (and so on) uses them to skip
// the call through the shared library's symbol table.
#ifndef QXMATH_LINALG_VEC_INTERNAL_H
#define QXMATH_LINALG_VEC_INTERNAL_H

#include <cmath>

namespace qx::vec
{

// A.B summed x, y, z in that order (the order fixes the rounding).
inline double dot3(const double *a, const double *b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

inline double dot2(const double *a, const double *b) { return a[0] * b[0] + a[1] * b[1]; }

// K = A x B. Every input is read before K is written, so K may alias.
inline void cross3(const double *a, const double *b, double *k)
{
    const double x = a[1] * b[2] - a[2] * b[1];
    const double y = a[2] * b[0] - a[0] * b[2];
    const double z = a[0] * b[1] - b[0] * a[1];
    k[0] = x;
    k[1] = y;
    k[2] = z;
}

// Unit vector by the multiply-by-reciprocal rule of VEC3_unitize: fails
// (zeros, result 0) when tol.tol >= |V|^2. V is read before W is written.
// The sum of squares is +0 or more, or NaN (which passes the test), so it
// needs no fabs.
inline int unitize3(const double *v, double tol, double *length, double *w)
{
    const double x = v[0], y = v[1], z = v[2];
    const double s = x * x + y * y + z * z;
    if (tol * tol >= s) {
        *length = 0.0;
        w[0] = w[1] = w[2] = 0.0;
        return 0;
    }
    const double len = std::sqrt(s);
    const double r = 1.0 / len;
    *length = len;
    w[0] = r * x;
    w[1] = r * y;
    w[2] = r * z;
    return 1;
}

inline int unitize2(const double *v, double tol, double *length, double *w)
{
    const double x = v[0], y = v[1];
    const double s = x * x + y * y;
    if (tol * tol >= s) {
        *length = 0.0;
        w[0] = w[1] = 0.0;
        return 0;
    }
    const double len = std::sqrt(s);
    const double r = 1.0 / len;
    *length = len;
    w[0] = r * x;
    w[1] = r * y;
    return 1;
}

// The first test of the parallel and perpendicular routines, on squared
// lengths: a vector within tol of zero is parallel and perpendicular to
// everything (inclusive). After it, their ratios have a non-zero divisor.
inline int either_null(double a2, double b2, double tol)
{
    const double t2 = tol * tol;
    return (a2 <= t2) | (b2 <= t2);
}

// The range assertion of the VEC2_/VEC3_ routines: every component below
// 1e19 in magnitude (a NaN fails). The three tests are combined without
// branches.
inline bool in_range3(const double *v)
{
    constexpr double k = 1e19;
    return (std::fabs(v[0]) < k) & (std::fabs(v[1]) < k) & (std::fabs(v[2]) < k);
}

inline bool in_range2(const double *v)
{
    constexpr double k = 1e19;
    return (std::fabs(v[0]) < k) & (std::fabs(v[1]) < k);
}

// The report of a failed assertion ("Assertion failed: %s", "condition"),
// kept out of line so that the checked routines need no stack frame on
// their normal path.
[[gnu::cold, gnu::noinline]] void assertion_failed(const char *file, int line); // in vec3.cpp

} // namespace qx::vec

// QX_ASSERT with its report out of line: the same report from the same file
// and line.
#define QX_VEC_ASSERT(cond)                                                                        \
    do {                                                                                           \
        if (QX_CHECKING() && !(cond)) qx::vec::assertion_failed(QX_SOURCE_FILE, __LINE__);         \
    } while (0)

// Hidden twins of the exported routines (same results, same assertions and
// report module); see vector.h for their contracts.
int qx_vec2_unitize(const double V[2], double tol, double *length, double W[2]);
int qx_vec3_unitize(const double V[3], double tol, double *length, double W[3]);
int qx_vec3_ask_perpendicular(const double V[3], double W[3]);

#endif
