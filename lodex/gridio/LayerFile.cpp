#include "LayerFile.h"

#include <lodex/utils/FileError.h>
#include "lodex/utils/InputFile.h"
#include "lodex/utils/Numbers.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>

namespace lodex {

namespace {

/// Walks one line.
class LineReader {
public:
    explicit LineReader(std::string_view line) : line_(line) {}

    void skip_blanks()
    {
        while (at_ < line_.size() && std::isspace(static_cast<unsigned char>(line_[at_])))
            ++at_;
    }
    [[nodiscard]] bool at_end() const { return at_ >= line_.size(); }

    /// The unit's name; empty when there is none.
    std::string name()
    {
        skip_blanks();
        if (at_end())
            return {};
        const char quote = line_[at_];
        if (quote == '\'' || quote == '"') {
            const std::size_t close = line_.find(quote, at_ + 1);
            if (close == std::string_view::npos)
                return {};
            const std::string text(line_.substr(at_ + 1, close - at_ - 1));
            at_ = close + 1;
            return text;
        }
        // A name without quotes may hold digits ("Zone 2") and what follows the range may hold dashes ("dark-blue"): the
        // name ends before the last "number - number" of the line.
        std::size_t end = line_.size();
        for (std::size_t dash = line_.rfind('-'); end == line_.size() && dash != std::string_view::npos && dash > at_;
             dash = line_.rfind('-', dash - 1)) {
            const std::size_t before = line_.find_last_not_of(blanks, dash - 1);
            const std::size_t behind = line_.find_first_not_of(blanks, dash + 1);
            if (before != std::string_view::npos && before >= at_ && is_digit(line_[before]) &&
                behind != std::string_view::npos && is_digit(line_[behind]))
                end = before;
        }
        if (end == line_.size())
            return {};
        while (end > at_ && is_digit(line_[end - 1]))
            --end;
        std::string text(line_.substr(at_, end - at_));
        at_ = end;
        while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
            text.pop_back();
        return text;
    }

    std::optional<long> number()
    {
        skip_blanks();
        const std::size_t start = at_;
        while (!at_end() && is_digit(line_[at_]))
            ++at_;
        return parse_long(line_.substr(start, at_ - start));
    }

    bool dash()
    {
        skip_blanks();
        if (at_end() || line_[at_] != '-')
            return false;
        ++at_;
        return true;
    }

private:
    static constexpr std::string_view blanks = " \t\r\v\f";
    static bool is_digit(char c) { return std::isdigit(static_cast<unsigned char>(c)) != 0; }

    std::string_view line_;
    std::size_t at_ = 0;
};

/// The line up to "--" or "#", which count as text in the quoted name that a line may begin with.
std::string_view without_comment(std::string_view line)
{
    std::size_t from = 0;
    while (from < line.size() && std::isspace(static_cast<unsigned char>(line[from])))
        ++from;
    if (from < line.size() && (line[from] == '\'' || line[from] == '"')) {
        const std::size_t close = line.find(line[from], from + 1);
        from = close == std::string_view::npos ? 0 : close + 1;
    }
    return line.substr(0, std::min(line.find("--", from), line.find('#', from)));
}

} // namespace

LayerFile read_layer_file(const std::filesystem::path& path)
{
    InputFile file(path);
    constexpr std::uint64_t largest = std::uint64_t{64} << 20; // one line a K layer of any grid
    if (file.size() > largest)
        throw FileError(path.string(), 0, "holds " + std::to_string(file.size()) + " bytes; expected names of layers");
    std::string text(static_cast<std::size_t>(file.size()), '\0');
    text.resize(file.read(text));
    file.check_unchanged();
    std::istringstream in(std::move(text));
    LayerFile result;
    long next = 1;
    std::int64_t number = 0;
    for (std::string line; std::getline(in, line);) {
        ++number;
        LineReader reader(without_comment(line));
        reader.skip_blanks();
        if (reader.at_end())
            continue;
        const std::string unit = to_utf8(reader.name());
        const auto first = reader.number();
        const bool dash = reader.dash();
        const auto last = reader.number();
        if (unit.empty() || !first || !dash || !last)
            throw FileError(path.string(), number, "expected a unit and its K layers, such as 'Upper' 1 - 5");
        constexpr long most_layers = 1'000'000'000; // far above any grid, far below where sums overflow
        if (*first != next || *last < *first || *last > most_layers) {
            throw FileError(path.string(), number, "the K layers are " + std::to_string(*first) + " - " + std::to_string(*last) +
                                                       "; expected a range that begins at " + std::to_string(next) +
                                                       (*last > most_layers ? " and ends within a grid" : ""));
        }
        result.units.push_back(unit);
        result.sizes.push_back(*last - *first + 1);
        next = *last + 1;
    }
    if (result.units.empty())
        throw FileError(path.string(), 0, "holds no units");
    return result;
}

} // namespace lodex
