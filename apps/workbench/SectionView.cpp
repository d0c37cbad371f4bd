#include "SectionView.h"

#include "NumberTexts.h"

#include "lodex/gviews/ColourScale.h"
#include "lodex/utils/CameraList.h"
#include "lodex/utils/Numbers.h"
#include "lodex/volumes/CornerPointGrid.h"

#include <Lodex/geobase/Property.h>
#include <Lodex/qtools/QtText.h>

#include <QHelpEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace lodex {

namespace {

constexpr int gap = 8;                 // pixels between the parts of the view
constexpr int tick = 5;                // length of a tick
constexpr int swatch = 14;             // of the legend
constexpr double outline_from = 4;     // mean size of a cell from which on it gets an outline
constexpr double outline_full = 10;    // size from which on the outline is at its strongest
constexpr double speck = 2.5;          // cells below this size are filled pixel by pixel
constexpr QRgb highlight = 0xffff5a1f; // edge of a painted section
constexpr double faded = 0.22;         // strength of the other cells beside painted ones

using Quad = std::array<QPointF, 4>;

/// Fills a small quad in the picture itself, at least its middle pixel: much faster than a polygon.
void fill_speck(QImage& picture, const QPointF& least, const QPointF& greatest, QRgb colour)
{
    const int left = std::clamp(static_cast<int>(least.x()), 0, picture.width() - 1);
    const int top = std::clamp(static_cast<int>(least.y()), 0, picture.height() - 1);
    const int right = std::clamp(static_cast<int>(std::ceil(greatest.x())) - 1, left, picture.width() - 1);
    const int bottom = std::clamp(static_cast<int>(std::ceil(greatest.y())) - 1, top, picture.height() - 1);
    for (int y = top; y <= bottom; ++y) {
        auto* line = reinterpret_cast<QRgb*>(picture.scanLine(y));
        std::fill(line + left, line + right + 1, colour);
    }
}

QRgb blend(QRgb colour, const QColor& background, double strength)
{
    const auto part = [strength](int a, int b) { return static_cast<int>(std::lround(std::lerp(b, a, strength))); };
    return qRgb(part(qRed(colour), background.red()), part(qGreen(colour), background.green()),
                part(qBlue(colour), background.blue()));
}

std::pair<QPointF, QPointF> bounds(const Quad& quad)
{
    const auto [left, right] = std::ranges::minmax(quad, {}, &QPointF::x);
    const auto [top, bottom] = std::ranges::minmax(quad, {}, &QPointF::y);
    return {{left.x(), top.y()}, {right.x(), bottom.y()}};
}

} // namespace

SectionView::SectionView(QWidget* parent) : QWidget(parent)
{
    setMouseTracking(true);
    setAccessibleName(tr("Cross-section of the selected grid"));
    grid_watch_.changed = [this] { grid_changed(); };
    grid_watch_.gone = [this] { set_grid(nullptr); };
    style_watch_.changed = [this] { read_painted(); };
    property_style_watch_.changed = [this] { colours_changed(); };
    add_camera(this);
}

SectionView::~SectionView()
{
    remove_camera(this);
}

CornerPointGrid* SectionView::grid() const
{
    return static_cast<CornerPointGrid*>(grid_watch_.observed());
}

void SectionView::set_grid(CornerPointGrid* grid)
{
    grid_watch_.observe(grid);
    style_watch_.observe(grid ? grid->style() : nullptr);
    grid_changed();
    read_painted();
}

void SectionView::grid_changed()
{
    section_.reset();
    watch_property();
    colours_changed();
}

void SectionView::colours_changed()
{
    colours_.reset();
    picture_ = {};
    update();
}

void SectionView::watch_property()
{
    const bool by_property = grid() && colouring_.kind == ColourBy::Kind::Property;
    const Lodex::Property* property = by_property ? grid()->property_db()->find(colouring_.property) : nullptr;
    property_style_watch_.observe(property ? property->style() : nullptr);
}

void SectionView::set_section(SectionAxis axis, std::int64_t index)
{
    if (axis == axis_ && index == index_)
        return;
    axis_ = axis;
    index_ = index;
    section_.reset();
    picture_ = {};
    update();
}

void SectionView::set_colouring(const ColourBy& colouring)
{
    if (colouring == colouring_)
        return;
    colouring_ = colouring;
    watch_property();
    colours_changed();
}

void SectionView::read_painted()
{
    const Lodex::Style* style = grid() ? grid()->style() : nullptr;
    PaintedSections painted;
    if (style)
        painted = read_painted_sections(style->attribute("*sections"));
    if (painted == painted_)
        return;
    painted_ = std::move(painted);
    picture_ = {};
    update();
}

void SectionView::request_update()
{
    read_painted();
    update();
}

const Section& SectionView::section()
{
    if (!section_)
        section_ = grid() ? cut_section(grid()->model(), axis_, index_) : Section();
    return *section_;
}

const CellPalette& SectionView::colours()
{
    if (!colours_)
        colours_ = grid() ? CellPalette(*grid(), colouring_) : CellPalette();
    return *colours_;
}

bool SectionView::is_painted(std::int64_t cell) const
{
    const GridSize& size = grid()->header().size;
    return painted_[0].contains(cell % size[0]) || painted_[1].contains(cell / size[0] % size[1]) ||
           painted_[2].contains(cell / (size[0] * size[1]));
}

bool SectionView::paints_anything() const
{
    return std::ranges::any_of(painted_, [](const auto& sections) { return !sections.empty(); });
}

std::vector<std::int64_t> SectionView::painted_cells()
{
    std::vector<std::int64_t> cells;
    if (!paints_anything())
        return cells;
    for (const SectionCell& drawn : section().cells) {
        if (is_painted(drawn.cell))
            cells.push_back(drawn.cell);
    }
    return cells;
}

int SectionView::legend_width()
{
    const CellPalette& shown = colours();
    int width = 0;
    for (const CellPalette::Entry& entry : shown.entries())
        width = std::max(width, fontMetrics().horizontalAdvance(entry.text));
    for (const CellPalette::Tick& mark : shown.ticks())
        width = std::max(width, fontMetrics().horizontalAdvance(mark.text));
    if (width == 0)
        return 0;
    width = std::max(swatch + gap + width, fontMetrics().horizontalAdvance(shown.title())) + 2;
    return std::min(width, this->width() / 3);
}

QRectF SectionView::plot_area()
{
    const int line = fontMetrics().height();
    const int labels = fontMetrics().horizontalAdvance(QStringLiteral("000000"));
    const int legend = legend_width();
    const int left = gap + line + gap + labels + tick + 2;
    const int top = gap + line + gap;
    const int right = width() - gap - (legend > 0 ? legend + 2 * gap : fontMetrics().averageCharWidth() * 2);
    const int bottom = height() - gap - 2 * line - tick - gap;
    return {QPointF(left, top), QPointF(std::max(right, left + 1), std::max(bottom, top + 1))};
}

std::array<QPointF, 4> SectionView::Mapping::at(const SectionCell& cell) const
{
    Quad quad;
    for (std::size_t c = 0; c < 4; ++c)
        quad[c] = at(static_cast<double>(cell.distance[c]), static_cast<double>(cell.depth[c]));
    return quad;
}

SectionView::Mapping SectionView::mapping()
{
    constexpr double least_extent = 1e-3; // of a section that has none
    const Section& shown = section();
    const QRectF area = plot_area();
    const double length = std::max(static_cast<double>(shown.last_distance - shown.first_distance), least_extent);
    const double height = std::max(static_cast<double>(shown.base - shown.top), least_extent);
    return {area.topLeft(), static_cast<double>(shown.first_distance), static_cast<double>(shown.top),
            area.width() / length, area.height() / height};
}

QPointF SectionView::to_widget(double distance, double depth)
{
    return mapping().at(distance, depth);
}

double SectionView::vertical_exaggeration()
{
    const Mapping map = mapping();
    return map.down / map.across;
}

std::optional<std::int64_t> SectionView::cell_at(const QPointF& place)
{
    const Mapping map = mapping();
    for (const SectionCell& drawn : section().cells) {
        const Quad quad = map.at(drawn);
        const auto [least, greatest] = bounds(quad);
        if (place.x() < least.x() || place.x() > greatest.x() || place.y() < least.y() || place.y() > greatest.y())
            continue;
        if (QPolygonF(quad.begin(), quad.end()).containsPoint(place, Qt::OddEvenFill))
            return drawn.cell;
    }
    return std::nullopt;
}

QString SectionView::title()
{
    const GridSize& size = grid()->header().size;
    const bool across_i = axis_ == SectionAxis::I;
    return tr("%1: %2 section %3 of %4, vertical exaggeration %5")
        .arg(Lodex::to_qstring(grid()->name()), across_i ? QStringLiteral("I") : QStringLiteral("J"),
             QString::number(index_ + 1), QString::number(size[across_i ? 0 : 1]),
             QString::fromStdString(format_general(vertical_exaggeration(), 2)));
}

QString SectionView::cell_text(std::int64_t cell)
{
    const GridSize& size = grid()->header().size;
    const QString place = tr("Cell I %1, J %2, K %3")
                              .arg(QString::number(cell % size[0] + 1), QString::number(cell / size[0] % size[1] + 1),
                                   QString::number(cell / (size[0] * size[1]) + 1));
    const QString value = colours().value_text(static_cast<std::size_t>(cell));
    return value.isEmpty() ? place : QStringLiteral("%1\n%2: %3").arg(place, colours().title(), value);
}

void SectionView::draw_cells(QPainter& painter)
{
    const Section& shown = section();
    const Mapping map = mapping();
    const double ratio = picture_.devicePixelRatio();
    const CellPalette& value_colours = colours();
    const QColor background = palette().color(QPalette::Base);
    const bool fades = paints_anything();
    const auto colour = [&](std::int64_t cell) {
        const auto [red, green, blue] = value_colours.of(static_cast<std::size_t>(cell));
        const QRgb full = qRgb(red, green, blue);
        return fades && !is_painted(cell) ? blend(full, background, faded) : full;
    };
    painter.setPen(Qt::NoPen);
    double widths = 0, heights = 0;
    for (const SectionCell& drawn : shown.cells) {
        const Quad quad = map.at(drawn);
        const auto [least, greatest] = bounds(quad);
        widths += greatest.x() - least.x();
        heights += std::abs(quad[3].y() - quad[0].y() + quad[2].y() - quad[1].y()) / 2;
        if ((greatest.x() - least.x()) * ratio < speck || (greatest.y() - least.y()) * ratio < speck) {
            fill_speck(picture_, least * ratio, greatest * ratio, colour(drawn.cell));
        } else {
            painter.setBrush(QColor(colour(drawn.cell)));
            painter.drawConvexPolygon(quad.data(), 4);
        }
    }
    const double size = std::min(widths, heights) / static_cast<double>(std::max<std::size_t>(shown.cells.size(), 1));
    if (size < outline_from)
        return;
    QColor line(Qt::black);
    line.setAlphaF(
        static_cast<float>(0.15 + 0.3 * std::min((size - outline_from) / (outline_full - outline_from), 1.0)));
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(line, 0.8));
    painter.setBrush(Qt::NoBrush);
    for (const SectionCell& drawn : shown.cells)
        painter.drawConvexPolygon(map.at(drawn).data(), 4);
    painter.setRenderHint(QPainter::Antialiasing, false);
}

void SectionView::draw_painted(QPainter& painter)
{
    if (!paints_anything())
        return;
    const GridSize& size = grid()->header().size;
    const Mapping map = mapping();
    std::vector<QLineF> edges;
    painter.setPen(Qt::NoPen);
    for (const SectionCell& drawn : section().cells) {
        if (!is_painted(drawn.cell))
            continue;
        const Quad quad = map.at(drawn);
        if (painted_[2].contains(drawn.cell / (size[0] * size[1]))) { // bed by bed
            edges.emplace_back(quad[0], quad[1]);
            edges.emplace_back(quad[3], quad[2]);
        } else {
            edges.emplace_back(quad[0], quad[3]);
            edges.emplace_back(quad[1], quad[2]);
        }
    }
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(highlight), 1.3));
    painter.drawLines(edges.data(), static_cast<int>(edges.size()));
    painter.setRenderHint(QPainter::Antialiasing, false);
}

void SectionView::draw_axes(QPainter& painter)
{
    const Section& shown = section();
    const QRectF area = plot_area();
    const int line = fontMetrics().height();
    const QString unit = length_unit_text(*grid());
    const auto labelled = [&unit](const QString& text) {
        return unit.isEmpty() ? text : text + QStringLiteral(" [%1]").arg(unit);
    };
    QColor soft = palette().color(QPalette::Text);
    soft.setAlphaF(0.6f);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(soft);
    painter.drawRect(area);
    painter.setPen(palette().color(QPalette::Text));

    const Mapping map = mapping();
    const auto text_of = [](double number) { return QString::fromStdString(format_general(number, 6)); };
    const int across = std::clamp(static_cast<int>(area.width()) / (10 * fontMetrics().averageCharWidth()), 2, 10);
    for (const double distance : round_ticks(map.first_distance, static_cast<double>(shown.last_distance), across)) {
        const double x = map.at(distance, 0).x();
        painter.drawLine(QPointF(x, area.bottom()), QPointF(x, area.bottom() + tick));
        painter.drawText(QRectF(x - 60, area.bottom() + tick, 120, line), Qt::AlignCenter, text_of(distance));
    }
    const int down = std::clamp(static_cast<int>(area.height()) / (3 * line), 2, 10);
    for (const double depth : round_ticks(map.top, static_cast<double>(shown.base), down)) {
        const double y = map.at(0, depth).y();
        painter.drawLine(QPointF(area.left() - tick, y), QPointF(area.left(), y));
        painter.drawText(QRectF(0, y - line / 2.0, area.left() - tick - 3, line), Qt::AlignRight | Qt::AlignVCenter,
                         text_of(depth));
    }
    painter.drawText(QRectF(area.left(), area.bottom() + tick + line, area.width(), line), Qt::AlignCenter,
                     labelled(tr("Distance along the section")));
    painter.save();
    painter.translate(gap, area.center().y());
    painter.rotate(-90);
    painter.drawText(QRectF(-area.height() / 2, 0, area.height(), line), Qt::AlignCenter, labelled(tr("Depth")));
    painter.restore();

    QFont bold = font();
    bold.setBold(true);
    painter.setFont(bold);
    const QString text =
        QFontMetrics(bold).elidedText(title(), Qt::ElideRight, width() - static_cast<int>(area.left()) - gap);
    painter.drawText(QRectF(area.left(), gap, width() - area.left() - gap, line), Qt::AlignLeft | Qt::AlignVCenter,
                     text);
    painter.setFont(font());
}

void SectionView::draw_legend(QPainter& painter)
{
    const CellPalette& shown = colours();
    const int available = legend_width();
    if (available == 0)
        return;
    const QRectF area = plot_area();
    const int line = fontMetrics().height();
    const double left = area.right() + 2 * gap, text_left = left + swatch + gap;
    const auto text_at = [&](double y, const QString& text) {
        const double room = left + available - text_left;
        painter.drawText(QRectF(text_left, y - line / 2.0, room, line), Qt::AlignLeft | Qt::AlignVCenter,
                         fontMetrics().elidedText(text, Qt::ElideRight, static_cast<int>(std::ceil(room))));
    };
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(QRectF(left, area.top(), available, line), Qt::AlignLeft | Qt::AlignVCenter,
                     fontMetrics().elidedText(shown.title(), Qt::ElideRight, available));
    double y = area.top() + line + gap;

    if (shown.is_scale()) {
        const double height = std::min(area.bottom() - y, 260.0);
        QLinearGradient gradient(0, y + height, 0, y);
        for (int n = 0; n <= 32; ++n)
            gradient.setColorAt(n / 32.0, shown.scale_colour(n / 32.0));
        painter.fillRect(QRectF(left, y, swatch, height), gradient);
        for (const CellPalette::Tick& mark : shown.ticks()) {
            const double at = y + height * (1 - mark.place);
            painter.drawLine(QPointF(left + swatch, at), QPointF(left + swatch + tick - 1, at));
            text_at(at, mark.text);
        }
        return;
    }
    const double step = std::max(line, swatch) + 4;
    const auto room = static_cast<std::size_t>(std::max((area.bottom() - y) / step, 1.0));
    const std::size_t count = shown.entries().size();
    const std::size_t listed = count <= room ? count : room - 1;
    QColor soft = palette().color(QPalette::Text);
    soft.setAlphaF(0.4f);
    for (std::size_t n = 0; n < listed; ++n, y += step) {
        const CellPalette::Entry& entry = shown.entries()[n];
        painter.setPen(soft);
        painter.setBrush(entry.colour);
        painter.drawRect(QRectF(left, y, swatch, swatch));
        painter.setPen(palette().color(QPalette::Text));
        text_at(y + swatch / 2.0, entry.text);
    }
    if (listed < count)
        text_at(y + swatch / 2.0, tr("and %1 more").arg(count - listed));
}

void SectionView::draw_picture()
{
    const double ratio = devicePixelRatioF();
    picture_ = QImage((QSizeF(size()) * ratio).toSize(), QImage::Format_RGB32);
    picture_.setDevicePixelRatio(ratio);
    picture_.fill(palette().color(QPalette::Base));
    QPainter painter(&picture_);
    painter.setFont(font());
    painter.setPen(palette().color(QPalette::Text));
    if (section().cells.empty()) {
        const QString text = grid() ? tr("There is no active cell in this section.")
                                    : tr("There is no grid yet.\nDrop a model file here, or choose File, Import.");
        painter.drawText(rect(), Qt::AlignCenter | Qt::TextWordWrap, text);
        return;
    }
    draw_cells(painter);
    draw_painted(painter);
    draw_axes(painter);
    draw_legend(painter);
}

void SectionView::paintEvent(QPaintEvent*)
{
    if (picture_.isNull() || picture_.devicePixelRatio() != devicePixelRatioF())
        draw_picture();
    QPainter(this).drawImage(0, 0, picture_);
}

void SectionView::resizeEvent(QResizeEvent* event)
{
    picture_ = {};
    QWidget::resizeEvent(event);
}

void SectionView::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange ||
        event->type() == QEvent::LanguageChange) {
        picture_ = {};
        update();
    }
    QWidget::changeEvent(event);
}

bool SectionView::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto* help = static_cast<QHelpEvent*>(event);
    if (const auto cell = cell_at(help->pos())) {
        QToolTip::showText(help->globalPos(), cell_text(*cell), this);
    } else {
        QToolTip::hideText();
        event->ignore();
    }
    return true;
}

} // namespace lodex
