#pragma once

#include "lodex/gviews/faces/GridFaces.h"

#include <vtkActor.h>
#include <vtkNew.h>
#include <vtkPolyData.h>
#include <vtkPolyDataMapper.h>
#include <vtkSmartPointer.h>
#include <vtkStaticCellLocator.h>
#include <vtkUnsignedCharArray.h>

#include <functional>
#include <span>

namespace lodex {

/// Cell faces in a scene: their points are handed to the drawing library without a copy.
class FaceActor {
public:
    FaceActor();

    void set_faces(FaceSet faces);
    [[nodiscard]] const FaceSet& faces() const { return faces_; }
    /// `fill` writes 3 bytes for each of the cells.
    void
    set_colours(const std::function<void(std::span<const std::uint32_t> cells, std::span<std::uint8_t> rgb)>& fill);
    /// Where the faces' origin lies in the scene, and the vertical exaggeration.
    void set_place(const Point3& position, double exaggeration);
    void set_visible(bool visible);
    [[nodiscard]] bool visible() { return actor_->GetVisibility() != 0; }
    /// Lines round the cells; they fade where a cell is small on the screen, so that its colour stays.
    void set_edges(bool visible);
    [[nodiscard]] vtkActor* actor() { return actor_; }
    /// For picks; built at the first call after the faces changed.
    [[nodiscard]] vtkStaticCellLocator* locator();
    [[nodiscard]] bool has_locator() const { return locator_ != nullptr; }

private:
    FaceSet faces_;
    vtkNew<vtkPolyData> data_;
    vtkNew<vtkPolyDataMapper> mapper_;
    vtkNew<vtkActor> actor_;
    vtkSmartPointer<vtkStaticCellLocator> locator_;
};

/// Lines in a scene; they cannot be picked.
class LineActor {
public:
    explicit LineActor(float width);

    void set_lines(LineSet lines);
    [[nodiscard]] const LineSet& lines() const { return lines_; }
    void set_colour(double red, double green, double blue);
    void set_place(const Point3& position, double exaggeration);
    void set_visible(bool visible) { actor_->SetVisibility(visible); }
    [[nodiscard]] vtkActor* actor() { return actor_; }

private:
    LineSet lines_;
    vtkNew<vtkPolyData> data_;
    vtkNew<vtkPolyDataMapper> mapper_;
    vtkNew<vtkActor> actor_;
};

} // namespace lodex
