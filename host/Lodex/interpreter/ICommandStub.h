#pragma once

#include <Lodex/utils/CString.h>

namespace Lodex {

/// The pending command that opened a dialog: keywords and values that the dialog takes as a start.
class ICommandStub {
public:
    virtual ~ICommandStub() = default;
    /// The index-th value (0-based) of a keyword. False, with value untouched, when the keyword is absent or has fewer.
    [[nodiscard]] virtual bool get(const CString& key, CopyCString& value, int index = 0) const = 0;
};

} // namespace Lodex
