// Averages of 10 million fine cells into 10 thousand coarse ones by an index mapping, against the machine's read bandwidth
// over the bytes that must be read: values, flags, and volumes when they weigh. One run of this program shows both.

#include "upscaling/AverageUpscaling.h"
#include "upscaling/upscalers/UpscalerInfo.h"

#include <Lodex/geobase/Style.h>

#include <tbb/parallel_reduce.h>
#include <tbb/blocked_range.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

namespace {

double seconds_of(const std::function<void()>& work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// A property over a plain array.
class ArrayProperty final : public Lodex::Property {
public:
    explicit ArrayProperty(std::vector<float> values) : values_(std::move(values)), style_("values") {}
    [[nodiscard]] const Lodex::CString& name() const override { return name_; }
    [[nodiscard]] const Lodex::CString& unit() const override { return unit_; }
    [[nodiscard]] Lodex::Style* style() const override { return &style_; }
    [[nodiscard]] Values values() const override { return std::span<const float>(values_); }
    [[nodiscard]] std::optional<double> no_data() const override { return std::nullopt; }
    [[nodiscard]] bool discrete() const override { return false; }
    [[nodiscard]] const std::map<std::int32_t, std::string>& code_names() const override { return codes_; }
    [[nodiscard]] std::span<const float> array() const { return values_; }

private:
    std::vector<float> values_;
    Lodex::CString name_{"values"}, unit_;
    mutable Lodex::Style style_;
    std::map<std::int32_t, std::string> codes_;
};

/// Sums all numbers on all threads: nothing but reading.
template <class T> double read_all(std::span<const T> numbers)
{
    return tbb::parallel_reduce(
        tbb::blocked_range<std::size_t>(0, numbers.size(), 1 << 18), 0.0,
        [&](const auto& range, double sum) {
            T lanes[16] = {};
            std::size_t n = range.begin();
            for (; n + 16 <= range.end(); n += 16)
                for (std::size_t lane = 0; lane < 16; ++lane)
                    lanes[lane] += numbers[n + lane];
            for (const T lane : lanes)
                sum += static_cast<double>(lane);
            return sum;
        },
        std::plus<>());
}

} // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> methods(argv + 1, argv + argc);
    if (methods.empty())
        methods = {"Arithmetic", "Geometric", "Harmonic", "Power", "Sum", "Minimum", "Maximum", "Median"};
    constexpr std::array<std::int64_t, 3> fine{400, 250, 100}, coarse{40, 25, 10};
    const std::size_t cells = 10'000'000, coarse_cells = 10'000;
    std::mt19937_64 random(1);
    std::normal_distribution<float> normal(0, 1);
    std::vector<float> numbers(cells);
    for (float& number : numbers)
        number = std::exp(normal(random));
    const ArrayProperty property(std::move(numbers));
    const std::vector<std::uint8_t> flags(cells, 1), coarse_flags(coarse_cells, 1);
    const std::vector<double> volumes(cells, 3.0);
    Lodex::CellMapping mapping;
    for (std::size_t axis = 0; axis < 3; ++axis)
        for (std::int64_t n = 0; n < coarse[axis]; ++n)
            mapping.boxes[axis].push_back({10 * n, 10 * n + 9});
    mapping.fine_flags = flags;
    mapping.coarse_flags = coarse_flags;

    std::printf("%u threads; %lld x %lld x %lld -> %lld x %lld x %lld cells, 32-bit values\n", std::thread::hardware_concurrency(),
                static_cast<long long>(fine[0]), static_cast<long long>(fine[1]), static_cast<long long>(fine[2]),
                static_cast<long long>(coarse[0]), static_cast<long long>(coarse[1]), static_cast<long long>(coarse[2]));
    double kept = 0;
    for (const std::string& name : methods) {
        for (const bool by_volume : {false, true}) {
            const auto upscaler = Kelvane::make_upscaler("upgridder", name);
            const auto& method = dynamic_cast<const Kelvane::AverageUpscaler&>(*upscaler);
            if (by_volume && !method.rules(0.5).weighted)
                continue;
            const Kelvane::AverageRequest request{.mapping = mapping,
                                                  .fine_size = fine,
                                                  .coarse_size = coarse,
                                                  .coarse_cells = coarse_flags,
                                                  .property = Kelvane::FineProperty(property, {}),
                                                  .method = method,
                                                  .power = 0.5,
                                                  .volumes = by_volume ? std::span<const double>(volumes) : std::span<const double>()};
            double best = 1e9, reading = 1e9, answer = 0;
            for (int round = 0; round < 7; ++round) {
                best = std::min(best, seconds_of([&] { answer = Kelvane::upscale_by_average(request).values[0]; }));
                reading = std::min(reading, seconds_of([&] {
                                       kept += read_all(property.array()) + read_all(std::span<const std::uint8_t>(flags)) +
                                               (by_volume ? read_all(std::span<const double>(volumes)) : 0);
                                   }));
            }
            std::printf("%-10s %-9s %6.1f ms, reading the bytes alone %6.1f ms: %.2f of the read bandwidth; first value %.10g\n", name.c_str(),
                        by_volume ? "by volume" : "", 1e3 * best, 1e3 * reading, reading / best, answer);
        }
    }
    return std::isfinite(kept) ? 0 : 1;
}
