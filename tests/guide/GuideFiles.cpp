#include "GuideFiles.h"

#include "MarkdownPage.h"

#include <algorithm>
#include <fstream>
#include <sstream>

std::filesystem::path guide_root()
{
    return SOURCE_DIR "/docs/help";
}

std::string read_text(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::vector<std::string> guide_pages()
{
    std::vector<std::string> pages;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(guide_root())) {
        if (entry.path().extension() == ".html")
            pages.push_back(std::filesystem::relative(entry.path(), guide_root()).generic_string());
    }
    std::ranges::sort(pages);
    return pages;
}

std::vector<Block> blocks_of_html(std::string_view page)
{
    std::vector<Block> blocks;
    constexpr std::string_view opening = "<pre", closing = "</pre>";
    for (std::size_t at = page.find(opening); at != std::string_view::npos; at = page.find(opening, at)) {
        const auto content = page.find('>', at) + 1;
        const auto end = page.find(closing, content);
        const auto kinds = attributes(page.substr(at, content - at), "class");
        blocks.push_back({kinds.empty() ? std::string() : kinds.front(),
                          unescape_html(page.substr(content, end - content)),
                          1 + static_cast<int>(std::ranges::count(page.substr(0, at), '\n'))});
        at = end;
    }
    return blocks;
}

std::vector<Block> blocks_of_markdown(std::string_view page)
{
    std::vector<Block> blocks;
    bool inside = false;
    int number = 0;
    for (const std::string& line : lines_of(page)) {
        ++number;
        if (line.starts_with("```")) {
            inside = !inside;
            if (inside)
                blocks.push_back({line.substr(3), {}, number});
        } else if (inside) {
            blocks.back().text += line + '\n';
        }
    }
    return blocks;
}

std::vector<std::string> attributes(std::string_view page, const std::string& name)
{
    std::vector<std::string> values;
    const std::string start = " " + name + "=\"";
    for (std::size_t at = page.find(start); at != std::string_view::npos; at = page.find(start, at)) {
        at += start.size();
        values.push_back(unescape_html(page.substr(at, page.find('"', at) - at)));
    }
    return values;
}
