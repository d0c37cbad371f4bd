#include "VerbTools.h"

#include "lodex/interpreter/Lists.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/PropertyTools.h"

#include "upscaling/AverageUpscaling.h"
#include "upscaling/PermeabilityUpscaling.h"
#include "upscaling/statistics/RegionCells.h"
#include "upscaling/upscalers/LocalUpscaler.h"
#include "upscaling/upscalers/UpscalerInfo.h"

#include <Kelvane/upscaling/UpscalerTypes.h>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace lodex {

namespace {

using Kelvane::FineProperty;
using Kelvane::UpscalingReport;

const std::string problem_prefix = "upscaling_problems_";

/// One flag per cell of the grid, 1 in the regions that the keyword names, whatever its active flag.
std::vector<std::uint8_t> region_flags(const Call& call, std::string_view keyword, const CornerPointGrid& grid)
{
    const std::string text = call.text(keyword);
    try {
        const Kelvane::RegionCells cells(grid, text);
        std::vector<std::uint8_t> flags(static_cast<std::size_t>(grid.header().cells()), 1);
        if (!cells.everywhere()) {
            for (std::size_t cell = 0; cell < flags.size(); ++cell)
                flags[cell] = cells.holds(cell) ? 1 : 0;
        }
        return flags;
    } catch (const std::invalid_argument& error) {
        call.fail(std::string(error.what()) + " on SGrid \"" + grid.name().str() + "\"", keyword);
    }
}

/// Properties of the fine grid that a joined list names; each stands on cells.
std::vector<const Lodex::Property*> properties_of(const Call& call, std::string_view keyword, const CornerPointGrid& grid)
{
    const GridModel& model = grid.model();
    std::size_t longest = 1;
    for (const PropertyData& property : model.properties)
        longest = std::max(longest, property.name.size());
    std::vector<std::string> names;
    try {
        names = resolve_joined(
            call.text(keyword), [&](const std::string& name) { return model.find_property(name) != nullptr; }, longest, "property");
    } catch (const CommandError& error) {
        call.fail(std::string(error.what()) + " on SGrid \"" + grid.name().str() + "\"", keyword);
    }
    std::vector<const Lodex::Property*> properties;
    for (const std::string& name : names) {
        if (model.find_property(name)->on_points)
            call.fail("the property \"" + name + "\" stands on points; expected a property of cells", keyword);
        properties.push_back(grid.property_db()->find(name));
    }
    return properties;
}

const Lodex::Property& one_property(const Call& call, std::string_view keyword, const CornerPointGrid& grid)
{
    const auto properties = properties_of(call, keyword, grid);
    if (properties.size() != 1)
        call.fail("\"" + std::string(keyword) + "\" names " + std::to_string(properties.size()) + " properties; expected one", keyword);
    return *properties.front();
}

/// What the three verbs have in common: the two grids, their regions, the mapper, the method and the preparation.
class Upscaling {
public:
    Upscaling(Call& call, std::string family)
        : call_(call), fine_(grid_of(call)), coarse_(grid_of(call, "Coarse")), family_(std::move(family))
    {
        if (&fine_ == &coarse_)
            call.fail("the coarse grid is the fine grid itself", "Coarse");
        method_ = Kelvane::make_upscaler(family_, call.text("upscaler"));
        if (!method_)
            call.fail("there is no method \"" + call.text("upscaler") + "\" for " + family_, "upscaler");
        read_power();
        preparation_.zero = replacement("zero_like_x", "zero_value", true);
        preparation_.negative = replacement("neg_like_x", "neg_value", true);
        preparation_.undefined = replacement("ndv_like_x", "ndv_value", false);
        const std::vector<std::uint8_t> in_fine = region_flags(call, "fine_region_name", fine_);
        if (std::ranges::find(in_fine, 0) != in_fine.end())
            fine_region_ = in_fine;
        coarse_cells_ = region_flags(call, "coarse_region_name", coarse_);
        for (std::size_t cell = 0; cell < coarse_cells_.size(); ++cell)
            coarse_cells_[cell] = coarse_cells_[cell] && coarse_.model().active[cell];
    }

    [[nodiscard]] CornerPointGrid& fine() const { return fine_; }
    [[nodiscard]] CornerPointGrid& coarse() const { return coarse_; }
    [[nodiscard]] const Kelvane::Upscaler& method() const { return *method_; }
    [[nodiscard]] double power() const { return power_; }
    [[nodiscard]] const Kelvane::Preparation& preparation() const { return preparation_; }
    [[nodiscard]] std::span<const std::uint8_t> fine_region() const { return fine_region_; }
    [[nodiscard]] std::span<const std::uint8_t> coarse_cells() const { return coarse_cells_; }

    /// Name of a property to make on the coarse grid. One that is there must stand on cells.
    [[nodiscard]] std::string new_property(std::string_view keyword) const
    {
        const std::string name = call_.text(keyword);
        if (const PropertyData* property = coarse_.model().find_property(name); property && property->on_points)
            call_.fail("the property \"" + name + "\" stands on points; expected another name", keyword);
        return name;
    }

    [[nodiscard]] std::unique_ptr<Lodex::MatchedGrids> match(const ProgressCheck& progress) const
    {
        return match_grids(call_, "mapper",
                           {.fine = &fine_,
                            .coarse = &coarse_,
                            .fine_cells = fine_.active_flags(),
                            .coarse_cells = coarse_cells_,
                            .fault_management = call_.flag("do_fault_management")},
                           progress);
    }

    /// The property's values as the coarse grid shall hold them: the former ones outside the region. `like` gives type, unit
    /// and code names.
    [[nodiscard]] PropertyData make_property(std::string name, std::span<const double> values, const Lodex::Property& like,
                                             bool discrete) const
    {
        PropertyData result;
        result.name = std::move(name);
        result.unit = like.unit().str();
        if (discrete) {
            result.values = std::vector<std::int32_t>(values.size());
            result.code_names = like.code_names();
            result.no_data = like.no_data();
        } else {
            result.values = std::vector<double>(values.size());
        }
        const PropertyData* former = coarse_.model().find_property(result.name);
        std::vector<double> all(values.begin(), values.end());
        if (former) {
            for (std::size_t cell = 0; cell < all.size(); ++cell)
                if (!coarse_cells_[cell])
                    all[cell] = value_or_nan(*former, cell);
            if (discrete)
                result.code_names.insert(former->code_names.begin(), former->code_names.end());
        }
        if (auto* codes = std::get_if<std::vector<std::int32_t>>(&result.values)) {
            const auto is_code = [](double value) {
                return std::trunc(value) == value && std::abs(value) <= std::numeric_limits<std::int32_t>::max();
            };
            // The undefined code is chosen among the codes in use, so these come first.
            for (std::size_t cell = 0; cell < all.size(); ++cell)
                (*codes)[cell] = is_code(all[cell]) ? static_cast<std::int32_t>(all[cell]) : 0;
            const auto undefined = static_cast<std::int32_t>(undefined_value(result));
            for (std::size_t cell = 0; cell < all.size(); ++cell)
                if (!is_code(all[cell]))
                    (*codes)[cell] = undefined;
        } else {
            result.values = std::move(all);
        }
        return result;
    }

    /// Puts properties and the region of problematic cells into the coarse grid, all at once.
    void store(std::vector<PropertyData> properties, std::span<const std::uint8_t> problems, const std::string& name) const
    {
        const bool any = std::ranges::find(problems, 1) != problems.end();
        const bool region_wanted = call_.flag("create_region_if_problems");
        RegionData region{problem_prefix + name, {}, false};
        if (region_wanted)
            region.flags.assign(problems.begin(), problems.end());
        coarse_.change([&](GridModel& model) {
            model.properties.reserve(model.properties.size() + properties.size());
            model.regions.reserve(model.regions.size() + 1);
            // Nothing fails from here on.
            for (PropertyData& property : properties)
                put_item(model.properties, std::move(property));
            if (!region_wanted)
                return;
            std::erase_if(model.regions, [&](const RegionData& former) { return former.name == region.name; });
            if (any)
                model.regions.push_back(std::move(region));
        });
    }

    void report(const UpscalingReport& result, const std::string& name) const
    {
        const auto count = [&](const char* what, std::int64_t number) { call_.count(what, static_cast<double>(number)); };
        count("coarse_cells", result.coarse_cells);
        count("done", result.done);
        count("no_fine_cell", result.no_fine_cell);
        count("nothing_left", result.nothing_left);
        count("backup", result.backup);
        count("fine_cells", result.fine_cells);
        const Kelvane::PreparationCounts& prepared = result.preparation;
        count("negative_replaced", prepared.negative_replaced);
        count("zero_replaced", prepared.zero_replaced);
        count("undefined_replaced", prepared.undefined_replaced);
        count("undefined_left_out", prepared.undefined_left_out);
        count("refused_left_out", prepared.refused_left_out);
        count("undefined_filled", prepared.undefined_filled);
        count("sealed_samples", prepared.sealed);
        count("iterations", result.iterations);
        count("most_iterations", result.most_iterations);
        call_.count("largest_residual", result.largest_residual);
        call_.count("seconds", result.seconds);

        call_.info("\"" + name + "\" on SGrid \"" + coarse_.name().str() + "\" by " + call_.text("upscaler") + ": " +
                   std::to_string(result.done) + " of " + std::to_string(result.coarse_cells) + " cells from " +
                   std::to_string(result.fine_cells) + " fine values in " + format_general(result.seconds, 3) + " s" +
                   (result.iterations > 0 ? ", " + std::to_string(result.iterations) + " iterations" : ""));
        const auto warn = [&](std::int64_t number, const std::string& text) {
            if (number > 0)
                call_.warn(std::to_string(number) + " " + text);
        };
        warn(result.no_fine_cell, "coarse cells have no fine cell and stay undefined");
        warn(result.nothing_left, "coarse cells have no fine value left and stay undefined");
        warn(result.backup, "coarse cells took a backup computation");
        warn(prepared.undefined_left_out, "undefined fine values were left out");
        warn(prepared.refused_left_out, "fine values that the method cannot take were left out");
        warn(prepared.undefined_filled, "undefined samples took the mean of their neighbours");
    }

private:
    void read_power()
    {
        // Others do not look at it, whatever stands there.
        if (Lodex::CString(call_.text("upscaler")) != Kelvane::PowerUpscalerType::type())
            return;
        if (!call_.has("power"))
            call_.fail("\"power\" is missing; the method Power needs a number from -1 to 1", "upscaler");
        const std::string text = call_.text("power");
        if (text.empty())
            call_.fail("\"power\" is empty; the method Power needs a number from -1 to 1", "power");
        const auto power = parse_double(text);
        if (!power || !(*power >= -1 && *power <= 1))
            call_.fail("\"power\" is \"" + text + "\"; expected a number from -1 to 1", "power");
        power_ = *power;
    }

    /// The replacement when its switch is on. `positive`: it must be above 0; else the method decides.
    std::optional<double> replacement(std::string_view flag, std::string_view keyword, bool positive) const
    {
        if (!call_.flag(flag)) {
            if (call_.has(keyword))
                call_.warn("\"" + std::string(keyword) + "\" is given while \"" + std::string(flag) + "\" is 0: it is not looked at");
            return std::nullopt;
        }
        if (!call_.has(keyword))
            call_.fail("\"" + std::string(flag) + "\" is 1 and \"" + std::string(keyword) + "\" is missing", flag);
        const double value = call_.real(keyword);
        const bool refused = positive ? !(value > 0)
                                      : (value < 0 && !method_->accepts_negative(power_)) ||
                                            (value == 0 && !method_->accepts_zero(power_));
        if (refused)
            call_.fail("\"" + std::string(keyword) + "\" is \"" + call_.text(keyword) + "\"; expected " +
                           (positive ? "a number above 0" : "a number that the method " + call_.text("upscaler") + " can take"),
                       keyword);
        return value;
    }

    Call& call_;
    CornerPointGrid& fine_;
    CornerPointGrid& coarse_;
    std::string family_;
    std::unique_ptr<Kelvane::Upscaler> method_;
    double power_ = 1;
    Kelvane::Preparation preparation_;
    std::vector<std::uint8_t> fine_region_; ///< empty: everywhere
    std::vector<std::uint8_t> coarse_cells_;
};

void upscale_average(Call& call, const std::string& family, const std::string& fine_keyword, const std::string& coarse_keyword)
{
    Upscaling upscaling(call, family);
    const Lodex::Property& property = one_property(call, fine_keyword, upscaling.fine());
    const std::string name = upscaling.new_property(coarse_keyword);
    const auto* method = dynamic_cast<const Kelvane::AverageUpscaler*>(&upscaling.method());
    if (!method)
        call.fail("the method \"" + call.text("upscaler") + "\" averages nothing", "upscaler");
    std::vector<FineProperty> weights;
    if (call.flag("weight_using_property")) {
        if (!call.has("weight_property_name"))
            call.fail("\"weight_using_property\" is 1 and \"weight_property_name\" is missing", "weight_using_property");
        for (const Lodex::Property* weight : properties_of(call, "weight_property_name", upscaling.fine()))
            weights.emplace_back(*weight, std::span<const std::uint8_t>());
    }
    const bool by_volume = call.flag("weight_using_volume");
    const auto matched = upscaling.match(part_of_progress(call, 0, 0.5));
    const Kelvane::AverageRequest request{
        .mapping = matched->mapping(),
        .fine_size = upscaling.fine().header().size,
        .coarse_size = upscaling.coarse().header().size,
        .coarse_cells = upscaling.coarse_cells(),
        .property = FineProperty(property, upscaling.fine_region()),
        .method = *method,
        .power = upscaling.power(),
        .preparation = upscaling.preparation(),
        .volumes = by_volume ? upscaling.fine().bulk_volumes() : std::span<const double>(),
        .weights = std::move(weights)};
    Kelvane::AverageResult result = [&] {
        try {
            return Kelvane::upscale_by_average(request, part_of_progress(call, 0.5, 1));
        } catch (const std::runtime_error& error) {
            call.fail(error.what(), "weight_property_name");
        }
    }();
    const bool codes = family == "Indicator" && property.discrete();
    std::vector<PropertyData> made;
    made.push_back(upscaling.make_property(name, result.values, property, codes));
    upscaling.report(result.report, name);
    upscaling.store(std::move(made), result.problems, name);
}

void upscale_porosity(Call& call)
{
    upscale_average(call, "Porosity", "fine_porosity", "coarse_porosity");
}

void upscale_indicator(Call& call)
{
    upscale_average(call, "Indicator", "fine_indicator", "coarse_indicator");
}

constexpr std::array fine_keywords{"fine_Perm_I", "fine_Perm_J", "fine_Perm_K"};
constexpr std::array coarse_keywords{"coarse_Perm_I", "coarse_Perm_J", "coarse_Perm_K"};
constexpr std::array off_diagonals{"_IJ", "_IK", "_JK"};
constexpr std::array sampling_keywords{"n_I", "n_J", "n_K"};
/// In the order of Kelvane::flow::Boundary.
constexpr std::array boundaries{"Confined", "KConfined", "Unconfined"};
/// Number of off-diagonal components that each of them makes.
constexpr std::array<std::size_t, boundaries.size()> off_diagonals_made{0, 1, 3};

/// Samples of a coarse cell up to which a fixed sampling is taken: a flow method holds some 250 bytes for each.
constexpr std::int64_t most_samples = std::int64_t{1} << 25;

/// Samples of a coarse cell along I, J, K. A fixed sampling must not ask for more than can be worked out.
std::array<int, 3> read_sampling(const Call& call)
{
    std::array<int, 3> sampling{};
    std::int64_t samples = 1;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        sampling[axis] = static_cast<int>(call.integer(sampling_keywords[axis]));
        samples *= sampling[axis];
    }
    if (call.flag("manual_sampling") && samples > most_samples)
        call.fail("\"n_I\", \"n_J\" and \"n_K\" make " + std::to_string(samples) + " samples of each coarse cell; expected at most " +
                      std::to_string(most_samples),
                  sampling_keywords[0]);
    return sampling;
}

void upscale_permeability(Call& call)
{
    Upscaling upscaling(call, "Permeability");
    const auto* local = dynamic_cast<const Kelvane::LocalUpscaler*>(&upscaling.method());
    std::array<const Lodex::Property*, 3> fine{};
    std::array<std::string, 3> names;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        fine[axis] = &one_property(call, fine_keywords[axis], upscaling.fine());
        names[axis] = upscaling.new_property(coarse_keywords[axis]);
    }
    const std::string method = call.text("upscaler");
    if (!(local && local->tensor_input())) {
        for (std::size_t axis = 1; axis < 3; ++axis)
            if (fine[axis] != fine[0])
                call.fail("the method " + method + " takes one fine permeability; \"" + fine_keywords[0] + "\" and \"" +
                              fine_keywords[axis] + "\" differ",
                          fine_keywords[axis]);
    }
    if (local && (names[0] == names[1] || names[0] == names[2] || names[1] == names[2]))
        call.fail("the method " + method + " makes three permeabilities; the three coarse names must differ", coarse_keywords[1]);

    const auto boundary = static_cast<std::size_t>(std::ranges::find(boundaries, call.text("boundary")) - boundaries.begin());
    if (local && local->uses_boundary()) {
        for (std::size_t n = 0; n < off_diagonals_made[boundary]; ++n)
            for (std::size_t axis = 1; axis < 3; ++axis)
                if (names[axis] == names[0] + off_diagonals[n])
                    call.fail("\"" + names[axis] + "\" is the name of an off-diagonal permeability of this run; expected another name",
                              coarse_keywords[axis]);
    }
    const std::array<int, 3> sampling = read_sampling(call);
    const auto matched = upscaling.match(part_of_progress(call, 0, 0.3));
    const Kelvane::PermeabilityRequest request{
        .matched = *matched,
        .fine_size = upscaling.fine().header().size,
        .coarse = view_of(upscaling.coarse().model()),
        .coarse_cells = upscaling.coarse_cells(),
        .permeability = {FineProperty(*fine[0], upscaling.fine_region()), FineProperty(*fine[1], upscaling.fine_region()),
                         FineProperty(*fine[2], upscaling.fine_region())},
        .method = upscaling.method(),
        .power = upscaling.power(),
        .preparation = upscaling.preparation(),
        .sampling = sampling,
        .fixed_sampling = call.flag("manual_sampling"),
        .options = {.boundary = static_cast<Kelvane::flow::Boundary>(boundary),
                    .solver = call.flag("exact") ? Kelvane::flow::Solver::Exact : Kelvane::flow::Solver::Fast,
                    .tolerance = call.real("tolerance")}};
    const ProgressCheck progress = part_of_progress(call, 0.3, 1);
    Kelvane::PermeabilityResult result = Kelvane::upscale_permeability(request, progress);

    std::vector<PropertyData> made;
    for (std::size_t n = 0; n < 6; ++n) {
        const std::string name = n < 3 ? names[n] : names[0] + off_diagonals[n - 3];
        if (result.components[n].empty() || std::ranges::find(made, name, &PropertyData::name) != made.end())
            continue;
        made.push_back(upscaling.make_property(name, result.components[n], *fine[n < 3 ? n : 0], false));
        result.components[n] = {};
    }
    upscaling.report(result.report, names[0]);
    upscaling.store(std::move(made), result.problems, names[0]);
}

std::vector<std::string> method_names(const std::string& family)
{
    std::vector<std::string> names;
    for (const Kelvane::UpscalerInfo* info : Kelvane::upscaler_infos())
        if (std::ranges::find(info->families, family) != info->families.end())
            names.push_back(info->name);
    return names;
}

using Keywords = std::vector<Keyword>;

Keywords joined(std::initializer_list<Keywords> parts)
{
    Keywords all;
    for (const Keywords& some : parts)
        all.insert(all.end(), some.begin(), some.end());
    return all;
}

Keyword fine_region()
{
    return {.name = "fine_region_name", .kind = ValueKind::NameList,
            .meaning = "regions of the fine grid; cells outside are undefined", .default_value = "everywhere"};
}

Keywords coarse_grid()
{
    return {{.name = "Coarse", .kind = ValueKind::Object, .meaning = "the coarse grid", .required = true, .object_type = "SGrid"},
            {.name = "coarse_region_name", .kind = ValueKind::NameList,
             .meaning = "regions of the coarse grid; cells outside keep their value", .default_value = "everywhere"}};
}

Keywords mapper_and_method(const std::string& family)
{
    return {{.name = "mapper", .kind = ValueKind::Choice, .meaning = "how fine cells are matched to coarse cells", .required = true,
             .choices = mapper_names()},
            {.name = "upscaler", .kind = ValueKind::Choice, .meaning = "the method", .required = true,
             .choices = method_names(family)}};
}

Keyword power()
{
    return {.name = "power", .kind = ValueKind::Text, .meaning = "exponent of the method Power, -1 to 1; others do not look at it",
            .may_be_empty = true};
}

Keywords treatment()
{
    const auto flag = [](const char* name, const char* what) {
        return Keyword{.name = name, .kind = ValueKind::Flag, .meaning = what, .default_value = "0"};
    };
    const auto value = [](const char* name, const char* what) {
        return Keyword{.name = name, .kind = ValueKind::Real, .meaning = what};
    };
    return {flag("zero_like_x", "whether fine values of 0 are replaced"),
            value("zero_value", "what replaces 0, above 0"),
            flag("neg_like_x", "whether negative fine values are replaced"),
            value("neg_value", "what replaces negative values, above 0"),
            flag("ndv_like_x", "whether undefined fine values are replaced"),
            value("ndv_value", "what replaces undefined values; one that the method can take")};
}

Keywords finish()
{
    return {{.name = "create_region_if_problems", .kind = ValueKind::Flag,
             .meaning = "whether cells without a value, or with one of a backup computation, make the region "
                        "\"upscaling_problems_\" and the property's name",
             .default_value = "0"},
            {.name = "do_fault_management", .kind = ValueKind::Flag,
             .meaning = "whether a coarse cell uses only the fine cells of the fault block that holds most of its volume",
             .default_value = "0"}};
}

Keyword property_keyword(const char* name, const char* what)
{
    return {.name = name, .kind = ValueKind::NameList, .meaning = what, .required = true};
}

Keyword result_keyword(const char* name, const char* what)
{
    return {.name = name, .kind = ValueKind::ItemName, .meaning = what, .required = true};
}

Keywords sampling()
{
    const auto count = [](const char* name, const char* axis) {
        return Keyword{.name = name, .kind = ValueKind::Integer, .meaning = std::string("samples of a coarse cell along ") + axis,
                       .default_value = "10", .min = 1, .max = 10000};
    };
    return {count(sampling_keywords[0], "I"), count(sampling_keywords[1], "J"), count(sampling_keywords[2], "K"),
            {.name = "manual_sampling", .kind = ValueKind::Flag,
             .meaning = "1: exactly so many samples; 0: as many as there are fine indices, at most so many", .default_value = "0"}};
}

Keywords solver()
{
    return {{.name = "boundary", .kind = ValueKind::Choice, .meaning = "boundary condition of the flow methods",
             .default_value = "Confined", .choices = {boundaries.begin(), boundaries.end()}},
            {.name = "exact", .kind = ValueKind::Flag,
             .meaning = "1: direct factorisation; 0: conjugate gradients down to the tolerance", .default_value = "0"},
            {.name = "tolerance", .kind = ValueKind::Real, .meaning = "relative residual of conjugate gradients",
             .default_value = "1e-8", .min = 1e-14, .max = 0.1}};
}

const VerbRegistration porosity_registration{
    {.name = "upscale_porosity",
     .object_type = "SGrid",
     .summary = "Carries a porosity (or any property that is averaged) from this fine grid to a coarse one.",
     .keywords = joined({{fine_region(), property_keyword("fine_porosity", "the property of the fine grid")},
                         coarse_grid(),
                         {result_keyword("coarse_porosity", "the property of the coarse grid, made or replaced")},
                         mapper_and_method("Porosity"),
                         {power(),
                          {.name = "weight_using_volume", .kind = ValueKind::Flag, .meaning = "whether cells weigh by their bulk volume",
                           .default_value = "0"},
                          {.name = "weight_using_property", .kind = ValueKind::Flag, .meaning = "whether cells weigh by properties",
                           .default_value = "0"},
                          {.name = "weight_property_name", .kind = ValueKind::NameList,
                           .meaning = "properties of the fine grid whose product is the weight"}},
                         treatment(),
                         finish()}),
     .run = upscale_porosity}};

const VerbRegistration indicator_registration{
    {.name = "upscale_indicator",
     .object_type = "SGrid",
     .summary = "Carries a discrete property from this fine grid to a coarse one.",
     .keywords = joined({{fine_region(), property_keyword("fine_indicator", "the property of the fine grid")},
                         coarse_grid(),
                         {result_keyword("coarse_indicator", "the property of the coarse grid, made or replaced")},
                         mapper_and_method("Indicator"),
                         treatment(),
                         finish()}),
     .run = upscale_indicator}};

const VerbRegistration permeability_registration{
    {.name = "upscale_permeability",
     .object_type = "SGrid",
     .summary = "Carries a permeability, scalar or along I, J, K, from this fine grid to a coarse one.",
     .keywords = joined({{fine_region(), property_keyword("fine_Perm_I", "fine permeability along I"),
                          property_keyword("fine_Perm_J", "fine permeability along J"),
                          property_keyword("fine_Perm_K", "fine permeability along K")},
                         coarse_grid(),
                         {result_keyword("coarse_Perm_I", "coarse permeability along I; off-diagonal ones add _IJ, _IK, _JK"),
                          result_keyword("coarse_Perm_J", "coarse permeability along J"),
                          result_keyword("coarse_Perm_K", "coarse permeability along K")},
                         mapper_and_method("Permeability"),
                         {power()},
                         sampling(),
                         treatment(),
                         solver(),
                         finish()}),
     .run = upscale_permeability}};

} // namespace

} // namespace lodex
