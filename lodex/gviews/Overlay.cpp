#include "Overlay.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QLinearGradient>
#include <QPainter>

#include <algorithm>
#include <cmath>
#include <functional>

namespace lodex {

namespace {

constexpr double margin = 10, padding = 8, swatch = 15, tick_length = 5;
constexpr double label_gap = 6; // between a legend and what is written beside it
constexpr double least_bar = 60, greatest_bar = 260;

struct Texts {
    Q_DECLARE_TR_FUNCTIONS(lodex::Overlay)
};

double dot(const Point3& a, const Point3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

Point3 minus(const Point3& a, const Point3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

double length(const QPointF& v)
{
    return std::hypot(v.x(), v.y());
}

/// A number of an axis whose ticks are `step` apart.
QString axis_number(double number, double step)
{
    const int decimals = step >= 1 ? 0 : static_cast<int>(std::ceil(-std::log10(step) - 1e-9));
    const QString text = QString::number(number, 'f', std::clamp(decimals, 0, 9));
    return text == QLatin1String("-0") ? QStringLiteral("0") : text;
}

QColor halo_of(const Overlay& overlay)
{
    QColor halo = overlay.background;
    halo.setAlphaF(0.75f);
    return halo;
}

/// Text that stays readable on any ground.
void draw_text(QPainter& painter, const QRectF& place, int flags, const QString& text, const Overlay& overlay)
{
    painter.setPen(halo_of(overlay));
    for (const QPointF& shift : {QPointF(-1, 0), QPointF(1, 0), QPointF(0, -1), QPointF(0, 1)})
        painter.drawText(place.translated(shift), flags, text);
    painter.setPen(overlay.text);
    painter.drawText(place, flags, text);
}

struct LegendSize {
    double width = 0, height = 0, least_height = 0;
};

LegendSize legend_size(const LegendItem& item, const Overlay& overlay, bool with_grid)
{
    const QFontMetricsF metrics(overlay.font);
    QFont bold = overlay.font;
    bold.setBold(true);
    const QFontMetricsF bold_metrics(bold);
    const double line = metrics.height();
    double width = 0;
    for (const auto& entry : item.palette->entries())
        width = std::max(width, metrics.horizontalAdvance(entry.text));
    for (const auto& tick : item.palette->ticks())
        width = std::max(width, tick_length + metrics.horizontalAdvance(tick.text));
    width += swatch + padding;
    width = std::max(width, bold_metrics.horizontalAdvance(item.palette->title()));
    if (with_grid)
        width = std::max(width, metrics.horizontalAdvance(item.grid));
    const double head = 2 * padding + bold_metrics.height() + padding + (with_grid ? line : 0);
    const double step = std::max(line, swatch) + 3;
    const double rows = static_cast<double>(item.palette->entries().size()) * step;
    return {std::min(std::ceil(width) + 2 * padding + 2, std::max(overlay.view.size.width() * 0.4, 60.0)),
            head + (item.palette->is_scale() ? greatest_bar + line / 2 : rows),
            head + (item.palette->is_scale() ? least_bar + line / 2 : std::min(rows, 3 * step))};
}

void draw_scale(QPainter& painter, const QRectF& area, const CellPalette& palette, const Overlay& overlay)
{
    const double line = QFontMetricsF(overlay.font).height();
    const QRectF bar(area.left(), area.top() + line / 4, swatch, area.height() - line / 2);
    QLinearGradient gradient(bar.bottomLeft(), bar.topLeft());
    for (int n = 0; n <= 64; ++n)
        gradient.setColorAt(n / 64.0, palette.scale_colour(n / 64.0));
    painter.fillRect(bar, gradient);
    QColor frame = overlay.text;
    frame.setAlphaF(0.5f);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(frame);
    painter.drawRect(bar);
    // The ends before the numbers between them, which give way.
    std::vector<CellPalette::Tick> ticks = palette.ticks();
    std::ranges::stable_sort(ticks, std::greater(),
                             [](const CellPalette::Tick& tick) { return std::abs(tick.place - 0.5); });
    std::vector<double> taken;
    for (const CellPalette::Tick& tick : ticks) {
        const double y = bar.bottom() - tick.place * bar.height();
        if (std::ranges::any_of(taken, [&](double other) { return std::abs(other - y) < line * 0.9; }))
            continue;
        taken.push_back(y);
        painter.setPen(overlay.text);
        painter.drawLine(QPointF(bar.right(), y), QPointF(bar.right() + tick_length, y));
        painter.drawText(
            QRectF(bar.right() + tick_length + 3, y - line / 2, area.right() - bar.right() - tick_length, line),
            Qt::AlignLeft | Qt::AlignVCenter, tick.text);
    }
}

void draw_entries(QPainter& painter, const QRectF& area, const CellPalette& palette, const Overlay& overlay)
{
    const QFontMetricsF metrics(overlay.font);
    const double step = std::max(metrics.height(), swatch) + 3;
    const auto room = static_cast<std::size_t>(std::max(std::floor(area.height() / step + 1e-6), 1.0));
    const std::size_t count = palette.entries().size(), listed = count <= room ? count : room - 1;
    QColor frame = overlay.text;
    frame.setAlphaF(0.5f);
    double y = area.top();
    const auto label = [&](const QString& text) {
        painter.setPen(overlay.text);
        const QRectF place(area.left() + swatch + padding, y, area.width() - swatch - padding, step - 3);
        painter.drawText(place, Qt::AlignLeft | Qt::AlignVCenter,
                         metrics.elidedText(text, Qt::ElideRight, place.width() + 1));
    };
    for (std::size_t n = 0; n < listed; ++n, y += step) {
        painter.setPen(frame);
        painter.setBrush(palette.entries()[n].colour);
        painter.drawRect(QRectF(area.left(), y + (step - 3 - swatch) / 2, swatch, swatch));
        label(palette.entries()[n].text);
    }
    if (listed < count)
        label(Texts::tr("%1 more").arg(count - listed));
}

void draw_legend(QPainter& painter, const LegendItem& item, const QRectF& place, const Overlay& overlay, bool with_grid)
{
    QColor panel = overlay.background;
    panel.setAlphaF(0.82f);
    painter.setPen(Qt::NoPen);
    painter.setBrush(panel);
    painter.drawRoundedRect(place, 4, 4);
    QRectF area = place.adjusted(padding, padding, -padding, -padding);
    QFont bold = overlay.font;
    bold.setBold(true);
    const QFontMetricsF bold_metrics(bold);
    painter.setFont(bold);
    painter.setPen(overlay.text);
    painter.drawText(QRectF(area.topLeft(), QSizeF(area.width(), bold_metrics.height())),
                     Qt::AlignLeft | Qt::AlignVCenter,
                     bold_metrics.elidedText(item.palette->title(), Qt::ElideRight, area.width() + 1));
    painter.setFont(overlay.font);
    area.setTop(area.top() + bold_metrics.height());
    if (with_grid) {
        const QFontMetricsF metrics(overlay.font);
        painter.drawText(QRectF(area.topLeft(), QSizeF(area.width(), metrics.height())),
                         Qt::AlignLeft | Qt::AlignVCenter,
                         metrics.elidedText(item.grid, Qt::ElideRight, area.width() + 1));
        area.setTop(area.top() + metrics.height());
    }
    area.setTop(area.top() + padding);
    if (item.palette->is_scale())
        draw_scale(painter, area, *item.palette, overlay);
    else
        draw_entries(painter, area, *item.palette, overlay);
}

/// Place of the number at a tick: it touches the end of the tick with the side that faces it.
QRectF label_place(const BoxAxis& axis, const QPointF& place, const QString& text, const QFontMetricsF& metrics)
{
    const double line = metrics.height(), width = metrics.horizontalAdvance(text) + 4;
    const QPointF centre = place + axis.outwards * tick_length +
                           QPointF(axis.outwards.x() * (width / 2 + 1), axis.outwards.y() * (line / 2 + 1));
    return {centre.x() - width / 2, centre.y() - line / 2, width, line};
}

/// Takes away numbers that would stand on one another or be said twice in a corner where two axes meet.
void thin_labels(std::vector<BoxAxis>& axes, const QFontMetricsF& metrics)
{
    struct Label {
        std::size_t axis;
        QRectF place;
        QString text;
    };
    std::vector<Label> kept;
    for (std::size_t n = 0; n < axes.size(); ++n) {
        for (auto& [place, text] : axes[n].ticks) {
            const QRectF own = label_place(axes[n], place, text, metrics);
            const QRectF near = own.adjusted(-metrics.height(), -metrics.height(), metrics.height(), metrics.height());
            const bool taken = std::ranges::any_of(kept, [&, &words = text](const Label& other) {
                return other.place.intersects(own) ||
                       (other.axis != n && other.text == words && other.place.intersects(near));
            });
            if (taken)
                text.clear();
            else
                kept.push_back({n, own, text});
        }
    }
}

/// Places that labels of the axes keep off.
std::vector<QRectF> taken_places(const Overlay& overlay)
{
    std::vector<QRectF> places = legend_places(overlay);
    std::erase_if(places, [](const QRectF& place) { return place.isEmpty(); });
    for (QRectF& place : places)
        place.adjust(-label_gap, -label_gap, label_gap, label_gap);
    return places;
}

void draw_axis(QPainter& painter, const BoxAxis& axis, const std::vector<QRectF>& taken, const Overlay& overlay)
{
    const QFontMetricsF metrics(overlay.font);
    const double line = metrics.height();
    QColor pen = overlay.text;
    pen.setAlphaF(0.8f);
    painter.setPen(QPen(pen, 1));
    painter.drawLine(axis.from, axis.to);
    double reach = 0;
    for (const auto& [place, text] : axis.ticks) {
        const QPointF end = place + axis.outwards * tick_length;
        painter.setPen(QPen(pen, 1));
        painter.drawLine(place, end);
        const QRectF label = label_place(axis, place, text, metrics);
        if (text.isEmpty() || std::ranges::any_of(taken, [&](const QRectF& other) { return other.intersects(label); }))
            continue;
        draw_text(painter, label, Qt::AlignCenter, text, overlay);
        reach = std::max(reach, std::abs(axis.outwards.x()) * label.width() + std::abs(axis.outwards.y()) * line);
    }
    static constexpr std::array<const char*, 3> names{QT_TRANSLATE_NOOP("lodex::Overlay", "X"),
                                                      QT_TRANSLATE_NOOP("lodex::Overlay", "Y"),
                                                      QT_TRANSLATE_NOOP("lodex::Overlay", "Depth")};
    QString title = Texts::tr(names[static_cast<std::size_t>(axis.axis)]);
    if (!overlay.length_unit.isEmpty())
        title += QStringLiteral(" [%1]").arg(overlay.length_unit);
    const double width = metrics.horizontalAdvance(title) + 4;
    QPointF centre;
    if (std::abs(axis.from.y() - axis.to.y()) > 4 * std::abs(axis.from.x() - axis.to.x())) {
        // Beside an upright axis the title would need much room.
        centre = (axis.from.y() < axis.to.y() ? axis.from : axis.to) - QPointF(0, line * 0.9);
    } else {
        centre = (axis.from + axis.to) / 2 + axis.outwards * (tick_length + reach + 4) +
                 QPointF(axis.outwards.x() * width / 2, axis.outwards.y() * line / 2);
    }
    const QSizeF size = overlay.view.size;
    centre.setX(std::clamp(centre.x(), width / 2 + 2, std::max(size.width() - width / 2 - 2, width / 2 + 2)));
    centre.setY(std::clamp(centre.y(), line / 2, std::max(size.height() - line / 2, line / 2)));
    for (const QRectF& other : taken) {
        if (other.intersects(QRectF(centre.x() - width / 2, centre.y() - line / 2, width, line)))
            centre.setX(std::max(other.left() - width / 2, width / 2 + 2));
    }
    QFont italic = overlay.font;
    italic.setItalic(true);
    painter.setFont(italic);
    draw_text(painter, QRectF(centre.x() - width / 2, centre.y() - line / 2, width, line), Qt::AlignCenter, title,
              overlay);
    painter.setFont(overlay.font);
}

void draw_triad(QPainter& painter, const Overlay& overlay)
{
    const double line = QFontMetricsF(overlay.font).height();
    const double arm = 2.2 * line;
    const QPointF root(overlay.view.size.width() - margin - arm - 1.8 * line,
                       overlay.view.size.height() - margin - arm - 2.8 * line);
    // Directions as they look from the middle of the box, whatever the perspective does elsewhere.
    const Point3 middle = overlay.box.empty ? Point3{} : overlay.box.centre();
    const auto at_middle = overlay.view.project(middle);
    if (!at_middle)
        return;
    struct Arm {
        QPointF direction;
        double towards_eye;
        QColor colour;
        QString label;
    };
    static constexpr std::array<const char*, 3> names{QT_TRANSLATE_NOOP("lodex::Overlay", "E"),
                                                      QT_TRANSLATE_NOOP("lodex::Overlay", "N"),
                                                      QT_TRANSLATE_NOOP("lodex::Overlay", "Up")};
    const std::array<QColor, 3> colours{QColor(0xd6, 0x45, 0x3d), QColor(0x2f, 0x9e, 0x44), QColor(0x2f, 0x7f, 0xd6)};
    const Point3 eye = overlay.view.parallel ? overlay.view.eye : minus(overlay.view.eye, middle);
    const double reach = std::sqrt(dot(eye, eye));
    double extent = 0;
    for (std::size_t axis = 0; axis < 3; ++axis)
        extent = std::max(extent, overlay.box.greatest[axis] - overlay.box.least[axis]);
    const double probe = std::max(extent, 1.0) * 1e-3;
    std::vector<Arm> arms;
    double longest = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        Point3 end = middle;
        end[axis] += probe;
        const auto at_end = overlay.view.project(end);
        if (!at_end)
            return;
        arms.push_back(
            {*at_end - *at_middle, reach > 0 ? eye[axis] / reach : 0, colours[axis], Texts::tr(names[axis])});
        longest =
            std::max(longest, length(arms.back().direction) /
                                  std::sqrt(std::max(1 - arms.back().towards_eye * arms.back().towards_eye, 0.05)));
    }
    if (!(longest > 0))
        return;
    std::ranges::sort(arms, {}, &Arm::towards_eye);
    for (const Arm& each : arms) {
        const QPointF end = root + each.direction / longest * arm;
        const double drawn = length(end - root);
        if (drawn < 4)
            continue;
        painter.setPen(QPen(each.colour, 2.2, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(root, end);
        const QPointF along = (end - root) / drawn, across(-along.y(), along.x());
        painter.setBrush(each.colour);
        painter.setPen(Qt::NoPen);
        painter.drawPolygon(QPolygonF({end + along * 4, end - along * 5 + across * 4, end - along * 5 - across * 4}));
        const QPointF centre = end + along * (line * 0.75 + 3);
        draw_text(painter, QRectF(centre.x() - 2 * line, centre.y() - line / 2, 4 * line, line), Qt::AlignCenter,
                  each.label, overlay);
    }
}

} // namespace

std::vector<BoxAxis> box_axes(const Overlay& overlay)
{
    std::vector<BoxAxis> axes;
    const DrawnBox& box = overlay.box;
    if (box.empty)
        return axes;
    const QFontMetricsF metrics(overlay.font);
    const auto middle = overlay.view.project(box.centre());
    if (!middle)
        return axes;
    // Facing of the sides: side 2n at the least, 2n + 1 at the greatest coordinate of axis n.
    std::array<bool, 6> faces_eye{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (const std::size_t end : {0u, 1u}) {
            Point3 outward{};
            outward[axis] = end ? 1 : -1;
            Point3 towards = overlay.view.eye;
            if (!overlay.view.parallel)
                towards = minus(towards, end ? box.greatest : box.least);
            faces_eye[2 * axis + end] = dot(towards, outward) > 1e-9 * std::sqrt(dot(towards, towards));
        }
    }
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (!(box.greatest[axis] > box.least[axis]))
            continue;
        const std::size_t b = (axis + 1) % 3, c = (axis + 2) % 3;
        std::optional<BoxAxis> best;
        double best_score = -HUGE_VAL;
        Point3 best_from{}, best_to{};
        for (std::size_t n = 0; n < 4; ++n) {
            const std::size_t at_b = n & 1, at_c = n >> 1;
            if (faces_eye[2 * b + at_b] == faces_eye[2 * c + at_c])
                continue; // within the outline
            Point3 from = box.least, to = box.least;
            from[b] = to[b] = at_b ? box.greatest[b] : box.least[b];
            from[c] = to[c] = at_c ? box.greatest[c] : box.least[c];
            to[axis] = box.greatest[axis];
            const auto a = overlay.view.project(from), z = overlay.view.project(to);
            if (!a || !z || length(*z - *a) < 2 * metrics.height())
                continue;
            // The lowest edge for x and y, the leftmost for depth; of equals the left one.
            const QPointF centre = (*a + *z) / 2;
            const double score = axis == 2 ? -centre.x() : centre.y() - 1e-3 * centre.x();
            if (score <= best_score)
                continue;
            best_score = score;
            best = BoxAxis{static_cast<int>(axis), *a, *z, {}, {}};
            best_from = from;
            best_to = to;
        }
        if (!best)
            continue;
        const QPointF along = (best->to - best->from) / length(best->to - best->from);
        best->outwards = {-along.y(), along.x()};
        const QPointF away = (best->from + best->to) / 2 - *middle;
        if (best->outwards.x() * away.x() + best->outwards.y() * away.y() < 0)
            best->outwards = -best->outwards;

        const Point3 real_from = overlay.view.to_real(best_from), real_to = overlay.view.to_real(best_to);
        const double low = std::min(real_from[axis], real_to[axis]), high = std::max(real_from[axis], real_to[axis]);
        // As many as leave room between the labels, whichever way the axis runs.
        const double label =
            std::max(metrics.horizontalAdvance(axis_number(high, 1)), metrics.horizontalAdvance(axis_number(low, 1)));
        const double needed =
            std::abs(along.x()) * (label + 1.5 * metrics.height()) + std::abs(along.y()) * 2.2 * metrics.height();
        const int count = std::clamp(static_cast<int>(length(best->to - best->from) / needed), 1, 10);
        std::vector<double> numbers = round_ticks(low, high, count);
        // One number says nothing of the scale.
        for (int more = count + 1; numbers.size() < 2 && more <= 12; ++more)
            numbers = round_ticks(low, high, more);
        const double step = numbers.size() > 1 ? numbers[1] - numbers[0] : high - low;
        for (const double number : numbers) {
            Point3 real = real_from;
            real[axis] = number;
            if (const auto place = overlay.view.project(overlay.view.to_drawn(real)))
                best->ticks.emplace_back(*place, axis_number(number, step));
        }
        axes.push_back(std::move(*best));
    }
    thin_labels(axes, metrics);
    return axes;
}

std::vector<QRectF> legend_places(const Overlay& overlay)
{
    std::vector<QRectF> places(overlay.legends.size());
    const bool with_grid = overlay.legends.size() > 1;
    const double corner = overlay.triad ? 10 * QFontMetricsF(overlay.font).height() : margin; // arrows and note below
    const double available = overlay.view.size.height() - margin - corner;
    std::vector<LegendSize> sizes;
    double wanted = 0, least = 0;
    for (const LegendItem& item : overlay.legends) {
        sizes.push_back(legend_size(item, overlay, with_grid));
        wanted += sizes.back().height + margin;
        least += sizes.back().least_height + margin;
    }
    const double share = wanted <= available + margin ? 1
                         : wanted > least             ? std::max(0.0, (available + margin - least) / (wanted - least))
                                                      : 0;
    double y = margin;
    for (std::size_t n = 0; n < sizes.size(); ++n) {
        const double height = std::lerp(sizes[n].least_height, sizes[n].height, share);
        if (y + height > overlay.view.size.height() - margin && n > 0)
            break;
        places[n] = {overlay.view.size.width() - margin - sizes[n].width, y, sizes[n].width, height};
        y += height + margin;
    }
    return places;
}

OverlayMargins overlay_margins(const Overlay& overlay)
{
    const QFontMetricsF metrics(overlay.font);
    OverlayMargins margins{margin, margin, margin, margin};
    if (overlay.axes) {
        margins.left += metrics.horizontalAdvance(QStringLiteral("0000000")) + tick_length + padding;
        margins.top += 1.4 * metrics.height();
        margins.bottom += 2 * metrics.height() + tick_length;
        margins.right += metrics.horizontalAdvance(QStringLiteral("000"));
    }
    for (const QRectF& place : legend_places(overlay))
        margins.right = std::max(margins.right, place.width() + 2 * margin);
    return margins;
}

void paint_overlay(QPainter& painter, const Overlay& overlay)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(overlay.font);
    if (overlay.axes) {
        const std::vector<QRectF> taken = taken_places(overlay);
        for (const BoxAxis& axis : box_axes(overlay))
            draw_axis(painter, axis, taken, overlay);
    }
    if (overlay.triad)
        draw_triad(painter, overlay);
    const auto places = legend_places(overlay);
    for (std::size_t n = 0; n < places.size(); ++n) {
        if (!places[n].isEmpty())
            draw_legend(painter, overlay.legends[n], places[n], overlay, places.size() > 1);
    }
    if (!overlay.note.isEmpty()) {
        const double line = QFontMetricsF(overlay.font).height();
        draw_text(painter,
                  QRectF(0, overlay.view.size.height() - margin - line, overlay.view.size.width() - margin, line),
                  Qt::AlignRight | Qt::AlignVCenter, overlay.note, overlay);
    }
}

} // namespace lodex
