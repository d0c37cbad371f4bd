#pragma once

#include "lodex/geobase/ProjectUnits.h"
#include "lodex/project/Project.h"
#include "lodex/utils/FileError.h"
#include "tests/volumes/GridFixture.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Style.h>

#include <cstring>
#include <fstream>
#include <map>
#include <optional>
#include <sstream>
#include <span>

/// Grids in, projects out.
class ProjectFixture : public GridFixture {
protected:
    ProjectFixture() { lodex::forget_project(); }
    ~ProjectFixture() override
    {
        Lodex::GeobaseLib::instance()->clear();
        lodex::Interpreter::instance().clear_journal();
        lodex::set_project_units(lodex::LengthUnit::Metre, lodex::LengthUnit::Metre);
        lodex::forget_project();
    }

    [[nodiscard]] std::filesystem::path file(const std::string& name = "p.lodex-project") const { return folder / name; }

    /// Empties everything, as a new session would find it.
    static void start_anew()
    {
        Lodex::GeobaseLib::instance()->clear();
        lodex::Interpreter::instance().clear_journal();
        lodex::set_project_units(lodex::LengthUnit::Metre, lodex::LengthUnit::Metre);
        lodex::forget_project();
    }
    static std::string bytes_of(const std::filesystem::path& path)
    {
        std::ostringstream text;
        text << std::ifstream(path, std::ios::binary).rdbuf();
        return std::move(text).str();
    }
    static void write_bytes(const std::filesystem::path& path, const std::string& bytes)
    {
        std::ofstream(path, std::ios::binary) << bytes;
    }
    /// What opening says; empty: it opened.
    static std::string open_error(const std::filesystem::path& path)
    {
        try {
            lodex::open_project(path);
            return {};
        } catch (const lodex::FileError& error) {
            return error.what();
        }
    }

    template <class T> static bool same_bits(const std::vector<T>& a, const std::vector<T>& b)
    {
        return a.size() == b.size() && (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0);
    }
    static bool same_bits(const lodex::RealArray& a, const lodex::RealArray& b)
    {
        return a.is_double() == b.is_double() && a.size() == b.size() && a.visit([&](auto x) {
            return b.visit([&](auto y) { return std::memcmp(x.data(), y.data(), x.size_bytes()) == 0; });
        });
    }
    static bool same_bits(double a, double b) { return std::memcmp(&a, &b, sizeof a) == 0; }

    /// Everything but the ids, bit for bit.
    static void expect_same(const lodex::GridModel& a, const lodex::GridModel& b)
    {
        EXPECT_EQ(a.size, b.size);
        EXPECT_TRUE(same_bits(a.coord, b.coord));
        EXPECT_TRUE(same_bits(a.zcorn, b.zcorn));
        EXPECT_TRUE(same_bits(a.active, b.active));
        ASSERT_EQ(a.properties.size(), b.properties.size());
        for (std::size_t i = 0; i < a.properties.size(); ++i) {
            const lodex::PropertyData &p = a.properties[i], &q = b.properties[i];
            SCOPED_TRACE(p.name);
            EXPECT_EQ(p.name, q.name);
            EXPECT_EQ(p.unit, q.unit);
            EXPECT_EQ(p.code_names, q.code_names);
            EXPECT_EQ(p.on_points, q.on_points);
            ASSERT_EQ(p.no_data.has_value(), q.no_data.has_value());
            EXPECT_TRUE(!p.no_data || same_bits(*p.no_data, *q.no_data));
            ASSERT_EQ(p.values.index(), q.values.index());
            EXPECT_TRUE(std::visit(
                [&](const auto& values) {
                    return same_bits(values, std::get<std::remove_cvref_t<decltype(values)>>(q.values));
                },
                p.values));
        }
        ASSERT_EQ(a.regions.size(), b.regions.size());
        for (std::size_t i = 0; i < a.regions.size(); ++i) {
            EXPECT_EQ(a.regions[i].name, b.regions[i].name);
            EXPECT_EQ(a.regions[i].flags, b.regions[i].flags);
            EXPECT_EQ(a.regions[i].model, b.regions[i].model);
        }
        ASSERT_EQ(a.layers.size(), b.layers.size());
        for (std::size_t i = 0; i < a.layers.size(); ++i) {
            EXPECT_EQ(a.layers[i].unit, b.layers[i].unit);
            EXPECT_EQ(a.layers[i].nb_k_cells, b.layers[i].nb_k_cells);
            EXPECT_TRUE(same_bits(a.layers[i].cell_thickness, b.layers[i].cell_thickness));
            EXPECT_EQ(a.layers[i].style, b.layers[i].style);
        }
        ASSERT_EQ(a.faults.size(), b.faults.size());
        for (std::size_t i = 0; i < a.faults.size(); ++i) {
            EXPECT_EQ(a.faults[i].name, b.faults[i].name);
            EXPECT_EQ(a.faults[i].i, b.faults[i].i);
            EXPECT_EQ(a.faults[i].j, b.faults[i].j);
            EXPECT_EQ(a.faults[i].k, b.faults[i].k);
            EXPECT_EQ(a.faults[i].face, b.faults[i].face);
        }
        ASSERT_EQ(a.kept.size(), b.kept.size());
        for (std::size_t i = 0; i < a.kept.size(); ++i) {
            EXPECT_EQ(a.kept[i].name, b.kept[i].name);
            EXPECT_EQ(a.kept[i].text, b.kept[i].text);
            EXPECT_EQ(a.kept[i].file, b.kept[i].file);
            EXPECT_EQ(a.kept[i].line, b.kept[i].line);
        }
        EXPECT_EQ(a.frame.map_axes, b.frame.map_axes);
        EXPECT_EQ(a.frame.map_units, b.frame.map_units);
        EXPECT_EQ(a.frame.grid_units, b.frame.grid_units);
        EXPECT_EQ(a.frame.grid_units_map, b.frame.grid_units_map);
        ASSERT_EQ(a.records.size(), b.records.size());
        for (std::size_t i = 0; i < a.records.size(); ++i) {
            EXPECT_EQ(a.records[i].source_name, b.records[i].source_name);
            EXPECT_EQ(a.records[i].source_size, b.records[i].source_size);
            EXPECT_EQ(a.records[i].ranges, b.records[i].ranges);
        }
    }

    /// Copies of all models, in order of creation.
    static std::vector<std::pair<std::string, lodex::GridModel>> all_models()
    {
        std::vector<std::pair<std::string, lodex::GridModel>> models;
        for (Lodex::GObj* object : Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_()))
            models.emplace_back(object->name().str(), lodex::as_grid(object).model());
        return models;
    }
    static void expect_models(const std::vector<std::pair<std::string, lodex::GridModel>>& wanted)
    {
        const auto found = all_models();
        ASSERT_EQ(found.size(), wanted.size());
        for (std::size_t i = 0; i < wanted.size(); ++i) {
            SCOPED_TRACE(wanted[i].first);
            EXPECT_EQ(found[i].first, wanted[i].first);
            expect_same(found[i].second, wanted[i].second);
        }
    }
    static Lodex::Style& style_of(const std::string& grid) { return *lodex::find_grid(grid)->style(); }
    static Lodex::Style& style_of(const std::string& grid, const std::string& property)
    {
        return *lodex::find_grid(grid)->property_db()->find(property)->style();
    }
};
