#pragma once

#include "Hdf5Output.h"
#include "lodex/utils/Errors.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace lodex {

/// Version of the layout that this program writes. What each version changed stands in Migration.cpp.
inline constexpr int project_format = 2;

/// One array of a project file: what it holds and where its chunks lie.
struct StoredArray {
    struct Chunk {
        std::uint64_t place = 0; ///< first byte, counted from the start of the file
        std::uint64_t size = 0;  ///< stored bytes
        std::uint32_t checksum = 0; ///< CRC-32 of the stored bytes
        bool plain = false;      ///< the values themselves, not shuffled and deflated
    };

    std::string path; ///< in the file ("/grids/0/corner_depths")
    NumberType type = NumberType::UInt8;
    std::uint64_t count = 0;       ///< values
    std::uint64_t chunk_count = 0; ///< values of a chunk; the last one is filled up with zeros
    std::vector<Chunk> chunks;
};

/// A project file that is read: its contents text and its arrays. Neither trusts the file: places, sizes and checksums are
/// checked before anything is allocated or handed out. Does not change once it is open; reading is safe from several
/// threads. Serves as long as it lives, also after the file has lost its name.
class ProjectFile {
public:
    /// Throws FileError: not there, no project, truncated, of a later version.
    explicit ProjectFile(const std::filesystem::path& path);
    ~ProjectFile();
    ProjectFile(const ProjectFile&) = delete;
    ProjectFile& operator=(const ProjectFile&) = delete;

    /// True when the file begins as a project does. False when it cannot be read.
    [[nodiscard]] static bool recognises(const std::filesystem::path& path);

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] int format() const { return format_; }
    [[nodiscard]] std::uint64_t size() const { return size_; }
    /// The description of everything, as JSON text.
    [[nodiscard]] std::string contents() const;

    /// Fills `values`, whose size is that of the array. Throws FileError, Cancelled.
    void read(const StoredArray& array, std::span<std::byte> values, const ProgressCheck& check = {}) const;
    /// Fills `bytes` with the stored bytes of one chunk, checked. Throws FileError.
    void read_stored(const StoredArray& array, std::size_t chunk, std::span<std::byte> bytes) const;

    [[noreturn]] void fail(const std::string& reason) const;

private:
    void check_sum(const StoredArray& array, std::size_t chunk, std::span<const std::byte> bytes) const;
    void read_at(std::uint64_t place, std::span<std::byte> bytes, std::string_view what) const;

    std::filesystem::path path_;
    int descriptor_ = -1;
    std::uint64_t size_ = 0;
    int format_ = 0;
    std::uint64_t contents_place_ = 0, contents_size_ = 0;
    std::uint32_t contents_checksum_ = 0;
};

/// Writes a project file: arrays first, then the contents text that says where they are.
class ProjectFileWriter {
public:
    /// `total_bytes`: of all arrays to come, for the progress. `format`: another one than the present in tests alone.
    ProjectFileWriter(const std::filesystem::path& path, std::uint64_t total_bytes, ProgressCheck check,
                      int format = project_format);
    ~ProjectFileWriter();

    /// Values of `type`; encoded by all threads, with the same result for any number of them. Throws FileError, Cancelled.
    [[nodiscard]] StoredArray write(const std::string& path, NumberType type, std::span<const std::byte> values);
    /// Copies an array of another project file (or of the one that will be replaced) without decoding it.
    [[nodiscard]] StoredArray copy(const std::string& path, const ProjectFile& from, const StoredArray& array);
    /// For other programs that read the file; this one does not.
    void describe(const std::string& path, const std::string& name, const std::string& text);
    void describe(const std::string& path, const std::string& name, std::span<const std::int64_t> numbers);

    /// Writes the contents and puts the file in its place.
    void commit(std::string_view contents);

private:
    void advance(std::uint64_t bytes);

    Hdf5Output output_;
    int format_;
    std::uint64_t total_, done_ = 0;
    ProgressCheck check_;
};

/// Bytes of an array in memory.
[[nodiscard]] inline std::uint64_t bytes_of(const StoredArray& array)
{
    return array.count * bytes_of(array.type);
}

} // namespace lodex
