#pragma once

#include "CellInfo.h"
#include "ColourScale.h"
#include "GridDisplay.h"
#include "ViewTransform.h"

#include <Lodex/gviews/Camera.h>
#include <Lodex/gviews/Picking.h>

#include <QImage>
#include <QPointF>
#include <QWidget>

#include <memory>
#include <optional>
#include <vector>

namespace lodex {

class CornerPointGrid;

/// A 3D view of grids: x to the east, y to the north, depth downwards.
///
/// Left button turns, middle button (or left with Shift) moves, wheel and right button come nearer and go away; a click
/// without moving picks a cell and hands it to the current tool (GraphicLib); a double click puts the cell in the
/// middle, on the legend it opens the colours' dialog. Arrow keys turn, plus and minus come nearer and go away, Home
/// shows everything; Escape ends the current tool.
///
/// It follows the grids, their styles and the styles of their properties by itself and forgets a grid that goes away.
/// Many changes make one picture. Where the platform cannot draw in 3D a plain widget stands in its place and
/// everything else works. GUI thread only.
class CameraView : public QWidget, public Lodex::Camera, private Lodex::ToolObserver {
    Q_OBJECT

public:
    /// Named after where the eye is.
    enum class StandardView { Oblique, Top, Bottom, North, South, East, West };
    Q_ENUM(StandardView)

    /// To be called before the QApplication is made: what the drawing context must be like.
    static void prepare_application();

    explicit CameraView(QWidget* parent = nullptr);
    ~CameraView() override;

    /// False where a plain widget stands in the camera's place.
    [[nodiscard]] bool can_draw() const;

    /// Shows a grid more; the first one is brought into view. Does nothing for a grid that is there.
    void add_grid(CornerPointGrid* grid, const GridDisplay& display = {});
    void remove_grid(CornerPointGrid* grid);
    void remove_all();
    /// In the order in which they came.
    [[nodiscard]] std::vector<CornerPointGrid*> grids() const;
    [[nodiscard]] bool shows(const CornerPointGrid* grid) const;
    /// The defaults for a grid that is not there.
    [[nodiscard]] GridDisplay display(const CornerPointGrid* grid) const;
    void set_display(CornerPointGrid* grid, const GridDisplay& display);
    /// Changes one thing of it: set_colour(grid, ColourBy::of_property("PORO")).
    void set_colour(CornerPointGrid* grid, const ColourBy& colour);
    void set_filter(CornerPointGrid* grid, const CellFilter& filter);

    /// What the current tool asks the user to do; empty for the default tool.
    [[nodiscard]] QString hint() const;

    [[nodiscard]] double vertical_exaggeration() const;
    /// Factors above 0.
    void set_vertical_exaggeration(double factor);
    [[nodiscard]] bool orthographic() const;
    [[nodiscard]] bool axes_shown() const;
    /// Degrees: where the eye is, clockwise from the north, and above the horizon.
    [[nodiscard]] double azimuth() const;
    [[nodiscard]] double elevation() const;
    void set_direction(double azimuth, double elevation);
    /// Nothing while there is no grid, or none was brought into view yet.
    [[nodiscard]] std::optional<CameraPlace> place() const;
    /// Numbers without sense are passed over.
    void set_place(const CameraPlace& place);

    /// The view as a picture of any size in pixels with legend and axes; null where the view cannot draw. Works for a
    /// view that is hidden.
    [[nodiscard]] QImage picture(const QSize& size);
    /// PNG, or what the file's ending says; written beside the target and renamed into place. False with a reason.
    bool save_picture(const QString& path, const QSize& size, QString* reason = nullptr);

    /// The cell at a position in the view, nothing where there is none. Changes nothing.
    [[nodiscard]] std::optional<CellInfo> cell_at(const QPointF& position);
    /// Hands the pick at this position to the current tool, as a click does.
    void pick_at(const QPointF& position);
    /// How places in the view (logical pixels) and points belong together, as last drawn.
    [[nodiscard]] const ViewTransform& transform() const;
    /// Cell faces that are drawn now, of all grids.
    [[nodiscard]] std::size_t face_count() const;
    /// Brings everything up to date now instead of with the next picture.
    void refresh_now();

    // Lodex::Camera
    void request_update() override;

public Q_SLOTS:
    void fit();
    void set_standard_view(lodex::CameraView::StandardView view);
    void set_orthographic(bool on);
    void set_axes_shown(bool on);
    /// The dialog with the colours of the property that the grid is coloured by; null when it is coloured otherwise.
    /// Not modal, deleted when closed.
    QWidget* edit_legend(lodex::CornerPointGrid* grid);
    /// Takes the mark of the last picked cell away.
    void clear_mark();

Q_SIGNALS:
    /// A click hit a cell, whichever tool is current.
    void cell_picked(const lodex::CellInfo& cell);
    /// A click hit nothing.
    void nothing_picked();
    /// hint() changed.
    void hint_changed(const QString& hint);
    /// Grids came or went.
    void grids_changed();
    /// A picture was drawn.
    void drawn();

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void tool_changed(Lodex::CameraToolAction* tool) override;
    void take_colours();
    /// The grid whose legend is at this position; null when there is none.
    [[nodiscard]] CornerPointGrid* legend_at(const QPointF& position) const;
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

} // namespace lodex
