// h964.cpp — h964_: a coordinate-system orientation carried through a
// transformation, returned as a clean orientation matrix. The current method
// ("V15") keeps the transformed X axis and re-derives Z and Y with MTX3_init,
// repairing the transformed axes with MTX3_ortho_normalize when they are
// unusable. With checking on, the older method ("V14", scale-aware, refuses
// left-handed results) is run as a cross-check and a disagreement is reported
// with dumps of every matrix involved.
#define QX_SOURCE_FILE "h964"

#include <cmath>

#include <qxmath/numbered.h>
#include <qxmath/orientation.h>

#include "frame/check.h"
#include "linalg/h964_internal.h"
#include "linalg/vec_internal.h"

namespace
{

constexpr double kUnitScale = 1e-10; // |s - 1| beyond which the older method unscales
constexpr double kAgree = 1e-8;      // element-wise agreement of the two methods

void copy9(const double *a, double *b)
{
    for (int i = 0; i < 9; ++i) b[i] = a[i];
}

void dump_vector(const char *caption, const double *v)
{
    if (!QX_CHECKING()) return;
    ERROR_lprintf("%s\n       % 14.12e % 14.12e % 14.12e\n", caption, v[0], v[1], v[2]);
}

// One printed line per column of the row-stored matrix.
void dump_matrix(const char *caption, const double *m)
{
    if (!QX_CHECKING()) return;
    ERROR_lprintf("%s\n"
                  "       % 14.12e % 14.12e % 14.12e\n"
                  "       % 14.12e % 14.12e % 14.12e\n"
                  "       % 14.12e % 14.12e % 14.12e\n",
                  caption, m[0], m[3], m[6], m[1], m[4], m[7], m[2], m[5], m[8]);
}

// The older method into v, run only with checking on: the transformed axes,
// unscaled by the scale factor s (rows 0-1 by 1/|s|, row 2 by 1/s, so that a
// negative scale shows in Z), rebuilt by MTX3_init_x_y_z; 0 when that fails
// or the result is left-handed. The divisions by s are unguarded: s = 0
// makes the rows non-finite, which the rebuild rejects (after VEC3_unitize's
// range assertion).
int old_method(const double *k, const double *t, double s, double *v)
{
    MTX3_multiply_t(t, k, v);
    if (std::fabs(s - 1.0) > kUnitScale) {
        const double r_xy = 1.0 / std::fabs(s), r_z = 1.0 / s;
        for (int i = 0; i < 6; ++i) v[i] *= r_xy;
        for (int i = 6; i < 9; ++i) v[i] *= r_z;
        if (MTX3_init_x_y_z(v, v + 3, v + 6, v) == 0) return 0; // may rebuild in place
    }
    double xy[3];
    qx::vec::cross3(v, v + 3, xy);
    if (qx::vec::dot3(xy, v + 6) >= 0.0) return 1;
    ERROR_lprintf("Old method of FTN(h964) () returning a left-handed matrix\n");
    return 0;
}

} // namespace

void qx_h964_cross_check(const double k[9], const double t[9], double scale, const double v[9],
                         const double m[9])
{
    if (MTX3_is_ortho_normal(v) == 0 || MTX3_is_equal(m, v, kAgree) != 0) return;
    dump_matrix("transformation matrix", t);
    dump_matrix("orginal csys matrix", k);
    ERROR_lprintf("transformation scale factor = % 14.12e\n", scale);
    dump_matrix("V14 output result", v);
    dump_matrix("V15 output result", m);
    QX_INTERNAL("V14 version of FTN(h964) () produced different result than V15 version.");
}

void h964_(const double *K, const double *T, double *M)
{
    // Local copies, so that M may overlap K or T and the dumps show the input.
    double k[9], t[9], v[9], p[9], m[9];
    copy9(K, k);
    copy9(T, t);
    double s = 0.0;
    int old_ok = 0;
    if (QX_CHECKING()) {
        s = T[12];
        old_ok = old_method(k, t, s, v);
        if (old_ok == 0) QX_NOTE("Old method of FTN(h964) () failed to produce a matrix");
    }

    MTX3_multiply_t(t, k, p);
    const int first_ok = MTX3_init(p, p + 3, m);
    if (first_ok == 0) {
        if (QX_CHECKING()) QX_NOTE("First attempt in FTN(h964) () failed to produce a matrix");
        dump_matrix("transformation matrix", t);
        dump_matrix("orginal csys matrix", k);
        dump_vector("X axis", p);
        dump_vector("Y axis", p + 3);
        MTX3_ortho_normalize(p);
        copy9(p, m);
    }
    copy9(m, M);
    if (first_ok == 0) dump_matrix("h964 output", m);

    if (QX_CHECKING() && old_ok != 0 && first_ok != 0 && MTX3_is_ortho_normal(k) != 0)
        qx_h964_cross_check(k, t, s, v, m);
}
