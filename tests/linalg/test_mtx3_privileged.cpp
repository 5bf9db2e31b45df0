// Matrices built without checks, and the repair of nearly axis-aligned
// matrices with its notes (the new value is named after "from").
#include <array>
#include <cmath>
#include <cstdio>
#include <random>
#include <string>

#include <Eigen/Geometry>

#include "support/qx_test.h"

namespace
{

using M9 = std::array<double, 9>;
using Mat = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using qxtest::kNaN;

const M9 kIdentity{1, 0, 0, 0, 1, 0, 0, 0, 1};

class Mtx3Privileged : public qxtest::QxTest
{
};

std::string note_text(int element, double now, double before)
{
    char text[128];
    std::snprintf(text, sizeof text, "Element %d of matrix modified from %25.15f to %25.15f",
                  element, now, before);
    return std::string(text) + "|";
}

// The texts of the reports since the last clear, oldest first, each ended by "|".
std::string texts()
{
    std::string all;
    for (long i = qxsys_report_count(); i-- > 0;)
        all += qxsys_report_back(int(i))->text + std::string("|");
    return all;
}

TEST_F(Mtx3Privileged, InitNoCheckTakesRowsAsGiven)
{
    MACH__checking_level = 1;
    M9 m{1, 2, 3, 4, 5, 6, -7, -7, -7}; // rows read from M itself, neither unit nor perpendicular
    EXPECT_EQ(MTX3_init_no_check(m.data() + 3, m.data(), m.data()), m.data());
    EXPECT_EQ(m, (M9{4, 5, 6, 1, 2, 3, 3, -6, 3}));
    const double x[3] = {2, 0, 0}, y[3] = {1, 1, kNaN};
    MTX3_init_no_check(x, y, m.data());
    EXPECT_TRUE(std::isnan(m[5]) && std::isnan(m[6]) && std::isnan(m[7]) && m[8] == 2);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Mtx3Privileged, FixupSnapsRederivesAndNotes)
{
    for (int level : {0, 1}) {
        MACH__checking_level = level;
        qxsys_clear_reports();
        // Within 1e-10 of 0 or +-1: snapped, Z re-derived, no note.
        M9 m{1 + 1e-11, 1e-12, 0, 0, 1, 0, 5, 5, 5};
        EXPECT_EQ(MTX3_fixup(m.data()), 1);
        EXPECT_EQ(m, kIdentity);
        // Only the element itself is snapped: 1e-5 stays until X is unitized.
        m = M9{1 - 5e-11, 1e-5, 0, -1e-5, 1, 0, 0, 0, 1};
        EXPECT_EQ(MTX3_fixup(m.data()), 1);
        EXPECT_NEAR(m[0], 1 / std::sqrt(1 + 1e-10), 1e-16);
        EXPECT_NEAR(m[1], 1e-5 / std::sqrt(1 + 1e-10), 1e-16);
        EXPECT_EQ(qxsys_report_count(), 0);

        // Elements moved by more than 1e-10 are noted at any level.
        m = M9{1, 0, 0, 0, 2, 0, 0, 0, 0};
        EXPECT_EQ(MTX3_fixup(m.data()), 1);
        EXPECT_EQ(m, kIdentity);
        EXPECT_EQ(texts(), "Element 4 of matrix modified from         1.000000000000000 to "
                           "        2.000000000000000|");
        EXPECT_EQ(last_report().kind, QXSYS_NOTE);
        EXPECT_STREQ(last_report().file, "mtx3_privileged");

        // A null row: 0, that row zeroed, the rest untouched; noted only
        // when checking, before the moved elements.
        qxsys_clear_reports();
        m = M9{1e-11, 0, 0, 0, 1, 0, 3, 3, 3};
        EXPECT_EQ(MTX3_fixup(m.data()), 0);
        EXPECT_EQ(m, (M9{0, 0, 0, 0, 1, 0, 3, 3, 3}));
        EXPECT_EQ(texts(), level ? "X vector of matrix is zero|" : "");
        qxsys_clear_reports();
        m = M9{0, 0, -3, 0, 0, 1e-11, 7, 7, 7};
        EXPECT_EQ(MTX3_fixup(m.data()), 0);
        EXPECT_EQ(m, (M9{0, 0, -1, 0, 0, 0, 7, 7, 7}));
        EXPECT_EQ(texts(), (level ? "Y vector of matrix is zero|" : "") + note_text(2, -1, -3));
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
        std::string notes;
        for (int i = 0; i < 6; ++i)
            if (std::fabs(m[i] - before[i]) > 1e-10) notes += note_text(i, m[i], before[i]);
        EXPECT_EQ(texts(), notes);
    }
}

} // namespace
