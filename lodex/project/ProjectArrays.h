#pragma once

#include "ProjectContents.h"
#include "ProjectFile.h"
#include "lodex/volumes/GridArrays.h"

#include <memory>
#include <vector>

namespace lodex {

/// The arrays of a grid in a project file, which it keeps open.
class ProjectArrays final : public GridArrays {
public:
    ProjectArrays(std::shared_ptr<const ProjectFile> file, const StoredGrid& grid);

    /// Flags are checked to be 0 or 1.
    [[nodiscard]] ArrayValues load(const GridArray& array, const ProgressCheck& check) override;

    [[nodiscard]] const ProjectFile& file() const { return *file_; }
    [[nodiscard]] const StoredArray& stored(const GridArray& array) const;

private:
    std::shared_ptr<const ProjectFile> file_;
    std::string grid_;
    StoredArray pillars_, corner_depths_, active_flags_;
    std::vector<StoredArray> properties_, regions_;
};

} // namespace lodex
