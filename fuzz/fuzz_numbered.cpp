// fuzz_numbered.cpp — the numbered routines (h…_, v…_ of numbered.h) on arbitrary
// arguments: a byte picks the routine, the rest fill its buffers (sized as each
// contract asks) with any values, NaN, infinities, huge and tiny numbers, and
// the tolerance indices with any int. Outputs are prefilled with NaN. Where the
// input meets a contract its promise is checked: codes within their documented
// sets, angles within [0, 2pi], placed parameters inside their range, frames
// built from unit or moderate data ortho-normal, unit results unit, real roots
// ascending, outputs written.
#include <algorithm>

#include "fuzz_args.h"

namespace
{

constexpr double kTwoPi = 6.283185307179586;

using qxfuzz::Args, qxfuzz::bounded, qxfuzz::fail, qxfuzz::fill, qxfuzz::g_args;

double dot(const double *a, const double *b) { return qxfuzz::dot3(a, b); }

bool finite(const double *v, int n) { return qxfuzz::all_finite(v, n); }

// Rows of m (3x3) unit and perpendicular within tol.
bool ortho_normal(const double *m, double tol)
{
    for (int i = 0; i < 3; ++i) {
        if (!(std::fabs(dot(m + 3 * i, m + 3 * i) - 1.0) <= tol)) return false;
        for (int j = i + 1; j < 3; ++j)
            if (!(std::fabs(dot(m + 3 * i, m + 3 * j)) <= tol)) return false;
    }
    return true;
}

double det3(const double *m)
{
    return m[0] * (m[4] * m[8] - m[5] * m[7]) - m[1] * (m[3] * m[8] - m[5] * m[6]) +
           m[2] * (m[3] * m[7] - m[4] * m[6]);
}

double tol(int k) { return k >= 0 && k <= 7 ? std::fabs(acom_.tolerance[k]) : 0.0; }

// An orthonormal frame from unit-ish rows a, b: Gram-Schmidt, when possible.
bool make_frame(const double *a, const double *b, double *m)
{
    const double na = std::sqrt(dot(a, a));
    if (!(na > 1e-3) || !std::isfinite(na)) return false;
    for (int k = 0; k < 3; ++k) m[k] = a[k] / na;
    double y[3];
    const double p = dot(b, m);
    for (int k = 0; k < 3; ++k) y[k] = b[k] - p * m[k];
    const double ny = std::sqrt(dot(y, y));
    if (!(ny > 1e-3) || !std::isfinite(ny)) return false;
    for (int k = 0; k < 3; ++k) m[3 + k] = y[k] / ny;
    m[6] = m[1] * m[5] - m[2] * m[4];
    m[7] = m[2] * m[3] - m[0] * m[5];
    m[8] = m[0] * m[4] - m[1] * m[3];
    return true;
}

void check_code(int code, int lo, int hi, const char *what)
{
    if (code < lo || code > hi) fail(what);
}

void primitives(qxfuzz::Reader &in, Args &g, int which)
{
    double *a = g.a[0], *b = g.a[1], *c = g.a[2], *d = g.a[3];
    double *o = g.out[0];
    int k = -7, k2 = -7, k3 = -7;
    switch (which) {
    case 0:
        h805_(a, b, &g.i[0], &k);
        check_code(k, 0, 1, "h805_: flag not 0/1");
        break;
    case 1:
        h806_(a, b, c, &k);
        check_code(k, 0, 1, "h806_: flag not 0/1");
        break;
    case 2: {
        const double x0 = a[0];
        h804_(a, b, &g.i[0], &k);
        check_code(k, 1, 5, "h804_: code outside 1..5");
        if (k == 2 && !(a[0] == b[0])) fail("h804_: code 2 without x := lo");
        if (k == 4 && !(a[0] == b[1])) fail("h804_: code 4 without x := hi");
        if (k != 2 && k != 4 && !(a[0] == x0 || std::isnan(x0)))
            fail("h804_: x changed without a snap");
        break;
    }
    case 3:
        h809_(a, b, &g.i[0], &k);
        check_code(k, 0, 1, "h809_: flag not 0/1");
        break;
    case 4:
        h000_(a);
        break;
    case 5:
        h206_(a, b, c, &k);
        check_code(k, 0, 1, "h206_: flag not 0/1");
        break;
    case 6:
        h053_(a, b, o);
        if (std::isfinite(a[0]) && std::isfinite(b[0]) && !(o[0] >= 0.0 && o[0] <= kTwoPi))
            fail("h053_: angle outside [0, 2pi]");
        break;
    case 7: {
        const double x = a[0], p = b[0];
        h002_(a, b);
        // p within the number tolerance of 0 leaves x alone. p itself is a
        // result only for a negative x whose remainder is below half an ulp
        // of p (p - r rounds to p and is not near 0): the rule keeps it.
        if (std::isfinite(x) && std::isfinite(p) && p > tol(0) &&
            !(a[0] >= 0.0 && (a[0] < p || (a[0] == p && x < 0.0))))
            fail("h002_: result outside [0, p)");
        break;
    }
    case 8:
        h013_(a, b, c, o);
        break;
    case 9:
        h100_(a, b, o);
        break;
    case 10:
        h110_(a, o);
        break;
    case 11:
        h200_(a, b, o);
        break;
    case 12:
        h301_(a, b, o);
        break;
    case 13:
        h003_(a, b, o);
        break;
    case 14:
        h004_(a, b, c, o);
        break;
    case 15: {
        h923_(a, b, o);
        if (bounded(b, 1, 1e3) && std::fabs(dot(a, a) - 1.0) <= 1e-14 && !ortho_normal(o, 1e-12))
            fail("h923_: rotation about a unit axis is not ortho-normal");
        break;
    }
    case 16:
        h099_(a, o);
        // X is unitised under the length tolerance: a unit X is null for a tolerance >= 1.
        if (std::fabs(dot(a, a) - 1.0) <= 1e-14 && tol(1) < 0.4 && !ortho_normal(o, 1e-12))
            fail("h099_: frame of a unit normal is not ortho-normal");
        break;
    case 17: {
        double re[2] = {std::nan(""), std::nan("")}, im[2] = {std::nan(""), std::nan("")};
        h014_(a, re, im, &k, &k2, &k3);
        check_code(k, 1, 4, "h014_: kind outside 1..4");
        check_code(k2, 0, 2, "h014_: degree outside 0..2");
        check_code(k3, 0, 2, "h014_: nreal outside 0..2");
        if (k == 3 && k3 < 1) fail("h014_: kind 3 without a real root");
        if (std::isnan(im[0]) || std::isnan(im[1])) fail("h014_: im not cleared");
        break;
    }
    case 18:
        h015_(a, b, c, d, o, &k);
        check_code(k, 1, 2, "h015_: status outside 1..2");
        if (k == 1 && std::isnan(o[0]) && finite(a, 3) && finite(b, 3) && finite(c, 3) &&
            finite(d, 3) && bounded(a, 3, 1e50) && bounded(b, 3, 1e50) && bounded(c, 3, 1e50) &&
            bounded(d, 3, 1e50))
            fail("h015_: solved without writing x");
        break;
    case 19:
        h017_(a, b, o);
        break;
    default: {
        const int n = g.i[0] == 0 ? 1 : g.i[0];
        h018_(a, &n, o);
        break;
    }
    }
    (void)in;
}

void periodic(qxfuzz::Reader &in, Args &g, int which)
{
    double *a = g.a[0], *b = g.a[1], *c = g.a[2];
    int found = -7, count = -7;
    const double t = tol(0);
    // The slack of a placement: the tolerance plus the rounding of the values involved.
    auto slack = [t](double x, double lo, double p) {
        return t + 1e-9 * (std::fabs(x) + std::fabs(lo) + std::fabs(p));
    };
    const bool tame = bounded(a, 1, 1e6) && bounded(b, 2, 1e6) && bounded(c, 1, 1e6);
    switch (which) {
    case 0: {
        const int flag = in.flag() ? 1 : in.integer(-3, 3);
        h006_(a, b, &flag, c, &found, &count);
        check_code(found, 0, 1, "h006_: found not 0/1");
        if (found == 0 && count != 0) fail("h006_: count without found");
        const double lo = std::min(b[0], b[1]), hi = std::max(b[0], b[1]);
        const double p = flag == 1 ? c[0] : hi - lo;
        if (found == 1 && tame && p > 1e-3) {
            const double x = a[0] + count * p;
            if (!(x >= lo - slack(a[0], lo, p) && x <= hi + slack(a[0], hi, p)))
                fail("h006_: x + count*period outside the range");
        }
        break;
    }
    case 1: {
        h0005_(a, b, c, g.out[0]);
        if (std::isnan(g.out[0][0]) && !std::isnan(a[0]) && tame) fail("h0005_: out not written");
        break;
    }
    case 2:
    case 3: {
        const double x0 = a[0];
        if (which == 2)
            h0062_(a, b, c, &found);
        else
            h0063_(a, b, c, &found);
        check_code(found, 0, 1, "h0062_/h0063_: found not 0/1");
        if (found == 0 && !(a[0] == x0 || std::isnan(x0)))
            fail("h0062_/h0063_: x changed though not placed");
        if (found == 1 && tame && c[0] > 1e-3) {
            const double s = slack(x0, b[0], c[0]);
            if (!(a[0] >= b[0] - s && a[0] <= b[0] + c[0] + s))
                fail("h0062_/h0063_: placed x outside its range");
        }
        break;
    }
    case 4: {
        const double x0 = a[0];
        h0065_(a, b, &count, &found);
        check_code(found, 0, 1, "h0065_: found not 0/1");
        const double lo = std::min(b[0], b[1]), hi = std::max(b[0], b[1]);
        if (found == 0 && (count != 0 || !(a[0] == x0 || std::isnan(x0))))
            fail("h0065_: not placed but x or count changed");
        if (found == 1 && tame && hi - lo > 1e-3) {
            const double s = slack(x0, lo, hi - lo);
            if (!(a[0] >= lo - s && a[0] <= hi + s)) fail("h0065_: placed x outside its range");
            if (!(std::fabs(a[0] - (x0 + count * (hi - lo))) <=
                  s + 1e-9 * std::fabs(count * (hi - lo))))
                fail("h0065_: x moved by other than count periods");
        }
        break;
    }
    case 5:
    case 6:
    case 7: {
        double *out = g.out[0];
        if (which == 5)
            h009_(a, b, out, &count);
        else if (which == 6)
            h010_(a, b, out, &count);
        else
            h012_(a, b, out, &count);
        check_code(count, 1, 3, "h009_/h010_/h012_: code outside 1..3");
        const bool ends = finite(a, 2) && finite(b, 2);
        const int used = which == 5 ? 2 : (count == 1 || count == 3 ? 2 : 4);
        const bool written = !(which == 7 && count == 2);
        // 2pi itself is h002_'s result for a negative angle whose remainder
        // is below half an ulp of 2pi and not near 0 under the tolerance.
        if (ends && written)
            for (int k = 0; k < used; ++k)
                if (!(out[k] >= 0.0 && out[k] <= kTwoPi)) {
                    std::fprintf(stderr, "which %d: %.17g %.17g, %.17g %.17g -> %.17g\n", which,
                                 a[0], a[1], b[0], b[1], out[k]);
                    fail("h009_/h010_/h012_: an end outside [0, 2pi)");
                }
        break;
    }
    default: {
        const int n = in.flag() ? in.integer(0, 4) : in.integer(-3, 8);
        double re[9], im[9];
        std::fill(re, re + 9, std::nan(""));
        std::fill(im, im + 9, std::nan(""));
        int kind = -7, degree = -7, nreal = -7;
        h016_(&n, a, re, im, &kind, &degree, &nreal);
        check_code(kind, 1, 5, "h016_: kind outside 1..5");
        if (kind != 5) {
            check_code(degree, 0, n, "h016_: degree outside 0..n");
            check_code(nreal, 0, degree, "h016_: nreal outside 0..degree");
            for (int k = 0; k + 1 < nreal; ++k)
                if (!(re[k] <= re[k + 1])) fail("h016_: real roots not ascending");
            for (int k = 0; k < n; ++k)
                if (std::isnan(re[k]) || std::isnan(im[k])) fail("h016_: root entries not written");
        }
        break;
    }
    }
}

void space(qxfuzz::Reader &in, Args &g, int which)
{
    double *a = g.a[0], *b = g.a[1], *c = g.a[2], *d = g.a[3];
    double *o = g.out[0], *o2 = g.out[1];
    int k = -7;
    switch (which) {
    case 0:
        h300_(a, b, o);
        break;
    case 1:
        h302_(a, b, &k);
        check_code(k, 0, 1, "h302_: flag not 0/1");
        break;
    case 2:
        h306_(a, b, &k);
        check_code(k, 0, 1, "h306_: flag not 0/1");
        break;
    case 3:
        h307_(a, b, c, &k);
        check_code(k, 0, 1, "h307_: flag not 0/1");
        break;
    case 4:
        h303_(a, b, c, &k);
        check_code(k, 1, 3, "h303_: code outside 1..3");
        break;
    case 5:
        h310_(a, b, c, o);
        break;
    case 6:
        h311_(a, b, c, o);
        break;
    case 7:
        h315_(a, b, c, d, o);
        break;
    case 8:
        h313_(a, b, c, d, o);
        break;
    case 9:
        h019_(a, b, c, o);
        break;
    case 10:
        // h704_ divides by den unguarded when tol[0] is not positive: only with a session.
        if (tol(0) > 0.0) h704_(a, b, c, o, o + 1);
        break;
    case 11:
        h316_(a, b, c, d, o, o + 1, o2, o2 + 4);
        break;
    case 12:
        h312_(a, b, c, d, &k);
        check_code(k, 0, 1, "h312_: flag not 0/1");
        break;
    case 13:
        h314_(a, b, c, o, o + 4);
        break;
    case 14:
        h318_(a, b, c, &k, o);
        check_code(k, 0, 1, "h318_: flag not 0/1");
        if (k == 1 && !(o[0] >= 0.0 && o[0] <= 1.0)) fail("h318_: inside with t outside [0, 1]");
        break;
    case 15:
        h319_(a, b, c, &k);
        check_code(k, 0, 1, "h319_: flag not 0/1");
        break;
    case 16:
        h309_(a, b, c, d, o, o2);
        break;
    case 17:
        h101_(a, b, o);
        break;
    case 18:
        h104_(a, b, o);
        break;
    case 19:
        h114_(a, b, o);
        break;
    case 20:
        h105_(a, b, o);
        break;
    case 21:
        h106_(a, b, c, o);
        break;
    case 22:
        h102_(a, b, o);
        break;
    case 23:
        h111_(a, o);
        break;
    case 24: {
        if (in.flag()) {
            make_frame(c, d, a);
            make_frame(d, c, b);
        }
        const bool on = MTX3_is_ortho_normal(a) && MTX3_is_ortho_normal(b);
        h120_(a, b, o);
        if (on && !MTX3_is_ortho_normal(o)) fail("h120_: product of ortho-normal not ortho-normal");
        break;
    }
    case 25:
        h121_(a, b, o);
        break;
    case 26:
        h122_(a, b, o);
        break;
    case 27:
        h150_(a, b, o);
        break;
    case 28:
        h123_(a, b, o);
        break;
    case 29:
        h130_(a, o);
        break;
    case 30:
        h116_(a, b, c, d, g.a[4], o);
        break;
    case 31:
        h1600_(a, b, c, &k);
        check_code(k, 0, 1, "h1600_: flag not 0/1");
        break;
    case 32:
        h160_(o);
        if (!ortho_normal(o, 0.0)) fail("h160_: not the identity");
        break;
    case 33:
        h922_(a, o);
        break;
    case 34:
        h956_(a, b, o);
        break;
    case 35:
        h961_(a, b, o);
        break;
    case 36:
        h963_(a, b, o);
        break;
    case 37: {
        // Z = unit(X x unit(p2 - p1)) carries the cross product's rounding
        // over its length: the check allows eps over the sine of the angle.
        double u[3], v[3], w[3];
        for (int i = 0; i < 3; ++i) u[i] = b[i] - a[i], v[i] = c[i] - b[i];
        w[0] = u[1] * v[2] - u[2] * v[1], w[1] = u[2] * v[0] - u[0] * v[2],
        w[2] = u[0] * v[1] - u[1] * v[0];
        const double sine = std::sqrt(dot(w, w) / (dot(u, u) * dot(v, v)));
        h960_(a, b, c, o, &k);
        check_code(k, 0, 1, "h960_: flag not 0/1");
        if (k == 1 && finite(a, 3) && finite(b, 3) && finite(c, 3) && bounded(a, 3, 1e6) &&
            bounded(b, 3, 1e6) && bounded(c, 3, 1e6) && sine > 1e-6 &&
            (!ortho_normal(o, 1e-12 + 1e-15 / sine) || !(det3(o) > 0.0)))
            fail("h960_: frame not right-handed ortho-normal");
    } break;
    case 38:
    default: {
        if (in.flag()) {
            make_frame(c, d, a);
            make_frame(d, c, b);
        }
        double f[12], r[12];
        std::copy(a, a + 9, f);
        std::copy(c, c + 3, f + 9);
        std::copy(b, b + 9, r);
        std::copy(d, d + 3, r + 9);
        if (which == 38)
            h125_(f, r, o);
        else
            h140_(f, r, o);
        break;
    }
    }
}

void plane(qxfuzz::Reader &in, Args &g, int which)
{
    double *a = g.a[0], *b = g.a[1], *c = g.a[2], *d = g.a[3];
    double *o = g.out[0], *o2 = g.out[1];
    int k = -7;
    switch (which) {
    case 0:
        h201_(a, b, o);
        break;
    case 1:
        h202_(a, b, &k);
        check_code(k, 0, 1, "h202_: flag not 0/1");
        break;
    case 2:
        h203_(a, b, c, &k);
        check_code(k, 1, 3, "h203_: code outside 1..3");
        break;
    case 3:
        h204_(a, b, c, &k);
        check_code(k, 0, 1, "h204_: flag not 0/1");
        break;
    case 4:
    case 5:
        if (which == 4)
            h224_(a, b, c, o);
        else
            h221_(a, b, c, o);
        if (which == 4 && finite(a, 2) && finite(b, 2) && finite(c, 2) && bounded(a, 2, 1e150) &&
            bounded(c, 2, 1e150) && bounded(b, 2, 1e150))
            for (int j = 0; j < 2; ++j)
                if (!(o[j] >= 0.0 && o[j] <= kTwoPi)) fail("h224_: angle outside [0, 2pi]");
        break;
    case 6: {
        const int sense = in.integer(0, 2);
        h222_(&sense, d, a, b, c, o);
        break;
    }
    case 7:
        h230_(a, b, &k, o, o + 1, o + 2);
        check_code(k, 1, 2, "h230_: status outside 1..2");
        break;
    case 8:
    case 9:
    case 10: {
        // a, b, u and w1 divide without guards: keep a, b and w1 away from zero.
        const int type = in.integer(-1, 6);
        double sa = a[0], sb = a[1], w1 = a[2];
        if (!(std::fabs(sa) > 1e-6)) sa = 1.0;
        if (!(std::fabs(sb) > 1e-6)) sb = 1.0;
        if (!(std::fabs(w1) > 1e-6)) w1 = 0.5;
        if (which == 8)
            h260_(&type, b, &sa, &sb, c, c + 1, o);
        else if (which == 9)
            h262_(&type, &sa, &sb, &w1, d, b, c, c + 1, o);
        else
            h264_(&type, b, &sa, &sb, c, d, o);
        break;
    }
    case 11:
        v6043_(a, b, c, o, o2, &k);
        check_code(k, 1, 2, "v6043_: status outside 1..2");
        // Within the vector routines' range (components below 1e19), where
        // the differences px - o and py - o cannot overflow.
        if (k == 1 && bounded(a, 3, 1e19) && bounded(b, 3, 1e19) && bounded(c, 3, 1e19) &&
            !MTX3_is_ortho_normal(o))
            fail("v6043_: done but the matrix is not ortho-normal");
        break;
    case 12:
        v6043_normal(a, b, c, o, o2, &k);
        check_code(k, 1, 2, "v6043_normal: status outside 1..2");
        if (k == 1 && bounded(a, 3, 1e19) && bounded(b, 3, 1e19) && bounded(c, 3, 1e19) &&
            !MTX3_is_ortho_normal(o))
            fail("v6043_normal: done but the matrix is not ortho-normal");
        break;
    case 13:
        v6045_(a, b, c, o, o2, &k);
        check_code(k, 1, 2, "v6045_: status outside 1..2");
        if (bounded(a, 3, 1e100) && bounded(b, 3, 1e100) && bounded(c, 3, 1e100) && !finite(o2, 3))
            fail("v6045_: foot not written");
        if (k == 1 && bounded(a, 3, 1e19) && bounded(b, 3, 1e19) && bounded(c, 3, 1e19) &&
            !MTX3_is_ortho_normal(o))
            fail("v6045_: done but the matrix is not ortho-normal");
        break;
    case 14: {
        if (in.flag()) make_frame(c, d, a);
        const bool on = MTX3_is_ortho_normal(a) != 0;
        v6037a_(a, b, o);
        if (on && bounded(b, 3, 1e4) && !ortho_normal(o, 1e-12))
            fail("v6037a_: turned frame is not ortho-normal");
        break;
    }
    case 15:
        v6066_(o, o2);
        break;
    case 16:
        if (in.flag()) make_frame(c, d, a);
        v6054_(a, b, &k);
        check_code(k, 1, 2, "v6054_: status outside 1..2");
        [[fallthrough]];
    case 17: {
        const int mode = in.integer(0, 3);
        v6060_(&mode, c, o, &k);
        check_code(k, 1, 2, "v6060_: status outside 1..2");
        break;
    }
    case 18:
        k = h430_(a, b, c, o);
        check_code(k, 0, 1, "h430_: result not 0/1");
        break;
    case 19:
        h924_(a, o);
        break;
    case 20: {
        const int code = in.integer(-1, 6);
        h813_(a, b, &code, o, &k);
        check_code(k, 1, 3, "h813_: status outside 1..3");
        if (k == 1 && (code == 2 || code == 5) && finite(a, 3) &&
            !(std::fabs(dot(o, o) - 1.0) <= 1e-12))
            fail("h813_: direction made unit is not unit");
        break;
    }
    default: {
        double t[13];
        std::copy(b, b + 13, t);
        if (in.flag()) make_frame(c, d, a);
        h964_(a, t, o);
        if (!finite(o, 9) && finite(a, 9) && finite(t, 9) && bounded(a, 9, 1e6) &&
            bounded(t, 13, 1e6) && t[12] != 0.0)
            fail("h964_: matrix not written");
        break;
    }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    qxfuzz::Reader in(data, size);
    qxfuzz::begin(in.integer(0, 1));
    if (in.flag()) qxfuzz::open_session(in);
    const int family = in.integer(0, 3);
    const int which = in.integer(0, 40);
    Args &g = g_args;
    fill(in, g);
    qxfuzz::call([&] {
        switch (family) {
        case 0:
            primitives(in, g, which % 21);
            break;
        case 1:
            periodic(in, g, which % 9);
            break;
        case 2:
            space(in, g, which % 40);
            break;
        default:
            plane(in, g, which % 22);
            break;
        }
    });
    qxfuzz::end();
    return 0;
}
