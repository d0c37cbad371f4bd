// Verbs that keep the whole project in a file.

#include "lodex/project/Project.h"
#include "lodex/volumes/CornerPointGrid.h"
#include "lodex/volumes/verbs/VerbTools.h"

#include <Lodex/geobase/GeobaseLib.h>

#include <system_error>

namespace lodex {

namespace {

std::size_t number_of_grids()
{
    return Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_()).size();
}

void open(Call& call)
{
    const std::string path = call.text("file");
    at_keyword(call, "file", [&] { open_project(path, call.progress_check()); });
    call.count("grids", static_cast<double>(number_of_grids()));
    for (Lodex::GObj* object : Lodex::GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_())) {
        const GridModel& model = as_grid(object).header();
        call.info("SGrid \"" + object->name().str() + "\": " + size_text(model.size) + " cells, " +
                  std::to_string(model.properties.size()) + " properties");
    }
}

void save(Call& call)
{
    const std::string path = call.text("file");
    at_keyword(call, "file", [&] { save_project(path, call.progress_check()); });
    call.count("grids", static_cast<double>(number_of_grids()));
    std::error_code error;
    if (const auto size = std::filesystem::file_size(path, error); !error)
        call.count("bytes", static_cast<double>(size));
    call.info("project written to " + path);
}

const VerbRegistration open_registration{
    {.name = "open project",
     .summary = "Puts a project in place of everything that is there: grids, units, styles and journal. Arrays are read "
                "when they are first needed.",
     .keywords = {{.name = "file", .kind = ValueKind::Path, .meaning = "the project file", .required = true,
                   .positional = true}},
     .journalled = false,
     .run = open}};

const VerbRegistration save_registration{
    {.name = "save project",
     .summary = "Writes all grids with their properties, regions, layers, activities and styles, the units and the journal "
                "into one file; an older file of the name is replaced whole or not at all.",
     .keywords = {{.name = "file", .kind = ValueKind::Path,
                   .meaning = "the project file, by custom ending in .lodex-project", .required = true,
                   .positional = true}},
     .journalled = false,
     .run = save}};

} // namespace

} // namespace lodex
