#include "SampledGeometry.h"

#include "BlockPlan.h"
#include "Vectors.h"

#include <algorithm>
#include <cmath>

namespace Kelvane::flow {

namespace {

Vector3 minus(const Vector3& a, const Vector3& b)
{
    return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}

/// a + factor * b
Vector3 plus(const Vector3& a, double factor, const Vector3& b)
{
    return {a[0] + factor * b[0], a[1] + factor * b[1], a[2] + factor * b[2]};
}

/// Largest edge of the cell, 0 for a cell that is not finite.
double extent(const Corners& corners)
{
    double largest = 0;
    for (const Vector3& a : corners) {
        for (const Vector3& b : corners) {
            const Vector3 d = minus(a, b);
            const double distance = std::hypot(d[0], d[1], d[2]);
            if (!std::isfinite(distance))
                return 0;
            largest = std::max(largest, distance);
        }
    }
    return largest;
}

/// Image of a point of the unit cube.
Vector3 image(const Corners& corners, double u, double v, double w)
{
    Vector3 point{};
    for (int corner = 0; corner < 8; ++corner) {
        const double weight = ((corner & 1) != 0 ? u : 1 - u) * ((corner & 2) != 0 ? v : 1 - v) *
                              ((corner & 4) != 0 ? w : 1 - w);
        point = plus(point, weight, corners[corner]);
    }
    return point;
}

HexSample make_sample(const Corners& x)
{
    HexSample sample{};
    for (const Vector3& corner : x)
        sample.centre = plus(sample.centre, 1.0 / 8, corner);
    for (int axis = 0; axis < 3; ++axis) {
        const int across = (axis + 1) % 3;
        const int up = (axis + 2) % 3;
        for (int corner = 0; corner < 8; ++corner)
            sample.edge[axis] = plus(sample.edge[axis], ((corner >> axis) & 1) != 0 ? 0.25 : -0.25, x[corner]);
        for (int side = 0; side < 2; ++side) {
            const int face = 2 * axis + side;
            const Vector3& p00 = x[side << axis];
            const Vector3& p10 = x[(side << axis) | (1 << across)];
            const Vector3& p01 = x[(side << axis) | (1 << up)];
            const Vector3& p11 = x[(side << axis) | (1 << across) | (1 << up)];
            // x(s, t) = middle + a s + b t + d s t for s, t between -1/2 and 1/2
            Vector3 middle{};
            Vector3 a{};
            Vector3 b{};
            Vector3 d{};
            for (int c = 0; c < 3; ++c) {
                middle[c] = 0.25 * (p00[c] + p10[c] + p01[c] + p11[c]);
                a[c] = 0.5 * (p10[c] + p11[c] - p00[c] - p01[c]);
                b[c] = 0.5 * (p01[c] + p11[c] - p00[c] - p10[c]);
                d[c] = p00[c] + p11[c] - p10[c] - p01[c];
            }
            const Vector3 normal = cross(a, b);
            sample.middle[face] = middle;
            sample.centroid[face] = middle;
            const double area2 = dot(normal, normal);
            if (area2 > 0) {
                sample.centroid[face] = plus(sample.centroid[face], dot(cross(a, d), normal) / (12 * area2), a);
                sample.centroid[face] = plus(sample.centroid[face], dot(cross(d, b), normal) / (12 * area2), b);
            }
            sample.normal[face] = plus({}, side == 0 ? -1.0 : 1.0, normal);
        }
    }
    for (int face = 0; face < 6; ++face)
        sample.volume += dot(sample.normal[face], minus(sample.centroid[face], sample.centre)) / 3;
    return sample;
}

} // namespace

bool is_brick(const Block& block)
{
    const Corners& corners = *block.corners;
    // World coordinates leave this much rounding in the corners of a cell.
    const double rounding = 1e-9 * std::min({block.size[0], block.size[1], block.size[2]});
    for (int corner = 1; corner < 8; ++corner) {
        for (int axis = 0; axis < 3; ++axis) {
            const double expected = ((corner >> axis) & 1) != 0 ? block.size[axis] : 0;
            if (!(std::abs(corners[corner][axis] - corners[0][axis] - expected) <= rounding))
                return false;
        }
    }
    return true;
}

std::optional<std::vector<HexSample>> sampled_geometry(const Block& block)
{
    const double length = extent(*block.corners);
    if (!(length > 0))
        return std::nullopt;
    Corners corners{};
    for (int corner = 0; corner < 8; ++corner)
        corners[corner] = plus({}, 1 / length, minus((*block.corners)[corner], (*block.corners)[0]));
    const auto& n = block.n;
    const auto point = [&](int i, int j, int k) {
        return image(corners, static_cast<double>(i) / n[0], static_cast<double>(j) / n[1],
                     static_cast<double>(k) / n[2]);
    };
    std::vector<HexSample> samples;
    samples.reserve(block.samples());
    double total = 0;
    for (int k = 0; k < n[2]; ++k) {
        for (int j = 0; j < n[1]; ++j) {
            for (int i = 0; i < n[0]; ++i) {
                Corners x{};
                for (int corner = 0; corner < 8; ++corner)
                    x[corner] = point(i + (corner & 1), j + ((corner >> 1) & 1), k + (corner >> 2));
                samples.push_back(make_sample(x));
                total += samples.back().volume;
            }
        }
    }
    const double least = 1e-8 * total / static_cast<double>(samples.size());
    // The frame is as left- or right-handed as the cell, so a sound cell has positive volumes. Flatter than this the
    // rounding of the corners would speak.
    if (!(total > 1e-9))
        return std::nullopt;
    for (const HexSample& sample : samples) {
        if (!(sample.volume > least))
            return std::nullopt;
    }
    return samples;
}

void half_conductances(const HexSample& sample, const Vector3& k, double* half)
{
    for (int face = 0; face < 6; ++face) {
        const Vector3 d = minus(sample.middle[face], sample.centre);
        const double distance2 = dot(d, d);
        const Vector3& area = sample.normal[face];
        const double flux = area[0] * k[0] * d[0] + area[1] * k[1] * d[1] + area[2] * k[2] * d[2];
        half[face] = distance2 > 0 ? std::abs(flux) / distance2 : 0.0;
    }
}

void mixed_hex(const HexSample& sample, const Vector3& permeability, const int* dofs, double* s)
{
    // Where a sample is sealed along some axes only, an oblique sample would have pressures without energy.
    constexpr double least = 1e-10;
    constexpr int faces = 6;
    const double largest = std::max({permeability[0], permeability[1], permeability[2]});
    std::fill(s, s + pair_count(faces), 0.0);
    if (!(largest > 0))
        return;
    const Vector3 k{std::max(permeability[0], least * largest), std::max(permeability[1], least * largest),
                    std::max(permeability[2], least * largest)};
    const auto& normal = sample.normal;

    // Rows of T - N (R^T N)^-1 R^T T; R from the centre to the faces, T out of both faces of an axis.
    double moment[3][3] = {};
    double sum[3][3] = {}; // R^T T, columns are axes
    for (int face = 0; face < faces; ++face) {
        const Vector3 r = minus(sample.centroid[face], sample.centre);
        for (int a = 0; a < 3; ++a) {
            sum[a][face / 2] += r[a];
            for (int b = 0; b < 3; ++b)
                moment[a][b] += r[a] * normal[face][b];
        }
    }
    const Vector3 rows[3] = {{moment[0][0], moment[0][1], moment[0][2]},
                             {moment[1][0], moment[1][1], moment[1][2]},
                             {moment[2][0], moment[2][1], moment[2][2]}};
    // Columns of the inverse are cross products of the rows.
    const Vector3 adjoint[3] = {cross(rows[1], rows[2]), cross(rows[2], rows[0]), cross(rows[0], rows[1])};
    const double determinant = dot(rows[0], adjoint[0]);
    double z[faces][3];
    double stiffness[3];
    for (int axis = 0; axis < 3; ++axis) {
        Vector3 q{};
        for (int a = 0; a < 3; ++a)
            q = plus(q, sum[a][axis] / determinant, adjoint[a]);
        for (int face = 0; face < faces; ++face)
            z[face][axis] = (face / 2 == axis ? 1.0 : 0.0) - dot(normal[face], q);
        double along = 0;
        double through = 0;
        for (int a = 0; a < 3; ++a) {
            const double mean = 0.5 * (normal[2 * axis + 1][a] - normal[2 * axis][a]);
            along += sample.edge[axis][a] * sample.edge[axis][a] / k[a];
            through += 3 * mean * mean * k[a] / sample.volume;
        }
        // Never above `through` but for rounding; the lower limit keeps an oblique sample of strong anisotropy from
        // falling apart.
        stiffness[axis] = std::max(3 * sample.volume / along, 1e-6 * through);
    }

    // The mean pressure eliminated from Z B Z^T; N K N^T carries none.
    double ones[3] = {};
    double total = 0;
    for (int axis = 0; axis < 3; ++axis) {
        for (int face = 0; face < faces; ++face)
            ones[axis] += z[face][axis];
        total += stiffness[axis] * ones[axis] * ones[axis];
    }
    double out[faces] = {};
    for (int face = 0; face < faces; ++face) {
        for (int axis = 0; axis < 3; ++axis)
            out[face] += z[face][axis] * stiffness[axis] * ones[axis];
    }
    double full[faces][faces];
    for (int r = 0; r < faces; ++r) {
        for (int c = 0; c <= r; ++c) {
            double value = total > 0 ? -out[r] * (out[c] / total) : 0.0;
            for (int a = 0; a < 3; ++a)
                value += normal[r][a] * k[a] * normal[c][a] / sample.volume + z[r][a] * stiffness[a] * z[c][a];
            full[r][c] = full[c][r] = value;
        }
    }

    double area2[faces];
    for (int face = 0; face < faces; ++face)
        area2[face] = dot(normal[face], normal[face]);
    for (int face = 0; face < faces; ++face) {
        const double opposite = std::max(area2[face], area2[face ^ 1]);
        if (dofs[face] != sealed_dof && area2[face] > 1e-18 * opposite)
            continue;
        const double pivot = full[face][face];
        for (int r = 0; r < faces; ++r) {
            if (r == face)
                continue;
            for (int c = 0; c < faces; ++c) {
                if (c != face && pivot > 0)
                    full[r][c] -= full[r][face] * (full[face][c] / pivot);
            }
        }
        for (int r = 0; r < faces; ++r)
            full[r][face] = full[face][r] = 0;
    }
    for (int r = 0; r < faces; ++r) {
        for (int c = 0; c <= r; ++c)
            s[pair_count(r) + c] = full[r][c];
    }
}

} // namespace Kelvane::flow
