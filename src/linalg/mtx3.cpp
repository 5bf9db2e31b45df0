// mtx3.cpp — 3x3 orientation matrices (rows = X, Y, Z axes): building them
// from axes or from an axis and angle, composing, comparing and repairing
// them, and reading roll, pitch and yaw back.
//
// Ortho-normality is the fixed absolute test at 1.0e-14 (is_ortho_normal
// below), never the session tolerances. Repair goes one of two ways: from
// the X and Z rows when they are already perpendicular, else through the
// roll/pitch/yaw cosine-sine pairs, cleaned to unit length and snapped to
// the axes, from which the matrix is rebuilt. The builders assert their
// result (checking on); only non-finite input can fail that.
#define QX_SOURCE_FILE "mtx3"

#include <cmath>
#include <cstring>

#include <qxmath/orientation.h>

#include "frame/check.h"
#include "linalg/vec_internal.h"

namespace
{

using qx::vec::cross3;
using qx::vec::dot3;

// Unitizing tolerance, and the cosine within which directions count as
// perpendicular.
constexpr double kUnitTol = 1.0e-10;
// Ortho-normality: squared row lengths within this of 1, dot products of
// rows within this of 0.
constexpr double kOrthoTol = 1.0e-14;
// A cosine or sine this close to +-1 (or within kUnitTol of 0) is snapped.
constexpr double kNearOne = 0.9999999999;

double sgn(double v) { return v <= 0.0 ? -1.0 : 1.0; }

void copy3(const double *from, double *to)
{
    to[0] = from[0];
    to[1] = from[1];
    to[2] = from[2];
}

void set_rows(const double *x, const double *y, const double *z, double *m)
{
    copy3(x, m);
    copy3(y, m + 3);
    copy3(z, m + 6);
}

// Two doubles processed as one: each lane does exactly the scalar
// operations, in the same order, so results are bit for bit those of scalar
// code (IEEE arithmetic is lane-independent); this only halves the
// instruction count. Generic GCC vectors, lowered to scalars where a target
// lacks them.
typedef double v2d __attribute__((vector_size(16)));

// |v| <= tol in both lanes, false for NaN.
int both_within(v2d v, double tol)
{
    const auto in = (v <= tol) & (v >= -tol);
    return (in[0] & in[1]) != 0 ? 1 : 0;
}

// The six conditions of ortho-normality, each sum formed x, y, z in order as
// dot3 forms it. All six are evaluated: with no side effects the result is
// that of testing them in order and stopping at the first failure.
bool is_ortho_normal(const double *m)
{
    const v2d x_y0 = {m[0], m[3]}, x_y1 = {m[1], m[4]}, x_y2 = {m[2], m[5]};
    const v2d z_y0 = {m[6], m[3]}, z_y1 = {m[7], m[4]}, z_y2 = {m[8], m[5]};
    const v2d z_x0 = {m[6], m[0]}, z_x1 = {m[7], m[1]}, z_x2 = {m[8], m[2]};
    const v2d z_z0 = {m[6], m[6]}, z_z1 = {m[7], m[7]}, z_z2 = {m[8], m[8]};
    const v2d y_x0 = {m[3], m[0]}, y_x1 = {m[4], m[1]}, y_x2 = {m[5], m[2]};
    const v2d xx_yy = x_y0 * x_y0 + x_y1 * x_y1 + x_y2 * x_y2;
    const v2d zz_yx = z_y0 * z_x0 + z_y1 * z_x1 + z_y2 * z_x2;
    const v2d zy_zx = z_z0 * y_x0 + z_z1 * y_x1 + z_z2 * y_x2;
    const v2d one_one = {1.0, 1.0}, one_zero = {1.0, 0.0};
    return (both_within(xx_yy - one_one, kOrthoTol) & both_within(zz_yx - one_zero, kOrthoTol) &
            both_within(zy_zx, kOrthoTol)) != 0;
}

// X kept, Z = unit(X^ x Y^), Y re-derived as Z x X^ (not unitized again).
// The inputs are read completely before M is written.
int init_x_y(const double *X, const double *Y, double *m)
{
    double x[3], y[3], z[3], length;
    const int x_ok = qx_vec3_unitize(X, kUnitTol, &length, x);
    const int y_ok = qx_vec3_unitize(Y, kUnitTol, &length, y);
    if (!x_ok || !y_ok) return 0;
    if (std::fabs(dot3(x, y)) > kUnitTol) return 0;
    cross3(x, y, z);
    qx_vec3_unitize(z, kUnitTol, &length, z);
    cross3(z, x, y);
    set_rows(x, y, z, m);
    QX_ASSERT(is_ortho_normal(m));
    return 1;
}

// Z kept, X = unit(Y^ x Z^), Y re-derived as Z^ x X.
int init_y_z(const double *Y, const double *Z, double *m)
{
    double x[3], y[3], z[3], length;
    const int y_ok = qx_vec3_unitize(Y, kUnitTol, &length, y);
    const int z_ok = qx_vec3_unitize(Z, kUnitTol, &length, z);
    if (!y_ok || !z_ok) return 0;
    if (!(std::fabs(dot3(y, z)) <= kUnitTol)) return 0;
    cross3(y, z, x);
    qx_vec3_unitize(x, kUnitTol, &length, x);
    cross3(z, x, y);
    set_rows(x, y, z, m);
    QX_ASSERT(is_ortho_normal(m));
    return 1;
}

// ---- roll, pitch and yaw as cosine/sine pairs -----------------------------

struct AnglePairs {
    double cr, sr; // roll
    double cp, sp; // pitch
    double cy, sy; // yaw
};

// Makes (c, s) a unit pair: snapped to an axis when within 1e-10 of it,
// else the smaller member re-derived from the larger, keeping its sign.
// Inlined so that the three pairs of a matrix are cleaned side by side.
[[gnu::always_inline]] inline void clean_pair(double &c, double &s)
{
    const double ac = std::fabs(c), as = std::fabs(s);
    if (ac > kNearOne || as <= kUnitTol) {
        c = sgn(c);
        s = 0.0;
    } else if (as > kNearOne || ac <= kUnitTol) {
        c = 0.0;
        s = sgn(s);
    } else if (std::fabs(c * c + s * s - 1.0) > 1.0e-20) {
        // Selects rather than branches: which member is smaller is a coin
        // toss for general angles.
        const bool c_smaller = ac <= as;
        const double larger = c_smaller ? s : c, smaller = c_smaller ? c : s;
        const double rederived = std::sqrt(1.0 - larger * larger) * sgn(smaller);
        c = c_smaller ? rederived : c;
        s = c_smaller ? s : rederived;
    }
}

// The pairs of M, cleaned. At pitch +-90 degrees (m0^2 + m3^2 <= 1e-20) yaw
// is taken as 0 and the rotation about the vertical goes to roll.
AnglePairs extract_pairs(const double *m)
{
    AnglePairs p;
    const double h = m[0] * m[0] + m[3] * m[3];
    if (h > 1.0e-20) {
        p.cp = std::sqrt(h);
        p.sp = -m[6];
        p.cr = m[8] / p.cp;
        p.sr = m[7] / p.cp;
        p.cy = m[0] / p.cp;
        p.sy = m[3] / p.cp;
        clean_pair(p.cp, p.sp);
        clean_pair(p.cr, p.sr);
        clean_pair(p.cy, p.sy);
    } else {
        p.cp = 0.0;
        p.cy = 1.0;
        p.sy = 0.0;
        p.cr = m[4];
        if (m[6] >= 0.0) {
            p.sp = -1.0;
            p.sr = -m[1];
        } else {
            p.sp = 1.0;
            p.sr = m[1];
        }
        clean_pair(p.cr, p.sr);
    }
    return p;
}

// M := Rz(yaw).Ry(pitch).Rx(roll) from the pairs (the table in
// orientation.h, products associated left to right).
void rebuild_from_pairs(const AnglePairs &p, double *m)
{
    m[0] = p.cp * p.cy;
    m[1] = p.sr * p.sp * p.cy - p.cr * p.sy;
    m[2] = p.sp * p.cr * p.cy + p.sr * p.sy;
    m[3] = p.cp * p.sy;
    m[4] = p.sr * p.sp * p.sy + p.cr * p.cy;
    m[5] = p.sp * p.cr * p.sy - p.sr * p.cy;
    m[6] = -p.sp;
    m[7] = p.sr * p.cp;
    m[8] = p.cr * p.cp;
    QX_ASSERT(is_ortho_normal(m));
}

// True when every element's magnitude lies strictly between 1e-10 and
// 1 - 2e-10, so that none can be snapped (1 - |e| is exact there, and
// exceeds 1e-10). Most matrices are like that; the others, exact axes
// included, take the element-by-element scan.
[[gnu::always_inline]] inline bool nothing_to_snap(const double *m)
{
    constexpr double below_one = 1.0 - 2.0e-10;
    const auto inside = [](double a, double b) {
        const v2d v = {a, b};
        return ((v > kUnitTol) & (v < below_one)) | ((v < -kUnitTol) & (v > -below_one));
    };
    const auto all = inside(m[0], m[1]) & inside(m[2], m[3]) & inside(m[4], m[5]) &
                     inside(m[6], m[7]) & inside(m[8], m[8]);
    return (all[0] & all[1]) != 0;
}

// Each row in turn, scanning its elements in order: an element within
// 1e-10 of 0 becomes 0; one within 1e-10 of +-1 becomes +-1, the other two
// of its row 0, and the row is done. Exact 0 and +-1 are left alone.
// Callers skip it when nothing_to_snap(m).
void snap_to_axes(double *m)
{
    for (int row = 0; row < 3; ++row) {
        double *r = m + 3 * row;
        for (int j = 0; j < 3; ++j) {
            const double e = r[j];
            if (e == 0.0 || e == 1.0 || e == -1.0) continue;
            if (std::fabs(e) <= kUnitTol) {
                r[j] = 0.0;
            } else if (std::fabs(std::fabs(e) - 1.0) <= kUnitTol) {
                r[0] = r[1] = r[2] = 0.0;
                r[j] = sgn(e);
                break;
            }
        }
    }
}

// ---- repair ---------------------------------------------------------------

// One pass of the repair. Row 1 is not read on the first route.
void repair_pass(double *m, bool first)
{
    const double x[3] = {m[0], m[1], m[2]};
    const double z[3] = {m[6], m[7], m[8]};
    if (dot3(x, x) > 1.0e-28 && dot3(z, z) > 1.0e-28 && std::fabs(dot3(x, z)) <= kOrthoTol) {
        double y[3];
        cross3(z, x, y);
        init_y_z(y, z, m); // when this fails M is left as it was
        return;
    }
    if (first && !nothing_to_snap(m)) snap_to_axes(m);
    rebuild_from_pairs(extract_pairs(m), m);
    if (first && !nothing_to_snap(m)) snap_to_axes(m);
}

// Repeats passes until M is ortho-normal. After the first pass each pass is
// a fixed function of M alone, so a matrix that comes back is on a cycle
// that never reaches an ortho-normal one: that (and only that) ends the
// loop early. Cycles are found by Brent's method: each matrix is compared
// bit for bit with one saved after the first pass, and saved again after
// 1, 2, 4, 8, ... further passes.
int ortho_normalize(double *m)
{
    if (is_ortho_normal(m)) return 0;
    repair_pass(m, true);
    if (is_ortho_normal(m)) return 1;
    double saved[9];
    std::memcpy(saved, m, sizeof saved);
    unsigned long power = 1, since_saved = 0;
    do {
        repair_pass(m, false);
        if (std::memcmp(m, saved, sizeof saved) == 0) break; // cannot be repaired
        if (++since_saved == power) {
            std::memcpy(saved, m, sizeof saved);
            power *= 2;
            since_saved = 0;
        }
    } while (!is_ortho_normal(m));
    return 1;
}

bool is_equal(const double *a, const double *b, double tol)
{
    for (int i = 0; i < 9; ++i)
        if (!(std::fabs(a[i] - b[i]) <= tol)) return false;
    // Equal elements are not enough: both or neither must be ortho-normal.
    return is_ortho_normal(a) == is_ortho_normal(b);
}

// Products into a local matrix (P may be A or B), then the repair and the
// result flag of MTX3_multiply.
int finish_product(const double *a, const double *b, double *r, double *p)
{
    int result = 0;
    if (is_ortho_normal(a) && is_ortho_normal(b)) result = ortho_normalize(r);
    std::memcpy(p, r, 9 * sizeof(double));
    return result;
}

} // namespace

int MTX3_init(const double X[3], const double Y[3], double M[9]) { return init_x_y(X, Y, M); }

int MTX3_init_y_z(const double Y[3], const double Z[3], double M[9]) { return init_y_z(Y, Z, M); }

int MTX3_init_x_y_z(const double X[3], const double Y[3], const double Z[3], double M[9])
{
    double x[3], y[3], z[3], length;
    const int x_ok = qx_vec3_unitize(X, kUnitTol, &length, x);
    const int y_ok = qx_vec3_unitize(Y, kUnitTol, &length, y);
    const int z_ok = qx_vec3_unitize(Z, kUnitTol, &length, z);
    if (!x_ok || !y_ok || !z_ok) return 0;
    if (!(std::fabs(dot3(x, y)) <= kUnitTol) || !(std::fabs(dot3(z, x)) <= kUnitTol) ||
        !(std::fabs(dot3(z, y)) <= kUnitTol))
        return 0;
    // Z has served its purpose: the matrix is MTX3_init's, right-handed.
    return init_x_y(X, Y, M);
}

int MTX3_init_x(const double X[3], double M[9])
{
    double x[3], p[3], z[3], length;
    if (!qx_vec3_unitize(X, kUnitTol, &length, x)) return 0;
    qx_vec3_ask_perpendicular(x, p);
    qx_vec3_unitize(p, kUnitTol, &length, p);
    cross3(x, p, z);
    set_rows(x, p, z, M);
    QX_ASSERT(is_ortho_normal(M));
    return 1;
}

int MTX3_init_z(const double Z[3], double M[9])
{
    double x[3], y[3], z[3], length;
    if (!qx_vec3_unitize(Z, kUnitTol, &length, z)) return 0;
    double t[3];
    if (std::fabs(z[1]) <= 0.9) {
        t[0] = z[2];
        t[1] = 0.0;
        t[2] = -z[0];
    } else {
        t[0] = 0.0;
        t[1] = z[2];
        t[2] = -z[1];
    }
    qx_vec3_unitize(t, kUnitTol, &length, x);
    cross3(z, x, y);
    set_rows(x, y, z, M);
    QX_ASSERT(is_ortho_normal(M));
    return 1;
}

void MTX3_rot_about_axis(double angle, const double axis[3], double M[9])
{
    double u[3], length, s = 0.0, c = 1.0;
    // A null axis leaves u zero, and with s = 0, c = 1 the identity.
    if (qx_vec3_unitize(axis, kUnitTol, &length, u)) {
        s = std::sin(angle);
        c = std::cos(angle);
    }
    const double x = u[0], y = u[1], z = u[2], t = 1.0 - c;
    const double txy = t * x * y, txz = t * x * z, tyz = t * y * z;
    M[0] = t * x * x + c;
    M[1] = txy - z * s;
    M[2] = y * s + txz;
    M[3] = z * s + txy;
    M[4] = t * y * y + c;
    M[5] = tyz - x * s;
    M[6] = txz - y * s;
    M[7] = x * s + tyz;
    M[8] = t * z * z + c;
    QX_ASSERT(is_ortho_normal(M));
}

void MTX3_ask_roll_pitch_yaw(const double M[9], double *roll, double *pitch, double *yaw)
{
    const AnglePairs p = extract_pairs(M);
    *roll = std::atan2(p.sr, p.cr);
    *pitch = std::atan2(p.sp, p.cp);
    *yaw = std::atan2(p.sy, p.cy);
}

int MTX3_is_ortho_normal(const double M[9]) { return is_ortho_normal(M) ? 1 : 0; }

int MTX3_is_equal(const double A[9], const double B[9], double tol)
{
    return is_equal(A, B, tol) ? 1 : 0;
}

int MTX3_is_identity(const double M[9], double tol)
{
    static const double identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    return is_equal(M, identity, tol) ? 1 : 0;
}

int MTX3_multiply(const double A[9], const double B[9], double P[9])
{
    double r[9];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j)
            r[3 * i + j] = B[3 * i] * A[j] + B[3 * i + 1] * A[3 + j] + B[3 * i + 2] * A[6 + j];
    return finish_product(A, B, r, P);
}

int MTX3_multiply_t(const double A[9], const double B[9], double P[9])
{
    double r[9];
    for (int i = 0; i < 3; ++i)
        for (int j = 0; j < 3; ++j) r[3 * i + j] = dot3(B + 3 * i, A + 3 * j);
    return finish_product(A, B, r, P);
}

int MTX3_ortho_normalize(double M[9]) { return ortho_normalize(M); }
