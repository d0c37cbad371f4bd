#include <lodex/gridio/GrdeclReaderImpl.h>

#include <lodex/gridio/RecordGrid.h>
#include <lodex/gridio/TextNumbers.h>
#include <lodex/utils/Memory.h>

#include <system_error>

namespace lodex::grdecl {

namespace {

constexpr std::size_t most_depth = 20;     ///< INCLUDE within INCLUDE
constexpr std::size_t most_files = 10'000; ///< a few files that include each other twice could go on for ever
constexpr std::int64_t most_cells = 1'000'000'000'000;

} // namespace

Reader::Reader(const ReadOptions& options, const TextWindow& window)
    : options_(options), window_(window), max_bytes_(options.max_bytes > 0 ? options.max_bytes : model_memory_limit())
{
    if (options.size) {
        result_.model.size = *options.size;
        size_known_ = true;
    }
}

ReadResult Reader::read_file(const std::filesystem::path& path)
{
    root_folder_ = path.parent_path();
    push(load(path, path.string(), path.filename().string()));
    return run(path.string());
}

ReadResult Reader::read_text(std::string_view text, const std::filesystem::path& name)
{
    root_folder_ = name.parent_path();
    auto source = std::make_shared<Source>(text, name.string());
    source->folder = root_folder_;
    source->kept_name = name.filename().string();
    total_bytes_ += text.size();
    push(std::move(source));
    return run(name.string());
}

std::shared_ptr<Source> Reader::load(const std::filesystem::path& path, std::string shown, std::string kept_name)
{
    auto source = std::make_shared<Source>(path, std::move(shown), window_, [this] {
        if (options_.progress && !options_.progress(progress_)) {
            throw Cancelled{};
        }
    });
    for (const auto& open : stack_) {
        if (open->device == source->device && open->node == source->node) {
            throw FileError(source->shown, 0, "includes itself");
        }
    }
    source->kept_name = std::move(kept_name);
    const auto size = static_cast<std::uint64_t>(source->end - source->begin);
    total_bytes_ += size;
    result_.files.push_back(path);
    result_.bytes += size;
    return source;
}

void Reader::check_unchanged(const Source& source) const
{
    if (const auto what = source.change()) {
        throw FileError(source.shown, 0, *what);
    }
}

ReadResult Reader::run(const std::string& name)
{
    Keyword keyword;
    while (!stack_.empty()) {
        keyword.source = stack_.back();
        if (!stopped_ && next_keyword(keyword)) {
            handle(keyword);
            tick(*keyword.source, keyword.source->pos);
        } else {
            check_unchanged(*keyword.source);
            finished_bytes_ += static_cast<std::uint64_t>(keyword.source->end - keyword.source->begin);
            stack_.pop_back();
        }
    }
    finish(name);
    result_.messages = log_.take();
    if (options_.progress && !options_.progress(1)) {
        throw Cancelled{};
    }
    return std::move(result_);
}

void Reader::tick(const Source& source, const char* at)
{
    if (!options_.progress) {
        return;
    }
    std::uint64_t done = finished_bytes_;
    for (const auto& open : stack_) {
        done += static_cast<std::uint64_t>((open.get() == &source ? at : open->pos) - open->begin);
    }
    // Included files make the whole grow; what is shown never goes back.
    constexpr double almost = 0.99;
    progress_ = std::max(progress_,
                         almost * static_cast<double>(done) / static_cast<double>(std::max<std::uint64_t>(total_bytes_, 1)));
    progress_ = std::min(progress_, almost);
    if (!options_.progress(progress_)) {
        throw Cancelled{};
    }
}

void Reader::handle(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const KeywordInfo info = keyword_info(keyword.upper);
    if (const Section section = section_of(keyword.upper); section != Section::None) {
        section_ = section;
        box_.reset();
        if (section == Section::Summary || section == Section::Schedule) {
            keep_rest(keyword);
        } else {
            keep(keyword, data_end(keyword, info), true);
        }
    } else if (keyword.upper == "INCLUDE") {
        include(keyword);
    } else if (keyword.upper == "END") {
        keep(keyword, keyword.after, true);
        stopped_ = true;
    } else if (keyword.upper == "ENDINC") {
        source.pos = source.end;
    } else if (keyword.upper == "SPECGRID" || keyword.upper == "DIMENS") {
        read_size(keyword);
    } else if (keyword.upper == "RADIAL") {
        fail(source, keyword.start, "RADIAL: radial grids are not supported, expected corner-point or block geometry");
    } else if (keyword.upper == "MAPAXES") {
        read_map_axes(keyword);
    } else if (keyword.upper == "MAPUNITS" || keyword.upper == "GRIDUNIT") {
        const char* end = keyword.after;
        const auto tokens = read_record(keyword, end);
        const auto text = [&tokens](std::size_t i) {
            return i < tokens.size() && !tokens[i].is_default ? to_utf8(trimmed(tokens[i].text)) : std::string();
        };
        GridFrame& frame = result_.model.frame;
        if (keyword.upper == "MAPUNITS") {
            frame.map_units = text(0);
        } else {
            frame.grid_units = text(0);
            frame.grid_units_map = upper(text(1)) == "MAP";
        }
        finish_keyword(keyword, end);
    } else if (keyword.upper == "FAULTS" && section_ != Section::Runspec) {
        read_faults(keyword);
    } else if (keyword.upper == "BOX") {
        read_box(keyword);
    } else if (info.changes_arrays) {
        arrays_set_by_operations_ = true;
        warn("operations that are not applied", source, keyword.start,
             keyword.name + " is kept as text and not applied: arrays hold the numbers of the file");
        keep(keyword, list_end(keyword), true);
    } else if (may_be_array(keyword, info)) {
        const bool needs_size = keyword.upper != "DXV" && keyword.upper != "DYV" && keyword.upper != "DZV";
        if (!size_known_ && needs_size) {
            const char* const end = skip_numbers(keyword);
            deferred_.push_back({keyword, section_, std::move(note_)});
            finish_keyword(keyword, end);
        } else if (const char* const end = read_array(keyword, info)) {
            finish_keyword(keyword, end);
        } else {
            keep(keyword, data_end(keyword, info), false);
        }
    } else {
        if (keyword.upper == "ENDBOX") {
            box_.reset();
        }
        keep(keyword, data_end(keyword, info), info.layout == Layout::Flag);
    }
    note_.reset();
    from_.reset();
}

void Reader::keep(const Keyword& keyword, const char* end, bool quiet)
{
    Source& source = *keyword.source;
    KeptKeyword kept;
    kept.name = keyword.name;
    source.append_text(kept.text, keyword.after, end);
    kept.file = source.kept_name;
    kept.line = source.line_of(keyword.start);
    if (from_) {
        kept.file = from_->first;
        kept.line = from_->second;
        from_.reset();
    }
    result_.model.kept.push_back(std::move(kept));
    if (!quiet) {
        inform("keywords kept as text", source, keyword.start, keyword.name + " is kept as text");
    }
    finish_keyword(keyword, end);
}

void Reader::keep_rest(const Keyword& keyword)
{
    Source& source = *keyword.source;
    inform("keywords kept as text", source, keyword.start,
           keyword.name + " and what follows is kept as text; files that it includes are not read");
    keep(keyword, source.end, true);
    source.pos = source.end;
    for (auto open = stack_.rbegin() + 1; open < stack_.rend(); ++open) {
        (*open)->append_text(result_.model.kept.back().text, (*open)->pos, (*open)->end);
    }
    stopped_ = true;
}

void Reader::include(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* p = skip_space(source, keyword.after);
    std::string text;
    if (*p == '\'' || *p == '"') {
        p = read_quoted(source, p, text);
    } else {
        // A path without quotes may hold slashes; the closing one stands alone or last.
        const char* const start = p;
        while (p < source.end && !is_space(*p) && *p != '\0') {
            ++p;
        }
        need_whole(source, start, p);
        text.assign(start, p);
        if (text.size() > 1 && text.back() == '/') {
            text.pop_back();
            --p;
        }
    }
    text = trimmed(text);
    if (text.empty() || text == "/") {
        fail(source, keyword.start, "INCLUDE: no file name, expected a path");
    }
    const char* const slash = skip_space(source, p);
    if (*slash == '/') {
        p = slash + 1;
    } else {
        warn("keywords without a closing '/'", source, keyword.start, "INCLUDE: the closing '/' is missing");
    }

    std::vector<std::string> spellings{text};
    if (text.find('\\') != std::string::npos) {
        spellings.push_back(text);
        std::replace(spellings.back().begin(), spellings.back().end(), '\\', '/');
    }
    std::vector<std::filesystem::path> folders{source.folder};
    if (root_folder_ != source.folder) {
        folders.push_back(root_folder_);
    }
    std::filesystem::path found;
    for (const auto& spelling : spellings) {
        for (const auto& folder : folders) {
            std::error_code ignored;
            if (const auto candidate = folder / spelling; found.empty() && std::filesystem::exists(candidate, ignored)) {
                found = candidate.lexically_normal();
            }
        }
    }
    if (found.empty()) {
        const std::string reason = "INCLUDE: there is no file " + in_quotes(text);
        const bool geometry = section_ == Section::None || section_ == Section::Grid;
        if (geometry && !options_.properties_only) {
            fail(source, keyword.start, reason);
        }
        warn("included files that are not there", source, keyword.start, reason + "; the keyword is kept as text");
        keep(keyword, p, true);
        return;
    }
    finish_keyword(keyword, p);
    if (stack_.size() >= most_depth) {
        fail(source, keyword.start, "INCLUDE " + in_quotes(text) + ": files include each other more than "
                                        + std::to_string(most_depth) + " deep");
    }
    if (result_.files.size() >= most_files) {
        fail(source, keyword.start, "INCLUDE " + in_quotes(text) + ": more than " + std::to_string(most_files)
                                        + " files are included");
    }
    const std::filesystem::path given(text);
    std::string kept_name = given.filename().string();
    if (given.is_relative()) {
        if (const auto relative = found.lexically_relative(root_folder_.lexically_normal()); !relative.empty()) {
            kept_name = relative.generic_string();
        } else {
            kept_name = found.generic_string();
        }
    }
    try {
        push(load(found, found.string(), kept_name));
    } catch (const FileError& error) {
        fail(source, keyword.start, "INCLUDE " + in_quotes(text) + ": " + error.reason());
    }
}

void Reader::read_size(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* end = keyword.after;
    const auto tokens = read_record(keyword, end);
    GridSize size{};
    const std::array<const char*, 3> names = {"NI", "NJ", "NK"};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        size[axis] = whole_number(keyword, tokens, axis, names[axis], 1);
    }
    if (keyword.upper == "SPECGRID") {
        const auto reservoirs = whole_number(keyword, tokens, 3, "the number of reservoirs", 1, 1);
        if (reservoirs != 1) {
            fail(source, keyword.start, "SPECGRID: " + std::to_string(reservoirs) + " reservoirs, expected 1");
        }
        if (tokens.size() > 4 && !tokens[4].is_default && upper(tokens[4].text) != "F"
            && upper(tokens[4].text) != "FALSE") {
            fail(source, tokens[4].at, "SPECGRID: coordinate type " + in_quotes(tokens[4].text)
                                           + ", expected F (radial coordinates are not supported)");
        }
    }
    finish_keyword(keyword, end);
    set_size(keyword, size);
}

void Reader::set_size(const Keyword& keyword, const GridSize& size)
{
    Source& source = *keyword.source;
    const auto too_many = [](std::int64_t a, std::int64_t b) { return a > most_cells / b; };
    if (size[0] > most_cells || size[1] > most_cells || size[2] > most_cells || too_many(size[0], size[1])
        || too_many(size[0] * size[1], size[2])) {
        fail(source, keyword.start, keyword.name + ": " + size_text(size) + " cells, expected "
                                        + std::to_string(most_cells) + " at most");
    }
    GridModel& model = result_.model;
    if (size_known_) {
        if (model.size != size) {
            fail(source, keyword.start, keyword.name + ": " + size_text(size) + " cells, expected " + size_text(model.size)
                                            + (size_origin_.empty() ? " as the grid has" : " as " + size_origin_ + " says"));
        }
        return;
    }
    model.size = size;
    size_known_ = true;
    size_origin_ = keyword.name + " in " + to_utf8(source.shown) + ':' + std::to_string(source.line_of(keyword.start));
    const auto deferred = std::move(deferred_);
    deferred_.clear();
    const Section section = section_;
    for (const Deferred& entry : deferred) {
        section_ = entry.section;
        note_ = entry.note;
        const char* const pos = entry.keyword.source->pos;
        const KeywordInfo info = keyword_info(entry.keyword.upper);
        if (read_array(entry.keyword, info) == nullptr) {
            keep(entry.keyword, data_end(entry.keyword, info), false);
        }
        entry.keyword.source->pos = pos;
        check_unchanged(*entry.keyword.source);
    }
    section_ = section;
    note_.reset();
}

void Reader::read_map_axes(const Keyword& keyword)
{
    const char* end = keyword.after;
    const auto tokens = read_record(keyword, end);
    std::array<double, 6> axes{};
    if (tokens.size() != axes.size()) {
        fail(*keyword.source, keyword.start, "MAPAXES: " + value_count(tokens.size()) + ", expected 6");
    }
    for (std::size_t i = 0; i < axes.size(); ++i) {
        Decimal number;
        const std::string text = tokens[i].text + '\n';
        const char* const behind = parse_decimal(text.c_str(), number);
        if (tokens[i].is_default || behind == text.c_str() || *behind != '\n' || std::isinf(to_double(number))) {
            fail(*keyword.source, tokens[i].at, "MAPAXES: " + in_quotes(tokens[i].is_default ? "1*" : tokens[i].text)
                                                    + " is not a number (value " + std::to_string(i + 1) + " of 6)");
        }
        axes[i] = to_double(number);
    }
    result_.model.frame.map_axes = axes;
    finish_keyword(keyword, end);
}

void Reader::read_faults(const Keyword& keyword)
{
    Source& source = *keyword.source;
    const char* end = keyword.after;
    for (;;) {
        const char* const start = skip_space(source, end);
        if (start >= source.end || keyword_begins(source, start, true)) {
            warn("keywords without a closing '/'", source, keyword.start,
                 "FAULTS: the list is not closed by a '/' of its own");
            end = start;
            break;
        }
        end = start;
        const auto tokens = read_record(keyword, end);
        if (tokens.empty()) {
            break;
        }
        constexpr std::size_t fields = 8;
        if (tokens.size() != fields) {
            fail(source, start, "FAULTS: " + value_count(tokens.size()) + " in a record, expected 8 (name, I1 I2 J1 J2 K1 K2, face)");
        }
        FaultSegment segment;
        segment.name = to_utf8(trimmed(tokens[0].text));
        const std::array<const char*, 6> names = {"I1", "I2", "J1", "J2", "K1", "K2"};
        std::array<std::int64_t, 6> indices{};
        for (std::size_t i = 0; i < indices.size(); ++i) {
            indices[i] = whole_number(keyword, tokens, i + 1, names[i], 1) - 1;
        }
        segment.i = {indices[0], indices[1]};
        segment.j = {indices[2], indices[3]};
        segment.k = {indices[4], indices[5]};
        segment.face = to_utf8(trimmed(tokens[7].text));
        const std::string face = upper(segment.face);
        constexpr std::string_view letters = "IJKXYZ";
        if (face.empty() || face.size() > 2 || letters.find(face[0]) == std::string_view::npos
            || (face.size() == 2 && face[1] != '-' && face[1] != '+')) {
            fail(source, tokens[7].at, "FAULTS: " + in_quotes(segment.face)
                                           + " for the face, expected X, Y, Z or I, J, K, with - or + behind it");
        }
        result_.model.faults.push_back(std::move(segment));
        fault_places_.push_back({source.shown, source.line_of(start)});
        end = line_end(source, end);
        tick(source, end);
    }
    finish_keyword(keyword, end);
}

void Reader::read_box(const Keyword& keyword)
{
    const char* end = keyword.after;
    const auto tokens = read_record(keyword, end);
    std::array<IndexRange, 3> box{};
    bool whole = true;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::int64_t count = std::max<std::int64_t>(result_.model.size[axis], 1);
        const auto first = whole_number(keyword, tokens, 2 * axis, "the first index", 1, 1);
        const auto last = whole_number(keyword, tokens, 2 * axis + 1, "the last index", 1, count);
        if (last < first || (size_known_ && last > count)) {
            fail(*keyword.source, keyword.start, "BOX: indices " + std::to_string(first) + " to " + std::to_string(last)
                                                     + ", expected a range within 1 to " + std::to_string(count));
        }
        box[axis] = {first - 1, last - 1};
        whole = whole && first == 1 && last == count;
    }
    box_.reset();
    if (!whole) {
        box_ = box;
    }
    keep(keyword, end, false);
}

void Reader::finish(const std::string& name)
{
    GridModel& model = result_.model;
    if (!size_known_) {
        if (!deferred_.empty()) {
            const Keyword& keyword = deferred_.front().keyword;
            fail(*keyword.source, keyword.start,
                 keyword.name + ": the grid's size is not known, expected SPECGRID or DIMENS");
        }
        throw FileError(name, 0, "no grid in this file, expected SPECGRID or DIMENS");
    }
    if (!options_.properties_only) {
        const bool blocks = tops_count() > 0;
        if (has_coord_ != has_zcorn_) {
            throw FileError(name, 0, std::string(has_coord_ ? "COORD without ZCORN" : "ZCORN without COORD")
                                         + ", expected both");
        }
        if (!has_coord_) {
            make_block_centred(name);
        } else if (blocks && tops_count() != static_cast<std::size_t>(model.cells())) {
            log_.add("unused geometry", {Message::Level::Warning, to_utf8(name), 0,
                                         "TOPS is not used: the file has COORD and ZCORN"});
        }
        if (model.active.empty()) {
            model.active.assign(static_cast<std::size_t>(model.cells()), 1);
        }
    }
    state_units();
    check_faults();
    check_notes(name);
}

void Reader::state_units()
{
    using records::UnitSystem;
    UnitSystem system = UnitSystem::Unknown;
    for (const KeptKeyword& keyword : result_.model.kept) {
        const std::string word = upper(keyword.name);
        system = word == "METRIC" ? UnitSystem::Metric
            : word == "FIELD"     ? UnitSystem::Field
            : word == "LAB"       ? UnitSystem::Laboratory
            : word == "PVT-M"     ? UnitSystem::PvtMetric
                                  : system;
    }
    for (PropertyData& property : result_.model.properties) {
        if (!own_ && property.unit.empty() && !property.on_points) {
            property.unit = records::unit_of(upper(property.name), system);
        }
    }
}

void Reader::check_faults()
{
    const GridModel& model = result_.model;
    for (std::size_t i = 0; i < model.faults.size(); ++i) {
        const FaultSegment& fault = model.faults[i];
        const std::array<const std::array<std::int64_t, 2>*, 3> ranges = {&fault.i, &fault.j, &fault.k};
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const auto [first, last] = *ranges[axis];
            if (first > last || last >= model.size[axis]) {
                throw FileError(
                    fault_places_[i].file, fault_places_[i].line,
                    "FAULTS: " + std::string(1, "IJK"[axis]) + " range " + std::to_string(first + 1) + " to "
                         + std::to_string(last + 1) + " of " + in_quotes(fault.name) + ", expected a range within 1 to "
                         + std::to_string(model.size[axis]));
            }
        }
    }
}

void Reader::check_notes(const std::string& name)
{
    GridModel& model = result_.model;
    const std::int64_t cells = model.cells();
    for (RegionNote& note : regions_) {
        if (note.cells != cells) {
            log_.add("comments that do not read",
                     {Message::Level::Warning, to_utf8(note.file), note.line,
                      "region " + in_quotes(note.region.name) + " is passed over: its runs do not make "
                          + std::to_string(cells) + " cells"});
            continue;
        }
        if (note.region.flags.empty()) {
            claim_region(note);
            std::uint8_t flag = 0;
            for (const std::int64_t run : note.runs) {
                note.region.flags.insert(note.region.flags.end(), static_cast<std::size_t>(run), flag);
                flag ^= 1;
            }
            note.runs = {};
        }
        model.regions.push_back(std::move(note.region));
    }
    std::int64_t layers = 0;
    for (const LayerData& layer : model.layers) {
        layers = std::min(layers, model.size[2]) + std::min(layer.nb_k_cells, model.size[2] + 1);
    }
    if (!model.layers.empty() && layers != model.size[2]) {
        log_.add("comments that do not read", {Message::Level::Warning, to_utf8(name), 0,
                                               "stratigraphic units are passed over: they do not make "
                                                   + std::to_string(model.size[2]) + " K layers"});
        model.layers.clear();
    }
}

ReadResult read_file(const std::filesystem::path& path, const ReadOptions& options, const TextWindow& window)
{
    return Reader(options, window).read_file(path);
}

ReadResult read_text(std::string_view text, const std::filesystem::path& name, const ReadOptions& options)
{
    return Reader(options).read_text(text, name);
}

} // namespace lodex::grdecl
