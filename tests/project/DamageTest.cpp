// Files that are no projects, are damaged or come from elsewhere: one clear message, and nothing changed.

#include "ProjectFixture.h"
#include "SealedFile.h"

#include "lodex/project/ArrayCodec.h"
#include "lodex/project/ProjectFile.h"

#include <nlohmann/json.hpp>

#include <sys/resource.h>

namespace {

using namespace lodex;
using nlohmann::json;

class Damage : public ProjectFixture {
protected:
    Damage()
    {
        add_box("Box", {4, 3, 2});
        EXPECT_TRUE(run("lodex on SGrid Box set_layers units \"A\"+\"B\" sizes 1+1\n"
                        "lodex sgrid_merge_multiple_sections name Coarse sgrid Box direction vertical sections 0+1\n"
                        "lodex on SGrid Box create_upgridding_activity result Coarse modifications 3+1+2+2"));
        save_project(file("good"));
        good = bytes_of(file("good"));
        start_anew();
        add_box("Mine", {2, 1, 1});
        Interpreter::instance().append_to_journal("mine");
        before = all_models();
    }
    /// The error with which the file is refused; nothing may have changed.
    std::string refused(const std::string& bytes)
    {
        write_bytes(file(), bytes);
        const std::string message = open_error(file());
        EXPECT_NE(message, "") << "was opened";
        expect_models(before);
        EXPECT_EQ(journal(), "mine\n");
        return message;
    }
    std::string refused(const json& contents) { return refused(with_contents(good, contents.dump())); }
    [[nodiscard]] json contents() const { return json::parse(contents_of(good)); }
    static bool has(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

    std::string good;
    std::vector<std::pair<std::string, GridModel>> before;
};

TEST_F(Damage, WhatIsNoProject)
{
    EXPECT_TRUE(has(open_error(folder), "is a folder, not a project"));
    EXPECT_TRUE(has(open_error(file("nothing")), "nothing: cannot be read: No such file"));
    EXPECT_TRUE(has(refused(std::string()), "is no project"));
    EXPECT_TRUE(has(refused(std::string("SPECGRID\n1 1 1 1 F /\n")), "is no project"));
    EXPECT_TRUE(has(refused("\x89HDF\r\n\x1a\n" + std::string(600, '\0')), "is an HDF5 file, but no project"));
    EXPECT_TRUE(has(open_error("/dev/null"), "is not a regular file"));
    EXPECT_TRUE(has(error("lodex open project \"" + file("nothing").string() + "\""), "No such file"));
    expect_models(before);
}

TEST_F(Damage, ALaterVersion)
{
    std::string later = good;
    later.replace(later.find("format 2"), 8, "format 3");
    EXPECT_TRUE(has(refused(later), "was written by a later version of the program (format 3; this one reads up to 2)"));
    later.replace(later.find("format 3"), 8, "format 0");
    EXPECT_TRUE(has(refused(later), "its first lines are damaged"));
}

TEST_F(Damage, CutOffAnywhere)
{
    for (std::size_t size = 0; size < good.size(); size += 1 + size / 64)
        (void)refused(good.substr(0, size));
    EXPECT_TRUE(has(refused(good.substr(0, good.size() - 1)), "is truncated"));
}

TEST_F(Damage, AnyByteChanged)
{
    write_bytes(file(), good);
    open_project(file());
    const auto models = all_models();
    int refusals = 0, losses = 0;
    for (std::size_t place = 0; place < good.size(); place += place < 512 ? 7 : 61) {
        std::string bytes = good;
        bytes[place] = static_cast<char>(bytes[place] ^ (1 << place % 8));
        write_bytes(file(), bytes);
        if (!open_error(file()).empty()) {
            ++refusals;
            continue;
        }
        bool lost = false;
        for (const auto& [name, model] : models) {
            try {
                find_grid(name)->load();
            } catch (const FileError&) {
                lost = true;
            }
        }
        losses += lost ? 1 : 0;
        if (!lost)
            expect_models(models);
    }
    EXPECT_GT(refusals, 10);
    EXPECT_GT(losses, 1);
}

/// Contents that are sealed by their checksums but make no sense.
TEST_F(Damage, ContentsThatLie)
{
    const auto changed = [this](const char* pointer, const json& value) {
        json lie = contents();
        lie[json::json_pointer(pointer)] = value;
        return refused(lie);
    };
    EXPECT_TRUE(has(changed("/grids/0/size/0", 5), "values"));
    EXPECT_TRUE(has(changed("/grids/0/size/0", 0), "size of a grid"));
    EXPECT_TRUE(has(changed("/grids/0/size/0", -4), "size of a grid"));
    EXPECT_TRUE(has(changed("/grids/0/size", json{1 << 30, 1 << 30, 1 << 30}), "size of a grid"));
    EXPECT_TRUE(has(changed("/grids/0/size", json{4, 3}), "size of a grid"));
    EXPECT_TRUE(has(changed("/grids/0/size/1", "3"), "size of a grid"));
    EXPECT_TRUE(has(changed("/grids/0/size/1", 3.5), "size of a grid"));
    EXPECT_TRUE(has(changed("/grids/0/size/1", 0xFFFFFFFFFFFFFFFFu), "size of a grid"));
    EXPECT_TRUE(has(changed("/grids/1/id", contents()["grids"][0]["id"]), "id of a grid"));
    EXPECT_TRUE(has(changed("/grids/0/active_flags/type", "float32"), "type of an array"));
    EXPECT_TRUE(has(changed("/grids/0/active_flags/type", "complex"), "type of an array"));
    EXPECT_TRUE(has(changed("/grids/0/active_flags/chunk_count", 0), "chunks of an array"));
    EXPECT_TRUE(has(changed("/grids/0/active_flags/chunk_count", 1), "chunks of an array"));
    EXPECT_TRUE(has(changed("/grids/0/active_flags/chunks/0", std::int64_t{1} << 30), "place of a chunk"));
    EXPECT_TRUE(has(changed("/grids/0/active_flags/chunks/1", 0), "size of a chunk"));
    EXPECT_TRUE(has(changed("/grids/0/active_flags/chunks/1", 0xFFFFFFFFFFFFFFFFu), "place of a chunk"));
    EXPECT_TRUE(has(changed("/grids/0/active_flags/chunks", json::array()), "chunks of an array"));
    EXPECT_TRUE(has(changed("/grids/0/layers/0/nb_k_cells", 3), "layers of a grid"));
    EXPECT_TRUE(has(changed("/grids/0/layers/0/nb_k_cells", 0), "layers of a grid"));
    EXPECT_TRUE(has(changed("/grids/0/layers/0/layering", "upwards"), "layering of a layer"));
    EXPECT_TRUE(has(changed("/grids/0/activities/0", 1), "activity of a grid"));
    EXPECT_TRUE(has(changed("/activities/0/kind", "sleeping"), "no activities of kind"));
    EXPECT_TRUE(has(changed("/activities/0/modifications", "1+1"), "groups"));
    EXPECT_TRUE(has(changed("/grids/1/records/0/source_size/2", 1), "index range of a record"));
    EXPECT_TRUE(has(changed("/grids/1/records/0/source_size/2", 200), "size of a source"));
    EXPECT_TRUE(has(changed("/units/vertical", "league"), "no unit of length"));
    EXPECT_TRUE(has(changed("/journal/0", "lodex a\nlodex b"), "journal"));
    EXPECT_TRUE(has(changed("/grids/0/properties/0/values/count", 25), "has 25 values, 24 are needed"));
    EXPECT_TRUE(has(changed("/grids", 7), "grids"));
    for (const char* key : {"grids", "activities", "units", "journal", "parts", "styles", "program"}) {
        json lie = contents();
        lie.erase(key);
        EXPECT_TRUE(has(refused(lie), "its table of contents is damaged")) << key;
    }
    EXPECT_TRUE(has(refused(with_contents(good, "{\"grids\": [")), "its table of contents is damaged"));
    EXPECT_TRUE(has(refused(with_contents(good, std::string(100000, '['))), "its table of contents is damaged"));
    EXPECT_TRUE(has(refused(with_contents(good, "[]")), "its table of contents is damaged"));
}

TEST_F(Damage, NamesAreMendedAsThoseOfImportedGridsAre)
{
    json lie = contents();
    lie["grids"][0]["name"] = "a;b";
    lie["grids"][1]["name"] = "a;b";
    lie["grids"][0]["properties"][0]["name"] = "everywhere";
    lie["grids"][0]["properties"][1]["name"] = {{"bytes", "x\u0007\u00FF"}};
    write_bytes(file(), with_contents(good, lie.dump()));
    open_project(file());
    ASSERT_NE(find_grid("a_b"), nullptr);
    ASSERT_NE(find_grid("a_b_2"), nullptr);
    EXPECT_EQ(find_grid("a_b")->header().properties[0].name, "everywhere_");
    EXPECT_EQ(find_grid("a_b")->header().properties[1].name, "x__");
    const auto told = messages.of(Lodex::LogLevel::Warning);
    EXPECT_EQ(std::ranges::count_if(told, [](const std::string& text) { return has(text, " is named "); }), 4);
    EXPECT_EQ(value("a_b", "everywhere_", 3, 2, 1), 24);
}

/// A small file that promises much gets no more memory than its bytes can stand for.
TEST_F(Damage, MemoryIsBoundedByTheSizeOfTheFile)
{
    json lie = contents();
    json& grid = lie["grids"][0];
    grid["size"] = {1 << 13, 1 << 13, 16};
    const std::int64_t cells = std::int64_t{1} << 30;
    const auto promise = [&](json& array, std::int64_t count) {
        array["count"] = count;
        array["chunk_count"] = std::int64_t{1} << 20;
        json chunks = json::array();
        for (std::int64_t n = 0; n < (count + (1 << 20) - 1) >> 20; ++n)
            for (const int part : {512, 1, 0, 0})
                chunks.push_back(part);
        array["chunks"] = chunks;
    };
    promise(grid["corner_depths"], 8 * cells);
    promise(grid["pillars"], 6 * ((std::int64_t{1} << 13) + 1) * ((std::int64_t{1} << 13) + 1));
    EXPECT_TRUE(has(refused(lie), "size of a chunk"));
    for (const char* array : {"corner_depths", "pillars"})
        for (std::size_t n = 1; n < grid[array]["chunks"].size(); n += 4)
            grid[array]["chunks"][n] = 1 << 14; // enough for each, all at one place
    EXPECT_TRUE(has(refused(lie), "size of the chunks"));
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    EXPECT_LT(usage.ru_maxrss, 1 << 20) << "kilobytes";
}

TEST_F(Damage, FlagsAreZeroOrOne)
{
    json lie = contents();
    json& flags = lie["grids"][0]["active_flags"];
    std::vector<std::byte> values(24, std::byte{1});
    values[5] = std::byte{2};
    flags["chunks"] = {good.size(), values.size(), checksum(values), 1};
    const std::string bytes = good + std::string(reinterpret_cast<const char*>(values.data()), values.size());
    write_bytes(file(), with_contents(bytes, lie.dump()));
    open_project(file());
    EXPECT_TRUE(has(error("lodex report sgrid Box"), "a flag is neither 0 nor 1"));
    EXPECT_EQ(find_grid("Box")->active_flags()[5], 0) << "all inactive for a window";
}

} // namespace
