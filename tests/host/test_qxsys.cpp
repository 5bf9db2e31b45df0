// test_qxsys.cpp — libqxsys, the reference host: reports and their streams,
// C and C++ traps, memory blocks and fault injection, callbacks, and the
// f2c arithmetic services.
#include <cfloat>
#include <climits>
#include <cmath>
#include <complex>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include <qxsys/qxsys.h>
#include <qxsys/qxsys.hpp>

// From test_qxsys_c.c.
extern "C" {
int qxsys_c_catch_raise(int code, const char *message, qxsys_report *caught);
int qxsys_c_nested(qxsys_report *inner_caught, qxsys_report *outer_caught);
int qxsys_c_no_error(void);
int qxsys_c_catch_alloc(long n, size_t bytes, qxsys_report *caught);
}

namespace
{

class Host : public ::testing::Test
{
  protected:
    void SetUp() override
    {
        qxsys_end_operation();
        qxsys_reset();
        qxsys_set_error_stream(nullptr);
        qxsys_set_log_stream(nullptr);
        persistent_at_start_ = stats().persistent_blocks;
    }

    void TearDown() override
    {
        EXPECT_EQ(stats().persistent_blocks, persistent_at_start_) << "persistent blocks leaked";
        qxsys_end_operation();
        qxsys_reset();
        EXPECT_EQ(qxsys_current_trap(), nullptr);
    }

    static qxsys_memory_stats stats()
    {
        qxsys_memory_stats s{};
        qxsys_memory_stats_get(&s);
        return s;
    }

    static const qxsys_report &newest()
    {
        static const qxsys_report none{};
        const qxsys_report *r = qxsys_report_back(0);
        if (r == nullptr) ADD_FAILURE() << "no report";
        return r != nullptr ? *r : none;
    }

  private:
    size_t persistent_at_start_ = 0;
};

// A tmpfile() that gives back what was written to it.
class Capture
{
  public:
    Capture() : file_(std::tmpfile()) {}
    ~Capture() { std::fclose(file_); }
    Capture(const Capture &) = delete;
    Capture &operator=(const Capture &) = delete;
    FILE *file() const { return file_; }
    std::string text() const
    {
        std::fflush(file_);
        std::rewind(file_);
        std::string s;
        for (int c; (c = std::fgetc(file_)) != EOF;) s += static_cast<char>(c);
        return s;
    }

  private:
    FILE *file_;
};

// ---- reports ----------------------------------------------------------------

TEST_F(Host, EachKindIsRecordedExactly)
{
    ERROR_internal("int.cpp", 10, "x=%d y=%s", 5, "q");
    ERROR_raise("raise.cpp", 20, 77, "boom %d"); // a message, not a format
    ERROR_note("note.cpp", 30, "note %.1f", 2.5);
    ERROR_lprintf("log %d\n", 3);
    ASSERT_EQ(qxsys_report_count(), 4);

    const qxsys_report *r = qxsys_report_back(3);
    ASSERT_NE(r, nullptr);
    EXPECT_EQ(r->kind, QXSYS_INTERNAL);
    EXPECT_STREQ(r->file, "int.cpp");
    EXPECT_EQ(r->line, 10);
    EXPECT_EQ(r->code, 0);
    EXPECT_STREQ(r->text, "x=5 y=q");

    r = qxsys_report_back(2);
    EXPECT_EQ(r->kind, QXSYS_RAISE);
    EXPECT_STREQ(r->file, "raise.cpp");
    EXPECT_EQ(r->line, 20);
    EXPECT_EQ(r->code, 77);
    EXPECT_STREQ(r->text, "boom %d");

    r = qxsys_report_back(1);
    EXPECT_EQ(r->kind, QXSYS_NOTE);
    EXPECT_STREQ(r->file, "note.cpp");
    EXPECT_EQ(r->line, 30);
    EXPECT_STREQ(r->text, "note 2.5");

    r = qxsys_report_back(0);
    EXPECT_EQ(r->kind, QXSYS_LOG);
    EXPECT_STREQ(r->file, "");
    EXPECT_EQ(r->line, 0);
    EXPECT_STREQ(r->text, "log 3\n");

    EXPECT_EQ(qxsys_report_back(4), nullptr);
    EXPECT_EQ(qxsys_report_back(-1), nullptr);
    qxsys_clear_reports();
    EXPECT_EQ(qxsys_report_count(), 0);
    EXPECT_EQ(qxsys_report_back(0), nullptr);
}

TEST_F(Host, HistoryKeepsTheNewest)
{
    for (int i = 0; i < 300; ++i) ERROR_note("h.cpp", i, "n%d", i);
    EXPECT_EQ(qxsys_report_count(), 300);
    EXPECT_STREQ(qxsys_report_back(0)->text, "n299");
    EXPECT_STREQ(qxsys_report_back(QXSYS_HISTORY - 1)->text, "n44");
    EXPECT_EQ(qxsys_report_back(QXSYS_HISTORY), nullptr);
}

struct Seen {
    std::vector<int> kinds;
    std::vector<bool> trap_still_set;
};

void remember(const qxsys_report *report, void *user)
{
    auto *seen = static_cast<Seen *>(user);
    seen->kinds.push_back(report->kind);
    seen->trap_still_set.push_back(qxsys_current_trap() != nullptr);
}

TEST_F(Host, HandlerSeesEveryReportBeforeUnwinding)
{
    Seen seen;
    int other = 0;
    EXPECT_EQ(qxsys_set_handler(&remember, &seen, nullptr), nullptr);
    ERROR_note("a", 1, "n");
    ERROR_lprintf("l");
    ERROR_internal("a", 2, "i");
    const auto error = qxsys::first_error([] { ERROR_raise("a", 3, 9, "r"); });
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(seen.kinds, (std::vector<int>{QXSYS_NOTE, QXSYS_LOG, QXSYS_INTERNAL, QXSYS_RAISE}));
    EXPECT_EQ(seen.trap_still_set, (std::vector<bool>{false, false, false, true}));

    void *previous_user = nullptr;
    EXPECT_EQ(qxsys_set_handler(nullptr, &other, &previous_user), &remember);
    EXPECT_EQ(previous_user, &seen);
    ERROR_note("a", 4, "unseen");
    EXPECT_EQ(seen.kinds.size(), 4u);
}

TEST_F(Host, UntrappedErrorsPrintOneLineAndReturn)
{
    Capture err, log;
    EXPECT_EQ(qxsys_set_error_stream(err.file()), nullptr);
    qxsys_set_log_stream(log.file());
    ERROR_internal("f.cpp", 7, "bad %d", 3);
    ERROR_raise("g.cpp", 8, 12, "worse");
    EXPECT_EQ(err.text(), "qxsys: internal error at f.cpp:7: bad 3\n"
                          "qxsys: error at g.cpp:8: code 12: worse\n");
    EXPECT_EQ(log.text(), "");
    EXPECT_EQ(qxsys_set_error_stream(nullptr), err.file());
    ERROR_internal("f.cpp", 9, "silenced");
    EXPECT_EQ(err.text().find("silenced"), std::string::npos);
}

TEST_F(Host, NotesAndLogLinesGoToTheLogStream)
{
    Capture err, log;
    qxsys_set_error_stream(err.file());
    EXPECT_EQ(qxsys_set_log_stream(log.file()), nullptr);
    ERROR_note("n.cpp", 5, "hello %d", 1);
    ERROR_lprintf("raw %s\n", "line");
    ERROR_lprintf("no newline");
    EXPECT_EQ(log.text(), "qxsys: note at n.cpp:5: hello 1\nraw line\nno newline");
    EXPECT_EQ(err.text(), "");
}

TEST_F(Host, LongTextsAndFileNamesAreTruncated)
{
    const std::string big(5000, 'x');
    const std::string long_file(200, 'f');
    Capture err;
    qxsys_set_error_stream(err.file());
    ERROR_internal(long_file.c_str(), 1, "%s%s", big.c_str(), "tail");
    EXPECT_EQ(std::strlen(newest().text), size_t{QXSYS_TEXT_MAX - 1});
    EXPECT_EQ(std::string(newest().text), big.substr(0, QXSYS_TEXT_MAX - 1));
    EXPECT_EQ(std::string(newest().file), long_file.substr(0, QXSYS_FILE_MAX - 1));
    ERROR_raise("r.cpp", 2, 1, big.c_str());
    EXPECT_EQ(std::strlen(newest().text), size_t{QXSYS_TEXT_MAX - 1});
    ERROR_note(nullptr, 3, "%s", big.c_str());
    EXPECT_STREQ(newest().file, "");
    EXPECT_EQ(std::strlen(newest().text), size_t{QXSYS_TEXT_MAX - 1});
    const std::string text = big.substr(0, QXSYS_TEXT_MAX - 1);
    EXPECT_EQ(err.text(), "qxsys: internal error at " + long_file.substr(0, QXSYS_FILE_MAX - 1) +
                              ":1: " + text + "\nqxsys: error at r.cpp:2: code 1: " + text + "\n");
}

TEST_F(Host, CheckingLevelAndLogFileComeFromTheEnvironment)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe"); // a fresh process reads the environment
    setenv("QX_CHECKING_LEVEL", "3", 1);
    EXPECT_EXIT(std::exit(MACH__checking_level == 3 ? 0 : 1), ::testing::ExitedWithCode(0), "");
    setenv("QX_CHECKING_LEVEL", "2x", 1);
    EXPECT_EXIT(std::exit(MACH__checking_level == 0 ? 0 : 1), ::testing::ExitedWithCode(0), "");
    unsetenv("QX_CHECKING_LEVEL");

    const std::string path = ::testing::TempDir() + "qxsys_log_test.txt";
    FILE *f = std::fopen(path.c_str(), "w");
    ASSERT_NE(f, nullptr);
    std::fputs("old\n", f);
    std::fclose(f);
    setenv("QX_LOG", path.c_str(), 1);
    EXPECT_EXIT(
        {
            qxsys_reset();
            ERROR_note("x.cpp", 3, "to the %s", "file");
            std::exit(0);
        },
        ::testing::ExitedWithCode(0), "");
    unsetenv("QX_LOG");
    f = std::fopen(path.c_str(), "r");
    ASSERT_NE(f, nullptr);
    char buf[256] = {};
    const size_t n = std::fread(buf, 1, sizeof buf - 1, f);
    std::fclose(f);
    std::remove(path.c_str());
    EXPECT_EQ(std::string(buf, n), "old\nqxsys: note at x.cpp:3: to the file\n");
}

// ---- traps ------------------------------------------------------------------

TEST_F(Host, CTrapCatchesARaise)
{
    Capture err;
    qxsys_set_error_stream(err.file());
    qxsys_report r{};
    ASSERT_EQ(qxsys_c_catch_raise(31, "caught text", &r), 1);
    EXPECT_EQ(r.kind, QXSYS_RAISE);
    EXPECT_EQ(r.code, 31);
    EXPECT_EQ(r.line, 42);
    EXPECT_STREQ(r.file, "c_file.c");
    EXPECT_STREQ(r.text, "caught text");
    EXPECT_EQ(qxsys_report_count(), 1);
    EXPECT_EQ(err.text(), "") << "a trapped error is not printed";
    EXPECT_EQ(qxsys_c_no_error(), 1);
}

TEST_F(Host, CTrapsNest)
{
    qxsys_report inner{}, outer{};
    EXPECT_EQ(qxsys_c_nested(&inner, &outer), 1 | 2 | 4 | 8);
    EXPECT_EQ(inner.kind, QXSYS_INTERNAL);
    EXPECT_STREQ(inner.text, "first 1");
    EXPECT_STREQ(inner.file, "inner.c");
    EXPECT_STREQ(outer.text, "second error");
    EXPECT_EQ(outer.line, 2);
}

TEST_F(Host, GuardedTurnsErrorsIntoExceptions)
{
    try {
        qxsys::guarded([] { ERROR_internal("cpp.cpp", 12, "value %d", 4); });
        ADD_FAILURE() << "no exception";
    } catch (const qxsys::report_error &e) {
        EXPECT_EQ(e.report().kind, QXSYS_INTERNAL);
        EXPECT_STREQ(e.report().text, "value 4");
        EXPECT_STREQ(e.what(), "cpp.cpp:12: value 4");
    }
    EXPECT_EQ(qxsys_current_trap(), nullptr);
    EXPECT_EQ(qxsys::guarded([] { return 7; }), 7);
    EXPECT_FALSE(qxsys::first_error([] {}).has_value());
    EXPECT_EQ(qxsys_current_trap(), nullptr);
}

TEST_F(Host, InnerTrapCatchesThenOuterIsStillActive)
{
    qxsys_trap *outer_trap = nullptr;
    std::optional<qxsys_report> inner;
    const auto outer = qxsys::first_error([&] {
        outer_trap = qxsys_current_trap();
        inner = qxsys::first_error([] { ERROR_raise("in.cpp", 1, 5, "inner"); });
        EXPECT_EQ(qxsys_current_trap(), outer_trap);
        // A C trap inside the C++ one catches by longjmp.
        qxsys_report c{};
        EXPECT_EQ(qxsys_c_catch_raise(6, "c inside", &c), 1);
        EXPECT_EQ(qxsys_current_trap(), outer_trap);
        ERROR_raise("out.cpp", 2, 8, "outer");
        ADD_FAILURE() << "the outer trap did not unwind";
    });
    ASSERT_TRUE(inner.has_value());
    EXPECT_EQ(inner->code, 5);
    ASSERT_TRUE(outer.has_value());
    EXPECT_EQ(outer->code, 8);
    EXPECT_STREQ(outer->text, "outer");
    EXPECT_NE(outer_trap, nullptr);
    EXPECT_EQ(qxsys_current_trap(), nullptr);
}

void pop_the_outer_trap()
{
    qxsys_trap outer;
    qxsys_trap inner;
    qxsys_trap_push(&outer);
    qxsys_trap_push(&inner);
    qxsys_trap_pop(&outer);
}

TEST_F(Host, PoppingATrapThatIsNotInnermostAborts)
{
    EXPECT_DEATH(pop_the_outer_trap(), "not the innermost");
}

// ---- memory -----------------------------------------------------------------

bool aligned(const void *p)
{
    return reinterpret_cast<std::uintptr_t>(p) % alignof(std::max_align_t) == 0;
}

TEST_F(Host, BlocksAreCountedPerKind)
{
    const qxsys_memory_stats s0 = stats();
    const size_t live0 = qxsys_live_blocks();
    void *a = SM_alloc(10);
    auto *b = static_cast<unsigned char *>(SM_calloc(3, 8));
    void *p = SM_calloc_persistent(2, 5);
    ASSERT_TRUE(a && b && p);
    EXPECT_TRUE(aligned(a) && aligned(b) && aligned(p));
    for (int i = 0; i < 24; ++i) EXPECT_EQ(b[i], 0);
    const qxsys_memory_stats s1 = stats();
    EXPECT_EQ(s1.transient_blocks - s0.transient_blocks, 2u);
    EXPECT_EQ(s1.transient_bytes - s0.transient_bytes, 34u);
    EXPECT_EQ(s1.persistent_blocks - s0.persistent_blocks, 1u);
    EXPECT_EQ(s1.persistent_bytes - s0.persistent_bytes, 10u);
    EXPECT_EQ(s1.allocations - s0.allocations, 3u);
    EXPECT_EQ(qxsys_live_blocks() - live0, 3u);
    EXPECT_EQ(SM_length(a), 10u);
    EXPECT_EQ(SM_length(b), 24u);
    EXPECT_EQ(SM_length(p), 10u);
    EXPECT_EQ(qxsys_block_kind_of(a), QXSYS_TRANSIENT);
    EXPECT_EQ(qxsys_block_kind_of(p), QXSYS_PERSISTENT);
    SM_free(a);
    SM_free(b);
    SM_free(p);
    const qxsys_memory_stats s2 = stats();
    EXPECT_EQ(s2.transient_blocks, s0.transient_blocks);
    EXPECT_EQ(s2.transient_bytes, s0.transient_bytes);
    EXPECT_EQ(s2.persistent_bytes, s0.persistent_bytes);
    EXPECT_EQ(qxsys_live_blocks(), live0);
}

TEST_F(Host, ZeroSizedBlocksAreUniqueAndNullIsHarmless)
{
    void *a = SM_alloc(0);
    void *b = SM_calloc(0, 5);
    ASSERT_NE(a, nullptr);
    ASSERT_NE(b, nullptr);
    EXPECT_NE(a, b);
    EXPECT_EQ(SM_length(a), 0u);
    EXPECT_EQ(SM_length(b), 0u);
    EXPECT_EQ(SM_length(nullptr), 0u);
    SM_free(nullptr);
    SM_free(a);
    SM_free(b);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Host, ReallocKeepsContentsAndKind)
{
    auto *p = static_cast<int *>(SM_calloc_persistent(4, sizeof(int)));
    for (int i = 0; i < 4; ++i) p[i] = i + 1;
    // Transient neighbours on both sides of a block that moves.
    void *before = SM_alloc(16);
    auto *t = static_cast<double *>(SM_alloc(2 * sizeof(double)));
    void *after = SM_alloc(16);
    t[0] = 1.5;
    t[1] = -2.5;

    p = static_cast<int *>(SM_realloc(p, 10000 * sizeof(int)));
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p[0] + p[1] + p[2] + p[3], 10);
    EXPECT_EQ(qxsys_block_kind_of(p), QXSYS_PERSISTENT);
    EXPECT_EQ(SM_length(p), 10000 * sizeof(int));
    EXPECT_EQ(stats().persistent_bytes, 10000 * sizeof(int));

    t = static_cast<double *>(SM_realloc(t, 100000 * sizeof(double)));
    ASSERT_NE(t, nullptr);
    EXPECT_EQ(t[0], 1.5);
    EXPECT_EQ(t[1], -2.5);
    EXPECT_EQ(qxsys_block_kind_of(t), QXSYS_TRANSIENT);
    t = static_cast<double *>(SM_realloc(t, sizeof(double)));
    EXPECT_EQ(t[0], 1.5);
    EXPECT_EQ(SM_length(t), sizeof(double));
    EXPECT_EQ(stats().transient_bytes, 32 + sizeof(double));

    void *fresh = SM_realloc(nullptr, 8);
    EXPECT_EQ(qxsys_block_kind_of(fresh), QXSYS_TRANSIENT);
    SM_free(before);
    // The list stays whole after the moves: the rest goes with the operation.
    EXPECT_EQ(qxsys_end_operation(), 3u);
    EXPECT_EQ(stats().transient_bytes, 0u);
    (void)after;
    SM_free(p);
}

TEST_F(Host, EndOperationFreesTransientBlocksOnly)
{
    for (int i = 0; i < 5; ++i) SM_alloc(static_cast<size_t>(i) * 8);
    auto *p = static_cast<double *>(SM_calloc_persistent(1, sizeof(double)));
    EXPECT_EQ(qxsys_end_operation(), 5u);
    EXPECT_EQ(stats().transient_blocks, 0u);
    EXPECT_EQ(qxsys_end_operation(), 0u);
    *p = 3.0;
    EXPECT_EQ(*p, 3.0);
    EXPECT_EQ(qxsys_block_kind_of(p), QXSYS_PERSISTENT);
    EXPECT_EQ(stats().persistent_blocks, 1u);
    SM_free(p);
}

TEST_F(Host, InjectedTransientFailureIsReported)
{
    const unsigned long calls0 = qxsys_allocation_calls();
    const unsigned long failures0 = stats().failures;
    void *p = &p;
    const auto error = qxsys::first_error([&] {
        qxsys_fail_allocation(1);
        p = SM_alloc(24);
    });
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->kind, QXSYS_INTERNAL);
    EXPECT_STREQ(error->file, "qxsys_memory");
    EXPECT_STREQ(error->text, "Failed to allocate 24 bytes");
    EXPECT_EQ(p, &p) << "the trap unwound before SM_alloc returned";
    EXPECT_EQ(qxsys_allocation_calls() - calls0, 1u);
    EXPECT_EQ(stats().failures - failures0, 1u);

    // Without a trap the report returns and so does NULL; once per arming.
    qxsys_fail_allocation(2);
    void *ok = SM_alloc(1);
    EXPECT_NE(ok, nullptr);
    EXPECT_EQ(SM_calloc(2, 6), nullptr);
    EXPECT_STREQ(newest().text, "Failed to allocate 12 bytes");
    void *again = SM_alloc(1);
    EXPECT_NE(again, nullptr);
    SM_free(ok);
    SM_free(again);

    qxsys_fail_allocation(1);
    qxsys_fail_allocation(0); // disarmed
    again = SM_alloc(1);
    EXPECT_NE(again, nullptr);
    SM_free(again);

    qxsys_report r{};
    EXPECT_EQ(qxsys_c_catch_alloc(1, 40, &r), 1);
    EXPECT_STREQ(r.text, "Failed to allocate 40 bytes");
    EXPECT_EQ(qxsys_c_catch_alloc(2, 40, &r), 0);
    qxsys_fail_allocation(0);
}

TEST_F(Host, PersistentFailureIsSilent)
{
    const long reports0 = qxsys_report_count();
    const unsigned long calls0 = qxsys_allocation_calls();
    const unsigned long failures0 = stats().failures;
    qxsys_fail_allocation(1);
    EXPECT_EQ(SM_calloc_persistent(3, 8), nullptr);
    EXPECT_EQ(SM_calloc_persistent(SIZE_MAX / 2, 4), nullptr); // count * size overflows
    EXPECT_EQ(qxsys_report_count(), reports0);
    EXPECT_EQ(qxsys_allocation_calls() - calls0, 2u);
    EXPECT_EQ(stats().failures - failures0, 2u);
    EXPECT_EQ(stats().persistent_blocks, 0u);
}

TEST_F(Host, FailedReallocKeepsTheBlock)
{
    auto *p = static_cast<char *>(SM_alloc(4));
    std::memcpy(p, "abc", 4);
    qxsys_fail_allocation(1);
    EXPECT_EQ(SM_realloc(p, 1000), nullptr);
    EXPECT_STREQ(newest().text, "Failed to allocate 1000 bytes");
    EXPECT_STREQ(p, "abc");
    EXPECT_EQ(SM_length(p), 4u);

    const auto error = qxsys::first_error([] { SM_calloc(SIZE_MAX / 2, 4); });
    ASSERT_TRUE(error.has_value());
    EXPECT_STREQ(error->file, "qxsys_memory");
    SM_free(p);
}

// Three allocations, cleaned up only when all succeed.
void three_allocations()
{
    void *a = SM_alloc(8);
    void *b = SM_calloc(2, 8);
    a = SM_realloc(a, 32);
    SM_free(a);
    SM_free(b);
}

TEST_F(Host, FaultInjectionSweep)
{
    const char *expected[] = {"Failed to allocate 8 bytes", "Failed to allocate 16 bytes",
                              "Failed to allocate 32 bytes"};
    for (long n = 1; n <= 3; ++n) {
        SCOPED_TRACE(n);
        const unsigned long calls0 = qxsys_allocation_calls();
        qxsys_fail_allocation(n);
        const auto error = qxsys::first_error(three_allocations);
        ASSERT_TRUE(error.has_value());
        EXPECT_STREQ(error->text, expected[n - 1]);
        EXPECT_EQ(qxsys_allocation_calls() - calls0, static_cast<unsigned long>(n));
        // What was allocated before the failure belongs to the operation.
        EXPECT_EQ(qxsys_end_operation(), static_cast<size_t>(n - 1));
    }
    qxsys_fail_allocation(4);
    EXPECT_FALSE(qxsys::first_error(three_allocations).has_value());
    qxsys_fail_allocation(0);
    EXPECT_EQ(stats().transient_blocks, 0u);
}

TEST_F(Host, FreeingAForeignBlockAborts)
{
    alignas(std::max_align_t) static unsigned char fake[128] = {};
    EXPECT_DEATH(SM_free(fake + 64), "not a live libqxsys block");
}

// ---- callbacks --------------------------------------------------------------

struct Log {
    std::string order;
    std::vector<int> reasons;
    void *data = nullptr;
    int unregister_me = 0;
    int unregister_other = 0;
    int registered = 0;
};

Log *g_log = nullptr;

void tag_a(int reason, void *data, void *user)
{
    g_log->order += *static_cast<const char *>(user);
    g_log->reasons.push_back(reason);
    g_log->data = data;
}

void tag_b(int, void *, void *) { g_log->order += 'B'; }

void self_removing(int, void *, void *)
{
    g_log->order += 'S';
    qxsys_callback_unregister(g_log->unregister_me);
}

void removes_other(int, void *, void *)
{
    g_log->order += 'R';
    qxsys_callback_unregister(g_log->unregister_other);
}

void registers_new(int reason, void *, void *)
{
    g_log->order += 'N';
    if (g_log->registered == 0) g_log->registered = qxsys_callback_register(reason, tag_b, nullptr);
}

TEST_F(Host, CallbacksRunInRegistrationOrderPerReason)
{
    Log log;
    g_log = &log;
    static const char a = 'a', b = 'b', c = 'c', x = 'x';
    const int ha = qxsys_callback_register(5, tag_a, const_cast<char *>(&a));
    const int hx = qxsys_callback_register(6, tag_a, const_cast<char *>(&x));
    const int hb = qxsys_callback_register(5, tag_a, const_cast<char *>(&b));
    const int hc = qxsys_callback_register(5, tag_a, const_cast<char *>(&c));
    EXPECT_GT(ha, 0);
    EXPECT_TRUE(ha != hb && hb != hc && ha != hc && hx != ha);
    int data = 0;
    CALLBACK_call_list(5, &data);
    EXPECT_EQ(log.order, "abc");
    EXPECT_EQ(log.reasons, (std::vector<int>{5, 5, 5}));
    EXPECT_EQ(log.data, &data);
    EXPECT_EQ(qxsys_callback_unregister(hb), 1);
    EXPECT_EQ(qxsys_callback_unregister(hb), 0);
    EXPECT_EQ(qxsys_callback_unregister(0), 0);
    log.order.clear();
    CALLBACK_call_list(5, nullptr);
    CALLBACK_call_list(6, nullptr);
    CALLBACK_call_list(7, nullptr);
    EXPECT_EQ(log.order, "acx");
    // Registered again, it comes last.
    qxsys_callback_register(5, tag_a, const_cast<char *>(&b));
    log.order.clear();
    CALLBACK_call_list(5, nullptr);
    EXPECT_EQ(log.order, "acb");
    g_log = nullptr;
}

TEST_F(Host, CallbacksMayChangeTheTableWhileRunning)
{
    Log log;
    g_log = &log;
    log.unregister_me = qxsys_callback_register(1, self_removing, nullptr);
    qxsys_callback_register(1, removes_other, nullptr);
    log.unregister_other = qxsys_callback_register(1, tag_b, nullptr);
    qxsys_callback_register(1, registers_new, nullptr);
    CALLBACK_call_list(1, nullptr);
    EXPECT_EQ(log.order, "SRN") << "removed ones are skipped, new ones wait";
    log.order.clear();
    CALLBACK_call_list(1, nullptr);
    EXPECT_EQ(log.order, "RNB");
    g_log = nullptr;
}

TEST_F(Host, ReasonNumbersAreMapped)
{
    EXPECT_EQ(QX_REASON_ask_reason_number(100), 100);
    qxsys_set_reason_number(100, 7);
    qxsys_set_reason_number(101, 8);
    EXPECT_EQ(QX_REASON_ask_reason_number(100), 7);
    EXPECT_EQ(QX_REASON_ask_reason_number(101), 8);
    qxsys_set_reason_number(100, 9);
    EXPECT_EQ(QX_REASON_ask_reason_number(100), 9);
    EXPECT_EQ(QX_REASON_ask_reason_number(-3), -3);
    qxsys_reset();
    EXPECT_EQ(QX_REASON_ask_reason_number(100), 100);
}

// ---- f2c ----------------------------------------------------------------------

double dmod(double x, double y) { return F2C_dmod(&x, &y); }
double pow_di(double a, int n) { return F2C_pow_di(&a, &n); }
double dsign(double a, double b) { return F2Cdsign(&a, &b); }
int to_int(double x) { return int_overflow_to_zero_(&x); }

TEST(F2c, DmodTruncatesTheQuotient)
{
    EXPECT_EQ(dmod(-7, 3), -1.0);
    EXPECT_EQ(dmod(7, -3), 1.0);
    EXPECT_EQ(dmod(7, 3), 1.0);
    EXPECT_EQ(dmod(-7, -3), -1.0);
    EXPECT_EQ(dmod(5.5, 2), 1.5);
    EXPECT_EQ(dmod(-5.5, 2), -1.5);
    for (double x : {-10.0, -4.0, -0.5, 0.0, 2.25, 9.0, 100.0}) {
        for (double y : {-3.0, -0.5, 0.25, 4.0})
            EXPECT_EQ(dmod(x, y), std::fmod(x, y)) << x << " " << y;
    }
}

TEST(F2c, PowDiBySquaring)
{
    EXPECT_EQ(pow_di(2, 0), 1.0);
    EXPECT_EQ(pow_di(0, 0), 1.0);
    EXPECT_EQ(pow_di(std::nan(""), 0), 1.0);
    EXPECT_EQ(pow_di(2, 10), 1024.0);
    EXPECT_EQ(pow_di(-3, 3), -27.0);
    EXPECT_EQ(pow_di(2, -2), 0.25);
    EXPECT_EQ(pow_di(10, -1), 0.1);
    EXPECT_EQ(pow_di(2, INT_MIN), 0.0);
    EXPECT_EQ(pow_di(0.5, INT_MIN), HUGE_VAL);
    EXPECT_EQ(pow_di(-1, INT_MIN), 1.0);
    EXPECT_EQ(pow_di(-1, INT_MAX), -1.0);
    EXPECT_EQ(pow_di(0, -1), HUGE_VAL);
    EXPECT_EQ(pow_di(1.5, 7), 1.5 * 1.5 * 1.5 * 1.5 * 1.5 * 1.5 * 1.5);
    const double a = 1.7, b = -0.3;
    EXPECT_EQ(F2C_pow_dd(&a, &b), std::pow(1.7, -0.3));
}

bool close_ulps(double got, double want, double scale, double ulps)
{
    return std::fabs(got - want) <= ulps * DBL_EPSILON * scale;
}

TEST(F2c, PowZzMatchesComplexPow)
{
    const double cases[][4] = {{1.5, 0.5, 2.0, 0.0},   {-2.0, 1.0, 0.5, 0.25},
                               {0.3, -0.7, -1.5, 2.0}, {3.0, 4.0, 1.0, 1.0},
                               {-1.0, 0.0, 0.5, 0.0},  {1e3, 1e-3, 0.1, -0.2},
                               {0.5, 0.5, 3.0, -1.0},  {2.0, -3.0, 0.0, 1.0}};
    for (const auto &c : cases) {
        SCOPED_TRACE(::testing::Message() << c[0] << "," << c[1] << " ** " << c[2] << "," << c[3]);
        const std::complex<double> want =
            std::pow(std::complex<double>(c[0], c[1]), std::complex<double>(c[2], c[3]));
        double r[2];
        F2C_pow_zz(r, c, c + 2);
        const double scale = std::abs(want);
        EXPECT_TRUE(close_ulps(r[0], want.real(), scale, 8)) << r[0] << " vs " << want.real();
        EXPECT_TRUE(close_ulps(r[1], want.imag(), scale, 8)) << r[1] << " vs " << want.imag();
        // The result may be one of the operands.
        double a[2] = {c[0], c[1]}, b[2] = {c[2], c[3]};
        F2C_pow_zz(a, a, b);
        EXPECT_EQ(a[0], r[0]);
        EXPECT_EQ(a[1], r[1]);
        a[0] = c[0], a[1] = c[1];
        F2C_pow_zz(b, a, b);
        EXPECT_EQ(b[0], r[0]);
        EXPECT_EQ(b[1], r[1]);
    }
}

TEST(F2c, DimagAndDsign)
{
    const double z[2] = {1.0, -4.5};
    EXPECT_EQ(F2Cdimag(z), -4.5);
    EXPECT_EQ(dsign(3, 2), 3.0);
    EXPECT_EQ(dsign(-3, 2), 3.0);
    EXPECT_EQ(dsign(3, -2), -3.0);
    EXPECT_EQ(dsign(-3, -2), -3.0);
    EXPECT_EQ(dsign(3, 0.0), 3.0);
    EXPECT_EQ(dsign(3, -0.0), 3.0) << "b == -0 counts as positive";
    EXPECT_EQ(dsign(-3, -0.0), 3.0);
}

TEST(F2c, IntOverflowToZero)
{
    EXPECT_EQ(to_int(2.9), 2);
    EXPECT_EQ(to_int(-2.9), -2);
    EXPECT_EQ(to_int(3e9), 0);
    EXPECT_EQ(to_int(-3e9), 0);
    EXPECT_EQ(to_int(std::nan("")), 0);
    EXPECT_EQ(to_int(HUGE_VAL), 0);
    EXPECT_EQ(to_int(-HUGE_VAL), 0);
    EXPECT_EQ(to_int(2147483647.9), INT_MAX);
    EXPECT_EQ(to_int(2147483648.0), 0);
    EXPECT_EQ(to_int(-2147483648.9), INT_MIN);
    EXPECT_EQ(to_int(-2147483649.0), 0);
}

TEST(F2c, CopyAndFill)
{
    double v[6] = {0, 1, 2, 3, 4, 5};
    int n = 4;
    movf_(&n, v, v + 2); // overlapping, forwards
    EXPECT_EQ(std::vector<double>(v, v + 6), (std::vector<double>{0, 1, 0, 1, 2, 3}));
    movf_(&n, v + 2, v); // overlapping, backwards
    EXPECT_EQ(std::vector<double>(v, v + 6), (std::vector<double>{0, 1, 2, 3, 2, 3}));
    n = 0;
    movf_(&n, v + 1, v);
    n = -1;
    movf_(&n, v + 1, v);
    EXPECT_EQ(v[0], 0.0);

    int iv[4] = {1, 1, 1, 1};
    n = 3;
    const int seven = 7;
    wf256_(&n, &seven, iv);
    EXPECT_EQ(std::vector<int>(iv, iv + 4), (std::vector<int>{7, 7, 7, 1}));
    const double half = 0.5;
    n = 2;
    wf266_(&n, &half, v);
    EXPECT_EQ(std::vector<double>(v, v + 3), (std::vector<double>{0.5, 0.5, 2}));
    n = -5;
    wf256_(&n, &seven, iv + 3);
    wf266_(&n, &half, v + 2);
    EXPECT_EQ(iv[3], 1);
    EXPECT_EQ(v[2], 2.0);
}

} // namespace
