#pragma once

#include <lodex/gridio/GridFormat.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace lodex::test {

/// A folder of its own for one test, removed with everything in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const { return path_; }
    [[nodiscard]] std::filesystem::path operator/(std::string_view name) const { return path_ / name; }
    std::filesystem::path write(std::string_view name, std::string_view text) const;
    /// Names of all files in it, sorted.
    [[nodiscard]] std::vector<std::string> names() const;

private:
    std::filesystem::path path_;
};

[[nodiscard]] std::string file_text(const std::filesystem::path& path);

/// Where the field models are: the environment variable LODEX_FIELD_DATA or ../shared/data beside the sources. Nothing
/// when they are not on this machine; says so once on the standard output.
[[nodiscard]] std::optional<std::filesystem::path> field_data();

/// The folder tests/data of the sources.
[[nodiscard]] std::filesystem::path test_data();

/// What differs first between two models, bit by bit (id left out); empty when they are the same.
[[nodiscard]] std::string difference(const GridModel& a, const GridModel& b);

/// The eight corners of a cell: x, y, depth; i varies fastest, then j, then k.
[[nodiscard]] std::array<std::array<double, 3>, 8> cell_corners(const GridModel& model, std::int64_t i, std::int64_t j,
                                                                std::int64_t k);

/// Signed volume of the trilinear map of eight corners: 2 x 2 x 2 Gauss points of its Jacobian, which is exact.
[[nodiscard]] double trilinear_volume(const std::array<std::array<double, 3>, 8>& corners);

/// A model that uses everything that a grid can hold: ni x nj x nk cells with faults, zones, regions, all kinds of
/// properties, kept keywords.
[[nodiscard]] GridModel full_model(std::int64_t ni, std::int64_t nj, std::int64_t nk);

[[nodiscard]] std::vector<double> values_of(const PropertyData& property);
[[nodiscard]] std::vector<double> values_of(const RealArray& array);

} // namespace lodex::test
