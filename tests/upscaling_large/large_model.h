#pragma once

#include "upscaling/kernels/flow/LargeBlock.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

/// A brick with its permeability.
struct Model {
    std::array<int, 3> n{1, 1, 1};
    std::array<double, 3> size{1, 1, 1};
    std::array<std::vector<double>, 3> k;

    [[nodiscard]] std::size_t samples() const
    {
        return static_cast<std::size_t>(n[0]) * static_cast<std::size_t>(n[1]) * static_cast<std::size_t>(n[2]);
    }
    [[nodiscard]] std::size_t index(int i, int j, int l) const
    {
        return static_cast<std::size_t>(i) +
               static_cast<std::size_t>(n[0]) *
                   (static_cast<std::size_t>(j) + static_cast<std::size_t>(n[1]) * static_cast<std::size_t>(l));
    }
    [[nodiscard]] Kelvane::flow::Block block() const
    {
        Kelvane::flow::Block result;
        result.n = n;
        result.size = size;
        result.ki = k[0];
        result.kj = k[1];
        result.kk = k[2];
        return result;
    }
};

inline Model equal_model(const std::array<int, 3>& n, const std::array<double, 3>& size,
                         const std::array<double, 3>& value)
{
    Model model{n, size, {}};
    for (std::size_t axis = 0; axis < 3; ++axis)
        model.k[axis].assign(model.samples(), value[axis]);
    return model;
}

/// Standard normal numbers, the same on every platform.
class Normal {
public:
    explicit Normal(std::uint64_t seed) : engine_(seed) {}
    double operator()()
    {
        const double radius = std::sqrt(-2 * std::log(uniform()));
        return radius * std::cos(2 * 3.14159265358979323846 * uniform());
    }
    double uniform() { return (static_cast<double>(engine_() >> 11) + 0.5) / 9007199254740992.0; }

private:
    std::mt19937_64 engine_;
};

/// Lognormal around 1 with this deviation of the logarithm; `isotropic`: the same along the three axes.
inline Model lognormal_model(const std::array<int, 3>& n, const std::array<double, 3>& size, double deviation,
                             bool isotropic, std::uint64_t seed)
{
    Model model = equal_model(n, size, {1, 1, 1});
    Normal normal(seed);
    for (std::size_t axis = 0; axis < 3; ++axis)
        for (std::size_t c = 0; c < model.samples(); ++c)
            model.k[axis][c] = axis > 0 && isotropic ? model.k[0][c] : std::exp(deviation * normal());
    return model;
}

inline const std::array<Kelvane::flow::Boundary, 3> all_boundaries{
    Kelvane::flow::Boundary::Confined, Kelvane::flow::Boundary::KConfined, Kelvane::flow::Boundary::Unconfined};
inline const std::array<Kelvane::flow::Discretisation, 3> all_discretisations{
    Kelvane::flow::Discretisation::TwoPoint, Kelvane::flow::Discretisation::Mixed,
    Kelvane::flow::Discretisation::Conforming};

inline Kelvane::flow::BlockOptions options_of(Kelvane::flow::Boundary boundary,
                                              Kelvane::flow::Discretisation discretisation)
{
    Kelvane::flow::BlockOptions options;
    options.boundary = boundary;
    options.discretisation = discretisation;
    return options;
}
