#include <lodex/gridio/InitFormat.h>

#include <lodex/gridio/EgridFormat.h>
#include <lodex/gridio/OldGridFormat.h>
#include <lodex/volumes/model/ParallelBlocks.h>

#include <algorithm>
#include <array>

namespace lodex {

namespace {

const GridFormatRegistrar<InitFormat> registrar;

constexpr std::array<std::string_view, 2> file_endings = {".init", ".finit"};

} // namespace

std::span<const std::string_view> InitFormat::endings() const
{
    return file_endings;
}

bool InitFormat::recognises(std::string_view head, const std::filesystem::path& path) const
{
    const auto headers = records::peek_headers(head);
    if (headers.empty() || headers.front().name != "INTEHEAD") {
        return false;
    }
    // Other results of a simulator begin with the same header; arrays of the initial state tell them apart.
    std::string ending = path.extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return std::find(file_endings.begin(), file_endings.end(), ending) != file_endings.end()
        || std::any_of(headers.begin(), headers.end(), [](const records::Header& header) {
               return header.name == "PORV" || header.name == "PORO" || header.name == "DEPTH" || header.name == "DX"
                   || header.name == "PERMX";
           });
}

ReadResult InitFormat::read(const std::filesystem::path& path, const ReadOptions& options) const
{
    const records::Source source{path, {}};
    if (options.properties_only) {
        return records::read_init_alone(source, options);
    }
    const bool formatted = source.open()->formatted();
    const std::array<std::string_view, 4> grids = formatted
        ? std::array<std::string_view, 4>{".FEGRID", ".EGRID", ".FGRID", ".GRID"}
        : std::array<std::string_view, 4>{".EGRID", ".FEGRID", ".GRID", ".FGRID"};
    const auto grid = records::find_beside(path, grids);
    if (!grid) {
        throw FileError(path.string(), 0,
                        "holds properties without a grid, and there is no EGRID of the same name beside it");
    }
    const GridFormat& format = GridFormats::for_reading(*grid);
    if (format.name() == EgridFormat().name()) {
        return egrid::read({*grid, {}}, source, options);
    }
    if (format.name() == OldGridFormat().name()) {
        return old_grid::read({*grid, {}}, source, options);
    }
    throw FileError(grid->string(), 0,
                    "is no EGRID, as its name and " + path.filename().string() + " beside it ask for");
}

namespace records {

namespace {

/// Items of INTEHEAD.
constexpr std::size_t units_item = 2;
constexpr std::size_t size_item = 8;
constexpr std::size_t active_item = 11;
constexpr std::size_t needed_items = 12;

std::uint64_t count_active(std::span<const std::uint8_t> flags)
{
    return flags.size() - static_cast<std::uint64_t>(std::count(flags.begin(), flags.end(), 0));
}

/// Flags from the arrays of all cells: ACTNUM, or where there is pore volume. Empty when neither has `expected` active
/// cells.
std::vector<std::uint8_t> flags_of_file(const Source& source, std::uint64_t cells, std::uint64_t expected,
                                        MemoryBudget& budget)
{
    const auto reader = source.open();
    while (const auto header = reader->next()) {
        if (header->name == "LGR") {
            break;
        }
        if (header->count != cells || !(header->name == "PORV" || header->name == "ACTNUM")) {
            continue;
        }
        std::vector<std::uint8_t> flags;
        if (header->name == "ACTNUM" && header->type == Type::Integer) {
            flags = read_flags(*reader, *header, cells, false, budget).active;
        } else if (header->name == "PORV" && header->type == Type::Real) {
            const PropertyData volumes = read_cells(*reader, *header, cells, budget);
            budget.claim(*reader, cells);
            for (const float volume : std::get<std::vector<float>>(volumes.values)) {
                flags.push_back(static_cast<std::uint8_t>(volume > 0));
            }
        }
        if (!flags.empty() && count_active(flags) == expected) {
            return flags;
        }
    }
    return {};
}

class InitReader {
public:
    InitReader(const Source& source, const InitGrid& grid, ProgressCheck progress, MemoryBudget& budget,
               MessageLog& log)
        : source_(source), grid_(grid), budget_(budget), log_(log), reader_(source.open(std::move(progress)))
    {
        budget_.add_file(reader_->file_bytes());
        result_.bytes = reader_->file_bytes();
    }

    InitContent read()
    {
        if (read_head()) {
            while (const auto header = reader_->next()) {
                read_record(*header);
            }
            tell();
        }
        reader_->check_unchanged();
        return std::move(result_);
    }

private:
    /// False when the file is of another grid.
    bool read_head()
    {
        const auto header = reader_->next();
        if (!header || header->name != "INTEHEAD" || header->type != Type::Integer || header->count < needed_items) {
            reader_->fail("an INIT file begins with at least " + std::to_string(needed_items) + " integers INTEHEAD");
        }
        const auto items = reader_->read_integers(needed_items);
        units_ = unit_system(items[units_item]);
        GridSize size = {items[size_item], items[size_item + 1], items[size_item + 2]};
        if (items[active_item] < 0) {
            reader_->fail("states " + std::to_string(items[active_item]) + " active cells");
        }
        stated_active_ = static_cast<std::uint64_t>(items[active_item]);
        if (grid_.size && size != *grid_.size) {
            // Dual porosity: some programs count the layers of matrix and fracture.
            dual_ = size == GridSize{(*grid_.size)[0], (*grid_.size)[1], 2 * (*grid_.size)[2]};
            if (!dual_) {
                return refuse("states a grid of " + size_text(size) + " cells, expected " + size_text(*grid_.size));
            }
            size = *grid_.size;
        }
        dual_ = dual_ || grid_.dual_porosity;
        size = checked_size(*reader_, size[0], size[1], size[2]);
        result_.size = size;
        cells_ = static_cast<std::uint64_t>(size[0] * size[1] * size[2]);
        return choose_flags();
    }

    bool refuse(const std::string& reason)
    {
        if (!grid_.companion) {
            reader_->fail(reason);
        }
        log_.add("files of other grids",
                 reader_->message(Message::Level::Warning, reason + "; its properties are left out"));
        return false;
    }

    bool choose_flags()
    {
        const std::uint64_t known = count_active(grid_.active);
        if (!grid_.active.empty() && grid_.active.size() != cells_) {
            return refuse("states " + std::to_string(cells_) + " cells, expected "
                          + std::to_string(grid_.active.size()));
        }
        if (!grid_.active.empty() && (known == stated_active_ || (dual_ && known <= stated_active_))) {
            flags_ = grid_.active;
            return true;
        }
        if (stated_active_ == cells_) {
            every_cell_ = true;
            return true;
        }
        own_flags_ = flags_of_file(source_, cells_, stated_active_, budget_);
        if (!own_flags_.empty()) {
            flags_ = own_flags_;
            if (!grid_.active.empty()) {
                log_.add("other active cells",
                         reader_->message(Message::Level::Warning,
                                          "states " + std::to_string(stated_active_) + " active cells, the grid has "
                                              + std::to_string(known)
                                              + "; its values go to the cells that have pore volume in this file"));
            }
            return true;
        }
        if (!grid_.active.empty()) {
            return refuse("states " + std::to_string(stated_active_) + " active cells, expected "
                          + std::to_string(known));
        }
        return true; // an error once there are values of active cells
    }

    void read_record(const Header& header)
    {
        if (header.name == "ENDLGR") {
            in_refinement_ = false;
            return;
        }
        if (header.name == "LGR" || header.name == "INTEHEAD") {
            refinements_ += static_cast<std::uint64_t>(!in_refinement_);
            in_refinement_ = true;
            return;
        }
        if (in_refinement_ || is_plain_header(header.name)) {
            return;
        }
        if (header.name == "ACTNUM" && header.type == Type::Integer && header.count == cells_) {
            result_.active = read_flags(*reader_, header, cells_, dual_, budget_).active;
            return;
        }
        if (header.name == "ACTNUM" && header.count == stated_active_) {
            return; // active cells are active
        }
        if (!is_numeric(header) || is_never_property(header.name) || header.name.empty()) {
            passed_.add(header);
            return;
        }
        const bool all = header.count == cells_ || (dual_ && header.count == 2 * cells_);
        const bool of_active = header.count == stated_active_ || (!flags_.empty() && dual_ && header.count == matrix());
        if (!all && !of_active) {
            if (is_cell_array(header.name)) {
                reader_->fail("has " + std::to_string(header.count) + " values, expected "
                              + std::to_string(stated_active_) + " (active cells) or " + std::to_string(cells_)
                              + " (all cells)");
            }
            passed_.add(header);
            return;
        }
        if (!names_.insert(header.name).second) {
            log_.add(
                "arrays that occur again",
                reader_->message(Message::Level::Warning, to_utf8(header.name) + " occurs again; the first is taken"));
            return;
        }
        fractures_ = fractures_ || (dual_ && header.count != matrix() && header.count != cells_);
        if (all || every_cell_) {
            result_.properties.push_back(read_cells(*reader_, header, cells_, budget_));
        } else {
            if (flags_.empty()) {
                reader_->fail("has values of the " + std::to_string(stated_active_)
                              + " active cells alone, and neither the caller nor the file says which they are");
            }
            result_.properties.push_back(read_active_cells(*reader_, header, flags_, budget_));
        }
        result_.properties.back().unit = unit_of(header.name, units_);
    }

    [[nodiscard]] std::uint64_t matrix()
    {
        if (!matrix_) {
            matrix_ = every_cell_ ? cells_ : count_active(flags_);
        }
        return *matrix_;
    }

    void tell()
    {
        passed_.tell(log_, reader_->file(), "no numbers of cells");
        if (refinements_ > 0) {
            log_.add("local refinements", {Message::Level::Info, to_utf8(reader_->file()), 0,
                                           "left out: the properties of " + std::to_string(refinements_)
                                               + (refinements_ == 1 ? " local refinement" : " local refinements")});
        }
        if (fractures_) {
            log_.add("fracture values",
                     {Message::Level::Info, to_utf8(reader_->file()), 0,
                      "dual porosity: values of the matrix are taken, those of the fracture left out"});
        }
    }

    const Source& source_;
    const InitGrid& grid_;
    MemoryBudget& budget_;
    MessageLog& log_;
    std::unique_ptr<Reader> reader_;
    InitContent result_;
    UnitSystem units_ = UnitSystem::Unknown;
    std::uint64_t cells_ = 0;
    std::uint64_t stated_active_ = 0;
    std::optional<std::uint64_t> matrix_;
    bool every_cell_ = false;
    bool dual_ = false;
    bool fractures_ = false;
    std::span<const std::uint8_t> flags_;
    std::vector<std::uint8_t> own_flags_;
    std::set<std::string> names_;
    bool in_refinement_ = false;
    std::uint64_t refinements_ = 0;
    PassedOver passed_;
};

} // namespace

InitContent read_init(const Source& source, const InitGrid& grid, ProgressCheck progress, MemoryBudget& budget,
                      MessageLog& log)
{
    return InitReader(source, grid, std::move(progress), budget, log).read();
}

ReadResult read_with_init(const Source& grid, const std::optional<Source>& init, const ReadOptions& options,
                          const GridReading& read_grid)
{
    MemoryBudget budget(options);
    MessageLog log;
    ReadResult result;
    const std::uint64_t grid_bytes = grid.open()->file_bytes();
    const std::uint64_t init_bytes = init ? init->open()->file_bytes() : 0;
    result.files = {grid.path};
    result.bytes = grid_bytes + init_bytes;
    const double share = static_cast<double>(grid_bytes) / static_cast<double>(result.bytes);

    const bool dual_porosity = read_grid(partial_progress(options.progress, 0, share), budget, log, result.model);
    if (init) {
        const InitGrid wanted{result.model.size, result.model.active, dual_porosity, true};
        InitContent content = read_init(*init, wanted, partial_progress(options.progress, share, 1), budget, log);
        result.model.properties = std::move(content.properties);
        result.files.push_back(init->path);
    }
    result.messages = log.take();
    return result;
}

ReadResult read_init_alone(const Source& source, const ReadOptions& options)
{
    MemoryBudget budget(options);
    MessageLog log;
    InitContent content = read_init(source, {options.size, options.active}, options.progress, budget, log);
    ReadResult result;
    result.model.size = content.size;
    result.model.properties = std::move(content.properties);
    result.model.active = std::move(content.active);
    result.files = {source.path};
    result.bytes = content.bytes;
    result.messages = log.take();
    return result;
}

std::optional<std::filesystem::path> find_beside(const std::filesystem::path& path,
                                                 std::span<const std::string_view> endings)
{
    const std::string own = path.extension().string();
    const bool small = std::any_of(own.begin(), own.end(), [](char c) { return c >= 'a' && c <= 'z'; });
    for (const bool as_own : {true, false}) {
        for (const std::string_view ending : endings) {
            std::string text(ending);
            if (small == as_own) {
                std::transform(text.begin(), text.end(), text.begin(),
                               [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
            }
            std::filesystem::path candidate = path;
            candidate.replace_extension(text);
            std::error_code ignored;
            if (candidate != path && std::filesystem::is_regular_file(candidate, ignored)) {
                return candidate;
            }
        }
    }
    return {};
}

std::optional<std::filesystem::path> find_init(const std::filesystem::path& grid, bool formatted)
{
    const std::array<std::string_view, 2> endings = formatted ? std::array<std::string_view, 2>{".FINIT", ".INIT"}
                                                              : std::array<std::string_view, 2>{".INIT", ".FINIT"};
    return find_beside(grid, endings);
}

} // namespace records

} // namespace lodex
