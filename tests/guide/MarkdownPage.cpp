#include "MarkdownPage.h"

#include <algorithm>
#include <cctype>

namespace {

bool starts(std::string_view text, std::string_view with)
{
    return text.starts_with(with);
}

std::string trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return std::string(text.substr(first, text.find_last_not_of(" \t") - first + 1));
}

/// Code, bold, italic and links within a paragraph, a cell or an item.
class Inline {
public:
    Inline(std::string_view text, const LinkRule& link) : text_(text), link_(link) {}

    std::string html()
    {
        while (at_ < text_.size()) {
            if (!(code() || marked("**", "b") || marked("*", "i") || link()))
                out_ += escape_html(text_.substr(at_++, 1));
        }
        return std::move(out_);
    }

private:
    bool code()
    {
        if (text_[at_] != '`')
            return false;
        const auto end = text_.find('`', at_ + 1);
        if (end == std::string_view::npos)
            return false;
        out_ += "<code>" + escape_html(text_.substr(at_ + 1, end - at_ - 1)) + "</code>";
        at_ = end + 1;
        return true;
    }
    bool marked(std::string_view mark, const std::string& tag)
    {
        const auto from = at_ + mark.size();
        if (!starts(text_.substr(at_), mark) || from >= text_.size() || text_[from] == ' ')
            return false;
        const auto end = text_.find(mark, from);
        if (end == std::string_view::npos || end == from || text_[end - 1] == ' ')
            return false;
        out_ += "<" + tag + ">" + Inline(text_.substr(from, end - from), link_).html() + "</" + tag + ">";
        at_ = end + mark.size();
        return true;
    }
    bool link()
    {
        if (text_[at_] != '[')
            return false;
        const auto middle = text_.find("](", at_);
        const auto end = middle == std::string_view::npos ? middle : text_.find(')', middle);
        if (end == std::string_view::npos || text_.substr(at_ + 1, middle - at_ - 1).find('[') != std::string_view::npos)
            return false;
        const std::string target = link_(std::string(text_.substr(middle + 2, end - middle - 2)));
        const std::string words = Inline(text_.substr(at_ + 1, middle - at_ - 1), link_).html();
        out_ += target.empty() ? words : "<a href=\"" + escape_html(target) + "\">" + words + "</a>";
        at_ = end + 1;
        return true;
    }

    std::string_view text_;
    const LinkRule& link_;
    std::size_t at_ = 0;
    std::string out_;
};

/// Cells of a row "| a | b |"; a | inside of code does not end a cell.
std::vector<std::string> cells_of(std::string_view row)
{
    std::vector<std::string> cells(1);
    bool in_code = false;
    for (const char c : row.substr(1)) {
        in_code = in_code != (c == '`');
        if (c == '|' && !in_code)
            cells.emplace_back();
        else
            cells.back() += c;
    }
    cells.pop_back(); // behind the last |
    for (std::string& cell : cells)
        cell = trimmed(cell);
    return cells;
}

class Page {
public:
    Page(std::vector<std::string> lines, const LinkRule& link) : lines_(std::move(lines)), link_(link) {}

    std::string html()
    {
        while (at_ < lines_.size()) {
            const std::string& line = lines_[at_];
            if (trimmed(line).empty())
                ++at_;
            else if (starts(line, "#"))
                heading();
            else if (starts(line, "```"))
                code();
            else if (starts(line, "|"))
                table();
            else if (starts(line, "- "))
                list();
            else
                out_ += "<p>" + text(paragraph()) + "</p>\n";
        }
        return std::move(out_);
    }

private:
    std::string text(std::string_view words) { return Inline(words, link_).html(); }

    void heading()
    {
        const std::string& line = lines_[at_++];
        const auto level = std::min<std::size_t>(line.find_first_not_of('#'), 6);
        const std::string words = trimmed(std::string_view(line).substr(level));
        const std::string tag = "h" + std::to_string(level);
        out_ += "<" + tag + "><a name=\"" + anchor_of(words) + "\"></a>" + text(words) + "</" + tag + ">\n";
    }
    void code()
    {
        out_ += "<pre class=\"text\">";
        for (++at_; at_ < lines_.size() && !starts(lines_[at_], "```"); ++at_)
            out_ += escape_html(lines_[at_]) + "\n";
        ++at_;
        out_ += "</pre>\n";
    }
    void table()
    {
        out_ += "<table>\n";
        for (bool head = true; at_ < lines_.size() && starts(lines_[at_], "|"); ++at_) {
            if (starts(lines_[at_], "|--") || starts(lines_[at_], "|:-"))
                continue;
            const auto cells = cells_of(lines_[at_]);
            const bool empty = std::ranges::all_of(cells, &std::string::empty);
            const std::string tag = head ? "th" : "td";
            head = false;
            if (empty)
                continue; // a table without headings
            out_ += "<tr>";
            for (const std::string& cell : cells)
                out_ += "<" + tag + ">" + text(cell) + "</" + tag + ">";
            out_ += "</tr>\n";
        }
        out_ += "</table>\n";
    }
    void list()
    {
        out_ += "<ul>\n";
        while (at_ < lines_.size() && starts(lines_[at_], "- ")) {
            std::string item = lines_[at_++].substr(2);
            while (at_ < lines_.size() && starts(lines_[at_], "  "))
                item += "\n" + trimmed(lines_[at_++]);
            out_ += "<li>" + text(item) + "</li>\n";
        }
        out_ += "</ul>\n";
    }
    std::string paragraph()
    {
        std::string words;
        for (; at_ < lines_.size(); ++at_) {
            const std::string& line = lines_[at_];
            if (trimmed(line).empty() || starts(line, "#") || starts(line, "```") || starts(line, "|") ||
                starts(line, "- "))
                break;
            words += (words.empty() ? "" : "\n") + line;
        }
        return words;
    }

    std::vector<std::string> lines_;
    const LinkRule& link_;
    std::size_t at_ = 0;
    std::string out_;
};

constexpr std::pair<std::string_view, std::string_view> entities[] = {
    {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&amp;", "&"}};

} // namespace

std::string escape_html(std::string_view text)
{
    std::string out;
    for (const char c : text) {
        const auto entity = std::ranges::find(entities, std::string_view(&c, 1), [](const auto& e) { return e.second; });
        if (entity != std::end(entities))
            out += entity->first;
        else
            out += c;
    }
    return out;
}

std::string unescape_html(std::string_view text)
{
    std::string out;
    while (!text.empty()) {
        const auto entity = std::ranges::find_if(entities, [&](const auto& e) { return starts(text, e.first); });
        out += entity != std::end(entities) ? entity->second : text.substr(0, 1);
        text.remove_prefix(entity != std::end(entities) ? entity->first.size() : 1);
    }
    return out;
}

std::string html_link(const std::string& target)
{
    const auto ending = target.find(".md");
    if (starts(target, "http") || ending == std::string::npos)
        return target;
    return target.substr(0, ending) + ".html" + target.substr(ending + 3);
}

std::string anchor_of(std::string_view heading)
{
    std::string anchor;
    for (const char c : heading) {
        if (c == ' ')
            anchor += '-';
        else if (std::isalnum(static_cast<unsigned char>(c)) || c == '-' || c == '_')
            anchor += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    }
    return anchor;
}

std::string markdown_to_html(std::string_view markdown, const LinkRule& link)
{
    return Page(lines_of(markdown), link).html();
}

std::string guide_page(const std::string& title, const std::string& body, const std::string& up)
{
    return "<!DOCTYPE html>\n<html lang=\"en\">\n<head><meta charset=\"utf-8\"/><title>" + escape_html(title) +
           "</title><link rel=\"stylesheet\" href=\"" + up + "guide.css\"/></head>\n<body>\n" + body + "\n<p><a href=\"" +
           up + "Lodex.html\">Contents</a></p>\n</body>\n</html>\n";
}

std::vector<std::string> lines_of(std::string_view text)
{
    std::vector<std::string> lines;
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        lines.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}
