#include <lodex/gridio/EgridFormat.h>

#include <lodex/utils/AtomicFile.h>
#include <lodex/gridio/InitFormat.h>
#include <lodex/gridio/RecordGrid.h>
#include <lodex/volumes/model/CellGeometry.h>
#include <lodex/volumes/model/PropertyTools.h>

#include <algorithm>
#include <array>
#include <limits>

namespace lodex {

namespace {

const GridFormatRegistrar<EgridFormat> registrar;

constexpr std::array<std::string_view, 2> file_endings = {".egrid", ".fegrid"};

using namespace records;

/// Items of FILEHEAD.
constexpr std::size_t version_item = 0;
constexpr std::size_t release_item = 1;
constexpr std::size_t grid_type_item = 4;
constexpr std::size_t porosity_item = 5;
constexpr std::size_t origin_item = 6;
/// Items of GRIDHEAD.
constexpr std::size_t kind_item = 0;
constexpr std::size_t reservoirs_item = 24;
constexpr std::size_t segments_item = 25;
constexpr std::size_t radial_item = 26;
constexpr std::size_t head_items = 100;
constexpr std::int32_t corner_point = 1; ///< of GRIDHEAD and of the origin in FILEHEAD

// --- reading ---------------------------------------------------------------------------------------------------------

class EgridReader {
public:
    EgridReader(const Source& source, const ReadOptions& options, ProgressCheck progress, MemoryBudget& budget,
                MessageLog& log)
        : options_(options), budget_(budget), log_(log), reader_(source.open(std::move(progress)))
    {
        budget_.add_file(reader_->file_bytes());
    }

    void read(GridModel& model)
    {
        model_ = &model;
        while (const auto header = reader_->next()) {
            ended_ ? read_behind_grid(*header) : read_record(*header);
        }
        if (!ended_) {
            throw FileError(reader_->file(), 0, size_known_ ? "ends before ENDGRID" : "ends before GRIDHEAD");
        }
        reader_->check_unchanged();
        tell();
    }

    [[nodiscard]] bool dual_porosity() const { return dual_; }

private:
    void read_record(const Header& header)
    {
        if (header.name == "FILEHEAD") {
            read_file_head(header);
        } else if (header.name == "GRIDHEAD") {
            read_grid_head(header);
        } else if (header.name == "COORD") {
            const auto [ni, nj, nk] = size_before(has_coord_);
            read_geometry(header, model_->coord, 6 * static_cast<std::uint64_t>((ni + 1) * (nj + 1)));
        } else if (header.name == "ZCORN") {
            const auto [ni, nj, nk] = size_before(has_zcorn_);
            read_geometry(header, model_->zcorn, 8 * static_cast<std::uint64_t>(ni * nj * nk));
        } else if (header.name == "ACTNUM") {
            const auto [ni, nj, nk] = size_before(has_flags_);
            ActiveFlags flags = read_flags(*reader_, header, static_cast<std::uint64_t>(ni * nj * nk), dual_, budget_);
            model_->active = std::move(flags.active);
            special_ = flags.special;
        } else if (header.name == "ENDGRID") {
            end_grid();
        } else if (header.name == "COORDSYS") {
            // Which layers belong to which reservoir; there is one.
        } else if (!read_frame(*reader_, header, model_->frame, log_)) {
            passed_.add(header);
        }
    }

    void read_file_head(const Header& header)
    {
        if (header.type != Type::Integer) {
            reader_->fail("is of type " + header.type_name + ", expected INTE");
        }
        const auto items = reader_->read_integers(origin_item + 1);
        const auto item = [&items](std::size_t index) { return index < items.size() ? items[index] : 0; };
        if (item(grid_type_item) != 0) {
            reader_->fail("states grid type " + std::to_string(item(grid_type_item)) + ", expected 0 (corner points)");
        }
        const std::int32_t porosity = item(porosity_item);
        if (porosity < 0 || porosity > 2) {
            reader_->fail("states porosity model " + std::to_string(porosity) + ", expected 0 to 2");
        }
        dual_ = porosity > 0;
    }

    void read_grid_head(const Header& header)
    {
        if (size_known_) {
            reader_->fail("occurs twice before ENDGRID");
        }
        constexpr std::size_t least = 4;
        if (header.type != Type::Integer || header.count < least) {
            reader_->fail("is " + std::to_string(header.count) + " values of type " + header.type_name
                          + ", expected at least 4 of type INTE");
        }
        const auto items = reader_->read_integers(head_items);
        if (items[kind_item] != corner_point) {
            reader_->fail("states grid kind " + std::to_string(items[kind_item]) + ", expected 1 (corner points)");
        }
        model_->size = checked_size(*reader_, items[1], items[2], items[3]);
        check_wanted_size(*reader_, model_->size, options_);
        const auto item = [&items](std::size_t index) { return index < items.size() ? items[index] : 0; };
        if (item(reservoirs_item) > 1) {
            reader_->fail("states " + std::to_string(item(reservoirs_item)) + " sets of pillars, expected 1");
        }
        if (item(radial_item) != 0) {
            reader_->fail("states radial coordinates, expected Cartesian ones");
        }
        size_known_ = true;
    }

    /// The grid's size for an array that may occur once.
    const GridSize& size_before(bool& seen)
    {
        if (!size_known_) {
            reader_->fail("stands before GRIDHEAD");
        }
        if (seen) {
            reader_->fail("occurs twice before ENDGRID");
        }
        seen = true;
        return model_->size;
    }

    void read_geometry(const Header& header, RealArray& array, std::uint64_t expected)
    {
        if (!options_.properties_only) {
            array = read_reals(*reader_, header, expected, budget_, log_);
        } else if (header.count != expected) {
            reader_->fail("has " + std::to_string(header.count) + " values, expected " + std::to_string(expected));
        }
    }

    void end_grid()
    {
        if (!size_known_ || !has_coord_ || !has_zcorn_) {
            reader_->fail(std::string("stands before ")
                          + (!size_known_  ? "GRIDHEAD"
                             : !has_coord_ ? "COORD"
                                           : "ZCORN"));
        }
        if (!has_flags_ && !options_.properties_only) {
            const auto cells = static_cast<std::uint64_t>(model_->cells());
            budget_.claim(*reader_, cells);
            model_->active.assign(static_cast<std::size_t>(cells), 1);
        }
        ended_ = true;
    }

    void read_behind_grid(const Header& header)
    {
        if (!refinements_.take(header) && header.name != "ENDGRID") {
            passed_.add(header);
        }
    }

    void tell()
    {
        const auto add = [this](Message::Level level, const std::string& kind, const std::string& text) {
            log_.add(kind, {level, to_utf8(reader_->file()), 0, text});
        };
        if (dual_) {
            add(Message::Level::Info, "dual porosity",
                "dual porosity: a cell is active when its matrix is; "
                    + std::to_string(std::count(model_->active.begin(), model_->active.end(), 1)) + " of "
                    + std::to_string(model_->active.size()) + " cells are, " + std::to_string(special_)
                    + " have an active fracture");
        } else if (special_ > 0) {
            add(Message::Level::Warning, "active flags",
                "ACTNUM is 2 or 3 in " + plural(special_, "cell") + ": these are taken as active");
        }
        refinements_.tell(log_, reader_->file());
        passed_.tell(log_, reader_->file(), "not part of the grid");
    }

    const ReadOptions& options_;
    MemoryBudget& budget_;
    MessageLog& log_;
    std::unique_ptr<Reader> reader_;
    GridModel* model_ = nullptr;
    bool size_known_ = false;
    bool has_coord_ = false;
    bool has_zcorn_ = false;
    bool has_flags_ = false;
    bool dual_ = false;
    bool ended_ = false;
    std::uint64_t special_ = 0;
    Refinements refinements_;
    PassedOver passed_;
};

} // namespace

namespace egrid {

ReadResult read(const Source& grid, const std::optional<Source>& init, const ReadOptions& options)
{
    return read_with_init(grid, init, options,
                          [&](ProgressCheck progress, MemoryBudget& budget, MessageLog& log, GridModel& model) {
                              EgridReader reader(grid, options, std::move(progress), budget, log);
                              reader.read(model);
                              return reader.dual_porosity();
                          });
}

} // namespace egrid

std::span<const std::string_view> EgridFormat::endings() const
{
    return file_endings;
}

bool EgridFormat::recognises(std::string_view head, const std::filesystem::path&) const
{
    const auto headers = peek_headers(head);
    return std::any_of(headers.begin(), headers.end(),
                       [](const Header& header) { return header.name == "FILEHEAD" || header.name == "GRIDHEAD"; });
}

ReadResult EgridFormat::read(const std::filesystem::path& path, const ReadOptions& options) const
{
    const Source grid{path, {}};
    const auto init = find_init(path, grid.open()->formatted());
    return egrid::read(grid, init ? std::optional(Source{*init, {}}) : std::nullopt, options);
}

// --- writing ---------------------------------------------------------------------------------------------------------

namespace {

bool all_undefined(const PropertyData& property, const std::vector<std::uint8_t>& active)
{
    for (std::size_t i = 0; i < active.size(); ++i) {
        if (active[i] == 0 && is_defined(property, i)) {
            return false;
        }
    }
    return true;
}

void write_integers(Writer& writer, std::string_view name, const std::vector<std::int32_t>& values,
                    const std::filesystem::path& target)
{
    writer.begin(name, Type::Integer, values.size(), target);
    writer.put(std::span<const std::int32_t>(values));
}

void write_grid(const GridModel& model, AtomicFile& file, bool formatted, const std::filesystem::path& path,
                WriteProgress& progress, MessageLog& log)
{
    Writer writer(file, formatted);
    std::vector<std::int32_t> head(head_items, 0);
    constexpr std::int32_t version = 3;
    constexpr std::int32_t release = 2007; // since when the layout is this one
    head[version_item] = version;
    head[release_item] = release;
    head[origin_item] = corner_point;
    write_integers(writer, "FILEHEAD", head, path);
    write_frame(writer, model.frame, path, log);
    std::fill(head.begin(), head.end(), 0);
    head[kind_item] = corner_point;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        head[axis + 1] = static_cast<std::int32_t>(model.size[axis]);
    }
    head[reservoirs_item] = 1;
    head[segments_item] = 1;
    write_integers(writer, "GRIDHEAD", head, path);
    for (const auto& [name, array] : {std::pair<const char*, const RealArray&>("COORD", model.coord),
                                      std::pair<const char*, const RealArray&>("ZCORN", model.zcorn)}) {
        if (write_reals(writer, name, array, false, path, progress)) {
            log.add("rounded numbers", {Message::Level::Warning, to_utf8(path.string()), 0,
                                        std::string(name) + " is rounded from 64 to 32 bits"});
        }
    }
    write_flags(writer, model.active, path, progress);
    write_integers(writer, "ENDGRID", {}, path);
}

void write_init(const GridModel& model, const KeywordNames& names, const std::vector<bool>& active_only,
                UnitSystem units, AtomicFile& file, bool formatted, const std::filesystem::path& path,
                WriteProgress& progress)
{
    Writer writer(file, formatted);
    // Items: 2 unit system, 8 to 10 size, 11 active cells, 14 phases (oil, water and gas), 64 to 66 day, month and year
    // of the start, 94 kind of simulator. A geological model has neither start nor phases, but readers look at them.
    constexpr std::size_t items = 95;
    constexpr std::size_t phases_item = 14;
    constexpr std::int32_t all_phases = 7;
    constexpr std::size_t date_item = 64;
    constexpr std::array<std::int32_t, 3> date = {1, 1, 2000};
    constexpr std::size_t program_item = 94;
    constexpr std::int32_t black_oil = 100;
    std::vector<std::int32_t> head(items, 0);
    head[2] = static_cast<std::int32_t>(units == UnitSystem::Unknown ? UnitSystem::Metric : units);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        head[8 + axis] = static_cast<std::int32_t>(model.size[axis]);
    }
    head[11] = static_cast<std::int32_t>(std::count(model.active.begin(), model.active.end(), 1));
    head[phases_item] = all_phases;
    std::copy(date.begin(), date.end(), head.begin() + date_item);
    head[program_item] = black_oil;
    write_integers(writer, "INTEHEAD", head, path);
    constexpr std::size_t logical_items = 80;
    writer.begin("LOGIHEAD", Type::Logical, logical_items, path);
    writer.put(std::span<const std::int32_t>(std::vector<std::int32_t>(logical_items, 0)));
    writer.begin("DOUBHEAD", Type::Double, 1, path);
    writer.put(std::span<const double>(std::array{0.0}));
    for (std::size_t i = 0; i < model.properties.size(); ++i) {
        if (!names[i].empty()) {
            write_property(writer, names[i], model.properties[i],
                           active_only[i] ? std::span<const std::uint8_t>(model.active)
                                          : std::span<const std::uint8_t>{},
                           path, progress);
        }
    }
}

} // namespace

WriteResult EgridFormat::write(const GridModel& model, const std::filesystem::path& path,
                               const WriteOptions& options) const
{
    check_arrays(model);
    std::string ending = path.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    const bool formatted = ending == file_endings[1];
    const bool small = ending == path.extension().string() && !ending.empty();
    std::filesystem::path init_path = path;
    init_path.replace_extension(formatted ? (small ? ".finit" : ".FINIT") : (small ? ".init" : ".INIT"));
    for (const std::int64_t n : model.size) {
        if (n > std::numeric_limits<std::int32_t>::max()) {
            throw FileError(path.string(), 0, "cannot be written: a grid of " + size_text(model.size) + " cells");
        }
    }

    MessageLog log;
    const std::string shown = path.string();
    const KeywordNames names(model.properties, {});
    names.tell(log, model.properties);
    std::uint64_t values = model.coord.size() + model.zcorn.size() + model.active.size();
    std::vector<bool> active_only(model.properties.size(), false);
    std::vector<std::string> in_all_cells;
    bool any = false;
    const bool some_inactive = std::find(model.active.begin(), model.active.end(), 0) != model.active.end();
    for (std::size_t i = 0; i < model.properties.size(); ++i) {
        const PropertyData& property = model.properties[i];
        if (property.on_points) {
            continue;
        }
        any = true;
        values += property.size();
        active_only[i] = some_inactive && all_undefined(property, model.active);
        if (some_inactive && !active_only[i] && property.name != "PORV") {
            in_all_cells.push_back(property.name);
        }
    }
    const UnitSystem stated = unit_system_of(model.frame.grid_units);
    const UnitSystem units = stated == UnitSystem::Unknown ? UnitSystem::Metric : stated;
    tell_losses(model, "EGRID", shown, units, active_only, log);
    if (!in_all_cells.empty()) {
        log.add("arrays of all cells", {Message::Level::Info, to_utf8(init_path.string()), 0,
                                        plural(in_all_cells.size(), "array")
                                            + " with values in inactive cells are written for all cells, "
                                            + in_all_cells.front() + (in_all_cells.size() > 1 ? " and others" : "")});
    }

    WriteProgress progress(options.progress, values);
    progress.add(0);
    WriteResult result;
    AtomicFile grid(path);
    write_grid(model, grid, formatted, path, progress, log);
    if (any) {
        AtomicFile init(init_path);
        write_init(model, names, active_only, units, init, formatted, init_path, progress);
        result.bytes = grid.size() + init.size();
        AtomicFile::commit_together(std::array{&init, &grid});
        log.add("companions",
                {Message::Level::Info, to_utf8(init_path.string()), 0, "written with it: the properties"});
    } else {
        result.bytes = grid.size();
        grid.commit();
        if (const auto other = find_init(path, formatted)) {
            log.add("companions",
                    {Message::Level::Warning, to_utf8(other->string()), 0,
                     "stands beside a grid that was written without properties and may not belong to it"});
        }
    }
    result.messages = log.take();
    return result;
}

} // namespace lodex
