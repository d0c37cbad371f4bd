#include "WorkbenchTest.h"

#include "apps/workbench/JournalView.h"
#include "apps/workbench/LogPanel.h"
#include "apps/workbench/LogView.h"
#include "lodex/utils/Errors.h"

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTextBlock>

#include <cstring>
#include <fstream>
#include <thread>
#include <type_traits>
#include <variant>

using namespace lodex;
using Lodex::Logger;
using Lodex::LogLevel;

namespace {

QColor colour_of_line(const QPlainTextEdit& text, int line)
{
    return text.document()->findBlockByNumber(line).begin().fragment().charFormat().foreground().color();
}

/// Undefined values are NaNs, which no comparison of numbers calls equal.
bool same_bits(const PropertyData& a, const PropertyData& b)
{
    if (a.values.index() != b.values.index() || a.size() != b.size())
        return false;
    return std::visit(
        [&](const auto& values) {
            using Values = std::decay_t<decltype(values)>;
            return std::memcmp(values.data(), std::get<Values>(b.values).data(), values.size() * sizeof(values[0])) ==
                   0;
        },
        a.values);
}

class LogViewTest : public WorkbenchTest {
protected:
    LogView log;
};

TEST_F(LogViewTest, ShowsMessagesCommandsAndAnswers)
{
    log.add_command("lodex help");
    log.add_answer("two\nlines\n");
    Logger::log(LogLevel::Info, "done\n");
    Logger::log(LogLevel::Warning, "careful\n");
    Logger::log(LogLevel::Error, "1:1: no\n  in: lodex x\n");
    Logger::log(LogLevel::Fatal, "stop\n");
    EXPECT_EQ(log.toPlainText(),
              "> lodex help\ntwo\nlines\ndone\nwarning: careful\nerror: 1:1: no\n  in: lodex x\nerror: stop");
    EXPECT_TRUE(log.isReadOnly());
    EXPECT_TRUE(log.textInteractionFlags() & Qt::TextSelectableByMouse);
}

TEST(LogPanelTest, ChoosesByLevelAndTextAndCopiesWhatIsShown)
{
    LogPanel panel;
    LogView* log = panel.view();
    Logger::log(LogLevel::Info, "all is well");
    Logger::log(LogLevel::Warning, "careful");
    Logger::log(LogLevel::Error, "no");
    auto* level = panel.findChild<QComboBox*>("logLevel");
    level->setCurrentIndex(1);
    EXPECT_EQ(log->toPlainText(), "warning: careful\nerror: no");
    Logger::log(LogLevel::Info, "more");
    EXPECT_EQ(log->toPlainText(), "warning: careful\nerror: no");
    panel.findChild<QPushButton*>("logCopy")->click();
    EXPECT_EQ(QApplication::clipboard()->text(), "warning: careful\nerror: no");
    level->setCurrentIndex(2);
    EXPECT_EQ(log->toPlainText(), "error: no");
    level->setCurrentIndex(0);
    EXPECT_EQ(log->toPlainText(), "all is well\nwarning: careful\nerror: no\nmore") << "nothing was lost";
    auto* search = panel.findChild<QLineEdit*>("logSearch");
    search->setText("CARE");
    EXPECT_EQ(log->toPlainText(), "warning: careful");
    search->clear();
    panel.findChild<QPushButton*>("logClear")->click();
    EXPECT_EQ(log->toPlainText(), "");
    Logger::log(LogLevel::Info, "again");
    EXPECT_EQ(log->toPlainText(), "again");
}

TEST_F(LogViewTest, KindsHaveTheirColoursInBothThemes)
{
    Logger::log(LogLevel::Info, "a");
    Logger::log(LogLevel::Warning, "b");
    Logger::log(LogLevel::Error, "c");
    for (const auto& [base, text] :
         {std::pair{QColor(30, 30, 30), QColor(230, 230, 230)}, std::pair{QColor(Qt::white), QColor(Qt::black)}}) {
        QPalette palette = log.palette();
        palette.setColor(QPalette::Base, base);
        palette.setColor(QPalette::Text, text);
        log.setPalette(palette);
        EXPECT_EQ(log.toPlainText(), "a\nwarning: b\nerror: c");
        const QColor info = colour_of_line(log, 0), warning = colour_of_line(log, 1), error = colour_of_line(log, 2);
        EXPECT_EQ(info, text);
        EXPECT_NE(warning, error);
        EXPECT_GT(error.red(), error.green());
        for (const QColor& colour : {info, warning, error})
            EXPECT_GT(std::abs(qGray(colour.rgb()) - qGray(base.rgb())), 90) << colour.name().toStdString();
    }
}

TEST_F(LogViewTest, TellsProblems)
{
    QSignalSpy problem(&log, &LogView::problem);
    Logger::log(LogLevel::Warning, "careful");
    Logger::log(LogLevel::Error, "first line\nsecond");
    Logger::log(LogLevel::Fatal, "stop");
    ASSERT_EQ(problem.count(), 2);
    EXPECT_EQ(problem[0][0].toString(), "first line");
    EXPECT_EQ(problem[1][0].toString(), "stop");
}

TEST_F(LogViewTest, TakesMessagesOfOtherThreads)
{
    std::thread([] { Logger::log(LogLevel::Info, "from elsewhere"); }).join();
    QApplication::processEvents();
    EXPECT_EQ(log.toPlainText(), "from elsewhere");
}

class JournalTest : public WorkbenchTest {
protected:
    static std::string text_of(const JournalView& view)
    {
        return view.findChild<QPlainTextEdit*>("journalText")->toPlainText().toStdString();
    }
};

TEST_F(JournalTest, FollowsTheInterpreter)
{
    ASSERT_TRUE(run("lodex create sgrid name Before size 2+2+2 spacing 1+1+1"));
    JournalView view;
    const auto* save = view.findChild<QPushButton*>("journalSave");
    EXPECT_EQ(text_of(view), "lodex create sgrid name Before size 2+2+2 spacing 1+1+1");
    EXPECT_TRUE(save->isEnabled());
    ASSERT_TRUE(run("lodex report sgrid Before ; lodex on SGrid Before fill_property P value 1"));
    EXPECT_EQ(text_of(view), "lodex create sgrid name Before size 2+2+2 spacing 1+1+1\n"
                             "lodex on SGrid Before fill_property P value 1")
        << "what changes no model is not in the journal";
    EXPECT_FALSE(run("lodex destroy objects Nobody"));
    Interpreter::instance().clear_journal();
    EXPECT_EQ(text_of(view), "");
    EXPECT_FALSE(save->isEnabled());
}

TEST_F(JournalTest, LetsGoOfTheInterpreter)
{
    {
        const JournalView view;
    }
    EXPECT_TRUE(run("lodex create sgrid name Box size 2+2+2 spacing 1+1+1"));
    EXPECT_EQ(Interpreter::instance().journal().size(), 1u);
}

TEST_F(JournalTest, ReplayedJournalMakesTheSameGrids)
{
    ASSERT_TRUE(
        run("lodex create example name Field size 12+10+8 seed 3\n"
            "lodex sgrid_merge_multiple_sections name Coarse sgrid Field direction \"vertical\" sections 0+1+4+5 "
            "copy_properties 1 property_sections 0+5 copy_regions 1\n"
            "lodex on SGrid Coarse fill_property CONST value 0.125"));
    save_journal(file("journal.lodex"));
    const GridModel first = find_grid("Coarse")->model();
    clear();
    ASSERT_EQ(find_grid("Coarse"), nullptr);

    ASSERT_TRUE(run(content(file("journal.lodex"))));
    ASSERT_NE(find_grid("Coarse"), nullptr);
    const GridModel& second = find_grid("Coarse")->model();
    EXPECT_EQ(second.size, (GridSize{12, 10, 6}));
    EXPECT_EQ(second.size, first.size);
    EXPECT_EQ(second.coord, first.coord);
    EXPECT_EQ(second.zcorn, first.zcorn);
    EXPECT_EQ(second.active, first.active);
    ASSERT_EQ(second.properties.size(), first.properties.size());
    for (std::size_t i = 0; i < first.properties.size(); ++i) {
        EXPECT_EQ(second.properties[i].name, first.properties[i].name);
        EXPECT_TRUE(same_bits(second.properties[i], first.properties[i])) << first.properties[i].name;
    }
    ASSERT_EQ(second.regions.size(), first.regions.size());
    for (std::size_t i = 0; i < first.regions.size(); ++i)
        EXPECT_EQ(second.regions[i].flags, first.regions[i].flags);
    EXPECT_EQ(Interpreter::instance().journal().size(), 3u) << "the replay is journalled the same";
}

TEST_F(JournalTest, SavingReplacesTheFileWhole)
{
    std::ofstream(file("old.lodex")) << "a longer text than what comes now, to be replaced";
    ASSERT_TRUE(run("lodex create sgrid name B size 1+1+1 spacing 1+1+1"));
    save_journal(file("old.lodex"));
    EXPECT_EQ(content(file("old.lodex")), "lodex create sgrid name B size 1+1+1 spacing 1+1+1\n");
    EXPECT_THROW(save_journal(file("missing") / "journal.lodex"), ModelError);
}

} // namespace
