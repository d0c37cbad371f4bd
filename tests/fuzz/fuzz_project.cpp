// Any text as the contents of a project file whose arrays are those of a small project, and any bytes as a project file:
// a project or a FileError, within bounds of memory, and a project that survives saving. Checksums that somebody could set
// right are set right first, so that what lies behind them is reached.

#include "tests/project/SealedFile.h"

#include <lodex/interpreter/Interpreter.h>
#include <lodex/project/ArrayCodec.h>
#include <lodex/project/Project.h>
#include <lodex/utils/FileError.h>
#include <lodex/volumes/CornerPointGrid.h>

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/volumes/Lodex_volumes_init.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <unistd.h>
#include <vector>

namespace {

const std::filesystem::path& path()
{
    static const auto one = std::filesystem::temp_directory_path() / ("fuzz_project-" + std::to_string(::getpid()));
    return one;
}

std::string bytes_of_file()
{
    std::ostringstream text;
    text << std::ifstream(path(), std::ios::binary).rdbuf();
    return std::move(text).str();
}

void write_file(std::string_view bytes)
{
    std::ofstream(path(), std::ios::binary | std::ios::trunc).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

/// The project whose arrays the contents in the corpus speak of.
const std::string& base()
{
    static const std::string one = [] {
        Lodex::Lodex_volumes_init::initialize();
        const auto results = lodex::Interpreter::instance().run(
            "lodex create sgrid name A size 2+2+2 spacing 1+1+1\n"
            "lodex on SGrid A fill_property P value 1\n"
            "lodex on SGrid A define_region R property P min 0\n"
            "lodex on SGrid A set_layers units \"U\"+\"V\" sizes 1+1\n"
            "lodex sgrid_merge_multiple_sections name B sgrid A direction vertical sections 0+1\n"
            "lodex on SGrid A create_upgridding_activity result B modifications 3+1+2+2\n"
            "lodex on SGrid A create_coarsening_activity Plan modifications 1+1+2+2\n"
            "lodex on Style A set attribute colour value red");
        for (const auto& result : results) {
            if (result.status != lodex::StatementStatus::Done)
                std::abort();
        }
        lodex::save_project(path());
        return bytes_of_file();
    }();
    return one;
}

/// Reads every array; false when one is refused.
bool load_all()
{
    bool good = true;
    for (Lodex::GObj* object : Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_())) {
        try {
            lodex::as_grid(object).load();
        } catch (const lodex::FileError&) {
            (void)lodex::as_grid(object).model(); // what a window would see
            good = false;
        }
    }
    return good;
}

void open_and_save(std::string_view bytes)
{
    write_file(bytes);
    try {
        lodex::open_project(path());
    } catch (const lodex::FileError&) {
        return;
    }
    if (!load_all())
        return;
    const auto grids = Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_()).size();
    lodex::save_project(path());
    lodex::open_project(path()); // an exception here is a finding
    if (!load_all() || grids != Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_()).size())
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    if (bytes.starts_with("LODEX PROJECT")) {
        open_and_save(bytes);
        open_and_save(with_contents(bytes, contents_of(bytes)));
    } else if (!bytes.empty() && bytes[0] == '{') {
        open_and_save(with_contents(base(), bytes, 2));
        open_and_save(with_contents(base(), bytes, 1));
    } else if (!bytes.empty()) {
        std::vector<std::byte> values(4096), scratch;
        const auto stored = std::as_bytes(std::span(bytes));
        for (const std::size_t width : {1, 4, 8})
            (void)lodex::decode_chunk(stored, width, values, scratch);
    }
    return 0;
}
