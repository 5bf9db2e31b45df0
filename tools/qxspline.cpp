// qxspline — builds the B-spline through a file of points the way the CAD
// host does it: a point list, a defining-data record with chord-length
// parameters, end tangents from the library's automatic derivatives, the
// record check, normalised parameters, and the interpolation (h0913). It
// writes the knots and poles as text or JSON, optionally curve samples and an
// SVG picture. Usage and formats: `qxspline --help`, and the README.
//
// Exit status: 0 done, 1 a data or I/O error, 2 a usage error. Every result
// is built in memory and written only once complete; files go through a
// temporary file in the same directory that is renamed over the target.
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>
#include <qxsys/qxsys.hpp>

namespace
{

const char kHelp[] = R"(usage: qxspline [options] [FILE]

Builds the B-spline that passes through the points of FILE (standard input
when FILE is absent or "-") and writes its knots and poles.

Input: one point a line, "x y z" or, for weighted (rational) points,
"x y z w" with w > 0; numbers separated by spaces, tabs or a comma; "#"
starts a comment; blank lines are ignored; every line has the same number of
columns. Parameters are chord lengths, normalised to [0, 1].

Options:
  --periodic        closed curve through the points (a last point equal to
                    the first is dropped; at most 2000 points, as a closed
                    curve is solved densely); no end tangents by default
  --order K         order (degree + 1), 2 ... 25; default 4 (cubic)
  --slopes S        end tangents: auto (default; derived from the end points
                    by the library, open curves of order >= 3), none, or
                    "x,y,z;x,y,z" (start;end; either may be empty); a tangent
                    is the derivative with respect to chord length, so a unit
                    vector gives the natural speed; a closed curve takes one
                    vector, the tangent at its first point
  --samples N       also write N >= 2 points of the curve, evenly spaced in
                    its parameter from the start to the end
  --svg FILE        draw the points, the control polygon and the curve
  --plane P         plane of the drawing: xy (default), yz or zx
  --json            write JSON instead of text
  -o FILE           write to FILE instead of standard output
  --timing          print the time of each stage on standard error
  --help            this text

Text output: "order K", "periodic 0|1", "dimension 3|4", "range T0 T1", then
"knots M" followed by M lines of one knot, "poles N" followed by N lines
"x y z" (weighted: "x y z w", Cartesian with the weight), "params P" followed
by the parameter of each distinct input point, and with --samples
"samples S" followed by S lines "x y z".
JSON output: {"order":K,"periodic":false,"dimension":3,"range":[T0,T1],
"knots":[...],"poles":[[x,y,z],...],"params":[...],"samples":[[x,y,z],...]}.
The curve is C(t) = sum_i N_i,K(t) P_i over the knots, t in the range; a
weighted curve divides sum N_i w_i P_i by sum N_i w_i. It passes through
input point j at params[j].

Exit status: 0 success, 1 bad data (the message names the line) or an I/O
error, 2 a usage error. Nothing is written unless the whole result is.
)";

// Closed curves are solved densely (N x N, O(N^3)): 2000 points take a second.
constexpr size_t kMaxClosed = 2000;

// A failure to report: the message and the exit status.
struct Failure {
    int status;
    std::string message;
};

[[noreturn]] void fail(int status, std::string message)
{
    throw Failure{status, std::move(message)};
}
[[noreturn]] void usage(const std::string &message) { fail(2, message + " (see qxspline --help)"); }

std::string num(double v)
{
    char b[32];
    return std::string(b, std::to_chars(b, b + sizeof b, v).ptr);
}

// ---- options --------------------------------------------------------------

struct Options {
    std::string input = "-";
    std::string output = "-";
    std::string svg;
    int plane[2] = {0, 1}; // drawing axes: xy
    int order = 4;
    bool periodic = false;
    enum { Auto, None, Given } slopes = Auto;
    bool has_slope[2] = {false, false};
    double slope[2][3] = {};
    int samples = 0;
    bool json = false;
    bool timing = false;
};

bool parse_int(std::string_view s, int lo, int hi, int *out)
{
    int v = 0;
    const auto r = std::from_chars(s.data(), s.data() + s.size(), v);
    if (r.ec != std::errc() || r.ptr != s.data() + s.size() || v < lo || v > hi) return false;
    *out = v;
    return true;
}

// One tangent "x,y,z" (commas or blanks between the numbers); empty is none.
bool parse_vector(std::string_view s, bool *given, double v[3])
{
    int n = 0;
    size_t i = 0;
    auto blank = [&](char c) { return c == ' ' || c == '\t' || c == ','; };
    while (i < s.size()) {
        while (i < s.size() && blank(s[i])) ++i;
        if (i == s.size()) break;
        size_t j = i;
        while (j < s.size() && !blank(s[j])) ++j;
        const char *b = s.data() + i + (s[i] == '+' ? 1 : 0);
        double x = 0.0;
        const auto r = std::from_chars(b, s.data() + j, x);
        if (n == 3 || r.ec != std::errc() || r.ptr != s.data() + j || !std::isfinite(x))
            return false;
        v[n++] = x;
        i = j;
    }
    *given = n == 3;
    return n == 0 || n == 3;
}

Options parse_options(int argc, char **argv)
{
    Options o;
    bool have_input = false, svg_given = false, two_slopes = false;
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i], value;
        bool inline_value = false;
        if (arg.size() > 2 && arg.compare(0, 2, "--") == 0 && arg.find('=') != std::string::npos) {
            value = arg.substr(arg.find('=') + 1);
            arg.resize(arg.find('='));
            inline_value = true;
        }
        auto takes_value = [&](const char *what) {
            if (inline_value) return;
            if (i + 1 >= argc) usage(arg + " needs " + what);
            value = argv[++i];
        };
        auto no_value = [&] {
            if (inline_value) usage(arg + " takes no value");
        };
        if (arg == "--help" || arg == "-h") {
            no_value();
            std::fputs(kHelp, stdout);
            std::exit(0);
        } else if (arg == "--periodic") {
            no_value();
            o.periodic = true;
        } else if (arg == "--json") {
            no_value();
            o.json = true;
        } else if (arg == "--timing") {
            no_value();
            o.timing = true;
        } else if (arg == "--order") {
            takes_value("an order");
            if (!parse_int(value, 2, 25, &o.order))
                usage("--order takes an integer from 2 to 25, not '" + value + "'");
        } else if (arg == "--samples") {
            takes_value("a count");
            if (!parse_int(value, 2, 100000000, &o.samples))
                usage("--samples takes an integer of at least 2, not '" + value + "'");
        } else if (arg == "--slopes") {
            takes_value("auto, none or \"x,y,z;x,y,z\"");
            o.slopes = value == "auto"   ? Options::Auto
                       : value == "none" ? Options::None
                                         : Options::Given;
            if (o.slopes == Options::Given) {
                const size_t semi = value.find(';');
                two_slopes = semi != std::string::npos;
                const std::string_view v(value);
                if (value.find(';', semi == std::string::npos ? semi : semi + 1) !=
                        std::string::npos ||
                    !parse_vector(v.substr(0, semi), &o.has_slope[0], o.slope[0]) ||
                    (semi != std::string::npos &&
                     !parse_vector(v.substr(semi + 1), &o.has_slope[1], o.slope[1])) ||
                    (!o.has_slope[0] && !o.has_slope[1]))
                    usage("--slopes takes auto, none or \"x,y,z;x,y,z\" (start;end), not '" +
                          value + "'");
            }
        } else if (arg == "--svg") {
            takes_value("a file name");
            o.svg = value;
            svg_given = true;
        } else if (arg == "--plane") {
            takes_value("xy, yz or zx");
            if (value == "xy")
                o.plane[0] = 0, o.plane[1] = 1;
            else if (value == "yz")
                o.plane[0] = 1, o.plane[1] = 2;
            else if (value == "zx")
                o.plane[0] = 2, o.plane[1] = 0;
            else
                usage("--plane takes xy, yz or zx, not '" + value + "'");
        } else if (arg == "-o" || arg == "--output") {
            takes_value("a file name");
            o.output = value;
        } else if (arg.size() > 1 && arg[0] == '-') {
            usage("unknown option '" + arg + "'");
        } else {
            if (have_input) usage("more than one input file ('" + o.input + "', '" + arg + "')");
            o.input = arg;
            have_input = true;
        }
    }
    if (o.output.empty()) usage("-o needs a file name");
    if (svg_given && (o.svg.empty() || o.svg == "-"))
        usage("--svg needs a file name (not standard output)");
    if (!o.svg.empty() && o.svg == o.output) usage("--svg and -o name the same file");
    if (o.slopes == Options::Given && o.periodic && o.has_slope[0] && o.has_slope[1])
        usage("a closed curve takes one tangent, at its first point: --slopes \"x,y,z\"");
    if (o.slopes == Options::Given && !o.periodic && !two_slopes)
        usage("--slopes for an open curve is \"start;end\", e.g. \"1,0,0;0,1,0\" or \"1,0,0;\"");
    return o;
}

// ---- input ----------------------------------------------------------------

std::string read_all(const std::string &path)
{
    const bool is_stdin = path == "-";
    const int fd = is_stdin ? 0 : ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (fd < 0) fail(1, "cannot open '" + path + "': " + std::strerror(errno));
    std::string text;
    struct stat st;
    if (::fstat(fd, &st) == 0 && S_ISREG(st.st_mode)) text.reserve(size_t(st.st_size) + 65537);
    size_t used = 0;
    for (;;) {
        if (text.size() - used < 65536)
            text.resize(std::max<size_t>(text.capacity(), used + 65536));
        const ssize_t got = ::read(fd, text.data() + used, text.size() - used);
        if (got == 0) break;
        if (got < 0) {
            if (errno == EINTR) continue;
            const int e = errno;
            if (!is_stdin) ::close(fd);
            fail(1, "cannot read '" + (is_stdin ? std::string("standard input") : path) +
                        "': " + std::strerror(e));
        }
        used += size_t(got);
    }
    if (!is_stdin) ::close(fd);
    text.resize(used);
    return text;
}

// The points of the input: `columns` (3 or 4) numbers each, as written, and
// the line each came from.
struct Points {
    std::string name; // for messages
    int columns = 0;
    long first_line = 0; // the line that fixed the column count
    std::vector<double> xyzw;
    std::vector<long> line;
    size_t count() const { return line.size(); }
};

std::string quoted(const char *b, const char *e)
{
    const size_t n = size_t(e - b);
    return "'" + std::string(b, std::min<size_t>(n, 40)) + (n > 40 ? "...'" : "'");
}

Points parse_points(std::string_view text, const std::string &name)
{
    Points p;
    p.name = name;
    p.xyzw.reserve(text.size() / 16);
    p.line.reserve(text.size() / 48);
    const char *s = text.data(), *const end = s + text.size();
    if (text.substr(0, 3) == "\xEF\xBB\xBF") s += 3; // a UTF-8 byte-order mark
    long lineno = 0;
    auto blank = [](char c) {
        return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
    };
    while (s < end) {
        ++lineno;
        const char *e = static_cast<const char *>(std::memchr(s, '\n', size_t(end - s)));
        if (e == nullptr) e = end;
        auto bad = [&](const std::string &what) {
            fail(1, name + ":" + std::to_string(lineno) + ": " + what);
        };
        double v[4];
        int n = 0;
        const char *q = s;
        while (q < e && blank(*q)) ++q;
        while (q < e && *q != '#') {
            const char *t = q;
            while (q < e && !blank(*q) && *q != ',' && *q != '#') ++q;
            if (t == q) bad("a value is missing before ','");
            const char *b = t + (*t == '+' && q - t > 1 && t[1] != '-' && t[1] != '+' ? 1 : 0);
            double x = 0.0;
            const auto r = std::from_chars(b, q, x);
            if (r.ec == std::errc::result_out_of_range)
                bad(quoted(t, q) + " is out of the range of a double");
            if (r.ec != std::errc() || r.ptr != q) bad(quoted(t, q) + " is not a number");
            if (!std::isfinite(x)) bad(quoted(t, q) + " is not a finite number");
            if (n < 4) v[n] = x;
            ++n;
            while (q < e && blank(*q)) ++q;
            if (q < e && *q == ',') {
                ++q;
                while (q < e && blank(*q)) ++q;
                if (q == e || *q == '#') bad("a value is missing after ','");
            }
        }
        s = e + 1;
        if (n == 0) continue;
        if (n != 3 && n != 4)
            bad(std::to_string(n) + (n == 1 ? " number" : " numbers") +
                "; a point is written x y z, or x y z w with a weight");
        if (p.columns == 0) {
            p.columns = n;
            p.first_line = lineno;
        } else if (n != p.columns) {
            bad(std::to_string(n) + " numbers, but line " + std::to_string(p.first_line) + " has " +
                std::to_string(p.columns) + ": every point needs the same columns");
        }
        if (n == 4 && !(v[3] > 0.0)) bad("weight " + num(v[3]) + " is not positive (w > 0)");
        p.xyzw.insert(p.xyzw.end(), v, v + n);
        p.line.push_back(lineno);
    }
    return p;
}

// ---- the fit ----------------------------------------------------------------

// The interpolating B-spline. Poles are homogeneous (x.w, y.w, z.w, w) for a
// weighted curve, as h0913 gives them.
struct Spline {
    int order = 0, dimension = 3, npoles = 0;
    bool periodic = false;
    std::vector<double> knots, poles, params;
    double tmin = 0.0, tmax = 1.0;
};

// The curve's point at t in Cartesian coordinates, from mbasiseval's basis
// (t outside the knots leaves the basis zero and an error pending).
void evaluate(const Spline &sp, double t, double out[3])
{
    const int d = sp.order - 1;
    const int spans = int(sp.knots.size()) - 2 * d - 1;
    double basis[25] = {};
    int first = 0;
    mbasiseval(d, spans, sp.knots.data(), t, &first, basis);
    double acc[4] = {0.0, 0.0, 0.0, 0.0};
    const int dim = sp.dimension;
    for (int i = 0; i <= d; ++i)
        for (int c = 0; c < dim; ++c)
            acc[c] += basis[i] * sp.poles[size_t(first + i) * size_t(dim) + size_t(c)];
    for (int c = 0; c < 3; ++c) out[c] = dim == 4 ? acc[c] / acc[3] : acc[c];
}

std::string lines_of(const Points &in, size_t a, size_t b)
{
    return "lines " + std::to_string(in.line[a % in.count()]) + " and " +
           std::to_string(in.line[b % in.count()]);
}

// The words for a code of BCDF_check_defining_data.
std::string explain_check(int code, const Points &in, size_t n, int slopes, int order,
                          bool periodic, const double *params, int nparams)
{
    const std::string points = std::to_string(n) + (n == 1 ? " point" : " points");
    switch (code) {
    case QX_BCDF_TOO_FEW_POINTS:
        return "too few points: " + points +
               (periodic ? "; a closed curve needs at least 2"
                         : "; an open curve needs at least 2");
    case QX_BCDF_TOO_FEW_CONSTRAINTS:
        return "too few conditions for order " + std::to_string(order) + ": " + points + " and " +
               std::to_string(slopes) + " end tangent(s) give " + std::to_string(int(n) + slopes) +
               ", the order needs " + std::to_string(order) +
               " (add points, give end tangents or lower --order)";
    case QX_BCDF_TOO_MANY_CONSTRAINTS:
        return "too many points for one curve: " + points;
    case QX_BCDF_PARAMS_NOT_INCREASING:
        for (size_t i = 1; params != nullptr && i < size_t(nparams); ++i)
            if (!(params[i] > params[i - 1]))
                return "the points on " + lines_of(in, i - 1, i) +
                       " coincide: consecutive points must differ (their chord-length "
                       "parameters do not increase)";
        return "the chord-length parameters do not increase (coincident consecutive points)";
    case QX_BCDF_ORDER_TOO_LOW:
        return "end tangents need order 3 or more; --order " + std::to_string(order) +
               " was given (use --slopes none or a higher order)";
    case QX_BCDF_CURVATURE_WITHOUT_SLOPE:
        return "a curvature has no tangent at its point";
    case QX_BCDF_CURVATURE_NOT_PERPENDICULAR:
        return "a curvature is not perpendicular to the tangent at its point";
    case QX_BCDF_LS_SEGMENTS:
        return "the least-squares segment count is out of range";
    case QX_BCDF_LS_TOLERANCE:
        return "the least-squares tolerance is negative";
    default:
        return "the defining data are not valid (code " + std::to_string(code) + ")";
    }
}

// Wall-clock and processor time of each stage, for --timing.
struct Timer {
    std::string report;
    double wall = now(CLOCK_MONOTONIC), cpu = now(CLOCK_PROCESS_CPUTIME_ID);
    static double now(clockid_t clock)
    {
        timespec ts{};
        clock_gettime(clock, &ts);
        return double(ts.tv_sec) + 1e-9 * double(ts.tv_nsec);
    }
    void lap(const char *what)
    {
        const double w = now(CLOCK_MONOTONIC), c = now(CLOCK_PROCESS_CPUTIME_ID);
        char b[80];
        std::snprintf(b, sizeof b, "%s%s %.3f s (cpu %.3f s)", report.empty() ? "" : ", ", what,
                      w - wall, c - cpu);
        report += b;
        wall = w;
        cpu = c;
    }
};

// The typical road: point list, record, end tangents, check, normalised
// parameters, read back, h0913. Library reports unwind out of here as
// qxsys::report_error; transient host memory left behind is freed by the
// caller's qxsys_end_operation().
Spline fit(const Points &in, const Options &o, Timer &timer)
{
    const int mode = 0;
    sys10_(&mode);
    acom_.model_scale = 1.0;
    acom_.gca[31] = 0;
    sys21_();
    const double tol = EQ_ask_length_tolerance();

    const int dim = in.columns;
    size_t n = in.count();
    if (n == 0) fail(1, in.name + ": no points (every line is blank or a comment)");
    if (n > 100000000) fail(1, in.name + ": too many points (" + std::to_string(n) + ")");
    // The list holds the points as the record stores them, (x.w, y.w, z.w, w)
    // when weighted; a periodic record ends with a copy of its first point.
    double *pts = static_cast<double *>(SM_alloc(n * size_t(dim) * sizeof(double)));
    for (size_t i = 0; i < n * size_t(dim); ++i)
        pts[i] = dim == 4 && i % 4 < 3 ? in.xyzw[i] * in.xyzw[i - i % 4 + 3] : in.xyzw[i];
    PNTLST *list = PNTLST_create_from_list_of_pts(pts, int(n), dim);
    if (o.periodic) {
        if (n >= 2 && PNTLST_calc_point_distance(list, 0, int(n) - 1) < tol) {
            PNTLST_remove_points(list, int(n) - 1, 1); // the file closed the curve itself
            --n;
        }
        double first[4];
        PNTLST_copy_single_point(list, 0, first);
        PNTLST_concat_one_point(list, first);
    }
    if (o.periodic && n > kMaxClosed)
        fail(1, in.name + ": too many points for a closed curve: " + std::to_string(n) +
                    "; a closed curve is solved as a dense system, at most " +
                    std::to_string(kMaxClosed) + " points");
    const int periodic = o.periodic ? 1 : 0;
    BCDF *df = BCDF_create_from_pntlst(periodic, o.order, 0, list, nullptr, nullptr, nullptr,
                                       nullptr, nullptr, nullptr, nullptr, nullptr);
    int count = 0;
    const double *raw = BCDF_return_param_array(df, &count);
    if (count > 0 && !std::isfinite(raw[count - 1]))
        fail(1, in.name + ": the coordinates are too large (chord lengths overflow)");
    // Coincident neighbours first: they would spoil the end tangents too.
    for (int i = 1; i < count; ++i)
        if (!(raw[i] > raw[i - 1]))
            fail(1, in.name + ": " +
                        explain_check(QX_BCDF_PARAMS_NOT_INCREASING, in, n, 0, o.order, o.periodic,
                                      raw, count));
    if (BCDF_check_consecutive_dup_pts(df)) {
        for (int i = 1; i < count; ++i)
            if (PNTLST_calc_point_distance(df->points, i - 1, i) < tol)
                fail(1, in.name + ": the points on " + lines_of(in, size_t(i) - 1, size_t(i)) +
                            " coincide (closer than the length tolerance " + num(tol) +
                            "): consecutive points must differ");
    }

    // End tangents, as derivatives with respect to the record's parameter.
    double slope[2][3] = {};
    bool has[2] = {false, false};
    if (o.slopes == Options::Given) {
        for (int e = 0; e < 2; ++e) {
            has[e] = o.has_slope[e];
            std::copy(o.slope[e], o.slope[e] + 3, slope[e]);
        }
    } else if (o.slopes == Options::Auto && !o.periodic && o.order >= 3 && n >= 2) {
        for (int e = 0; e < 2; ++e) {
            const int at = e == 0 ? 0 : int(n) - 1;
            if (BCDF_CALC_auto_slope(df, at, slope[e]) != 0 ||
                !(std::isfinite(slope[e][0]) && std::isfinite(slope[e][1]) &&
                  std::isfinite(slope[e][2])))
                fail(1, in.name + ":" + std::to_string(in.line[size_t(at)]) +
                            ": no automatic end tangent here (its neighbours make the local "
                            "quadratic singular); give --slopes");
            has[e] = true;
        }
    }
    if (has[0] || has[1])
        BCDF_update_end_slopes(df, has[0] ? slope[0] : nullptr, 0, has[1] ? slope[1] : nullptr, 0);
    const int nslopes = BCDF_return_num_of_slopes(df);

    if (const int code = BCDF_check_defining_data(df))
        fail(1, in.name + ": " +
                    explain_check(code, in, n, nslopes, o.order, o.periodic,
                                  BCDF_return_param_array(df, &count), count));
    BCDF_normalize_parameters(df); // slopes follow: derivatives times the former length
    timer.lap("record");

    int npts = 0, pdim = 0, nparams = 0, ncp = 0, ns = 0, sdim = 0;
    const double *points = BCDF_return_df_point_array(df, &npts, &pdim);
    const double *params = BCDF_return_param_array(df, &nparams);
    const double *condparams = BCDF_return_slope_pars_array(df, &ncp);
    const double *slopes = BCDF_return_slope_array(df, &ns, &sdim);
    const int *kinds = BCDF_return_slope_type_array(df);
    // A weighted curve takes its tangents as homogeneous derivatives with the
    // weight's derivative 0: (w s, 0) makes the Cartesian derivative s.
    std::vector<double> cond(size_t(ns) * size_t(dim));
    for (int i = 0; i < ns; ++i) {
        const double w = dim == 4 ? points[size_t(BCDF_point_at_slope(df, i)) * 4 + 3] : 1.0;
        for (int c = 0; c < 3; ++c) cond[size_t(i * dim + c)] = w * slopes[i * sdim + c];
    }

    Spline sp;
    sp.order = o.order;
    sp.dimension = dim;
    sp.periodic = o.periodic;
    QX_interp_desc desc = {int(n), o.order, periodic, dim, ns, 0, periodic ? o.order - 2 : 0};
    sp.npoles = int(n) + ns + (periodic ? o.order - 1 : 0);
    sp.knots.assign(size_t(sp.npoles + o.order + 2), 0.0);
    sp.poles.assign(size_t(sp.npoles) * size_t(dim), 0.0);
    int nknots = 0;
    const int rc = h0913(&desc, points, params, condparams, kinds, cond.data(), &nknots,
                         sp.knots.data(), sp.poles.data());
    sp.params.assign(params, params + n);
    BCDF_free_structure(df);
    if (rc == 1 && dim == 4 && !o.periodic)
        fail(1, in.name + ": the interpolation failed: a pole came out with a negative weight "
                          "(weights that change too fast between neighbouring points) or the "
                          "system is singular (nearly coincident points?)");
    if (rc == 1)
        fail(1, in.name +
                    ": the interpolation system is singular: the points cannot be passed "
                    "through at their chord-length parameters with order " +
                    std::to_string(o.order) + " (nearly coincident points?)");
    if (rc != 0 || nknots != sp.npoles + o.order)
        fail(1, in.name +
                    ": the interpolation could not be set up: no knot vector could be "
                    "placed for " +
                    std::to_string(n) + " points at order " + std::to_string(o.order) +
                    (o.periodic ? ", closed," : "") + " or no memory for the system (h0913 gave " +
                    std::to_string(rc) + ")");
    sp.knots.resize(size_t(nknots));
    sp.tmin = sp.knots[size_t(o.order - 1)];
    sp.tmax = sp.knots[size_t(sp.npoles)];
    for (size_t i = 0; i < sp.poles.size(); ++i) {
        if (!std::isfinite(sp.poles[i]))
            fail(1, in.name + ": the fit gave a pole that is not a finite number "
                              "(nearly coincident points or huge coordinates?)");
        if (dim == 4 && i % 4 == 3 && !(sp.poles[i] > 0.0))
            fail(1, in.name + ": pole " + std::to_string(i / 4) + " came out with weight " +
                        num(sp.poles[i]) +
                        ": the weights change too fast between neighbouring points");
    }
    timer.lap("fit");
    return sp;
}

// Curve samples t0 ... t1, evenly spaced in the parameter, Cartesian.
std::vector<double> sample(const Spline &sp, int count)
{
    std::vector<double> xyz(size_t(count) * 3);
    for (int j = 0; j < count; ++j) {
        const double t =
            j == count - 1 ? sp.tmax : sp.tmin + (sp.tmax - sp.tmin) * (double(j) / (count - 1));
        evaluate(sp, t, &xyz[size_t(j) * 3]);
    }
    if (merrorlevel() != 0) {
        merrorflush();
        fail(1, "the curve could not be evaluated over its knots");
    }
    return xyz;
}

// ---- output -----------------------------------------------------------------

// An output buffer that numbers are formatted into in place.
class Out
{
  public:
    explicit Out(size_t expected) : s_(expected + 64, '\0') {}
    Out &operator<<(std::string_view v)
    {
        std::memcpy(room(v.size()), v.data(), v.size());
        n_ += v.size();
        return *this;
    }
    Out &operator<<(char c)
    {
        *room(1) = c;
        ++n_;
        return *this;
    }
    Out &operator<<(double v) { return put(std::to_chars(room(32), &s_[n_] + 32, v).ptr); }
    Out &operator<<(long v) { return put(std::to_chars(room(24), &s_[n_] + 24, v).ptr); }
    Out &fixed(double v) // SVG coordinates: two decimals
    {
        return put(std::to_chars(room(340), &s_[n_] + 340, v, std::chars_format::fixed, 2).ptr);
    }
    std::string take()
    {
        s_.resize(n_);
        return std::move(s_);
    }

  private:
    std::string s_;
    size_t n_ = 0;
    char *room(size_t k)
    {
        if (s_.size() - n_ < k) s_.resize(std::max(2 * s_.size(), n_ + k));
        return &s_[n_];
    }
    Out &put(const char *end)
    {
        n_ = size_t(end - s_.data());
        return *this;
    }
};

// Pole i in output form: Cartesian, with the weight for a weighted curve.
void pole_out(const Spline &sp, size_t i, double p[4])
{
    const double *h = &sp.poles[i * size_t(sp.dimension)];
    for (int c = 0; c < sp.dimension; ++c) p[c] = h[c];
    if (sp.dimension == 4)
        for (int c = 0; c < 3; ++c) p[c] = h[c] / h[3];
}

std::string format_text(const Spline &sp, const std::vector<double> &samples)
{
    Out o((sp.knots.size() + sp.params.size()) * 22 + sp.poles.size() * 23 + samples.size() * 23 +
          256);
    o << "order " << long(sp.order) << "\nperiodic " << long(sp.periodic) << "\ndimension "
      << long(sp.dimension) << "\nrange " << sp.tmin << ' ' << sp.tmax << "\nknots "
      << long(sp.knots.size()) << '\n';
    for (double k : sp.knots) o << k << '\n';
    o << "poles " << long(sp.npoles) << '\n';
    for (size_t i = 0; i < size_t(sp.npoles); ++i) {
        double p[4];
        pole_out(sp, i, p);
        for (int c = 0; c < sp.dimension; ++c) o << p[c] << (c + 1 < sp.dimension ? ' ' : '\n');
    }
    o << "params " << long(sp.params.size()) << '\n';
    for (double t : sp.params) o << t << '\n';
    if (!samples.empty()) {
        o << "samples " << long(samples.size() / 3) << '\n';
        for (size_t j = 0; j < samples.size(); j += 3)
            o << samples[j] << ' ' << samples[j + 1] << ' ' << samples[j + 2] << '\n';
    }
    return o.take();
}

std::string format_json(const Spline &sp, const std::vector<double> &samples)
{
    Out o((sp.knots.size() + sp.params.size()) * 22 + sp.poles.size() * 23 + samples.size() * 23 +
          256);
    auto list = [&](const std::vector<double> &v) {
        o << '[';
        for (size_t i = 0; i < v.size(); ++i) o << (i ? "," : "") << v[i];
        o << ']';
    };
    o << "{\"order\":" << long(sp.order) << ",\"periodic\":" << (sp.periodic ? "true" : "false")
      << ",\"dimension\":" << long(sp.dimension) << ",\"range\":[" << sp.tmin << ',' << sp.tmax
      << "],\n\"knots\":";
    list(sp.knots);
    o << ",\n\"poles\":[";
    for (size_t i = 0; i < size_t(sp.npoles); ++i) {
        double p[4];
        pole_out(sp, i, p);
        o << (i ? ",\n[" : "\n[");
        for (int c = 0; c < sp.dimension; ++c) o << (c ? "," : "") << p[c];
        o << ']';
    }
    o << "],\n\"params\":";
    list(sp.params);
    if (!samples.empty()) {
        o << ",\n\"samples\":[";
        for (size_t j = 0; j < samples.size(); j += 3)
            o << (j ? ",\n[" : "\n[") << samples[j] << ',' << samples[j + 1] << ','
              << samples[j + 2] << ']';
        o << ']';
    }
    o << "}\n";
    return o.take();
}

// The picture: input points (red dots), control polygon (grey, dashed) and
// the curve (blue), projected on the chosen plane, y up.
std::string format_svg(const Spline &sp, const Points &in, const Options &opt)
{
    const int a = opt.plane[0], b = opt.plane[1];
    const int spans = int(sp.knots.size()) - 2 * (sp.order - 1) - 1;
    const std::vector<double> curve = sample(sp, std::clamp(spans * 16, 200, 200000));
    std::vector<double> poles(size_t(sp.npoles) * 3);
    for (size_t i = 0; i < size_t(sp.npoles); ++i) {
        double p[4];
        pole_out(sp, i, p);
        std::copy(p, p + 3, &poles[i * 3]);
    }
    double lo[2] = {HUGE_VAL, HUGE_VAL}, hi[2] = {-HUGE_VAL, -HUGE_VAL};
    auto grow = [&](const double *p) {
        for (int k = 0; k < 2; ++k) {
            lo[k] = std::min(lo[k], p[k ? b : a]);
            hi[k] = std::max(hi[k], p[k ? b : a]);
        }
    };
    for (size_t i = 0; i < curve.size(); i += 3) grow(&curve[i]);
    for (size_t i = 0; i < poles.size(); i += 3) grow(&poles[i]);
    for (size_t i = 0; i < in.count(); ++i) grow(&in.xyzw[i * size_t(in.columns)]);
    const double margin = 24.0, size = 720.0;
    const double span = std::max(hi[0] - lo[0], hi[1] - lo[1]);
    const double scale = span > 0.0 ? size / span : 1.0;
    const double w = (hi[0] - lo[0]) * scale + 2 * margin, h = (hi[1] - lo[1]) * scale + 2 * margin;
    Out o((curve.size() + poles.size() + in.count() * 3) * 8 + 1024);
    auto at = [&](const double *p, char sep) -> Out & {
        o.fixed(margin + (p[a] - lo[0]) * scale) << sep;
        return o.fixed(h - margin - (p[b] - lo[1]) * scale);
    };
    auto polyline = [&](const std::vector<double> &v, const char *style) {
        o << "<polyline fill=\"none\" " << style << " points=\"";
        for (size_t i = 0; i < v.size(); i += 3) at(&v[i], ',') << (i + 3 < v.size() ? " " : "");
        o << "\"/>\n";
    };
    const char *axes[] = {"x", "y", "z"};
    o << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
         "width=\"";
    o.fixed(w) << "\" height=\"";
    o.fixed(h) << "\" viewBox=\"0 0 ";
    o.fixed(w) << ' ';
    o.fixed(h) << "\">\n<title>qxspline: order " << long(sp.order)
               << (sp.periodic ? " closed" : " open") << " B-spline through "
               << long(sp.params.size()) << " points, " << axes[a] << axes[b]
               << " plane</title>\n<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
    polyline(poles, "stroke=\"#888888\" stroke-width=\"1\" stroke-dasharray=\"4 3\"");
    polyline(curve, "stroke=\"#1f5fbf\" stroke-width=\"2\"");
    o << "<path fill=\"none\" stroke=\"#d62728\" stroke-width=\"6\" stroke-linecap=\"round\" d=\"";
    for (size_t i = 0; i < in.count(); ++i) {
        o << 'M';
        at(&in.xyzw[i * size_t(in.columns)], ' ') << "h0";
    }
    o << "\"/>\n<text x=\"8\" y=\"16\" font-family=\"sans-serif\" font-size=\"12\" "
         "fill=\"#444444\">points (red), control polygon (grey), curve (blue)</text>\n</svg>\n";
    return o.take();
}

// Writes all of data to fd; false (errno set) on failure.
bool write_all(int fd, const std::string &data)
{
    for (size_t done = 0; done < data.size();) {
        const ssize_t put = ::write(fd, data.data() + done, data.size() - done);
        if (put < 0 && errno == EINTR) continue;
        if (put <= 0) return false;
        done += size_t(put);
    }
    return true;
}

// A result on its way to a file. A regular file (or a new one) is written to a
// temporary file beside it (through symbolic links) and renamed over it once
// complete; anything else (a device, a pipe) is written directly at commit.
struct Staged {
    std::string path, temp;
    const std::string *data;
};

Staged stage(const std::string &path, const std::string &data)
{
    Staged st{path, "", &data};
    struct stat target;
    mode_t mode = 0666;
    if (::stat(path.c_str(), &target) == 0) {
        if (!S_ISREG(target.st_mode)) return st;
        mode = target.st_mode & 07777;
        if (char *real = ::realpath(path.c_str(), nullptr)) {
            st.path = real;
            std::free(real);
        }
    } else {
        const mode_t mask = ::umask(0);
        ::umask(mask);
        mode &= ~mask;
    }
    st.temp = st.path + ".XXXXXX";
    const int fd = ::mkstemp(st.temp.data());
    if (fd < 0) fail(1, "cannot write '" + path + "': " + std::strerror(errno));
    const bool ok = ::fchmod(fd, mode) == 0 && write_all(fd, data);
    const int e = errno;
    if (::close(fd) != 0 || !ok) {
        ::unlink(st.temp.c_str());
        fail(1, "cannot write '" + path + "': " + std::strerror(ok ? errno : e));
    }
    return st;
}

void write_results(const Options &o, const std::string &result, const std::string &svg)
{
    std::vector<Staged> staged;
    try {
        if (o.output != "-") staged.push_back(stage(o.output, result));
        if (!o.svg.empty()) staged.push_back(stage(o.svg, svg));
    } catch (const Failure &) {
        for (const Staged &s : staged)
            if (!s.temp.empty()) ::unlink(s.temp.c_str());
        throw;
    }
    for (size_t i = 0; i < staged.size(); ++i) {
        const Staged &s = staged[i];
        bool ok = false;
        if (!s.temp.empty()) {
            ok = ::rename(s.temp.c_str(), s.path.c_str()) == 0;
        } else if (const int fd = ::open(s.path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC); fd >= 0) {
            ok = write_all(fd, *s.data);
            ok = ::close(fd) == 0 && ok;
        }
        if (!ok) {
            const int e = errno;
            for (size_t j = i; j < staged.size(); ++j)
                if (!staged[j].temp.empty()) ::unlink(staged[j].temp.c_str());
            fail(1, "cannot write '" + s.path + "': " + std::strerror(e));
        }
    }
    if (o.output == "-" && (std::fwrite(result.data(), 1, result.size(), stdout) != result.size() ||
                            std::fflush(stdout) != 0))
        fail(1, std::string("cannot write standard output: ") + std::strerror(errno));
}

int run(int argc, char **argv)
{
    const Options o = parse_options(argc, argv);
    Timer timer;
    const Points in =
        parse_points(read_all(o.input), o.input == "-" ? std::string("<stdin>") : o.input);
    timer.lap("parse");
    if (MACH__checking_level < 1) MACH__checking_level = 1; // misuse unwinds to the trap below
    Spline sp;
    std::vector<double> samples;
    std::string svg;
    try {
        qxsys::guarded([&] {
            sp = fit(in, o, timer);
            if (o.samples > 0) samples = sample(sp, o.samples);
            if (!o.svg.empty()) svg = format_svg(sp, in, o);
        });
    } catch (const qxsys::report_error &e) {
        qxsys_end_operation();
        fail(1, in.name + ": the library reported an error: " + e.what());
    } catch (...) {
        qxsys_end_operation();
        throw;
    }
    qxsys_end_operation();
    const std::string result = o.json ? format_json(sp, samples) : format_text(sp, samples);
    write_results(o, result, svg);
    timer.lap("write");
    if (o.timing) std::fprintf(stderr, "qxspline: %s\n", timer.report.c_str());
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    qxsys_set_error_stream(nullptr); // every error is trapped and told in words
    try {
        return run(argc, argv);
    } catch (const Failure &f) {
        std::fprintf(stderr, "qxspline: %s\n", f.message.c_str());
        return f.status;
    } catch (const std::bad_alloc &) {
        std::fprintf(stderr, "qxspline: out of memory\n");
        return 1;
    } catch (const std::exception &e) {
        std::fprintf(stderr, "qxspline: %s\n", e.what());
        return 1;
    }
}
