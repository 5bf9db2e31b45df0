// qxsession — starts a modelling session the way a host does and prints
// what the library then holds: the tolerance table and the work coordinate
// system.
//
//   qxsession [--scale S] [--fine] [--origin X Y Z]
//
// --scale sets the model scale (default 1.0), --fine the precision switch;
// --origin moves the WCS origin. The output is plain text, one item a line.
#include <charconv>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>

namespace
{

int usage(const char *why)
{
    std::fprintf(stderr, "qxsession: %s\nusage: qxsession [--scale S] [--fine] [--origin X Y Z]\n",
                 why);
    return 2;
}

bool parse_double(const char *text, double *out)
{
    char *end = nullptr;
    errno = 0;
    const double v = std::strtod(text, &end);
    if (end == text || *end != '\0' || errno == ERANGE || !std::isfinite(v)) return false;
    *out = v;
    return true;
}

// Shortest text that reads back as the same double.
const char *num(double v)
{
    static char buf[4][32];
    static int next = 0;
    char *out = buf[next++ % 4];
    *std::to_chars(out, out + 31, v).ptr = '\0';
    return out;
}

} // namespace

int main(int argc, char **argv)
{
    double scale = 1.0;
    bool fine = false;
    double origin[3] = {0.0, 0.0, 0.0};
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--scale") == 0) {
            if (i + 1 >= argc || !parse_double(argv[++i], &scale) || !(scale > 0.0))
                return usage("--scale takes a positive number");
        } else if (std::strcmp(argv[i], "--fine") == 0) {
            fine = true;
        } else if (std::strcmp(argv[i], "--origin") == 0) {
            for (double &c : origin)
                if (i + 1 >= argc || !parse_double(argv[++i], &c))
                    return usage("--origin takes three numbers");
        } else if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
            usage("prints the tolerances and WCS of a new session");
            return 0;
        } else {
            return usage("unknown argument");
        }
    }

    // What a host does when it opens a part: initialise, set the scale and
    // the precision switch, compute the tolerances, place the WCS.
    const int mode = 0;
    sys10_(&mode);
    acom_.model_scale = scale;
    acom_.gca[31] = fine ? 1 : 0;
    sys21_();
    const double identity[9] = {1, 0, 0, 0, 1, 0, 0, 0, 1};
    WCS__set_matrix_values(identity);
    std::memcpy(acom_.wcs_origin, origin, sizeof origin);

    std::printf("model scale              %s\n", num(ACOM_ask_MEC()));
    std::printf("precision                %s\n", fine ? "fine" : "standard");
    std::printf("number tolerance         %s\n", num(EQ_ask_number_tolerance()));
    std::printf("length tolerance         %s\n", num(EQ_ask_length_tolerance()));
    std::printf("length-squared tolerance %s\n", num(EQ_ask_length_squared_tolerance()));
    const int slot7 = 7;
    const double one = 1.0;
    double coarse = 0.0;
    sys22_(&one, &slot7, &coarse);
    std::printf("scaled squared tolerance %s\n", num(coarse));

    double csys[12];
    WCS_ask_coordinate_system(csys);
    std::printf("WCS origin               %s %s %s\n", num(csys[0]), num(csys[1]), num(csys[2]));
    for (int r = 0; r < 3; ++r)
        std::printf("WCS %c axis               %s %s %s\n", "XYZ"[r], num(csys[3 + 3 * r]),
                    num(csys[4 + 3 * r]), num(csys[5 + 3 * r]));
    return 0;
}
