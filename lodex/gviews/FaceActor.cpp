#include "FaceActor.h"

#include <vtkCellArray.h>
#include <vtkCellData.h>
#include <vtkFloatArray.h>
#include <vtkPoints.h>
#include <vtkProperty.h>
#include <vtkShaderProperty.h>
#include <vtkTypeInt32Array.h>

#include <tbb/parallel_for.h>

namespace lodex {

namespace {

constexpr double edge_shade = 0.12;
constexpr float edge_width = 1; // pixels

// The drawing library mixes the colour of the edges into the colours of a face. What it does is taken back by how thin
// the face is on the screen: its triangles have the lines of their three sides (unit normal in xy, offset in w) at
// hand; the distance of a corner from the side across is the height of the face where that side is one of the cell.
constexpr const char* before_edges = R"(
  vec3 plainAmbient = ambientColor, plainDiffuse = diffuseColor;
  float thinnest = 1e6;
  for (int side = 0; side < 3; ++side)
  {
    vec4 own = edgeEqn[side], b = edgeEqn[side == 2 ? 0 : side + 1], c = edgeEqn[side == 0 ? 2 : side - 1];
    float turn = b.x * c.y - b.y * c.x;
    if (own.z == 0.0 && abs(turn) > 1e-4)
    {
      vec2 corner = vec2(b.y * c.w - c.y * b.w, c.x * b.w - b.x * c.w) / turn;
      thinnest = min(thinnest, abs(dot(own.xy, corner) + own.w));
    }
  }
  float strength = 0.8 * smoothstep(2.0, 10.0, thinnest);
//VTK::Edges::Impl
  ambientColor = mix(plainAmbient, ambientColor, strength);
  diffuseColor = mix(plainDiffuse, diffuseColor, strength);
)";
constexpr const char* edges_tag = "//VTK::Edges::Impl";

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
    // The faces of shown cells are closed surfaces. Their insides would take half of the time.
    property->BackfaceCullingOn();
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
    if (visible == (actor_->GetProperty()->GetEdgeVisibility() != 0))
        return;
    actor_->GetProperty()->SetEdgeVisibility(visible);
    if (visible)
        actor_->GetShaderProperty()->AddFragmentShaderReplacement(edges_tag, true, before_edges, false);
    else
        actor_->GetShaderProperty()->ClearFragmentShaderReplacement(edges_tag, true);
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
