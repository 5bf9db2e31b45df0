// Session block layout, sys10_, WCS accessors and mapping, display colour,
// grid counts, mode flags, the display buffer and the reports they make.
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "support/qx_test.h"

namespace
{

using qxtest::QxTest;

unsigned char *block() { return reinterpret_cast<unsigned char *>(&acom_); }

// Expected image of acom_, written by byte position independently of the
// struct's field names.
struct Image {
    std::vector<unsigned char> bytes;
    explicit Image(unsigned char fill) : bytes(QX_ACOM_SIZE, fill) {}
    void zero(size_t pos, size_t n) { std::memset(&bytes[pos], 0, n); }
    void doubles(size_t pos, size_t n, double v)
    {
        for (size_t k = 0; k < n; ++k) std::memcpy(&bytes[pos + 8 * k], &v, 8);
    }
    void ints(size_t pos, size_t n, int v)
    {
        for (size_t k = 0; k < n; ++k) std::memcpy(&bytes[pos + 4 * k], &v, 4);
    }
    void gca(int first, int last, int v)
    {
        ints(4780 + 4 * size_t(first), size_t(last - first + 1), v);
    }
};

Image after_sys10(int mode)
{
    Image e(0x5A);
    e.zero(320, 96);
    e.doubles(416, 27, -939.0);
    e.doubles(1368, 9, -939.0);
    e.doubles(1040, 1, -939.0);
    e.doubles(1248, 15, -939.0);
    e.doubles(1048, 25, -939.0);
    e.doubles(1032, 1, 0.0);
    for (size_t pos : {4344, 4348, 4356, 4360}) e.ints(pos, 1, -939);
    e.gca(51, 51, -939);
    e.ints(2032, 514, 0);
    if (mode != 1) {
        e.ints(4352, 1, -939);
        e.ints(4088, 43, -939);
        e.ints(4364, 105, -939);
        e.doubles(632, 50, -939.0);
        e.gca(2, 8, 0);
        e.gca(10, 22, 0);
        e.gca(26, 26, 0);
        e.gca(28, 28, 0);
        e.gca(30, 50, 0);
    }
    e.gca(24, 24, 6);
    return e;
}

class Session : public QxTest
{
};

TEST_F(Session, Sys10WritesExactlyItsRegions)
{
    for (int mode : {0, 1, 2, -1}) {
        std::memset(&acom_, 0x5A, sizeof acom_);
        sys10_(&mode);
        const Image expected = after_sys10(mode);
        for (size_t pos = 0; pos < QX_ACOM_SIZE; ++pos)
            ASSERT_EQ(block()[pos], expected.bytes[pos]) << "mode " << mode << ", byte " << pos;
    }
}

TEST_F(Session, Mode1KeepsColourFlagsAndModes)
{
    DISPLAY_set_system_color(4);
    WCS_set_linked_to_view(0);
    acom_.gca[73] = 2;
    const int counts[2] = {3, 5};
    PX_set_default_face_grid_counts(counts);
    acom_.model_scale = 1.0;
    const int mode = 1;
    sys10_(&mode);
    EXPECT_EQ(ACOM_ask_MEC(), -939.0);
    EXPECT_EQ(ACOM_ask_MESW(), -939);
    EXPECT_EQ(DISPLAY_ask_system_color(), 4);
    EXPECT_FALSE(WCS_is_linked_to_view());
    EXPECT_TRUE(VELD_in_batch());
    int got[2] = {-1, -1};
    PX_ask_default_face_grid_counts(got);
    EXPECT_EQ(got[0], 3);
    EXPECT_EQ(got[1], 5);
}

TEST_F(Session, WcsAccessorsAndMapping)
{
    // A rotation about (1, 1, 1) by 120 degrees permutes the axes; use a
    // general one instead so that no component is trivially 0 or 1.
    const double c = std::cos(0.7), s = std::sin(0.7), c2 = std::cos(-0.3), s2 = std::sin(-0.3);
    const double m[9] = {c * c2, s * c2, -s2, -s, c, 0.0, c * s2, s * s2, c2};
    const double o[3] = {10.0, -20.0, 30.5};
    WCS__set_matrix_values(m);
    std::memcpy(acom_.wcs_origin, o, sizeof o);

    double got[12];
    std::fill(std::begin(got), std::end(got), qxtest::kNaN);
    WCS_ask_coordinate_system(got);
    EXPECT_EQ(0, std::memcmp(got, o, sizeof o));
    EXPECT_EQ(0, std::memcmp(got + 3, m, sizeof m));
    double plane[6];
    WCS_ask_work_plane(plane);
    EXPECT_EQ(0, std::memcmp(plane, o, sizeof o));
    EXPECT_EQ(0, std::memcmp(plane + 3, m + 6, 3 * sizeof(double)));
    double z[3], mat[9], org[3];
    WCS_ask_z_axis(z);
    EXPECT_EQ(0, std::memcmp(z, m + 6, sizeof z));
    v6051_(mat, org); // matrix first
    EXPECT_EQ(0, std::memcmp(mat, m, sizeof m));
    EXPECT_EQ(0, std::memcmp(org, o, sizeof o));

    // Absolute to WCS: components are the dot products with the rows.
    const double p[3] = {1.5, -2.25, 4.0};
    double w[3];
    mappaw_(p, w);
    for (int i = 0; i < 3; ++i) {
        const double d[3] = {p[0] - o[0], p[1] - o[1], p[2] - o[2]};
        EXPECT_NEAR(w[i], m[3 * i] * d[0] + m[3 * i + 1] * d[1] + m[3 * i + 2] * d[2], 1e-13);
    }
    double back[3];
    mappwa_(w, back);
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(back[i], p[i], 64 * 1e-16 * 40.0);
    // Vectors ignore the origin; in place gives the same bits as out of place.
    double v[3] = {p[0], p[1], p[2]}, vo[3];
    mapvaw_(v, vo);
    mapvaw_(v, v);
    EXPECT_EQ(0, std::memcmp(v, vo, sizeof v));
    mapvwa_(v, vo);
    mapvwa_(v, v);
    EXPECT_EQ(0, std::memcmp(v, vo, sizeof v));
    for (int i = 0; i < 3; ++i) EXPECT_NEAR(v[i], p[i], 1e-15 * 8);
    double q[3] = {p[0], p[1], p[2]};
    mappaw_(q, q);
    EXPECT_EQ(0, std::memcmp(q, w, sizeof q));
    mappwa_(q, q);
    EXPECT_EQ(0, std::memcmp(q, back, sizeof q));
}

TEST_F(Session, FlagsAndWords)
{
    WCS_set_tag(17);
    WCS__set_matrix_tag(23);
    acom_.gca[40] = 400, acom_.gca[41] = 410, acom_.gca[42] = 420;
    EXPECT_EQ(WCS_ask_tag(), 17);
    EXPECT_EQ(WCS_ask_matrix_tag(), 23);
    EXPECT_EQ(acom_.gca[50], 17);
    EXPECT_EQ(acom_.gca[45], 23);
    EXPECT_EQ(WCS_ask_grid_skeleton(), 400);
    EXPECT_EQ(WCS_ask_view_names_skeleton(), 410);
    EXPECT_EQ(WCS_ask_skeleton(), 420);

    WCS_set_linked_to_view(1);
    EXPECT_EQ(acom_.gca[47], 0);
    EXPECT_TRUE(WCS_is_linked_to_view());
    WCS_set_linked_to_view(5);
    EXPECT_EQ(acom_.gca[47], 0);
    WCS_set_linked_to_view(0);
    EXPECT_EQ(acom_.gca[47], 1);
    EXPECT_FALSE(WCS_is_linked_to_view());

    acom_.gca[48] = 2;
    EXPECT_FALSE(WCS_is_permanent());
    acom_.gca[48] = 1;
    EXPECT_TRUE(WCS_is_permanent());

    WCS_set_wcs_display(1); // the display word answers "temporary" too
    EXPECT_TRUE(WCS_is_temporary());
    int display = -1;
    WCS_ask_wcs_display(&display);
    EXPECT_EQ(display, 1);
    WCS_set_wcs_display(0);
    EXPECT_FALSE(WCS_is_temporary());

    DSS_DF_set_enabled(0);
    EXPECT_FALSE(DSS_DF_is_enabled());
    EXPECT_EQ(acom_.dss_df, 2);
    DSS_DF_set_enabled(9);
    EXPECT_TRUE(DSS_DF_is_enabled());
    EXPECT_EQ(acom_.dss_df, 1);

    acom_.gca[73] = 1;
    EXPECT_FALSE(VELD_in_batch());
    acom_.gca[73] = 2;
    EXPECT_TRUE(VELD_in_batch());
    acom_.gca[30] = 2;
    EXPECT_FALSE(inveld_());
    acom_.gca[30] = 1;
    EXPECT_TRUE(inveld_());

    acom_.model_scale = 25.4;
    acom_.gca[51] = -12;
    EXPECT_EQ(ACOM_ask_MEC(), 25.4);
    EXPECT_EQ(ACOM_ask_MESW(), -12);
    const int word = 4242;
    cu0008_(&word);
    int read = 0;
    cu0007_(&read);
    EXPECT_EQ(read, 4242);
    EXPECT_EQ(acom_.gca[9], 4242);

    pxsfac_.value[0] = 1.25;
    pxsfac_.value[1] = 2.5;
    double first = 0, second = 0;
    pxsfac_read_psqx_(&first, &second); // crossed on purpose
    EXPECT_EQ(first, 2.5);
    EXPECT_EQ(second, 1.25);

    std::memset(&acom_, 0x77, sizeof acom_);
    b120a_();
    for (size_t pos = 4250; pos < 4350; ++pos)
        EXPECT_EQ(block()[pos], (pos >= 4260 && pos < 4340) ? 0 : 0x77) << pos;
}

struct Notified {
    int calls = 0;
    int reason = 0;
    int value = 0;
};

void on_display(int reason, void *data, void *user)
{
    auto *n = static_cast<Notified *>(user);
    ++n->calls;
    n->reason = reason;
    n->value = *static_cast<const int *>(data);
}

TEST_F(Session, WcsDisplayNotifiesAndChecks)
{
    qxsys_set_reason_number(2, 4711);
    Notified n;
    ASSERT_GT(qxsys_callback_register(4711, on_display, &n), 0);
    WCS_set_wcs_display(1);
    EXPECT_EQ(n.calls, 1);
    EXPECT_EQ(n.reason, 4711);
    EXPECT_EQ(n.value, 1);

    // Level 0: a bad value is neither checked nor reported.
    WCS_set_wcs_display(3);
    EXPECT_EQ(qxsys_report_count(), 0);
    EXPECT_EQ(acom_.gca[49], 3);
    EXPECT_EQ(n.calls, 2);

    // Level 1, host unwinds: the report stops the call before the store.
    MACH__checking_level = 1;
    WCS_set_wcs_display(0);
    const auto err = qxsys::first_error([] { WCS_set_wcs_display(5); });
    ASSERT_TRUE(err.has_value());
    EXPECT_EQ(err->kind, QXSYS_INTERNAL);
    EXPECT_STREQ(err->file, "libqxmath_main");
    EXPECT_STREQ(err->text, "Assertion failed: condition");
    EXPECT_GT(err->line, 0);
    EXPECT_EQ(acom_.gca[49], 0);
    EXPECT_EQ(n.calls, 3);

    // Level 1, host returns: the call carries on as with checking off.
    WCS_set_wcs_display(-2);
    EXPECT_EQ(qxsys_report_count(), 2);
    EXPECT_EQ(acom_.gca[49], -2);
    EXPECT_EQ(n.calls, 4);
    EXPECT_EQ(n.value, -2);
}

extern "C" int qx_c_set_display_trapped(int value, qxsys_report *caught);

TEST_F(Session, CHostUnwindsByLongjmp)
{
    qxsys_report caught{};
    EXPECT_EQ(qx_c_set_display_trapped(1, &caught), 0);
    EXPECT_EQ(acom_.gca[49], 1);
    EXPECT_EQ(qx_c_set_display_trapped(9, &caught), 1);
    EXPECT_STREQ(caught.file, "libqxmath_main");
    EXPECT_STREQ(caught.text, "Assertion failed: condition");
    EXPECT_EQ(acom_.gca[49], 1);
    EXPECT_EQ(qxsys_current_trap(), nullptr);
    EXPECT_EQ(qx_c_set_display_trapped(0, &caught), 0);
    EXPECT_EQ(acom_.gca[49], 0);
}

TEST_F(Session, DisplayColourChecksAtAnyNonZeroLevel)
{
    for (int level : {1, -1}) {
        MACH__checking_level = level;
        qxsys_clear_reports();
        DISPLAY_set_system_color(0);
        EXPECT_EQ(acom_.gca[6], 0); // stored anyway
        EXPECT_STREQ(last_report().text, "Assertion failed: color >= DISPLAY_MIN_COLOR");
        EXPECT_STREQ(last_report().file, "libqxmath_main");
        EXPECT_EQ(DISPLAY_ask_system_color(), 0); // returned anyway
        EXPECT_STREQ(last_report().text, "Assertion failed: GCA(6) >= DISPLAY_MIN_COLOR");
        DISPLAY_set_system_color(16);
        EXPECT_STREQ(last_report().text, "Assertion failed: color <= DISPLAY_MAX_COLOR");
        EXPECT_EQ(DISPLAY_ask_system_color(), 16);
        EXPECT_STREQ(last_report().text, "Assertion failed: GCA(6) <= DISPLAY_MAX_COLOR");
        EXPECT_EQ(qxsys_report_count(), 4);
        DISPLAY_set_system_color(15);
        DISPLAY_set_system_color(1);
        EXPECT_EQ(DISPLAY_ask_system_color(), 1);
        EXPECT_EQ(qxsys_report_count(), 4);
    }
    MACH__checking_level = 0;
    qxsys_clear_reports();
    DISPLAY_set_system_color(99);
    EXPECT_EQ(DISPLAY_ask_system_color(), 99);
    EXPECT_EQ(qxsys_report_count(), 0);
}

TEST_F(Session, GridCountsCheckOnlyAbovePositiveLevel)
{
    MACH__checking_level = 1;
    const int bad[2] = {-1, -2};
    PX_set_default_face_grid_counts(bad);
    ASSERT_EQ(qxsys_report_count(), 2);
    EXPECT_STREQ(qxsys_report_back(1)->text, "Assertion failed: u_and_v_grid_counts[0] >= 0");
    EXPECT_STREQ(qxsys_report_back(0)->text, "Assertion failed: u_and_v_grid_counts[1] >= 0");
    EXPECT_EQ(acom_.gca[17], -1);
    EXPECT_EQ(acom_.gca[18], -2);
    int got[2] = {0, 0};
    PX_ask_default_face_grid_counts(got);
    ASSERT_EQ(qxsys_report_count(), 4);
    EXPECT_STREQ(qxsys_report_back(1)->text, "Assertion failed: GCA(17) >= 0");
    EXPECT_STREQ(qxsys_report_back(0)->text, "Assertion failed: GCA(18) >= 0");
    EXPECT_EQ(got[0], -1);
    EXPECT_EQ(got[1], -2);

    // A negative level is "off" for the ordinary checks.
    MACH__checking_level = -1;
    PX_set_default_face_grid_counts(bad);
    PX_ask_default_face_grid_counts(got);
    EXPECT_EQ(qxsys_report_count(), 4);
}

int display_calls = 0;
std::vector<int> displayed;
void display_fn()
{
    ++display_calls;
    displayed.assign(acom_.display_items, acom_.display_items + acom_.display_count);
}
void other_fn() {}

TEST_F(Session, DisplayBuffer)
{
    display_calls = 0;
    EXPECT_EQ(MCS_register_display_fn(display_fn), nullptr);
    for (int id = 1; id <= 512; ++id) d7391_(&id);
    EXPECT_EQ(display_calls, 0);
    EXPECT_EQ(acom_.display_count, 512);
    const int id513 = 513;
    d7391_(&id513); // the full buffer is flushed first
    EXPECT_EQ(display_calls, 1);
    ASSERT_EQ(displayed.size(), 512u);
    EXPECT_EQ(displayed.front(), 1);
    EXPECT_EQ(displayed.back(), 512);
    EXPECT_EQ(acom_.display_count, 1);
    EXPECT_EQ(acom_.display_items[0], 513);

    d7392_();
    EXPECT_EQ(display_calls, 2);
    EXPECT_EQ(acom_.display_count, 0);
    d7392_(); // nothing held: no call
    EXPECT_EQ(display_calls, 2);

    for (int id : {7, 3, 7, 4, 7, 5}) d7391_(&id);
    const int seven = 7;
    a406_(&seven);
    ASSERT_EQ(acom_.display_count, 3);
    EXPECT_EQ(acom_.display_items[0], 3);
    EXPECT_EQ(acom_.display_items[1], 4);
    EXPECT_EQ(acom_.display_items[2], 5);
    a406_(&acom_.display_items[1]); // the id may live in the buffer itself
    ASSERT_EQ(acom_.display_count, 2);
    EXPECT_EQ(acom_.display_items[1], 5);

    d7390_();
    EXPECT_EQ(acom_.display_count, 0);
    EXPECT_EQ(MCS_register_display_fn(other_fn), display_fn);
    EXPECT_EQ(MCS_register_display_fn(nullptr), other_fn);
    d7391_(&seven);
    d7392_(); // no display function: emptied all the same
    EXPECT_EQ(acom_.display_count, 0);
    EXPECT_EQ(display_calls, 2);

    // A count the host corrupted stays inside the block.
    acom_.display_count = -40;
    d7391_(&seven);
    EXPECT_EQ(acom_.display_count, 1);
    acom_.display_count = 100000;
    a406_(&seven);
    EXPECT_LE(acom_.display_count, 512);
}

} // namespace
