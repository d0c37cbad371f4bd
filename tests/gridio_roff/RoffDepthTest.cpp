// Depths of nodes: how they are found, put into the file's order and read back without being kept twice.

#include "../gridio/GridTestTools.h"

#include <lodex/gridio/RoffDepths.h>
#include <lodex/gridio/RoffReader.h>
#include <lodex/gridio/RoffWriter.h>
#include <lodex/gridio/Transpose.h>

#include <gtest/gtest.h>
#include <limits>
#include <random>

namespace lodex {
namespace {

using roff::Form;

/// Every corner has a depth of its own that needs all digits of its type.
template <class Depth> GridModel torn_model(const GridSize& size)
{
    GridModel model;
    model.size = size;
    std::vector<float> coord;
    for (std::int64_t j = 0; j <= size[1]; ++j) {
        for (std::int64_t i = 0; i <= size[0]; ++i) {
            const auto x = static_cast<float>(i);
            const auto y = static_cast<float>(j);
            coord.insert(coord.end(), {x, y, 1000, x, y, 3000});
        }
    }
    model.coord = std::move(coord);
    std::mt19937 random(3);
    std::uniform_real_distribution<Depth> depth(1000, 3000);
    std::vector<Depth> zcorn(static_cast<std::size_t>(8 * model.cells()));
    for (Depth& z : zcorn) {
        z = depth(random);
    }
    model.zcorn = std::move(zcorn);
    model.active.assign(static_cast<std::size_t>(model.cells()), 1);
    return model;
}

template <class T> void expect_transposed()
{
    for (const std::size_t rows : {1U, 3U, 15U, 16U, 17U, 40U}) {
        for (const std::size_t columns : {1U, 2U, 15U, 16U, 33U}) {
            const std::size_t from_pitch = columns + 5;
            const std::size_t to_pitch = rows + 3;
            std::vector<T> from(rows * from_pitch);
            for (std::size_t n = 0; n < from.size(); ++n) {
                from[n] = static_cast<T>(n % 251);
            }
            const T untouched = static_cast<T>(253);
            std::vector<T> to(columns * to_pitch, untouched);
            std::vector<T> turned(to);
            transpose(from.data(), static_cast<std::ptrdiff_t>(from_pitch), rows, columns, to.data(),
                      static_cast<std::ptrdiff_t>(to_pitch));
            // From the last row up.
            transpose(from.data() + (rows - 1) * from_pitch, -static_cast<std::ptrdiff_t>(from_pitch), rows, columns,
                      turned.data(), static_cast<std::ptrdiff_t>(to_pitch));
            for (std::size_t x = 0; x < columns; ++x) {
                for (std::size_t y = 0; y < to_pitch; ++y) {
                    const T expected = y < rows ? from[y * from_pitch + x] : untouched;
                    const T upwards = y < rows ? from[(rows - 1 - y) * from_pitch + x] : untouched;
                    ASSERT_EQ(to[x * to_pitch + y], expected) << rows << " x " << columns;
                    ASSERT_EQ(turned[x * to_pitch + y], upwards) << rows << " x " << columns;
                }
            }
        }
    }
}

TEST(Transpose, EverySizeAndType)
{
    expect_transposed<std::uint8_t>();
    expect_transposed<std::int32_t>();
    expect_transposed<float>();
    expect_transposed<double>();
}

TEST(NodeDepths, CountsAndOrderOfATinyGrid)
{
    // Two cells along I: depths 1 to 16, the second cell's west side as deep as the first one's east side at the top.
    const GridSize size{2, 1, 1};
    const std::vector<float> zcorn = {1, 2, 2, 4, 5, 6, 6, 8, 9, 10, 11, 12, 13, 14, 14, 16};
    std::int64_t nodes_seen = 0;
    roff::NodeDepths<float> nodes(size, zcorn, [&](std::int64_t count) { nodes_seen += count; });
    EXPECT_EQ(nodes_seen, 12);
    // The outer pillars have one cell beside them, along J there is none on the other side: of four corners round a
    // node those of cells that are not there are taken from the neighbour.
    const std::vector<std::uint8_t> splits(nodes.splits().begin(), nodes.splits().end());
    EXPECT_EQ(splits, (std::vector<std::uint8_t>{1, 1, 1, 1, 4, 1, 1, 1, 1, 1, 1, 1}));
    EXPECT_EQ(nodes.count(), 15U);
    ASSERT_EQ(nodes.blocks(), 1U);
    roff::RawBuffer raw, buffer;
    const auto block = nodes.block<float>(0, roff::DepthPart::Negative, raw, buffer);
    EXPECT_EQ(std::vector<float>(block.begin(), block.end()),
              (std::vector<float>{-9, -1, -13, -5, -10, -11, -10, -11, -2, -14, -6, -12, -4, -16, -8}));
    EXPECT_TRUE(nodes.finite());
    EXPECT_EQ(nodes.largest_rest(), 0);
}

TEST(RoffDepths, WideAndTornGridsComeBack)
{
    const test::TemporaryFolder folder;
    const auto path = folder / "model.roff";
    for (const GridSize& size : {GridSize{1, 2, 3}, GridSize{15, 3, 16}, GridSize{16, 2, 15}, GridSize{255, 2, 3},
                                 GridSize{256, 1, 2}, GridSize{600, 3, 17}, GridSize{40, 60, 70}}) {
        for (const GridModel& model : {torn_model<float>(size), torn_model<double>(size)}) {
            for (const Form form : {Form::LittleEndian, Form::BigEndian, Form::Text}) {
                roff::write_file(model, path, {}, form);
                EXPECT_EQ(test::difference(model, roff::read_file(path, {}).model), "")
                    << size[0] << " x " << size[1] << " x " << size[2] << " form " << static_cast<int>(form);
            }
        }
    }
}

TEST(RoffDepths, DepthsThatAreNoNumbersAreFoundAtEveryCorner)
{
    const test::TemporaryFolder folder;
    const GridModel whole = torn_model<float>({3, 2, 2});
    for (std::size_t n = 0; n < whole.zcorn.size(); ++n) {
        GridModel model = whole;
        model.zcorn.visit_mutable([n](auto z) { z[n] = std::numeric_limits<float>::quiet_NaN(); });
        try {
            roff::write_file(model, folder / "model.roff", {}, Form::LittleEndian);
            ADD_FAILURE() << n;
        } catch (const FileError& error) {
            EXPECT_NE(error.reason().find("at position " + std::to_string(n + 1) + ','), std::string::npos)
                << error.what();
        }
        EXPECT_TRUE(folder.names().empty());
    }
}

TEST(RoffDepths, TextIsReadInHalfAsMuchMemoryAgainAsTheModel)
{
    const test::TemporaryFolder folder;
    const auto path = folder / "model.roffasc";
    for (const GridModel& model : {torn_model<double>({64, 50, 40}), torn_model<float>({64, 50, 40})}) {
        roff::write_file(model, path, {}, Form::Text);
        ReadOptions options;
        options.max_bytes = 3 * model.zcorn.size() * model.zcorn.bytes_per_value() / 2;
        EXPECT_EQ(test::difference(model, roff::read_file(path, options).model), "");
        options.max_bytes = model.zcorn.size() * model.zcorn.bytes_per_value();
        EXPECT_THROW((void)roff::read_file(path, options), FileError);
    }
}

TEST(RoffDepths, TextWithADepthThatIsNoNumberIsRefusedWithItsPlace)
{
    const test::TemporaryFolder folder;
    const auto path = folder / "model.roffasc";
    roff::write_file(torn_model<float>({3, 2, 2}), path, {}, Form::Text);
    std::string text = test::file_text(path);
    const std::size_t data = text.find("array float data", text.find("splitEnz"));
    std::size_t at = text.find('\n', data) + 1;
    constexpr int before = 5;
    for (int n = 0; n < before; ++n) {
        at = text.find_first_of(" \n", at) + 1;
    }
    text.replace(at, text.find_first_of(" \n", at) - at, "nan");
    folder.write("model.roffasc", text);
    try {
        (void)roff::read_file(path, {});
        ADD_FAILURE();
    } catch (const FileError& error) {
        EXPECT_NE(error.reason().find("value 6 of \"data\" is not finite"), std::string::npos) << error.what();
    }
}

} // namespace
} // namespace lodex
