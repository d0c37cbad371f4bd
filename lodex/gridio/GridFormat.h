#pragma once

#include <lodex/utils/FileError.h>
#include <lodex/volumes/model/GridModel.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lodex {

/// How a file shall be read.
struct ReadOptions {
    /// Called at least every 50 ms or so from the reading thread; Cancelled is thrown when it answers false.
    ProgressCheck progress;
    /// The caller wants properties, active flags and faults for a grid that it has. No geometry is made and none is
    /// asked for; included files that are not there are warnings. model.active stays empty when the file states none.
    bool properties_only = false;
    /// The size of the grid that the file belongs to. Needed for files of bare properties, which do not state it;
    /// a file that states another size is an error.
    std::optional<GridSize> size;
    /// The active flags (0 or 1, one per cell) of the grid that the file belongs to, if the caller has it: files that
    /// state values of active cells alone do not always say which these are.
    std::span<const std::uint8_t> active;
    /// Upper bound of the memory for arrays, bytes; 0: three quarters of the machine's memory. A small file can ask for
    /// much by its repeat counts; beyond the bound it is refused.
    std::uint64_t max_bytes = 0;
};

struct ReadResult {
    GridModel model;
    std::vector<Message> messages;
    std::vector<std::filesystem::path> files; ///< the file itself, then what it included, in order of reading
    std::uint64_t bytes = 0;                  ///< of all files
};

/// How a file shall be written.
struct WriteOptions {
    /// As in ReadOptions.
    ProgressCheck progress;
    /// Formats that know repeat counts write equal values in a row as n*v.
    bool run_lengths = false;
};

struct WriteResult {
    std::vector<Message> messages; ///< what the format could not hold in its own terms
    std::uint64_t bytes = 0;
};

/// One file format. A format is one pair of files that defines a subclass and registers it with a GridFormatRegistrar;
/// nothing else names it. All functions are const and may be called from several threads.
class GridFormat {
public:
    virtual ~GridFormat() = default;

    /// The word for it in commands, "grdecl".
    [[nodiscard]] virtual std::string_view name() const = 0;
    /// For file dialogs and help, "GRDECL text".
    [[nodiscard]] virtual std::string_view description() const = 0;
    /// File endings with their dot in lower case, the usual one first; compared without regard to case.
    [[nodiscard]] virtual std::span<const std::string_view> endings() const = 0;
    [[nodiscard]] virtual bool can_read() const = 0;
    [[nodiscard]] virtual bool can_write() const = 0;

    /// True when a file that begins with these bytes (up to 64 KiB, the whole file when shorter) is of this format.
    [[nodiscard]] virtual bool recognises(std::string_view head, const std::filesystem::path& path) const = 0;

    /// The model in a file. Throws FileError, Cancelled; leaves nothing behind.
    [[nodiscard]] virtual ReadResult read(const std::filesystem::path& path, const ReadOptions& options) const;

    /// Writes beside the target and renames into place: after FileError, ModelError or Cancelled an older file at path
    /// is untouched and nothing new is left.
    virtual WriteResult write(const GridModel& model, const std::filesystem::path& path,
                              const WriteOptions& options) const;
};

/// The formats of this program, in order of their names.
class GridFormats {
public:
    /// Takes part in every search from then on.
    static void add(std::unique_ptr<GridFormat> format);
    [[nodiscard]] static std::vector<const GridFormat*> all();
    /// Null when there is none; without regard to case.
    [[nodiscard]] static const GridFormat* find(std::string_view name);
    /// By content, and when no format knows the content by the file's ending. Throws FileError (no such file, a folder,
    /// not readable, of no known format).
    [[nodiscard]] static const GridFormat& for_reading(const std::filesystem::path& path);
    /// By the name, or by the file's ending when name is empty. Throws FileError (no such format, one that cannot be
    /// written, an ending of no format).
    [[nodiscard]] static const GridFormat& for_writing(const std::filesystem::path& path, std::string_view name = {});
};

/// Registers a format before main() runs:
///     const GridFormatRegistrar<GrdeclFormat> registrar;
template <class Format> class GridFormatRegistrar {
public:
    GridFormatRegistrar() { GridFormats::add(std::make_unique<Format>()); }
};

} // namespace lodex
