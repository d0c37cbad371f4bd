// What a camera does where nothing can be drawn, and its dialog.

#include <lodex/gviews/CameraView.h>
#include <lodex/gviews/CellPalette.h>
#include <lodex/gviews/ColourLegendDialog.h>
#include <lodex/gviews/Overlay.h>
#include <lodex/gviews/faces/GridFaces.h>
#include <lodex/utils/CameraList.h>
#include <lodex/volumes/CornerPointGrid.h>
#include <lodex/volumes/model/Create.h>

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Style.h>

#include <MessageList.h>
#include <Pictures.h>

#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QFontMetricsF>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>

using namespace lodex;

namespace {

struct OffscreenCamera : testing::Test {
    OffscreenCamera() { Lodex::GeobaseLib::instance()->clear(); }
    ~OffscreenCamera() override { Lodex::GeobaseLib::instance()->clear(); }
    CornerPointGrid* grid = nullptr;
    void SetUp() override { grid = add_grid("Field", make_example({20, 16, 10}, 1)); }
};

struct LegendDialog : OffscreenCamera {
    void SetUp() override
    {
        OffscreenCamera::SetUp();
        style = grid->property_db()->find("PERMX")->style();
        dialog = std::make_unique<ColourLegendDialog>(*grid, "PERMX");
    }
    template <class Widget> Widget* child(const char* name)
    {
        auto* found = dialog->findChild<Widget*>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    Lodex::Style* style = nullptr;
    std::unique_ptr<ColourLegendDialog> dialog;
};

} // namespace

TEST_F(OffscreenCamera, APlainWidgetStandsInItsPlace)
{
    CameraView view;
    EXPECT_FALSE(view.can_draw());
    EXPECT_NE(view.findChild<QLabel*>("camera_placeholder"), nullptr);
    view.resize(600, 400);
    view.show();
    view.add_grid(grid, {.visible = true, .colour = ColourBy::of_property("PORO")});
    EXPECT_TRUE(view.picture({100, 100}).isNull());
    QString reason;
    EXPECT_FALSE(view.save_picture("never.png", {100, 100}, &reason));
    EXPECT_FALSE(reason.isEmpty());
    EXPECT_EQ(update_all_cameras(), 1);
    view.refresh_now();
    EXPECT_GT(view.face_count(), 500u);
    const auto cell = view.cell_at({290, 210});
    ASSERT_TRUE(cell) << "picking needs no picture";
    EXPECT_EQ(cell->grid, "Field");
    EXPECT_FALSE(view.cell_at({1, 1}));
}

TEST_F(OffscreenCamera, PaintedSectionsFollowTheStyle)
{
    CameraView view;
    view.resize(600, 400);
    view.add_grid(grid);
    view.refresh_now();
    const std::size_t all = view.face_count();
    MessageList messages;
    grid->style()->set_attribute("*sections", " 3 3 1 4 3 1 99 1 0 0");
    view.refresh_now();
    EXPECT_EQ(view.face_count(), all) << "not before the update";
    grid->style()->update();
    view.refresh_now();
    SectionSets layer;
    layer[2] = {4};
    EXPECT_EQ(view.face_count(), visible_faces(grid->model(), ShownCells(grid->model(), layer)).size());
    ASSERT_EQ(messages.of(Lodex::LogLevel::Warning).size(), 1u) << "one section lies outside";
    EXPECT_NE(messages.of(Lodex::LogLevel::Warning)[0].find("1\n"), std::string::npos);

    grid->style()->set_attribute("*sections", "1 1 1 0");
    EXPECT_EQ(update_all_cameras(), 1) << "reads the style by itself";
    view.refresh_now();
    SectionSets column;
    column[0] = {0};
    EXPECT_EQ(view.face_count(), visible_faces(grid->model(), ShownCells(grid->model(), column)).size());

    GridDisplay display = view.display(grid);
    display.painted_sections = false;
    view.set_display(grid, display);
    view.refresh_now();
    EXPECT_EQ(view.face_count(), all);
    EXPECT_EQ(messages.of(Lodex::LogLevel::Warning).size(), 1u) << "not said again";
}

TEST_F(OffscreenCamera, VeryManyPaintedSectionsColourTheSurface)
{
    CameraView view;
    view.resize(600, 400);
    GridDisplay display;
    display.faces_at_ease = 1; // as on a grid of many millions of cells
    view.add_grid(grid, display);
    view.refresh_now();
    const std::size_t all = view.face_count();
    const auto place = QPointF(290, 210);
    const auto before = view.cell_at(place);
    ASSERT_TRUE(before);
    const auto paint = [&](const std::string& text) {
        grid->style()->set_attribute("*sections", text);
        grid->style()->update();
        view.refresh_now();
    };
    paint("8 3 1 0 3 1 2 3 1 3 3 1 5 3 1 6 3 1 8 1 0 0 2 0 0");
    EXPECT_EQ(view.face_count(), all) << "the faces that were there";
    EXPECT_EQ(view.cell_at(place)->cell, before->cell) << "what is not painted is drawn too";
    paint("1 3 1 4");
    EXPECT_LT(view.face_count(), all) << "one section stands alone";
    std::string whole = "10";
    for (int k = 0; k < 10; ++k)
        whole += " 3 1 " + std::to_string(k);
    paint(whole);
    EXPECT_EQ(view.face_count(), all);
    display.filter.ranges[0] = {{3, 5}};
    view.set_display(grid, display);
    view.refresh_now();
    EXPECT_EQ(view.face_count(), all) << "slices do not count while sections are painted";
    paint(" 3 1 0 0 2 0 0 3 0 0");
    EXPECT_EQ(view.face_count(), visible_faces(grid->model(), ShownCells(grid->model(), display.filter)).size());
    display.filter = {};
    view.set_display(grid, display);
    view.refresh_now();
    EXPECT_EQ(view.face_count(), all);
}

TEST_F(OffscreenCamera, ARaggedThresholdIsBounded)
{
    CellFilter filter;
    filter.threshold = CellThreshold{"FACIES", {}, {}, {0}};
    const std::size_t every = visible_faces(grid->model(), ShownCells(grid->model(), filter)).size();
    const std::size_t surface = visible_faces(grid->model(), ShownCells(grid->model(), CellFilter())).size();
    ASSERT_GT(every, surface + surface / 2) << "the test needs a ragged property";
    CameraView view;
    view.resize(600, 400);
    view.add_grid(grid, {.filter = filter});
    view.refresh_now();
    EXPECT_EQ(view.face_count(), every) << "few enough";
    view.set_display(grid, {.filter = filter, .faces_at_ease = 1});
    view.refresh_now();
    EXPECT_LT(view.face_count(), every);
    EXPECT_GT(view.face_count(), surface / 4);
    const auto cell = view.cell_at({290, 210});
    if (cell) {
        EXPECT_EQ(cell->values[0].number, 0) << "only what the filter lets through";
    }
}

TEST_F(OffscreenCamera, FollowsThresholdWhenValuesChange)
{
    CameraView view;
    view.resize(600, 400);
    CellFilter filter;
    filter.threshold = CellThreshold{"PORO", 100.0, {}, {}};
    GridDisplay display;
    display.filter = filter;
    view.add_grid(grid, display);
    view.refresh_now();
    EXPECT_EQ(view.face_count(), 0u);
    grid->change([](GridModel& model) {
        for (PropertyData& property : model.properties) {
            if (property.name == "PORO")
                std::get<std::vector<float>>(property.values)[static_cast<std::size_t>(model.cell_index(10, 8, 5))] =
                    200;
        }
    });
    view.refresh_now();
    EXPECT_EQ(view.face_count(), 6u);
}

TEST_F(OffscreenCamera, CellInfoNamesEverything)
{
    grid->change([](GridModel& model) {
        model.regions = {{"north", std::vector<std::uint8_t>(static_cast<std::size_t>(model.cells()), 1), false}};
        model.properties.push_back({.name = "NTG",
                                    .unit = "frac",
                                    .values = std::vector<float>(static_cast<std::size_t>(model.cells()), -1),
                                    .no_data = -1.0,
                                    .code_names = {}});
    });
    const std::int64_t cell = grid->model().cell_index(19, 15, 9);
    const CellInfo info = cell_info(*grid, cell, {1, 2, 3});
    EXPECT_EQ(info.index, (std::array<std::int64_t, 3>{19, 15, 9}));
    EXPECT_EQ(info.unit, QString::fromStdString(grid->model().layers.back().unit));
    EXPECT_EQ(info.regions, QStringList{"north"});
    EXPECT_EQ(info.values.back().text, "undefined");
    EXPECT_TRUE(std::isnan(info.values.back().number));
    EXPECT_TRUE(info.text().contains("I 20, J 16, K 10"));
    EXPECT_TRUE(info.text().contains("north"));
}

TEST_F(LegendDialog, EveryFieldSaysWhatItDoes)
{
    for (const char* name : {"colour_map", "automatic_range", "low_clip", "high_clip", "scale_function", "grey_outside",
                             "ok", "cancel", "apply", "reset"}) {
        auto* field = child<QWidget>(name);
        ASSERT_NE(field, nullptr);
        EXPECT_FALSE(field->toolTip().isEmpty()) << name;
    }
    EXPECT_EQ(child<QComboBox>("colour_map")->count(), static_cast<int>(Lodex::Colormap::names().size()));
    EXPECT_TRUE(child<QCheckBox>("automatic_range")->isChecked());
    EXPECT_FALSE(child<QLineEdit>("low_clip")->isEnabled());
    dialog->show();
    dialog->grab().save(picture_folder() + "/colour_legend_dialog.png");
}

TEST_F(LegendDialog, AppliesToTheStyle)
{
    child<QComboBox>("colour_map")->setCurrentText("inferno");
    child<QCheckBox>("automatic_range")->setChecked(false);
    child<QLineEdit>("low_clip")->setText("0.5");
    child<QLineEdit>("high_clip")->setText("1e3");
    child<QComboBox>("scale_function")->setCurrentIndex(2);
    child<QPushButton>("apply")->click();
    EXPECT_EQ(style->attribute("colormap").str(), "inferno");
    EXPECT_EQ(style->attribute("low_clip").str(), "0.5");
    EXPECT_EQ(style->attribute("high_clip").str(), "1000");
    EXPECT_EQ(style->attribute("scale_function").str(), "log");
    const CellPalette palette(*grid, ColourBy::of_property("PERMX"));
    EXPECT_TRUE(palette.logarithmic());
    EXPECT_EQ(palette.low(), 0.5);
    EXPECT_NEAR(palette.place_of(std::sqrt(500.0)), 0.5, 1e-12);

    child<QLineEdit>("low_clip")->setText("-1");
    EXPECT_FALSE(child<QPushButton>("ok")->isEnabled()) << "no logarithm of that";
    EXPECT_FALSE(child<QLabel>("message")->text().isEmpty());
    child<QLineEdit>("low_clip")->setText("abc");
    EXPECT_FALSE(child<QPushButton>("apply")->isEnabled());
    EXPECT_FALSE(dialog->apply());
    EXPECT_EQ(style->attribute("low_clip").str(), "0.5");

    child<QPushButton>("reset")->click();
    EXPECT_TRUE(child<QPushButton>("ok")->isEnabled());
    child<QPushButton>("apply")->click();
    EXPECT_EQ(style->attribute("low_clip").str(), "");
    EXPECT_EQ(style->attribute("scale_function").str(), "");
}

TEST_F(LegendDialog, CancelTakesBack)
{
    style->set_attribute("low_clip", "1");
    style->set_attribute("high_clip", "2");
    dialog = std::make_unique<ColourLegendDialog>(*grid, "PERMX");
    EXPECT_EQ(child<QLineEdit>("low_clip")->text(), "1");
    child<QLineEdit>("low_clip")->setText("1.5");
    child<QPushButton>("apply")->click();
    EXPECT_EQ(style->attribute("low_clip").str(), "1.5");
    child<QPushButton>("cancel")->click();
    EXPECT_EQ(style->attribute("low_clip").str(), "1");
}

TEST_F(LegendDialog, ARangeFromTheValuesReadsWell)
{
    const PropertyData* values = grid->model().find_property("PERMX");
    const ValueRange range = value_range(grid->model(), *values);
    const auto low = child<QLineEdit>("low_clip")->text(), high = child<QLineEdit>("high_clip")->text();
    EXPECT_LE(low.size(), 10) << low.toStdString();
    EXPECT_LE(high.size(), 7) << high.toStdString();
    EXPECT_LE(low.toDouble(), *range.min) << "leaves no value out";
    EXPECT_GE(high.toDouble(), *range.max);
    EXPECT_GT(low.toDouble(), 0.998 * *range.min);
    EXPECT_LT(high.toDouble(), 1.002 * *range.max);
    child<QPushButton>("apply")->click();
    EXPECT_EQ(style->attribute("low_clip").str(), "") << "the range still follows the values";
}

TEST_F(LegendDialog, EachCodeMayHaveItsColour)
{
    dialog = std::make_unique<ColourLegendDialog>(*grid, "FACIES");
    dialog->show();
    dialog->grab().save(picture_folder() + "/colour_legend_codes.png");
    Lodex::Style* facies = grid->property_db()->find("FACIES")->style();
    auto* codes = child<QListWidget>("codes");
    ASSERT_EQ(codes->count(), 3);
    EXPECT_TRUE(codes->item(0)->text().contains("shale"));
    EXPECT_FALSE(codes->toolTip().isEmpty());
    EXPECT_FALSE(child<QWidget>("colour_map")->isVisible()) << "no scale for codes";
    const CellPalette plain(*grid, ColourBy::of_property("FACIES"));
    codes->setCurrentRow(2);
    child<QPushButton>("change_colour")->click();
    auto* chooser = dialog->findChild<QColorDialog*>("colour_chooser");
    ASSERT_NE(chooser, nullptr);
    EXPECT_EQ(chooser->currentColor(), plain.entries()[2].colour);
    chooser->setCurrentColor(QColor(10, 200, 30));
    chooser->accept();
    EXPECT_EQ(facies->attribute("code_colours").str(), "") << "not before it is applied";
    child<QPushButton>("apply")->click();
    EXPECT_EQ(facies->attribute("code_colours").str(), "2 #0ac81e");
    const CellPalette own(*grid, ColourBy::of_property("FACIES"));
    EXPECT_EQ(own.entries()[2].colour, QColor(10, 200, 30));
    EXPECT_EQ(own.entries()[0].colour, plain.entries()[0].colour);
    const auto& values = std::get<std::vector<std::int32_t>>(grid->model().find_property("FACIES")->values);
    const auto cell = static_cast<std::size_t>(std::ranges::find(values, 2) - values.begin());
    EXPECT_EQ(own.of(cell), (CellPalette::Rgb{10, 200, 30}));

    child<QPushButton>("cancel")->click();
    EXPECT_EQ(facies->attribute("code_colours").str(), "") << "taken back";
    facies->set_attribute("code_colours", "0 #102030 x #000000 1 red 99999999999 #ffffff 1 #00000g 2 #FFFFFF 3");
    const ColourScale read = read_colour_scale(*facies);
    EXPECT_EQ(read.code_colours, (std::map<std::int32_t, std::uint32_t>{{0, 0x102030}, {2, 0xffffff}}))
        << "what does not read is passed over";
    dialog = std::make_unique<ColourLegendDialog>(*grid, "FACIES");
    child<QPushButton>("reset")->click();
    child<QPushButton>("ok")->click();
    EXPECT_EQ(facies->attribute("code_colours").str(), "");
}

TEST_F(LegendDialog, GoesWithItsPropertyOrGrid)
{
    dialog->show();
    grid->change(
        [](GridModel& model) { std::erase_if(model.properties, [](const auto& p) { return p.name == "PERMX"; }); });
    EXPECT_TRUE(dialog->isHidden());
    dialog = std::make_unique<ColourLegendDialog>(*grid, "PORO");
    dialog->show();
    Lodex::GeobaseLib::instance()->destroy(grid);
    EXPECT_TRUE(dialog->isHidden());
}

TEST(RoundTicks, AreRound)
{
    EXPECT_EQ(round_ticks(0, 10, 5), (std::vector<double>{0, 2, 4, 6, 8, 10}));
    EXPECT_EQ(round_ticks(1987, 2260, 5), (std::vector<double>{2000, 2100, 2200}));
    EXPECT_EQ(round_ticks(-1, 1, 4), (std::vector<double>{-1, -0.5, 0, 0.5, 1}));
    EXPECT_TRUE(round_ticks(3, 3, 5).empty());
}

TEST_F(OffscreenCamera, AScaleNamesItsEnds)
{
    Lodex::Style* style = grid->property_db()->find("PORO")->style();
    const auto texts = [&] {
        const CellPalette palette(*grid, ColourBy::of_property("PORO"));
        QStringList list;
        for (const auto& tick : palette.ticks())
            list << tick.text;
        EXPECT_EQ(palette.ticks().front().place, 0);
        EXPECT_EQ(palette.ticks().back().place, 1);
        return list;
    };
    const ValueRange range = value_range(grid->model(), *grid->model().find_property("PORO"));
    const QStringList whole = texts();
    EXPECT_NEAR(whole.front().toDouble(), *range.min, 1e-3 * *range.max);
    EXPECT_NEAR(whole.back().toDouble(), *range.max, 1e-3 * *range.max);
    style->set_attribute("low_clip", "0.1");
    style->set_attribute("high_clip", "0.2");
    EXPECT_EQ(texts(), QStringList({QString::fromUtf8("≤ 0.1"), "0.12", "0.14", "0.16", "0.18",
                                    QString::fromUtf8("≥ 0.2")}))
        << "values lie beyond both ends";
    style->set_attribute("low_clip", "0.001");
    style->set_attribute("high_clip", "10");
    style->set_attribute("scale_function", "log");
    EXPECT_EQ(texts(), QStringList({"0.001", "0.01", "0.1", "1", "10"}));
}

TEST_F(OffscreenCamera, AxisNumbersDoNotCrowd)
{
    for (const QSizeF size : {QSizeF(900, 650), QSizeF(420, 300), QSizeF(300, 700)}) {
        for (const double azimuth : {20.0, 115.0, 205.0, 300.0}) {
            CameraView view;
            view.resize(size.toSize());
            view.add_grid(grid);
            view.set_vertical_exaggeration(azimuth > 200 ? 1 : 5);
            view.set_direction(azimuth, 30);
            view.refresh_now();
            Overlay overlay;
            overlay.view = view.transform();
            for (const Point3& real : {Point3{0, 0, 1950}, Point3{3000, 2400, 2260}})
                overlay.box.add(overlay.view.to_drawn(real));
            const QFontMetricsF metrics(overlay.font);
            std::vector<std::pair<QPointF, QString>> zeros;
            for (const BoxAxis& axis : box_axes(overlay)) {
                int numbers = 0;
                for (const auto& [place, text] : axis.ticks) {
                    numbers += !text.isEmpty();
                    if (text == "0")
                        zeros.emplace_back(place, text);
                }
                if (std::hypot(axis.to.x() - axis.from.x(), axis.to.y() - axis.from.y()) > 6 * metrics.height()) {
                    // The number in the corner stands for X and Y.
                    EXPECT_GE(numbers, axis.axis == 2 ? 2 : 1) << "axis " << axis.axis << " seen from " << azimuth;
                }
            }
            if (zeros.size() > 1) {
                EXPECT_GT(std::hypot(zeros[0].first.x() - zeros[1].first.x(), zeros[0].first.y() - zeros[1].first.y()),
                          metrics.height())
                    << "said once in a corner";
            }
        }
    }
}

TEST_F(OffscreenCamera, LegendsShareTheHeight)
{
    const CellPalette scale(*grid, ColourBy::of_property("PORO")), codes(*grid, ColourBy::of_property("FACIES"));
    Overlay overlay;
    overlay.legends = {{&scale, "A"}, {&codes, "B"}, {&scale, "C"}};
    for (const QSizeF size : {QSizeF(900, 800), QSizeF(600, 420)}) {
        overlay.view.size = size;
        const auto places = legend_places(overlay);
        ASSERT_EQ(places.size(), 3u);
        for (std::size_t n = 0; n < 3; ++n) {
            EXPECT_TRUE(QRectF(QPointF(), size).contains(places[n])) << n;
            if (n > 0) {
                EXPECT_GE(places[n].top(), places[n - 1].bottom());
            }
        }
    }
}
