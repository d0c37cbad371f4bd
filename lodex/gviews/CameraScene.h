#pragma once

#include "GridItem.h"
#include "Overlay.h"
#include "ViewTransform.h"

#include <vtkNew.h>
#include <vtkRenderer.h>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace lodex {

/// The grids that a camera shows, and where it stands. Needs no window until something is drawn.
class CameraScene {
public:
    struct Hit {
        CornerPointGrid* grid = nullptr;
        std::int64_t cell = 0;
        Point3 point{}; ///< x, y, depth
    };

    /// `changed` is called when the picture is out of date, `listed` when grids come or go.
    CameraScene(std::function<void()> changed, std::function<void()> listed);
    ~CameraScene();
    CameraScene(const CameraScene&) = delete;
    CameraScene& operator=(const CameraScene&) = delete;

    [[nodiscard]] vtkRenderer& renderer() { return *renderer_; }

    /// Does nothing for a grid that is there.
    void add(CornerPointGrid& grid, const GridDisplay& display);
    void remove(const CornerPointGrid& grid);
    [[nodiscard]] GridItem* find(const CornerPointGrid* grid) const;
    [[nodiscard]] const std::vector<std::unique_ptr<GridItem>>& items() const { return items_; }
    void read_painted();

    void set_colours(const QColor& text, const QColor& background);
    [[nodiscard]] const QColor& background() const { return background_; }

    void set_exaggeration(double factor);
    [[nodiscard]] double exaggeration() const { return exaggeration_; }
    void set_parallel(bool parallel);
    [[nodiscard]] bool parallel() const { return parallel_; }

    /// Where the eye is as seen from the middle: compass direction (0 north, 90 east) and height above the horizon,
    /// degrees.
    void set_direction(double azimuth, double elevation);
    [[nodiscard]] double azimuth() const { return azimuth_; }
    [[nodiscard]] double elevation() const { return elevation_; }
    /// Moves what is seen by logical pixels.
    void pan(double right, double down);
    /// Factors above 1 come nearer; the point at the position stays where it is.
    void zoom(double factor, const QPointF& position);
    /// Turns about this point from now on and moves it to the middle.
    void centre_on(const Point3& real);
    /// Everything that is shown, at the next refresh().
    void fit() { fit_wanted_ = true; }
    /// Nothing while there is no grid, or none was brought into view yet.
    [[nodiscard]] std::optional<CameraPlace> place() const;
    void set_place(const CameraPlace& place);

    /// Makes what is out of date anew and sets the camera for a picture of this size. Lengths are logical pixels.
    void refresh(const QSizeF& size, const QFont& font);
    /// Of the last refresh().
    [[nodiscard]] const ViewTransform& view() const { return view_; }
    [[nodiscard]] Overlay overlay(const QFont& font) const;
    [[nodiscard]] bool shows_axes() const { return axes_; }
    void set_axes(bool shown);

    /// The cell at a position of the last refreshed view; nothing where there is none.
    [[nodiscard]] std::optional<Hit> pick(const QPointF& position);
    /// The real point at a position as far away as the middle of what is seen.
    [[nodiscard]] Point3 point_at(const QPointF& position) const;

private:
    void place_camera(const QSizeF& size);
    void fit_now(const QSizeF& size, const QFont& font);
    [[nodiscard]] std::array<Point3, 3> directions() const; // right, up, towards the eye
    [[nodiscard]] DrawnBox drawn_box() const;
    [[nodiscard]] QPointF free_middle(const QSizeF& size) const;

    vtkNew<vtkRenderer> renderer_;
    std::function<void()> changed_, listed_;
    std::vector<std::unique_ptr<GridItem>> items_;
    Point3 origin_{};
    double exaggeration_ = 1;
    bool parallel_ = false, axes_ = true, fit_wanted_ = false;
    double azimuth_ = 205, elevation_ = 32;
    Point3 focus_{};    // drawn coordinates
    double height_ = 1; // what is seen at the focus, drawn units
    OverlayMargins margins_;
    ViewTransform view_;
    QColor text_{Qt::black}, background_{Qt::white};
};

} // namespace lodex
