// test_qxsys.cpp — libqxsys, the reference host: reports, traps, memory
// blocks and fault injection, callbacks, and the f2c arithmetic services.
#include <climits>
#include <cmath>
#include <complex>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <qxsys/qxsys.h>
#include <qxsys/qxsys.hpp>

// From test_qxsys_c.c.
extern "C" {
int qxsys_c_catch_raise(int code, const char *message, qxsys_report *caught);
int qxsys_c_nested(qxsys_report *inner_caught, qxsys_report *outer_caught);
}

namespace
{

qxsys_memory_stats stats()
{
    qxsys_memory_stats s{};
    qxsys_memory_stats_get(&s);
    return s;
}

// Live "transient blocks/bytes persistent blocks/bytes".
std::string counts()
{
    const qxsys_memory_stats s = stats();
    return std::to_string(s.transient_blocks) + "/" + std::to_string(s.transient_bytes) + " " +
           std::to_string(s.persistent_blocks) + "/" + std::to_string(s.persistent_bytes);
}

// A whole report on one line, so that one comparison checks every field.
std::string show(const qxsys_report &r)
{
    return std::to_string(r.kind) + " " + r.file + ":" + std::to_string(r.line) + " code " +
           std::to_string(r.code) + ": " + r.text;
}

struct Host : ::testing::Test {
    void SetUp() override
    {
        qxsys_reset();
        qxsys_set_error_stream(nullptr);
        qxsys_set_log_stream(nullptr);
    }
    void TearDown() override
    {
        qxsys_end_operation();
        EXPECT_EQ(counts(), "0/0 0/0") << "persistent blocks leaked";
        EXPECT_EQ(qxsys_current_trap(), nullptr);
    }
};

// A tmpfile() that gives back what was written to it.
struct Capture {
    FILE *const file = std::tmpfile();
    ~Capture() { std::fclose(file); }
    std::string text() const
    {
        std::fflush(file);
        std::rewind(file);
        std::string s;
        for (int c; (c = std::fgetc(file)) != EOF;) s += static_cast<char>(c);
        return s;
    }
};

// Adds the kind of each report, marked "t" when a trap is still set.
void remember(const qxsys_report *report, void *user)
{
    *static_cast<std::string *>(user) +=
        std::to_string(report->kind) + (qxsys_current_trap() != nullptr ? "t " : " ");
}

TEST_F(Host, ReportsAreRecordedPrintedHandledAndKept)
{
    Capture err, log;
    std::string seen;
    EXPECT_EQ(qxsys_set_error_stream(err.file), nullptr);
    EXPECT_EQ(qxsys_set_log_stream(log.file), nullptr);
    EXPECT_EQ(qxsys_set_handler(&remember, &seen, nullptr), nullptr);
    ERROR_internal("int.cpp", 10, "x=%d y=%s", 5, "q");
    ERROR_raise("raise.cpp", 20, 77, "boom %d"); // a message, not a format
    ERROR_note("note.cpp", 30, "note %.1f", 2.5);
    ERROR_lprintf("log %d\n", 3);
    ERROR_lprintf("no newline");
    EXPECT_TRUE(qxsys::first_error([] { ERROR_raise("t.cpp", 3, 9, "trapped"); }).has_value());
    EXPECT_EQ(err.text(), "qxsys: internal error at int.cpp:10: x=5 y=q\n"
                          "qxsys: error at raise.cpp:20: code 77: boom %d\n");
    EXPECT_EQ(log.text(), "qxsys: note at note.cpp:30: note 2.5\nlog 3\nno newline");
    EXPECT_EQ(seen, "1 2 3 4 4 2t ");

    EXPECT_EQ(show(*qxsys_report_back(2)), show({QXSYS_LOG, "", 0, 0, "log 3\n"}));
    EXPECT_EQ(qxsys_report_back(6), nullptr);
    EXPECT_EQ(qxsys_report_back(-1), nullptr);

    void *previous_user = nullptr;
    EXPECT_EQ(qxsys_set_handler(nullptr, nullptr, &previous_user), &remember);
    EXPECT_EQ(previous_user, &seen);
    EXPECT_EQ(qxsys_set_error_stream(nullptr), err.file);
    ERROR_internal("f.cpp", 9, "silenced");
    EXPECT_EQ(seen, "1 2 3 4 4 2t ") << "the handler is gone";
    EXPECT_EQ(err.text().find("silenced"), std::string::npos);
    qxsys_clear_reports();
    EXPECT_EQ(qxsys_report_back(0), nullptr);

    for (int i = 0; i < 300; ++i) ERROR_note("h.cpp", i, "n%d", i);
    EXPECT_EQ(qxsys_report_count(), 300);
    EXPECT_STREQ(qxsys_report_back(0)->text, "n299");
    EXPECT_EQ(qxsys_report_back(QXSYS_HISTORY - 1)->text,
              "n" + std::to_string(300 - QXSYS_HISTORY));
    EXPECT_EQ(qxsys_report_back(QXSYS_HISTORY), nullptr);

    const std::string big(5000, 'x');
    ERROR_internal(big.c_str(), 1, "%s", big.c_str());
    ERROR_raise(nullptr, 2, 1, big.c_str());
    EXPECT_EQ(qxsys_report_back(1)->file, big.substr(0, QXSYS_FILE_MAX - 1));
    EXPECT_EQ(qxsys_report_back(1)->text, big.substr(0, QXSYS_TEXT_MAX - 1));
    EXPECT_EQ(show(*qxsys_report_back(0)),
              show({QXSYS_RAISE, "", 2, 1, ""}) + big.substr(0, QXSYS_TEXT_MAX - 1));
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
    std::ofstream(path) << "old\n";
    setenv("QX_LOG", path.c_str(), 1);
    EXPECT_EXIT((qxsys_reset(), ERROR_note("x.cpp", 3, "to the %s", "file"), std::exit(0)),
                ::testing::ExitedWithCode(0), "");
    unsetenv("QX_LOG");
    std::string logged;
    std::getline(std::ifstream(path), logged, '\0');
    EXPECT_EQ(logged, "old\nqxsys: note at x.cpp:3: to the file\n");
    std::remove(path.c_str());
}

TEST_F(Host, CAndCppTrapsCatchAndNest)
{
    qxsys_report r{}, inner{}, outer{};
    ASSERT_EQ(qxsys_c_catch_raise(31, "caught text", &r), 1);
    EXPECT_EQ(show(r), show({QXSYS_RAISE, "c_file.c", 42, 31, "caught text"}));
    EXPECT_EQ(qxsys_c_nested(&inner, &outer), 1 | 2 | 4 | 8);
    EXPECT_EQ(show(inner), show({QXSYS_INTERNAL, "inner.c", 1, 0, "first 1"}));
    EXPECT_EQ(show(outer), show({QXSYS_INTERNAL, "outer.c", 2, 0, "second error"}));

    EXPECT_EQ(qxsys::guarded([] { return 7; }), 7);
    qxsys_trap *outer_trap = nullptr;
    std::optional<qxsys_report> in;
    const auto out = qxsys::first_error([&] {
        outer_trap = qxsys_current_trap();
        in = qxsys::first_error([] { ERROR_internal("in.cpp", 1, "inner %d", 5); });
        EXPECT_EQ(qxsys_current_trap(), outer_trap);
        EXPECT_EQ(qxsys_c_catch_raise(6, "c inside", &r), 1); // catches by longjmp
        EXPECT_EQ(qxsys_current_trap(), outer_trap);
        ERROR_raise("out.cpp", 2, 8, "outer");
        ADD_FAILURE() << "the outer trap did not unwind";
    });
    ASSERT_TRUE(in.has_value() && out.has_value());
    EXPECT_EQ(show(*in), show({QXSYS_INTERNAL, "in.cpp", 1, 0, "inner 5"}));
    EXPECT_STREQ(qxsys::report_error(*in).what(), "in.cpp:1: inner 5");
    EXPECT_EQ(out->code, 8);

    static qxsys_trap left; // left pushed, so the guard pops a trap that is not the innermost
    EXPECT_DEATH(qxsys::guarded([] { qxsys_trap_push(&left); }), "not the innermost");
}

TEST_F(Host, BlocksAreCountedPerKindReallocatedAndFreedWithTheOperation)
{
    const unsigned long allocations0 = stats().allocations;
    void *a = SM_alloc(10);
    auto *p = static_cast<char *>(SM_calloc_persistent(2, 5));
    auto *b = static_cast<char *>(SM_calloc(3, 8));
    void *z1 = SM_alloc(0), *z2 = SM_calloc(0, 5);
    ASSERT_TRUE(a && b && p && z1 && z2);
    EXPECT_NE(z1, z2);
    EXPECT_EQ(std::string(b, 24), std::string(24, '\0'));
    EXPECT_EQ(counts(), "4/34 1/10");
    EXPECT_EQ(stats().allocations - allocations0, 5u);
    EXPECT_EQ(qxsys_live_blocks(), 5u);
    for (const auto &[block, length] :
         {std::pair<void *, size_t>{a, 10}, {b, 24}, {p, 10}, {z1, 0}, {nullptr, 0}})
        EXPECT_EQ(SM_length(block), length);
    EXPECT_EQ(qxsys_block_kind_of(a), QXSYS_TRANSIENT);
    EXPECT_EQ(qxsys_block_kind_of(p), QXSYS_PERSISTENT);
    SM_free(a);
    SM_free(nullptr);
    EXPECT_EQ(counts(), "3/24 1/10");
    EXPECT_EQ(qxsys_end_operation(), 3u);
    EXPECT_EQ(qxsys_end_operation(), 0u);
    EXPECT_EQ(counts(), "0/0 1/10");
    EXPECT_EQ(qxsys_block_kind_of(p), QXSYS_PERSISTENT) << "a persistent block survives";
    EXPECT_EQ(qxsys_report_count(), 0);

    // Transient neighbours on both sides of a block that moves.
    void *before = SM_alloc(16);
    auto *t = static_cast<char *>(SM_alloc(4));
    SM_alloc(16);
    std::strcpy(p, "per");
    std::strcpy(t, "tra");
    p = static_cast<char *>(SM_realloc(p, 40000));
    t = static_cast<char *>(SM_realloc(t, 800000));
    ASSERT_TRUE(p && t);
    EXPECT_EQ(std::string(p) + t, "pertra");
    EXPECT_EQ(qxsys_block_kind_of(p), QXSYS_PERSISTENT);
    EXPECT_EQ(SM_length(p), 40000u);
    t = static_cast<char *>(SM_realloc(t, 8));
    EXPECT_STREQ(t, "tra");
    EXPECT_EQ(counts(), "3/40 1/40000");
    EXPECT_EQ(qxsys_block_kind_of(SM_realloc(nullptr, 8)), QXSYS_TRANSIENT);
    SM_free(before);
    EXPECT_EQ(qxsys_end_operation(), 3u) << "the list stays whole after the moves";
    SM_free(p);

    alignas(std::max_align_t) static unsigned char fake[128] = {};
    EXPECT_DEATH(SM_free(fake + 64), "not a live libqxsys block");
}

TEST_F(Host, InjectedFailures)
{
    const unsigned long failures0 = stats().failures;
    // Without a trap the report returns and so does NULL; once per arming.
    qxsys_fail_allocation(2);
    EXPECT_NE(SM_alloc(1), nullptr);
    EXPECT_EQ(SM_calloc(2, 6), nullptr);
    EXPECT_STREQ(qxsys_report_back(0)->text, "Failed to allocate 12 bytes");
    EXPECT_NE(SM_alloc(1), nullptr);
    qxsys_fail_allocation(1);
    qxsys_fail_allocation(0); // disarmed
    EXPECT_NE(SM_alloc(1), nullptr);

    qxsys_fail_allocation(1);
    EXPECT_EQ(SM_calloc_persistent(3, 8), nullptr);
    EXPECT_EQ(SM_calloc_persistent(SIZE_MAX / 2, 4), nullptr); // count * size overflows
    EXPECT_EQ(qxsys_report_count(), 1) << "a persistent failure is silent";
    EXPECT_EQ(stats().failures - failures0, 3u);

    auto *p = static_cast<char *>(SM_alloc(4));
    std::strcpy(p, "abc");
    qxsys_fail_allocation(1);
    EXPECT_EQ(SM_realloc(p, 1000), nullptr);
    EXPECT_STREQ(qxsys_report_back(0)->text, "Failed to allocate 1000 bytes");
    EXPECT_STREQ(p, "abc");
    EXPECT_EQ(SM_length(p), 4u);
    EXPECT_EQ(SM_calloc(SIZE_MAX / 2, 4), nullptr);
    EXPECT_EQ(qxsys_report_count(), 3);

    qxsys_end_operation();
    // Three allocations, cleaned up only when all succeed.
    const auto three_allocations = [] {
        void *a = SM_alloc(8);
        void *b = SM_calloc(2, 8);
        SM_free(SM_realloc(a, 32));
        SM_free(b);
    };
    for (long n = 1; n <= 3; ++n) {
        SCOPED_TRACE(n);
        const unsigned long calls0 = qxsys_allocation_calls();
        qxsys_fail_allocation(n);
        const auto error = qxsys::first_error(three_allocations);
        ASSERT_TRUE(error.has_value());
        EXPECT_EQ(show(*error), show({QXSYS_INTERNAL, "qxsys_memory", error->line, 0, ""}) +
                                    "Failed to allocate " + std::to_string(4 << n) + " bytes");
        EXPECT_EQ(qxsys_allocation_calls() - calls0, static_cast<unsigned long>(n));
        // What was allocated before the failure belongs to the operation.
        EXPECT_EQ(qxsys_end_operation(), static_cast<size_t>(n - 1));
    }
    qxsys_fail_allocation(4);
    EXPECT_FALSE(qxsys::first_error(three_allocations).has_value());
}

struct Action {
    char tag;
    int unregister = 0;
    Action *register_new = nullptr;
};

// Adds its tag to the string passed as data, then may unregister a handle or
// register another action for the same reason.
void act(int reason, void *data, void *user)
{
    auto *action = static_cast<Action *>(user);
    *static_cast<std::string *>(data) += action->tag;
    if (action->unregister != 0) qxsys_callback_unregister(std::exchange(action->unregister, 0));
    if (action->register_new != nullptr)
        qxsys_callback_register(reason, act, std::exchange(action->register_new, nullptr));
}

std::string run(int reason)
{
    std::string tags;
    CALLBACK_call_list(reason, &tags);
    return tags;
}

TEST_F(Host, CallbacksAndReasonNumbers)
{
    Action a{'a'}, b{'b'}, c{'c'}, x{'x'};
    qxsys_callback_register(5, act, &a);
    qxsys_callback_register(6, act, &x);
    const int hb = qxsys_callback_register(5, act, &b);
    qxsys_callback_register(5, act, &c);
    EXPECT_EQ(run(5), "abc");
    EXPECT_EQ(qxsys_callback_unregister(hb), 1);
    EXPECT_EQ(qxsys_callback_unregister(hb), 0);
    EXPECT_EQ(qxsys_callback_unregister(0), 0);
    EXPECT_EQ(run(5) + run(6) + run(7), "acx");
    qxsys_callback_register(5, act, &b);
    EXPECT_EQ(run(5), "acb") << "registered again, it comes last";

    Action self{'S'}, other{'R'}, removed{'B'}, adder{'N'}, added{'b'};
    self.unregister = qxsys_callback_register(1, act, &self);
    qxsys_callback_register(1, act, &other);
    other.unregister = qxsys_callback_register(1, act, &removed);
    qxsys_callback_register(1, act, &adder);
    adder.register_new = &added;
    EXPECT_EQ(run(1), "SRN") << "removed ones are skipped, new ones wait";
    EXPECT_EQ(run(1), "RNb");

    EXPECT_EQ(QX_REASON_ask_reason_number(100), 100);
    qxsys_set_reason_number(100, 7);
    qxsys_set_reason_number(101, 8);
    qxsys_set_reason_number(100, 9);
    EXPECT_EQ(QX_REASON_ask_reason_number(100), 9);
    EXPECT_EQ(QX_REASON_ask_reason_number(101), 8);
    qxsys_reset();
    EXPECT_EQ(QX_REASON_ask_reason_number(100), 100);
}

double dmod(double x, double y) { return F2C_dmod(&x, &y); }
double pow_di(double a, int n) { return F2C_pow_di(&a, &n); }
double dsign(double a, double b) { return F2Cdsign(&a, &b); }
int to_int(double x) { return int_overflow_to_zero_(&x); }
void movf(int n, const double *from, double *to) { movf_(&n, from, to); }
void wf256(int n, int value, int *to) { wf256_(&n, &value, to); }
void wf266(int n, double value, double *to) { wf266_(&n, &value, to); }

TEST(F2c, DmodDsignAndIntOverflowToZero)
{
    const double mods[][3] = {{-7, 3, -1}, {7, -3, 1}, {7, 3, 1}, {-7, -3, -1}, {-5.5, 2, -1.5}};
    for (const auto &c : mods) EXPECT_EQ(dmod(c[0], c[1]), c[2]) << c[0] << " mod " << c[1];
    for (double x : {-10.0, -0.5, 0.0, 2.25, 100.0})
        for (double y : {-3.0, -0.5, 0.25, 4.0})
            EXPECT_EQ(dmod(x, y), std::fmod(x, y)) << x << " mod " << y;

    // b == -0 counts as positive.
    const double signs[][3] = {{3, 2, 3}, {-3, 2, 3}, {3, -2, -3}, {-3, -0.0, 3}};
    for (const auto &c : signs) EXPECT_EQ(dsign(c[0], c[1]), c[2]) << c[0] << " " << c[1];

    const std::pair<double, int> ints[] = {
        {2.9, 2}, {-2.9, -2}, {2147483647.9, INT_MAX}, {-2147483648.9, INT_MIN}};
    for (const auto &[x, want] : ints) EXPECT_EQ(to_int(x), want) << x;
    for (double x : {3e9, -3e9, std::nan(""), HUGE_VAL, -HUGE_VAL, 2147483648.0, -2147483649.0})
        EXPECT_EQ(to_int(x), 0) << x;
}

TEST(F2c, PowDiPowZzAndDimag)
{
    const std::tuple<double, int, double> cases[] = {
        {2, 0, 1},        {0, 0, 1},         {2, 10, 1024},
        {-3, 3, -27},     {3, 7, 2187},      {2, -2, 0.25},
        {10, -1, 0.1},    {2, INT_MIN, 0},   {0.5, INT_MIN, HUGE_VAL},
        {-1, INT_MIN, 1}, {-1, INT_MAX, -1}, {0, -1, HUGE_VAL}};
    for (const auto &[a, n, want] : cases) EXPECT_EQ(pow_di(a, n), want) << a << " ** " << n;
    EXPECT_EQ(pow_di(std::nan(""), 0), 1.0);

    const double complex_cases[][4] = {{1.5, 0.5, 2.0, 0.0},   {-2.0, 1.0, 0.5, 0.25},
                                       {0.3, -0.7, -1.5, 2.0}, {-1.0, 0.0, 0.5, 0.0},
                                       {1e3, 1e-3, 0.1, -0.2}, {2.0, -3.0, 0.0, 1.0}};
    for (const auto &c : complex_cases) {
        SCOPED_TRACE(::testing::Message() << c[0] << "," << c[1] << " ** " << c[2] << "," << c[3]);
        const std::complex<double> want =
            std::pow(std::complex<double>(c[0], c[1]), std::complex<double>(c[2], c[3]));
        double r[2];
        F2C_pow_zz(r, c, c + 2);
        EXPECT_EQ(F2Cdimag(c), c[1]);
        EXPECT_LE(std::abs(std::complex<double>(r[0], r[1]) - want), 2e-15 * std::abs(want));
        double a[2] = {c[0], c[1]}, b[2] = {c[2], c[3]}, a2[2] = {c[0], c[1]};
        F2C_pow_zz(a, a, b);  // the result in place of a
        F2C_pow_zz(b, a2, b); // and of b
        EXPECT_TRUE(a[0] == r[0] && a[1] == r[1] && b[0] == r[0] && b[1] == r[1]);
    }
}

TEST(F2c, CopyAndFill)
{
    double v[6] = {0, 1, 2, 3, 4, 5};
    movf(4, v, v + 2); // overlapping, forwards
    EXPECT_EQ(std::vector<double>(v, v + 6), (std::vector<double>{0, 1, 0, 1, 2, 3}));
    movf(4, v + 2, v); // overlapping, backwards
    movf(0, v + 1, v);
    movf(-1, v + 1, v);
    EXPECT_EQ(std::vector<double>(v, v + 6), (std::vector<double>{0, 1, 2, 3, 2, 3}));

    int iv[4] = {1, 1, 1, 1};
    wf256(3, 7, iv);
    wf256(-5, 7, iv + 3);
    wf266(2, 0.5, v);
    wf266(-5, 0.5, v + 2);
    EXPECT_EQ(std::vector<int>(iv, iv + 4), (std::vector<int>{7, 7, 7, 1}));
    EXPECT_EQ(std::vector<double>(v, v + 3), (std::vector<double>{0.5, 0.5, 2}));
}

} // namespace
