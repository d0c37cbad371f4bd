#include "WorkbenchTest.h"

#include "apps/workbench/SectionPanel.h"
#include "lodex/utils/CameraList.h"

#include <Lodex/geobase/Property.h>

#include <QApplication>
#include <QComboBox>
#include <QHelpEvent>
#include <QImage>
#include <QSignalSpy>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QToolTip>

#include <cstdlib>

using namespace lodex;

namespace {

/// What the palette says of a cell.
QColor colour_of(SectionView& view, std::int64_t cell)
{
    const auto [red, green, blue] = view.colours().of(static_cast<std::size_t>(cell));
    return {red, green, blue};
}

class SectionViewTest : public WorkbenchTest {
protected:
    SectionViewTest()
    {
        add_numbers(grid, "NUMBER");
        view.resize(700, 500);
        view.set_grid(grid);
        view.set_section(SectionAxis::J, 1);
        view.set_colouring({ColourBy::Kind::Property, "NUMBER"});
    }

    /// Colour in the middle of a cell of the J section 1 (0-based).
    QColor middle_of(long i, long k)
    {
        const QPointF place = view.to_widget(100.0 * static_cast<double>(i) + 50, 1505 + 10.0 * static_cast<double>(k));
        return view.grab().toImage().pixelColor(place.toPoint());
    }
    static void paint(const std::string& sections)
    {
        ASSERT_TRUE(run("lodex on Style Box set attribute *sections value \"" + sections +
                        "\";lodex on Style Box update ;lodex update all cameras"));
    }

    CornerPointGrid* grid = add_box("Box"); // 4 x 3 x 5
    SectionView view;
};

TEST_F(SectionViewTest, FollowsTheColoursOfTheProperty)
{
    const QColor before = middle_of(1, 1);
    Lodex::Style* style = grid->property_db()->find("NUMBER")->style();
    style->set_attribute("colormap", "grey");
    style->set_attribute("high_clip", "1"); // lower than what the cell has: the end of the scale
    style->update();
    EXPECT_NE(before, QColor(0xf4f4f4));
    EXPECT_EQ(middle_of(1, 1), QColor(0xf4f4f4));
    run("lodex on SGrid \"" + grid->name().str() + "\" destroy_property NUMBER");
    EXPECT_EQ(middle_of(1, 1), QColor(CellPalette::plain[0], CellPalette::plain[1], CellPalette::plain[2]));
}

TEST_F(SectionViewTest, DrawsEachCellInItsColour)
{
    ASSERT_EQ(view.section().cells.size(), 20u);
    for (long k = 0; k < 5; ++k) {
        for (long i = 0; i < 4; ++i) {
            const std::int64_t cell = i + 4 * (1 + 3 * k);
            EXPECT_EQ(middle_of(i, k), colour_of(view, cell)) << i << ' ' << k;
            EXPECT_EQ(
                view.cell_at(view.to_widget(100.0 * static_cast<double>(i) + 50, 1505 + 10.0 * static_cast<double>(k))),
                cell);
        }
    }
    EXPECT_EQ(view.cell_at({1, 1}), std::nullopt);
}

TEST_F(SectionViewTest, FillsTheViewWhateverItsSize)
{
    // 400 across and 50 down: the exaggeration is what makes both fill their side.
    const QPointF first = view.to_widget(0, 1500), last = view.to_widget(400, 1550);
    EXPECT_GT(last.x() - first.x(), 400);
    EXPECT_GT(last.y() - first.y(), 300);
    EXPECT_NEAR(view.vertical_exaggeration(), ((last.y() - first.y()) / 50) / ((last.x() - first.x()) / 400), 1e-9);
    view.resize(400, 900);
    EXPECT_GT(view.to_widget(400, 1550).y(), 700);
}

TEST_F(SectionViewTest, PaintedSectionsOfTheStyleStandOutAtOnce)
{
    (void)view.grab();
    EXPECT_TRUE(view.painted_cells().empty());
    const QColor before = middle_of(2, 4), painted_before = middle_of(2, 1);
    paint(" 4 3 1 1 3 1 2 1 0 0 2 0 0");
    std::vector<std::int64_t> expected;
    for (const std::int64_t k : {1, 2}) {
        for (std::int64_t i = 0; i < 4; ++i)
            expected.push_back(i + 4 * (1 + 3 * k));
    }
    EXPECT_EQ(view.painted_cells(), expected);
    EXPECT_EQ(middle_of(2, 1), painted_before) << "a painted cell keeps its colour";
    EXPECT_NE(middle_of(2, 4), before) << "the others fade";

    // An edge of a painted section is drawn in the colour of the highlight.
    const QPointF edge = view.to_widget(250, 1510);
    const QImage picture = view.grab().toImage();
    bool found = false;
    for (int dy = -1; dy <= 1; ++dy) {
        const QColor colour = picture.pixelColor(edge.toPoint() + QPoint(0, dy));
        found |= colour.red() > 200 && colour.green() < 150 && colour.blue() < 110;
    }
    EXPECT_TRUE(found);

    paint(" 3 1 0 0 2 0 0 3 0 0");
    EXPECT_TRUE(view.painted_cells().empty());
    EXPECT_EQ(middle_of(2, 4), before);
}

TEST_F(SectionViewTest, PaintedSectionsOfTheOtherAxes)
{
    paint(" 3 1 1 3 2 0 0 3 0 0");
    EXPECT_EQ(view.painted_cells(), (std::vector<std::int64_t>{7, 19, 31, 43, 55})) << "I 4 of J 2 in each layer";
    paint(" 1 2 1 1");
    EXPECT_EQ(view.painted_cells().size(), 20u) << "the shown J itself";
    paint(" 1 2 1 0");
    EXPECT_TRUE(view.painted_cells().empty()) << "another J";
}

TEST_F(SectionViewTest, IsACameraAsLongAsItLives)
{
    const int cameras = update_all_cameras();
    {
        const SectionView other;
        EXPECT_EQ(update_all_cameras(), cameras + 1);
    }
    EXPECT_EQ(update_all_cameras(), cameras);
}

TEST_F(SectionViewTest, CameraUpdateReadsTheStyleAnew)
{
    grid->style()->set_attribute("*sections", " 1 3 1 0"); // nobody is told
    EXPECT_TRUE(view.painted_cells().empty());
    ASSERT_TRUE(run("lodex update all cameras"));
    EXPECT_EQ(view.painted_cells().size(), 4u);
}

TEST_F(SectionViewTest, FollowsTheGrid)
{
    EXPECT_EQ(middle_of(0, 0), colour_of(view, 4));
    const QColor before = middle_of(0, 4);
    ASSERT_TRUE(run("lodex on SGrid Box fill_property NUMBER value 3"));
    EXPECT_EQ(middle_of(0, 4), colour_of(view, 52));
    EXPECT_NE(middle_of(0, 4), before);

    ASSERT_TRUE(run("lodex destroy objects Box"));
    EXPECT_EQ(view.grid(), nullptr);
    EXPECT_TRUE(view.section().cells.empty());
    EXPECT_FALSE(view.grab().isNull());
    EXPECT_EQ(view.cell_at({350, 250}), std::nullopt);
}

TEST_F(SectionViewTest, TellsTheCellUnderTheCursor)
{
    const QPoint place = view.to_widget(350, 1515).toPoint();
    QHelpEvent help(QEvent::ToolTip, place, view.mapToGlobal(place));
    view.show();
    QApplication::sendEvent(&view, &help);
    EXPECT_EQ(QToolTip::text(), "Cell I 4, J 2, K 2\nNUMBER: 19");
    QToolTip::hideText();
}

TEST_F(SectionViewTest, BothThemesAreReadable)
{
    for (const auto& [base, text] :
         {std::pair{QColor(Qt::white), QColor(Qt::black)}, std::pair{QColor(30, 30, 30), QColor(230, 230, 230)}}) {
        QPalette palette = view.palette();
        palette.setColor(QPalette::Base, base);
        palette.setColor(QPalette::Text, text);
        view.setPalette(palette);
        const QImage picture = view.grab().toImage();
        EXPECT_EQ(picture.pixelColor(2, 2), base);
        int written = 0; // pixels of the title
        for (int y = 0; y < 30; ++y) {
            for (int x = 0; x < picture.width(); ++x)
                written += std::abs(picture.pixelColor(x, y).lightness() - text.lightness()) < 40;
        }
        EXPECT_GT(written, 200);
    }
}

TEST_F(SectionViewTest, SectionsWithoutCellsSaySo)
{
    CornerPointGrid* dead = add_grid("Dead", [] {
        GridModel model = make_box({2, 2, 2}, {1, 1, 1});
        std::ranges::fill(model.active, std::uint8_t{0});
        return model;
    }());
    view.set_grid(dead);
    const QImage with_grid = view.grab().toImage();
    view.set_grid(nullptr);
    EXPECT_NE(with_grid, view.grab().toImage());
    view.set_grid(grid);
    view.set_section(SectionAxis::I, 99);
    EXPECT_EQ(view.grab().toImage(), with_grid) << "the same words as for a section of inactive cells";
}

TEST_F(SectionViewTest, FlatCellsAreDrawn)
{
    CornerPointGrid* flat = add_grid("Flat", [] {
        GridModel model = make_box({3, 1, 1}, {1, 1, 1});
        model.zcorn.visit_mutable([](auto depths) { std::ranges::fill(depths, 10.0f); });
        return model;
    }());
    view.set_grid(flat);
    view.set_section(SectionAxis::J, 0);
    EXPECT_EQ(view.section().cells.size(), 3u);
    EXPECT_FALSE(view.grab().isNull());
    EXPECT_TRUE(std::isfinite(view.to_widget(1, 10).y()));
}

TEST_F(SectionViewTest, MoreCellsThanPixels)
{
    CornerPointGrid* large = add_box("Large", {2000, 1, 500});
    add_numbers(large, "NUMBER");
    view.set_grid(large);
    view.set_section(SectionAxis::J, 0);
    const QImage picture = view.grab().toImage();
    // Numbers rise with depth: what is drawn at any place is the colour of a cell within a pixel of it.
    for (const double part : {0.05, 0.5, 0.95}) {
        const QPointF place = view.to_widget(100000, 1500 + 5000 * part);
        const QColor drawn = picture.pixelColor(place.toPoint()),
                     asked = colour_of(view, 1000 + 2000 * static_cast<std::int64_t>(500 * part));
        EXPECT_LT(std::abs(drawn.red() - asked.red()) + std::abs(drawn.green() - asked.green()) +
                      std::abs(drawn.blue() - asked.blue()),
                  12);
    }
}

class SectionPanelTest : public WorkbenchTest {
protected:
    template <class Widget> Widget* part(const char* name) const { return panel.findChild<Widget*>(name); }
    QStringList colourings() const
    {
        QStringList texts;
        for (int n = 0; n < part<QComboBox>("colourBy")->count(); ++n)
            texts.append(part<QComboBox>("colourBy")->itemText(n));
        return texts;
    }

    SectionPanel panel;
};

TEST_F(SectionPanelTest, ShowsTheMiddleAndAContinuousProperty)
{
    CornerPointGrid* grid = add_box("Box", {9, 7, 3});
    grid->change([](GridModel& model) {
        PropertyData codes;
        codes.name = "CODE";
        codes.values = std::vector<std::int32_t>(189, 1);
        model.properties.push_back(std::move(codes));
        model.layers = {{.unit = "A", .nb_k_cells = 3}};
    });
    add_numbers(grid, "NUMBER");
    EXPECT_FALSE(part<QSlider>("sectionSlider")->isEnabled());
    panel.set_grid(grid);
    EXPECT_TRUE(part<QSlider>("sectionSlider")->isEnabled());
    EXPECT_EQ(part<QSpinBox>("sectionNumber")->value(), 4);
    EXPECT_EQ(part<QSpinBox>("sectionNumber")->maximum(), 7);
    EXPECT_EQ(colourings(), QStringList({"CODE", "NUMBER", "unit", "one colour"}));
    EXPECT_EQ(part<QComboBox>("colourBy")->currentText(), "NUMBER");
    EXPECT_EQ(panel.view()->section().cells.front().cell, 9 * 3);
}

TEST_F(SectionPanelTest, SliderAndNumberMoveTogetherToBothEnds)
{
    panel.set_grid(add_box("Box", {9, 7, 3}));
    auto* slider = part<QSlider>("sectionSlider");
    auto* number = part<QSpinBox>("sectionNumber");
    slider->setValue(1);
    EXPECT_EQ(number->value(), 1);
    EXPECT_EQ(panel.view()->section().cells.front().cell, 0);
    number->setValue(7);
    EXPECT_EQ(slider->value(), 7);
    EXPECT_EQ(panel.view()->section().cells.front().cell, 9 * 6);
    slider->setFocus();
    QTest::keyClick(slider, Qt::Key_Left);
    EXPECT_EQ(number->value(), 6);
    part<QComboBox>("sectionAxis")->setCurrentIndex(1);
    EXPECT_EQ(number->maximum(), 9);
    EXPECT_EQ(number->value(), 5);
    EXPECT_EQ(panel.view()->section().cells.front().cell, 4);
    part<QComboBox>("sectionAxis")->setCurrentIndex(0);
    EXPECT_EQ(number->value(), 6) << "each direction remembers its section";
}

TEST_F(SectionPanelTest, KeepsSectionAndPropertyOverGridsThatLackThem)
{
    CornerPointGrid* large = add_box("Large", {9, 9, 3});
    CornerPointGrid* small = add_box("Small", {2, 2, 2});
    add_numbers(large, "A");
    add_numbers(large, "B");
    panel.set_grid(large);
    auto* colour_by = part<QComboBox>("colourBy");
    colour_by->setCurrentIndex(1);
    emit colour_by->activated(1); // as when the user chooses
    part<QSpinBox>("sectionNumber")->setValue(8);
    panel.set_grid(small);
    EXPECT_EQ(part<QSpinBox>("sectionNumber")->value(), 1) << "the middle, since there is no section 8";
    EXPECT_EQ(colour_by->currentText(), "one colour");
    panel.set_grid(large);
    EXPECT_EQ(part<QSpinBox>("sectionNumber")->value(), 8);
    EXPECT_EQ(colour_by->currentText(), "B");
}

TEST_F(SectionPanelTest, FollowsThePropertiesOfTheGrid)
{
    CornerPointGrid* grid = add_box("Box");
    panel.set_grid(grid);
    EXPECT_EQ(colourings(), QStringList({"one colour"}));
    ASSERT_TRUE(run("lodex on SGrid Box fill_property PORO value 0.2"));
    EXPECT_EQ(colourings(), QStringList({"PORO", "one colour"}));
    EXPECT_EQ(part<QComboBox>("colourBy")->currentText(), "PORO");
    ASSERT_TRUE(run("lodex destroy objects Box"));
    EXPECT_TRUE(colourings().isEmpty());
    EXPECT_FALSE(part<QComboBox>("colourBy")->isEnabled());
}

} // namespace
