// Any bytes as a GRDECL file: a model or a FileError, within bounds of memory, and a model that survives writing.

#include <lodex/gridio/GrdeclReader.h>
#include <lodex/gridio/GrdeclWriter.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    lodex::ReadOptions options;
    options.max_bytes = 64 * 1024 * 1024;
    // No folder of that name: nothing of this machine is included.
    const std::filesystem::path name = "no-such-folder/fuzz.grdecl";
    for (const bool properties_only : {false, true}) {
        options.properties_only = properties_only;
        constexpr std::size_t long_text = 8 * 1024;
        if (size > long_text) {
            // Through a window, as long files are read; words that are cut by it are errors there and nowhere else.
            static const auto long_path =
                std::filesystem::temp_directory_path() / ("fuzz_grdecl-" + std::to_string(::getpid()) + ".long");
            std::ofstream(long_path, std::ios::binary).write(text.data(), static_cast<std::streamsize>(size));
            try {
                (void)lodex::grdecl::read_file(long_path, options, {.whole = 0, .step = 16 * 1024});
            } catch (const lodex::FileError&) {
            }
        }
        try {
            const auto result = lodex::grdecl::read_text(text, name, options);
            if (result.model.cells() > 1000) {
                continue;
            }
            static const auto path =
                std::filesystem::temp_directory_path() / ("fuzz_grdecl-" + std::to_string(::getpid()));
            lodex::grdecl::write_file(result.model, path, {});
            const auto again = lodex::grdecl::read_file(path, options);
            if (again.model.size != result.model.size || !(again.model.zcorn == result.model.zcorn)
                || !(again.model.coord == result.model.coord) || again.model.active != result.model.active
                || again.model.properties.size() != result.model.properties.size()
                || again.model.kept.size() != result.model.kept.size()
                || again.model.faults.size() != result.model.faults.size()) {
                std::abort();
            }
        } catch (const lodex::FileError&) {
        }
    }
    return 0;
}
