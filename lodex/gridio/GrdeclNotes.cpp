// Comments of this program's own, which hold what the format has no keyword for.

#include <lodex/gridio/GrdeclReaderImpl.h>

#include <charconv>
#include <limits>

namespace lodex::grdecl {

std::vector<Token> Reader::note_tokens(Source& source, const char* at, std::string_view line) const
{
    std::vector<Token> tokens;
    for (std::size_t i = 0; i < line.size() && tokens.size() < most_tokens;) {
        if (is_space(line[i])) {
            ++i;
            continue;
        }
        Token token;
        if (line[i] == '"') {
            token.quoted = true;
            for (++i; i < line.size() && line[i] != '"'; ++i) {
                if (line[i] != '\\') {
                    token.text += line[i];
                } else if (i + 3 < line.size() && line[i + 1] == 'x') {
                    unsigned code = 0;
                    std::from_chars(line.data() + i + 2, line.data() + i + 4, code, 16);
                    token.text += static_cast<char>(code);
                    i += 3;
                } else if (i + 1 < line.size()) {
                    token.text += line[++i];
                }
            }
            if (i >= line.size()) {
                fail(source, at, "the quote in a \"-- LODEX\" comment is not closed");
            }
            ++i;
        } else {
            while (i < line.size() && !is_space(line[i])) {
                token.text += line[i++];
            }
        }
        tokens.push_back(std::move(token));
    }
    return tokens;
}

std::optional<std::string> Reader::note_line(Source& source, const char*& p) const
{
    source.need(p);
    if (p >= source.end || *p != '\n'
        || !std::string_view(p + 1, static_cast<std::size_t>(source.end - p - 1)).starts_with(note_line_prefix)) {
        return std::nullopt;
    }
    const char* const start = p + 1 + note_line_prefix.size();
    p = line_end(source, start);
    std::string line = source.text(start, p);
    if (line.ends_with('\r')) {
        line.pop_back();
    }
    return line;
}

void Reader::claim_region(RegionNote& note)
{
    const auto cells = static_cast<std::uint64_t>(result_.model.cells());
    if (cells > max_bytes_ - claimed_) {
        throw FileError(note.file, note.line, "region " + in_quotes(note.region.name)
                                                  + " asks for more memory than the " + std::to_string(max_bytes_)
                                                  + " bytes allowed");
    }
    claimed_ += cells;
    note.region.flags.reserve(cells);
}

bool Reader::read_runs(Source& source, const char*& p, RegionNote& note)
{
    constexpr auto most_cells = std::numeric_limits<std::int64_t>::max();
    const std::int64_t most = size_known_ ? result_.model.cells() : most_cells - 1;
    std::uint8_t flag = 0;
    while (const auto line = note_line(source, p)) {
        const char* q = line->data();
        const char* const end = q + line->size();
        while (q < end) {
            std::int64_t run = 0;
            const auto [next, error] = std::from_chars(q, end, run);
            if (error != std::errc{} || run < 0) {
                if (!is_space(*q)) {
                    return false;
                }
                ++q;
                continue;
            }
            q = next;
            const bool fits = run <= most - note.cells;
            note.cells = fits ? note.cells + run : most + 1;
            if (!fits) {
                break;
            }
            if (!size_known_) {
                note.runs.push_back(run);
                continue;
            }
            if (note.region.flags.capacity() == 0) {
                claim_region(note);
            }
            note.region.flags.insert(note.region.flags.end(), static_cast<std::size_t>(run), flag);
            flag ^= 1;
        }
        tick(source, p);
    }
    return true;
}

const char* Reader::read_note(Source& source, const char* at)
{
    const char* p = line_end(source, at);
    const std::string line = source.text(at + note_prefix.size(), p);
    const auto tokens = note_tokens(source, at, line);
    const auto bad = [&](const std::string& expected) {
        warn("comments that do not read", source, at, "comment " + in_quotes(trimmed(line)) + " is passed over, expected "
                                                          + expected);
        return p;
    };
    const auto number = [&tokens](std::size_t i, auto& value) {
        if (i >= tokens.size()) {
            return false;
        }
        const std::string& text = tokens[i].text;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
        return error == std::errc{} && end == text.data() + text.size();
    };
    GridModel& model = result_.model;
    if (tokens.empty()) {
        return p;
    }
    const std::string& kind = tokens[0].text;
    if (kind == "STORE" || kind == "PROPERTY") {
        if (tokens.size() < 2) {
            return bad("a keyword");
        }
        PropertyNote note;
        note.keyword = upper(tokens[1].text);
        for (std::size_t i = 2; i + 1 < tokens.size(); i += 2) {
            const std::string& value = tokens[i + 1].text;
            double real = 0;
            if (tokens[i].text == "name") {
                note.name = value;
            } else if (tokens[i].text == "unit") {
                note.unit = value;
            } else if (tokens[i].text == "nodata" && number(i + 1, real)) {
                note.no_data = real;
            } else if (tokens[i].text == "store" && (value == "float" || value == "double" || value == "int")) {
                note.store = value == "float" ? PropertyNote::Store::Float
                    : value == "double"       ? PropertyNote::Store::Double
                                              : PropertyNote::Store::Integer;
            } else if (tokens[i].text == "on" && (value == "points" || value == "cells")) {
                note.on_points = value == "points";
            } else {
                return bad("name, unit, nodata, store or on with a value");
            }
        }
        note_ = std::move(note);
    } else if (kind == "CODE") {
        std::int32_t code = 0;
        if (!note_ || tokens.size() != 3 || !number(1, code)) {
            return bad("a code and its name behind a property");
        }
        note_->code_names[code] = tokens[2].text;
    } else if (kind == "LAYER") {
        LayerData layer;
        constexpr std::array<std::string_view, 3> styles = {"proportional", "base", "top"};
        const auto style = tokens.size() == 5 ? std::find(styles.begin(), styles.end(), tokens[4].text) : styles.end();
        if (style == styles.end() || !number(2, layer.nb_k_cells) || !number(3, layer.cell_thickness)
            || layer.nb_k_cells < 1) {
            return bad("unit, number of cells, thickness and proportional, base or top");
        }
        constexpr std::array<Lodex::LayerInfo::LayeringStyle, 3> values = {
            Lodex::LayerInfo::Proportional, Lodex::LayerInfo::ParallelToBase, Lodex::LayerInfo::ParallelToTop};
        layer.style = values[static_cast<std::size_t>(style - styles.begin())];
        layer.unit = tokens[1].text;
        model.layers.push_back(std::move(layer));
    } else if (kind == "REGION") {
        RegionNote note;
        int is_model = 0;
        if (tokens.size() != 4 || tokens[2].text != "model" || !number(3, is_model)) {
            return bad("a name, the word model and 0 or 1");
        }
        note.region.name = tokens[1].text;
        note.region.model = is_model != 0;
        note.file = source.shown;
        note.line = source.line_of(at);
        if (!read_runs(source, p, note)) {
            return bad("run lengths");
        }
        regions_.push_back(std::move(note));
    } else if (kind == "FROM") {
        std::int64_t file_line = 0;
        if (tokens.size() != 3 || !number(2, file_line)) {
            return bad("a file and a line");
        }
        from_ = {tokens[1].text, file_line};
    } else if (kind == "KEPT") {
        KeptKeyword kept;
        if (tokens.size() != 4 || !number(3, kept.line)) {
            return bad("a keyword, a file and a line");
        }
        kept.name = tokens[1].text;
        kept.file = tokens[2].text;
        bool first = true;
        while (const auto text = note_line(source, p)) {
            kept.text += first ? "" : "\n";
            first = false;
            const auto parts = note_tokens(source, at, '"' + *text + '"');
            kept.text += parts.empty() ? "" : parts.front().text;
        }
        model.kept.push_back(std::move(kept));
    } else if (kind == "GRID") {
        own_ = true;
    } else {
        return bad("one of those that this program writes");
    }
    return p;
}

} // namespace lodex::grdecl
