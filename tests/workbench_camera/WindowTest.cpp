// The window in a real display, worked with mouse and keys as a person would.

#include "apps/workbench/DisplayPanel.h"
#include "apps/workbench/MainWindow.h"
#include "apps/workbench/Theme.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/CellGeometry.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/gui/Lodex_gui_init.h>
#include <Lodex/gviews/Picking.h>

#include <Pictures.h>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QSpinBox>
#include <QTest>

#include <gtest/gtest.h>

#include <set>

using namespace lodex;

namespace {

class WindowTest : public testing::Test {
protected:
    WindowTest()
    {
        Lodex::Lodex_gui_init::initialize();
        Lodex::GeobaseLib::instance()->clear();
        window = std::make_unique<MainWindow>();
        window->show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    }
    ~WindowTest() override
    {
        window.reset();
        Lodex::GraphicLib::instance()->reset_tool();
        Lodex::GeobaseLib::instance()->clear();
        use_theme(Theme::System);
    }
    /// Until the camera has drawn what was asked for.
    void settle()
    {
        bool drawn = false;
        const auto connection = QObject::connect(window->camera(), &CameraView::drawn, [&drawn] { drawn = true; });
        window->camera()->request_update();
        EXPECT_TRUE(QTest::qWaitFor([&drawn] { return drawn; }));
        QObject::disconnect(connection);
        QApplication::processEvents();
    }
    void look_at(const char* name)
    {
        settle();
        const QImage picture = window->screen()->grabWindow(window->winId()).toImage();
        EXPECT_TRUE(picture.save(picture_folder() + QStringLiteral("/window_%1.png").arg(QLatin1String(name))));
    }
    static std::size_t colours_of(const QImage& picture)
    {
        std::set<QRgb> colours;
        for (int y = 0; y < picture.height(); y += 2) {
            for (int x = 0; x < picture.width(); x += 2)
                colours.insert(picture.pixel(x, y));
        }
        return colours.size();
    }
    /// A place in the camera where a cell is drawn, near the middle.
    QPointF place_of_a_cell()
    {
        const QSize size = window->camera()->size();
        for (int step = 0; step < 200; ++step) {
            const QPointF place(size.width() / 2.0 + (step % 20 - 10) * 8, size.height() / 2.0 + (step / 20 - 5) * 10);
            if (window->camera()->cell_at(place))
                return place;
        }
        ADD_FAILURE() << "no cell near the middle of the view";
        return {};
    }
    void click_camera(const QPointF& place)
    {
        QWidget* target = window->camera()->childAt(place.toPoint());
        target = target ? target : window->camera();
        QTest::mouseClick(target, Qt::LeftButton, Qt::NoModifier, target->mapFrom(window->camera(), place.toPoint()));
        QApplication::processEvents();
    }

    std::unique_ptr<MainWindow> window;
};

TEST_F(WindowTest, TheExampleFieldOpensAndAPickedCellTellsItsNumbers)
{
    ASSERT_TRUE(window->camera()->can_draw());
    QElapsedTimer time;
    time.start();
    ASSERT_TRUE(window->run("lodex create example name Example"));
    settle();
    RecordProperty("milliseconds_to_first_picture", static_cast<int>(time.elapsed()));
    const CornerPointGrid* grid = find_grid("Example");
    EXPECT_TRUE(window->camera()->shows(grid));
    EXPECT_GT(colours_of(window->camera()->picture(window->camera()->size())), 200u) << "the picture is not blank";

    const QPointF place = place_of_a_cell();
    const CellInfo expected = window->camera()->cell_at(place).value();
    click_camera(place);
    const auto* info = window->findChild<QPlainTextEdit*>("cellInfo");
    EXPECT_EQ(info->toPlainText(), expected.text());
    EXPECT_TRUE(info->toPlainText().contains("PORO"));
    EXPECT_TRUE(info->isVisible());
    look_at("example_light");
    use_theme(Theme::Dark);
    look_at("example_dark");
}

TEST_F(WindowTest, ThePanelSlicesColoursAndStretches)
{
    ASSERT_TRUE(window->run("lodex create example name Example size 20+16+16"));
    settle();
    CameraView& camera = *window->camera();
    const std::size_t whole = camera.face_count();
    window->findChild<QCheckBox*>("sliceKOn")->setChecked(true);
    window->findChild<QSpinBox*>("sliceKFrom")->setValue(5);
    window->findChild<QSpinBox*>("sliceKTo")->setValue(5);
    settle();
    const CornerPointGrid* grid = find_grid("Example");
    EXPECT_EQ(camera.display(grid).filter.ranges[2], (std::vector<IndexRange>{{4, 4}}));
    EXPECT_NE(camera.face_count(), whole);
    window->findChild<QComboBox*>("displayColour")->setCurrentText("FACIES");
    look_at("slice_facies");
    window->findChild<QPushButton*>("displayAllCells")->click();
    settle();
    EXPECT_EQ(camera.face_count(), whole);
    window->findChild<QDoubleSpinBox*>("displayExaggeration")->setValue(7);
    EXPECT_EQ(camera.vertical_exaggeration(), 7);
    window->findChild<QCheckBox*>("displayOrthographic")->setChecked(true);
    EXPECT_TRUE(camera.orthographic());
}

TEST_F(WindowTest, APickFillsTheRowOfTheMergeDialogAndEscapeEndsTheTool)
{
    ASSERT_TRUE(window->run("lodex create example name Example size 20+16+16"));
    QWidget* dialog = window->open_dialog("mergeSections");
    dialog->findChild<QComboBox*>("direction_")->setCurrentIndex(0);
    settle();
    const QPointF place = place_of_a_cell();
    const auto expected = window->camera()->cell_at(place).value().index[0] + 1;
    auto* pick = dialog->findChild<QAbstractButton*>("pick_from_");
    ASSERT_NE(pick, nullptr);
    const auto* hint = window->findChild<QLabel*>("toolHint");
    pick->click();
    EXPECT_FALSE(hint->isHidden());
    EXPECT_TRUE(window->findChild<QAction*>("endTool")->isEnabled());
    click_camera({3, 3});
    EXPECT_FALSE(hint->isHidden()) << "the tool stays after a pick that hits nothing";
    click_camera(place);
    EXPECT_EQ(dialog->findChild<QSpinBox*>("from_")->value(), expected);
    EXPECT_TRUE(hint->isHidden());
    pick->click();
    EXPECT_FALSE(hint->isHidden());
    window->findChild<QAction*>("endTool")->trigger();
    EXPECT_TRUE(hint->isHidden());
    dialog->findChild<QPushButton*>("cancel_button")->click();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace
