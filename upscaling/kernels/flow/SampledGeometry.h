#pragma once

#include "Block.h"

#include <optional>
#include <vector>

namespace Kelvane::flow {

/// One sample of a cell: the image of a brick of the unit cube under the cell's trilinear map. Local faces I-, I+, J-,
/// J+, K-, K+.
struct HexSample {
    Vector3 centre;                  ///< image of the brick's centre, mean of the corners
    std::array<Vector3, 6> normal;   ///< area vectors out of the sample, exact integrals over the bilinear faces
    std::array<Vector3, 6> middle;   ///< images of the face centres, mean of the corners
    std::array<Vector3, 6> centroid; ///< area-weighted, along the mean normal: exact for plane faces
    std::array<Vector3, 3> edge;     ///< mean edge vectors along I, J, K
    double volume;
};

/// Samples of a block in its frame, lengths divided by the largest edge; I fastest. Nothing when the geometry is
/// degenerate: a corner that is not finite, a sample without volume or turned inside out.
[[nodiscard]] std::optional<std::vector<HexSample>> sampled_geometry(const Block& block);

/// Whether the corners are those of the brick of the given sizes, along the axes of the frame, to 1e-9 of the smallest.
[[nodiscard]] bool is_brick(const Block& block);

/// Half conductances from the centre to the six faces, N.(K d) / (d.d) with d from the centre to the middle of the face
/// and N its area vector; of absolute value, since a strongly skewed sample may make a few negative.
void half_conductances(const HexSample& sample, const Vector3& k, double* half);

/// Local matrix of the mixed hybrid element (21 entries, see mixed_brick()) with sealed faces (dofs) and faces without
/// area eliminated. The inverse mass matrix is N K N^T / V + Z B Z^T (F. Brezzi, K. Lipnikov, V. Simoncini, Math.
/// Models Methods Appl. Sci. 15, 2005): the first part makes it exact for linear pressure, where faces are plane; Z
/// holds the fluxes out of both faces of an axis, and B is that of lowest-order Raviart-Thomas elements on
/// parallelepipeds, 3 V / (E.K^-1 E) for the edge E. So on parallelepipeds it is that element.
/// Permeabilities below 1e-10 of the sample's largest count as that.
void mixed_hex(const HexSample& sample, const Vector3& permeability, const int* dofs, double* s);

} // namespace Kelvane::flow
