#pragma once

#include "Block.h"
#include "Multilevel.h"

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

// Flow through a large brick: the linear systems of the three discretisations.
//
// The pressure is g + w, where g falls linearly from 1 to 0 along one axis (the direction) and w vanishes on the open
// faces of the brick: the fixed pressures are g's for each boundary condition, and only w is solved for. Lengths are
// scaled so that the brick has volume 1; flow is counted upwards along the axes.

namespace Kelvane::flow {

/// Which pairs of opposite faces of the brick hold a fixed pressure; the others are sealed.
using OpenAxes = std::array<bool, 3>;

/// The samples as the systems see them.
class Samples {
public:
    /// Sizes of the block must be positive. Leaves out the samples that can carry no flow when these axes are open:
    /// those without conductivity, and those of a connected part that does not reach the open faces (both faces when it
    /// is one pair). `through_nodes`: samples that share a corner count as connected, as in finite elements; otherwise
    /// a common face with conductivity along its normal on both sides is needed.
    Samples(const Block& block, const OpenAxes& open, bool through_nodes);

    [[nodiscard]] const std::array<int, 3>& n() const { return n_; }
    [[nodiscard]] const OpenAxes& open() const { return open_; }
    [[nodiscard]] std::size_t size() const { return count_; }
    [[nodiscard]] std::size_t index(int i, int j, int k) const
    {
        return static_cast<std::size_t>(i) +
               static_cast<std::size_t>(n_[0]) *
                   (static_cast<std::size_t>(j) + static_cast<std::size_t>(n_[1]) * static_cast<std::size_t>(k));
    }
    /// Distance in numbers between neighbours along each axis.
    [[nodiscard]] std::array<std::size_t, 3> strides() const { return {1, index(0, 1, 0), index(0, 0, 1)}; }

    /// Permeability by unit() times cross section by length of sample c along an axis, 0 when it is left out.
    [[nodiscard]] double conductance(std::size_t axis, std::size_t c) const
    {
        const double k = k_[axis][c];
        return (removed_.empty() || removed_[c] == 0) && k > 0 && k <= largest_finite ? k * shape_[axis] : 0.0;
    }
    /// Edge of the brick of volume 1 along an axis.
    [[nodiscard]] double edge(std::size_t axis) const { return edge_[axis]; }
    /// Permeability that counts as 1: a power of 2 near the largest one.
    [[nodiscard]] double unit() const { return unit_; }
    /// True when some sample is sealed along some axis.
    [[nodiscard]] bool has_sealed() const { return !removed_.empty(); }
    /// True when no sample is left.
    [[nodiscard]] bool none() const { return left_ == 0; }

private:
    static constexpr double largest_finite = 1.7976931348623157e308;
    void find_removed(bool through_nodes);

    std::array<int, 3> n_;
    OpenAxes open_;
    std::size_t count_;
    std::array<std::span<const double>, 3> k_;
    std::array<double, 3> shape_{}, edge_{};
    double unit_ = 1;
    std::vector<std::uint8_t> removed_; // empty: none
    std::size_t left_ = 0;
};

/// Seven-point network with its numbers.
struct Network {
    std::array<int, 3> n{};
    std::array<std::vector<double>, 3> conductance;
    std::vector<double> ground;

    [[nodiscard]] SevenPointMatrix view() const
    {
        return {n, {conductance[0], conductance[1], conductance[2]}, ground};
    }
};

/// Two-point conductances between the samples, half samples to the open faces.
[[nodiscard]] Network sample_network(const Samples& samples);

/// One discretisation of one block with its boundary: a symmetric positive semi-definite matrix A for w and the flow
/// that g drives. All vectors have size() numbers, zero for unknowns that take no part.
class FlowSystem {
public:
    virtual ~FlowSystem() = default;
    [[nodiscard]] virtual std::size_t size() const = 0;
    /// y = A x
    virtual void multiply(std::span<const double> x, std::span<double> y) const = 0;
    /// r = what is left of the balance for pressure g + w, g falling along `axis`.
    virtual void residual(std::size_t axis, std::span<const double> w, std::span<double> r) const = 0;
    /// Energy product of g_a + w_a and g_b + w_b: for solutions, flow driven by a along b.
    [[nodiscard]] virtual double energy(std::size_t a, std::span<const double> wa, std::size_t b,
                                        std::span<const double> wb) const = 0;
    /// w of the pressure that depends on one axis alone. `at_faces` has the pressure on the n + 1 planes between the
    /// layers of samples; none: 0, that is w = -g.
    virtual void from_profile(std::size_t axis, std::span<const double> at_faces, std::span<double> w) const = 0;
    /// For a network of the same unknowns that is spectrally close to A.
    [[nodiscard]] virtual KCycle preconditioner() const = 0;
};

[[nodiscard]] std::unique_ptr<FlowSystem> make_two_point_system(const Samples& samples);
/// Lowest-order mixed elements with the fluxes eliminated line by line.
[[nodiscard]] std::unique_ptr<FlowSystem> make_mixed_system(const Samples& samples);
/// Trilinear elements, unknowns at the corners of the samples.
[[nodiscard]] std::unique_ptr<FlowSystem> make_conforming_system(const Samples& samples);

/// from_profile() of the systems whose unknowns are the samples.
void cell_profile(const Samples& samples, std::size_t axis, std::span<const double> at_faces, std::span<double> w);

} // namespace Kelvane::flow
