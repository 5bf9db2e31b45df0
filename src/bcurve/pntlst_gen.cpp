// pntlst_gen.cpp — point lists: allocation, growth, insertion, removal and
// replacement of points, copies, distances, conversion from homogeneous 4-D
// to 3-D, freeing.
//
// Growth differs on purpose between insertion (count + n + 2 x capacity) and
// appending (one point more), and insertion moves the tail by one slot
// whatever the number inserted; callers rely on both. Moves use memmove.
#define QX_SOURCE_FILE "pntlst_gen"
#include "frame/check.h"

#include <cstring>

#include <qxmath/frame.h>
#include <qxmath/pntlst.h>

#include "bcurve/bcurve_internal.h"

namespace
{

double *slot(const PNTLST *list, int i)
{
    return list->points + static_cast<std::ptrdiff_t>(i) * list->dimension;
}

std::size_t bytes_of(int n, int dimension) { return qx_doubles(n, dimension) * sizeof(double); }

// Points the array is known to hold: its capacity, or the count for an array
// the list does not own.
int room(const PNTLST *list) { return list->max_points > 0 ? list->max_points : list->num_points; }

} // namespace

extern "C" {

PNTLST *PNTLST_allocate_struct(int dimension, int max_points)
{
    if (max_points < 1) return nullptr;
    PNTLST *list = static_cast<PNTLST *>(SM_alloc(sizeof(PNTLST)));
    if (list == nullptr) return nullptr;
    list->points = nullptr;
    list->num_points = 0;
    list->max_points = 0;
    list->dimension = dimension;
    // SM_realloc of NULL allocates.
    if (PNTLST_allocate_points(list, max_points) == nullptr &&
        bytes_of(max_points, dimension) != 0) {
        SM_free(list);
        return nullptr;
    }
    return list;
}

double *PNTLST_allocate_points(PNTLST *list, int max_points)
{
    if (list == nullptr) return nullptr;
    const std::size_t bytes = bytes_of(max_points, list->dimension);
    double *points = static_cast<double *>(SM_realloc(list->points, bytes));
    // A host that refuses the memory and returns leaves the list as it was
    // (SM_realloc keeps the old block then), so it stays usable and freeable.
    if (points == nullptr && bytes != 0) return nullptr;
    list->points = points;
    list->max_points = max_points;
    return list->points;
}

PNTLST *PNTLST_create_from_list_of_pts(double *points, int num_points, int dimension)
{
    PNTLST *list = static_cast<PNTLST *>(SM_alloc(sizeof(PNTLST)));
    if (list == nullptr) return nullptr;
    list->points = points;
    list->num_points = num_points;
    list->max_points = num_points;
    list->dimension = dimension;
    return list;
}

PNTLST *PNTLST_get_from_func(int num_points, int dimension, PNTLST_fill_fn fill)
{
    PNTLST *list = PNTLST_allocate_struct(dimension, num_points);
    if (list == nullptr) return nullptr;
    list->num_points = num_points;
    if (fill != nullptr) fill(num_points, list->points);
    return list;
}

void PNTLST_insert_points(PNTLST *list, int num_points, int position, const double *points)
{
    if (list == nullptr || position < 0 || position > list->num_points) return;
    if (list->max_points < list->num_points + num_points) {
        if (PNTLST_allocate_points(list, list->num_points + num_points + 2 * list->max_points) ==
            nullptr)
            return;
    }
    // One slot, whatever num_points is; clipped to the array (only n < 1 on
    // a full list would reach past it).
    int moved = list->num_points - position;
    if (position + 1 + moved > room(list)) moved = room(list) - position - 1;
    if (moved > 0) {
        std::memmove(slot(list, position + 1), slot(list, position),
                     bytes_of(moved, list->dimension));
    }
    if (num_points > 0) {
        std::memmove(slot(list, position), points, bytes_of(num_points, list->dimension));
    }
    list->num_points += num_points;
    if (list->num_points < 0) list->num_points = 0;
}

void PNTLST_remove_points(PNTLST *list, int position, int num_points)
{
    if (list == nullptr) return;
    if (num_points == list->num_points) {
        list->num_points = 0;
        return;
    }
    QX_CHECK(num_points <= list->num_points, "Too Many Points To Remove");
    if (position < 0 || num_points < 0 || position + num_points > list->num_points) return;
    const int moved = list->num_points - position - num_points;
    if (moved > 0) {
        std::memmove(slot(list, position), slot(list, position + num_points),
                     bytes_of(moved, list->dimension));
    }
    list->num_points -= num_points;
}

void PNTLST_replace_points(PNTLST *list, int num_points, int position, const double *points)
{
    if (list == nullptr) return;
    QX_CHECK(num_points + position <= list->num_points, "Too Many Points To Replace");
    if (position < 0 || num_points < 1 || position + num_points > room(list)) return;
    std::memmove(slot(list, position), points, bytes_of(num_points, list->dimension));
}

void PNTLST_concat_one_point(PNTLST *list, const double *point)
{
    if (list == nullptr) return;
    // A list that does not own its array (capacity 0) is full too.
    if (list->max_points <= list->num_points &&
        PNTLST_allocate_points(list, list->num_points + 1) == nullptr)
        return;
    std::memmove(slot(list, list->num_points), point, bytes_of(1, list->dimension));
    list->num_points += 1;
}

double *PNTLST_copy_points(const PNTLST *list, int *num_points, int *dimension)
{
    if (list == nullptr) {
        *num_points = 0;
        *dimension = 0;
        return nullptr;
    }
    const std::size_t bytes = bytes_of(list->num_points, list->dimension);
    double *copy = static_cast<double *>(SM_alloc(bytes));
    if (copy != nullptr && bytes != 0) std::memcpy(copy, list->points, bytes);
    *num_points = list->num_points;
    *dimension = list->dimension;
    return copy;
}

PNTLST *PNTLST_copy_structure(const PNTLST *list)
{
    if (list == nullptr) return nullptr;
    PNTLST *copy = static_cast<PNTLST *>(SM_alloc(sizeof(PNTLST)));
    if (copy == nullptr) return nullptr;
    copy->points = nullptr;
    copy->num_points = list->num_points > 0 ? list->num_points : 0;
    copy->max_points = copy->num_points; // 0, with no array, for an empty list
    copy->dimension = list->dimension;
    if (copy->num_points > 0) {
        const std::size_t bytes = bytes_of(list->num_points, list->dimension);
        copy->points = static_cast<double *>(SM_alloc(bytes));
        if (copy->points == nullptr && bytes != 0) {
            // The host refused and returned: no list claiming points it lacks.
            SM_free(copy);
            return nullptr;
        }
        if (bytes != 0) std::memcpy(copy->points, list->points, bytes);
    }
    return copy;
}

void PNTLST_copy_single_point(const PNTLST *list, int position, double *point)
{
    if (list == nullptr) return;
    const bool valid = position >= 0 && position <= list->num_points - 1;
    QX_CHECK(valid, "Invalid Point Position Given");
    if (!valid) return;
    std::memmove(point, slot(list, position), bytes_of(1, list->dimension));
}

double PNTLST_calc_point_distance(const PNTLST *list, int position1, int position2)
{
    if (list == nullptr) return 0.0;
    const int n = list->num_points;
    const bool valid = position1 >= 0 && position1 < n && position2 >= 0 && position2 < n;
    QX_CHECK_RAISE(valid, QX_ERR_PNTLST_POSITION, "Invalid Point Position Given");
    if (!valid || list->dimension < 1) return 0.0;
    return qx_point_distance(slot(list, position1), slot(list, position2), list->dimension);
}

void PNTLST_convert_4d_to_3d(PNTLST *list)
{
    if (list == nullptr || list->dimension == 3) return;
    QX_CHECK(list->dimension == 4, "Dimension Of The Input Points Is Not Valid");
    if (list->dimension != 4) return;
    double *p = list->points;
    // The write (stride 3) never overtakes the read (stride 4).
    for (int i = 0; i < list->num_points; ++i) {
        const double *src = p + 4 * static_cast<std::ptrdiff_t>(i);
        double *dst = p + 3 * static_cast<std::ptrdiff_t>(i);
        const double x = src[0], y = src[1], z = src[2], w = src[3];
        dst[0] = x / w;
        dst[1] = y / w;
        dst[2] = z / w;
    }
    list->dimension = 3;
}

void PNTLST_free_structure(PNTLST *list)
{
    if (list == nullptr) return;
    if (list->max_points != 0) SM_free(list->points);
    SM_free(list);
}

void PNTLST_free_all_but_points(PNTLST *list) { SM_free(list); }

} // extern "C"
