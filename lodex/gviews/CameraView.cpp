#include "CameraView.h"

#include "CameraCanvas.h"
#include "CameraScene.h"
#include "ColourLegendDialog.h"

#include "lodex/utils/CameraList.h"
#include "lodex/volumes/CornerPointGrid.h"

#include <Lodex/qtools/QtText.h>
#include <Lodex/volumes/SGridSubset.h>

#include <QApplication>
#include <QBuffer>
#include <QImageWriter>
#include <QKeyEvent>
#include <QLabel>
#include <QMouseEvent>
#include <QOpenGLContext>
#include <QPainter>
#include <QPointer>
#include <QSaveFile>
#include <QStyleHints>
#include <QSurfaceFormat>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace lodex {

namespace {

constexpr double degrees_per_pixel = 0.4;
constexpr double degrees_per_key = 5;
constexpr double zoom_per_pixel = 1.008;
constexpr double zoom_per_notch = 1.2;
constexpr double notch = 120;         // eighths of a degree that one step of a wheel is
constexpr int reference_height = 720; // pixels of a picture in which texts have the size that they have on the screen

bool platform_can_draw()
{
    const QString platform = QGuiApplication::platformName();
    if (platform == QLatin1String("offscreen") || platform == QLatin1String("minimal"))
        return false;
    QOpenGLContext probe;
    return probe.create();
}

/// What is drawn over the scene, antialiased; lets the mouse through.
class OverlayWidget : public QWidget {
public:
    OverlayWidget(const CameraScene& scene, QWidget* parent) : QWidget(parent), scene_(scene)
    {
        setObjectName(QStringLiteral("camera_overlay"));
        setAttribute(Qt::WA_TransparentForMouseEvents);
        setAttribute(Qt::WA_NoSystemBackground);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        if (scene_.view().size.isEmpty())
            return;
        QPainter painter(this);
        paint_overlay(painter, scene_.overlay(font()));
    }

private:
    const CameraScene& scene_;
};

class CellPick final : public Lodex::SGridPickInfo {
public:
    explicit CellPick(const CameraScene::Hit& hit) : hit_(hit), subset_(hit.grid, static_cast<long>(hit.cell)) {}
    [[nodiscard]] const std::array<double, 3>* point() const override { return &hit_.point; }
    [[nodiscard]] Lodex::SGrid* grid() const override { return hit_.grid; }
    [[nodiscard]] const Lodex::SGridSubset* subset() const override { return &subset_; }

private:
    CameraScene::Hit hit_;
    Lodex::SGridSubset subset_;
};

/// A click beside the cells.
class PointPick final : public Lodex::PickInfo {
public:
    explicit PointPick(const Point3& point) : point_(point) {}
    [[nodiscard]] const std::array<double, 3>* point() const override { return &point_; }

private:
    Point3 point_;
};

class Selection final : public Lodex::GraphicSelection {
public:
    explicit Selection(const CameraScene::Hit& hit) : object_(hit.grid), pick_(std::make_unique<CellPick>(hit)) {}
    Selection(Lodex::GObj* object, const Point3& point) : object_(object), pick_(std::make_unique<PointPick>(point)) {}
    [[nodiscard]] Lodex::GObj* object() const override { return object_; }
    [[nodiscard]] const Lodex::PickInfo* pick_info() const override { return pick_.get(); }

private:
    Lodex::GObj* object_;
    std::unique_ptr<Lodex::PickInfo> pick_;
};

} // namespace

struct CameraView::Impl {
    explicit Impl(CameraView& owner)
        : view(owner), scene([this] { request(); }, [this] { Q_EMIT view.grids_changed(); })
    {
    }

    void request()
    {
        if (canvas)
            canvas->request();
    }
    /// Brings the scene up to date for the widget as it is.
    void refresh() { scene.refresh(QSizeF(view.size()), view.font()); }

    CameraView& view;
    CameraCanvas* canvas = nullptr;
    OverlayWidget* overlay = nullptr;
    CameraScene scene;
    std::optional<std::pair<QSizeF, QFont>> picture; // while a picture of another size is made
    QPointF press, last;
    Qt::MouseButton button = Qt::NoButton;
    bool dragged = false, second_click = false;
};

void CameraView::prepare_application()
{
    QSurfaceFormat format;
    format.setRenderableType(QSurfaceFormat::OpenGL);
    format.setVersion(3, 2);
    format.setProfile(QSurfaceFormat::CoreProfile);
    format.setDepthBufferSize(24);
    format.setSamples(0);
    QSurfaceFormat::setDefaultFormat(format);
    // A view that moves to another window keeps its context.
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts);
}

CameraView::CameraView(QWidget* parent) : QWidget(parent), impl_(std::make_unique<Impl>(*this))
{
    setObjectName(QStringLiteral("camera"));
    setAccessibleName(tr("3D view of the grids"));
    setFocusPolicy(Qt::StrongFocus);
    setMinimumSize(120, 90);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    if (platform_can_draw()) {
        impl_->canvas = new CameraCanvas(
            impl_->scene.renderer(),
            [this](const QSize&) {
                const auto& picture = impl_->picture;
                impl_->scene.refresh(picture ? picture->first : QSizeF(size()), picture ? picture->second : font());
            },
            this);
        layout->addWidget(impl_->canvas);
        impl_->overlay = new OverlayWidget(impl_->scene, this);
        impl_->overlay->raise();
        connect(impl_->canvas, &CameraCanvas::drawn, this, [this] {
            impl_->overlay->update();
            Q_EMIT drawn();
        });
    } else {
        auto* notice = new QLabel(tr("This display cannot show the 3D view."));
        notice->setObjectName(QStringLiteral("camera_placeholder"));
        notice->setAlignment(Qt::AlignCenter);
        notice->setWordWrap(true);
        layout->addWidget(notice);
    }
    take_colours();
    add_camera(this);
    Lodex::GraphicLib::instance()->attach(this);
    tool_changed(Lodex::GraphicLib::instance()->tool());
}

CameraView::~CameraView()
{
    Lodex::GraphicLib::instance()->detach(this);
    remove_camera(this);
    // The context must be there while the scene lets go of what it keeps on the graphics side.
    delete impl_->canvas;
    impl_->canvas = nullptr;
    delete impl_->overlay;
    impl_->overlay = nullptr;
}

bool CameraView::can_draw() const
{
    return impl_->canvas != nullptr;
}

void CameraView::add_grid(CornerPointGrid* grid, const GridDisplay& display)
{
    if (grid)
        impl_->scene.add(*grid, display);
}

void CameraView::remove_grid(CornerPointGrid* grid)
{
    if (grid)
        impl_->scene.remove(*grid);
}

void CameraView::remove_all()
{
    for (CornerPointGrid* grid : grids())
        impl_->scene.remove(*grid);
}

std::vector<CornerPointGrid*> CameraView::grids() const
{
    std::vector<CornerPointGrid*> result;
    for (const auto& item : impl_->scene.items())
        result.push_back(&item->grid());
    return result;
}

bool CameraView::shows(const CornerPointGrid* grid) const
{
    return impl_->scene.find(grid) != nullptr;
}

GridDisplay CameraView::display(const CornerPointGrid* grid) const
{
    const GridItem* item = impl_->scene.find(grid);
    return item ? item->display() : GridDisplay();
}

void CameraView::set_display(CornerPointGrid* grid, const GridDisplay& display)
{
    if (GridItem* item = impl_->scene.find(grid))
        item->set_display(display);
}

void CameraView::set_colour(CornerPointGrid* grid, const ColourBy& colour)
{
    GridDisplay changed = display(grid);
    changed.colour = colour;
    set_display(grid, changed);
}

void CameraView::set_filter(CornerPointGrid* grid, const CellFilter& filter)
{
    GridDisplay changed = display(grid);
    changed.filter = filter;
    set_display(grid, changed);
}

double CameraView::vertical_exaggeration() const
{
    return impl_->scene.exaggeration();
}

void CameraView::set_vertical_exaggeration(double factor)
{
    impl_->scene.set_exaggeration(factor);
}

bool CameraView::orthographic() const
{
    return impl_->scene.parallel();
}

bool CameraView::axes_shown() const
{
    return impl_->scene.shows_axes();
}

double CameraView::azimuth() const
{
    return impl_->scene.azimuth();
}

double CameraView::elevation() const
{
    return impl_->scene.elevation();
}

void CameraView::set_direction(double azimuth, double elevation)
{
    impl_->scene.set_direction(azimuth, elevation);
}

std::optional<CameraPlace> CameraView::place() const
{
    return impl_->scene.place();
}

void CameraView::set_place(const CameraPlace& place)
{
    impl_->scene.set_place(place);
}

QImage CameraView::picture(const QSize& size)
{
    if (!impl_->canvas || size.isEmpty())
        return {};
    // Texts grow with the picture, so that they stay readable when it is printed or shown smaller.
    const double scale = std::max(1.0, static_cast<double>(std::min(size.width(), size.height())) / reference_height);
    const QSizeF logical(size.width() / scale, size.height() / scale);
    impl_->picture.emplace(logical, font());
    QImage image = impl_->canvas->picture(size);
    if (!image.isNull()) {
        QPainter painter(&image);
        painter.scale(scale, scale);
        paint_overlay(painter, impl_->scene.overlay(font()));
    }
    impl_->picture.reset();
    impl_->refresh();
    return image;
}

bool CameraView::save_picture(const QString& path, const QSize& size, QString* reason)
{
    const auto fail = [reason](const QString& why) {
        if (reason)
            *reason = why;
        return false;
    };
    const QImage image = picture(size);
    if (image.isNull())
        return fail(tr("The view cannot draw a picture of %1 by %2 pixels.").arg(size.width()).arg(size.height()));
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return fail(file.errorString());
    const QString ending = path.section(QLatin1Char('.'), -1).toLower();
    QImageWriter writer(&file, QImageWriter::supportedImageFormats().contains(ending.toLatin1()) ? ending.toLatin1()
                                                                                                 : QByteArray("png"));
    if (!writer.write(image))
        return fail(writer.errorString());
    return file.commit() || fail(file.errorString());
}

std::optional<CellInfo> CameraView::cell_at(const QPointF& position)
{
    impl_->refresh();
    const auto hit = impl_->scene.pick(position);
    return hit ? std::optional(cell_info(*hit->grid, hit->cell, hit->point)) : std::nullopt;
}

void CameraView::pick_at(const QPointF& position)
{
    impl_->refresh();
    const auto hit = impl_->scene.pick(position);
    std::optional<CellInfo> info;
    if (hit)
        info = cell_info(*hit->grid, hit->cell, hit->point);
    for (const auto& item : impl_->scene.items())
        item->mark_cell(hit && &item->grid() == hit->grid ? std::optional(hit->cell) : std::nullopt);
    // A tool may do anything, closing this view included.
    const QPointer<CameraView> self(this);
    const auto seen = std::ranges::find_if(impl_->scene.items(), [](const auto& item) {
        return item->display().visible;
    });
    Lodex::GObj* const object = seen == impl_->scene.items().end() ? nullptr : &(*seen)->grid();
    const Selection selection = hit ? Selection(*hit) : Selection(object, impl_->scene.point_at(position));
    Lodex::GraphicLib::instance()->pick(&selection);
    if (!self)
        return;
    if (info)
        Q_EMIT cell_picked(*info);
    else
        Q_EMIT nothing_picked();
}

const ViewTransform& CameraView::transform() const
{
    return impl_->scene.view();
}

std::size_t CameraView::face_count() const
{
    std::size_t count = 0;
    for (const auto& item : impl_->scene.items()) {
        if (item->display().visible)
            count += item->face_count();
    }
    return count;
}

void CameraView::refresh_now()
{
    impl_->refresh();
}

void CameraView::request_update()
{
    impl_->scene.read_painted();
    impl_->request();
}

void CameraView::fit()
{
    impl_->scene.fit();
    impl_->request();
}

void CameraView::set_standard_view(StandardView view)
{
    struct Direction {
        double azimuth, elevation;
    };
    const Direction direction = [view]() -> Direction {
        switch (view) {
        case StandardView::Top: return {180, 90};
        case StandardView::Bottom: return {180, -90};
        case StandardView::North: return {0, 0};
        case StandardView::South: return {180, 0};
        case StandardView::East: return {90, 0};
        case StandardView::West: return {270, 0};
        case StandardView::Oblique: break;
        }
        return {205, 32};
    }();
    impl_->scene.set_direction(direction.azimuth, direction.elevation);
    fit();
}

void CameraView::set_orthographic(bool on)
{
    impl_->scene.set_parallel(on);
}

void CameraView::set_axes_shown(bool on)
{
    impl_->scene.set_axes(on);
}

QWidget* CameraView::edit_legend(CornerPointGrid* grid)
{
    const GridItem* item = impl_->scene.find(grid);
    if (!item || item->display().colour.kind != ColourBy::Kind::Property ||
        !grid->header().find_property(item->display().colour.property))
        return nullptr;
    auto* dialog = new ColourLegendDialog(*grid, item->display().colour.property, this);
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->show();
    return dialog;
}

void CameraView::clear_mark()
{
    for (const auto& item : impl_->scene.items())
        item->mark_cell(std::nullopt);
}

void CameraView::tool_changed(Lodex::CameraToolAction* tool)
{
    if (tool)
        setCursor(Qt::CrossCursor);
    else
        unsetCursor();
    Q_EMIT hint_changed(hint());
}

QString CameraView::hint() const
{
    const Lodex::CameraToolAction* tool = Lodex::GraphicLib::instance()->tool();
    return tool ? Lodex::to_qstring(tool->hint()) : QString();
}

void CameraView::take_colours()
{
    impl_->scene.set_colours(palette().color(QPalette::WindowText), palette().color(QPalette::Base));
}

CornerPointGrid* CameraView::legend_at(const QPointF& position) const
{
    const Overlay overlay = impl_->scene.overlay(font());
    const std::vector<QRectF> places = legend_places(overlay);
    for (std::size_t n = 0; n < places.size(); ++n) {
        if (!places[n].contains(position))
            continue;
        for (const auto& item : impl_->scene.items()) {
            if (&item->palette() == overlay.legends[n].palette)
                return &item->grid();
        }
    }
    return nullptr;
}

void CameraView::mousePressEvent(QMouseEvent* event)
{
    if (impl_->button != Qt::NoButton)
        return; // a second button does not change what the first one does
    impl_->button = event->button();
    impl_->press = impl_->last = event->position();
    impl_->dragged = impl_->second_click = false;
}

void CameraView::mouseMoveEvent(QMouseEvent* event)
{
    if (impl_->button == Qt::NoButton || !(event->buttons() & impl_->button))
        return;
    const QPointF from_press = event->position() - impl_->press;
    if (!impl_->dragged && from_press.manhattanLength() < QGuiApplication::styleHints()->startDragDistance())
        return;
    impl_->dragged = true;
    const QPointF moved = event->position() - impl_->last;
    impl_->last = event->position();
    CameraScene& scene = impl_->scene;
    if (impl_->button == Qt::MiddleButton ||
        (impl_->button == Qt::LeftButton && event->modifiers().testFlag(Qt::ShiftModifier)))
        scene.pan(moved.x(), moved.y());
    else if (impl_->button == Qt::LeftButton)
        scene.set_direction(scene.azimuth() + moved.x() * degrees_per_pixel,
                            scene.elevation() + moved.y() * degrees_per_pixel);
    else if (impl_->button == Qt::RightButton)
        scene.zoom(std::pow(zoom_per_pixel, -moved.y()), impl_->press);
}

void CameraView::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() != impl_->button)
        return;
    const bool click = impl_->button == Qt::LeftButton && !impl_->dragged && !impl_->second_click;
    impl_->button = Qt::NoButton;
    if (click && !legend_at(event->position()))
        pick_at(event->position());
}

void CameraView::mouseDoubleClickEvent(QMouseEvent* event)
{
    impl_->button = event->button();
    impl_->press = impl_->last = event->position();
    impl_->dragged = false;
    impl_->second_click = true;
    if (event->button() != Qt::LeftButton)
        return;
    impl_->refresh();
    if (CornerPointGrid* grid = legend_at(event->position())) {
        edit_legend(grid);
        return;
    }
    if (const auto hit = impl_->scene.pick(event->position()))
        impl_->scene.centre_on(hit->point);
}

void CameraView::wheelEvent(QWheelEvent* event)
{
    if (event->angleDelta().y() != 0)
        impl_->scene.zoom(std::pow(zoom_per_notch, event->angleDelta().y() / notch), event->position());
    event->accept();
}

void CameraView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && Lodex::GraphicLib::instance()->tool()) {
        Lodex::GraphicLib::instance()->reset_tool();
        event->accept();
        return;
    }
    CameraScene& scene = impl_->scene;
    const QPointF middle(width() / 2.0, height() / 2.0);
    switch (event->key()) {
    case Qt::Key_Left: scene.set_direction(scene.azimuth() + degrees_per_key, scene.elevation()); break;
    case Qt::Key_Right: scene.set_direction(scene.azimuth() - degrees_per_key, scene.elevation()); break;
    case Qt::Key_Up: scene.set_direction(scene.azimuth(), scene.elevation() + degrees_per_key); break;
    case Qt::Key_Down: scene.set_direction(scene.azimuth(), scene.elevation() - degrees_per_key); break;
    case Qt::Key_Plus: scene.zoom(zoom_per_notch, middle); break;
    case Qt::Key_Minus: scene.zoom(1 / zoom_per_notch, middle); break;
    case Qt::Key_Home: fit(); break;
    default: QWidget::keyPressEvent(event); return;
    }
    event->accept();
}

void CameraView::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange ||
        event->type() == QEvent::LanguageChange)
        take_colours();
}

void CameraView::resizeEvent(QResizeEvent* event)
{
    QWidget::resizeEvent(event);
    if (impl_->overlay)
        impl_->overlay->setGeometry(rect());
}

} // namespace lodex
