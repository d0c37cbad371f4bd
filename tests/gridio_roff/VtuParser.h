#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace lodex::test {

/// A VTK file taken apart: enough of the format to read what is written here.
struct VtuFile {
    struct Array {
        std::string section; ///< "PointData", "CellData", "Points", "Cells"
        std::string type;
        std::size_t components = 1;
        std::string bytes;
    };

    std::size_t points = 0;
    std::size_t cells = 0;
    std::map<std::string, Array> arrays;
    std::map<std::string, std::vector<std::string>> texts; ///< of the field data

    [[nodiscard]] std::vector<double> numbers(const std::string& name) const;
};

/// Throws std::runtime_error when tags do not close, attributes are absent, offsets or lengths do not fit.
[[nodiscard]] VtuFile parse_vtu(std::string_view bytes);

} // namespace lodex::test
