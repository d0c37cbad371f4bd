// Any bytes as a file of bare values and as a layer name file: numbers or names as promised, or a FileError.

#include <lodex/gridio/LayerFile.h>
#include <lodex/gridio/ValueFile.h>
#include <lodex/utils/FileError.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const auto path = std::filesystem::temp_directory_path() / ("fuzz_lists-" + std::to_string(::getpid()));
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(data), static_cast<std::streamsize>(size));
    constexpr std::int64_t few = 5;
    for (const std::int64_t count : {few, static_cast<std::int64_t>(size / sizeof(double))}) {
        try {
            const auto values = lodex::read_values(path, count);
            if (values.size() != static_cast<std::size_t>(count)) {
                std::abort();
            }
            for (const double value : values) {
                if (!std::isfinite(value)) {
                    std::abort();
                }
            }
        } catch (const lodex::FileError&) {
        }
    }
    try {
        const auto layers = lodex::read_layer_file(path);
        if (layers.units.empty() || layers.units.size() != layers.sizes.size()) {
            std::abort();
        }
        for (std::size_t i = 0; i < layers.units.size(); ++i) {
            if (layers.units[i].empty() || layers.sizes[i] < 1 || lodex::to_utf8(layers.units[i]) != layers.units[i]) {
                std::abort();
            }
        }
    } catch (const lodex::FileError&) {
    }
    return 0;
}
