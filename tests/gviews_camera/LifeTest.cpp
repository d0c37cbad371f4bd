// Views that are moved, hidden and closed in any order.

#include "CameraTest.h"

#include <QDockWidget>
#include <QMainWindow>

#include <random>

using namespace lodex;

namespace {

struct LifeTest : CameraTest {
    void SetUp() override
    {
        grid = add_grid("Field", make_example({20, 16, 10}, 1));
        view->add_grid(grid, {.colour = ColourBy::of_property("PORO")});
        view->set_vertical_exaggeration(5);
    }
    /// True when the field is in the picture that the window shows.
    static bool shows_field(CameraView& camera)
    {
        const QImage image = camera.grab().toImage();
        int coloured = 0;
        for (int y = 0; y < image.height(); y += 5) {
            for (int x = 0; x < image.width() * 3 / 4; x += 5)
                coloured += image.pixelColor(x, y).hsvSaturation() > 50;
        }
        return coloured > 100;
    }
    CornerPointGrid* grid = nullptr;
};

} // namespace

TEST_F(LifeTest, HiddenAndShownAgain)
{
    show();
    EXPECT_TRUE(shows_field(*view));
    for (int n = 0; n < 3; ++n) {
        view->hide();
        QTest::qWait(20);
        view->set_vertical_exaggeration(4 + n);
        view->show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(view.get()));
        settle();
        EXPECT_TRUE(shows_field(*view));
    }
}

TEST_F(LifeTest, MovesBetweenWindows)
{
    auto window = std::make_unique<QMainWindow>();
    auto other = std::make_unique<QMainWindow>();
    auto* dock = new QDockWidget("Camera", window.get());
    CameraView* camera = view.get();
    dock->setWidget(view.release());
    window->addDockWidget(Qt::LeftDockWidgetArea, dock);
    window->resize(800, 600);
    other->resize(700, 500);
    window->show();
    other->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
    QTest::qWait(100);
    EXPECT_TRUE(shows_field(*camera));
    dock->setFloating(true);
    QTest::qWait(100);
    EXPECT_TRUE(shows_field(*camera));
    dock->setFloating(false);
    QTest::qWait(100);
    EXPECT_TRUE(shows_field(*camera));
    other->setCentralWidget(camera);
    QTest::qWait(100);
    EXPECT_TRUE(shows_field(*camera));
    window.reset(); // where it came from
    camera->fit();
    QTest::qWait(100);
    EXPECT_TRUE(shows_field(*camera));
    camera->setParent(nullptr); // a window of its own
    camera->show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(camera));
    QTest::qWait(100);
    EXPECT_TRUE(shows_field(*camera));
    EXPECT_FALSE(camera->picture({300, 200}).isNull());
    other.reset();
    view.reset(camera);
}

TEST_F(LifeTest, ClosedBeforeAfterAndWithoutAPicture)
{
    for (const bool shown : {false, true}) {
        for (const bool pictured : {false, true}) {
            for (const bool grid_first : {false, true}) {
                auto camera = std::make_unique<CameraView>();
                CornerPointGrid* other = add_grid("Other", make_example({8, 8, 5}, 2));
                camera->add_grid(other);
                if (shown) {
                    camera->show();
                    ASSERT_TRUE(QTest::qWaitForWindowExposed(camera.get()));
                }
                if (pictured) {
                    EXPECT_FALSE(camera->picture({200, 150}).isNull());
                }
                if (grid_first) {
                    Lodex::GeobaseLib::instance()->destroy(other);
                    EXPECT_TRUE(camera->grids().empty());
                    QApplication::processEvents();
                    camera.reset();
                } else {
                    camera.reset();
                    Lodex::GeobaseLib::instance()->destroy(other);
                }
            }
        }
    }
}

TEST_F(LifeTest, GridsComeAndGoWhileItDraws)
{
    show();
    int changes = 0;
    QObject::connect(view.get(), &CameraView::grids_changed, [&changes] { ++changes; });
    for (int n = 0; n < 5; ++n) {
        CornerPointGrid* other = add_grid("Other", make_example({8, 8, 5}, 2));
        view->add_grid(other, {.colour = {ColourBy::Kind::Unit, {}}});
        settle();
        (void)view->cell_at({300, 300});
        if (n % 2)
            view->remove_grid(other);
        Lodex::GeobaseLib::instance()->destroy(other);
        settle();
        EXPECT_EQ(view->grids(), std::vector<CornerPointGrid*>{grid});
    }
    EXPECT_EQ(changes, 10);
    EXPECT_TRUE(shows_field(*view));
    Lodex::GeobaseLib::instance()->clear();
    settle();
    EXPECT_TRUE(view->grids().empty());
    EXPECT_FALSE(shows_field(*view));
}

TEST_F(LifeTest, PropertiesComeAndGo)
{
    show();
    grid->change(
        [](GridModel& model) { std::erase_if(model.properties, [](const auto& p) { return p.name == "PORO"; }); });
    settle();
    EXPECT_EQ(view->edit_legend(grid), nullptr) << "nothing to edit";
    grid->change([](GridModel& model) {
        model.properties.push_back({.name = "PORO",
                                    .unit = {},
                                    .values = std::vector<float>(static_cast<std::size_t>(model.cells()), 0.2f),
                                    .no_data = {},
                                    .code_names = {}});
    });
    settle();
    EXPECT_TRUE(shows_field(*view)) << "coloured by it again";
}

TEST_F(LifeTest, AnyOrderOfEverything)
{
    std::mt19937 random(11);
    QMainWindow window;
    window.resize(700, 500);
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    std::vector<std::unique_ptr<CameraView>> cameras;
    for (int step = 0; step < 120; ++step) {
        switch (random() % 8) {
        case 0:
            cameras.push_back(std::make_unique<CameraView>());
            cameras.back()->add_grid(grid, {.colour = ColourBy::of_property(random() % 2 ? "PORO" : "FACIES")});
            break;
        case 1:
            if (!cameras.empty())
                cameras.erase(cameras.begin() + static_cast<std::ptrdiff_t>(random() % cameras.size()));
            break;
        case 2:
            for (auto& camera : cameras)
                camera->setParent(random() % 2 ? &window : nullptr);
            break;
        case 3:
            for (auto& camera : cameras)
                camera->setVisible(random() % 2);
            break;
        case 4:
            grid->style()->set_attribute("*sections", "1 " + std::to_string(1 + random() % 3) + " 1 " +
                                                          std::to_string(random() % 12));
            grid->style()->update();
            break;
        case 5:
            for (auto& camera : cameras)
                (void)camera->cell_at({40, 30});
            break;
        case 6:
            if (!cameras.empty())
                (void)cameras.front()->picture({120, 90});
            break;
        default: QApplication::processEvents();
        }
        if (cameras.size() > 3)
            cameras.erase(cameras.begin());
    }
    for (auto& camera : cameras)
        camera->setParent(nullptr);
    SUCCEED();
}
