// Block-centred grids turned into corner points.

#include <lodex/gridio/FloatFit.h>
#include <lodex/gridio/GrdeclReaderImpl.h>
#include <lodex/gridio/TextNumbers.h>

namespace lodex::grdecl {

namespace {

/// In 32 bits when these hold all numbers exactly.
RealArray narrowed(std::vector<double> values)
{
    if (!fits_float(values)) {
        return values;
    }
    return std::vector<float>(values.begin(), values.end());
}

/// Numbers of a text, given as what the text says: 32-bit ones stand for their decimals. Remembers the last one, since
/// neighbours tend to be the same.
class Decimals {
public:
    Decimals() = default;
    explicit Decimals(const std::vector<float>& values) : floats_(&values) {}
    explicit Decimals(const std::vector<double>& values) : doubles_(&values) {}
    explicit Decimals(const std::vector<std::int32_t>& values) : integers_(&values) {}

    [[nodiscard]] double operator[](std::size_t i) const
    {
        if (doubles_ != nullptr) {
            return (*doubles_)[i];
        }
        if (integers_ != nullptr) {
            return (*integers_)[i];
        }
        if (const float value = (*floats_)[i]; value != last_ || !known_) {
            last_ = value;
            decimal_ = decimal_double(value);
            known_ = true;
        }
        return decimal_;
    }

private:
    const std::vector<float>* floats_ = nullptr;
    const std::vector<double>* doubles_ = nullptr;
    const std::vector<std::int32_t>* integers_ = nullptr;
    mutable float last_ = 0;
    mutable double decimal_ = 0;
    mutable bool known_ = false;
};

/// One number per cell, or the same for all cells along two axes.
class BlockSizes {
public:
    BlockSizes(const PropertyData* cells, const std::vector<double>& line, int axis)
        : line_(&line), axis_(axis), from_line_(cells == nullptr)
    {
        if (cells != nullptr) {
            values_ = std::visit([](const auto& values) { return Decimals(values); }, cells->values);
        }
    }
    [[nodiscard]] double at(const GridModel& model, std::int64_t i, std::int64_t j, std::int64_t k) const
    {
        if (from_line_) {
            return (*line_)[static_cast<std::size_t>(axis_ == 0 ? i : axis_ == 1 ? j : k)];
        }
        return values_[static_cast<std::size_t>(model.cell_index(i, j, k))];
    }
    [[nodiscard]] bool from_line() const { return from_line_; }

private:
    Decimals values_;
    const std::vector<double>* line_;
    int axis_;
    bool from_line_;
};

} // namespace

/// Block-centred geometry on vertical pillars. Blocks keep their tops and thicknesses. Pillars stand where the blocks of
/// the top layer end, halfway between the ends of two neighbour rows where these differ.
void Reader::make_block_centred(const std::string& name)
{
    GridModel& model = result_.model;
    std::string missing;
    const std::array<std::string, 3> names = {"DX", "DY", "DZ"};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (model.find_property(names[axis]) == nullptr && lines_[axis].empty()) {
            missing += (missing.empty() ? "" : ", ") + names[axis];
        }
    }
    if (tops_count() == 0) {
        missing += missing.empty() ? "TOPS" : ", TOPS";
    }
    if (!missing.empty()) {
        throw FileError(name, 0, "no geometry: COORD and ZCORN are missing, and so are " + missing
                                     + " of a block-centred grid"
                                     + (arrays_set_by_operations_ ? " (arrays set by EQUALS or COPY do not count)" : ""));
    }
    const auto cells = static_cast<std::uint64_t>(model.cells());
    constexpr std::uint64_t depths = 8;
    const std::uint64_t needed = depths * cells * sizeof(double);
    if (needed > max_bytes_ || claimed_ > max_bytes_ - needed) {
        throw FileError(name, 0, "a grid of " + size_text(model.size) + " cells asks for more memory than the "
                                     + std::to_string(max_bytes_) + " bytes allowed");
    }
    const BlockSizes dx(model.find_property("DX"), lines_[0], 0);
    const BlockSizes dy(model.find_property("DY"), lines_[1], 1);
    const BlockSizes dz(model.find_property("DZ"), lines_[2], 2);
    const std::int64_t ni = model.size[0];
    const std::int64_t nj = model.size[1];
    const std::int64_t nk = model.size[2];

    // One axis at a time: ends of the blocks of each row, summed up in extended precision so that decimals stay clean.
    const auto check_rows = [&](const BlockSizes& sizes, const char* keyword) {
        for (std::int64_t k = 0; k < nk && !sizes.from_line(); ++k) {
            for (std::int64_t j = 0; j < nj; ++j) {
                for (std::int64_t i = 0; i < ni; ++i) {
                    const bool along_i = &sizes == &dy;
                    const double reference = along_i ? sizes.at(model, 0, j, 0) : sizes.at(model, i, 0, 0);
                    if (sizes.at(model, i, j, k) != reference) {
                        log_.add("unusual values",
                                 {Message::Level::Warning, to_utf8(name), 0,
                                  std::string(keyword) + " differs between neighbour rows or layers (cell "
                                      + std::to_string(i + 1) + ", " + std::to_string(j + 1) + ", " + std::to_string(k + 1)
                                      + "); pillars stand halfway between block ends of the top layer"});
                        return;
                    }
                }
            }
        }
    };
    check_rows(dx, "DX");
    check_rows(dy, "DY");

    const auto pillar = [&](std::int64_t i, std::int64_t j) { return static_cast<std::size_t>(i + (ni + 1) * j); };
    std::vector<double> x(static_cast<std::size_t>(model.pillars()));
    std::vector<double> y(x.size());
    const auto halfway = [](double a, double b) { return a == b ? a : (a + b) / 2; };
    std::vector<double> ends(static_cast<std::size_t>(ni + 1));
    for (std::int64_t j = 0; j < nj; ++j) {
        long double sum = 0;
        for (std::int64_t i = 0; i <= ni; ++i) {
            ends[static_cast<std::size_t>(i)] = static_cast<double>(sum);
            sum += i < ni ? dx.at(model, i, j, 0) : 0;
        }
        for (std::int64_t i = 0; i <= ni; ++i) {
            const double end = ends[static_cast<std::size_t>(i)];
            x[pillar(i, j)] = j == 0 ? end : halfway(x[pillar(i, j)], end);
            x[pillar(i, j + 1)] = end;
        }
    }
    ends.resize(static_cast<std::size_t>(nj + 1));
    for (std::int64_t i = 0; i < ni; ++i) {
        long double sum = 0;
        for (std::int64_t j = 0; j <= nj; ++j) {
            ends[static_cast<std::size_t>(j)] = static_cast<double>(sum);
            sum += j < nj ? dy.at(model, i, j, 0) : 0;
        }
        for (std::int64_t j = 0; j <= nj; ++j) {
            const double end = ends[static_cast<std::size_t>(j)];
            y[pillar(i, j)] = i == 0 ? end : halfway(y[pillar(i, j)], end);
            y[pillar(i + 1, j)] = end;
        }
    }

    const auto tops = std::visit([](const auto& values) { return Decimals(values); }, tops_);
    const bool all_tops = tops_count() == static_cast<std::size_t>(cells);
    double shallowest = std::numeric_limits<double>::infinity();
    double deepest = -shallowest;
    // False when the type does not hold a depth exactly.
    const auto fill = [&]<class Depth>(std::vector<Depth> zcorn) {
        std::vector<double> bottoms(static_cast<std::size_t>(ni * nj));
        zcorn.resize(8 * static_cast<std::size_t>(cells));
        bool exact = true;
        for (std::int64_t k = 0; k < nk && exact; ++k) {
            for (std::int64_t j = 0; j < nj; ++j) {
                for (std::int64_t i = 0; i < ni; ++i) {
                    const auto column = static_cast<std::size_t>(i + ni * j);
                    const double top = all_tops ? tops[static_cast<std::size_t>(model.cell_index(i, j, k))]
                        : k == 0                ? tops[column]
                                                : bottoms[column];
                    const double bottom = static_cast<double>(static_cast<long double>(top) + dz.at(model, i, j, k));
                    bottoms[column] = bottom;
                    const std::array<Depth, 2> sides = {static_cast<Depth>(top), static_cast<Depth>(bottom)};
                    exact = exact && static_cast<double>(sides[0]) == top && static_cast<double>(sides[1]) == bottom;
                    for (std::int64_t c = 0; c < 2; ++c) {
                        for (std::int64_t b = 0; b < 2; ++b) {
                            const auto at =
                                static_cast<std::size_t>((2 * k + c) * 4 * nj * ni + (2 * j + b) * 2 * ni + 2 * i);
                            zcorn[at] = zcorn[at + 1] = sides[static_cast<std::size_t>(c)];
                        }
                    }
                    shallowest = std::min({shallowest, top, bottom});
                    deepest = std::max({deepest, top, bottom});
                }
            }
            if (options_.progress && !options_.progress(progress_)) {
                throw Cancelled{};
            }
        }
        if (exact) {
            model.zcorn = std::move(zcorn);
        }
        return exact;
    };
    if (!fill(std::vector<float>())) {
        fill(std::vector<double>());
    }
    deepest = deepest > shallowest ? deepest : shallowest + 1; // a pillar needs two ends
    std::vector<double> coord;
    coord.reserve(6 * x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
        coord.insert(coord.end(), {x[i], y[i], shallowest, x[i], y[i], deepest});
    }
    model.coord = narrowed(std::move(coord));
    log_.add("block-centred geometry",
             {Message::Level::Info, to_utf8(name), 0, "block-centred geometry (DX, DY, DZ, TOPS) is turned into corner points"});
}

} // namespace lodex::grdecl
