#include "ViewTransform.h"

#include <algorithm>

namespace lodex {

namespace {

std::array<double, 4> times(const std::array<double, 16>& m, const std::array<double, 4>& v)
{
    std::array<double, 4> result{};
    for (std::size_t row = 0; row < 4; ++row) {
        for (std::size_t column = 0; column < 4; ++column)
            result[row] += m[4 * row + column] * v[column];
    }
    return result;
}

} // namespace

std::optional<QPointF> ViewTransform::project(const Point3& drawn) const
{
    const auto [x, y, z, w] = times(matrix, {drawn[0], drawn[1], drawn[2], 1});
    if (w <= 0)
        return std::nullopt;
    return QPointF((x / w + 1) / 2 * size.width(), (1 - y / w) / 2 * size.height());
}

Point3 ViewTransform::unproject(const QPointF& position, double nearness) const
{
    const auto [x, y, z, w] =
        times(inverse, {2 * position.x() / size.width() - 1, 1 - 2 * position.y() / size.height(), nearness, 1});
    return {x / w, y / w, z / w};
}

void DrawnBox::add(const Point3& point)
{
    for (std::size_t axis = 0; axis < 3; ++axis) {
        least[axis] = empty ? point[axis] : std::min(least[axis], point[axis]);
        greatest[axis] = empty ? point[axis] : std::max(greatest[axis], point[axis]);
    }
    empty = false;
}

Point3 DrawnBox::centre() const
{
    return {(least[0] + greatest[0]) / 2, (least[1] + greatest[1]) / 2, (least[2] + greatest[2]) / 2};
}

} // namespace lodex
