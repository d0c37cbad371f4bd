#include "WorkbenchTest.h"

#include "apps/workbench/ConsoleEdit.h"
#include "apps/workbench/ObjectTree.h"
#include "apps/workbench/LogView.h"
#include "apps/workbench/MainWindow.h"
#include "apps/workbench/ReportDialog.h"
#include "apps/workbench/SectionPanel.h"
#include "lodex/qtools/MainWindowRegistry.h"
#include "MessageList.h"

#include <Lodex/xtools/XMHelpManager.h>
#include <Lodex/xtools/XMQShell.h>

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDropEvent>
#include <QFileDialog>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QPushButton>
#include <QSpinBox>
#include <QStatusBar>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QUrl>

#include <algorithm>

using namespace lodex;
using Lodex::LogLevel;

namespace {

class MainWindowTest : public WorkbenchTest {
protected:
    MainWindowTest()
    {
        window.show();
        QApplication::processEvents();
    }

    QAction* action(const char* id) { return window.findChild<QAction*>(id); }
    QString log() { return window.findChild<LogView*>("logView")->toPlainText(); }
    /// Writes a grid to a file.
    std::filesystem::path write_box(const std::string& name)
    {
        add_box("Writer", {3, 2, 2});
        EXPECT_TRUE(
            run("lodex export sgrid Writer file \"" + file(name).string() + "\"; lodex destroy objects Writer"));
        Interpreter::instance().clear_journal();
        return file(name);
    }
    static std::string last_statement()
    {
        const auto& journal = Interpreter::instance().journal();
        return journal.empty() ? std::string() : journal.back();
    }
    /// Does something with the modal widget that opens next.
    template <class F> static void when_modal(F f)
    {
        QTimer::singleShot(0, qApp, [f] {
            ASSERT_NE(QApplication::activeModalWidget(), nullptr);
            f(QApplication::activeModalWidget());
        });
    }
    /// Answers the file dialog that opens next.
    static void choose_file(const std::filesystem::path& path, const QString& filter = {})
    {
        when_modal([=](QWidget* widget) {
            auto* dialog = qobject_cast<QFileDialog*>(widget);
            ASSERT_NE(dialog, nullptr);
            if (!filter.isEmpty())
                dialog->selectNameFilter(filter);
            dialog->findChild<QLineEdit*>("fileNameEdit")->setText(QString::fromStdString(path.string()));
            QMetaObject::invokeMethod(dialog, "accept");
        });
    }

    MessageList messages;
    MainWindow window;
};

TEST_F(MainWindowTest, ActionsOnAGridNeedOne)
{
    const auto enabled = [&] {
        return std::ranges::all_of(std::array{"export", "mergeSections", "report", "destroy"},
                                   [&](const char* id) { return action(id)->isEnabled(); });
    };
    const auto disabled = [&] {
        return std::ranges::none_of(std::array{"export", "mergeSections", "report", "destroy"},
                                    [&](const char* id) { return action(id)->isEnabled(); });
    };
    EXPECT_TRUE(disabled());
    CornerPointGrid* grid = add_box("Box");
    EXPECT_TRUE(enabled());
    EXPECT_EQ(window.section()->view()->grid(), grid);
    ASSERT_TRUE(run("lodex destroy objects Box"));
    EXPECT_TRUE(disabled());
    EXPECT_EQ(window.section()->view()->grid(), nullptr);
    EXPECT_TRUE(action("import")->isEnabled());
}

TEST_F(MainWindowTest, EveryWidgetThatAPersonTouchesHasAName)
{
    add_box("Box");
    for (const QWidget* widget : window.findChildren<QWidget*>()) {
        const bool touched = qobject_cast<const QAbstractButton*>(widget) || qobject_cast<const QComboBox*>(widget) ||
                             qobject_cast<const QAbstractSpinBox*>(widget) || qobject_cast<const QLineEdit*>(widget) ||
                             qobject_cast<const QPlainTextEdit*>(widget) ||
                             qobject_cast<const QAbstractItemView*>(widget) ||
                             qobject_cast<const QAbstractSlider*>(widget) || qobject_cast<const QTabWidget*>(widget);
        // Parts that the toolkit makes inside of its own widgets bear its names or none.
        const bool inside = qobject_cast<const QComboBox*>(widget->parent()) ||
                            qobject_cast<const QAbstractSpinBox*>(widget->parent()) ||
                            qobject_cast<const QLineEdit*>(widget->parent()) ||
                            qobject_cast<const QAbstractScrollArea*>(widget->parent()) ||
                            qobject_cast<const QMenuBar*>(widget->parent()) || widget->inherits("QTabBar") ||
                            widget->parent()->inherits("QTabBar") || widget->parent()->inherits("QToolBar") ||
                            widget->parent()->inherits("QComboBoxPrivateContainer") ||
                            widget->parent()->objectName() == "qt_scrollarea_hcontainer" ||
                            widget->parent()->objectName() == "qt_scrollarea_vcontainer" ||
                            widget->inherits("QTipLabel");
        if (touched && !inside) {
            EXPECT_FALSE(widget->objectName().isEmpty()) << widget->metaObject()->className();
        }
    }
}

TEST_F(MainWindowTest, ConsoleRunsCommandsAndShowsAnswers)
{
    auto* console = window.findChild<ConsoleEdit*>("console");
    QTest::keyClicks(console, "lodex create sgrid name Typed size 2+2+2 spacing 1+1+1");
    QTest::keyClick(console, Qt::Key_Return);
    EXPECT_NE(find_grid("Typed"), nullptr);
    EXPECT_TRUE(log().startsWith("> lodex create sgrid name Typed"));
    QTest::keyClicks(console, "lodex help create example");
    QTest::keyClick(console, Qt::Key_Return);
    EXPECT_TRUE(log().contains("Makes the example field"));
}

TEST_F(MainWindowTest, FailuresBringTheMessagesToTheFront)
{
    auto* tabs = window.findChild<QTabWidget*>("lowerTabs");
    tabs->setCurrentIndex(1);
    EXPECT_FALSE(window.run("lodex nonsense"));
    EXPECT_EQ(tabs->currentWidget()->objectName(), "logPanel");
    EXPECT_TRUE(log().contains("error: 1:7: there is no verb \"nonsense\""));
}

TEST_F(MainWindowTest, ImportsFilesUnderFreeNames)
{
    const auto path = write_box("my model.grdecl");
    const QString text = QString::fromStdString(path.string());
    EXPECT_EQ(name_for_import(text), "my model");
    ASSERT_TRUE(window.import_files({text, text}));
    ASSERT_NE(find_grid("my model"), nullptr);
    ASSERT_NE(find_grid("my model_2"), nullptr);
    EXPECT_EQ(find_grid("my model")->model().size, (GridSize{3, 2, 2}));
    EXPECT_EQ(last_statement(), "lodex import file \"" + path.string() + "\" name my model_2");
    EXPECT_EQ(window.tree()->selected(), find_grid("my model_2"));

    EXPECT_FALSE(window.import_files({QString::fromStdString(file("missing.grdecl").string()), text}));
    EXPECT_EQ(messages.of(LogLevel::Error).size(), 1u);
    EXPECT_NE(find_grid("my model_3"), nullptr) << "the others come in all the same";
    EXPECT_EQ(window.statusBar()->currentMessage(), "1 of 2 files could not be imported");
}

TEST_F(MainWindowTest, NamesOfFilesBecomeLegalNames)
{
    EXPECT_EQ(name_for_import("/x/a+b;c.grdecl"), "a_b_c");
    EXPECT_EQ(name_for_import("/x/everywhere.grdecl"), "everywhere_");
    EXPECT_EQ(name_for_import("/x/file name.grdecl"), name_for_import("/y/file name.egrid"));
    EXPECT_NE(name_for_import("/x/name.grdecl"), "name") << "a keyword of the command";
    EXPECT_EQ(name_for_import("/x/case.v2.grdecl"), "case.v2");
}

TEST_F(MainWindowTest, PathsThatNoCommandCanHoldAreRefused)
{
    EXPECT_EQ(quoted_path("/tmp/a b.txt"), "\"/tmp/a b.txt\"");
    EXPECT_EQ(quoted_path("/tmp/a\"b"), "");
    EXPECT_EQ(quoted_path("/tmp/a\nb"), "");
    EXPECT_EQ(messages.of(LogLevel::Fatal).size(), 2u);
    EXPECT_FALSE(window.import_files({"/tmp/a\"b"}));
}

TEST_F(MainWindowTest, DroppedFilesAreImported)
{
    const auto path = write_box("dropped.grdecl");
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(QString::fromStdString(path.string()))});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window, &drop);
    EXPECT_EQ(find_grid("dropped"), nullptr) << "not while the other program waits";
    QApplication::processEvents();
    EXPECT_NE(find_grid("dropped"), nullptr);

    QMimeData text;
    text.setText("no file");
    QDragEnterEvent other(QPoint(50, 50), Qt::CopyAction, &text, Qt::LeftButton, Qt::NoModifier);
    other.ignore();
    QApplication::sendEvent(&window, &other);
    EXPECT_FALSE(other.isAccepted());
}

TEST_F(MainWindowTest, ImportAndExportAskForFiles)
{
    const auto path = write_box("asked.grdecl");
    choose_file(path);
    action("import")->trigger();
    ASSERT_NE(find_grid("asked"), nullptr);

    choose_file(file("out.GRDECL"));
    action("export")->trigger();
    EXPECT_TRUE(std::filesystem::exists(file("out.GRDECL")));
    // An ending of no format: the chosen filter says the format.
    choose_file(file("out.dat"));
    action("export")->trigger();
    EXPECT_TRUE(std::filesystem::exists(file("out.dat")));
    EXPECT_TRUE(messages.of(LogLevel::Error).empty());

    when_modal([](QWidget* widget) { static_cast<QDialog*>(widget)->reject(); });
    action("export")->trigger();
    EXPECT_TRUE(messages.of(LogLevel::Error).empty()) << "a dialog that is cancelled does nothing";
}

TEST_F(MainWindowTest, DestroyAsksFirst)
{
    add_box("My file"); // with a word that other verbs take for a keyword
    when_modal([](QWidget* widget) {
        EXPECT_EQ(widget->objectName(), "destroyQuestion");
        EXPECT_TRUE(static_cast<QMessageBox*>(widget)->text().contains("My file"));
        QTest::keyClick(widget, Qt::Key_Escape);
    });
    action("destroy")->trigger();
    EXPECT_NE(find_grid("My file"), nullptr);
    when_modal([](QWidget* widget) { widget->findChild<QPushButton*>("destroyYes")->click(); });
    action("destroy")->trigger();
    EXPECT_EQ(find_grid("My file"), nullptr);
    EXPECT_EQ(last_statement(), "lodex destroy objects \"My file\"");
}

TEST_F(MainWindowTest, ReportShowsTheNumbersAndSavesThem)
{
    CornerPointGrid* grid = add_box("The file", {2, 2, 3});
    grid->change([](GridModel& model) { model.layers = {{.unit = "Upper", .nb_k_cells = 3}}; });
    add_numbers(grid, "NUMBER");
    action("report")->trigger();
    auto* dialog = window.findChild<ReportDialog*>("reportDialog");
    ASSERT_NE(dialog, nullptr);
    const auto* tree = dialog->findChild<QTreeWidget*>("reportTree");
    const auto value = [&](const QString& key) {
        const auto items = tree->findItems(key, Qt::MatchExactly | Qt::MatchRecursive);
        return items.isEmpty() ? QStringLiteral("(none)") : items.front()->text(1);
    };
    EXPECT_EQ(value("name"), "The file");
    EXPECT_EQ(value("size"), "2, 2, 3");
    EXPECT_EQ(value("active"), "12");
    EXPECT_EQ(value("bulk_volume"), "600000");
    EXPECT_EQ(value("unit"), "Upper");
    EXPECT_EQ(value("max"), "11");
    EXPECT_EQ(value("regions"), "none");
    EXPECT_EQ(tree->findItems("k_layers", Qt::MatchExactly).front()->childCount(), 3);
    EXPECT_TRUE(log().isEmpty() || !log().contains("bulk_volume")) << "the answer is in the dialog, not in the log";

    choose_file(file("report.json"));
    dialog->findChild<QPushButton*>("reportSave")->click();
    EXPECT_NE(content(file("report.json")).find("\"bulk_volume\": 600000.0"), std::string::npos);
    dialog->findChild<QPushButton*>("reportClose")->click();
}

TEST_F(MainWindowTest, ScriptsRunWithTheirPlaceInMessages)
{
    std::ofstream(file("good.lodex"))
        << "# a comment\nlodex create sgrid name S size 2+2+2 spacing 1+1+1\nlodex help report\n";
    std::ofstream(file("bad.lodex")) << "lodex create sgrid name T size 2+2+2 spacing 1+1+1\nlodex create nonsense\n";
    choose_file(file("good.lodex"));
    action("runScript")->trigger();
    EXPECT_NE(find_grid("S"), nullptr);
    EXPECT_TRUE(log().contains("Tells all numbers of a grid"));
    EXPECT_FALSE(window.run_script(QString::fromStdString(file("bad.lodex").string())));
    EXPECT_EQ(find_grid("T"), nullptr) << "a script is read whole first";
    ASSERT_EQ(messages.of(LogLevel::Error).size(), 1u);
    EXPECT_NE(messages.of(LogLevel::Error)[0].find("bad.lodex:2:"), std::string::npos);
    EXPECT_FALSE(window.run_script(QString::fromStdString(file("missing.lodex").string())));
    EXPECT_EQ(messages.of(LogLevel::Fatal).size(), 1u);
}

TEST_F(MainWindowTest, MergeDialogWorksOnTheSelectedGrid)
{
    add_box("First", {4, 4, 6});
    CornerPointGrid* second = add_box("Second", {4, 4, 6});
    add_numbers(second, "NUMBER");
    action("mergeSections")->trigger();
    const Lodex::XMQShell* shell = Lodex::XMQShell::find("SgridMergeSectionShell");
    ASSERT_NE(shell, nullptr);
    QWidget* dialog = shell->widget();
    EXPECT_TRUE(dialog->isVisible());
    EXPECT_EQ(dialog->findChild<QComboBox*>("gridSelector_")->currentText(), "Second");
    EXPECT_EQ(dialog->findChild<QLineEdit*>("new_grid_name_")->text(), "Second_coarse");

    // What is chosen in the dialog shows in the section at once.
    SectionView* view = window.section()->view();
    const QImage before = view->grab().toImage();
    dialog->findChild<QComboBox*>("direction_")->setCurrentIndex(2);
    dialog->findChild<QSpinBox*>("from_")->setValue(2);
    dialog->findChild<QSpinBox*>("to_")->setValue(3);
    dialog->findChild<QCheckBox*>("paint_check_box_")->click();
    std::set<std::int64_t> layers;
    for (const std::int64_t cell : view->painted_cells())
        layers.insert(cell / 16);
    EXPECT_EQ(layers, (std::set<std::int64_t>{1, 2}));
    EXPECT_NE(view->grab().toImage(), before);
    dialog->findChild<QSpinBox*>("to_")->setValue(5);
    EXPECT_EQ(view->painted_cells().size(), 16u) << "K 2 to 5 in groups of two";

    dialog->findChild<QPushButton*>("apply_button")->click();
    ASSERT_NE(find_grid("Second_coarse"), nullptr);
    EXPECT_EQ(find_grid("Second_coarse")->model().size, (GridSize{4, 4, 4}));
    EXPECT_EQ(window.tree()->selected(), find_grid("Second_coarse"));
    EXPECT_TRUE(log().contains("Second_coarse"));

    // Opening it again brings the open one to the front, on what is selected now.
    window.tree()->select("First");
    action("mergeSections")->trigger();
    EXPECT_EQ(Lodex::XMQShell::find("SgridMergeSectionShell"), shell);
    EXPECT_EQ(dialog->findChild<QComboBox*>("gridSelector_")->currentText(), "First");

    dialog->findChild<QPushButton*>("cancel_button")->click();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_EQ(Lodex::XMQShell::find("SgridMergeSectionShell"), nullptr);
    action("mergeSections")->trigger();
    ASSERT_NE(Lodex::XMQShell::find("SgridMergeSectionShell"), nullptr);
    Lodex::XMQShell::find("SgridMergeSectionShell")->close();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST_F(MainWindowTest, F1OpensTheContents)
{
    action("contents")->trigger();
    EXPECT_EQ(Lodex::XMHelpManager::instance()->current_key().str(), "help:Lodex.html");
    for (QWidget* other : QApplication::topLevelWidgets()) {
        if (other != &window && other->isVisible())
            other->close();
    }
}

} // namespace
