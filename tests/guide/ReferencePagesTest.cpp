// Pages of the guide that are made from declarations. With LODEX_UPDATE_DOCS set they are written, else compared.

#include "GuideFiles.h"
#include "MarkdownPage.h"
#include "ReferencePages.h"

#include <Lodex/gui/Lodex_gui_init.h>

#include <QString>

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

namespace {

TEST(MarkdownPage, MakesTheElementsThatThePagesUse)
{
    EXPECT_EQ(markdown_to_html("# A & B: `x<y`\n\nTwo\nlines of **bold**, *lean* and 2 * 3 * 4, `a*b*c`.\n"),
              "<h1><a name=\"a--b-xy\"></a>A &amp; B: <code>x&lt;y</code></h1>\n"
              "<p>Two\nlines of <b>bold</b>, <i>lean</i> and 2 * 3 * 4, <code>a*b*c</code>.</p>\n");
    EXPECT_EQ(markdown_to_html("- one\n  more\n- two\n\nend\n"),
              "<ul>\n<li>one\nmore</li>\n<li>two</li>\n</ul>\n<p>end</p>\n");
    EXPECT_EQ(markdown_to_html("| a | b |\n|---|---|\n| `x|y` | [z](f/g.md#h) |\n"),
              "<table>\n<tr><th>a</th><th>b</th></tr>\n<tr><td><code>x|y</code></td><td><a href=\"f/g.html#h\">z</a></td></tr>\n"
              "</table>\n");
    EXPECT_EQ(markdown_to_html("```sh\n# <a>\n```\n"), "<pre class=\"text\"># &lt;a&gt;\n</pre>\n");
    EXPECT_EQ(markdown_to_html("[x](y.md) [z]", [](const std::string&) { return std::string(); }), "<p>x [z]</p>\n");
    EXPECT_EQ(unescape_html(escape_html("<\"&lt;\">&amp;")), "<\"&lt;\">&amp;");
}

TEST(ReferencePages, AreMadeFromTheDeclarations)
{
    Lodex::Lodex_gui_init::initialize();
    const bool update = qEnvironmentVariableIsSet("LODEX_UPDATE_DOCS");
    const auto pages = reference_pages();
    for (const ReferencePage& page : pages) {
        const auto path = guide_root() / page.path;
        EXPECT_GT(page.html.size(), 700u) << page.path;
        if (update) {
            std::filesystem::create_directories(path.parent_path());
            std::ofstream(path, std::ios::binary) << page.html;
        } else {
            EXPECT_EQ(read_text(path), page.html) << page.path << ": run tools/make-command-reference";
        }
    }
    for (const std::string& path : guide_pages()) {
        if (path.starts_with("reference/")) {
            EXPECT_TRUE(std::ranges::any_of(pages, [&](const ReferencePage& page) { return page.path == path; }))
                << path << " is made from nothing any more";
        }
    }
}

TEST(ReferencePages, EveryMethodHasItsPlace)
{
    const auto count = [](const std::string& path) {
        const std::string page = read_text(guide_root() / path);
        std::size_t n = 0;
        for (auto at = page.find("<h2>"); at != std::string::npos; at = page.find("<h2>", at + 1))
            ++n;
        return n;
    };
    EXPECT_EQ(count("reference/averages.html"), 11u);
    EXPECT_EQ(count("reference/directional_means.html"), 5u);
    EXPECT_EQ(count("reference/flow_solvers.html"), 4u);
    EXPECT_EQ(count("reference/mappers.html"), 4u);
}

} // namespace
