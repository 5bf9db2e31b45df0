// general_utilities.cpp — tolerant comparisons with an absolute and a relative
// tolerance, used by the knot code. Every test includes equality; the
// absolute test comes first, the relative one scales by the larger
// magnitude of the two numbers compared. Also the transient-to-persistent
// copy of host blocks that records outliving an operation are made with.
#include "frame/general_utilities.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <qxmath/qxhost.h>

namespace
{

// Both differences exceed their tolerance. Not the negation of mx_eq_y: a
// NaN makes both false.
bool differ(double x, double y, double abs_tol, double rel_tol)
{
    const double d = std::fabs(x - y);
    return d > abs_tol && d > rel_tol * std::max(std::fabs(x), std::fabs(y));
}

} // namespace

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
    return differ(x, y, abs_tol, rel_tol);
}

bool mx_gt_y(double x, double y, double abs_tol, double rel_tol)
{
    if (x < y) return false;
    return differ(x, y, abs_tol, rel_tol);
}

bool mx_in_closed_interval(double x, double low, double high, double abs_tol, double rel_tol)
{
    if (low <= x && x <= high) return true;
    if (mx_eq_y(x, low, abs_tol, rel_tol)) return true;
    return mx_eq_y(x, high, abs_tol, rel_tol);
}

void *qx_persistent_copy(const void *block, const char *file, int line)
{
    if (block == nullptr) return nullptr;
    const size_t bytes = SM_length(block);
    void *copy = SM_calloc_persistent(1, bytes);
    if (copy == nullptr) {
        ERROR_internal(file, line,
                       "Failed to allocate permanent memory for transient conversion of %d bytes",
                       static_cast<int>(bytes));
        return nullptr;
    }
    std::memcpy(copy, block, bytes);
    return copy;
}

} // extern "C"
