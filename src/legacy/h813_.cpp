// h813_.cpp — slope normalisation of the numbered series: a defining slope
// brought into a record's normalised parameter range [0, 1] according to
// what its slope type says its length means (a derivative scales with the
// parameter range, a direction is made unit, a fixed vector stays).
//
// By-address routine: reports nothing; the status says what happened.
#define QX_SOURCE_FILE "h813_"
#include "frame/check.h"

#include <cmath>

#include <qxmath/numbered.h>

extern "C" void h813_(const double slope[3], const double *scale, const int *code, double out[3],
                      int *status)
{
    const double x = slope[0], y = slope[1], z = slope[2];
    switch (*code) {
    case 1: // derivative with respect to the record's parameter
    case 3: // mirrored derivative
    {
        const double l = *scale;
        out[0] = x * l;
        out[1] = y * l;
        out[2] = z * l;
        *status = 1;
        return;
    }
    case 4: // fixed vector: its length is not tied to the parameter
        out[0] = x;
        out[1] = y;
        out[2] = z;
        *status = 1;
        return;
    case 2: // direction only
    case 5: // mirrored direction
    {
        const double s = x * x + y * y + z * z;
        if (!(s > 1.0e-20)) {
            out[0] = out[1] = out[2] = 0.0;
            *status = 2;
            return;
        }
        if (std::isinf(s)) {
            // The squares overflow (a component beyond about 1e154): the
            // direction of the vector scaled by its largest component.
            const double m = std::fmax(std::fabs(x), std::fmax(std::fabs(y), std::fabs(z)));
            if (std::isfinite(m)) {
                const double u = x / m, v = y / m, w = z / m;
                const double l = std::sqrt(u * u + v * v + w * w);
                out[0] = u / l;
                out[1] = v / l;
                out[2] = w / l;
                *status = 1;
                return;
            }
        }
        const double len = std::sqrt(s);
        out[0] = x / len;
        out[1] = y / len;
        out[2] = z / len;
        *status = 1;
        return;
    }
    default:
        *status = 3;
        return;
    }
}
