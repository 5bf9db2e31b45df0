// lu_internal.h — hidden companions of ludcmp_a/lubksb_a for the library's own callers.
#ifndef QX_NUMERIC_LU_INTERNAL_H
#define QX_NUMERIC_LU_INTERNAL_H

// lubksb_a for several right-hand sides at once: column c of the n x ncols
// block whose row i starts at b[i] is solved in place, each element seeing
// exactly the operations lubksb_a gives it (so the results are the same
// bits). Working on all columns in each step lets their chains of dependent
// divisions overlap, which one call per column cannot.
void qx_lubksb_a_columns(double *const *a, int n, const int *indx, double *const *b, int ncols);

#endif
