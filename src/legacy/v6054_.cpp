// v6054_.cpp — makes a coordinate system the session's work coordinate
// system (the counterpart of v6051_, which reads it). Only an ortho-normal
// matrix is stored; the WCS display state and its watchers are not touched.
#define QX_SOURCE_FILE "v6054_"

#include <cstring>

#include <qxmath/numbered.h>
#include <qxmath/orientation.h>
#include <qxmath/session.h>

void v6054_(const double matrix[9], const double origin[3], int *status)
{
    if (!MTX3_is_ortho_normal(matrix)) {
        *status = 2;
        return;
    }
    std::memmove(acom_.wcs_matrix, matrix, 9 * sizeof(double));
    std::memmove(acom_.wcs_origin, origin, 3 * sizeof(double));
    *status = 1;
}
