// general_utilities.h — internal tolerant comparisons of real numbers.
//
// Each takes an absolute and a relative tolerance; two numbers are equal when
// |x - y| <= abs_tol or |x - y| <= rel_tol * max(|x|, |y|) (both tests
// inclusive). C linkage so that the names stay the library's own, but
// hidden: they are not exported (the knot code uses them).
#ifndef QXMATH_FRAME_GENERAL_UTILITIES_H
#define QXMATH_FRAME_GENERAL_UTILITIES_H

extern "C" {

// x equals y within either tolerance.
bool mx_eq_y(double x, double y, double abs_tol, double rel_tol);
// x < y and not equal within tolerance (false at once when x > y).
bool mx_lt_y(double x, double y, double abs_tol, double rel_tol);
// x > y and not equal within tolerance (false at once when x < y).
bool mx_gt_y(double x, double y, double abs_tol, double rel_tol);
// low <= x <= high exactly, or x equal to low, or to high, within
// tolerance. The interval is not normalised: with low > high only the two
// end tests can succeed.
bool mx_in_closed_interval(double x, double low, double high, double abs_tol, double rel_tol);

// A persistent, byte-for-byte copy of a host block (its whole SM_length),
// for data that must outlive the host's current operation. NULL gives NULL.
// When the host has no persistent memory, reports "Failed to allocate
// permanent memory for transient conversion of %d bytes" with the block's
// length from file/line (the caller's) and returns NULL if the report
// returns. The source block is left to the caller.
void *qx_persistent_copy(const void *block, const char *file, int line);

} // extern "C"

// The copy, reported from the calling file and line.
#define QX_PERSISTENT_COPY(block) qx_persistent_copy((block), QX_SOURCE_FILE, __LINE__)

#endif
