#pragma once

#include <Lodex/utils/CString.h>

#include <QIcon>
#include <QPixmap>
#include <QStringList>

namespace Lodex {

/// The host's picture library.
class LQPixmapLib {
public:
    /// A named picture at its own size; null when there is none of that name.
    [[nodiscard]] static QPixmap load(const CString& name);
    /// The same as an icon that is sharp at every size.
    [[nodiscard]] static QIcon icon(const CString& name);
    /// Names of all pictures, sorted.
    [[nodiscard]] static QStringList names();
};

} // namespace Lodex
