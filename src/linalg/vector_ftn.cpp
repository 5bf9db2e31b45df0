// vector_ftn.cpp — vunt2_, vunt3_ and vcru3_, the by-address unitizing entry
// points of the numbered routines. They unitize with the session's length
// tolerance, passed unsquared (the unitize routines square it), and store
// the success flag; the length is dropped. Their assertions are those of
// VEC2_unitize and VEC3_unitize, reported from vec2 and vec3.
#include <qxmath/frame.h>
#include <qxmath/vector.h>

#include "linalg/vec_internal.h"

void vunt2_(const double *V, int *flag, double *W)
{
    double length;
    *flag = qx_vec2_unitize(V, EQ_ask_length_tolerance(), &length, W);
}

void vunt3_(const double *V, int *flag, double *W)
{
    double length;
    *flag = qx_vec3_unitize(V, EQ_ask_length_tolerance(), &length, W);
}

void vcru3_(const double *A, const double *B, int *flag, double *W)
{
    double k[3];
    qx::vec::cross3(A, B, k);
    double length;
    *flag = qx_vec3_unitize(k, EQ_ask_length_tolerance(), &length, W);
}
