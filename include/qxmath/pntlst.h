/* pntlst.h — point lists: growable arrays of 3-D or 4-D (homogeneous) points.
 *
 * A list holds num_points points of `dimension` doubles each, packed point
 * after point (point i starts at points[i * dimension]). Dimension 3 is
 * (x, y, z), dimension 4 the homogeneous (x*w, y*w, z*w, w); the defining-data
 * record (bcdf.h) also keeps parameter values and weights in lists of
 * dimension 1.
 *
 * Memory. The record is always allocated by the library with SM_alloc and
 * freed with SM_free. The coordinate array comes from the host allocator
 * too. A list owns its array when max_points is non-zero; max_points 0 marks
 * a list around an array that someone else owns, which the list never frees.
 * Capacity is counted in points, not bytes: converting a list from 4-D to
 * 3-D keeps max_points, and the array is then larger than it needs to be.
 *
 * Reports. None of these functions returns an error code. With the host's
 * checking level above 0, the few conditions named below are reported
 * (ERROR_internal, or ERROR_raise with code QX_ERR_PNTLST_POSITION) from
 * source file "pntlst_gen"; at level 0 nothing is checked. Positions and
 * counts that are not checked are still never allowed to take a move or a
 * copy outside the array: such an operation is skipped (or clipped) silently,
 * as noted per function. A NULL list is accepted everywhere: nothing happens
 * and the result is NULL or 0.0. Allocation failures are the host's to
 * report.
 *
 * NaN and infinite input. Coordinates are never tested: insertion,
 * replacement, removal and copies move them byte for byte (a NaN keeps its
 * bits), PNTLST_calc_point_distance returns NaN when a coordinate of either
 * point is NaN (+infinity for an infinite one against a finite one), and
 * PNTLST_convert_4d_to_3d divides by the weight whatever it is (a NaN or
 * zero weight gives NaN or infinite coordinates). Only counts, positions
 * and dimensions decide what a function does, so no loop here depends on a
 * coordinate's value.
 */
#ifndef QXMATH_PNTLST_H
#define QXMATH_PNTLST_H

#include "qxexport.h"

QXMATH_BEGIN_DECLS

/* The point-list record. The field order is part of the interface. */
typedef struct PNTLST {
    double *points; /* num_points x dimension doubles in use, room for max_points */
    int num_points; /* points in use */
    int max_points; /* points the array has room for; 0: the array is not owned */
    int dimension;  /* doubles per point: 3 or 4 (1 for parameter and weight lists) */
} PNTLST;

/* Filler of PNTLST_get_from_func: writes num_points points into points[]. */
typedef void (*PNTLST_fill_fn)(int num_points, double *points);

/* A new, empty list of the given dimension with room for max_points points
 * (an owned array of max_points x dimension doubles). Returns NULL, and
 * allocates nothing, when max_points < 1; NULL with nothing left allocated
 * when the host refuses the memory and its report returns. */
QXMATH_API PNTLST *PNTLST_allocate_struct(int dimension, int max_points);

/* Resizes the list's array with SM_realloc to max_points x dimension doubles
 * (a NULL array is allocated), sets max_points, returns the new array. The
 * capacity is not compared with num_points: shrinking below num_points is
 * the caller's mistake. A negative capacity or dimension counts as 0 bytes.
 * When the host refuses the memory and its report returns, the result is
 * NULL and the list keeps its array and capacity; the growing edits
 * (PNTLST_insert_points, PNTLST_concat_one_point) then change nothing. */
QXMATH_API double *PNTLST_allocate_points(PNTLST *list, int max_points);

/* A new list record around the caller's array points[num_points x dimension],
 * which the list takes over: num_points = max_points = num_points, so the
 * list frees it (with num_points 0 the array is not owned and never freed). */
QXMATH_API PNTLST *PNTLST_create_from_list_of_pts(double *points, int num_points, int dimension);

/* A new list for num_points points of the given dimension, num_points set,
 * whose coordinates fill(num_points, points) writes. With num_points < 1 no
 * list is made, fill is not called and the result is NULL. */
QXMATH_API PNTLST *PNTLST_get_from_func(int num_points, int dimension, PNTLST_fill_fn fill);

/* Inserts num_points points from points[num_points x dimension] at slot
 * position. When full (max_points < num_points + n), the capacity grows to
 * num_points + n + 2 x max_points. The points from position on are moved up
 * by ONE slot whatever n is (deliberate: callers insert one point at a time;
 * several points are inserted correctly only at the end, position ==
 * num_points). Then num_points += n; with n < 1 the move still happens,
 * nothing is copied and num_points changes by n (never below 0). Not
 * checked: a position outside 0 .. num_points leaves the list unchanged; a
 * move that would run past the capacity (n < 1 on a full list) is clipped
 * to it. */
QXMATH_API void PNTLST_insert_points(PNTLST *list, int num_points, int position,
                                     const double *points);

/* Removes num_points points starting at slot position (NOTE the argument
 * order, the reverse of insert and replace; kept on purpose). A NULL list is
 * accepted. When num_points equals the list's count the list is emptied,
 * whatever the position. Checked: num_points > count ("Too Many Points To
 * Remove"). The points after the run move down; the capacity never shrinks.
 * A run not inside the list (negative position or count, or past the end)
 * otherwise changes nothing. */
QXMATH_API void PNTLST_remove_points(PNTLST *list, int position, int num_points);

/* Overwrites slots position .. position + num_points - 1 with
 * points[num_points x dimension]; num_points of the list is unchanged.
 * Checked: position + num_points > count ("Too Many Points To Replace"); the
 * copy is then made anyway when it stays within the capacity (the count for
 * a list that does not own its array). */
QXMATH_API void PNTLST_replace_points(PNTLST *list, int num_points, int position,
                                      const double *points);

/* Appends one point (dimension doubles). A full list grows by exactly one
 * point (unlike insertion). */
QXMATH_API void PNTLST_concat_one_point(PNTLST *list, const double *point);

/* A new array (SM_alloc, the caller frees it) holding a copy of the
 * num_points x dimension doubles in use, with *num_points and *dimension set.
 * A NULL list gives NULL and both counts 0. */
QXMATH_API double *PNTLST_copy_points(const PNTLST *list, int *num_points, int *dimension);

/* NULL for NULL; else a new list whose array is a copy of the points in use
 * and whose capacity equals its count (an empty list copies to an empty list
 * with no array). NULL, with nothing left allocated, when the host refuses
 * the memory and its report returns. */
QXMATH_API PNTLST *PNTLST_copy_structure(const PNTLST *list);

/* Copies the dimension doubles stored for the point at position into
 * point[], as stored (homogeneous for dimension 4). Checked: position
 * outside 0 .. count - 1 ("Invalid Point Position Given", internal error);
 * such a position leaves point[] untouched. */
QXMATH_API void PNTLST_copy_single_point(const PNTLST *list, int position, double *point);

/* Euclidean distance between the stored points at position1 and position2
 * over all dimension coordinates (for a 4-D list the weight takes part; the
 * points are not divided by it). A dimension below 1 gives 0.0. Checked:
 * either position outside 0 .. count - 1, raised with QX_ERR_PNTLST_POSITION
 * "Invalid Point Position Given" (a coded error here, unlike in
 * PNTLST_copy_single_point; kept); such a position gives 0.0. */
QXMATH_API double PNTLST_calc_point_distance(const PNTLST *list, int position1, int position2);

/* Divides each 4-D point by its weight in place, packing the (x, y, z)
 * results with a stride of 3 into the same array, and sets dimension 3;
 * max_points is kept. A 3-D list is left alone. A zero weight is not tested.
 * Checked: a dimension other than 3 or 4 ("Dimension Of The Input Points Is
 * Not Valid"); such a list is left alone. */
QXMATH_API void PNTLST_convert_4d_to_3d(PNTLST *list);

/* Frees the array when the list owns it (max_points non-zero), then the
 * record. NULL is accepted. */
QXMATH_API void PNTLST_free_structure(PNTLST *list);

/* Frees the record only; the array stays with whoever took it out. NULL is
 * accepted. */
QXMATH_API void PNTLST_free_all_but_points(PNTLST *list);

QXMATH_END_DECLS

#endif
