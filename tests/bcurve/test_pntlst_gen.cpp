// Point lists: ownership of the array, the growth rules of insertion and
// appending, the one-slot move of insertion, removal and replacement, copies,
// distances, the 4-D to 3-D conversion, and the reports of each check.
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

#include "support/qx_test.h"

namespace
{

using Points = std::vector<double>;

class PointLists : public qxtest::QxTest
{
  protected:
    // The newest report is an error of the given kind and code, from
    // pntlst_gen, with the given text; exactly `count` reports were made.
    static void expect_report(qxsys_kind kind, int code, const char *text, long count = 1)
    {
        EXPECT_EQ(qxsys_report_count(), count);
        const qxsys_report &r = last_report();
        EXPECT_EQ(r.kind, kind);
        EXPECT_STREQ(r.file, "pntlst_gen");
        EXPECT_EQ(r.code, code);
        EXPECT_STREQ(r.text, text);
        EXPECT_GT(r.line, 0);
    }
};

// A host array holding the given doubles (the list or the caller frees it).
double *host_array(const Points &v)
{
    double *a = static_cast<double *>(SM_alloc(v.size() * sizeof(double)));
    std::memcpy(a, v.data(), v.size() * sizeof(double));
    return a;
}

// An owned list of the given points, capacity equal to their count.
PNTLST *make_list(const Points &v, int dimension = 3)
{
    return PNTLST_create_from_list_of_pts(host_array(v), static_cast<int>(v.size()) / dimension,
                                          dimension);
}

Points in_use(const PNTLST *l, int num_points)
{
    return Points(l->points, l->points + num_points * l->dimension);
}
Points in_use(const PNTLST *l) { return in_use(l, l->num_points); }

const Points A = {1, 2, 3}, B = {4, 5, 6}, C = {7, 8, 9}, X = {-1, -2, -3}, Y = {-4, -5, -6};

Points cat(std::initializer_list<Points> parts)
{
    Points all;
    for (const Points &p : parts) all.insert(all.end(), p.begin(), p.end());
    return all;
}

TEST_F(PointLists, AllocationAndOwnership)
{
    const size_t live = qxsys_live_blocks();
    EXPECT_EQ(PNTLST_allocate_struct(3, 0), nullptr);
    EXPECT_EQ(PNTLST_allocate_struct(3, -2), nullptr);
    EXPECT_EQ(qxsys_live_blocks(), live) << "nothing allocated for a capacity below 1";

    PNTLST *l = PNTLST_allocate_struct(4, 3);
    ASSERT_NE(l, nullptr);
    EXPECT_EQ(l->num_points, 0);
    EXPECT_EQ(l->max_points, 3);
    EXPECT_EQ(l->dimension, 4);
    ASSERT_NE(l->points, nullptr);
    EXPECT_EQ(SM_length(l->points), 3 * 4 * sizeof(double));

    // Resizing keeps the contents and does not look at the count.
    l->num_points = 2;
    for (int k = 0; k < 8; ++k) l->points[k] = k;
    double *grown = PNTLST_allocate_points(l, 7);
    EXPECT_EQ(grown, l->points);
    EXPECT_EQ(l->max_points, 7);
    EXPECT_EQ(SM_length(l->points), 7 * 4 * sizeof(double));
    EXPECT_EQ(in_use(l), (Points{0, 1, 2, 3, 4, 5, 6, 7}));
    PNTLST_allocate_points(l, 1);
    EXPECT_EQ(l->max_points, 1);
    EXPECT_EQ(l->num_points, 2);
    PNTLST_free_structure(l);
    EXPECT_EQ(qxsys_live_blocks(), live);

    // A list made around the caller's array takes it over and frees it.
    double *array = host_array(cat({A, B}));
    l = PNTLST_create_from_list_of_pts(array, 2, 3);
    EXPECT_EQ(l->points, array);
    EXPECT_EQ(l->num_points, 2);
    EXPECT_EQ(l->max_points, 2);
    PNTLST_free_structure(l);
    EXPECT_EQ(qxsys_live_blocks(), live);

    // With a count of 0 the list does not own the array: never freed by it.
    array = host_array(A);
    l = PNTLST_create_from_list_of_pts(array, 0, 3);
    EXPECT_EQ(l->max_points, 0);
    PNTLST_free_structure(l);
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
    EXPECT_EQ(qxsys_live_blocks(), live);
}

int fill_calls = 0;
void fill_ramp(int n, double *p)
{
    ++fill_calls;
    for (int i = 0; i < 4 * n; ++i) p[i] = 0.5 * i;
}

TEST_F(PointLists, GetFromFunction)
{
    fill_calls = 0;
    PNTLST *l = PNTLST_get_from_func(3, 4, fill_ramp);
    ASSERT_NE(l, nullptr);
    EXPECT_EQ(fill_calls, 1);
    EXPECT_EQ(l->num_points, 3);
    EXPECT_EQ(l->max_points, 3);
    EXPECT_EQ(l->dimension, 4);
    EXPECT_EQ(l->points[11], 5.5);
    PNTLST_free_structure(l);
    EXPECT_EQ(PNTLST_get_from_func(0, 4, fill_ramp), nullptr);
    EXPECT_EQ(fill_calls, 1);
}

TEST_F(PointLists, InsertionMovesByOneSlot)
{
    // One point at the front of a full list of three: all move up, and the
    // capacity becomes 3 + 1 + 2 x 3.
    PNTLST *l = make_list(cat({A, B, C}));
    PNTLST_insert_points(l, 1, 0, X.data());
    EXPECT_EQ(l->max_points, 10);
    EXPECT_EQ(in_use(l), cat({X, A, B, C}));
    // Room left: no growth, inserted in the middle.
    PNTLST_insert_points(l, 1, 2, Y.data());
    EXPECT_EQ(l->max_points, 10);
    EXPECT_EQ(in_use(l), cat({X, A, Y, B, C}));
    PNTLST_free_structure(l);

    // Two points at the front: the move is still one slot, so the old first
    // point is overwritten and one slot at the end holds no inserted data.
    l = make_list(cat({A, B, C}));
    PNTLST_insert_points(l, 2, 0, cat({X, Y}).data());
    EXPECT_EQ(l->num_points, 5);
    EXPECT_EQ(l->max_points, 3 + 2 + 2 * 3);
    EXPECT_EQ(in_use(l, 4), cat({X, Y, B, C}));
    PNTLST_free_structure(l);

    // Several points at the end are inserted correctly.
    l = make_list(cat({A}));
    PNTLST_insert_points(l, 2, 1, cat({B, C}).data());
    EXPECT_EQ(l->max_points, 1 + 2 + 2 * 1);
    EXPECT_EQ(in_use(l), cat({A, B, C}));

    // n = 0 still moves the tail up one slot, and keeps the count.
    PNTLST_insert_points(l, 0, 0, nullptr);
    EXPECT_EQ(in_use(l), cat({A, A, B}));
    // n = -1 moves too, and shrinks the count.
    PNTLST_insert_points(l, -1, 1, nullptr);
    EXPECT_EQ(in_use(l), cat({A, A}));
    PNTLST_free_structure(l);

    // n = 0 on a full list: the move is clipped to the array.
    l = make_list(cat({A, B}));
    PNTLST_insert_points(l, 0, 0, nullptr);
    EXPECT_EQ(l->max_points, 2);
    EXPECT_EQ(in_use(l), cat({A, A}));
    // A position outside the list changes nothing.
    PNTLST_insert_points(l, 1, 3, X.data());
    PNTLST_insert_points(l, 1, -1, X.data());
    EXPECT_EQ(in_use(l), cat({A, A}));
    EXPECT_EQ(l->max_points, 2);
    PNTLST_free_structure(l);
}

TEST_F(PointLists, AppendingGrowsByOnePoint)
{
    PNTLST *l = make_list(cat({A, B, C, A}));
    ASSERT_EQ(l->max_points, 4);
    PNTLST_concat_one_point(l, X.data());
    EXPECT_EQ(l->max_points, 5);
    EXPECT_EQ(in_use(l), cat({A, B, C, A, X}));
    PNTLST_remove_points(l, 0, 2);
    PNTLST_concat_one_point(l, Y.data());
    EXPECT_EQ(l->max_points, 5);
    EXPECT_EQ(in_use(l), cat({C, A, X, Y}));
    PNTLST_free_structure(l);

    // A fresh list gets its array on the first point.
    l = PNTLST_create_from_list_of_pts(nullptr, 0, 3);
    PNTLST_concat_one_point(l, B.data());
    EXPECT_EQ(l->max_points, 1);
    EXPECT_EQ(in_use(l), B);
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
    EXPECT_EQ(l->points, array);
    EXPECT_EQ(l->max_points, 2);
    EXPECT_EQ(in_use(l), cat({A, B}));
    qxsys_fail_allocation(1);
    PNTLST_insert_points(l, 1, 1, X.data());
    EXPECT_EQ(in_use(l), cat({A, B}));
    qxsys_fail_allocation(1);
    EXPECT_EQ(PNTLST_allocate_points(l, 10), nullptr);
    EXPECT_EQ(l->max_points, 2);
    PNTLST_concat_one_point(l, X.data()); // and it still grows afterwards
    EXPECT_EQ(in_use(l), cat({A, B, X}));
    PNTLST_free_structure(l);

    qxsys_fail_allocation(2); // the array of a new list
    EXPECT_EQ(PNTLST_allocate_struct(3, 4), nullptr);
}

TEST_F(PointLists, RemovalAndReplacement)
{
    PNTLST *l = make_list(cat({A, B, C, X, Y}));
    PNTLST_remove_points(l, 1, 2);
    EXPECT_EQ(in_use(l), cat({A, X, Y}));
    EXPECT_EQ(l->max_points, 5) << "the capacity never shrinks";
    PNTLST_remove_points(l, 2, 1);
    EXPECT_EQ(in_use(l), cat({A, X}));

    PNTLST_replace_points(l, 1, 1, C.data());
    EXPECT_EQ(in_use(l), cat({A, C}));
    EXPECT_EQ(qxsys_report_count(), 0);

    // Removing exactly the count empties the list, whatever the position.
    PNTLST_remove_points(l, 5, 2);
    EXPECT_EQ(l->num_points, 0);
    PNTLST_remove_points(nullptr, 0, 1);
    PNTLST_free_structure(l);

    // Checks, at level 1; silence at level 0.
    l = make_list(cat({A, B, C}));
    PNTLST_remove_points(l, 0, 4);
    PNTLST_replace_points(l, 2, 2, cat({X, Y}).data());
    EXPECT_EQ(qxsys_report_count(), 0);
    MACH__checking_level = 1;
    PNTLST_remove_points(l, 0, 4);
    expect_report(QXSYS_INTERNAL, 0, "Too Many Points To Remove");
    EXPECT_EQ(in_use(l), cat({A, B, C}));
    // The replacement is reported and still made, into the spare room.
    PNTLST_insert_points(l, 1, 3, C.data()); // capacity 3 + 1 + 6
    l->num_points = 3;
    PNTLST_replace_points(l, 2, 2, cat({X, Y}).data());
    expect_report(QXSYS_INTERNAL, 0, "Too Many Points To Replace", 2);
    EXPECT_EQ(l->num_points, 3);
    EXPECT_EQ(in_use(l, 4), cat({A, B, X, Y}));
    PNTLST_free_structure(l);
}

TEST_F(PointLists, Copies)
{
    PNTLST *l = make_list(cat({A, B, C}));
    PNTLST_remove_points(l, 2, 1); // spare capacity
    PNTLST *copy = PNTLST_copy_structure(l);
    EXPECT_NE(copy->points, l->points);
    EXPECT_EQ(copy->num_points, 2);
    EXPECT_EQ(copy->max_points, 2);
    EXPECT_EQ(copy->dimension, 3);
    EXPECT_EQ(in_use(copy), cat({A, B}));
    EXPECT_EQ(PNTLST_copy_structure(nullptr), nullptr);

    int n = -1, dim = -1;
    double *array = PNTLST_copy_points(l, &n, &dim);
    EXPECT_EQ(n, 2);
    EXPECT_EQ(dim, 3);
    EXPECT_NE(array, l->points);
    EXPECT_EQ(Points(array, array + 6), cat({A, B}));
    SM_free(array);
    PNTLST_free_structure(copy);

    // An empty list copies to an empty list that owns nothing.
    PNTLST_remove_points(l, 0, 2);
    copy = PNTLST_copy_structure(l);
    EXPECT_EQ(copy->num_points, 0);
    EXPECT_EQ(copy->max_points, 0);
    EXPECT_EQ(copy->points, nullptr);
    PNTLST_free_structure(copy);
    PNTLST_free_structure(l);

    // Single points are copied as stored, homogeneous ones included.
    l = make_list({2, 4, 6, 2, 1, 1, 1, 0.5}, 4);
    double p[4] = {qxtest::kNaN, qxtest::kNaN, qxtest::kNaN, qxtest::kNaN};
    PNTLST_copy_single_point(l, 1, p);
    EXPECT_EQ(Points(p, p + 4), (Points{1, 1, 1, 0.5}));
    double q[4] = {qxtest::kNaN, qxtest::kNaN, qxtest::kNaN, qxtest::kNaN};
    PNTLST_copy_single_point(l, 2, q);
    EXPECT_EQ(qxsys_report_count(), 0);
    MACH__checking_level = 1;
    PNTLST_copy_single_point(l, 2, q);
    expect_report(QXSYS_INTERNAL, 0, "Invalid Point Position Given");
    PNTLST_copy_single_point(l, -1, q);
    expect_report(QXSYS_INTERNAL, 0, "Invalid Point Position Given", 2);
    EXPECT_TRUE(std::isnan(q[0]) && std::isnan(q[3])) << "nothing written for a bad position";
    PNTLST_free_structure(l);
}

TEST_F(PointLists, Distances)
{
    // Against the formula, bit for bit, on random 3-D and 4-D points.
    std::mt19937 gen(4101);
    std::uniform_real_distribution<double> u(-100.0, 100.0);
    for (int dim : {3, 4}) {
        Points v(static_cast<size_t>(6 * dim));
        for (double &x : v) x = u(gen);
        PNTLST *l = make_list(v, dim);
        for (int i = 0; i < 6; ++i) {
            for (int j = 0; j < 6; ++j) {
                const double *a = &v[static_cast<size_t>(i * dim)];
                const double *b = &v[static_cast<size_t>(j * dim)];
                double s = (a[0] - b[0]) * (a[0] - b[0]) + (a[1] - b[1]) * (a[1] - b[1]) +
                           (a[2] - b[2]) * (a[2] - b[2]);
                if (dim == 4) s += (a[3] - b[3]) * (a[3] - b[3]);
                EXPECT_EQ(PNTLST_calc_point_distance(l, i, j), std::sqrt(s)) << dim << i << j;
            }
            EXPECT_EQ(PNTLST_calc_point_distance(l, i, i), 0.0);
        }
        PNTLST_free_structure(l);
    }

    // The weight takes part; the points are not divided by it.
    PNTLST *l = make_list({1, 1, 1, 1, 1, 1, 1, 4}, 4);
    EXPECT_EQ(PNTLST_calc_point_distance(l, 0, 1), 3.0);

    EXPECT_EQ(PNTLST_calc_point_distance(l, 0, 2), 0.0);
    EXPECT_EQ(qxsys_report_count(), 0);
    MACH__checking_level = 1;
    for (auto [i, j] : {std::pair{0, 2}, {-1, 0}, {1, 2}, {2, 1}}) {
        qxsys_clear_reports();
        EXPECT_EQ(PNTLST_calc_point_distance(l, i, j), 0.0);
        expect_report(QXSYS_RAISE, QX_ERR_PNTLST_POSITION, "Invalid Point Position Given");
    }
    l->dimension = 0;
    EXPECT_EQ(PNTLST_calc_point_distance(l, 0, 1), 0.0);
    l->dimension = 4;
    PNTLST_free_structure(l);
}

TEST_F(PointLists, ConversionFrom4d)
{
    PNTLST *l = make_list({2, 4, 6, 2, 3, 3, 3, 3, -1, 0.5, 0.25, 0.5}, 4);
    PNTLST_convert_4d_to_3d(l);
    EXPECT_EQ(l->dimension, 3);
    EXPECT_EQ(l->max_points, 3) << "capacity is counted in points";
    EXPECT_EQ(in_use(l), (Points{1, 2, 3, 1, 1, 1, -2, 1, 0.5}));
    PNTLST_convert_4d_to_3d(l); // 3-D: nothing happens
    EXPECT_EQ(in_use(l), (Points{1, 2, 3, 1, 1, 1, -2, 1, 0.5}));
    PNTLST_free_structure(l);

    l = make_list({1, 2, 3, 4}, 2);
    PNTLST_convert_4d_to_3d(l);
    EXPECT_EQ(qxsys_report_count(), 0);
    MACH__checking_level = 1;
    PNTLST_convert_4d_to_3d(l);
    expect_report(QXSYS_INTERNAL, 0, "Dimension Of The Input Points Is Not Valid");
    EXPECT_EQ(l->dimension, 2);
    EXPECT_EQ(in_use(l), (Points{1, 2, 3, 4}));
    PNTLST_free_structure(l);
}

} // namespace
