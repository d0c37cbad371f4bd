#include "CameraScene.h"

#include "lodex/geobase/ProjectUnits.h"
#include "lodex/volumes/CornerPointGrid.h"

#include <Lodex/qtools/QtText.h>

#include <QCoreApplication>

#include <vtkCamera.h>
#include <vtkCellPicker.h>
#include <vtkLight.h>
#include <vtkMatrix4x4.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace lodex {

namespace {

constexpr double view_angle = 30; // degrees, of the perspective
constexpr double least_exaggeration = 0.01, greatest_exaggeration = 1000;
constexpr double zoom_limit = 1e6; // ratio of the scene's extent and what is seen

double radians(double degrees)
{
    return degrees * std::numbers::pi / 180;
}

double dot(const Point3& a, const Point3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

void shift(Point3& point, const Point3& direction, double distance)
{
    for (std::size_t axis = 0; axis < 3; ++axis)
        point[axis] += direction[axis] * distance;
}

double extent(const DrawnBox& box)
{
    double sum = 0;
    for (std::size_t axis = 0; axis < 3; ++axis)
        sum += std::pow(box.greatest[axis] - box.least[axis], 2);
    return box.empty ? 1 : std::max(std::sqrt(sum), 1e-6);
}

} // namespace

CameraScene::CameraScene(std::function<void()> changed, std::function<void()> listed)
    : changed_(std::move(changed)), listed_(std::move(listed))
{
    // One light from the upper left of the eye models the shapes, a weak one from the lower right keeps the other sides
    // readable.
    renderer_->AutomaticLightCreationOff();
    const auto add_light = [this](double x, double y, double intensity) {
        vtkNew<vtkLight> light;
        light->SetLightTypeToCameraLight();
        light->SetPosition(x, y, 1);
        light->SetFocalPoint(0, 0, 0);
        light->SetIntensity(intensity);
        renderer_->AddLight(light);
    };
    add_light(-0.35, 0.55, 0.85);
    add_light(0.8, -0.4, 0.45);
    renderer_->SetGradientBackground(true);
    renderer_->SetBackgroundAlpha(1);
    set_colours(text_, background_);
}

CameraScene::~CameraScene() = default;

void CameraScene::add(CornerPointGrid& grid, const GridDisplay& display)
{
    if (find(&grid))
        return;
    if (items_.empty()) {
        origin_ = drawing_origin(grid.model());
        fit_wanted_ = true;
    }
    items_.push_back(std::make_unique<GridItem>(grid, display, *renderer_, changed_, [this, &grid] { remove(grid); }));
    items_.back()->set_line_colour(text_.redF(), text_.greenF(), text_.blueF());
    listed_();
    changed_();
}

void CameraScene::remove(const CornerPointGrid& grid)
{
    if (std::erase_if(items_, [&grid](const auto& item) { return &item->grid() == &grid; }) == 0)
        return;
    listed_();
    changed_();
}

GridItem* CameraScene::find(const CornerPointGrid* grid) const
{
    const auto found = std::ranges::find_if(items_, [grid](const auto& item) { return &item->grid() == grid; });
    return found == items_.end() ? nullptr : found->get();
}

void CameraScene::read_painted()
{
    for (const auto& item : items_)
        item->read_painted();
}

void CameraScene::set_colours(const QColor& text, const QColor& background)
{
    text_ = text;
    background_ = background;
    // A little lighter above than below, so that up is seen.
    const bool dark = background.lightness() < 128;
    const QColor top = dark ? background.lighter(135) : background, base = dark ? background : background.darker(108);
    renderer_->SetBackground(base.redF(), base.greenF(), base.blueF());
    renderer_->SetBackground2(top.redF(), top.greenF(), top.blueF());
    for (const auto& item : items_)
        item->set_line_colour(text.redF(), text.greenF(), text.blueF());
    changed_();
}

void CameraScene::set_exaggeration(double factor)
{
    if (!(factor > 0))
        return;
    factor = std::clamp(factor, least_exaggeration, greatest_exaggeration);
    if (factor == exaggeration_)
        return;
    focus_[2] *= factor / exaggeration_;
    exaggeration_ = factor;
    changed_();
}

void CameraScene::set_parallel(bool parallel)
{
    parallel_ = parallel;
    changed_();
}

void CameraScene::set_axes(bool shown)
{
    axes_ = shown;
    changed_();
}

void CameraScene::set_direction(double azimuth, double elevation)
{
    azimuth_ = std::remainder(azimuth, 360.0);
    if (azimuth_ < 0)
        azimuth_ += 360;
    elevation_ = std::clamp(elevation, -90.0, 90.0);
    changed_();
}

std::array<Point3, 3> CameraScene::directions() const
{
    const double a = radians(azimuth_), e = radians(elevation_);
    const Point3 back{std::cos(e) * std::sin(a), std::cos(e) * std::cos(a), std::sin(e)};
    const Point3 up{-std::sin(e) * std::sin(a), -std::sin(e) * std::cos(a), std::cos(e)};
    const Point3 right{up[1] * back[2] - up[2] * back[1], up[2] * back[0] - up[0] * back[2],
                       up[0] * back[1] - up[1] * back[0]};
    return {right, up, back};
}

QPointF CameraScene::free_middle(const QSizeF& size) const
{
    return {(margins_.left + size.width() - margins_.right) / 2, (margins_.top + size.height() - margins_.bottom) / 2};
}

void CameraScene::pan(double right, double down)
{
    if (view_.size.height() <= 0)
        return;
    const double unit = height_ / view_.size.height();
    const auto [x, y, z] = directions();
    shift(focus_, x, -right * unit);
    shift(focus_, y, down * unit);
    changed_();
}

void CameraScene::zoom(double factor, const QPointF& position)
{
    if (!(factor > 0) || view_.size.height() <= 0)
        return;
    const double size = extent(drawn_box());
    const double height = std::clamp(height_ / factor, size / zoom_limit, size * 100);
    const QPointF offset = position - free_middle(view_.size);
    const double moved = (height_ - height) / view_.size.height();
    const auto [x, y, z] = directions();
    shift(focus_, x, offset.x() * moved);
    shift(focus_, y, -offset.y() * moved);
    height_ = height;
    changed_();
}

void CameraScene::centre_on(const Point3& real)
{
    focus_ = {real[0] - origin_[0], real[1] - origin_[1], (origin_[2] - real[2]) * exaggeration_};
    changed_();
}

std::optional<CameraPlace> CameraScene::place() const
{
    if (items_.empty() || fit_wanted_)
        return std::nullopt;
    return CameraPlace{
        .focus = {focus_[0] + origin_[0], focus_[1] + origin_[1], origin_[2] - focus_[2] / exaggeration_},
        .height = height_,
        .azimuth = azimuth_,
        .elevation = elevation_};
}

void CameraScene::set_place(const CameraPlace& place)
{
    const bool sensible = std::ranges::all_of(place.focus, [](double x) { return std::isfinite(x); }) &&
                          std::isfinite(place.height) && place.height > 0 && std::isfinite(place.azimuth) &&
                          std::isfinite(place.elevation);
    if (!sensible)
        return;
    fit_wanted_ = false;
    height_ = place.height;
    set_direction(place.azimuth, place.elevation);
    centre_on(place.focus);
}

DrawnBox CameraScene::drawn_box() const
{
    DrawnBox box;
    for (const auto& item : items_) {
        const DrawnBox& real = item->real_box();
        if (!item->display().visible || real.empty)
            continue;
        for (const Point3& end : {real.least, real.greatest})
            box.add({end[0] - origin_[0], end[1] - origin_[1], (origin_[2] - end[2]) * exaggeration_});
    }
    return box;
}

void CameraScene::fit_now(const QSizeF& size, const QFont& font)
{
    const DrawnBox box = drawn_box();
    if (box.empty)
        return; // when something is to be seen
    fit_wanted_ = false;
    focus_ = box.centre();
    view_.size = size;
    margins_ = overlay_margins(overlay(font));
    const double width = std::max(size.width() - margins_.left - margins_.right, size.width() / 4);
    const double height = std::max(size.height() - margins_.top - margins_.bottom, size.height() / 4);
    const auto [x, y, z] = directions();
    height_ = extent(box) * size.height() / height;
    // The box as it looks is brought into the free room. In perspective its size changes with the distance again, but
    // less each time.
    for (int round = 0; round < 12; ++round) {
        const double distance = height_ / 2 / std::tan(radians(view_angle / 2)), unit = height_ / size.height();
        QPointF least(HUGE_VAL, HUGE_VAL), greatest(-HUGE_VAL, -HUGE_VAL);
        for (std::size_t n = 0; n < 8; ++n) {
            Point3 corner = box.corner(n);
            shift(corner, focus_, -1);
            const double nearer = parallel_ ? 1 : distance / std::max(distance - dot(corner, z), distance / 20);
            const QPointF place(dot(corner, x) / unit * nearer, dot(corner, y) / unit * nearer);
            least = {std::min(least.x(), place.x()), std::min(least.y(), place.y())};
            greatest = {std::max(greatest.x(), place.x()), std::max(greatest.y(), place.y())};
        }
        const QPointF extents = greatest - least, middle = (greatest + least) / 2;
        shift(focus_, x, middle.x() * unit);
        shift(focus_, y, middle.y() * unit);
        height_ = std::max(height_ * std::max(extents.x() / width, extents.y() / height), extent(box) * 1e-3);
    }
}

void CameraScene::place_camera(const QSizeF& size)
{
    const auto [x, y, z] = directions();
    vtkCamera* const camera = renderer_->GetActiveCamera();
    const double distance = height_ / 2 / std::tan(radians(view_angle / 2));
    Point3 eye = focus_;
    shift(eye, z, distance);
    camera->SetParallelProjection(parallel_);
    camera->SetViewAngle(view_angle);
    camera->SetParallelScale(height_ / 2);
    camera->SetFocalPoint(focus_.data());
    camera->SetPosition(eye.data());
    camera->SetViewUp(y.data());
    // The focus stands in the middle of what legends and labels leave free.
    const QPointF middle = free_middle(size);
    camera->SetWindowCenter(1 - 2 * middle.x() / size.width(), 2 * middle.y() / size.height() - 1);
    renderer_->ResetCameraClippingRange();

    view_.size = size;
    view_.parallel = parallel_;
    view_.eye = parallel_ ? z : eye;
    view_.origin = origin_;
    view_.exaggeration = exaggeration_;
    vtkMatrix4x4* const matrix = camera->GetCompositeProjectionTransformMatrix(size.width() / size.height(), -1, 1);
    std::copy_n(matrix->GetData(), 16, view_.matrix.begin());
    vtkMatrix4x4::Invert(view_.matrix.data(), view_.inverse.data());
}

void CameraScene::refresh(const QSizeF& size, const QFont& font)
{
    if (size.width() < 1 || size.height() < 1)
        return;
    for (const auto& item : items_)
        item->refresh(origin_, exaggeration_);
    view_.size = size;
    margins_ = overlay_margins(overlay(font));
    if (fit_wanted_)
        fit_now(size, font);
    place_camera(size);
    // A third of the disc round a grid stands for what it covers.
    const double pixels = size.height() / height_;
    for (const auto& item : items_) {
        const DrawnBox& box = item->real_box();
        const double radius = extent(box) / 2 * pixels;
        item->refresh_edges(std::numbers::pi * radius * radius / 3);
    }
}

Overlay CameraScene::overlay(const QFont& font) const
{
    Overlay result;
    result.view = view_;
    result.box = drawn_box();
    result.text = text_;
    result.background = background_;
    result.font = font;
    result.axes = axes_;
    result.triad = !items_.empty();
    for (const auto& item : items_) {
        if (!item->display().visible)
            continue;
        if (result.length_unit.isEmpty()) {
            const auto unit = length_unit_from_word(item->grid().header().frame.grid_units);
            result.length_unit = unit ? Lodex::to_qstring(measurement_unit(*unit).name()) : QString();
        }
        if (item->display().legend && !item->paints() && item->palette().has_legend())
            result.legends.push_back({&item->palette(), Lodex::to_qstring(item->grid().name())});
    }
    if (exaggeration_ != 1 && !items_.empty()) {
        result.note = QCoreApplication::translate("lodex::Overlay", "Vertical exaggeration %1")
                          .arg(QString::number(exaggeration_, 'g', 4));
    }
    return result;
}

Point3 CameraScene::point_at(const QPointF& position) const
{
    const Point3 from = view_.unproject(position, -1), to = view_.unproject(position, 1);
    const Point3 back = directions()[2];
    Point3 way = to, reach = focus_;
    shift(way, from, -1);
    shift(reach, from, -1);
    const double along = dot(way, back);
    Point3 point = from;
    shift(point, way, along == 0 ? 0 : dot(reach, back) / along);
    return view_.to_real(point);
}

std::optional<CameraScene::Hit> CameraScene::pick(const QPointF& position)
{
    if (view_.size.isEmpty())
        return std::nullopt;
    Point3 from = view_.unproject(position, -1), to = view_.unproject(position, 1);
    vtkNew<vtkCellPicker> picker;
    picker->SetTolerance(0);
    picker->PickFromListOn();
    for (const auto& item : items_) {
        if (FaceActor* faces = item->pickable()) {
            picker->AddPickList(faces->actor());
            picker->AddLocator(faces->locator());
        }
    }
    if (!picker->Pick3DPoint(from.data(), to.data(), renderer_) || picker->GetCellId() < 0)
        return std::nullopt;
    for (const auto& item : items_) {
        FaceActor* const faces = item->pickable();
        if (!faces || faces->actor() != picker->GetActor())
            continue;
        Point3 drawn;
        picker->GetPickPosition(drawn.data());
        return Hit{&item->grid(), item->cell_of_face(static_cast<std::size_t>(picker->GetCellId())),
                   view_.to_real(drawn)};
    }
    return std::nullopt;
}

} // namespace lodex
