#include "WorkbenchTest.h"

#include "apps/workbench/Completion.h"
#include "apps/workbench/ConsoleEdit.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>

using namespace lodex;

namespace {

using Words = std::vector<std::string>;

class CompletionTest : public WorkbenchTest {
protected:
    static Words words(const std::string& text) { return complete_command(text).candidates; }
    static bool offers(const std::string& text, const std::string& word)
    {
        const Words all = words(text);
        return std::ranges::find(all, word) != all.end();
    }
};

TEST_F(CompletionTest, StatementsBeginWithTheirWord)
{
    EXPECT_EQ(words(""), Words({"lodex"}));
    EXPECT_EQ(words("lo"), Words({"lodex"}));
    EXPECT_TRUE(words("other").empty());
    EXPECT_TRUE(words("other ").empty());
}

TEST_F(CompletionTest, VerbsWordByWord)
{
    EXPECT_TRUE(offers("lodex ", "on"));
    EXPECT_TRUE(offers("lodex ", "create"));
    EXPECT_EQ(words("lodex cre"), Words({"create"}));
    EXPECT_EQ(words("lodex create "), Words({"example", "sgrid"}));
    EXPECT_EQ(words("lodex create e"), Words({"example"}));
    EXPECT_EQ(words("lodex update all "), Words({"cameras"}));
}

TEST_F(CompletionTest, KeywordsThatAreNotGivenYet)
{
    EXPECT_EQ(words("lodex create example "), Words({"name", "seed", "size"}));
    EXPECT_EQ(words("lodex create example name X "), Words({"seed", "size"}));
    EXPECT_EQ(words("lodex create example name X se"), Words({"seed"}));
    EXPECT_TRUE(words("lodex create example name ").empty()) << "a free name stands there";
    EXPECT_EQ(words("lodex create example size \"4+4+4\" "), Words({"name", "seed"})) << "a quoted word is no keyword";
}

TEST_F(CompletionTest, NamesOfObjects)
{
    add_box("Reek");
    add_box("Reef top");
    EXPECT_EQ(words("lodex on "), Words({"SGrid", "Style"}));
    EXPECT_EQ(words("lodex on SGrid "), Words({"\"Reef top\"", "Reek"}));
    EXPECT_EQ(words("lodex on SGrid R"), Words({"Reek"}));
    EXPECT_EQ(words("lodex report sgrid "), Words({"\"Reef top\"", "Reek"}));
    EXPECT_EQ(words("lodex report sgrid Reek "), Words({"file"}));
    EXPECT_EQ(words("lodex destroy objects Re"), Words({"Reek"}));
}

TEST_F(CompletionTest, VerbsOfAnObjectBehindItsName)
{
    add_box("Reek");
    add_box("Reef top");
    EXPECT_TRUE(offers("lodex on SGrid Reek ", "set_property"));
    EXPECT_EQ(words("lodex on SGrid Reek set_l"), Words({"set_layers"}));
    EXPECT_TRUE(offers("lodex on SGrid Reef top ", "set_layers")) << "a name of two words without quotes";
    EXPECT_EQ(words("lodex on Style Reek set "), Words({"attribute", "value"}));
    EXPECT_EQ(words("lodex SGrid Reek set_l"), Words({"set_layers"})) << "the \"on\" may be left out";
    EXPECT_TRUE(words("lodex on Nothing ").empty());
}

TEST_F(CompletionTest, ValuesThatTheDeclarationTells)
{
    EXPECT_EQ(words("lodex sgrid_merge_multiple_sections copy_properties "), Words({"0", "1"}));
    EXPECT_EQ(words("lodex sgrid_merge_multiple_sections direction "),
              Words({"\"first axis\"", "\"second axis\"", "vertical"}));
    EXPECT_TRUE(offers("lodex sgrid_merge_multiple_sections sections ", "direction")) << "its value may be empty";
}

TEST_F(CompletionTest, OnlyTheLastStatementCounts)
{
    const std::string text = "lodex update all cameras; lodex cre";
    const Completion completion = complete_command(text);
    EXPECT_EQ(completion.candidates, Words({"create"}));
    EXPECT_EQ(completion.begin, text.size() - 3);
    EXPECT_EQ(words("lodex help;"), Words({"lodex"}));
    EXPECT_TRUE(words("lodex import file \"a;").empty()) << "a semicolon between quotes ends nothing";
}

TEST_F(CompletionTest, CommonBeginning)
{
    EXPECT_EQ(common_beginning({}), "");
    EXPECT_EQ(common_beginning({"set_layers"}), "set_layers");
    EXPECT_EQ(common_beginning({"set_layers", "set_property"}), "set_");
    EXPECT_EQ(common_beginning({"a", "b"}), "");
    EXPECT_EQ(common_beginning({"sgrid", "sgrid_fill"}), "sgrid");
}

class ConsoleTest : public WorkbenchTest {
protected:
    ConsoleTest() { console.show(); }
    void submit(const QString& text)
    {
        QTest::keyClicks(&console, text);
        QTest::keyClick(&console, Qt::Key_Return);
    }

    ConsoleEdit console;
};

TEST_F(ConsoleTest, EnterSubmitsAndEmpties)
{
    QSignalSpy submitted(&console, &ConsoleEdit::submitted);
    submit("  lodex help  ");
    ASSERT_EQ(submitted.count(), 1);
    EXPECT_EQ(submitted[0][0].toString(), "lodex help");
    EXPECT_TRUE(console.text().isEmpty());
    QTest::keyClick(&console, Qt::Key_Return);
    QTest::keyClicks(&console, "   ");
    QTest::keyClick(&console, Qt::Key_Enter);
    EXPECT_EQ(submitted.count(), 1) << "nothing is not submitted";
}

TEST_F(ConsoleTest, UpAndDownGoThroughTheHistory)
{
    submit("one");
    submit("two");
    submit("two");
    submit("three");
    EXPECT_EQ(console.history(), QStringList({"one", "two", "three"}));
    QTest::keyClicks(&console, "typed");
    const auto key = [&](Qt::Key which) {
        QTest::keyClick(&console, which);
        return console.text();
    };
    EXPECT_EQ(key(Qt::Key_Up), "three");
    EXPECT_EQ(key(Qt::Key_Up), "two");
    EXPECT_EQ(key(Qt::Key_Up), "one");
    EXPECT_EQ(key(Qt::Key_Up), "one") << "the oldest one stays";
    EXPECT_EQ(key(Qt::Key_Down), "two");
    EXPECT_EQ(key(Qt::Key_Down), "three");
    EXPECT_EQ(key(Qt::Key_Down), "typed") << "what was being typed comes back";
    EXPECT_EQ(key(Qt::Key_Down), "typed");
    EXPECT_EQ(key(Qt::Key_Escape), "");
}

TEST_F(ConsoleTest, TabCompletesTheWord)
{
    QTest::keyClicks(&console, "lo");
    QTest::keyClick(&console, Qt::Key_Tab);
    EXPECT_EQ(console.text(), "lodex ");
    QTest::keyClicks(&console, "create ex");
    QTest::keyClick(&console, Qt::Key_Tab);
    EXPECT_EQ(console.text(), "lodex create example ");
    EXPECT_EQ(console.cursorPosition(), console.text().size());
}

TEST_F(ConsoleTest, TabInTheMiddleOfTheLine)
{
    console.setText("lodex cre example");
    console.setCursorPosition(9);
    QTest::keyClick(&console, Qt::Key_Tab);
    EXPECT_EQ(console.text(), "lodex create example");
    EXPECT_EQ(console.cursorPosition(), 12);
}

TEST_F(ConsoleTest, TabPutsInWhatAllCandidatesShareThenListsThem)
{
    add_box("Box_one");
    add_box("Box_two");
    QTest::keyClicks(&console, "lodex report sgrid B");
    QTest::keyClick(&console, Qt::Key_Tab);
    EXPECT_EQ(console.text(), "lodex report sgrid Box_");
    auto* list = qobject_cast<QAbstractItemView*>(QApplication::activePopupWidget());
    EXPECT_EQ(list, nullptr);
    QTest::keyClick(&console, Qt::Key_Tab);
    list = qobject_cast<QAbstractItemView*>(QApplication::activePopupWidget());
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->objectName(), "consoleCandidates");
    EXPECT_EQ(list->model()->rowCount(), 2);
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Return);
    EXPECT_EQ(console.text(), "lodex report sgrid Box_two ");
    EXPECT_TRUE(console.history().isEmpty()) << "Enter chose from the list and submitted nothing";
}

TEST_F(ConsoleTest, ListFollowsWhatIsTypedAndEnterWithoutAChoiceSubmits)
{
    QTest::keyClicks(&console, "lodex ");
    QTest::keyClick(&console, Qt::Key_Space, Qt::ControlModifier);
    auto* list = qobject_cast<QAbstractItemView*>(QApplication::activePopupWidget());
    ASSERT_NE(list, nullptr);
    const int all = list->model()->rowCount();
    QTest::keyClicks(list, "cr");
    EXPECT_EQ(console.text(), "lodex cr");
    EXPECT_EQ(list->model()->rowCount(), 1);
    EXPECT_GT(all, 1);
    QSignalSpy submitted(&console, &ConsoleEdit::submitted);
    QTest::keyClick(list, Qt::Key_Return);
    ASSERT_EQ(submitted.count(), 1);
    EXPECT_EQ(submitted[0][0].toString(), "lodex cr");
    EXPECT_EQ(QApplication::activePopupWidget(), nullptr);
}

TEST_F(ConsoleTest, TabInAnEmptyLineLeavesIt)
{
    QWidget window;
    auto* inside = new ConsoleEdit(&window);
    auto* next = new QLineEdit(&window);
    window.show();
    window.activateWindow();
    QApplication::setActiveWindow(&window);
    inside->setFocus();
    QTest::keyClick(inside, Qt::Key_Tab);
    EXPECT_TRUE(next->hasFocus());
}

TEST_F(ConsoleTest, CompletesBehindCharactersOfSeveralBytes)
{
    add_box("Öl");
    QTest::keyClicks(&console, "lodex on SGrid ");
    console.insert("Öl set_la");
    QTest::keyClick(&console, Qt::Key_Tab);
    EXPECT_EQ(console.text(), "lodex on SGrid Öl set_layers ");
}

TEST_F(ConsoleTest, HelpsWithWhatIsBeingTyped)
{
    EXPECT_EQ(command_hint("lodex"), "");
    EXPECT_EQ(command_hint("lodex nonsense "), "");
    EXPECT_EQ(command_hint("lodex create sgrid ").find("create sgrid: Makes a plain box"), 0u);
    add_box("My box");
    EXPECT_EQ(command_hint("lodex on SGrid My box upscale_porosity weight_using_volume "),
              "weight_using_volume (flag, default 0): whether cells weigh by their bulk volume");
    QSignalSpy hints(&console, &ConsoleEdit::hint_changed);
    console.insert("lodex create sgrid ");
    ASSERT_GE(hints.count(), 1);
    EXPECT_TRUE(hints.last()[0].toString().startsWith("create sgrid: "));
    console.clear();
    EXPECT_EQ(hints.last()[0].toString(), "");
}

} // namespace
