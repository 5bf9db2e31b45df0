// Matrices built without checks, and the repair of nearly axis-aligned
// matrices with its notes (the new value is named after "from").
#include <array>
#include <cmath>
#include <cstring>
#include <random>
#include <string>

#include <Eigen/Dense>

#include "support/qx_test.h"

namespace
{

using M9 = std::array<double, 9>;
using Mat = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using qxtest::kNaN;

class Mtx3Privileged : public qxtest::QxTest
{
};

std::string note_text(int element, double now, double before)
{
    char text[128];
    std::snprintf(text, sizeof text, "Element %d of matrix modified from %25.15f to %25.15f",
                  element, now, before);
    return text;
}

TEST_F(Mtx3Privileged, InitNoCheckTakesRowsAsGiven)
{
    MACH__checking_level = 1;
    const double x[3] = {2, 0, 0}, y[3] = {1, 1, kNaN};
    M9 m;
    m.fill(-7);
    EXPECT_EQ(MTX3_init_no_check(x, y, m.data()), m.data());
    EXPECT_EQ(m[0], 2);
    EXPECT_EQ(m[4], 1);
    EXPECT_TRUE(std::isnan(m[5]) && std::isnan(m[6]) && std::isnan(m[7]));
    EXPECT_EQ(m[8], 2); // 2 x 1 - 1 x 0
    EXPECT_EQ(qxsys_report_count(), 0);

    // The rows may be read from M itself.
    M9 in_place{1, 2, 3, 4, 5, 6, 0, 0, 0};
    MTX3_init_no_check(in_place.data() + 3, in_place.data(), in_place.data());
    EXPECT_EQ(in_place, (M9{4, 5, 6, 1, 2, 3, 3, -6, 3}));
}

TEST_F(Mtx3Privileged, FixupSnapsAndNotesWhatMovedMoreThanOneEMinus10)
{
    M9 m{1 + 1e-11, 1e-12, 0, 0, 1, 0, 5, 5, 5};
    EXPECT_EQ(MTX3_fixup(m.data()), 1);
    EXPECT_EQ(m, (M9{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    EXPECT_EQ(qxsys_report_count(), 0);

    // Notes of moved elements are written at any checking level; the new
    // value follows "from".
    m = M9{1, 0, 0, 0, 2, 0, 0, 0, 0};
    EXPECT_EQ(MTX3_fixup(m.data()), 1);
    EXPECT_EQ(m, (M9{1, 0, 0, 0, 1, 0, 0, 0, 1}));
    ASSERT_EQ(qxsys_report_count(), 1);
    EXPECT_EQ(last_report().kind, QXSYS_NOTE);
    EXPECT_STREQ(last_report().file, "mtx3_privileged");
    EXPECT_STREQ(last_report().text, "Element 4 of matrix modified from         1.000000000000000 "
                                     "to         2.000000000000000");

    // Only the element itself is snapped: 1e-5 stays in the X row until the
    // row is unitized.
    qxsys_clear_reports();
    m = M9{1 - 5e-11, 1e-5, 0, -1e-5, 1, 0, 0, 0, 1};
    EXPECT_EQ(MTX3_fixup(m.data()), 1);
    const double n = std::sqrt(1 + 1e-10);
    EXPECT_NEAR(m[0], 1 / n, 1e-16);
    EXPECT_NEAR(m[1], 1e-5 / n, 1e-16);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Mtx3Privileged, FixupOfANullRowFailsWithANoteOnlyWhenChecking)
{
    for (int level : {0, 1}) {
        MACH__checking_level = level;
        qxsys_clear_reports();
        M9 m{1e-11, 0, 0, 0, 1, 0, 3, 3, 3};
        EXPECT_EQ(MTX3_fixup(m.data()), 0);
        EXPECT_EQ(m, (M9{0, 0, 0, 0, 1, 0, 3, 3, 3})); // Y and Z untouched
        ASSERT_EQ(qxsys_report_count(), level);
        if (level == 1) {
            EXPECT_EQ(last_report().kind, QXSYS_NOTE);
            EXPECT_STREQ(last_report().file, "mtx3_privileged");
            EXPECT_STREQ(last_report().text, "X vector of matrix is zero");
        }

        // A null Y: its note comes before those of the moved elements.
        qxsys_clear_reports();
        m = M9{0, 0, -3, 0, 0, 1e-11, 7, 7, 7};
        EXPECT_EQ(MTX3_fixup(m.data()), 0);
        EXPECT_EQ(m, (M9{0, 0, -1, 0, 0, 0, 7, 7, 7}));
        ASSERT_EQ(qxsys_report_count(), level + 1);
        EXPECT_STREQ(last_report().text, note_text(2, -1, -3).c_str());
        if (level == 1) {
            EXPECT_STREQ(qxsys_report_back(1)->text, "Y vector of matrix is zero");
        }
    }
}

TEST_F(Mtx3Privileged, FixupOfPerturbedRotationsIsOrthoNormal)
{
    std::mt19937_64 rng(7);
    std::uniform_real_distribution<> u(-1, 1);
    for (int k = 0; k < 300; ++k) {
        const Eigen::Vector3d axis(u(rng), u(rng), u(rng));
        M9 m;
        Mat::Map(m.data()) = Eigen::AngleAxisd(3 * u(rng), axis.normalized()).toRotationMatrix();
        for (double &e : m) e += 1e-7 * u(rng);
        const M9 before = m;
        qxsys_clear_reports();
        ASSERT_EQ(MTX3_fixup(m.data()), 1);
        const Mat r = Mat::Map(m.data());
        EXPECT_LE((r * r.transpose() - Mat::Identity()).cwiseAbs().maxCoeff(), 1e-15);
        EXPECT_NEAR(r.determinant(), 1, 1e-15);
        EXPECT_LE((r.row(0) - Mat::Map(before.data()).row(0).normalized()).norm(), 1e-15);
        // One note per X or Y element moved by more than 1e-10, in order.
        int expected = 0;
        for (int i = 0; i < 6; ++i) expected += std::fabs(m[i] - before[i]) > 1e-10;
        ASSERT_EQ(qxsys_report_count(), expected);
        for (int i = 5, back = 0; i >= 0; --i)
            if (std::fabs(m[i] - before[i]) > 1e-10) {
                EXPECT_STREQ(qxsys_report_back(back++)->text,
                             note_text(i, m[i], before[i]).c_str());
            }
    }
}

} // namespace
