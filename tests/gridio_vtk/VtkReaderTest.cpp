// VTK's own reader on the files that are written for it.

#include "../gridio/GridTestTools.h"

#include <lodex/gridio/RoffReader.h>
#include <lodex/gridio/VtuFormat.h>
#include <lodex/volumes/model/CellGeometry.h>

#include <gtest/gtest.h>

#include <vtkCellData.h>
#include <vtkCellType.h>
#include <vtkFieldData.h>
#include <vtkIdList.h>
#include <vtkNew.h>
#include <vtkPointData.h>
#include <vtkStringArray.h>
#include <vtkUnstructuredGrid.h>
#include <vtkXMLUnstructuredGridReader.h>

#include <cmath>

namespace lodex {
namespace {

void expect_opens(const GridModel& model)
{
    const test::TemporaryFolder folder;
    const auto path = folder / "model.vtu";
    VtuFormat().write(model, path, {});
    vtkNew<vtkXMLUnstructuredGridReader> reader;
    ASSERT_NE(reader->CanReadFile(path.c_str()), 0);
    reader->SetFileName(path.c_str());
    reader->Update();
    ASSERT_EQ(reader->GetErrorCode(), 0U);
    vtkUnstructuredGrid* const grid = reader->GetOutput();
    const auto active = std::count(model.active.begin(), model.active.end(), 1);
    ASSERT_EQ(grid->GetNumberOfCells(), active);

    vtkDataArray* const is = grid->GetCellData()->GetArray("I");
    vtkDataArray* const js = grid->GetCellData()->GetArray("J");
    vtkDataArray* const ks = grid->GetCellData()->GetArray("K");
    ASSERT_TRUE(is != nullptr && js != nullptr && ks != nullptr);
    vtkNew<vtkIdList> points;
    for (vtkIdType cell = 0; cell < active; ++cell) {
        ASSERT_EQ(grid->GetCellType(cell), VTK_HEXAHEDRON);
        grid->GetCellPoints(cell, points);
        ASSERT_EQ(points->GetNumberOfIds(), 8);
        const auto index = [cell](vtkDataArray* array) {
            return static_cast<std::int64_t>(array->GetTuple1(cell)) - 1;
        };
        const CellCorners corners = cell_corners(model, index(is), index(js), index(ks));
        Point3 sum{}, expected{};
        for (vtkIdType n = 0; n < 8; ++n) {
            std::array<double, 3> point{};
            grid->GetPoint(points->GetId(n), point.data());
            for (std::size_t axis = 0; axis < 3; ++axis) {
                sum[axis] += axis == 2 ? -point[axis] : point[axis];
                expected[axis] += corners[static_cast<std::size_t>(n)][axis];
            }
        }
        for (std::size_t axis = 0; axis < 3; ++axis) {
            ASSERT_NEAR(sum[axis], expected[axis], 1e-12 * std::fabs(expected[axis])) << cell;
        }
    }
    for (const PropertyData& property : model.properties) {
        vtkDataArray* const array = property.on_points ? grid->GetPointData()->GetArray(property.name.c_str())
                                                       : grid->GetCellData()->GetArray(property.name.c_str());
        ASSERT_NE(array, nullptr) << property.name;
        constexpr std::array<int, 3> types = {VTK_FLOAT, VTK_DOUBLE, VTK_INT};
        EXPECT_EQ(array->GetDataType(), types[property.values.index()]);
        if (property.on_points) {
            continue;
        }
        const auto values = test::values_of(property);
        for (vtkIdType cell = 0; cell < active; ++cell) {
            const auto index = [cell](vtkDataArray* a) { return static_cast<std::int64_t>(a->GetTuple1(cell)) - 1; };
            const double value = values[static_cast<std::size_t>(model.cell_index(index(is), index(js), index(ks)))];
            const double found = array->GetTuple1(cell);
            const bool blank = std::isnan(value) || (!property.discrete() && property.no_data == value);
            ASSERT_TRUE(blank ? std::isnan(found) : found == value) << property.name << ' ' << cell;
        }
        if (!property.code_names.empty()) {
            auto* const codes = vtkStringArray::SafeDownCast(
                grid->GetFieldData()->GetAbstractArray((property.name + " codes").c_str()));
            ASSERT_NE(codes, nullptr) << property.name;
            vtkIdType n = 0;
            for (const auto& [code, name] : property.code_names) {
                EXPECT_EQ(codes->GetValue(n++), std::to_string(code) + ' ' + name);
            }
            EXPECT_EQ(codes->GetNumberOfValues(), n);
        }
    }
    for (const RegionData& region : model.regions) {
        vtkDataArray* const array = grid->GetCellData()->GetArray(region.name.c_str());
        ASSERT_NE(array, nullptr);
        EXPECT_EQ(array->GetDataType(), VTK_UNSIGNED_CHAR);
    }
}

TEST(VtkReader, OpensAFullModel)
{
    expect_opens(test::full_model(4, 3, 5));
}

TEST(VtkReader, OpensAnEmptyGrid)
{
    GridModel model = test::full_model(2, 2, 2);
    model.active.assign(model.active.size(), 0);
    expect_opens(model);
}

TEST(VtkReader, OpensPublicModels)
{
    const auto data = test::field_data();
    if (!data) {
        return;
    }
    for (const char* const name : {"tiny/banal7_grid_params.roff", "tiny/twocell.roff", "reek/reek_grd_w_props.roff",
                                   "drogon/simgrid_with_region_zone_attr.roff"}) {
        expect_opens(roff::read_file(*data / name, {}).model);
    }
}

} // namespace
} // namespace lodex
