// general_utilities.cpp — tolerant comparisons with an absolute and a relative
// tolerance, used by the knot code. Every test includes equality; the
// absolute test comes first, the relative one scales by the larger
// magnitude of the two numbers compared.
#include "frame/general_utilities.h"

#include <algorithm>
#include <cmath>

extern "C" {

bool mx_eq_y(double x, double y, double abs_tol, double rel_tol)
{
    const double d = std::fabs(x - y);
    if (d <= abs_tol) return true;
    return d <= rel_tol * std::max(std::fabs(x), std::fabs(y));
}

bool mx_lt_y(double x, double y, double abs_tol, double rel_tol)
{
    if (x > y) return false;
    return !mx_eq_y(x, y, abs_tol, rel_tol);
}

bool mx_gt_y(double x, double y, double abs_tol, double rel_tol)
{
    if (x < y) return false;
    return !mx_eq_y(x, y, abs_tol, rel_tol);
}

bool mx_in_closed_interval(double x, double low, double high, double abs_tol, double rel_tol)
{
    if (low <= x && x <= high) return true;
    if (mx_eq_y(x, low, abs_tol, rel_tol)) return true;
    return mx_eq_y(x, high, abs_tol, rel_tol);
}

} // extern "C"
