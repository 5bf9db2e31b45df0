// banded_internal.h — hidden companion of msolve_banded for the library's own callers.
#ifndef QX_NUMERIC_BANDED_INTERNAL_H
#define QX_NUMERIC_BANDED_INTERNAL_H

// msolve_banded for several right-hand sides at once, in place: columns
// 0 ... ncols - 1 of the n-row block x whose row i starts at x + i * stride
// (stride >= ncols), each element seeing exactly the operations
// msolve_banded gives it, so the results are the same bits as one
// msolve_banded per column through a separate vector. The band is read once
// per sweep for all columns and their chains of dependent divisions
// overlap. A diagonal element of magnitude below 1.0e-15 (or NaN) pushes
// 7235 as msolve_banded does and leaves every column as msolve_banded would
// leave it (rows below solved, that row's products subtracted); a NULL
// handle or block pushes 950 and changes nothing.
void qx_msolve_banded_columns(double *const *a, int n, int m, double *x, long stride, int ncols);

#endif
