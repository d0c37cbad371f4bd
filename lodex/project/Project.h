#pragma once

#include <Lodex/utils/Progress.h>

#include <cstdint>
#include <filesystem>
#include <string>

namespace lodex {

/// Something that a project keeps beside the catalogue and the journal: cameras, what the windows show. Registered by
/// whoever owns the state; a part that nobody registers is kept as text and written again, so that a project that went
/// through the batch runner still opens as the workbench left it.
class ProjectPart {
public:
    virtual ~ProjectPart() = default;
    /// Name in the file, unique among the parts ("cameras").
    [[nodiscard]] virtual std::string name() const = 0;
    /// The state as text. Must not throw.
    [[nodiscard]] virtual std::string save() const = 0;
    /// Takes the state over, after the catalogue has been filled. Text of another version or without sense is ignored,
    /// an empty one stands for "nothing kept". Must not throw.
    virtual void restore(const std::string& text) = 0;
};

/// Parts are not owned; one must be detached before it dies. GUI thread only.
void attach_project_part(ProjectPart* part);
void detach_project_part(ProjectPart* part);

/// Writes all grids with their properties, regions, layers, activities and styles, the project's units, the journal and
/// the parts into one file. An older file of the name is replaced whole or not at all. Throws FileError when it cannot be
/// written, Cancelled when the check answers false; the file on disk is then the old one.
void save_project(const std::filesystem::path& path, const Lodex::ProgressCheck& check = {});

/// Puts the project of the file in place of everything that is there: catalogue, units, journal, parts. Names, sizes and
/// the like are read at once, arrays when they are first asked for (see CornerPointGrid); the file stays open until then.
/// Throws FileError (path, what was expected) for a file that is no project, is damaged or comes from a later version;
/// nothing is changed then.
void open_project(const std::filesystem::path& path, const Lodex::ProgressCheck& check = {});

/// Path of the project that was opened or saved last; empty: none. For titles and "Save".
[[nodiscard]] const std::filesystem::path& project_path();
/// Forgets path and unsaved changes, as after starting anew. Does not touch the catalogue.
void forget_project();
/// True when the catalogue, the units, styles or the journal were changed since the last save or open. What the parts keep
/// does not count, nor do painted sections ("*sections"), which come and go with dialogs.
[[nodiscard]] bool project_changed();

/// A copy of the project elsewhere, for recovery after a crash: as save_project(), but project_path() and
/// project_changed() stay as they are.
void save_project_copy(const std::filesystem::path& path, const Lodex::ProgressCheck& check = {});

} // namespace lodex
