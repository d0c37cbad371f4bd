#pragma once

#include <Lodex/utils/CString.h>

namespace Lodex {

/// Names in a registry are paths with "/" between their components.
class PathName {
public:
    /// Last component of the path; the whole text when there is no "/".
    [[nodiscard]] static CString basename(const CString& path);
    /// Everything before the last "/"; empty when there is none.
    [[nodiscard]] static CString dirname(const CString& path);
};

} // namespace Lodex
