// Pictures of the example field: colours where they belong; kept in the pictures folder for people to look at.

#include "CameraTest.h"

#include <lodex/gviews/CellPalette.h>
#include <lodex/utils/CameraList.h>

#include <QElapsedTimer>

using namespace lodex;

namespace {

struct PictureTest : CameraTest {
    void SetUp() override
    {
        grid = add_grid("Field", make_example());
        GridDisplay display;
        display.colour = ColourBy::of_property("FACIES");
        view->add_grid(grid, display);
        view->set_vertical_exaggeration(5);
    }
    /// Colour of the picture where the middle of a cell's face is; the picture has the size of the view.
    QColor seen(const QImage& image, std::int64_t i, std::int64_t j, std::int64_t k, CellSide side)
    {
        return image.pixelColor(place_of(*grid, i, j, k, side).toPoint());
    }
    QImage picture_now()
    {
        QImage image = view->picture(view->size());
        view->refresh_now();
        return image;
    }
    CornerPointGrid* grid = nullptr;
};

QColor to_colour(const CellPalette::Rgb& rgb)
{
    return {rgb[0], rgb[1], rgb[2]};
}

} // namespace

TEST_F(PictureTest, FaciesHaveTheirColoursAndNames)
{
    show();
    const QImage image = picture_now();
    save(image, "camera_facies");
    const CellPalette palette(*grid, ColourBy::of_property("FACIES"));
    ASSERT_EQ(palette.entries().size(), 3u);
    EXPECT_EQ(palette.entries()[0].text, "shale");
    int compared = 0;
    for (std::int64_t i = 5; i < 45; i += 3) {
        for (std::int64_t j = 5; j < 18; j += 3) {
            const std::int64_t cell = grid->model().cell_index(i, j, 0);
            const auto info = view->cell_at(place_of(*grid, i, j, 0, CellSide::KMinus));
            if (!info || info->cell != cell)
                continue; // hidden
            ++compared;
            EXPECT_LE(hue_difference(seen(image, i, j, 0, CellSide::KMinus),
                                     to_colour(palette.of(static_cast<std::size_t>(cell)))),
                      12)
                << i << " " << j;
        }
    }
    EXPECT_GT(compared, 30);
    // The background is light and the legend's text dark on it.
    EXPECT_GT(image.pixelColor(5, 5).lightness(), 200);
}

TEST_F(PictureTest, AStyleChangeIsSeenAtOnce)
{
    view->set_colour(grid, ColourBy::of_property("PORO"));
    show();
    save(picture_now(), "camera_poro");
    Lodex::Style* style = grid->property_db()->find("PORO")->style();
    style->set_attribute("low_clip", "10");
    style->set_attribute("high_clip", "20");
    bool drawn = false;
    QObject::connect(view.get(), &CameraView::drawn, [&drawn] { drawn = true; });
    style->update();
    EXPECT_TRUE(QTest::qWaitFor([&drawn] { return drawn; }));
    const CellPalette palette(*grid, ColourBy::of_property("PORO"));
    const QImage image = view->grab().toImage();
    EXPECT_LE(hue_difference(seen(image, 10, 5, 0, CellSide::KMinus), palette.scale_colour(0)), 15)
        << "all below the range";
    save(image, "camera_poro_below_range");
    style->set_attribute("outside_clips", "grey");
    style->update();
    const QColor grey = seen(picture_now(), 10, 5, 0, CellSide::KMinus);
    EXPECT_LT(grey.hsvSaturation(), 25);
}

TEST_F(PictureTest, PaintedSectionsShowAtOnceInTheirColour)
{
    show();
    for (const int axis : {1, 2, 3}) {
        const std::array<std::int64_t, 3> section{20, 15, 10};
        const std::int64_t index = section[static_cast<std::size_t>(axis - 1)];
        grid->style()->set_attribute("*sections", "4 " + std::to_string(axis) + " 1 " + std::to_string(index) + " " +
                                                      std::to_string(axis) + " 1 " + std::to_string(index + 1) + " " +
                                                      std::to_string(axis % 3 + 1) + " 0 0 " +
                                                      std::to_string((axis + 1) % 3 + 1) + " 0 0");
        grid->style()->update();
        EXPECT_EQ(update_all_cameras(), 1);
        settle();
        const std::array<CellSide, 3> towards_eye{CellSide::IMinus, CellSide::JMinus, CellSide::KMinus};
        std::array<std::int64_t, 3> at{30, 12, 20};
        at[static_cast<std::size_t>(axis - 1)] = index;
        const QImage image = picture_now();
        save(image, ("camera_sections_" + std::to_string(axis)).c_str());
        const std::array<QColor, 3> base{QColor(240, 110, 40), QColor(44, 150, 95), QColor(170, 70, 170)};
        EXPECT_LE(hue_difference(seen(image, at[0], at[1], at[2], towards_eye[static_cast<std::size_t>(axis - 1)]),
                                 base[static_cast<std::size_t>(axis - 1)]),
                  15);
        const std::size_t around = view->face_count();
        EXPECT_LT(around, 20'000u) << "the rest is not drawn";
    }
    grid->style()->set_attribute("*sections", " 3 1 0 0 2 0 0 3 0 0");
    grid->style()->update();
    settle();
    const CellPalette palette(*grid, ColourBy::of_property("FACIES"));
    EXPECT_LE(hue_difference(seen(picture_now(), 30, 12, 0, CellSide::KMinus),
                             to_colour(palette.of(static_cast<std::size_t>(grid->model().cell_index(30, 12, 0))))),
              12)
        << "nothing painted: the field as before";
}

TEST_F(PictureTest, VeryManyPaintedSectionsAreColoursOfTheSurface)
{
    GridDisplay display = view->display(grid);
    display.faces_at_ease = 1;
    view->set_display(grid, display);
    show();
    const std::size_t faces = view->face_count();
    std::string sections;
    int count = 0;
    for (int first = 0; first < 50; first += 3) {
        for (const int section : {first, std::min(first + 2, 49)}) {
            sections += " 1 1 " + std::to_string(section);
            ++count;
        }
    }
    grid->style()->set_attribute("*sections", std::to_string(count) + sections + " 2 0 0 3 0 0");
    grid->style()->update();
    settle();
    const QImage image = picture_now();
    save(image, "camera_sections_many");
    EXPECT_EQ(view->face_count(), faces);
    for (const int i : {21, 23}) {
        EXPECT_LE(hue_difference(seen(image, i, 12, 0, CellSide::KMinus), QColor(240, 110, 40)), 15) << i;
    }
    EXPECT_LT(seen(image, 22, 12, 0, CellSide::KMinus).hsvSaturation(), 25) << "grey between them";
    grid->style()->set_attribute("*sections", " 3 1 0 0 2 0 0 3 0 0");
    grid->style()->update();
    settle();
    const CellPalette palette(*grid, ColourBy::of_property("FACIES"));
    EXPECT_LE(hue_difference(seen(picture_now(), 22, 12, 0, CellSide::KMinus),
                             to_colour(palette.of(static_cast<std::size_t>(grid->model().cell_index(22, 12, 0))))),
              12)
        << "as before";
}

TEST_F(PictureTest, LinesRoundSmallCellsFade)
{
    view->set_colour(grid, {});
    show();
    // From above the cells are wide and have lines; the same cells far away have none.
    view->set_standard_view(CameraView::StandardView::Top);
    const auto darkest = [&](const QImage& image, const QPointF& from, const QPointF& to) {
        int least = 255;
        for (int n = 0; n <= 200; ++n)
            least = std::min(least, image.pixelColor((from + (to - from) * n / 200.0).toPoint()).lightness());
        return least;
    };
    const auto between = [&](const QImage& image) {
        const QPointF a = place_of(*grid, 25, 20, 0, CellSide::KMinus);
        const QPointF b = place_of(*grid, 26, 20, 0, CellSide::KMinus);
        return image.pixelColor(a.toPoint()).lightness() - darkest(image, a, b);
    };
    EXPECT_GT(between(picture_now()), 40) << "a line between two cells";
    const QImage small = view->picture({130, 110});
    save(small, "camera_small");
    int dark = 0, seen_cells = 0;
    for (int y = 0; y < small.height(); ++y) {
        for (int x = 0; x < small.width(); ++x) {
            const QColor colour = small.pixelColor(x, y);
            seen_cells += colour.hsvSaturation() > 20;
            dark += colour.hsvSaturation() > 20 && colour.lightness() < 60;
        }
    }
    EXPECT_GT(seen_cells, 300);
    EXPECT_LT(dark, seen_cells / 10) << "the colour of the cells, not of their lines";
}

TEST_F(PictureTest, StandardViewsHaveTheRightHand)
{
    show();
    view->set_orthographic(true);
    const auto place = [&](double x, double y, double depth) {
        return view->transform().project(view->transform().to_drawn({x, y, depth})).value();
    };
    struct Expectation {
        CameraView::StandardView view;
        QPointF east, north, down; // sign of the direction on the screen
    };
    const std::vector<Expectation> expectations{{CameraView::StandardView::Top, {1, 0}, {0, -1}, {0, 0}},
                                                {CameraView::StandardView::Bottom, {1, 0}, {0, 1}, {0, 0}},
                                                {CameraView::StandardView::South, {1, 0}, {0, 0}, {0, 1}},
                                                {CameraView::StandardView::North, {-1, 0}, {0, 0}, {0, 1}},
                                                {CameraView::StandardView::East, {0, 0}, {1, 0}, {0, 1}},
                                                {CameraView::StandardView::West, {0, 0}, {-1, 0}, {0, 1}}};
    for (const Expectation& expected : expectations) {
        view->set_standard_view(expected.view);
        view->refresh_now();
        const QPointF root = place(1500, 1200, 2100);
        const auto sign = [](double number) { return std::abs(number) < 1e-6 ? 0 : number > 0 ? 1 : -1; };
        const auto check = [&](const QPointF& end, const QPointF& wanted, const char* what) {
            EXPECT_EQ(sign((end - root).x()), wanted.x()) << what << " in view " << int(expected.view);
            EXPECT_EQ(sign((end - root).y()), wanted.y()) << what << " in view " << int(expected.view);
        };
        check(place(1600, 1200, 2100), expected.east, "east");
        check(place(1500, 1300, 2100), expected.north, "north");
        check(place(1500, 1200, 2120), expected.down, "down");
        // Everything is within the frame.
        for (const double x : {0.0, 3000.0}) {
            for (const double y : {0.0, 2400.0})
                EXPECT_TRUE(QRectF(QPointF(), QSizeF(view->size())).contains(place(x, y, 2100)));
        }
    }
    view->set_standard_view(CameraView::StandardView::Top);
    view->set_colour(grid, {ColourBy::Kind::Depth, {}});
    save(picture_now(), "camera_top");
    view->set_standard_view(CameraView::StandardView::South);
    view->set_colour(grid, {ColourBy::Kind::Unit, {}});
    save(picture_now(), "camera_south");
}

TEST_F(PictureTest, DarkThemeTakesADarkBackground)
{
    QPalette dark;
    dark.setColor(QPalette::Base, QColor(32, 34, 38));
    dark.setColor(QPalette::Window, QColor(45, 47, 51));
    dark.setColor(QPalette::WindowText, QColor(230, 230, 230));
    view->set_colour(grid, ColourBy::of_property("PERMX"));
    show();
    view->setPalette(dark);
    const QImage image = picture_now();
    save(image, "camera_dark");
    EXPECT_LT(image.pixelColor(5, 5).lightness(), 80);
    EXPECT_LT(image.pixelColor(5, image.height() - 5).lightness(), 80);
}

TEST_F(PictureTest, AnySizeAndAlsoUnseen)
{
    const QImage unseen = view->picture({640, 480});
    ASSERT_EQ(unseen.size(), QSize(640, 480)) << "a view that was never shown";
    const QColor middle = unseen.pixelColor(300, 240);
    EXPECT_GT(middle.hsvSaturation(), 60) << "the field is in the picture";
    save(unseen, "camera_unseen");
    show();
    view->set_colour(grid, ColourBy::of_property("PERMX"));
    const QImage large = view->picture({2600, 1700});
    ASSERT_EQ(large.size(), QSize(2600, 1700));
    save(large, "camera_large");
    EXPECT_EQ(view->picture({1, 1}).size(), QSize(1, 1));
    EXPECT_TRUE(view->picture({200'000, 10}).isNull());
    EXPECT_TRUE(view->picture({0, 10}).isNull());
    settle();
    EXPECT_EQ(view->transform().size, QSizeF(view->size())) << "the view itself is as before";

    const QString path = picture_folder() + "/camera_saved.png";
    QFile::remove(path);
    QString reason;
    EXPECT_TRUE(view->save_picture(path, {500, 400}, &reason)) << reason.toStdString();
    EXPECT_EQ(QImage(path).size(), QSize(500, 400));
    EXPECT_FALSE(view->save_picture("/no/such/folder/picture.png", {500, 400}, &reason));
    EXPECT_FALSE(reason.isEmpty());
}

TEST_F(PictureTest, SlicesThresholdAndTwoGrids)
{
    GridDisplay display = view->display(grid);
    display.filter.slices = CellFilter::Slices::Fence;
    display.filter.ranges = {{{{10, 10}, {35, 35}}, {{20, 20}}, {}}};
    view->set_display(grid, display);
    show();
    save(picture_now(), "camera_fence");
    EXPECT_GT(view->face_count(), 4000u);
    display.filter = {};
    display.filter.threshold = CellThreshold{"FACIES", {}, {}, {2}};
    view->set_display(grid, display);
    save(picture_now(), "camera_threshold");
    GridModel box = make_box({10, 8, 5}, {300, 300, 10}, {0, 0, 2350});
    CornerPointGrid* below = add_grid("A box below", std::move(box));
    GridDisplay depth;
    depth.colour = {ColourBy::Kind::Depth, {}};
    view->add_grid(below, depth);
    view->set_display(grid, {.colour = ColourBy::of_property("PERMX")});
    view->fit();
    save(picture_now(), "camera_two_grids");
    EXPECT_EQ(view->grids(), (std::vector<CornerPointGrid*>{grid, below}));
}

TEST_F(PictureTest, TheNearestFacesOfARaggedPartMakeItsPicture)
{
    CellFilter filter;
    filter.threshold = CellThreshold{"PERMX", 1.0, {}, {}};
    GridDisplay display{.colour = ColourBy::of_property("PERMX"), .filter = filter, .outline = false};
    display.cell_edges = false;
    view->set_display(grid, display);
    show();
    const QImage all = picture_now();
    const std::size_t faces = view->face_count();
    save(all, "camera_ragged_all");
    display.faces_at_ease = 1;
    view->set_display(grid, display);
    const QImage near = picture_now();
    save(near, "camera_ragged_near");
    EXPECT_LT(view->face_count(), faces);
    int drawn = 0, different = 0;
    for (int y = 0; y < all.height(); ++y) {
        for (int x = 0; x < all.width(); ++x) {
            drawn += all.pixelColor(x, y).hsvSaturation() > 60;
            different += all.pixel(x, y) != near.pixel(x, y);
        }
    }
    EXPECT_GT(drawn, 30'000);
    EXPECT_LT(different, drawn / 40) << "deep inside, where something is missing";
    RecordProperty("different_pixels", different);
}

TEST_F(PictureTest, ManyRequestsMakeOnePicture)
{
    show();
    int pictures = 0;
    QObject::connect(view.get(), &CameraView::drawn, [&pictures] { ++pictures; });
    for (int n = 0; n < 100; ++n)
        view->request_update();
    QTest::qWait(400);
    EXPECT_GE(pictures, 1);
    EXPECT_LE(pictures, 2);
}
