// check.h — the argument-checking and reporting pattern of every source file.
//
// A source file defines QX_SOURCE_FILE (its name without extension, which
// is the file argument of its reports) before including this header. Each
// check reads the host's checking level afresh; at level 0 or below the
// condition is not evaluated at all. A report need not return: the host may
// unwind by longjmp or by an exception, so no owning C++ object may be alive
// across a check. If the report does return, the caller carries on exactly
// as with checking off — no recovery code follows a report.
#ifndef QXMATH_FRAME_CHECK_H
#define QXMATH_FRAME_CHECK_H

#include <qxmath/qxhost.h>

#ifndef QX_SOURCE_FILE
#error "define QX_SOURCE_FILE before including frame/check.h"
#endif

// True when argument checks and assertions are on.
#define QX_CHECKING() (MACH__checking_level > 0)

// Failed condition reported with the generic pair "Assertion failed: %s",
// "condition".
#define QX_ASSERT(cond)                                                                            \
    do {                                                                                           \
        if (QX_CHECKING() && !(cond))                                                              \
            ERROR_internal(QX_SOURCE_FILE, __LINE__, "Assertion failed: %s", "condition");         \
    } while (0)

// Failed condition reported with its own printf-style message.
#define QX_CHECK(cond, ...)                                                                        \
    do {                                                                                           \
        if (QX_CHECKING() && !(cond)) ERROR_internal(QX_SOURCE_FILE, __LINE__, __VA_ARGS__);       \
    } while (0)

// Failed condition raised as a coded error (codes in <qxmath/frame.h>).
#define QX_CHECK_RAISE(cond, code, message)                                                        \
    do {                                                                                           \
        if (QX_CHECKING() && !(cond)) ERROR_raise(QX_SOURCE_FILE, __LINE__, (code), (message));    \
    } while (0)

// Unconditional reports, for the places that report whatever the level.
#define QX_INTERNAL(...)        ERROR_internal(QX_SOURCE_FILE, __LINE__, __VA_ARGS__)
#define QX_RAISE(code, message) ERROR_raise(QX_SOURCE_FILE, __LINE__, (code), (message))
#define QX_NOTE(...)            ERROR_note(QX_SOURCE_FILE, __LINE__, __VA_ARGS__)

#endif
