// What holds for every format: full disks, files that change, field models that come back.

#include "GridTestTools.h"

#include <lodex/utils/FileError.h>

#include <algorithm>
#include <csignal>
#include <gtest/gtest.h>
#include <map>
#include <set>
#include <sys/resource.h>

namespace lodex {
namespace {

using Folder = test::TemporaryFolder;

/// A file of each format that can be written; EGRID as text as well.
std::map<std::string, const GridFormat*> targets()
{
    std::map<std::string, const GridFormat*> all;
    for (const GridFormat* const format : GridFormats::all()) {
        if (format->can_write()) {
            const auto endings = format->endings();
            all["out_" + std::string(format->name()) + std::string(endings.empty() ? "" : endings.front())] = format;
        }
    }
    all["text.fegrid"] = GridFormats::find("egrid");
    return all;
}

/// The names and the bytes of all files of a folder.
std::map<std::string, std::string> content_of(const Folder& folder)
{
    std::map<std::string, std::string> content;
    for (const std::string& name : folder.names()) {
        content[name] = test::file_text(folder / name);
    }
    return content;
}

/// While it lives, files of this process may not grow beyond `limit`: the disk is full there. Not in a child process,
/// which would be without the threads that some writers use.
class FullDisk {
public:
    explicit FullDisk(rlim_t limit)
    {
        handler_ = ::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limits{limit, before_.rlim_max};
        EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limits), 0);
    }
    ~FullDisk()
    {
        ::setrlimit(RLIMIT_FSIZE, &before_);
        ::signal(SIGXFSZ, handler_);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit before_{};
    void (*handler_)(int) = SIG_DFL;
};

TEST(AllFormats, AFullDiskLeavesTheOldFiles)
{
    const GridModel model = test::full_model(25, 20, 10);
    for (const auto& [file, format] : targets()) {
        const Folder folder;
        format->write(test::full_model(2, 2, 2), folder / file, {});
        const auto before = content_of(folder);
        for (const rlim_t limit : {rlim_t{0}, rlim_t{5'000}, rlim_t{120'000}}) {
            const auto path = folder / file;
            std::string reason = "none";
            {
                const FullDisk full(limit);
                try {
                    format->write(model, path, {});
                } catch (const FileError& error) {
                    reason = error.reason();
                }
            }
            EXPECT_EQ(reason, "cannot be written: File too large") << file << " limit " << limit;
            EXPECT_EQ(content_of(folder), before) << file << " limit " << limit;
        }
    }
}

TEST(AllFormats, AFolderThatGoesDuringExport)
{
    const GridModel model = test::full_model(12, 10, 8);
    for (const auto& [file, format] : targets()) {
        const Folder folder;
        std::filesystem::create_directory(folder / "inner");
        WriteOptions options;
        options.progress = [&](double) {
            std::filesystem::remove_all(folder / "inner");
            return true;
        };
        std::string message;
        try {
            format->write(model, folder / "inner/" / file, options);
        } catch (const FileError& error) {
            message = error.reason();
        }
        EXPECT_TRUE(message.ends_with("No such file or directory")) << file << ": " << message;
        EXPECT_TRUE(folder.names().empty()) << file;
    }
}

TEST(AllFormats, TheSecondOfTwoFilesThatCannotTakeItsNameBringsTheFirstBack)
{
    const GridModel model = test::full_model(6, 5, 4);
    const GridFormat& format = *GridFormats::find("egrid");
    for (const bool init_first : {false, true}) {
        const Folder folder;
        format.write(test::full_model(2, 2, 2), folder / "A.EGRID", {});
        const std::string blocked = init_first ? "A.INIT" : "A.EGRID";
        const std::string other = init_first ? "A.EGRID" : "A.INIT";
        const std::string old = test::file_text(folder / other);
        WriteOptions options;
        double last = 0;
        options.progress = [&](double done) {
            // At the end of writing, when both files are there under other names.
            if (done >= 1 && last < 1) {
                std::filesystem::remove(folder / blocked);
                std::filesystem::create_directories(folder / (blocked + "/inside"));
            }
            last = done;
            return true;
        };
        EXPECT_THROW(format.write(model, folder / "A.EGRID", options), FileError) << blocked;
        EXPECT_EQ(last, 1) << blocked;
        EXPECT_TRUE(test::file_text(folder / other) == old) << blocked;
        std::set<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
            names.insert(entry.path().filename().string());
        }
        EXPECT_EQ(names, (std::set<std::string>{"A.EGRID", "A.INIT"})) << blocked;
    }
}

TEST(AllFormats, FilesThatChangeDuringImportGiveAnErrorOrTheOldModel)
{
    const GridModel model = test::full_model(40, 30, 15);
    for (const auto& [file, format] : targets()) {
        if (!format->can_read()) {
            continue;
        }
        const Folder folder;
        const auto path = folder / file;
        format->write(model, path, {});
        const std::string bytes = test::file_text(path);
        ReadOptions options;
        int steps = 0;
        options.progress = [&](double) { return ++steps > 0; };
        const GridModel whole = format->read(path, options).model;
        int errors = 0;
        int trials = 0;
        const std::map<std::string, std::function<void()>> changes = {
            {"cut", [&] { std::filesystem::resize_file(path, bytes.size() / 3); }},
            {"longer", [&] { std::filesystem::resize_file(path, bytes.size() + 100); }},
            {"other bytes", [&] { folder.write(file, std::string(bytes.size(), '7')); }},
            {"removed", [&] { std::filesystem::remove(path); }}};
        for (const auto& [what, change] : changes) {
            for (int at = 1; at <= steps; at += std::max(1, steps / 3)) {
                folder.write(file, bytes);
                // Not within one step of the file system's clock.
                std::filesystem::last_write_time(path,
                                                 std::filesystem::file_time_type::clock::now() - std::chrono::hours(1));
                int step = 0;
                options.progress = [&, &change = change](double) {
                    if (++step == at) {
                        change();
                    }
                    return true;
                };
                ++trials;
                try {
                    const GridModel read = format->read(path, options).model;
                    EXPECT_EQ(test::difference(read, whole), "") << file << ' ' << what << " at step " << at;
                } catch (const FileError& error) {
                    ++errors;
                    EXPECT_NE(what, "removed") << file << ": " << error.what();
                    EXPECT_EQ(error.file(), path.string()) << error.what();
                }
            }
        }
        std::printf("%s: %d of %d trials found the change\n", file.c_str(), errors, trials);
        // GRDECL of this size is in memory before anything can be changed; GrdeclWindowTest.cpp has longer ones.
        EXPECT_TRUE(errors > 0 || format->name() == "grdecl") << file;
    }
}

/// All grids among the field models.
const std::vector<std::string>& field_files()
{
    static const std::vector<std::string> files = {
        "spe9/SPE9.DATA", "spe9/SPE9_CP_SHORT.DATA", "spe9/SPE9_CP_SHORT.EGRID", "spe10_model1/SPE10_MODEL1.DATA",
        "spe10_model1/SPE10_MODEL1_CP.DATA", "model1/FAULTS_MODEL_1.DATA", "model1/FAULTS_MODEL_1.EGRID",
        "simpleb8/simpleb8.grdecl", "simpleb8/B8.EGRID", "simpleb8/B8.FEGRID", "simpleb8/B8.GRID",
        "reek/reek_sim_grid.grdecl",
        "reek/REEK.EGRID", "drogon/DROGON.EGRID"};
    return files;
}

/// Also the files of these sets whose names are not listed above.
std::vector<std::filesystem::path> grids_of(const std::filesystem::path& data)
{
    std::set<std::filesystem::path> all;
    for (const std::string& file : field_files()) {
        if (std::filesystem::exists(data / file)) {
            all.insert(data / file);
        }
    }
    for (const char* const set : {"tiny", "reek", "drogon"}) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(data / set)) {
            const std::string ending = entry.path().extension().string();
            if (entry.is_regular_file()
                && (set == std::string("tiny") ? ending != ".json" && ending != ".md"
                                               : ending.starts_with(".roff") || ending == ".bgrdecl")) {
                all.insert(entry.path());
            }
        }
    }
    return {all.begin(), all.end()};
}

/// Without what the format says that it has no place for.
GridModel reduced(GridModel model, const std::string& format)
{
    if (format != "egrid" && format != "bgrdecl") {
        return model;
    }
    model.regions.clear();
    model.layers.clear();
    model.faults.clear();
    model.kept.clear();
    std::erase_if(model.properties, [](const PropertyData& property) { return property.on_points; });
    for (PropertyData& property : model.properties) {
        property.code_names.clear();
        property.unit.clear();
        std::visit(
            [&]<class T>(std::vector<T>& values) {
                for (std::size_t i = 0; i < values.size(); ++i) {
                    if constexpr (std::is_floating_point_v<T>) {
                        if (property.no_data && values[i] == static_cast<T>(*property.no_data)) {
                            values[i] = std::numeric_limits<T>::quiet_NaN();
                        }
                    } else if (format == "egrid" && property.no_data && model.active[i] == 0
                               && values[i] == static_cast<T>(*property.no_data)) {
                        values[i] = 0; // undefined codes of inactive cells come back under another number
                    }
                }
            },
            property.values);
        property.no_data.reset();
    }
    return model;
}

TEST(AllFormats, FieldModelsComeBackFromEveryFormat)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    const Folder folder;
    int models = 0;
    for (const auto& source : grids_of(*data)) {
        GridModel model;
        try {
            model = GridFormats::for_reading(source).read(source, {}).model;
        } catch (const FileError& error) {
            // Properties alone, and things that are no grids at all.
            const std::string set = source.parent_path().filename();
            EXPECT_TRUE(set == "tiny" || set == "reek" || set == "drogon") << error.what();
            continue;
        }
        ++models;
        for (const auto& [file, format] : targets()) {
            const std::string name(format->name());
            if (!format->can_read() || (file == "text.fegrid" && model.cells() > 5'000)) {
                continue;
            }
            for (const auto& old : folder.names()) {
                std::filesystem::remove(folder / old);
            }
            const WriteResult written = format->write(model, folder / file, {});
            GridModel back = format->read(folder / file, {}).model;
            GridModel expected = reduced(model, name);
            if (name == "egrid" || name == "bgrdecl") {
                back = reduced(std::move(back), name);
                // Told when it is written: names of up to eight characters, 32 bits.
                const auto is_renaming = [](const Message& message) {
                    return message.text.find("is written as") != std::string::npos;
                };
                const bool renamed = std::any_of(written.messages.begin(), written.messages.end(), is_renaming);
                ASSERT_EQ(back.properties.size(), expected.properties.size());
                for (std::size_t i = 0; renamed && i < back.properties.size(); ++i) {
                    back.properties[i].name = expected.properties[i].name;
                }
                const auto rounded = [&](const std::string& what) {
                    return std::any_of(written.messages.begin(), written.messages.end(), [&](const Message& m) {
                        return m.text.find(what + " is rounded") != std::string::npos;
                    });
                };
                const auto to_float = [](RealArray& array) {
                    const auto values = test::values_of(array);
                    array = std::vector<float>(values.begin(), values.end());
                };
                if (rounded("COORD") || (name == "egrid" && expected.coord.is_double())) {
                    to_float(expected.coord);
                }
                if (rounded("ZCORN") || (name == "egrid" && expected.zcorn.is_double())) {
                    to_float(expected.zcorn);
                }
                // As 32-bit numbers.
                ASSERT_EQ(back.frame.map_axes.has_value(), model.frame.map_axes.has_value());
                for (std::size_t n = 0; model.frame.map_axes && n < model.frame.map_axes->size(); ++n) {
                    EXPECT_FLOAT_EQ(static_cast<float>((*back.frame.map_axes)[n]),
                                    static_cast<float>((*model.frame.map_axes)[n]));
                }
                expected.frame.map_axes = back.frame.map_axes;
            }
            EXPECT_EQ(test::difference(expected, back), "") << source << " as " << file;
        }
    }
    std::printf("%d field models in every format\n", models);
    EXPECT_GT(models, 30);
}

} // namespace
} // namespace lodex
