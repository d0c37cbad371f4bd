#pragma once

// The parts of writing a ROFF file.

#include <lodex/gridio/MessageLog.h>
#include <lodex/gridio/RoffDepths.h>
#include <lodex/gridio/RoffLayout.h>
#include <lodex/gridio/RoffOutput.h>
#include <lodex/gridio/RoffReader.h>

#include <algorithm>
#include <array>
#include <limits>
#include <set>
#include <tbb/task_group.h>

namespace lodex::roff {

/// Names in the format's own tags stand in quotes that know no escapes.
[[nodiscard]] std::string plain(std::string_view text);

class Writer {
public:
    Writer(const GridModel& model, const std::filesystem::path& path, const WriteOptions& options, Form form)
        : model_(model), path_(path), options_(options), file_(path), out_((check(), file_), form)
    {
    }

    WriteResult run();

private:
    [[noreturn]] void fail(std::string reason) const { throw FileError(path_.string(), 0, std::move(reason)); }
    void inform(const std::string& kind, std::string text)
    {
        log_.add(kind, {Message::Level::Info, to_utf8(path_.string()), 0, std::move(text)});
    }
    void warn(const std::string& kind, std::string text)
    {
        log_.add(kind, {Message::Level::Warning, to_utf8(path_.string()), 0, std::move(text)});
    }
    void tick(std::int64_t values)
    {
        done_ += static_cast<double>(values);
        if (options_.progress && !options_.progress(std::min(1.0, done_ / total_))) {
            throw Cancelled{};
        }
    }
    [[nodiscard]] std::int32_t index(std::int64_t value, const char* what) const
    {
        if (value < std::numeric_limits<std::int32_t>::min() || value > std::numeric_limits<std::int32_t>::max()) {
            fail(std::string(what) + ' ' + std::to_string(value) + " is more than the format can hold");
        }
        return static_cast<std::int32_t>(value);
    }

    void check();
    void write_head();
    void write_frame();
    void write_layers();
    void write_geometry();
    void write_coordinates();
    void write_depths();
    template <class Depth> void write_depths_of(std::span<const Depth> zcorn);
    template <class Depth, class Stored>
    void write_node_depths(NodeDepths<Depth>& nodes, std::span<const Depth> zcorn, DepthPart part);
    template <class Depth> void check_finite(const NodeDepths<Depth>& nodes, std::span<const Depth> zcorn) const;
    void write_property(const PropertyData& property);
    template <class Value> void write_values(const PropertyData& property, std::span<const Value> values);
    void write_points(const PropertyData& property);
    void write_region(const RegionData& region);
    void write_faults();
    void write_kept();
    /// Numbers of all cells of the array that is begun, in the file's order. convert(from, to, count) turns a row.
    template <class To, class From, class Convert>
    void write_cells(std::span<const From> values, const Convert& convert);
    /// Bytes that are 0 or 1.
    void write_flags(std::span<const std::uint8_t> flags);
    template <class T, class Make> void write_blocks(std::size_t blocks, const Make& make);
    void write_codes(const PropertyData& property);
    void write_code_names(const PropertyData& property);
    std::string free_name(std::string_view wanted);

    const GridModel& model_;
    const std::filesystem::path& path_;
    const WriteOptions& options_;
    AtomicFile file_;
    double done_ = 0;
    double total_ = 1;
    MessageLog log_;
    Output out_;
    std::array<double, 3> offset_{};
    std::set<std::string> names_;
    std::array<RawBuffer, 2> buffers_; ///< one is written while the other is filled
};

/// Writes the numbers of make(block, buffer) for all blocks, each made while the one before is written. `buffer` is
/// the one of buffers_ that is free then.
template <class T, class Make> void Writer::write_blocks(std::size_t blocks, const Make& make)
{
    std::span<const T> next = make(std::size_t{0}, std::size_t{0});
    for (std::size_t block = 0; block < blocks; ++block) {
        const std::span<const T> now = next;
        tbb::task_group making;
        if (block + 1 < blocks) {
            making.run([&] { next = make(block + 1, (block + 1) % buffers_.size()); });
        }
        try {
            constexpr std::size_t piece = 1 << 17;
            for (std::size_t first = 0; first < now.size(); first += piece) {
                const std::size_t count = std::min(piece, now.size() - first);
                out_.numbers(now.subspan(first, count));
                tick(static_cast<std::int64_t>(count));
            }
        } catch (...) {
            making.cancel();
            making.wait(); // it works on what is here
            throw;
        }
        making.wait();
    }
}

} // namespace lodex::roff
