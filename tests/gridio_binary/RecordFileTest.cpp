#include "../gridio/GridTestTools.h"
#include "RecordBytes.h"

#include <lodex/gridio/RecordFile.h>

#include <cmath>
#include <gtest/gtest.h>
#include <limits>
#include <numeric>

namespace lodex {
namespace {

using records::Reader;
using records::Type;
using records::Writer;
using test::RecordBytes;

template <class T> std::vector<T> values(Reader& reader, const records::Header& header)
{
    std::vector<T> result(header.count);
    EXPECT_EQ(reader.read(std::span<T>(result)), header.count);
    EXPECT_EQ(reader.read(std::span<T>(result)), 0U);
    return result;
}

std::string reason(std::string_view bytes)
{
    try {
        Reader reader(bytes, "f");
        while (const auto header = reader.next()) {
            if (header->type == Type::Real) {
                (void)values<float>(reader, *header);
            } else if (header->type == Type::Double) {
                (void)values<double>(reader, *header);
            } else if (header->type == Type::Integer) {
                (void)values<std::int32_t>(reader, *header);
            } else if (header->type == Type::String) {
                (void)reader.read_strings();
            }
        }
    } catch (const FileError& error) {
        return error.what();
    }
    return "";
}

TEST(RecordFile, ReadsBothByteOrders)
{
    for (const bool little : {false, true}) {
        RecordBytes bytes(little);
        bytes.integers("I", {1, -2, 1 << 30})
            .reals("R", {1.5F, -0.0F})
            .doubles("D", {1e300, 0.1})
            .strings("S", {"AB", "12345678"});
        Reader reader(bytes.bytes(), "f");
        EXPECT_FALSE(reader.formatted());
        auto header = reader.next();
        ASSERT_TRUE(header);
        EXPECT_EQ(header->name, "I");
        EXPECT_EQ(header->type_name, "INTE");
        EXPECT_EQ(values<std::int32_t>(reader, *header), (std::vector<std::int32_t>{1, -2, 1 << 30}));
        header = reader.next();
        EXPECT_EQ(values<float>(reader, *header), (std::vector<float>{1.5F, -0.0F}));
        header = reader.next();
        EXPECT_EQ(values<double>(reader, *header), (std::vector<double>{1e300, 0.1}));
        header = reader.next();
        EXPECT_EQ(header->type, Type::String);
        EXPECT_EQ(reader.read_strings(), (std::vector<std::string>{"AB", "12345678"}));
        EXPECT_FALSE(reader.next());
        EXPECT_FALSE(reader.next());
    }
}

TEST(RecordFile, ArraysOfSeveralRecordsFromDisk)
{
    // Around the limits of a record and of the reader's buffer of a megabyte.
    const test::TemporaryFolder folder;
    for (const std::size_t count : {0, 1, 999, 1000, 1001, 261'000, 262'144, 300'001}) {
        std::vector<std::int32_t> numbers(count);
        std::iota(numbers.begin(), numbers.end(), -5);
        const auto path = folder.write("f", RecordBytes().integers("A", numbers).integers("B", {7}).bytes());
        for (const bool skip : {false, true}) {
            Reader reader(path);
            const auto header = reader.next();
            ASSERT_TRUE(header);
            ASSERT_EQ(header->count, count);
            if (!skip) {
                EXPECT_EQ(values<std::int32_t>(reader, *header), numbers);
            }
            const auto next = reader.next();
            ASSERT_TRUE(next);
            EXPECT_EQ(values<std::int32_t>(reader, *next), (std::vector<std::int32_t>{7}));
            reader.check_unchanged();
        }
    }
}

TEST(RecordFile, UnusualButLegal)
{
    // Records of any length, one empty record behind an empty array, strings of other lengths, arrays without values.
    RecordBytes bytes;
    bytes.header("ODD", 3, "INTE").record(bytes.number(1, 4)).record(bytes.number(2, 4) + bytes.number(3, 4));
    bytes.header("NOTHING", 0, "REAL").record("");
    bytes.header("LONG", 2, "C012").record("twelve chars12345678    ");
    bytes.header("TEXT", 0, "MESS");
    bytes.header("L", 2, "LOGI").record(bytes.number(0xFFFFFFFF, 4) + bytes.number(0, 4));
    bytes.header("BIG", 0, "X231").header("BIG", 1, "INTE").record(bytes.number(9, 4));
    Reader reader(bytes.bytes(), "f");
    auto header = reader.next();
    EXPECT_EQ(values<std::int32_t>(reader, *header), (std::vector<std::int32_t>{1, 2, 3}));
    header = reader.next();
    EXPECT_EQ(header->count, 0U);
    header = reader.next();
    EXPECT_EQ(header->width, 12U);
    EXPECT_EQ(reader.read_strings(), (std::vector<std::string>{"twelve chars", "12345678"}));
    EXPECT_EQ(reader.next()->name, "TEXT");
    EXPECT_EQ(reader.next()->type, Type::Logical);
    header = reader.next();
    EXPECT_EQ(header->name, "BIG");
    EXPECT_EQ(values<std::int32_t>(reader, *header), (std::vector<std::int32_t>{9}));
    EXPECT_FALSE(reader.next());
}

TEST(RecordFile, DamagedRecords)
{
    const auto with = [](std::string bytes, std::size_t at, char value) {
        bytes[at] = value;
        return bytes;
    };
    const std::string good = RecordBytes().integers("GOOD", {1, 2}).reals("NEXT", {3}).bytes();
    EXPECT_EQ(reason(good), "");
    EXPECT_EQ(reason(""), "f: is empty");
    EXPECT_EQ(reason("ab"), "f: is too short for a header");
    EXPECT_EQ(reason("abcdefgh"),
              "f: begins neither with the length of a header record (16) nor with a name in quotes");
    EXPECT_EQ(reason(with(good, 23, 17)), "f: at byte 0: the lengths before and behind a header differ: 16 and 17");
    EXPECT_EQ(reason(with(good, 5, '\n')), "f: at byte 0: the name \"G?OD    \" is no text");
    EXPECT_EQ(reason(with(good, 16, 'X')), "f: at byte 0: \"GOOD\": the type \"XNTE\" is not known");
    EXPECT_EQ(reason(with(good, 12, '\x80')), "f: at byte 0: \"GOOD\": states -2147483646 values");
    EXPECT_EQ(reason(with(good, 15, 100)),
              "f: at byte 0: \"GOOD\": 100 values of 4 bytes, but the file has only 52 bytes behind the header");
    EXPECT_EQ(reason(with(good, 15, 3)),
              "f: at byte 40: \"GOOD\": a record of 16 bytes, expected 1 values of 4 bytes or a part of them");
    EXPECT_EQ(reason(with(good, 27, 12)),
              "f: at byte 24: \"GOOD\": a record of 12 bytes, expected 2 values of 4 bytes or a part of them");
    EXPECT_EQ(reason(with(good, 27, 6)),
              "f: at byte 24: \"GOOD\": a record of 6 bytes, expected 2 values of 4 bytes or a part of them");
    EXPECT_EQ(reason(with(good, 24, '\xFF')),
              "f: at byte 24: \"GOOD\": a record of -16777208 bytes, expected 2 values of 4 bytes or a part of them");
    EXPECT_EQ(reason(with(good, 39, 4)),
              "f: at byte 36: \"GOOD\": the lengths before and behind a record differ: 8 and 4");
    EXPECT_EQ(reason(with(good, 43, 99)), "f: at byte 40: a record of 99 bytes where a header of 16 is expected");
    EXPECT_EQ(reason(good.substr(0, 20)), "f: at byte 0: the file ends within a header");
    EXPECT_EQ(reason(good + std::string(3, '\0')), "f: at byte 76: the file ends within a header");
    RecordBytes mixed;
    const std::string little = RecordBytes(true).integers("NEXT", {1}).bytes();
    EXPECT_EQ(reason(mixed.integers("GOOD", {1}).bytes() + little),
              "f: at byte 36: the byte order is not that of the file's beginning");
    EXPECT_EQ(reason(little + mixed.bytes()), "f: at byte 36: the byte order is not that of the file's beginning");
    EXPECT_EQ(reason(RecordBytes().header("BIG", -1, "X231").header("BIG", 5, "INTE").bytes()),
              "f: at byte 0: \"BIG\": 2147483653 values of 4 bytes, but the file has only 0 bytes behind the header");
    EXPECT_EQ(reason(RecordBytes().header("BIG", -1, "X231").header("OTHER", 5, "INTE").bytes()),
              "f: at byte 0: \"OTHER\": the header behind one of type X231 is of \"OTHER\", expected \"BIG\"");
    EXPECT_EQ(reason(RecordBytes().header("S", 1, "C000").bytes()),
              "f: at byte 0: \"S\": the type \"C000\" is not known");
}

TEST(RecordFile, Text)
{
    const std::string text
        = " 'INTS    '           3 'INTE'\n           1          -2\n  2147483647\n"
          " 'REALS   '           7 'REAL'\n   0.19995000E+04  -.5 1 +2.5D0 0.1-2 1E-50 -1.5D-60\n"
          " 'DOUBS   '           3 'DOUB'\r\n 0.12345678901234D+03 1.5-105 -0.25+100\r\n"
          " 'CHARS   '           2 'CHAR'\n 'METRES  ' '        '\n"
          " 'LOGS    '           3 'LOGI'\n  T  F  T\n 'NONE'  0 'INTE'\n 'LAST    '  1 'C012'\n 'it says so  '\n";
    Reader reader(text, "f");
    EXPECT_TRUE(reader.formatted());
    auto header = reader.next();
    EXPECT_EQ(header->line, 1);
    EXPECT_EQ(values<std::int32_t>(reader, *header), (std::vector<std::int32_t>{1, -2, 2147483647}));
    header = reader.next();
    EXPECT_EQ(header->line, 4);
    EXPECT_EQ(values<float>(reader, *header), (std::vector<float>{1999.5F, -0.5F, 1, 2.5F, 0.001F, 0, -0.0F}));
    header = reader.next();
    EXPECT_EQ(values<double>(reader, *header), (std::vector<double>{123.45678901234, 1.5e-105, -0.25e100}));
    header = reader.next();
    EXPECT_EQ(reader.read_strings(), (std::vector<std::string>{"METRES", ""}));
    header = reader.next();
    EXPECT_EQ(header->name, "LOGS");
    EXPECT_EQ(reader.next()->name, "NONE");
    header = reader.next();
    EXPECT_EQ(header->line, 13);
    EXPECT_EQ(reader.read_strings(), (std::vector<std::string>{"it says so"}));
    EXPECT_FALSE(reader.next());

    // Stepped over, in pieces and from disk.
    const test::TemporaryFolder folder;
    Reader disk(folder.write("f", text));
    std::string names;
    while (const auto found = disk.next()) {
        names += found->name + ' ';
    }
    EXPECT_EQ(names, "INTS REALS DOUBS CHARS LOGS NONE LAST ");
}

TEST(RecordFile, DamagedText)
{
    EXPECT_EQ(reason(" 'A       '  2 'INTE'\n 1 x\n"), "f:2: \"A\": \"x\" is not a number of type INTE");
    EXPECT_EQ(reason(" 'A       '  2 'INTE'\n 1 99999999999\n"),
              "f:2: \"A\": \"99999999999\" is beyond the range of type INTE");
    EXPECT_EQ(reason(" 'A       '  2 'INTE'\n 1\n"), "f:3: \"A\": the file ends, 1 of 2 values are missing");
    EXPECT_EQ(reason(" 'A       '  1 'REAL'\n ********\n"), "f:2: \"A\": \"********\" is not a number of type REAL");
    EXPECT_EQ(reason(" 'A       '  1 'REAL'\n 0.1E+50\n"), "f:2: \"A\": \"0.1E+50\" is beyond the range of type REAL");
    EXPECT_EQ(reason(" 'A       '  1 'REAX'\n 1\n"), "f:1: \"A\": the type \"REAX\" is not known");
    EXPECT_EQ(reason(" 'A       '  -1 'REAL'\n 1\n"), "f:1: \"A\": states -1 values");
    EXPECT_EQ(reason(" 'A       '  x 'REAL'\n"), "f:1: \"A\": \"x\" is not a number of type INTE");
    EXPECT_EQ(reason(" 'A       '  1000 'REAL'\n 1 2\n"),
              "f:1: \"A\": 1000 values, but the file has only 6 bytes behind the header");
    EXPECT_EQ(reason(" 'A       '  1 'REAL'\n 1 2\n"), "f:2: expected a name in quotes");
    EXPECT_EQ(reason(" 'ABCDEFGHI'  1 'REAL'\n 1\n"),
              "f:1: a name without a closing quote or of more than 8 characters");
    EXPECT_EQ(reason(" 'A\nB'  1 'REAL'\n 1\n"), "f:1: a name without a closing quote");
    EXPECT_EQ(reason(" 'A'  1 'CHAR'\n 1\n"), "f:2: \"A\": expected a string in quotes");
    EXPECT_EQ(reason(" 'A'  1 'LOGI'\n 'B' 1 'INTE' 1"),
              "f:2: \"A\": a name in quotes where 1 more values are expected");
    EXPECT_EQ(reason(" 'A'  1 'REAL'\n " + std::string(100, '1')),
              "f:2: \"A\": a word of more than 64 characters where a number is expected");
    EXPECT_EQ(reason(" 'A'"), "f:1: \"A\": the file ends within a header");
}

template <class T> std::vector<T> special_numbers(std::size_t count)
{
    using Limits = std::numeric_limits<T>;
    const std::vector<T> some
        = {T(0.1), T(-1) / 3, Limits::max(), Limits::lowest(), Limits::min(), Limits::denorm_min(),
           T(0),   T(-0.0),   T(123456.789), Limits::epsilon()};
    std::vector<T> numbers(count);
    for (std::size_t i = 0; i < count; ++i) {
        numbers[i] = some[i % some.size()];
    }
    return numbers;
}

TEST(RecordFile, WrittenArraysReadBack)
{
    const test::TemporaryFolder folder;
    const auto path = folder / "f";
    std::vector<std::string> names(211, "NAME");
    names.back() = "LAST ONE";
    const auto reals = special_numbers<float>(2501);
    const auto doubles = special_numbers<double>(1000);
    const std::vector<std::int32_t> integers = {std::numeric_limits<std::int32_t>::min(), 0, 17,
                                                std::numeric_limits<std::int32_t>::max()};
    for (const bool formatted : {false, true}) {
        AtomicFile file(path);
        Writer writer(file, formatted);
        writer.strings("NAMES", names, path);
        writer.begin("REALS", Type::Real, reals.size(), path);
        // In uneven pieces.
        for (std::size_t at = 0; at < reals.size();) {
            const std::size_t part = std::min<std::size_t>(reals.size() - at, 7 + at % 1300);
            writer.put(std::span<const float>(reals).subspan(at, part));
            at += part;
        }
        writer.begin("DOUBLES8", Type::Double, doubles.size(), path);
        writer.put(std::span<const double>(doubles));
        writer.begin("FLAGS", Type::Logical, integers.size(), path);
        writer.put(std::span<const std::int32_t>(integers));
        writer.begin("INTS", Type::Integer, integers.size(), path);
        writer.put(std::span<const std::int32_t>(integers));
        writer.begin("END", Type::Integer, 0, path);
        file.commit();
        if (!formatted) {
            EXPECT_EQ(test::file_text(path).substr(0, 24),
                      RecordBytes().header("NAMES", 211, "CHAR").bytes());
        }
        Reader reader(path);
        EXPECT_EQ(reader.formatted(), formatted);
        auto header = reader.next();
        EXPECT_EQ(header->name, "NAMES");
        EXPECT_EQ(reader.read_strings(), names);
        header = reader.next();
        const auto read_reals = values<float>(reader, *header);
        for (std::size_t i = 0; i < reals.size(); ++i) {
            ASSERT_EQ(read_reals[i], reals[i]) << i;
            ASSERT_EQ(std::signbit(read_reals[i]), std::signbit(reals[i])) << i;
        }
        header = reader.next();
        EXPECT_EQ(values<double>(reader, *header), doubles);
        EXPECT_EQ(reader.next()->type, Type::Logical);
        header = reader.next();
        EXPECT_EQ(values<std::int32_t>(reader, *header), integers);
        EXPECT_EQ(reader.next()->name, "END");
        EXPECT_FALSE(reader.next());
    }
    AtomicFile file(path);
    Writer writer(file, false);
    EXPECT_THROW(writer.begin("BIG", Type::Real, std::uint64_t{1} << 31, path), FileError);
}

TEST(RecordFile, TextKeepsItsColumns)
{
    // 17 columns for REAL, 23 for DOUB, with a blank before every number.
    const test::TemporaryFolder folder;
    const auto path = folder / "f";
    const std::vector<double> doubles = {0, 1.5, -1.0 / 3, -1.2345678901234567e-12, 1.2345678901234567e+12,
                                         -1.2345678901234567e+12, 1e100, -1.2345678901234567e-5};
    const std::vector<float> reals = {0, -1.0F / 3, 1e-30F};
    AtomicFile file(path);
    Writer writer(file, true);
    writer.begin("D", Type::Double, doubles.size(), path);
    writer.put(std::span<const double>(doubles));
    writer.begin("R", Type::Real, reals.size(), path);
    writer.put(std::span<const float>(reals));
    file.commit();
    EXPECT_EQ(test::file_text(path), " 'D       '           8 'DOUB'\n"
                                     "                0.0D+00                1.5D+00 -3.333333333333333D-01\n"
                                     " -12345678901234567D-28 1.2345678901234568D+12 -1.2345678901234568D12\n"
                                     "               1.0D+100 -1.2345678901234568D-5\n"
                                     " 'R       '           3 'REAL'\n"
                                     "   0.00000000E+00  -3.33333343E-01   1.00000000E-30\n");
    Reader reader(path);
    EXPECT_EQ(values<double>(reader, *reader.next()), doubles);
    EXPECT_EQ(values<float>(reader, *reader.next()), reals);
}

TEST(RecordFile, ChangedWhileReading)
{
    const test::TemporaryFolder folder;
    const std::vector<std::int32_t> numbers(2'000'000, 1);
    const std::string bytes = RecordBytes().integers("A", numbers).bytes();
    const auto path = folder.write("f", bytes);
    {
        Reader reader(path);
        (void)reader.next();
        std::filesystem::resize_file(path, 3'000'000);
        EXPECT_THROW((void)reader.next(), FileError);
    }
    folder.write("f", bytes);
    Reader reader(path);
    folder.write("f", bytes + bytes);
    EXPECT_THROW(reader.check_unchanged(), FileError);
}

TEST(RecordFile, NotFiles)
{
    const test::TemporaryFolder folder;
    EXPECT_THROW(Reader reader(folder / "none"), FileError);
    EXPECT_THROW(Reader reader(folder.path()), FileError);
}

TEST(RecordFile, HeadersOfTheBeginning)
{
    const std::string bytes
        = RecordBytes().integers("A", {1, 2}).reals("B", {1}).strings("C", {"x"}).empty("D").bytes();
    std::string names;
    for (const auto& header : records::peek_headers(bytes)) {
        names += header.name + std::to_string(header.count) + ' ';
    }
    EXPECT_EQ(names, "A2 B1 C1 D0 ");
    EXPECT_EQ(records::peek_headers(std::string_view(bytes).substr(0, 40)).size(), 1U);
    EXPECT_TRUE(records::peek_headers("").empty());
    EXPECT_TRUE(records::peek_headers("SPECGRID\n 1 1 1 /").empty());
    EXPECT_TRUE(records::peek_headers(std::string(100, '\0')).empty());
    const auto text = records::peek_headers("\n 'A  '  2 'CHAR'\n 'x' 'y'\n 'B'  1 'INTE'\n 1\n");
    ASSERT_EQ(text.size(), 2U);
    EXPECT_EQ(text[1].name, "B");
}

} // namespace
} // namespace lodex
