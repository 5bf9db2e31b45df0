// dgeom.cpp — local differential geometry from parametric derivatives:
// curvature and torsion vectors, the Frenet frame, the variation of
// curvature, Gaussian, mean, principal and normal curvatures of surfaces,
// and the conversions between curvature vector, radius vector and second
// derivative.
//
// Every routine is a pure function of its inputs. Degeneracy is judged with
// the one absolute threshold 1.0e-10 (strictly below it is degenerate unless
// a routine says otherwise). The three conversions test nothing: a zero
// vector divides by zero and gives infinities or NaN, by design.
#define QX_SOURCE_FILE "dgeom"
#include "frame/check.h"

#include <cmath>

#include <qxmath/dgeom.h>

#include "linalg/vec_internal.h"

namespace
{

using qx::vec::cross3;
using qx::vec::dot3;

constexpr double kDegenerate = 1.0e-10;

double length3(const double *v) { return std::sqrt(dot3(v, v)); }

void clear(double *v, int n)
{
    for (int i = 0; i < n; ++i) v[i] = 0.0;
}

} // namespace

extern "C" {

double DGEOM_crv_curvature(const double d1[3], const double d2[3], double k[3])
{
    if (length3(d1) < kDegenerate) {
        clear(k, 3);
        return 0.0;
    }
    const double s = 1.0 / dot3(d1, d1);
    const double m = dot3(d1, d2) * (s * s);
    double c[3];
    for (int i = 0; i < 3; ++i) c[i] = s * d2[i] - m * d1[i];
    for (int i = 0; i < 3; ++i) k[i] = c[i];
    return length3(c);
}

double DGEOM_crv_torsion(const double d1[3], const double d2[3], const double d3[3], double out[3])
{
    double c[3];
    cross3(d1, d2, c);
    const double lc = length3(c);
    if (lc < kDegenerate) {
        clear(out, 3);
        return 0.0;
    }
    double e[3];
    cross3(d2, d3, e);
    const double tau = dot3(d1, e) / (lc * lc);
    const double ld1 = length3(d1);
    double b[3], t[3], tb[3];
    for (int i = 0; i < 3; ++i) {
        b[i] = c[i] / lc;
        t[i] = d1[i] / ld1;
    }
    cross3(t, b, tb);
    for (int i = 0; i < 3; ++i) out[i] = tau * tb[i];
    return tau;
}

void DGEOM_crv_diff_property(const double d1[3], const double d2[3], const double d3[3],
                             int want_torsion, double frenet[11])
{
    double r[11] = {};
    const double ld1 = length3(d1);
    double c[3];
    cross3(d1, d2, c);
    const double lc = length3(c);
    if (ld1 >= kDegenerate) {
        for (int i = 0; i < 3; ++i) r[i] = d1[i] / ld1;
        if (lc >= kDegenerate) {
            double kappa = lc / (ld1 * ld1 * ld1);
            if (kappa < kDegenerate) kappa = 0.0;
            for (int i = 0; i < 3; ++i) r[3 + i] = c[i] / lc;
            cross3(r + 3, r, r + 6);
            r[9] = kappa;
            if (want_torsion == 1) {
                double e[3];
                cross3(d2, d3, e);
                r[10] = dot3(d1, e) / (lc * lc);
            }
        }
    }
    for (int i = 0; i < 11; ++i) frenet[i] = r[i];
}

int DGEOM_crv_curvature_variation(const double d1[3], const double d2[3], const double d3[3],
                                  double out[3])
{
    const double s = length3(d1);
    if (s < kDegenerate) {
        clear(out, 3);
        return 0;
    }
    const double p = dot3(d1, d2);
    const double q = dot3(d1, d3) + dot3(d2, d2);
    const double s3 = s * s * s;
    const double s5 = s3 * s * s;
    const double s7 = s5 * s * s;
    const double a = 1.0 / s3;
    const double b = 4.0 * p * p / s7 - q / s5;
    const double c = 3.0 * p / s5;
    double v[3];
    for (int i = 0; i < 3; ++i) v[i] = a * d3[i] + b * d1[i] - c * d2[i];
    for (int i = 0; i < 3; ++i) out[i] = v[i];
    return 0;
}

int DGEOM_convert_crvatr_to_radius(const double k[3], double r[3])
{
    const double l2 = dot3(k, k);
    for (int i = 0; i < 3; ++i) r[i] = k[i] / l2;
    return 0;
}

int DGEOM_convert_radius_to_crvatr(const double r[3], double k[3])
{
    const double l2 = dot3(r, r);
    for (int i = 0; i < 3; ++i) k[i] = r[i] / l2;
    return 0;
}

int DGEOM_convert_crvatr_to_deriv2(const double d1[3], const double k[3], double d2[3])
{
    const double l2 = dot3(d1, d1);
    for (int i = 0; i < 3; ++i) d2[i] = l2 * k[i];
    return 0;
}

int DGEOM_srf_curvatures(const double su[3], const double sv[3], const double suu[3],
                         const double suv[3], const double svv[3], int want_principal,
                         double curvatures[7])
{
    const double e = dot3(su, su), f = dot3(su, sv), g = dot3(sv, sv);
    const double d = e * g - f * f;
    double n[3];
    cross3(su, sv, n);
    const double ln = length3(n);
    // Parallel partials can leave D above the threshold by rounding alone
    // while their cross product is exactly zero: no normal, as for small D.
    if (d < kDegenerate || ln == 0.0) return 1;
    for (int i = 0; i < 3; ++i) n[i] = n[i] / ln;
    const double l = dot3(suu, n), m = dot3(suv, n), nn = dot3(svv, n);
    const double gauss = (l * nn - m * m) / d;
    const double mean = (2.0 * f * m - e * nn - g * l) * 0.5 / d;
    curvatures[0] = gauss;
    curvatures[1] = mean;
    if (want_principal == 0) return 0;
    const double disc = mean * mean - gauss;
    const double root = std::fabs(disc) <= kDegenerate ? 0.0 : std::sqrt(disc);
    curvatures[2] = mean - root;
    curvatures[3] = mean + root;
    curvatures[4] = (std::fabs(mean + root) + std::fabs(mean - root)) * 0.5;
    curvatures[5] = -l / e;
    curvatures[6] = -nn / g;
    return 0;
}

int DGEOM_srf_normal_curvature(const double su[3], const double sv[3], const double suu[3],
                               const double suv[3], const double svv[3], const double normal[3],
                               const double dir[3], double *kn)
{
    double result = 0.0;
    const double e = dot3(su, su), f = dot3(su, sv), g = dot3(sv, sv);
    const double d = e * g - f * f;
    double nd[3];
    cross3(normal, dir, nd);
    if (d >= kDegenerate && length3(nd) != 0.0) {
        const double du = dot3(dir, su), dv = dot3(dir, sv);
        const double lu = (du * g - dv * f) / d;
        const double lv = (dv * e - du * f) / d;
        const double w = lu * lu * e + 2.0 * lu * lv * f + lv * lv * g;
        if (w != 0.0)
            result = (lu * lu * dot3(suu, normal) + 2.0 * lu * lv * dot3(suv, normal) +
                      lv * lv * dot3(svv, normal)) /
                     w;
    }
    *kn = result;
    return 0;
}

} // extern "C"
