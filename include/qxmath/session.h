/* session.h — the host's modelling-session state that the library keeps:
 * the exported blocks acom_, pxsfac_, spint_ and srfc1_, and the accessors
 * of the work coordinate system (WCS), display colour, grid counts, run
 * modes and display buffer.
 *
 * The host and the numbered routines address acom_ by byte position; the
 * struct below names those positions (each field's offset is in its
 * comment and is fixed). A field that has not been given a value holds the
 * unset marker -939 (ints) or -939.0 (doubles) after sys10_; no accessor
 * tests for it. At load the whole block is zero.
 *
 * Nothing here is thread-safe: the host drives the session from one thread.
 *
 * NaN and infinite input. The blocks store whatever the host writes, and
 * no accessor tests a double: WCS__set_matrix_values copies a NaN or
 * infinite matrix as it is, the WCS queries hand it back, and mapvaw_,
 * mapvwa_, mappaw_ and mappwa_ propagate NaN from the point, the WCS
 * matrix or its origin into their outputs. A NaN or infinite model scale
 * reaches the tolerances through sys21_ (frame.h).
 */
#ifndef QXMATH_SESSION_H
#define QXMATH_SESSION_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

#define QX_UNSET_INT    (-939)
#define QX_UNSET_DOUBLE (-939.0)

/* Size of acom_ in bytes; GCA words 0 .. QX_ACOM_GCA_WORDS-1 fit in it. */
#define QX_ACOM_SIZE      8192
#define QX_ACOM_GCA_WORDS 853
/* Capacity of the display buffer. */
#define QX_DISPLAY_BUFFER_MAX 512

#define DISPLAY_MIN_COLOR 1
#define DISPLAY_MAX_COLOR 15

/* The session block. GCA(k), the session's integer word k, is gca[k] at
 * byte 4780 + 4k. Words the library uses: 6 system display colour,
 * 9 a host word (cu0007_/cu0008_), 17/18 default face grid counts u/v,
 * 24 set to 6 by sys10_, 30 VELD program running, 31 precision switch,
 * 40/41/42 WCS grid, view-names and WCS skeletons, 45 WCS matrix tag,
 * 47 WCS not linked to view, 48 WCS permanent, 49 WCS display state (also
 * "temporary"), 50 WCS tag, 51 MESW, 73 run mode (2 = batch). */
typedef struct qx_acom {
    unsigned char reserved_0[320];            /*    0 */
    unsigned char cleared_320[96];            /*  320: cleared by sys10_ */
    double d416[27];                          /*  416 */
    double d632[50];                          /*  632: kept by sys10_ mode 1 */
    double d1032;                             /* 1032: 0.0 after sys10_ */
    double model_scale;                       /* 1040: ACOM_ask_MEC */
    double d1048[9];                          /* 1048 */
    double tolerance[8];                      /* 1120: the tolerance table (frame.h) */
    double d1184[8];                          /* 1184 */
    double d1248[15];                         /* 1248 */
    double d1368[9];                          /* 1368 */
    double wcs_matrix[9];                     /* 1440: rows = WCS X, Y, Z axes */
    double wcs_origin[3];                     /* 1512 */
    unsigned char reserved_1536[160];         /* 1536 */
    int dss_df;                               /* 1696: 1 enabled, 2 disabled */
    unsigned char reserved_1700[332];         /* 1700 */
    int display_count;                        /* 2032: display buffer count */
    int display_items[QX_DISPLAY_BUFFER_MAX]; /* 2036 */
    int i4084;                                /* 4084: cleared with the buffer */
    int i4088[43];                            /* 4088: kept by sys10_ mode 1 */
    unsigned char cleared_4260[80];           /* 4260: cleared by b120a_ */
    int i4340;                                /* 4340 */
    int i4344;                                /* 4344 */
    int i4348;                                /* 4348 */
    int i4352;                                /* 4352: kept by sys10_ mode 1 */
    int i4356;                                /* 4356 */
    int i4360;                                /* 4360 */
    int i4364[104];                           /* 4364: with gca[0], kept by mode 1 */
    int gca[QX_ACOM_GCA_WORDS];               /* 4780: GCA(k) */
} qx_acom;

/* Two doubles; read back crossed by pxsfac_read_psqx_. */
typedef struct qx_pxsfac {
    double value[2];
} qx_pxsfac;

/* Reserved for the numbered spline routines; the library does not read it. */
typedef struct qx_spint {
    double value[32];
} qx_spint;

/* ls_tolerance is the session's default least-squares tolerance, given to
 * new least-squares defining data. The other values are reserved for the
 * numbered surface routines; the library does not read them. */
typedef struct qx_srfc1 {
    double ls_tolerance;
    double value[15];
} qx_srfc1;

QXMATH_API extern qx_acom acom_;
QXMATH_API extern qx_pxsfac pxsfac_;
QXMATH_API extern qx_spint spint_;
QXMATH_API extern qx_srfc1 srfc1_;

/* ---- initialisation ---------------------------------------------------- */

/* Session initialisation. Always: clears the 96 bytes at 320; sets the 27
 * doubles at 416, the 9 at 1368, the model scale, the 15 at 1248 and the 25
 * at 1048 (tolerance table included) to -939.0; the double at 1032 to 0.0;
 * the ints at 4344, 4348, 4356, 4360 and GCA(51) to -939; clears the
 * display buffer (514 words from 2032). When *mode is not 1, also: the ints
 * at 4352, the 43 at 4088 and the 105 at 4364 to -939; the 50 doubles at 632
 * to -939.0; GCA(2..8), GCA(10..22), GCA(26), GCA(28), GCA(30..50) to 0.
 * Last, GCA(24) := 6. Mode 1 thus keeps the WCS flags, colour, grid counts
 * and run modes while resetting the geometry scalars. Call sys21_ once the
 * model scale is set. */
QXMATH_API void sys10_(const int *mode);
/* Clears the 80 bytes at 4260. */
QXMATH_API void b120a_(void);

/* ---- work coordinate system -------------------------------------------- */
/* All in absolute coordinates; outputs are copies. */

QXMATH_API void WCS_ask_origin(double origin[3]);
QXMATH_API void WCS_ask_matrix(double matrix[9]);
/* Origin, then matrix. */
QXMATH_API void WCS_ask_coordinate_system(double csys[12]);
/* Third matrix row. */
QXMATH_API void WCS_ask_z_axis(double z_axis[3]);
/* Origin, then Z axis: a point and the normal of the work plane. */
QXMATH_API void WCS_ask_work_plane(double plane[6]);
/* Matrix and origin; the matrix comes first in the argument list. */
QXMATH_API void v6051_(double matrix[9], double origin[3]);
/* Replaces the matrix; the origin is untouched. The matrix is not checked. */
QXMATH_API void WCS__set_matrix_values(const double matrix[9]);

/* The WCS matrix tag, GCA(45), and the WCS tag, GCA(50): host object
 * identifiers stored and handed back unchecked. */
QXMATH_API void WCS__set_matrix_tag(int tag);
QXMATH_API int WCS_ask_matrix_tag(void);
QXMATH_API void WCS_set_tag(int tag);
QXMATH_API int WCS_ask_tag(void);
/* The host's grid, view-names and WCS skeletons: GCA(40), (41), (42). */
QXMATH_API int WCS_ask_grid_skeleton(void);
QXMATH_API int WCS_ask_view_names_skeleton(void);
QXMATH_API int WCS_ask_skeleton(void);

/* 1 when GCA(47) is 0. */
QXMATH_API int WCS_is_linked_to_view(void);
/* Stores the negation of the flag in GCA(47). */
QXMATH_API void WCS_set_linked_to_view(int linked);
/* 1 when GCA(48) is 1. */
QXMATH_API int WCS_is_permanent(void);
/* 1 when GCA(49), the display state, is 1: the two share one word. */
QXMATH_API int WCS_is_temporary(void);
/* GCA(49). */
QXMATH_API void WCS_ask_wcs_display(int *display);
/* Stores the display state (with checking on, a value other than 0 and 1 is
 * reported, "Assertion failed: %s" / "condition", and stored anyway), then
 * runs the host's callbacks of reason QX_REASON_ask_reason_number(2) with
 * the address of the new value. */
QXMATH_API void WCS_set_wcs_display(int display);

/* Absolute <-> WCS mapping; every argument by address and out may be the
 * same array as in. Vectors: aw is M v, wa is transpose(M) v. Points: aw
 * subtracts the origin first, wa adds it after. */
QXMATH_API void mapvaw_(const double *v, double *out);
QXMATH_API void mapvwa_(const double *v, double *out);
QXMATH_API void mappaw_(const double *p, double *out);
QXMATH_API void mappwa_(const double *p, double *out);

/* ---- display colour, grid counts, modes --------------------------------- */

/* GCA(6). With the checking level non-zero (negative included) a colour
 * outside DISPLAY_MIN_COLOR..DISPLAY_MAX_COLOR is reported; it is returned
 * or stored anyway. */
QXMATH_API int DISPLAY_ask_system_color(void);
QXMATH_API void DISPLAY_set_system_color(int color);

/* GCA(17), GCA(18). Negative counts are reported with checking on and
 * passed through anyway. */
QXMATH_API void PX_ask_default_face_grid_counts(int u_and_v_grid_counts[2]);
QXMATH_API void PX_set_default_face_grid_counts(const int u_and_v_grid_counts[2]);

/* 1 when the flag at 1696 is 1. */
QXMATH_API int DSS_DF_is_enabled(void);
/* Stores 1 for true, 2 for false. */
QXMATH_API void DSS_DF_set_enabled(int enabled);

/* 1 when GCA(73) is 2. */
QXMATH_API int VELD_in_batch(void);
/* 1 when GCA(30) is 1. */
QXMATH_API int inveld_(void);

/* The model scale. */
QXMATH_API double ACOM_ask_MEC(void);
/* GCA(51). */
QXMATH_API int ACOM_ask_MESW(void);

/* Read / write GCA(9). */
QXMATH_API void cu0007_(int *value);
QXMATH_API void cu0008_(const int *value);

/* *first := pxsfac_.value[1], *second := pxsfac_.value[0] (crossed on
 * purpose). */
QXMATH_API void pxsfac_read_psqx_(double *first, double *second);

/* ---- display buffer ----------------------------------------------------- */

/* Called without arguments to display the items in acom_'s buffer. */
typedef void (*qx_display_fn)(void);

/* Registers the display function (NULL for none); returns the one it
 * replaces. */
QXMATH_API qx_display_fn MCS_register_display_fn(qx_display_fn fn);
/* Empties the buffer. */
QXMATH_API void d7390_(void);
/* Appends *id; a full buffer (512) is flushed first. */
QXMATH_API void d7391_(const int *id);
/* Flush: when the buffer holds items and a display function is registered,
 * calls it; then empties the buffer in any case. */
QXMATH_API void d7392_(void);
/* Removes every occurrence of *id, keeping the order of the others. */
QXMATH_API void a406_(const int *id);

QXMATH_END_DECLS

#endif
