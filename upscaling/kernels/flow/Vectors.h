#pragma once

#include "Block.h"

namespace Kelvane::flow {

[[nodiscard]] inline double dot(const Vector3& a, const Vector3& b)
{
    return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}

[[nodiscard]] inline Vector3 cross(const Vector3& a, const Vector3& b)
{
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

} // namespace Kelvane::flow
