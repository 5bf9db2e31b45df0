// fuzz_dgeom.cpp — the differential geometry (DGEOM_*) on arbitrary
// derivatives: NaN, infinities, huge and tiny components, parallel and
// vanishing vectors, outputs aliasing inputs. Where the derivatives are
// moderate (components of magnitude 1.0e-3 to 1.0e3, or zero) the promises
// are checked: a Frenet frame is orthonormal, the curvature vector is normal
// to the tangent and its length is the curvature, the torsion vector is
// normal to tangent and binormal, the conversions invert each other, the
// principal curvatures give the Gaussian and mean ones, a surface whose
// partials span a plane has finite curvatures, untouched records stay so.
#include <algorithm>

#include "fuzz_common.h"

namespace
{

double dot(const double *a, const double *b) { return qxfuzz::dot3(a, b); }
double len(const double *a) { return std::sqrt(dot(a, a)); }
void cross(const double *a, const double *b, double *c)
{
    c[0] = a[1] * b[2] - a[2] * b[1];
    c[1] = a[2] * b[0] - a[0] * b[2];
    c[2] = a[0] * b[1] - a[1] * b[0];
}

// A vector: arbitrary, moderate, or (when like is given) parallel to it.
struct Vec {
    double v[3];
    bool tame;
};

Vec vector_from(qxfuzz::Reader &in, const Vec *like = nullptr)
{
    Vec r{};
    switch (in.integer(0, 3)) {
    case 0:
        for (double &x : r.v) x = in.real();
        break;
    case 1:
        if (like != nullptr) {
            const double f = in.moderate(256.0);
            for (int k = 0; k < 3; ++k) r.v[k] = f * like->v[k];
            break;
        }
        [[fallthrough]];
    default:
        for (double &x : r.v) x = in.moderate(256.0);
        break;
    }
    r.tame = std::all_of(r.v, r.v + 3, [](double x) {
        return x == 0.0 || (std::fabs(x) >= 1.0 / 1024.0 && std::fabs(x) <= 1024.0);
    });
    return r;
}

bool unit(const double *v) { return std::fabs(len(v) - 1.0) <= 1e-12; }

bool same_bits(double x, double y) { return std::memcmp(&x, &y, sizeof x) == 0; }

void fuzz_curves(qxfuzz::Reader &in)
{
    const Vec d1 = vector_from(in), d2 = vector_from(in, &d1), d3 = vector_from(in, &d2);
    const bool tame = d1.tame && d2.tame && d3.tame;
    const double l1 = len(d1.v);
    double c[3];
    cross(d1.v, d2.v, c);
    const double lc = len(c);

    switch (in.integer(0, 3)) {
    case 0: {
        // The output in its own array or over d2.
        Vec d2c = d2;
        double k[3] = {std::nan(""), std::nan(""), std::nan("")};
        double *out = in.flag() ? k : d2c.v;
        const double kappa = DGEOM_crv_curvature(d1.v, d2c.v, out);
        if (!tame) break;
        if (l1 < 1e-10) {
            if (kappa != 0.0 || out[0] != 0.0 || out[1] != 0.0 || out[2] != 0.0)
                qxfuzz::finding("DGEOM_crv_curvature: a stopped curve has curvature");
            break;
        }
        if (!(std::fabs(kappa - len(out)) <= 1e-12 * kappa))
            qxfuzz::finding("DGEOM_crv_curvature: result is not |k|");
        // k = s d2 - m d1 is normal to d1 up to the rounding of its two terms.
        const double l2 = len(d2.v);
        if (!(std::fabs(dot(out, d1.v)) <= 1e-12 * l2 / l1))
            qxfuzz::finding("DGEOM_crv_curvature: k is not normal to d1");
        if (!(std::fabs(kappa - lc / (l1 * l1 * l1)) <= 1e-9 * l2 / (l1 * l1)))
            qxfuzz::finding("DGEOM_crv_curvature: not |d1 x d2| / |d1|^3");
        break;
    }
    case 1: {
        double out[3] = {std::nan(""), std::nan(""), std::nan("")};
        const double tau = DGEOM_crv_torsion(d1.v, d2.v, d3.v, out);
        if (!tame) break;
        if (lc < 1e-10) {
            if (tau != 0.0 || out[0] != 0.0 || out[1] != 0.0 || out[2] != 0.0)
                qxfuzz::finding("DGEOM_crv_torsion: a straight curve has torsion");
            break;
        }
        // b = (d1 x d2) / |d1 x d2| carries the rounding of the cross product.
        const double cond = l1 * len(d2.v) / lc;
        if (!(std::fabs(len(out) - std::fabs(tau)) <= 1e-12 * cond * std::fabs(tau)))
            qxfuzz::finding("DGEOM_crv_torsion: |out| is not |tau|");
        if (!(std::fabs(dot(out, d1.v)) <= 1e-12 * cond * std::fabs(tau) * l1) ||
            !(std::fabs(dot(out, c)) <= 1e-12 * cond * std::fabs(tau) * lc))
            qxfuzz::finding("DGEOM_crv_torsion: out not along the principal normal");
        break;
    }
    case 2: {
        const int want = in.integer(-1, 2);
        double f[11];
        std::fill(f, f + 11, std::nan(""));
        DGEOM_crv_diff_property(d1.v, d2.v, d3.v, want, f);
        for (double x : f)
            if (std::isnan(x) && tame)
                qxfuzz::finding("DGEOM_crv_diff_property: record not written");
        if (want != 1 && f[10] != 0.0) qxfuzz::finding("DGEOM_crv_diff_property: torsion unasked");
        if (!tame) break;
        if (l1 < 1e-10) {
            for (double x : f)
                if (x != 0.0) qxfuzz::finding("DGEOM_crv_diff_property: stopped curve not zero");
            break;
        }
        if (!unit(f)) qxfuzz::finding("DGEOM_crv_diff_property: tangent not unit");
        if (lc < 1e-10) {
            for (int i = 3; i < 11; ++i)
                if (f[i] != 0.0)
                    qxfuzz::finding("DGEOM_crv_diff_property: straight curve has a frame");
            break;
        }
        if (!unit(f + 3) || !(std::fabs(len(f + 6) - 1.0) <= 1e-12 * l1 * len(d2.v) / lc))
            qxfuzz::finding("DGEOM_crv_diff_property: binormal or normal not unit");
        const double cond = l1 * len(d2.v) / lc;
        if (!(std::fabs(dot(f, f + 3)) <= 1e-12 * cond) ||
            !(std::fabs(dot(f, f + 6)) <= 1e-12 * cond) ||
            !(std::fabs(dot(f + 3, f + 6)) <= 1e-12 * cond))
            qxfuzz::finding("DGEOM_crv_diff_property: frame not orthogonal");
        if (!(f[9] >= 0.0)) qxfuzz::finding("DGEOM_crv_diff_property: negative curvature");
        break;
    }
    default: {
        double out[3] = {std::nan(""), std::nan(""), std::nan("")};
        DGEOM_crv_curvature_variation(d1.v, d2.v, d3.v, out);
        if (tame && l1 < 1e-10 && (out[0] != 0.0 || out[1] != 0.0 || out[2] != 0.0))
            qxfuzz::finding("DGEOM_crv_curvature_variation: stopped curve not zero");
        if (tame && l1 >= 1e-10 &&
            !(std::isfinite(out[0]) && std::isfinite(out[1]) && std::isfinite(out[2])))
            qxfuzz::finding("DGEOM_crv_curvature_variation: not finite on moderate input");
        break;
    }
    }
}

void fuzz_conversions(qxfuzz::Reader &in)
{
    const Vec k = vector_from(in), d1 = vector_from(in);
    double r[3], k2[3], d2[3];
    DGEOM_convert_crvatr_to_radius(k.v, r);
    DGEOM_convert_radius_to_crvatr(r, k2);
    DGEOM_convert_crvatr_to_deriv2(d1.v, k.v, d2);
    // Aliased: the output over its input.
    double a[3] = {k.v[0], k.v[1], k.v[2]};
    DGEOM_convert_crvatr_to_radius(a, a);
    for (int i = 0; i < 3; ++i)
        if (!same_bits(a[i], r[i]))
            qxfuzz::finding("DGEOM_convert_crvatr_to_radius: aliasing differs");
    if (!k.tame || len(k.v) == 0.0) return;
    for (int i = 0; i < 3; ++i)
        if (!(std::fabs(k2[i] - k.v[i]) <= 1e-12 * len(k.v)))
            qxfuzz::finding("DGEOM conversions: radius and curvature not each other's inverse");
    if (d1.tame) {
        const double l2 = dot(d1.v, d1.v);
        for (int i = 0; i < 3; ++i)
            if (!same_bits(d2[i], l2 * k.v[i]))
                qxfuzz::finding("DGEOM_convert_crvatr_to_deriv2: not |d1|^2 k");
    }
}

void fuzz_surfaces(qxfuzz::Reader &in)
{
    const Vec su = vector_from(in), sv = vector_from(in, &su);
    const Vec suu = vector_from(in), suv = vector_from(in), svv = vector_from(in);
    const bool tame = su.tame && sv.tame && suu.tame && suv.tame && svv.tame;
    const double e = dot(su.v, su.v), f = dot(su.v, sv.v), g = dot(sv.v, sv.v);
    const double d = e * g - f * f;
    if (in.flag()) {
        const int want = in.integer(-1, 2);
        double cv[7];
        std::fill(cv, cv + 7, std::nan("7"));
        const double before = cv[0];
        const int rc = DGEOM_srf_curvatures(su.v, sv.v, suu.v, suv.v, svv.v, want, cv);
        if (rc != 0 && rc != 1) qxfuzz::finding("DGEOM_srf_curvatures: result neither 0 nor 1");
        if (rc == 1) {
            for (double x : cv)
                if (!same_bits(x, before)) qxfuzz::finding("DGEOM_srf_curvatures: record touched");
            return;
        }
        for (int i = 2; want == 0 && i < 7; ++i)
            if (!same_bits(cv[i], before))
                qxfuzz::finding("DGEOM_srf_curvatures: principal unasked");
        if (!tame) return;
        if (std::getenv("QXFUZZ_DUMP") != nullptr)
            for (const Vec *x : {&su, &sv, &suu, &suv, &svv})
                std::fprintf(stderr, "{%.17g, %.17g, %.17g}\n", x->v[0], x->v[1], x->v[2]);
        if (!std::isfinite(cv[0]) || !std::isfinite(cv[1]))
            qxfuzz::finding("DGEOM_srf_curvatures: curvature not finite on moderate partials");
        if (want == 0) return;
        const double k1 = cv[2], k2 = cv[3];
        if (std::isnan(k1)) return; // a rounding-negative H^2 - K, documented
        // A root cleared to 0.0 (|H^2 - K| <= 1.0e-10) gives k1 k2 = H^2.
        const double scale = std::fabs(cv[0]) + cv[1] * cv[1];
        if (!(std::fabs(k1 * k2 - cv[0]) <= 1e-9 * scale + 2e-10) ||
            !(std::fabs(0.5 * (k1 + k2) - cv[1]) <= 1e-12 * (std::fabs(k1) + std::fabs(k2))))
            qxfuzz::finding("DGEOM_srf_curvatures: principal curvatures disagree with K and H");
        if (!(k1 <= k2)) qxfuzz::finding("DGEOM_srf_curvatures: principal values out of order");
    } else {
        const Vec nrm = vector_from(in), dir = vector_from(in);
        double kn = std::nan("");
        DGEOM_srf_normal_curvature(su.v, sv.v, suu.v, suv.v, svv.v, nrm.v, dir.v, &kn);
        if (tame && nrm.tame && dir.tame && !std::isfinite(kn) && d >= 1e-6)
            qxfuzz::finding("DGEOM_srf_normal_curvature: not finite on moderate input");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    qxfuzz::Reader in(data, size);
    qxfuzz::begin(in.integer(0, 1));
    switch (in.integer(0, 2)) {
    case 0:
        fuzz_curves(in);
        break;
    case 1:
        fuzz_conversions(in);
        break;
    default:
        fuzz_surfaces(in);
        break;
    }
    qxfuzz::end();
    return 0;
}
