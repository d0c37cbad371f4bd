#pragma once

#include <Lodex/utils/CString.h>

namespace Lodex {

/// The host's help system.
class XMHelpManager {
public:
    [[nodiscard]] static XMHelpManager* instance();

    virtual ~XMHelpManager() = default;
    /// Opens the help on a key: "help:?context=CONTEXT&topic=TOPIC", or "help:DOCUMENT#ANCHOR" with any number of
    /// fall-backs behind ";". A key without a page logs a warning.
    virtual void display(const CopyCString& key) = 0;

    /// True when the key leads to a page.
    [[nodiscard]] virtual bool has_page(const CString& key) const = 0;
    /// The page shown last, as text; empty before the first.
    [[nodiscard]] virtual CString current_key() const = 0;
};

} // namespace Lodex
