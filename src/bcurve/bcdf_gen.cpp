// bcdf_gen.cpp — the defining-data record as a whole: creation from point
// lists or a bare point array, its parameters and weights, attaching a knot
// sequence, freeing, and the move to persistent memory; then its settings,
// lookups, editing and validation.
//
// Parameters and weights are recomputed in place, reusing the record's lists;
// slopes and curvatures follow their points through a parameter change by
// their point positions, found against the old parameters.
#define QX_SOURCE_FILE "bcdf_gen"
#include "frame/check.h"

#include <climits>
#include <cstring>
#include <limits>

#include <qxmath/bcdf.h>
#include <qxmath/frame.h>
#include <qxmath/session.h>

#include "bcurve/bcurve_internal.h"
#include "linalg/vec_internal.h"

// ---- Creation, parameters and weights, freeing, persistence ----

namespace
{

// A fresh record: every field zero or NULL.
BCDF *new_record()
{
    BCDF *df = static_cast<BCDF *>(SM_alloc(sizeof(BCDF)));
    if (df != nullptr) *df = BCDF{};
    return df;
}

// The list `list` (or a new one of `dimension` when NULL) with n entries in
// use, its array grown when it lacks room; the old values stay in place. A
// new list for n < 1 is empty and has no array. NULL, with `list` as it
// was, when the host gave no memory.
PNTLST *sized_list(PNTLST *list, int dimension, int n)
{
    if (list == nullptr) {
        list = n >= 1 ? PNTLST_allocate_struct(dimension, n)
                      : PNTLST_create_from_list_of_pts(nullptr, 0, dimension);
        if (list == nullptr) return nullptr;
    } else if (list->max_points < n && PNTLST_allocate_points(list, n) == nullptr) {
        return nullptr;
    }
    list->num_points = n > 0 ? n : 0;
    return list;
}

// The record's last parameter; 0.0 when it has none.
double last_param(const BCDF *df)
{
    const int m = qx_list_count(df->params);
    return m > 0 ? df->params->points[m - 1] : 0.0;
}

// Sets each value of `values` that has a point position (1-based, 0 for
// none) to the parameter of that point.
void move_to_points(PNTLST *values, const int *positions, int count, const double *t, int n)
{
    if (values == nullptr || positions == nullptr) return;
    const int m = count < values->num_points ? count : values->num_points;
    for (int i = 0; i < m; ++i) {
        if (positions[i] >= 1 && positions[i] <= n) values->points[i] = t[positions[i] - 1];
    }
}

// Slopes or curvatures of a record: vectors, parameters and type codes, so
// that one code edits both kinds.
struct VectorSet {
    PNTLST **vectors;
    PNTLST **params;
    int **types;
};

VectorSet slopes_of(BCDF *df) { return {&df->slopes, &df->slope_params, &df->slope_types}; }
VectorSet crvatrs_of(BCDF *df) { return {&df->crvatrs, &df->crvatr_params, &df->crvatr_types}; }

// Frees the set's lists and type array and clears the fields.
void release(const VectorSet &s)
{
    PNTLST_free_structure(*s.vectors);
    PNTLST_free_structure(*s.params);
    SM_free(*s.types);
    *s.vectors = nullptr;
    *s.params = nullptr;
    *s.types = nullptr;
}

void free_record(BCDF *df, bool keep_points)
{
    if (df == nullptr) return;
    if (keep_points) {
        PNTLST_free_all_but_points(df->points);
    } else {
        PNTLST_free_structure(df->points);
    }
    PNTLST_free_structure(df->weights);
    PNTLST_free_structure(df->params);
    release(slopes_of(df));
    release(crvatrs_of(df));
    SM_free(df);
}

// The persistent blocks made so far by one conversion (a plain aggregate:
// it may be alive across a report). 1 record + 7 lists + 7 arrays + 2 type
// arrays.
struct Persisted {
    void *blocks[17];
    int count;
};

// A persistent copy of the first `bytes` bytes of source, recorded in
// `made`. When persistent memory runs out, every block made so far is freed
// first (so that a host that unwinds loses nothing), then the failure is
// reported; NULL if the report returns.
void *persist(const void *source, std::size_t bytes, Persisted &made)
{
    void *copy = SM_calloc_persistent(1, bytes);
    if (copy == nullptr) {
        for (int i = 0; i < made.count; ++i) SM_free(made.blocks[i]);
        made.count = 0;
        const int shown =
            bytes > static_cast<std::size_t>(INT_MAX) ? INT_MAX : static_cast<int>(bytes);
        QX_INTERNAL("Failed to allocate permanent memory for transient conversion of %d bytes",
                    shown);
        return nullptr;
    }
    if (bytes != 0) std::memcpy(copy, source, bytes);
    made.blocks[made.count++] = copy;
    return copy;
}

// The persistent copy of a whole host block (its SM_length); NULL stays NULL
// and *ok stays true.
void *persist_block(const void *block, Persisted &made, bool &ok)
{
    if (block == nullptr) return nullptr;
    void *copy = persist(block, SM_length(block), made);
    ok = copy != nullptr;
    return copy;
}

// Replaces *slot (a list of the transient record, copied into the
// persistent one) by a persistent copy with a persistent array. An array the
// list does not own may not be a host block at all: its points in use are
// copied, and the copy owns them.
bool persist_list(PNTLST **slot, Persisted &made)
{
    bool ok = true;
    PNTLST *list = static_cast<PNTLST *>(persist_block(*slot, made, ok));
    if (!ok) return false;
    *slot = list;
    if (list == nullptr || list->points == nullptr) return true;
    double *array = nullptr;
    if (list->max_points != 0) {
        array = static_cast<double *>(persist_block(list->points, made, ok));
    } else if (list->num_points > 0) {
        const std::size_t m = qx_doubles(list->num_points, list->dimension);
        array = static_cast<double *>(persist(list->points, m * sizeof(double), made));
        ok = array != nullptr;
    }
    if (!ok) return false; // `list` itself is gone with the rest
    if (list->max_points == 0) list->max_points = list->num_points > 0 ? list->num_points : 0;
    list->points = array;
    return true;
}

// What BCDF_add_params needs from the record as it was: whether it had
// parameters, the last one, and the point position of each slope and
// curvature against them. Taken, with every allocation the parameters need,
// before a caller changes the points, so that nothing is allocated once they
// have changed. A plain aggregate over host blocks.
struct ParamTies {
    bool had_old;
    double old_last;
    int num_slopes, num_crvatrs;
    int *slope_pos, *crvatr_pos;
};

// The host refused a position array (its report returned) that slopes or
// curvatures need: without it they would lose their points.
bool positions_lost(const BCDF *df, const ParamTies &p)
{
    return (qx_list_count(df->slopes) > 0 && p.slope_pos == nullptr) ||
           (qx_list_count(df->crvatrs) > 0 && p.crvatr_pos == nullptr);
}

void free_ties(const ParamTies &p)
{
    SM_free(p.slope_pos);
    SM_free(p.crvatr_pos);
}

// Takes the ties, with room for n parameters in an existing list (the old
// values stay). False, holding nothing, when positions were lost.
bool take_param_ties(BCDF *df, int n, ParamTies &p)
{
    PNTLST *old = df->params;
    p = ParamTies{old != nullptr && old->num_points > 0, last_param(df), 0, 0, nullptr, nullptr};
    if (old != nullptr && old->max_points < n) PNTLST_allocate_points(old, n);
    if (!p.had_old) return true;
    p.slope_pos = BCDF_create_slope_pos_array(df, &p.num_slopes);
    p.crvatr_pos = BCDF_create_crvatr_pos_array(df, &p.num_crvatrs);
    if (positions_lost(df, p)) {
        free_ties(p);
        return false;
    }
    return true;
}

// The parameters of the points the record has now (params[], or chord
// length for NULL), the slopes and curvatures following the ties (see
// BCDF_add_params). Frees the ties.
void put_params(BCDF *df, const double *params, ParamTies &p)
{
    const int n = qx_list_count(df->points);
    PNTLST *old = df->params;
    PNTLST *sized = sized_list(df->params, 1, n);
    if (sized != nullptr) df->params = sized;
    if (sized == nullptr || n < 1) {
        free_ties(p);
        return;
    }
    double *t = df->params->points;
    if (params != nullptr) {
        std::memmove(t, params, qx_doubles(n, 1) * sizeof(double)); // may be our own array
    } else {
        BCDF_CALC_parameters(n, df->points->dimension, df->points->points, 1.0, t);
    }

    if (!p.had_old) {
        // Nothing to follow: the given slope and curvature parameters are
        // taken to be in the new parameterisation already.
        p.slope_pos = BCDF_create_slope_pos_array(df, &p.num_slopes);
        p.crvatr_pos = BCDF_create_crvatr_pos_array(df, &p.num_crvatrs);
        if (positions_lost(df, p)) { // back to no parameters
            if (old == nullptr) {
                PNTLST_free_structure(df->params);
                df->params = nullptr;
            } else {
                df->params->num_points = 0;
            }
            free_ties(p);
            return;
        }
    } else if (qx_list_count(df->slopes) > 0) {
        BCDF_scale_slopes(df, p.old_last / t[n - 1]);
    }
    move_to_points(df->slope_params, p.slope_pos, p.num_slopes, t, n);
    move_to_points(df->crvatr_params, p.crvatr_pos, p.num_crvatrs, t, n);
    free_ties(p);
}

} // namespace

extern "C" {

BCDF *BCDF_create_from_pntlst(int periodicity, int order, int least_squares, PNTLST *points,
                              PNTLST *params, PNTLST *weights, PNTLST *slopes, PNTLST *slope_params,
                              int *slope_types, PNTLST *crvatrs, PNTLST *crvatr_params,
                              int *crvatr_types)
{
    // Checked before anything is taken over: a report that unwinds leaves
    // every list with the caller.
    QX_CHECK_RAISE(points != nullptr, QX_ERR_NO_POINTS, "The Point List Is NULL");
    QX_CHECK_RAISE(slopes == nullptr || slope_params != nullptr, QX_ERR_SLOPE_POSITIONS_NULL,
                   "Slope Position Array Is NULL");

    BCDF *df = new_record();
    if (df == nullptr) return nullptr;
    df->periodicity = periodicity;
    df->order = order;
    df->points = points;
    df->params = params;
    df->weights = weights;
    df->slopes = slopes;
    df->slope_params = slope_params;
    df->slope_types = slope_types;
    df->crvatrs = crvatrs;
    df->crvatr_params = crvatr_params;
    df->crvatr_types = crvatr_types;

    if (params == nullptr) BCDF_add_params(df, nullptr);
    if (df->params == nullptr) { // the host refused and returned: all stays the caller's
        SM_free(df);
        return nullptr;
    }

    if (least_squares != 1) {
        // Taken over, so ours to free: the record is not least-squares.
        PNTLST_free_structure(df->weights);
        df->weights = nullptr;
        return df;
    }
    if (df->weights == nullptr) BCDF_add_weights(df);
    if (df->weights == nullptr) { // refused, as above
        if (params == nullptr) PNTLST_free_structure(df->params);
        SM_free(df);
        return nullptr;
    }
    df->ls_tolerance = srfc1_.ls_tolerance;
    return df;
}

BCDF *BCDF_create_df_from_pts(double *points, int num_points, int dimension, int least_squares)
{
    BCDF *df = new_record();
    if (df == nullptr) return nullptr;
    df->points = PNTLST_create_from_list_of_pts(points, num_points, dimension);
    df->order = 4;
    BCDF_add_params(df, nullptr);
    if (least_squares == 1) {
        BCDF_add_weights(df);
        df->ls_tolerance = srfc1_.ls_tolerance;
        df->ls_num_of_segments = 0;
    }
    // A part the host refused (its report returned): no record lacking it,
    // and the array stays the caller's.
    if (df->points == nullptr || df->params == nullptr ||
        (least_squares == 1 && df->weights == nullptr)) {
        BCDF_free_all_but_points(df);
        return nullptr;
    }
    return df;
}

void BCDF_add_params(BCDF *df, const double *params)
{
    if (df == nullptr) return;
    ParamTies ties;
    if (take_param_ties(df, qx_list_count(df->points), ties)) put_params(df, params, ties);
}

void BCDF_add_weights(BCDF *df)
{
    if (df == nullptr) return;
    QX_CHECK_RAISE(df->periodicity != 1, QX_ERR_PERIODIC_LEAST_SQUARES,
                   "Periodic Least Squares Splines Are Not Allowed");
    const int n = qx_list_count(df->points);
    const int num_params = qx_list_count(df->params);
    const int m = num_params < n ? num_params : n;
    PNTLST *sized = sized_list(df->weights, 1, n);
    if (sized == nullptr) return;
    df->weights = sized;
    double *w = df->weights->points;
    if (m > 0) BCDF_CALC_weights(m, df->params->points, w);
    for (int i = m > 0 ? m : 0; i < n; ++i) w[i] = 0.0;
}

void BCDF_attach_knot_sequence(BCDF *df, double *knot_sequence, int num_of_knots)
{
    if (df == nullptr) return;
    df->knot_sequence = knot_sequence;
    df->num_of_knots = num_of_knots;
}

void BCDF_detach_knot_sequence(BCDF *df)
{
    if (df == nullptr) return;
    df->knot_sequence = nullptr;
    df->num_of_knots = 0;
}

void BCDF_free_structure(BCDF *df) { free_record(df, false); }

void BCDF_free_all_but_points(BCDF *df) { free_record(df, true); }

BCDF *BCDF_make_bcdf_data_persistent(BCDF *df)
{
    if (df == nullptr) return nullptr;
    Persisted made{};
    bool ok = true;
    BCDF *copy = static_cast<BCDF *>(persist_block(df, made, ok));
    if (!ok) return nullptr;
    PNTLST **const lists[] = {&copy->points,       &copy->weights,      &copy->params,
                              &copy->slopes,       &copy->slope_params, &copy->crvatrs,
                              &copy->crvatr_params};
    for (PNTLST **slot : lists) {
        if (!persist_list(slot, made)) return nullptr;
    }
    // Stored only once had: a refusal has freed `copy` with the rest.
    int *slope_types = static_cast<int *>(persist_block(df->slope_types, made, ok));
    if (!ok) return nullptr;
    copy->slope_types = slope_types;
    int *crvatr_types = static_cast<int *>(persist_block(df->crvatr_types, made, ok));
    if (!ok) return nullptr;
    copy->crvatr_types = crvatr_types;
    BCDF_free_structure(df);
    return copy;
}

} // extern "C"

// ---- Settings, lookups, editing and validation of a record ----
//
// Lookups tie a slope or curvature to a defining point by parameter value,
// within qx_param_match (a difference at most equal to it matches). The
// editing functions keep the record's invariants: slopes (curvatures) in the
// order of their points, at most one per point, each with its parameter and
// type code at the same index, and the lists released (NULL) when the last
// one goes; a periodic record's last point a copy of its first, carrying no
// slope or curvature of its own. Every argument check runs before the record
// is touched, and with checking off an invalid request leaves the record as
// it was. The memory an edit needs is taken before anything changes, and a
// scratch block is freed before anything that can report runs.

namespace
{

using qx::vec::dot3;

constexpr double kPerpendicular = 1.0e-7;
constexpr double kNullSquared = 1.0e-20;
constexpr long long kMaxConstraints = 2147483600LL;

// Entries usable by index: in a damaged record a vector list and its
// parameter list may disagree, and only the shorter length is trusted.
int usable(const PNTLST *a, const PNTLST *b)
{
    const int na = qx_list_count(a), nb = qx_list_count(b);
    return na < nb ? na : nb;
}
int set_count(const VectorSet &s) { return usable(*s.vectors, *s.params); }
int num_slopes(const BCDF *df) { return usable(df->slopes, df->slope_params); }
int num_crvatrs(const BCDF *df) { return usable(df->crvatrs, df->crvatr_params); }
// Points that have a parameter.
int num_tied(const BCDF *df) { return usable(df->points, df->params); }

// Index of the first of the `count` values of list within qx_param_match of
// key, or -1 (the whole list is scanned).
int first_match(const PNTLST *list, int count, double key)
{
    for (int i = 0; i < count; ++i) {
        if (qx_same_param(list->points[i], key)) return i;
    }
    return -1;
}

// The ordered scan of the point lookups: a value within qx_param_match of
// key gives 1 with its index; the scan stops at the first value above key,
// and 0 is returned with the index where it stopped (the count when it ran
// out): the insertion position.
int ordered_scan(const PNTLST *list, int count, double key, int *index)
{
    int i = 0;
    for (; i < count; ++i) {
        const double v = list->points[i];
        if (qx_same_param(v, key)) {
            *index = i;
            return 1;
        }
        if (key < v) break;
    }
    *index = i;
    return 0;
}

// The index of the slope that shares curvature c's parameter (scanning all
// slopes), or -1; reports nothing.
int slope_of_crvatr(const BCDF *df, int c)
{
    if (c < 0 || c >= num_crvatrs(df)) return -1;
    return first_match(df->slope_params, num_slopes(df), df->crvatr_params->points[c]);
}

// The defining point of entry i of a slope or curvature parameter list, or
// the number of points (reported as corruption) when none matches.
int point_of(const BCDF *df, const PNTLST *vectors, const PNTLST *params, int i)
{
    if (df == nullptr) {
        QX_CHECK(false, "Bcurve Defining Data Structure Corrupt");
        return 0;
    }
    int found = -1;
    if (i >= 0 && i < usable(vectors, params)) {
        found = first_match(df->params, num_tied(df), params->points[i]);
    }
    if (found < 0) {
        QX_CHECK(false, "Bcurve Defining Data Structure Corrupt");
        return qx_list_count(df->points);
    }
    return found;
}

// Room for `need` entries in *list, made (with `dimension`) when missing;
// the capacity at least doubles so that repeated edits stay linear. False,
// with the list as it was, when the host gave no memory. An array the list
// does not own (capacity 0) is copied into one it owns, never reallocated.
bool reserve(PNTLST **list, int dimension, int need)
{
    if (*list == nullptr) {
        PNTLST *made = PNTLST_allocate_struct(dimension, need > 4 ? need : 4);
        if (made != nullptr && made->points == nullptr) {
            PNTLST_free_structure(made);
            made = nullptr;
        }
        *list = made;
        return made != nullptr;
    }
    PNTLST *l = *list;
    if (l->max_points >= need) return true;
    const int grown = need > l->max_points * 2 ? need : l->max_points * 2;
    const std::size_t bytes = qx_doubles(grown, l->dimension) * sizeof(double);
    double *array = nullptr;
    if (l->max_points == 0 && l->points != nullptr) {
        array = static_cast<double *>(SM_alloc(bytes));
        if (array != nullptr) {
            std::memcpy(array, l->points, qx_doubles(l->num_points, l->dimension) * sizeof(double));
        }
    } else {
        array = static_cast<double *>(SM_realloc(l->points, bytes));
    }
    if (array == nullptr) return false;
    l->points = array;
    l->max_points = grown;
    return true;
}

// The type array of a set with room for `need` entries, the entries it had
// kept (a missing array is made, its entries 0). NULL when the host gave no
// memory.
int *reserve_types(const VectorSet &s, int need)
{
    const std::size_t bytes = static_cast<std::size_t>(need > 0 ? need : 1) * sizeof(int);
    int *t = *s.types;
    if (t == nullptr) {
        t = static_cast<int *>(SM_alloc(bytes));
        if (t == nullptr) return nullptr;
        std::memset(t, 0, bytes);
    } else if (SM_length(t) < bytes) {
        const std::size_t had = SM_length(t);
        t = static_cast<int *>(SM_realloc(t, bytes));
        if (t == nullptr) return nullptr;
        std::memset(reinterpret_cast<char *>(t) + had, 0, bytes - had);
    }
    *s.types = t;
    return t;
}

// Room for `need` entries in every part of a set, taken before anything
// changes: a list made here is attached only once every part is had, so a
// refused allocation, whether its report returns or unwinds, leaves the set
// as it was (but for a grown capacity).
bool reserve_set(const VectorSet &s, int need)
{
    PNTLST *vectors = *s.vectors, *params = *s.params;
    const bool had = reserve(&vectors, 3, need) && reserve(&params, 1, need) &&
                     reserve_types(s, need) != nullptr;
    if (!had) {
        if (vectors != *s.vectors) PNTLST_free_structure(vectors);
        if (params != *s.params) PNTLST_free_structure(params);
        return false;
    }
    *s.vectors = vectors;
    *s.params = params;
    return true;
}

// Removes entries pos .. pos + k - 1 (within range) with their parameters
// and types; the set is released when it becomes empty.
void remove_entries(const VectorSet &s, int pos, int k)
{
    const int count = set_count(s);
    PNTLST_remove_points(*s.vectors, pos, k);
    PNTLST_remove_points(*s.params, pos, k);
    int *t = *s.types;
    if (t != nullptr && count - pos - k > 0) {
        std::memmove(t + pos, t + pos + k, static_cast<std::size_t>(count - pos - k) * sizeof(int));
    }
    if (count - k <= 0) release(s);
}

// Writes the three coordinates v into entry i of a vector list; further
// coordinates of a 4-D list become 0.0.
void store3(PNTLST *list, int i, const double *v)
{
    const int d = list->dimension;
    double *w = list->points + static_cast<std::ptrdiff_t>(i) * d;
    for (int k = 0; k < d; ++k) w[k] = k < 3 ? v[k] : 0.0;
}

// The point index an edit addresses: a periodic record's closing point is
// its first point.
int addressed_point(const BCDF *df, int point)
{
    const int n = qx_list_count(df->points);
    return (df->periodicity == 1 && n > 1 && point == n - 1) ? 0 : point;
}

// Sets the vector of the set at a valid point: replaced when the point has
// one, else inserted at its place in point order with the point's exact
// parameter. Returns its index, -1 when the host gave no memory.
int set_at_point(BCDF *df, const VectorSet &s, int point, const double *v, int type)
{
    point = addressed_point(df, point);
    const double key = df->params->points[point];
    const int count = set_count(s);
    int index = 0;
    if (count > 0 && ordered_scan(*s.params, count, key, &index) == 1) {
        int *t = reserve_types(s, count);
        if (t == nullptr) return -1;
        store3(*s.vectors, index, v);
        t[index] = type;
        return index;
    }
    if (!reserve_set(s, count + 1)) return -1;
    int *t = *s.types;
    PNTLST *vectors = *s.vectors;
    double padded[4] = {v[0], v[1], v[2], 0.0};
    if (vectors->dimension < 1 || vectors->dimension > 4) return -1;
    PNTLST_insert_points(vectors, 1, index, padded);
    PNTLST_insert_points(*s.params, 1, index, &key);
    if (count - index > 0) {
        std::memmove(t + index + 1, t + index,
                     static_cast<std::size_t>(count - index) * sizeof(int));
    }
    t[index] = type;
    return index;
}

// Removes the slope and curvature tied to a point, if any.
void drop_at_point(BCDF *df, int point)
{
    if (point < 0 || point >= num_tied(df)) return;
    const double key = df->params->points[point];
    const int s = first_match(df->slope_params, num_slopes(df), key);
    if (s >= 0) remove_entries(slopes_of(df), s, 1);
    const int c = first_match(df->crvatr_params, num_crvatrs(df), key);
    if (c >= 0) remove_entries(crvatrs_of(df), c, 1);
}

// A record whose points can be edited: present, of dimension 3 or 4.
bool points_editable(const BCDF *df)
{
    if (df == nullptr) return false;
    if (df->points == nullptr) {
        QX_CHECK_RAISE(false, QX_ERR_NO_POINTS, "No Points Allocated In Defining Data Structure.");
        return false;
    }
    const int d = df->points->dimension;
    if (d != 3 && d != 4) {
        QX_CHECK_RAISE(false, QX_ERR_POINT_DIMENSION, "Point Dimension Is Not 3 Or 4.");
        return false;
    }
    return true;
}

// The defining point of each slope and curvature while a point edit runs:
// at[0 .. ns) for the slopes, at[ns .. ns + nc) for the curvatures, -1 for
// one that matches no point. A plain aggregate over a host block.
struct Ties {
    int *at;
    int ns;
    int nc;
};

// Takes the ties from the current parameters. False when the host gave no
// memory.
bool take_ties(const BCDF *df, Ties &ties)
{
    ties.ns = num_slopes(df);
    ties.nc = num_crvatrs(df);
    ties.at = nullptr;
    if (ties.ns + ties.nc == 0) return true;
    ties.at =
        static_cast<int *>(SM_alloc(static_cast<std::size_t>(ties.ns + ties.nc) * sizeof(int)));
    if (ties.at == nullptr) return false;
    const int n = num_tied(df);
    for (int i = 0; i < ties.ns; ++i) {
        ties.at[i] = first_match(df->params, n, df->slope_params->points[i]);
    }
    for (int i = 0; i < ties.nc; ++i) {
        ties.at[ties.ns + i] = first_match(df->params, n, df->crvatr_params->points[i]);
    }
    return true;
}

// Drops the slopes and curvatures tied to points first .. first + k - 1 and
// renumbers the later ties by delta (-k for a removal, +1 for an insertion
// with k = 0).
void shift_ties(BCDF *df, Ties &ties, int first, int k, int delta)
{
    for (int i = ties.ns + ties.nc - 1; i >= 0; --i) {
        const int p = ties.at[i];
        if (p >= first && p < first + k) {
            const bool slope = i < ties.ns;
            remove_entries(slope ? slopes_of(df) : crvatrs_of(df), slope ? i : i - ties.ns, 1);
            const int after = ties.ns + ties.nc - i - 1;
            if (after > 0) {
                std::memmove(ties.at + i, ties.at + i + 1,
                             static_cast<std::size_t>(after) * sizeof(int));
            }
            if (slope) {
                --ties.ns;
            } else {
                --ties.nc;
            }
        } else if (p >= first + k) {
            ties.at[i] = p + delta;
        }
    }
}

// Room for n points in the point, parameter and weight lists, taken before
// an edit so that nothing allocates while the ties are held.
bool reserve_points(BCDF *df, int n)
{
    if (!reserve(&df->points, df->points->dimension, n)) return false;
    if (!reserve(&df->params, 1, n)) return false;
    return df->weights == nullptr || reserve(&df->weights, 1, n);
}

// After the points changed: chord-length parameters for every point, each
// slope and curvature moved to the new parameter of its point (those that
// matched none keep theirs), the slopes rescaled by old last / new last
// parameter when both are positive (as BCDF_add_params rescales them), the
// weights of a least-squares record recomputed. Frees the ties.
void retie(BCDF *df, Ties &ties, double old_last)
{
    const int n = df->points->num_points;
    df->params->num_points = n;
    double *t = df->params->points;
    BCDF_CALC_parameters(n, df->points->dimension, df->points->points, 1.0, t);
    for (int i = 0; i < ties.ns; ++i) {
        if (ties.at[i] >= 0) df->slope_params->points[i] = t[ties.at[i]];
    }
    for (int i = 0; i < ties.nc; ++i) {
        if (ties.at[ties.ns + i] >= 0) df->crvatr_params->points[i] = t[ties.at[ties.ns + i]];
    }
    SM_free(ties.at);
    ties.at = nullptr;
    const double new_last = n > 0 ? t[n - 1] : 0.0;
    if (ties.ns > 0 && old_last > 0.0 && new_last > 0.0) BCDF_scale_slopes(df, old_last / new_last);
    if (df->weights != nullptr) {
        df->weights->num_points = n;
        BCDF_CALC_weights(n, t, df->weights->points);
    }
}

// Overwrites point i with the stored coordinates of point j.
void copy_point(PNTLST *points, int j, int i)
{
    double p[4];
    PNTLST_copy_single_point(points, j, p);
    PNTLST_replace_points(points, 1, i, p);
}

// Validates a list of point positions for the bulk updates.
bool points_valid(const BCDF *df, int count, const int *points)
{
    if (count < 0 || (count > 0 && points == nullptr)) return false;
    const int n = num_tied(df);
    for (int i = 0; i < count; ++i) {
        if (points[i] < 0 || points[i] >= n) return false;
    }
    return true;
}

// A slope estimate at point p from the chord through its neighbours (one
// side at an open end; across the seam at the first point of a periodic
// record): (P[b] - P[a]) / (t[b] - t[a]) on 3-D points. Zero when the span
// is not positive.
void chord_slope(const BCDF *df, int p, double *s)
{
    const int n = num_tied(df);
    const double *t = df->params->points;
    int a = p > 0 ? p - 1 : 0, b = p < n - 1 ? p + 1 : n - 1;
    double span = t[b] - t[a];
    if (df->periodicity == 1 && p == 0 && n > 2) {
        a = n - 2;
        span = (t[n - 1] - t[n - 2]) + (t[1] - t[0]);
    }
    double pa[3] = {0.0, 0.0, 0.0}, pb[3] = {0.0, 0.0, 0.0};
    BCDF_copy_single_3d_point(df, a, pa);
    BCDF_copy_single_3d_point(df, b, pb);
    for (int k = 0; k < 3; ++k) s[k] = span > 0.0 ? (pb[k] - pa[k]) / span : 0.0;
}

// Point i of the record as (x, y, z), weighted points divided by their
// weights; false when there is no such point.
bool point3(const BCDF *df, int i, double *p)
{
    if (i < 0 || i >= qx_list_count(df->points)) return false;
    p[0] = p[1] = p[2] = std::numeric_limits<double>::quiet_NaN();
    BCDF_copy_single_3d_point(df, i, p);
    return true;
}

// BCDF_change_slope and BCDF_change_curvature. Checked: the point.
int change_vector(BCDF *df, const VectorSet &s, int point, const double *v, int type)
{
    const bool valid = point >= 0 && point < num_tied(df);
    QX_CHECK_RAISE(valid, QX_ERR_INVALID_POSITION,
                   "An Invalid Point Position Was Given By Calling Routine");
    return valid ? set_at_point(df, s, point, v, type) : -1;
}

// BCDF_replace_slope and BCDF_replace_curvature. Checked: the position,
// reported with `message`.
void replace_vector(const VectorSet &s, int position, const double *v, int type,
                    const char *message)
{
    const int count = set_count(s);
    const bool valid = position >= 0 && position < count;
    QX_CHECK_RAISE(valid, QX_ERR_INVALID_POSITION, message);
    if (!valid) return;
    int *t = reserve_types(s, count);
    if (t == nullptr) return;
    store3(*s.vectors, position, v);
    t[position] = type;
}

// BCDF_update_slopes and BCDF_update_curvatures: every point is checked
// before anything changes.
void update_vectors(BCDF *df, const VectorSet &s, int count, const int *points, const double *v,
                    const int *types)
{
    const bool valid = points_valid(df, count, points);
    QX_CHECK_RAISE(valid, QX_ERR_INVALID_POSITION,
                   "An Invalid Point Position Was Given By Calling Routine");
    // All the room first: a refused allocation changes nothing.
    if (!valid || (count > 0 && !reserve_set(s, set_count(s) + count))) return;
    for (int i = 0; i < count; ++i) set_at_point(df, s, points[i], v + 3 * i, types ? types[i] : 0);
}

// Distance of two 3-D points strictly below the length tolerance.
bool close3(const double *a, const double *b)
{
    return qx_point_distance(a, b, 3) < EQ_ask_length_tolerance();
}

} // namespace

extern "C" {

// ---- settings ----

int BCDF_change_number_of_segments(BCDF *df, int number)
{
    if (df == nullptr) return number;
    if (df->weights == nullptr) BCDF_convert_to_least_squares(df);
    if (df->weights == nullptr) return number; // the host refused its memory
    df->ls_tolerance = 0.0;
    df->ls_num_of_segments = number;
    return number;
}

void BCDF_change_tolerance(BCDF *df, double tolerance)
{
    if (df == nullptr) return;
    if (df->weights == nullptr) BCDF_convert_to_least_squares(df);
    if (df->weights == nullptr) return; // the host refused its memory
    df->ls_tolerance = tolerance;
    df->ls_num_of_segments = 0;
}

void BCDF_change_order(BCDF *df, int order)
{
    QX_CHECK(order < 26, "Maximum Order For Spline Exceeded");
    QX_CHECK(order > 1, "Order Must Be Greater Than 1");
    if (df != nullptr) df->order = order;
}

void BCDF_toggle_periodicity(BCDF *df)
{
    if (df == nullptr) return;
    QX_CHECK(df->weights == nullptr || df->periodicity == 1,
             "Periodic Least Squares Curves Are Not Allowed");
    const int n = qx_list_count(df->points);
    const int d = n > 0 ? df->points->dimension : 0;
    const bool movable = d >= 1 && d <= 4;
    // The memory first (room for the closing point, the ties of the new
    // parameters): a host that refuses it leaves the record as it was.
    ParamTies ties;
    if (df->periodicity == 1) {
        if (n > 1) drop_at_point(df, n - 1); // the first point's stand for it
        if (!take_param_ties(df, n, ties)) return;
        if (movable) PNTLST_remove_points(df->points, n - 1, 1);
        if (movable && qx_list_count(df->weights) == n) PNTLST_remove_points(df->weights, n - 1, 1);
        put_params(df, nullptr, ties);
        df->periodicity = 0;
    } else {
        if (movable && !reserve_points(df, n + 1)) return;
        if (!take_param_ties(df, n + 1, ties)) return;
        if (movable) {
            double first[4];
            PNTLST_copy_single_point(df->points, 0, first);
            PNTLST_concat_one_point(df->points, first);
            if (qx_list_count(df->weights) == n) {
                double w = df->weights->points[0];
                PNTLST_concat_one_point(df->weights, &w);
            }
        }
        put_params(df, nullptr, ties);
        df->periodicity = 1;
    }
}

void BCDF_replace_weight(BCDF *df, int position, const double *weight)
{
    if (df == nullptr || df->weights == nullptr) return;
    const bool valid = position >= 0 && position < df->weights->num_points;
    QX_CHECK_RAISE(valid, QX_ERR_INVALID_POSITION,
                   "An Invalid Point Position Was Given By Calling Routine");
    if (valid) PNTLST_replace_points(df->weights, 1, position, weight);
}

// ---- lookups ----

int BCDF_point_at_slope(const BCDF *df, int slope)
{
    return point_of(df, df ? df->slopes : nullptr, df ? df->slope_params : nullptr, slope);
}

int BCDF_point_at_curvature(const BCDF *df, int curvature)
{
    return point_of(df, df ? df->crvatrs : nullptr, df ? df->crvatr_params : nullptr, curvature);
}

int BCDF_slope_at_point(const BCDF *df, int point, int *slope)
{
    if (df == nullptr) return 0;
    const int ns = num_slopes(df);
    if (ns == 0 || point < 0 || point >= qx_list_count(df->params)) return 0;
    return ordered_scan(df->slope_params, ns, df->params->points[point], slope);
}

int BCDF_curvature_at_point(const BCDF *df, int point, int *curvature)
{
    if (df == nullptr) return 0;
    const int nc = num_crvatrs(df);
    if (nc == 0 || point < 0 || point >= qx_list_count(df->params)) return 0;
    return ordered_scan(df->crvatr_params, nc, df->params->points[point], curvature);
}

int BCDF_curvature_at_slope(const BCDF *df, int slope, int *curvature)
{
    if (df == nullptr) return 0;
    const int nc = num_crvatrs(df);
    if (nc == 0 || slope < 0 || slope >= num_slopes(df)) return 0;
    return ordered_scan(df->crvatr_params, nc, df->slope_params->points[slope], curvature);
}

int BCDF_slope_at_curvature(const BCDF *df, int curvature, int *slope_index, double *slope)
{
    if (df == nullptr || num_crvatrs(df) == 0) return 0;
    const int s = slope_of_crvatr(df, curvature);
    if (s < 0) {
        QX_CHECK(false, "Point With Assigned Curvature Has No Slope");
        return 0;
    }
    *slope_index = s;
    qx_copy_vector3(df->slopes, s, slope);
    return 1;
}

// ---- editing the defining points ----

void BCDF_replace_defining_point(BCDF *df, int position, const double *point)
{
    if (!points_editable(df)) return;
    const int n = df->points->num_points;
    const bool valid = position >= 0 && position < n;
    QX_CHECK_RAISE(valid, QX_ERR_INVALID_POSITION,
                   "An Invalid Point Position Was Given By Calling Routine");
    if (!valid || !reserve_points(df, n)) return;
    const double old_last = last_param(df);
    Ties ties{};
    if (!take_ties(df, ties)) return;
    PNTLST_replace_points(df->points, 1, position, point);
    if (df->periodicity == 1 && n > 1 && (position == 0 || position == n - 1)) {
        PNTLST_replace_points(df->points, 1, position == 0 ? n - 1 : 0, point);
    }
    retie(df, ties, old_last);
}

void BCDF_insert_defining_point(BCDF *df, int position, const double *point)
{
    if (!points_editable(df)) return;
    const int n = df->points->num_points;
    const bool periodic = df->periodicity == 1 && n > 1;
    const bool valid = position >= 0 && position <= (periodic ? n - 1 : n);
    QX_CHECK_RAISE(valid, QX_ERR_INVALID_POSITION,
                   "An Invalid Point Position Was Given By Calling Routine");
    if (!valid || !reserve_points(df, n + 1)) return;
    const double old_last = last_param(df);
    Ties ties{};
    if (!take_ties(df, ties)) return;
    shift_ties(df, ties, position, 0, 1);
    PNTLST_insert_points(df->points, 1, position, point);
    if (periodic && position == 0) copy_point(df->points, 0, n);
    retie(df, ties, old_last);
}

void BCDF_remove_defining_points(BCDF *df, int position, int count)
{
    if (!points_editable(df)) return;
    const int n = df->points->num_points;
    const bool periodic = df->periodicity == 1 && n > 1;
    const int distinct = periodic ? n - 1 : n;
    const bool valid =
        position >= 0 && count >= 1 && count < distinct && position <= distinct - count;
    QX_CHECK_RAISE(valid, QX_ERR_REMOVING_POINTS, "Error While Removing Points");
    if (!valid || !reserve_points(df, n)) return;
    const double old_last = last_param(df);
    Ties ties{};
    if (!take_ties(df, ties)) return;
    shift_ties(df, ties, position, count, -count);
    PNTLST_remove_points(df->points, position, count);
    if (periodic && position == 0) copy_point(df->points, 0, n - count - 1);
    retie(df, ties, old_last);
}

// ---- editing slopes and curvatures ----

int BCDF_change_slope(BCDF *df, int point, const double *slope, int type)
{
    return df != nullptr ? change_vector(df, slopes_of(df), point, slope, type) : -1;
}

int BCDF_change_curvature(BCDF *df, int point, const double *curvature, int type)
{
    return df != nullptr ? change_vector(df, crvatrs_of(df), point, curvature, type) : -1;
}

void BCDF_replace_slope(BCDF *df, int position, const double *slope, int type)
{
    if (df == nullptr) return;
    replace_vector(slopes_of(df), position, slope, type,
                   "An Invalid Slope Position Was Given By Calling Routine");
}

void BCDF_replace_curvature(BCDF *df, int position, const double *curvature, int type)
{
    if (df == nullptr) return;
    replace_vector(crvatrs_of(df), position, curvature, type,
                   "An Invalid Curvature Position Was Given By Calling Routine");
}

void BCDF_remove_slopes(BCDF *df, int position, int count)
{
    if (df == nullptr) return;
    const int ns = num_slopes(df);
    const bool valid = position >= 0 && count >= 1 && position <= ns - count;
    QX_CHECK_RAISE(valid, QX_ERR_INVALID_POSITION,
                   "An Invalid Slope Position Was Given By Calling Routine");
    if (!valid) return;
    // A curvature needs the slope at its point: it goes with it.
    for (int i = position; i < position + count; ++i) {
        const int c = first_match(df->crvatr_params, num_crvatrs(df), df->slope_params->points[i]);
        if (c >= 0) remove_entries(crvatrs_of(df), c, 1);
    }
    remove_entries(slopes_of(df), position, count);
}

void BCDF_remove_curvatures(BCDF *df, int position, int count)
{
    if (df == nullptr) return;
    const int nc = num_crvatrs(df);
    const bool valid = position >= 0 && count >= 1 && position <= nc - count;
    QX_CHECK_RAISE(valid, QX_ERR_INVALID_POSITION,
                   "An Invalid Curvature Position Was Given By Calling Routine");
    if (valid) remove_entries(crvatrs_of(df), position, count);
}

void BCDF_update_slopes(BCDF *df, int count, const int *points, const double *slopes,
                        const int *types)
{
    if (df != nullptr) update_vectors(df, slopes_of(df), count, points, slopes, types);
}

void BCDF_update_curvatures(BCDF *df, int count, const int *points, const double *curvatures,
                            const int *types)
{
    if (df != nullptr) update_vectors(df, crvatrs_of(df), count, points, curvatures, types);
}

void BCDF_update_end_slopes(BCDF *df, const double *start_slope, int start_type,
                            const double *end_slope, int end_type)
{
    if (df == nullptr) return;
    const int n = num_tied(df);
    QX_CHECK_RAISE(n > 0, QX_ERR_NO_POINTS, "No Points Allocated In Defining Data Structure.");
    if (n == 0) return;
    // All the room first: a refused allocation changes nothing.
    const int more = (start_slope != nullptr ? 1 : 0) + (end_slope != nullptr ? 1 : 0);
    if (more > 0 && !reserve_set(slopes_of(df), num_slopes(df) + more)) return;
    if (start_slope != nullptr) set_at_point(df, slopes_of(df), 0, start_slope, start_type);
    if (end_slope != nullptr) set_at_point(df, slopes_of(df), n - 1, end_slope, end_type);
}

void BCDF_add_needed_slopes(BCDF *df)
{
    if (df == nullptr) return;
    // All the room first: a refused allocation changes nothing.
    int missing = 0;
    for (int c = 0; c < num_crvatrs(df); ++c) {
        const double key = df->crvatr_params->points[c];
        if (slope_of_crvatr(df, c) < 0 && first_match(df->params, num_tied(df), key) >= 0)
            ++missing;
    }
    if (missing > 0 && !reserve_set(slopes_of(df), num_slopes(df) + missing)) return;
    for (int c = 0; c < num_crvatrs(df); ++c) {
        if (slope_of_crvatr(df, c) >= 0) continue;
        const int p = first_match(df->params, num_tied(df), df->crvatr_params->points[c]);
        if (p < 0) continue;
        double s[3], k[3];
        chord_slope(df, p, s);
        qx_copy_vector3(df->crvatrs, c, k);
        const double kk = dot3(k, k);
        if (kk > kNullSquared) {
            const double f = dot3(s, k) / kk;
            for (int j = 0; j < 3; ++j) s[j] -= f * k[j];
        }
        set_at_point(df, slopes_of(df), p, s, 0);
    }
}

void BCDF_unitize_slopes(BCDF *df)
{
    if (df == nullptr) return;
    const int ns = qx_list_count(df->slopes);
    const int d = ns > 0 ? df->slopes->dimension : 0;
    for (int i = 0; i < ns; ++i) {
        double v[3];
        qx_copy_vector3(df->slopes, i, v);
        const double ll = dot3(v, v);
        if (ll <= kNullSquared) continue;
        const double len = std::sqrt(ll);
        double *w = df->slopes->points + static_cast<std::ptrdiff_t>(i) * d;
        for (int k = 0; k < d; ++k) w[k] /= len;
    }
}

void BCDF_make_least_squares_slopes(BCDF *df)
{
    if (df == nullptr || num_slopes(df) == 0) return;
    if (df->order < 3 || df->periodicity == 1) {
        BCDF_remove_slopes(df, 0, num_slopes(df));
        return;
    }
    const int n = num_tied(df);
    for (int i = num_slopes(df) - 1; i >= 0; --i) {
        const int p = first_match(df->params, n, df->slope_params->points[i]);
        if (p != 0 && p != n - 1) BCDF_remove_slopes(df, i, 1);
    }
    BCDF_unitize_slopes(df);
}

int BCDF_ask_continuity(const BCDF *df)
{
    if (df == nullptr) return 0;
    if (df->order == 4 && BCDF_is_qx_spline(df) == 1) return 1;
    return df->order - 2;
}

// ---- validation ----

int BCDF_check_defining_data(const BCDF *df)
{
    if (df == nullptr) return QX_BCDF_TOO_FEW_POINTS;
    const int n = qx_list_count(df->points);
    if (df->periodicity == 1 ? n <= 2 : n < 2) return QX_BCDF_TOO_FEW_POINTS;
    const long long constraints = qx_num_constraints(df);
    if (constraints < df->order) return QX_BCDF_TOO_FEW_CONSTRAINTS;
    if (constraints >= kMaxConstraints) return QX_BCDF_TOO_MANY_CONSTRAINTS;
    const int np = qx_list_count(df->params);
    for (int i = 1; i < np; ++i) {
        if (df->params->points[i] <= df->params->points[i - 1])
            return QX_BCDF_PARAMS_NOT_INCREASING;
    }
    const int nc = qx_list_count(df->crvatrs);
    if ((qx_list_count(df->slopes) > 0 && df->order < 3) || (nc > 0 && df->order < 4)) {
        return QX_BCDF_ORDER_TOO_LOW;
    }
    // The lookup of the editing code, without its report: this check
    // answers by its result only.
    for (int c = 0; c < nc; ++c) {
        const int s = slope_of_crvatr(df, c);
        if (s < 0) return QX_BCDF_CURVATURE_WITHOUT_SLOPE;
        double k[3], v[3];
        qx_copy_vector3(df->crvatrs, c, k);
        qx_copy_vector3(df->slopes, s, v);
        if (std::fabs(dot3(k, v)) > kPerpendicular) return QX_BCDF_CURVATURE_NOT_PERPENDICULAR;
    }
    if (df->weights == nullptr) return 0;
    const long long m = static_cast<long long>(BCDF_ask_max_npoles_for_fit(df)) + 1 - df->order;
    if (m < 1) return QX_BCDF_TOO_FEW_POINTS;
    const int segments = df->ls_num_of_segments;
    if (segments == 0) return df->ls_tolerance >= 0.0 ? 0 : QX_BCDF_LS_TOLERANCE;
    if (segments < 0 || segments > m) return QX_BCDF_LS_SEGMENTS;
    return 0;
}

int BCDF_check_consecutive_dup_pts(const BCDF *df)
{
    if (df == nullptr) return 0;
    const int n = qx_list_count(df->points);
    const double tol = EQ_ask_length_tolerance();
    for (int i = 1; i < n; ++i) {
        if (PNTLST_calc_point_distance(df->points, i - 1, i) < tol) return 1;
    }
    return 0;
}

int BCDF_check_overlap_points(const BCDF *df, int mode, int position, const double *point)
{
    if (df == nullptr) return 0;
    const int n = qx_list_count(df->points);
    double a[3], b[3];
    switch (mode) {
    case 1:
        if (position > 0 && point3(df, position - 1, a) && close3(point, a)) return 1;
        if (position < n - 1 && point3(df, position + 1, b) && close3(point, b)) return 1;
        return 0;
    case 2:
        if (position > 0 && position < n - 1 && point3(df, position - 1, a) &&
            point3(df, position + 1, b) && close3(a, b)) {
            return 1;
        }
        return 0;
    case 3:
        return BCDF_check_consecutive_dup_pts(df);
    default:
        return 0;
    }
}

int BCDF_num_of_knots_needed(const BCDF *df, int extra)
{
    if (df == nullptr) return 0;
    long long k = df->order + qx_num_constraints(df);
    if (df->periodicity == 1) {
        const long long wrap = static_cast<long long>(extra) + 1;
        const long long cap = static_cast<long long>(df->order) - 1;
        k += wrap < cap ? wrap : cap;
    }
    if (k > INT_MAX) return INT_MAX;
    if (k < INT_MIN) return INT_MIN;
    return static_cast<int>(k);
}

int BCDF_ask_max_npoles_for_fit(const BCDF *df)
{
    if (df == nullptr || df->weights == nullptr) return 0;
    const int n = qx_list_count(df->points);
    return df->periodicity == 1 ? n - 1 : n;
}

int BCDF_parameter_in_list(const BCDF *df, double value, int *index)
{
    const PNTLST *params = df != nullptr ? df->params : nullptr;
    QX_CHECK(params != nullptr, "The Parameter List Has A NULL Value");
    return ordered_scan(params, qx_list_count(params), value, index);
}

double BCDF_calc_df_polygon_length(const BCDF *df)
{
    if (df == nullptr) return 0.0;
    const int n = qx_list_count(df->points);
    double length = 0.0;
    for (int i = 1; i < n; ++i) length += PNTLST_calc_point_distance(df->points, i - 1, i);
    return length;
}

// ---- normalisation ----

double BCDF_normalize(BCDF *df)
{
    const PNTLST *params = df != nullptr ? df->params : nullptr;
    QX_CHECK(params != nullptr, "The Parameter Array Is NULL");
    const int n = qx_list_count(params);
    if (n == 0) return 0.0;
    double *t = params->points;
    const double last = t[n - 1];
    t[0] = 0.0;
    for (int i = 1; i < n - 1; ++i) t[i] = t[i] / last;
    t[n - 1] = 1.0;
    const int ns = qx_list_count(df->slope_params);
    for (int i = 0; i < ns; ++i) df->slope_params->points[i] /= last;
    return last;
}

void BCDF_unnormalize(BCDF *df, double scale)
{
    const PNTLST *params = df != nullptr ? df->params : nullptr;
    QX_CHECK(params != nullptr, "The Parameter Array Is NULL");
    const int n = qx_list_count(params);
    if (n == 0) return;
    double *t = params->points;
    t[0] = 0.0;
    for (int i = 0; i < n; ++i) t[i] *= scale;
    const int ns = qx_list_count(df->slope_params);
    for (int i = 0; i < ns; ++i) df->slope_params->points[i] *= scale;
}

double BCDF_normalize_parameters(BCDF *df)
{
    if (df == nullptr) return 0.0;
    const int n = qx_list_count(df->params);
    const double last = last_param(df);
    if (n < 2 || !(last > 0.0)) return last;
    BCDF_normalize(df);
    const int nc = qx_list_count(df->crvatr_params);
    for (int i = 0; i < nc; ++i) df->crvatr_params->points[i] /= last;
    BCDF_scale_slopes(df, last);
    return last;
}

void BCDF_unnormalize_parameters(BCDF *df, double scale)
{
    if (df == nullptr || qx_list_count(df->params) == 0 || !(scale > 0.0)) return;
    BCDF_unnormalize(df, scale);
    const int nc = qx_list_count(df->crvatr_params);
    for (int i = 0; i < nc; ++i) df->crvatr_params->points[i] *= scale;
    BCDF_scale_slopes(df, 1.0 / scale);
}

void BCDF_scale_slopes(BCDF *df, double factor)
{
    if (df == nullptr || df->slopes == nullptr) return;
    const std::size_t m = qx_doubles(df->slopes->num_points, df->slopes->dimension);
    for (std::size_t k = 0; k < m; ++k) df->slopes->points[k] *= factor;
}

// ---- conversions ----

void BCDF_convert_4d_to_3d(BCDF *df)
{
    if (df == nullptr) return;
    if (df->points != nullptr) PNTLST_convert_4d_to_3d(df->points);
    PNTLST *slopes = df->slopes;
    if (slopes == nullptr || slopes->dimension != 4) return;
    // Dropping the fourth coordinate: the write never overtakes the read.
    for (int i = 0; i < slopes->num_points; ++i) {
        for (int k = 0; k < 3; ++k) slopes->points[3 * i + k] = slopes->points[4 * i + k];
    }
    slopes->dimension = 3;
}

void BCDF_convert_to_least_squares(BCDF *df)
{
    if (df == nullptr || df->weights != nullptr) return;
    const int d = BCDF_return_dimension(df);
    QX_CHECK(d == 3 || d == 4, "Points Are An Invalid Dimension");
    // The memory first (the ties of the new parameters, the weights): a host
    // that refuses it leaves the record as it was.
    ParamTies ties{};
    if (d == 4 && !take_param_ties(df, qx_list_count(df->points), ties)) return;
    BCDF_add_weights(df);
    if (df->weights == nullptr) {
        free_ties(ties);
        return;
    }
    if (d == 4) {
        BCDF_convert_4d_to_3d(df);
        put_params(df, nullptr, ties);
        BCDF_add_weights(df); // again, in place, from the new parameters
    }
    BCDF_make_least_squares_slopes(df);
    release(crvatrs_of(df));
    df->ls_num_of_segments = 0;
    df->ls_tolerance = srfc1_.ls_tolerance;
    df->periodicity = 0;
}

} // extern "C"
