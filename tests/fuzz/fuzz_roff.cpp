// Any bytes as a ROFF file of any form: a model or a FileError, within bounds of memory, and a model that survives
// writing.

#include <lodex/gridio/RoffReader.h>
#include <lodex/gridio/RoffWriter.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <string_view>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    lodex::ReadOptions options;
    options.max_bytes = 64 * 1024 * 1024;
    for (const bool properties_only : {false, true}) {
        options.properties_only = properties_only;
        try {
            const auto result = lodex::roff::read_bytes(bytes, "no-such-folder/fuzz.roff", options);
            if (result.model.cells() > 1000) {
                continue;
            }
            static const auto path =
                std::filesystem::temp_directory_path() / ("fuzz_roff-" + std::to_string(::getpid()));
            const auto form = static_cast<lodex::roff::Form>(size % 3);
            lodex::roff::write_file(result.model, path, {}, form);
            const auto again = lodex::roff::read_file(path, options);
            if (again.model.size != result.model.size || !(again.model.zcorn == result.model.zcorn)
                || !(again.model.coord == result.model.coord) || again.model.active != result.model.active
                || again.model.properties.size() != result.model.properties.size()
                || again.model.regions.size() != result.model.regions.size()
                || again.model.layers.size() != result.model.layers.size()
                || again.model.kept.size() != result.model.kept.size()
                || again.model.faults.size() != result.model.faults.size()) {
                std::abort();
            }
        } catch (const lodex::FileError&) {
        }
    }
    return 0;
}
