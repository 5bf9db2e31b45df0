// h964_ against Eigen, silent at checking level 0, exact notes/dumps/reports at 1.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

#include <Eigen/Geometry>

#include "linalg/h964_internal.h"
#include "support/qx_test.h"

namespace
{

using M9 = std::array<double, 9>;
using T13 = std::array<double, 13>;
using Mat = Eigen::Matrix<double, 3, 3, Eigen::RowMajor>;
using qxtest::kNaN;
constexpr double kEps = std::numeric_limits<double>::epsilon();
using H964 = qxtest::QxTest;
const M9 kId{1, 0, 0, 0, 1, 0, 0, 0, 1};

T13 transform(const Mat &a, double scale)
{
    T13 t{0, 0, 0, 0, 0, 0, 0, 0, 0, kNaN, kNaN, kNaN, scale}; // 9 to 11 never read
    Eigen::Map<Mat>(t.data()) = a;
    return t;
}
// Reports since the last clear, oldest first: "<kind>:<file>:<text>|".
std::string reports()
{
    std::string all;
    for (long i = qxsys_report_count(); i-- > 0;) {
        const qxsys_report *r = qxsys_report_back(int(i));
        all += std::to_string(int(r->kind)) + ":" + r->file + ":" + r->text + "|";
    }
    return all;
}
std::string log(const std::string &text) { return "4::" + text + "|"; }
std::string note(const std::string &text) { return "3:h964:" + text + "|"; }
std::string line3(double a, double b, double c)
{
    char s[128];
    std::snprintf(s, sizeof s, "       % 14.12e % 14.12e % 14.12e\n", a, b, c);
    return s;
}
// The expected dump of m: one line per column.
std::string dump(const char *caption, const double *m)
{
    return log(caption + ("\n" + line3(m[0], m[3], m[6]) + line3(m[1], m[4], m[7]) +
                          line3(m[2], m[5], m[8])));
}
M9 run(const M9 &k, const T13 &t, int level)
{
    MACH__checking_level = level;
    qxsys_clear_reports();
    M9 m{kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN, kNaN};
    h964_(k.data(), t.data(), m.data());
    return m;
}

TEST_F(H964, RotationsAndScalesAgreeWithEigenSilently)
{
    std::srand(964); // Eigen's UnitRandom draws from std::rand
    for (int i = 0; i < 200; ++i) {
        const Mat k = Eigen::Quaterniond::UnitRandom().toRotationMatrix();
        const Mat r = Eigen::Quaterniond::UnitRandom().toRotationMatrix();
        // Uniform scales of either sign; the sign reaches the transformed X and Y.
        const double c = i % 3 == 0 ? 1.0 : (i % 2 ? 2.0 : -0.5);
        const Mat want = k * r.transpose() * (c < 0 ? -1.0 : 1.0);
        const T13 t = transform(c * r, c);
        M9 kk, m;
        Eigen::Map<Mat>(kk.data()) = k;
        for (int level : {0, 1}) {
            Mat got = Eigen::Map<const Mat>((m = run(kk, t, level)).data());
            if (c < 0) got.row(2) *= -1.0; // Z re-derived as X x Y
            EXPECT_LE((got - want).cwiseAbs().maxCoeff(), 16 * kEps) << i;
            EXPECT_EQ(reports(), "") << i;
        }
        h964_(kk.data(), t.data(), kk.data()); // M may be K itself
        EXPECT_EQ(kk, m);
    }
}

TEST_F(H964, MirrorAndParallelAxesNoteAndDumpOnlyWhenChecking)
{
    // A mirror: M right-handed; the older method refuses its left-handed result.
    EXPECT_EQ(run(kId, transform(Eigen::Vector3d(1, 1, -1).asDiagonal().toDenseMatrix(), 1), 1),
              kId);
    EXPECT_EQ(reports(), log("Old method of FTN(h964) () returning a left-handed matrix\n") +
                             note("Old method of FTN(h964) () failed to produce a matrix"));
    // X and Y both carried to (1, 0, 0): P = K.T^T is repaired; silent at level 0.
    const T13 t = transform((Mat() << 1, 1, 0, 0, 0, 0, 0, 0, 1).finished(), 1);
    M9 p{1, 0, 0, 1, 0, 0, 0, 0, 1};
    MTX3_ortho_normalize(p.data());
    EXPECT_EQ(run(kId, t, 0), p);
    EXPECT_EQ(reports(), "");
    EXPECT_EQ(run(kId, t, 1), p);
    EXPECT_EQ(line3(1, 0, 0),
              "        1.000000000000e+00  0.000000000000e+00  0.000000000000e+00\n");
    EXPECT_EQ(reports(), note("First attempt in FTN(h964) () failed to produce a matrix") +
                             dump("transformation matrix", t.data()) +
                             dump("orginal csys matrix", kId.data()) +
                             log("X axis\n" + line3(1, 0, 0)) + log("Y axis\n" + line3(1, 0, 0)) +
                             dump("h964 output", p.data()));
}

TEST_F(H964, CrossCheckReportsADisagreementExactly)
{
    // Both methods carry the same transformed axes, so h964_ cannot be made to
    // disagree with finite input: the comparison step is driven directly.
    const M9 k{0, 1, 0, -1, 0, 0, 0, 0, 1}, t{1, 2, 3, 4, 5, 6, 7, 8, 9};
    const M9 v14{1, 0, 0, 0, -1, 0, 0, 0, -1}, &v15 = kId, skew{1, 0, 0, 0, 2, 0, 0, 0, 1};
    const M9 near{1, 0, 0, 0, 1, 0, 0, 0, 1 - 1e-15}; // within 1e-8 and still ortho-normal
    MACH__checking_level = 1;
    qxsys_clear_reports();
    qx_h964_cross_check(k.data(), t.data(), -2.5, near.data(), v15.data());
    qx_h964_cross_check(k.data(), t.data(), -2.5, skew.data(), v15.data());
    EXPECT_EQ(reports(), "");
    qx_h964_cross_check(k.data(), t.data(), -2.5, v14.data(), v15.data());
    EXPECT_EQ(reports(),
              dump("transformation matrix", t.data()) + dump("orginal csys matrix", k.data()) +
                  log("transformation scale factor = -2.500000000000e+00\n") +
                  dump("V14 output result", v14.data()) + dump("V15 output result", v15.data()) +
                  "1:h964:V14 version of FTN(h964) () produced different result "
                  "than V15 version.|");
}

} // namespace
