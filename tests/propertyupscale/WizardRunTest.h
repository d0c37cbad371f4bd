#pragma once

#include "WizardTest.h"

#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/PropertyTools.h"

#include "upscaling/AverageUpscaling.h"
#include "upscaling/PermeabilityUpscaling.h"
#include "upscaling/statistics/RegionCells.h"
#include "upscaling/upscalers/LocalUpscaler.h"
#include "upscaling/upscalers/UpscalerInfo.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/qtools/QtText.h>

#include <cmath>
#include <map>
#include <stdexcept>

/// The wizard on grids whose cells mean something: what it sends is run, and the results are held against those of the
/// upscaling library called directly.
class WizardRunTest : public WizardTest {
protected:
    using Values = std::vector<double>;
    using Properties = std::map<std::string, Values>;

    static testing::AssertionResult run(const std::string& text)
    {
        for (const auto& result : lodex::Interpreter::instance().run(text)) {
            if (result.status != lodex::StatementStatus::Done)
                return testing::AssertionFailure() << result.message;
        }
        return testing::AssertionSuccess();
    }
    [[nodiscard]] static lodex::CornerPointGrid& grid(const QString& name)
    {
        auto* found = lodex::find_grid(name.toStdString());
        if (!found)
            throw std::runtime_error("no grid " + name.toStdString());
        return *found;
    }
    void open_on(const QString& fine, const QString& coarse)
    {
        open_empty();
        choose("fine_gridSelector_", fine);
        choose("coarse_gridSelector_", coarse);
        ASSERT_EQ(list("fine_gridSelector_")->currentText(), fine);
        ASSERT_EQ(list("coarse_gridSelector_")->currentText(), coarse);
    }
    void choose_tensor(const char* prefix, const QStringList& names) const
    {
        for (int axis = 0; axis < 3; ++axis)
            choose(qPrintable(QString("%1_prop_%2_cb_").arg(prefix).arg(QChar("ijk"[axis]))), names[axis]);
    }

    /// All properties of a grid, NaN where undefined.
    [[nodiscard]] static Properties properties_of(const QString& name)
    {
        Properties all;
        for (const lodex::PropertyData& property : grid(name).model().properties) {
            Values& values = all[property.name];
            for (std::size_t cell = 0; cell < property.size(); ++cell)
                values.push_back(lodex::value_or_nan(property, cell));
        }
        return all;
    }
    [[nodiscard]] static bool same(const Values& a, const Values& b)
    {
        return std::ranges::equal(a, b, [](double x, double y) { return x == y || (std::isnan(x) && std::isnan(y)); });
    }
    [[nodiscard]] static std::int64_t finite(const Values& values)
    {
        return std::ranges::count_if(values, [](double value) { return std::isfinite(value); });
    }

    struct Answer {
        Properties properties;
        std::vector<std::uint8_t> problems; ///< one flag per coarse cell
        std::string problem_region;
    };
    /// What the library makes of the choices when nobody stands between. Throws what it throws.
    [[nodiscard]] static Answer by_library(const Kelvane::UpscaleChoices& choices)
    {
        const lodex::CornerPointGrid& fine = grid(choices.fine_grid);
        const lodex::CornerPointGrid& coarse = grid(choices.coarse_grid);
        const auto flags_of = [](const lodex::CornerPointGrid& of, const Kelvane::UpscaleChoices::Regions& regions) {
            const Kelvane::RegionCells cells(
                of, regions.on && !regions.names.isEmpty() ? Lodex::to_cstring(regions.names) : "everywhere");
            std::vector<std::uint8_t> flags;
            for (std::size_t cell = 0; cell < of.active_flags().size(); ++cell)
                flags.push_back(cells.holds(cell) ? 1 : 0);
            return flags;
        };
        const std::vector<std::uint8_t> fine_region = flags_of(fine, choices.fine_regions);
        std::vector<std::uint8_t> coarse_cells = flags_of(coarse, choices.coarse_regions);
        for (std::size_t cell = 0; cell < coarse_cells.size(); ++cell)
            coarse_cells[cell] = coarse_cells[cell] && coarse.active_flags()[cell];

        const auto* factory = dynamic_cast<const Lodex::CellMapperFactory*>(Lodex::FactoryLib::instance()->find(
            Lodex::GridObjCellMapperFactoriesDomain(), Lodex::to_cstring(choices.mapper)));
        const auto matched = factory->create()->match({.fine = &fine,
                                                       .coarse = &coarse,
                                                       .fine_cells = fine.active_flags(),
                                                       .coarse_cells = coarse_cells,
                                                       .fault_management = choices.fault_management});
        const auto method =
            Kelvane::make_upscaler(choices.property_class.toStdString(), choices.method.toStdString());
        const auto fine_property = [&](const QString& name) {
            return Kelvane::FineProperty(*fine.property_db()->find(Lodex::to_cstring(name)), fine_region);
        };
        Kelvane::Preparation preparation;
        if (choices.zero.on)
            preparation.zero = choices.zero.value;
        if (choices.negative.on)
            preparation.negative = choices.negative.value;
        if (choices.no_data.on)
            preparation.undefined = choices.no_data.value;
        const bool powered = choices.property_class != "Indicator" && !choices.power.isEmpty();
        const double power = powered ? choices.power.toDouble() : 1;
        Answer answer;
        if (choices.property_class != "Permeability") {
            std::vector<Kelvane::FineProperty> weights;
            if (choices.property_class == "Porosity" && choices.weight_by_property) {
                for (const QString& name : choices.weight_property.split('+'))
                    weights.emplace_back(*fine.property_db()->find(Lodex::to_cstring(name)),
                                         std::span<const std::uint8_t>());
            }
            const bool by_volume = choices.property_class == "Porosity" && choices.weight_by_volume;
            auto result = Kelvane::upscale_by_average(
                {.mapping = matched->mapping(),
                 .fine_size = fine.model().size,
                 .coarse_size = coarse.model().size,
                 .coarse_cells = coarse_cells,
                 .property = fine_property(choices.fine_property),
                 .method = dynamic_cast<const Kelvane::AverageUpscaler&>(*method),
                 .power = power,
                 .preparation = preparation,
                 .volumes = by_volume ? fine.bulk_volumes() : std::span<const double>(),
                 .weights = std::move(weights)});
            answer.properties[choices.coarse_property.toStdString()] = std::move(result.values);
            answer.problems = std::move(result.problems);
            answer.problem_region = "upscaling_problems_" + choices.coarse_property.toStdString();
            return answer;
        }

        const auto* local = dynamic_cast<const Kelvane::LocalUpscaler*>(method.get());
        const bool tensor = local && local->tensor_input();
        const auto along = [&](std::size_t axis) {
            return fine_property(tensor ? choices.fine_permeability[axis] : choices.fine_property);
        };
        auto result = Kelvane::upscale_permeability(
            {.matched = *matched,
             .fine_size = fine.model().size,
             .coarse = lodex::view_of(coarse.model()),
             .coarse_cells = coarse_cells,
             .permeability = {along(0), along(1), along(2)},
             .method = *method,
             .power = power,
             .preparation = preparation,
             .sampling = choices.sampling_counts,
             .fixed_sampling = choices.sampling == 1,
             .options = {.boundary = static_cast<Kelvane::flow::Boundary>(choices.boundary),
                         .solver = choices.method.endsWith("PressureSolver") && choices.solver == 1
                                       ? Kelvane::flow::Solver::Exact
                                       : Kelvane::flow::Solver::Fast}});
        const std::string first =
            (local ? choices.coarse_permeability[0] : choices.coarse_property).toStdString();
        const std::array<std::string, 6> names = {first,
                                                  choices.coarse_permeability[1].toStdString(),
                                                  choices.coarse_permeability[2].toStdString(),
                                                  first + "_IJ",
                                                  first + "_IK",
                                                  first + "_JK"};
        for (std::size_t n = 0; n < (local ? 6U : 1U); ++n) {
            if (!result.components[n].empty())
                answer.properties[names[n]] = std::move(result.components[n]);
        }
        answer.problems = std::move(result.problems);
        answer.problem_region = "upscaling_problems_" + first;
        return answer;
    }

    /// Sends what stands on the pages; the errors that the host reports.
    [[nodiscard]] Texts send()
    {
        messages.clear();
        EXPECT_TRUE(dialog->process());
        EXPECT_EQ(fatal(), Texts{});
        return messages.of(Lodex::LogLevel::Error);
    }
    /// Sends what stands on the pages: it is done, the answer of the library stands on the coarse grid, and no other
    /// property of the grid has changed.
    void expect_done()
    {
        ++runs;
        const Kelvane::UpscaleChoices choices = dialog->choices();
        const Answer answer = by_library(choices);
        // Off-diagonal terms stay from run to run, so all that may come from an earlier one goes first.
        grid(choices.coarse_grid).change([&](lodex::GridModel& model) {
            std::erase_if(model.properties, [&](const lodex::PropertyData& property) {
                return answer.properties.contains(property.name) || property.name.ends_with("_IJ") ||
                       property.name.ends_with("_IK") || property.name.ends_with("_JK");
            });
        });
        Properties expected = properties_of(choices.coarse_grid);
        for (const auto& [name, values] : answer.properties) {
            if (finite(values) == 0)
                complain("no value in " + name);
            expected[name] = values;
        }
        if (const Texts errors = send(); !errors.empty()) {
            complain(errors.front());
            return;
        }
        const Properties found = properties_of(choices.coarse_grid);
        if (found.size() != expected.size())
            complain(std::to_string(found.size()) + " properties, expected " + std::to_string(expected.size()));
        for (const auto& [name, values] : expected) {
            const auto it = found.find(name);
            if (it == found.end() || !same(it->second, values))
                complain("other values in " + name);
        }
    }
    /// Sends what stands on the pages: the host refuses in these words and leaves the coarse grid as it was.
    void expect_refused(const std::string& reason)
    {
        const QString coarse = dialog->choices().coarse_grid;
        const Properties before = properties_of(coarse);
        const int regions = grid(coarse).nb_regions();
        const Texts errors = send();
        ASSERT_EQ(errors.size(), 1U) << "expected a refusal with " << reason << "\n   of " << command();
        EXPECT_NE(errors.front().find(reason), std::string::npos) << errors.front();
        const Properties after = properties_of(coarse);
        EXPECT_EQ(after.size(), before.size());
        for (const auto& [name, values] : before)
            EXPECT_TRUE(after.contains(name) && same(after.at(name), values)) << name;
        EXPECT_EQ(grid(coarse).nb_regions(), regions);
    }
    /// The first few failures of a long walk.
    void complain(const std::string& what)
    {
        if (++complaints <= 5)
            ADD_FAILURE() << what << "\n   of " << check().command;
    }
    ~WizardRunTest() override { EXPECT_EQ(complaints, 0) << "of " << runs << " runs"; }

    int runs = 0;
    int complaints = 0;
};
