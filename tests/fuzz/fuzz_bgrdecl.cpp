// Any bytes as a binary GRDECL file: a valid model that survives writing, or a FileError, within bounds of memory.

#include <lodex/gridio/BinaryGrdeclFormat.h>
#include <lodex/volumes/model/CellGeometry.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const lodex::records::Source source{"fuzz.bgrdecl", std::string_view(reinterpret_cast<const char*>(data), size)};
    lodex::ReadOptions options;
    options.max_bytes = 64 * 1024 * 1024;
    for (const bool properties_only : {true, false}) {
        options.properties_only = properties_only;
        try {
            const auto result = lodex::binary_grdecl::read(source, options);
            if (properties_only) {
                continue;
            }
            // A plain ModelError when an array has not the size that it should have.
            lodex::check_arrays(result.model);
            if (result.model.cells() > 1000) {
                continue;
            }
            static const auto path =
                std::filesystem::temp_directory_path() / ("fuzz_bgrdecl-" + std::to_string(::getpid()));
            lodex::BinaryGrdeclFormat().write(result.model, path, {});
            const auto again = lodex::binary_grdecl::read({path, {}}, options);
            if (again.model.size != result.model.size || again.model.active != result.model.active
                || again.model.coord.is_double() != result.model.coord.is_double()
                || again.model.zcorn.size() != result.model.zcorn.size()
                || again.model.properties.size() != result.model.properties.size()) {
                std::abort();
            }
        } catch (const lodex::FileError&) {
        }
    }
    return 0;
}
