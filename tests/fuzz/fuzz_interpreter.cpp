// Any bytes as a submission: statements run or fail, the catalogue stays whole. Statements that name files are only checked.

#include "lodex/interpreter/Interpreter.h"
#include "lodex/interpreter/StatementBinder.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/model/CellGeometry.h"
#include "lodex/volumes/model/Create.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/utils/COSNameList.h>
#include <Lodex/volumes/Lodex_volumes_init.h>

#include <cstdint>
#include <string_view>

namespace {

/// Touches no file and makes no grid of a size of its own, which might be a large one.
bool harmless(std::string_view text)
{
    for (const std::string_view word : {"file", "create sgrid", "create example"}) {
        if (text.find(word) != std::string_view::npos)
            return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool ready = [] {
        Lodex::Lodex_volumes_init::initialize();
        return true;
    }();
    (void)ready;
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (!harmless(text)) {
        try {
            for (const lodex::Statement& statement : lodex::parse_statements(text))
                lodex::check_statement(statement);
        } catch (const lodex::CommandError&) {
        }
        return 0;
    }

    auto* catalogue = Lodex::GeobaseLib::instance();
    catalogue->clear();
    lodex::Interpreter::instance().clear_journal();
    lodex::GridModel box = lodex::make_box({3, 2, 6}, {1, 1, 1});
    box.properties.push_back({.name = "P", .values = std::vector<float>(36, 0.5F)});
    box.regions.push_back({"R", std::vector<std::uint8_t>(36, 1), false});
    lodex::add_grid("A", std::move(box));
    lodex::Interpreter::instance().run(text, {.keep_going = true});
    Lodex::COSNameList names;
    catalogue->names(Lodex::SGrid::static_type_id_(), names);
    for (const Lodex::CString& name : names)
        lodex::check_arrays(lodex::find_grid(name.str())->model()); // throws when a verb left something broken
    catalogue->clear();
    return 0;
}
