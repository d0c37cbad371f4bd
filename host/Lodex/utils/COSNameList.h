#pragma once

#include <Lodex/utils/CString.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace Lodex {

/// An ordered list of names; indices are 0-based.
class COSNameList {
public:
    [[nodiscard]] int count() const { return static_cast<int>(names_.size()); }
    [[nodiscard]] const CString& name(int index) const { return names_.at(static_cast<std::size_t>(index)); }
    [[nodiscard]] bool contains(const CString& name) const { return std::ranges::find(names_, name) != names_.end(); }

    void append(CString name) { names_.push_back(std::move(name)); }
    /// Puts the name before all others unless the list holds it already.
    void unique_prepend(const CString& name)
    {
        if (!contains(name))
            names_.insert(names_.begin(), name);
    }
    /// Puts the name after all others unless the list holds it already.
    void unique_append(const CString& name)
    {
        if (!contains(name))
            names_.push_back(name);
    }
    void clear() { names_.clear(); }

    [[nodiscard]] auto begin() const { return names_.begin(); }
    [[nodiscard]] auto end() const { return names_.end(); }

private:
    std::vector<CString> names_;
};

} // namespace Lodex
