#include "FaceActor.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkFloatArray.h>
#include <vtkPoints.h>
#include <vtkProperty.h>
#include <vtkTypeInt32Array.h>

#include <tbb/parallel_for.h>

namespace lodex {

namespace {

constexpr double edge_shade = 0.15;
constexpr float edge_width = 0; // the thinnest lines there are: they let the cells' colours through

/// Points that stay where they are: the array must outlive what is returned.
vtkSmartPointer<vtkPoints> points_of(std::vector<float>& numbers)
{
    vtkNew<vtkFloatArray> array;
    array->SetNumberOfComponents(3);
    array->SetArray(numbers.data(), static_cast<vtkIdType>(numbers.size()), 1);
    auto points = vtkSmartPointer<vtkPoints>::New();
    points->SetData(array);
    return points;
}

/// Cells of `corners` points each that follow one another, with 32-bit indices.
vtkSmartPointer<vtkCellArray> cells_of(std::size_t cells, int corners)
{
    vtkNew<vtkTypeInt32Array> connectivity, offsets;
    const std::size_t count = cells * static_cast<std::size_t>(corners);
    connectivity->SetNumberOfValues(static_cast<vtkIdType>(count));
    offsets->SetNumberOfValues(static_cast<vtkIdType>(cells + 1));
    std::int32_t* const indices = connectivity->GetPointer(0);
    std::int32_t* const begins = offsets->GetPointer(0);
    tbb::parallel_for(std::size_t{0}, cells, [&](std::size_t n) {
        begins[n] = static_cast<std::int32_t>(n) * corners;
        for (int corner = 0; corner < corners; ++corner)
            indices[n * static_cast<std::size_t>(corners) + static_cast<std::size_t>(corner)] = begins[n] + corner;
    });
    begins[cells] = static_cast<std::int32_t>(count);
    auto array = vtkSmartPointer<vtkCellArray>::New();
    array->SetData(offsets, connectivity);
    return array;
}

} // namespace

FaceActor::FaceActor()
{
    mapper_->SetInputData(data_);
    mapper_->SetScalarModeToUseCellData();
    mapper_->SetColorModeToDirectScalars();
    // A little further away, so that lines along the faces are whole.
    mapper_->SetResolveCoincidentTopologyToPolygonOffset();
    mapper_->SetRelativeCoincidentTopologyPolygonOffsetParameters(2, 4);
    actor_->SetMapper(mapper_);
    vtkProperty* const property = actor_->GetProperty();
    property->SetInterpolationToFlat();
    property->SetAmbient(0.42);
    property->SetDiffuse(0.62);
    property->SetSpecular(0);
    property->SetEdgeColor(edge_shade, edge_shade, edge_shade);
    property->SetLineWidth(edge_width);
}

void FaceActor::set_faces(FaceSet faces)
{
    locator_ = nullptr;
    // The old points are in use until the new ones are in place.
    FaceSet former = std::move(faces_);
    faces_ = std::move(faces);
    data_->Initialize();
    data_->SetPoints(points_of(faces_.points));
    data_->SetPolys(cells_of(faces_.size(), 4));
    data_->Modified();
}

void FaceActor::set_colours(const std::function<void(std::span<const std::uint32_t>, std::span<std::uint8_t>)>& fill)
{
    vtkNew<vtkUnsignedCharArray> colours;
    colours->SetNumberOfComponents(3);
    colours->SetNumberOfTuples(static_cast<vtkIdType>(faces_.size()));
    if (faces_.size() > 0)
        fill(faces_.cell, {colours->GetPointer(0), 3 * faces_.size()});
    data_->GetCellData()->SetScalars(colours);
    data_->Modified();
}

void FaceActor::set_place(const Point3& position, double exaggeration)
{
    actor_->SetPosition(position[0], position[1], position[2]);
    actor_->SetScale(1, 1, exaggeration);
}

void FaceActor::set_visible(bool visible)
{
    actor_->SetVisibility(visible && faces_.size() > 0);
}

void FaceActor::set_edges(bool visible)
{
    actor_->GetProperty()->SetEdgeVisibility(visible);
}

vtkStaticCellLocator* FaceActor::locator()
{
    if (!locator_ && faces_.size() > 0) {
        locator_ = vtkSmartPointer<vtkStaticCellLocator>::New();
        locator_->SetDataSet(data_);
        locator_->BuildLocator();
    }
    return locator_;
}

LineActor::LineActor(float width)
{
    mapper_->SetInputData(data_);
    mapper_->ScalarVisibilityOff();
    mapper_->SetResolveCoincidentTopologyToPolygonOffset();
    mapper_->SetRelativeCoincidentTopologyLineOffsetParameters(-1, -4);
    actor_->SetMapper(mapper_);
    actor_->PickableOff();
    actor_->GetProperty()->LightingOff();
    actor_->GetProperty()->SetLineWidth(width);
}

void LineActor::set_lines(LineSet lines)
{
    LineSet former = std::move(lines_);
    lines_ = std::move(lines);
    data_->Initialize();
    data_->SetPoints(points_of(lines_.points));
    data_->SetLines(cells_of(lines_.size(), 2));
    data_->Modified();
}

void LineActor::set_colour(double red, double green, double blue)
{
    actor_->GetProperty()->SetColor(red, green, blue);
}

void LineActor::set_place(const Point3& position, double exaggeration)
{
    actor_->SetPosition(position[0], position[1], position[2]);
    actor_->SetScale(1, 1, exaggeration);
}

} // namespace lodex
