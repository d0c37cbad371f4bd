#pragma once

#include <array>
#include <span>

namespace Kelvane::flow {

/// Orders in which the harmonic mean along the flow (h_x) and the arithmetic means across it (m_y, m_z) are taken.
/// HarmonicArithmetic: m_y m_z h_x, lines first; a lower bound of confined flow.
/// ArithmeticHarmonic: h_x m_y m_z, planes first; an upper bound.
/// CardwellParson: geometric mean of the two (W. T. Cardwell, R. L. Parsons, Trans. AIME 160, 1945, 34-42).
/// SymCardwellParson: geometric mean over the six orders of the three means, in which each bound stands twice and each
/// of the two mixed orders once.
enum class DirectionalMean { HarmonicArithmetic, ArithmeticHarmonic, CardwellParson, SymCardwellParson };

/// Lengths of the sections along I, J, K: n[a] numbers each; empty: all equal. Lines are weighted by lengths, planes by
/// areas, which are products of lengths.
using SectionLengths = std::array<std::span<const double>, 3>;

/// The mean of n[0]*n[1]*n[2] values, I fastest, for flow along `axis` (0, 1, 2 for I, J, K). A zero, a negative value
/// and one that is not finite are sealed: they make the harmonic mean over them 0. Returns the unit of the values.
[[nodiscard]] double directional_mean(DirectionalMean mean, int axis, const std::array<int, 3>& n,
                                      std::span<const double> values, const SectionLengths& lengths = {});

/// The same along I, J and K for a scalar.
[[nodiscard]] std::array<double, 3> directional_means(DirectionalMean mean, const std::array<int, 3>& n,
                                                      std::span<const double> values,
                                                      const SectionLengths& lengths = {});

/// Each component along its own axis by SymCardwellParson.
[[nodiscard]] std::array<double, 3> diagonal_means(const std::array<int, 3>& n, std::span<const double> ki,
                                                   std::span<const double> kj, std::span<const double> kk,
                                                   const SectionLengths& lengths = {});

} // namespace Kelvane::flow
