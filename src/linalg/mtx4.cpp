// mtx4.cpp — 4x4 homogeneous transforms (sixteen doubles by rows, translation
// at 3, 7, 11): products, inversion by LU (ludcmp_a, lubksb_a), the tests and
// repairs of the orientation part (done by the 3x3 routines on a copy),
// comparison, and the builders: scaling about a point, rotation about an axis
// through a point (h923_, angles in degrees), mirroring in a plane (h924_),
// one coordinate system onto another.
//
// The builders that take a point form Tr(q).R.Tr(-q) by two products in a
// fixed order, so their bits are those of the products written out. The
// builders return 0 on success and 1 for a null direction (|v|^2 <= 1e-20),
// writing nothing then; they report nothing of their own.
#define QX_SOURCE_FILE "mtx4"

#include <cmath>
#include <cstring>

#include <qxmath/matrix.h>
#include <qxmath/numbered.h>
#include <qxmath/orientation.h>
#include <qxmath/transform.h>

#include "frame/check.h"
#include "linalg/vec_internal.h"
#include "numeric/lu_internal.h"

namespace
{

using qx::vec::dot3;

constexpr double kNull2 = 1.0e-20;   // squared length of a null direction (inclusive)
constexpr double kUnitTol = 1.0e-10; // unitizing tolerance
// Degrees to radians: the stored constant, one ulp below pi/180. Rotations
// by multiples of 90 degrees therefore keep entries of order 1e-17 where the
// exact rotation has zeros; callers have always seen those.
constexpr double kDegree = 0.01745329251994328;

// Two doubles processed as one: each lane does exactly the scalar
// operations, in the same order, so results are bit for bit those of scalar
// loops; this only halves the instruction count.
typedef double v2d __attribute__((vector_size(16)));

inline v2d load2(const double *p)
{
    v2d v;
    std::memcpy(&v, p, sizeof v);
    return v;
}

inline void store2(double *p, v2d v) { std::memcpy(p, &v, sizeof v); }

// r := B.A, row i of r being sum over k of B[i][k] . (row k of A), summed in
// increasing k. r must not overlap a or b.
void product(const double *a, const double *b, double *r)
{
    const v2d a0l = load2(a), a0h = load2(a + 2), a1l = load2(a + 4), a1h = load2(a + 6);
    const v2d a2l = load2(a + 8), a2h = load2(a + 10), a3l = load2(a + 12), a3h = load2(a + 14);
    for (int i = 0; i < 4; ++i) {
        const double *bi = b + 4 * i;
        const double b0 = bi[0], b1 = bi[1], b2 = bi[2], b3 = bi[3];
        store2(r + 4 * i, b0 * a0l + b1 * a1l + b2 * a2l + b3 * a3l);
        store2(r + 4 * i + 2, b0 * a0h + b1 * a1h + b2 * a2h + b3 * a3h);
    }
}

// P := B.A through a local matrix, so P may be A or B.
void multiply(const double *a, const double *b, double *p)
{
    double r[16];
    product(a, b, r);
    std::memcpy(p, r, sizeof r);
}

void identity(double *t)
{
    static const double one[16] = {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1};
    std::memcpy(t, one, sizeof one);
}

// Tr(sign . v).
void translation(const double *v, double sign, double *t)
{
    identity(t);
    t[3] = sign * v[0];
    t[7] = sign * v[1];
    t[11] = sign * v[2];
}

void orientation_of(const double *t, double *m)
{
    for (int i = 0; i < 3; ++i) std::memcpy(m + 3 * i, t + 4 * i, 3 * sizeof(double));
}

void set_orientation(const double *m, double *t)
{
    for (int i = 0; i < 3; ++i) std::memcpy(t + 4 * i, m + 3 * i, 3 * sizeof(double));
}

// The 3x3 m as orientation part, zero translation, last row 0, 0, 0, 1.
void embed(const double *m, double *t)
{
    identity(t);
    set_orientation(m, t);
}

// T := Tr(q).R.Tr(-q), as MTX4_multiply(Tr(-q), R) then MTX4_multiply(that,
// Tr(q)). R may be T.
void about_point(const double *q, const double *r, double *t)
{
    double to_origin[16], back[16], p[16];
    translation(q, -1.0, to_origin);
    translation(q, 1.0, back);
    product(to_origin, r, p);
    multiply(p, back, t);
}

// The 3x3 built by h923_ or h924_ from the direction d unitized at 1e-10
// (negated when `negate`), then Tr(q).R.Tr(-q). The caller has rejected a
// null d.
template <class Build>
void build_about_point(const double *q, const double *d, bool negate, Build build, double *t)
{
    double u[3], length, m[9], r[16];
    qx_vec3_unitize(d, kUnitTol, &length, u);
    if (negate) {
        u[0] = -u[0];
        u[1] = -u[1];
        u[2] = -u[2];
    }
    build(u, m);
    embed(m, r);
    about_point(q, r, t);
}

bool is_null(const double *v) { return dot3(v, v) <= kNull2; }

bool elements_within(const double *a, const double *b, double tol)
{
    for (int i = 0; i < 16; ++i)
        if (!(std::fabs(a[i] - b[i]) <= tol)) return false;
    return true;
}

bool is_equal(const double *a, const double *b, double tol)
{
    // Equal elements are not enough: both or neither must be ortho-normal.
    return elements_within(a, b, tol) && MTX4_is_ortho_normal(a) == MTX4_is_ortho_normal(b);
}

} // namespace

// ---- products and inversion -------------------------------------------------

void MTX4_multiply(const double A[16], const double B[16], double P[16]) { multiply(A, B, P); }

void MTX4_multiply_t(const double A[16], const double B[16], double P[16])
{
    // B.A^T is B times the transpose, formed as a plain product: element by
    // element the same operations in the same order as the dot products.
    double at[16];
    for (int i = 0; i < 4; ++i)
        for (int j = 0; j < 4; ++j) at[4 * j + i] = A[4 * i + j];
    multiply(at, B, P);
}

int MTX4_invert(const double T[16], double R[16])
{
    double lu[16];
    std::memcpy(lu, T, sizeof lu);
    double *rows[4] = {lu, lu + 4, lu + 8, lu + 12};
    int indx[4];
    double parity;
    // Any failure of the factoring (a zero row, or its scratch allocation)
    // leaves R unwritten.
    if (ludcmp_a(rows, 4, indx, &parity) != 0) return 1;
    // Column j of R is lubksb_a's solution for the unit vector e_j; the four
    // columns are solved side by side (same bits) so that their chains of
    // divisions overlap.
    for (int i = 0; i < 16; ++i) R[i] = (i % 5 == 0) ? 1.0 : 0.0;
    double *columns[4] = {R, R + 4, R + 8, R + 12};
    qx_lubksb_a_columns(rows, 4, indx, columns, 4);
    return 0;
}

// ---- the orientation part -----------------------------------------------------

int MTX4_is_ortho_normal(const double T[16])
{
    double m[9];
    orientation_of(T, m);
    return MTX3_is_ortho_normal(m);
}

int MTX4_ortho_normalize(double T[16])
{
    double m[9];
    orientation_of(T, m);
    const int repaired = MTX3_ortho_normalize(m);
    if (repaired == 1) set_orientation(m, T);
    return repaired;
}

int MTX4_fixup(double T[16])
{
    double m[9];
    orientation_of(T, m);
    const int result = MTX3_fixup(m);
    set_orientation(m, T);
    return result;
}

// ---- comparison -----------------------------------------------------------------

int MTX4_is_equal(const double A[16], const double B[16], double tol)
{
    return is_equal(A, B, tol) ? 1 : 0;
}

int MTX4_is_identity(const double T[16], double tol)
{
    double one[16];
    identity(one);
    return is_equal(T, one, tol) ? 1 : 0;
}

int MTX4_is_equal_transform(const double A[16], const double B[16], double tol_r, double tol_d,
                            double tol_s)
{
    if (std::fabs(A[15] - B[15]) > tol_s) return 0;
    const double d[3] = {A[3] - B[3], A[7] - B[7], A[11] - B[11]};
    if (dot3(d, d) > tol_d * tol_d) return 0;
    double a[9], b[9];
    orientation_of(A, a);
    orientation_of(B, b);
    return MTX3_is_equal(a, b, tol_r);
}

// ---- builders ---------------------------------------------------------------------

void MTX4_scaling(const double q[3], const double s[3], double T[16])
{
    double scale[16];
    identity(scale);
    scale[0] = s[0];
    scale[5] = s[1];
    scale[10] = s[2];
    about_point(q, scale, T);
}

int MTX4_rotation(const double q[3], const double a[3], double angle, double T[16])
{
    if (is_null(a)) return 1;
    // A negative angle turns the other way round the negated axis.
    const double theta = std::fabs(angle) * kDegree;
    build_about_point(
        q, a, angle < 0.0, [theta](const double *u, double *m) { h923_(u, &theta, m); }, T);
    return 0;
}

int MTX4_mirror(const double q[3], const double n[3], double T[16])
{
    if (is_null(n)) return 1;
    build_about_point(
        q, n, false, [](const double *u, double *m) { h924_(u, m); }, T);
    return 0;
}

int MTX4_csys_to_csys(const double o1[3], const double x1[3], const double y1[3],
                      const double o2[3], const double x2[3], const double y2[3], double T[16])
{
    if (is_null(x1) || is_null(y1) || is_null(x2) || is_null(y2)) return 1;
    // MTX3_init's result is not tested; a failed one leaves its matrix as
    // it was, zero here, so that the outcome is at least repeatable.
    double m1[9] = {}, m2[9] = {};
    MTX3_init(x1, y1, m1);
    MTX3_init(x2, y2, m2);
    double r1[16], r2[16];
    embed(m1, r1);
    embed(m2, r2);
    // A zero orientation stays as it is; any other fails only when the host
    // refused the inversion's scratch memory and its report returned.
    bool oriented = false;
    for (double e : m2) oriented = oriented || e != 0.0;
    if (MTX4_invert(r2, r2) != 0 && oriented) return 1;
    double to_origin[16], back[16], p[16];
    translation(o1, -1.0, to_origin);
    translation(o2, 1.0, back);
    multiply(to_origin, r1, p);
    multiply(p, r2, p);
    multiply(p, back, T);
    return 0;
}
