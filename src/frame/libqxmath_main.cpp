// libqxmath_main.cpp — the session state: the exported blocks acom_, pxsfac_,
// spint_ and srfc1_, session initialisation (sys10_) and tolerance set-up
// (sys21_, sys22_), and the accessors of the WCS, display colour, grid counts,
// run modes and display buffer. Everything is process-wide and lock-free;
// the host drives it from one thread.
#define QX_SOURCE_FILE "libqxmath_main"

#include <cstddef>
#include <cstring>

#include <qxmath/frame.h>
#include <qxmath/session.h>

#include "frame/check.h"
#include "frame/session_block.h"

// Zero at load, as the host expects of every block.
qx_acom acom_;
qx_pxsfac pxsfac_;
qx_spint spint_;
qx_srfc1 srfc1_;

// The byte positions are an interface: the host and the numbered routines
// address the block by position.
static_assert(offsetof(qx_acom, cleared_320) == 320);
static_assert(offsetof(qx_acom, d416) == 416);
static_assert(offsetof(qx_acom, d632) == 632);
static_assert(offsetof(qx_acom, d1032) == 1032);
static_assert(offsetof(qx_acom, model_scale) == 1040);
static_assert(offsetof(qx_acom, d1048) == 1048);
static_assert(offsetof(qx_acom, tolerance) == 1120);
static_assert(offsetof(qx_acom, tolerance) + 7 * sizeof(double) == 1176);
static_assert(offsetof(qx_acom, d1184) + sizeof(acom_.d1184) == 1248);
static_assert(offsetof(qx_acom, d1248) == 1248);
static_assert(offsetof(qx_acom, d1368) == 1368);
static_assert(offsetof(qx_acom, wcs_matrix) == 1440);
static_assert(offsetof(qx_acom, wcs_origin) == 1512);
static_assert(offsetof(qx_acom, dss_df) == 1696);
static_assert(offsetof(qx_acom, display_count) == 2032);
static_assert(offsetof(qx_acom, i4084) + sizeof(int) == 2032 + 514 * sizeof(int));
static_assert(offsetof(qx_acom, i4088) == 4088);
static_assert(offsetof(qx_acom, cleared_4260) == 4260);
static_assert(offsetof(qx_acom, i4344) == 4344);
static_assert(offsetof(qx_acom, i4352) == 4352);
static_assert(offsetof(qx_acom, i4360) == 4360);
static_assert(offsetof(qx_acom, i4364) == 4364);
static_assert(offsetof(qx_acom, gca) == 4780);
static_assert(offsetof(qx_acom, gca) + 73 * sizeof(int) == 5072);
static_assert(sizeof(qx_acom) == QX_ACOM_SIZE);
static_assert(sizeof(qx_pxsfac) == 2 * sizeof(double));

namespace
{

qx_display_fn display_fn = nullptr;

template <std::size_t N> void fill(double (&a)[N], double v)
{
    for (double &x : a) x = v;
}

template <std::size_t N> void fill(int (&a)[N], int v)
{
    for (int &x : a) x = v;
}

void set_gca_range(int first, int last, int v)
{
    for (int k = first; k <= last; ++k) GCA(k) = v;
}

// The buffer count as a usable index: the host may have written anything
// into the block, and an out-of-range count must not write outside it.
int display_count()
{
    const int n = acom_.display_count;
    if (n < 0) return 0;
    return n > QX_DISPLAY_BUFFER_MAX ? QX_DISPLAY_BUFFER_MAX : n;
}

} // namespace

/* ---- initialisation ---------------------------------------------------- */

void sys10_(const int *mode)
{
    std::memset(acom_.cleared_320, 0, sizeof acom_.cleared_320);
    fill(acom_.d416, QX_UNSET_DOUBLE);
    fill(acom_.d1368, QX_UNSET_DOUBLE);
    acom_.model_scale = QX_UNSET_DOUBLE;
    fill(acom_.d1248, QX_UNSET_DOUBLE);
    // The 25 doubles at 1048, the tolerance table among them.
    fill(acom_.d1048, QX_UNSET_DOUBLE);
    fill(acom_.tolerance, QX_UNSET_DOUBLE);
    fill(acom_.d1184, QX_UNSET_DOUBLE);
    acom_.d1032 = 0.0;
    acom_.i4344 = QX_UNSET_INT;
    acom_.i4348 = QX_UNSET_INT;
    acom_.i4356 = QX_UNSET_INT;
    acom_.i4360 = QX_UNSET_INT;
    GCA(51) = QX_UNSET_INT;
    // 514 words from 2032: the count, the 512 items and one more word.
    acom_.display_count = 0;
    fill(acom_.display_items, 0);
    acom_.i4084 = 0;

    if (*mode != 1) {
        acom_.i4352 = QX_UNSET_INT;
        fill(acom_.i4088, QX_UNSET_INT);
        // The 105 ints at 4364 end with GCA(0).
        fill(acom_.i4364, QX_UNSET_INT);
        GCA(0) = QX_UNSET_INT;
        fill(acom_.d632, QX_UNSET_DOUBLE);
        set_gca_range(2, 8, 0);
        set_gca_range(10, 22, 0);
        GCA(26) = 0;
        GCA(28) = 0;
        set_gca_range(30, 50, 0);
    }
    GCA(24) = 6;
}

void b120a_(void) { std::memset(acom_.cleared_4260, 0, sizeof acom_.cleared_4260); }

/* ---- tolerances -------------------------------------------------------- */

void sys21_(void)
{
    const double number = GCA(31) != 0 ? 1.0e-10 : 1.0e-4;
    const double length = acom_.model_scale * number;
    const double length_squared = length * length;
    acom_.tolerance[0] = number;
    acom_.tolerance[1] = length;
    acom_.tolerance[2] = length_squared;
    acom_.tolerance[7] = length_squared * 1.0e8;
}

void sys22_(const double *value, const int *slot, double *result)
{
    *result = acom_.tolerance[*slot] * *value;
}

/* ---- work coordinate system -------------------------------------------- */

void WCS_ask_origin(double origin[3]) { std::memcpy(origin, acom_.wcs_origin, 3 * sizeof(double)); }

void WCS_ask_matrix(double matrix[9]) { std::memcpy(matrix, acom_.wcs_matrix, 9 * sizeof(double)); }

void WCS_ask_coordinate_system(double csys[12])
{
    std::memcpy(csys, acom_.wcs_origin, 3 * sizeof(double));
    std::memcpy(csys + 3, acom_.wcs_matrix, 9 * sizeof(double));
}

void WCS_ask_z_axis(double z_axis[3])
{
    std::memcpy(z_axis, acom_.wcs_matrix + 6, 3 * sizeof(double));
}

void WCS_ask_work_plane(double plane[6])
{
    std::memcpy(plane, acom_.wcs_origin, 3 * sizeof(double));
    std::memcpy(plane + 3, acom_.wcs_matrix + 6, 3 * sizeof(double));
}

void v6051_(double matrix[9], double origin[3])
{
    WCS_ask_matrix(matrix);
    WCS_ask_origin(origin);
}

void WCS__set_matrix_values(const double matrix[9])
{
    std::memmove(acom_.wcs_matrix, matrix, 9 * sizeof(double));
}

void WCS__set_matrix_tag(int tag) { GCA(45) = tag; }
int WCS_ask_matrix_tag(void) { return GCA(45); }
void WCS_set_tag(int tag) { GCA(50) = tag; }
int WCS_ask_tag(void) { return GCA(50); }
int WCS_ask_grid_skeleton(void) { return GCA(40); }
int WCS_ask_view_names_skeleton(void) { return GCA(41); }
int WCS_ask_skeleton(void) { return GCA(42); }

int WCS_is_linked_to_view(void) { return GCA(47) == 0; }
void WCS_set_linked_to_view(int linked) { GCA(47) = !linked; }
int WCS_is_permanent(void) { return GCA(48) == 1; }
int WCS_is_temporary(void) { return GCA(49) == 1; }
void WCS_ask_wcs_display(int *display) { *display = GCA(49); }

void WCS_set_wcs_display(int display)
{
    QX_ASSERT(display == 0 || display == 1);
    GCA(49) = display;
    const int reason = QX_REASON_ask_reason_number(2);
    CALLBACK_call_list(reason, &display);
}

/* ---- mapping ----------------------------------------------------------- */
// Results go through a local so that out may be the input array.

void mapvaw_(const double *v, double *out)
{
    const double *m = acom_.wcs_matrix;
    const double r0 = m[0] * v[0] + m[1] * v[1] + m[2] * v[2];
    const double r1 = m[3] * v[0] + m[4] * v[1] + m[5] * v[2];
    const double r2 = m[6] * v[0] + m[7] * v[1] + m[8] * v[2];
    out[0] = r0;
    out[1] = r1;
    out[2] = r2;
}

void mapvwa_(const double *v, double *out)
{
    const double *m = acom_.wcs_matrix;
    const double r0 = m[0] * v[0] + m[3] * v[1] + m[6] * v[2];
    const double r1 = m[1] * v[0] + m[4] * v[1] + m[7] * v[2];
    const double r2 = m[2] * v[0] + m[5] * v[1] + m[8] * v[2];
    out[0] = r0;
    out[1] = r1;
    out[2] = r2;
}

void mappaw_(const double *p, double *out)
{
    const double *o = acom_.wcs_origin;
    const double d[3] = {p[0] - o[0], p[1] - o[1], p[2] - o[2]};
    mapvaw_(d, out);
}

void mappwa_(const double *p, double *out)
{
    const double *o = acom_.wcs_origin;
    double r[3];
    mapvwa_(p, r);
    out[0] = r[0] + o[0];
    out[1] = r[1] + o[1];
    out[2] = r[2] + o[2];
}

/* ---- display colour, grid counts, modes --------------------------------- */
// The colour checks test the checking level for non-zero, not for > 0,
// unlike every other check of the library; hosts rely on that.

int DISPLAY_ask_system_color(void)
{
    if (MACH__checking_level != 0) {
        if (!(GCA(6) >= DISPLAY_MIN_COLOR))
            QX_INTERNAL("Assertion failed: GCA(6) >= DISPLAY_MIN_COLOR");
        if (!(GCA(6) <= DISPLAY_MAX_COLOR))
            QX_INTERNAL("Assertion failed: GCA(6) <= DISPLAY_MAX_COLOR");
    }
    return GCA(6);
}

void DISPLAY_set_system_color(int color)
{
    if (MACH__checking_level != 0) {
        if (!(color >= DISPLAY_MIN_COLOR))
            QX_INTERNAL("Assertion failed: color >= DISPLAY_MIN_COLOR");
        if (!(color <= DISPLAY_MAX_COLOR))
            QX_INTERNAL("Assertion failed: color <= DISPLAY_MAX_COLOR");
    }
    GCA(6) = color;
}

void PX_ask_default_face_grid_counts(int u_and_v_grid_counts[2])
{
    QX_CHECK(GCA(17) >= 0, "Assertion failed: GCA(17) >= 0");
    QX_CHECK(GCA(18) >= 0, "Assertion failed: GCA(18) >= 0");
    u_and_v_grid_counts[0] = GCA(17);
    u_and_v_grid_counts[1] = GCA(18);
}

void PX_set_default_face_grid_counts(const int u_and_v_grid_counts[2])
{
    QX_CHECK(u_and_v_grid_counts[0] >= 0, "Assertion failed: u_and_v_grid_counts[0] >= 0");
    QX_CHECK(u_and_v_grid_counts[1] >= 0, "Assertion failed: u_and_v_grid_counts[1] >= 0");
    GCA(17) = u_and_v_grid_counts[0];
    GCA(18) = u_and_v_grid_counts[1];
}

int DSS_DF_is_enabled(void) { return acom_.dss_df == 1; }
void DSS_DF_set_enabled(int enabled) { acom_.dss_df = enabled ? 1 : 2; }
int VELD_in_batch(void) { return GCA(73) == 2; }
int inveld_(void) { return GCA(30) == 1; }
double ACOM_ask_MEC(void) { return acom_.model_scale; }
int ACOM_ask_MESW(void) { return GCA(51); }
void cu0007_(int *value) { *value = GCA(9); }
void cu0008_(const int *value) { GCA(9) = *value; }

void pxsfac_read_psqx_(double *first, double *second)
{
    const double a = pxsfac_.value[0];
    const double b = pxsfac_.value[1];
    *first = b;
    *second = a;
}

/* ---- display buffer ----------------------------------------------------- */
// A count outside 0..512 written by the host is read as empty (negative) or
// full (too large).

qx_display_fn MCS_register_display_fn(qx_display_fn fn)
{
    const qx_display_fn previous = display_fn;
    display_fn = fn;
    return previous;
}

void d7390_(void) { acom_.display_count = 0; }

void d7391_(const int *id)
{
    if (display_count() >= QX_DISPLAY_BUFFER_MAX) d7392_();
    const int n = display_count();
    acom_.display_items[n] = *id;
    acom_.display_count = n + 1;
}

void d7392_(void)
{
    if (acom_.display_count > 0 && display_fn != nullptr) display_fn();
    acom_.display_count = 0;
}

void a406_(const int *id)
{
    const int target = *id; // *id may point into the buffer itself
    const int n = display_count();
    int kept = 0;
    for (int i = 0; i < n; ++i)
        if (acom_.display_items[i] != target) acom_.display_items[kept++] = acom_.display_items[i];
    acom_.display_count = kept;
}
