// qx_test.h — the fixture every library test starts from: a reference host
// with no handler, trap or callback, errors recorded but not printed,
// checking off, and the session blocks zeroed as at load. On tear-down no
// block may be left alive that was not alive at set-up.
#ifndef QXMATH_TESTS_QX_TEST_H
#define QXMATH_TESTS_QX_TEST_H

#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <qxmath/qxmath.h>
#include <qxsys/qxsys.h>
#include <qxsys/qxsys.hpp>

namespace qxtest
{

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// A transient host block holding a copy of v, for the library to take over.
template <class T> T *host_copy(const std::vector<T> &v)
{
    T *a = static_cast<T *>(SM_alloc(v.size() * sizeof(T)));
    if (!v.empty()) std::memcpy(a, v.data(), v.size() * sizeof(T));
    return a;
}

class QxTest : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        qxsys_reset();
        qxsys_set_error_stream(nullptr);
        qxsys_set_log_stream(nullptr);
        MACH__checking_level = 0;
        std::memset(&acom_, 0, sizeof acom_);
        std::memset(&pxsfac_, 0, sizeof pxsfac_);
        std::memset(&spint_, 0, sizeof spint_);
        std::memset(&srfc1_, 0, sizeof srfc1_);
        MCS_register_display_fn(nullptr);
        live_at_start_ = qxsys_live_blocks();
    }

    void TearDown() override
    {
        EXPECT_EQ(qxsys_live_blocks(), live_at_start_) << "blocks leaked";
        qxsys_end_operation();
        MACH__checking_level = 0;
        qxsys_reset();
    }

    // A session as a host opens it: sys10_, model scale, precision, sys21_.
    static void open_session(double model_scale, bool fine = false)
    {
        const int mode = 0;
        sys10_(&mode);
        acom_.model_scale = model_scale;
        acom_.gca[31] = fine ? 1 : 0;
        sys21_();
    }

    // f is silent at checking level 0 (when run_unchecked); at level 1, with
    // the host unwinding at the first report, that report is this one: from
    // `file`, raised with `code`, or an internal error when `code` is 0.
    template <class F>
    static void expect_checked(F f, const char *file, int code, const char *text,
                               bool run_unchecked = true)
    {
        qxsys_clear_reports();
        if (run_unchecked) f();
        EXPECT_EQ(qxsys_report_count(), 0) << text;
        MACH__checking_level = 1;
        const std::optional<qxsys_report> r = qxsys::first_error(f);
        MACH__checking_level = 0;
        ASSERT_TRUE(r.has_value()) << text;
        EXPECT_EQ(r->kind, code == 0 ? QXSYS_INTERNAL : QXSYS_RAISE) << text;
        EXPECT_EQ(r->code, code) << text;
        EXPECT_STREQ(r->text, text);
        EXPECT_STREQ(r->file, file) << text;
    }

    // The newest report, which must exist.
    static const qxsys_report &last_report()
    {
        const qxsys_report *r = qxsys_report_back(0);
        if (r == nullptr) {
            ADD_FAILURE() << "no report was made";
            static qxsys_report none{};
            return none;
        }
        return *r;
    }

  private:
    size_t live_at_start_ = 0;
};

} // namespace qxtest

#endif
