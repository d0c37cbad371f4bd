#include "Block.h"

#include "Vectors.h"

#include <algorithm>
#include <cmath>

namespace Kelvane::flow {

namespace {

Vector3 without(const Vector3& v, const Vector3& axis)
{
    const double part = dot(v, axis);
    return {v[0] - part * axis[0], v[1] - part * axis[1], v[2] - part * axis[2]};
}

double length(const Vector3& v)
{
    return std::hypot(v[0], v[1], v[2]);
}

Vector3 scaled(const Vector3& v, double factor)
{
    return {v[0] * factor, v[1] * factor, v[2] * factor};
}

/// Mean of the four edges along each axis.
std::array<Vector3, 3> mean_edges(const Corners& corners)
{
    std::array<Vector3, 3> edges{};
    for (int axis = 0; axis < 3; ++axis) {
        for (int corner = 0; corner < 8; ++corner) {
            const double sign = ((corner >> axis) & 1) != 0 ? 0.25 : -0.25;
            for (int c = 0; c < 3; ++c)
                edges[axis][c] += sign * corners[corner][c];
        }
    }
    return edges;
}

bool is_finite(const Corners& corners)
{
    return std::ranges::all_of(corners, [](const Vector3& p) { return std::isfinite(p[0] + p[1] + p[2]); });
}

/// The world axis least along the given direction, made orthogonal to it.
Vector3 any_normal(const Vector3& direction)
{
    int least = 0;
    for (int c = 1; c < 3; ++c) {
        if (std::abs(direction[c]) < std::abs(direction[least]))
            least = c;
    }
    Vector3 axis{};
    axis[least] = 1;
    const Vector3 normal = without(axis, direction);
    return scaled(normal, 1 / length(normal));
}

} // namespace

std::array<Vector3, 3> block_frame(const Corners& corners)
{
    if (!is_finite(corners))
        return {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};
    std::array<Vector3, 3> edges = mean_edges(corners);
    // An edge counts as a direction when it stands out of the rounding of the cell's own extent.
    double extent = 0;
    for (const Vector3& edge : edges)
        extent = std::max(extent, length(edge));
    const double least = 1e-12 * extent;
    if (!(extent > 0))
        return {{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}};

    const auto across = [&](const Vector3& axis) {
        const Vector3 part = without(edges[1], axis);
        return length(part) > least ? scaled(part, 1 / length(part)) : Vector3{};
    };
    Vector3 first{};
    Vector3 second{};
    if (length(edges[0]) > least) {
        first = scaled(edges[0], 1 / length(edges[0]));
        second = across(first);
        if (length(second) < 0.5) {
            // J has no direction of its own: the one that stands on I and K.
            const Vector3 normal = cross(edges[2], first);
            second = length(normal) > least ? scaled(normal, 1 / length(normal)) : any_normal(first);
        }
    } else if (length(edges[1]) > least) {
        const Vector3 along = scaled(edges[1], 1 / length(edges[1]));
        const Vector3 normal = cross(along, edges[2]);
        first = length(normal) > least ? scaled(normal, 1 / length(normal)) : any_normal(along);
        second = along;
    } else {
        const Vector3 up = scaled(edges[2], 1 / length(edges[2]));
        first = any_normal(up);
        second = cross(up, first);
    }
    Vector3 third = cross(first, second);
    if (dot(third, edges[2]) < 0)
        third = scaled(third, -1);
    return {first, second, third};
}

FramedCell frame_cell(const Corners& world)
{
    FramedCell cell;
    cell.frame = block_frame(world);
    if (!is_finite(world)) {
        for (int corner = 0; corner < 8; ++corner) {
            for (int c = 0; c < 3; ++c)
                cell.corners[corner][c] = ((corner >> c) & 1) - 0.5;
        }
        cell.size = {1, 1, 1};
        return cell;
    }
    Vector3 centre{};
    for (int c = 0; c < 3; ++c) {
        for (const Vector3& corner : world)
            centre[c] += corner[c] / 8;
    }
    for (int corner = 0; corner < 8; ++corner) {
        Vector3 offset{};
        for (int c = 0; c < 3; ++c)
            offset[c] = world[corner][c] - centre[c];
        for (int axis = 0; axis < 3; ++axis)
            cell.corners[corner][axis] = dot(offset, cell.frame[axis]);
    }
    const std::array<Vector3, 3> edges = mean_edges(world);
    for (int axis = 0; axis < 3; ++axis)
        cell.size[axis] = length(edges[axis]);
    return cell;
}

} // namespace Kelvane::flow
