// Pillars and depths from a ROFF file.

#include <lodex/gridio/FloatFit.h>
#include <lodex/gridio/RoffReaderImpl.h>
#include <lodex/volumes/model/LargeArray.h>

#include <utility>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace lodex::roff {

namespace {

constexpr auto most_nodes = static_cast<std::size_t>(depth_columns + 1);
constexpr std::size_t depth_axis = 2;

/// Puts a depth that needs no more than its sign changed in its place.
struct StoreDepth {
    float sign;
    template <class Depth, class Stored> void operator()(Depth& depth, Stored stored) const
    {
        depth = static_cast<Depth>(stored) * static_cast<Depth>(sign);
    }
};

/// The same for a row of them, past the cache: nothing reads them soon, and they need not be read to be written. False
/// when the place does not allow it.
bool stream(float* out, const float* from, std::size_t count, float sign)
{
#if defined(__SSE2__)
    constexpr std::size_t lanes = 4;
    if (reinterpret_cast<std::uintptr_t>(out) % (lanes * sizeof(float)) != 0 || count % lanes != 0) {
        return false;
    }
    const __m128 signs = _mm_set1_ps(sign);
    for (std::size_t n = 0; n < count; n += lanes) {
        _mm_stream_ps(out + n, _mm_mul_ps(_mm_loadu_ps(from + n), signs));
    }
    return true;
#else
    (void)out, (void)from, (void)count, (void)sign;
    return false;
#endif
}

/// make_array() for the largest array of a grid: the system hands out its pages on all threads.
template <class T> std::vector<T> make_touched_array(std::size_t size)
{
    constexpr std::size_t large = std::size_t{1} << 26;
    if (size * sizeof(T) < large) {
        return make_array<T>(size);
    }
    std::vector<T> array;
    array.reserve(size);
    auto* const bytes = reinterpret_cast<volatile char*>(array.data());
    advise_large_pages(array.data(), size * sizeof(T));
    constexpr std::size_t step = 4096;
    constexpr std::size_t grain = 4096; // pages
    tbb::parallel_for(tbb::blocked_range<std::size_t>(0, size * sizeof(T) / step, grain), [bytes](const auto& range) {
        for (std::size_t n = range.begin(); n != range.end(); ++n) {
            bytes[n * step] = 0;
        }
    });
    array.resize(size);
    return array;
}

/// To be called behind the last stream() of a thread, before others read what it wrote.
void end_streams()
{
#if defined(__SSE2__)
    _mm_sfence();
#endif
}

} // namespace

template <class T> void Reader::find_bad_number(const Key& key)
{
    constexpr std::uint64_t piece = 4096;
    std::vector<T> buffer(piece);
    for (std::uint64_t first = 0; first < key.count; first += piece) {
        const auto count = static_cast<std::size_t>(std::min(piece, key.count - first));
        const T* const values = input_.load(key, first, count, buffer.data());
        for (std::size_t n = 0; n < count; ++n) {
            if (!std::isfinite(values[n])) {
                bad_number(key, first + n);
            }
        }
    }
    input_.fail(key.place, "a coordinate is out of range");
}

void Reader::finish_coordinates()
{
    GridModel& model = result_.model;
    const auto [ni, nj, nk] = model.size;
    const Key& key = need(*corner_lines_, "data");
    const auto expected = static_cast<std::uint64_t>(6 * model.pillars());
    if (key.count != expected) {
        input_.fail(key.place, "cornerLines has " + std::to_string(key.count) + " values, expected "
                                   + std::to_string(expected) + " (6 x " + std::to_string(ni + 1) + " x "
                                   + std::to_string(nj + 1) + ')');
    }
    claim(16 * expected);
    const std::vector<double> stored = input_.reals(key);
    std::vector<double> rest;
    if (corner_rest_) {
        const Key& rest_key = need(*corner_rest_, "data");
        if (rest_key.count != expected) {
            input_.fail(rest_key.place, "lodexCornerLines does not fit cornerLines");
        }
        rest = input_.reals(rest_key);
    }
    std::vector<double> coord(stored.size());
    for (std::int64_t i = 0; i <= ni; ++i) {
        for (std::int64_t j = 0; j <= nj; ++j) {
            const auto from = static_cast<std::size_t>(6 * (i * (nj + 1) + j));
            const auto to = static_cast<std::size_t>(6 * (i + (ni + 1) * j));
            for (std::size_t n = 0; n < 6; ++n) {
                // The file has the bottom point first.
                const std::size_t at = from + (n + 3) % 6;
                double value = transform_.apply(n % 3, stored[at]);
                if (!rest.empty()) {
                    value += rest[at];
                }
                if (!std::isfinite(value)) {
                    bad_number(key, at);
                }
                coord[to + n] = value;
            }
        }
    }
    if (own_ ? coord_double_ : !fits_float(coord)) {
        model.coord = std::move(coord);
    } else {
        model.coord = std::vector<float>(coord.begin(), coord.end());
    }
    release(16 * expected - model.coord.size() * model.coord.bytes_per_value());
}

/// Reads splitEnz and finds where each pillar's depths begin.
void Reader::count_splits(const Tag& tag)
{
    const auto [ni, nj, nk] = result_.model.size;
    const auto nodes = static_cast<std::uint64_t>(result_.model.pillars() * (nk + 1));
    const Key* const key = tag.find("splitEnz");
    claim(nodes);
    if (key == nullptr) {
        // Each node has one depth then, which the number of depths must bear out before the memory is taken.
        const Key& data = need(tag, "data");
        if (data.count != nodes) {
            input_.fail(data.place, "zvalues has " + std::to_string(data.count) + " values without splitEnz, expected "
                                        + std::to_string(nodes) + ", one for each node");
        }
        splits_.assign(nodes, 1);
    } else {
        if (key->count != nodes || bytes_of(key->type) != 1) {
            input_.fail(key->place, "splitEnz has " + std::to_string(key->count) + " values of the type "
                                        + std::string(type_name(key->type)) + ", expected " + std::to_string(nodes)
                                        + " of the type byte (" + std::to_string(ni + 1) + " x "
                                        + std::to_string(nj + 1) + " x " + std::to_string(nk + 1) + ')');
        }
        splits_.resize(nodes);
        const std::uint8_t* const values = input_.load(*key, 0, nodes, splits_.data());
        if (values != splits_.data()) {
            std::copy(values, values + nodes, splits_.begin());
        }
    }
    const auto pillars = static_cast<std::size_t>(result_.model.pillars());
    const auto column = static_cast<std::size_t>(nk + 1);
    starts_.resize(pillars + 1);
    std::int64_t sum = 0;
    for (std::size_t pillar = 0; pillar < pillars; ++pillar) {
        starts_[pillar] = sum;
        const std::uint8_t* const begin = splits_.data() + pillar * column;
        unsigned bad = 0;
        std::int64_t values = 0;
        for (std::size_t n = 0; n < column; ++n) {
            const unsigned split = begin[n];
            // One bit, and one of the lowest four.
            bad |= (split & (split - 1)) | (split > 8 ? 1U : 0U) | (split == 0 ? 1U : 0U);
            values += split;
        }
        if (bad != 0) {
            const auto* const found = std::find_if(begin, begin + column, [](std::uint8_t split) {
                return split != 1 && split != 2 && split != 4 && split != 8;
            });
            input_.fail(key->place, "value " + std::to_string(found - splits_.data() + 1) + " of splitEnz is "
                                        + std::to_string(*found) + ", expected 1, 2, 4 or 8");
        }
        sum += values;
    }
    starts_[pillars] = sum;
}

/// Calls combine(corner depth of the model, stored number) for every corner of the cells of some columns. load(first,
/// count, buffer) gives stored numbers. False when one is not finite.
template <class From, class To, class Load, class Combine>
bool Reader::spread_depths(const Columns& columns, const Load& load, std::span<To> to, const Combine& combine)
{
    const auto [ni, nj, nk] = result_.model.size;
    const std::int64_t tiles = (columns.end - columns.first + columns.step - 1) / columns.step;
    // Rows of nodes that a thread loads at a time, which have several depths at each node where the grid is torn.
    const std::int64_t per_pillar = std::max(starts_.back() / result_.model.pillars(), nk + 1);
    const std::int64_t rows = std::clamp<std::int64_t>(tile_values / depth_columns / per_pillar, 1, nj + 1);
    const std::int64_t row_groups = (nj + 1 + rows - 1) / rows;
    std::atomic<bool> bad{false};
    const auto work = [&, ni = ni, nj = nj, nk = nk](std::int64_t n) {
        // Cells i0 <= i < i1, whose corners fill whole cache lines, and the nodes on both sides of each.
        const std::int64_t i0 = columns.first + n / row_groups * columns.step;
        const std::int64_t i1 = std::min(i0 + columns.step, columns.end);
        const std::int64_t j0 = n % row_groups * rows;
        const std::int64_t j1 = std::min(j0 + rows, nj + 1);
        const auto nodes = static_cast<std::size_t>(i1 - i0 + 1);
        const auto corners = 2 * (nodes - 1);
        const auto pillar_of = [i0, nj](std::size_t c, std::int64_t j) {
            return static_cast<std::size_t>((i0 + static_cast<std::int64_t>(c)) * (nj + 1) + j);
        };
        thread_local std::vector<From> buffer;
        std::array<const From*, most_nodes> values{};
        std::array<std::size_t, most_nodes + 1> room{};
        for (std::size_t c = 0; c < nodes; ++c) {
            // The odd 16 keep the columns apart in the cache.
            room[c + 1] =
                room[c] + 16 + static_cast<std::size_t>(starts_[pillar_of(c, j1)] - starts_[pillar_of(c, j0)]);
        }
        buffer.resize(room[nodes]);
        bool finite = true;
        for (std::size_t c = 0; c < nodes; ++c) {
            const std::size_t count = room[c + 1] - room[c] - 16;
            values[c] = load(static_cast<std::uint64_t>(starts_[pillar_of(c, j0)]), count, buffer.data() + room[c]);
            for (std::size_t v = 0; v < count; ++v) {
                finite &= std::fabs(values[c][v]) <= std::numeric_limits<From>::max();
            }
        }
        if (!finite) {
            bad = true;
            return;
        }
        // Stored numbers of a row of nodes: below south, below north, above south, above north. That of the first
        // node's west side comes first and belongs to no cell here.
        std::array<std::array<From, 2 * most_nodes>, 4> line;
        const auto put = [&](std::size_t side, const From* from, std::int64_t j, std::int64_t kk) {
            // Plane of corners below the nodes (tops of the cells there) or above them.
            const std::int64_t z = 2 * (nk - kk) - (side < 2 ? 0 : 1);
            const std::int64_t y = 2 * j - (side % 2 == 0 ? 1 : 0);
            if (z < 0 || z >= 2 * nk || y < 0 || y >= 2 * nj) {
                return;
            }
            To* const out = to.data() + (z * 2 * nj + y) * 2 * ni + 2 * i0;
            if constexpr (std::is_same_v<Combine,
                                         StoreDepth> && std::is_same_v<From, float> && std::is_same_v<To, float>) {
                if (stream(out, from, corners, combine.sign)) {
                    return;
                }
            }
            if (corners == 2 * depth_columns) {
                for (std::size_t x = 0; x < 2 * depth_columns; ++x) {
                    combine(out[x], from[x]);
                }
            } else {
                for (std::size_t x = 0; x < corners; ++x) {
                    combine(out[x], from[x]);
                }
            }
        };
        // One level after the other: what is written lies close together then.
        struct Row {
            bool single = true; ///< one depth at each of its nodes
            std::array<const From*, most_nodes> values{};
            std::array<const std::uint8_t*, most_nodes> split{};
        };
        thread_local std::vector<Row> row_list;
        row_list.assign(static_cast<std::size_t>(j1 - j0), {});
        for (std::int64_t j = j0; j < j1; ++j) {
            Row& row = row_list[static_cast<std::size_t>(j - j0)];
            for (std::size_t c = 0; c < nodes; ++c) {
                const std::size_t pillar = pillar_of(c, j);
                row.values[c] = values[c] + (starts_[pillar] - starts_[pillar_of(c, j0)]);
                row.split[c] = splits_.data() + pillar * static_cast<std::size_t>(nk + 1);
                row.single = row.single && starts_[pillar + 1] - starts_[pillar] == nk + 1;
            }
        }
        for (std::int64_t kk = 0; kk <= nk; ++kk) {
            for (std::int64_t j = j0; j < j1; ++j) {
                Row& row = row_list[static_cast<std::size_t>(j - j0)];
                if (row.single) {
                    for (std::size_t c = 0; c < nodes; ++c) {
                        line[0][2 * c] = line[0][2 * c + 1] = row.values[c][kk];
                    }
                    for (std::size_t side = 0; side < 4; ++side) {
                        put(side, line[0].data() + 1, j, kk);
                    }
                    continue;
                }
                bool apart = false;
                for (std::size_t c = 0; c < nodes; ++c) {
                    const From* const v = row.values[c];
                    const std::uint8_t s = row.split[c][kk];
                    const std::size_t step = s >= 4 ? 1 : 0;
                    line[0][2 * c] = line[2][2 * c] = v[0];
                    line[0][2 * c + 1] = line[2][2 * c + 1] = v[step];
                    line[1][2 * c] = line[3][2 * c] = v[2 * step];
                    line[1][2 * c + 1] = line[3][2 * c + 1] = v[3 * step];
                    if (s == 8 || s == 2) [[unlikely]] {
                        apart = true;
                        const From* const above = v + s / 2;
                        line[2][2 * c] = above[0];
                        line[2][2 * c + 1] = above[step];
                        line[3][2 * c] = above[2 * step];
                        line[3][2 * c + 1] = above[3 * step];
                    }
                    row.values[c] = v + s;
                }
                for (std::size_t side = 0; side < 4; ++side) {
                    put(side, line[apart ? side : side % 2].data() + 1, j, kk);
                }
            }
        }
        end_streams();
    };
    in_batches(tiles * row_groups, columns.bytes, work);
    return !bad;
}

template <class Stored, class Depth, class Load>
bool Reader::put_depths(const Columns& columns, const Load& load, std::span<Depth> to)
{
    if (sizeof(Depth) >= sizeof(Stored) && transform_.exact_in_float(depth_axis)) {
        const auto sign = static_cast<float>(transform_.scale[depth_axis]);
        return spread_depths<Stored>(columns, load, to, StoreDepth{sign});
    }
    check_depths_ = true;
    const Transform transform = transform_;
    return spread_depths<Stored>(columns, load, to, [&transform](Depth& depth, Stored stored) {
        depth = static_cast<Depth>(transform.apply(depth_axis, static_cast<double>(stored)));
    });
}

template <class Depth, class Load>
bool Reader::add_rest(const Columns& columns, const Load& load, std::span<Depth> to)
{
    check_depths_ = true;
    return spread_depths<double>(columns, load, to, [](Depth& depth, double part) {
        depth = static_cast<Depth>(static_cast<double>(depth) + part);
    });
}

template <class Stored> auto Reader::loader(const Key& key) const
{
    return [this, &key](std::uint64_t first, std::size_t count, Stored* buffer) {
        return input_.load(key, first, count, buffer);
    };
}

Reader::Columns Reader::all_columns(const Key& key) const
{
    return {0, result_.model.size[0], depth_columns, key.count * bytes_of(key.type)};
}

template <class Depth> std::span<Depth> Reader::make_depths()
{
    const auto corners = static_cast<std::size_t>(8 * result_.model.cells());
    claim(corners * sizeof(Depth));
    result_.model.zcorn = make_touched_array<Depth>(corners);
    std::span<Depth> depths;
    result_.model.zcorn.visit_mutable([&depths](auto values) {
        if constexpr (std::is_same_v<typename decltype(values)::element_type, Depth>) {
            depths = values;
        }
    });
    return depths;
}

/// Spreads depths of a text file while they are read, so that they need not all be kept beside the model.
template <class From> class Reader::DepthStream final : public NumberSink {
public:
    /// key: of the numbers; rest: they are added to the depths that are there.
    DepthStream(Reader& reader, const Key& key, bool rest)
        : reader_(reader), rest_(rest), nj_(reader.result_.model.size[1]), ni_(reader.result_.model.size[0]),
          step_(std::clamp<std::int64_t>(ni_ / parts, 1, depth_columns))
    {
        key_.name = key.name;
        key_.place = key.place;
        std::int64_t most = 0;
        for (std::int64_t i = 0; i < ni_; i += step_) {
            most = std::max(most, start(std::min(i + step_, ni_) + 1) - start(i));
        }
        const auto room = static_cast<std::size_t>(most) + piece;
        reader_.claim(room * sizeof(From));
        numbers_.reserve(room);
    }
    ~DepthStream() override { reader_.release(numbers_.capacity() * sizeof(From)); }

    void take(std::span<const float> numbers) override { add(numbers); }
    void take(std::span<const double> numbers) override { add(numbers); }

private:
    static constexpr std::int64_t parts = 8;

    /// First number of a column of nodes along I.
    [[nodiscard]] std::int64_t start(std::int64_t i) const
    {
        return reader_.starts_[static_cast<std::size_t>(i * (nj_ + 1))];
    }
    template <class T> void add(std::span<const T> numbers)
    {
        if constexpr (std::is_same_v<T, From>) {
            for (std::size_t n = 0; n < numbers.size(); ++n) {
                if (!std::isfinite(numbers[n])) {
                    reader_.bad_number(key_, static_cast<std::uint64_t>(first_) + numbers_.size() + n);
                }
            }
            numbers_.insert(numbers_.end(), numbers.begin(), numbers.end());
            while (next_ < ni_) {
                const std::int64_t end = std::min(next_ + step_, ni_);
                if (first_ + static_cast<std::int64_t>(numbers_.size()) < start(end + 1)) {
                    break;
                }
                spread(end);
            }
        }
    }
    void spread(std::int64_t end)
    {
        const Columns columns{next_, end, step_, 0};
        const auto load = [this](std::uint64_t first, std::size_t, From*) {
            return std::as_const(numbers_).data() + (static_cast<std::int64_t>(first) - first_);
        };
        reader_.result_.model.zcorn.visit_mutable([&](auto depths) {
            if (rest_) {
                if constexpr (std::is_same_v<From, double>) {
                    (void)reader_.add_rest(columns, load, depths);
                }
            } else {
                (void)reader_.template put_depths<From>(columns, load, depths);
            }
        });
        // The nodes between these cells and the next ones belong to both.
        numbers_.erase(numbers_.begin(), numbers_.begin() + (start(end) - first_));
        first_ = start(end);
        next_ = end;
    }

    Reader& reader_;
    bool rest_;
    std::int64_t nj_, ni_;
    std::int64_t step_; ///< cells along I that are spread together
    Key key_;           ///< for messages
    std::vector<From> numbers_;
    std::int64_t first_ = 0; ///< number of numbers_[0]
    std::int64_t next_ = 0;  ///< first cell along I that is not spread yet
};

/// Where the numbers of the last key of a tag of a text file go; null: to the key. What has to be known before must
/// have been read, as is usual; else they are kept.
NumberSink* Reader::sink_for(const Tag& tag)
{
    sink_.reset();
    const Key& key = tag.keys.back();
    if (key.name != "data" || !key.array || seen_.contains(tag.name)) {
        return nullptr;
    }
    if (tag.name == "zvalues") {
        const bool real = key.type == Type::Float || key.type == Type::Double;
        const bool as_float = own_ ? !zcorn_double_ : key.type == Type::Float && transform_.exact_in_float(depth_axis);
        if (!sized_ || !seen_.contains("translate") || !seen_.contains("scale") || !real || (!own_ && !as_float)
            || tag.find("splitEnz") == nullptr) {
            return nullptr;
        }
        count_splits(tag);
        if (key.count != static_cast<std::uint64_t>(starts_.back())) {
            return nullptr;
        }
        if (as_float) {
            (void)make_depths<float>();
        } else {
            (void)make_depths<double>();
        }
        depths_in_place_ = true;
        if (key.type == Type::Float) {
            sink_ = std::make_unique<DepthStream<float>>(*this, key, false);
        } else {
            sink_ = std::make_unique<DepthStream<double>>(*this, key, false);
        }
    } else if (tag.name == "lodexZvalues" && depths_in_place_ && key.type == Type::Double
               && key.count == static_cast<std::uint64_t>(starts_.back())) {
        rest_in_place_ = true;
        sink_ = std::make_unique<DepthStream<double>>(*this, key, true);
    }
    return sink_.get();
}

/// True when 32 bits hold all values of an axis.
template <class Stored> bool Reader::all_fit_float(const Key& key, std::size_t axis)
{
    if (std::is_same_v<Stored, float> && transform_.exact_in_float(axis)) {
        return true;
    }
    constexpr std::uint64_t piece = 1 << 16;
    std::vector<Stored> buffer(piece);
    std::vector<double> exact(piece);
    for (std::uint64_t first = 0; first < key.count; first += piece) {
        const auto count = static_cast<std::size_t>(std::min(piece, key.count - first));
        const Stored* const values = input_.load(key, first, count, buffer.data());
        for (std::size_t n = 0; n < count; ++n) {
            exact[n] = transform_.apply(axis, static_cast<double>(values[n]));
        }
        if (!fits_float(std::span(exact).first(count))) {
            return false;
        }
        check_cancelled();
    }
    return true;
}

template <class Stored> void Reader::fill_depths(const Key& key)
{
    const auto fill = [&](auto kind) {
        if (!put_depths<Stored>(all_columns(key), loader<Stored>(key), make_depths<decltype(kind)>())) {
            find_bad_number<Stored>(key);
        }
    };
    if (own_ ? zcorn_double_ : !all_fit_float<Stored>(key, depth_axis)) {
        fill(double{});
    } else {
        fill(float{});
    }
}

const Key* Reader::rest_key() const
{
    if (!z_rest_) {
        return nullptr;
    }
    const Key& rest = need(*z_rest_, "data");
    if (rest.count != static_cast<std::uint64_t>(starts_.back()) || rest.type != Type::Double) {
        input_.fail(rest.place, "lodexZvalues does not fit zvalues");
    }
    return &rest;
}

void Reader::finish_depths()
{
    const Key& key = need(*z_values_, "data");
    if (!depths_in_place_) {
        count_splits(*z_values_);
        const auto expected = static_cast<std::uint64_t>(starts_.back());
        if (key.count != expected) {
            input_.fail(key.place, "zvalues has " + std::to_string(key.count) + " values, expected "
                                       + std::to_string(expected) + " after splitEnz");
        }
    }
    const Key* const rest = rest_key();
    if (!depths_in_place_) {
        if (key.type == Type::Float) {
            fill_depths<float>(key);
        } else if (key.type == Type::Double) {
            fill_depths<double>(key);
        } else {
            input_.fail(key.place, "zvalues is of the type " + std::string(type_name(key.type)) + ", expected float");
        }
    } else if (own_ && zcorn_double_ != result_.model.zcorn.is_double()) {
        input_.fail(key.place, "zvalues stands before the tag lodexGeometry");
    }
    result_.model.zcorn.visit_mutable([&](auto depths) {
        if (rest != nullptr && !rest_in_place_ && !add_rest(all_columns(*rest), loader<double>(*rest), depths)) {
            find_bad_number<double>(*rest);
        }
        if (check_depths_
            && !std::all_of(depths.begin(), depths.end(), [](auto depth) { return std::isfinite(depth); })) {
            input_.fail(key.place, "a depth is out of range");
        }
    });
}

/// Depths that decrease downwards are elevations: K always runs from the bottom up in the file.
void Reader::turn_elevations()
{
    GridModel& model = result_.model;
    if (own_) {
        return;
    }
    const auto plane = static_cast<std::size_t>(4 * model.size[0] * model.size[1]);
    double down = 0;
    model.zcorn.visit([&](auto z) {
        const auto bottom = z.size() - plane;
        for (std::size_t n = 0; n < plane; ++n) {
            down += static_cast<double>(z[bottom + n]) - static_cast<double>(z[n]);
        }
    });
    if (!(down < 0)) {
        return;
    }
    model.zcorn.visit_mutable([](auto z) {
        for (auto& depth : z) {
            depth = -depth;
        }
    });
    model.coord.visit_mutable([](auto coord) {
        for (std::size_t n = 2; n < coord.size(); n += 3) {
            coord[n] = -coord[n];
        }
    });
    warn("signs of depths", z_values_->place, "z increases upwards in the file; depths are its negative");
}

} // namespace lodex::roff
