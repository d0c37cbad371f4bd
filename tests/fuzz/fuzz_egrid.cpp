// Any bytes as EGRID (binary or text), INIT and old GRID: a valid model or a FileError, within bounds of memory. The
// input is one file, or a grid and an INIT with a line "----" between them.

#include <lodex/gridio/EgridFormat.h>
#include <lodex/gridio/InitFormat.h>
#include <lodex/gridio/OldGridFormat.h>
#include <lodex/volumes/model/CellGeometry.h>

#include <cstdint>
#include <optional>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    constexpr std::string_view divider = "\n----\n";
    std::string_view first(reinterpret_cast<const char*>(data), size);
    std::optional<lodex::records::Source> init;
    if (const std::size_t place = first.find(divider); place != std::string_view::npos) {
        init = lodex::records::Source{"fuzz.INIT", first.substr(place + divider.size())};
        first = first.substr(0, place);
    }
    const lodex::records::Source grid{"fuzz.EGRID", first};
    lodex::ReadOptions options;
    options.max_bytes = 64 * 1024 * 1024;
    const auto attempt = [](auto read) {
        try {
            read();
        } catch (const lodex::FileError&) {
        }
    };
    for (const bool properties_only : {false, true}) {
        options.properties_only = properties_only;
        // What a reader gives has to be a whole model; check_arrays() throws a plain ModelError when it is not.
        attempt([&] {
            const auto result = lodex::egrid::read(grid, init, options);
            if (!properties_only) {
                lodex::check_arrays(result.model);
            }
        });
        attempt([&] {
            const auto result = lodex::old_grid::read(grid, init, options);
            if (!properties_only) {
                lodex::check_arrays(result.model);
            }
        });
    }
    attempt([&] { (void)lodex::records::read_init_alone(grid, options); });
    (void)lodex::records::peek_headers(first);
    return 0;
}
