// fuzz_fits.cpp — the least-squares fits (LSFIT_line_to_points_2d,
// LSFIT_plane_to_points, LSFIT_circle_to_points_2d, LSFIT_circle_to_points_3d,
// LSFIT_sphere_to_points_3d) on arbitrary point sets (NaN, infinities, huge
// and tiny coordinates, repeats, any count) and on points drawn on a known
// line, plane, circle or sphere. Every input checks what the contracts
// promise whatever the points: the flag is 0 or 1, the outputs are written,
// a fit that is not degenerate has a unit normal and a finite centre and
// positive radius, a degenerate circle or sphere has every output zero. On
// the known shapes (well spread points, moderate sizes) the fit must find
// the shape.
#include <algorithm>
#include <cfloat>

#include "fuzz_common.h"

namespace
{

constexpr double kPi = 3.14159265358979323846;

// Bits no fit writes: an output still holding them was not written.
double sentinel()
{
    const std::uint64_t bits = 0x7ff4dead0000beefULL;
    double d;
    std::memcpy(&d, &bits, sizeof d);
    return d;
}

bool unwritten(double d)
{
    const double s = sentinel();
    return std::memcmp(&d, &s, sizeof d) == 0;
}

double angle(qxfuzz::Reader &in) { return 2.0 * kPi * in.byte() / 256.0; }

double norm(const double *v, int d)
{
    double s = 0.0;
    for (int k = 0; k < d; ++k) s += v[k] * v[k];
    return std::sqrt(s);
}

// Whether every coordinate is finite and of a size whose squares and sums
// of squares cannot overflow.
// Coordinates at which the fits' distance tests are more than rounding: at
// 1e20 and beyond the plane fit's fall-back can pass collinear points whose
// cross product is then too short to be made unit (a zero normal, flag 0).
bool tame(const std::vector<double> &pts)
{
    return std::all_of(pts.begin(), pts.end(),
                       [](double v) { return std::isfinite(v) && std::fabs(v) <= 1e15; });
}

// A unit vector from two angles, and two unit vectors completing a frame.
void frame_from(qxfuzz::Reader &in, double u[3], double w[3], double nrm[3])
{
    const double a = angle(in), b = angle(in) / 2.0, c = angle(in);
    nrm[0] = std::sin(b) * std::cos(a);
    nrm[1] = std::sin(b) * std::sin(a);
    nrm[2] = std::cos(b);
    // Any vector not parallel to nrm, made orthogonal and turned by c.
    double t[3] = {1.0, 0.0, 0.0};
    if (std::fabs(nrm[0]) > 0.6) t[0] = 0.0, t[1] = 1.0;
    const double dt = t[0] * nrm[0] + t[1] * nrm[1] + t[2] * nrm[2];
    double e1[3], e2[3];
    for (int k = 0; k < 3; ++k) e1[k] = t[k] - dt * nrm[k];
    const double l = norm(e1, 3);
    for (double &v : e1) v /= l;
    e2[0] = nrm[1] * e1[2] - nrm[2] * e1[1];
    e2[1] = nrm[2] * e1[0] - nrm[0] * e1[2];
    e2[2] = nrm[0] * e1[1] - nrm[1] * e1[0];
    for (int k = 0; k < 3; ++k) {
        u[k] = std::cos(c) * e1[k] + std::sin(c) * e2[k];
        w[k] = -std::sin(c) * e1[k] + std::cos(c) * e2[k];
    }
}

// How a fit call ended.
enum Ended { kUnwound, kReported, kClean };

// Runs f under a trap, or (a host whose reports return) directly; whether it
// was unwound, returned after the host reported (a refused allocation, no
// points), or returned with no report.
template <class F> Ended run(bool trapped, F &&f)
{
    const long before = qxsys_report_count();
    if (trapped) {
        if (!qxfuzz::call(f)) return kUnwound;
    } else {
        f();
    }
    return qxsys_report_count() == before ? kClean : kReported;
}

struct Outputs {
    double point[3], normal[3], centre[3], radius, dev[3];
    int degenerate;
    Outputs()
    {
        for (int k = 0; k < 3; ++k) point[k] = normal[k] = centre[k] = dev[k] = sentinel();
        radius = sentinel();
        degenerate = -7;
    }
};

// Prints the points of a failing input, for the regression test.
void dump(const std::vector<double> &pts, int n, int d)
{
    std::fprintf(stderr, "n = %d:", n);
    for (std::size_t i = 0; i < pts.size(); ++i)
        std::fprintf(stderr, "%s%.17g", i % static_cast<std::size_t>(d) ? ", " : "\n  ", pts[i]);
    std::fprintf(stderr, "\n");
}

// n arbitrary points of d coordinates, with repeats and shared coordinates
// now and then.
std::vector<double> arbitrary_points(qxfuzz::Reader &in, int n, int d)
{
    std::vector<double> pts = in.reals(static_cast<std::size_t>(std::max(n, 0) * d));
    for (std::size_t i = static_cast<std::size_t>(d); i < pts.size(); ++i)
        if (in.integer(0, 5) == 0) pts[i] = pts[i - static_cast<std::size_t>(d)];
    return pts;
}

void check_flag(const Outputs &o, const char *what)
{
    if (o.degenerate != 0 && o.degenerate != 1) qxfuzz::finding(what);
}

// ---- line and plane ----

void fuzz_flat(qxfuzz::Reader &in, int d)
{
    const bool shape = in.flag();
    const bool trapped = in.flag();
    int n = in.integer(-1, 40);
    std::vector<double> pts;
    double nrm[3] = {0, 0, 0};
    if (shape) {
        // Points on a line (d = 2) or plane (d = 3), at least two distinct
        // (three not collinear) a moderate distance apart.
        double base[3], u[3], w[3];
        for (double &v : base) v = in.moderate(512.0);
        const double size = 0.5 + in.byte() / 4.0;
        if (d == 2) {
            const double a = angle(in);
            u[0] = std::cos(a), u[1] = std::sin(a);
            nrm[0] = -u[1], nrm[1] = u[0];
        } else {
            frame_from(in, u, w, nrm);
        }
        n = std::max(n, d);
        for (int i = 0; i < n; ++i) {
            double s = in.moderate(512.0) / 8.0, t = in.moderate(512.0) / 8.0;
            if (i == 0) s = 0.0, t = 0.0;
            if (i == 1) s = 1.0, t = 0.0;
            if (i == 2) s = 0.0, t = 1.0;
            for (int k = 0; k < d; ++k)
                pts.push_back(base[k] + size * (s * u[k] + (d == 3 ? t * w[k] : 0.0)));
        }
    } else {
        pts = arbitrary_points(in, n, d);
    }
    if (pts.empty()) pts.push_back(0.0);
    Outputs o;
    qxfuzz::arm_fault(in);
    const Ended ended = run(trapped, [&] {
        if (d == 2)
            LSFIT_line_to_points_2d(pts.data(), n, o.point, o.normal, &o.degenerate, o.dev);
        else
            LSFIT_plane_to_points(pts.data(), n, o.point, o.normal, &o.degenerate, o.dev);
    });
    if (ended == kUnwound) return;
    const bool clean = ended == kClean;
    check_flag(o, "flat fit: flag neither 0 nor 1");
    for (int k = 0; k < d; ++k)
        if (unwritten(o.point[k]) || unwritten(o.normal[k]))
            qxfuzz::finding("flat fit: point or normal not written");
    if (!clean || n < 1) return;
    if (o.degenerate == 0 && tame(pts)) {
        if (!(std::fabs(norm(o.normal, d) - 1.0) <= 1e-12)) {
            if (std::getenv("QXFUZZ_DUMP") != nullptr) {
                dump(pts, n, d);
                std::fprintf(stderr, "normal %.17g %.17g %.17g\n", o.normal[0], o.normal[1],
                             d == 3 ? o.normal[2] : 0.0);
            }
            qxfuzz::finding("flat fit: normal of a fit with finite points is not a unit vector");
        }
        if (d == 2 && !(o.point[0] == o.point[1]))
            qxfuzz::finding("LSFIT_line_to_points_2d: point is not (cx, cx)");
    }
    if (!shape) return;
    if (std::getenv("QXFUZZ_DUMP") != nullptr) {
        dump(pts, n, d);
        std::fprintf(stderr, "normal %.17g %.17g %.17g, expected %.17g %.17g %.17g, dev %g\n",
                     o.normal[0], o.normal[1], o.normal[2], nrm[0], nrm[1], nrm[2], o.dev[0]);
    }
    if (o.degenerate != 0) qxfuzz::finding("flat fit: points on a line or plane called degenerate");
    // The fit takes the smallest non-negative eigenvalue after cleaning
    // those within 1.0e-10 of 0. Jacobi's rounding on the scatter matrix is
    // some eps times its trace: where that can pass 1.0e-10 (points some
    // hundreds of units apart), the zero eigenvalue may come out below
    // -1.0e-10 and be skipped, and the normal is then taken from a larger
    // one. That rule is kept; the normal is checked only where it cannot
    // apply.
    double cen[3] = {0, 0, 0}, trace = 0.0;
    for (int i = 0; i < n; ++i)
        for (int k = 0; k < d; ++k) cen[k] += pts[static_cast<std::size_t>(i * d + k)] / n;
    for (int i = 0; i < n; ++i)
        for (int k = 0; k < d; ++k) {
            const double c = pts[static_cast<std::size_t>(i * d + k)] - cen[k];
            trace += c * c;
        }
    const bool rounding_may_skip = 16.0 * d * DBL_EPSILON * trace > 1e-10;
    double along = 0.0;
    for (int k = 0; k < d; ++k) along += o.normal[k] * nrm[k];
    if (!rounding_may_skip && !(std::fabs(std::fabs(along) - 1.0) <= 1e-9))
        qxfuzz::finding("flat fit: normal is not the shape's normal");
    if (rounding_may_skip) return;
    if (d == 3 && !(o.dev[0] <= 1e-9 * (1.0 + norm(o.point, 3))))
        qxfuzz::finding("LSFIT_plane_to_points: points on a plane deviate from it");
}

// ---- circles and spheres ----

enum Round { kCircle2, kCircle3, kSphere };

void fuzz_round(qxfuzz::Reader &in, Round kind)
{
    const int d = kind == kCircle2 ? 2 : 3;
    const bool shape = in.flag();
    const bool flat = !shape && in.flag(); // on a line (circles) or plane (sphere)
    const bool trapped = in.flag();
    int n = in.integer(-1, 40);
    std::vector<double> pts;
    double c0[3] = {0, 0, 0}, r0 = 0.0, nrm[3] = {0, 0, 1};
    if (shape) {
        for (double &v : c0) v = in.moderate(512.0);
        if (kind == kCircle2) c0[2] = 0.0;
        r0 = 0.25 + in.byte() / 4.0;
        double u[3] = {1, 0, 0}, w[3] = {0, 1, 0};
        if (kind == kCircle3) frame_from(in, u, w, nrm);
        // A base set that fixes the shape well (three points a third of a
        // turn apart; for the sphere the six axis points), then more.
        const int base = kind == kSphere ? 6 : 3;
        n = std::max(n, base);
        for (int i = 0; i < n; ++i) {
            double p[3];
            if (kind == kSphere) {
                double e[3] = {0, 0, 0};
                if (i < 6) {
                    e[i / 2] = i % 2 ? -1.0 : 1.0;
                } else {
                    const double a = angle(in), b = angle(in) / 2.0;
                    e[0] = std::sin(b) * std::cos(a), e[1] = std::sin(b) * std::sin(a),
                    e[2] = std::cos(b);
                }
                for (int k = 0; k < 3; ++k) p[k] = c0[k] + r0 * e[k];
            } else {
                const double a = i < 3 ? 2.0 * kPi * i / 3.0 : angle(in);
                for (int k = 0; k < 3; ++k)
                    p[k] = c0[k] + r0 * (std::cos(a) * u[k] + std::sin(a) * w[k]);
            }
            for (int k = 0; k < d; ++k) pts.push_back(p[k]);
        }
    } else if (flat) {
        double base[3], u[3], w[3], unused[3];
        for (double &v : base) v = in.moderate(512.0);
        frame_from(in, u, w, unused);
        if (kind == kCircle2) {
            const double a = angle(in);
            u[0] = std::cos(a), u[1] = std::sin(a);
        }
        const double size = 0.5 + in.byte();
        n = std::max(n, kind == kSphere ? 3 : 2);
        for (int i = 0; i < n; ++i) {
            // Well spread: (0, 0), (1, 0) and, for the plane, (0, 1) first.
            // (On a badly spread plane, e.g. one point far off and two close
            // together, the plane fit's normal is only as good as Jacobi's
            // absolute threshold over the eigenvalue gap, and the sphere fit
            // may not see the points as coplanar.)
            double s = in.moderate(512.0) / 64.0,
                   t = kind == kSphere ? in.moderate(512.0) / 64.0 : 0.0;
            if (i < 3) s = i == 1 ? 1.0 : 0.0, t = kind == kSphere && i == 2 ? 1.0 : 0.0;
            for (int k = 0; k < d; ++k) pts.push_back(base[k] + size * (s * u[k] + t * w[k]));
        }
    } else {
        pts = arbitrary_points(in, n, d);
    }
    if (pts.empty()) pts.push_back(0.0);
    Outputs o;
    qxfuzz::arm_fault(in);
    const Ended ended = run(trapped, [&] {
        switch (kind) {
        case kCircle2:
            LSFIT_circle_to_points_2d(pts.data(), n, o.centre, &o.radius, &o.degenerate, o.dev);
            break;
        case kCircle3:
            LSFIT_circle_to_points_3d(pts.data(), n, o.centre, &o.radius, o.normal, &o.degenerate,
                                      o.dev);
            break;
        default:
            LSFIT_sphere_to_points_3d(pts.data(), n, o.centre, &o.radius, &o.degenerate, o.dev);
            break;
        }
    });
    if (ended == kUnwound) return;
    const bool clean = ended == kClean;
    check_flag(o, "round fit: flag neither 0 nor 1");
    for (int k = 0; k < d; ++k)
        if (unwritten(o.centre[k])) qxfuzz::finding("round fit: centre not written");
    for (int k = 0; k < 3; ++k)
        if (unwritten(o.dev[k]) || (kind == kCircle3 && unwritten(o.normal[k])))
            qxfuzz::finding("round fit: dev or normal not written");
    if (unwritten(o.radius)) qxfuzz::finding("round fit: radius not written");
    if (o.degenerate == 1) {
        for (int k = 0; k < d; ++k)
            if (o.centre[k] != 0.0) qxfuzz::finding("round fit: degenerate with a centre");
        for (int k = 0; k < 3; ++k)
            if (o.dev[k] != 0.0 || (kind == kCircle3 && o.normal[k] != 0.0))
                qxfuzz::finding("round fit: degenerate with deviations or a normal");
        if (o.radius != 0.0) qxfuzz::finding("round fit: degenerate with a radius");
    } else {
        if (n < 1) qxfuzz::finding("round fit: no points but not degenerate");
        if (!(o.radius > 0.0) || !std::isfinite(o.radius))
            qxfuzz::finding("round fit: no degeneracy but no finite positive radius");
        for (int k = 0; k < d; ++k)
            if (!std::isfinite(o.centre[k]))
                qxfuzz::finding("round fit: no degeneracy but a non-finite centre");
        if (kind == kCircle3 && !(std::fabs(norm(o.normal, 3) - 1.0) <= 1e-12))
            qxfuzz::finding("LSFIT_circle_to_points_3d: normal is not a unit vector");
    }
    if (clean && flat && std::getenv("QXFUZZ_DUMP") != nullptr) {
        dump(pts, n, d);
        std::fprintf(stderr, "kind %d centre %.17g %.17g %.17g radius %.17g dev %g\n", kind,
                     o.centre[0], o.centre[1], o.centre[2], o.radius, o.dev[0]);
    }
    if (clean && flat && o.degenerate != 1)
        qxfuzz::finding("round fit: points on a line (a plane for the sphere) not degenerate");
    if (!clean || !shape) return;
    if (std::getenv("QXFUZZ_DUMP") != nullptr) dump(pts, n, d);
    if (o.degenerate != 0) qxfuzz::finding("round fit: points on a circle or sphere degenerate");
    const double tol = 1e-7 * (r0 + norm(c0, 3));
    double e[3];
    for (int k = 0; k < 3; ++k) e[k] = k < d ? o.centre[k] - c0[k] : 0.0;
    if (!(norm(e, 3) <= tol)) qxfuzz::finding("round fit: centre of an exact shape is off");
    if (!(std::fabs(o.radius - r0) <= tol))
        qxfuzz::finding("round fit: radius of an exact shape is off");
    if (!(o.dev[0] <= tol)) qxfuzz::finding("round fit: an exact shape deviates");
    if (kind == kCircle3) {
        const double along = o.normal[0] * nrm[0] + o.normal[1] * nrm[1] + o.normal[2] * nrm[2];
        if (!(std::fabs(std::fabs(along) - 1.0) <= 1e-9))
            qxfuzz::finding("LSFIT_circle_to_points_3d: normal is not the circle's");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    qxfuzz::Reader in(data, size);
    qxfuzz::begin(in.integer(0, 1));
    switch (in.integer(0, 4)) {
    case 0:
        fuzz_flat(in, 2);
        break;
    case 1:
        fuzz_flat(in, 3);
        break;
    case 2:
        fuzz_round(in, kCircle2);
        break;
    case 3:
        fuzz_round(in, kCircle3);
        break;
    default:
        fuzz_round(in, kSphere);
        break;
    }
    qxfuzz::end();
    return 0;
}
