// A first session with the program in a real display, worked with mouse and keys; the batch runner makes its files
// again from the journal.

#include "apps/workbench/MainWindow.h"
#include "apps/workbench/ObjectTree.h"
#include "lodex/gviews/CameraView.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/CellGeometry.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/gui/Lodex_gui_init.h>
#include <Lodex/gviews/Picking.h>
#include <Lodex/xtools/XMQShell.h>

#include <MessageList.h>
#include <QAbstractButton>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QProcess>
#include <QPushButton>
#include <QSpinBox>
#include <QTabBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

using namespace lodex;

namespace {

/// A model file with porosity, and one more property to look at.
struct Source {
    QString path;
    QString colour;
};

class NewUserTest : public testing::Test {
protected:
    NewUserTest()
    {
        Lodex::Lodex_gui_init::initialize();
        clear();
        source_ = find_source();
        window_ = std::make_unique<MainWindow>();
        window_->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window_.get()));
        window_->activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    }
    ~NewUserTest() override
    {
        window_.reset();
        Lodex::GraphicLib::instance()->reset_tool();
        clear();
    }
    static void clear()
    {
        Lodex::GeobaseLib::instance()->clear();
        Interpreter::instance().clear_journal();
    }

    /// The field model beside the checkout where it is present, else the example field, written to a file.
    Source find_source()
    {
        const char* variable = std::getenv("LODEX_FIELD_DATA");
        const std::filesystem::path folder = variable ? variable : SOURCE_DIR "/../shared/data";
        const std::filesystem::path field = folder / "reek" / "reek_grd_w_props.roff";
        if (std::filesystem::exists(field))
            return {QString::fromStdString(field.string()), "EQLNUM"};
        const QString path = file("field.roff");
        const std::string statements =
            "lodex create example name Source; lodex export sgrid Source file \"" + path.toStdString() + "\"";
        for (const StatementResult& result : Interpreter::instance().run(statements))
            EXPECT_EQ(result.status, StatementStatus::Done);
        clear();
        return {path, "PERMX"};
    }
    [[nodiscard]] QString file(const char* name) const { return folder_.filePath(QLatin1String(name)); }
    static QByteArray content(const QString& path)
    {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
        return file.readAll();
    }

    template <class Widget> static Widget* part(const QWidget* parent, const char* name)
    {
        auto* widget = parent->findChild<Widget*>(QLatin1String(name));
        if (!widget)
            throw std::runtime_error(std::string("no widget ") + name);
        return widget;
    }
    static void click(QWidget* widget)
    {
        EXPECT_TRUE(widget->isVisible() && widget->isEnabled()) << widget->objectName().toStdString();
        QTest::mouseClick(widget, Qt::LeftButton);
        QApplication::processEvents();
    }
    static void click_box(QCheckBox* box)
    {
        QTest::mouseClick(box, Qt::LeftButton, Qt::NoModifier, {8, box->height() / 2});
        QApplication::processEvents();
    }
    /// Puts a text where another one stands.
    static void type_over(QWidget* field, const QString& text)
    {
        field->setFocus();
        QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Tab);
    }
    /// Types a path into the file dialog that opens next.
    void answer_file_dialog(const QString& path)
    {
        QTimer::singleShot(0, qApp, [this, path] {
            auto* dialog = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
            if (!dialog) {
                ADD_FAILURE() << "no file dialog opened";
                return;
            }
            ++answered_;
            auto* name = part<QLineEdit>(dialog, "fileNameEdit");
            name->setText(path); // typed letter by letter, the list of suggestions would take the Enter
            QTest::keyClick(name, Qt::Key_Return);
            if (dialog->isVisible()) {
                ADD_FAILURE() << "the file dialog does not take " << path.toStdString();
                dialog->reject();
            }
        });
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers) { QTest::keyClick(window_.get(), key, modifiers); }
    void settle()
    {
        bool drawn = false;
        const auto connection = QObject::connect(camera(), &CameraView::drawn, [&drawn] { drawn = true; });
        camera()->request_update();
        EXPECT_TRUE(QTest::qWaitFor([&drawn] { return drawn; }));
        QObject::disconnect(connection);
        QApplication::processEvents();
    }
    void select_in_tree(const QString& grid)
    {
        ObjectTree* tree = window_->tree();
        const auto items = tree->findItems(grid, Qt::MatchExactly, ObjectTree::NameColumn);
        ASSERT_EQ(items.size(), 1);
        tree->scrollToItem(items.front());
        QTest::mouseClick(tree->viewport(), Qt::LeftButton, Qt::NoModifier,
                          tree->visualItemRect(items.front()).center());
    }
    [[nodiscard]] CameraView* camera() const { return window_->camera(); }
    void click_camera(const QPointF& place)
    {
        QWidget* target = camera()->childAt(place.toPoint());
        target = target ? target : camera();
        QTest::mouseClick(target, Qt::LeftButton, Qt::NoModifier, target->mapFrom(camera(), place.toPoint()));
        QApplication::processEvents();
    }
    struct Seen {
        QPointF place;
        int number; ///< along I, from 1
    };
    /// Among places all over the view: the drawn cells with the lowest and the highest number along I.
    [[nodiscard]] std::pair<Seen, Seen> ends_along_i() const
    {
        std::pair<Seen, Seen> ends{{{}, std::numeric_limits<int>::max()}, {{}, 0}};
        const QSize size = camera()->size();
        for (int row = 1; row < 16; ++row) {
            for (int column = 1; column < 20; ++column) {
                const QPointF place(size.width() * column / 20, size.height() * row / 16);
                const auto cell = camera()->cell_at(place);
                if (!cell)
                    continue;
                const auto number = static_cast<int>(cell->index[0]) + 1;
                if (number < ends.first.number)
                    ends.first = {place, number};
                if (number > ends.second.number)
                    ends.second = {place, number};
            }
        }
        return ends;
    }
    /// Presses a row's pick button, misses the grid, hits the cell.
    void pick(QWidget* dialog, const char* button, const char* box, const Seen& cell)
    {
        const auto* hint = part<QLabel>(window_.get(), "toolHint");
        click(part<QAbstractButton>(dialog, button));
        EXPECT_TRUE(hint->isVisible());
        const int before = part<QSpinBox>(dialog, box)->value();
        const QPointF beside(camera()->width() / 2.0, 4);
        EXPECT_FALSE(camera()->cell_at(beside));
        click_camera(beside);
        EXPECT_TRUE(hint->isVisible()) << "the tool stays after a click beside the grid";
        EXPECT_EQ(part<QSpinBox>(dialog, box)->value(), before);
        click_camera(cell.place);
        EXPECT_EQ(part<QSpinBox>(dialog, box)->value(), cell.number);
        EXPECT_FALSE(hint->isVisible());
    }

    QTemporaryDir folder_;
    Source source_;
    MessageList messages_;
    std::unique_ptr<MainWindow> window_;
    int answered_ = 0; // file dialogs
};

TEST_F(NewUserTest, FromAnEmptyWindowToACoarseModelThatTheBatchRunnerMakesAgain)
{
    EXPECT_TRUE(window_->tree()->grids().empty());
    answer_file_dialog(source_.path);
    press(Qt::Key_I, Qt::ControlModifier);
    ASSERT_EQ(window_->tree()->grids().size(), 1u);
    CornerPointGrid* const fine = window_->tree()->grids().front();
    ASSERT_NE(fine->model().find_property("PORO"), nullptr);
    EXPECT_TRUE(camera()->shows(fine));
    settle();

    auto* colour = part<QComboBox>(window_.get(), "displayColour");
    colour->setFocus();
    QTest::keyClicks(colour, source_.colour);
    settle();
    EXPECT_EQ(camera()->display(fine).colour, ColourBy::of_property(source_.colour.toStdString()));

    const std::size_t faces = camera()->face_count();
    const int layers = static_cast<int>(fine->model().size[2]);
    click_box(part<QCheckBox>(window_.get(), "sliceKOn"));
    type_over(part<QSpinBox>(window_.get(), "sliceKTo"), QString::number(layers / 2));
    type_over(part<QSpinBox>(window_.get(), "sliceKFrom"), QString::number(layers / 2));
    settle();
    EXPECT_EQ(camera()->display(fine).filter.ranges[2], (std::vector<IndexRange>{{layers / 2 - 1, layers / 2 - 1}}));
    EXPECT_NE(camera()->face_count(), faces);

    press(Qt::Key_M, Qt::ControlModifier);
    const Lodex::XMQShell* const shell = Lodex::XMQShell::find("SgridMergeSectionShell");
    ASSERT_NE(shell, nullptr);
    QWidget* const dialog = shell->widget();
    type_over(part<QLineEdit>(dialog, "new_grid_name_"), "Coarse");
    auto* direction = part<QComboBox>(dialog, "direction_");
    direction->setFocus();
    QTest::keyClick(direction, Qt::Key_Home);
    ASSERT_EQ(direction->currentIndex(), 0);
    const auto [first, last] = ends_along_i();
    ASSERT_GT(last.number, first.number + 3) << "a slice across the field is in view";
    pick(dialog, "pick_from_", "from_", first);
    pick(dialog, "pick_to_", "to_", last);
    type_over(part<QSpinBox>(dialog, "step_"), "2");
    click(part<QPushButton>(dialog, "apply_button"));
    const CornerPointGrid* const coarse = find_grid("Coarse");
    ASSERT_NE(coarse, nullptr);
    const std::int64_t run = last.number - first.number + 1;
    EXPECT_EQ(coarse->model().size,
              (GridSize{fine->model().size[0] - run / 2, fine->model().size[1], fine->model().size[2]}));
    click(part<QPushButton>(dialog, "cancel_button"));
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);

    auto* console = part<QLineEdit>(window_.get(), "console");
    click(console);
    QTest::keyClicks(console, QString::fromStdString("lodex on SGrid " + fine->name().str() +
                                                     " upscale_porosity fine_porosity PORO Coarse Coarse"
                                                     " coarse_porosity PORO mapper parametric upscaler Arithmetic"
                                                     " weight_using_volume 1"));
    QTest::keyClick(console, Qt::Key_Return);
    ASSERT_NE(coarse->model().find_property("PORO"), nullptr)
        << testing::PrintToString(messages_.of(Lodex::LogLevel::Error));

    click(part<QPushButton>(window_.get(), "compareOffer"));
    const auto* comparison = part<QDialog>(window_.get(), "comparisonWindow");
    const auto* table = part<QTableWidget>(comparison, "comparisonTable");
    ASSERT_EQ(table->rowCount(), 10);
    const auto numbers = [table](const char* what) {
        const auto items = table->findItems(QLatin1String(what), Qt::MatchExactly);
        if (items.size() != 1)
            throw std::runtime_error(std::string("no row ") + what);
        const int row = items.front()->row();
        return std::pair(table->item(row, 1)->text().toDouble(), table->item(row, 2)->text().toDouble());
    };
    const auto [fine_mean, coarse_mean] = numbers("Mean by volume");
    EXPECT_GT(fine_mean, 0);
    // Merged cells have straight edges where theirs were bent: other volumes, and so other weights, by a little.
    EXPECT_NEAR(coarse_mean, fine_mean, 2e-3 * fine_mean);
    EXPECT_GE(numbers("Minimum").second, numbers("Minimum").first);
    EXPECT_LE(numbers("Maximum").second, numbers("Maximum").first);
    EXPECT_LT(numbers("Standard deviation").second, numbers("Standard deviation").first);
    EXPECT_TRUE(part<QLabel>(comparison, "comparisonVerdict")->text().contains("coarse cells compared"));
    click(part<QPushButton>(comparison, "comparisonClose"));

    window_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window_.get()));
    using Export = std::pair<const CornerPointGrid*, const char*>;
    for (const auto& [grid, name] : {Export{fine, "fine.roff"}, Export{coarse, "coarse.roff"}}) {
        select_in_tree(QString::fromStdString(grid->name().str()));
        ASSERT_EQ(window_->tree()->selected(), grid);
        answer_file_dialog(file(name));
        press(Qt::Key_E, Qt::ControlModifier);
        ASSERT_TRUE(QFile::exists(file(name)));
    }

    auto* tabs = part<QTabWidget>(window_.get(), "lowerTabs");
    QTest::mouseClick(tabs->tabBar(), Qt::LeftButton, Qt::NoModifier, tabs->tabBar()->tabRect(1).center());
    answer_file_dialog(file("session.lodex"));
    click(part<QPushButton>(window_.get(), "journalSave"));
    EXPECT_EQ(answered_, 4);
    for (const std::string& warning : messages_.of(Lodex::LogLevel::Warning))
        EXPECT_EQ(warning.find("no fine cell"), std::string::npos) << warning << "; merged cells hold their fine cells";
    EXPECT_EQ(messages_.of(Lodex::LogLevel::Error).size(), 2u) << "of the two clicks beside the grid alone";
    EXPECT_TRUE(messages_.of(Lodex::LogLevel::Fatal).empty());

    // The journal writes the same paths again.
    for (const char* name : {"fine.roff", "coarse.roff"})
        ASSERT_TRUE(QFile::rename(file(name), file(name) + ".window"));
    QProcess runner;
    runner.setProcessChannelMode(QProcess::MergedChannels);
    runner.start(QStringLiteral(BUILD_BIN_DIR "/lodex"), {"run", file("session.lodex")});
    ASSERT_TRUE(runner.waitForFinished(60000)) << runner.errorString().toStdString();
    EXPECT_EQ(runner.exitCode(), 0) << runner.readAll().toStdString() << content(file("session.lodex")).toStdString();
    for (const char* name : {"fine.roff", "coarse.roff"}) {
        const QByteArray made = content(file(name));
        EXPECT_GT(made.size(), 1000);
        EXPECT_TRUE(made == content(file(name) + ".window")) << name << " differs";
    }
}

} // namespace
