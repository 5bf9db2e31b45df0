/* qxsys.h — libqxsys, the reference host of libqxmath.
 *
 * libqxsys defines every service of <qxmath/qxhost.h> for a program that has
 * no CAD host of its own, and adds the controls such a program (and the
 * library's tests) needs: where reports go, traps that unwind a failing call,
 * the end of a host operation, memory counters and fault injection, callback
 * registration. It is single-threaded, as the library is.
 *
 * Reports. Every ERROR_internal, ERROR_raise, ERROR_note and ERROR_lprintf is
 * formatted, recorded (the newest QXSYS_HISTORY are kept) and handed to the
 * handler the program installed, if any. Then:
 *   - an error (internal or raise) unwinds to the innermost trap: a C trap
 *     is left by longjmp, a C++ trap (qxsys.hpp) by an exception. With no
 *     trap, the error is written to the error stream as one line,
 *         qxsys: <kind> at <file>:<line>: [code <n>: ]<text>
 *     and the call returns, so the library carries on as with checking off;
 *   - a note or a log line is written to the log stream (stderr, or the file
 *     named by the environment variable QX_LOG) and the call returns.
 *
 * Memory. Each block carries its size and kind. Transient blocks (SM_alloc,
 * SM_calloc, SM_realloc of a transient block) belong to the current host
 * operation: qxsys_end_operation() frees every one still alive. Persistent
 * blocks (SM_calloc_persistent) live until SM_free. SM_realloc keeps a
 * block's kind. A failing transient allocation (real, or injected with
 * qxsys_fail_allocation) is reported through ERROR_internal from file
 * "qxsys_memory" with the text "Failed to allocate <n> bytes" and yields NULL
 * if the report returns; a failing persistent allocation yields NULL without
 * a report, because the library reports it itself.
 *
 * Checking level. MACH__checking_level starts at the value of the
 * environment variable QX_CHECKING_LEVEL (0 when unset or not a number); the
 * program may assign it at any time.
 */
#ifndef QXSYS_QXSYS_H
#define QXSYS_QXSYS_H

#include <setjmp.h>
#include <stddef.h>
#include <stdio.h>

#include <qxmath/qxhost.h>

#if defined(__GNUC__) || defined(__clang__)
#define QXSYS_API __attribute__((visibility("default")))
#else
#define QXSYS_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* ---- reports ---------------------------------------------------------- */

typedef enum qxsys_kind {
    QXSYS_INTERNAL = 1, /* ERROR_internal */
    QXSYS_RAISE = 2,    /* ERROR_raise */
    QXSYS_NOTE = 3,     /* ERROR_note */
    QXSYS_LOG = 4       /* ERROR_lprintf */
} qxsys_kind;

enum { QXSYS_TEXT_MAX = 1024, QXSYS_FILE_MAX = 64, QXSYS_HISTORY = 256 };

/* One report as recorded. file is empty for log lines; code is 0 except for
 * ERROR_raise; text is the formatted message (truncated to QXSYS_TEXT_MAX-1
 * bytes), without a trailing newline added. */
typedef struct qxsys_report {
    qxsys_kind kind;
    char file[QXSYS_FILE_MAX];
    int line;
    int code;
    char text[QXSYS_TEXT_MAX];
} qxsys_report;

/* Called for every report, before any unwinding. It may itself longjmp or
 * throw. Returns the previous handler (and its user pointer through
 * *previous_user when that is not NULL). */
typedef void (*qxsys_handler)(const qxsys_report *report, void *user);
QXSYS_API qxsys_handler qxsys_set_handler(qxsys_handler handler, void *user, void **previous_user);

/* Number of reports made since the last qxsys_clear_reports(), of all kinds. */
QXSYS_API long qxsys_report_count(void);
/* The i-th newest recorded report (0 = the newest), or NULL when fewer than
 * i + 1 are recorded. The pointer stays valid until the next report. */
QXSYS_API const qxsys_report *qxsys_report_back(int i);
/* Forgets every recorded report and sets the count to 0. */
QXSYS_API void qxsys_clear_reports(void);

/* Where unhandled errors and notes/log lines go. NULL silences them.
 * Returns the previous stream. The streams are not closed by libqxsys. */
QXSYS_API FILE *qxsys_set_error_stream(FILE *stream);
QXSYS_API FILE *qxsys_set_log_stream(FILE *stream);

/* ---- traps ------------------------------------------------------------ */

/* A trap catches the errors (ERROR_internal, ERROR_raise) of the calls made
 * while it is the innermost one. Traps nest. Use from C:
 *
 *     qxsys_trap trap;
 *     qxsys_trap_push(&trap);
 *     if (setjmp(trap.env) == 0) {
 *         ...calls into libqxmath...
 *         qxsys_trap_pop(&trap);
 *     } else {
 *         ...trap.report is the error; the trap is already popped...
 *     }
 *
 * An error pops the innermost trap before unwinding to it. Locals changed
 * between setjmp and the error must be volatile to be read afterwards. */
typedef struct qxsys_trap {
    jmp_buf env;
    struct qxsys_trap *outer;
    /* Cleared by qxsys_trap_push; set after it by qxsys.hpp. When not NULL,
     * an error calls it instead of longjmp; it is expected to throw. */
    void (*thrower)(const qxsys_report *report);
    int active;
    qxsys_report report; /* the error that unwound to this trap */
} qxsys_trap;

QXSYS_API void qxsys_trap_push(qxsys_trap *trap);
/* Pops the trap if it is still active (an error has not already popped
 * it). Popping an active trap that is not the innermost is a programming
 * error: libqxsys prints a line and aborts. */
QXSYS_API void qxsys_trap_pop(qxsys_trap *trap);
/* Innermost active trap, or NULL. */
QXSYS_API qxsys_trap *qxsys_current_trap(void);

/* ---- memory ----------------------------------------------------------- */

typedef enum qxsys_block_kind { QXSYS_TRANSIENT = 1, QXSYS_PERSISTENT = 2 } qxsys_block_kind;

typedef struct qxsys_memory_stats {
    size_t transient_blocks; /* live now */
    size_t transient_bytes;
    size_t persistent_blocks;
    size_t persistent_bytes;
    unsigned long allocations; /* successful allocations (and reallocations) ever made */
    unsigned long failures;    /* allocations that failed, injected or real */
} qxsys_memory_stats;

QXSYS_API void qxsys_memory_stats_get(qxsys_memory_stats *stats);
/* Live blocks of both kinds. */
QXSYS_API size_t qxsys_live_blocks(void);
/* Kind of a live block (QXSYS_TRANSIENT or QXSYS_PERSISTENT); 0 for NULL. */
QXSYS_API qxsys_block_kind qxsys_block_kind_of(const void *block);

/* Ends the current host operation: every live transient block is freed
 * (filled with 0xDB first when libqxsys is built without NDEBUG).
 * Returns how many were freed. Persistent blocks are untouched. */
QXSYS_API size_t qxsys_end_operation(void);

/* Makes the n-th allocation from now fail (n = 1: the next one), counting
 * every SM_alloc, SM_calloc, SM_calloc_persistent and SM_realloc. n <= 0
 * disarms. One failure per arming. */
QXSYS_API void qxsys_fail_allocation(long n);
/* Allocation calls made so far (successful or not); for sweeping n. */
QXSYS_API unsigned long qxsys_allocation_calls(void);

/* ---- callbacks -------------------------------------------------------- */

typedef void (*qxsys_callback)(int reason, void *data, void *user);

/* Registers fn for a reason number; CALLBACK_call_list runs the callbacks of
 * a reason in registration order. Returns a handle > 0, or 0 when the table
 * (QXSYS_CALLBACK_MAX entries) is full. */
enum { QXSYS_CALLBACK_MAX = 256 };
QXSYS_API int qxsys_callback_register(int reason, qxsys_callback fn, void *user);
/* Removes a registration; returns 1 when the handle was registered. */
QXSYS_API int qxsys_callback_unregister(int handle);
/* Maps a reason identifier to the number QX_REASON_ask_reason_number gives.
 * Unmapped identifiers map to themselves. */
QXSYS_API void qxsys_set_reason_number(int reason_id, int number);

/* Back to the state at load: no handler, no traps, no callbacks, no reason
 * mapping, no armed fault, recorded reports cleared, streams to stderr (or
 * QX_LOG). Live blocks are not touched; the checking level is not reset. */
QXSYS_API void qxsys_reset(void);

#ifdef __cplusplus
}
#endif

#endif
