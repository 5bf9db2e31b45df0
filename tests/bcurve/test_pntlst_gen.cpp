// Point lists: ownership of the array, the growth rules of insertion and
// appending, the one-slot move of insertion, removal and replacement, copies,
// distances, the 4-D to 3-D conversion, and the reports of each check.
#include <cmath>
#include <cstring>
#include <vector>

#include "support/qx_test.h"

namespace
{

using Points = std::vector<double>;
using qxtest::kNaN;

static_assert(QX_ERR_PNTLST_POSITION == 1005337, "the host's code");

class PointLists : public qxtest::QxTest
{
  protected:
    // f is silent at checking level 0; at level 1 it makes exactly one
    // report, this one, from pntlst_gen: raised with `code`, or internal
    // when `code` is 0.
    template <class F> static void expect_checked(F f, int code, const char *text)
    {
        qxsys_clear_reports();
        f();
        EXPECT_EQ(qxsys_report_count(), 0) << text;
        MACH__checking_level = 1;
        f();
        MACH__checking_level = 0;
        ASSERT_EQ(qxsys_report_count(), 1) << text;
        const qxsys_report &r = last_report();
        EXPECT_EQ(r.kind, code == 0 ? QXSYS_INTERNAL : QXSYS_RAISE);
        EXPECT_EQ(r.code, code);
        EXPECT_STREQ(r.text, text);
        EXPECT_STREQ(r.file, "pntlst_gen");
        qxsys_clear_reports();
    }

    // The list holds `count` points, room for `capacity`, the first of them
    // (all when `points` is the whole count) equal to `points`.
    static void expect_list(const PNTLST *l, int count, int capacity, const Points &points)
    {
        EXPECT_EQ(l->num_points, count);
        EXPECT_EQ(l->max_points, capacity);
        EXPECT_EQ(Points(l->points, l->points + points.size()), points);
    }
};

// An owned list of the given points, capacity equal to their count.
PNTLST *make_list(const Points &v, int dimension = 3)
{
    return PNTLST_create_from_list_of_pts(qxtest::host_copy(v),
                                          static_cast<int>(v.size()) / dimension, dimension);
}

const Points A = {1, 2, 3}, B = {4, 5, 6}, C = {7, 8, 9}, X = {-1, -2, -3}, Y = {-4, -5, -6};

Points cat(std::initializer_list<Points> parts)
{
    Points all;
    for (const Points &p : parts) all.insert(all.end(), p.begin(), p.end());
    return all;
}

void fill_ramp(int n, double *p)
{
    for (int i = 0; i < 4 * n; ++i) p[i] = 0.5 * i;
}
void fill_never(int, double *) { ADD_FAILURE() << "no list, no filling"; }

TEST_F(PointLists, AllocationAndOwnership)
{
    const size_t live = qxsys_live_blocks();
    EXPECT_EQ(PNTLST_allocate_struct(3, 0), nullptr);
    EXPECT_EQ(PNTLST_get_from_func(0, 4, fill_never), nullptr);
    EXPECT_EQ(qxsys_live_blocks(), live) << "nothing allocated for a capacity below 1";
    // Resizing keeps the contents and does not look at the count.
    PNTLST *l = PNTLST_get_from_func(2, 4, fill_ramp);
    expect_list(l, 2, 2, {0, 0.5, 1, 1.5, 2, 2.5, 3, 3.5});
    EXPECT_EQ(PNTLST_allocate_points(l, 7), l->points);
    EXPECT_EQ(SM_length(l->points), 7 * 4 * sizeof(double));
    expect_list(l, 2, 7, {0, 0.5, 1, 1.5, 2, 2.5, 3, 3.5});
    PNTLST_allocate_points(l, 1);
    expect_list(l, 2, 1, {});
    PNTLST_free_structure(l);
    // A list made around the caller's array takes it over and frees it; with
    // a count of 0 it does not own the array and never frees it.
    double *array = qxtest::host_copy(cat({A, B}));
    l = PNTLST_create_from_list_of_pts(array, 2, 3);
    EXPECT_EQ(l->points, array);
    expect_list(l, 2, 2, cat({A, B}));
    PNTLST_free_structure(l);
    EXPECT_EQ(qxsys_live_blocks(), live);
    array = qxtest::host_copy(A);
    PNTLST_free_structure(PNTLST_create_from_list_of_pts(array, 0, 3));
    EXPECT_EQ(qxsys_live_blocks(), live + 1);
    SM_free(array);
    // free_all_but_points leaves the array to whoever took it out.
    l = make_list(cat({A, B}));
    array = l->points;
    PNTLST_free_all_but_points(l);
    EXPECT_EQ(qxsys_live_blocks(), live + 1);
    EXPECT_EQ(Points(array, array + 6), cat({A, B}));
    SM_free(array);
    PNTLST_free_structure(nullptr);
    PNTLST_free_all_but_points(nullptr);
}

TEST_F(PointLists, InsertionMovesByOneSlotAndGrowsByTwiceTheCapacity)
{
    // A full list of three grows to 3 + 1 + 2 x 3; then there is room.
    PNTLST *l = make_list(cat({A, B, C}));
    PNTLST_insert_points(l, 1, 0, X.data());
    PNTLST_insert_points(l, 1, 2, Y.data());
    expect_list(l, 5, 10, cat({X, A, Y, B, C}));
    PNTLST_free_structure(l);
    // Two points at the front: the move is still one slot, so the old first
    // point is overwritten and the last slot holds no inserted data.
    l = make_list(cat({A, B, C}));
    PNTLST_insert_points(l, 2, 0, cat({X, Y}).data());
    expect_list(l, 5, 3 + 2 + 2 * 3, cat({X, Y, B, C}));
    PNTLST_free_structure(l);
    // Several points at the end go in correctly; n = 0 still moves the tail
    // up one slot; n = -1 too, and shrinks the count.
    l = make_list(A);
    PNTLST_insert_points(l, 2, 1, cat({B, C}).data());
    expect_list(l, 3, 1 + 2 + 2 * 1, cat({A, B, C}));
    PNTLST_insert_points(l, 0, 0, nullptr);
    expect_list(l, 3, 5, cat({A, A, B}));
    PNTLST_insert_points(l, -1, 1, nullptr);
    expect_list(l, 2, 5, cat({A, A}));
    PNTLST_free_structure(l);
    // n = 0 on a full list: the move is clipped to the array. A position
    // outside the list changes nothing.
    l = make_list(cat({A, B}));
    PNTLST_insert_points(l, 0, 0, nullptr);
    PNTLST_insert_points(l, 1, 3, X.data());
    PNTLST_insert_points(l, 1, -1, X.data());
    expect_list(l, 2, 2, cat({A, A}));
    PNTLST_free_structure(l);
    // Appending grows a full list by exactly one point.
    l = make_list(cat({A, B, C, A}));
    PNTLST_concat_one_point(l, X.data());
    PNTLST_remove_points(l, 0, 2);
    PNTLST_concat_one_point(l, Y.data());
    expect_list(l, 4, 5, cat({C, A, X, Y}));
    PNTLST_free_structure(l);
    l = PNTLST_create_from_list_of_pts(nullptr, 0, 3);
    PNTLST_concat_one_point(l, B.data());
    expect_list(l, 1, 1, B);
    PNTLST_free_structure(l);
}

// Regression: a refused reallocation used to store NULL over the array
// (leaking it) while raising the capacity, so the next edit wrote through
// NULL. The host here reports and returns.
TEST_F(PointLists, RefusedGrowthLeavesTheListIntact)
{
    PNTLST *l = make_list(cat({A, B}));
    double *const array = l->points;
    qxsys_fail_allocation(1);
    PNTLST_concat_one_point(l, X.data());
    qxsys_fail_allocation(1);
    PNTLST_insert_points(l, 1, 1, X.data());
    qxsys_fail_allocation(1);
    EXPECT_EQ(PNTLST_allocate_points(l, 10), nullptr);
    EXPECT_EQ(l->points, array);
    expect_list(l, 2, 2, cat({A, B}));
    PNTLST_concat_one_point(l, X.data()); // and it still grows afterwards
    expect_list(l, 3, 3, cat({A, B, X}));
    PNTLST_free_structure(l);
    qxsys_fail_allocation(2); // the array of a new list: the record goes too
    EXPECT_EQ(PNTLST_allocate_struct(3, 4), nullptr);
}

TEST_F(PointLists, RemovalAndReplacement)
{
    PNTLST *l = make_list(cat({A, B, C, X, Y}));
    PNTLST_remove_points(l, 1, 2);
    PNTLST_remove_points(l, 2, 1);
    PNTLST_replace_points(l, 1, 1, C.data());
    expect_list(l, 2, 5, cat({A, C})); // the capacity never shrinks
    PNTLST_remove_points(l, 5, 2);     // exactly the count: emptied, whatever the position
    EXPECT_EQ(l->num_points, 0);
    PNTLST_remove_points(nullptr, 0, 1);
    EXPECT_EQ(qxsys_report_count(), 0);
    PNTLST_free_structure(l);
    l = make_list(cat({A, B, C}));
    expect_checked([&] { PNTLST_remove_points(l, 0, 4); }, 0, "Too Many Points To Remove");
    // An overlong replacement is reported and still made, into spare room.
    PNTLST_insert_points(l, 1, 3, C.data()); // capacity 3 + 1 + 6
    l->num_points = 3;
    expect_checked(
        [&] {
            PNTLST_replace_points(l, 2, 2, cat({X, Y}).data());
        },
        0, "Too Many Points To Replace");
    expect_list(l, 3, 10, cat({A, B, X, Y}));
    PNTLST_free_structure(l);
}

TEST_F(PointLists, Copies)
{
    // Capacity equal to the count; an empty list copies to one that owns
    // nothing. (Copies of lists in use: see the defining-data record's.)
    PNTLST *l = make_list(cat({A, B, C}));
    PNTLST_remove_points(l, 0, 3);
    PNTLST *copy = PNTLST_copy_structure(l);
    expect_list(copy, 0, 0, {});
    EXPECT_EQ(copy->points, nullptr);
    PNTLST_free_structure(copy);
    PNTLST_free_structure(l);
    EXPECT_EQ(PNTLST_copy_structure(nullptr), nullptr);
    // Single points as stored, homogeneous ones too; a bad position writes
    // nothing.
    l = make_list({2, 4, 6, 2, 1, 1, 1, 0.5}, 4);
    double p[4] = {kNaN, kNaN, kNaN, kNaN};
    PNTLST_copy_single_point(l, 1, p);
    EXPECT_EQ(Points(p, p + 4), (Points{1, 1, 1, 0.5}));
    double q[4] = {kNaN, kNaN, kNaN, kNaN};
    for (int bad : {2, -1}) {
        expect_checked([&] { PNTLST_copy_single_point(l, bad, q); }, 0,
                       "Invalid Point Position Given");
    }
    EXPECT_TRUE(std::isnan(q[0]) && std::isnan(q[3]));
    PNTLST_free_structure(l);
}

TEST_F(PointLists, DistancesAndConversionFrom4d)
{
    // The root of the sum of squares, from the first coordinate on, bit for
    // bit; a 4-D weight takes part, the points are not divided by it.
    const Points v = {0.1, 0.7, -0.3, 1.9, -2.3, 0.4, 1e-3, 0.3};
    PNTLST *l = make_list(v, 4);
    double s = 0.0;
    for (size_t k = 0; k < 4; ++k) s += (v[k + 4] - v[k]) * (v[k + 4] - v[k]);
    EXPECT_EQ(PNTLST_calc_point_distance(l, 1, 0), std::sqrt(s));
    PNTLST_free_structure(l);
    l = make_list({1, 1, 1, 1, 1, 1, 1, 4}, 4);
    EXPECT_EQ(PNTLST_calc_point_distance(l, 0, 1), 3.0);
    for (auto [i, j] : {std::pair{0, 2}, {-1, 0}, {2, 1}}) {
        expect_checked([&] { EXPECT_EQ(PNTLST_calc_point_distance(l, i, j), 0.0); },
                       QX_ERR_PNTLST_POSITION, "Invalid Point Position Given");
    }
    l->dimension = 0;
    EXPECT_EQ(PNTLST_calc_point_distance(l, 0, 1), 0.0);
    PNTLST_free_structure(l);
    l = make_list({2, 4, 6, 2, 3, 3, 3, 3, -1, 0.5, 0.25, 0.5}, 4);
    PNTLST_convert_4d_to_3d(l);
    PNTLST_convert_4d_to_3d(l); // 3-D: nothing happens
    EXPECT_EQ(l->dimension, 3);
    expect_list(l, 3, 3, {1, 2, 3, 1, 1, 1, -2, 1, 0.5}); // capacity counted in points
    PNTLST_free_structure(l);
    l = make_list({1, 2, 3, 4}, 2);
    expect_checked([&] { PNTLST_convert_4d_to_3d(l); }, 0,
                   "Dimension Of The Input Points Is Not Valid");
    EXPECT_EQ(l->dimension, 2);
    expect_list(l, 2, 2, {1, 2, 3, 4});
    PNTLST_free_structure(l);
}

} // namespace
