#pragma once

// The parts of reading a ROFF file.

#include <lodex/gridio/MessageLog.h>
#include <lodex/gridio/RoffInput.h>
#include <lodex/gridio/RoffLayout.h>
#include <lodex/gridio/RoffReader.h>
#include <lodex/utils/Memory.h>
#include <lodex/volumes/model/GridText.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>

namespace lodex::roff {

inline constexpr std::int64_t depth_columns = 64; ///< cells along I whose depths are spread together

/// How stored numbers become coordinates: (stored + offset) * scale.
struct Transform {
    std::array<double, 3> offset{};
    std::array<double, 3> scale{1, 1, -1};

    [[nodiscard]] double apply(std::size_t axis, double stored) const
    {
        // Not adding nothing keeps the sign of zero.
        return (offset[axis] == 0 ? stored : stored + offset[axis]) * scale[axis];
    }
    [[nodiscard]] bool exact_in_float(std::size_t axis) const
    {
        return offset[axis] == 0 && std::fabs(scale[axis]) == 1;
    }
};

class Reader {
public:
    Reader(const ByteSource& source, const ReadOptions& options)
        : source_(source), options_(options),
          max_bytes_(options.max_bytes > 0 ? options.max_bytes : model_memory_limit()),
          input_(source, [this](std::uint64_t bytes) { claim(bytes); }, [this](std::uint64_t bytes) { tick(bytes); },
                 [this](const Tag& tag) { return sink_for(tag); })
    {
    }

    ReadResult run();

private:
    void claim(std::uint64_t bytes)
    {
        if (bytes > max_bytes_ || claimed_ > max_bytes_ - bytes) {
            throw FileError(source_.name(), input_.text() ? input_.here() : 0,
                            "asks for " + std::to_string(claimed_ + bytes) + " bytes of memory, more than the "
                                + std::to_string(max_bytes_) + " bytes allowed");
        }
        claimed_ += bytes;
    }
    void release(std::uint64_t bytes) { claimed_ -= std::min(claimed_, bytes); }
    void tick(std::uint64_t bytes)
    {
        done_ += bytes;
        check_cancelled();
    }
    void check_cancelled() const
    {
        constexpr double almost = 0.99;
        const double whole = static_cast<double>(std::max<std::uint64_t>(source_.size(), 1));
        if (options_.progress && !options_.progress(std::min(almost, static_cast<double>(done_) / whole))) {
            throw Cancelled{};
        }
    }
    void add_message(const std::string& kind, Message::Level level, std::int64_t place, std::string text)
    {
        if (!input_.text() && place > 0) {
            text = "at byte " + std::to_string(place) + ": " + text;
        }
        log_.add(kind, {level, to_utf8(source_.name()), input_.text() ? place : 0, std::move(text)});
    }
    void warn(const std::string& kind, std::int64_t place, std::string text)
    {
        add_message(kind, Message::Level::Warning, place, std::move(text));
    }
    void inform(const std::string& kind, std::int64_t place, std::string text)
    {
        add_message(kind, Message::Level::Info, place, std::move(text));
    }

    [[nodiscard]] bool wanted(std::string_view name) const;
    void take(Tag tag);
    const Key& need(const Tag& tag, std::string_view key) const;
    std::string text_of(const Tag& tag, std::string_view key, std::string otherwise = {}) const;
    std::vector<std::string> texts_of(const Tag& tag, std::string_view key, std::size_t count) const;
    std::int32_t integer_of(const Tag& tag, std::string_view key, std::int32_t otherwise) const;

    void take_version(const Tag& tag);
    void take_dimensions(const Tag& tag);
    void take_transform(const Tag& tag, std::string_view suffix, std::array<double, 3>& values, bool is_scale);
    void take_subgrids(const Tag& tag);
    void take_active(const Tag& tag);
    void take_parameter(const Tag& tag);
    void take_parameter_notes(const Tag& tag);
    void take_points(const Tag& tag);
    void take_units(const Tag& tag);
    void take_frame(const Tag& tag);
    void take_faults(const Tag& tag);
    void take_kept(const Tag& tag);
    void finish();
    void finish_coordinates();
    void finish_depths();
    void name_units();
    void turn_elevations();

    void need_size(const Tag& tag) const
    {
        if (!sized_) {
            input_.fail(tag.place, "tag \"" + to_utf8(tag.name) + "\" stands before the tag dimensions");
        }
    }
    void need_cells(const Key& key, const std::string& what) const
    {
        const auto cells = static_cast<std::uint64_t>(result_.model.cells());
        if (!key.array || key.count != cells) {
            input_.fail(key.place, what + " has " + std::to_string(key.count) + " values, expected "
                                       + std::to_string(cells) + " (" + size_text(result_.model.size) + ')');
        }
    }

    template <class Work> void in_batches(std::int64_t count, std::uint64_t bytes, const Work& work);
    template <class From, class To, class Convert>
    void turn_cells(const Key& key, std::vector<To>& to, const Convert& convert);
    /// Cells along I whose depths are spread, and how many of them at a time.
    struct Columns {
        std::int64_t first = 0;
        std::int64_t end = 0;
        std::int64_t step = depth_columns;
        std::uint64_t bytes = 0; ///< of their numbers in the file
    };
    template <class From, class To, class Load, class Combine>
    bool spread_depths(const Columns& columns, const Load& load, std::span<To> to, const Combine& combine);
    template <class Stored, class Depth, class Load>
    bool put_depths(const Columns& columns, const Load& load, std::span<Depth> to);
    template <class Depth, class Load>
    bool add_rest(const Columns& columns, const Load& load, std::span<Depth> to);
    template <class Stored> [[nodiscard]] auto loader(const Key& key) const;
    [[nodiscard]] Columns all_columns(const Key& key) const;
    void count_splits(const Tag& tag);
    template <class Stored> bool all_fit_float(const Key& key, std::size_t axis);
    template <class Stored> void fill_depths(const Key& key);
    template <class Depth> std::span<Depth> make_depths();
    const Key* rest_key() const;
    NumberSink* sink_for(const Tag& tag);
    template <class From> class DepthStream;
    [[noreturn]] void bad_number(const Key& key, std::uint64_t index) const
    {
        input_.fail(key.place,
                    "value " + std::to_string(index + 1) + " of \"" + to_utf8(key.name) + "\" is not finite");
    }
    template <class T> [[noreturn]] void find_bad_number(const Key& key);

    const ByteSource& source_;
    const ReadOptions& options_;
    std::uint64_t max_bytes_;
    std::uint64_t claimed_ = 0;
    std::uint64_t done_ = 0;
    MessageLog log_;
    ReadResult result_;
    Input input_;
    bool sized_ = false;
    Transform transform_;
    bool own_ = false; ///< written by this program, which states the storage of the coordinates
    bool coord_double_ = false;
    bool zcorn_double_ = false;
    std::set<std::string> seen_;
    std::optional<Tag> corner_lines_, corner_rest_, z_values_, z_rest_, units_;
    std::int64_t subgrids_place_ = 0;
    std::set<std::string> names_;
    bool parameter_open_ = false; ///< a property that notes may still come for
    std::vector<std::uint8_t> splits_;
    std::vector<std::int64_t> starts_; ///< first value of each pillar, in the file's order, and the end
    bool depths_in_place_ = false;     ///< the depths of a text file went to the model while they were read
    bool rest_in_place_ = false;       ///< the same of what goes beyond 32 bits
    bool check_depths_ = false;        ///< arithmetic may have made depths infinite
    std::unique_ptr<NumberSink> sink_;
};

/// Calls work(0) .. work(count - 1) on all threads and asks for progress between groups of them; `bytes` is what they
/// read.
template <class Work> void Reader::in_batches(std::int64_t count, std::uint64_t bytes, const Work& work)
{
    constexpr std::int64_t batch = 16;
    std::uint64_t told = 0;
    for (std::int64_t first = 0; first < count; first += batch) {
        const std::int64_t end = std::min(first + batch, count);
        tbb::parallel_for(tbb::blocked_range<std::int64_t>(first, end, 1), [&work](const auto& range) {
            for (std::int64_t n = range.begin(); n != range.end(); ++n) {
                work(n);
            }
        });
        const auto now = static_cast<std::uint64_t>(static_cast<double>(bytes) * static_cast<double>(end)
                                                    / static_cast<double>(count));
        tick(input_.text() ? 0 : now - told);
        told = now;
    }
}

} // namespace lodex::roff
