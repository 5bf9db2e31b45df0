// The checking pattern every source file uses: the level is read afresh at
// each check, nothing is evaluated at level 0 or below, and each form reports
// the file, the line of the check and its text or code.
#define QX_SOURCE_FILE "check_probe"

#include "frame/check.h"
#include "support/qx_test.h"

namespace
{

class Checks : public qxtest::QxTest
{
};

int evaluations = 0;
bool counted(bool value)
{
    ++evaluations;
    return value;
}

// The lines of the checks below, for comparison with the reports.
int assert_line, check_line, raise_line;
void probe(bool ok)
{
    assert_line = __LINE__ + 1;
    QX_ASSERT(counted(ok));
    check_line = __LINE__ + 1;
    QX_CHECK(counted(ok), "Too Many Points To Remove %d", 7);
    raise_line = __LINE__ + 1;
    QX_CHECK_RAISE(counted(ok), QX_ERR_PNTLST_POSITION, "Invalid Point Position Given");
}

TEST_F(Checks, NothingIsEvaluatedAtLevelZeroOrBelow)
{
    for (int level : {0, -1, -100}) {
        MACH__checking_level = level;
        evaluations = 0;
        probe(false);
        EXPECT_EQ(evaluations, 0) << level;
    }
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Checks, EachFormReportsFileLineAndText)
{
    MACH__checking_level = 1;
    evaluations = 0;
    probe(true);
    EXPECT_EQ(evaluations, 3);
    EXPECT_EQ(qxsys_report_count(), 0);

    probe(false); // the host returns: every check reports in turn
    ASSERT_EQ(qxsys_report_count(), 3);
    const qxsys_report &a = *qxsys_report_back(2), &c = *qxsys_report_back(1),
                       &r = *qxsys_report_back(0);
    EXPECT_EQ(a.kind, QXSYS_INTERNAL);
    EXPECT_STREQ(a.file, "check_probe");
    EXPECT_EQ(a.line, assert_line);
    EXPECT_STREQ(a.text, "Assertion failed: condition");
    EXPECT_EQ(c.kind, QXSYS_INTERNAL);
    EXPECT_EQ(c.line, check_line);
    EXPECT_STREQ(c.text, "Too Many Points To Remove 7");
    EXPECT_EQ(r.kind, QXSYS_RAISE);
    EXPECT_EQ(r.line, raise_line);
    EXPECT_EQ(r.code, 1005337);
    EXPECT_STREQ(r.text, "Invalid Point Position Given");

    // The host unwinds: the first failed check ends the call.
    const auto err = qxsys::first_error([] { probe(false); });
    ASSERT_TRUE(err.has_value());
    EXPECT_EQ(err->line, assert_line);
    EXPECT_EQ(qxsys_report_count(), 4);
}

TEST_F(Checks, LevelIsReadAtEveryCheck)
{
    // A handler that switches checking off after the first report: the
    // later checks of the same call see the new level.
    qxsys_set_handler([](const qxsys_report *, void *) { MACH__checking_level = 0; }, nullptr,
                      nullptr);
    MACH__checking_level = 1;
    probe(false);
    EXPECT_EQ(qxsys_report_count(), 1);
}

} // namespace
