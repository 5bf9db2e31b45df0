/* qxhost.h — the services libqxmath takes from its host.
 *
 * libqxmath does not define any of these names. They are bound by name when
 * the library is loaded, so the program (or a library it loads first) that
 * defines them supplies them: the CAD host itself, or the reference host
 * libqxsys that ships with the library. Nothing here is called through a
 * pointer, and libqxmath never reaches into the internals of either host.
 *
 * What the library expects of each service:
 *   - ERROR_internal and ERROR_raise need not return. A host may unwind by
 *     longjmp or by a C++ exception; libqxmath keeps no owning object alive
 *     across a call that can report, so either is safe. If the service does
 *     return, the library carries on exactly as with checking off.
 *   - A "%d" in a report format receives an int, sizes included.
 *   - SM_alloc, SM_calloc and SM_realloc give transient memory, owned by the
 *     host's current operation; SM_calloc_persistent gives memory that
 *     outlives it and returns NULL on failure (the library reports that).
 *     SM_free takes either kind and ignores NULL. SM_length gives a block's
 *     size in bytes.
 */
#ifndef QXMATH_QXHOST_H
#define QXMATH_QXHOST_H

#include <stddef.h>

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* > 0 switches the library's argument checks and assertions on. Read afresh
 * at every check, never written by the library. */
QXMATH_HOST extern int MACH__checking_level;

/* Reporting. */
QXMATH_HOST void ERROR_internal(const char *file, int line, const char *format, ...)
    QXMATH_PRINTF(3, 4);
QXMATH_HOST void ERROR_raise(const char *file, int line, int code, const char *message);
QXMATH_HOST void ERROR_note(const char *file, int line, const char *format, ...)
    QXMATH_PRINTF(3, 4);
QXMATH_HOST void ERROR_lprintf(const char *format, ...) QXMATH_PRINTF(1, 2);

/* Memory. */
QXMATH_HOST void *SM_alloc(size_t bytes);
QXMATH_HOST void *SM_calloc(size_t count, size_t size);
QXMATH_HOST void *SM_calloc_persistent(size_t count, size_t size);
QXMATH_HOST void *SM_realloc(void *block, size_t bytes);
QXMATH_HOST void SM_free(void *block);
QXMATH_HOST size_t SM_length(const void *block);

/* Change notification. */
QXMATH_HOST int QX_REASON_ask_reason_number(int reason_id);
QXMATH_HOST void CALLBACK_call_list(int reason, void *data);

/* Arithmetic services of the numbered routines, with the semantics of the
 * f2c run-time library. */
/* x - y * trunc(x / y), the quotient truncated towards zero. */
QXMATH_HOST double F2C_dmod(const double *x, const double *y);
/* a ** b (real power). */
QXMATH_HOST double F2C_pow_dd(const double *a, const double *b);
/* a ** n by repeated squaring; n < 0 takes 1/a first; n == 0 gives 1. */
QXMATH_HOST double F2C_pow_di(const double *a, const int *n);
/* Complex a ** b; each of result, a and b is two doubles (re, im). */
QXMATH_HOST void F2C_pow_zz(double *result, const double *a, const double *b);
/* Imaginary part of the complex z (two doubles). */
QXMATH_HOST double F2Cdimag(const double *z);
/* |a| with the sign of b (b == 0 counts as positive). */
QXMATH_HOST double F2Cdsign(const double *a, const double *b);

/* Conversion and copy services of the numbered routines. */
/* (int) *x truncated towards zero, or 0 when *x is NaN or the truncated
 * value does not fit an int: a period count that overflows means "none". */
QXMATH_HOST int int_overflow_to_zero_(const double *x);
/* Copies *n doubles from from[] to to[]; the ranges may overlap. *n <= 0
 * copies nothing. */
QXMATH_HOST void movf_(const int *n, const double *from, double *to);
/* Sets *n ints of to[] to *value; *n <= 0 sets nothing. */
QXMATH_HOST void wf256_(const int *n, const int *value, int *to);
/* Sets *n doubles of to[] to *value; *n <= 0 sets nothing. */
QXMATH_HOST void wf266_(const int *n, const double *value, double *to);

QXMATH_END_DECLS

#endif
