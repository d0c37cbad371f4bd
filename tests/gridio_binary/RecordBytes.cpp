#include "RecordBytes.h"

#include <algorithm>
#include <bit>
#include <gtest/gtest.h>

namespace lodex::test {

std::string RecordBytes::number(std::uint64_t bits, int bytes) const
{
    std::string text;
    for (int i = 0; i < bytes; ++i) {
        const int shift = 8 * (little_endian_ ? i : bytes - 1 - i);
        text += static_cast<char>(bits >> shift & 0xFF);
    }
    return text;
}

RecordBytes& RecordBytes::record(std::string_view bytes)
{
    const std::string length = number(bytes.size(), 4);
    bytes_ += length + std::string(bytes) + length;
    return *this;
}

RecordBytes& RecordBytes::header(std::string_view name, std::int32_t count, std::string_view type)
{
    std::string padded(name);
    padded.resize(8, ' ');
    return record(padded + number(static_cast<std::uint32_t>(count), 4) + std::string(type));
}

namespace {

template <class Values, class Bytes>
void append(RecordBytes& to, std::size_t per_record, const Values& values, Bytes bytes_of)
{
    for (std::size_t first = 0; first < values.size(); first += per_record) {
        std::string record;
        for (std::size_t i = first; i < std::min(values.size(), first + per_record); ++i) {
            record += bytes_of(values[i]);
        }
        to.record(record);
    }
}

} // namespace

RecordBytes& RecordBytes::integers(std::string_view name, const std::vector<std::int32_t>& values)
{
    header(name, static_cast<std::int32_t>(values.size()), "INTE");
    append(*this, 1000, values, [this](std::int32_t value) { return number(static_cast<std::uint32_t>(value), 4); });
    return *this;
}

RecordBytes& RecordBytes::reals(std::string_view name, const std::vector<float>& values)
{
    header(name, static_cast<std::int32_t>(values.size()), "REAL");
    append(*this, 1000, values, [this](float value) { return number(std::bit_cast<std::uint32_t>(value), 4); });
    return *this;
}

RecordBytes& RecordBytes::doubles(std::string_view name, const std::vector<double>& values)
{
    header(name, static_cast<std::int32_t>(values.size()), "DOUB");
    append(*this, 1000, values, [this](double value) { return number(std::bit_cast<std::uint64_t>(value), 8); });
    return *this;
}

RecordBytes& RecordBytes::strings(std::string_view name, const std::vector<std::string>& values)
{
    header(name, static_cast<std::int32_t>(values.size()), "CHAR");
    append(*this, 105, values, [](std::string value) {
        value.resize(8, ' ');
        return value;
    });
    return *this;
}

SmallGrid::SmallGrid(const GridSize& wanted) : size(wanted)
{
    const auto [ni, nj, nk] = size;
    for (std::int64_t j = 0; j <= nj; ++j) {
        for (std::int64_t i = 0; i <= ni; ++i) {
            const auto x = 10.0F * static_cast<float>(i);
            const auto y = 20.0F * static_cast<float>(j);
            coord.insert(coord.end(), {x, y, 100, x, y, 200});
        }
    }
    for (std::int64_t layer = 0; layer < 2 * nk; ++layer) {
        for (std::int64_t at = 0; at < 4 * ni * nj; ++at) {
            const std::int64_t i = at % (2 * ni) / 2;
            const std::int64_t j = at / (2 * ni) / 2;
            zcorn.push_back(100 + 2 * static_cast<float>((layer + 1) / 2)
                            + 0.25F * static_cast<float>((i + 3 * j) % 5));
        }
    }
}

RecordBytes egrid_bytes(const SmallGrid& grid, std::int32_t porosity_model, bool little_endian)
{
    RecordBytes bytes(little_endian);
    std::vector<std::int32_t> head(100, 0);
    head[0] = 3;
    head[1] = 2007;
    head[5] = porosity_model;
    head[6] = 1;
    bytes.integers("FILEHEAD", head);
    std::fill(head.begin(), head.end(), 0);
    head[0] = 1;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        head[axis + 1] = static_cast<std::int32_t>(grid.size[axis]);
    }
    head[24] = 1;
    bytes.integers("GRIDHEAD", head);
    bytes.reals("COORD", grid.coord);
    bytes.reals("ZCORN", grid.zcorn);
    return bytes;
}

RecordBytes egrid_bytes(const SmallGrid& grid, const std::vector<std::int32_t>& flags, std::int32_t porosity_model,
                        bool little_endian)
{
    RecordBytes bytes = egrid_bytes(grid, porosity_model, little_endian);
    bytes.integers("ACTNUM", flags).empty("ENDGRID");
    return bytes;
}

RecordBytes init_bytes(const GridSize& size, std::int32_t active, std::int32_t units)
{
    std::vector<std::int32_t> head(95, 0);
    head[2] = units;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        head[axis + 8] = static_cast<std::int32_t>(size[axis]);
    }
    head[11] = active;
    RecordBytes bytes;
    bytes.integers("INTEHEAD", head);
    return bytes;
}

std::vector<ArrayPlace> array_places(std::string_view bytes)
{
    const auto number = [&](std::size_t place) {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            value = value << 8 | static_cast<unsigned char>(bytes[place + i]);
        }
        return value;
    };
    std::vector<ArrayPlace> places;
    std::size_t place = 0;
    while (place < bytes.size()) {
        ArrayPlace array{std::string(bytes.substr(place + 4, 8)), place, {}};
        const std::string_view type = bytes.substr(place + 16, 4);
        std::uint64_t left = std::uint64_t{number(place + 12)} * (type == "DOUB" || type == "CHAR" ? 8 : 4);
        place += 24;
        while (left > 0) {
            array.records.push_back(place);
            const std::uint32_t length = number(place);
            left -= length;
            place += length + 8;
        }
        array.name.erase(array.name.find_last_not_of(' ') + 1);
        places.push_back(std::move(array));
    }
    places.push_back({"", bytes.size(), {}});
    return places;
}

std::string failure(const GridFormat& format, const std::filesystem::path& path, const ReadOptions& options)
{
    try {
        (void)format.read(path, options);
    } catch (const FileError& error) {
        EXPECT_EQ(std::filesystem::path(error.file()).replace_extension(),
                  std::filesystem::path(path).replace_extension());
        return (error.line() > 0 ? std::to_string(error.line()) + ": " : "") + error.reason();
    }
    return "";
}

std::string texts(const std::vector<Message>& messages)
{
    std::string text;
    for (const Message& message : messages) {
        text += message.text + '\n';
    }
    return text;
}

} // namespace lodex::test
