// h120_.cpp — the 3x3 product of the numbered routines: MTX3_multiply(a, b), i.e. c = b a,
// with MTX3_multiply's repair of a product of two ortho-normal matrices. Its result is
// dropped.
#define QX_SOURCE_FILE "h120_"

#include <qxmath/numbered.h>
#include <qxmath/orientation.h>

void h120_(const double a[9], const double b[9], double c[9]) { (void)MTX3_multiply(a, b, c); }
