#pragma once

#include "MessageList.h"

#include "lodex/interpreter/Interpreter.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/Create.h"
#include "lodex/volumes/model/PropertyTools.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/utils/ProgressTracer.h>
#include <Lodex/volumes/Lodex_volumes_init.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

/// An empty catalogue and journal before and after each test, and short ways to run statements.
class GridFixture : public testing::Test {
protected:
    GridFixture()
    {
        Lodex::Lodex_volumes_init::initialize();
        Lodex::GeobaseLib::instance()->clear();
        lodex::Interpreter::instance().clear_journal();
        folder = std::filesystem::temp_directory_path() /
                 ("grid_test_" + std::to_string(getpid()) + "_" +
                  testing::UnitTest::GetInstance()->current_test_info()->name());
        std::filesystem::create_directories(folder);
    }
    ~GridFixture() override
    {
        Lodex::GeobaseLib::instance()->clear();
        std::filesystem::remove_all(folder);
    }

    /// All statements done? Failures are shown by the test.
    static testing::AssertionResult run(const std::string& text)
    {
        for (const auto& result : lodex::Interpreter::instance().run(text)) {
            if (result.status != lodex::StatementStatus::Done)
                return testing::AssertionFailure() << result.message;
        }
        return testing::AssertionSuccess();
    }
    static lodex::StatementResult result(const std::string& statement)
    {
        return lodex::Interpreter::instance().run(statement).at(0);
    }
    /// First line of the failure's message.
    static std::string error(const std::string& text)
    {
        for (const auto& r : lodex::Interpreter::instance().run(text)) {
            if (!r.message.empty())
                return r.message.substr(0, r.message.find('\n'));
        }
        return "no error";
    }
    /// The journal as a script.
    static std::string journal()
    {
        std::string script;
        for (const std::string& statement : lodex::Interpreter::instance().journal())
            script += statement + "\n";
        return script;
    }
    /// A user who stops at the n-th question whether to go on, for as long as it lives.
    class StopAt : public Lodex::ProgressSink {
    public:
        explicit StopAt(int n) : left_(n), former_(Lodex::ProgressTracer::set_sink(this)) {}
        ~StopAt() override { Lodex::ProgressTracer::set_sink(former_); }
        StopAt(const StopAt&) = delete;
        StopAt& operator=(const StopAt&) = delete;
        /// How far the work was when it was asked last.
        [[nodiscard]] double last() const { return last_; }

        void begin(const Lodex::CString&) override {}
        bool progress(double done) override
        {
            last_ = done;
            return --left_ > 0;
        }
        void end() override {}

    private:
        int left_;
        double last_ = 0;
        Lodex::ProgressSink* former_;
    };
    /// Runs the statement, stopped at the first question whether to go on, then at the second, until it gets to its end.
    /// True when it does, and no stop left a grid of that name.
    static testing::AssertionResult stops_at_each_step(const std::string& statement, const std::string& made)
    {
        for (int step = 1; step < 500; ++step) {
            const StopAt stop(step);
            const auto r = result(statement);
            if (r.status == lodex::StatementStatus::Done)
                return testing::AssertionSuccess();
            if (r.status != lodex::StatementStatus::Cancelled)
                return testing::AssertionFailure() << r.message;
            if (lodex::find_grid(made))
                return testing::AssertionFailure() << made << " is there after a stop at question " << step;
        }
        return testing::AssertionFailure() << "does not come to its end";
    }
    static double count(const lodex::StatementResult& result, const std::string& name)
    {
        const auto it = std::ranges::find(result.counts, name, &std::pair<std::string, double>::first);
        return it == result.counts.end() ? -1 : it->second;
    }
    static const lodex::GridModel& model(const std::string& name) { return lodex::find_grid(name)->model(); }

    /// A box of unit cells with PORO = 1-based linear cell number and a discrete CODE = k.
    static lodex::CornerPointGrid* add_box(const std::string& name, const lodex::GridSize& size)
    {
        lodex::GridModel box = lodex::make_box(size, {1, 1, 1}, {0, 0, 0});
        lodex::PropertyData poro{.name = "PORO"}, code{.name = "CODE"};
        std::vector<double> values;
        std::vector<std::int32_t> codes;
        for (std::int64_t cell = 0; cell < box.cells(); ++cell) {
            values.push_back(static_cast<double>(cell + 1));
            codes.push_back(static_cast<std::int32_t>(cell / (size[0] * size[1])));
        }
        poro.values = values;
        code.values = codes;
        box.properties = {poro, code};
        return lodex::add_grid(name, std::move(box));
    }
    static double value(const std::string& grid, const std::string& property, std::int64_t i, std::int64_t j, std::int64_t k)
    {
        const lodex::GridModel& m = model(grid);
        return lodex::value_or_nan(*m.find_property(property), static_cast<std::size_t>(m.cell_index(i, j, k)));
    }
    std::string write(const std::string& name, const std::string& text) const
    {
        const auto path = (folder / name).string();
        std::ofstream(path, std::ios::binary) << text;
        return path;
    }

    std::filesystem::path folder;
    MessageList messages;
};
