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
    double tol;
    switch (*kind) {
    case 0:
        tol = qx_tolerance(0);
        break;
    case 1:
        tol = qx_tolerance(1);
        break;
    case 2:
        tol = qx_tolerance(2);
        break;
    default: // squared dimensionless quantities
        tol = qx_tolerance(0) * qx_tolerance(0);
        break;
    }
    return d <= tol ? 1 : 0;
}
