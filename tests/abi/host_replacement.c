/* A host that defines the system services itself and links libqxmath
 * without libqxsys: its own definitions are the ones the library calls.
 * Prints "N passed, N failed" and exits non-zero on any failure. */
#include <math.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <qxmath/qxmath.h>

/* ---- this program's own host services ---------------------------------- */

int MACH__checking_level = 0;

static int internal_calls, raise_calls, note_calls, log_calls;
static int reason_asks, callback_calls, callback_reason, callback_value;
static char last_file[64], last_text[256];

void ERROR_internal(const char *file, int line, const char *format, ...)
{
    va_list ap;
    (void)line;
    ++internal_calls;
    snprintf(last_file, sizeof last_file, "%s", file);
    va_start(ap, format);
    vsnprintf(last_text, sizeof last_text, format, ap);
    va_end(ap);
}

void ERROR_raise(const char *file, int line, int code, const char *message)
{
    (void)file, (void)line, (void)code, (void)message;
    ++raise_calls;
}

void ERROR_note(const char *file, int line, const char *format, ...)
{
    (void)file, (void)line, (void)format;
    ++note_calls;
}

void ERROR_lprintf(const char *format, ...)
{
    (void)format;
    ++log_calls;
}

void *SM_alloc(size_t bytes) { return malloc(bytes ? bytes : 1); }
void *SM_calloc(size_t count, size_t size) { return calloc(count ? count : 1, size ? size : 1); }
void *SM_calloc_persistent(size_t count, size_t size) { return SM_calloc(count, size); }
void *SM_realloc(void *block, size_t bytes) { return realloc(block, bytes ? bytes : 1); }
void SM_free(void *block) { free(block); }
size_t SM_length(const void *block)
{
    (void)block;
    return 0;
}

int QX_REASON_ask_reason_number(int reason_id)
{
    ++reason_asks;
    return 7000 + reason_id;
}

void CALLBACK_call_list(int reason, void *data)
{
    ++callback_calls;
    callback_reason = reason;
    callback_value = *(const int *)data;
}

double F2C_dmod(const double *x, const double *y) { return fmod(*x, *y); }
double F2C_pow_dd(const double *a, const double *b) { return pow(*a, *b); }
double F2C_pow_di(const double *a, const int *n) { return pow(*a, *n); }
void F2C_pow_zz(double *result, const double *a, const double *b)
{
    (void)a, (void)b;
    result[0] = result[1] = 0.0;
}
double F2Cdimag(const double *z) { return z[1]; }
double F2Cdsign(const double *a, const double *b) { return *b >= 0 ? fabs(*a) : -fabs(*a); }
int int_overflow_to_zero_(const double *x) { return (int)*x; }
void movf_(const int *n, const double *from, double *to)
{
    memmove(to, from, (size_t)*n * sizeof *to);
}
void wf256_(const int *n, const int *value, int *to)
{
    int i;
    for (i = 0; i < *n; ++i) to[i] = *value;
}
void wf266_(const int *n, const double *value, double *to)
{
    int i;
    for (i = 0; i < *n; ++i) to[i] = *value;
}

/* ---- the checks --------------------------------------------------------- */

static int passed, failed;

#define CHECK(cond)                                                                                \
    do {                                                                                           \
        if (cond) {                                                                                \
            ++passed;                                                                              \
        } else {                                                                                   \
            ++failed;                                                                              \
            fprintf(stderr, "%s:%d: check failed: %s\n", __FILE__, __LINE__, #cond);               \
        }                                                                                          \
    } while (0)

int main(void)
{
    int mode = 0, kind = 1, display = -1;
    double a = 10.0, b = 10.0 + 2.0e-3, value = 3.0, scaled = 0.0;
    int slot = 1;

    /* A session at model scale 25.4 with standard precision. */
    sys10_(&mode);
    CHECK(EQ_ask_number_tolerance() == QX_UNSET_DOUBLE);
    acom_.model_scale = 25.4;
    sys21_();
    CHECK(EQ_ask_number_tolerance() == 1.0e-4);
    CHECK(EQ_ask_length_tolerance() == 25.4 * 1.0e-4);
    CHECK(EQ_ask_length_squared_tolerance() == (25.4 * 1.0e-4) * (25.4 * 1.0e-4));
    CHECK(eqz_(&a, &b, &kind) == 1); /* 2e-3 is within 2.54e-3 */
    kind = 0;
    CHECK(eqz_(&a, &b, &kind) == 0);
    sys22_(&value, &slot, &scaled);
    CHECK(scaled == 3.0 * (25.4 * 1.0e-4));

    /* With checking on, a bad display state reaches this program's own
     * ERROR_internal, and the change notification its own callback list. */
    MACH__checking_level = 1;
    WCS_set_wcs_display(5);
    CHECK(internal_calls == 1);
    CHECK(strcmp(last_file, "libqxmath_main") == 0);
    CHECK(strcmp(last_text, "Assertion failed: condition") == 0);
    CHECK(reason_asks == 1 && callback_calls == 1);
    CHECK(callback_reason == 7002 && callback_value == 5);
    WCS_ask_wcs_display(&display);
    CHECK(display == 5);

    /* With checking off nothing is reported. */
    MACH__checking_level = 0;
    WCS_set_wcs_display(7);
    CHECK(internal_calls == 1 && callback_calls == 2);
    CHECK(raise_calls == 0 && note_calls == 0 && log_calls == 0);

    printf("%d passed, %d failed\n", passed, failed);
    return failed == 0 ? 0 : 1;
}
