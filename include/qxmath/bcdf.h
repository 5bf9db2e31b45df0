/* bcdf.h — the B-curve defining-data record: creation, queries, copies,
 * persistence, editing and validation.
 *
 * A BCDF holds what a B-curve is built from: defining points (3-D, or 4-D
 * homogeneous), their parameter values, optional slope (tangent) and
 * curvature vectors at chosen parameters with a type code each,
 * least-squares weights and settings, the order and periodicity, and
 * optionally an attached knot sequence.
 *
 * Ownership. The record comes from SM_alloc; a fresh record is all zero. It
 * owns its seven point lists and its two type arrays (freeing the record
 * frees them; each list frees its coordinates only if it owns them, see
 * pntlst.h). The knot sequence is only attached: the record never copies,
 * converts or frees it. Arrays returned by the BCDF_return_* queries belong
 * to the record; arrays returned by the BCDF_copy_* and BCDF_create_*_array
 * functions belong to the caller, who frees them with SM_free.
 *
 * Invariants. Slope i belongs to the defining point whose parameter equals
 * slope_params[i] within 1.0e-10 (absolute, equality included); slopes are
 * kept in the order of their points, and the type arrays run parallel to
 * the vector lists. Curvatures likewise. The record is least-squares exactly
 * when weights is non-NULL; a periodic record may not be least-squares. A
 * periodic record stores its closing point: its last defining point is a
 * copy of the first.
 *
 * Reports. With the host's checking level above 0 the conditions named below
 * are reported, from source file "bcdf" (queries and copies), "bcdf_gen"
 * (creation, freeing, persistence) or "bcdf_calc" (parameters and weights),
 * by ERROR_raise with the codes of frame.h or by ERROR_internal. At level 0
 * nothing is checked. Either way, a NULL record or a missing list never
 * makes a query or copy touch memory it should not: it yields 0, NULL or
 * leaves the outputs untouched, as noted per function.
 *
 * NaN and infinite input. No routine here tests a coordinate, parameter,
 * weight or tolerance for being finite: values are stored and copied as given
 * and propagate into whatever is computed from them. Every loop is bounded by
 * counts, never by a value. Parameter matching (within 1.0e-10) never matches
 * a NaN: a slope or curvature with a NaN parameter has no defining point (0
 * in BCDF_create_slope_pos_array, the number of points from
 * BCDF_point_at_slope, reported with checking on), and BCDF_parameter_in_list
 * walks past a NaN parameter and, for a NaN value, to the end (0, *index the
 * count); an infinite parameter stops the walk like any larger one.
 * BCDF_check_defining_data tests t[i] <= t[i-1], which a NaN parameter
 * escapes, as a NaN curvature or slope escapes the perpendicularity test; a
 * NaN least-squares tolerance fails its test. BCDF_CALC_parameters redoes NaN
 * chord-length parameters uniformly (an infinite chord is kept). The
 * closeness tests (BCDF_check_consecutive_dup_pts, BCDF_check_overlap_points)
 * never find a NaN point close. A NaN slope is zero to
 * BCDF_CALC_unitize_slope (raised with checking on, unit 0, result 0.0) but
 * is divided by its NaN length in BCDF_unitize_slopes.
 * BCDF_normalize_parameters leaves a record whose last parameter is NaN alone
 * and returns NaN.
 */
#ifndef QXMATH_BCDF_H
#define QXMATH_BCDF_H

#include "qxexport.h"
#include "pntlst.h"

QXMATH_BEGIN_DECLS

/* The defining-data record. The field order is part of the interface. */
typedef struct BCDF {
    PNTLST *points;         /* defining points, dimension 3 or 4; NULL while under construction */
    PNTLST *weights;        /* least-squares weights, dimension 1, one per point; NULL: not LS */
    PNTLST *params;         /* parameter of each point, dimension 1 */
    PNTLST *slopes;         /* slope vectors, dimension 3; NULL when none */
    PNTLST *slope_params;   /* parameter of each slope, dimension 1 */
    PNTLST *crvatrs;        /* curvature vectors, dimension 3; NULL when none */
    PNTLST *crvatr_params;  /* parameter of each curvature, dimension 1 */
    int *slope_types;       /* one type code per slope */
    int *crvatr_types;      /* one type code per curvature */
    double ls_tolerance;    /* least-squares tolerance */
    int ls_num_of_segments; /* least-squares segment count asked for */
    int order;              /* order of the B-curve (degree + 1) */
    int periodicity;        /* 1 periodic (closed), 0 open */
    int num_of_knots;       /* length of the attached knot sequence, 0 when none */
    double *knot_sequence;  /* attached (not owned) knot sequence, or NULL */
} BCDF;

/* ---- Creation ---------------------------------------------------------- */

/* A new record that takes over every list and array passed (the caller must
 * not free them afterwards). Checked: points NULL (QX_ERR_NO_POINTS "The
 * Point List Is NULL"); slopes without slope_params (QX_ERR_SLOPE_POSITIONS_NULL
 * "Slope Position Array Is NULL"); both run before anything is taken over,
 * so a report that unwinds leaves every list with the caller. With params
 * NULL the parameters are computed by chord length (BCDF_add_params with
 * NULL); the slope and curvature parameters are then set to the exact
 * parameter of the point they match. When least_squares is not 1 the record
 * is not least-squares: weights passed are freed and the field stays NULL.
 * When it is 1, missing weights are computed (BCDF_add_weights) and
 * ls_tolerance is set to the session's default least-squares tolerance
 * (srfc1_.ls_tolerance). When the host refuses the memory of the record,
 * its parameters or its weights and its report returns, the result is NULL
 * and every list and array passed stays the caller's (the slope and
 * curvature parameters may have been set to their points' exact ones). */
QXMATH_API BCDF *BCDF_create_from_pntlst(int periodicity, int order, int least_squares,
                                         PNTLST *points, PNTLST *params, PNTLST *weights,
                                         PNTLST *slopes, PNTLST *slope_params, int *slope_types,
                                         PNTLST *crvatrs, PNTLST *crvatr_params, int *crvatr_types);

/* A new open record of order 4 around points[num_points x dimension], which
 * it takes over (PNTLST_create_from_list_of_pts), with chord-length
 * parameters. With least_squares 1 also weights, the session's default
 * least-squares tolerance and 0 segments. NULL, the array staying the
 * caller's, when the host refuses memory for any part and its report
 * returns. */
QXMATH_API BCDF *BCDF_create_df_from_pts(double *points, int num_points, int dimension,
                                         int least_squares);

/* Makes params hold one value per defining point, reusing (and growing) the
 * existing list or allocating one. params[] (one value per point) is copied
 * when given; NULL computes chord-length parameters (BCDF_CALC_parameters,
 * exponent 1.0). Slopes and curvatures follow their points: each one's point
 * is found against the old parameters (BCDF_create_slope_pos_array), then
 * every slope is rescaled by old last parameter / new last parameter
 * (BCDF_scale_slopes; not guarded against a zero last parameter) and each
 * slope parameter becomes the new parameter of its point. Curvature
 * parameters move the same way without rescaling. When the record had no
 * parameters before, nothing is rescaled and slope and curvature parameters
 * are matched against the new ones. A slope or curvature that matches no
 * point keeps its parameter. A record without points gets an empty list.
 * params may be the record's own array (BCDF_return_param_array) as long as
 * the number of points has not grown since. */
QXMATH_API void BCDF_add_params(BCDF *df, const double *params);

/* Gives weights one value per defining point from the parameters
 * (BCDF_CALC_weights), reusing and growing an existing list. Checked: a
 * periodic record (QX_ERR_PERIODIC_LEAST_SQUARES "Periodic Least Squares
 * Splines Are Not Allowed"). Points beyond the parameters present weigh 0.0. */
QXMATH_API void BCDF_add_weights(BCDF *df);

/* Stores the caller's knot array and its length in the record. The record
 * never copies, converts or frees it. */
QXMATH_API void BCDF_attach_knot_sequence(BCDF *df, double *knot_sequence, int num_of_knots);

/* Clears the knot fields (NULL, 0); the array stays the caller's. */
QXMATH_API void BCDF_detach_knot_sequence(BCDF *df);

/* ---- Queries (none allocates; a NULL record gives 0 or NULL) ------------ */

/* Count and dimension of the defining points; 0 when there is no list. */
QXMATH_API int BCDF_return_num_of_points(const BCDF *df);
QXMATH_API int BCDF_return_dimension(const BCDF *df);
/* Counts of slopes and curvatures; 0 when there are none. */
QXMATH_API int BCDF_return_num_of_slopes(const BCDF *df);
QXMATH_API int BCDF_return_num_of_crvatrs(const BCDF *df);
/* Points + slopes + curvatures, less 1 when periodicity is 1 (the closing
 * point is not a constraint of its own). Summed without overflow and
 * saturated to the int range for a record whose counts exceed it. */
QXMATH_API int BCDF_return_num_of_constraints(const BCDF *df);
/* The least-squares tolerance and segment count. Checked: a NULL record
 * ("Defining Data Structure Is NULL") and a record that is not
 * least-squares ("Weights List Has A NULL Value"), internal errors. */
QXMATH_API double BCDF_return_ls_tolerance(const BCDF *df);
QXMATH_API int BCDF_return_ls_num_of_segments(const BCDF *df);
/* The order. Checked: a NULL record ("Defining Data Structure Is NULL"). */
QXMATH_API int BCDF_return_order(const BCDF *df);
QXMATH_API int BCDF_return_periodicity(const BCDF *df);

/* The record's coordinate array of the defining points with its count and
 * dimension; NULL with both 0 when there is no list. */
QXMATH_API double *BCDF_return_df_point_array(const BCDF *df, int *num_points, int *dimension);
/* The record's value arrays with their counts; NULL with 0 when missing. */
QXMATH_API double *BCDF_return_param_array(const BCDF *df, int *num_params);
QXMATH_API double *BCDF_return_slope_pars_array(const BCDF *df, int *num_slope_params);
QXMATH_API double *BCDF_return_crvatr_pars_array(const BCDF *df, int *num_crvatr_params);
QXMATH_API double *BCDF_return_weight_array(const BCDF *df, int *num_weights);
/* The record's vector arrays with count and dimension; NULL with both 0
 * when missing. */
QXMATH_API double *BCDF_return_slope_array(const BCDF *df, int *num_slopes, int *dimension);
QXMATH_API double *BCDF_return_crvatr_array(const BCDF *df, int *num_crvatrs, int *dimension);
/* The record's type arrays (may be NULL). */
QXMATH_API int *BCDF_return_slope_type_array(const BCDF *df);
QXMATH_API int *BCDF_return_crvatr_type_array(const BCDF *df);
/* The attached knot sequence and its length (NULL and 0 when none). */
QXMATH_API double *BCDF_return_knot_sequence(const BCDF *df, int *num_of_knots);

/* 1 when the record is least-squares (weights non-NULL), else 0. */
QXMATH_API int BCDF_is_least_squares(const BCDF *df);
/* 1 for a cubic with both end tangents given: order 4, no curvatures, at
 * least two slopes, the first and last slope parameters equal to the first
 * and last point parameters within 1.0e-10; else 0. */
QXMATH_API int BCDF_is_qx_spline(const BCDF *df);

/* A new int array (the caller frees it) with the 1-based position of the
 * defining point of each slope (curvature), and its length in *count; NULL
 * and 0 when there are none. The parameters are walked in increasing order
 * with a cursor on the slope parameters, which advances on each match within
 * 1.0e-10; an entry left unmatched (its slope and every later one, once the
 * cursor is stuck) is 0. */
QXMATH_API int *BCDF_create_slope_pos_array(const BCDF *df, int *count);
QXMATH_API int *BCDF_create_crvatr_pos_array(const BCDF *df, int *count);

/* ---- Single-element copies --------------------------------------------- */

/* The defining point at position as (x, y, z) in point[3]: a 4-D point
 * divided by its weight, a 3-D point as stored. Checked, raised: no points
 * (QX_ERR_NO_POINTS "No Points Allocated In Defining Data Structure."), a
 * position outside 0 .. count - 1 (QX_ERR_POINT_POSITION_TOO_LARGE "Point
 * Position Too Large For Point Array."), a dimension other than 3 or 4
 * (QX_ERR_POINT_DIMENSION "Point Dimension Is Not 3 Or 4."). In each of
 * these cases point[] is left untouched. */
QXMATH_API void BCDF_copy_single_3d_point(const BCDF *df, int position, double *point);

/* The first three stored coordinates of the slope at position into
 * slope[3] (the list's dimension is the stride; a list of lower dimension
 * fills the rest with 0.0) and its type code into *type (0 when the record
 * has no type array; type may be NULL). Checked, raised: no slopes
 * (QX_ERR_NO_SLOPE "No Slope Allocated In Defining Data Structure."), a
 * position outside 0 .. count - 1 (QX_ERR_INVALID_POSITION "An Invalid Slope
 * Position Was Given By Calling Routine"); the outputs are then untouched. */
QXMATH_API void BCDF_copy_single_3d_slope(const BCDF *df, int position, double *slope, int *type);

/* As BCDF_copy_single_3d_slope for curvatures, with the message "An Invalid
 * Curvature Position Was Given By Calling Routine"; missing curvatures are
 * not reported apart (every position is then out of range). */
QXMATH_API void BCDF_copy_single_3d_crvatr(const BCDF *df, int position, double *crvatr, int *type);

/* ---- Whole-array copies (new arrays the caller frees with SM_free) ----- */

/* The coordinates of the defining points. Checked: no list (QX_ERR_NO_POINTS
 * "Point Array Is NULL"); NULL with both counts 0 then. */
QXMATH_API double *BCDF_copy_points(const BCDF *df, int *num_points, int *dimension);
/* The parameters. Checked: no list (QX_ERR_PARAMETERS_NULL "Parameter Array
 * Is NULL"); NULL with count 0 then. */
QXMATH_API double *BCDF_copy_parameters(const BCDF *df, int *num_params);
/* The slopes, and the slope parameters; NULL and 0 when there are none. */
QXMATH_API double *BCDF_copy_slopes(const BCDF *df, int *num_slopes, int *dimension);
QXMATH_API double *BCDF_copy_slope_pars(const BCDF *df, int *num_slope_params);
/* The type codes, one per slope (curvature); NULL when there is no type
 * array or no slope (curvature). */
QXMATH_API int *BCDF_copy_slope_type_array(const BCDF *df);
QXMATH_API int *BCDF_copy_crvatr_type_array(const BCDF *df);

/* ---- Whole record ------------------------------------------------------ */

/* NULL for NULL; else a new record with copies of the seven lists (each with
 * capacity equal to its count) and of the type arrays (one entry per slope,
 * per curvature), and the tolerance, segment count, order and periodicity.
 * The copy has no knot sequence (NULL, 0). NULL, with nothing left
 * allocated, when the host refuses memory for any part and its report
 * returns. */
QXMATH_API BCDF *BCDF_copy_structure(const BCDF *df);

/* Frees the seven lists (each frees its coordinates only if it owns them),
 * the type arrays and the record. The knot sequence is left alone. NULL is
 * accepted. */
QXMATH_API void BCDF_free_structure(BCDF *df);

/* As BCDF_free_structure, except that the coordinate array of the defining
 * points survives: the caller, who took it out (BCDF_return_df_point_array),
 * keeps it and frees it. */
QXMATH_API void BCDF_free_all_but_points(BCDF *df);

/* Moves a record built in transient host memory into persistent memory, so
 * that it outlives the host's current operation. Every block of the record
 * (the record, its lists, their coordinate arrays, the type arrays) is copied
 * byte for byte over its whole SM_length into SM_calloc_persistent memory;
 * then the transient record is freed (BCDF_free_structure): the caller's old
 * pointer is dead. The knot-sequence address is carried over as it stands.
 * A list that does not own its coordinates (max_points 0) gets a copy it
 * owns (max_points := its count; no array when it is empty), since nothing
 * else would free it. NULL gives NULL. When persistent memory runs out,
 * "Failed to allocate permanent memory for transient conversion of %d bytes"
 * is reported (internal error, whatever the checking level) with the size
 * of the block, after every persistent block already made has been freed;
 * if the report returns, the result is NULL and the transient record is
 * left as it was. */
QXMATH_API BCDF *BCDF_make_bcdf_data_persistent(BCDF *df);

/* ---- Parameters and weights -------------------------------------------- */

/* Parameters t[n] of n points of dimension doubles each in points[]:
 * t[0] = 0, t[i] = t[i-1] + d(i-1, i)^exponent, d the Euclidean distance over
 * all stored coordinates (the weight of a 4-D point takes part). Exponent 1.0
 * is chord length, 0.5 centripetal. When |t[n-1]| <= 1.0e-10 (all points
 * coincide; a NaN also) the parameters are redone uniformly with the step
 * n - 1 (not 1/(n-1); kept): t[i] = i x (n - 1). n = 1 gives t[0] = 0; n < 1
 * writes nothing. */
QXMATH_API void BCDF_CALC_parameters(int n, int dimension, const double *points, double exponent,
                                     double *params);

/* Least-squares weights w[n] from the parameters t[n]: each point weighs
 * half the parameter span of its neighbours, w[i] = (t[i+1] - t[i-1]) x 0.5,
 * the ends w[0] = (t[1] - t[0]) x 0.5 and w[n-1] = (t[n-1] - t[n-2]) x 0.5.
 * n = 1 gives w[0] = 0.0; n < 1 writes nothing. */
QXMATH_API void BCDF_CALC_weights(int n, const double *params, double *weights);

/* The weight of index i by the same formula (the ends by their end forms).
 * Checked: n < 2 ("Not Enough Parameters", internal error). With n < 2 or i
 * outside 0 .. n - 1 the result is 0.0. */
QXMATH_API double BCDF_CALC_single_weight(int n, const double *params, int i);

/* ---- Settings, lookups, editing and validation ---- */

/* Settings, lookups, editing and validation of a record (source file
 * "bcdf_gen"). Every lookup ties a slope or curvature to a defining point by
 * parameter value, within 1.0e-10 absolute (equality counting as a match).
 *
 * Editing keeps the record's invariants: slopes (curvatures) stay in the
 * order of their points, at most one per point, with parameter and type code
 * at the same index; when the last one goes, the three lists are freed and
 * their fields set to NULL. A periodic record stores its closing point, a
 * copy of the first: the editing functions address it as the first point
 * (a slope set at the closing point is the first point's; moving one moves
 * both), and it carries no slope or curvature of its own. Type codes are the
 * host's: stored and returned as given (the derivative code reads 2, 4 and
 * 5 as mirrored slopes); the slopes the library adds itself carry type 0.
 *
 * Reports. With checking on, invalid arguments are raised before the record
 * is touched (ERROR_raise with the codes of frame.h, file "bcdf_gen") or
 * reported by ERROR_internal as noted; if the host returns, or with checking
 * off, an invalid request leaves the record unchanged. An edit takes the
 * memory it needs before changing anything. A NULL record is accepted
 * everywhere: nothing changes and queries give 0 (the lookups of a point
 * report it as corrupt; the whole-record check finds too few points). */

/* Results of BCDF_check_defining_data, one numbering with the raised codes. */
enum {
    QX_BCDF_LS_SEGMENTS = 1005005,             /* segment count negative or above the maximum */
    QX_BCDF_LS_TOLERANCE = 1005006,            /* tolerance negative (or NaN), no segment count */
    QX_BCDF_TOO_FEW_CONSTRAINTS = 1005311,     /* fewer constraints than the order */
    QX_BCDF_TOO_MANY_CONSTRAINTS = 1005317,    /* 2147483600 constraints or more */
    QX_BCDF_CURVATURE_WITHOUT_SLOPE = 1005318, /* no slope at a curvature's point */
    QX_BCDF_CURVATURE_NOT_PERPENDICULAR = 1005319, /* |curvature . slope| > 1.0e-7 */
    QX_BCDF_ORDER_TOO_LOW = 1005320,               /* slopes below order 3, curvatures below 4 */
    QX_BCDF_TOO_FEW_POINTS = 1005321,              /* too few points (or poles for the fit) */
    QX_BCDF_PARAMS_NOT_INCREASING = 1005322        /* some t[i] <= t[i-1] */
};

/* -- settings -- */

/* Makes the record least-squares if it is not (BCDF_convert_to_least_squares),
 * then asks for `number` segments: ls_tolerance := 0.0 (the two settings
 * exclude each other), ls_num_of_segments := number. Returns number. When
 * the host refuses the conversion its memory (and its report returns), the
 * record is left as it was. */
QXMATH_API int BCDF_change_number_of_segments(BCDF *df, int number);

/* Makes the record least-squares if it is not, then ls_tolerance :=
 * tolerance and ls_num_of_segments := 0. When the host refuses the
 * conversion its memory (and its report returns), the record is left as it
 * was. */
QXMATH_API void BCDF_change_tolerance(BCDF *df, double tolerance);

/* order := order, in every case. Checked (ERROR_internal, then stored all
 * the same): order >= 26 "Maximum Order For Spline Exceeded", order < 2
 * "Order Must Be Greater Than 1". */
QXMATH_API void BCDF_change_order(BCDF *df, int order);

/* Closes an open record by appending a copy of its first point, or opens a
 * periodic one by removing its last (closing) point; then recomputes every
 * parameter by chord length (BCDF_add_params with NULL, which also moves the
 * slope and curvature parameters and rescales the slopes by old last / new
 * last parameter) and flips periodicity. Checked: an open least-squares
 * record ("Periodic Least Squares Curves Are Not Allowed", ERROR_internal;
 * the toggle then proceeds). Beyond the bare toggle: a slope or curvature
 * tied to the closing point is dropped with it, and a weights list that has
 * one value per point keeps one (the first weight is copied, the last
 * dropped). Note that BCDF_add_params does not guard a zero last parameter:
 * toggling a record of a single distinct point scales its slopes by 0 or
 * infinity. */
QXMATH_API void BCDF_toggle_periodicity(BCDF *df);

/* Replaces weight `position` with *weight (PNTLST_replace_points of one
 * value). A record that is not least-squares is left alone. Checked: a
 * position outside the weights (QX_ERR_INVALID_POSITION "An Invalid Point
 * Position Was Given By Calling Routine"). */
QXMATH_API void BCDF_replace_weight(BCDF *df, int position, const double *weight);

/* -- lookups -- */

/* The index of the defining point of slope (curvature) `index`: the first
 * point whose parameter is within 1.0e-10 of its parameter. When none
 * matches (or the index is out of range) the result is the number of
 * points, reported with checking on as "Bcurve Defining Data Structure
 * Corrupt" (ERROR_internal). */
QXMATH_API int BCDF_point_at_slope(const BCDF *df, int index);
QXMATH_API int BCDF_point_at_curvature(const BCDF *df, int index);

/* 1 when point `point` has a slope (curvature), with its index in *index.
 * The slope parameters are scanned in order and the scan stops at the first
 * one above the point's parameter: 0 is then returned with *index the
 * position where it stopped, the insertion position of a slope for that
 * point (the count when the scan ran out). No slopes (curvatures), or a
 * point outside the parameters, give 0 with *index untouched. */
QXMATH_API int BCDF_slope_at_point(const BCDF *df, int point, int *index);
QXMATH_API int BCDF_curvature_at_point(const BCDF *df, int point, int *index);

/* As BCDF_curvature_at_point with slope `slope`'s parameter as the key. */
QXMATH_API int BCDF_curvature_at_slope(const BCDF *df, int slope, int *curvature);

/* 1 when a slope shares curvature `curvature`'s parameter (all slopes are
 * scanned, the first match wins): *slope_index is set and slope[3] receives
 * its first three coordinates. No curvatures give 0. A curvature without a
 * slope gives 0 and is reported with checking on as "Point With Assigned
 * Curvature Has No Slope" (ERROR_internal); the outputs are then untouched. */
QXMATH_API int BCDF_slope_at_curvature(const BCDF *df, int curvature, int *slope_index,
                                       double *slope);

/* -- editing the defining points --
 *
 * point[] holds the record's dimension of doubles, as stored (x*w, y*w,
 * z*w, w for a 4-D record). After each of these edits the parameters are
 * recomputed by chord length; every remaining slope and curvature stays with
 * its point and takes the point's new parameter; the slopes are rescaled by
 * old last / new last parameter (when both are positive, so that a record
 * growing from one point keeps its slopes); and the weights of a
 * least-squares record are recomputed from the new parameters
 * (BCDF_CALC_weights; a weight set with BCDF_replace_weight does not
 * survive). Checked for all three: no point list (QX_ERR_NO_POINTS "No
 * Points Allocated In Defining Data Structure."), a dimension other than 3
 * or 4 (QX_ERR_POINT_DIMENSION "Point Dimension Is Not 3 Or 4."). */

/* Moves point `position` (0 .. n - 1) to point[]. Periodic: 0 and n - 1 are
 * the same point and both copies move. Checked: the position
 * (QX_ERR_INVALID_POSITION "An Invalid Point Position Was Given By Calling
 * Routine"). */
QXMATH_API void BCDF_replace_defining_point(BCDF *df, int position, const double *point);

/* Removes `count` points from `position` on (the argument order of
 * PNTLST_remove_points), with the slopes and curvatures tied to them. At
 * least one distinct point must remain: open, 1 <= count < n and position +
 * count <= n; periodic, the same over the n - 1 distinct points (the closing
 * copy is not removed by itself; removing the first point makes the closing
 * copy a copy of the new first). Checked: anything else
 * (QX_ERR_REMOVING_POINTS "Error While Removing Points"). */
QXMATH_API void BCDF_remove_defining_points(BCDF *df, int position, int count);

/* -- editing slopes and curvatures --
 *
 * Vectors are given as three doubles; a list of 4-D slopes stores 0.0 as
 * their fourth coordinate. */

/* Sets the slope (curvature) of point `point`: replaces vector and type
 * when the point has one, else inserts it at its place in point order, with
 * the point's parameter. Returns its index (-1 when nothing was done).
 * Checked: a point outside 0 .. n - 1 (QX_ERR_INVALID_POSITION "An Invalid
 * Point Position Was Given By Calling Routine"). */
QXMATH_API int BCDF_change_slope(BCDF *df, int point, const double *slope, int type);
QXMATH_API int BCDF_change_curvature(BCDF *df, int point, const double *curvature, int type);

/* Replaces vector and type of slope (curvature) `position`; its point stays.
 * Checked: the position (QX_ERR_INVALID_POSITION "An Invalid Slope Position
 * Was Given By Calling Routine", "An Invalid Curvature Position Was Given By
 * Calling Routine"). */
QXMATH_API void BCDF_replace_slope(BCDF *df, int position, const double *slope, int type);
QXMATH_API void BCDF_replace_curvature(BCDF *df, int position, const double *curvature, int type);

/* Removes slopes (curvatures) position .. position + count - 1 (count >= 1).
 * A curvature needs the slope at its point (BCDF_check_defining_data), so
 * removing a slope also removes the curvature at its point. Checked: the
 * range (QX_ERR_INVALID_POSITION with the slope or curvature message). */
QXMATH_API void BCDF_remove_slopes(BCDF *df, int position, int count);
QXMATH_API void BCDF_remove_curvatures(BCDF *df, int position, int count);

/* Sets `count` slopes (curvatures) at once, as BCDF_change_slope would one
 * by one: slope i (slopes[3i .. 3i+2]) at point points[i] with type
 * types[i] (types may be NULL: type 0). The positions are all checked
 * before anything changes (QX_ERR_INVALID_POSITION "An Invalid Point
 * Position Was Given By Calling Routine"). */
QXMATH_API void BCDF_update_slopes(BCDF *df, int count, const int *points, const double *slopes,
                                   const int *types);
QXMATH_API void BCDF_update_curvatures(BCDF *df, int count, const int *points,
                                       const double *curvatures, const int *types);

/* Sets the end tangents: start_slope (when not NULL) at the first point and
 * end_slope (when not NULL) at the last, as BCDF_change_slope; an order-4
 * record without curvatures then satisfies BCDF_is_qx_spline. Periodic: both
 * ends are the first point, and end_slope, when given, is the one kept.
 * Checked: no points (QX_ERR_NO_POINTS "No Points Allocated In Defining
 * Data Structure."). */
QXMATH_API void BCDF_update_end_slopes(BCDF *df, const double *start_slope, int start_type,
                                       const double *end_slope, int end_type);

/* Gives every curvature that has no slope at its point the slope it needs
 * (type 0): the chord through the point's neighbours divided by their
 * parameter span, (P[i+1] - P[i-1]) / (t[i+1] - t[i-1]) on 3-D points (one
 * side at an open end, across the seam at the first point of a periodic
 * record), made perpendicular to the curvature. A zero span gives a zero
 * slope. Curvatures that match no point are left alone. */
QXMATH_API void BCDF_add_needed_slopes(BCDF *df);

/* Scales every slope to unit length (the length of its first three
 * coordinates; a 4-D slope's fourth is divided too). Slopes whose squared
 * length is at most 1.0e-20 are left as they are. */
QXMATH_API void BCDF_unitize_slopes(BCDF *df);

/* Reduces the slopes to what a least-squares fit takes: below order 3, or
 * for a periodic record, every slope is removed; otherwise every slope not
 * at the first or last point is removed and the end slopes left are
 * unitised. No slope is added. Curvatures go with their slopes. */
QXMATH_API void BCDF_make_least_squares_slopes(BCDF *df);

/* The continuity at the knots of the curve to build: order - 2, lowered to
 * 1 for a cubic with both end tangents (BCDF_is_qx_spline). */
QXMATH_API int BCDF_ask_continuity(const BCDF *df);

/* -- validation -- */

/* 0 when the record can be built, else the code of the first test that
 * fails, in this order: too few points (periodic <= 2, open < 2:
 * QX_BCDF_TOO_FEW_POINTS); constraints fewer than the order; constraints
 * 2147483600 or more; a parameter not strictly above the one before (exact
 * comparison, t[i] <= t[i-1]: a NaN parameter is not caught); slopes below
 * order 3 or curvatures below order 4; for each curvature in turn, no slope
 * sharing its parameter, then |curvature . slope| > 1.0e-7 (absolute, on
 * the vectors as stored); a record that is not least-squares is then valid;
 * a least-squares one needs m = BCDF_ask_max_npoles_for_fit + 1 - order >= 1
 * (else QX_BCDF_TOO_FEW_POINTS), and with no segment count a tolerance >=
 * 0.0 (else QX_BCDF_LS_TOLERANCE; NaN fails too), else a segment count in
 * 0 .. m (else QX_BCDF_LS_SEGMENTS). Reports nothing whatever the checking
 * level. A NULL record has too few points. */
QXMATH_API int BCDF_check_defining_data(const BCDF *df);

/* 1 when two consecutive stored points are closer than the length tolerance
 * (strictly; PNTLST_calc_point_distance, a 4-D weight taking part), else 0. */
QXMATH_API int BCDF_check_consecutive_dup_pts(const BCDF *df);

/* 1 when an edit would leave coincident neighbours (3-D points, weighted
 * points divided by their weights; closer than the length tolerance,
 * strictly). mode 1, point[3] placed at `position`: it is close to the
 * point before (position > 0) or after (position < n - 1). mode 2, the
 * point at `position` removed (0 < position < n - 1): its neighbours are
 * close to each other. mode 3: BCDF_check_consecutive_dup_pts. Other modes,
 * and neighbours that do not exist, give 0. */
QXMATH_API int BCDF_check_overlap_points(const BCDF *df, int mode, int position,
                                         const double *point);

/* order + constraints, plus min(extra + 1, order - 1) for a periodic record
 * (extra is the closure continuity). */
QXMATH_API int BCDF_num_of_knots_needed(const BCDF *df, int extra);

/* 0 unless least-squares; then the number of points, less 1 when periodic.
 * Slopes do not count. */
QXMATH_API int BCDF_ask_max_npoles_for_fit(const BCDF *df);

/* 1 with *index i when |t[i] - value| <= 1.0e-10 for the first such i met
 * walking up the parameters; the walk stops at the first t[i] above value,
 * giving 0 with *index i (the insertion position; the count when all are
 * below). Checked: no parameter list ("The Parameter List Has A NULL
 * Value", ERROR_internal), which then counts as empty (0, *index 0). */
QXMATH_API int BCDF_parameter_in_list(const BCDF *df, double value, int *index);

/* Sum of the distances between consecutive stored points; 0.0 with fewer
 * than two. */
QXMATH_API double BCDF_calc_df_polygon_length(const BCDF *df);

/* -- normalisation -- */

/* Maps the parameters onto [0, 1] and returns the former last parameter L:
 * t[0] := 0, inner t[i] := t[i] / L, the last := 1.0 exactly, every slope
 * parameter := itself / L. The slopes and the curvature parameters are left
 * as they are (BCDF_normalize_parameters moves them too). L is not guarded:
 * a single parameter becomes 1.0. Checked: no parameter list ("The Parameter
 * Array Is NULL", ERROR_internal; 0.0 is returned). */
QXMATH_API double BCDF_normalize(BCDF *df);

/* Undoes BCDF_normalize: t[0] := 0, then every parameter and every slope
 * parameter is multiplied by scale. Same check. */
QXMATH_API void BCDF_unnormalize(BCDF *df, double scale);

/* BCDF_normalize with the rest of the record kept consistent: curvature
 * parameters are divided by L as well, and the slopes, being derivatives
 * with respect to the parameter, are multiplied by L. Ties survive exactly
 * when the parameters start at 0 (as chord-length ones do). A record with
 * fewer than two parameters or L not above 0 is left alone. Returns L. */
QXMATH_API double BCDF_normalize_parameters(BCDF *df);

/* Undoes BCDF_normalize_parameters(df) = scale: BCDF_unnormalize, curvature
 * parameters times scale, slopes divided by it. Nothing when scale is not
 * above 0. */
QXMATH_API void BCDF_unnormalize_parameters(BCDF *df, double scale);

/* Multiplies every stored coordinate of every slope by factor. */
QXMATH_API void BCDF_scale_slopes(BCDF *df, double factor);

/* -- conversions -- */

/* Makes the record least-squares; nothing when it already is. 4-D points
 * are made 3-D (BCDF_convert_4d_to_3d) and the parameters recomputed by
 * chord length; weights are added (BCDF_add_weights, which raises
 * QX_ERR_PERIODIC_LEAST_SQUARES for a periodic record with checking on);
 * the slopes are reduced (BCDF_make_least_squares_slopes); every curvature
 * is removed; then segments := 0, tolerance := srfc1_.ls_tolerance,
 * periodicity := 0 (the closing point stays). Checked: points neither 3-D
 * nor 4-D ("Points Are An Invalid Dimension", ERROR_internal). All memory
 * is taken before anything changes (the weights are made from the old
 * parameters, then recomputed from the new ones for 4-D points): a host
 * that refuses it leaves the record as it was, whether its report returns
 * or unwinds. */
QXMATH_API void BCDF_convert_to_least_squares(BCDF *df);

/* 4-D points become 3-D by division by their weights
 * (PNTLST_convert_4d_to_3d); 4-D slopes become 3-D by dropping the fourth
 * coordinate, without division, packed in place. */
QXMATH_API void BCDF_convert_4d_to_3d(BCDF *df);

/* ---- Automatic derivatives (source file "bcdf_calc") ---------------------
 *
 * Estimates of the derivatives at a defining point that has none of its
 * own, from a local quadratic through its neighbours or by mirroring a
 * neighbour's slope. All rules work on 3-D points (weighted points divided
 * by their weights, BCDF_copy_single_3d_point) and 3-D slopes
 * (BCDF_copy_single_3d_slope); derivatives are with respect to the record's
 * parameter. */

/* First (and, with num_derivs 2, second) derivative at defining point
 * `position` into out[3 num_derivs]: out[0..2] the first, out[3..5] the
 * second. Returns 0, or the status of SOLVE_solve_3equations (1: the local
 * system is singular, e.g. two equal parameters; out then stays zero).
 *
 * Checked, raised: a position outside 0 .. n - 1 (QX_ERR_INVALID_POSITION
 * "An Invalid Point Position Was Given By Calling Routine"). out is cleared
 * to zeros first (after the check); an invalid position, a record of fewer
 * than two points, or one with fewer parameters than points leaves it so and
 * returns 0. num_derivs below 1 writes nothing; above 2 acts as 2.
 *
 * Rules, by position:
 *  - interior i: the quadratic through points i-1, i, i+1 at their
 *    parameters, differentiated at t[i]; slopes are not consulted.
 *  - 0 of a periodic record (closing copy at n - 1): the quadratic through
 *    points n-2, 0, 1 at t[n-2] - t[n-1], t[0], t[1], differentiated at
 *    t[0]. The first parameter is the negative length of the last span as
 *    it is, not shifted by t[0] (the parameters of a record start at 0).
 *  - 0 of an open record (start) and n - 1 of any record (end; the closing
 *    copy of a periodic record included), the end rule with the end point,
 *    its neighbour (1 or n-2) and the point beyond (2 or n-3):
 *    with two points, (P1 - P0) times 1/(t1 - t0), second derivative 0
 *    (equal parameters are not guarded);
 *    when the neighbour has a slope of type 2, 4 or 5, that slope mirrored
 *    about the chord c = neighbour - end point (BCDF_CALC_mirror_slope) is
 *    the first derivative m, and m x unit(c x m) the second (in the plane of
 *    chord and slope, as long as m; zeros when |c x m| < 1.0e-10);
 *    when it has a slope of another type, the quadratic through both points
 *    with that slope at the neighbour, differentiated at the end point
 *    (conditions in parameter order: start P0 t0, P1 t1, slope t1, mode 1;
 *    end P[n-2] t[n-2], slope t[n-2], P[n-1] t[n-1], mode 2);
 *    without a slope, the quadratic through the three points in parameter
 *    order, differentiated at the end point. */
QXMATH_API int BCDF_CALC_auto_derivatives(const BCDF *df, int position, int num_derivs,
                                          double *out);

/* BCDF_CALC_auto_derivatives with num_derivs 1: the first derivative into
 * slope[3]; same result and checks. */
QXMATH_API int BCDF_CALC_auto_slope(const BCDF *df, int position, double slope[3]);

/* Curvature vector at defining point `position` into crvatr[3]
 * (DGEOM_crv_curvature, dgeom.h) from the derivatives of
 * BCDF_CALC_auto_derivatives (num_derivs 2), the point's own slope, when it
 * has one, replacing the estimated first derivative. Same result and
 * checks. */
QXMATH_API int BCDF_CALC_auto_curvature(const BCDF *df, int position, double crvatr[3]);

/* The quadratic q(t) = A t^2 + B t + C, per coordinate, that meets three
 * conditions at params[0..2]: a position condition on points[3r .. 3r+2]
 * (row t^2, t, 1) or a slope condition on slope[] (row 2t, 1, 0). mode 0:
 * three positions (slope not read); 1: the third condition is the slope;
 * 2: the second is; any other mode is taken as 0. points[] holds three
 * points; the one in the slope's place is not read. Each coordinate is
 * solved with SOLVE_solve_3equations; its non-zero status (1: singular
 * system, e.g. two equal parameters among the positions) is returned at
 * once and out is left untouched. Otherwise out receives at t the position
 * (A t + B) t + C (out[0..2]), with num_derivs >= 1 the first derivative
 * 2 A t + B (out[3..5]), with num_derivs >= 2 the second derivative 2 A
 * (out[6..8]), and 0 is returned. out may not alias the inputs. */
QXMATH_API int BCDF_CALC_quadratic_apprx(const double points[9], const double params[3],
                                         const double slope[3], int mode, double t, int num_derivs,
                                         double *out);

/* The slope S mirrored in the line of the chord from a to b: with u =
 * (b - a)/|b - a| and p = (S.u) u, mirrored = p - (S - p), i.e. 2p - S.
 * A zero chord is not guarded (NaN). mirrored may alias any input. */
QXMATH_API void BCDF_CALC_mirror_slope(const double slope[3], const double a[3], const double b[3],
                                       double mirrored[3]);

/* ---- Slopes and parameters in the normalised range ----------------------
 *
 * Normalising maps the parameters t of a record onto u = t / L in [0, 1],
 * L being the last parameter (BCDF_normalize returns it). */

/* The slope at defining point `position` as it stands in the normalised
 * range, into slope[3]: the point's own slope (else the estimate of
 * BCDF_CALC_auto_slope, taken as a derivative), handed to h813_
 * (numbered.h) with L = the record's last parameter and the code for its
 * slope type (types 0 .. 5 -> 1, 2, 3, 4, 5, 5; other types as 0):
 * derivatives (types 0, 2, other) are multiplied by L, directions (types 1,
 * 4, 5) made unit, fixed vectors (type 3) copied. The record is not changed.
 * Returns 0; 1 when nothing could be given (a bad position, a failed
 * estimate, a direction of zero length), slope[] then zero.
 * Checked, raised: a position outside 0 .. n - 1, or a record with fewer
 * parameters than points (QX_ERR_INVALID_POSITION "The Point Position Is
 * Not Valid For The Array Of Points"). */
QXMATH_API int BCDF_CALC_normalized_slope(const BCDF *df, int position, double slope[3]);

/* unit[3] = slope / |slope| (component by component), returning |slope|. A
 * slope whose squared length is at most 1.0e-20 (or not a number) is zero:
 * checked, raised (QX_ERR_ZERO_LENGTH_SLOPE "The Input Slope Has Zero
 * Length"); unit = 0 and 0.0 is returned. unit may alias slope. */
QXMATH_API double BCDF_CALC_unitize_slope(const double slope[3], double unit[3]);

/* The record parameter of normalised parameter u: u x scale, scale being
 * what BCDF_normalize returned, the same product BCDF_unnormalize forms (so
 * 1.0 gives scale exactly). Not guarded. */
QXMATH_API double BCDF_CALC_denormalize_param(double param, double scale);

QXMATH_END_DECLS

#endif
