// qxsys.hpp — C++ boundary helpers of the reference host.
//
// qxsys::guarded(f) runs f with a trap that turns an error report into a
// qxsys::report_error exception at the call boundary, so C++ callers need no
// setjmp. The exception is thrown from this header's code (in the caller's
// binary) through the library's frames, which keep no owning objects alive
// across a reporting call.
#ifndef QXSYS_QXSYS_HPP
#define QXSYS_QXSYS_HPP

#include <optional>
#include <stdexcept>
#include <string>
#include <utility>

#include "qxsys.h"

namespace qxsys
{

class report_error : public std::runtime_error
{
  public:
    explicit report_error(const qxsys_report &report)
        : std::runtime_error(std::string(report.file) + ":" + std::to_string(report.line) + ": " +
                             report.text),
          report_(report)
    {
    }
    const qxsys_report &report() const noexcept { return report_; }

  private:
    qxsys_report report_;
};

namespace detail
{
[[noreturn]] inline void throw_report(const qxsys_report *report) { throw report_error(*report); }

class trap_scope
{
  public:
    trap_scope()
    {
        qxsys_trap_push(&trap_);
        trap_.thrower = &throw_report;
    }
    ~trap_scope() { qxsys_trap_pop(&trap_); }
    trap_scope(const trap_scope &) = delete;
    trap_scope &operator=(const trap_scope &) = delete;

  private:
    qxsys_trap trap_{};
};
} // namespace detail

// Runs f(); an error reported inside it throws report_error.
template <class F> decltype(auto) guarded(F &&f)
{
    detail::trap_scope scope;
    return std::forward<F>(f)();
}

// Runs f(); returns the error that stopped it, or nothing when it finished.
template <class F> std::optional<qxsys_report> first_error(F &&f)
{
    try {
        guarded(std::forward<F>(f));
    } catch (const report_error &e) {
        return e.report();
    }
    return std::nullopt;
}

} // namespace qxsys

#endif
