// sea_knot — merge_knots, a knot vector of a given degree on which two
// B-splines can both be represented. Each input becomes a 1-based list of
// distinct knots with their continuity (degree - multiplicity); the lists
// are merged in order (the second list first on a tie), coinciding entries
// of the two inputs combine with the smaller continuity, and the result is
// expanded with multiplicity d - continuity. Knot equality and order are
// tolerant (1.0e-10 absolute, 1.0e-15 relative). The temporary lists come
// from the host allocator and are freed on every path that returns.
#define QX_SOURCE_FILE "sea_knot"
#include "frame/check.h"

#include <climits>
#include <cstddef>

#include <qxmath/solvers.h>
#include <qxmath/spline.h>

#include "frame/general_utilities.h"

namespace
{

constexpr double kAbsTol = 1.0e-10;
constexpr double kRelTol = 1.0e-15;

// The reporting places of merrorpush.
const char place_empty[1] = {};
const char place_storage[1] = {};

// One distinct knot. Counts are 64-bit so that no degree or multiplicity a
// caller can pass overflows them.
struct DistinctKnot {
    double value;           // the first knot of the run
    long long multiplicity; // knots in the run
    long long continuity;   // degree - multiplicity
};

// No result: the vector could not be had (or counted in an int).
void no_storage(double **knots, int *s)
{
    *s = 0;
    *knots = nullptr;
    merrorpush(place_storage, QX_MERR_NO_STORAGE, QX_MERR_LEVEL);
}

// Knots of a vector of degree d with s spans; NULL or fewer than one knot
// is an empty vector.
long long knot_count(const double *knots, int d, int s)
{
    const long long n = static_cast<long long>(s) + 2LL * d + 1;
    return knots == nullptr || n < 1 ? 0 : n;
}

// A 1-based list of `entries` records (entry 0 allocated, unused); NULL
// when the host could not give it and its report returned.
DistinctKnot *new_list(long long entries)
{
    return static_cast<DistinctKnot *>(
        SM_alloc(static_cast<std::size_t>(entries + 1) * sizeof(DistinctKnot)));
}

// The distinct knots of knots[0 ... n - 1] into list[1 ...]; returns their
// number. A knot greater than its predecessor starts an entry, one equal to
// it lengthens the run; one that is neither (a decrease, a NaN) is passed
// over.
long long distinct_knots(const double *knots, long long n, int degree, DistinctKnot *list)
{
    if (n < 1) return 0;
    long long m = 1;
    list[1] = {knots[0], 1, 0};
    for (long long i = 1; i < n; ++i) {
        if (mx_gt_y(knots[i], knots[i - 1], kAbsTol, kRelTol))
            list[++m] = {knots[i], 1, 0};
        else if (mx_eq_y(knots[i], knots[i - 1], kAbsTol, kRelTol))
            ++list[m].multiplicity;
    }
    for (long long j = 1; j <= m; ++j) list[j].continuity = degree - list[j].multiplicity;
    return m;
}

// Merges list1[1 ... n1] and list2[1 ... n2] into out[1 ...]: the second
// list's entry goes first unless the first list's is less (so on a tie the
// second list's comes first). When the first list runs out before the
// second, the rest of the second follows. Returns n1 + n2.
long long merge(const DistinctKnot *list1, long long n1, const DistinctKnot *list2, long long n2,
                DistinctKnot *out)
{
    long long i1 = 1, i2 = 1, m = 0;
    while (i2 <= n2) {
        if (i1 <= n1 && mx_lt_y(list1[i1].value, list2[i2].value, kAbsTol, kRelTol))
            out[++m] = list1[i1++];
        else
            out[++m] = list2[i2++];
    }
    while (i1 <= n1) out[++m] = list1[i1++];
    return m;
}

// The number of distinct values of merged[1 ... m]: one, plus one for each
// entry that is greater than its predecessor (mx_lt_y).
long long count_values(const DistinctKnot *merged, long long m)
{
    if (m < 1) return 0;
    long long count = 1;
    for (long long j = 2; j <= m; ++j)
        if (mx_lt_y(merged[j - 1].value, merged[j].value, kAbsTol, kRelTol)) ++count;
    return count;
}

// The result entries into out[1 ... capacity]: an entry equal to the next
// one combines with it (the smaller continuity) and both are consumed,
// otherwise it stands alone. Stops when out is full. Returns the entries
// written.
long long combine(const DistinctKnot *merged, long long m, DistinctKnot *out, long long capacity)
{
    long long r = 0;
    for (long long j = 1; j <= m && r < capacity; ++j) {
        DistinctKnot e = merged[j];
        if (j < m && mx_eq_y(merged[j].value, merged[j + 1].value, kAbsTol, kRelTol)) {
            if (merged[j + 1].continuity < e.continuity) e.continuity = merged[j + 1].continuity;
            ++j;
        }
        out[++r] = e;
    }
    return r;
}

// Expands the r result entries at degree d into *knots and *s: 951 and
// NULL for an empty vector; 950, NULL and *s = 0 for one whose knots or
// spans do not fit an int, or that the host could not allocate.
void expand(DistinctKnot *result, long long r, int d, double **knots, int *s)
{
    long long total = 0;
    for (long long j = 1; j <= r && total <= INT_MAX; ++j) {
        long long m = d - result[j].continuity;
        if (m < 0) m = 0; // an input of higher degree than d: its knot cannot stay
        result[j].multiplicity = m;
        total += m;
    }
    const long long spans = total - 2LL * d - 1;
    if (total > INT_MAX || spans < INT_MIN || spans > INT_MAX) return no_storage(knots, s);
    *s = static_cast<int>(spans);
    if (total < 1) {
        *knots = nullptr;
        merrorpush(place_empty, QX_MERR_EMPTY_RANGE, QX_MERR_LEVEL);
        return;
    }
    double *v = static_cast<double *>(SM_alloc(static_cast<std::size_t>(total) * sizeof(double)));
    if (v == nullptr) return no_storage(knots, s);
    *knots = v;
    for (long long j = 1; j <= r; ++j)
        for (long long c = 0; c < result[j].multiplicity; ++c) *v++ = result[j].value;
}

} // namespace

void merge_knots(const double *knots1, int d1, int s1, const double *knots2, int d2, int s2, int d,
                 double **knots, int *s)
{
    if (knots == nullptr || s == nullptr) {
        merrorpush(place_empty, QX_MERR_EMPTY_RANGE, QX_MERR_LEVEL);
        return;
    }
    const long long n1 = knot_count(knots1, d1, s1), n2 = knot_count(knots2, d2, s2);

    // A host whose failed allocation returns gets 950 and NULL here; one
    // that unwinds keeps the lists made so far until its operation ends.
    DistinctKnot *list1 = new_list(n1);
    DistinctKnot *list2 = list1 == nullptr ? nullptr : new_list(n2);
    DistinctKnot *merged = list2 == nullptr ? nullptr : new_list(n1 + n2);
    if (merged == nullptr) {
        SM_free(list2);
        SM_free(list1);
        return no_storage(knots, s);
    }
    const long long m1 = distinct_knots(knots1, n1, d1, list1);
    const long long m2 = distinct_knots(knots2, n2, d2, list2);
    const long long m = merge(list1, m1, list2, m2, merged);
    SM_free(list2);
    SM_free(list1);

    const long long count = count_values(merged, m);
    DistinctKnot *result = new_list(count);
    if (result == nullptr) {
        SM_free(merged);
        return no_storage(knots, s);
    }
    const long long r = combine(merged, m, result, count);
    SM_free(merged);
    expand(result, r, d, knots, s);
    SM_free(result);
}
