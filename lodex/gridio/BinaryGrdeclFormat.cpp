#include <lodex/gridio/BinaryGrdeclFormat.h>

#include <lodex/utils/AtomicFile.h>
#include <lodex/gridio/RecordGrid.h>
#include <lodex/volumes/model/CellGeometry.h>

#include <algorithm>
#include <array>
#include <limits>

namespace lodex {

namespace {

const GridFormatRegistrar<BinaryGrdeclFormat> registrar;

constexpr std::array<std::string_view, 1> file_endings = {".bgrdecl"};

using namespace records;

class BinaryGrdeclReader {
public:
    BinaryGrdeclReader(const Source& source, const ReadOptions& options)
        : options_(options), budget_(options), reader_(source.open(options.progress))
    {
        budget_.add_file(reader_->file_bytes());
        result_.files = {source.path};
        result_.bytes = reader_->file_bytes();
        if (options.size) {
            result_.model.size = *options.size;
            size_known_ = true;
        }
    }

    ReadResult read()
    {
        while (const auto header = reader_->next()) {
            read_record(*header);
        }
        GridModel& model = result_.model;
        if (!options_.properties_only) {
            for (const auto& [name, there] : {std::pair("SPECGRID", size_stated_), std::pair("COORD", has_coord_),
                                              std::pair("ZCORN", has_zcorn_)}) {
                if (!there) {
                    throw FileError(reader_->file(), 0, std::string("ends without ") + name);
                }
            }
            if (!has_flags_) {
                budget_.claim(*reader_, static_cast<std::uint64_t>(model.cells()));
                model.active.assign(static_cast<std::size_t>(model.cells()), 1);
            }
        }
        reader_->check_unchanged();
        if (special_ > 0) {
            log_.add("active flags", {Message::Level::Warning, to_utf8(reader_->file()), 0,
                                      "ACTNUM is 2 or 3 in " + std::to_string(special_)
                                          + " cells: these are taken as active"});
        }
        passed_.tell(log_, reader_->file(), "no numbers of cells");
        result_.messages = log_.take();
        return std::move(result_);
    }

private:
    void read_record(const Header& header)
    {
        GridModel& model = result_.model;
        if (header.name == "SPECGRID" || header.name == "DIMENS") {
            read_size(header);
        } else if (header.name == "COORD") {
            const auto [ni, nj, nk] = size_before(has_coord_);
            read_geometry(header, model.coord, 6 * static_cast<std::uint64_t>((ni + 1) * (nj + 1)));
        } else if (header.name == "ZCORN") {
            const auto [ni, nj, nk] = size_before(has_zcorn_);
            read_geometry(header, model.zcorn, 8 * static_cast<std::uint64_t>(ni * nj * nk));
        } else if (header.name == "ACTNUM") {
            const auto [ni, nj, nk] = size_before(has_flags_);
            ActiveFlags flags = read_flags(*reader_, header, static_cast<std::uint64_t>(ni * nj * nk), false, budget_);
            model.active = std::move(flags.active);
            special_ = flags.special;
        } else if (header.name == "COORDSYS") {
            // Which layers belong to which reservoir; there is one.
        } else if (!read_frame(*reader_, header, model.frame, log_)) {
            read_property(header);
        }
    }

    void read_size(const Header& header)
    {
        if (size_stated_) {
            reader_->fail("states the size a second time");
        }
        constexpr std::size_t least = 3;
        constexpr std::size_t reservoirs_item = 3;
        if (header.type != Type::Integer || header.count < least) {
            reader_->fail("is " + std::to_string(header.count) + " values of type " + header.type_name
                          + ", expected at least 3 of type INTE");
        }
        const auto items = reader_->read_integers(reservoirs_item + 1);
        if (items.size() > reservoirs_item && items[reservoirs_item] > 1) {
            reader_->fail("states " + std::to_string(items[reservoirs_item]) + " sets of pillars, expected 1");
        }
        result_.model.size = checked_size(*reader_, items[0], items[1], items[2]);
        check_wanted_size(*reader_, result_.model.size, options_);
        size_stated_ = size_known_ = true;
    }

    const GridSize& size_before(bool& seen)
    {
        if (!size_known_) {
            reader_->fail("stands before SPECGRID");
        }
        if (seen) {
            reader_->fail("occurs twice");
        }
        seen = true;
        return result_.model.size;
    }

    void read_geometry(const Header& header, RealArray& array, std::uint64_t expected)
    {
        if (!options_.properties_only) {
            array = read_reals(*reader_, header, expected, budget_, log_);
        } else if (header.count != expected) {
            reader_->fail("has " + std::to_string(header.count) + " values, expected " + std::to_string(expected));
        }
    }

    void read_property(const Header& header)
    {
        if (!is_numeric(header) || is_never_property(header.name) || header.name.empty()) {
            passed_.add(header);
            return;
        }
        if (!size_known_) {
            reader_->fail("stands before SPECGRID; whether it is a property is not known without the size of the grid");
        }
        const auto cells = static_cast<std::uint64_t>(result_.model.cells());
        if (header.count != cells) {
            if (is_cell_array(header.name)) {
                reader_->fail("has " + std::to_string(header.count) + " values, expected " + std::to_string(cells));
            }
            passed_.add(header);
            return;
        }
        PropertyData property = read_cells(*reader_, header, cells, budget_);
        auto& properties = result_.model.properties;
        const auto same = std::find_if(properties.begin(), properties.end(),
                                       [&](const PropertyData& other) { return other.name == property.name; });
        if (same == properties.end()) {
            properties.push_back(std::move(property));
            return;
        }
        log_.add(
            "arrays that occur again",
            reader_->message(Message::Level::Warning, property.name + " occurs again and replaces the one before"));
        *same = std::move(property);
    }

    const ReadOptions& options_;
    MemoryBudget budget_;
    MessageLog log_;
    std::unique_ptr<Reader> reader_;
    ReadResult result_;
    bool size_known_ = false;
    bool size_stated_ = false;
    bool has_coord_ = false;
    bool has_zcorn_ = false;
    bool has_flags_ = false;
    std::uint64_t special_ = 0;
    PassedOver passed_;
};

} // namespace

namespace binary_grdecl {

ReadResult read(const Source& source, const ReadOptions& options)
{
    return BinaryGrdeclReader(source, options).read();
}

} // namespace binary_grdecl

std::span<const std::string_view> BinaryGrdeclFormat::endings() const
{
    return file_endings;
}

bool BinaryGrdeclFormat::recognises(std::string_view head, const std::filesystem::path&) const
{
    constexpr std::string_view others[] = {"FILEHEAD", "GRIDHEAD", "INTEHEAD", "COORDS", "CORNERS", "SEQNUM", "SEQHDR",
                                           "RESTART",  "STARTDAT", "MINISTEP"};
    const auto headers = peek_headers(head);
    return !headers.empty()
        && std::none_of(headers.begin(), headers.end(),
                        [&](const Header& header) {
                            return std::find(std::begin(others), std::end(others), header.name) != std::end(others);
                        })
        && std::any_of(headers.begin(), headers.end(), [](const Header& header) {
               return header.name == "SPECGRID" || header.name == "COORD" || header.name == "ZCORN"
                   || header.name == "ACTNUM" || is_cell_array(header.name);
           });
}

ReadResult BinaryGrdeclFormat::read(const std::filesystem::path& path, const ReadOptions& options) const
{
    return binary_grdecl::read({path, {}}, options);
}

WriteResult BinaryGrdeclFormat::write(const GridModel& model, const std::filesystem::path& path,
                                      const WriteOptions& options) const
{
    check_arrays(model);
    for (const std::int64_t n : model.size) {
        if (n > std::numeric_limits<std::int32_t>::max()) {
            throw FileError(path.string(), 0, "cannot be written: a grid of " + size_text(model.size) + " cells");
        }
    }
    MessageLog log;
    const KeywordNames names(model.properties, {});
    names.tell(log, model.properties);
    tell_losses(model, "binary GRDECL", path.string(), {}, {}, log);
    std::uint64_t values = model.coord.size() + model.zcorn.size() + model.active.size();
    for (const PropertyData& property : model.properties) {
        values += property.on_points ? 0 : property.size();
    }

    WriteProgress progress(options.progress, values);
    progress.add(0);
    AtomicFile file(path);
    Writer writer(file, false);
    write_frame(writer, model.frame, path, log);
    const std::array<std::int32_t, 4> size = {static_cast<std::int32_t>(model.size[0]),
                                              static_cast<std::int32_t>(model.size[1]),
                                              static_cast<std::int32_t>(model.size[2]), 1};
    writer.begin("SPECGRID", Type::Integer, size.size(), path);
    writer.put(std::span<const std::int32_t>(size));
    write_reals(writer, "COORD", model.coord, true, path, progress);
    write_reals(writer, "ZCORN", model.zcorn, true, path, progress);
    write_flags(writer, model.active, path, progress);
    for (std::size_t i = 0; i < model.properties.size(); ++i) {
        if (!names[i].empty()) {
            write_property(writer, names[i], model.properties[i], {}, path, progress);
        }
    }
    WriteResult result;
    result.bytes = file.size();
    file.commit();
    result.messages = log.take();
    return result;
}

} // namespace lodex
