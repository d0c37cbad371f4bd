#include "Plots.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <limits>

namespace lodex {

namespace {

/// An axis over these numbers with a little room at both ends.
PlotAxis axis_over(const std::vector<double>& numbers, bool logarithmic, const QString& title)
{
    double least = std::numeric_limits<double>::infinity(), largest = -least;
    for (const double number : numbers) {
        if (std::isfinite(number) && (!logarithmic || number > 0)) {
            least = std::min(least, number);
            largest = std::max(largest, number);
        }
    }
    if (!(largest >= least))
        return {.first = 0, .last = 1, .title = title};
    if (logarithmic) {
        const double room = std::max(0.03 * (std::log10(largest) - std::log10(least)), 0.02);
        return {.first = std::pow(10, std::log10(least) - room),
                .last = std::pow(10, std::log10(largest) + room),
                .logarithmic = true,
                .title = title};
    }
    const double room = largest > least ? 0.03 * (largest - least) : std::max(1e-12, 0.05 * std::abs(least));
    return {.first = least - room, .last = largest + room, .title = title};
}

} // namespace

void HistogramPlot::show_histogram(Histogram data, const QString& title, const QString& height_title)
{
    data_ = std::move(data);
    title_ = title;
    height_title_ = height_title;
    highest_ = data_.heights.empty() ? 1 : *std::ranges::max_element(data_.heights);
    update();
}

PlotAxis HistogramPlot::x_axis() const
{
    return {.first = data_.edges.front(),
            .last = data_.edges.back(),
            .logarithmic = data_.logarithmic,
            .title = title_,
            .ticks = !data_.discrete};
}

PlotAxis HistogramPlot::y_axis() const
{
    return {.first = 0, .last = highest_ > 0 ? 1.05 * highest_ : 1, .title = height_title_};
}

qreal HistogramPlot::right_margin() const
{
    return fontMetrics().horizontalAdvance(QStringLiteral("100 %")) + 12;
}

void HistogramPlot::paint_data(QPainter& painter)
{
    painter.setPen(QPen(palette().color(QPalette::Base), 1));
    painter.setBrush(series_colour(0));
    for (std::size_t n = 0; n < data_.heights.size(); ++n)
        painter.drawRect(QRectF(map(data_.edges[n], data_.heights[n]), map(data_.edges[n + 1], 0)));
    QPainterPath curve;
    curve.moveTo(frame().left(), frame().bottom());
    for (std::size_t n = 0; n < data_.cumulative.size(); ++n)
        curve.lineTo(map(data_.edges[n + 1], 0).x(), frame().bottom() - data_.cumulative[n] * frame().height());
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(series_colour(1), 2));
    painter.drawPath(curve);
    painter.setClipping(false);
    const QFontMetrics metrics(font());
    for (const int percent : {0, 25, 50, 75, 100}) {
        const qreal y = frame().bottom() - percent / 100.0 * frame().height();
        painter.drawText(QRectF(frame().right() + 4, y - metrics.height() / 2.0, right_margin(), metrics.height()),
                         Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("%1 %").arg(percent));
    }
    if (!data_.discrete)
        return;
    // Names of the codes stand below the bars.
    painter.setPen(palette().color(QPalette::Text));
    for (std::size_t n = 0; n < data_.labels.size(); ++n) {
        const QPointF left = map(data_.edges[n], 0), right = map(data_.edges[n + 1], 0);
        painter.drawText(QRectF(left.x(), frame().bottom() + 2, right.x() - left.x(), metrics.height()),
                         Qt::AlignCenter,
                         metrics.elidedText(QString::fromStdString(data_.labels[n]), Qt::ElideRight,
                                            static_cast<int>(right.x() - left.x())));
    }
}

void ProfilePlot::show_profiles(std::vector<Profile> profiles, bool own_ranges)
{
    profiles_ = std::move(profiles);
    own_ranges_ = own_ranges;
    update();
}

bool ProfilePlot::has_data() const
{
    return std::ranges::any_of(profiles_, [](const Profile& profile) {
        return std::ranges::any_of(profile.means, [](double mean) { return std::isfinite(mean); });
    });
}

PlotAxis ProfilePlot::x_axis() const
{
    if (own_ranges_)
        return {.first = 0, .last = 1, .title = tr("each from its least to its largest mean"), .ticks = false};
    std::vector<double> all;
    QStringList names;
    for (const Profile& profile : profiles_) {
        all.insert(all.end(), profile.means.begin(), profile.means.end());
        names.append(QString::fromStdString(profile.name));
    }
    return axis_over(all, false, names.join(QStringLiteral(", ")));
}

PlotAxis ProfilePlot::y_axis() const
{
    std::size_t layers = 1;
    for (const Profile& profile : profiles_)
        layers = std::max(layers, profile.means.size());
    // Layer 1 is at the top.
    return {.first = static_cast<double>(layers) + 0.5, .last = 0.5, .title = tr("K layer")};
}

void ProfilePlot::paint_data(QPainter& painter)
{
    for (std::size_t n = 0; n < profiles_.size(); ++n) {
        const std::vector<double>& means = profiles_[n].means;
        const PlotAxis own = axis_over(means, false, {});
        const auto place = [&](double mean) { return own_ranges_ ? own.place(mean) : mean; };
        QPainterPath path;
        bool drawing = false;
        for (std::size_t k = 0; k < means.size(); ++k) {
            if (!std::isfinite(means[k])) {
                drawing = false;
                continue;
            }
            const double top = static_cast<double>(k) + 0.5, base = top + 1;
            if (drawing)
                path.lineTo(map(place(means[k]), top));
            else
                path.moveTo(map(place(means[k]), top));
            path.lineTo(map(place(means[k]), base));
            drawing = true;
        }
        painter.setPen(QPen(series_colour(static_cast<int>(n)), 2));
        painter.drawPath(path);
    }
    if (profiles_.size() < 2)
        return;
    const QFontMetrics metrics(font());
    qreal y = frame().top() + 6;
    for (std::size_t n = 0; n < profiles_.size(); ++n, y += metrics.height() + 2) {
        const QString name = QString::fromStdString(profiles_[n].name);
        const qreal width = metrics.horizontalAdvance(name);
        painter.setPen(QPen(series_colour(static_cast<int>(n)), 3));
        painter.drawLine(QPointF(frame().right() - width - 34, y + metrics.height() / 2.0),
                         QPointF(frame().right() - width - 14, y + metrics.height() / 2.0));
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(QRectF(frame().right() - width - 8, y, width + 4, metrics.height()),
                         Qt::AlignLeft | Qt::AlignVCenter, name);
    }
}

void CrossPlot::show_pairs(CrossPairs pairs, const QString& x_title, const QString& y_title, bool log_x, bool log_y)
{
    pairs_ = std::move(pairs);
    x_title_ = x_title;
    y_title_ = y_title;
    log_x_ = log_x;
    log_y_ = log_y;
    update();
}

PlotAxis CrossPlot::x_axis() const
{
    return axis_over(pairs_.x, log_x_, x_title_);
}

PlotAxis CrossPlot::y_axis() const
{
    return axis_over(pairs_.y, log_y_, y_title_);
}

void CrossPlot::paint_data(QPainter& painter)
{
    QColor colour = series_colour(0);
    colour.setAlpha(pairs_.x.size() > 2000 ? 90 : 200);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    for (std::size_t n = 0; n < pairs_.x.size(); ++n) {
        if ((log_x_ && pairs_.x[n] <= 0) || (log_y_ && pairs_.y[n] <= 0))
            continue;
        painter.drawEllipse(map(pairs_.x[n], pairs_.y[n]), 2, 2);
    }
    if (!diagonal_ || log_x_ != log_y_)
        return;
    const PlotAxis across = x_axis(), up = y_axis();
    const double from = std::max(across.first, up.first), to = std::min(across.last, up.last);
    if (from < to) {
        painter.setPen(QPen(series_colour(1), 1.5, Qt::DashLine));
        painter.drawLine(map(from, from), map(to, to));
    }
}

} // namespace lodex
