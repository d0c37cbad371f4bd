#include "DirectionalMeans.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace Kelvane::flow {

namespace {

/// A box of values that shrinks to one by means along its axes.
struct Box {
    std::array<int, 3> n;
    std::vector<double> values;
};

double section(const SectionLengths& lengths, int axis, int index)
{
    return lengths[axis].empty() ? 1.0 : lengths[axis][index];
}

/// The box with `axis` shrunk to one section.
Box shrunk(const Box& box, int axis, bool harmonic, const SectionLengths& lengths)
{
    Box result;
    result.n = box.n;
    result.n[axis] = 1;
    const auto width = static_cast<std::size_t>(box.n[0]);
    const std::size_t stride = axis == 0 ? 1 : axis == 1 ? width : width * static_cast<std::size_t>(box.n[1]);
    const auto count = static_cast<std::size_t>(box.n[axis]);
    double total = 0;
    for (int s = 0; s < box.n[axis]; ++s)
        total += section(lengths, axis, s);
    result.values.resize(box.values.size() / count);
    for (std::size_t line = 0; line < result.values.size(); ++line) {
        const double* value = box.values.data() + line / stride * stride * count + line % stride;
        double sum = 0;
        for (std::size_t s = 0; s < count; ++s) {
            const double length = section(lengths, axis, static_cast<int>(s));
            if (length > 0)
                sum += harmonic ? length / value[s * stride] : length * value[s * stride];
        }
        if (!(total > 0))
            result.values[line] = value[0];
        else
            result.values[line] = harmonic ? total / sum : sum / total;
    }
    return result;
}

double shrunk_to_one(const Box& box, const std::array<int, 3>& order, int flow, const SectionLengths& lengths)
{
    const auto shrink = [&](const Box& from, int axis) { return shrunk(from, axis, axis == flow, lengths); };
    return shrink(shrink(shrink(box, order[0]), order[1]), order[2]).values.front();
}

} // namespace

double directional_mean(DirectionalMean mean, int axis, const std::array<int, 3>& n, std::span<const double> values,
                        const SectionLengths& lengths)
{
    Box box{n, {values.begin(), values.end()}};
    double largest = 0;
    for (double& value : box.values) {
        if (!(value > 0) || !std::isfinite(value))
            value = 0;
        largest = std::max(largest, value);
    }
    if (box.values.empty() || largest == 0)
        return 0;
    for (double& value : box.values)
        value /= largest;
    const int y = (axis + 1) % 3;
    const int z = (axis + 2) % 3;
    const auto ordered = [&](const std::array<int, 3>& order) { return shrunk_to_one(box, order, axis, lengths); };
    double result = 0;
    switch (mean) {
    case DirectionalMean::HarmonicArithmetic:
        result = ordered({axis, z, y});
        break;
    case DirectionalMean::ArithmeticHarmonic:
        result = ordered({z, y, axis});
        break;
    case DirectionalMean::CardwellParson:
        result = std::sqrt(ordered({axis, z, y})) * std::sqrt(ordered({z, y, axis}));
        break;
    case DirectionalMean::SymCardwellParson:
        result = std::cbrt(ordered({axis, z, y})) * std::cbrt(ordered({z, y, axis})) *
                 std::cbrt(std::sqrt(ordered({z, axis, y})) * std::sqrt(ordered({y, axis, z})));
        break;
    }
    return largest * result;
}

std::array<double, 3> directional_means(DirectionalMean mean, const std::array<int, 3>& n,
                                        std::span<const double> values, const SectionLengths& lengths)
{
    return {directional_mean(mean, 0, n, values, lengths), directional_mean(mean, 1, n, values, lengths),
            directional_mean(mean, 2, n, values, lengths)};
}

std::array<double, 3> diagonal_means(const std::array<int, 3>& n, std::span<const double> ki,
                                     std::span<const double> kj, std::span<const double> kk,
                                     const SectionLengths& lengths)
{
    return {directional_mean(DirectionalMean::SymCardwellParson, 0, n, ki, lengths),
            directional_mean(DirectionalMean::SymCardwellParson, 1, n, kj, lengths),
            directional_mean(DirectionalMean::SymCardwellParson, 2, n, kk, lengths)};
}

} // namespace Kelvane::flow
