#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

/// Root of the help in the checkout.
[[nodiscard]] std::filesystem::path guide_root();

[[nodiscard]] std::string read_text(const std::filesystem::path& path);

/// Every page of the help below its root, sorted: "Dorvan/dox_FlowUnitAnalysis.html".
[[nodiscard]] std::vector<std::string> guide_pages();

/// A piece of a page that stands between <pre class="..."> and </pre>, without entities.
struct Block {
    std::string kind; ///< the class
    std::string text;
    int line = 0; ///< of the page, from 1
};

/// All <pre> elements of an HTML page, in order.
[[nodiscard]] std::vector<Block> blocks_of_html(std::string_view page);

/// All fenced blocks of a Markdown page, in order; the kind is what stands behind the fence.
[[nodiscard]] std::vector<Block> blocks_of_markdown(std::string_view page);

/// Values of an attribute in a page: href, src, name.
[[nodiscard]] std::vector<std::string> attributes(std::string_view page, const std::string& name);
