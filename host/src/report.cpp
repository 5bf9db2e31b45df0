// report.cpp — reports of the reference host: formatting, the history ring,
// the handler, the error and log streams, the trap stack that unwinds an
// error, the checking level read at load, and qxsys_reset.
#include <cerrno>
#include <csetjmp>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <qxsys/qxsys.h>

// Provided by callback.cpp: forgets every registration and reason mapping.
namespace qxsys_detail
{
__attribute__((visibility("hidden"))) void callbacks_reset();
}

namespace
{

// Value of QX_CHECKING_LEVEL, 0 when unset or not a number.
int level_from_environment()
{
    const char *text = std::getenv("QX_CHECKING_LEVEL");
    if (text == nullptr) return 0;
    char *end = nullptr;
    errno = 0;
    const long value = std::strtol(text, &end, 10);
    if (end == text) return 0;
    while (*end == ' ' || *end == '\t' || *end == '\n') ++end;
    if (*end != '\0') return 0;
    if (errno == ERANGE || value > INT_MAX) return value > 0 ? INT_MAX : INT_MIN;
    if (value < INT_MIN) return INT_MIN;
    return static_cast<int>(value);
}

qxsys_report history[QXSYS_HISTORY];
int history_next = 0;  // slot the next report goes to
int history_size = 0;  // recorded reports, at most QXSYS_HISTORY
long report_total = 0; // reports since the last clear

qxsys_handler handler = nullptr;
void *handler_user = nullptr;

qxsys_trap *innermost = nullptr;

// Error stream: stderr unless the program chose another (or NULL).
bool error_is_default = true;
FILE *error_chosen = nullptr;
// Log stream: stderr or the file named by QX_LOG unless the program chose.
bool log_is_default = true;
FILE *log_chosen = nullptr;
bool log_file_tried = false;
FILE *log_file = nullptr; // QX_LOG, opened at the first need and kept open

FILE *error_stream() { return error_is_default ? stderr : error_chosen; }

FILE *default_log_stream()
{
    if (!log_file_tried) {
        log_file_tried = true;
        const char *path = std::getenv("QX_LOG");
        if (path != nullptr && path[0] != '\0') log_file = std::fopen(path, "a");
    }
    return log_file != nullptr ? log_file : stderr;
}

FILE *log_stream() { return log_is_default ? default_log_stream() : log_chosen; }

void copy_file_name(char (&to)[QXSYS_FILE_MAX], const char *file)
{
    if (file == nullptr) file = "";
    const size_t n = strnlen(file, QXSYS_FILE_MAX - 1);
    std::memcpy(to, file, n);
    to[n] = '\0';
}

// A report with everything but its text.
qxsys_report start_report(qxsys_kind kind, const char *file, int line, int code)
{
    qxsys_report report{};
    report.kind = kind;
    copy_file_name(report.file, file);
    report.line = line;
    report.code = code;
    return report;
}

void format_text(char (&to)[QXSYS_TEXT_MAX], const char *format, va_list args)
{
    if (format == nullptr) {
        to[0] = '\0';
        return;
    }
    if (std::vsnprintf(to, sizeof to, format, args) < 0) to[0] = '\0';
}

// A report whose text is formatted from a printf-style format.
qxsys_report formatted(qxsys_kind kind, const char *file, int line, const char *format,
                       va_list args)
{
    qxsys_report report = start_report(kind, file, line, 0);
    format_text(report.text, format, args);
    return report;
}

// Records a report and runs the handler. The copy kept in the ring may be
// overwritten by reports the handler makes; the caller's copy stays intact.
void record(const qxsys_report &report)
{
    qxsys_report &slot = history[history_next];
    slot = report;
    history_next = (history_next + 1) % QXSYS_HISTORY;
    if (history_size < QXSYS_HISTORY) ++history_size;
    ++report_total;
    if (handler != nullptr) handler(&slot, handler_user);
}

// After recording: unwinds to the innermost trap, or prints the error and
// returns. Nothing owning is alive in this frame or its callers here, so the
// thrower may throw and the trap may be left by longjmp.
void deliver_error(const qxsys_report &report)
{
    record(report);
    qxsys_trap *trap = innermost;
    if (trap != nullptr) {
        innermost = trap->outer;
        trap->active = 0;
        trap->report = report;
        if (trap->thrower != nullptr) {
            trap->thrower(&trap->report);
        } else {
            std::longjmp(trap->env, 1);
        }
        return; // a thrower that returns: the call carries on
    }
    FILE *out = error_stream();
    if (out == nullptr) return;
    const char *kind = report.kind == QXSYS_INTERNAL ? "internal error" : "error";
    if (report.kind == QXSYS_RAISE) {
        std::fprintf(out, "qxsys: %s at %s:%d: code %d: %s\n", kind, report.file, report.line,
                     report.code, report.text);
    } else {
        std::fprintf(out, "qxsys: %s at %s:%d: %s\n", kind, report.file, report.line, report.text);
    }
    std::fflush(out);
}

void deliver_log(const qxsys_report &report)
{
    record(report);
    FILE *out = log_stream();
    if (out == nullptr) return;
    if (report.kind == QXSYS_NOTE) {
        std::fprintf(out, "qxsys: note at %s:%d: %s\n", report.file, report.line, report.text);
    } else {
        std::fputs(report.text, out);
    }
    std::fflush(out);
}

} // namespace

QXMATH_HOST int MACH__checking_level = level_from_environment();

// ---- the host services ----------------------------------------------------

QXMATH_HOST void ERROR_internal(const char *file, int line, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const qxsys_report report = formatted(QXSYS_INTERNAL, file, line, format, args);
    va_end(args);
    deliver_error(report);
}

QXMATH_HOST void ERROR_raise(const char *file, int line, int code, const char *message)
{
    qxsys_report report = start_report(QXSYS_RAISE, file, line, code);
    if (message == nullptr) message = "";
    const size_t n = strnlen(message, QXSYS_TEXT_MAX - 1);
    std::memcpy(report.text, message, n);
    report.text[n] = '\0';
    deliver_error(report);
}

QXMATH_HOST void ERROR_note(const char *file, int line, const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const qxsys_report report = formatted(QXSYS_NOTE, file, line, format, args);
    va_end(args);
    deliver_log(report);
}

QXMATH_HOST void ERROR_lprintf(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const qxsys_report report = formatted(QXSYS_LOG, nullptr, 0, format, args);
    va_end(args);
    deliver_log(report);
}

// ---- controls ---------------------------------------------------------------

QXSYS_API qxsys_handler qxsys_set_handler(qxsys_handler new_handler, void *user,
                                          void **previous_user)
{
    const qxsys_handler previous = handler;
    if (previous_user != nullptr) *previous_user = handler_user;
    handler = new_handler;
    handler_user = user;
    return previous;
}

QXSYS_API long qxsys_report_count(void) { return report_total; }

QXSYS_API const qxsys_report *qxsys_report_back(int i)
{
    if (i < 0 || i >= history_size) return nullptr;
    return &history[(history_next - 1 - i + QXSYS_HISTORY) % QXSYS_HISTORY];
}

QXSYS_API void qxsys_clear_reports(void)
{
    history_next = 0;
    history_size = 0;
    report_total = 0;
}

QXSYS_API FILE *qxsys_set_error_stream(FILE *stream)
{
    FILE *previous = error_stream();
    error_is_default = false;
    error_chosen = stream;
    return previous;
}

QXSYS_API FILE *qxsys_set_log_stream(FILE *stream)
{
    FILE *previous = log_stream();
    log_is_default = false;
    log_chosen = stream;
    return previous;
}

QXSYS_API void qxsys_trap_push(qxsys_trap *trap)
{
    trap->outer = innermost;
    trap->thrower = nullptr;
    trap->active = 1;
    std::memset(&trap->report, 0, sizeof trap->report);
    innermost = trap;
}

QXSYS_API void qxsys_trap_pop(qxsys_trap *trap)
{
    if (trap == nullptr || !trap->active) return;
    if (trap != innermost) {
        std::fprintf(stderr, "qxsys: qxsys_trap_pop of a trap that is not the innermost\n");
        std::fflush(stderr);
        std::abort();
    }
    innermost = trap->outer;
    trap->active = 0;
}

QXSYS_API qxsys_trap *qxsys_current_trap(void) { return innermost; }

QXSYS_API void qxsys_reset(void)
{
    handler = nullptr;
    handler_user = nullptr;
    innermost = nullptr;
    qxsys_detail::callbacks_reset();
    qxsys_fail_allocation(0);
    qxsys_clear_reports();
    error_is_default = true;
    error_chosen = nullptr;
    log_is_default = true;
    log_chosen = nullptr;
}
