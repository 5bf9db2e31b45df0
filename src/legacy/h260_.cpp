// h260_.cpp — the six implicit coefficients A x^2 + B xy + C y^2 + D x + E y
// + F of a conic from its centre (vertex), sizes and axis direction (cosine,
// sine). Type < 3 ellipse, 3 parabola (v^2 = a u), > 3 hyperbola. Not
// normalised; a and b divide unguarded. Each formula is evaluated as written,
// a square as one factor (A x0^2 is A * (x0 * x0)).
#define QX_SOURCE_FILE "h260_"

#include <qxmath/numbered.h>

void h260_(const int *type, const double centre[2], const double *a, const double *b,
           const double *d1, const double *d2, double coef[6])
{
    const double x0 = centre[0], y0 = centre[1], c = *d1, s = *d2;
    const double c2 = c * c, s2 = s * s;
    double A, B, C, D, E, F;
    if (*type == 3) {
        const double p = *a;
        A = s2;
        B = -2.0 * c * s;
        C = c2;
        D = -p * c - 2.0 * s2 * x0 - B * y0;
        E = -p * s - B * x0 - 2.0 * c2 * y0;
        F = p * (x0 * c + y0 * s) + (B * x0 + c2 * y0) * y0 + s2 * (x0 * x0);
    } else {
        const double a2 = *a * *a, b2 = *b * *b;
        if (*type < 3) {
            A = c2 / a2 + s2 / b2;
            B = 2.0 * (1.0 / a2 - 1.0 / b2) * c * s;
            C = s2 / a2 + c2 / b2;
        } else {
            A = c2 / a2 - s2 / b2;
            B = 2.0 * (1.0 / a2 + 1.0 / b2) * c * s;
            C = s2 / a2 - c2 / b2;
        }
        D = -2.0 * A * x0 - B * y0;
        E = -B * x0 - 2.0 * C * y0;
        F = (B * x0 + C * y0) * y0 + A * (x0 * x0) - 1.0;
    }
    coef[0] = A;
    coef[1] = B;
    coef[2] = C;
    coef[3] = D;
    coef[4] = E;
    coef[5] = F;
}
