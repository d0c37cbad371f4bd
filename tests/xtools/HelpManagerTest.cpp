#include "Pictures.h"

#include <Lodex/xtools/XMHelpManager.h>

#include <Lodex/qtools/QtText.h>

#include <lodex/xtools/HelpPages.h>

#include "MessageList.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTest>
#include <QTextBlock>
#include <QTextBrowser>
#include <QToolButton>

#include <algorithm>

using Lodex::XMHelpManager;

namespace {

const QString kRoot = QStringLiteral(":/lodex/help/");

/// The keys that the dialogs send.
const std::vector<std::string> kKeys = {
    "help:user-doc/sgrid_new.html#LQSGSectionMerge;winhelp:Lodex",
    "help:user-doc/sgrid_new.html#LQSGSectionSubdivide;winhelp:Lodex",
    "help:?context=Dorvan&topic=dox_FlowUnitAnalysis",
    "help:?context=Dorvan&topic=dox_SGridDownscaleDialog",
    "help:?context=Dorvan&topic=dox_SGridUpscaleDialog",
    "help:?context=Dorvan&topic=dox_SGridUpscalePropertyDialog",
    "help:?context=Dorvan&topic=dox_SGridUpscalePropMappingMethod",
    "help:?context=Dorvan&topic=dox_SGridUpscalePropUpscalingMethod",
    "help:?context=Dorvan&topic=dox_SGridUpscalePropertyDefinitions",
    "help:?context=Dorvan&topic=dox_SGridUpscalePropPreprocessing",
    "help:?context=Dorvan&topic=dox_SGridUpscalePropPostProcessing",
};

QString read(const QString& path)
{
    QFile file(kRoot + path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

bool has_anchor(const QString& page, const QString& anchor)
{
    return read(page).contains(QStringLiteral("name=\"%1\"").arg(anchor));
}

QWidget* help_window()
{
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window->objectName() == "helpWindow")
            return window;
    }
    return nullptr;
}

template <class T> T* part(const char* name)
{
    return help_window() ? help_window()->findChild<T*>(name) : nullptr;
}

QStringList all_pages()
{
    QStringList pages;
    QDirIterator it(kRoot, {"*.html"}, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        pages.append(it.next().mid(kRoot.size()));
    return pages;
}

void display(const std::string& key)
{
    XMHelpManager::instance()->display(Lodex::CopyCString(key));
}

} // namespace

TEST(HelpPages, EveryKeyHasAPageAndItsAnchor)
{
    for (const std::string& key : kKeys) {
        EXPECT_TRUE(XMHelpManager::instance()->has_page(key)) << key;
        const auto target = lodex::help_target(QString::fromStdString(key));
        ASSERT_TRUE(target.has_value()) << key;
        const QString page = target->path().mid(QStringLiteral("/lodex/help/").size());
        EXPECT_GT(lodex::help_text(page).size(), 500) << key << ": a page says something";
        if (target->hasFragment()) {
            EXPECT_TRUE(has_anchor(page, target->fragment())) << key;
        }
    }
}

TEST(HelpPages, FallBacksAreTriedInOrder)
{
    const auto target = [](const char* key) {
        const auto url = lodex::help_target(key);
        return url ? url->toString() : QString();
    };
    EXPECT_EQ(target("help:nowhere.html#x;winhelp:Lodex"), "qrc:/lodex/help/Lodex.html");
    EXPECT_EQ(target("winhelp:nothing; help:?topic=dox_FlowUnitAnalysis&context=Dorvan"),
              "qrc:/lodex/help/Dorvan/dox_FlowUnitAnalysis.html");
    EXPECT_EQ(target("help:user-doc/sgrid_new.html#LQSGSectionMerge;winhelp:Lodex"),
              "qrc:/lodex/help/user-doc/sgrid_new.html#LQSGSectionMerge");
    for (const char* key : {"", ";", "help:", "help:?", "help:?context=Dorvan", "help:?context=Dorvan&topic=none",
                            "winhelp:", "Lodex.html", "help:../icons/lodex.svg", "help:Dorvan/../Lodex.html",
                            "help:/lodex/help/Lodex.html", "help:Dorvan"}) {
        EXPECT_EQ(target(key), "") << key;
        EXPECT_FALSE(XMHelpManager::instance()->has_page(key)) << key;
    }
}

TEST(HelpPages, EveryLinkLeadsSomewhere)
{
    const QRegularExpression link("<a href=\"([^\"]+)\"");
    const QStringList pages = all_pages();
    ASSERT_GE(pages.size(), 11);
    for (const QString& page : pages) {
        for (const auto& match : link.globalMatch(read(page))) {
            const QUrl url = lodex::help_url(page).resolved(QUrl(match.captured(1)));
            const QString to = url.path().mid(QStringLiteral("/lodex/help/").size());
            EXPECT_TRUE(pages.contains(to)) << page.toStdString() << " -> " << match.captured(1).toStdString();
            if (url.hasFragment()) {
                EXPECT_TRUE(has_anchor(to, url.fragment())) << match.captured(1).toStdString();
            }
        }
    }
}

TEST(HelpPages, StartPageListsEveryPage)
{
    QStringList listed = {lodex::help_start_page()};
    for (const lodex::HelpPage& page : lodex::help_contents()) {
        listed.append(page.path.section('#', 0, 0));
        EXPECT_FALSE(page.title.isEmpty());
    }
    for (const QString& page : all_pages())
        EXPECT_TRUE(listed.contains(page)) << page.toStdString();
}

TEST(HelpPages, SearchFindsPagesThatHoldEveryWord)
{
    const auto paths = [](const char* query) {
        QStringList list;
        for (const lodex::HelpPage& page : lodex::search_help(query))
            list.append(page.path);
        return list;
    };
    const auto holding = [](const QStringList& words) {
        QStringList list;
        for (const lodex::HelpPage& page : lodex::help_contents()) {
            const QString text = page.title + ' ' + lodex::help_text(page.path);
            if (std::ranges::all_of(words, [&](const QString& word) { return text.contains(word, Qt::CaseInsensitive); }))
                list.append(page.path);
        }
        list.sort();
        return list;
    };
    for (const char* query : {"dykstra-PARSONS", "upscaling_problems_", "isochore percent"}) {
        QStringList found = paths(query);
        EXPECT_GE(found.size(), 1) << query;
        EXPECT_LT(found.size(), static_cast<qsizetype>(lodex::help_contents().size())) << query;
        found.sort();
        EXPECT_EQ(found, holding(QString(query).split(' '))) << query;
    }
    EXPECT_EQ(paths("flow unit").value(0), "Dorvan/dox_FlowUnitAnalysis.html") << "the title counts most";
    EXPECT_TRUE(paths("dykstra qwertz").isEmpty());
    EXPECT_EQ(paths("  ").size(), static_cast<qsizetype>(lodex::help_contents().size()));
}

TEST(HelpManager, ShowsThePageOfAKey)
{
    for (const std::string& key : kKeys) {
        display(key);
        EXPECT_EQ(XMHelpManager::instance()->current_key(), Lodex::CString(key));
        ASSERT_NE(help_window(), nullptr);
        EXPECT_TRUE(help_window()->isVisible());
        const auto* browser = part<QTextBrowser>("helpBrowser");
        EXPECT_EQ(browser->source(), *lodex::help_target(QString::fromStdString(key)));
        EXPECT_GT(browser->toPlainText().size(), 500);
        ASSERT_NE(part<QListWidget>("helpContents")->currentItem(), nullptr) << key;
    }
    display(kKeys[0]);
    EXPECT_EQ(part<QListWidget>("helpContents")->currentItem()->text(), "Merge sections");
    display(kKeys[1]);
    EXPECT_EQ(part<QListWidget>("helpContents")->currentItem()->text(), "Subdivide sections");
}

TEST(HelpManager, UnknownKeyWarnsAndShowsNothing)
{
    display(kKeys[2]);
    help_window()->close();
    const MessageList log;
    display("help:?context=Dorvan&topic=dox_%1Nothing");
    ASSERT_EQ(log.entries.size(), 1u);
    EXPECT_EQ(log.of(Lodex::LogLevel::Warning),
              std::vector<std::string>{"There is no help page for \"help:?context=Dorvan&topic=dox_%1Nothing\".\n"});
    EXPECT_FALSE(help_window()->isVisible());
    EXPECT_EQ(XMHelpManager::instance()->current_key(), Lodex::CString(kKeys[2]));
}

TEST(HelpManager, BackForwardAndContents)
{
    display(kKeys[3]);
    display(kKeys[4]);
    auto* back = part<QToolButton>("helpBack");
    auto* forward = part<QToolButton>("helpForward");
    const auto* browser = part<QTextBrowser>("helpBrowser");
    const auto source = [&](const std::string& key) { return *lodex::help_target(QString::fromStdString(key)); };
    EXPECT_TRUE(back->isEnabled());
    EXPECT_FALSE(forward->isEnabled());
    QTest::mouseClick(back, Qt::LeftButton);
    EXPECT_EQ(browser->source(), source(kKeys[3]));
    EXPECT_EQ(XMHelpManager::instance()->current_key(), Lodex::CString("help:Dorvan/dox_SGridDownscaleDialog.html"));
    EXPECT_TRUE(forward->isEnabled());
    QTest::mouseClick(forward, Qt::LeftButton);
    EXPECT_EQ(browser->source(), source(kKeys[4]));
    QTest::mouseClick(part<QToolButton>("helpContentsButton"), Qt::LeftButton);
    EXPECT_EQ(browser->source(), lodex::help_url("Lodex.html"));
    QTest::keyClick(help_window(), Qt::Key_Escape);
    EXPECT_FALSE(help_window()->isVisible());
}

TEST(HelpManager, SearchFieldFiltersAndOpens)
{
    display(kKeys[3]);
    auto* search = part<QLineEdit>("helpSearch");
    auto* list = part<QListWidget>("helpContents");
    const auto* browser = part<QTextBrowser>("helpBrowser");
    const int all = list->count();
    QTest::keyClicks(search, "dykstra");
    ASSERT_LT(list->count(), all);
    const QList<QListWidgetItem*> wanted = list->findItems("Flow unit analysis", Qt::MatchExactly);
    ASSERT_EQ(wanted.size(), 1);
    list->scrollToItem(wanted.front());
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(wanted.front()).center());
    EXPECT_EQ(browser->source(), lodex::help_url("Dorvan/dox_FlowUnitAnalysis.html"));
    EXPECT_EQ(browser->extraSelections().size(), browser->toPlainText().count("dykstra", Qt::CaseInsensitive))
        << "the word is marked";
    QTest::keyClick(search, Qt::Key_Return);
    EXPECT_EQ(browser->textCursor().selectedText().toLower(), "dykstra");
    search->clear();
    EXPECT_EQ(list->count(), all);
    EXPECT_TRUE(browser->extraSelections().isEmpty());
}

TEST(HelpManager, CanBeUsedBesideAModalDialog)
{
    display(kKeys[0]);
    QPointer<QWidget> former = help_window();
    {
        QDialog wizard;
        wizard.setModal(true);
        wizard.show();
        display(kKeys[5]);
        ASSERT_TRUE(former.isNull());
        QWidget* window = nullptr;
        for (QWidget* child : wizard.findChildren<QWidget*>("helpWindow"))
            window = child;
        ASSERT_NE(window, nullptr) << "belongs to the dialog, so that it is not blocked";
        EXPECT_TRUE(window->isVisible());
        EXPECT_TRUE(window->isWindow());
    }
    display(kKeys[0]);
    EXPECT_TRUE(help_window()->isVisible());
}

TEST(HelpManager, PicturesAreNoWiderThanTheText)
{
    const auto pictures = [](const QTextDocument& document) {
        int shown = 0;
        for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
            for (auto it = block.begin(); !it.atEnd(); ++it)
                shown += it.fragment().charFormat().isImageFormat();
        }
        return shown;
    };
    display("help:user-doc/getting_started.html");
    const auto* browser = part<QTextBrowser>("helpBrowser");
    EXPECT_GE(pictures(*browser->document()), 3);
    const QSize size = help_window()->size();
    for (const int width : {size.width(), 700, 1100}) {
        help_window()->resize(width, size.height());
        EXPECT_TRUE(QTest::qWaitFor([&] { return browser->horizontalScrollBar()->maximum() == 0; }))
            << width << ": text area " << browser->viewport()->width() << ", widest line " << browser->document()->size().width();
        EXPECT_GE(pictures(*browser->document()), 3);
    }
    help_window()->resize(size);
}

TEST(HelpManager, PicturesForLookingAt)
{
    const QString folder = picture_folder();
    display(kKeys[0]);
    EXPECT_TRUE(help_window()->grab().save(folder + "/help_merge.png"));
    display(kKeys[7]);
    part<QLineEdit>("helpSearch")->setText("tensor");
    EXPECT_TRUE(help_window()->grab().save(folder + "/help_search.png"));
    part<QLineEdit>("helpSearch")->clear();
}
