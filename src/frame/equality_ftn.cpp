// equality_ftn.cpp — the session tolerances as the library hands them out,
// and eqz_, the tolerant equality of the numbered routines. The tolerances
// are read from the session block on every call: sys21_ may change them.
#include <cmath>

#include <qxmath/frame.h>

#include "frame/session_block.h"

double EQ_ask_number_tolerance(void) { return qx_tolerance(0); }

double EQ_ask_length_tolerance(void) { return qx_tolerance(1); }

double EQ_ask_length_squared_tolerance(void) { return qx_tolerance(2); }

int eqz_(const double *a, const double *b, const int *kind)
{
    const double d = std::fabs(*a - *b);
    // Kinds 0, 1, 2 name their slot; any other compares squared
    // dimensionless quantities.
    const int k = *kind;
    const double tol = (k >= 0 && k <= 2) ? qx_tolerance(k) : qx_tolerance(0) * qx_tolerance(0);
    return d <= tol ? 1 : 0;
}
