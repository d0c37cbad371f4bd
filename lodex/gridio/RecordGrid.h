#pragma once

#include <lodex/gridio/GridFormat.h>
#include <lodex/gridio/MessageLog.h>
#include <lodex/gridio/RecordFile.h>
#include <lodex/volumes/model/GridText.h>

#include <optional>
#include <set>
#include <string>
#include <vector>

/// What the formats made of keyworded arrays (RecordFile.h) have in common.
namespace lodex::records {

/// Bounds the memory of a model by what the caller allows and by the size of its files.
class MemoryBudget {
public:
    explicit MemoryBudget(const ReadOptions& options);
    /// Another file whose bytes justify memory.
    void add_file(std::uint64_t bytes) { file_bytes_ += bytes; }
    /// Throws FileError at the reader's array when `bytes` more are too many.
    void claim(const Reader& reader, std::uint64_t bytes);

private:
    std::uint64_t most_;
    std::uint64_t file_bytes_ = 0;
    std::uint64_t claimed_ = 0;
};

/// Room for `count` values without touching it; large ones lie on large pages where the system has them.
template <class T> [[nodiscard]] std::vector<T> reserved_array(std::size_t count);

/// Unit systems as INTEHEAD counts them.
enum class UnitSystem { Unknown, Metric, Field, Laboratory, PvtMetric };
[[nodiscard]] UnitSystem unit_system(std::int32_t code);
/// The unit of a simulator's array, empty when it has none or is not known.
[[nodiscard]] std::string unit_of(std::string_view name, UnitSystem system);
/// The system that goes with MAPUNITS or GRIDUNIT.
[[nodiscard]] UnitSystem unit_system_of(std::string_view length_unit);

/// Arrays that are headers, tables or lists, whatever their number of values.
[[nodiscard]] bool is_never_property(std::string_view name);
/// Those among them that every file has; nothing is lost without them.
[[nodiscard]] bool is_plain_header(std::string_view name);
/// Names of arrays with one value per cell.
[[nodiscard]] bool is_cell_array(std::string_view name);

/// Numbers of cells along I, J, K; throws at the reader's array unless they are positive and can be counted.
[[nodiscard]] GridSize checked_size(const Reader& reader, std::int64_t ni, std::int64_t nj, std::int64_t nk);
/// Throws when the caller asked for another size.
void check_wanted_size(const Reader& reader, const GridSize& size, const ReadOptions& options);

/// MAPUNITS, MAPAXES, GRIDUNIT and GDORIENT; false when the array is none of them.
bool read_frame(Reader& reader, const Header& header, GridFrame& frame, MessageLog& log);

/// An array of REAL or DOUB of the expected length, kept as wide as it is. Warns of numbers that are not finite.
[[nodiscard]] RealArray read_reals(Reader& reader, const Header& header, std::uint64_t expected, MemoryBudget& budget,
                                   MessageLog& log);

/// ACTNUM of a grid: values 0 to 3.
struct ActiveFlags {
    std::vector<std::uint8_t> active; ///< dual porosity: where the matrix is active
    std::uint64_t matrix = 0;         ///< number of them
    std::uint64_t fracture = 0;       ///< dual porosity: cells whose fracture is active
    std::uint64_t special = 0;        ///< values 2 and 3
};
[[nodiscard]] ActiveFlags read_flags(Reader& reader, const Header& header, std::uint64_t cells, bool dual_porosity,
                                     MemoryBudget& budget);

/// REAL, DOUB or INTE with one value per cell as a property. Values beyond `cells` are stepped over.
[[nodiscard]] PropertyData read_cells(Reader& reader, const Header& header, std::uint64_t cells, MemoryBudget& budget);
/// The same with values for the cells of flag 1 alone, in the order of the cells; the others are undefined (NaN, or a
/// no-data value that is no code of the array).
[[nodiscard]] PropertyData read_active_cells(Reader& reader, const Header& header, std::span<const std::uint8_t> active,
                                             MemoryBudget& budget);
[[nodiscard]] bool is_numeric(const Header& header);

/// Collects names of arrays that are passed over; one message at the end.
class PassedOver {
public:
    void add(const Header& header);
    /// "A (3 INTE), B (1 CHAR) <what>"; nothing when there were none.
    void tell(MessageLog& log, const std::string& file, const std::string& what) const;

private:
    std::vector<std::string> names_;
    std::uint64_t count_ = 0;
};

/// Steps over local refinements and connections of cells that are no neighbours, and counts them.
class Refinements {
public:
    /// True when the array belongs to one of them. The grid's own arrays do not come behind "LGR" before "ENDLGR".
    bool take(const Header& header);
    /// The arrays up to "ENDLGR" are those of a refinement.
    void begin();
    [[nodiscard]] bool inside() const { return inside_; }
    /// One message; nothing when there were none.
    void tell(MessageLog& log, const std::string& file) const;

private:
    bool inside_ = false;
    std::uint64_t refinements_ = 0;
    std::uint64_t connections_ = 0;
};

/// "1 cell", "3 cells"
[[nodiscard]] std::string plural(std::uint64_t count, const char* one);

// --- writing ---------------------------------------------------------------------------------------------------------

/// Names of up to 8 characters for properties. Those that fit keep theirs; the others get one that no other has.
class KeywordNames {
public:
    /// `taken`: keywords that the format uses itself.
    KeywordNames(const std::vector<PropertyData>& properties, const std::set<std::string>& taken);
    [[nodiscard]] const std::string& operator[](std::size_t property) const { return names_[property]; }
    void tell(MessageLog& log, const std::vector<PropertyData>& properties) const;

private:
    std::vector<std::string> names_;
};

/// Counts what is written for the progress.
class WriteProgress {
public:
    WriteProgress(const ProgressCheck& progress, std::uint64_t values) : progress_(progress), values_(values) {}
    /// Throws Cancelled.
    void add(std::uint64_t values);

private:
    const ProgressCheck& progress_;
    std::uint64_t values_;
    std::uint64_t done_ = 0;
};

void write_frame(Writer& writer, const GridFrame& frame, const std::filesystem::path& target, MessageLog& log);
/// Flags as INTE.
void write_flags(Writer& writer, const std::vector<std::uint8_t>& active, const std::filesystem::path& target,
                 WriteProgress& progress);
/// As DOUB where the array is 64-bit and `keep_double`, else as REAL; true when numbers were rounded.
bool write_reals(Writer& writer, std::string_view name, const RealArray& array, bool keep_double,
                 const std::filesystem::path& target, WriteProgress& progress);
/// All cells, or those of flag 1 when `active` is not empty. Undefined values of continuous properties become NaN.
void write_property(Writer& writer, const std::string& name, const PropertyData& property,
                    std::span<const std::uint8_t> active, const std::filesystem::path& target, WriteProgress& progress);
/// Tells what no format of this kind holds: regions, units, code names, undefined codes, faults, kept keywords. units:
/// the system that the file states and which gives properties their units. active_only: for each property whether
/// values of active cells alone are written; empty: never.
void tell_losses(const GridModel& model, const std::string& format, const std::string& file,
                 std::optional<UnitSystem> units, const std::vector<bool>& active_only, MessageLog& log);

} // namespace lodex::records
