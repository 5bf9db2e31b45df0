// Random sequences of edits on defining-data records, each step checked
// against a model of what the record must hold (points, the point of each
// slope and curvature, their types, curvatures exactly, slope directions)
// and against the record's invariants: one parameter per point, strictly
// increasing; slopes and curvatures in point order, one per point, each
// parameter that of its point; type arrays as long as the vector lists;
// lists released when empty; a periodic record's last point a copy of its
// first, with nothing tied to it; weights exactly on least-squares records.
// Every edit is valid, so nothing may be reported at checking level 1, and
// every sequence ends with the host's live blocks back where they were.
#include <cmath>
#include <cstring>
#include <map>
#include <random>
#include <vector>

#include "bcurve/bcurve_internal.h"
#include "support/qx_test.h"

namespace
{

using Doubles = std::vector<double>;

struct Entry {
    double v[3];
    int type;
};

// What the record must hold. Points are stored coordinates (homogeneous
// for dimension 4); a periodic record's closing copy is not in `pts`.
// Slopes and curvatures are keyed by point index; slope vectors are
// compared by direction only (parameter changes rescale them).
struct Model {
    int dim = 3;
    std::vector<Doubles> pts;
    bool periodic = false;
    bool ls = false;
    int order = 4;
    std::map<int, Entry> slopes, crvs;

    int stored() const { return static_cast<int>(pts.size()) + (periodic ? 1 : 0); }
    int distinct() const { return static_cast<int>(pts.size()); }
    const Doubles &point(int i) const { return pts[static_cast<size_t>(i) % pts.size()]; }
};

// Shifts the keys of a map: those in [first, first + k) are dropped, those
// at or after first + k move by delta.
void shift(std::map<int, Entry> &m, int first, int k, int delta)
{
    std::map<int, Entry> out;
    for (const auto &[p, e] : m) {
        if (p >= first && p < first + k) continue;
        out[p >= first + k ? p + delta : p] = e;
    }
    m.swap(out);
}

double norm3(const double *v) { return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]); }

class RandomEdits : public qxtest::QxTest
{
  protected:
    std::mt19937 rng{20240611u};
    int op = -1; // the last edit made, for the failure messages

    double uniform(double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); }
    int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }

    Doubles random_point(int dim)
    {
        Doubles p = {uniform(-10, 10), uniform(-10, 10), uniform(-10, 10)};
        if (dim == 4) {
            const double w = uniform(0.5, 2.0);
            for (double &c : p) c *= w;
            p.push_back(w);
        }
        return p;
    }
    Entry random_vector()
    {
        Entry e{{uniform(-3, 3), uniform(-3, 3), uniform(-3, 3)}, pick(0, 5)};
        if (norm3(e.v) < 0.1) e.v[0] += 1.0;
        return e;
    }

    BCDF *create(Model &m)
    {
        m = Model{};
        m.dim = pick(0, 3) == 0 ? 4 : 3;
        const int n = pick(1, 8);
        Doubles all;
        for (int i = 0; i < n; ++i) {
            m.pts.push_back(random_point(m.dim));
            all.insert(all.end(), m.pts.back().begin(), m.pts.back().end());
        }
        m.ls = pick(0, 4) == 0;
        double *a = static_cast<double *>(SM_alloc(all.size() * sizeof(double)));
        std::memcpy(a, all.data(), all.size() * sizeof(double));
        return BCDF_create_df_from_pts(a, n, m.dim, m.ls ? 1 : 0);
    }

    // The record against the model and the invariants.
    static void verify(const BCDF *df, const Model &m, int step)
    {
        SCOPED_TRACE(step);
        ASSERT_NE(df->points, nullptr);
        const int n = df->points->num_points;
        ASSERT_EQ(n, m.stored());
        ASSERT_EQ(df->points->dimension, m.dim);
        ASSERT_EQ(df->periodicity, m.periodic ? 1 : 0);
        for (int i = 0; i < n; ++i) {
            const Doubles &e = m.point(i);
            ASSERT_EQ(Doubles(df->points->points + i * m.dim, df->points->points + (i + 1) * m.dim),
                      e)
                << i;
        }
        ASSERT_NE(df->params, nullptr);
        ASSERT_EQ(df->params->num_points, n);
        const double *t = df->params->points;
        EXPECT_EQ(t[0], 0.0);
        for (int i = 1; i < n; ++i) ASSERT_GT(t[i], t[i - 1]) << i;
        if (m.ls) {
            ASSERT_NE(df->weights, nullptr);
            EXPECT_EQ(df->weights->num_points, n);
        } else {
            EXPECT_EQ(df->weights, nullptr);
        }
        verify_set(df, df->slopes, df->slope_params, df->slope_types, m.slopes, false);
        verify_set(df, df->crvatrs, df->crvatr_params, df->crvatr_types, m.crvs, true);
    }

    static void verify_set(const BCDF *df, const PNTLST *vec, const PNTLST *par, const int *types,
                           const std::map<int, Entry> &model, bool exact)
    {
        if (model.empty()) {
            EXPECT_EQ(vec, nullptr);
            EXPECT_EQ(par, nullptr);
            EXPECT_EQ(types, nullptr);
            return;
        }
        ASSERT_NE(vec, nullptr);
        ASSERT_NE(par, nullptr);
        ASSERT_NE(types, nullptr);
        const int count = static_cast<int>(model.size());
        ASSERT_EQ(vec->num_points, count);
        ASSERT_EQ(par->num_points, count);
        ASSERT_EQ(vec->dimension, 3);
        ASSERT_GE(SM_length(types), count * sizeof(int));
        const double *t = df->params->points;
        int i = 0;
        for (const auto &[p, e] : model) {
            ASSERT_LT(p, df->points->num_points - (df->periodicity == 1 ? 1 : 0));
            EXPECT_LE(std::fabs(par->points[i] - t[p]), 1.0e-10) << i;
            if (i > 0) {
                EXPECT_GT(par->points[i], par->points[i - 1]);
            }
            EXPECT_EQ(types[i], e.type) << i;
            const double *v = vec->points + 3 * i;
            if (exact) {
                EXPECT_EQ(Doubles(v, v + 3), Doubles(e.v, e.v + 3)) << i;
            } else if (norm3(e.v) > 0.0) { // an added slope may be zero
                const double c[3] = {v[1] * e.v[2] - v[2] * e.v[1], v[2] * e.v[0] - v[0] * e.v[2],
                                     v[0] * e.v[1] - v[1] * e.v[0]};
                const double scale = norm3(v) * norm3(e.v);
                EXPECT_LE(norm3(c), 1.0e-9 * scale) << i;
                EXPECT_GT(v[0] * e.v[0] + v[1] * e.v[1] + v[2] * e.v[2], 0.0) << i;
            }
            ++i;
        }
    }

    // One random edit, applied to the record and to the model.
    void step(BCDF *&df, Model &m)
    {
        const int n = m.stored(), d = m.distinct();
        op = pick(0, 21);
        switch (op) {
        case 0: { // insert a point
            const int pos = pick(0, m.periodic ? d : n);
            const Doubles p = random_point(m.dim);
            BCDF_insert_defining_point(df, pos, p.data());
            shift(m.slopes, pos, 0, 1);
            shift(m.crvs, pos, 0, 1);
            m.pts.insert(m.pts.begin() + pos, p);
            break;
        }
        case 1: { // remove points
            if (d < 2) break;
            const int count = pick(1, d - 1), pos = pick(0, d - count);
            BCDF_remove_defining_points(df, pos, count);
            shift(m.slopes, pos, count, -count);
            shift(m.crvs, pos, count, -count);
            m.pts.erase(m.pts.begin() + pos, m.pts.begin() + pos + count);
            break;
        }
        case 2: { // move a point
            const int pos = pick(0, n - 1);
            const Doubles p = random_point(m.dim);
            BCDF_replace_defining_point(df, pos, p.data());
            m.pts[static_cast<size_t>(pos % d)] = p;
            break;
        }
        case 3: { // set a slope
            const int p = pick(0, n - 1);
            const Entry e = random_vector();
            BCDF_change_slope(df, p, e.v, e.type);
            m.slopes[p % d] = e;
            break;
        }
        case 4: { // set a curvature
            const int p = pick(0, n - 1);
            const Entry e = random_vector();
            BCDF_change_curvature(df, p, e.v, e.type);
            m.crvs[p % d] = e;
            break;
        }
        case 5: { // remove slopes, with the curvatures at their points
            const int ns = static_cast<int>(m.slopes.size());
            if (ns == 0) break;
            const int count = pick(1, ns), pos = pick(0, ns - count);
            BCDF_remove_slopes(df, pos, count);
            auto it = std::next(m.slopes.begin(), pos);
            for (int k = 0; k < count; ++k) {
                m.crvs.erase(it->first);
                it = m.slopes.erase(it);
            }
            break;
        }
        case 6: { // remove curvatures
            const int nc = static_cast<int>(m.crvs.size());
            if (nc == 0) break;
            const int count = pick(1, nc), pos = pick(0, nc - count);
            BCDF_remove_curvatures(df, pos, count);
            auto it = std::next(m.crvs.begin(), pos);
            for (int k = 0; k < count; ++k) it = m.crvs.erase(it);
            break;
        }
        case 7:
        case 8: { // several slopes or curvatures at once
            const bool slopes = pick(0, 1) == 0;
            const int k = pick(0, 4);
            std::vector<int> points, types;
            Doubles vectors;
            for (int i = 0; i < k; ++i) {
                const Entry e = random_vector();
                points.push_back(pick(0, n - 1));
                types.push_back(e.type);
                vectors.insert(vectors.end(), e.v, e.v + 3);
                (slopes ? m.slopes : m.crvs)[points.back() % d] = e;
            }
            if (slopes) {
                BCDF_update_slopes(df, k, points.data(), vectors.data(), types.data());
            } else {
                BCDF_update_curvatures(df, k, points.data(), vectors.data(), types.data());
            }
            break;
        }
        case 9: { // end tangents
            const Entry a = random_vector(), b = random_vector();
            const bool start = pick(0, 1) == 1, end = pick(0, 1) == 1;
            BCDF_update_end_slopes(df, start ? a.v : nullptr, a.type, end ? b.v : nullptr, b.type);
            if (start) m.slopes[0] = a;
            if (end) m.slopes[(n - 1) % d] = b;
            break;
        }
        case 10: { // slopes where curvatures need them
            BCDF_add_needed_slopes(df);
            for (const auto &[p, e] : m.crvs) {
                if (m.slopes.count(p) != 0) continue;
                int s = -1;
                ASSERT_EQ(BCDF_slope_at_point(df, p, &s), 1);
                Entry added{{0, 0, 0}, 0};
                std::memcpy(added.v, df->slopes->points + 3 * s, sizeof added.v);
                EXPECT_EQ(df->slope_types[s], 0);
                EXPECT_LE(
                    std::fabs(added.v[0] * e.v[0] + added.v[1] * e.v[1] + added.v[2] * e.v[2]),
                    1.0e-7);
                m.slopes[p] = added;
            }
            break;
        }
        case 11: { // open or close
            if (m.ls || d < 2) break;
            BCDF_toggle_periodicity(df);
            m.periodic = !m.periodic;
            break;
        }
        case 12: // chord-length parameters again
            if (n >= 2) BCDF_add_params(df, nullptr);
            break;
        case 13: { // normalise and back
            if (n < 2) break;
            if (pick(0, 1) == 0) {
                BCDF_unnormalize(df, BCDF_normalize(df));
            } else {
                const double last = BCDF_normalize_parameters(df);
                EXPECT_EQ(df->params->points[n - 1], 1.0);
                BCDF_unnormalize_parameters(df, last);
            }
            break;
        }
        case 14: { // to least squares
            // (4-D points get new parameters, and a single point's zero last
            // parameter would scale the slopes by 0 / 0.)
            if (m.periodic || m.ls || n < 2) break;
            switch (pick(0, 2)) {
            case 0:
                BCDF_convert_to_least_squares(df);
                break;
            case 1:
                BCDF_change_number_of_segments(df, pick(0, 3));
                break;
            default:
                BCDF_change_tolerance(df, uniform(0.0, 1.0));
                break;
            }
            to_3d(m);
            m.ls = true;
            m.crvs.clear();
            for (auto it = m.slopes.begin(); it != m.slopes.end();) {
                const bool end = it->first == 0 || it->first == d - 1;
                it = (m.order < 3 || !end) ? m.slopes.erase(it) : std::next(it);
            }
            break;
        }
        case 15: // the host drops the weights
            if (!m.ls) break;
            PNTLST_free_structure(df->weights);
            df->weights = nullptr;
            m.ls = false;
            break;
        case 16: { // replace by index
            if (!m.slopes.empty()) {
                const int i = pick(0, static_cast<int>(m.slopes.size()) - 1);
                const Entry e = random_vector();
                BCDF_replace_slope(df, i, e.v, e.type);
                std::next(m.slopes.begin(), i)->second = e;
            }
            if (!m.crvs.empty()) {
                const int i = pick(0, static_cast<int>(m.crvs.size()) - 1);
                const Entry e = random_vector();
                BCDF_replace_curvature(df, i, e.v, e.type);
                std::next(m.crvs.begin(), i)->second = e;
            }
            break;
        }
        case 17:
            if (pick(0, 1) == 0) {
                BCDF_unitize_slopes(df);
            } else {
                BCDF_scale_slopes(df, uniform(0.1, 10.0));
            }
            break;
        case 18: // least-squares slopes
            BCDF_make_least_squares_slopes(df);
            for (auto it = m.slopes.begin(); it != m.slopes.end();) {
                const bool keep =
                    m.order >= 3 && !m.periodic && (it->first == 0 || it->first == d - 1);
                if (!keep) m.crvs.erase(it->first);
                it = keep ? std::next(it) : m.slopes.erase(it);
            }
            break;
        case 19: // 4-D to 3-D, or an order change
            if (m.dim == 4 && pick(0, 1) == 0) {
                BCDF_convert_4d_to_3d(df);
                to_3d(m);
            } else {
                m.order = pick(2, 6);
                BCDF_change_order(df, m.order);
            }
            break;
        case 20: { // a copy must equal the record; keep working on the copy
            BCDF *copy = BCDF_copy_structure(df);
            BCDF_free_structure(df);
            df = copy;
            break;
        }
        default: { // a weight
            if (!m.ls) break;
            const double w = uniform(0.0, 1.0);
            BCDF_replace_weight(df, pick(0, n - 1), &w);
            break;
        }
        }
    }

    static void to_3d(Model &m)
    {
        if (m.dim != 4) return;
        for (Doubles &p : m.pts) p = {p[0] / p[3], p[1] / p[3], p[2] / p[3]};
        m.dim = 3;
    }
};

TEST_F(RandomEdits, InvariantsHoldAfterEveryEdit)
{
    MACH__checking_level = 1; // valid edits report nothing
    const size_t live = qxsys_live_blocks();
    for (int sequence = 0; sequence < 2000; ++sequence) {
        SCOPED_TRACE(sequence);
        Model m;
        BCDF *df = create(m);
        verify(df, m, -1);
        for (int s = 0; s < 24 && !HasFatalFailure(); ++s) {
            step(df, m);
            ASSERT_EQ(qxsys_report_count(), 0) << last_report().text;
            verify(df, m, 100 * s + op); // step and edit
        }
        BCDF_free_structure(df);
        ASSERT_EQ(qxsys_live_blocks(), live);
        if (HasFailure()) break;
    }
}

} // namespace
