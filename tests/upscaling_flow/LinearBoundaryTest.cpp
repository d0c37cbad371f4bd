// The tensor of linear boundary pressure, against a two-point solution written here on its own.

#include "FlowTestTools.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

namespace flow_test {
namespace {

/// Mean fluxes along the axes for unit gradient along one of them.
struct Fluxes {
    Vector3 volume{}; ///< volume average of the flux
    Vector3 ends{};   ///< mean flux through the two end faces of each axis alone
};

/// Two-point solution on an isotropic cube of side 1.
class PlainSolution {
public:
    explicit PlainSolution(const BlockData& data, int gradient = 0)
        : data_(data), n_(data.n[0]), gradient_(gradient), p_(data.samples())
    {
        for (int sweep = 0; sweep < 2000; ++sweep) {
            for (int k = 0; k < n_; ++k)
                for (int j = 0; j < n_; ++j)
                    for (int i = 0; i < n_; ++i)
                        relax({i, j, k});
        }
    }

    [[nodiscard]] Fluxes fluxes() const
    {
        Fluxes result;
        for (int k = 0; k < n_; ++k) {
            for (int j = 0; j < n_; ++j) {
                for (int i = 0; i < n_; ++i) {
                    for (int axis = 0; axis < 3; ++axis) {
                        // Half of the flux of each face belongs to each of its samples.
                        for (const int side : {-1, 1}) {
                            const double flux = -side * flow({i, j, k}, axis, side);
                            result.volume[axis] += 0.5 * flux / n_;
                            const int place = Counts{i, j, k}[axis];
                            if (side < 0 ? place == 0 : place == n_ - 1)
                                result.ends[axis] += 0.5 * flux;
                        }
                    }
                }
            }
        }
        return result;
    }

private:
    [[nodiscard]] double value(const Counts& c) const { return data_.k[0][data_.at(c[0], c[1], c[2])]; }

    /// Conductance of a face of a sample and the pressure behind it.
    [[nodiscard]] std::array<double, 2> face(const Counts& c, int axis, int side) const
    {
        Counts next = c;
        next[axis] += side;
        if (next[axis] < 0 || next[axis] >= n_) {
            const double x = axis == gradient_ ? (side < 0 ? 0.0 : 1.0) : (c[gradient_] + 0.5) / n_;
            return {2 * value(c) / n_, x};
        }
        return {2 / (1 / value(c) + 1 / value(next)) / n_, p_[data_.at(next[0], next[1], next[2])]};
    }
    /// Flow into the sample.
    [[nodiscard]] double flow(const Counts& c, int axis, int side) const
    {
        const auto [conductance, pressure] = face(c, axis, side);
        return conductance * (pressure - p_[data_.at(c[0], c[1], c[2])]);
    }
    void relax(const Counts& c)
    {
        double sum = 0;
        double weight = 0;
        for (int axis = 0; axis < 3; ++axis) {
            for (const int side : {-1, 1}) {
                const auto [conductance, pressure] = face(c, axis, side);
                sum += conductance * pressure;
                weight += conductance;
            }
        }
        p_[data_.at(c[0], c[1], c[2])] = sum / weight;
    }

    const BlockData& data_;
    int n_;
    int gradient_;
    std::vector<double> p_;
};

TEST(LinearBoundary, TensorIsTheVolumeAverageOfTheFlux)
{
    const BlockData data = lognormal_block({4, 4, 4}, {1, 1, 1}, 1.5, true, 31);
    const Fluxes fluxes = PlainSolution(data).fluxes();
    const Tensor tensor = tensor_of(data, Boundary::Unconfined, Discretisation::TwoPoint);
    // Pressure rises along I, so the flux is against it.
    EXPECT_NEAR(tensor[0], -fluxes.volume[0], 1e-10);
    EXPECT_NEAR(tensor[3], -fluxes.volume[1], 1e-10);
    EXPECT_NEAR(tensor[4], -fluxes.volume[2], 1e-10);
}

TEST(LinearBoundary, VolumeAverageIsSymmetricByItselfAndEndFacesAreNot)
{
    const BlockData data = lognormal_block({5, 5, 5}, {1, 1, 1}, 1.5, true, 33);
    const Tensor tensor = tensor_of(data, Boundary::Unconfined, Discretisation::TwoPoint);
    std::array<Fluxes, 3> fluxes;
    for (int axis = 0; axis < 3; ++axis) {
        fluxes[axis] = PlainSolution(data, axis).fluxes();
        EXPECT_NEAR(-fluxes[axis].volume[axis], tensor[axis], 1e-10 * tensor[0]);
    }
    const std::array<std::array<int, 2>, 3> pairs{{{0, 1}, {0, 2}, {1, 2}}};
    for (int pair = 0; pair < 3; ++pair) {
        const auto [a, b] = pairs[pair];
        EXPECT_NEAR(fluxes[a].volume[b], fluxes[b].volume[a], 1e-10 * tensor[0]);
        EXPECT_NEAR(-fluxes[a].volume[b], tensor[3 + pair], 1e-10 * tensor[0]);
        EXPECT_GT(std::abs(fluxes[a].ends[b] - fluxes[b].ends[a]), 1e-3 * tensor[0]);
    }
}

TEST(LinearBoundary, VolumeAverageOverratesCrossedLayersLessThanEndFaces)
{
    const double layers[] = {100, 3, 40, 2, 100};
    const BlockData data = make_block({5, 5, 5}, {1, 1, 1}, [&](int, int i, int, int) { return layers[i]; });
    double inverse = 0;
    for (const double k : layers)
        inverse += 1 / k / 5;
    const double truth = 1 / inverse;
    const Fluxes fluxes = PlainSolution(data).fluxes();
    const double two_point = tensor_of(data, Boundary::Unconfined, Discretisation::TwoPoint)[0];
    const double mixed = tensor_of(data, Boundary::Unconfined, Discretisation::Mixed)[0];
    const double conforming = tensor_of(data, Boundary::Unconfined, Discretisation::Conforming)[0];
    std::printf("layers crossed under linear pressure: truth %.3f, two-point %.3f, mixed %.3f, conforming %.3f, "
                "end faces %.3f\n",
                truth, two_point, mixed, conforming, -fluxes.ends[0]);
    EXPECT_NEAR(two_point, -fluxes.volume[0], 1e-10);
    EXPECT_LT(truth, two_point);
    EXPECT_LT(two_point, mixed);
    EXPECT_LT(mixed, conforming);
    EXPECT_LT(conforming, -fluxes.ends[0]);
    EXPECT_NEAR(tensor_of(data, Boundary::Confined, Discretisation::Conforming)[0], truth, 1e-9);
}

} // namespace
} // namespace flow_test
