#include "SubdivideBlocks.h"

#include "SubdividePillars.h"
#include "VolumeRows.h"

#include <tbb/enumerable_thread_specific.h>

#include <algorithm>
#include <cmath>

namespace lodex {

void SubdivideSums::add(const SubdivideSums& other)
{
    ChangeSums::add(other);
    divided += other.divided;
    pinched += other.pinched;
}

namespace {

using Box = GridBlocks::Box;

struct Scratch {
    PillarRow back, front;                           // old pillars on both sides of a row of old cells
    PillarRow new_back, new_front;                   // new ones on both sides of a row of new cells
    std::vector<EdgePlace> places, next;             // of the new pillars of a line between old ones
    std::vector<std::int32_t> parents;               // old cell of each new one of a row, counted from the box's first
    std::vector<double> back_cosines, front_cosines; // depth per length along each pillar
    std::array<std::vector<double>, 4> ends;         // tops and bases laid out anew: top, base of b = 0, then of b = 1
    std::vector<std::uint8_t> pinched;               // new cells of a row that are left with nothing
    std::vector<double> volumes, masked;             // of a row of cells
    std::vector<double> before, after;               // of each old cell of the slice j: its volume, its new cells'
};

// Where a row of new cells comes from: numbers of rows, old and new, and which one of its parent's.
struct RowPlace {
    std::int64_t j = 0, new_j = 0, n_j = 0;
    std::int64_t k = 0, new_k = 0, n_k = 0;
    std::int64_t slot = 0; // of K layer k within the box
};

template <class ZIn> class BlockDivider {
public:
    BlockDivider(const SubdivideJob& job, std::span<const ZIn> depths)
        : job_(job)
        , in_(depths)
        , i_(job.divisions[0])
        , j_(job.divisions[1])
        , k_(job.divisions[2])
    {
    }

    void run(const Box& box, Scratch& s, SubdivideSums& sums) const
    {
        const std::int64_t width = box.width();
        const std::int64_t pillars = job_.source.size[0] + 1;
        const std::int64_t new_first = i_.start(box.i.first);
        const std::int64_t new_width = i_.start(box.i.last + 1) - new_first;
        s.parents.clear();
        for (std::int64_t i = box.i.first; i <= box.i.last; ++i)
            s.parents.insert(s.parents.end(), static_cast<std::size_t>(i_.count(i)),
                             static_cast<std::int32_t>(i - box.i.first));

        s.front.load(job_.source.coord, box.i.first + pillars * box.j.first, width + 1);
        load_new_front(box, j_.start(box.j.first), new_width, s);
        if (job_.axis == 0)
            find_places_along_i(box, s.next, s);
        for (std::int64_t j = box.j.first; j <= box.j.last; ++j) {
            s.back.swap(s.front);
            s.front.load(job_.source.coord, box.i.first + pillars * (j + 1), width + 1);
            if (job_.axis == 2 && job_.along_pillar) {
                find_cosines(s.back, s.back_cosines);
                find_cosines(s.front, s.front_cosines);
            }
            measure_parents(box, j, s, sums);
            for (std::int64_t n = 0; n < j_.count(j); ++n) {
                const std::int64_t new_j = j_.start(j) + n;
                s.new_back.swap(s.new_front);
                load_new_front(box, new_j + 1, new_width, s);
                if (job_.axis == 0) {
                    s.places.swap(s.next);
                    find_places_along_i(box, s.next, s);
                }
                if (job_.axis == 1 && n + 1 < j_.count(j))
                    find_places_along_j(j, n + 1, s);
                for (std::int64_t k = box.k.first; k <= box.k.last; ++k)
                    for (std::int64_t m = 0; m < k_.count(k); ++m)
                        emit(box, {j, new_j, n, k, k_.start(k) + m, m, k - box.k.first}, new_first, new_width, s, sums);
            }
            compare(box, j, s, sums);
        }
    }

private:
    void load_new_front(const Box& box, std::int64_t line, std::int64_t new_width, Scratch& s) const
    {
        s.new_front.load(job_.result.coord, i_.start(box.i.first) + (job_.result.size[0] + 1) * line, new_width + 1);
    }

    // Of the new pillars of the line in front; entries at old pillars stay unused.
    void find_places_along_i(const Box& box, std::vector<EdgePlace>& places, const Scratch& s) const
    {
        places.resize(s.parents.size() + 1);
        for (std::int64_t i = box.i.first; i <= box.i.last; ++i) {
            const std::int64_t old = i - box.i.first;
            const std::int64_t first = i_.start(i) - i_.start(box.i.first);
            const auto count = static_cast<double>(i_.count(i));
            for (std::int64_t n = 1; n < i_.count(i); ++n)
                places[static_cast<std::size_t>(first + n)] =
                    EdgePlace(s.front, old, s.front, old + 1, s.new_front, first + n, static_cast<double>(n) / count);
        }
    }

    // Of the pillars of new line n of section j, which is the one in front.
    void find_places_along_j(std::int64_t j, std::int64_t n, Scratch& s) const
    {
        const double share = static_cast<double>(n) / static_cast<double>(j_.count(j));
        s.places.resize(static_cast<std::size_t>(s.front.count()));
        for (std::int64_t i = 0; i < s.front.count(); ++i)
            s.places[static_cast<std::size_t>(i)] = EdgePlace(s.back, i, s.front, i, s.new_front, i, share);
    }

    static void find_cosines(const PillarRow& pillars, std::vector<double>& cosines)
    {
        cosines.resize(static_cast<std::size_t>(pillars.count()));
        for (std::int64_t n = 0; n < pillars.count(); ++n) {
            const double sx = pillars.sx()[n], sy = pillars.sy()[n];
            cosines[static_cast<std::size_t>(n)] = 1 / std::sqrt(1 + sx * sx + sy * sy);
        }
    }

    [[nodiscard]] const ZIn* old_row(std::int64_t i, std::int64_t j, std::int64_t k, int b, int c) const
    {
        return in_.data() + depth_offset(job_.source.size, i, j, k, b, c);
    }
    [[nodiscard]] double* new_row(std::int64_t i, std::int64_t new_j, std::int64_t new_k, int b, int c) const
    {
        return job_.depths.data() + depth_offset(job_.result.size, i, new_j, new_k, b, c);
    }

    void measure_parents(const Box& box, std::int64_t j, Scratch& s, SubdivideSums& sums) const
    {
        const auto width = static_cast<std::size_t>(box.width());
        const auto layers = static_cast<std::size_t>(box.k.last - box.k.first + 1);
        s.before.resize(width * layers);
        s.after.assign(width * layers, 0);
        s.masked.resize(width);
        for (std::int64_t k = box.k.first; k <= box.k.last; ++k) {
            const std::int64_t i = box.i.first;
            double* const volumes = s.before.data() + static_cast<std::size_t>(k - box.k.first) * width;
            volume_row(box.width(), s.back, s.front, old_row(i, j, k, 0, 0), old_row(i, j, k, 1, 0),
                       old_row(i, j, k, 0, 1), old_row(i, j, k, 1, 1), volumes);
            const std::uint8_t* const active = job_.source.active.data() + job_.source.cell_index(i, j, k);
            std::int64_t cells = 0;
            for (std::size_t n = 0; n < width; ++n) {
                volumes[n] = std::abs(volumes[n]);
                s.masked[n] = active[n] ? volumes[n] : 0;
                cells += active[n] != 0;
            }
            sums.cells_before += cells;
            sums.total_before.add(pairwise_sum({volumes, width}));
            sums.active_before.add(pairwise_sum(s.masked));
        }
    }

    void emit(const Box& box, const RowPlace& at, std::int64_t new_first, std::int64_t new_width, Scratch& s,
              SubdivideSums& sums) const
    {
        const bool divided = i_.divides(box.i) || j_.count(at.j) > 1 || k_.count(at.k) > 1;
        if (job_.axis == 0)
            emit_depths_along_i(box, at, new_first, s);
        else if (job_.axis == 1)
            emit_depths_along_j(box, at);
        else
            emit_depths_along_k(box, at, s);
        if (job_.axis == 1)
            for (int c = 0; c < 2; ++c)
                emit_front_along_j(box, at, c, s);
        find_pinched(box, at, new_first, new_width, s);

        const std::int64_t out = job_.result.cell_index(new_first, at.new_j, at.new_k);
        const std::int64_t in = job_.source.cell_index(box.i.first, at.j, at.k);
        emit_flags(box, at, in, out, new_width, s, sums);
        emit_volumes(box, at, new_first, new_width, divided, out, s, sums);
        for (const SubdivideJob::Property& property : job_.properties)
            std::visit(
                [&](auto& values) {
                    using Values = std::remove_reference_t<decltype(values)>;
                    copy_row(std::get<Values>(property.in->values).data() + in, values.data() + out, new_width,
                             s.parents);
                },
                property.out->values);
        for (const SubdivideJob::Region& region : job_.regions)
            copy_row(region.in + in, region.out + out, new_width, s.parents);
    }

    template <class T>
    void copy_row(const T* in, T* out, std::int64_t new_width, const std::vector<std::int32_t>& parents) const
    {
        if (job_.axis != 0)
            std::copy_n(in, new_width, out);
        else
            for (std::int64_t n = 0; n < new_width; ++n)
                out[n] = in[parents[static_cast<std::size_t>(n)]];
    }

    void emit_depths_along_i(const Box& box, const RowPlace& at, std::int64_t new_first, const Scratch& s) const
    {
        for (int b = 0; b < 2; ++b) {
            const std::vector<EdgePlace>& places = b ? s.next : s.places;
            for (int c = 0; c < 2; ++c) {
                const ZIn* in = old_row(box.i.first, at.j, at.k, b, c);
                double* out = new_row(new_first, at.new_j, at.new_k, b, c);
                const EdgePlace* place = places.data();
                for (std::int64_t i = box.i.first; i <= box.i.last; ++i, in += 2) {
                    const double first = in[0], second = in[1];
                    const std::int64_t count = i_.count(i);
                    *out++ = first;
                    for (std::int64_t n = 1; n < count; ++n) {
                        const double depth = place[n].depth(first, second);
                        *out++ = depth;
                        *out++ = depth;
                    }
                    *out++ = second;
                    place += count;
                }
            }
        }
    }

    // The side that is there already: the old one, or the front of the new row before.
    void emit_depths_along_j(const Box& box, const RowPlace& at) const
    {
        const std::int64_t corners = 2 * box.width();
        for (int c = 0; c < 2; ++c) {
            double* const out = new_row(box.i.first, at.new_j, at.new_k, 0, c);
            if (at.n_j == 0)
                std::copy_n(old_row(box.i.first, at.j, at.k, 0, c), corners, out);
            else
                std::copy_n(new_row(box.i.first, at.new_j - 1, at.new_k, 1, c), corners, out);
        }
    }

    void emit_front_along_j(const Box& box, const RowPlace& at, int c, const Scratch& s) const
    {
        const std::int64_t corners = 2 * box.width();
        const ZIn* const back = old_row(box.i.first, at.j, at.k, 0, c);
        const ZIn* const front = old_row(box.i.first, at.j, at.k, 1, c);
        double* const out = new_row(box.i.first, at.new_j, at.new_k, 1, c);
        if (at.n_j + 1 == j_.count(at.j))
            std::copy_n(front, corners, out);
        else
            for (std::int64_t n = 0; n < corners; ++n)
                out[n] = s.places[static_cast<std::size_t>((n + 1) / 2)].depth(back[n], front[n]);
    }

    void emit_depths_along_k(const Box& box, const RowPlace& at, Scratch& s) const
    {
        for (int b = 0; b < 2; ++b) {
            const ZIn* const top = old_row(box.i.first, at.j, at.k, b, 0);
            const ZIn* const base = old_row(box.i.first, at.j, at.k, b, 1);
            const std::vector<double>& cosines = b ? s.front_cosines : s.back_cosines;
            if (!job_.surfaces) {
                divide_k(box, at, b, top, base, cosines);
                continue;
            }
            std::vector<double>& new_top = s.ends[static_cast<std::size_t>(2 * b)];
            std::vector<double>& new_base = s.ends[static_cast<std::size_t>(2 * b + 1)];
            if (at.n_k == 0) {
                lay_out(box, at, b, at.k, top, new_top);
                lay_out(box, at, b, at.k + 1, base, new_base);
            }
            divide_k(box, at, b, new_top.data(), new_base.data(), cosines);
        }
    }

    // Depths of K surface `surface` as the layers give them.
    void lay_out(const Box& box, const RowPlace& at, int b, std::int64_t surface, const ZIn* old,
                 std::vector<double>& out) const
    {
        const std::int64_t corners = 2 * box.width();
        out.resize(static_cast<std::size_t>(corners));
        const LayerSurface& place = (*job_.surfaces)[static_cast<std::size_t>(surface)];
        if (!place.computed) {
            std::copy_n(old, corners, out.data());
            return;
        }
        const ZIn* const top = old_row(box.i.first, at.j, place.top_k, b, 0);
        const ZIn* const base = old_row(box.i.first, at.j, place.base_k, b, 1);
        for (std::int64_t n = 0; n < corners; ++n)
            out[static_cast<std::size_t>(n)] = place.depth(top[n], base[n]);
    }

    // Top and base of new row n_k between the top and base of its parents.
    template <class Z>
    void divide_k(const Box& box, const RowPlace& at, int b, const Z* top, const Z* base,
                  const std::vector<double>& cosines) const
    {
        const std::int64_t corners = 2 * box.width();
        double* const out_top = new_row(box.i.first, at.new_j, at.new_k, b, 0);
        double* const out_base = new_row(box.i.first, at.new_j, at.new_k, b, 1);
        if (at.n_k == 0)
            std::copy_n(top, corners, out_top);
        else
            std::copy_n(new_row(box.i.first, at.new_j, at.new_k - 1, b, 1), corners, out_top);
        const SectionLayout& layout = k_.layout(at.k);
        const std::int64_t n = at.n_k + 1;
        if (n == layout.count())
            std::copy_n(base, corners, out_base);
        else if (layout.fixed())
            divide_by_share(corners, top, base, layout.share(n), out_base);
        else
            divide_by_length(corners, top, base, layout, n, cosines, out_base);
    }

    template <class Z>
    static void divide_by_share(std::int64_t corners, const Z* top, const Z* base, double share, double* out)
    {
        if (share == 1) {
            std::copy_n(base, corners, out);
            return;
        }
        for (std::int64_t m = 0; m < corners; ++m) {
            const double from = top[m], to = base[m];
            out[m] = from + share * (to - from);
        }
    }

    template <class Z>
    void divide_by_length(std::int64_t corners, const Z* top, const Z* base, const SectionLayout& layout,
                          std::int64_t n, const std::vector<double>& cosines, double* out) const
    {
        // What the source's numbers cannot tell from nothing.
        const double resolution = job_.source.zcorn.is_double() ? 0x1p-48 : 0x1p-23;
        const double length = layout.distance(n);
        for (std::int64_t m = 0; m < corners; ++m) {
            const double from = top[m], to = base[m];
            const double height = to - from;
            const double step = job_.along_pillar ? length * cosines[static_cast<std::size_t>((m + 1) / 2)] : length;
            const double least = resolution * std::max(std::abs(from), std::abs(to));
            if (!(step < std::abs(height) - least))
                out[m] = layout.from_far() ? from : to;
            else
                out[m] = layout.from_far() ? to - std::copysign(step, height) : from + std::copysign(step, height);
        }
    }

    // Marks new cells that the layout leaves without any size.
    void find_pinched(const Box& box, const RowPlace& at, std::int64_t new_first, std::int64_t new_width,
                      Scratch& s) const
    {
        s.pinched.assign(static_cast<std::size_t>(new_width), 0);
        if (job_.axis == 2 && k_.layout(at.k).pinches()) {
            for (std::int64_t n = 0; n < new_width; ++n) {
                bool flat = true;
                for (int b = 0; b < 2; ++b) {
                    const double* const top = new_row(new_first + n, at.new_j, at.new_k, b, 0);
                    const double* const base = new_row(new_first + n, at.new_j, at.new_k, b, 1);
                    flat = flat && top[0] == base[0] && top[1] == base[1];
                }
                s.pinched[static_cast<std::size_t>(n)] = flat;
            }
        }
        else if (job_.axis == 1 && j_.layout(at.j).pinches()) {
            for (std::int64_t n = 0; n < new_width; ++n)
                s.pinched[static_cast<std::size_t>(n)] =
                    same_pillar(s.new_back, n, s.new_front, n) && same_pillar(s.new_back, n + 1, s.new_front, n + 1);
        }
        else if (job_.axis == 0) {
            for (std::int64_t i = box.i.first, n = 0; i <= box.i.last; ++i) {
                const bool pinches = i_.layout(i).pinches();
                for (const std::int64_t end = n + i_.count(i); n < end; ++n)
                    s.pinched[static_cast<std::size_t>(n)] = pinches && same_pillar(s.new_back, n, s.new_back, n + 1) &&
                                                             same_pillar(s.new_front, n, s.new_front, n + 1);
            }
        }
    }

    static bool same_pillar(const PillarRow& a, std::int64_t m, const PillarRow& b, std::int64_t n)
    {
        return a.x0()[m] == b.x0()[n] && a.y0()[m] == b.y0()[n] && a.z0()[m] == b.z0()[n] && a.sx()[m] == b.sx()[n] &&
               a.sy()[m] == b.sy()[n];
    }

    void emit_flags(const Box& box, const RowPlace& at, std::int64_t in, std::int64_t out, std::int64_t new_width,
                    const Scratch& s, SubdivideSums& sums) const
    {
        const std::uint8_t* const parents = job_.source.active.data() + in;
        std::uint8_t* const active = job_.result.active.data() + out;
        copy_row(parents, active, new_width, s.parents);
        std::int64_t pinched = 0, cells = 0;
        for (std::int64_t n = 0; n < new_width; ++n) {
            const bool gone = s.pinched[static_cast<std::size_t>(n)] != 0 && active[n] != 0;
            active[n] = gone ? 0 : active[n];
            pinched += gone;
            cells += active[n] != 0;
        }
        sums.pinched += pinched;
        sums.cells_after += cells;
        if (at.n_j > 0 || at.n_k > 0)
            return;
        if (j_.count(at.j) > 1 || k_.count(at.k) > 1)
            sums.divided += box.width();
        else if (job_.axis == 0)
            for (std::int64_t i = box.i.first; i <= box.i.last; ++i)
                sums.divided += i_.count(i) > 1;
    }

    void emit_volumes(const Box& box, const RowPlace& at, std::int64_t new_first, std::int64_t new_width, bool divided,
                      std::int64_t out, Scratch& s, SubdivideSums& sums) const
    {
        const auto cells = static_cast<std::size_t>(new_width);
        s.volumes.resize(cells);
        s.masked.resize(cells);
        const std::size_t offset = static_cast<std::size_t>(at.slot * box.width());
        double* const parents = s.after.data() + offset;
        if (divided || job_.surfaces) {
            volume_row(new_width, s.new_back, s.new_front, new_row(new_first, at.new_j, at.new_k, 0, 0),
                       new_row(new_first, at.new_j, at.new_k, 1, 0), new_row(new_first, at.new_j, at.new_k, 0, 1),
                       new_row(new_first, at.new_j, at.new_k, 1, 1), s.volumes.data());
            for (double& volume : s.volumes)
                volume = std::abs(volume);
        }
        else {
            std::copy_n(s.before.data() + offset, cells, s.volumes.data());
        }
        if (job_.axis == 0)
            for (std::size_t n = 0; n < cells; ++n)
                parents[s.parents[n]] += s.volumes[n];
        else
            for (std::size_t n = 0; n < cells; ++n)
                parents[n] += s.volumes[n];
        const std::uint8_t* const active = job_.result.active.data() + out;
        for (std::size_t n = 0; n < cells; ++n)
            s.masked[n] = active[n] ? s.volumes[n] : 0;
        sums.total_after.add(pairwise_sum(s.volumes));
        sums.active_after.add(pairwise_sum(s.masked));
    }

    // What the old cells of slice j had against what their new cells have.
    void compare(const Box& box, std::int64_t j, Scratch& s, SubdivideSums& sums) const
    {
        const auto width = static_cast<std::size_t>(box.width());
        s.masked.assign(width, 0);
        for (std::int64_t k = box.k.first; k <= box.k.last; ++k) {
            const bool row_divided = j_.count(j) > 1 || k_.count(k) > 1;
            if (!row_divided && !job_.surfaces && !i_.divides(box.i))
                continue;
            const std::size_t offset = static_cast<std::size_t>(k - box.k.first) * width;
            const double* const before = s.before.data() + offset;
            const double* const after = s.after.data() + offset;
            const std::uint8_t* const active = job_.source.active.data() + job_.source.cell_index(box.i.first, j, k);
            // Below this a volume is what rounding made of a flat cell.
            const double least = 1e-10 * *std::max_element(before, before + width);
            for (std::size_t n = 0; n < width; ++n) {
                const bool divided = row_divided || i_.count(box.i.first + static_cast<std::int64_t>(n)) > 1;
                const bool counts = active[n] && (divided || job_.surfaces);
                const double flat = after[n] > least ? 1 : 0;
                const double relative = before[n] > least ? std::abs(after[n] - before[n]) / before[n] : flat;
                s.masked[n] = counts ? relative : 0;
                sums.compared += counts;
                sums.max_relative = std::max(sums.max_relative, s.masked[n]);
            }
            sums.relative.add(pairwise_sum(s.masked));
        }
    }

    const SubdivideJob& job_;
    std::span<const ZIn> in_;
    const AxisDivision& i_;
    const AxisDivision& j_;
    const AxisDivision& k_;
};

// Boxes of old cells that make some 65000 new ones. K layers lie far apart in memory: a box takes few of them, just
// enough to make the pillars' slopes worth working out, unless the layers are small.
GridBlocks subdivide_blocks(const GridSize& old_size, const GridSize& size)
{
    const auto old_steps = [&](std::size_t axis, std::int64_t new_cells) {
        return std::clamp<std::int64_t>(new_cells * old_size[axis] / size[axis], 1, old_size[axis]);
    };
    const auto new_cells = [&](std::size_t axis, std::int64_t step) {
        return std::max<std::int64_t>(step * size[axis] / old_size[axis], 1);
    };
    const std::int64_t i = old_steps(0, 4096);
    const std::int64_t k = old_steps(2, std::max<std::int64_t>(16, 65536 / (new_cells(0, i) * size[1])));
    const std::int64_t j = old_steps(1, std::max<std::int64_t>(1, 65536 / (new_cells(0, i) * new_cells(2, k))));
    return {old_size, {i, j, k}};
}

} // namespace

SubdivideSums subdivide_cells(const SubdivideJob& job, const ProgressCheck& progress)
{
    const GridBlocks blocks = subdivide_blocks(job.source.size, job.result.size);
    std::vector<SubdivideSums> sums(static_cast<std::size_t>(blocks.count()));
    job.source.zcorn.visit([&](auto depths) {
        using ZIn = std::remove_const_t<typename decltype(depths)::element_type>;
        const BlockDivider<ZIn> divider(job, depths);
        tbb::enumerable_thread_specific<Scratch> scratch;
        for_blocks(blocks.count(), progress, [&](std::int64_t block) {
            divider.run(blocks.box(block), scratch.local(), sums[static_cast<std::size_t>(block)]);
        });
    });
    SubdivideSums all;
    for (const SubdivideSums& part : sums)
        all.add(part);
    return all;
}

} // namespace lodex
