#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

namespace bench {

/// A brick of equal cells with one permeability each, the same on every machine, for comparison with other programs.
struct LognormalModel {
    std::array<int, 3> n{};
    std::array<double, 3> cell{}; ///< sizes of a cell along I, J, K, metres
    std::vector<double> k;        ///< mD, I fastest, K slowest

    [[nodiscard]] std::size_t index(int i, int j, int l) const
    {
        return static_cast<std::size_t>(i) +
               static_cast<std::size_t>(n[0]) *
                   (static_cast<std::size_t>(j) + static_cast<std::size_t>(n[1]) * static_cast<std::size_t>(l));
    }
    [[nodiscard]] std::array<double, 3> size() const { return {n[0] * cell[0], n[1] * cell[1], n[2] * cell[2]}; }

    /// The cells first to first + count - 1 along each axis as a model of their own.
    [[nodiscard]] LognormalModel block(const std::array<int, 3>& first, const std::array<int, 3>& count) const
    {
        LognormalModel part{count, cell, {}};
        for (int l = first[2]; l < first[2] + count[2]; ++l)
            for (int j = first[1]; j < first[1] + count[1]; ++j)
                for (int i = first[0]; i < first[0] + count[0]; ++i)
                    part.k.push_back(k[index(i, j, l)]);
        return part;
    }
};

/// Independent values, ln k normal with this variance around ln 100 mD. Values are those that the text file holds.
inline LognormalModel make_lognormal(const std::array<int, 3>& n, const std::array<double, 3>& cell, double variance,
                                     std::uint64_t seed)
{
    LognormalModel model{n, cell, {}};
    model.k.resize(model.index(0, 0, n[2]));
    std::mt19937_64 engine(seed);
    const auto uniform = [&] { return (static_cast<double>(engine() >> 11) + 0.5) / 9007199254740992.0; };
    for (double& value : model.k) {
        const double radius = std::sqrt(-2 * std::log(uniform()));
        value = 100 * std::exp(std::sqrt(variance) * radius * std::cos(2 * 3.14159265358979323846 * uniform()));
    }
    return model;
}

/// The model as a GRDECL file: SPECGRID, COORD, ZCORN, ACTNUM, PORO, PERMX with all digits.
inline void write_grdecl(const LognormalModel& model, const std::string& path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "w"), &std::fclose);
    if (!file)
        throw std::runtime_error("cannot write " + path);
    const auto& [ni, nj, nk] = model.n;
    std::fprintf(file.get(), "SPECGRID\n%d %d %d 1 F /\n\nCOORD\n", ni, nj, nk);
    const double bottom = nk * model.cell[2];
    for (int j = 0; j <= nj; ++j)
        for (int i = 0; i <= ni; ++i)
            std::fprintf(file.get(), "%.10g %.10g 0 %.10g %.10g %.10g\n", i * model.cell[0], j * model.cell[1],
                         i * model.cell[0], j * model.cell[1], bottom);
    std::fprintf(file.get(), "/\n\nZCORN\n");
    for (int l = 0; l < nk; ++l)
        std::fprintf(file.get(), "%d*%.10g\n%d*%.10g\n", 4 * ni * nj, l * model.cell[2], 4 * ni * nj,
                     (l + 1) * model.cell[2]);
    std::fprintf(file.get(), "/\n\nACTNUM\n%d*1\n/\n\nPORO\n%d*0.2\n/\n\nPERMX\n", ni * nj * nk, ni * nj * nk);
    for (const double value : model.k)
        std::fprintf(file.get(), "%.17g\n", value);
    std::fprintf(file.get(), "/\n");
}

} // namespace bench
