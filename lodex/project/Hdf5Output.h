#pragma once

#include "lodex/utils/AtomicFile.h"

#include <cstdint>
#include <exception>
#include <filesystem>
#include <memory>
#include <span>
#include <string>

namespace lodex {

/// Number type of an array in the file, always in little-endian order.
enum class NumberType { Float32, Float64, Int32, Int64, UInt8 };

[[nodiscard]] constexpr std::size_t bytes_of(NumberType type)
{
    switch (type) {
    case NumberType::Float32:
    case NumberType::Int32:
        return 4;
    case NumberType::Float64:
    case NumberType::Int64:
        return 8;
    case NumberType::UInt8:
        break;
    }
    return 1;
}

/// Writes an HDF5 file that appears whole under its name or not at all (see AtomicFile). The first bytes of the file are
/// the caller's (`user_block_bytes`).
///
/// The HDF5 library never hears of a write that failed, since it cannot give up a file with unwritten parts: every
/// failure is kept and thrown by the next call. What the library itself finds wrong is a FileError too, never a print.
class Hdf5Output {
public:
    static constexpr std::size_t user_block_bytes = 512;

    /// Throws FileError.
    explicit Hdf5Output(std::filesystem::path target);
    ~Hdf5Output();
    Hdf5Output(const Hdf5Output&) = delete;
    Hdf5Output& operator=(const Hdf5Output&) = delete;

    /// Groups on the way to a path that is created are made; attributes go to groups and arrays that exist.
    void create_group(const std::string& path);
    void set_attribute(const std::string& path, const std::string& name, const std::string& text);
    void set_attribute(const std::string& path, const std::string& name, std::span<const std::int64_t> numbers);

    /// Begins an array of one dimension whose chunks are written one after the other.
    void begin_array(const std::string& path, NumberType type, std::uint64_t count, std::uint64_t chunk);
    /// The bytes as encode_chunk() leaves them. Returns their place in the file.
    [[nodiscard]] std::uint64_t write_chunk(std::uint64_t index, std::span<const std::byte> bytes, bool plain);
    void end_array();

    /// Writes bytes as they are; returns their place in the file.
    [[nodiscard]] std::uint64_t write_bytes(const std::string& path, std::span<const std::byte> bytes);

    /// Ends the HDF5 part; returns the size of the file. Nothing but commit() may follow.
    [[nodiscard]] std::uint64_t close();
    /// Puts the user block down and the file in its place.
    void commit(std::string_view user_block);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace lodex
