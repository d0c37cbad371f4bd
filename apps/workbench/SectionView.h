#pragma once

#include "PaintedSections.h"
#include "Section.h"
#include "Watch.h"

#include "lodex/gviews/CellPalette.h"

#include <Lodex/gviews/Camera.h>

#include <QImage>
#include <QWidget>

#include <optional>

namespace lodex {

class CornerPointGrid;

/// Shows one vertical section of a grid: each active cell as it stands between its pillars, distance along the section
/// against depth, stretched to fill the view. Follows the grid and the painted sections of its style, and the
/// colours of the shown property, by itself.
class SectionView final : public QWidget, public Lodex::Camera {
    Q_OBJECT

public:
    explicit SectionView(QWidget* parent = nullptr);
    ~SectionView() override;

    /// Null: nothing is shown.
    void set_grid(CornerPointGrid* grid);
    [[nodiscard]] CornerPointGrid* grid() const;
    /// 0-based; an index outside the grid shows nothing.
    void set_section(SectionAxis axis, std::int64_t index);
    void set_colouring(const ColourBy& colouring);

    /// What is shown now.
    [[nodiscard]] const Section& section();
    [[nodiscard]] const CellPalette& colours();
    /// Linear indices of the shown cells that belong to a painted section, in the order of section().
    [[nodiscard]] std::vector<std::int64_t> painted_cells();
    /// Index of the cell drawn at a place of the widget; nothing where there is none.
    [[nodiscard]] std::optional<std::int64_t> cell_at(const QPointF& place);
    /// Place in the widget of a point of the section.
    [[nodiscard]] QPointF to_widget(double distance, double depth);
    /// How much a length along the depth looks longer than the same length along the section.
    [[nodiscard]] double vertical_exaggeration();

    void request_update() override;
    [[nodiscard]] QSize sizeHint() const override { return {760, 460}; }
    [[nodiscard]] QSize minimumSizeHint() const override { return {320, 220}; }

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool event(QEvent* event) override;

private:
    void grid_changed();
    void read_painted();
    void colours_changed();
    /// Follows the style of the property that the cells are coloured by.
    void watch_property();
    [[nodiscard]] bool is_painted(std::int64_t cell) const;
    [[nodiscard]] bool paints_anything() const;
    /// From the section to the widget.
    struct Mapping {
        QPointF origin; ///< of the section's first distance and its top
        double first_distance, top;
        double across, down; ///< pixels per unit of length

        [[nodiscard]] QPointF at(double distance, double depth) const
        {
            return {origin.x() + (distance - first_distance) * across, origin.y() + (depth - top) * down};
        }
        [[nodiscard]] std::array<QPointF, 4> at(const SectionCell& cell) const;
    };
    [[nodiscard]] Mapping mapping();
    /// Where the cells are drawn; title, axes and legend stand around it.
    [[nodiscard]] QRectF plot_area();
    [[nodiscard]] int legend_width();
    void draw_picture();
    void draw_cells(QPainter& painter);
    void draw_painted(QPainter& painter);
    void draw_axes(QPainter& painter);
    void draw_legend(QPainter& painter);
    [[nodiscard]] QString title();
    [[nodiscard]] QString cell_text(std::int64_t cell);

    GridWatch grid_watch_;
    StyleWatch style_watch_;
    StyleWatch property_style_watch_;
    SectionAxis axis_ = SectionAxis::J;
    std::int64_t index_ = 0;
    ColourBy colouring_;
    std::optional<Section> section_; // made when it is needed
    std::optional<CellPalette> colours_;
    PaintedSections painted_;
    QImage picture_; // null: to be drawn again
};

} // namespace lodex
