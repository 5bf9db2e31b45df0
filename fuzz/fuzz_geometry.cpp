// fuzz_geometry.cpp — vectors (MC_, VEC2_, VEC3_, vunt2_, vunt3_, vcru3_), 2x2,
// 3x3 and 4x4 matrices and transforms (MTX2_, MTX3_, MTX4_), coordinate systems
// (CSYS_map_csys, MC_calc_csys_to_csys_transform), parametric lines and planes
// (FACET_, PLN3_, PNT3_), poles (bc_POLE_) and the box of a B-curve
// (bc_xyz_box) on arbitrary values: NaN, infinities, huge and tiny numbers,
// null and parallel vectors, outputs prefilled with NaN. Where the input meets
// a contract its promise is checked: unit results unit, builders that report
// success give ortho-normal matrices, repairs repair, inverses invert, angles
// stay in their ranges, a box holds the curve's points.
#include <algorithm>

#include "fuzz_args.h"

namespace
{

constexpr double kPi = 3.141592653589793;

using qxfuzz::Args, qxfuzz::bounded, qxfuzz::fail, qxfuzz::fill, qxfuzz::g_args;

double dot(const double *a, const double *b) { return qxfuzz::dot3(a, b); }

bool finite(const double *v, int n) { return qxfuzz::all_finite(v, n); }

double moderate(qxfuzz::Reader &in) { return in.moderate(256.0); }

// The range the unitizing routines assert (components below 1e19), and no
// component so small that the squared length loses its precision.
bool in_range(const double *v, int n)
{
    return std::all_of(v, v + n, [](double x) {
        return x == 0.0 || (std::fabs(x) < 1e19 && std::fabs(x) > 1e-140);
    });
}

bool ortho_normal(const double *m, int stride, double tol)
{
    for (int i = 0; i < 3; ++i) {
        const double *r = m + stride * i;
        if (!(std::fabs(dot(r, r) - 1.0) <= tol)) return false;
        for (int j = i + 1; j < 3; ++j)
            if (!(std::fabs(dot(r, m + stride * j)) <= tol)) return false;
    }
    return true;
}

// A matrix MTX3_ortho_normalize promises to repair: finite, not huge, and its X and Z
// rows (the rows it rebuilds from) either both long enough for their cross product
// to unitize at 1.0e-10, or one of them short enough for the roll/pitch/yaw rebuild.
bool repairable(const double *m, int stride)
{
    const double *x = m, *z = m + 2 * stride;
    if (!bounded(x, 3, 1e150) || !bounded(m + stride, 3, 1e150) || !bounded(z, 3, 1e150))
        return false;
    const double xx = dot(x, x), zz = dot(z, z);
    return std::min(xx, zz) <= 1e-28 || std::min(xx, zz) >= 1e-8;
}

// |u x v| / (|u| |v|), the sine of the angle between u and v (3 each).
double cross_sine(const double *u, const double *v)
{
    const double c[3] = {u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2],
                         u[0] * v[1] - u[1] * v[0]};
    return std::sqrt(dot(c, c) / (dot(u, u) * dot(v, v)));
}

void unit_check(const double *w, int n, const char *what)
{
    double s = 0.0;
    for (int k = 0; k < n; ++k) s += w[k] * w[k];
    if (!(std::fabs(s - 1.0) <= 1e-13)) fail(what);
}

void vectors(qxfuzz::Reader &in, Args &g, int which)
{
    double *a = g.a[0], *b = g.a[1], *c = g.a[2], *d = g.a[3];
    double *o = g.out[0], *o2 = g.out[1], *o3 = g.out[2];
    const double t = in.flag() ? in.real() : 1e-10;
    double len = std::nan("");
    int r = -7;
    switch (which) {
    case 0:
        MC_v_copy(a, o);
        MC_AmB(a, b, o);
        MC_ApB(a, b, o2);
        MC_aA(c[0], a, o3);
        MC_aApB(c[0], a, b, a);
        MC_AxB(c, d, o);
        (void)MC_A_dot_B(a, b);
        (void)MC_length(a);
        (void)MC_length2(a);
        (void)MC_dist(a, b);
        (void)MC_dist2(a, b);
        (void)MC_triple_product(a, b, c);
        break;
    case 1:
        (void)MC_determinant(a);
        MC_solve_3(a, o);
        break;
    case 2:
        MC_v_unit(a);
        break;
    case 3:
        r = MC_q_parallel(a, b) + MC_q_perp(a, b);
        if (finite(a, 3) && finite(b, 3)) {
            const double ang = MC_get_angle(a, b);
            if (std::fabs(dot(a, b)) <= 1.0 && !(ang >= 0.0 && ang <= kPi))
                fail("MC_get_angle: angle outside [0, pi]");
        }
        break;
    case 4:
        // A non-unit A with |Ax|, |Ay| <= 0.5 and Az = 0 divides by zero, unguarded.
        if (!(std::fabs(a[0]) <= 0.5 && std::fabs(a[1]) <= 0.5 && a[2] == 0.0)) MC_perp_vec(a, o);
        break;
    case 5:
        MC_proj_point_onto_line(a, b, c, o);
        (void)MC_q_point_on_line(a, b, c);
        MC_proj_point_onto_plane(a, b, d[0], o2);
        break;
    case 6:
        MC_perp_from_line_to_point(a, b, c, o);
        break;
    case 7:
        (void)MC_dist_lines(a, b, c, d);
        (void)MC_signed_dist_planes(a, c[0], b, c[1]);
        (void)MC_signed_dist_plane_axis(a, c[0], b, d);
        break;
    case 8:
        MC_axis_plane_x(a, b, c, d[0], o);
        break;
    case 9:
        r = VEC2_unitize(a, t, &len, o);
        if (r == 1 && in_range(a, 2)) unit_check(o, 2, "VEC2_unitize: result 1, W not unit");
        break;
    case 10:
        r = VEC3_unitize(a, t, &len, in.flag() ? a : o);
        if (r == 1) {
            const double *w = std::isnan(o[0]) ? a : o;
            if (std::isfinite(len) && len > 1e-140 && len < 1e19)
                unit_check(w, 3, "VEC3_unitize: result 1, W not unit");
        }
        if (r == 0 && !(len == 0.0)) fail("VEC3_unitize: failure without length 0");
        break;
    case 11:
        r = VEC2_is_parallel(a, b, t) + VEC3_is_parallel(a, b, t) + VEC2_is_perpendicular(a, b, t) +
            VEC3_is_perpendicular(a, b, t);
        if (r < 0 || r > 4) fail("VEC_is_*: flag not 0/1");
        break;
    case 12:
        r = VEC2_ask_perpendicular(a, o);
        if (r == 1 && bounded(a, 2, 1e150) && !(a[0] * o[0] + a[1] * o[1] == 0.0))
            fail("VEC2_ask_perpendicular: not perpendicular");
        r = VEC3_ask_perpendicular(a, o2);
        if (r == 1 && finite(a, 3) && bounded(a, 3, 1e150) && !(dot(a, o2) == 0.0))
            fail("VEC3_ask_perpendicular: not perpendicular");
        break;
    case 13: {
        const double ang = VEC3_angle_between(a, b, c);
        if (!(ang >= 0.0 && ang < 2.0 * kPi) && finite(a, 3) && finite(b, 3) && finite(c, 3) &&
            in_range(a, 3) && in_range(b, 3))
            fail("VEC3_angle_between: angle outside [0, 2pi)");
        break;
    }
    case 14:
        VEC3_make_trihedral(a, b, o, o2, o3);
        break;
    case 15: {
        double al = std::nan(""), be = std::nan("");
        r = VEC2_components(a, b, c, t, &al, &be);
        if (r == 0 && !(al == HUGE_VAL && be == HUGE_VAL))
            fail("VEC2_components: failure without +infinity");
        break;
    }
    case 16: {
        const int n = in.integer(0, 8);
        r = VEC2_ask_shortest_vector(n, g.a[0]);
        if (r < 0 || (n >= 1 && r >= n)) fail("VEC2_ask_shortest_vector: index outside");
        break;
    }
    case 17:
        vunt2_(a, &r, o);
        if (r == 1 && in_range(a, 2)) unit_check(o, 2, "vunt2_: flag 1, W not unit");
        vunt3_(a, &r, o2);
        if (r == 1 && in_range(a, 3)) unit_check(o2, 3, "vunt3_: flag 1, W not unit");
        break;
    default:
        vcru3_(a, b, &r, o);
        if (r == 1 && bounded(a, 3, 1e9) && bounded(b, 3, 1e9) && in_range(a, 3) && in_range(b, 3))
            unit_check(o, 3, "vcru3_: flag 1, W not unit");
        if (r == 0 && !(o[0] == 0.0 && o[1] == 0.0 && o[2] == 0.0))
            fail("vcru3_: failure without W = 0");
        break;
    }
}

void matrices(qxfuzz::Reader &in, Args &g, int which)
{
    double *a = g.a[0], *b = g.a[1], *c = g.a[2], *d = g.a[3];
    double *o = g.out[0];
    int r = -7;
    const bool tame = in_range(a, 16) && in_range(b, 16) && in_range(c, 16);
    switch (which) {
    case 0:
        r = MTX2_init(a, b, o);
        if (r == 1 && tame && finite(a, 2) && finite(b, 2) &&
            !(std::fabs(o[0] * o[0] + o[1] * o[1] - 1.0) <= 1e-13 &&
              std::fabs(o[2] * o[2] + o[3] * o[3] - 1.0) <= 1e-13))
            fail("MTX2_init: result 1, axes not unit");
        break;
    case 1:
    case 2:
    case 3:
    case 4:
    case 5: {
        if (which == 1)
            r = MTX3_init(a, b, o);
        else if (which == 2)
            r = MTX3_init_y_z(a, b, o);
        else if (which == 3)
            r = MTX3_init_x_y_z(a, b, c, o);
        else if (which == 4)
            r = MTX3_init_x(a, o);
        else
            r = MTX3_init_z(a, o);
        if (r == 1 && tame && finite(a, 3) && finite(b, 3) && !MTX3_is_ortho_normal(o))
            fail("MTX3_init*: result 1, matrix not ortho-normal");
        break;
    }
    case 6:
        MTX3_init_no_check(a, b, o);
        break;
    case 7:
        MTX3_rot_about_axis(c[0], a, o);
        if (std::isfinite(c[0]) && std::fabs(c[0]) < 1e6 && finite(a, 3) && in_range(a, 3) &&
            !MTX3_is_ortho_normal(o))
            fail("MTX3_rot_about_axis: not ortho-normal");
        break;
    case 8: {
        double roll = std::nan(""), pitch = std::nan(""), yaw = std::nan("");
        MTX3_ask_roll_pitch_yaw(a, &roll, &pitch, &yaw);
        if (finite(a, 9) && bounded(a, 9, 1e150) &&
            !(std::fabs(pitch) <= kPi / 2 + 1e-15 && std::fabs(roll) <= kPi + 1e-15 &&
              std::fabs(yaw) <= kPi + 1e-15))
            fail("MTX3_ask_roll_pitch_yaw: angle outside its range");
        break;
    }
    case 9:
        r = MTX3_is_ortho_normal(a) + MTX3_is_equal(a, b, c[0]) + MTX3_is_identity(a, c[0]);
        break;
    case 10:
    case 11:
        r = which == 10 ? MTX3_multiply(a, b, in.flag() ? a : o)
                        : MTX3_multiply_t(a, b, in.flag() ? b : o);
        break;
    case 12: {
        const bool fin = repairable(a, 3);
        r = MTX3_ortho_normalize(a);
        if (fin && !MTX3_is_ortho_normal(a))
            fail("MTX3_ortho_normalize: finite input not repaired");
        break;
    }
    case 13: {
        // Z = unit(X x Y) carries the rounding of the cross product over its
        // length: the check allows eps over the sine of the rows' angle.
        const double sine = cross_sine(a, a + 3);
        r = MTX3_fixup(a);
        // X parallel to Y leaves Z (and so Y) zero: the contract promises unit rows only.
        if (r == 1 && finite(a, 9) && tame && dot(a + 6, a + 6) != 0.0 && sine > 1e-6 &&
            !ortho_normal(a, 3, 1e-13 + 1e-15 / sine))
            fail("MTX3_fixup: result 1, matrix not ortho-normal");
        break;
    }
    case 14:
        MTX4_multiply(a, b, o);
        MTX4_multiply_t(a, b, in.flag() ? a : b);
        break;
    case 15: {
        r = MTX4_invert(a, in.flag() ? a : o);
        break;
    }
    case 16:
        r = MTX4_is_ortho_normal(a) + MTX4_is_equal(a, b, c[0]) + MTX4_is_identity(a, c[0]) +
            MTX4_is_equal_transform(a, b, c[0], c[1], c[2]);
        break;
    case 17: {
        const bool fin = repairable(a, 4);
        r = MTX4_ortho_normalize(a);
        if (fin && !MTX4_is_ortho_normal(a))
            fail("MTX4_ortho_normalize: finite input not repaired");
        break;
    }
    case 18:
        r = MTX4_fixup(a);
        break;
    case 19:
        MTX4_scaling(a, b, o);
        break;
    case 20:
    case 21: {
        r = which == 20 ? MTX4_rotation(a, b, c[0], o) : MTX4_mirror(a, b, o);
        if (r == 0 && finite(a, 3) && finite(b, 3) && std::isfinite(c[0]) && bounded(a, 3, 1e6) &&
            std::fabs(c[0]) < 1e6 && dot(b, b) > 1e-18 && in_range(b, 3)) {
            if (!ortho_normal(o, 4, 1e-12))
                fail("MTX4_rotation/mirror: orientation not ortho-normal");
            // The transform is invertible and its inverse undoes it.
            double inv[16], p[16];
            if (MTX4_invert(o, inv) != 0) fail("MTX4_invert: a rotation not inverted");
            MTX4_multiply(o, inv, p);
            for (int i = 0; i < 4; ++i)
                for (int j = 0; j < 4; ++j)
                    if (!(std::fabs(p[4 * i + j] - (i == j ? 1.0 : 0.0)) <=
                          1e-9 * (1.0 + dot(a, a))))
                        fail("MTX4_invert: T^-1 T is not the identity");
        }
        break;
    }
    case 22:
        r = MTX4_csys_to_csys(a, b, c, d, g.a[4], g.a[5], o);
        if (r != 0 && r != 1) fail("MTX4_csys_to_csys: result not 0/1");
        break;
    case 23: {
        r = CSYS_map_csys(a, b, in.flag() ? a : o);
        break;
    }
    case 24: {
        MC_calc_csys_to_csys_transform(a, b, o);
        MC_apply_transform_to_point(o, c, c);
        MC_apply_transform_to_vector(o, d, d);
        break;
    }
    default: {
        // CSYS_map_csys on ortho-normal records: success gives an ortho-normal orientation.
        double ra[12], rb[12], res[12];
        std::copy(a, a + 3, ra);
        std::copy(b, b + 3, rb);
        if (MTX3_init(c, d, ra + 3) != 1 || MTX3_init(d, c, rb + 3) != 1) break;
        r = CSYS_map_csys(ra, rb, res);
        if (r == 1 && tame && finite(c, 3) && finite(d, 3) && !MTX3_is_ortho_normal(res + 3))
            fail("CSYS_map_csys: result 1, orientation not ortho-normal");
        break;
    }
    }
    (void)r;
}

void facets(qxfuzz::Reader &in, Args &g, int which)
{
    double *a = g.a[0], *b = g.a[1], *c = g.a[2], *d = g.a[3];
    double *o = g.out[0], *o2 = g.out[1];
    double t = std::nan(""), t2 = std::nan("");
    int r = -7;
    switch (which) {
    case 0:
        FACET_points_to_param_line(a, b, in.integer(0, 2), o, o2);
        FACET_point_on_param_line(o, o2, c[0], d);
        break;
    case 1:
        r = FACET_line_int_plane(a, b, c, d[0], o, &t);
        if (r == 0 &&
            (std::isnan(t) && finite(a, 3) && finite(b, 3) && finite(c, 3) && std::isfinite(d[0]) &&
             bounded(a, 3, 1e100) && bounded(b, 3, 1e100) && bounded(c, 3, 1e100)))
            fail("FACET_line_int_plane: result 0, t not written");
        break;
    case 2:
        (void)FACET_point_plane_dist(a, b, c[0]);
        r = FACET_point_plane_proj(a, b, c[0], o, &t);
        break;
    case 3:
        (void)FACET_line_point_dist(a, b, c);
        (void)FACET_line_line_dist(a, b, c, d);
        break;
    case 4:
        FACET_line_line_closest_point(a, b, c, d, &t, &t2);
        break;
    case 5: {
        const int unit = in.integer(0, 2);
        // With is_unit 0 the division by a tiny non-zero D.D is unguarded (infinity, no UB).
        FACET_point_line_proj(a, b, c, unit, o, &t);
        break;
    }
    case 6: {
        const double ang = FACET_compute_undirected_angle(a, b);
        if (finite(a, 3) && finite(b, 3) && bounded(a, 3, 1e100) && bounded(b, 3, 1e100) &&
            !(ang >= 0.0 && ang <= kPi))
            fail("FACET_compute_undirected_angle: outside [0, pi]");
        FACET_ask_point_on_plane(a, c[0], o);
        break;
    }
    case 7:
        r = FACET_plane_plane_int(a, b[0], c, d[0], o, o2);
        if (r < 0 || r > 2) fail("FACET_plane_plane_int: result outside 0..2");
        if (std::isnan(o2[0]) && bounded(a, 3, 1e150) && bounded(c, 3, 1e150))
            fail("FACET_plane_plane_int: D not written");
        break;
    case 8: {
        double plane[6];
        std::copy(a, a + 3, plane);
        std::copy(b, b + 3, plane + 3);
        double other[6];
        std::copy(c, c + 6, other);
        r = PLN3_is_point_on_plane(plane, d, g.a[4][0]) +
            PLN3_is_coincident(plane, other, g.a[4][1], g.a[4][2]) +
            PLN3_is_segment_intersecting(plane, c, d, g.a[4][3]);
        if (r < 0 || r > 3) fail("PLN3_*: flag not 0/1");
        break;
    }
    default:
        r = PNT3_is_colinear(a, b, c, d[0]);
        if (r != 0 && r != 1) fail("PNT3_is_colinear: flag not 0/1");
        break;
    }
}

void poles(qxfuzz::Reader &in, Args &g, int which)
{
    double *a = g.a[0], *b = g.a[1], *c = g.a[2];
    double *o = g.out[0];
    int r = -7;
    switch (which) {
    case 0:
        r = bc_POLE_equal_in_4d(a, b) + bc_POLE_equal_in_3d(a, b);
        (void)bc_POLE_3d_distance(a, b, o);
        break;
    case 1:
        bc_POLE_translate_pole(a, b, o);
        bc_POLE_project_to_line(a, b, c, g.out[1]);
        break;
    default: {
        // n poles; the routines may read pole 0 and pole ceil(n/2) (pole 1 for n = 1).
        const int n = in.integer(-3, 24);
        std::vector<double> p(static_cast<std::size_t>(4 * std::max(n, 2)));
        for (std::size_t k = 0; k < p.size(); ++k) p[k] = g.a[k / 16 % 8][k % 16];
        if (n > 0) bc_POLE_average_in_3d(p.data(), n, o);
        r = bc_POLE_identical_poles_in_3d(p.data(), n);
        if (r != 0 && r != 1) fail("bc_POLE_identical_poles_in_3d: flag not 0/1");
        break;
    }
    }
}

// The 3-D point of the rational B-curve at t by de Boor on homogeneous poles,
// the limit from the left when left is set (a knot of multiplicity order cuts
// the curve); false when t has no non-empty span.
bool curve_point(const BC_CURVE &cv, double t, bool left, double p[3])
{
    const int k = cv.order, deg = k - 1;
    const double *u = cv.knots;
    int s = -1;
    for (int i = deg; i < cv.num_poles; ++i)
        if (u[i] < u[i + 1] && (left ? u[i] < t && t <= u[i + 1] : u[i] <= t && t < u[i + 1]))
            s = i;
    if (s < 0) return false;
    double dd[8][4];
    for (int j = 0; j <= deg; ++j)
        for (int m = 0; m < 4; ++m) dd[j][m] = cv.poles[4 * (j + s - deg) + m];
    for (int lev = 1; lev <= deg; ++lev)
        for (int j = deg; j >= lev; --j) {
            const double lo = u[j + s - deg], hi = u[j + 1 + s - lev];
            const double al = (t - lo) / (hi - lo);
            for (int m = 0; m < 4; ++m) dd[j][m] = (1.0 - al) * dd[j - 1][m] + al * dd[j][m];
        }
    for (int m = 0; m < 3; ++m) p[m] = dd[deg][m] / dd[deg][3];
    return true;
}

void box(qxfuzz::Reader &in)
{
    const int order = in.integer(0, 7);
    const int num = std::max(order, 0) + in.integer(-1, 10);
    const int nk = std::max(num + order, 1);
    std::vector<double> knots(static_cast<std::size_t>(nk));
    const bool tame = in.flag();
    for (double &k : knots) k = tame ? in.integer(0, 12) * 0.25 : in.real();
    if (in.flag()) std::sort(knots.begin(), knots.end(), [](double x, double y) { return x < y; });
    std::vector<double> poles(static_cast<std::size_t>(4 * std::max(num, 1)));
    const bool positive = in.flag();
    for (std::size_t i = 0; i < poles.size(); ++i) {
        if (i % 4 == 3)
            poles[i] = positive ? 0.25 + in.integer(0, 15) * 0.25 : in.real();
        else
            poles[i] = tame ? moderate(in) : in.real();
    }
    BC_CURVE cv{poles.data(), knots.data(), num, order, in.integer(0, 2)};
    double range[2] = {tame ? in.integer(0, 12) * 0.25 : in.real(),
                       tame ? in.integer(0, 12) * 0.25 : in.real()};
    if (in.flag()) std::swap(range[0], range[1]);
    double bx[6];
    std::fill(bx, bx + 6, std::nan(""));
    qxfuzz::arm_fault(in);
    int r = -7;
    if (!qxfuzz::call([&] { r = bc_xyz_box(&cv, in.flag() ? range : nullptr, bx); })) return;
    if (r < BC_BOX_OK || r > BC_BOX_NO_MEMORY) fail("bc_xyz_box: result outside its codes");
    if (r != BC_BOX_OK) {
        if (!std::isnan(bx[0])) fail("bc_xyz_box: box written on failure");
        return;
    }
    if (!finite(bx, 6)) fail("bc_xyz_box: box not finite");
    for (int m = 0; m < 3; ++m)
        if (!(bx[m] <= bx[m + 3])) fail("bc_xyz_box: min above max");
    if (!(tame && positive && order >= 1 && order <= 7)) return;
    double lo = knots[static_cast<std::size_t>(order - 1)];
    double hi = knots[static_cast<std::size_t>(num)];
    if (cv.full_range == 0) {
        lo = std::max(lo, range[0]);
        hi = std::min(hi, range[1]);
    }
    double scale = 1.0;
    for (double x : bx) scale = std::max(scale, std::fabs(x));
    for (int s = 0; s <= 16; ++s) {
        const double t = lo + (hi - lo) * s / 16.0;
        double p[3];
        // An empty range at a cut of the curve may be either side's point: not checked.
        if (lo == hi || !curve_point(cv, t, s == 16, p)) continue;
        for (int m = 0; m < 3; ++m)
            if (!(p[m] >= bx[m] - 1e-12 * scale && p[m] <= bx[m + 3] + 1e-12 * scale)) {
                std::fprintf(stderr, "order %d poles %d full %d range %.17g %.17g t %.17g\nknots",
                             order, num, cv.full_range, range[0], range[1], t);
                for (double k : knots) std::fprintf(stderr, " %.17g", k);
                std::fprintf(stderr, "\npoles");
                for (double x : poles) std::fprintf(stderr, " %.17g", x);
                std::fprintf(stderr, "\npoint %.17g %.17g %.17g box", p[0], p[1], p[2]);
                for (double x : bx) std::fprintf(stderr, " %.17g", x);
                std::fprintf(stderr, "\n");
                qxfuzz::finding("bc_xyz_box: a point of the curve outside the box");
            }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    qxfuzz::Reader in(data, size);
    qxfuzz::begin(in.integer(0, 1));
    if (in.flag()) qxfuzz::open_session(in);
    const int family = in.integer(0, 4);
    const int which = in.integer(0, 30);
    if (family == 4) {
        box(in);
    } else {
        Args &g = g_args;
        fill(in, g);
        qxfuzz::call([&] {
            switch (family) {
            case 0:
                vectors(in, g, which % 19);
                break;
            case 1:
                matrices(in, g, which % 26);
                break;
            case 2:
                facets(in, g, which % 10);
                break;
            default:
                poles(in, g, which % 3);
                break;
            }
        });
    }
    qxfuzz::end();
    return 0;
}
