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
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include <gtest/gtest.h>

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
