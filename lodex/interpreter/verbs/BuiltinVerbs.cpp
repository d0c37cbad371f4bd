// Verbs that know nothing of grids.

#include "lodex/interpreter/Lists.h"
#include "lodex/interpreter/Verb.h"
#include "lodex/utils/CameraList.h"

#include <Lodex/geobase/GeobaseLib.h>

namespace lodex {

namespace {

void destroy(Call& call)
{
    Lodex::GeobaseLib* catalogue = Lodex::GeobaseLib::instance();
    constexpr std::size_t longest_name = 128; // a longer one is found where it stands by itself, without "+" for blanks
    std::vector<std::string> names;
    try {
        names = resolve_joined(
            call.text("objects"), [&](const std::string& name) { return catalogue->find(name, ""); },
            longest_name, "object");
    } catch (const CommandError& error) {
        call.fail(error.what(), "objects");
    }
    for (const std::string& name : names) {
        if (Lodex::GObj* object = catalogue->find(name, "")) // a name may stand twice in the list
            catalogue->destroy(object);
    }
    call.count("objects", static_cast<double>(names.size()));
}

void rename(Call& call)
{
    Lodex::GeobaseLib::instance()->rename(call.object_of("object"), call.text("name"));
}

void help(Call& call)
{
    const std::string text = VerbRegistry::instance().help(call.text("verb"));
    if (text.empty())
        call.fail("there is no verb \"" + call.text("verb") + "\"", "verb");
    call.answer(text);
}

void update_cameras(Call& call)
{
    call.count("cameras", update_all_cameras());
}

const VerbRegistration destroy_registration{
    {.name = "destroy",
     .summary = "Removes objects from the catalogue.",
     .keywords = {{.name = "objects", .kind = ValueKind::NameList, .meaning = "names joined by +", .required = true}},
     .run = destroy}};

const VerbRegistration rename_registration{
    {.name = "rename",
     .summary = "Gives an object another name.",
     .keywords = {{.name = "object", .kind = ValueKind::Object, .meaning = "the object", .required = true},
                  {.name = "name", .kind = ValueKind::NewName, .meaning = "its new name", .required = true}},
     .run = rename}};

const VerbRegistration help_registration{
    {.name = "help",
     .summary = "Shows what a verb does and which keywords it takes; all verbs when none is named.",
     .keywords = {{.name = "verb", .kind = ValueKind::Text, .meaning = "name of the verb", .positional = true}},
     .journalled = false,
     .run = help}};

const VerbRegistration cameras_registration{{.name = "update all cameras",
                                             .summary = "Draws all cameras again.",
                                             .journalled = false,
                                             .run = update_cameras}};

} // namespace

} // namespace lodex
