#pragma once

#include "lodex/interpreter/Interpreter.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/Create.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/gui/Lodex_gui_init.h>

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

/// Starts and ends with an empty catalogue and an empty journal; has a folder of its own.
class WorkbenchTest : public testing::Test {
protected:
    WorkbenchTest()
    {
        Lodex::Lodex_gui_init::initialize();
        clear();
    }
    ~WorkbenchTest() override { clear(); }

    static void clear()
    {
        Lodex::GeobaseLib::instance()->clear();
        lodex::Interpreter::instance().clear_journal();
    }

    /// A box of cells of 100 by 50 by 10, first corner at x 1000, y 2000, depth 1500.
    static lodex::CornerPointGrid* add_box(const std::string& name, const lodex::GridSize& size = {4, 3, 5})
    {
        return lodex::add_grid(name, lodex::make_box(size, {100, 50, 10}, {1000, 2000, 1500}));
    }

    /// A property that numbers the cells from 0.
    static void add_numbers(lodex::CornerPointGrid* grid, const std::string& name)
    {
        grid->change([&](lodex::GridModel& model) {
            std::vector<float> values(static_cast<std::size_t>(model.cells()));
            for (std::size_t i = 0; i < values.size(); ++i)
                values[i] = static_cast<float>(i);
            lodex::PropertyData property;
            property.name = name;
            property.values = std::move(values);
            model.properties.push_back(std::move(property));
        });
    }

    /// True when all statements succeeded.
    static bool run(const std::string& text)
    {
        for (const auto& result : lodex::Interpreter::instance().run(text)) {
            if (result.status != lodex::StatementStatus::Done)
                return false;
        }
        return true;
    }

    [[nodiscard]] std::filesystem::path file(const std::string& name) const
    {
        return std::filesystem::path(folder_.path().toStdString()) / name;
    }
    static std::string content(const std::filesystem::path& path)
    {
        std::ifstream in(path, std::ios::binary);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }

private:
    QTemporaryDir folder_;
};
