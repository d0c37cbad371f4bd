#include "ReferencePages.h"

#include "GuideFiles.h"
#include "MarkdownPage.h"

#include "apps/workbench/MainWindow.h"
#include "lodex/interpreter/Verb.h"
#include "upscaling/OperatorPage.h"
#include "upscaling/mappers/MapperInfo.h"
#include "upscaling/upscalers/AverageUpscaler.h"
#include "upscaling/upscalers/DirectionalUpscaler.h"
#include "upscaling/upscalers/FlowUpscaler.h"
#include "upscaling/upscalers/UpscalerInfo.h"

#include <QAction>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>

#include <algorithm>
#include <filesystem>
#include <map>
#include <stdexcept>

namespace {

const std::filesystem::path docs = SOURCE_DIR "/docs";

/// The lines of a Markdown text from a heading up to the next one of its level or above.
std::string section_of(const std::string& markdown, const std::string& heading)
{
    const auto lines = lines_of(markdown);
    auto line = std::ranges::find(lines, heading);
    if (line == lines.end())
        throw std::runtime_error("no heading " + heading);
    const std::string marks = heading.substr(0, heading.find(' '));
    std::string text = *line++ + '\n';
    for (; line != lines.end() && (!line->starts_with('#') || line->starts_with(marks + '#')); ++line)
        text += *line + '\n';
    return text;
}

std::string without_first_heading(const std::string& markdown)
{
    return markdown.substr(markdown.find('\n') + 1);
}

// What the families of methods have in common, above the methods' own declarations.
const std::string averages_text =
    "# Averages\n\n"
    "An average makes one number of the fine values that belong to a coarse cell. Porosity and other static properties take "
    "the first eight (`upscale_porosity`), discrete properties the most probable value (`upscale_indicator`), permeability "
    "the first four (`upscale_permeability`). [Flow unit analysis](../Dorvan/dox_FlowUnitAnalysis.html) offers all eleven "
    "for the values of a K layer (property class `upgridder`). `v` is a fine value, `w` its weight; [Words and rules](operators.html) tells more.\n\n"
    "For positive values harmonic <= geometric <= arithmetic, and the power mean grows with its power. An arithmetic mean "
    "weighted by volume keeps the sum of value times volume: right for porosity and, weighted by pore volume, for "
    "saturations.\n\n";
const std::string directional_text =
    "# Directional means\n\n"
    "A directional mean makes permeabilities along I, J and K from the samples of a coarse cell without solving for a "
    "flow: layers in a row resist one after the other (harmonic mean), layers side by side add up (arithmetic mean). Quick, "
    "and exact for perfect layering. The permeability of any block lies between the first two.\n\n";
const std::string flow_text =
    "# Local flow solvers\n\n"
    "The samples of one coarse cell are a small flow model of their own. Pressure is put on its boundary, the flow is "
    "solved for, and the coarse permeability is the one with which an even block would let the same flow through. The "
    "boundary conditions and the frame of the tensor are described in [Words and rules](operators.html).\n\n"
    "The first two work in the brick of the coarse cell's mean edge lengths, one from above, one from below: where they lie "
    "close together, the answer is known. The last two work in the cell's true shape. Units do not matter: the coarse "
    "permeability is in that of the fine one.\n\n";
const std::string mappers_text =
    "# Mappers\n\n"
    "A mapper tells which cells of the fine grid belong to a cell of the coarse one (averages), and which fine cell lies at a "
    "place within it (samples of a permeability).\n\n";

std::vector<ReferencePage> operator_pages()
{
    const std::string page = read_text(docs / "operators-introduction.md");
    const std::string declared = Kelvane::operator_page();
    std::string averages = averages_text, directional = directional_text, flow = flow_text, mappers = mappers_text;
    for (const Kelvane::UpscalerInfo* info : Kelvane::upscaler_infos()) {
        const auto method = Kelvane::make_upscaler(info->families.front(), info->name);
        std::string& text = dynamic_cast<const Kelvane::FlowUpscaler*>(method.get())          ? flow
                            : dynamic_cast<const Kelvane::DirectionalUpscaler*>(method.get()) ? directional
                                                                                              : averages;
        text += section_of(declared, "### " + info->name).substr(1);
    }
    for (const Kelvane::MapperInfo& info : Kelvane::mapper_infos())
        mappers += section_of(declared, "### " + info.name).substr(1);
    const auto same_link = [](const std::string& target) { return target; };
    const std::string words =
        "# Words and rules\n\nWhat the methods of `upscale_porosity`, `upscale_permeability`, `upscale_indicator` and "
        "`flow_units` have in common. The methods themselves: [averages](averages.html), [directional "
        "means](directional_means.html), [local flow solvers](flow_solvers.html), [mappers](mappers.html).\n\n" +
        without_first_heading(section_of(page, "## Words"));
    const auto made = [&](const std::string& file, const std::string& title, const std::string& text) {
        return ReferencePage{"reference/" + file, guide_page(title, markdown_to_html(text, same_link), "../")};
    };
    return {made("operators.html", "Words and rules", words), made("averages.html", "Averages", averages),
            made("directional_means.html", "Directional means", directional),
            made("flow_solvers.html", "Local flow solvers", flow), made("mappers.html", "Mappers", mappers)};
}

ReferencePage command_page()
{
    const std::string introduction = read_text(docs / "commands-introduction.md");
    std::string list = "\n";
    for (const std::string& line : lines_of(lodex::VerbRegistry::instance().to_markdown())) {
        if (line.starts_with("## "))
            list += "- [" + line.substr(3) + "](#" + anchor_of(line.substr(3)) + ")\n";
    }
    return {"reference/commands.html",
            guide_page("Commands",
                       markdown_to_html(introduction + list + "\n" + lodex::VerbRegistry::instance().to_markdown(),
                                        [](const std::string& target) { return target; }),
                       "../")};
}

/// docs/formats.md and the pages below docs/formats; a link to another page of docs keeps its words alone.
std::vector<ReferencePage> format_pages()
{
    std::vector<std::filesystem::path> files{"formats.md"};
    for (const auto& entry : std::filesystem::directory_iterator(docs / "formats")) {
        if (entry.path().extension() == ".md")
            files.push_back(std::filesystem::relative(entry.path(), docs));
    }
    std::ranges::sort(files);
    std::vector<ReferencePage> pages;
    for (const std::filesystem::path& file : files) {
        const std::string markdown = read_text(docs / file);
        const std::string title = markdown.substr(2, markdown.find('\n') - 2);
        const auto link = [&](const std::string& target) {
            if (target.starts_with('#') || target.starts_with("http"))
                return target;
            const auto page = (file.parent_path() / target.substr(0, target.find('#'))).lexically_normal();
            return std::ranges::find(files, page) != files.end() ? html_link(target) : std::string();
        };
        auto path = std::filesystem::path("reference") / file;
        path.replace_extension(".html");
        pages.push_back({path.generic_string(), guide_page(title, markdown_to_html(markdown, link),
                                                           file.has_parent_path() ? "../../" : "../")});
    }
    return pages;
}

std::string without_mnemonic(QString text)
{
    text.remove(u'&');
    if (text.endsWith("..."))
        text.chop(3);
    return escape_html(text.toStdString());
}

void add_actions(const QMenu& menu, std::string& rows)
{
    for (const QAction* action : menu.actions()) {
        if (action->isSeparator() || action->menu())
            continue;
        const std::string keys = action->shortcut().toString(QKeySequence::PortableText).toStdString();
        const std::string tip = action->statusTip().isEmpty() ? action->toolTip().toStdString()
                                                              : action->statusTip().toStdString();
        rows += "<tr><td>" + without_mnemonic(action->text()) + "</td><td>" + escape_html(keys) + "</td><td>" +
                escape_html(tip) + "</td></tr>\n";
    }
}

ReferencePage shortcut_page()
{
    std::string body =
        "<h1>Actions and shortcuts</h1>\n<p>Everything that the menus of the main window can do, with its keys; made from "
        "the window's own table. Mouse and keys within the camera stand in <a "
        "href=\"../user-doc/workbench.html#camera\">The workbench</a>.</p>\n<p><img src=\"../pictures/shortcuts.png\" "
        "alt=\"The window Actions and Shortcuts\"/></p>\n";
    const lodex::MainWindow window;
    for (const QAction* entry : window.menuBar()->actions()) {
        if (!entry->menu())
            continue;
        body += "<h2>" + without_mnemonic(entry->text()) +
                "</h2>\n<table>\n<tr><th>Action</th><th>Keys</th><th>What it does</th></tr>\n";
        add_actions(*entry->menu(), body);
        body += "</table>\n";
    }
    return {"reference/shortcuts.html", guide_page("Actions and shortcuts", body, "../")};
}

} // namespace

std::vector<ReferencePage> reference_pages()
{
    std::vector<ReferencePage> pages = operator_pages();
    pages.push_back(command_page());
    pages.push_back(shortcut_page());
    std::ranges::move(format_pages(), std::back_inserter(pages));
    return pages;
}
