#include "FlowUnitProfile.h"

#include "flowunit/LQFlowUnitRatioPanel.h"
#include "flowunit/LQFlowUnitWidget.h"
#include "flowunit/LQTable.h"
#include "lodex/xtools/HelpKey.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QScreen>
#include <QScrollArea>
#include <QTimer>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace lodex {

namespace {

using Kelvane::FlowUnitStatsManager;
using Kelvane::LQFlowUnitPanel;
using Kelvane::LQFlowUnitRatioPanel;
using Kelvane::LQFlowUnitWidget;

/// Plots that the window asks to have in view at most, and the width for each in pixels; further ones are reached by
/// scrolling.
constexpr int most_in_view = 3;
constexpr int plot_width = 300;

QString quantity_of(const LQFlowUnitPanel& panel)
{
    const QString property = panel.getPropertyName();
    const auto* ratio = qobject_cast<const LQFlowUnitRatioPanel*>(&panel);
    if (!ratio || property.isEmpty() || ratio->getOverPropertyName().isEmpty())
        return property;
    return property + QStringLiteral(" / ") + ratio->getOverPropertyName();
}

Profile profile_of(const LQFlowUnitPanel& panel, int kind, int layers, const QString& name)
{
    Profile profile{.name = name.toStdString(),
                    .means = std::vector<double>(static_cast<std::size_t>(std::max(layers, 0)),
                                                 std::numeric_limits<double>::quiet_NaN())};
    const std::vector<float>& shown = panel.shown(kind);
    std::copy_n(shown.begin(), std::min(shown.size(), profile.means.size()), profile.means.begin());
    return profile;
}

/// A short stroke of a pen and what it stands for.
class LegendEntry : public QWidget {
public:
    LegendEntry(QPen pen, const QString& text, QWidget* parent) : QWidget(parent), pen_(std::move(pen)), text_(text) {}
    [[nodiscard]] QSize sizeHint() const override
    {
        return {stroke + gap + fontMetrics().horizontalAdvance(text_) + gap, fontMetrics().height() + 4};
    }
    [[nodiscard]] QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setPen(pen_);
        painter.drawLine(QPointF(0, height() / 2.0), QPointF(stroke, height() / 2.0));
        painter.setPen(palette().color(QPalette::WindowText));
        painter.drawText(rect().adjusted(stroke + gap, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter, text_);
    }

private:
    static constexpr int stroke = 24, gap = 6; // pixels
    QPen pen_;
    QString text_;
};

} // namespace

FlowUnitPlot::FlowUnitPlot(LQFlowUnitPanel& panel, QWidget* parent) : ProfilePlot(parent), panel_(&panel)
{
    setObjectName(QStringLiteral("flowUnitProfile_") +
                  (panel.isRatio() ? QStringLiteral("ratio_") : QStringLiteral("property_")) +
                  QString::number(panel.getNum()));
    set_empty_text(tr("The table has no numbers of this panel yet."));
    follow(0);
}

LQFlowUnitPanel* FlowUnitPlot::panel() const
{
    return qobject_cast<LQFlowUnitPanel*>(panel_.data());
}

QPen FlowUnitPlot::layer_pen()
{
    return {series_colour(0), 1.5};
}

QPen FlowUnitPlot::unit_pen()
{
    return {series_colour(1), 4, Qt::SolidLine, Qt::FlatCap, Qt::MiterJoin};
}

void FlowUnitPlot::follow(int layers)
{
    const LQFlowUnitPanel* const from = panel();
    if (!from)
        return;
    // As long as the table shows the numbers of former settings, so does the title.
    if (!from->mustBeUpdated() || from->shown(FlowUnitStatsManager::LayerMean).empty() || title_.isEmpty())
        title_ = quantity_of(*from);
    setToolTip(title_.isEmpty() ? tr("Means per K layer, once a property is chosen")
                                : tr("Means of %1 per K layer, as in the table: of the layer and of the flow unit that "
                                     "it is in")
                                      .arg(title_));
    setAccessibleName(title_);
    show_profiles({profile_of(*from, FlowUnitStatsManager::LayerMean, layers, tr("Layer mean")),
                   profile_of(*from, FlowUnitStatsManager::FlowUnitMean, layers, tr("Flow unit mean"))},
                  false);
}

PlotAxis FlowUnitPlot::x_axis() const
{
    PlotAxis axis = ProfilePlot::x_axis();
    axis.title = title_;
    axis.ticks = false;
    return axis;
}

PlotAxis FlowUnitPlot::y_axis() const
{
    PlotAxis axis = ProfilePlot::y_axis();
    axis.ticks = false;
    return axis;
}

/// The plots are narrow, and there are no layers between layers: as many numbers as fit, and whole ones downwards.
void FlowUnitPlot::paint_ticks(QPainter& painter) const
{
    const QFontMetrics metrics(font());
    QColor faint = palette().color(QPalette::Text);
    faint.setAlpha(50);
    const PlotAxis means = x_axis(), depth = y_axis();
    painter.setClipping(false);
    qreal free_from = 0;
    for (const double mean : tick_places(means.first, means.last, 5)) {
        const qreal x = map(mean, depth.first).x();
        const QString text = QString::number(mean, 'g', 5);
        const qreal half = metrics.horizontalAdvance(text) / 2.0;
        painter.setPen(faint);
        painter.drawLine(QPointF(x, frame().top()), QPointF(x, frame().bottom()));
        if (x - half < free_from)
            continue;
        free_from = x + half + metrics.averageCharWidth();
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(QPointF(x - half, frame().bottom() + 2 + metrics.ascent()), text);
    }
    const int most_layers = std::max(2, static_cast<int>(frame().height() / (2 * metrics.height())));
    for (const double layer : tick_places(depth.first, depth.last, most_layers)) {
        if (layer != std::round(layer))
            continue;
        const qreal y = map(means.first, layer).y();
        painter.setPen(faint);
        painter.drawLine(QPointF(frame().left(), y), QPointF(frame().right(), y));
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(QRectF(0, y - metrics.height() / 2.0, frame().left() - 5, metrics.height()),
                         Qt::AlignRight | Qt::AlignVCenter, QString::number(layer));
    }
    painter.setClipping(true);
}

void FlowUnitPlot::paint_data(QPainter& painter)
{
    paint_ticks(painter);
    paint_line(painter, UnitMeans, unit_pen());
    paint_line(painter, LayerMeans, layer_pen()); // where both agree, both are seen
}

void FlowUnitPlot::paint_line(QPainter& painter, Line line, const QPen& pen) const
{
    QPainterPath path;
    bool drawing = false;
    double top = 0.5;
    for (const double mean : profiles().at(line).means) {
        if (std::isfinite(mean)) {
            if (drawing)
                path.lineTo(map(mean, top));
            else
                path.moveTo(map(mean, top));
            path.lineTo(map(mean, top + 1));
        }
        drawing = std::isfinite(mean);
        ++top;
    }
    painter.setBrush(Qt::NoBrush);
    painter.setPen(pen);
    painter.drawPath(path);
}

FlowUnitProfile* FlowUnitProfile::show_beside(QWidget& window)
{
    auto* area = window.findChild<LQFlowUnitWidget*>();
    if (!area)
        return nullptr;
    auto* profile = window.findChild<FlowUnitProfile*>();
    const bool fresh = !profile || profile->isHidden(); // a hidden one is on its way out
    if (fresh)
        profile = new FlowUnitProfile(*area, window);
    profile->show();
    if (fresh)
        profile->place_beside(window);
    else
        profile->raise();
    return profile;
}

FlowUnitProfile::FlowUnitProfile(LQFlowUnitWidget& area, QWidget& window)
    : QDialog(&window, Qt::Tool), area_(&area), scroll_(new QScrollArea(this)), row_(nullptr)
{
    setObjectName("flowUnitProfile");
    set_help_page(*this, "Dorvan/dox_FlowUnitAnalysis.html");
    setWindowTitle(tr("K Profile of the Flow Units"));
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_ShowWithoutActivating); // the table keeps the keyboard

    auto* legend = new QHBoxLayout;
    const auto add_entry = [&](const char* name, const QPen& pen, const QString& text, const QString& tip) {
        auto* entry = new LegendEntry(pen, text, this);
        entry->setObjectName(name);
        entry->setToolTip(tip);
        entry->setAccessibleName(text);
        legend->addWidget(entry);
    };
    add_entry("flowUnitProfileLayers", FlowUnitPlot::layer_pen(), tr("Layer mean"),
              tr("The mean of the values in one K layer"));
    add_entry("flowUnitProfileUnits", FlowUnitPlot::unit_pen(), tr("Flow unit mean"),
              tr("The mean of the values in the flow unit that the K layer is in"));
    legend->addStretch(1);

    auto* strip = new QWidget;
    row_ = new QHBoxLayout(strip);
    row_->setContentsMargins(0, 0, 0, 0);
    scroll_->setObjectName("flowUnitProfileScroll");
    scroll_->setFrameShape(QFrame::NoFrame);
    scroll_->setWidgetResizable(true);
    scroll_->setWidget(strip);
    auto* column = new QVBoxLayout(this);
    column->addLayout(legend);
    column->addWidget(scroll_, 1);

    connect(&area, &LQFlowUnitWidget::statisticsUpdated, this, &FlowUnitProfile::refresh);
    // Panels come and go with columns, a few at a time: the table is whole again when the event loop is back.
    if (const auto* table = area.findChild<Kelvane::LQTable*>("table")) {
        const QAbstractItemModel* const model = table->model();
        connect(model, &QAbstractItemModel::columnsInserted, this, &FlowUnitProfile::refresh_later);
        connect(model, &QAbstractItemModel::columnsRemoved, this, &FlowUnitProfile::refresh_later);
        connect(model, &QAbstractItemModel::rowsInserted, this, &FlowUnitProfile::refresh_later);
        connect(model, &QAbstractItemModel::rowsRemoved, this, &FlowUnitProfile::refresh_later);
    }
    window.installEventFilter(this);
    resize(plot_width, 460);
    refresh();
}

bool FlowUnitProfile::eventFilter(QObject* watched, QEvent* event)
{
    // Minimising the dialog is the desktop's doing and no end.
    if (watched == parentWidget() && event->type() == QEvent::Hide && !event->spontaneous()) {
        hide();
        deleteLater();
    }
    return QDialog::eventFilter(watched, event);
}

void FlowUnitProfile::place_beside(const QWidget& window)
{
    const QRect room = window.screen()->availableGeometry(), beside = window.frameGeometry();
    const QSize size = frameGeometry().size();
    int x = room.right() - size.width() + 1; // over the last columns where there is no room beside
    if (beside.right() + size.width() <= room.right())
        x = beside.right() + 1;
    else if (beside.left() - size.width() >= room.left())
        x = beside.left() - size.width();
    const int lowest = std::max(room.top(), room.bottom() - size.height() + 1);
    move(std::max(room.left(), x), std::clamp(beside.top(), room.top(), lowest));
}

void FlowUnitProfile::refresh_later()
{
    if (std::exchange(refresh_pending_, true))
        return;
    QTimer::singleShot(0, this, &FlowUnitProfile::refresh);
}

void FlowUnitProfile::refresh()
{
    refresh_pending_ = false;
    if (!area_)
        return;
    std::vector<FlowUnitPlot*> former = std::exchange(plots_, {});
    for (int column = 1; LQFlowUnitPanel* panel = area_->getPanelFromColNumber(column);
         column += LQFlowUnitPanel::kinds) {
        const auto known = std::ranges::find(former, panel, &FlowUnitPlot::panel);
        FlowUnitPlot* plot = nullptr;
        if (known != former.end()) {
            plot = *known;
            former.erase(known);
        } else {
            plot = new FlowUnitPlot(*panel, scroll_->widget());
            row_->insertWidget(static_cast<int>(plots_.size()), plot);
        }
        plot->follow(area_->numKLayers());
        plots_.push_back(plot);
    }
    for (FlowUnitPlot* plot : former) {
        row_->removeWidget(plot);
        plot->hide();
        plot->setParent(nullptr); // not found by its name any more
        plot->deleteLater();
    }
    if (plots_.size() > most_) {
        // Grows with new panels once; a person who makes it smaller is not overruled.
        most_ = plots_.size();
        resize(std::max(width(), std::min(static_cast<int>(most_), most_in_view) * plot_width), height());
        const int last = screen()->availableGeometry().right() - frameGeometry().width() + 1;
        if (isVisible() && x() > last)
            move(last, y());
    }
}

} // namespace lodex
