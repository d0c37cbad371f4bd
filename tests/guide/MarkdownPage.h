#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

/// What a link of a Markdown page becomes: an address, or nothing where the guide has no such page (its text stays).
using LinkRule = std::function<std::string(const std::string& target)>;

/// A link to every ".md" page becomes one to the ".html" page beside it.
[[nodiscard]] std::string html_link(const std::string& target);

/// The Markdown of this project's pages as HTML that is XML as well: headings with anchors, paragraphs, lists of one
/// level, tables, fenced code, `code`, **bold**, *italic*, links. A heading's anchor is its text in lower case, blanks as
/// "-", without other signs than letters, digits, "-" and "_".
[[nodiscard]] std::string markdown_to_html(std::string_view markdown, const LinkRule& link = html_link);

[[nodiscard]] std::string anchor_of(std::string_view heading);

/// &, <, > and " as entities, and back.
[[nodiscard]] std::string escape_html(std::string_view text);
[[nodiscard]] std::string unescape_html(std::string_view text);

/// A whole page of the guide. `up` leads from its folder to the root of the help: "../".
[[nodiscard]] std::string guide_page(const std::string& title, const std::string& body, const std::string& up);

/// Lines without their ends.
[[nodiscard]] std::vector<std::string> lines_of(std::string_view text);
