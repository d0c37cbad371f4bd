#pragma once

#include <lodex/gridio/GridFormat.h>

namespace lodex {

/// ROFF: corner-point grids and their parameters as tags with keys, in binary (either byte order) or text form.
///
/// Reading. dimensions, translate, scale, cornerLines, zvalues (splitEnz 1, 2, 4, 8), active, subgrids and any number
/// of parameters. A stored coordinate is (stored + offset) * scale; depths are positive downwards then, and a file
/// whose depths decrease with K is turned, with a warning. Lengths stay in the file's unit, which it does not state;
/// handedness stays as it is. Coordinates and depths are held in 32 bits when that loses nothing, parameters as they
/// are stored; byte and bool ones as 32-bit integers. Undefined values stay and are named in no_data: -999, 255 in
/// bytes. Subgrids become units from the top down, which take the names of the codes of a parameter "Zone..." that has
/// one code for each. A file of parameters without geometry is read with ReadOptions::properties_only. Other tags are
/// passed over with a message. A file without the tag eof is cut off and refused.
///
/// Writing. Floats of 32 bits relative to an offset, as other programs expect them. What the format has no tag for
/// (the rest of numbers of 64 bits, names of units, regions, faults, map axes, units of measure, kept keywords) goes
/// into tags "lodex..." that other programs pass over and that come back when the file is read here. Derivation records
/// and the id belong to the running program and are not written. The same model gives the same bytes.
class RoffFormat : public GridFormat {
public:
    [[nodiscard]] std::string_view name() const override { return "roff"; }
    [[nodiscard]] std::string_view description() const override { return "ROFF binary"; }
    [[nodiscard]] std::span<const std::string_view> endings() const override;
    [[nodiscard]] bool can_read() const override { return true; }
    [[nodiscard]] bool can_write() const override { return true; }
    [[nodiscard]] bool recognises(std::string_view head, const std::filesystem::path& path) const override;
    /// Reads all forms.
    [[nodiscard]] ReadResult read(const std::filesystem::path& path, const ReadOptions& options) const override;
    /// Little-endian.
    WriteResult write(const GridModel& model, const std::filesystem::path& path,
                      const WriteOptions& options) const override;
};

/// The same with the most significant byte first, for old machines; the reader finds the byte order by itself.
class RoffBigEndianFormat : public RoffFormat {
public:
    [[nodiscard]] std::string_view name() const override { return "roff_big_endian"; }
    [[nodiscard]] std::string_view description() const override { return "ROFF binary, big-endian"; }
    /// None: asked for by name alone.
    [[nodiscard]] std::span<const std::string_view> endings() const override { return {}; }
    [[nodiscard]] bool can_read() const override { return false; }
    [[nodiscard]] bool recognises(std::string_view, const std::filesystem::path&) const override { return false; }
    WriteResult write(const GridModel& model, const std::filesystem::path& path,
                      const WriteOptions& options) const override;
};

/// The same as text.
class RoffTextFormat : public RoffFormat {
public:
    [[nodiscard]] std::string_view name() const override { return "roff_text"; }
    [[nodiscard]] std::string_view description() const override { return "ROFF text"; }
    [[nodiscard]] std::span<const std::string_view> endings() const override;
    [[nodiscard]] bool recognises(std::string_view head, const std::filesystem::path& path) const override;
    WriteResult write(const GridModel& model, const std::filesystem::path& path,
                      const WriteOptions& options) const override;
};

} // namespace lodex
