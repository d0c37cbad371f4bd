#include "CameraTest.h"

#include <Lodex/gviews/Picking.h>
#include <Lodex/volumes/SGrid.h>
#include <Lodex/volumes/SGridSubset.h>

#include <QDialog>
#include <QWheelEvent>

#include <cmath>
#include <functional>
#include <map>
#include <random>
#include <set>

using namespace lodex;

namespace {

struct RayHit {
    double t = HUGE_VAL; // along the ray, 0 to 1
    std::int64_t cell = -1;
};

Point3 operator-(const Point3& a, const Point3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
double dot(const Point3& a, const Point3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
Point3 cross(const Point3& a, const Point3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

/// T. Möller and B. Trumbore, "Fast, minimum storage ray/triangle intersection", 1997.
double hit_triangle(const Point3& from, const Point3& way, const Point3& a, const Point3& b, const Point3& c)
{
    const Point3 u = b - a, v = c - a, p = cross(way, v);
    const double det = dot(u, p);
    if (det == 0)
        return HUGE_VAL;
    const Point3 s = from - a, q = cross(s, u);
    const double x = dot(s, p) / det, y = dot(way, q) / det, t = dot(v, q) / det;
    return x >= 0 && y >= 0 && x + y <= 1 && t >= 0 ? t : HUGE_VAL;
}

/// Nearest cells of all active ones along a ray, all six sides of each, without any index; cells as near as the nearest
/// one count too.
std::set<std::int64_t> cast_ray(const GridModel& model, const Point3& from, const Point3& to,
                                const std::function<bool(std::int64_t)>& shown)
{
    const Point3 way = to - from;
    std::vector<RayHit> hits;
    const auto [ni, nj, nk] = model.size;
    for (std::int64_t cell = 0; cell < model.cells(); ++cell) {
        if (!shown(cell))
            continue;
        const CellCorners corners = cell_corners(model, cell % ni, cell / ni % nj, cell / (ni * nj));
        for (int side = 0; side < 6; ++side) {
            const auto p = side_corners(corners, static_cast<CellSide>(side));
            // The shorter diagonal, as surfaces are split for drawing.
            const bool first = dot(p[2] - p[0], p[2] - p[0]) <= dot(p[3] - p[1], p[3] - p[1]);
            const double t =
                first ? std::min(hit_triangle(from, way, p[0], p[1], p[2]), hit_triangle(from, way, p[0], p[2], p[3]))
                      : std::min(hit_triangle(from, way, p[0], p[1], p[3]), hit_triangle(from, way, p[1], p[2], p[3]));
            if (t < HUGE_VAL)
                hits.push_back({t, cell});
        }
    }
    double nearest = HUGE_VAL;
    for (const RayHit& hit : hits)
        nearest = std::min(nearest, hit.t);
    std::set<std::int64_t> cells;
    const double tolerance = 2e-3 / std::sqrt(dot(way, way)); // two millimetres: what drawn points are exact to
    for (const RayHit& hit : hits) {
        if (hit.t <= nearest + tolerance)
            cells.insert(hit.cell);
    }
    return cells;
}

GridModel holed_box()
{
    GridModel model = make_box({12, 10, 8}, {100, 80, 15}, {450'000, 6'700'000, 1500});
    std::mt19937 random(5);
    for (auto& active : model.active)
        active = random() % 3 != 0;
    return model;
}

GridModel faulted_box(bool mirrored)
{
    GridModel model = make_box({12, 10, 8}, {100, 80, 15}, {1000, 2000, 1500});
    const auto [ni, nj, nk] = model.size;
    model.zcorn.visit_mutable([&, ni = ni, nj = nj](auto depths) {
        for (std::size_t n = 0; n < depths.size(); ++n) {
            const auto at = static_cast<std::int64_t>(n);
            const std::int64_t i = at % (2 * ni) / 2, j = at / (2 * ni) % (2 * nj) / 2;
            if (i >= 5)
                depths[n] += 22;
            if (j >= 4)
                depths[n] -= 37;
        }
    });
    model.coord.visit_mutable([&](auto coord) {
        for (std::size_t n = 0; n < coord.size(); n += 6) {
            coord[n + 3] += 60; // sloping pillars
            if (mirrored) {
                coord[n] = -coord[n];
                coord[n + 3] = -coord[n + 3];
            }
        }
    });
    return model;
}

class Tool : public Lodex::CameraToolAction {
public:
    explicit Tool(std::function<void()> pick) : pick_(std::move(pick)) {}
    void on_pick() override { pick_(); }
    [[nodiscard]] Lodex::CString hint() const override { return "Pick a cell"; }

private:
    std::function<void()> pick_;
};

struct PickingTest : CameraTest {
    /// Compares picks at random pixels with rays through the same pixels; returns how many hit.
    int compare(const CornerPointGrid& grid, int pixels, unsigned seed, const std::function<bool(std::int64_t)>& shown)
    {
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> x(0, view->width()), y(0, view->height());
        int hits = 0, wrong = 0;
        for (int n = 0; n < pixels; ++n) {
            const QPointF place(std::floor(x(random)) + 0.5, std::floor(y(random)) + 0.5);
            const auto picked = view->cell_at(place);
            const Point3 from = view->transform().to_real(view->transform().unproject(place, -1));
            const Point3 to = view->transform().to_real(view->transform().unproject(place, 1));
            const std::set<std::int64_t> expected = cast_ray(grid.model(), from, to, shown);
            hits += picked.has_value();
            const bool right = picked ? expected.contains(picked->cell) : expected.empty();
            wrong += !right;
            EXPECT_TRUE(right) << "pixel " << place.x() << " " << place.y() << ": picked "
                               << (picked ? picked->cell : -1) << ", the ray hits "
                               << (expected.empty() ? -1 : *expected.begin());
            if (wrong > 5)
                break;
        }
        return hits;
    }
    static std::function<bool(std::int64_t)> active(const CornerPointGrid& grid)
    {
        return [&grid](std::int64_t cell) { return grid.model().active[static_cast<std::size_t>(cell)] != 0; };
    }
};

} // namespace

TEST_F(PickingTest, AgreesWithRaysOnAHoledGrid)
{
    CornerPointGrid* grid = add_grid("Holes", holed_box());
    view->add_grid(grid);
    view->set_vertical_exaggeration(4);
    show();
    EXPECT_GT(compare(*grid, 1000, 1, active(*grid)), 250);
    view->set_orthographic(true);
    view->set_direction(70, -20);
    settle();
    EXPECT_GT(compare(*grid, 500, 2, active(*grid)), 100);
}

TEST_F(PickingTest, AgreesWithRaysOnFaultedGridsOfEitherHand)
{
    for (const bool mirrored : {false, true}) {
        SCOPED_TRACE(mirrored);
        CornerPointGrid* grid = add_grid(mirrored ? "Mirrored" : "Faulted", faulted_box(mirrored));
        EXPECT_EQ(handedness(grid->model()), mirrored ? -1 : 1);
        view->remove_all();
        view->add_grid(grid);
        view->set_vertical_exaggeration(3);
        view->fit();
        show();
        EXPECT_GT(compare(*grid, 1000, 3, active(*grid)), 200);
        view->set_direction(300, 55);
        settle();
        EXPECT_GT(compare(*grid, 500, 4, active(*grid)), 80);
    }
}

TEST_F(PickingTest, AgreesWithRaysUnderThresholdAndSlices)
{
    for (const bool mirrored : {false, true}) {
        SCOPED_TRACE(mirrored);
        GridModel model = faulted_box(mirrored);
        std::mt19937 random(12);
        PropertyData value{.name = "V",
                           .unit = {},
                           .values = std::vector<float>(model.active.size()),
                           .no_data = {},
                           .code_names = {}};
        for (float& number : std::get<std::vector<float>>(value.values))
            number = static_cast<float>(random() % 1000) / 1000;
        for (auto& active : model.active)
            active = random() % 8 != 0;
        model.properties.push_back(std::move(value));
        CornerPointGrid* grid = add_grid(mirrored ? "Mirrored" : "Faulted", std::move(model));
        CellFilter filter;
        filter.threshold = CellThreshold{"V", 0.4, {}, {}};
        filter.ranges[1] = {{2, 8}};
        view->remove_all();
        view->add_grid(grid, {.filter = filter});
        view->set_vertical_exaggeration(mirrored ? 6 : 3);
        view->set_direction(mirrored ? 130 : 230, 40);
        view->fit();
        show();
        const auto& values = std::get<std::vector<float>>(grid->model().find_property("V")->values);
        const auto shown = [&, on = active(*grid)](std::int64_t cell) {
            const std::int64_t j = cell / 12 % 10;
            return on(cell) && values[static_cast<std::size_t>(cell)] >= 0.4f && j >= 2 && j <= 8;
        };
        EXPECT_GT(compare(*grid, 1000, 13, shown), 150);
    }
}

TEST_F(PickingTest, AgreesWithRaysOnTheExampleFieldAndItsSlices)
{
    CornerPointGrid* grid = add_grid("Field", make_example({25, 20, 12}, 2));
    view->add_grid(grid);
    view->set_vertical_exaggeration(5);
    show();
    EXPECT_GT(compare(*grid, 300, 6, active(*grid)), 80);
    CellFilter filter;
    filter.ranges[0] = {{12, 12}};
    filter.ranges[2] = {{6, 6}};
    filter.slices = CellFilter::Slices::Fence;
    view->set_filter(grid, filter);
    settle();
    EXPECT_GT(compare(*grid, 300, 7,
                      [&, shown = active(*grid)](std::int64_t cell) {
                          return shown(cell) && (cell % 25 == 12 || cell / 500 == 6);
                      }),
              30);
    // While sections are painted only they can be picked.
    grid->style()->set_attribute("*sections", "1 2 1 10");
    grid->style()->update();
    settle();
    EXPECT_GT(compare(*grid, 300, 8,
                      [shown = active(*grid)](std::int64_t cell) { return shown(cell) && cell / 25 % 20 == 10; }),
              10);
}

TEST_F(PickingTest, ThePictureShowsTheCellThatIsPicked)
{
    // Every cell has a code of its own colour group: 0 to 6.
    GridModel model = holed_box();
    PropertyData code{.name = "CODE",
                      .unit = {},
                      .values = std::vector<std::int32_t>(model.active.size()),
                      .no_data = {},
                      .code_names = {}};
    std::mt19937 random(9);
    for (auto& value : std::get<std::vector<std::int32_t>>(code.values))
        value = static_cast<std::int32_t>(random() % 7);
    model.properties.push_back(std::move(code));
    CornerPointGrid* grid = add_grid("Codes", std::move(model));
    GridDisplay display;
    display.colour = ColourBy::of_property("CODE");
    display.cell_edges = display.outline = display.legend = false;
    view->add_grid(grid, display);
    view->set_axes_shown(false);
    view->set_vertical_exaggeration(4);
    show();
    const QImage image = view->picture(view->size());
    view->refresh_now();
    const QColor colours[7] = {QColor(0x56b4e9), QColor(0xe69f00), QColor(0x009e73), QColor(0xf0e442),
                               QColor(0x0072b2), QColor(0xd55e00), QColor(0xcc79a7)};
    int compared = 0, wrong = 0;
    for (int y = 20; y < image.height(); y += 11) {
        for (int x = 20; x < image.width() - 130; x += 13) {
            // Where the neighbouring pixels show another cell the edge decides.
            const auto cell = view->cell_at({x + 0.5, y + 0.5});
            bool edge = false;
            for (const QPointF& off : {QPointF(1.5, 0), QPointF(-1.5, 0), QPointF(0, 1.5), QPointF(0, -1.5)}) {
                const auto beside = view->cell_at(QPointF(x + 0.5, y + 0.5) + off);
                edge = edge || beside.has_value() != cell.has_value() || (cell && beside->cell != cell->cell);
            }
            if (edge || !cell)
                continue;
            ++compared;
            const auto expected = static_cast<std::size_t>(cell->values[0].number);
            std::size_t nearest = 0;
            for (std::size_t n = 1; n < 7; ++n) {
                // By hue and saturation: the light changes the rest.
                const auto distance = [&](std::size_t c) {
                    const QColor seen = image.pixelColor(x, y);
                    return hue_difference(seen, colours[c]) +
                           std::abs(seen.hsvSaturation() - colours[c].hsvSaturation()) / 4;
                };
                if (distance(n) < distance(nearest))
                    nearest = n;
            }
            wrong += nearest != expected;
        }
    }
    EXPECT_GT(compared, 300);
    EXPECT_LE(wrong, compared / 100);
}

TEST_F(PickingTest, AClickReachesToolAndSignal)
{
    CornerPointGrid* grid = add_grid("Field", make_example({25, 20, 12}, 2));
    view->add_grid(grid);
    view->set_vertical_exaggeration(5);
    show();
    std::vector<CellInfo> picked;
    int missed = 0;
    QStringList hints;
    QObject::connect(view.get(), &CameraView::cell_picked, [&](const CellInfo& info) { picked.push_back(info); });
    QObject::connect(view.get(), &CameraView::nothing_picked, [&] { ++missed; });
    QObject::connect(view.get(), &CameraView::hint_changed, [&](const QString& hint) { hints << hint; });

    auto* graphics = Lodex::GraphicLib::instance();
    long index = -1;
    const Lodex::SGrid* of = nullptr;
    int calls = 0;
    Lodex::Ref<Tool> tool(new Tool([&] {
        ++calls;
        const auto* selection = graphics->selection();
        ASSERT_NE(selection, nullptr);
        const auto* info = dynamic_cast<const Lodex::SGridPickInfo*>(selection->pick_info());
        of = info ? info->grid() : nullptr;
        index = info ? info->subset()->index() : -1;
        EXPECT_EQ(selection->object(), grid) << "beside its cells too";
        ASSERT_NE(selection->pick_info(), nullptr);
        ASSERT_NE(selection->pick_info()->point(), nullptr);
    }));
    graphics->set_tool(tool.get());
    EXPECT_EQ(view->cursor().shape(), Qt::CrossCursor);
    EXPECT_EQ(hints, QStringList{"Pick a cell"});

    const QPoint place = place_of(*grid, 12, 3, 0, CellSide::KMinus).toPoint();
    const std::int64_t cell = grid->model().cell_index(12, 3, 0);
    ASSERT_TRUE(grid->model().active[static_cast<std::size_t>(cell)]) << "the test needs an active cell there";
    QTest::mouseClick(view.get(), Qt::LeftButton, {}, place);
    ASSERT_EQ(picked.size(), 1u);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(index, cell);
    EXPECT_EQ(of, grid);
    const CellInfo& info = picked[0];
    EXPECT_EQ(info.index, (std::array<std::int64_t, 3>{12, 3, 0}));
    EXPECT_EQ(info.grid, "Field");
    EXPECT_EQ(info.unit, QString::fromStdString(grid->model().layers[0].unit));
    EXPECT_EQ(info.values.size(), grid->model().properties.size());
    EXPECT_EQ(info.values[0].property, "FACIES");
    EXPECT_TRUE((QStringList{"shale", "levee", "channel"}.contains(info.values[0].text)));
    const CellCorners corners = cell_corners(grid->model(), 12, 3, 0);
    for (std::size_t axis = 0; axis < 3; ++axis) {
        double least = HUGE_VAL, greatest = -HUGE_VAL;
        for (const Point3& corner : corners) {
            least = std::min(least, corner[axis]);
            greatest = std::max(greatest, corner[axis]);
        }
        EXPECT_GE(info.point[axis], least - 0.01) << "the exaggeration is taken off";
        EXPECT_LE(info.point[axis], greatest + 0.01);
    }
    EXPECT_TRUE(info.text().contains("I 13, J 4, K 1"));

    QTest::mouseClick(view.get(), Qt::LeftButton, {}, {3, 3});
    EXPECT_EQ(missed, 1);
    EXPECT_EQ(calls, 2) << "the tool hears of a click beside the grid";
    EXPECT_EQ(of, nullptr);
    EXPECT_EQ(graphics->tool(), tool.get()) << "a failed pick leaves the tool";
    bool empty_handed = false;
    Lodex::Ref<Tool> nothing_there(
        new Tool([&] { empty_handed = graphics->selection() && !graphics->selection()->object(); }));
    graphics->set_tool(nothing_there.get());
    view->set_display(grid, {.visible = false});
    view->pick_at(place);
    EXPECT_TRUE(empty_handed) << "nothing is shown";
    EXPECT_EQ(missed, 2);
    view->set_display(grid, {});
    graphics->set_tool(tool.get());
    hints.removeLast();
    settle();

    const double azimuth = view->azimuth();
    QTest::mousePress(view.get(), Qt::LeftButton, {}, place);
    QTest::mouseMove(view.get(), place + QPoint(30, 5));
    QMouseEvent move(QEvent::MouseMove, QPointF(place + QPoint(60, 10)),
                     view->mapToGlobal(QPointF(place + QPoint(60, 10))), Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(view.get(), &move);
    QTest::mouseRelease(view.get(), Qt::LeftButton, {}, place + QPoint(60, 10));
    EXPECT_NE(view->azimuth(), azimuth) << "dragging turns";
    EXPECT_EQ(calls, 2) << "and picks nothing";

    QTest::keyClick(view.get(), Qt::Key_Escape);
    EXPECT_EQ(graphics->tool(), nullptr);
    EXPECT_EQ(view->cursor().shape(), Qt::ArrowCursor);
    EXPECT_EQ(hints.last(), QString());
    EXPECT_EQ(tool->references(), 1);
}

TEST_F(PickingTest, AToolMayCloseTheView)
{
    CornerPointGrid* grid = add_grid("Field", make_example({10, 8, 6}, 2));
    view->add_grid(grid);
    show();
    Lodex::GraphicLib::instance()->set_tool(new Tool([this] { view.reset(); }));
    view->pick_at({450, 325});
    EXPECT_EQ(view, nullptr);
}

TEST_F(PickingTest, LegendAndKeys)
{
    CornerPointGrid* grid = add_grid("Field", make_example({25, 20, 12}, 2));
    view->add_grid(grid, {.visible = true, .colour = ColourBy::of_property("PORO")});
    show();
    int picks = 0;
    QObject::connect(view.get(), &CameraView::cell_picked, [&picks] { ++picks; });
    QObject::connect(view.get(), &CameraView::nothing_picked, [&picks] { ++picks; });
    const QPoint legend(view->width() - 30, 40);
    QTest::mouseClick(view.get(), Qt::LeftButton, {}, legend);
    EXPECT_EQ(picks, 0) << "the legend is no part of the scene";
    QTest::mouseDClick(view.get(), Qt::LeftButton, {}, legend);
    auto* dialog = view->findChild<QDialog*>("colour_legend_dialog");
    ASSERT_NE(dialog, nullptr);
    EXPECT_TRUE(dialog->isVisible());
    dialog->close();

    const double azimuth = view->azimuth(), elevation = view->elevation();
    QTest::keyClick(view.get(), Qt::Key_Left);
    QTest::keyClick(view.get(), Qt::Key_Up);
    EXPECT_GT(view->azimuth(), azimuth);
    EXPECT_GT(view->elevation(), elevation);
    view->set_direction(azimuth, 89);
    QTest::keyClick(view.get(), Qt::Key_Up);
    EXPECT_EQ(view->elevation(), 90) << "not over the top";

    // A wheel notch leaves the point under the cursor where it is.
    view->set_direction(azimuth, elevation);
    view->set_orthographic(true);
    settle();
    const QPointF place = place_of(*grid, 12, 3, 0, CellSide::KMinus),
                  other = place_of(*grid, 20, 3, 0, CellSide::KMinus);
    QWheelEvent wheel(place, view->mapToGlobal(place), {}, {0, 120}, Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase,
                      false);
    QApplication::sendEvent(view.get(), &wheel);
    settle();
    const QPointF now = place_of(*grid, 12, 3, 0, CellSide::KMinus),
                  other_now = place_of(*grid, 20, 3, 0, CellSide::KMinus);
    EXPECT_NEAR(now.x(), place.x(), 0.01);
    EXPECT_NEAR(now.y(), place.y(), 0.01);
    EXPECT_NEAR((other_now - now).x() / (other - place).x(), 1.2, 1e-6);
}
