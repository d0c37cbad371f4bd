#pragma once

#include <QWidget>

#include <vector>

namespace lodex {

/// Round numbers for the ticks of an axis from `first` to `last` (either may be the larger), at most `most` of them.
[[nodiscard]] std::vector<double> tick_places(double first, double last, int most);

/// Range of an axis.
struct PlotAxis {
    double first = 0; ///< at the left or at the bottom
    double last = 1;
    bool logarithmic = false; ///< both ends above 0
    QString title;
    bool ticks = true; ///< false: the plot labels the axis itself

    /// Place between the two ends, 0 to 1.
    [[nodiscard]] double place(double value) const;
};

/// A small plot: frame, grid lines, ticks and titles, with the colours of the palette, so that it reads in light and
/// dark. Derived plots draw their data.
class PlotWidget : public QWidget {
    Q_OBJECT

public:
    explicit PlotWidget(QWidget* parent = nullptr);
    /// Shown in the middle when there is nothing to draw.
    void set_empty_text(const QString& text);
    [[nodiscard]] QSize sizeHint() const override { return {480, 320}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {220, 160}; }
    /// Colours for several series, readable on light and dark.
    [[nodiscard]] static QColor series_colour(int index);

protected:
    void paintEvent(QPaintEvent* event) override;
    [[nodiscard]] virtual bool has_data() const = 0;
    [[nodiscard]] virtual PlotAxis x_axis() const = 0;
    [[nodiscard]] virtual PlotAxis y_axis() const = 0;
    /// Draws inside the frame; map() turns values into places.
    virtual void paint_data(QPainter& painter) = 0;

    /// Room to the right of the frame, in pixels.
    [[nodiscard]] virtual qreal right_margin() const { return 1.5 * fontMetrics().height(); }

    [[nodiscard]] QPointF map(double x, double y) const;
    [[nodiscard]] const QRectF& frame() const { return frame_; }

private:
    void paint_axes(QPainter& painter);

    QString empty_text_;
    QRectF frame_;
    PlotAxis x_, y_;
};

} // namespace lodex
