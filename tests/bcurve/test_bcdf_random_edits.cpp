// Random sequences of edits on defining-data records, each step checked
// against a model: the points; chord-length parameters whenever they were
// last computed from the points as they stand (strictly increasing always);
// weights exactly those of the parameters when last computed from them; each
// slope and curvature at its point with its type, curvatures exactly, slopes
// rescaled by old last / new last parameter; the lookups in agreement; lists
// released when empty; a periodic record's closing copy carrying nothing.
// Every edit is valid: nothing may be reported at checking level 1, and
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
    Doubles v; // three coordinates
    int type;
};
using Set = std::map<int, Entry>; // slopes or curvatures by point

// What the record must hold. Points are stored coordinates (homogeneous for
// dimension 4); a periodic record's closing copy is not in `pts`.
struct Model {
    int dim = 3, order = 4;
    bool periodic = false, ls = false;
    bool chord = true;   // the parameters are the chord lengths of the points
    bool weighed = true; // the weights are those of the parameters
    std::vector<Doubles> pts;
    Set slopes, crvs;

    int stored() const { return static_cast<int>(pts.size()) + (periodic ? 1 : 0); }
    int distinct() const { return static_cast<int>(pts.size()); }
};

// Drops the keys in [first, first + k) and moves those after by delta.
void shift(Set &m, int first, int k, int delta)
{
    Set out;
    for (const auto &[p, e] : m) {
        if (p < first || p >= first + k) out[p >= first + k ? p + delta : p] = e;
    }
    m.swap(out);
}

double norm(const Doubles &v) { return std::sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]); }

void scale(Set &slopes, double f)
{
    for (auto &[p, e] : slopes) {
        for (double &x : e.v) x *= f;
    }
}

void unitize(Set &slopes)
{
    for (auto &[p, e] : slopes) {
        const double len = norm(e.v);
        if (len * len > 1.0e-20) e.v = {e.v[0] / len, e.v[1] / len, e.v[2] / len};
    }
}

Doubles values(const PNTLST *l)
{
    return Doubles(l->points, l->points + l->num_points * l->dimension);
}

double last_param(const BCDF *df) { return df->params->points[df->params->num_points - 1]; }

// Chord lengths (uniformly i x (n - 1) when they sum to nothing) and
// weights, written out.
Doubles chord(const Doubles &p, size_t dim)
{
    Doubles t(p.size() / dim, 0.0);
    for (size_t i = 1; i < t.size(); ++i) {
        double s = 0.0;
        for (size_t k = i * dim; k < i * dim + dim; ++k)
            s += (p[k] - p[k - dim]) * (p[k] - p[k - dim]);
        t[i] = t[i - 1] + std::sqrt(s);
    }
    if (t.back() <= 1.0e-10) { // all points coincide
        for (size_t i = 0; i < t.size(); ++i) t[i] = double(i * (t.size() - 1));
    }
    return t;
}
Doubles weights_of(const Doubles &t)
{
    const size_t n = t.size();
    Doubles w(n, 0.0);
    for (size_t i = 0; i < n && n > 1; ++i) {
        w[i] = (t[i + 1 < n ? i + 1 : i] - t[i > 0 ? i - 1 : 0]) / 2;
    }
    return w;
}

class RandomEdits : public qxtest::QxTest
{
  protected:
    std::mt19937 rng{20240611u};
    int op = -1; // the last edit made, for the failure messages

    double uniform(double a, double b) { return std::uniform_real_distribution<double>(a, b)(rng); }
    int pick(int lo, int hi) { return std::uniform_int_distribution<int>(lo, hi)(rng); }

    Doubles random_point(int dim)
    {
        const double w = dim == 4 ? uniform(0.5, 2.0) : 1.0;
        Doubles p = {w * uniform(-10, 10), w * uniform(-10, 10), w * uniform(-10, 10)};
        if (dim == 4) p.push_back(w);
        return p;
    }
    Entry random_vector()
    {
        Entry e{{uniform(-3, 3), uniform(-3, 3), uniform(-3, 3)}, pick(0, 5)};
        if (norm(e.v) < 0.1) e.v[0] += 1.0;
        return e;
    }

    BCDF *create(Model &m)
    {
        m = Model{};
        m.dim = pick(0, 3) == 0 ? 4 : 3;
        m.ls = pick(0, 4) == 0;
        const int n = pick(1, 8);
        double *a = static_cast<double *>(SM_alloc(size_t(n * m.dim) * sizeof(double)));
        for (int i = 0; i < n; ++i) {
            m.pts.push_back(random_point(m.dim));
            std::memcpy(a + i * m.dim, m.pts.back().data(), size_t(m.dim) * sizeof(double));
        }
        return BCDF_create_df_from_pts(a, n, m.dim, m.ls ? 1 : 0);
    }

    // The record against the model and the invariants.
    static void verify(const BCDF *df, const Model &m)
    {
        const int n = m.stored();
        ASSERT_TRUE(df->points != nullptr && df->params != nullptr);
        ASSERT_EQ(df->points->num_points, n);
        ASSERT_EQ(df->params->num_points, n);
        ASSERT_EQ(df->points->dimension, m.dim);
        EXPECT_EQ(df->periodicity, m.periodic ? 1 : 0);
        EXPECT_EQ(df->order, m.order);
        Doubles stored;
        for (int i = 0; i < n; ++i) {
            const Doubles &p = m.pts[static_cast<size_t>(i % m.distinct())];
            stored.insert(stored.end(), p.begin(), p.end());
        }
        ASSERT_EQ(values(df->points), stored);
        const Doubles t = values(df->params);
        EXPECT_EQ(t[0], 0.0);
        for (size_t i = 1; i < t.size(); ++i) ASSERT_GT(t[i], t[i - 1]) << i;
        EXPECT_EQ(t, m.chord ? chord(stored, size_t(m.dim)) : t);
        ASSERT_EQ(df->weights != nullptr, m.ls);
        const Doubles w = m.ls ? values(df->weights) : t;
        ASSERT_EQ(w.size(), t.size());
        EXPECT_EQ(w, m.ls && m.weighed ? weights_of(t) : w);
        EXPECT_EQ(BCDF_return_num_of_constraints(df),
                  n + int(m.slopes.size() + m.crvs.size()) - (m.periodic ? 1 : 0));
        verify_set(df, m, false);
        verify_set(df, m, true);
    }

    static void verify_set(const BCDF *df, const Model &m, bool curvatures)
    {
        const Set &model = curvatures ? m.crvs : m.slopes;
        const PNTLST *vec = curvatures ? df->crvatrs : df->slopes;
        const PNTLST *par = curvatures ? df->crvatr_params : df->slope_params;
        const int *types = curvatures ? df->crvatr_types : df->slope_types;
        if (model.empty()) {
            EXPECT_TRUE(vec == nullptr && par == nullptr && types == nullptr);
            return;
        }
        ASSERT_TRUE(vec != nullptr && par != nullptr && types != nullptr);
        const int count = static_cast<int>(model.size());
        ASSERT_EQ(vec->num_points, count);
        ASSERT_EQ(par->num_points, count);
        ASSERT_EQ(vec->dimension, 3);
        ASSERT_GE(SM_length(types), count * sizeof(int));
        int num = 0, k = -1, i = 0;
        int *pos =
            (curvatures ? BCDF_create_crvatr_pos_array : BCDF_create_slope_pos_array)(df, &num);
        ASSERT_EQ(num, count);
        for (const auto &[p, e] : model) {
            SCOPED_TRACE(i);
            EXPECT_LE(std::fabs(par->points[i] - df->params->points[p]), 1.0e-10);
            EXPECT_EQ(types[i], e.type);
            const double *v = vec->points + 3 * i;
            const Doubles d = {v[0] - e.v[0], v[1] - e.v[1], v[2] - e.v[2]};
            EXPECT_LE(norm(d), 1.0e-12 * norm(e.v)); // exactly for curvatures and zero slopes
            // The lookups agree.
            EXPECT_EQ(pos[i], p + 1);
            EXPECT_EQ((curvatures ? BCDF_point_at_curvature : BCDF_point_at_slope)(df, i), p);
            EXPECT_EQ((curvatures ? BCDF_curvature_at_point : BCDF_slope_at_point)(df, p, &k), 1);
            EXPECT_EQ(k, i++);
        }
        SM_free(pos);
    }

    // One random edit, applied to the record and to the model.
    void step(BCDF *&df, Model &m)
    {
        const int n = m.stored(), d = m.distinct();
        const double before = last_param(df);
        bool reparametrised = false;
        // New chord-length parameters: the slopes are rescaled by old last /
        // new last parameter.
        const auto rescale = [&] {
            const double after = last_param(df);
            scale(m.slopes, before > 0 && after > 0 ? before / after : 1.0);
            m.chord = true;
        };
        // Least-squares slopes: only those at the ends, unit; curvatures go
        // with the others.
        const auto ls_slopes = [&] {
            for (auto it = m.slopes.begin(); it != m.slopes.end();) {
                const bool keep =
                    m.order >= 3 && !m.periodic && (it->first == 0 || it->first == d - 1);
                if (!keep) m.crvs.erase(it->first);
                it = keep ? std::next(it) : m.slopes.erase(it);
            }
            unitize(m.slopes);
        };
        op = pick(0, 21);
        switch (op) {
        case 0: { // insert a point
            const int pos = pick(0, m.periodic ? d : n);
            const Doubles p = random_point(m.dim);
            BCDF_insert_defining_point(df, pos, p.data());
            shift(m.slopes, pos, 0, 1);
            shift(m.crvs, pos, 0, 1);
            m.pts.insert(m.pts.begin() + pos, p);
            reparametrised = m.weighed = true;
            break;
        }
        case 1: { // remove points
            if (d < 2) break;
            const int count = pick(1, d - 1), pos = pick(0, d - count);
            BCDF_remove_defining_points(df, pos, count);
            shift(m.slopes, pos, count, -count);
            shift(m.crvs, pos, count, -count);
            m.pts.erase(m.pts.begin() + pos, m.pts.begin() + pos + count);
            reparametrised = m.weighed = true;
            break;
        }
        case 2: { // move a point
            const int pos = pick(0, n - 1);
            m.pts[static_cast<size_t>(pos % d)] = random_point(m.dim);
            BCDF_replace_defining_point(df, pos, m.pts[static_cast<size_t>(pos % d)].data());
            reparametrised = m.weighed = true;
            break;
        }
        case 3:
        case 4: { // set a slope or a curvature
            const int p = pick(0, n - 1);
            const Entry e = random_vector();
            (op == 3 ? BCDF_change_slope : BCDF_change_curvature)(df, p, e.v.data(), e.type);
            (op == 3 ? m.slopes : m.crvs)[p % d] = e;
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
            m.crvs.erase(std::next(m.crvs.begin(), pos), std::next(m.crvs.begin(), pos + count));
            break;
        }
        case 7:
        case 8: { // several slopes or curvatures at once
            const int k = pick(0, 4);
            std::vector<int> points, types;
            Doubles vectors;
            for (int i = 0; i < k; ++i) {
                const Entry e = random_vector();
                points.push_back(pick(0, n - 1));
                types.push_back(e.type);
                vectors.insert(vectors.end(), e.v.begin(), e.v.end());
                (op == 7 ? m.slopes : m.crvs)[points.back() % d] = e;
            }
            (op == 7 ? BCDF_update_slopes : BCDF_update_curvatures)(df, k, points.data(),
                                                                    vectors.data(), types.data());
            break;
        }
        case 9: { // end tangents
            const Entry a = random_vector(), b = random_vector();
            const bool start = pick(0, 1) == 1, end = pick(0, 1) == 1;
            BCDF_update_end_slopes(df, start ? a.v.data() : nullptr, a.type,
                                   end ? b.v.data() : nullptr, b.type);
            if (start) m.slopes[0] = a;
            if (end) m.slopes[(n - 1) % d] = b;
            break;
        }
        case 10: // slopes where curvatures need them: type 0, perpendicular
            BCDF_add_needed_slopes(df);
            for (const auto &[p, e] : m.crvs) {
                int s = -1;
                if (m.slopes.count(p) != 0) continue;
                ASSERT_EQ(BCDF_slope_at_point(df, p, &s), 1);
                const double *v = df->slopes->points + 3 * s;
                EXPECT_LE(std::fabs(v[0] * e.v[0] + v[1] * e.v[1] + v[2] * e.v[2]), 1.0e-7);
                m.slopes[p] = Entry{Doubles(v, v + 3), 0};
            }
            break;
        case 11: // open or close
            if (m.ls || d < 2) break;
            BCDF_toggle_periodicity(df);
            m.periodic = !m.periodic;
            reparametrised = true;
            break;
        case 12: // chord-length parameters again
            if (n < 2) break;
            BCDF_add_params(df, nullptr);
            m.weighed = m.weighed && m.chord;
            reparametrised = true;
            break;
        case 13: // normalise and back
            if (n < 2) break;
            if (pick(0, 1) == 0) {
                BCDF_unnormalize(df, BCDF_normalize(df));
            } else {
                const double last = BCDF_normalize_parameters(df);
                EXPECT_EQ(last_param(df), 1.0);
                BCDF_unnormalize_parameters(df, last);
            }
            m.chord = m.weighed = false;
            break;
        case 14: // to least squares (4-D points get new parameters)
            if (m.periodic || m.ls || n < 2) break;
            if (pick(0, 2) == 0) {
                BCDF_convert_to_least_squares(df);
            } else if (pick(0, 1) == 0) {
                BCDF_change_number_of_segments(df, pick(0, 3));
            } else {
                BCDF_change_tolerance(df, uniform(0.0, 1.0));
            }
            if (m.dim == 4) {
                to_3d(m);
                rescale();
            }
            m.ls = m.weighed = true;
            m.crvs.clear();
            ls_slopes();
            break;
        case 15: // the host drops the weights
            if (!m.ls) break;
            PNTLST_free_structure(df->weights);
            df->weights = nullptr;
            m.ls = false;
            break;
        case 16: // replace by index
            for (bool c : {false, true}) {
                Set &set = c ? m.crvs : m.slopes;
                if (set.empty()) continue;
                const int i = pick(0, static_cast<int>(set.size()) - 1);
                const Entry e = random_vector();
                (c ? BCDF_replace_curvature : BCDF_replace_slope)(df, i, e.v.data(), e.type);
                std::next(set.begin(), i)->second = e;
            }
            break;
        case 17:
            if (pick(0, 1) == 0) {
                BCDF_unitize_slopes(df);
                unitize(m.slopes);
            } else {
                const double f = uniform(0.1, 10.0);
                BCDF_scale_slopes(df, f);
                scale(m.slopes, f);
            }
            break;
        case 18:
            BCDF_make_least_squares_slopes(df);
            ls_slopes();
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
        default: // a weight
            if (!m.ls) break;
            const double w = uniform(0.0, 1.0);
            BCDF_replace_weight(df, pick(0, n - 1), &w);
            m.weighed = false;
            break;
        }
        if (reparametrised) rescale();
    }

    static void to_3d(Model &m)
    {
        if (m.dim != 4) return;
        for (Doubles &p : m.pts) p = {p[0] / p[3], p[1] / p[3], p[2] / p[3]};
        m.dim = 3;
        m.chord = false;
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
        verify(df, m);
        for (int s = 0; s < 24 && !HasFatalFailure(); ++s) {
            step(df, m);
            SCOPED_TRACE(100 * s + op); // step and edit
            ASSERT_EQ(qxsys_report_count(), 0) << last_report().text;
            verify(df, m);
        }
        BCDF_free_structure(df);
        ASSERT_EQ(qxsys_live_blocks(), live);
        if (HasFailure()) break;
    }
}

} // namespace
