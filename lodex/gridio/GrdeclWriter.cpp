#include <lodex/gridio/GrdeclWriter.h>

#include <lodex/utils/AtomicFile.h>
#include <lodex/gridio/GrdeclKeywords.h>
#include <lodex/gridio/GrdeclReader.h>
#include <lodex/gridio/GrdeclText.h>
#include <lodex/gridio/MessageLog.h>
#include <lodex/gridio/TextNumbers.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace lodex::grdecl {

namespace {

constexpr std::size_t line_width = 100; ///< a line ends behind this column at the latest; longest token 52
constexpr std::size_t tick_values = 64 * 1024;
constexpr std::size_t usual_keyword = 8;

/// Text for a comment: control characters, and what ends or escapes in quotes, behind a backslash.
std::string escaped(std::string_view text)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if ((byte < 0x20 && c != '\t') || byte == 0x7F) {
            result += "\\x";
            result += digits[byte >> 4];
            result += digits[byte & 15];
        } else {
            result += c;
        }
    }
    return result;
}

std::string in_note(std::string_view text)
{
    return '"' + escaped(text) + '"';
}

/// Text between the quotes of a record, which know no escapes.
std::string record_text(std::string_view text)
{
    std::string result(text);
    for (char& c : result) {
        c = c == '\'' || static_cast<unsigned char>(c) < 0x20 ? '_' : c;
    }
    return result;
}

class Writer {
public:
    Writer(const GridModel& model, const std::filesystem::path& path, const WriteOptions& options)
        : model_(model), path_(path), options_(options), file_(path)
    {
    }

    WriteResult run()
    {
        check();
        write_head();
        if (!model_.coord.empty()) {
            write_reals("COORD", model_.coord, 6);
            write_reals("ZCORN", model_.zcorn, 0);
        }
        if (!model_.active.empty()) {
            begin_keyword("ACTNUM");
            write_values(std::span(model_.active), 0, "ACTNUM");
        }
        for (const PropertyData& property : model_.properties) {
            write_property(property);
        }
        write_faults();
        write_regions();
        write_kept();
        tick(0);
        file_.commit();
        WriteResult result;
        result.bytes = file_.size();
        result.messages = log_.take();
        return result;
    }

private:
    void line(std::string_view text)
    {
        file_.write(text);
        file_.write("\n");
    }
    void note(const std::string& text) { line(std::string(note_prefix) + text); }
    void inform(const std::string& kind, std::string text)
    {
        log_.add(kind, {Message::Level::Info, to_utf8(path_.string()), 0, std::move(text)});
    }
    void warn(const std::string& kind, std::string text)
    {
        log_.add(kind, {Message::Level::Warning, to_utf8(path_.string()), 0, std::move(text)});
    }
    [[noreturn]] void fail(std::string reason) const { throw FileError(path_.string(), 0, std::move(reason)); }

    void tick(std::size_t values)
    {
        done_ += values;
        if (options_.progress
            && !options_.progress(std::min(1.0, static_cast<double>(done_) / static_cast<double>(total_)))) {
            throw Cancelled{};
        }
    }

    void check();
    void write_head();
    void write_property(const PropertyData& property);
    void write_faults();
    void write_regions();
    void write_kept();
    [[nodiscard]] std::string keyword_for(const PropertyData& property);

    void begin_keyword(std::string_view keyword) { line(keyword); }

    void write_reals(const std::string& keyword, const RealArray& values, std::size_t per_line)
    {
        values.visit([&](auto span) {
            const auto bad = std::find_if(span.begin(), span.end(), [](auto value) { return !std::isfinite(value); });
            if (bad != span.end()) {
                fail(keyword + " has the value " + shortest_text(*bad) + " at position "
                     + std::to_string(bad - span.begin() + 1) + ", expected a finite number");
            }
        });
        note("STORE " + keyword + (values.is_double() ? " store double" : " store float"));
        begin_keyword(keyword);
        values.visit([&](auto span) { write_values(span, per_line, keyword); });
    }

    template <class Value>
    void write_values(std::span<const Value> values, std::size_t per_line, const std::string& name,
                      std::optional<std::int32_t> as_default = {});

    const GridModel& model_;
    const std::filesystem::path& path_;
    const WriteOptions& options_;
    AtomicFile file_;
    MessageLog log_;
    std::size_t done_ = 0;
    std::size_t total_ = 1;
    std::set<std::string> used_;
};

void Writer::check()
{
    const GridSize& size = model_.size;
    if (size[0] < 1 || size[1] < 1 || size[2] < 1) {
        fail("the grid has " + size_text(size) + " cells, expected 1 or more along each axis");
    }
    const auto cells = static_cast<std::size_t>(model_.cells());
    const auto expect = [this](const std::string& what, std::size_t count, std::size_t expected) {
        if (count != expected) {
            fail(what + " has " + value_count(count) + ", expected " + std::to_string(expected));
        }
        total_ += count;
    };
    if (model_.coord.empty() && model_.zcorn.empty()) {
        warn("grids without geometry", "the grid has no geometry; only its properties are written");
    } else {
        expect("COORD", model_.coord.size(), 6 * static_cast<std::size_t>(model_.pillars()));
        expect("ZCORN", model_.zcorn.size(), 8 * cells);
    }
    if (!model_.active.empty()) {
        expect("ACTNUM", model_.active.size(), cells);
    }
    const auto points = static_cast<std::size_t>(model_.pillars()) * static_cast<std::size_t>(size[2] + 1);
    for (const PropertyData& property : model_.properties) {
        expect("property " + to_utf8(property.name), property.size(), property.on_points ? points : cells);
    }
    for (const RegionData& region : model_.regions) {
        expect("region " + to_utf8(region.name), region.flags.size(), cells);
    }
}

void Writer::write_head()
{
    note("GRID 1");
    const GridFrame& frame = model_.frame;
    if (!frame.map_units.empty()) {
        line("MAPUNITS\n '" + record_text(frame.map_units) + "' /\n");
    }
    if (frame.map_axes) {
        std::string text = "MAPAXES\n";
        for (std::size_t i = 0; i < frame.map_axes->size(); ++i) {
            const double value = (*frame.map_axes)[i];
            if (!std::isfinite(value)) {
                fail("MAPAXES has the value " + shortest_text(value) + ", which the format cannot hold");
            }
            text += ' ' + shortest_text(value) + (i % 2 == 1 && i < 5 ? "\n" : "");
        }
        line(text + " /\n");
    }
    if (!frame.grid_units.empty() || frame.grid_units_map) {
        const std::string units = frame.grid_units.empty() ? "1*" : '\'' + record_text(frame.grid_units) + '\'';
        line("GRIDUNIT\n " + units + (frame.grid_units_map ? " 'MAP'" : "") + " /\n");
    }
    line("SPECGRID\n " + std::to_string(model_.size[0]) + ' ' + std::to_string(model_.size[1]) + ' '
         + std::to_string(model_.size[2]) + " 1 F /\n");
    constexpr std::array<std::string_view, 3> styles = {"proportional", "base", "top"};
    for (const LayerData& layer : model_.layers) {
        note("LAYER " + in_note(layer.unit) + ' ' + std::to_string(layer.nb_k_cells) + ' '
             + shortest_text(layer.cell_thickness) + ' ' + std::string(styles[static_cast<std::size_t>(layer.style)]));
    }
}

template <class Value>
void Writer::write_values(std::span<const Value> values, std::size_t per_line, const std::string& name,
                          std::optional<std::int32_t> as_default)
{
    constexpr std::size_t room = line_width + 2 * NumberFormatter::most_characters + 8;
    NumberFormatter formatter;
    char* begin = file_.reserve(room);
    char* out = begin;
    std::size_t on_line = 0;
    std::size_t last_tick = 0;
    const auto undefined = [&as_default](Value value) {
        if constexpr (std::is_floating_point_v<Value>) {
            return std::isnan(value);
        } else if constexpr (std::is_same_v<Value, std::int32_t>) {
            return as_default.has_value() && value == *as_default;
        }
        return false;
    };
    const auto same = [&undefined](Value a, Value b) {
        if constexpr (std::is_floating_point_v<Value>) {
            return (a == b && std::signbit(a) == std::signbit(b)) || (undefined(a) && undefined(b));
        }
        return a == b;
    };
    for (std::size_t i = 0; i < values.size();) {
        const Value value = values[i];
        const bool is_undefined = undefined(value);
        std::size_t run = 1;
        if (options_.run_lengths || is_undefined) {
            while (i + run < values.size() && same(values[i + run], value)) {
                ++run;
            }
        }
        if (on_line > 0) {
            *out++ = ' ';
        }
        if (run > 1 || is_undefined) {
            out = std::to_chars(out, out + NumberFormatter::most_characters, run).ptr;
            *out++ = '*';
        }
        if constexpr (std::is_same_v<Value, std::uint8_t>) {
            *out++ = static_cast<char>('0' + (value != 0 ? 1 : 0));
        } else {
            if constexpr (std::is_floating_point_v<Value>) {
                if (std::isinf(value)) [[unlikely]] {
                    fail(name + " has the value " + shortest_text(value) + " at position " + std::to_string(i + 1)
                         + ", which the format cannot hold");
                }
            }
            if (!is_undefined) {
                out = formatter.write(out, value);
            }
        }
        i += run;
        ++on_line;
        if (on_line == per_line || static_cast<std::size_t>(out - begin) >= line_width - 20) {
            *out++ = '\n';
            file_.advance(static_cast<std::size_t>(out - begin));
            begin = out = file_.reserve(room);
            on_line = 0;
            if (i - last_tick >= tick_values) {
                tick(i - last_tick);
                last_tick = i;
            }
        }
    }
    if (on_line > 0) {
        *out++ = '\n';
    }
    file_.advance(static_cast<std::size_t>(out - begin));
    line("/\n");
    tick(values.size() - last_tick);
}

/// The property's own name where it can be one, else one made from it.
std::string Writer::keyword_for(const PropertyData& property)
{
    const auto free_to_use = [this](const std::string& word) {
        const KeywordInfo info = keyword_info(word);
        return (info.cell_array || !info.known) && !info.never_array && info.layout == Layout::Unknown
            && section_of(word) == Section::None && word != "ENDSKIP" && word != "ENDFIN" && word != "NAN" && word != "INF"
            && word != "RADIAL" && !used_.contains(word);
    };
    std::string word = property.name;
    if (!is_keyword(word) || upper(word) != word || !free_to_use(word)) {
        word = upper(word);
        for (char& c : word) {
            c = (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ? c : '_';
        }
        if (word.empty() || word.front() < 'A' || word.front() > 'Z') {
            word.insert(0, "P");
        }
        word.resize(std::min(word.size(), usual_keyword));
        const std::string stem = word;
        for (int number = 2; !free_to_use(word); ++number) {
            const std::string tail = std::to_string(number);
            word = stem.substr(0, usual_keyword - tail.size()) + tail;
        }
        inform("properties under another name", "property \"" + to_utf8(property.name) + "\" is written as " + word);
    } else if (word.size() > usual_keyword) {
        inform("long names", "property " + word + " has a name of more than 8 characters, which some programs do not read");
    }
    used_.insert(word);
    return word;
}

void Writer::write_property(const PropertyData& property)
{
    const std::string keyword = keyword_for(property);
    // Only what the reader would not find out by itself.
    std::string text;
    if (property.name != keyword) {
        text += " name " + in_note(property.name);
    }
    if (!property.unit.empty()) {
        text += " unit " + in_note(property.unit);
    }
    constexpr std::int32_t undefined_code = std::numeric_limits<std::int32_t>::min();
    if (property.no_data) {
        text += " nodata " + shortest_text(*property.no_data);
    }
    if (property.values.index() == 1) {
        text += " store double";
    } else if (property.discrete() != is_discrete_name(keyword)) {
        text += property.discrete() ? " store int" : " store float";
    }
    if (property.on_points) {
        text += " on points";
    }
    if (!text.empty() || !property.code_names.empty() || !keyword_info(keyword).cell_array) {
        note("PROPERTY " + keyword + text);
    }
    for (const auto& [code, name] : property.code_names) {
        note("CODE " + std::to_string(code) + ' ' + in_note(name));
    }
    begin_keyword(keyword);
    std::optional<std::int32_t> as_default;
    if (property.discrete() && property.no_data == static_cast<double>(undefined_code)) {
        as_default = undefined_code;
    }
    std::visit([&](const auto& values) { write_values(std::span(values), 0, to_utf8(property.name), as_default); },
               property.values);
}

void Writer::write_faults()
{
    if (model_.faults.empty()) {
        return;
    }
    line("FAULTS");
    for (const FaultSegment& fault : model_.faults) {
        const std::string name = record_text(fault.name);
        if (name != fault.name) {
            warn("changed names", "fault \"" + to_utf8(fault.name) + "\" is written as \"" + to_utf8(name) + '"');
        }
        std::string text = " '" + name + '\'';
        for (const auto* range : {&fault.i, &fault.j, &fault.k}) {
            for (const std::int64_t index : *range) {
                text += ' ' + std::to_string(index + 1);
            }
        }
        line(text + " '" + record_text(fault.face) + "' /");
    }
    line("/\n");
}

void Writer::write_regions()
{
    for (const RegionData& region : model_.regions) {
        note("REGION " + in_note(region.name) + " model " + (region.model ? '1' : '0'));
        // Lengths of runs of equal flags, the first of them of cells outside.
        std::string text(note_line_prefix);
        std::uint8_t flag = 0;
        for (std::size_t i = 0; i < region.flags.size();) {
            std::size_t run = 0;
            while (i + run < region.flags.size() && (region.flags[i + run] != 0) == (flag != 0)) {
                ++run;
            }
            i += run;
            flag ^= 1;
            text += ' ' + std::to_string(run);
            if (text.size() > line_width) {
                line(text);
                text = note_line_prefix;
            }
        }
        line(text);
        tick(region.flags.size());
    }
}

std::string kept_as_comment(const KeptKeyword& kept)
{
    std::string text(note_prefix);
    text += "KEPT " + in_note(kept.name) + ' ' + in_note(kept.file) + ' ' + std::to_string(kept.line) + '\n';
    for (std::size_t start = 0; start <= kept.text.size();) {
        const std::size_t end = std::min(kept.text.find('\n', start), kept.text.size());
        text += note_line_prefix;
        text += escaped(std::string_view(kept.text).substr(start, end - start)) + '\n';
        start = end + 1;
    }
    return text;
}

std::string kept_in_the_open(const KeptKeyword& kept)
{
    return std::string(note_prefix) + "FROM " + in_note(kept.file) + ' ' + std::to_string(kept.line) + '\n' + kept.name
        + kept.text + '\n';
}

/// True when this text, in a file for a grid of that size, is read as just these keywords.
bool reads_back(const std::string& text, std::span<const KeptKeyword> kept, const GridSize& size)
{
    // An unknown word behind it shows whether the last one ends where it shall.
    constexpr std::string_view sentinel = "LODEXEND";
    ReadOptions options;
    options.properties_only = true;
    options.size = size;
    try {
        const GridModel model = read_text(text + std::string(sentinel) + '\n', "kept", options).model;
        if (!model.properties.empty() || !model.faults.empty() || !model.active.empty() || !model.regions.empty()
            || !model.layers.empty() || model.frame.map_axes || !model.frame.map_units.empty()
            || !model.frame.grid_units.empty() || model.frame.grid_units_map || model.kept.size() != kept.size() + 1
            || model.kept.back().name != sentinel || !model.kept.back().text.empty()) {
            return false;
        }
        return std::equal(kept.begin(), kept.end(), model.kept.begin(), [](const auto& a, const auto& b) {
            return a.name == b.name && a.text == b.text && a.file == b.file && a.line == b.line;
        });
    } catch (const FileError&) {
        return false;
    }
}

/// Keywords of a plain file or of a deck's GRID section stand in the file as they are, as far as they read back to the
/// letter. The others are written as comments, so that the file stays one of grid keywords.
void Writer::write_kept()
{
    const std::span<const KeptKeyword> kept = model_.kept;
    std::vector<bool> open(kept.size());
    Section section = Section::None;
    for (std::size_t i = 0; i < kept.size(); ++i) {
        const std::string name = upper(kept[i].name);
        if (const Section next = section_of(name); next != Section::None) {
            section = next;
        } else {
            open[i] = name != "INCLUDE" && name != "END" && (section == Section::None || section == Section::Grid);
        }
    }
    const auto compose = [&] {
        std::string text;
        for (std::size_t i = 0; i < kept.size(); ++i) {
            text += open[i] ? kept_in_the_open(kept[i]) : kept_as_comment(kept[i]);
        }
        return text;
    };
    std::string text = compose();
    if (!reads_back(text, kept, model_.size)) {
        for (std::size_t i = 0; i < kept.size(); ++i) {
            open[i] = open[i] && reads_back(kept_in_the_open(kept[i]), kept.subspan(i, 1), model_.size);
        }
        text = compose();
        if (!reads_back(text, kept, model_.size)) {
            open.assign(kept.size(), false);
            text = compose();
        }
    }
    file_.write(text);
    for (std::size_t i = 0; i < kept.size(); ++i) {
        if (!open[i] && section_of(upper(kept[i].name)) == Section::None) {
            inform("keywords written as comments",
                   "keyword " + to_utf8(kept[i].name) + " is written as a comment: it does not belong among grid keywords");
        }
    }
}

} // namespace

WriteResult write_file(const GridModel& model, const std::filesystem::path& path, const WriteOptions& options)
{
    return Writer(model, path, options).run();
}

} // namespace lodex::grdecl
