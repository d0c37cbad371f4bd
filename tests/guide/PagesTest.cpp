// The pages hang together: well-formed, reachable, no link and no picture that leads nowhere, a figure of every window.

#include "GuideFiles.h"
#include "MarkdownPage.h"

#include "apps/workbench/DialogTable.h"
#include "apps/workbench/MainWindow.h"
#include "lodex/xtools/HelpPages.h"

#include <Lodex/gui/Lodex_gui_init.h>

#include <QAction>
#include <QImage>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QRegularExpression>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

namespace {

std::string page_text(const std::string& path)
{
    return read_text(guide_root() / path);
}

/// The file below the root that a link leads to, without its anchor.
std::string target_of(const std::string& page, const std::string& link)
{
    const std::string file = link.substr(0, link.find('#'));
    if (file.empty())
        return page;
    return (std::filesystem::path(page).parent_path() / file).lexically_normal().generic_string();
}

bool has_anchor(const std::string& page, const std::string& anchor)
{
    const auto names = attributes(page_text(page), "name");
    return std::ranges::find(names, anchor) != names.end();
}

TEST(GuidePages, AreWellFormed)
{
    for (const std::string& path : guide_pages()) {
        const std::string text = page_text(path);
        QXmlStreamReader reader(QString::fromStdString(text));
        QString title;
        int headings = 0;
        while (!reader.atEnd()) {
            if (reader.readNext() != QXmlStreamReader::StartElement)
                continue;
            if (reader.name() == u"title")
                title = reader.readElementText();
            headings += reader.name() == u"h1";
            if (reader.name() == u"img") {
                EXPECT_FALSE(reader.attributes().value("alt").isEmpty()) << path << ':' << reader.lineNumber();
            }
        }
        EXPECT_FALSE(reader.hasError()) << path << ':' << reader.lineNumber() << ": " << reader.errorString().toStdString();
        EXPECT_FALSE(title.isEmpty()) << path;
        EXPECT_EQ(headings, path == "reference/commands.html" ? 2 : 1) << path;
        EXPECT_EQ(text.find('\t'), std::string::npos) << path;
    }
}

TEST(GuidePages, EveryLinkAndEveryPictureLeadsSomewhere)
{
    for (const std::string& path : guide_pages()) {
        const std::string text = page_text(path);
        for (const std::string& link : attributes(text, "href")) {
            const std::string target = target_of(path, link);
            EXPECT_TRUE(std::filesystem::is_regular_file(guide_root() / target)) << path << " -> " << link;
            if (link.find('#') != std::string::npos) {
                EXPECT_TRUE(has_anchor(target, link.substr(link.find('#') + 1))) << path << " -> " << link;
            }
        }
        for (const std::string& picture : attributes(text, "src")) {
            const QImage image(QString::fromStdString((guide_root() / target_of(path, picture)).string()));
            EXPECT_FALSE(image.isNull()) << path << " -> " << picture;
        }
    }
}

TEST(GuidePages, EveryLinkOfTheOtherPagesLeadsSomewhere)
{
    const std::filesystem::path root = SOURCE_DIR;
    std::vector<std::filesystem::path> pages{root / "README.md"};
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / "docs")) {
        if (entry.path().extension() == ".md")
            pages.push_back(entry.path());
    }
    static const QRegularExpression link("\\]\\(([^)#]+)[^)]*\\)");
    int found = 0;
    for (const auto& page : pages) {
        for (const auto& match : link.globalMatch(QString::fromStdString(read_text(page)))) {
            const std::string target = match.captured(1).toStdString();
            EXPECT_TRUE(target.starts_with("http") || std::filesystem::exists(page.parent_path() / target))
                << page << " -> " << target;
            ++found;
        }
    }
    EXPECT_GE(found, 15);
}

TEST(GuidePages, CanBeReachedFromTheStartPageAndShowEveryPicture)
{
    std::set<std::string> reached{lodex::help_start_page().toStdString()}, files;
    std::vector<std::string> waiting(reached.begin(), reached.end());
    while (!waiting.empty()) {
        const std::string path = waiting.back();
        waiting.pop_back();
        for (const std::string& link : attributes(page_text(path), "href")) {
            const std::string target = target_of(path, link);
            if (target.ends_with(".html") && reached.insert(target).second)
                waiting.push_back(target);
        }
        for (const std::string& picture : attributes(page_text(path), "src"))
            files.insert(target_of(path, picture));
    }
    for (const std::string& path : guide_pages())
        EXPECT_TRUE(reached.contains(path)) << path;
    std::uintmax_t bytes = 0;
    for (const auto& entry : std::filesystem::directory_iterator(guide_root() / "pictures")) {
        EXPECT_TRUE(files.contains("pictures/" + entry.path().filename().string())) << entry.path() << " is not shown";
        bytes += entry.file_size();
    }
    EXPECT_LT(bytes, 2'000'000u) << "the pictures are part of the library";
}

/// Every help key in the sources of the module and the workbench leads to a page, and to its anchor where it names one.
TEST(GuidePages, EveryHelpKeyHasAPage)
{
    static const QRegularExpression call(
        "(help_topic_key|help_document_key|set_help_page)\\((?:\\*this, )?\"([^\"]+)\"\\)|\"(dox_\\w+)\"");
    std::set<QString> keys;
    for (const char* folder : {"sgresize", "flowunit", "propertyupscale", "apps/workbench", "lodex/gviews"}) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(std::filesystem::path(SOURCE_DIR) / folder)) {
            if (entry.path().extension() != ".cpp")
                continue;
            for (const auto& match : call.globalMatch(QString::fromStdString(read_text(entry.path())))) {
                const QString words = match.captured(2);
                if (match.captured(1) == "help_document_key")
                    keys.insert("help:user-doc/sgrid_new.html#" + words + ";winhelp:Lodex");
                else if (match.captured(1) == "set_help_page")
                    keys.insert("help:" + words + ";winhelp:Lodex");
                else
                    keys.insert("help:?context=Dorvan&topic=" + (words.isEmpty() ? match.captured(3) : words));
            }
        }
    }
    EXPECT_GE(keys.size(), 15u) << "eleven of the module, those of the workbench";
    for (const QString& key : keys) {
        const auto target = lodex::help_target(key.section(';', 0, 0)); // without the fall-back
        ASSERT_TRUE(target) << key.toStdString();
        const std::string page = target->path().mid(int(std::string_view("/lodex/help/").size())).toStdString();
        if (target->hasFragment()) {
            EXPECT_TRUE(has_anchor(page, target->fragment().toStdString())) << key.toStdString();
        }
        EXPECT_FALSE(attributes(page_text(page), "src").empty()) << page << " shows its window";
    }
}

/// "Menu > Entry" of every menu of the window, with its keys.
void add_entries(const QMenu& menu, const QString& path, std::map<QString, QString>& entries)
{
    for (const QAction* action : menu.actions()) {
        if (action->isSeparator())
            continue;
        const QString whole = path + " > " + action->text().remove(u'&');
        entries[whole] = action->shortcut().toString(QKeySequence::PortableText);
        if (action->menu())
            add_entries(*action->menu(), whole, entries);
    }
}

TEST(GuidePages, EveryMenuEntryThatIsNamedIsThereWithItsKeys)
{
    Lodex::Lodex_gui_init::initialize();
    const lodex::MainWindow window;
    std::map<QString, QString> entries;
    for (const QAction* menu : window.menuBar()->actions())
        add_entries(*menu->menu(), menu->text().remove(u'&'), entries);
    static const QRegularExpression named("<b>(\\w+ &gt; [^<]+)</b>(?:\\s+\\(([\\w+]+)\\))?");
    int found = 0;
    for (const std::string& path : guide_pages()) {
        for (const auto& match : named.globalMatch(QString::fromStdString(page_text(path)))) {
            const QString entry = match.captured(1).simplified().replace("&gt;", ">");
            const auto known = entries.find(entry);
            EXPECT_NE(known, entries.end()) << path << ": no entry " << entry.toStdString();
            if (known != entries.end() && match.hasCaptured(2)) {
                EXPECT_EQ(match.captured(2), known->second) << path << ": " << entry.toStdString();
            }
            ++found;
        }
    }
    EXPECT_GE(found, 20);
}

/// A quoted text in the first column of a table is a message of the program, to the letter; "..." stands for what varies.
TEST(GuidePages, EveryMessageIsOneOfTheProgram)
{
    QString sources;
    for (const char* folder : {"sgresize", "flowunit", "propertyupscale", "frame", "apps", "lodex", "upscaling"}) {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(std::filesystem::path(SOURCE_DIR) / folder)) {
            if (entry.path().extension() == ".cpp")
                sources += QString::fromStdString(read_text(entry.path()));
        }
    }
    static const QRegularExpression joint("\"\\s*\""), blanks("\\s+"), first_cell("<tr><td>(.*?)</td>",
                                                                             QRegularExpression::DotMatchesEverythingOption),
        quoted("\"([^\"]*)\""), tag("<[^>]*>");
    sources.remove(joint).remove("\\n").remove("\\\"").replace(blanks, " ");
    int found = 0;
    for (const std::string& path : guide_pages()) {
        if (path.starts_with("reference/"))
            continue;
        for (const auto& cell : first_cell.globalMatch(QString::fromStdString(page_text(path)))) {
            if (cell.captured(1).contains("<code>"))
                continue;
            const QString text = QString::fromStdString(unescape_html(cell.captured(1).remove(tag).toStdString())).simplified();
            for (const auto& message : quoted.globalMatch(text)) {
                for (const QString& piece : message.captured(1).split("...")) {
                    EXPECT_TRUE(sources.contains(piece.trimmed())) << path << ": " << piece.toStdString();
                }
                ++found;
            }
        }
    }
    EXPECT_GE(found, 40);
}

TEST(GuidePages, EveryDialogOfTheMenuIsDescribed)
{
    for (const lodex::DialogRow& row : lodex::dialog_rows()) {
        const auto opener = row.opener();
        EXPECT_NE(opener, nullptr) << row.id;
        const std::string picture = "dialog_" + std::string(row.id) + ".png";
        bool shown = false;
        for (const std::string& path : guide_pages()) {
            const auto pictures = attributes(page_text(path), "src");
            shown = shown || std::ranges::any_of(pictures, [&](const std::string& p) { return p.ends_with(picture); });
        }
        EXPECT_TRUE(shown) << picture;
    }
}

} // namespace
