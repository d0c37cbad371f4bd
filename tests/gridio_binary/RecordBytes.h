#pragma once

#include <lodex/gridio/GridFormat.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace lodex::test {

/// Makes keyworded arrays byte by byte, apart from the program's own writer.
class RecordBytes {
public:
    explicit RecordBytes(bool little_endian = false) : little_endian_(little_endian) {}

    RecordBytes& header(std::string_view name, std::int32_t count, std::string_view type);
    /// One record: its length, the bytes, its length.
    RecordBytes& record(std::string_view bytes);

    /// Whole arrays in records of up to 1000 values (105 strings).
    RecordBytes& integers(std::string_view name, const std::vector<std::int32_t>& values);
    RecordBytes& reals(std::string_view name, const std::vector<float>& values);
    RecordBytes& doubles(std::string_view name, const std::vector<double>& values);
    RecordBytes& strings(std::string_view name, const std::vector<std::string>& values);
    RecordBytes& empty(std::string_view name) { return header(name, 0, "INTE"); }

    [[nodiscard]] std::string number(std::uint64_t bits, int bytes) const;
    [[nodiscard]] const std::string& bytes() const { return bytes_; }

private:
    bool little_endian_;
    std::string bytes_;
};

/// ni x nj x nk cells of 10 x 20 x 2, the highest at depth 100; each cell is moved down by a little of its own.
struct SmallGrid {
    GridSize size{};
    std::vector<float> coord;
    std::vector<float> zcorn;

    explicit SmallGrid(const GridSize& wanted);
    [[nodiscard]] std::size_t cells() const { return static_cast<std::size_t>(size[0] * size[1] * size[2]); }
};

/// FILEHEAD to GRIDHEAD, COORD, ZCORN.
RecordBytes egrid_bytes(const SmallGrid& grid, std::int32_t porosity_model = 0, bool little_endian = false);
/// With ACTNUM and ENDGRID.
RecordBytes egrid_bytes(const SmallGrid& grid, const std::vector<std::int32_t>& flags, std::int32_t porosity_model = 0,
                        bool little_endian = false);
/// INTEHEAD; units: 1 metric, 2 field, 3 laboratory.
RecordBytes init_bytes(const GridSize& size, std::int32_t active, std::int32_t units = 1);

/// Where arrays begin, in order, as stated by their headers; the end of the file last. For unformatted big-endian
/// files.
struct ArrayPlace {
    std::string name;
    std::size_t begin = 0;
    std::vector<std::size_t> records; ///< where the records of the values begin
};
[[nodiscard]] std::vector<ArrayPlace> array_places(std::string_view bytes);

/// What reading said: "" when it went well, else FileError::what() without the path.
[[nodiscard]] std::string failure(const GridFormat& format, const std::filesystem::path& path,
                                  const ReadOptions& options = {});

/// Texts of all messages, one a line.
[[nodiscard]] std::string texts(const std::vector<Message>& messages);

} // namespace lodex::test
