#include "Project.h"

#include "ProjectArrays.h"
#include "ProjectContents.h"
#include "ProjectWriting.h"
#include "lodex/geobase/ProjectUnits.h"
#include "lodex/interpreter/Interpreter.h"
#include "lodex/utils/FileError.h"
#include "lodex/utils/Immortal.h"
#include "lodex/volumes/ActivityModel.h"
#include "lodex/volumes/CornerPointGrid.h"

#include <Lodex/geobase/GeobaseLib.h>
#include <Lodex/geobase/Property.h>
#include <Lodex/geobase/Style.h>
#include <Lodex/utils/Logger.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <vector>

namespace lodex {

namespace {

using Lodex::GeobaseLib;

/// What the session knows of its project.
struct Session {
    std::filesystem::path path;
    std::vector<ProjectPart*> parts;
    std::map<std::string, std::string> kept_parts; ///< as the file that was opened had them
    std::string saved_state;                       ///< state_text() at the last save or open
};

Session& session()
{
    static Immortal<Session> one;
    return one.get();
}

void append(std::ostringstream& out, const Lodex::Style& style)
{
    for (const auto& [name, value] : style.attributes()) {
        if (name != "*sections") // what dialogs paint comes and goes with them
            out << name << '=' << value << '\n';
    }
}

/// A text that is the same as long as nothing of the catalogue, the units and the journal is changed.
std::string state_text()
{
    using Coarsening = Lodex::SGridGridCoarseningModificationActivityData;
    std::ostringstream out;
    for (Lodex::GObj* object : GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_())) {
        const CornerPointGrid& grid = as_grid(object);
        out << "grid " << grid.name().str() << ' ' << grid.header().id << ' ' << grid.revision() << '\n';
        for (int i = 0; i < grid.property_db()->nb_properties(); ++i) {
            out << "property " << i << '\n';
            append(out, *grid.property_db()->property(i)->style());
        }
        for (Lodex::SGridActivity* activity : grid.activities().activities()) {
            out << "activity " << activity << '\n';
            if (activity->kind() == Lodex::SGridActivity::Kind::Coarsening) // others do not change
                out << to_text(*static_cast<Coarsening*>(activity)->grid_coarsening_data()) << '\n';
        }
    }
    for (Lodex::GObj* object : GeobaseLib::instance()->objects(Lodex::Style::static_type_id_())) {
        out << "style " << object->name().str() << '\n';
        append(out, static_cast<Lodex::Style&>(*object));
    }
    out << "units " << static_cast<int>(project_horizontal_unit()) << static_cast<int>(project_vertical_unit()) << '\n';
    for (const std::string& statement : Interpreter::instance().journal())
        out << statement << '\n';
    return std::move(out).str();
}

/// Texts of all parts: of those that are attached, and of those that nobody knows here as they were.
std::map<std::string, std::string> parts_to_save()
{
    std::map<std::string, std::string> texts = session().kept_parts;
    for (const ProjectPart* part : session().parts)
        texts[part->name()] = part->save();
    return texts;
}

/// Kinds of objects that a project file has no place for are left out with a warning.
void warn_of_other_objects()
{
    // Every object but styles has a style of its name, so that the styles name them all.
    for (Lodex::GObj* style : GeobaseLib::instance()->objects(Lodex::Style::static_type_id_())) {
        const Lodex::GObj* object = GeobaseLib::instance()->find(style->name(), "");
        if (object && !object->type_id().is_a(Lodex::SGrid::static_type_id_())) {
            Lodex::Logger::log(Lodex::LogLevel::Warning, std::string("project files keep no objects of type ") +
                                                             object->type_id().name().str() + ": \"" + object->name().str() +
                                                             "\" is not saved\n");
        }
    }
}

/// Everything that will stand in the catalogue, made before anything there is touched.
struct OpenedProject {
    std::vector<std::unique_ptr<CornerPointGrid>> grids;
    std::vector<TextPairs> grid_styles; ///< one per grid
    std::vector<std::unique_ptr<Lodex::Style>> styles;
    LengthUnit horizontal = LengthUnit::Metre, vertical = LengthUnit::Metre;
    std::vector<std::string> journal;
    std::map<std::string, std::string> parts;
};

void set_attributes(Lodex::Style& style, const TextPairs& attributes)
{
    for (const auto& [name, value] : attributes)
        style.set_attribute(name, value);
    style.update();
}

/// Gives all grids and the sources of their records ids of this process. Sources that are gone are told apart from all
/// others by theirs still.
void renumber(std::vector<StoredGrid>& grids)
{
    std::map<std::uint64_t, std::uint64_t> ids;
    const auto id_of = [&ids](std::uint64_t in_file) {
        std::uint64_t& id = ids[in_file];
        if (id == 0)
            id = next_grid_id();
        return id;
    };
    for (StoredGrid& grid : grids)
        grid.header.id = id_of(grid.header.id);
    for (StoredGrid& grid : grids) {
        for (DerivationRecord& record : grid.header.records)
            record.source_id = id_of(record.source_id);
    }
}

std::shared_ptr<Lodex::SGridActivity> restored(const StoredActivity& activity, const CornerPointGrid& grid)
{
    if (activity.kind == "upgridding")
        return restored_upgridding(activity.name, std::move(*coarsening_from_text(activity.modifications)));
    if (activity.kind == "downgridding")
        return restored_downgridding(activity.name, std::move(*refinement_from_text(activity.modifications)));
    if (activity.kind == "coarsening")
        return restored_coarsening(grid, activity.name, std::move(*coarsening_from_text(activity.modifications)));
    throw ModelError("there are no activities of kind \"" + activity.kind + "\"");
}

LengthUnit unit_of(const std::string& word)
{
    const auto unit = length_unit_from_word(word);
    if (!unit)
        throw ModelError("\"" + word + "\" is no unit of length");
    return *unit;
}

OpenedProject make_project(const std::shared_ptr<const ProjectFile>& file, ProjectContents& contents)
{
    OpenedProject project;
    project.horizontal = unit_of(contents.horizontal_unit);
    project.vertical = unit_of(contents.vertical_unit);
    renumber(contents.grids);
    std::vector<std::shared_ptr<Lodex::SGridActivity>> activities(contents.activities.size());
    for (StoredGrid& stored : contents.grids) {
        auto arrays = std::make_shared<ProjectArrays>(file, stored);
        auto grid = std::make_unique<CornerPointGrid>(stored.name, std::move(stored.header), std::move(arrays));
        for (std::size_t i = 0; i < stored.property_styles.size(); ++i)
            set_attributes(*grid->property_db()->property(static_cast<int>(i))->style(), stored.property_styles[i]);
        for (const std::size_t position : stored.activities) {
            if (!activities[position])
                activities[position] = restored(contents.activities[position], *grid);
            grid->activities().add(activities[position]);
        }
        project.grids.push_back(std::move(grid));
        project.grid_styles.push_back(std::move(stored.style));
    }
    std::set<std::string> style_names;
    for (const auto& grid : project.grids)
        style_names.insert(grid->name().str());
    for (const auto& [name, attributes] : contents.styles) {
        if (name.empty() || !style_names.insert(name).second)
            throw ModelError("the name of the style \"" + name + "\" is taken");
        project.styles.push_back(std::make_unique<Lodex::Style>(name));
        set_attributes(*project.styles.back(), attributes);
    }
    project.journal = std::move(contents.journal);
    project.parts = {contents.parts.begin(), contents.parts.end()};
    return project;
}

/// Puts the project in place of what is there.
void install(OpenedProject project)
{
    GeobaseLib* catalogue = GeobaseLib::instance();
    catalogue->clear();
    set_project_units(project.horizontal, project.vertical);
    for (std::size_t i = 0; i < project.grids.size(); ++i) {
        Lodex::GObj* grid = catalogue->add(std::move(project.grids[i]));
        if (grid && grid->style())
            set_attributes(*grid->style(), project.grid_styles[i]);
    }
    for (auto& style : project.styles)
        catalogue->add(std::move(style));
    Interpreter::instance().set_journal(std::move(project.journal));
    session().kept_parts = std::move(project.parts);
    for (ProjectPart* part : std::vector(session().parts)) {
        const auto kept = session().kept_parts.find(part->name());
        part->restore(kept == session().kept_parts.end() ? std::string() : kept->second);
    }
}

} // namespace

void attach_project_part(ProjectPart* part)
{
    auto& parts = session().parts;
    if (part && std::ranges::find(parts, part) == parts.end())
        parts.push_back(part);
}

void detach_project_part(ProjectPart* part)
{
    std::erase(session().parts, part);
}

void save_project_copy(const std::filesystem::path& path, const Lodex::ProgressCheck& check)
{
    warn_of_other_objects();
    write_project(path, parts_to_save(), check);
}

void save_project(const std::filesystem::path& path, const Lodex::ProgressCheck& check)
{
    save_project_copy(path, check);
    session().path = std::filesystem::absolute(path);
    session().saved_state = state_text();
}

void open_project(const std::filesystem::path& path, const Lodex::ProgressCheck& check)
{
    const auto go_on = [&check](double done) {
        if (check && !check(done))
            throw Cancelled{};
    };
    go_on(0);
    const auto file = std::make_shared<const ProjectFile>(path);
    std::vector<std::string> warnings;
    ProjectContents contents = read_contents(*file, warnings);
    go_on(0.5);
    OpenedProject project;
    try {
        project = make_project(file, contents);
    } catch (const FileError&) {
        throw;
    } catch (const ModelError& error) {
        file->fail(std::string("its table of contents is damaged: ") + error.what());
    }
    go_on(0.9);
    install(std::move(project));
    session().path = std::filesystem::absolute(path);
    session().saved_state = state_text();
    for (const std::string& warning : warnings)
        Lodex::Logger::log(Lodex::LogLevel::Warning, path.string() + ": " + warning + "\n");
}

const std::filesystem::path& project_path()
{
    return session().path;
}

void forget_project()
{
    session().path.clear();
    session().kept_parts.clear();
    session().saved_state = state_text();
}

bool project_changed()
{
    const std::string state = state_text();
    if (!session().saved_state.empty())
        return state != session().saved_state;
    // Neither saved nor opened so far: changed as soon as there is something.
    return !GeobaseLib::instance()->objects(Lodex::SGrid::static_type_id_()).empty() ||
           !Interpreter::instance().journal().empty();
}

} // namespace lodex
