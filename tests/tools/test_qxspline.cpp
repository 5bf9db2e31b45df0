// Runs the qxspline tool as a user does (posix_spawn, temporary files) and
// checks what it writes: the curve of the written knots and poles, evaluated
// here by an independent Cox-de Boor recursion, passes through the input
// points at their normalised chord-length parameters; bad input and bad usage
// give their message and status and leave no output behind.
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

extern char **environ;

namespace
{

using Points = std::vector<std::vector<double>>;
using Args = std::vector<std::string>;

struct Outcome {
    int status;
    std::string out, err;
};

std::string slurp(const std::string &file)
{
    std::stringstream s;
    s << std::ifstream(file).rdbuf();
    return s.str();
}

class Qxspline : public ::testing::Test
{
  protected:
    std::string dir;
    void SetUp() override
    {
        char tmpl[] = "/tmp/qxspline-test-XXXXXX";
        ASSERT_NE(mkdtemp(tmpl), nullptr);
        dir = tmpl;
    }
    void TearDown() override { std::system(("rm -rf '" + dir + "'").c_str()); }
    std::string path(const std::string &name) const { return dir + "/" + name; }
    std::string write(const std::string &name, const std::string &text) const
    {
        std::ofstream(path(name)) << text;
        return path(name);
    }
    // The tool with standard input from the file `input`.
    Outcome run(Args args, const std::string &input = "/dev/null") const
    {
        args.insert(args.begin(), QXSPLINE_PATH);
        std::vector<char *> argv;
        for (std::string &a : args) argv.push_back(a.data());
        argv.push_back(nullptr);
        posix_spawn_file_actions_t fa;
        posix_spawn_file_actions_init(&fa);
        posix_spawn_file_actions_addopen(&fa, 0, input.c_str(), O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&fa, 1, path("stdout").c_str(), O_WRONLY | O_CREAT, 0644);
        posix_spawn_file_actions_addopen(&fa, 2, path("stderr").c_str(), O_WRONLY | O_CREAT, 0644);
        pid_t pid = 0;
        int status = -1;
        EXPECT_EQ(posix_spawn(&pid, argv[0], &fa, nullptr, argv.data(), environ), 0);
        posix_spawn_file_actions_destroy(&fa);
        waitpid(pid, &status, 0);
        Outcome r{WIFEXITED(status) ? WEXITSTATUS(status) : -1, slurp(path("stdout")),
                  slurp(path("stderr"))};
        std::remove(path("stdout").c_str());
        std::remove(path("stderr").c_str());
        return r;
    }
};

Args split(const std::string &words)
{
    std::istringstream in(words);
    Args args;
    for (std::string w; in >> w;) args.push_back(w);
    return args;
}

// The text output, section by section.
struct Curve {
    int order = 0, periodic = 0, dimension = 0;
    double t0 = 0, t1 = 0;
    std::vector<double> knots, params;
    Points poles, samples;
};

Curve read_curve(const std::string &text)
{
    Curve c;
    std::istringstream in(text);
    std::string key;
    for (size_t n = 0; in >> key;) {
        if (key == "order") in >> c.order;
        if (key == "periodic") in >> c.periodic;
        if (key == "dimension") in >> c.dimension;
        if (key == "range") in >> c.t0 >> c.t1;
        if ((key == "knots" || key == "params") && in >> n)
            for (auto *v = key == "knots" ? &c.knots : &c.params; n-- > 0;)
                v->push_back(0), in >> v->back();
        if ((key == "poles" || key == "samples") && in >> n)
            for (Points *v = key == "poles" ? &c.poles : &c.samples; n-- > 0;) {
                v->emplace_back(key == "poles" ? c.dimension : 3);
                for (double &x : v->back()) in >> x;
            }
    }
    return c;
}

// Cox-de Boor: basis function i of order k at t (half-open spans, the end of
// the range belonging to the last one).
double basis(const std::vector<double> &u, int i, int k, double t, double tmax)
{
    if (k == 1) return t == tmax ? u[i] < t && t <= u[i + 1] : u[i] <= t && t < u[i + 1];
    const double a = u[i + k - 1] - u[i], b = u[i + k] - u[i + 1];
    return (a > 0 ? (t - u[i]) / a * basis(u, i, k - 1, t, tmax) : 0) +
           (b > 0 ? (u[i + k] - t) / b * basis(u, i + 1, k - 1, t, tmax) : 0);
}

std::vector<double> point_at(const Curve &c, double t)
{
    std::vector<double> h(4, 0.0);
    for (size_t i = 0; i < c.poles.size(); ++i) {
        const double b = basis(c.knots, i, c.order, t, c.t1);
        const double w = c.dimension == 4 ? c.poles[i][3] : 1.0;
        for (int d = 0; d < 3; ++d) h[d] += b * w * c.poles[i][d];
        h[3] += b * w;
    }
    return {h[0] / h[3], h[1] / h[3], h[2] / h[3]};
}

// Normalised chord-length parameters over the stored coordinates (x w, y w,
// z w, w when weighted); *length is the total before normalisation.
std::vector<double> chord_params(const Points &p, bool closed, double *length)
{
    auto stored = [&](size_t i, size_t d) {
        const std::vector<double> &q = p[i % p.size()];
        return q.size() == 4 && d < 3 ? q[d] * q[3] : q[d];
    };
    std::vector<double> t{0.0};
    for (size_t i = 1; i < p.size() + closed; ++i) {
        double d2 = 0.0;
        for (size_t d = 0; d < p[0].size(); ++d) d2 += std::pow(stored(i, d) - stored(i - 1, d), 2);
        t.push_back(t.back() + std::sqrt(d2));
    }
    *length = t.back();
    for (double &x : t) x /= *length;
    return t;
}

// Blanks, a comma and a tab between the numbers, comments and blank lines.
std::string text_of(const Points &p)
{
    std::ostringstream s;
    s.precision(17);
    for (const auto &q : p) {
        for (size_t d = 0; d < q.size(); ++d) s << (d ? (d == 2 ? ",\t" : " ") : "") << q[d];
        s << "   # a comment\n\n";
    }
    return s.str();
}

TEST_F(Qxspline, PolesReproduceThePointsAtChordLengthParameters)
{
    Points wavy, cam, weighted;
    for (int i = 0; i < 40; ++i) wavy.push_back({i * 2.5, 10 * std::sin(i * 0.4), i * 0.1 - 1});
    for (int i = 0; i < 24; ++i) // a circle with a lobe
        cam.push_back(
            {(30 + 8 * std::exp(-std::pow(i / 24.0 - 0.5, 2) * 40)) * std::cos(i * M_PI / 12),
             30 * std::sin(i * M_PI / 12), 5.0});
    for (int i = 0; i < 9; ++i)
        weighted.push_back({std::cos(i * 0.3) * 40, std::sin(i * 0.3) * 40, 1, 1 + 0.2 * (i % 3)});
    const struct {
        const Points *points;
        Args args;
        std::vector<double> tangents; // given at the start and the end, per unit chord length
    } cases[] = {
        {&wavy, {}, {}},
        {&wavy, {"--slopes", "none"}, {}},
        {&wavy, {"--order", "3"}, {}},
        {&wavy, {"--order", "6", "--slopes", "none"}, {}},
        {&wavy, {"--slopes", "1,0,0;0,1,0"}, {1, 0, 0, 0, 1, 0}},
        {&cam, {"--periodic", "--slopes", ";0,1,0"}, {0, 1, 0, 0, 1, 0}},
        {&cam, {"--periodic"}, {}},
        {&cam, {"--periodic", "--order", "5"}, {}},
        {&weighted, {}, {}},
        {&weighted, {"--order", "5", "--slopes", "none"}, {}},
    };
    for (const auto &c : cases) {
        const Points &p = *c.points;
        const bool closed = c.args.size() && c.args[0] == "--periodic";
        Args args = c.args;
        args.insert(args.end(), {write("in.txt", text_of(p)), "--samples", "7"});
        const Outcome r = run(args);
        SCOPED_TRACE(testing::PrintToString(c.args) + " " + r.err);
        ASSERT_EQ(r.status, 0);
        const Curve cv = read_curve(r.out);
        ASSERT_EQ(cv.knots.size(), cv.poles.size() + cv.order);
        EXPECT_TRUE(std::is_sorted(cv.knots.begin(), cv.knots.end()));
        EXPECT_EQ(cv.periodic, int(closed));
        EXPECT_EQ(cv.knots[cv.order - 1], cv.t0);
        EXPECT_EQ(cv.knots[cv.poles.size()], cv.t1);
        double length = 0;
        const std::vector<double> t = chord_params(p, closed, &length);
        ASSERT_EQ(cv.params.size(), p.size());
        for (size_t j = 0; j < p.size(); ++j) {
            EXPECT_NEAR(cv.params[j], t[j], 1e-13);
            const std::vector<double> q = point_at(cv, t[j]);
            for (int d = 0; d < 3; ++d) EXPECT_NEAR(q[d], p[j][d], 1e-9) << j;
        }
        ASSERT_EQ(cv.samples.size(), 7u);
        for (int j = 0; j < 7; ++j)
            for (int d = 0; d < 3; ++d)
                EXPECT_NEAR(cv.samples[j][d], point_at(cv, cv.t0 + (cv.t1 - cv.t0) * j / 6)[d],
                            1e-9);
        auto derivative = [&](double at, double sign) { // one-sided, second order
            const double h = sign * 1e-5;
            std::vector<double> a = point_at(cv, at), b = point_at(cv, at + h),
                                e = point_at(cv, at + 2 * h);
            for (int d = 0; d < 3; ++d) a[d] = (4 * b[d] - 3 * a[d] - e[d]) / (2 * h);
            return a;
        };
        const auto start = derivative(cv.t0, 1), end = derivative(cv.t1, -1);
        for (int d = 0; closed && d < 3; ++d) // smooth at the seam
            EXPECT_NEAR(start[d], end[d], 1e-4 * std::hypot(start[0], start[1], start[2]));
        for (int d = 0; d < 3 && !c.tangents.empty(); ++d) {
            EXPECT_NEAR(start[d] / length, c.tangents[d], 1e-4);
            EXPECT_NEAR(end[d] / length, c.tangents[d + 3], 1e-4);
        }
    }
    // Standard input, and a closed file that repeats its first point at the end.
    Points repeated = cam;
    repeated.push_back(cam[0]);
    const Outcome a = run({"--periodic"}, write("closed.txt", text_of(repeated)));
    EXPECT_EQ(a.status, 0);
    EXPECT_EQ(a.out, run({"--periodic", write("open.txt", text_of(cam))}).out);
}

// A minimal JSON grammar check: advances p over one value.
const char *skip(const char *&p)
{
    while (std::isspace(static_cast<unsigned char>(*p))) ++p;
    return p;
}
bool json_value(const char *&p)
{
    const char open = *skip(p), close = open == '{' ? '}' : ']';
    if (open == '{' || open == '[') {
        if (*skip(++p) == close) return ++p, true;
        do {
            if (open == '{' && !(*skip(p) == '"' && json_value(p) && *skip(p) == ':' && ++p))
                return false;
            if (!json_value(p)) return false;
        } while (*skip(p) == ',' && ++p);
        return *p++ == close;
    }
    if (open == '"') {
        while (*++p != '"')
            if (*p == '\0' || (*p == '\\' && !*++p)) return false;
        return ++p, true;
    }
    for (const char *word : {"true", "false", "null"})
        if (std::strncmp(p, word, std::strlen(word)) == 0) return p += std::strlen(word), true;
    char *end = nullptr;
    std::strtod(p, &end);
    const bool number = end != p && (*p == '-' || std::isdigit(static_cast<unsigned char>(*p)));
    p = end;
    return number;
}

TEST_F(Qxspline, JsonAndSvgAreWellFormed)
{
    const std::string in = QX_EXAMPLES_DIR "/naca2412.txt";
    const Outcome r = run({in, "--json", "--samples", "5", "-o", path("out.json"), "--svg",
                           path("pic.svg"), "--plane", "zx"});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, "");
    const std::string json = slurp(path("out.json"));
    const char *at = json.c_str();
    EXPECT_TRUE(json_value(at) && *skip(at) == '\0') << at;
    EXPECT_EQ(run({in, "--json", "--samples", "5"}).out, slurp(path("out.json")));
    // Balanced tags under one <svg> root, two polylines.
    const std::string svg = slurp(path("pic.svg"));
    std::vector<std::string> open;
    int polylines = 0, roots = 0;
    const std::regex tag("<(/?)([a-zA-Z]+)[^>]*?(/?)>");
    for (std::sregex_iterator m(svg.begin(), svg.end(), tag), e; m != e; ++m) {
        const std::string name = (*m)[2];
        if ((*m)[1].length()) {
            ASSERT_FALSE(open.empty());
            EXPECT_EQ(open.back(), name);
            open.pop_back();
            continue;
        }
        roots += open.empty();
        EXPECT_EQ(open.empty(), name == "svg");
        polylines += name == "polyline";
        if (!(*m)[3].length()) open.push_back(name);
    }
    EXPECT_TRUE(open.empty());
    EXPECT_EQ(roots, 1);
    EXPECT_EQ(polylines, 2);
}

TEST_F(Qxspline, BadDataIsNamedAndNothingIsWritten)
{
    const std::string bent = "0 0 0\n1 0 0\n2 1 0\n";
    std::string many;
    for (int i = 0; i < 2001; ++i) many += std::to_string(i) + " " + std::to_string(i % 7) + " 0\n";
    const struct {
        std::string input, options, message;
    } cases[] = {
        {"1 2 3\n1 2 x\n", "", "in.txt:2: 'x' is not a number"},
        {"# two\n1 2\n", "", "in.txt:2: 2 numbers; a point is written x y z"},
        {"1 2 3 4 5\n", "", "in.txt:1: 5 numbers; a point is written x y z"},
        {"1 2 3\n\n1 2 3 4\n", "", "in.txt:3: 4 numbers, but line 1 has 3"},
        {"1 2 3 1\n4 5 6 0\n", "", "in.txt:2: weight 0 is not positive"},
        {"1,,2,3\n", "", "in.txt:1: a value is missing before ','"},
        {"1 2 3\n", "", "in.txt: too few points: 1 point"},
        {"# nothing\n", "", "in.txt: no points"},
        {"0 0 0\n1 0 0\n1 0 0\n2 1 0\n", "", "the points on lines 2 and 3 coincide"},
        {"0 0 0\n1 0 0\n1 0.00001 0\n2 1 0\n", "", "the points on lines 2 and 3 coincide"},
        {bent, "--slopes=none", "too few conditions for order 4"},
        {bent, "--order=2", ""}, // a polyline: fine
        {bent, "--slopes=1,0,0;1,0,0 --order=2", "end tangents need order 3"},
        {"0 0 0 1\n1 1 0 100\n2 1 0 1\n3 0 0 100\n", "--slopes=none", "a negative weight"},
        {many, "--periodic", "too many points for a closed curve: 2001"},
    };
    for (const auto &c : cases) {
        SCOPED_TRACE(c.input + c.options);
        std::remove(path("pic.svg").c_str());
        std::ofstream(path("out.txt")) << "old";
        Args args{write("in.txt", c.input), "-o", path("out.txt"), "--svg", path("pic.svg")};
        for (const std::string &o : split(c.options)) args.push_back(o);
        const Outcome r = run(args);
        EXPECT_EQ(r.status, c.message.empty() ? 0 : 1) << r.err;
        if (c.message.empty()) continue;
        EXPECT_EQ(r.err.rfind("qxspline: ", 0), 0u);
        EXPECT_NE(r.err.find(c.message), std::string::npos) << r.err;
        EXPECT_EQ(slurp(path("out.txt")), "old");
        EXPECT_NE(access(path("pic.svg").c_str(), F_OK), 0);
        const std::string no_temporaries = "test $(ls '" + dir + "' | wc -l) -eq 2";
        EXPECT_EQ(std::system(no_temporaries.c_str()), 0);
    }
    EXPECT_EQ(run({path("missing.txt")}).status, 1);
}

TEST_F(Qxspline, UsageErrorsExitWithTwo)
{
    const std::string in = write("in.txt", "0 0 0\n1 0 0\n2 1 0\n3 0 0\n");
    for (const std::string &options :
         Args{"--bogus", "--order 1", "--order 26", "--plane xz", "--samples 1",
              "--slopes 1,0;0,1,0", "--slopes 1,0,0", "--periodic --slopes 1,0,0;0,1,0",
              "--json=yes", in, "--svg -", "--svg " + path("out.txt"), "-o"}) {
        const Outcome r = run(split(in + " -o " + path("out.txt") + " " + options));
        EXPECT_EQ(r.status, 2) << options << r.err;
        EXPECT_NE(r.err.find("(see qxspline --help)"), std::string::npos);
        EXPECT_NE(access(path("out.txt").c_str(), F_OK), 0);
    }
    const Outcome help = run({"--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_NE(help.out.find("Exit status"), std::string::npos);
}

} // namespace
