// mtx3_privileged.cpp — orientation matrices built or repaired without the
// usual guarantees: rows taken as given (MTX3_init_no_check), and the repair
// of a nearly axis-aligned matrix (MTX3_fixup), which snaps the X and Y
// elements to 0 and +-1, re-derives Z and Y, and leaves notes on what moved.
#define QX_SOURCE_FILE "mtx3_privileged"

#include <cmath>
#include <cstring>

#include <qxmath/orientation.h>

#include "frame/check.h"
#include "linalg/vec_internal.h"

namespace
{

constexpr double kUnitTol = 1.0e-10;

} // namespace

double *MTX3_init_no_check(const double X[3], const double Y[3], double M[9])
{
    double r[9] = {X[0], X[1], X[2], Y[0], Y[1], Y[2]};
    qx::vec::cross3(X, Y, r + 6);
    std::memcpy(M, r, sizeof r);
    return M;
}

int MTX3_fixup(double M[9])
{
    double old[6];
    std::memcpy(old, M, sizeof old);

    // Only the element itself is snapped; the rest of its row stays.
    for (int i = 0; i < 6; ++i) {
        const double e = M[i];
        if (std::fabs(e) <= kUnitTol)
            M[i] = 0.0;
        else if (std::fabs(std::fabs(e) - 1.0) <= kUnitTol)
            M[i] = e <= 0.0 ? -1.0 : 1.0;
    }

    // A row that cannot be unitized comes back zeroed.
    double length;
    const int x_ok = qx_vec3_unitize(M, kUnitTol, &length, M);
    const int y_ok = x_ok ? qx_vec3_unitize(M + 3, kUnitTol, &length, M + 3) : 0;
    if (x_ok && y_ok) {
        double z[3];
        qx::vec::cross3(M, M + 3, z);
        qx_vec3_unitize(z, kUnitTol, &length, M + 6);
        qx::vec::cross3(M + 6, M, M + 3);
    }

    if (x_ok && !y_ok && QX_CHECKING()) QX_NOTE("Y vector of matrix is zero");
    if (!x_ok && QX_CHECKING()) QX_NOTE("X vector of matrix is zero");

    // The new value is named after "from" and the old one after "to": the
    // note has always read so.
    for (int i = 0; i < 6; ++i)
        if (std::fabs(M[i] - old[i]) > kUnitTol)
            QX_NOTE("Element %d of matrix modified from %25.15f to %25.15f", i, M[i], old[i]);

    return x_ok && y_ok ? 1 : 0;
}
