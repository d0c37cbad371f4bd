#include "PlotWidget.h"

#include "lodex/utils/Numbers.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <array>
#include <cmath>

namespace lodex {

std::vector<double> tick_places(double first, double last, int most)
{
    const double low = std::min(first, last), high = std::max(first, last);
    if (!(high > low) || !std::isfinite(low) || !std::isfinite(high) || most < 1)
        return {};
    const double rough = (high - low) / most;
    const double magnitude = std::pow(10, std::floor(std::log10(rough)));
    double step = 10 * magnitude;
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * magnitude >= rough * (1 - 1e-12)) {
            step = factor * magnitude;
            break;
        }
    }
    std::vector<double> places;
    for (double n = std::ceil(low / step - 1e-9); n * step <= high + 1e-9 * step; ++n)
        places.push_back(n == 0 ? 0 : n * step);
    return places;
}

double PlotAxis::place(double value) const
{
    if (logarithmic)
        return (std::log10(value) - std::log10(first)) / (std::log10(last) - std::log10(first));
    return (value - first) / (last - first);
}

PlotWidget::PlotWidget(QWidget* parent) : QWidget(parent), empty_text_(tr("Nothing to show"))
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void PlotWidget::set_empty_text(const QString& text)
{
    empty_text_ = text;
    update();
}

QColor PlotWidget::series_colour(int index)
{
    static constexpr std::array<QRgb, 6> colours{0xff2a7fc1, 0xffd9742b, 0xff3a9a4b,
                                                 0xffb4449c, 0xff8a6d3b, 0xff5f6fd0};
    return QColor::fromRgb(colours[static_cast<std::size_t>(index) % colours.size()]);
}

QPointF PlotWidget::map(double x, double y) const
{
    return {frame_.left() + x_.place(x) * frame_.width(), frame_.bottom() - y_.place(y) * frame_.height()};
}

void PlotWidget::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(rect(), palette().base());
    painter.setPen(palette().color(QPalette::Text));
    if (!has_data()) {
        painter.drawText(rect().adjusted(8, 8, -8, -8), Qt::AlignCenter | Qt::TextWordWrap, empty_text_);
        return;
    }
    x_ = x_axis();
    y_ = y_axis();
    const QFontMetrics metrics(font());
    const qreal left = 2.2 * metrics.height() + metrics.horizontalAdvance(QStringLiteral("-0.0000")),
                top = metrics.height();
    const qreal bottom = (x_.title.isEmpty() ? 1.6 : 3.0) * metrics.height();
    frame_ = QRectF(left, top, std::max<qreal>(10, width() - left - right_margin()),
                    std::max<qreal>(10, height() - top - bottom));
    paint_axes(painter);
    painter.save();
    painter.setClipRect(frame_.adjusted(-1, -1, 1, 1));
    paint_data(painter);
    painter.restore();
    painter.setPen(QPen(palette().color(QPalette::Text), 1));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(frame_);
}

void PlotWidget::paint_axes(QPainter& painter)
{
    const QFontMetrics metrics(font());
    QColor line = palette().color(QPalette::Text);
    line.setAlpha(50);
    const auto number = [](double value) { return QString::fromStdString(format_general(value, 5)); };
    const auto places = [](const PlotAxis& axis, int most) {
        if (!axis.logarithmic)
            return tick_places(axis.first, axis.last, most);
        std::vector<double> decades;
        const double from = std::log10(std::min(axis.first, axis.last)),
                     to = std::log10(std::max(axis.first, axis.last));
        const double step = std::max(1.0, std::ceil((to - from) / most));
        for (double n = std::ceil(from - 1e-9); n <= to + 1e-9; n += step)
            decades.push_back(std::pow(10, n));
        return decades.size() > 1 ? decades : tick_places(axis.first, axis.last, most);
    };
    if (x_.ticks) {
        for (const double value :
             places(x_, std::max(2, static_cast<int>(frame_.width() / (6 * metrics.averageCharWidth() + 30))))) {
            const qreal x = frame_.left() + x_.place(value) * frame_.width();
            painter.setPen(line);
            painter.drawLine(QPointF(x, frame_.top()), QPointF(x, frame_.bottom()));
            painter.setPen(palette().color(QPalette::Text));
            painter.drawText(QRectF(x - 60, frame_.bottom() + 2, 120, metrics.height()),
                             Qt::AlignHCenter | Qt::AlignTop, number(value));
        }
    }
    if (y_.ticks) {
        for (const double value :
             places(y_, std::max(2, static_cast<int>(frame_.height() / (2.2 * metrics.height()))))) {
            const qreal y = frame_.bottom() - y_.place(value) * frame_.height();
            painter.setPen(line);
            painter.drawLine(QPointF(frame_.left(), y), QPointF(frame_.right(), y));
            painter.setPen(palette().color(QPalette::Text));
            painter.drawText(QRectF(0, y - metrics.height() / 2.0, frame_.left() - 5, metrics.height()),
                             Qt::AlignRight | Qt::AlignVCenter, number(value));
        }
    }
    painter.setPen(palette().color(QPalette::Text));
    painter.drawText(QRectF(frame_.left(), frame_.bottom() + 1.5 * metrics.height(), frame_.width(), metrics.height()),
                     Qt::AlignCenter, metrics.elidedText(x_.title, Qt::ElideRight, static_cast<int>(frame_.width())));
    painter.save();
    painter.translate(0, frame_.center().y());
    painter.rotate(-90);
    painter.drawText(QRectF(-frame_.height() / 2, 2, frame_.height(), metrics.height()), Qt::AlignCenter,
                     metrics.elidedText(y_.title, Qt::ElideRight, static_cast<int>(frame_.height())));
    painter.restore();
}

} // namespace lodex
